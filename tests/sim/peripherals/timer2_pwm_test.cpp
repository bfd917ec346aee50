// Timer2 and CCP PWM against a fake core: TMR2 counting, TMR2IF timing, PWM
// period and duty seen on the CCP pin.
#include "fake_core.h"

#include <gtest/gtest.h>

namespace zorvel::sim::test {
namespace {

constexpr int TMR2IF = 1;

struct FlagCase {
    double mhz;
    uint8_t pr2;
    uint8_t t2con;
    uint64_t cycles; // until the first TMR2IF
};

class Timer2Flag : public ::testing::TestWithParam<FlagCase> {};

TEST_P(Timer2Flag, SetsTmr2ifAfterPeriodTimesPostscale) {
    const FlagCase& c = GetParam();
    FakeCore core("16F877", c.mhz);
    core.write("PR2", c.pr2);
    core.write("T2CON", c.t2con);
    uint64_t start = core.cycles();
    core.advanceTo(start + c.cycles - 1);
    EXPECT_FALSE(core.bit("PIR1", TMR2IF));
    core.advance(1);
    EXPECT_TRUE(core.bit("PIR1", TMR2IF));
    EXPECT_EQ(core.read("TMR2"), 0);
}

INSTANTIATE_TEST_SUITE_P(Scalers, Timer2Flag,
                         ::testing::Values(FlagCase{4.0, 9, 0x04, 10},               // 1:1, 1:1
                                           FlagCase{4.0, 249, 0x05, 1000},           // prescale 4
                                           FlagCase{20.0, 249, 0x4D, 250 * 4 * 10},  // postscale 10
                                           FlagCase{20.0, 255, 0x7E, 256 * 16 * 16}, // 1:16, 1:16
                                           FlagCase{4.0, 0, 0x04, 1}));              // PR2 = 0

TEST(Timer2, CountsWithThePrescaler) {
    FakeCore core("16F877", 4.0);
    core.write("PR2", 100);
    core.write("T2CON", 0x05); // on, prescale 4
    core.advance(3);
    EXPECT_EQ(core.read("TMR2"), 0);
    core.advance(1);
    EXPECT_EQ(core.read("TMR2"), 1);
    core.advance(4 * 50);
    EXPECT_EQ(core.read("TMR2"), 51);
    core.write("T2CON", 0x01); // off
    core.advance(100);
    EXPECT_EQ(core.read("TMR2"), 51);
    core.write("TMR2", 99);
    core.write("T2CON", 0x04); // on, 1:1
    core.advance(2);
    EXPECT_EQ(core.read("TMR2"), 0); // 99, 100, reset
}

TEST(Timer2, AbovePr2WrapsWithoutAMatch) {
    FakeCore core("16F877", 4.0);
    core.write("PR2", 10);
    core.write("TMR2", 250);
    core.write("T2CON", 0x04);
    core.advance(6);
    EXPECT_EQ(core.read("TMR2"), 0);
    EXPECT_FALSE(core.bit("PIR1", TMR2IF));
    core.advance(11);
    EXPECT_TRUE(core.bit("PIR1", TMR2IF));
}

struct PwmCase {
    const char* device;
    char port;
    int bit;
    const char* tris;
    const char* ccpcon;
    const char* ccprl;
    uint8_t pr2, t2con, ccprlValue, dcLow;
    uint64_t period, high;
};

class Pwm : public ::testing::TestWithParam<PwmCase> {};

TEST_P(Pwm, PeriodAndDutyOnThePin) {
    const PwmCase& c = GetParam();
    FakeCore core(c.device, 4.0);
    Pin* pin = core.pinByName(c.port, c.bit);
    EdgeRecorder edges;
    pin->addListener(&edges);
    core.write(c.tris, uint8_t(~(1u << c.bit)));
    core.write("PR2", c.pr2);
    core.write(c.ccprl, c.ccprlValue);
    core.write(c.ccpcon, uint8_t(0x0C | c.dcLow << 4));
    core.write("T2CON", c.t2con);
    core.advance(c.period * 5 + 1);
    ASSERT_GE(edges.edges.size(), 8u);
    // From the first rising edge on: rise, fall, rise, fall ...
    size_t first = edges.edges[0].second ? 0 : 1;
    for (size_t i = first; i + 2 < edges.edges.size(); i += 2) {
        EXPECT_TRUE(edges.edges[i].second);
        EXPECT_FALSE(edges.edges[i + 1].second);
        EXPECT_EQ(edges.edges[i + 1].first - edges.edges[i].first, c.high) << i;
        EXPECT_EQ(edges.edges[i + 2].first - edges.edges[i].first, c.period) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Duties, Pwm,
    ::testing::Values(
        // duty = (CCPRxL:DC1B) * Tosc * prescale; period = (PR2 + 1) * prescale cycles
        PwmCase{"16F877", 'C', 2, "TRISC", "CCP1CON", "CCPR1L", 99, 0x04, 25, 0, 100, 25},
        PwmCase{"16F877", 'C', 2, "TRISC", "CCP1CON", "CCPR1L", 99, 0x04, 25, 2, 100, 26},
        PwmCase{"16F877", 'C', 1, "TRISC", "CCP2CON", "CCPR2L", 49, 0x05, 10, 0, 200, 40},
        PwmCase{"16F877", 'C', 2, "TRISC", "CCP1CON", "CCPR1L", 63, 0x06, 16, 1, 1024, 260},
        PwmCase{"16F628A", 'B', 3, "TRISB", "CCP1CON", "CCPR1L", 199, 0x04, 150, 0, 200, 150}));

TEST(PwmPin, NotDrivenWhenTrisIsSet) {
    FakeCore core("16F877", 4.0);
    Pin* pin = core.pinByName('C', 2);
    core.write("TRISC", 0xFF);
    core.write("PR2", 9);
    core.write("CCPR1L", 5);
    core.write("CCP1CON", 0x0C);
    core.write("T2CON", 0x04);
    core.advance(100);
    EXPECT_FALSE(pin->picDrives());
}

TEST(PwmPin, ZeroAndFullDuty) {
    FakeCore core("16F877", 4.0);
    Pin* pin = core.pinByName('C', 2);
    EdgeRecorder edges;
    pin->addListener(&edges);
    core.write("TRISC", 0x00);
    core.write("PR2", 9);
    core.write("CCPR1L", 0);
    core.write("CCP1CON", 0x0C);
    core.write("T2CON", 0x04);
    core.advance(100);
    EXPECT_TRUE(edges.edges.empty());
    EXPECT_FALSE(pin->level());
    core.write("CCPR1L", 10); // duty 40 Tosc = 10 cycles = the whole period
    core.advance(100);
    ASSERT_EQ(edges.edges.size(), 1u);
    EXPECT_TRUE(pin->level());
}

} // namespace
} // namespace zorvel::sim::test
