// Timer2: TMR2 counting prescaled instruction cycles up to PR2, the
// postscaler and TMR2IF. CCP modules in PWM mode follow its periods.
#pragma once

#include "sim/peripheral.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace zorvel::sim {

class Timer2 : public Peripheral {
public:
    explicit Timer2(CoreAccess& core);
    void reset(ResetKind kind) override;

    // Called at the cycle TMR2 resets to 0 after matching PR2 (a new PWM period).
    void onPeriod(std::function<void(uint64_t cycle)> listener);
    int prescale() const { return prescale_; }
    // Instruction cycles of one period: (PR2 + 1) * prescale.
    uint64_t periodCycles() const;
    // TMR2 at `now`.
    uint8_t value(uint64_t now) const;

private:
    void sync(uint64_t now);
    void restart(uint64_t now);
    void reschedule();
    void periodEnd(uint64_t cycle, bool matched);
    void onT2conWrite(uint8_t value);
    uint8_t pr2() const;

    CoreAccess& core_;
    int tmr2_ = -1, t2con_ = -1, pr2_ = -1, pir1_ = -1;
    bool running_ = false;
    int prescale_ = 1;
    int postscale_ = 1;
    int postCount_ = 0;
    uint8_t value_ = 0; // TMR2 at cycle base_
    uint64_t base_ = 0; // cycle of the last increment (or of the last write)
    int event_ = 0;     // scheduled reset of TMR2, 0 when none
    std::vector<std::function<void(uint64_t)>> listeners_;
};

} // namespace zorvel::sim
