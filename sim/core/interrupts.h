// The interrupt logic: INTCON enables and flags, the peripheral flags
// PIR1/PIR2 gated by PIE1/PIE2 and PEIE, and the global enable GIE.
#pragma once

#include "sim/pic16.h"

namespace zorvel::sim::core {

class Interrupts {
public:
    explicit Interrupts(Pic16::Impl& core);
    void reset();
    // An enabled flag is set (GIE not considered): wakes the device from SLEEP.
    bool anyEnabled() const;
    // An interrupt will be taken after the current instruction.
    bool pending() const;

private:
    Pic16::Impl& core_;
    int pir1_, pie1_, pir2_, pie2_;
};

} // namespace zorvel::sim::core
