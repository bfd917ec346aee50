// CCP1/CCP2 in PWM mode (CCPxCON<3:2> = 11). Each Timer2 period starts with
// the pin high (low when the duty is 0) and latches the duty
// CCPRxL:CCPxCON<5:4>, a count of Tosc * prescale; the pin falls that long
// after the period start (rounded to the nearest instruction cycle) unless
// the duty reaches the period. Entering PWM mode drives the pin low until the
// first period. The module claims the pin while in PWM mode (program writes
// to the port latch do not disturb it) and releases it to the port when it
// leaves PWM mode; the pin is driven only while its TRIS bit is 0. Capture
// and compare modes are not modelled.
#include "sim/peripherals/peripherals.h"
#include "sim/peripherals/support.h"
#include "sim/peripherals/timer2.h"
#include "sim/pic16.h"

#include <string>

namespace zorvel::sim {

namespace {

class Ccp : public Peripheral {
public:
    Ccp(CoreAccess& core, Timer2& timer2, int index) : core_(core), timer2_(timer2) {
        const DeviceLayout& l = core.layout();
        std::string n = std::to_string(index);
        con_ = l.address("CCP" + n + "CON");
        rl_ = l.address("CCPR" + n + "L");
        rh_ = l.address("CCPR" + n + "H");
        pin_ = choosePin(index);
        core.hookWrite(con_, [this](uint8_t v) { onConWrite(v); });
        timer2.onPeriod([this](uint64_t cycle) { periodStart(cycle); });
    }

    void reset(ResetKind) override {
        cancelFall();
        core_.storage(con_) = 0;
        if (pwm_) periph::driveIfOutput(pin_, std::nullopt, core_.cycles());
        pwm_ = false;
    }

private:
    Pin* choosePin(int index) {
        const DeviceLayout& l = core_.layout();
        if (l.has("PORTC")) return periph::portPin(core_, 'C', index == 1 ? 2 : 1);
        if (l.name == "16F88" || l.name == "16F87") {
            bool onRb0 = (core_.configWord() >> 12) & 1; // CCPMX
            return periph::portPin(core_, 'B', onRb0 ? 0 : 3);
        }
        return periph::portPin(core_, 'B', 3);
    }

    void onConWrite(uint8_t v) {
        core_.storage(con_) = v & 0x3F;
        bool pwm = (v & 0x0C) == 0x0C;
        if (pwm && !pwm_) periph::driveIfOutput(pin_, false, core_.cycles());
        if (!pwm) cancelFall();
        if (!pwm && pwm_) periph::driveIfOutput(pin_, std::nullopt, core_.cycles());
        pwm_ = pwm;
    }

    void cancelFall() {
        if (fall_ != 0) core_.scheduler().cancel(fall_);
        fall_ = 0;
    }

    void periodStart(uint64_t cycle) {
        if (!pwm_) return;
        cancelFall();
        uint8_t low = core_.storage(rl_);
        if (rh_ >= 0) core_.storage(rh_) = low;
        int duty = (low << 2) | ((core_.storage(con_) >> 4) & 3);
        uint64_t high = (uint64_t(duty) * uint64_t(timer2_.prescale()) + 2) / 4;
        periph::driveIfOutput(pin_, duty != 0, cycle);
        if (duty == 0 || high >= timer2_.periodCycles()) return;
        fall_ = core_.scheduler().schedule(cycle + high, [this, cycle, high](uint64_t) {
            fall_ = 0;
            periph::driveIfOutput(pin_, false, cycle + high);
        });
    }

    CoreAccess& core_;
    Timer2& timer2_;
    int con_ = -1, rl_ = -1, rh_ = -1;
    Pin* pin_ = nullptr;
    bool pwm_ = false;
    int fall_ = 0;
};

} // namespace

std::unique_ptr<Peripheral> makeCcp(CoreAccess& core, Timer2& timer2, int index) {
    std::string n = std::to_string(index);
    if (!core.layout().has("CCP" + n + "CON") || !core.layout().has("CCPR" + n + "L"))
        return nullptr;
    return std::make_unique<Ccp>(core, timer2, index);
}

} // namespace zorvel::sim
