// The execution harness itself: a program built from BASIC runs to its END
// loop, and variables are read and written by name.
#include "support/exec_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

TEST(ExecHarness, RunsInlineCodeToEndAndReadsVariables) {
    SimProgram p(lines({"DIM A AS BYTE", "DIM W1 AS WORD", "DIM F AS BIT", "Here:", "@ movlw 42",
                        "@ movwf _A", "@ incf W1H,f", "@ bsf B@VR1,0", "END"}));
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runTo("Here"));
    p.setWord("W1", 0x1234);
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.byte("A"), 42);
    EXPECT_EQ(p.word("W1"), 0x1334);
    EXPECT_EQ(p.bit("F"), 1);
    EXPECT_EQ(p.address("NOPE"), -1);
    EXPECT_EQ(p.label("nowhere"), -1);
}

TEST(ExecHarness, SingleLetterWordsUseTheUnderscoredHighByte) {
    SimProgram p(lines({"DIM S AS WORD", "DIM SH AS BYTE", "Here:", "@ incf _SH,f", "END"}));
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runTo("Here"));
    p.setWord("S", 0x0102);
    p.setByte("SH", 7);
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.word("S"), 0x0202);
    EXPECT_EQ(p.byte("SH"), 7);
}

TEST(ExecHarness, ReportsABuildThatFails) {
    SimProgram p(lines({"DIM A AS BYTE", "@ movwf undefined_name", "END"}));
    EXPECT_FALSE(p.ok());
    EXPECT_NE(p.failure().find("build failed"), std::string::npos);
}

} // namespace
} // namespace zorvel::test
