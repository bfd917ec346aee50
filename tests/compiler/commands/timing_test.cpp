// PAUSE, DELAYMS, PAUSEUS and DELAYUS: the lines each operand kind gives, the
// in-line microsecond delays per crystal, the routines they mark, and every
// diagnostic.
#include "compiler/commands/commands.h"
#include "compiler/library/library_writer.h"
#include "compiler/library/runtime_marks.h"
#include "support/statement_code.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

const std::string kDeclarations = "DEVICE 16F84\nDIM BV AS BYTE\nDIM DUR AS WORD\nDIM FLG AS BIT\n"
                                  "DIM ARR[4] AS BYTE\nSYMBOL SHORT = 5\n";

std::string at(int mhz, const std::string& statement) {
    return kDeclarations + "DECLARE XTAL " + std::to_string(mhz) + "\n" + statement;
}

struct TimingCase {
    std::string source;
    Lines expected;
};

void PrintTo(const TimingCase& t, std::ostream* os) {
    *os << t.source;
}

class TimingLines : public testing::TestWithParam<TimingCase> {};

TEST_P(TimingLines, Emitted) {
    EXPECT_EQ(linesAfter(kDeclarations, GetParam().source), GetParam().expected)
        << GetParam().source;
}

const Lines kLoop7 = {"\tMovlw 7", "\tMov@wf PP0", "\tDecfsz PP0,F", "\tGoto $-1"};

INSTANTIATE_TEST_SUITE_P(
    Timing, TimingLines,
    testing::Values(
        // Milliseconds: 8-bit entry up to 255, 16-bit entry above.
        TimingCase{at(4, "PAUSE 0"), {"\tClrw", "\tF@C dl@ms"}},
        TimingCase{at(4, "DELAYMS 255"), {"\tMovlw 255", "\tF@C dl@ms"}},
        TimingCase{at(4, "DELAYMS 256"), {"\tMovlw 1", "\tMov@wf PP1H", "\tClrw", "\tF@C dly@w"}},
        TimingCase{at(4, "PAUSE 65535"),
                   {"\tMovlw 255", "\tMov@wf PP1H", "\tMovlw 255", "\tF@C dly@w"}},
        TimingCase{at(4, "PAUSE $1234"),
                   {"\tMovlw 18", "\tMov@wf PP1H", "\tMovlw 52", "\tF@C dly@w"}},
        TimingCase{at(4, "PAUSE SHORT"), {"\tMovlw 5", "\tF@C dl@ms"}},
        TimingCase{at(4, "PAUSE \"A\""), {"\tMovlw 65", "\tF@C dl@ms"}},
        TimingCase{at(4, "PAUSE BV"), {"\tMov@fw BV", "\tF@C dl@ms"}},
        TimingCase{at(4, "PAUSE DUR"),
                   {"\tMov@fw DURH", "\tMov@wf PP1H", "\tMov@fw DUR", "\tF@C dly@w"}},
        TimingCase{at(4, "DELAYMS DUR.HIGHBYTE"), {"\tMov@fw DURH", "\tF@C dl@ms"}},
        TimingCase{at(4, "PAUSE FLG"), {"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tF@C dl@ms"}},
        TimingCase{at(4, "PAUSE PORTB.3"),
                   {"\tClrw", "\tBtf@sc PORTB,3", "\tMovlw 1", "\tF@C dl@ms"}},
        // Microseconds through the routine.
        TimingCase{at(4, "DELAYUS 24"), {"\tMovlw 24", "\tF@C dl@us"}},
        TimingCase{at(20, "DELAYUS 3"), {"\tMovlw 3", "\tF@C dl@us"}},
        TimingCase{at(8, "PAUSEUS 12"), {"\tMovlw 12", "\tF@C dl@us"}},
        TimingCase{at(4, "DELAYUS 256"), {"\tMovlw 1", "\tMov@wf PP0H", "\tClrw", "\tF@C dlus@w"}},
        TimingCase{at(4, "PAUSEUS BV"), {"\tMov@fw BV", "\tF@C dl@us"}},
        TimingCase{at(4, "PAUSEUS DUR"),
                   {"\tMov@fw DURH", "\tMov@wf PP0H", "\tMov@fw DUR", "\tF@C dlus@w"}},
        TimingCase{at(4, "DELAYUS FLG"),
                   {"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tF@C dl@us"}},
        // In line.
        TimingCase{at(4, "DELAYUS 0"), {"; Blank "}}, TimingCase{at(20, "DELAYUS 0"), {"; Blank "}},
        TimingCase{at(4, "DELAYUS 1"), {"\tNop"}},
        TimingCase{at(4, "DELAYUS 3"), {"\tNop", "\tGoto $+1"}},
        TimingCase{at(4, "PAUSEUS 23"), join({kLoop7, {"\tNop", "\tNop"}})},
        TimingCase{at(4, "DELAYUS SHORT"), {"\tGoto $+1", "\tGoto $+1", "\tNop"}},
        TimingCase{at(8, "DELAYUS 11"), kLoop7},
        TimingCase{at(10, "DELAYUS 7"),
                   {"\tMovlw 5", "\tMov@wf PP0", "\tDecfsz PP0,F", "\tGoto $-1", "\tNop"}},
        TimingCase{at(12, "DELAYUS 1"), {"\tNop", "\tNop", "\tNop"}},
        TimingCase{at(12, "DELAYUS 6"),
                   {"\tMovlw 5", "\tMov@wf PP0", "\tDecfsz PP0,F", "\tGoto $-1", "\tNop", "\tNop"}},
        TimingCase{at(12, "DELAYUS 7"), {"\tMovlw 7", "\tF@C dl@us"}},
        TimingCase{at(16, "DELAYUS 3"),
                   {"\tMovlw 3", "\tMov@wf PP0", "\tDecfsz PP0,F", "\tGoto $-1", "\tNop", "\tNop"}},
        TimingCase{at(16, "DELAYUS 5"), {"\tMovlw 5", "\tF@C dl@us"}},
        TimingCase{at(20, "DELAYUS 2"),
                   {"\tMovlw 2", "\tMov@wf PP0", "\tDecfsz PP0,F", "\tGoto $-1"}},
        // The remarks echo comes first.
        TimingCase{at(4, "REMARKS ON\nPause BV"), {";Pause BV", "\tMov@fw BV", "\tF@C dl@ms"}}));

// Two or three "Goto $+1" in a row are one output entry joined by CR LF.
TEST(TimingInline, GotoPairsAreOneEntry) {
    struct Row {
        int mhz;
        const char* statement;
        Lines entries;
    };
    const Row rows[] = {
        {8, "DELAYUS 3", {"\tGoto $+1\r\n\tGoto $+1\r\n\tGoto $+1"}},
        {4, "DELAYUS 5", {"\tGoto $+1\r\n\tGoto $+1", "\tNop"}},
        {12, "DELAYUS 2", {"\tGoto $+1\r\n\tGoto $+1", "\tNop", "\tNop"}},
        {20, "DELAYUS 1", {"\tGoto $+1\r\n\tGoto $+1", "\tNop"}},
        {10, "DELAYUS 1", {"\tGoto $+1"}},
    };
    for (const Row& row : rows) {
        PassTwo t;
        t.c.device.settings[kXtal].number = row.mhz;
        setLine(t.c, row.statement);
        compileStatementsOfLine(t.c);
        EXPECT_EQ(t.c.asmlist, row.entries) << row.mhz << " MHz " << row.statement;
        EXPECT_FALSE(needed(t.c, Group::DelayUs));
    }
}

TEST(TimingMarks, OnlyCallsMarkTheirRoutine) {
    CompileResult inlined = compileSource(at(4, "DELAYUS 5"));
    EXPECT_FALSE(needed(*inlined.compilation, Group::DelayUs));
    EXPECT_FALSE(needed(*inlined.compilation, Group::DelayMs));
    CompileResult called = compileSource(at(4, "DELAYUS 500"));
    EXPECT_TRUE(needed(*called.compilation, Group::DelayUs));
    EXPECT_FALSE(needed(*called.compilation, Group::DelayMs));
    CompileResult pause = compileSource(at(4, "PAUSE 5"));
    EXPECT_TRUE(needed(*pause.compilation, Group::DelayMs));
}

// A program using only PAUSE gets the millisecond and microsecond delays for
// its crystal and the common exit, in that order, plus the rsout@ label.
TEST(TimingMarks, PauseAlonePullsInItsRoutines) {
    for (int mhz : {4, 20}) {
        CompileResult r =
            compileSource("DEVICE 16F84\nDECLARE XTAL " + std::to_string(mhz) + "\nPAUSE 100\n");
        ASSERT_EQ(r.errors, 0);
        Lines lib = libraryLines(*r.compilation);
        auto begin = std::find(lib.begin(), lib.end(), "\tgoto Start@");
        auto end = std::find(lib.begin(), lib.end(), "\tif($>=800h)");
        ASSERT_NE(begin, lib.end());
        Lines labels;
        for (auto it = begin + 1; it != end; ++it)
            if ((*it)[0] != '\t') labels.push_back(it->substr(0, it->find('\t')));
        EXPECT_EQ(labels, (Lines{"rsout@", "dl@ms", "dly@w", "dl@us", "dlus@w", "i@nt"}))
            << mhz << " MHz";
    }
}

struct TimingError {
    std::string statement;
    std::string message;
};

void PrintTo(const TimingError& e, std::ostream* os) {
    *os << e.statement;
}

class TimingErrors : public testing::TestWithParam<TimingError> {};

TEST_P(TimingErrors, ReportedAndNothingEmitted) {
    const TimingError& e = GetParam();
    CompileResult r = compileSource(kDeclarations + e.statement);
    ASSERT_EQ(r.messages.size(), 1u) << testing::PrintToString(r.messages);
    EXPECT_EQ(r.messages[0], frame(7, e.statement, e.message));
    EXPECT_FALSE(needed(*r.compilation, Group::DelayMs));
    EXPECT_FALSE(needed(*r.compilation, Group::DelayUs));
}

INSTANTIATE_TEST_SUITE_P(
    Timing, TimingErrors,
    testing::Values(TimingError{"PAUSE", "Syntax Error"}, TimingError{"DELAYUS", "Syntax Error"},
                    TimingError{"PAUSE 70000", "Number larger than 16-bits (0 to 65535)"},
                    TimingError{"DELAYUS 65536", "Number larger than 16-bits (0 to 65535)"},
                    TimingError{"PAUSE NOPE", " Variable ' NOPE ' not defined"},
                    TimingError{"DELAYUS ARR", "ARRAY variables not supported in DELAYUS"},
                    TimingError{"PAUSE PORTB.9", "Bit value too large for this variable"},
                    TimingError{"PAUSE DUR.HIGHBYTE.3", " Variable ' HIGHBYTE.3 ' not defined"}));

} // namespace
} // namespace zorvel::test
