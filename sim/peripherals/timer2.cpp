// Timer2. TMR2 increments every `prescale` instruction cycles (1, 4 or 16);
// the increment after TMR2 equals PR2 resets it to 0, counts the postscaler
// (1..16) and, when the postscaler is full, sets TMR2IF. A TMR2 above PR2
// (after PR2 was lowered) counts on to 0xFF and wraps without a match.
// Writes to TMR2 or T2CON and every reset clear both scalers. The timer is
// not ticked: its value is computed from the cycle count and the next reset
// is a scheduled event.
#include "sim/peripherals/timer2.h"

#include "sim/peripherals/peripherals.h"
#include "sim/peripherals/support.h"
#include "sim/pic16.h"

namespace zorvel::sim {

namespace {
constexpr int TMR2ON = 2, TMR2IF = 1;
}

Timer2::Timer2(CoreAccess& core) : core_(core) {
    const DeviceLayout& l = core.layout();
    tmr2_ = l.address("TMR2");
    t2con_ = l.address("T2CON");
    pr2_ = l.address("PR2");
    pir1_ = l.address("PIR1");
    core.hookRead(tmr2_, [this](uint8_t) { return value(core_.cycles()); });
    core.hookWrite(tmr2_, [this](uint8_t v) {
        sync(core_.cycles());
        value_ = v;
        restart(core_.cycles());
    });
    core.hookWrite(pr2_, [this](uint8_t) {
        sync(core_.cycles());
        reschedule();
    });
    core.hookWrite(t2con_, [this](uint8_t v) { onT2conWrite(v); });
}

void Timer2::reset(ResetKind) {
    if (event_ != 0) core_.scheduler().cancel(event_);
    event_ = 0;
    core_.storage(tmr2_) = 0;
    core_.storage(t2con_) = 0;
    core_.storage(pr2_) = 0xFF;
    running_ = false;
    prescale_ = postscale_ = 1;
    postCount_ = 0;
    value_ = 0;
    base_ = core_.cycles();
}

void Timer2::onPeriod(std::function<void(uint64_t)> listener) {
    listeners_.push_back(std::move(listener));
}

uint8_t Timer2::pr2() const {
    return core_.storage(pr2_);
}

uint64_t Timer2::periodCycles() const {
    return uint64_t(pr2() + 1) * uint64_t(prescale_);
}

uint8_t Timer2::value(uint64_t now) const {
    if (!running_ || now <= base_) return value_;
    uint64_t ticks = (now - base_) / uint64_t(prescale_);
    uint64_t v = value_;
    if (v > pr2()) {
        if (ticks < 256 - v) return uint8_t(v + ticks);
        ticks -= 256 - v;
        v = 0;
    }
    uint64_t toReset = pr2() - v + 1;
    if (ticks < toReset) return uint8_t(v + ticks);
    return uint8_t((ticks - toReset) % (uint64_t(pr2()) + 1));
}

// Brings value_/base_ up to `now`, keeping the prescaler's phase.
void Timer2::sync(uint64_t now) {
    if (running_ && now > base_) {
        uint64_t ticks = (now - base_) / uint64_t(prescale_);
        value_ = value(now);
        base_ += ticks * uint64_t(prescale_);
    }
    core_.storage(tmr2_) = value_;
}

// Clears the scalers: counting starts afresh at `now`.
void Timer2::restart(uint64_t now) {
    base_ = now;
    postCount_ = 0;
    core_.storage(tmr2_) = value_;
    reschedule();
}

void Timer2::reschedule() {
    if (event_ != 0) core_.scheduler().cancel(event_);
    event_ = 0;
    if (!running_) return;
    bool matches = value_ <= pr2();
    uint64_t ticks = matches ? uint64_t(pr2() - value_ + 1) : uint64_t(256 - value_);
    uint64_t due = base_ + ticks * uint64_t(prescale_);
    event_ = core_.scheduler().schedule(due, [this, due, matches](uint64_t) {
        event_ = 0;
        periodEnd(due, matches);
    });
}

void Timer2::periodEnd(uint64_t cycle, bool matched) {
    value_ = 0;
    base_ = cycle;
    core_.storage(tmr2_) = 0;
    reschedule();
    if (!matched) return;
    if (++postCount_ >= postscale_) {
        postCount_ = 0;
        periph::raiseFlag(core_, pir1_, TMR2IF);
    }
    for (auto& listener : listeners_)
        listener(cycle);
}

void Timer2::onT2conWrite(uint8_t v) {
    uint64_t now = core_.cycles();
    sync(now);
    core_.storage(t2con_) = v & 0x7F;
    running_ = periph::bitSet(v, TMR2ON);
    int select = v & 3;
    prescale_ = select == 0 ? 1 : select == 1 ? 4 : 16;
    postscale_ = ((v >> 3) & 0x0F) + 1;
    restart(now);
}

std::unique_ptr<Timer2> makeTimer2(CoreAccess& core) {
    const DeviceLayout& l = core.layout();
    if (!l.has("TMR2") || !l.has("T2CON") || !l.has("PR2")) return nullptr;
    return std::make_unique<Timer2>(core);
}

} // namespace zorvel::sim
