// The software serial routines in the library file: the RSOUT, bit delay and
// RSIN receive texts line for line, which groups bring which labels, and the
// limits of the crystal: which SERIN/SEROUT modes and SERIAL_BAUD rates the
// routines time, with the messages for the others.
#include "compiler/library/runtime_groups.h"
#include "compiler/library/runtime_marks.h"
#include "compiler/library/serial_timing.h"
#include "support/test_support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

// The runtime section of a 16F84 program (INDF 0, STATUS 3, PP0 20, PP0H 21,
// PP1 22, PP1H 23, PP5 30, PP5H 31, GPR 36) with `marks` set. rsout@ (group
// 27) comes before the RSOUT constants of group 28.
Lines runtimeOf(const std::string& declarations, std::initializer_list<Group> marks) {
    CompileResult r = compileSource("DEVICE 16F84\n" + declarations);
    Compilation& c = *r.compilation;
    c.runtime = RuntimeState{};
    for (Group g : marks)
        need(c, g);
    LibraryOutput out;
    writeRuntimeGroups(c, out);
    return out.lines;
}

// The lines from `first` on, `count` of them.
Lines from(const Lines& lines, const std::string& first, size_t count) {
    auto b = std::find(lines.begin(), lines.end(), first);
    if (b == lines.end()) return {"(no line " + first + ")"};
    return Lines(b, b + static_cast<long>(std::min<size_t>(count, lines.end() - b)));
}

bool hasLine(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(SerialText, RsoutInvertedWithoutPace) {
    Lines lib = runtimeOf("", {Group::Rsout});
    EXPECT_EQ(from(lib, "rsout@", 27),
              (Lines{"rsout@",           "RSOUT_PORT=PORTB", "RSOUT_PIN=0",    "RSOUT_MODE=1",
                     "rsout \tmovwf 36", "\tmovwf PP1",      "\tbcf PORTB,0",  "\tbsf 3,5",
                     "\tbcf PORTB,0",    "\tbcf 3,5",        "\tmovlw 9",      "\tmovwf 23",
                     "\tclrc",           "\tcall rso@bit",   "\trrf 22,f",     "\tdecfsz 23,f",
                     "\tgoto $-3",       "\tsetc",           "\tcall rso@bit", "\tmovfw 36",
                     "\tgoto i@nt",      "rso@bit bc $+4",   "\tclrwdt",       "\tbsf PORTB,0",
                     "\tgoto Sr@dly",    "\tbcf PORTB,0",    "\tgoto Sr@dly"}));
}

TEST(SerialText, RsoutTrueWithPaceAndTimedSerout) {
    CompileResult r = compileSource("DEVICE 16F84\nDECLARE RSOUT_MODE TRUE\nDECLARE RSOUT_PIN "
                                    "PORTA.3\nDECLARE RSOUT_PACE 300\n");
    Compilation& c = *r.compilation;
    c.runtime = RuntimeState{};
    c.runtime.seroutTimeout = true;
    need(c, Group::Rsout);
    LibraryOutput out;
    writeRuntimeGroups(c, out);
    EXPECT_EQ(from(out.lines, "RSOUT_PORT=PORTA", 7),
              (Lines{"RSOUT_PORT=PORTA", "RSOUT_PIN=3", "RSOUT_MODE=0", "rsout \tmovwf 36",
                     "\tmovwf PP1", "\tbsf PORTA,3", "\tbsf 3,5"}));
    EXPECT_EQ(
        from(out.lines, "\tsetc", 15),
        (Lines{"\tsetc", "\tcall rso@bit", "\tmovlw 1", "\tmovwf 21", "\tmovlw 44", "\tcall dlus@w",
               "\tmovfw 36", "\tsetc", "\tgoto i@nt", "rso@bit bc $+4", "\tclrwdt", "\tbcf PORTA,3",
               "\tgoto Sr@dly", "\tbsf PORTA,3", "\tgoto Sr@dly"}));
}

TEST(SerialText, BitDelayAndRsinReceive) {
    // 9600 baud at 4 MHz: T = 104 - 13 = 91 us, a quarter of it 22.
    Lines lib = runtimeOf("", {Group::Rsin});
    EXPECT_EQ(from(lib, "SERIAL_BAUD=9600", 5),
              (Lines{"SERIAL_BAUD=9600", "sr@dly \tmovlw 0", "\tmovwf 21", "\tmovlw 91",
                     "\tgoto dlus@w"}));
    EXPECT_EQ(from(lib, "rsin@st \tmovlw 0", 18),
              (Lines{"rsin@st \tmovlw 0", "\tmovwf 21", "\tmovlw 22", "\tcall dlus@w ", "\tmovlw 8",
                     "\tmovwf 23", "\tcall sr@dly", "\tclrc", "\tbtfsc PORTB,1", "\tsetc",
                     "\trrf 22,f", "\tclrwdt", "\tgoto $+1", "\tdecfsz 23,f", "\tgoto $-8",
                     "\tcall Sr@dly", "\tmovfw 22", "\tgoto i@nt"}));
    // Without the timed RSIN, rsin writes the RSIN constants itself and
    // falls into rsin@st.
    EXPECT_EQ(from(lib, "RSIN_PORT=PORTB", 10),
              (Lines{"RSIN_PORT=PORTB", "RSIN_PIN=1", "RSIN_MODE=0", "rsin", "\tbsf 3,5",
                     "\tbsf PORTB,1", "\tbcf 3,5", "\tclrwdt", "\tbtfsc PORTB,1", "\tgoto $-2"}));
    EXPECT_EQ(from(lib, "\tgoto $-2", 2)[1], "rsin@st \tmovlw 0");
}

TEST(SerialText, TimedRsinWritesTheConstantsOnceAndSetsTheCarry) {
    Lines lib = runtimeOf("DECLARE XTAL 20\nDECLARE SERIAL_BAUD 2400\nDECLARE RSIN_MODE 1\n"
                          "DECLARE RSIN_TIMEOUT 300\n",
                          {Group::Rsin, Group::RsinTimeout});
    EXPECT_EQ(std::count(lib.begin(), lib.end(), "RSIN_PORT=PORTB"), 1);
    // 300 ms; 250 passes of 20 cycles a millisecond at 20 MHz.
    EXPECT_EQ(from(lib, "rsin2\tmovlw 44", 5),
              (Lines{"rsin2\tmovlw 44", "\tmovwf 20", "\tmovlw 1", "\tmovwf 21", "\tclrf 22"}));
    EXPECT_TRUE(hasLine(lib, "\tmovlw 249"));
    EXPECT_TRUE(hasLine(lib, "r2@lp \tbtfsc PORTB,1")); // inverted: idle low
    EXPECT_TRUE(hasLine(lib, "\tbtfss PORTB,1"));       // rsin and rsin@st
    // T at 20 MHz and 2400 baud: 416 - 2 = 414 us; a quarter 103.
    EXPECT_EQ(from(lib, "rsin@st \tmovlw 0", 3)[2], "\tmovlw 103");
    EXPECT_EQ(from(lib, "\tcall Sr@dly", 4),
              (Lines{"\tcall Sr@dly", "\tsetc", "\tmovfw 22", "\tgoto i@nt"}));
}

// SERIN and SEROUT bring the bit delay and its callees; the shift routine
// is not among them.
TEST(SerialText, SerinAndSeroutGroups) {
    Lines lib = runtimeOf("DECLARE XTAL 10\n", {Group::SerIn, Group::SerOut});
    for (const char* label :
         {"srin@f\tcall sf@on", "srin@ft\tcall sf@on", "srin@t\tcall sr@in", "serin\tcall sr@in",
          "srin@s\tcall srin@sd", "srin@b\tcall srin@d", "sro@t\tmovwf 36", "sro@f\tmovwf 36",
          "serout\tmovwf 36", "sro@x\tmovlw 9", "sro@b\tmovfw 0", "sro@gf\tbcf 3,7",
          "so@fin\tmovfw 36", "b@hi\tiorwf 0,f", "dl@ms\tclrf 23"})
        EXPECT_TRUE(hasLine(lib, label)) << label;
    EXPECT_FALSE(std::any_of(lib.begin(), lib.end(), [](const std::string& l) {
        return l.find("r@sh") != std::string::npos;
    }));
    // At 10 MHz the bit loop is padded to 25 cycles, 10 us: srin@d adds
    // m + 10 and pads 4 cycles.
    EXPECT_EQ(from(lib, "srin@d\tmovfw 31", 12),
              (Lines{"srin@d\tmovfw 31", "\tandlw 31", "\tmovwf 21", "\tmovlw 0", "\taddwf 21,f",
                     "\tmovlw 10", "\taddwf 30,w", "\tskpnc", "\tincf 21,f", "\tgoto $+1",
                     "\tgoto $+1", "\tgoto dlus@w"}));
}

// The loop of a SERIN/SEROUT bit is a whole number of microseconds at every
// crystal, and the correction makes m + correction + loop = m + 20.
TEST(SerialTiming, LoopIsWholeMicroseconds) {
    for (int mhz : {4, 8, 10, 12, 16, 20}) {
        int cycles = 21 + serialLoopPadding(mhz);
        EXPECT_EQ(cycles * 4 % mhz, 0) << mhz;
        EXPECT_EQ(serialLoopMicros(mhz), cycles * 4 / mhz) << mhz;
        EXPECT_EQ(serialBitCorrection(mhz) + serialLoopMicros(mhz), 20) << mhz;
    }
}

struct ModeCase {
    int mhz;
    int mode;
    const char* message; // "" when the mode is timed
};

// SEROUT with a constant mode at the crystal: the message, or none.
TEST(SerialTiming, ModesPerCrystal) {
    const ModeCase cases[] = {
        {4, 84, ""},
        {4, 32, ""},
        {4, 25 + 8192 + 16384 + 32768, ""},
        {4, 24,
         "Serial mode 24 (a bit of 44 us) is too fast for SERIN/SEROUT at 4 MHz (the shortest bit "
         "is 45 us, mode 25; the fastest standard rate is 19200 baud)"},
        {4, 6 + 16384,
         "Serial mode 16390 (a bit of 26 us) is too fast for SERIN/SEROUT at 4 MHz (the shortest "
         "bit is 45 us, mode 25; the fastest standard rate is 19200 baud)"},
        {8, 3, ""},
        {8, 2,
         "Serial mode 2 (a bit of 22 us) is too fast for SERIN/SEROUT at 8 MHz (the shortest bit "
         "is 23 us, mode 3; the fastest standard rate is 38400 baud)"},
        {8, 6, ""},
        {10, 0, ""},
        {12, 0, ""},
        {16, 0, ""},
        {20, 0, ""},
        {20, 8191, ""},
        {4, 3313, ""},
    };
    for (const ModeCase& k : cases) {
        std::string statement = "SEROUT PORTB.0, " + std::to_string(k.mode) + ", [1]";
        CompileResult r = compileSource("DECLARE XTAL " + std::to_string(k.mhz) +
                                        "\nDIM B AS BYTE\n" + statement + "\nSERIN PORTB.1, " +
                                        std::to_string(k.mode) + ", [B]\nEND\n");
        std::string what = std::string(k.message);
        if (what.empty()) {
            EXPECT_TRUE(r.messages.empty()) << k.mhz << " MHz mode " << k.mode << ": "
                                            << (r.messages.empty() ? "" : r.messages[0]);
        } else {
            ASSERT_GE(r.messages.size(), 2u) << k.mhz << " MHz mode " << k.mode;
            EXPECT_EQ(r.messages[0], frame(3, statement, what)) << k.mhz << " MHz mode " << k.mode;
            EXPECT_EQ(r.messages[1],
                      frame(4, "SERIN PORTB.1, " + std::to_string(k.mode) + ", [B]", what))
                << k.mhz << " MHz mode " << k.mode;
        }
    }
}

struct BaudCase {
    int mhz;
    int baud;
    const char* message;
};

// RSOUT with SERIAL_BAUD at the crystal.
TEST(SerialTiming, BaudRatesPerCrystal) {
    const BaudCase cases[] = {
        {4, 300, ""},
        {4, 19200, ""},
        {4, 38400,
         "Baud rate 38400 is too fast for RSIN/RSOUT at 4 MHz (the fastest standard rate is "
         "19200)"},
        {8, 38400, ""},
        {8, 57600,
         "Baud rate 57600 is too fast for RSIN/RSOUT at 8 MHz (the fastest standard rate is "
         "38400)"},
        {12, 57600, ""},
        {20, 19200, ""},
        {20, 57600, ""},
        // T = 26 - 2 us: 120 + 13 cycles for 130.2.
        {20, 38400,
         "Baud rate 38400 cannot be timed within 2 % for RSIN/RSOUT at 20 MHz (a bit would last "
         "26.60 us instead of 26.04 us)"},
        {4, 16, ""},
        {4, 15, "Baud rate 15 is too slow for RSIN/RSOUT (the slowest is 16)"},
    };
    for (const BaudCase& k : cases) {
        CompileResult r =
            compileSource("DECLARE XTAL " + std::to_string(k.mhz) + "\nDECLARE SERIAL_BAUD " +
                          std::to_string(k.baud) + "\nRSOUT 1\nEND\n");
        std::string what = std::string(k.message);
        if (what.empty())
            EXPECT_TRUE(r.messages.empty())
                << k.mhz << " MHz " << k.baud
                << " baud: " << (r.messages.empty() ? "" : r.messages[0]);
        else
            EXPECT_EQ(r.messages, Lines{frame(3, "RSOUT 1", what)}) << k.mhz << " MHz " << k.baud;
    }
}

} // namespace
} // namespace zorvel::test
