// The LCD and keypad checks of tests/exec/lcd_exec_test.cpp at all six
// crystals: every bus and line count with its measured E pulse and waits,
// INKEY on both ports, the formatters on every operand kind and the string
// and repeat routines with more random values.
#include "support/lcd_checks.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

class LcdSweep : public testing::TestWithParam<int> {};

TEST_P(LcdSweep, DisplayTimingAndText) {
    for (LcdBus bus : {LcdBus::FourBitHigh, LcdBus::FourBitLow, LcdBus::EightBit})
        for (int lines : {1, 2, 4})
            std::printf("%s\n", checkDisplay(GetParam(), bus, lines).c_str());
}

TEST_P(LcdSweep, Keypad) {
    for (bool portB : {true, false})
        std::printf("%s\n", checkKeypad(GetParam(), portB).c_str());
}

TEST_P(LcdSweep, Formatters) {
    for (Operand operand : {Operand::Byte, Operand::Word, Operand::Bit, Operand::Element,
                            Operand::Expression, Operand::Function})
        std::printf("%s\n", checkFormatters(GetParam(), operand, 40).c_str());
    std::printf("%s\n", checkRepeatsAndStrings(GetParam(), 20).c_str());
}

INSTANTIATE_TEST_SUITE_P(Crystals, LcdSweep, testing::Values(4, 8, 10, 12, 16, 20),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

} // namespace
} // namespace zorvel::test
