// The device model: definition files, DEVICE and the allocation of system
// variables, DECLARE settings, CONFIG, SET_OSCCAL and the port check.
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/device.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

int addressOf(const Compilation& c, const std::string& name) {
    const SymbolEntry* e = c.symbols.find(name);
    return e ? e->address : -999;
}

std::string fields(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "F" + std::to_string(i) + " = " + std::to_string(i) + "\n";
    return text;
}

TEST(DeviceFile, ParsesFieldsRegistersAndFuses) {
    DeviceFile f =
        parseDeviceFile(fields(46) + "PORTB = $06\n\n; Configuration fuses\nWDT_OFF = $3FFB\n");
    ASSERT_EQ(f.error, "");
    EXPECT_EQ(f.info.field[45], 45);
    EXPECT_EQ(f.names,
              (std::vector<std::pair<std::string, int>>{{"PORTB", 6}, {"WDT_OFF", 0x3FFB}}));
    EXPECT_EQ(f.fuses.count("WDT_OFF"), 1u);
    EXPECT_EQ(f.fuses.count("PORTB"), 0u);
}

TEST(DeviceFile, ValueRulesAndMalformedFiles) {
    std::string text = fields(46);
    text.replace(text.find("F3 = 3"), 6, "F3 = $FFFF");
    text.replace(text.find("F4 = 4"), 6, "f4 = -1");
    DeviceFile good = parseDeviceFile(text);
    ASSERT_EQ(good.error, "");
    EXPECT_EQ(good.info.field[3], -1); // 65535 reads as -1
    EXPECT_EQ(good.info.field[4], -1);
    EXPECT_EQ(parseDeviceFile(fields(45)).error, "it has 45 lines, fewer than the 46 field lines");
    EXPECT_EQ(parseDeviceFile(fields(46) + "PORTB = six\n").error, "line 47 is not NAME = number");
    std::string blankField = fields(46);
    blankField.replace(blankField.find("F7 = 7"), 6, "");
    EXPECT_EQ(parseDeviceFile(blankField).error, "line 8 is not NAME = number");
    // Without a fuse section every name may be used as a fuse.
    DeviceFile old = parseDeviceFile(fields(46) + "XT_OSC = $3FFD\n");
    EXPECT_EQ(old.fuses.count("XT_OSC"), 1u);
}

TEST(DeviceFile, MalformedFileIsReportedAndNotUsed) {
    TempDir home;
    home.write("inc/P16F84.inf", fields(46)); // default device: good
    home.write("inc/PBROKEN.inf", fields(10));
    std::filesystem::path src = home.write("prog.bas", "DEVICE BROKEN\n");
    CompileResult r = compileFile(src, home.path());
    EXPECT_EQ(r.alerts, (Lines{"Device definition file PBROKEN.inf is malformed: it has 10 lines, "
                               "fewer than the 46 field lines."}));
    EXPECT_EQ(r.messages, (Lines{"\t\t*** DEVICE NOT SPECIFIED ***"}));
}

TEST(LoadDevice, DefaultDeviceAndSystemVariables) {
    CompileResult r = compileSource("");
    const Compilation& c = *r.compilation;
    EXPECT_EQ(c.device.name, "16F84");
    EXPECT_TRUE(c.ctx.defaultDevice);
    EXPECT_EQ(c.device.info.ramCapacity(), 68);
    const char* order[] = {"GEN",   "GENH", "GEN2", "GEN2H", "GEN3", "GEN3H", "GEN4",
                           "GEN4H", "PP0",  "PP0H", "PP1",   "PP1H", "PP2",   "PP2H",
                           "PP3",   "PP3H", "PP4",  "PP4H",  "PP5",  "PP5H",  "PP6",
                           "PP6H",  "PP7",  "PP7H", "GPR",   "BPF",  "BPFH"};
    for (int i = 0; i < 27; ++i)
        EXPECT_EQ(addressOf(c, order[i]), 12 + i) << order[i];
    EXPECT_EQ(c.symbols.find("GEN")->kind, kKindWord);
    EXPECT_EQ(c.symbols.find("GPR")->kind, kKindByte);
    EXPECT_EQ(c.device.allocAddress, 39);
    EXPECT_EQ(c.ctx.variablesUsed, 0);
    EXPECT_EQ(addressOf(c, "PORTLO"), 6);
    EXPECT_EQ(addressOf(c, "PORTHI"), 5);
    EXPECT_EQ(addressOf(c, "TRISLO"), 0x86);
    EXPECT_EQ(addressOf(c, "TRISHI"), 0x85);
    EXPECT_EQ(c.symbols.find("PORTLO")->kind, kKindNum);
    for (const char* name : {"RANDOM", "EREAD", "SIN", "INKEY"})
        EXPECT_EQ(addressOf(c, name), 0);
    EXPECT_EQ(c.symbols.find("XTAL")->kind, kKindNum);
    EXPECT_EQ(addressOf(c, "XTAL"), 4);
    EXPECT_EQ(c.symbols.find("WSAVE"), nullptr);
}

TEST(LoadDevice, InterruptSaveBytesOnAFourBankDevice) {
    CompileResult r = compileSource("DEVICE 16F877\nON_INTERRUPT GOTO ISR\nISR:\n");
    ASSERT_EQ(r.errors, 0) << r.messages[0];
    const Compilation& c = *r.compilation;
    EXPECT_EQ(c.device.name, "16F877");
    EXPECT_FALSE(c.ctx.defaultDevice);
    EXPECT_EQ(addressOf(c, "WSAVE"), 32);
    EXPECT_EQ(addressOf(c, "SSAVE"), 33);
    EXPECT_EQ(addressOf(c, "PSAVE"), 34);
    EXPECT_EQ(addressOf(c, "FSRSAVE"), 35);
    EXPECT_EQ(addressOf(c, "WSAVE1"), 160);
    EXPECT_EQ(addressOf(c, "WSAVE2"), 288);
    EXPECT_EQ(addressOf(c, "WSAVE3"), 416);
    EXPECT_EQ(addressOf(c, "GEN"), 36);
    EXPECT_EQ(c.ctx.variablesUsed, 7);
    EXPECT_EQ(addressOf(c, "PORTHI"), 7); // PORTC
    EXPECT_TRUE(c.device.interruptUsed);
    EXPECT_EQ(c.device.handlerLabel, "ISR");
}

TEST(LoadDevice, InterruptSaveBytesOnTheDefaultDevice) {
    CompileResult r = compileSource("ON_INTERRUPT ISR\nISR:\n");
    ASSERT_EQ(r.errors, 0);
    const Compilation& c = *r.compilation;
    EXPECT_EQ(addressOf(c, "WSAVE"), 12);
    EXPECT_EQ(c.symbols.find("WSAVE1"), nullptr); // one RAM bank
    EXPECT_EQ(addressOf(c, "GEN"), 16);
    EXPECT_EQ(c.ctx.variablesUsed, 4);
}

TEST(LoadDevice, UnknownDeviceAndRepeatedDevice) {
    CompileResult bad = compileSource("DEVICE 16F999\n");
    EXPECT_EQ(bad.alerts, (Lines{"Unrecognised PIC type."}));
    EXPECT_EQ(bad.messages, (Lines{"\t\t*** DEVICE NOT SPECIFIED ***"}));
    EXPECT_EQ(bad.errors, 1);

    CompileResult twice = compileSource("DEVICE 16F877\nDEVICE 16F84\n");
    EXPECT_EQ(twice.errors, 0);
    EXPECT_EQ(twice.compilation->device.name, "16F877");

    CompileResult longName = compileSource("DEVICE 16F8777777777777777777\n");
    EXPECT_EQ(longName.messages[0],
              frame(1, "DEVICE 16F8777777777777777777",
                    "Device name '16F8777777777777777777' is too long. 19 characters maximum"));
}

struct SettingCase {
    std::string source;
    Setting key;
    int number;
    std::string port;
    int pin;
    friend void PrintTo(const SettingCase& c, std::ostream* os) { *os << c.source; }
};

class DeclareSetting : public ::testing::TestWithParam<SettingCase> {};

TEST_P(DeclareSetting, StoresValueAndMark) {
    const SettingCase& tc = GetParam();
    CompileResult r = compileSource(tc.source);
    ASSERT_EQ(r.errors, 0) << r.messages[0];
    const SettingValue& s = r.compilation->device.settings[tc.key];
    EXPECT_TRUE(s.declared);
    EXPECT_EQ(s.number, tc.number);
    EXPECT_EQ(s.port, tc.port);
    EXPECT_EQ(s.pin, tc.pin);
}

INSTANTIATE_TEST_SUITE_P(
    Device, DeclareSetting,
    ::testing::Values(SettingCase{"DECLARE XTAL 20", kXtal, 20, "", 0},
                      SettingCase{"DECLARE BOOTLOADER OFF", kBootloader, 0, "", 0},
                      SettingCase{"DECLARE BOOTLOADER FALSE", kBootloader, 0, "", 0},
                      SettingCase{"DECLARE BOOTLOADER MAYBE", kBootloader, 1, "", 0},
                      SettingCase{"DECLARE SLOW_BUS ON", kSlowBus, 1, "", 0},
                      SettingCase{"DECLARE SLOW_BUS TRUE", kSlowBus, 0, "", 0},
                      SettingCase{"DECLARE RSOUT_MODE INVERTED", kRsoutMode, 1, "", 0},
                      SettingCase{"DECLARE RSOUT_MODE TRUE", kRsoutMode, 0, "", 0},
                      SettingCase{"DECLARE RSIN_MODE 1", kRsinMode, 1, "", 0},
                      SettingCase{"DECLARE SERIAL_BAUD 2400 * 2", kSerialBaud, 4800, "", 0},
                      SettingCase{"DECLARE RSOUT_PIN PORTA.2", kRsoutPin, 0, "PORTA", 2},
                      SettingCase{"DECLARE SDA_PIN PORTB.7", kSdaPin, 0, "PORTB", 7},
                      SettingCase{"DEVICE 16F877\nDECLARE LCD_DTPIN PORTD.4", kLcdDtPin, 0, "PORTD",
                                  4},
                      SettingCase{"DECLARE LCD_INTERFACE 8", kLcdInterface, 8, "", 0},
                      SettingCase{"DECLARE LCD_LINES 4", kLcdLines, 4, "", 0},
                      SettingCase{"DECLARE KEYPAD_PORT PORTA", kKeypadPort, 0, "PORTA", 0},
                      SettingCase{"DECLARE ADIN_TAD 8_FOSC", kAdinTad, 1, "", 0},
                      SettingCase{"DECLARE ADIN_TAD FRC", kAdinTad, 3, "", 0},
                      SettingCase{"DECLARE ADIN_TAD 2", kAdinTad, 2, "", 0},
                      SettingCase{"DECLARE LCD_TYPE 1", kLcdType, 1, "", 0}));

TEST(DeclareSetting, DefaultsWithoutDeclare) {
    CompileResult r = compileSource("");
    const DeviceSettings& s = r.compilation->device.settings;
    EXPECT_EQ(s[kXtal].number, 4);
    EXPECT_EQ(s[kSerialBaud].number, 9600);
    EXPECT_EQ(s[kRsoutMode].number, 1);
    EXPECT_EQ(s[kRsinTimeout].number, 1000);
    EXPECT_EQ(s[kSdaPin].port, "PortA");
    EXPECT_EQ(s[kSclPin].pin, 1);
    EXPECT_EQ(s[kLcdDtPin].pin, 4);
    EXPECT_EQ(s[kAdinStime].number, 50);
    EXPECT_EQ(s[kAdinTad].number, 3);
    EXPECT_EQ(s[kBootloader].number, 1);
    for (const SettingValue& v : s.values)
        EXPECT_FALSE(v.declared);
}

TEST(DeclareSetting, XtalConstantFollowsTheSetting) {
    CompileResult r = compileSource("DEVICE 16F877\nDECLARE XTAL 20\nORG XTAL * 2\n");
    EXPECT_EQ(statementLines("DEVICE 16F877\nDECLARE XTAL 20\nORG XTAL * 2\n"),
              (Lines{"\tOrg 40"}));
}

struct DeclareError {
    std::string source;
    std::string message;
    friend void PrintTo(const DeclareError& c, std::ostream* os) { *os << c.source; }
};

class DeclareErrors : public ::testing::TestWithParam<DeclareError> {};

TEST_P(DeclareErrors, ReportsExactLine) {
    CompileResult r = compileSource(GetParam().source);
    ASSERT_FALSE(r.messages.empty());
    EXPECT_EQ(r.messages[0], GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Device, DeclareErrors,
    ::testing::Values(
        DeclareError{"DECLARE XTAL", frame(1, "DECLARE XTAL", "Syntax Error")},
        DeclareError{"DECLARE LCD_INTERFACE 5",
                     frame(1, "DECLARE LCD_INTERFACE 5", "Invalid LCD interface type")},
        DeclareError{"DECLARE LCD_LINES 3",
                     frame(1, "DECLARE LCD_LINES 3", "Invalid number of Lines. 1, 2 or 4")},
        DeclareError{"DECLARE KEYPAD_PORT TRISB",
                     frame(1, "DECLARE KEYPAD_PORT TRISB", "Not a valid Port declaration")},
        DeclareError{"DECLARE RSOUT_PIN PORTB",
                     frame(1, "DECLARE RSOUT_PIN PORTB", "Not a valid Port/Bit combination")},
        DeclareError{"DECLARE RSOUT_PIN PORTB.9", frame(1, "DECLARE RSOUT_PIN PORTB.9",
                                                        "Bit value too large for this variable")},
        DeclareError{"DECLARE RSOUT_PIN STATUS.2",
                     frame(1, "DECLARE RSOUT_PIN STATUS.2", "Unknown port Definition")},
        DeclareError{"DEVICE 16F737\nDECLARE RSIN_PIN PORTE.3",
                     frame(2, "DECLARE RSIN_PIN PORTE.3", "Invalid Port for this device")},
        DeclareError{"DECLARE RSOUT_MODE SIDEWAYS",
                     frame(1, "DECLARE RSOUT_MODE SIDEWAYS", "TRUE or INVERTED expected")},
        DeclareError{"CONFIG XT_OSC, FOO",
                     frame(1, "CONFIG XT_OSC, FOO", "Invalid Fuse setting [ FOO ]")},
        DeclareError{"CONFIG XT_OSC WDT_OFF", frame(1, "CONFIG XT_OSC WDT_OFF", "Comma missing")},
        DeclareError{"CONFIG", frame(1, "CONFIG", "Syntax Error")},
        DeclareError{"CONTEXT", frame(1, "CONTEXT", "SAVE or RESTORE expected after CONTEXT")},
        DeclareError{"ON_INTERRUPT GOTO X\nX:\nCONTEXT KEEP",
                     frame(3, "CONTEXT KEEP", "Syntax Error")},
        DeclareError{"ON_INTERRUPT", frame(1, "ON_INTERRUPT", "Syntax Error")},
        DeclareError{"ON_INTERRUPT GOTO NOWHERE",
                     frame(1, "ON_INTERRUPT GOTO NOWHERE", "Label 'NOWHERE' not found")},
        DeclareError{"SET_OSCCAL", frame(1, "SET_OSCCAL", "No on-board oscillator on this device")},
        DeclareError{"ORG", frame(1, "ORG", "Syntax Error")},
        DeclareError{"ORG 10 / 0",
                     frame(1, "ORG 10 / 0", "Division by zero in constant expression")}));

TEST(Config, JoinsFusesAndClearsTheWatchdog) {
    CompileResult r = compileSource("CONFIG XT_OSC, WDT_OFF ,PWRTE_ON");
    ASSERT_EQ(r.errors, 0);
    const DeviceModel& d = r.compilation->device;
    EXPECT_EQ(d.configText, "\t__CONFIG XT_OSC&WDT_OFF&PWRTE_ON ");
    EXPECT_TRUE(d.configGiven);
    EXPECT_FALSE(d.watchdog);
    CompileResult on = compileSource("CONFIG XT_OSC");
    EXPECT_TRUE(on.compilation->device.watchdog);
}

TEST(Config, RegisterNamesAreNotFuses) {
    CompileResult r = compileSource("CONFIG PORTB");
    ASSERT_FALSE(r.messages.empty());
    EXPECT_EQ(r.messages[0], frame(1, "CONFIG PORTB", "Invalid Fuse setting [ PORTB ]"));
}

TEST(SetOscCal, MarksBySize) {
    CompileResult small = compileSource("DEVICE 12F675\nSET_OSCCAL");
    ASSERT_EQ(small.errors, 0);
    EXPECT_TRUE(small.compilation->device.oscCalSmall);
    EXPECT_FALSE(small.compilation->device.oscCalLarge);
    CompileResult large = compileSource("DEVICE 12C672\nSET_OSCCAL");
    ASSERT_EQ(large.errors, 0);
    EXPECT_FALSE(large.compilation->device.oscCalSmall);
    EXPECT_TRUE(large.compilation->device.oscCalLarge);
}

TEST(CheckPort, ByPortStyle) {
    struct Case {
        int style;
        const char* port;
        const char* error; // empty when valid
    } cases[] = {
        {1, "GPIO", ""},
        {2, "GPIO", "Invalid Port for this device"},
        {1, "PORTA", "Invalid Port for this device"},
        {2, "PORTA", ""},
        {1, "PORTB", ""},
        {2, "PORTC", "Invalid Port for this device"},
        {3, "PORTC", ""},
        {3, "PORTD", "Invalid Port for this device"},
        {4, "PORTD", ""},
        {4, "PORTE", "Invalid Port for this device"},
        {5, "PORTE", ""},
        {5, "PORTF", "Unknown port Definition"},
    };
    for (const Case& k : cases) {
        Compilation c({"/tmp/x.bas", "/tmp"});
        c.ctx.pass = 2;
        c.device.info.field[4] = k.style;
        bool ok = checkPort(c, k.port);
        EXPECT_EQ(ok, std::string(k.error).empty()) << k.style << " " << k.port;
        if (!ok) {
            ASSERT_EQ(c.messages.size(), 1u);
            EXPECT_NE(c.messages[0].find(std::string("*** ") + k.error + "! ***"),
                      std::string::npos);
        }
    }
}

} // namespace
} // namespace zorvel::test
