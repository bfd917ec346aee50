// PRINT, CLS, CURSOR, the output formatters and INKEY in the simulator at 4
// and 20 MHz, against an HD44780 and a 4x4 keypad wired to the pins (see
// tests/support/lcd_checks.h). tests/exec/sweep/lcd_sweep_test.cpp runs the
// display checks at all six crystals.
#include "support/lcd_checks.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <ostream>

namespace zorvel::test {
namespace {

class LcdStatements : public testing::TestWithParam<int> {};

TEST_P(LcdStatements, TextStandsWhereTheCursorPutsIt) {
    for (LcdBus bus : {LcdBus::FourBitHigh, LcdBus::FourBitLow, LcdBus::EightBit})
        for (int lines : {1, 2, 4})
            std::printf("%s\n", checkDisplay(GetParam(), bus, lines).c_str());
}

TEST_P(LcdStatements, InkeyReadsEveryKey) {
    for (bool portB : {true, false})
        std::printf("%s\n", checkKeypad(GetParam(), portB).c_str());
}

INSTANTIATE_TEST_SUITE_P(Crystals, LcdStatements, testing::Values(4, 20),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

class LcdFormatters : public testing::TestWithParam<Operand> {};

} // namespace

// The operand kind by name in the test's description.
void PrintTo(Operand operand, std::ostream* out) {
    *out << operandName(operand);
}

namespace {

TEST_P(LcdFormatters, PrintTheReferenceText) {
    std::printf("%s\n", checkFormatters(4, GetParam(), 8).c_str());
}

INSTANTIATE_TEST_SUITE_P(Operands, LcdFormatters,
                         testing::Values(Operand::Byte, Operand::Word, Operand::Bit,
                                         Operand::Element, Operand::Expression, Operand::Function),
                         [](const testing::TestParamInfo<Operand>& info) {
                             std::string name = operandName(info.param);
                             for (char& ch : name)
                                 if (ch == ' ') ch = '_';
                             return name;
                         });

TEST(LcdStrings, RepeatsAndStringsFromEveryBank) {
    std::printf("%s\n", checkRepeatsAndStrings(20, 4).c_str());
}

} // namespace
} // namespace zorvel::test
