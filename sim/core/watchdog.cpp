#include "sim/core/watchdog.h"

#include "sim/core/core_impl.h"

#include <cmath>

namespace zorvel::sim::core {

namespace {
constexpr double kNominalSeconds = 0.018;
}

Watchdog::Watchdog(Pic16::Impl& core) : core_(core) {
    core.hookWrite(reg::OPTION, [this](uint8_t) { reschedule(); });
}

void Watchdog::reset() {
    int mask = core_.layout_.fuseWdt;
    enabled_ = mask > 0 && (core_.configWord_ & mask) != 0;
    event_ = 0; // the scheduler was cleared by the reset
    restart(0);
}

void Watchdog::restart(uint64_t delay) {
    lastClear_ = core_.cycles_ + delay;
    reschedule();
}

uint64_t Watchdog::period() const {
    auto base = static_cast<uint64_t>(std::llround(kNominalSeconds / core_.cycleSeconds()));
    // On a clock slow enough to round the period to 0 the time-out would fall
    // on the cycle of the reset it causes, again and again, without end.
    if (base < 1) base = 1;
    uint8_t option = core_.ram_[reg::OPTION];
    if (option & 0x08) base <<= (option & 7);
    return base;
}

void Watchdog::reschedule() {
    if (event_) core_.scheduler_.cancel(event_);
    event_ = 0;
    if (!enabled_) return;
    event_ = core_.scheduler_.schedule(lastClear_ + period(), [this](uint64_t) {
        event_ = 0;
        core_.watchdogTimeout();
    });
}

} // namespace zorvel::sim::core
