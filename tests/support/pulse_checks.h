// Checks of the pulse and measurement statements in the simulator, shared by
// the execution tests (4 and 20 MHz) and the crystal sweep: each compiles a
// small 16F877 program, attaches sources and probes to its pins, runs it case
// by case, reports every case outside the expected result through gtest
// (with its input) and returns the measured figures as a line of text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zorvel::test {

// PULSOUT with counts `counts`, idling low (HIGH option) and high (LOW
// option): each pulse must be exactly 10 x count cycles; a count of 0 makes
// no pulse.
std::string checkPulsout(int mhz, const std::vector<int>& counts);

// PULSIN of high pulses (state 1) and low pulses (state 0) of `widths`
// cycles, each at `phases` random phases (fixed seed): the result must be
// width / 10 rounded down or up. A pin that stays in the state, one that
// never pulses and a pulse of 65536 units or more give 0.
std::string checkPulsin(int mhz, const std::vector<uint64_t>& widths, int phases);

// RCIN with the pin leaving the state `cycles` after crin's first
// instruction: the result must be cycles / 10 rounded up (at least 1), and
// 0 from 65536 units on.
std::string checkRcin(int mhz, const std::vector<uint64_t>& cycles);

// One COUNTER case: a square wave of `period` cycles, high for `high`,
// counted for `ms` milliseconds.
struct CounterCase {
    uint64_t period, high;
    int ms;
};
// The count must be the number of rising edges inside the window, which
// must last exactly the period; and within one count of frequency x period.
std::string checkCounter(int mhz, const std::vector<CounterCase>& cases);

// POT over RcSource charge times (us) with `scales`: the result must be
// min(255, count x scale / 256), count being the charge time in 20 us units
// rounded up (one cycle of the release less), and must not decrease as the
// charge time grows.
std::string checkPot(int mhz, const std::vector<double>& chargeUs, const std::vector<int>& scales);

// PWM with each duty for each cycle count: the pin's high time must be
// exactly 20 x duty x cycles - 8 cycles of the 5120 x cycles (duty 0: none),
// within 1 % of duty / 256, and the pin an input afterwards.
std::string checkPwm(int mhz, const std::vector<int>& duties, const std::vector<int>& cycles);

// One HPWM case: channel, frequency (Hz) and duty.
struct HpwmCase {
    int channel, hz, duty;
};
// On the 16F877 (CCP1 on RC2, CCP2 on RC1) or the 16F628A (CCP1 on RB3):
// the CCP pin's period and high time must be the ones the documented
// arithmetic gives, the frequency within 2 % of the request and the duty
// within 2 % of duty / 256 (a constant level when the duty value is 0 or
// reaches the period).
std::string checkHpwm(int mhz, const std::vector<HpwmCase>& cases,
                      const std::string& device = "16F877");

} // namespace zorvel::test
