// FREQOUT, SOUND and DTMFOUT at every crystal with a delay routine (4, 8,
// 10, 12, 16 and 20 MHz), over more frequencies, notes and durations than
// the execution tests: the same checks, and the worst figures printed per
// crystal.
#include "support/tone_checks.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

const int kCrystals[] = {4, 8, 10, 12, 16, 20};

class ToneSweep : public testing::TestWithParam<int> {};

// One tone from 100 Hz to a quarter of the rate of passes (2500 X a
// second), two tones, durations from 50 ms to 1 s.
TEST_P(ToneSweep, Freqout) {
    int mhz = GetParam();
    double passRate = 2500.0 * mhz;
    std::vector<FreqoutCase> cases;
    for (int f : {100, 250, 440, 697, 1000, 1477, 2000, 3000, 4000, 6000, 9000, 12000})
        if (f <= 0.25 * passRate) cases.push_back({100, f});
    for (int ms : {50, 300, 1000})
        cases.push_back({ms, 1000});
    cases.push_back({100, 300, 3000});
    cases.push_back({100, 941, 1633});
    cases.push_back({200, 500, 700});
    ToneFigures f = checkFreqout(mhz, cases);
    std::printf("FREQOUT %d MHz: %s\n", mhz, f.text().c_str());
}

TEST_P(ToneSweep, Sound) {
    int mhz = GetParam();
    std::vector<SoundCase> cases;
    for (int note : {1, 2, 10, 32, 64, 96, 110, 120, 126, 127})
        cases.push_back({note, 10});
    for (int duration : {1, 5, 40})
        cases.push_back({90, duration});
    for (int note : {0, 128, 255})
        cases.push_back({note, 20});
    ToneFigures f = checkSound(mhz, cases);
    std::printf("SOUND %d MHz: %s\n", mhz, f.text().c_str());
}

TEST_P(ToneSweep, Dtmf) {
    int mhz = GetParam();
    ToneFigures f = checkDtmf(mhz, 100, 100, "0123456789*#ABCD", 10);
    f.add(checkDtmf(mhz, 200, 50, "147*2580369#ABCD", 10));
    f.add(checkDtmf(mhz, 60, 60, "D5A9", 10));
    std::printf("DTMFOUT %d MHz: %s\n", mhz, f.text().c_str());
}

INSTANTIATE_TEST_SUITE_P(Crystals, ToneSweep, testing::ValuesIn(kCrystals),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

} // namespace
} // namespace zorvel::test
