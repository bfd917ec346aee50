// The runtime subroutines in the library file: the exact text of each
// routine, and which routines a set of need marks pulls in, in which order.
#include "compiler/library/library_writer.h"
#include "compiler/library/runtime_groups.h"
#include "compiler/library/runtime_marks.h"
#include "support/test_support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

using Relation = zorvel::Test; // testing::Test hides the name inside TEST bodies

// A compilation of `source` (a 16F84 unless the source says otherwise) with
// its need marks cleared, ready for marks set by the test.
struct Runtime {
    CompileResult result;
    explicit Runtime(const std::string& source = "DEVICE 16F84\n") : result(compileSource(source)) {
        c().runtime = RuntimeState{};
    }
    Compilation& c() { return *result.compilation; }
    // The runtime section of the library: what the groups write.
    Lines lines(std::initializer_list<Group> marks = {}) {
        for (Group g : marks)
            need(c(), g);
        LibraryOutput out;
        writeRuntimeGroups(c(), out);
        return out.lines;
    }
};

// The lines of the routine that starts with `first`, up to the next line
// that starts in column one (the next routine's label), or the end.
Lines routine(const Lines& lines, const std::string& first) {
    auto begin = std::find(lines.begin(), lines.end(), first);
    if (begin == lines.end()) return {};
    auto end = std::find_if(begin + 1, lines.end(),
                            [](const std::string& l) { return !l.empty() && l[0] != '\t'; });
    return Lines(begin, end);
}

// The labels in column one, in the order written.
Lines labels(const Lines& lines) {
    Lines out;
    for (const std::string& l : lines) {
        if (l.empty() || l[0] == '\t') continue;
        out.push_back(l.substr(0, l.find_first_of(" \t")));
    }
    return out;
}

// 16F84 addresses: PP0 20, PP0H 21, PP1 22, PP1H 23, PP2 24, PP2H 25,
// PP3 26, PP3H 27, PP6H 33, GPR 36.
TEST(RuntimeText, Divide) {
    Runtime r;
    Lines all = r.lines({Group::Divide});
    Lines text = routine(all, "d@vd\tclrf 25");
    text.insert(text.end(), std::find(all.begin(), all.end(), "d@vd2\tmovlw 16"),
                std::find(all.begin(), all.end(), "i@nt\tbcf 3,7"));
    EXPECT_EQ(text, (Lines{"d@vd\tclrf 25", "\tclrf 24",  "d@vd2\tmovlw 16", "\tmovwf 26",
                           "\trlf 21,w",    "\trlf 24,f", "\trlf 25,f",      "\tmovfw 22",
                           "\tsubwf 24,f",  "\tmovfw 23", "\tskpc",          "\tincfsz 23,w",
                           "\tsubwf 25,f",  "\tbc $+8",   "\tmovfw 22",      "\taddwf 24,f",
                           "\tmovfw 23",    "\tskpnc",    "\tincfsz 23,w",   "\taddwf 25,f",
                           "\tclrc",        "\trlf 20,f", "\trlf 21,f",      "\tdecfsz 26,f",
                           "\tgoto $-21",   "\tmovfw 20", "\tgoto i@nt"}));
}

TEST(RuntimeText, Multiply) {
    Runtime r;
    EXPECT_EQ(
        routine(r.lines({Group::Multiply}), "m@py\tmovlw 16"),
        (Lines{"m@py\tmovlw 16", "\tmovwf 33",    "\tclrf 21",     "\tclrf 20",    "\trrf 27,f",
               "\trrf 26,f",     "\tbnc $+7",     "\tmovfw 22",    "\taddwf 20,f", "\tmovfw 23",
               "\tskpnc",        "\tincfsz 23,w", "\taddwf 21,f",  "\trrf 21,f",   "\trrf 20,f",
               "\trrf 25,f",     "\trrf 24,f",    "\tdecfsz 33,f", "\tgoto $-15",  "\tmovfw 24",
               "\tgoto i@nt"}));
}

TEST(RuntimeText, ShiftsCountDownInW) {
    Runtime r;
    Lines all = r.lines({Group::ShiftLeft, Group::ShiftRight});
    auto left = std::find(all.begin(), all.end(), "l@sh\taddlw 255");
    ASSERT_NE(left, all.end());
    EXPECT_EQ(Lines(left - 1, left + 8),
              (Lines{"\tclrc", "l@sh\taddlw 255", "\tbnc $+5", "\tclrc", "\trlf 20,f", "\trlf 21,f",
                     "\tgoto $-6", "\tmovfw 20", "\tgoto i@nt"}));
    auto right = std::find(all.begin(), all.end(), "r@sh\taddlw 255");
    ASSERT_NE(right, all.end());
    EXPECT_EQ(Lines(right - 1, right + 8),
              (Lines{"\tclrc", "r@sh\taddlw 255", "\tbnc $+5", "\tclrc", "\trrf 21,f", "\trrf 20,f",
                     "\tgoto $-6", "\tmovfw 20", "\tgoto i@nt"}));
}

TEST(RuntimeText, NegateFallsIntoIncrement) {
    Runtime r;
    Lines all = r.lines({Group::Negate});
    EXPECT_EQ(all, (Lines{"rsout@", "n@gt\tcomf 21,f", "\tcomf 20,f", "i@pp0\tincf 20,f", "\tskpnz",
                          "\tincf 21,f", "\treturn"}));
}

TEST(RuntimeText, CommonExitFillerFollowsWatchdog) {
    Runtime on;
    EXPECT_EQ(routine(on.lines({Group::CommonExit}), "i@nt\tbcf 3,7"),
              (Lines{"i@nt\tbcf 3,7", "\tbcf 3,5", "\tbcf 3,6", "\tclrwdt", "\treturn"}));
    Runtime off("DEVICE 16F84\nCONFIG WDT_OFF\n");
    EXPECT_EQ(routine(off.lines({Group::CommonExit}), "i@nt\tbcf 3,7"),
              (Lines{"i@nt\tbcf 3,7", "\tbcf 3,5", "\tbcf 3,6", "\tnop", "\treturn"}));
}

TEST(RuntimeText, RegistersFollowTheDevice) {
    // With an interrupt handler the system variables move four addresses on.
    Runtime r("DEVICE 16F84\nON_INTERRUPT Handler\nHandler:\n");
    EXPECT_EQ(routine(r.lines({Group::Multiply}), "m@py\tmovlw 16")[1], "\tmovwf 37");
}

const Lines kTestTail = {"t@st movwf 36", "\tmovfw 23",   "\tsubwf 21,w", "\tbnz $+3",
                         "\tmovfw 22",    "\tSubwf 20,w", "\tmovlw 4",    "\tskpnc",
                         "\tmovlw 1",     "\tskpnz",      "\tmovlw 2",    "\tandwf 36,w",
                         "\tskpz",        "\tmovlw 255",  "\tgoto i@nt"};

TEST(RuntimeText, EveryComparisonEntry) {
    Runtime r;
    for (Relation test : {Relation::Equal, Relation::GreaterEqual, Relation::Greater,
                          Relation::LessEqual, Relation::Less, Relation::NotEqual})
        needTest(r.c(), test, TestEntry::Byte);
    Lines expected;
    const char* stems[] = {"t@e", "t@ge", "t@gt", "t@le", "t@lt", "t@ne"};
    const char* masks[] = {"2", "3", "1", "6", "4", "5"};
    for (int i = 0; i < 6; ++i) {
        expected.push_back(std::string(stems[i]) + "b clrf 21");
        expected.push_back(std::string(stems[i]) + "w clrf 23");
        expected.push_back(std::string(stems[i]) + " movwf 22");
        expected.push_back(std::string("\tmovlw ") + masks[i]);
        if (i < 5) expected.push_back("\tgoto t@st");
    }
    expected.insert(expected.end(), kTestTail.begin(), kTestTail.end());
    Lines all = r.lines();
    auto begin = std::find(all.begin(), all.end(), "t@eb clrf 21");
    ASSERT_NE(begin, all.end());
    EXPECT_EQ(Lines(begin, begin + static_cast<long>(expected.size())), expected);
}

TEST(RuntimeText, ComparisonEntriesOnlyWhereMarked) {
    Runtime r;
    needTest(r.c(), Relation::Greater, TestEntry::Byte); // pulls in t@gtw and t@gt
    needTest(r.c(), Relation::NotEqual, TestEntry::Word);
    needTest(r.c(), Relation::Less, TestEntry::Full);
    Lines expected = {"t@gtb clrf 21", "t@gtw clrf 23", "t@gt movwf 22", "\tmovlw 1",
                      "\tgoto t@st",   "t@lt movwf 22", "\tmovlw 4",     "\tgoto t@st",
                      "t@new clrf 23", "t@ne movwf 22", "\tmovlw 5"};
    expected.insert(expected.end(), kTestTail.begin(), kTestTail.end());
    expected.insert(expected.end(),
                    {"rsout@", "i@nt\tbcf 3,7", "\tbcf 3,5", "\tbcf 3,6", "\tclrwdt", "\treturn"});
    EXPECT_EQ(r.lines(), expected);
    EXPECT_TRUE(neededTest(r.c(), Relation::Greater, TestEntry::Word));
    EXPECT_TRUE(neededTest(r.c(), Relation::Greater, TestEntry::Full));
    EXPECT_TRUE(neededTest(r.c(), Relation::NotEqual, TestEntry::Full));
    EXPECT_FALSE(neededTest(r.c(), Relation::Less, TestEntry::Word));
    EXPECT_FALSE(neededTest(r.c(), Relation::Equal, TestEntry::Full));
    EXPECT_TRUE(r.c().runtime.testTail);
}

TEST(RuntimeText, ComparisonGroupWithoutEntriesWritesNothing) {
    Runtime r;
    EXPECT_EQ(r.lines({Group::Compare}),
              (Lines{"rsout@", "i@nt\tbcf 3,7", "\tbcf 3,5", "\tbcf 3,6", "\tclrwdt", "\treturn"}));
    EXPECT_FALSE(r.c().runtime.testTail);
}

TEST(RuntimeInclusion, NothingMarkedWritesOnlyTheRsoutLabel) {
    Runtime r;
    EXPECT_EQ(r.lines(), (Lines{"rsout@"}));
}

TEST(RuntimeInclusion, CalleesFollowInTableOrder) {
    Runtime r;
    EXPECT_EQ(labels(r.lines({Group::Negate, Group::ShiftRight, Group::Divide})),
              (Lines{"rsout@", "d@vd", "d@vd2", "r@sh", "n@gt", "i@pp0", "i@nt"}));
    EXPECT_TRUE(needed(r.c(), Group::CommonExit));
    EXPECT_TRUE(needed(r.c(), Group::IncrementPP0));
}

TEST(RuntimeInclusion, EveryArithmeticRoutineOnce) {
    Runtime r;
    EXPECT_EQ(
        labels(r.lines({Group::CommonExit, Group::IncrementPP0, Group::Negate, Group::ShiftRight,
                        Group::ShiftLeft, Group::Multiply, Group::Divide})),
        (Lines{"rsout@", "d@vd", "d@vd2", "m@py", "l@sh", "r@sh", "n@gt", "i@pp0", "i@nt"}));
}

TEST(RuntimeInclusion, EarlierCalleesMarkedBeforeTheFirstGroup) {
    Runtime dtmf;
    dtmf.lines({Group::DtmfOut});
    EXPECT_TRUE(needed(dtmf.c(), Group::FreqOut));
    EXPECT_TRUE(needed(dtmf.c(), Group::Sin));
    Runtime strings;
    strings.lines({Group::StringOneBank});
    EXPECT_TRUE(needed(strings.c(), Group::GetArray));
    Runtime across;
    across.lines({Group::StringAcrossBanks});
    EXPECT_TRUE(needed(across.c(), Group::GetArray));
    Runtime code;
    code.lines({Group::CodeString});
    EXPECT_TRUE(needed(code.c(), Group::Dispatcher));
    Runtime none;
    none.lines();
    for (Group g : {Group::Sin, Group::FreqOut, Group::GetArray, Group::Dispatcher})
        EXPECT_FALSE(needed(none.c(), g));
}

TEST(RuntimeInclusion, RoutinesLeaveStateRegistersUncleared) {
    // None of the arithmetic routines uses BPF or BPFH: no start-up clears.
    Runtime r;
    for (int g = 61; g <= 67; ++g)
        r.c().runtime.need[g] = true;
    Lines lib = libraryLines(r.c());
    auto start = std::find(lib.begin(), lib.end(), "Start@");
    ASSERT_NE(start, lib.end());
    EXPECT_EQ(start + 1, lib.end());
}

} // namespace
} // namespace zorvel::test
