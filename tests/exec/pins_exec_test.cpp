// The direct pin commands in the simulator on each port style (PORTA to
// PORTE, GPIO): the direction and port registers they leave, and their
// effect on bytes, words, bits and array elements; SLEEP and SNOOZE really
// sleep and wake after their watchdog periods.
#include "sim/parts/logic_probe.h"
#include "support/exec_support.h"

#include <gtest/gtest.h>
#include <map>

namespace zorvel::test {
namespace {

struct PinCase {
    const char* device;
    std::string statements;
    std::map<std::string, int> registers; // register name -> value at END
};

const PinCase kPinCases[] = {
    {"16F877", "HIGH PORTB.3", {{"TRISB", 0xF7}, {"PORTB", 0x08}}},
    {"16F877", "SET PORTD.7 : LOW PORTD.7", {{"TRISD", 0x7F}, {"PORTD", 0x00}}},
    {"16F877", "HIGH PORTD", {{"TRISD", 0x00}, {"PORTD", 0xFF}}},
    {"16F877", "HIGH PORTC : CLEAR PORTC", {{"TRISC", 0x00}, {"PORTC", 0x00}}},
    {"16F877", "HIGH PORTE.2", {{"TRISE", 0x03}, {"PORTE", 0x04}}},
    {"16F877",
     "TOGGLE PORTC.0 : TOGGLE PORTC.1 : TOGGLE PORTC.1",
     {{"TRISC", 0xFC}, {"PORTC", 0x01}}},
    {"16F877", "OUTPUT PORTA.4 : OUTPUT PORTA.1 : INPUT PORTA.4", {{"TRISA", 0x3D}}},
    // A pin number: 0 to 7 are PORTB, 8 to 15 PORTA.
    {"16F877", "X = 6 : TOGGLE X : TOGGLE 9", {{"TRISB", 0xBF}, {"PORTB", 0x40}, {"TRISA", 0x3D}}},
    {"16F84A",
     "HIGH PORTA.2 : LOW PORTB.0 : TOGGLE PORTB.7",
     {{"TRISA", 0x1B}, {"PORTA", 0x04}, {"TRISB", 0x7E}, {"PORTB", 0x80}}},
    {"16F84A", "OUTPUT PORTB.5 : HIGH PORTB.5 : INPUT PORTB.5", {{"TRISB", 0xFF}}},
    {"12F675",
     "HIGH GPIO.2 : TOGGLE GPIO.0 : OUTPUT GPIO.1 : LOW GPIO.1",
     {{"TRISIO", 0x38}, {"GPIO", 0x05}}},
    {"12F675", "X = 4 : TOGGLE X", {{"TRISIO", 0x2F}, {"GPIO", 0x10}}},
};

class PinCommands : public testing::TestWithParam<PinCase> {};

// Analogue inputs off, so that the port pins read digital.
std::string digitalPorts(const std::string& device) {
    if (device == "16F877") return "ADCON1 = 7\n";
    if (device == "12F675") return "CMCON = 7\nANSEL = 0\n";
    return "";
}

TEST_P(PinCommands, LeaveDirectionAndLevels) {
    const PinCase& k = GetParam();
    std::string source = std::string("DEVICE ") + k.device + "\nDIM X AS BYTE\n" +
                         digitalPorts(k.device) + k.statements + "\nEND\n";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    ASSERT_TRUE(p.runToEnd()) << source;
    for (const auto& [name, value] : k.registers)
        EXPECT_EQ(p.pic().peek(name), value) << name << "\n" << source;
}

INSTANTIATE_TEST_SUITE_P(Ports, PinCommands, testing::ValuesIn(kPinCases));

TEST(PinCommands, SetAndClearVariablesBitsAndElements) {
    std::string source = lines({"DEVICE 16F877", "DIM B AS BYTE",
                                "DIM W AS WORD", "DIM F AS BIT",
                                "DIM G AS BIT",  "DIM AR[4] AS BYTE",
                                "DIM I AS BYTE", "B = 7",
                                "W = 300",       "G = 1",
                                "SET B",         "SET W",
                                "SET F",         "CLEAR G",
                                "I = 2",         "HIGH AR[I]",
                                "HIGH AR[0]",    "SET W.9",
                                "LOW W.0",       "END"});
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.byte("B"), 255);
    EXPECT_EQ(p.word("W"), 65534);
    EXPECT_EQ(p.bit("F"), 1);
    EXPECT_EQ(p.bit("G"), 0);
    EXPECT_EQ(p.byte("AR#0"), 255);
    EXPECT_EQ(p.byte("AR#1"), 0);
    EXPECT_EQ(p.byte("AR#2"), 255);
    EXPECT_EQ(p.byte("AR#3"), 0);
}

// SERVO's pulse lasts the requested microseconds within 1 % or 2 cycles at
// every crystal, for constant, byte and word widths.
TEST(Servo, PulseWidthIsTheRequestedMicroseconds) {
    for (int mhz : {4, 8, 10, 12, 16, 20}) {
        SimProgram p(lines({"DEVICE 16F84A", "DECLARE XTAL " + std::to_string(mhz),
                            "DIM WB AS BYTE", "DIM WW AS WORD", "WB = 200", "WW = 2000",
                            "SERVO PORTB.4, 1500", "SERVO PORTB.4, WB", "SERVO PORTB.4, WW",
                            "SERVO PORTB.4, 1000", "SERVO PORTB.4, 60", "END"}),
                     mhz);
        ASSERT_TRUE(p.ok()) << p.failure();
        auto probe = std::make_unique<sim::LogicProbe>("PORTB.4");
        sim::LogicProbe& pins = *probe;
        p.pic().attach(std::move(probe));
        ASSERT_TRUE(p.runToEnd());
        const double widths[] = {1500, 200, 2000, 1000, 60};
        std::vector<uint64_t> measured = pins.highWidths();
        ASSERT_EQ(measured.size(), std::size(widths)) << mhz << " MHz";
        for (size_t i = 0; i < measured.size(); ++i) {
            double cycles = widths[i] * mhz / 4.0;
            EXPECT_NEAR(static_cast<double>(measured[i]), cycles, std::max(2.0, cycles * 0.01))
                << mhz << " MHz, SERVO " << widths[i] << " us";
        }
    }
}

// The watchdog's nominal period is 18 ms; SNOOZE n sleeps 2^n of them and
// SLEEP s sleeps s x 28444 / 512 of them (s seconds less at most one).
TEST(Sleeping, SnoozeAndSleepWakeAfterTheirWatchdogPeriods) {
    for (double mhz : {4.0, 20.0}) {
        SimProgram p(
            lines({"DEVICE 16F877", "DIM N AS BYTE", "N = 3", "NAP0:", "SNOOZE 72MS",
                   "NAP1:", "SNOOZE N", "NAP2:", "SNOOZE 1S", "NAP3:", "SLEEP 2", "NAP4:", "END"}),
            mhz);
        ASSERT_TRUE(p.ok()) << p.failure();
        const double perMs = mhz * 250;
        struct Step {
            const char* to;
            double ms;
        } steps[] = {{"NAP1", 72}, {"NAP2", 144}, {"NAP3", 576}, {"NAP4", 111 * 18}};
        ASSERT_TRUE(p.runTo("NAP0"));
        for (const Step& s : steps) {
            uint64_t start = p.pic().cycles();
            ASSERT_TRUE(p.runTo(s.to, 100'000'000)) << s.to;
            double ms = static_cast<double>(p.pic().cycles() - start) / perMs;
            // A few hundred cycles of set-up beside each nap.
            EXPECT_NEAR(ms, s.ms, s.ms * 0.005 + 0.5) << mhz << " MHz, to " << s.to;
        }
    }
}

} // namespace
} // namespace zorvel::test
