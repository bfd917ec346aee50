#include "sim/parts/pulse_source.h"

#include <cmath>

namespace zorvel::sim {

PulseSource::PulseSource(std::string pin, bool idleLevel)
    : pinName_(std::move(pin)), idle_(idleLevel) {}

void PulseSource::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void PulseSource::connect(const Wiring& wiring) {
    pin_ = &wiring.require(pinName_);
    scheduler_ = wiring.scheduler;
    cycleSeconds_ = wiring.cycleSeconds;
    now_ = wiring.now;
    pin_->setExternal(idle_, wiring.now ? wiring.now() : 0);
    for (auto [start, width] : waiting_)
        arm(start, width);
    waiting_.clear();
}

void PulseSource::reset() {
    if (!scheduler_) return;
    uint64_t now = now_ ? now_() : 0;
    std::vector<std::pair<uint64_t, uint64_t>> pending;
    for (auto [start, width] : armed_)
        if (start + width > now) pending.emplace_back(start, width);
    armed_.clear();
    bool active = false;
    for (auto [start, width] : pending) {
        if (start <= now) {
            active = true;
            armed_.emplace_back(start, width);
            scheduler_->schedule(start + width,
                                 [this](uint64_t at) { pin_->setExternal(idle_, at); });
        } else {
            arm(start, width);
        }
    }
    pin_->setExternal(active ? !idle_ : idle_, now);
}

void PulseSource::arm(uint64_t startCycle, uint64_t width) {
    armed_.emplace_back(startCycle, width);
    scheduler_->schedule(startCycle, [this](uint64_t now) { pin_->setExternal(!idle_, now); });
    scheduler_->schedule(startCycle + width,
                         [this](uint64_t now) { pin_->setExternal(idle_, now); });
}

void PulseSource::pulse(uint64_t startCycle, uint64_t width) {
    if (scheduler_)
        arm(startCycle, width);
    else
        waiting_.emplace_back(startCycle, width);
}

void PulseSource::train(uint64_t startCycle, uint64_t width, uint64_t period, int count) {
    for (int i = 0; i < count; ++i)
        pulse(startCycle + static_cast<uint64_t>(i) * period, width);
}

uint64_t PulseSource::cyclesForMicroseconds(double us) const {
    return static_cast<uint64_t>(std::llround(us * 1e-6 / cycleSeconds_));
}

RcSource::RcSource(std::string pin, double chargeMicroseconds)
    : pinName_(std::move(pin)), chargeMicroseconds_(chargeMicroseconds) {}

RcSource::~RcSource() {
    if (pin_) pin_->removeListener(this);
}

void RcSource::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void RcSource::connect(const Wiring& wiring) {
    pin_ = &wiring.require(pinName_);
    scheduler_ = wiring.scheduler;
    cycleSeconds_ = wiring.cycleSeconds;
    now_ = wiring.now;
    uint64_t now = now_ ? now_() : 0;
    pin_->setExternal(true, now); // charged
    pin_->addListener(this);
    if (pin_->picDrives()) watchRelease(now);
}

void RcSource::reset() {
    if (!pin_) return;
    watching_ = false;
    chargeEvent_ = 0;
    uint64_t now = now_ ? now_() : 0;
    pin_->setExternal(true, now);
    if (pin_->picDrives()) watchRelease(now);
}

// The device drove the pin to a new level: the capacitor follows it.
void RcSource::pinChanged(Pin&, bool, uint64_t cycle) {
    if (!pin_->picDrives() || watching_) return;
    if (chargeEvent_) scheduler_->cancel(chargeEvent_);
    chargeEvent_ = 0;
    watchRelease(cycle);
}

// While the device drives the pin, look every cycle for its release (a
// release does not always change the level, so it is not always reported).
void RcSource::watchRelease(uint64_t now) {
    if (pin_->picDrives()) {
        watching_ = true;
        lastDriven_ = pin_->level();
        pin_->setExternal(lastDriven_, now);
        scheduler_->schedule(now + 1, [this](uint64_t t) { watchRelease(t); });
        return;
    }
    watching_ = false;
    if (lastDriven_) return; // left charged
    ++measurements_;
    pin_->setExternal(false, now);
    uint64_t delay =
        static_cast<uint64_t>(std::llround(chargeMicroseconds_ * 1e-6 / cycleSeconds_));
    chargeEvent_ = scheduler_->schedule(now + delay, [this](uint64_t t) {
        chargeEvent_ = 0;
        pin_->setExternal(true, t);
    });
}

} // namespace zorvel::sim
