#include "sim/core/timer0.h"

#include "sim/core/core_impl.h"

namespace zorvel::sim::core {

namespace {
constexpr uint8_t T0CS = 0x20, T0SE = 0x10, PSA = 0x08;
// A write at cycle c: reads at c+1 and c+2 give the written value, c+3 one more
// (the two inhibited cycles of the Timer0 timing figure).
constexpr uint64_t kWriteInhibit = 1;
} // namespace

Timer0::Timer0(Pic16::Impl& core) : core_(core) {
    core.hookRead(reg::TMR0, [this](uint8_t) { return value(); });
    core.hookWrite(reg::TMR0, [this](uint8_t v) { written(v); });
    core.hookWrite(reg::OPTION, [this](uint8_t) { optionWritten(); });
    // T0CKI is RA4, or GP2 on the 8-pin GPIO parts.
    Pin* t0cki = core.layout_.has("GPIO") ? core.pin(0, 2) : core.pin(0, 4);
    if (t0cki) t0cki->addListener(this);
}

void Timer0::reset() {
    event_ = 0;
    lastOption_ = core_.ram_[reg::OPTION];
    ratio_ = ratio();
    edges_ = 0;
    frozen_ = false;
    rebase(core_.ram_[reg::TMR0], core_.cycles_);
}

bool Timer0::external() const {
    return (core_.ram_[reg::OPTION] & T0CS) != 0;
}

int Timer0::ratio() const {
    uint8_t option = core_.ram_[reg::OPTION];
    return (option & PSA) ? 1 : 2 << (option & 7);
}

uint8_t Timer0::value() const {
    if (external() || frozen_) return originValue_;
    uint64_t now = core_.cycles_;
    if (now <= origin_) return originValue_;
    return static_cast<uint8_t>(originValue_ + (now - origin_) / static_cast<uint64_t>(ratio_));
}

void Timer0::clearPrescaler() {
    rebase(value(), core_.cycles_);
}

void Timer0::sleep() {
    rebase(value(), core_.cycles_);
    frozen_ = true;
    if (event_) core_.scheduler_.cancel(event_);
    event_ = 0;
}

void Timer0::wake() {
    frozen_ = false;
    rebase(originValue_, core_.cycles_);
}

void Timer0::written(uint8_t v) {
    // The write lands at the end of the instruction; two more cycles pass
    // before the counter runs again. The prescaler is cleared.
    edges_ = 0;
    rebase(v, core_.cycles_ + 1 + kWriteInhibit);
}

void Timer0::optionWritten() {
    uint8_t option = core_.ram_[reg::OPTION];
    if (option == lastOption_) return;
    // Count up to now with the old setting, then continue with the new one.
    uint8_t saved = core_.ram_[reg::OPTION];
    core_.ram_[reg::OPTION] = lastOption_;
    uint8_t current = value();
    core_.ram_[reg::OPTION] = saved;
    lastOption_ = option;
    ratio_ = ratio();
    rebase(current, core_.cycles_ + 1);
}

void Timer0::rebase(uint8_t v, uint64_t origin) {
    originValue_ = v;
    origin_ = origin;
    core_.ram_[reg::TMR0] = v;
    if (event_) core_.scheduler_.cancel(event_);
    event_ = 0;
    if (external() || frozen_) return;
    uint64_t at = origin + static_cast<uint64_t>(256 - v) * static_cast<uint64_t>(ratio_);
    event_ = core_.scheduler_.schedule(at, [this](uint64_t cycle) { overflow(cycle); });
}

void Timer0::overflow(uint64_t cycle) {
    event_ = 0;
    core_.ram_[reg::INTCON] |= reg::T0IF;
    rebase(0, cycle);
    core_.interruptStateChanged();
}

void Timer0::pinChanged(Pin&, bool level, uint64_t) {
    if (!external()) return;
    bool fallingEdge = (core_.ram_[reg::OPTION] & T0SE) != 0;
    if (level == fallingEdge) return;
    if (++edges_ < ratio_) return;
    edges_ = 0;
    originValue_ = static_cast<uint8_t>(originValue_ + 1);
    core_.ram_[reg::TMR0] = originValue_;
    if (originValue_ == 0) {
        core_.ram_[reg::INTCON] |= reg::T0IF;
        core_.interruptStateChanged();
    }
}

} // namespace zorvel::sim::core
