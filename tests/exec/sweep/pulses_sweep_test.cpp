// PULSOUT, PULSIN, RCIN, COUNTER, POT, PWM and HPWM at every crystal with a
// delay routine (4, 8, 10, 12, 16 and 20 MHz), over larger tables than the
// execution tests: every count, width and charge time in a range, every
// duty, frequencies across the timer's range. The same checks; the figures
// are printed per crystal.
#include "support/pulse_checks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>

namespace zorvel::test {
namespace {

const int kCrystals[] = {4, 8, 10, 12, 16, 20};

class PulseSweep : public testing::TestWithParam<int> {};

TEST_P(PulseSweep, Pulsout) {
    std::vector<int> counts;
    for (int n = 0; n <= 600; ++n)
        counts.push_back(n);
    std::mt19937 rng(99);
    std::uniform_int_distribution<int> count(601, 65535);
    for (int i = 0; i < 100; ++i)
        counts.push_back(count(rng));
    counts.push_back(65535);
    std::printf("%s\n", checkPulsout(GetParam(), counts).c_str());
}

TEST_P(PulseSweep, Pulsin) {
    std::vector<uint64_t> widths;
    for (uint64_t w = 1; w <= 400; ++w)
        widths.push_back(w);
    std::mt19937_64 rng(2024);
    std::uniform_int_distribution<uint64_t> width(401, 655360);
    for (int i = 0; i < 60; ++i)
        widths.push_back(width(rng));
    for (uint64_t w = 655340; w <= 655372; w += 4)
        widths.push_back(w);
    std::printf("%s\n", checkPulsin(GetParam(), widths, 3).c_str());
}

TEST_P(PulseSweep, Rcin) {
    std::vector<uint64_t> cycles;
    for (uint64_t w = 0; w <= 600; ++w)
        cycles.push_back(w);
    std::mt19937_64 rng(77);
    std::uniform_int_distribution<uint64_t> width(601, 655350);
    for (int i = 0; i < 60; ++i)
        cycles.push_back(width(rng));
    for (uint64_t w = 655340; w <= 655370; w += 5)
        cycles.push_back(w);
    std::printf("%s\n", checkRcin(GetParam(), cycles).c_str());
}

TEST_P(PulseSweep, Counter) {
    std::vector<CounterCase> cases;
    for (uint64_t period : {40, 41, 43, 50, 64, 99, 100, 128, 250, 333, 1000, 4096, 10007, 65536})
        for (int ms : {1, 7, 100})
            cases.push_back({period, period / 2, ms});
    cases.push_back({40, 20, 1000});
    cases.push_back({80, 20, 30});
    cases.push_back({80, 60, 30});
    cases.push_back({1000, 500, 0});
    std::printf("%s\n", checkCounter(GetParam(), cases).c_str());
}

TEST_P(PulseSweep, Pot) {
    std::vector<double> us;
    for (double t = 0; t <= 5300; t += 3)
        us.push_back(t);
    std::printf("%s\n", checkPot(GetParam(), us, {255}).c_str());
    std::vector<double> coarse;
    for (double t = 0; t <= 11000; t += 97)
        coarse.push_back(t);
    std::printf("%s\n", checkPot(GetParam(), coarse, {1, 2, 100, 128, 200, 254, 0}).c_str());
}

TEST_P(PulseSweep, Pwm) {
    std::vector<int> duties;
    for (int d = 0; d <= 255; ++d)
        duties.push_back(d);
    std::printf("%s\n", checkPwm(GetParam(), duties, {1, 3}).c_str());
}

// From the lowest frequency (period count 256 at 1:16) to the highest with
// at least 50 counts or 65535 Hz, in steps of about 3 %, with four duties.
TEST_P(PulseSweep, Hpwm) {
    int mhz = GetParam();
    double fosc = mhz * 1e6;
    int lowest = static_cast<int>(std::floor(fosc / 16448)) + 1;
    int highest = static_cast<int>(std::min(65535.0, fosc / 200));
    std::vector<HpwmCase> cases;
    int channel = 1;
    for (double f = lowest; f <= highest; f *= 1.03)
        for (int duty : {1, 77, 128, 255}) {
            cases.push_back({channel, static_cast<int>(f), duty});
            channel = 3 - channel;
        }
    cases.push_back({1, highest, 200});
    std::printf("%s\n", checkHpwm(mhz, cases).c_str());
}

INSTANTIATE_TEST_SUITE_P(Crystals, PulseSweep, testing::ValuesIn(kCrystals),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

} // namespace
} // namespace zorvel::test
