// WREG as a condition operand: the comparison sees the value W holds when
// the statement starts.
#include "support/exec_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

TEST(WregCondition, ComparesTheValueOfW) {
    SimProgram p(
        lines({"DIM A AS BYTE", "DIM B AS BYTE", "DIM X AS BYTE", "DIM Y AS BYTE", "@ movlw 5",
               "IF WREG = 5 THEN A = 1", "@ movlw 7", "IF WREG > 6 THEN B = 1", "@ movlw 7",
               "IF WREG < 6 THEN X = 1", "@ movlw 200", "IF 199 < WREG THEN Y = 1", "END"}));
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.byte("A"), 1);
    EXPECT_EQ(p.byte("B"), 1);
    EXPECT_EQ(p.byte("X"), 0);
    EXPECT_EQ(p.byte("Y"), 1);
}

} // namespace
} // namespace zorvel::test
