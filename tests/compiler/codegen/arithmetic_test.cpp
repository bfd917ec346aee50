// The operation generators: the exact code of each operator for its operand
// and result kinds, with the in-place, constant and bit forms.
#include "compiler/codegen/arithmetic.h"
#include "support/statement_code.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

class OperationCode : public StatementCodeTest {};

TEST_P(OperationCode, EmitsExactLines) {
    expectExactCode(GetParam());
}

const Lines kCallMultiplyBytes = {"\tMov@fw _A",  "\tMov@wf PP3", "\tClr@F PP3H", "\tMov@fw _B",
                                  "\tMov@wf PP1", "\tClr@F PP1H", "\tF@C m@py"};

INSTANTIATE_TEST_SUITE_P(
    Add, OperationCode,
    testing::Values(
        CodeCase{"ByteByteThird", "X = A + B", {"\tMov@fw _A", "\tAddwf@W _B", "\tMov@wf _X"}},
        CodeCase{"ByteByteSameLeft", "A = A + B", {"\tMov@fw _B", "\tAddwf@F _A"}},
        CodeCase{"ByteByteSameRight", "B = A + B", {"\tMov@fw _A", "\tAddwf@F _B"}},
        CodeCase{"ByteOneSame", "A = A + 1", {"\tIncf@F _A"}},
        CodeCase{"ByteConstSame", "X = X + 5", {"\tMovlw 5", "\tAddwf@F _X"}},
        CodeCase{"ByteOneThird", "X = A + 1", {"\tIncf@W _A", "\tMov@wf _X"}},
        CodeCase{"ByteConstThird", "X = A + 7", {"\tMovlw 7", "\tAddwf@W _A", "\tMov@wf _X"}},
        CodeCase{"ConstByteToW", "WREG = 7 + A", {"\tMovlw 7", "\tAddwf@W _A"}},
        CodeCase{"WordWordSame",
                 "W1 = W1 + W2",
                 {"\tMov@fw W2", "\tAddwf@F W1", "\tMov@fw W2H", "\tSkpnc", "\tAddlw 1",
                  "\tAddwf@F W1H"}},
        CodeCase{"WordWordSameRight",
                 "W2 = W1 + W2",
                 {"\tMov@fw W1", "\tAddwf@F W2", "\tMov@fw W1H", "\tSkpnc", "\tAddlw 1",
                  "\tAddwf@F W2H"}},
        CodeCase{"WordWordThird",
                 "W3 = W1 + W2",
                 {"\tMov@fw W1", "\tAddwf@W W2", "\tMov@wf W3", "\tMov@fw W1H", "\tSkpnc",
                  "\tAddlw 1", "\tAddwf@W W2H", "\tMov@wf W3H"}},
        CodeCase{
            "WordOneSame", "W1 = W1 + 1", {"\tIncf@F W1", "\tS@B W1H", "\tSkpnz", "\t Incf W1H,F"}},
        CodeCase{"WordSmallConstSame",
                 "W1 = W1 + 5",
                 {"\tMovlw 5", "\tAddwf@F W1", "\tS@B W1H", "\tSkpnc", "\t Incf W1H,F"}},
        CodeCase{"WordConstSame",
                 "W1 = W1 + 300",
                 {"\tMovlw 44", "\tAddwf@F W1", "\tS@B W1H", "\tMovlw 1", "\tSkpnc", "\tAddlw 1",
                  "\tAddwf@F W1H"}},
        CodeCase{"ByteBitToByte",
                 "X = A + F",
                 {"\tMov@fw _A", "\tBtf@sc B@VR1,0", "\tAddlw 1", "\tMov@wf _X"}},
        CodeCase{"ByteBitToWord",
                 "W1 = A + F",
                 {"\tMov@fw _A", "\tClrc", "\tBtf@sc B@VR1,0", "\tAddlw 1", "\tMov@wf W1",
                  "\tClr@F W1H", "\tRlf@F W1H"}},
        CodeCase{"BitEvenConst", "G = F + 2", {"\tBit_Bit B@VR1,0,B@VR1,1"}},
        CodeCase{"BitOddConst",
                 "G = F + 3",
                 {"\tClrdc", "\tBtf@ss B@VR1,0", "\tSetdc", "\tS@B B@VR1", "\tSkpndc",
                  "\tBsf B@VR1,1", "\tSkpdc", "\tBcf B@VR1,1"}},
        CodeCase{"ByteByteToWordCatchesCarry",
                 "W1 = A + B",
                 {"\tMov@fw _A", "\tAddwf@W _B", "\tMov@wf W1", "\tClr@F W1H", "\tRlf@F W1H"}},
        CodeCase{
            "ByteByteToBit", "G = A + B", {"\tMov@fw _A", "\tAddwf@W _B", "\tWreg_Bit B@VR1,1"}},
        CodeCase{"ConstantsFolded", "X = 3 * 4 + 1", {"\tMovlw 13", "\tMov@wf _X"}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Subtract, OperationCode,
    testing::Values(
        CodeCase{"WordWordThird",
                 "W3 = W1 - W2",
                 {"\tMov@fw W2", "\tSubwf@W W1", "\tMov@wf W3", "\tMov@fw W2H", "\tSkpc",
                  "\tAddlw 1", "\tSubwf@W W1H", "\tMov@wf W3H"}},
        CodeCase{"ConstLeft", "X = 10 - A", {"\tMov@fw _A", "\tSublw 10", "\tMov@wf _X"}},
        CodeCase{"ByteByteSame", "A = A - B", {"\tMov@fw _B", "\tSubwf@F _A"}},
        CodeCase{"ByteOneSame", "A = A - 1", {"\tDecf@F _A"}},
        CodeCase{"ByteOneThird", "X = A - 1", {"\tDecf@W _A", "\tMov@wf _X"}},
        CodeCase{"WordByteSame",
                 "W1 = W1 - A",
                 {"\tMov@fw _A", "\tSubwf@F W1", "\tS@B W1H", "\tSkpc", "\t Decf W1H,F"}},
        CodeCase{"ByteByteToWordBorrows",
                 "W1 = A - B",
                 {"\tMov@fw _B", "\tSubwf@W _A", "\tMov@wf W1", "\tClr@F W1H", "\tSkpc",
                  "\t Decf W1H,F"}},
        CodeCase{"BitLeftWordThroughScratch",
                 "W1 = F - W2",
                 {"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tMov@wf PP0", "\tMov@fw W2",
                  "\tSubwf@W PP0", "\tMov@wf W1", "\tMov@fw W2H", "\tSkpc", "\tAddlw 1",
                  "\tSublw 0", "\tMov@wf W1H"}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Logic, OperationCode,
    testing::Values(
        CodeCase{"AndThird", "X = A & B", {"\tMov@fw _A", "\tAndwf@W _B", "\tMov@wf _X"}},
        CodeCase{"OrSame", "A = A | B", {"\tMov@fw _B", "\tIorwf@F _A"}},
        CodeCase{"XorWords",
                 "W3 = W1 ^ W2",
                 {"\tMov@fw W1", "\tXorwf@W W2", "\tMov@wf W3", "\tMov@fw W1H", "\tXorwf@W W2H",
                  "\tMov@wf W3H"}},
        CodeCase{"AndWordByteClearsHigh",
                 "W3 = W1 & A",
                 {"\tMov@fw W1", "\tAndwf@W _A", "\tMov@wf W3", "\tClr@F W3H"}},
        CodeCase{"OrWordByteCopiesHigh",
                 "W3 = W1 | A",
                 {"\tMov@fw W1", "\tIorwf@W _A", "\tMov@wf W3", "\tMov@fw W1H", "\tMov@wf W3H"}},
        CodeCase{"AndConstBit",
                 "X = 7 & F",
                 {"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tAndlw 7", "\tMov@wf _X"}},
        CodeCase{"XorBitOddConst",
                 "G = F ^ 1",
                 {"\tClrdc", "\tBtf@ss B@VR1,0", "\tSetdc", "\tS@B B@VR1", "\tSkpndc",
                  "\tBsf B@VR1,1", "\tSkpdc", "\tBcf B@VR1,1"}},
        CodeCase{"OrBitOddConstSets", "G = F | 3", {"\tBs@f B@VR1,1"}},
        CodeCase{"AndBitEvenConstClears", "G = F & 2", {"\tBc@f B@VR1,1"}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Multiply, OperationCode,
    testing::Values(
        CodeCase{"ByteTimesFourInline",
                 "B = A * 4",
                 {"\tMov@fw _A", "\tMov@wf _B", "\tClrc", "\tRlf@F _B", "\tClrc", "\tRlf@F _B"}},
        CodeCase{"ByteTimesTwoSame", "A = A * 2", {"\tClrc", "\tRlf@F _A"}},
        CodeCase{"ByteTimesZero", "X = A * 0", {"\tClr@F _X"}},
        CodeCase{"ByteTimesEightToWord",
                 "W1 = 8 * A",
                 {"\tMov@fw _A", "\tMov@wf W1", "\tClr@F W1H", "\tClrc", "\tRlf@F W1",
                  "\tRlf@F W1H", "\tClrc", "\tRlf@F W1", "\tRlf@F W1H", "\tClrc", "\tRlf@F W1",
                  "\tRlf@F W1H"}},
        CodeCase{"ByteByteCall", "X = A * B", join({kCallMultiplyBytes, {"\tMov@wf _X"}})},
        CodeCase{"ByteByteToWord", "W1 = A * B",
                 join({kCallMultiplyBytes, {"\tMov@wf W1", "\tMov@fw PP2H", "\tMov@wf W1H"}})},
        CodeCase{"High", "W1 = A ** B",
                 join({kCallMultiplyBytes,
                       {"\tMov@fw PP0", "\tMov@wf W1", "\tMov@fw PP0H", "\tMov@wf W1H"}})},
        CodeCase{"Middle", "W1 = A */ B",
                 join({kCallMultiplyBytes,
                       {"\tMov@fw PP2H", "\tMov@wf W1", "\tMov@fw PP0", "\tMov@wf W1H"}})},
        CodeCase{"ConstTimesBit",
                 "X = 7 * F",
                 {"\tMovlw 7", "\tBtf@ss B@VR1,0", "\tClrw", "\tMov@wf _X"}},
        CodeCase{"MiddleByteBitIsZero", "X = A */ F", {"\tClr@F _X"}},
        CodeCase{"MiddleWordBit",
                 "X = W1 */ F",
                 {"\tMov@fw W1H", "\tBtf@ss B@VR1,0", "\tClrw", "\tMov@wf _X"}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    DivideAndShift, OperationCode,
    testing::Values(
        CodeCase{"DivideCall",
                 "X = A / 3",
                 {"\tMov@fw _A", "\tMov@wf PP0", "\tClr@F PP0H", "\tMovlw 3", "\tMov@wf PP1",
                  "\tClr@F PP1H", "\tF@C d@vd", "\tMov@wf _X"}},
        CodeCase{"RemainderReadsPP2",
                 "X = A // 3",
                 {"\tMov@fw _A", "\tMov@wf PP0", "\tClr@F PP0H", "\tMovlw 3", "\tMov@wf PP1",
                  "\tClr@F PP1H", "\tF@C d@vd", "\tMov@fw PP2", "\tMov@wf _X"}},
        CodeCase{"QuotientToWord",
                 "W1 = W2 / A",
                 {"\tMov@fw W2", "\tMov@wf PP0", "\tMov@fw W2H", "\tMov@wf PP0H", "\tMov@fw _A",
                  "\tMov@wf PP1", "\tClr@F PP1H", "\tF@C d@vd", "\tMov@wf W1", "\tMov@fw PP0H",
                  "\tMov@wf W1H"}},
        CodeCase{"HalveByte", "X = A / 2", {"\tClrc", "\tRrf@W _A", "\tMov@wf _X"}},
        CodeCase{"HalveByteSame", "A = A / 2", {"\tClrc", "\tRrf@F _A"}},
        CodeCase{"ShiftByteOnce", "X = A << 1", {"\tClrc", "\tRlf@W _A", "\tMov@wf _X"}},
        CodeCase{"ShiftByteOnceSame", "A = A >> 1", {"\tClrc", "\tRrf@F _A"}},
        CodeCase{"ShiftByteOnceToWord",
                 "W1 = A << 1",
                 {"\tClrc", "\tRlf@W _A", "\tMov@wf W1", "\tClr@F W1H", "\tRlf@F W1H"}},
        CodeCase{"ShiftRightCall",
                 "W1 = W2 >> B",
                 {"\tMov@fw W2", "\tMov@wf PP0", "\tMov@fw W2H", "\tMov@wf PP0H", "\tMov@fw _B",
                  "\tF@C r@sh", "\tMov@wf W1", "\tMov@fw PP0H", "\tMov@wf W1H"}},
        CodeCase{"ShiftByWordCount",
                 "X = A << W2",
                 {"\tMov@fw _A", "\tMov@wf PP0", "\tClr@F PP0H", "\tMov@fw W2", "\tMov@ff W2H",
                  "\tSkpz", "\tMovlw 255", "\tF@C l@sh", "\tMov@wf _X"}},
        CodeCase{"DivideByZeroFolded",
                 "W1 = 7 / 0",
                 {"\tMovlw 255", "\tMov@wf W1", "\tMovlw 255", "\tMov@wf W1H"}}),
    caseName);

struct BitRefusal {
    const char* name;
    const char* statement;
    const char* operation;
};

class BitRefusals : public testing::TestWithParam<BitRefusal> {};

TEST_P(BitRefusals, ReportAndEmitNothing) {
    const BitRefusal& tc = GetParam();
    EXPECT_EQ(statementMessages(tc.statement),
              Lines{statementError(tc.statement,
                                   std::string("This BIT type expression not supported in ") +
                                       tc.operation)});
    EXPECT_TRUE(statementCode(tc.statement).empty());
}

INSTANTIATE_TEST_SUITE_P(Operators, BitRefusals,
                         testing::Values(BitRefusal{"High", "X = F ** A", "MULTIPLY HIGH"},
                                         BitRefusal{"HighRight", "X = A ** F", "MULTIPLY HIGH"},
                                         BitRefusal{"Modulus", "X = A // F", "MODULUS"},
                                         BitRefusal{"ModulusLeft", "X = F // A", "MODULUS"},
                                         BitRefusal{"ShiftLeft", "X = F << 1", "SHIFT LEFT"},
                                         BitRefusal{"ShiftRight", "X = A >> F", "SHIFT RIGHT"},
                                         BitRefusal{"Divisor", "X = A / F", "DIVIDE"}),
                         caseName);

TEST(OperationDispatch, TypePairCodesAndTokens) {
    Value byte{"A", kKindByte, -1}, num{"3", kKindNum, -1}, word{"W", kKindWord, -1};
    Value bit{"F", kKindBit, 0}, wreg{"WREG", kKindWreg, -1};
    EXPECT_EQ(typePairCode(byte, num, word), "BTNMWD");
    EXPECT_EQ(typePairCode(bit, word, wreg), "BIWDWR");
    EXPECT_EQ(operatorToken(kOpMultiplyMiddle), "*/");
    EXPECT_EQ(operatorToken(kOpShiftRight), ">>");
}

TEST(OperationDispatch, FoldsLikeTheRuntime) {
    EXPECT_EQ(foldOperation(kOpSubtract, 3, 5), 65534);
    EXPECT_EQ(foldOperation(kOpMultiplyHigh, 1000, 3000), 45);
    EXPECT_EQ(foldOperation(kOpMultiplyMiddle, 16, 128), 8);
    EXPECT_EQ(foldOperation(kOpDivide, 9, 0), 65535);
    EXPECT_EQ(foldOperation(kOpRemainder, 9, 0), 9);
    EXPECT_EQ(foldOperation(kOpShiftLeft, 1, 16), 0);
    EXPECT_EQ(foldOperation(kOpShiftLeft, 3, 15), 32768);
}

} // namespace
} // namespace zorvel::test
