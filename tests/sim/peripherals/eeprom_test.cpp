// Data EEPROM and program-memory access through EECON1/EECON2, against a fake core.
#include "fake_core.h"
#include "sim/peripherals/eeprom.h"

#include <gtest/gtest.h>

namespace zorvel::sim::test {
namespace {

constexpr int RD = 0, WR = 1, WREN = 2, WRERR = 3, EEPGD = 7;

// The datasheet's sequence: MOVLW 55h / MOVWF EECON2 / MOVLW AAh / MOVWF EECON2 /
// BSF EECON1,WR, one cycle each; `extra` is the EECON1 bits besides WREN and WR.
void unlockAndWrite(FakeCore& core, uint8_t extra = 0) {
    core.write("EECON1", uint8_t(extra | 1u << WREN));
    core.advance(1);
    core.write("EECON2", 0x55);
    core.advance(2);
    core.write("EECON2", 0xAA);
    core.advance(1);
    core.write("EECON1", uint8_t(extra | 1u << WREN | 1u << WR));
}

struct WriteCase {
    const char* device;
    double mhz;
    uint64_t cycles;     // datasheet write time at this crystal
    const char* flagReg; // where EEIF is
    int flagBit;
};

class EepromWrite : public ::testing::TestWithParam<WriteCase> {};

TEST_P(EepromWrite, TakesTheWriteTimeThenSetsEeif) {
    const WriteCase& c = GetParam();
    FakeCore core(c.device, c.mhz);
    DataEeprom* eeprom = findDataEeprom(core.peripherals);
    ASSERT_NE(eeprom, nullptr);
    EXPECT_EQ(eeprom->writeCycles(), c.cycles);
    core.write("EEADR", 5);
    core.write("EEDATA", 0x3C);
    unlockAndWrite(core);
    uint64_t start = core.cycles();
    EXPECT_TRUE(core.bit("EECON1", WR));
    core.advanceTo(start + c.cycles - 1);
    EXPECT_TRUE(core.bit("EECON1", WR));
    EXPECT_EQ(eeprom->byte(5), 0xFF);
    EXPECT_FALSE(core.bit(c.flagReg, c.flagBit));
    int checks = core.interruptChecks;
    core.advance(1);
    EXPECT_FALSE(core.bit("EECON1", WR));
    EXPECT_EQ(eeprom->byte(5), 0x3C);
    EXPECT_TRUE(core.bit(c.flagReg, c.flagBit));
    EXPECT_GT(core.interruptChecks, checks);
}

INSTANTIATE_TEST_SUITE_P(Devices, EepromWrite,
                         ::testing::Values(WriteCase{"16F84", 4.0, 10000, "EECON1", 4},
                                           WriteCase{"16F84A", 4.0, 4000, "EECON1", 4},
                                           WriteCase{"16F84A", 20.0, 20000, "EECON1", 4},
                                           WriteCase{"16F877", 4.0, 4000, "PIR2", 4},
                                           WriteCase{"16F877", 20.0, 20000, "PIR2", 4},
                                           WriteCase{"16F628A", 4.0, 4000, "PIR1", 7}));

// Sequences that must not start a write.
struct BadSequence {
    const char* name;
    std::vector<std::pair<int, uint8_t>> steps; // (cycles to wait first, EECON2 value)
    int wrGap;                                  // cycles between the last step and setting WR
    bool wren;
};

class EepromLocked : public ::testing::TestWithParam<BadSequence> {};

TEST_P(EepromLocked, DoesNotWrite) {
    const BadSequence& s = GetParam();
    FakeCore core("16F877", 4.0);
    core.write("EEADR", 1);
    core.write("EEDATA", 0x42);
    core.write("EECON1", s.wren ? uint8_t(1u << WREN) : 0);
    for (auto [wait, value] : s.steps) {
        core.advance(uint64_t(wait));
        core.write("EECON2", value);
    }
    core.advance(uint64_t(s.wrGap));
    core.write("EECON1", uint8_t((s.wren ? 1u << WREN : 0) | 1u << WR));
    EXPECT_FALSE(core.bit("EECON1", WR));
    core.advance(10000);
    EXPECT_EQ(findDataEeprom(core.peripherals)->byte(1), 0xFF);
    EXPECT_FALSE(core.bit("PIR2", 4));
}

INSTANTIATE_TEST_SUITE_P(
    Sequences, EepromLocked,
    ::testing::Values(BadSequence{"NoWren", {{1, 0x55}, {2, 0xAA}}, 1, false},
                      BadSequence{"NoUnlock", {}, 1, true},
                      BadSequence{"Reversed", {{1, 0xAA}, {2, 0x55}}, 1, true},
                      BadSequence{"OnlyAA", {{1, 0xAA}}, 1, true},
                      BadSequence{"SlowAA", {{1, 0x55}, {3, 0xAA}}, 1, true},
                      BadSequence{"SlowWr", {{1, 0x55}, {2, 0xAA}}, 2, true},
                      BadSequence{"Interrupted", {{1, 0x55}, {1, 0x00}, {1, 0xAA}}, 1, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Eeprom, ReadIsImmediateAndLoadsTheImage) {
    FakeCore core("16F84", 4.0);
    DataEeprom* eeprom = findDataEeprom(core.peripherals);
    eeprom->load({{0, 0x11}, {63, 0x99}, {64, 0x77}});
    EXPECT_EQ(eeprom->byte(0), 0x11);
    EXPECT_EQ(eeprom->byte(1), 0xFF);
    EXPECT_EQ(eeprom->size(), 64);
    core.write("EEADR", 63);
    core.write("EECON1", 1u << RD);
    EXPECT_EQ(core.read("EEDATA"), 0x99);
    EXPECT_FALSE(core.bit("EECON1", RD));
    EXPECT_EQ(core.read("EECON2"), 0);
}

TEST(Eeprom, WriteRepeatedWhileBusyIsIgnored) {
    FakeCore core("16F628A", 4.0);
    core.write("EEADR", 2);
    core.write("EEDATA", 0x10);
    unlockAndWrite(core);
    core.advance(100);
    core.write("EEDATA", 0x20);
    unlockAndWrite(core);
    core.advance(3900);
    EXPECT_EQ(findDataEeprom(core.peripherals)->byte(2), 0x10);
    EXPECT_FALSE(core.bit("EECON1", WR));
}

TEST(Eeprom, ResetDuringWriteSetsWrerr) {
    FakeCore core("16F877", 4.0);
    core.write("EEADR", 3);
    core.write("EEDATA", 0x55);
    unlockAndWrite(core);
    core.advance(100);
    core.resetAll(ResetKind::Mclr);
    EXPECT_TRUE(core.bit("EECON1", WRERR));
    EXPECT_FALSE(core.bit("EECON1", WR));
    core.advance(5000);
    EXPECT_EQ(findDataEeprom(core.peripherals)->byte(3), 0xFF);
    core.resetAll(ResetKind::PowerOn);
    EXPECT_FALSE(core.bit("EECON1", WRERR));
}

TEST(Eeprom, ProgramMemoryReadAndWriteOn16F877) {
    FakeCore core("16F877", 20.0);
    core.program[0x1234] = 0x2ABC;
    core.write("EEADRH", 0x12);
    core.write("EEADR", 0x34);
    core.write("EECON1", uint8_t(1u << EEPGD | 1u << RD));
    EXPECT_EQ(core.read("EEDATA"), 0xBC);
    EXPECT_EQ(core.read("EEDATH"), 0x2A);

    core.write("EEADR", 0x35);
    core.write("EEDATH", 0x31);
    core.write("EEDATA", 0x7E);
    unlockAndWrite(core, 1u << EEPGD);
    EXPECT_EQ(core.program[0x1235], 0x317E);
    EXPECT_EQ(core.stalled, 10000u); // 2 ms at 20 MHz
    EXPECT_FALSE(core.bit("EECON1", WR));
    EXPECT_TRUE(core.bit("PIR2", 4));
}

TEST(Eeprom, DevicesWithoutEepromHaveNone) {
    FakeCore core("16F74", 4.0);
    EXPECT_EQ(findDataEeprom(core.peripherals), nullptr);
}

} // namespace
} // namespace zorvel::sim::test
