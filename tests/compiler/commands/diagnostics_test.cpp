// Every message of the conditions, loops and jumps, in its exact frame.
#include "compiler/commands/commands_support.h"

#include <algorithm>

namespace zorvel::test {
namespace {

struct ErrorCase {
    const char* name;
    std::string statements; // after the declarations (9 lines)
    std::string expected;   // the first message
    friend void PrintTo(const ErrorCase& c, std::ostream* os) { *os << c.name; }
};

class CommandErrors : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(CommandErrors, ReportsExactMessage) {
    EXPECT_EQ(firstError(kDeclarations + GetParam().statements), GetParam().expected);
}

// The declarations take lines 1 to 9.
std::string at10(const std::string& line, const std::string& what) {
    return frame(10, line, what);
}

std::string block(int line, const std::string& what) {
    return "Error at Line [" + std::to_string(line) + "] " + what + "\tIn file [prog.bas]! ***";
}

INSTANTIATE_TEST_SUITE_P(
    Conditions, CommandErrors,
    ::testing::Values(
        ErrorCase{"UnknownOperator", "IF A ? B THEN\n", at10("IF A ? B THEN", "Unknown operator")},
        ErrorCase{"NoOperator", "IF A\n", at10("IF A", "Unknown operator")},
        ErrorCase{"WhileUnknownOperator", "WHILE A\nWEND\n", at10("WHILE A", "Unknown operator")},
        ErrorCase{"UntilUnknownOperator", "REPEAT\nUNTIL A B\n",
                  frame(11, "UNTIL A B", "Unknown operator")},
        ErrorCase{"MissingLeftOperand", "IF = 5 THEN\n", at10("IF = 5 THEN", "Variable Expected")},
        ErrorCase{"MissingRightOperand", "IF A = THEN\n",
                  at10("IF A = THEN", " Variable ' THEN ' not defined")},
        ErrorCase{"UndefinedOperand", "IF Q = 5 THEN\n",
                  at10("IF Q = 5 THEN", " Variable ' _Q ' not defined")},
        ErrorCase{"ElementOfNonArray", "IF A[2] = 5 THEN\n",
                  at10("IF A[2] = 5 THEN", "Variable 'A' is not an ARRAY")},
        ErrorCase{"IfWithoutEndif", "IF A = B THEN\nA = 1\n", block(10, "IF without ENDIF")},
        ErrorCase{"ElseWithoutEndif", "IF A = B THEN\nELSE\nA = 1\n",
                  block(10, "IF without ENDIF")},
        ErrorCase{"NestedIfWithoutEndif", "IF A = B THEN\nIF A = 1 THEN\nENDIF\n",
                  block(10, "IF without ENDIF")}));

INSTANTIATE_TEST_SUITE_P(
    Loops, CommandErrors,
    ::testing::Values(
        ErrorCase{"ConstantCounter", "FOR 5 = 1 TO 2\n",
                  at10("FOR 5 = 1 TO 2", "BYTE or WORD type Variable Required")},
        ErrorCase{"BitCounter", "FOR F = 1 TO 2\n",
                  at10("FOR F = 1 TO 2", "BYTE or WORD type Variable Required")},
        ErrorCase{"NoEquals", "FOR I 1 TO 2\n",
                  at10("FOR I 1 TO 2", "'=' Assignment operator missing")},
        ErrorCase{"BitStart", "FOR I = F TO 2\n",
                  at10("FOR I = F TO 2", "BIT type variables are not valid in FOR-NEXT")},
        ErrorCase{"NoTo", "FOR I = 1 UPTO 2\n", at10("FOR I = 1 UPTO 2", " For 'TO' missing")},
        ErrorCase{
            "ExpressionEnd", "FOR I = 1 TO A + 1\n",
            at10("FOR I = 1 TO A + 1", "Only a single variable definition allowed after 'TO'")},
        ErrorCase{"BitEnd", "FOR I = 1 TO G\n",
                  at10("FOR I = 1 TO G", "BIT type variables are not valid in FOR-NEXT")},
        ErrorCase{"EmptyStep", "FOR I = 1 TO 5 STEP\n",
                  at10("FOR I = 1 TO 5 STEP", "Syntax Error")},
        ErrorCase{"BitStep", "FOR I = 1 TO 5 STEP F\n",
                  at10("FOR I = 1 TO 5 STEP F", "BIT type variables are not valid for STEP")},
        ErrorCase{"ExpressionStep", "FOR I = 1 TO 5 STEP A + 1\n",
                  at10("FOR I = 1 TO 5 STEP A + 1",
                       "Only a single variable or constant allowed after 'STEP'")},
        ErrorCase{"ByteCounterStepAbove255", "FOR I = 1 TO 5 STEP 256\nNEXT\n",
                  at10("FOR I = 1 TO 5 STEP 256",
                       "STEP 256 is too large for the BYTE variable '_I' (at most 255)")},
        ErrorCase{"ByteCounterDownStepAbove255", "FOR I = 5 TO 1 STEP -300\nNEXT\n",
                  at10("FOR I = 5 TO 1 STEP -300",
                       "STEP 300 is too large for the BYTE variable '_I' (at most 255)")},
        ErrorCase{"ByteCounterStartAbove255", "FOR I = 256 TO 5\nNEXT\n",
                  at10("FOR I = 256 TO 5",
                       "Start value 256 does not fit the BYTE variable '_I' (0 to 255)")},
        ErrorCase{"ForWithoutNext", "FOR I = 1 TO 5\nA = 1\n", block(10, "FOR without next")},
        ErrorCase{"ForClosedByWend", "A = 1\nFOR I = 1 TO 5\nWEND\n",
                  block(11, "FOR without next")},
        ErrorCase{"NextUndeclared", "FOR I = 1 TO 5\nNEXT Q\n",
                  frame(11, "NEXT Q", " Variable ' _Q ' not defined")},
        ErrorCase{"WhileWithoutWend", "WHILE A < 5\nA = A + 1\n", block(10, "WHILE without WEND")},
        ErrorCase{"RepeatWithoutUntil", "REPEAT\nA = A + 1\n", block(10, "REPEAT without UNTIL")},
        ErrorCase{"StrayNext", "NEXT\n", at10("NEXT", "NEXT without FOR")},
        ErrorCase{"StrayWend", "WEND\n", at10("WEND", "WEND without WHILE")},
        ErrorCase{"StrayUntil", "UNTIL A = 1\n", at10("UNTIL A = 1", "UNTIL without REPEAT")},
        ErrorCase{"StrayElse", "ELSE\n", at10("ELSE", "ELSE without IF")},
        ErrorCase{"StrayEndif", "ENDIF\n", at10("ENDIF", "ENDIF without IF")},
        ErrorCase{"StrayEndifAfterSingleLineIf", "IF A = 1 THEN A = 2\nENDIF\n",
                  frame(11, "ENDIF", "ENDIF without IF")}));

INSTANTIATE_TEST_SUITE_P(
    Jumps, CommandErrors,
    ::testing::Values(
        ErrorCase{"GotoUnknownLabel", "GOTO NOWHERE\n",
                  at10("GOTO NOWHERE", "Label 'NOWHERE' not found")},
        ErrorCase{"GosubUnknownLabel", "GOSUB NOWHERE\n",
                  at10("GOSUB NOWHERE", "Label 'NOWHERE' not found")},
        ErrorCase{"GotoNothing", "GOTO\n", at10("GOTO", "Syntax Error")},
        ErrorCase{"CallNothing", "CALL\n", at10("CALL", "Syntax Error")},
        ErrorCase{"PokeBraces", "POKE (5), 1\n",
                  at10("POKE (5), 1", "Braces not required for POKE")},
        ErrorCase{"PokeNoComma", "POKE 5 1\n", at10("POKE 5 1", "Comma missing")},
        ErrorCase{"PokeUndeclared", "POKE 5, Q\n",
                  at10("POKE 5, Q", " Variable ' _Q ' not defined")},
        ErrorCase{"PokeBit", "POKE 5, F\n",
                  at10("POKE 5, F", "This BIT type expression not supported in POKE")},
        ErrorCase{"PokeValueAboveByte", "POKE 5, 256\n",
                  at10("POKE 5, 256", "POKE value 256 does not fit a byte")},
        ErrorCase{"PokeAddressBeyondRam", "POKE 600, 1\n",
                  at10("POKE 600, 1", "POKE address 600 is outside the RAM (0 to 511)")}));

TEST(CommandErrors, TooManyErrorsIsSaidOnceInsideNestedBlocks) {
    CompileResult r = compileSource(kDeclarations +
                                    "WHILE A < 5\nIF A = B THEN\nGOTO X1\nGOTO X2\nENDIF\nWEND\n");
    ASSERT_EQ(r.messages.size(), 3u);
    EXPECT_EQ(r.messages[2], "\tToo many COMPILER ERRORS.");
}

TEST(CommandErrors, CompilationGoesOnAfterAnError) {
    CompileResult r = compileSource(kDeclarations + "IF A ? B THEN A = 1\nA = 2\n");
    EXPECT_EQ(r.errors, 1);
    const Lines& out = r.compilation->asmlist;
    EXPECT_EQ(std::count(out.begin(), out.end(), "\tMovlw 2"), 1);
    EXPECT_EQ(std::count(out.begin(), out.end(), "\tMovlw 1"), 0);
}

} // namespace
} // namespace zorvel::test
