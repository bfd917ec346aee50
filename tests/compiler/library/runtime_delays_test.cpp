// The delay routines, the random step and the character output routines in
// the library file: exact text per crystal, the crystal constants, and the
// routines a delay pulls in.
#include "compiler/library/crystal.h"
#include "compiler/library/runtime_groups.h"
#include "compiler/library/runtime_marks.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

// The runtime section written for a 16F84 at `mhz` with `marks` set
// (PP0 20, PP0H 21, PP1 22, PP1H 23, GEN4 18, GEN4H 19, BPF 37, BPFH 38).
Lines runtimeAt(int mhz, std::initializer_list<Group> marks, const std::string& extra = "") {
    CompileResult r =
        compileSource("DEVICE 16F84\nDECLARE XTAL " + std::to_string(mhz) + "\n" + extra);
    Compilation& c = *r.compilation;
    c.runtime = RuntimeState{};
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

TEST(CrystalConstants, Formulas) {
    EXPECT_EQ(millisecondStep(4), 991);
    EXPECT_EQ(millisecondStep(20), 999);
    EXPECT_EQ(millisecondStep(12), 997);
    EXPECT_EQ(bitTime(4, 9600), 104 - 13);
    EXPECT_EQ(bitTime(20, 2400), 416 - 2);
    EXPECT_EQ(millisecondLoops(4), 50);
    EXPECT_EQ(millisecondLoops(10), 125);
    EXPECT_EQ(soundStepDelay(8), 22);
    EXPECT_EQ(soundStepDelay(20), 39);
    EXPECT_EQ(toneStepCount(4), 13);
    EXPECT_EQ(toneStepCount(20), 65);
    EXPECT_EQ(receiveBitCorrection(4), 20 - 31);  // 124/4 = 31
    EXPECT_EQ(receiveBitCorrection(10), 20 - 12); // 124/10 = 12.4 rounds to 12
    EXPECT_EQ(receiveBitCorrection(8), 20 - 16);  // 15.5 rounds up
    // No division by zero for a crystal or baud rate of 0.
    EXPECT_EQ(millisecondStep(0), 964);
    EXPECT_EQ(bitTime(0, 0), 1000000 - 52);
    for (int mhz : {4, 8, 10, 12, 16, 20})
        EXPECT_TRUE(hasMicrosecondDelay(mhz)) << mhz;
    for (int mhz : {0, 3, 5, 11, 24})
        EXPECT_FALSE(hasMicrosecondDelay(mhz)) << mhz;
}

Lines millisecondText(int high, int low) {
    return {"dl@ms\tclrf 23", "dly@w\tmovwf 22",
            "\tmovlw 255",    "\taddwf 22,f",
            "\tskpc",         "\taddwf 23,f",
            "\tbnc i@nt",     "\tmovlw " + std::to_string(high),
            "\tmovwf 21",     "\tmovlw " + std::to_string(low),
            "\tcall dlus@w",  "\tgoto $-10"};
}

TEST(RuntimeText, MillisecondDelayStepPerCrystal) {
    EXPECT_EQ(between(runtimeAt(4, {Group::DelayMs}), "dl@ms\tclrf 23", "dl@us\tclrf 21"),
              millisecondText(3, 223));
    EXPECT_EQ(between(runtimeAt(20, {Group::DelayMs}), "dl@ms\tclrf 23", "dl@us\tclrf 21"),
              millisecondText(3, 231));
}

Lines microsecondText(int mhz) {
    Lines loop = {"\tbnc $+4", "\taddwf 20,f",  "\tbc $-2",  "\taddwf 20,f",
                  "\tclrwdt",  "\tincfsz 21,f", "\tgoto $-6"};
    Lines head = {"dl@us\tclrf 21", "dlus@w\taddlw ", "\tmovwf 20", "\tcomf 21,f"};
    auto with = [&](int addlw, Lines rest) {
        Lines out = head;
        out[1] += std::to_string(addlw);
        out.insert(out.end(), rest.begin(), rest.end());
        return out;
    };
    auto join = [](Lines a, const Lines& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    switch (mhz) {
    case 4:
        return with(232, join(join({"\tmovlw 252"}, loop),
                              {"\tbtfsc 20,0", "\tgoto $+1", "\tbtfss 20,1", "\tgoto $+3",
                               "\tclrwdt", "\tgoto $+1", "\treturn"}));
    case 8:
        return with(244,
                    join(join({"\tmovlw 254"}, loop), {"\tclrwdt", "\tbtfsc 20,0", "\tgoto $+1",
                                                       "\tbtfsc 20,0", "\tgoto $+1", "\treturn"}));
    case 10:
        return {"dl@us\tclrf 21", "dlus@w\taddlw 246", "\tmovwf PP0",   "\tcomf PP0H,F",
                "\tbnc $+7",      "\tmovlw 254",       "\tclrwdt",      "\taddwf PP0,F",
                "\tbc $-3",       "\taddwf PP0,F",     "\tclrwdt",      "\tincfsz PP0H,F",
                "\tgoto $-8",     "\tclrwdt",          "\tbtfsc PP0,0", "\tgoto $+1",
                "\tbtfsc PP0,0",  "\tgoto $+1",        "\treturn"};
    case 12:
        return with(247, {"\tbnc $+7", "\tmovlw 254", "\tgoto $+1", "\taddwf 20,f", "\tbc $-3",
                          "\taddwf 20,f", "\tclrwdt", "\tnop", "\tincfsz 21,f", "\tgoto $-9",
                          "\tgoto $+1", "\tbtfss 20,0", "\tgoto $+3", "\tgoto $+1", "\tgoto $+1",
                          "\treturn"});
    case 16: return with(251, join(join({"\tmovlw 255"}, loop), {"\tclrwdt", "\treturn"}));
    case 20:
        return with(252, {"\tbnc $+7", "\tmovlw 255", "\tclrwdt", "\taddwf 20,f", "\tbc $-3",
                          "\taddwf 20,f", "\tclrwdt", "\tincfsz 21,f", "\tgoto $-8", "\treturn"});
    }
    return {};
}

TEST(RuntimeText, MicrosecondDelayBodyPerCrystal) {
    for (int mhz : {4, 8, 10, 12, 16, 20}) {
        Lines all = runtimeAt(mhz, {Group::DelayUs});
        Lines expected = microsecondText(mhz);
        expected.insert(expected.begin(), "rsout@");
        EXPECT_EQ(all, expected) << mhz << " MHz";
    }
}

TEST(RuntimeText, MicrosecondFillerFollowsWatchdog) {
    Lines all = runtimeAt(16, {Group::DelayUs}, "CONFIG WDT_OFF\n");
    EXPECT_EQ(all,
              (Lines{"rsout@", "dl@us\tclrf 21", "dlus@w\taddlw 251", "\tmovwf 20", "\tcomf 21,f",
                     "\tmovlw 255", "\tbnc $+4", "\taddwf 20,f", "\tbc $-2", "\taddwf 20,f",
                     "\tnop", "\tincfsz 21,f", "\tgoto $-6", "\tnop", "\treturn"}));
}

TEST(RuntimeInclusion, MillisecondDelayPullsInItsCallees) {
    Lines all = runtimeAt(4, {Group::DelayMs});
    Lines labels;
    for (const std::string& l : all)
        if (l[0] != '\t') labels.push_back(l.substr(0, l.find('\t')));
    EXPECT_EQ(labels, (Lines{"rsout@", "dl@ms", "dly@w", "dl@us", "dlus@w", "i@nt"}));
}

TEST(RuntimeInclusion, NoMicrosecondRoutineForOtherCrystals) {
    for (int mhz : {3, 6}) {
        Lines all = runtimeAt(mhz, {Group::DelayMs, Group::DelayUs});
        EXPECT_EQ(std::find(all.begin(), all.end(), "dl@us\tclrf 21"), all.end()) << mhz;
        EXPECT_NE(std::find(all.begin(), all.end(), "dl@ms\tclrf 23"), all.end()) << mhz;
    }
}

TEST(RuntimeText, RandomStep) {
    EXPECT_EQ(
        runtimeAt(4, {Group::Random}),
        (Lines{"rsout@",       "rndm \tmovfw 21", "\tiorwf 20,w",  "\tskpnz",      "\tincf 20,f",
               "\tmovlw 128",  "\tbtfsc 20,4",    "\txorwf 21,f",  "\tbtfsc 20,2", "\txorwf 21,f",
               "\tbtfsc 20,1", "\txorwf 21,f",    "\trlf 21,w",    "\trlf 20,f",   "\trlf 21,f",
               "\tmovfw 20",   "\tgoto i@nt",     "i@nt\tbcf 3,7", "\tbcf 3,5",    "\tbcf 3,6",
               "\tclrwdt",     "\treturn"}));
}

TEST(RuntimeText, DigitSender) {
    EXPECT_EQ(runtimeAt(4, {Group::SendDigit}),
              (Lines{"send@it\tmovwf 20", "\tdecf 18,f", "\tskpnz", "\tbcf 37,3", "\tmovfw 19",
                     "\tbz $+4", "\tSubwf 18,w", "\tskpnc", "\treturn", "\tmovfw 20", "\tskpz",
                     "\tbcf 37,3", "\tbtfsc 37,3", "\treturn", "\tgoto d@snd", "rsout@"}));
}

TEST(RuntimeText, DispatcherTestsOnlyTheOutputsInTheProgram) {
    EXPECT_EQ(runtimeAt(4, {Group::Dispatcher}),
              (Lines{"rsout@", "d@snd", "\taddlw 48", "ch@snd"}));
    CompileResult r = compileSource("DEVICE 16F84\n");
    Compilation& c = *r.compilation;
    c.runtime = RuntimeState{};
    for (Group g : {Group::Dispatcher, Group::Print, Group::Rsout})
        need(c, g);
    c.runtime.serout = c.runtime.seroutFlow = c.runtime.seroutTimeout = true;
    LibraryOutput out;
    writeRuntimeGroups(c, out);
    EXPECT_EQ(between(out.lines, "d@snd", "dl@us\tclrf 21"),
              (Lines{"d@snd", "\taddlw 48", "ch@snd", "\tbtfsc 38,7", "\tgoto print",
                     "\tbtfsc 38,6", "\tgoto rsout@", "\tbtfsc 38,5", "\tgoto serout",
                     "\tbtfsc 38,4", "\tgoto sro@f", "\tbtfsc 38,3", "\tgoto sro@t"}));
    c.runtime = RuntimeState{};
    need(c, Group::Dispatcher);
    c.runtime.seroutFlow = true;
    LibraryOutput flowOnly;
    writeRuntimeGroups(c, flowOnly);
    EXPECT_EQ(flowOnly.lines,
              (Lines{"rsout@", "d@snd", "\taddlw 48", "ch@snd", "\tbtfsc 38,4", "\tgoto sro@f"}));
}

} // namespace
} // namespace zorvel::test
