// Assignment, LET, INC, DEC and SWAP: the exact code and every diagnostic.
#include "support/statement_code.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

class AssignmentCode : public StatementCodeTest {};

TEST_P(AssignmentCode, EmitsExactLines) {
    expectExactCode(GetParam());
}

const Lines kSwapBytes = {"\tMov@fw _A", "\tSubwf@W _B", "\tAddwf@F _A", "\tSubwf@F _B"};

INSTANTIATE_TEST_SUITE_P(
    Statements, AssignmentCode,
    testing::Values(
        CodeCase{"ConstToByte", "X = 300", {"\tMovlw 44", "\tMov@wf _X"}},
        CodeCase{
            "ConstToWord", "W1 = K", {"\tMovlw 44", "\tMov@wf W1", "\tMovlw 1", "\tMov@wf W1H"}},
        CodeCase{"ZeroToByte", "LET X = 0", {"\tClr@F _X"}},
        CodeCase{"ByteToItself", "A = A", {"\tMov@ff _A"}},
        CodeCase{"WordToByte", "X = W1", {"\tMov@fw W1", "\tMov@wf _X"}},
        CodeCase{"ByteToWord", "W1 = A", {"\tMov@fw _A", "\tMov@wf W1", "\tClr@F W1H"}},
        CodeCase{"ByteToBit", "F = A", {"\tByte_Bit _A,B@VR1,0"}},
        CodeCase{"BitToBit", "G = F", {"\tBit_Bit B@VR1,0,B@VR1,1"}},
        CodeCase{"HighByteToByte", "X = W1.HIGHBYTE", {"\tMov@fw W1H", "\tMov@wf _X"}},
        CodeCase{"PortBitToByte",
                 "X = PORTB.3",
                 {"\tClrw", "\tBtf@sc PORTB,3", "\tMovlw 1", "\tMov@wf _X"}},
        CodeCase{"ConstToBit", "F = 3", {"\tBs@f B@VR1,0"}},
        CodeCase{"ArrayNameIsFirstElement", "ARR = 5", {"\tMovlw 5", "\tMov@wf ARR"}},
        CodeCase{"WregToByte", "X = WREG", {"\tMov@wf _X"}},
        CodeCase{"ByteToWreg", "WREG = A", {"\tMov@fw _A"}},
        CodeCase{
            "WregSourceSavedFirst",
            "X = A + WREG",
            {"N@VAR7 = 53", "\tMov@wf N@VAR7", "\tMov@fw _A", "\tAddwf@W N@VAR7", "\tMov@wf _X"}},
        CodeCase{"IncByte", "INC A", {"\tIncf@F _A"}},
        CodeCase{"IncrementWord",
                 "INCREMENT W1",
                 {"\tIncf@F W1", "\tS@B W1H", "\tSkpnz", "\t Incf W1H,F"}},
        CodeCase{"DecByte", "DEC A", {"\tDecf@F _A"}},
        CodeCase{"DecrementWord",
                 "DECREMENT W1",
                 {"\tMovlw 1", "\tSubwf@F W1", "\tS@B W1H", "\tSkpc", "\t Decf W1H,F"}},
        CodeCase{"IncBit",
                 "INC F",
                 {"\tClrdc", "\tBtf@ss B@VR1,0", "\tSetdc", "\tS@B B@VR1", "\tSkpndc",
                  "\tBsf B@VR1,0", "\tSkpdc", "\tBcf B@VR1,0"}},
        CodeCase{"IncWreg", "INC WREG", {"\tAddlw 1"}},
        CodeCase{"SwapBytes", "SWAP A, B", kSwapBytes},
        CodeCase{"SwapByteWord",
                 "SWAP A, W1",
                 {"\tMov@fw _A", "\tSubwf@W W1", "\tAddwf@F _A", "\tSubwf@F W1", "\tClr@F W1H"}},
        CodeCase{"SwapWords",
                 "SWAP W1, W2",
                 {"\tMov@fw W1", "\tSubwf@W W2", "\tAddwf@F W1", "\tSubwf@F W2", "\tMov@fw W1H",
                  "\tSubwf@W W2H", "\tAddwf@F W1H", "\tSubwf@F W2H"}},
        CodeCase{"SwapByteBit",
                 "SWAP A, F",
                 {"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tXorwf@F _A", "\tXorwf@W _A",
                  "\tXorwf@F _A", "\tWreg_Bit B@VR1,0"}},
        CodeCase{"SwapWordBit",
                 "SWAP F, W2",
                 {"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tXorwf@F W2", "\tXorwf@W W2",
                  "\tXorwf@F W2", "\tClr@F W2H", "\tWreg_Bit B@VR1,0"}},
        CodeCase{"SwapBits",
                 "SWAP F, G",
                 {"\tClrdc", "\tBtf@sc B@VR1,0", "\tSetdc", "\tClrc", "\tBtf@sc B@VR1,1", "\tSetc",
                  "\tS@B B@VR1", "\tSkpnc", "\tBsf B@VR1,0", "\tSkpc", "\tBcf B@VR1,0",
                  "\tS@B B@VR1", "\tSkpndc", "\tBsf B@VR1,1", "\tSkpdc", "\tBcf B@VR1,1"}},
        CodeCase{"SwapWithWreg", "SWAP WREG, A", {"\tXorwf@F _A", "\tXorwf@W _A", "\tXorwf@F _A"}}),
    caseName);

struct ErrorCase {
    const char* name;
    const char* statement;
    const char* message;
};

class AssignmentErrors : public testing::TestWithParam<ErrorCase> {};

TEST_P(AssignmentErrors, ReportExactMessage) {
    const ErrorCase& tc = GetParam();
    EXPECT_EQ(statementMessages(tc.statement), Lines{statementError(tc.statement, tc.message)});
}

INSTANTIATE_TEST_SUITE_P(
    Statements, AssignmentErrors,
    testing::Values(
        ErrorCase{"ConstantTarget", "K = 1", "Cannot assign a Variable to a Numeric constant"},
        ErrorCase{"NumberTarget", "LET 5 = 1", "Cannot assign a Variable to a Numeric constant"},
        ErrorCase{"MissingEquals", "X A", "Assignment operator '=' missing"},
        ErrorCase{"UnknownTarget", "NOPE = 1", " Variable ' NOPE ' not defined"},
        ErrorCase{"UnknownSource", "X = NOPE + 1", " Variable ' NOPE ' not defined"},
        ErrorCase{"MissingOperand", "X = A +", "Variable Expected"},
        ErrorCase{"EmptyRightSide", "X =", "Variable Expected"},
        ErrorCase{"UnclosedParenthesis", "X = (A + 1", ") Expected"},
        ErrorCase{"TrailingWord", "X = A B", "Syntax Error"},
        ErrorCase{"FunctionSource", "X = EREAD 3", "Function 'EREAD' is not supported yet"},
        ErrorCase{"FunctionInside", "X = A + EREAD 3",
                  "Function 'EREAD' is not supported yet in expressions"},
        // Functions outside the keyword table's function class.
        ErrorCase{"PeekOutsideRam", "X = PEEK 600",
                  "PEEK address 600 is outside the RAM (0 to 511)"},
        ErrorCase{"AdinInside", "X = 1 + ADIN 0",
                  "Function 'ADIN' is not supported yet in expressions"},
        ErrorCase{"IncConstant", "INC K", "Cannot increment a numeric constant"},
        ErrorCase{"DecNumber", "DEC 5", "Cannot decrement a numeric constant"},
        ErrorCase{"IncArray", "INC ARR[1]", "ARRAY variables not supported in INC"},
        ErrorCase{"DecrementArray", "DECREMENT ARR[0]",
                  "ARRAY variables not supported in DECREMENT"},
        ErrorCase{"IncNothing", "INC", "Variable Expected"},
        ErrorCase{"IncUnknown", "INC NOPE", " Variable ' NOPE ' not defined"},
        ErrorCase{"SwapNoComma", "SWAP A B", "Comma missing"},
        ErrorCase{"SwapConstant", "SWAP A, K", "Cannot SWAP a numeric constant"},
        ErrorCase{"SwapUnknown", "SWAP A, NOPE", " Variable ' NOPE ' not defined"},
        ErrorCase{"SwapArray", "SWAP ARR[1], A", "ARRAY variables not supported in SWAP"},
        ErrorCase{"SwapWregBit", "SWAP WREG, F", "SWAP of WREG with a BIT is not supported"}),
    caseName);

} // namespace
} // namespace zorvel::test
