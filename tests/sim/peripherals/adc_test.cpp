// The A/D converter against a fake core: conversion time, result, flags.
#include "fake_core.h"

#include <gtest/gtest.h>

namespace zorvel::sim::test {
namespace {

constexpr int ADON = 0, GO = 2, ADIF = 6;

struct TimingCase {
    const char* device;
    double mhz;
    int adcs;        // ADCON0<7:6>
    uint64_t cycles; // conversion time
};

class AdcTiming : public ::testing::TestWithParam<TimingCase> {};

TEST_P(AdcTiming, FinishesAfterTheConversionTime) {
    const TimingCase& c = GetParam();
    FakeCore core(c.device, c.mhz);
    core.pinByName('A', 0)->setVoltage(2.5);
    uint8_t con0 = uint8_t(c.adcs << 6 | 1u << ADON);
    core.write("ADCON0", con0);
    core.advance(5);
    core.write("ADCON0", uint8_t(con0 | 1u << GO));
    uint64_t start = core.cycles();
    core.advanceTo(start + c.cycles - 1);
    EXPECT_TRUE(core.bit("ADCON0", GO));
    EXPECT_FALSE(core.bit("PIR1", ADIF));
    core.advance(1);
    EXPECT_FALSE(core.bit("ADCON0", GO));
    EXPECT_TRUE(core.bit("PIR1", ADIF));
}

// 12 TAD for 10-bit converters, 9.5 TAD for 8-bit ones; TAD = 2, 8, 32 Tosc or
// 4 us (RC, plus one cycle).
INSTANTIATE_TEST_SUITE_P(
    Clocks, AdcTiming,
    ::testing::Values(TimingCase{"16F877", 4.0, 0, 6}, TimingCase{"16F877", 4.0, 1, 24},
                      TimingCase{"16F877", 20.0, 2, 96}, TimingCase{"16F877", 4.0, 3, 49},
                      TimingCase{"16F877", 20.0, 3, 241}, TimingCase{"16F74", 4.0, 1, 19},
                      TimingCase{"16F74", 20.0, 2, 76}));

struct ResultCase {
    const char* device;
    int channel;
    char port;
    int bit;
    double volts;
    bool rightJustified;
    uint8_t high, low; // ADRESH:ADRESL (ADRES alone for 8-bit converters)
};

class AdcResult : public ::testing::TestWithParam<ResultCase> {};

TEST_P(AdcResult, ConvertsThePinVoltage) {
    const ResultCase& c = GetParam();
    FakeCore core(c.device, 4.0);
    core.pinByName(c.port, c.bit)->setVoltage(c.volts);
    bool tenBits = core.layout().has("ADRESL");
    core.write("ADCON1", c.rightJustified ? 0x80 : 0x00);
    uint8_t con0 = uint8_t(1u << 6 | c.channel << 3 | 1u << ADON);
    core.write("ADCON0", con0);
    core.write("ADCON0", uint8_t(con0 | 1u << GO));
    core.advance(30);
    ASSERT_TRUE(core.bit("PIR1", ADIF));
    if (tenBits) {
        EXPECT_EQ(core.read("ADRESH"), c.high);
        EXPECT_EQ(core.read("ADRESL"), c.low);
    } else {
        EXPECT_EQ(core.read("ADRES"), c.high);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Channels, AdcResult,
    ::testing::Values(ResultCase{"16F877", 0, 'A', 0, 2.5, true, 0x02, 0x00},   // 512
                      ResultCase{"16F877", 0, 'A', 0, 2.5, false, 0x80, 0x00},  // 512 left
                      ResultCase{"16F877", 1, 'A', 1, 1.0, true, 0x00, 0xCC},   // 204
                      ResultCase{"16F877", 4, 'A', 5, 5.0, true, 0x03, 0xFF},   // full scale
                      ResultCase{"16F877", 7, 'E', 2, 3.3, false, 0xA8, 0xC0},  // 675
                      ResultCase{"16F877", 5, 'E', 0, 0.0, true, 0x00, 0x00},   //
                      ResultCase{"16F876", 3, 'A', 3, 4.0, true, 0x03, 0x33},   // 819
                      ResultCase{"16F74", 2, 'A', 2, 2.5, false, 0x80, 0x00},   // 8-bit 128
                      ResultCase{"16F74", 6, 'E', 1, 6.0, false, 0xFF, 0x00})); // clamped

TEST(Adc, GoWithoutAdonDoesNothing) {
    FakeCore core("16F877", 4.0);
    core.write("ADCON0", 1u << GO);
    EXPECT_FALSE(core.bit("ADCON0", GO));
    core.advance(100);
    EXPECT_FALSE(core.bit("PIR1", ADIF));
}

TEST(Adc, ClearingGoAbandonsTheConversion) {
    FakeCore core("16F877", 4.0);
    core.pinByName('A', 0)->setVoltage(5.0);
    core.write("ADCON0", 0x41 | 1u << GO);
    core.advance(10);
    core.write("ADCON0", 0x41);
    core.advance(100);
    EXPECT_FALSE(core.bit("PIR1", ADIF));
    EXPECT_EQ(core.read("ADRESH"), 0);
}

TEST(Adc, SamplesTheVoltageWhenGoIsSet) {
    FakeCore core("16F877", 4.0);
    Pin* an0 = core.pinByName('A', 0);
    an0->setVoltage(5.0);
    core.write("ADCON1", 0x80);
    core.write("ADCON0", 0x41 | 1u << GO);
    an0->setVoltage(0.0);
    core.advance(24);
    EXPECT_EQ(core.read("ADRESH"), 0x03);
    EXPECT_EQ(core.read("ADRESL"), 0xFF);
}

} // namespace
} // namespace zorvel::sim::test
