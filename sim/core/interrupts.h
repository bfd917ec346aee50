// The interrupt logic: INTCON enables and flags, the peripheral flags
// PIR1/PIR2 gated by PIE1/PIE2 and PEIE, and the global enable GIE. On
// devices without PIR1 (16F84/84A, 16F83, 16C84) INTCON<6> is EEIE and gates
// the EEPROM write flag EEIF, EECON1<4>.
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
    int eecon1_ = -1; // EECON1 (canonical) when it holds EEIF (no PIR1), else -1
};

} // namespace zorvel::sim::core
