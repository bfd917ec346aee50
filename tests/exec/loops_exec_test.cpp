// Loops, IF nesting and jumps in the simulator: FOR runs the right number of
// times at the edges of its counter's range with every step form, WHILE and
// REPEAT count right, blocks nest eight deep, and a program spread over
// several code pages of the 16F877 jumps, calls and loops across them.
#include "support/exec_support.h"

#include <gtest/gtest.h>
#include <sstream>

namespace zorvel::test {
namespace {

struct ForCase {
    std::string counter; // "I" (BYTE) or "J" (WORD)
    long start, end;
    std::string step; // "" for 1; "-1", "3", "-B", "W", ...
};

// The variables the steps may name, with the values the program sets.
constexpr int kB = 7;
constexpr int kW = 300;
constexpr int kBig = 256;

// How often the loop body runs: the counter starts at `start` and moves by
// the step while it stays within the end and within its own range.
long expectedRuns(const ForCase& fc) {
    long max = fc.counter == "I" ? 255 : 65535;
    std::string s = fc.step.empty() ? "1" : fc.step;
    bool down = s[0] == '-';
    if (down) s = s.substr(1);
    long step = s == "B" ? kB : s == "W" ? kW : s == "BIG" ? kBig : std::stol(s);
    long runs = 0;
    for (long v = fc.start; down ? v >= fc.end : v <= fc.end; v += down ? -step : step) {
        ++runs;
        long next = down ? v - step : v + step;
        if (next < 0 || next > max) break;
    }
    return runs;
}

std::string forLine(const ForCase& fc) {
    std::string line =
        "FOR " + fc.counter + " = " + std::to_string(fc.start) + " TO " + std::to_string(fc.end);
    if (!fc.step.empty()) line += " STEP " + fc.step;
    return line;
}

const ForCase kForCases[] = {
    {"I", 0, 255, ""},          {"J", 0, 65535, ""},      {"I", 5, 0, "-1"},
    {"J", 3, 0, "-1"},          {"I", 0, 10, "3"},        {"I", 250, 255, "4"},
    {"I", 10, 0, "-3"},         {"I", 1, 0, ""},          {"J", 5, 4, ""},
    {"I", 0, 20, "B"},          {"I", 20, 0, "-B"},       {"I", 0, 255, "255"},
    {"I", 255, 0, "-255"},      {"I", 0, 255, "W"},       {"I", 0, 255, "BIG"},
    {"I", 255, 0, "-W"},        {"I", 200, 0, "-BIG"},    {"J", 0, 1000, "W"},
    {"J", 65000, 65535, "300"}, {"J", 1000, 0, "-300"},   {"J", 600, 0, "-W"},
    {"J", 65535, 65530, "-1"},  {"J", 65500, 65535, "B"}, {"J", 20, 0, "-B"},
    {"J", 250, 260, ""},        {"J", 200, 600, "100"},   {"J", 65280, 65535, "255"},
    {"J", 65535, 0, "-65535"},  {"J", 0, 65535, "65535"}, {"J", 2, 0, "-255"},
    {"J", 0, 65535, "BIG"},     {"J", 65535, 0, "-BIG"},  {"J", 40000, 0, "-20000"},
};

// Loop k counts its runs into the WORD C<k> and sets F<k> when it runs at
// all (65536 runs leave C<k> at 0).
std::string forProgram(const std::string& device) {
    std::ostringstream s;
    s << "DEVICE " << device << "\nDIM I AS BYTE\nDIM J AS WORD\nDIM B AS BYTE\nDIM W AS WORD\n"
      << "DIM BIG AS WORD\nB = " << kB << "\nW = " << kW << "\nBIG = " << kBig << "\n";
    for (size_t k = 0; k < std::size(kForCases); ++k)
        s << "DIM C" << k << " AS WORD\nDIM F" << k << " AS BYTE\n";
    for (size_t k = 0; k < std::size(kForCases); ++k)
        s << forLine(kForCases[k]) << "\nC" << k << " = C" << k << " + 1\nF" << k << " = 1\nNEXT\n";
    s << "END\n";
    return s.str();
}

void checkForCounts(const std::string& device) {
    std::string source = forProgram(device);
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runToEnd(60'000'000)) << source;
    for (size_t k = 0; k < std::size(kForCases); ++k) {
        long runs = expectedRuns(kForCases[k]);
        EXPECT_EQ(p.word("C" + std::to_string(k)), runs & 0xFFFF)
            << device << ": " << forLine(kForCases[k]);
        EXPECT_EQ(p.byte("F" + std::to_string(k)), runs > 0 ? 1 : 0)
            << device << ": " << forLine(kForCases[k]);
    }
}

TEST(LoopExec, ForCountsOnASinglePageDevice) {
    checkForCounts("16F628");
}

TEST(LoopExec, ForCountsOnAPagedDevice) {
    checkForCounts("16F877");
}

TEST(LoopExec, ForSeesEveryCounterValue) {
    SimProgram p("DIM I AS BYTE\nDIM SUM AS WORD\nDIM JW AS WORD\nDIM TOT AS WORD\n"
                 "FOR I = 10 TO 1 STEP -3\nSUM = SUM + I\nNEXT\n"
                 "FOR JW = 1000 TO 3000 STEP 700\nTOT = TOT + JW\nNEXT\nEND\n");
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.word("SUM"), 10 + 7 + 4 + 1);
    EXPECT_EQ(p.word("TOT"), 1000 + 1700 + 2400);
}

TEST(LoopExec, WhileAndRepeatCounts) {
    SimProgram p("DIM A AS BYTE\nDIM B AS BYTE\nDIM C AS BYTE\nDIM D AS BYTE\n"
                 "DIM N1 AS BYTE\nDIM N2 AS BYTE\nDIM N3 AS BYTE\nDIM N4 AS BYTE\n"
                 "WHILE A < 10\nA = A + 1\nN1 = N1 + 1\nWEND\n"
                 "WHILE B > 0 : N2 = N2 + 1 : WEND\n"
                 "REPEAT\nC = C + 1\nN3 = N3 + 1\nUNTIL C = 10\n"
                 "REPEAT : N4 = N4 + 1 : UNTIL D >= 0\nEND\n");
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.byte("N1"), 10);
    EXPECT_EQ(p.byte("N2"), 0);
    EXPECT_EQ(p.byte("N3"), 10);
    EXPECT_EQ(p.byte("N4"), 1);
}

// FOR, WHILE, REPEAT and IF alternate down to depth 8; the innermost body
// runs 2 * 2 * 2 * 2 times (each loop runs twice), the ELSE branches never.
TEST(LoopExec, BlocksNestEightDeep) {
    std::string source = "DIM CNT AS WORD\nDIM E AS BYTE\nDIM F1 AS BYTE\nDIM F2 AS BYTE\n"
                         "DIM W1 AS BYTE\nDIM R1 AS BYTE\n";
    source += "FOR F1 = 1 TO 2\nIF F1 > 0 THEN\nW1 = 0\nWHILE W1 < 2\nW1 = W1 + 1\n"
              "IF W1 <> 0 THEN\nR1 = 0\nREPEAT\nR1 = R1 + 1\nIF R1 < 3 THEN\n"
              "FOR F2 = 5 TO 4 STEP -1\nIF F2 >= 4 THEN\nCNT = CNT + 1\nELSE\nE = E + 1\nENDIF\n"
              "NEXT\nELSE\nE = E + 1\nENDIF\nUNTIL R1 = 2\nELSE\nE = E + 1\nENDIF\nWEND\n"
              "ELSE\nE = E + 1\nENDIF\nNEXT\nEND\n";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.word("CNT"), 16) << source;
    EXPECT_EQ(p.byte("E"), 0) << source;
}

// Fillers push the code over three 2K pages: the subroutine, loop ends and
// the ELSE part lie in other pages than the code that jumps to them.
TEST(LoopExec, JumpsAcrossCodePages) {
    std::string fill = "ASM\n fill (nop), 2100\nENDASM\n";
    std::string source = "DEVICE 16F877\nDIM I AS BYTE\nDIM JW AS WORD\nDIM CNT AS WORD\n"
                         "DIM A AS BYTE\nDIM M AS BYTE\nDIM K AS WORD\n"
                         "GOSUB FarSub\n"
                         "FOR I = 1 TO 3\nCNT = CNT + 1\nGOTO Over1\n" +
                         fill + "Over1:\nNEXT\n" +
                         "WHILE A < 5\nA = A + 1\nIF A = 3 THEN\nGOTO Over2\n" + fill +
                         "Over2:\nM = M + 10\nELSE\nM = M + 1\nENDIF\nWEND\n"
                         "FOR K = 0 TO 2000 STEP 500\nJW = JW + 1\nNEXT\n"
                         "GOTO Finish\nFarSub:\nJW = 1000\nRETURN\nFinish:\nEND\n";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure();
    EXPECT_LT(p.label("fr@lab2"), 0x800);
    EXPECT_GE(p.label("OVER1"), 0x800);
    EXPECT_GE(p.label("OVER2"), 0x1000);
    EXPECT_GE(p.label("FARSUB"), 0x1000);
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.word("CNT"), 3);
    EXPECT_EQ(p.byte("A"), 5);
    EXPECT_EQ(p.byte("M"), 4 + 10);
    EXPECT_EQ(p.word("JW"), 1000 + 5);
}

} // namespace
} // namespace zorvel::test

namespace zorvel::test {
namespace {

// 68 bytes fill bank 0 of the 16F877 up to 127, so the counter's low byte is
// the last byte of bank 0 and its high byte the first of bank 1.
TEST(LoopExec, CounterSplitAcrossBanks) {
    std::string source = "DEVICE 16F877\n";
    for (int i = 1; i <= 68; ++i)
        source += "DIM X" + std::to_string(i) + " AS BYTE\n";
    source += "DIM JW AS WORD\nDIM B AS BYTE\nDIM C1 AS WORD\nDIM C2 AS WORD\nDIM C3 AS WORD\n"
              "B = 7\n"
              "FOR JW = 300 TO 0 STEP -1\nC1 = C1 + 1\nNEXT\n"
              "FOR JW = 700 TO 0 STEP -B\nC2 = C2 + 1\nNEXT\n"
              "FOR JW = 250 TO 600 STEP 9\nC3 = C3 + 1\nNEXT\nEND\n";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_EQ(p.address("JW"), 127);
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.word("C1"), 301);
    EXPECT_EQ(p.word("C2"), 700 / 7 + 1);
    EXPECT_EQ(p.word("C3"), (600 - 250) / 9 + 1);
}

} // namespace
} // namespace zorvel::test
