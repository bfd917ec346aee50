// Timer0: an 8-bit counter of instruction cycles (or of T0CKI edges) through
// the prescaler selected by OPTION_REG; a program write inhibits counting
// for two cycles; the overflow sets INTCON.T0IF. The count is computed from
// the cycle counter when read, and the overflow is a scheduled event.
#pragma once

#include "sim/pic16.h"
#include "sim/pins.h"

#include <cstdint>

namespace zorvel::sim::core {

class Timer0 : public PinListener {
public:
    explicit Timer0(Pic16::Impl& core);
    void reset();
    uint8_t value() const;
    // The prescaler is cleared (CLRWDT with the prescaler on the watchdog).
    void clearPrescaler();
    // The instruction clock stops in SLEEP, and Timer0 with it.
    void sleep();
    void wake();
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

private:
    bool external() const;
    int ratio() const;
    void written(uint8_t value);
    void optionWritten();
    void rebase(uint8_t value, uint64_t origin);
    void overflow(uint64_t cycle);

    Pic16::Impl& core_;
    uint8_t originValue_ = 0;
    uint64_t origin_ = 0; // cycle from which counting runs
    int ratio_ = 1;
    int edges_ = 0; // prescaler count in external mode
    uint8_t lastOption_ = 0xFF;
    int event_ = 0;
    bool frozen_ = false;
};

} // namespace zorvel::sim::core
