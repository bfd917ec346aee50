// The expression evaluator: precedence, where intermediate results go, the
// PP temporaries it declares, and where an expression ends.
#include "compiler/frontend/expression.h"
#include "support/statement_code.h"

#include <gtest/gtest.h>

namespace zorvel {
namespace {

using Lines = std::vector<std::string>;

TEST(Expression, TwoOperandsWriteTheDestinationDirectly) {
    EXPECT_EQ(test::statementCode("X = A + B"),
              (Lines{"\tMov@fw _A", "\tAddwf@W _B", "\tMov@wf _X"}));
}

TEST(Expression, ThreeOperandsKeepNamesAndUsePP7) {
    // B * X first into PP7; A is combined afterwards, the addition writing W1.
    EXPECT_EQ(test::statementCode("W1 = A + B * X"),
              (Lines{"\tMov@fw _B", "\tMov@wf PP3", "\tClr@F PP3H", "\tMov@fw _X", "\tMov@wf PP1",
                     "\tClr@F PP1H", "\tF@C m@py", "\tMov@wf PP7", "\tMov@fw PP2H", "\tMov@wf PP7H",
                     "\tMov@fw _A", "\tAddwf@W PP7", "\tMov@wf W1", "\tClrw", "\tSkpnc",
                     "\tAddlw 1", "\tAddwf@W PP7H", "\tMov@wf W1H"}));
}

TEST(Expression, FourOperandsSaveLeftOperandsInNumberedTemporaries) {
    // A into PP7, B into PP8 (declared here), PP8 * X into PP8, PP7 + PP8
    // into PP7, and PP7 + W2 into W1.
    EXPECT_EQ(
        test::statementCode("W1 = A + B * X + W2"),
        (Lines{"\tMov@fw _A",   "\tMov@wf PP7",  "\tClr@F PP7H",  "PP8 Equ 53",    "PP8H Equ 54",
               "\tMov@fw _B",   "\tMov@wf PP8",  "\tClr@F PP8H",  "\tMov@fw PP8",  "\tMov@wf PP3",
               "\tMov@fw PP8H", "\tMov@wf PP3H", "\tMov@fw _X",   "\tMov@wf PP1",  "\tClr@F PP1H",
               "\tF@C m@py",    "\tMov@wf PP8",  "\tMov@fw PP2H", "\tMov@wf PP8H", "\tMov@fw PP8",
               "\tAddwf@F PP7", "\tMov@fw PP8H", "\tSkpnc",       "\tAddlw 1",     "\tAddwf@F PP7H",
               "\tMov@fw PP7",  "\tAddwf@W W2",  "\tMov@wf W1",   "\tMov@fw PP7H", "\tSkpnc",
               "\tAddlw 1",     "\tAddwf@W W2H", "\tMov@wf W1H"}));
}

TEST(Expression, TemporaryDeclaredOnceAndCountedAsRam) {
    test::CompileResult r =
        test::compileSource(test::statementProgram("W1 = A + B * X + W2\nW1 = A + B * X + W2"));
    int declarations = 0;
    for (const std::string& line : test::body(r))
        declarations += line == "PP8 Equ 53";
    EXPECT_EQ(declarations, 1);
    const SymbolEntry* pp8 = r.compilation->symbols.find("PP8H");
    ASSERT_NE(pp8, nullptr);
    EXPECT_EQ(pp8->address, 54);
}

TEST(Expression, AndBindsLikeMultiplyAndShiftsBindLoosest) {
    // B & 3 first, then A + that.
    Lines andFirst = test::statementCode("X = A + B & 3");
    ASSERT_FALSE(andFirst.empty());
    EXPECT_EQ(andFirst[0], "\tMovlw 3");
    // (A + 1) << 2: the addition into PP7, the shift of PP7 into X.
    EXPECT_EQ(test::statementCode("X = A + 1 << 2"),
              (Lines{"\tMovlw 1", "\tAddwf@W _A", "\tMov@wf PP7", "\tClr@F PP7H", "\tRlf@F PP7H",
                     "\tMov@fw PP7", "\tMov@wf PP0", "\tMov@fw PP7H", "\tMov@wf PP0H", "\tMovlw 2",
                     "\tF@C l@sh", "\tMov@wf _X"}));
}

TEST(Expression, ConstantSubexpressionsFold) {
    EXPECT_EQ(test::statementCode("X = A + 2 * 3"),
              (Lines{"\tMovlw 6", "\tAddwf@W _A", "\tMov@wf _X"}));
    EXPECT_EQ(test::statementCode("W1 = (10 + 6) */ 128"),
              (Lines{"\tMovlw 8", "\tMov@wf W1", "\tClr@F W1H"}));
}

TEST(Expression, EndsAtAComparison) {
    test::PassTwo t;
    t.c.symbols.add({"_A", "_A", kKindByte, 40, -1});
    t.c.symbols.add({"_B", "_B", kKindByte, 41, -1});
    t.c.symbols.add({"_X", "_X", kKindByte, 42, -1});
    test::setLine(t.c, "A < B");
    compileExpression(t.c, {"_X", kKindByte, -1});
    EXPECT_EQ(t.c.line.peek(), '<');
    EXPECT_EQ(t.c.asmlist, (Lines{"\tMov@fw _A", "\tMov@wf _X"}));
    EXPECT_TRUE(t.c.messages.empty());
}

} // namespace
} // namespace zorvel
