#include "sim/parts/keypad4x4.h"
#include "sim/parts/logic_probe.h"
#include "sim/parts/loose_pins.h"
#include "sim/parts/pulse_source.h"
#include "sim/parts/shift_slave.h"
#include "sim/vcd.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace zorvel::sim;
using zorvel::test::LoosePins;

TEST(ShiftSlave, RecordsBitsOnTheRisingEdge) {
    LoosePins bench;
    bench.drive("CLK", false);
    ShiftSlave slave({"CLK", "DAT", std::nullopt, true});
    slave.connect(bench.wiring());
    uint8_t value = 0xB2;
    for (int i = 7; i >= 0; --i) {
        bench.drive("DAT", (value >> i) & 1);
        bench.advance(2);
        bench.drive("CLK", true);
        bench.advance(2);
        bench.drive("DAT", !((value >> i) & 1)); // changes while high do not count
        bench.drive("CLK", false);
    }
    ASSERT_EQ(slave.bits().size(), 8u);
    EXPECT_EQ(slave.bytesMsbFirst(), std::vector<uint8_t>{0xB2});
    EXPECT_EQ(slave.bytesLsbFirst(), std::vector<uint8_t>{0x4D});
}

TEST(ShiftSlave, FallingEdgeMode) {
    LoosePins bench;
    bench.drive("CLK", true);
    ShiftSlave slave({"CLK", "DAT", std::nullopt, false});
    slave.connect(bench.wiring());
    for (bool bit : {true, false, true}) {
        bench.drive("DAT", bit);
        bench.drive("CLK", false);
        bench.drive("CLK", true);
    }
    EXPECT_EQ(slave.bits(), (std::vector<bool>{true, false, true}));
    EXPECT_TRUE(slave.bytesMsbFirst().empty());
}

TEST(ShiftSlave, PresentsBitsForShiftIn) {
    LoosePins bench;
    bench.drive("CLK", false);
    ShiftSlave slave({"CLK", std::nullopt, "DOUT", true});
    slave.connect(bench.wiring());
    slave.presentByte(0xC5);
    uint8_t got = 0;
    for (int i = 0; i < 8; ++i) {
        got = static_cast<uint8_t>(got << 1 | (bench.level("DOUT") ? 1 : 0));
        bench.drive("CLK", true);
        bench.drive("CLK", false);
    }
    EXPECT_EQ(got, 0xC5);
    EXPECT_EQ(bench.pin("DOUT").external(), std::nullopt);
}

namespace {
struct KeypadBench : ::testing::Test {
    LoosePins bench;
    Keypad4x4 pad{{"R0", "R1", "R2", "R3"}, {"C0", "C1", "C2", "C3"}};
    void SetUp() override { pad.connect(bench.wiring()); }
    // Scans like firmware: one row low at a time; returns the label or 0.
    char scan() {
        for (int r = 0; r < 4; ++r) {
            for (int k = 0; k < 4; ++k)
                bench.release("R" + std::to_string(k));
            bench.drive("R" + std::to_string(r), false);
            for (int c = 0; c < 4; ++c)
                if (!bench.level("C" + std::to_string(c))) return Keypad4x4::labels[r * 4 + c];
        }
        return 0;
    }
};
} // namespace

TEST_F(KeypadBench, ColumnsReadHighWithNothingPressed) {
    EXPECT_EQ(scan(), 0);
    for (int c = 0; c < 4; ++c)
        EXPECT_TRUE(bench.level("C" + std::to_string(c)));
}

TEST_F(KeypadBench, APressedKeyJoinsItsRowAndColumn) {
    ASSERT_TRUE(pad.press('6'));
    EXPECT_EQ(scan(), '6');
    pad.release('6');
    EXPECT_EQ(scan(), 0);
    pad.press(3, 2); // '#'
    EXPECT_EQ(scan(), '#');
    EXPECT_FALSE(pad.press('Q'));
}

TEST_F(KeypadBench, OnlyTheDrivenRowPullsTheColumn) {
    pad.press('1');
    bench.drive("R1", false);
    EXPECT_TRUE(bench.level("C0"));
    bench.drive("R0", false);
    EXPECT_FALSE(bench.level("C0"));
    bench.drive("R0", true);
    EXPECT_TRUE(bench.level("C0"));
}

TEST(LogicProbe, EdgesWidthsAndFrequency) {
    LoosePins bench; // 1 us cycles
    bench.drive("P", false);
    LogicProbe probe("P");
    probe.connect(bench.wiring());
    for (int i = 0; i < 5; ++i) {
        bench.drive("P", true);
        bench.advance(30);
        bench.drive("P", false);
        bench.advance(70);
    }
    EXPECT_EQ(probe.edges().size(), 10u);
    EXPECT_EQ(probe.risingEdges(), 5);
    EXPECT_EQ(probe.highWidths(), std::vector<uint64_t>(5, 30));
    EXPECT_EQ(probe.lowWidths(), std::vector<uint64_t>(4, 70));
    EXPECT_NEAR(probe.frequency(), 10000.0, 1e-6);
}

TEST(PulseSource, SinglePulseAndTrain) {
    LoosePins bench;
    PulseSource source("RB0");
    LogicProbe probe("RB0");
    source.connect(bench.wiring());
    probe.connect(bench.wiring());
    source.pulse(100, source.cyclesForMicroseconds(25));
    source.train(1000, 10, 50, 3);
    bench.advance(2000);
    ASSERT_EQ(probe.edges().size(), 8u);
    EXPECT_EQ(probe.edges()[0].cycle, 100u);
    EXPECT_EQ(probe.highWidths(), (std::vector<uint64_t>{25, 10, 10, 10}));
    EXPECT_EQ(probe.edges()[4].cycle, 1050u);
}

TEST(RcSource, ReadsHighAfterTheChargeTime) {
    LoosePins bench; // 1 us cycles
    RcSource rc("RB3", 200);
    rc.connect(bench.wiring());
    EXPECT_TRUE(bench.level("RB3"));
    bench.drive("RB3", false); // discharge
    bench.advance(10);
    bench.release("RB3");
    uint64_t released = bench.now();
    bench.advance(1);
    EXPECT_FALSE(bench.level("RB3"));
    while (!bench.level("RB3") && bench.now() < released + 1000)
        bench.advance(1);
    EXPECT_NEAR(static_cast<double>(bench.now() - released), 200.0, 2.0);
    EXPECT_EQ(rc.measurements(), 1);
    rc.setChargeMicroseconds(50);
    bench.drive("RB3", false);
    bench.advance(5);
    bench.release("RB3");
    released = bench.now();
    while (!bench.level("RB3") && bench.now() < released + 1000)
        bench.advance(1);
    EXPECT_NEAR(static_cast<double>(bench.now() - released), 50.0, 2.0);
}

TEST(RcSource, DrivenHighStaysCharged) {
    LoosePins bench;
    RcSource rc("RB3", 200);
    rc.connect(bench.wiring());
    bench.drive("RB3", true);
    bench.advance(5);
    bench.release("RB3");
    bench.advance(2);
    EXPECT_TRUE(bench.level("RB3"));
    EXPECT_EQ(rc.measurements(), 0);
}

TEST(VcdWriter, WritesHeaderInitialValuesAndChanges) {
    LoosePins bench(0.2e-6); // 200 ns cycles
    bench.drive("PORTB.0", true);
    bench.drive("PORTB.1", false);
    std::ostringstream out;
    VcdWriter vcd(out);
    vcd.connect({&bench.pin("PORTB.0"), &bench.pin("PORTB.1")}, 0.2e-6, 0);
    bench.advance(10);
    bench.drive("PORTB.1", true);
    bench.advance(5);
    bench.drive("PORTB.0", false);
    vcd.finish(20);
    std::string text = out.str();
    EXPECT_NE(text.find("$timescale 1ns $end"), std::string::npos);
    EXPECT_NE(text.find("$var wire 1 ! PORTB_0 $end"), std::string::npos);
    EXPECT_NE(text.find("$var wire 1 \" PORTB_1 $end"), std::string::npos);
    EXPECT_NE(text.find("$dumpvars\n1!\n0\"\n$end\n"), std::string::npos);
    EXPECT_NE(text.find("#2000\n1\"\n#3000\n0!\n#4000\n"), std::string::npos);
    EXPECT_EQ(vcd.changes(), 2u);
}
