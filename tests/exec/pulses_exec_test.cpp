// The pulse and measurement statements run in the simulator at 4 and 20 MHz:
// PULSOUT widths, PULSIN and RCIN readings of known pulses, COUNTER on square
// waves, POT over RC charge times, PWM's duty and HPWM's CCP output, each
// against the result the routine's documented arithmetic gives (see
// tests/support/pulse_checks.h). tests/exec/sweep/ runs larger tables at all
// six crystals.
#include "support/pulse_checks.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <random>

namespace zorvel::test {
namespace {

class PulseStatements : public testing::TestWithParam<int> {};

TEST_P(PulseStatements, PulsoutIsTenCyclesPerCount) {
    std::vector<int> counts = {0,   1,   2,   3,   9,    10,   11,    99,
                               100, 255, 256, 257, 1000, 4095, 32768, 65535};
    std::mt19937 rng(1234);
    std::uniform_int_distribution<int> count(1, 3000);
    for (int i = 0; i < 20; ++i)
        counts.push_back(count(rng));
    std::printf("%s\n", checkPulsout(GetParam(), counts).c_str());
}

TEST_P(PulseStatements, PulsinReadsPulseWidths) {
    std::vector<uint64_t> widths = {5,    9,     10,     11,     15,     19,    20,   21,
                                    29,   55,    99,     100,    101,    999,   1000, 1001,
                                    4567, 65530, 123456, 655340, 655355, 655370};
    std::printf("%s\n", checkPulsin(GetParam(), widths, 4).c_str());
}

TEST_P(PulseStatements, RcinCountsFromTheCall) {
    std::vector<uint64_t> cycles = {0,  1,   2,   9,     10,     11,     19,    20,
                                    21, 100, 101, 12345, 655350, 655351, 700000};
    std::printf("%s\n", checkRcin(GetParam(), cycles).c_str());
}

TEST_P(PulseStatements, CounterCountsRisingEdgesInThePeriod) {
    // The fastest wave the routine follows (20 cycles high, 20 low), uneven
    // ones, and slower ones over periods from 0 to 250 ms.
    std::vector<CounterCase> cases = {{40, 20, 10},       {41, 20, 10},   {60, 40, 5},
                                      {333, 100, 50},     {1000, 500, 1}, {1000, 500, 100},
                                      {12345, 6000, 250}, {500, 250, 0}};
    std::printf("%s\n", checkCounter(GetParam(), cases).c_str());
}

TEST_P(PulseStatements, PotFollowsTheChargeTime) {
    std::vector<double> us = {0,   5,    19,   20,   21,   39,   40,   41,   100,
                              500, 1000, 2500, 5000, 5100, 5120, 5121, 5140, 6000};
    std::printf("%s\n", checkPot(GetParam(), us, {255, 128, 64, 1, 0}).c_str());
    // Finer steps over the range with the full scale: never decreasing.
    std::vector<double> fine;
    for (double t = 0; t <= 5400; t += 37)
        fine.push_back(t);
    std::printf("%s\n", checkPot(GetParam(), fine, {255}).c_str());
}

TEST_P(PulseStatements, PwmDutyIsDutyOver256) {
    std::printf(
        "%s\n",
        checkPwm(GetParam(), {0, 1, 2, 3, 64, 127, 128, 129, 200, 254, 255}, {0, 1, 2, 5}).c_str());
}

TEST_P(PulseStatements, HpwmFrequencyAndDuty) {
    int mhz = GetParam();
    std::vector<int> hz =
        mhz == 4 ? std::vector<int>{244,  245,  250,  300,  500,   977,  1000,
                                    2000, 3906, 3907, 5000, 10000, 20000}
                 : std::vector<int>{1216,  1221,  1250,  2000,  4883,  5000,  10000, 19531,
                                    19532, 20000, 32767, 32768, 38000, 50000, 65535};
    std::vector<HpwmCase> cases;
    int channel = 1;
    for (int f : hz)
        for (int duty : {0, 1, 64, 128, 200, 255}) {
            cases.push_back({channel, f, duty});
            channel = 3 - channel;
        }
    std::printf("%s\n", checkHpwm(mhz, cases).c_str());
}

INSTANTIATE_TEST_SUITE_P(Crystals, PulseStatements, testing::Values(4, 20),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

// A device without PORTC and CCP2: HPWM drives CCP1 on RB3 for either channel.
TEST(PulseStatementsOn16F628A, HpwmOnRb3) {
    std::printf("%s\n", checkHpwm(4, {{1, 1000, 128}, {2, 500, 64}, {1, 250, 255}, {1, 20000, 10}},
                                  "16F628A")
                            .c_str());
}

} // namespace
} // namespace zorvel::test
