// The watchdog timer: a nominal 18 ms period at the simulated crystal,
// lengthened by the prescaler when OPTION_REG.PSA assigns it to the
// watchdog; enabled by the WDTE configuration bit. A time-out resets the
// device, or wakes it from SLEEP.
#pragma once

#include "sim/pic16.h"

#include <cstdint>

namespace zorvel::sim::core {

class Watchdog {
public:
    explicit Watchdog(Pic16::Impl& core);
    void reset();
    // CLRWDT and SLEEP: the count restarts at the end of the instruction.
    void clear() { restart(1); }
    void restart(uint64_t delay);
    bool enabled() const { return enabled_; }
    // Cycles from a clear to the time-out with the current OPTION_REG.
    uint64_t period() const;

private:
    void reschedule();
    Pic16::Impl& core_;
    bool enabled_ = false;
    uint64_t lastClear_ = 0;
    int event_ = 0;
};

} // namespace zorvel::sim::core
