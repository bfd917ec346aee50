#include "sim/parts/pulse_source.h"

#include <cmath>
#include <stdexcept>

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
    uint64_t now = now_ ? now_() : 0;
    pin_->setExternal(square_ && squareActive(now) ? !idle_ : idle_, now);
    for (auto [start, width] : waiting_)
        arm(start, width);
    waiting_.clear();
    if (square_) squareStep(now);
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
    if (square_) active = active || squareActive(now);
    pin_->setExternal(active ? !idle_ : idle_, now);
    if (square_) squareStep(now);
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

void PulseSource::square(uint64_t startCycle, uint64_t width, uint64_t period) {
    if (width == 0 || width >= period)
        throw std::invalid_argument("a square wave needs 0 < width < period");
    if (square_ && scheduler_) scheduler_->cancel(squareEvent_); // the wave it replaces
    square_ = Square{startCycle, width, period};
    if (scheduler_) squareStep(now_ ? now_() : 0);
}

bool PulseSource::squareActive(uint64_t cycle) const {
    return cycle >= square_->start && (cycle - square_->start) % square_->period < square_->width;
}

void PulseSource::squareStep(uint64_t now) {
    const Square& s = *square_;
    uint64_t next = s.start;
    if (now >= s.start) {
        bool active = squareActive(now);
        uint64_t periodStart = now - (now - s.start) % s.period;
        next = periodStart + (active ? s.width : s.period);
        pin_->setExternal(active ? !idle_ : idle_, now);
    }
    squareEvent_ = scheduler_->schedule(next, [this](uint64_t at) { squareStep(at); });
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
