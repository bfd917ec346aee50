// Programs assembled with gpasm and run on the simulated 16F877 with parts
// attached: the parts see the program only through its pins.
#include "sim/parts/hd44780.h"
#include "sim/parts/i2c_eeprom.h"
#include "sim/parts/logic_probe.h"
#include "sim/parts/uart_receiver.h"
#include "sim/pic16.h"
#include "support/test_support.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace zorvel::sim;

namespace {

// Assembles tests/sim/parts/programs/<name>.asm and loads it into a 16F877 at 4 MHz.
std::unique_ptr<Pic16> loadProgram(const zorvel::test::TempDir& dir, const std::string& name) {
    std::filesystem::path source =
        std::filesystem::path(ZORVEL_SIM_TEST_DATA) / "parts" / "programs" / (name + ".asm");
    std::filesystem::path hexFile = dir.path() / (name + ".hex");
    std::string command = "gpasm -a inhx8m -i -w 2 -p p16f877 -o '" + hexFile.string() + "' '" +
                          source.string() + "' > '" + (dir.path() / "gpasm.log").string() +
                          "' 2>&1";
    if (std::system(command.c_str()) != 0) return nullptr;
    std::string error;
    auto layout =
        loadDeviceLayout(std::filesystem::path(ZORVEL_SOURCE_DATA) / "inc", "16F877", error);
    auto hex = readHex(hexFile, error);
    if (!layout || !hex) return nullptr;
    auto pic = std::make_unique<Pic16>(*layout, 4.0);
    pic->load(*hex);
    return pic;
}

} // namespace

TEST(PartsWithPrograms, BitBangedHelloAt9600Baud) {
    zorvel::test::TempDir dir;
    auto pic = loadProgram(dir, "uart_hello");
    ASSERT_TRUE(pic);
    auto rx = std::make_unique<UartReceiver>("PORTB.0", 9600);
    auto probe = std::make_unique<LogicProbe>("RB0");
    UartReceiver& uart = *rx;
    LogicProbe& edges = *probe;
    pic->attach(std::move(rx));
    pic->attach(std::move(probe));
    pic->run(20000);
    EXPECT_EQ(uart.text(), "Hello");
    EXPECT_EQ(uart.framingErrors(), 0);
    ASSERT_EQ(uart.bytes().size(), 5u);
    // The start bit of 'H' is the first falling edge on the pin.
    ASSERT_GE(edges.edges().size(), 2u);
    EXPECT_EQ(uart.bytes()[0].startCycle, edges.edges()[1].cycle);
    EXPECT_FALSE(edges.edges()[1].level);
}

TEST(PartsWithPrograms, LcdInFourBitMode) {
    zorvel::test::TempDir dir;
    auto pic = loadProgram(dir, "lcd_4bit");
    ASSERT_TRUE(pic);
    auto part = std::make_unique<Hd44780>(
        Hd44780Pins{"PORTB.4", "PORTB.5", std::nullopt, {"RB0", "RB1", "RB2", "RB3"}, 2, 16});
    Hd44780& lcd = *part;
    pic->attach(std::move(part));
    pic->run(60000);
    EXPECT_TRUE(lcd.fourBitInterface());
    EXPECT_EQ(lcd.busyViolations(), 0);
    ASSERT_EQ(lcd.lines().size(), 2u);
    EXPECT_EQ(lcd.lines()[0], "Zorvel LCD      ");
    EXPECT_EQ(lcd.lines()[1], "4-bit ok        ");
}

TEST(PartsWithPrograms, I2cEepromWriteThenRead) {
    zorvel::test::TempDir dir;
    auto pic = loadProgram(dir, "i2c_eeprom");
    ASSERT_TRUE(pic);
    auto part = std::make_unique<I2cEeprom>("PORTC.4", "PORTC.3");
    I2cEeprom& eeprom = *part;
    pic->attach(std::move(part));
    Pic16& p = *pic;
    pic->runUntil([&p] { return p.peek(0x34) == 0xAA; }, 200000);
    ASSERT_EQ(pic->peek(0x34), 0xAA);
    EXPECT_EQ(eeprom.memory()[0x100], 'Z');
    EXPECT_EQ(eeprom.memory()[0x101], 'o');
    EXPECT_EQ(eeprom.memory()[0x102], 'r');
    EXPECT_EQ(pic->peek(0x30), 'Z');
    EXPECT_EQ(pic->peek(0x31), 'o');
    EXPECT_EQ(pic->peek(0x32), 'r');
    EXPECT_GT(pic->peek(0x33), 1); // acknowledge polling went round more than once
    EXPECT_GE(pic->cycles(), 5000u);
}
