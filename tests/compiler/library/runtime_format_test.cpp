// The formatter, string, LCD and keypad routines in the library file: the
// texts that are fixed line for line (the binary loop, hdig), the loop-back
// distances with and without the timed SEROUT, the settings the LCD driver
// and INKEY are written for, and the groups PRINT pulls in. What the
// routines do is checked in the simulator (tests/exec/lcd_exec_test.cpp).
#include "compiler/library/runtime_groups.h"
#include "compiler/library/runtime_marks.h"
#include "support/test_support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

// The runtime section of a 16F84 or 16F877 program at 4 MHz with `marks`
// set (16F84: GEN4 18, GEN4H 19, PP0 20, PP2 24, PP2H 25, BPF 37, BPFH 38;
// 16F877: 20 more).
Lines runtimeOf(std::initializer_list<Group> marks, bool timedSerout = false,
                const std::string& device = "16F84", const std::string& extra = "") {
    CompileResult r = compileSource("DEVICE " + device + "\n" + extra);
    Compilation& c = *r.compilation;
    c.runtime = RuntimeState{};
    c.runtime.seroutTimeout = timedSerout;
    for (Group g : marks)
        need(c, g);
    LibraryOutput out;
    writeRuntimeGroups(c, out);
    return out.lines;
}

// The lines from `first` up to (not including) the line `end`.
Lines between(const Lines& lines, const std::string& first, const std::string& end) {
    auto b = std::find(lines.begin(), lines.end(), first);
    auto e = std::find(b, lines.end(), end);
    return Lines(b, e);
}

bool has(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(FormatterText, BinaryLoopAsGiven) {
    EXPECT_EQ(between(runtimeOf({Group::Bin}), "out_bin2\tclrf 19", "send@it\tmovwf 20"),
              (Lines{"out_bin2\tclrf 19", "out_bin\tbsf 37,3", "out_binb movlw 16", "\tmovwf 18",
                     "\tclrw", "\trlf 24,f", "\trlf 25,f", "\tskpnc", "\tmovlw 1", "\tcall send@it",
                     "\tmovfw 18", "\tbnz $-8", "\treturn"}));
    // With the timed SEROUT: the carry set before each digit (a dropped digit
    // returns with it as it was), the test after it, and the longer jump.
    EXPECT_EQ(between(runtimeOf({Group::Bin}, true), "out_binb movlw 16", "send@it\tmovwf 20"),
              (Lines{"out_binb movlw 16", "\tmovwf 18", "\tclrw", "\trlf 24,f", "\trlf 25,f",
                     "\tskpnc", "\tmovlw 1", "\tsetc", "\tcall send@it", "\tskpc", "\tgoto i@nt",
                     "\tmovfw 18", "\tbnz $-11", "\treturn"}));
}

TEST(FormatterText, HexDigitAsGiven) {
    EXPECT_EQ(between(runtimeOf({Group::Hex}), "hdig\tandlw 15", "h@dg\tandlw 15"),
              (Lines{"hdig\tandlw 15", "\taddlw 246", "\tskpnc", "\taddlw 7", "\taddlw 10",
                     "\tgoto d@snd"}));
}

TEST(FormatterText, RepeatLoopBackDistances) {
    EXPECT_EQ(between(runtimeOf({Group::Rep}), "rep\tmovwf 24", "rsout@"),
              (Lines{"rep\tmovwf 24", "\tmovf 19,f", "\tbz i@nt", "\tmovfw 24", "\tcall ch@snd",
                     "\tdecf 19,f", "\tgoto $-6"}));
    EXPECT_EQ(between(runtimeOf({Group::Rep}, true), "rep\tmovwf 24", "rsout@"),
              (Lines{"rep\tmovwf 24", "\tsetc", "\tmovf 19,f", "\tbz i@nt", "\tmovfw 24",
                     "\tcall ch@snd", "\tskpc", "\tgoto i@nt", "\tdecf 19,f", "\tgoto $-9"}));
}

TEST(FormatterText, DecimalWithoutCountClearsTheWidth) {
    Lines lines = runtimeOf({Group::Dec});
    EXPECT_EQ(between(lines, "o@dec2b\tclrf 25", "o@decb\tmovlw 5"),
              (Lines{"o@dec2b\tclrf 25", "o@dec2", "o@dec\tclrf 19", "\tbsf 37,3"}));
}

TEST(FormatterText, StringsSetIrpOnlyWhereThereAreFourBanks) {
    EXPECT_FALSE(has(runtimeOf({Group::StringOneBank}), "\tbtfsc 25,0"));
    Lines big = runtimeOf({Group::StringOneBank}, false, "16F877");
    EXPECT_TRUE(has(big, "\tbtfsc 45,0"));
    EXPECT_TRUE(has(big, "\tbsf 3,7"));
}

TEST(LcdText, DriverFollowsTheSettings) {
    struct Case {
        std::string settings;
        std::vector<std::string> present, absent;
    };
    const Case cases[] = {
        // The defaults: 4 bits on RB4-RB7, RS on RB3, E on RB2, two lines.
        {"",
         {"LCD_DTPORT=PORTB", "LCD_DTPIN=4", "\tmovlw 15", "\tandwf 6,f", "\tandlw 240",
          "\tmovlw 34", "\tmovlw 40", "\tbcf 6,3", "\tbsf 6,2", "\tbcf 6,2"},
         {"\tclrf 6"}},
        {"DECLARE LCD_DTPIN PORTD.0\nDECLARE LCD_LINES 1\n",
         {"LCD_DTPIN=0", "\tmovlw 240", "\tandwf 8,f", "\tandlw 15", "\tmovlw 32"},
         {"\tmovlw 40"}},
        {"DECLARE LCD_INTERFACE 8\nDECLARE LCD_DTPIN PORTD.0\nDECLARE LCD_RSPIN PORTC.0\n"
         "DECLARE LCD_ENPIN PORTC.1\nDECLARE LCD_LINES 4\n",
         {"LCD_INTERFACE=8", "LCD_LINES=4", "\tclrf 8", "prt@s\tmovwf 8", "\tmovlw 56",
          "\tbsf 7,1"},
         {"\tmovlw 34"}},
    };
    for (const Case& k : cases) {
        Lines lines = runtimeOf({Group::Print}, false, "16F877", k.settings);
        for (const std::string& line : k.present)
            EXPECT_TRUE(has(lines, line)) << "missing " << line << " with\n" << k.settings;
        for (const std::string& line : k.absent)
            EXPECT_FALSE(has(lines, line)) << "unexpected " << line << " with\n" << k.settings;
    }
}

TEST(LcdText, EnablePulseLongEnoughAtEveryCrystal) {
    // E is high for at least 450 ns: 1 cycle at 4 and 8 MHz, 2 at 10 to 16,
    // 3 at 20.
    // The filler is a clrwdt: the watchdog is on unless the program says.
    for (auto [mhz, pad] : {std::pair{4, Lines{}},
                            {8, Lines{}},
                            {10, Lines{"\tclrwdt"}},
                            {12, Lines{"\tclrwdt"}},
                            {16, Lines{"\tclrwdt"}},
                            {20, Lines{"\tgoto $+1"}}}) {
        Lines lines = runtimeOf({Group::Print}, false, "16F877",
                                "DECLARE XTAL " + std::to_string(mhz) + "\n");
        Lines pulse = between(lines, "\tbsf 6,2", "\treturn");
        Lines want = {"\tbsf 6,2"};
        want.insert(want.end(), pad.begin(), pad.end());
        want.push_back("\tbcf 6,2");
        EXPECT_EQ(pulse, want) << mhz << " MHz";
    }
}

TEST(LcdText, PrintWithDecimalPullsInItsRoutines) {
    CompileResult r = compileSource("DEVICE 16F877\nDIM X AS WORD\nPRINT DEC X\n");
    ASSERT_EQ(r.errors, 0);
    LibraryOutput out;
    writeRuntimeGroups(*r.compilation, out);
    const Lines& lib = out.lines;
    for (const char* label : {"o@dec", "send@it\tmovwf 40", "d@snd", "ch@snd", "print\tmovwf 47",
                              "d@vd\tclrf 45", "dl@us\tclrf 41", "i@nt\tbcf 3,7"})
        EXPECT_TRUE(std::any_of(lib.begin(), lib.end(), [&](const std::string& l) {
            return l.rfind(label, 0) == 0;
        })) << label;
    // The dispatcher holds only the LCD's pair.
    EXPECT_EQ(between(lib, "ch@snd", "dl@us\tclrf 41"),
              (Lines{"ch@snd", "\tbtfsc 58,7", "\tgoto print"}));
}

TEST(KeypadText, PullUpsOnlyForPortB) {
    Lines onB = runtimeOf({Group::Inkey}, false, "16F877");
    EXPECT_TRUE(has(onB, "\tbcf Option_Reg,7"));
    for (const char* row : {"\tmovlw 00001110b", "\tmovlw 00001101b", "\tmovlw 00001011b",
                            "\tmovlw 00000111b", "\tmovlw 11110000b"})
        EXPECT_TRUE(has(onB, row)) << row;
    Lines onD = runtimeOf({Group::Inkey}, false, "16F877", "DECLARE KEYPAD_PORT PORTD\n");
    EXPECT_FALSE(has(onD, "\tbcf Option_Reg,7"));
    EXPECT_TRUE(has(onD, "\tmovwf 8"));
}

} // namespace
} // namespace zorvel::test
