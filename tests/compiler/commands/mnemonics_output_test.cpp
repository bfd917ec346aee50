// Inline mnemonics and pseudo-instructions: the exact lines and every message.
#include "support/statement_code.h"

#include <gtest/gtest.h>

namespace zorvel {
namespace {

using Lines = std::vector<std::string>;

struct CodeCase {
    const char* name;
    const char* statement;
    Lines expected;
};

void PrintTo(const CodeCase& c, std::ostream* os) {
    *os << c.statement;
}

class MnemonicCode : public testing::TestWithParam<CodeCase> {};

TEST_P(MnemonicCode, EmitsExactLines) {
    const CodeCase& tc = GetParam();
    EXPECT_EQ(test::statementCode(tc.statement), tc.expected) << tc.statement;
    EXPECT_TRUE(test::statementMessages(tc.statement).empty()) << tc.statement;
}

std::string testName(const testing::TestParamInfo<CodeCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Literal, MnemonicCode,
    testing::Values(CodeCase{"HighKept", "MOVLW HIGH 300", {"\tMovlw HIGH 300"}},
                    CodeCase{"Folded", "MOVLW 3+4", {"\tMovlw 7"}},
                    CodeCase{"Negative", "ADDLW -5", {"\tAddlw -5"}},
                    CodeCase{"PlusSign", "SUBLW +2", {"\tSublw +2"}},
                    CodeCase{"LowOfConstant", "ANDLW LOW K", {"\tAndlw LOW 300"}},
                    CodeCase{"Hex", "IORLW $F0", {"\tIorlw 240"}},
                    CodeCase{"Binary", "XORLW %101", {"\tXorlw 5"}},
                    CodeCase{"Retlw", "RETLW 2*8", {"\tRetlw 16"}}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    Register, MnemonicCode,
    testing::Values(
        CodeCase{"AndToW", "ANDWF A,W", {"\tAndwf _A,W"}},
        CodeCase{"AndToF", "ANDWF A", {"\tAndwf _A,F"}},
        CodeCase{"ZeroMeansW", "ADDWF W1, 0", {"\tAddwf W1,W"}},
        CodeCase{"OneMeansF", "SUBWF B, 1", {"\tSubwf _B,F"}},
        CodeCase{"ExplicitF", "IORWF A,F", {"\tIorwf _A,F"}},
        CodeCase{"Comf", "COMF X,W", {"\tComf _X,W"}}, CodeCase{"Decf", "DECF A", {"\tDecf _A,F"}},
        CodeCase{"Decfsz", "DECFSZ B,F", {"\tDecfsz _B,F"}},
        CodeCase{"Incf", "INCF W1,W", {"\tIncf W1,W"}},
        CodeCase{"Incfsz", "INCFSZ A", {"\tIncfsz _A,F"}},
        CodeCase{"Movf", "MOVF A,W", {"\tMovf _A,W"}}, CodeCase{"Rlf", "RLF A,F", {"\tRlf _A,F"}},
        CodeCase{"Rrf", "RRF A,W", {"\tRrf _A,W"}}, CodeCase{"Swapf", "SWAPF A", {"\tSwapf _A,F"}},
        CodeCase{"Xorwf", "XORWF A,W", {"\tXorwf _A,W"}},
        CodeCase{"ClrfByte", "CLRF A", {"\tClrf _A"}},
        CodeCase{"ConstantRegister", "CLRF 12", {"\tClrf 12"}},
        CodeCase{"ConstantSymbol", "INCF K", {"\tIncf 300,F"}},
        CodeCase{"Movwf", "MOVWF PORTB", {"\tMovwf PORTB"}},
        CodeCase{"Movfw", "MOVFW A", {"\tMovf _A,W"}},
        CodeCase{"UndeclaredNameAsWritten", "MOVF PARAM1,W", {"\tMovf PARAM1,W"}},
        CodeCase{"ArrayFirstElement", "CLRF ARR", {"\tClrf ARR"}}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    Bit, MnemonicCode,
    testing::Values(CodeCase{"StatusCarry", "BSF STATUS,C", {"\tBsf STATUS,C"}},
                    CodeCase{"StatusZero", "BTFSS STATUS, Z", {"\tBtfss STATUS,Z"}},
                    CodeCase{"DigitCarry", "BCF STATUS,DC", {"\tBcf STATUS,DC"}},
                    CodeCase{"BitVariable", "BSF F", {"\tBsf B@VR1,0"}},
                    CodeCase{"SecondBitVariable", "BTFSC G", {"\tBtfsc B@VR1,1"}},
                    CodeCase{"NumberedBit", "BCF PORTB, 3", {"\tBcf PORTB,3"}},
                    CodeCase{"EvaluatedBit", "BSF A, 2+3", {"\tBsf _A,5"}},
                    CodeCase{"ConstantBit", "BTFSC A,K", {"\tBtfsc _A,300"}},
                    CodeCase{"UndeclaredBitName", "BSF A,RP0", {"\tBsf _A,RP0"}}),
    testName);

INSTANTIATE_TEST_SUITE_P(NoOperand, MnemonicCode,
                         testing::Values(CodeCase{"Clrw", "CLRW", {"\tClrw"}},
                                         CodeCase{"Clrwdt", "CLRWDT", {"\tClrwdt"}},
                                         CodeCase{"Nop", "NOP", {"\tNop"}},
                                         CodeCase{"Option", "OPTION", {"\tOption"}},
                                         CodeCase{"Retfie", "RETFIE", {"\tRetfie"}},
                                         CodeCase{"Ret", "RET", {"\tReturn"}},
                                         CodeCase{"Tris", "TRIS PORTB", {"\tTris PORTB"}}),
                         testName);

INSTANTIATE_TEST_SUITE_P(
    Pseudo, MnemonicCode,
    testing::Values(
        CodeCase{"Jump", "JUMP HERE", {"\tGoto HERE"}},
        CodeCase{"JumpRelative", "JUMP $-1", {"\tGoto $-1"}},
        CodeCase{"BranchCarry", "BC HERE", {"\tBtfsc 3,0", "\tGoto HERE"}},
        CodeCase{"BranchNoCarry", "BNC HERE", {"\tBtfss 3,0", "\tGoto HERE"}},
        CodeCase{"BranchZero", "BZ HERE", {"\tBtfsc 3,2", "\tGoto HERE"}},
        CodeCase{"BranchNotZero", "BNZ HERE", {"\tBtfss 3,2", "\tGoto HERE"}},
        CodeCase{"BranchDigitCarry", "BDC HERE", {"\tBtfsc 3,1", "\tGoto HERE"}},
        CodeCase{"BranchNoDigitCarry", "BNDC $+2", {"\tBtfss 3,1", "\tGoto $+2"}},
        CodeCase{"Clrc", "CLRC", {"\tBcf 3,0"}}, CodeCase{"Clrdc", "CLRDC", {"\tBcf 3,1"}},
        CodeCase{"Clrz", "CLRZ", {"\tBcf 3,2"}}, CodeCase{"Setc", "SETC", {"\tBsf 3,0"}},
        CodeCase{"Setdc", "SETDC", {"\tBsf 3,1"}}, CodeCase{"Setz", "SETZ", {"\tBsf 3,2"}},
        CodeCase{"Skip", "SKIP", {"\tGoto $+1"}}, CodeCase{"Skpc", "SKPC", {"\tBtfss 3,0"}},
        CodeCase{"Skpnc", "SKPNC", {"\tBtfsc 3,0"}}, CodeCase{"Skpz", "SKPZ", {"\tBtfss 3,2"}},
        CodeCase{"Skpnz", "SKPNZ", {"\tBtfsc 3,2"}}, CodeCase{"Skpdc", "SKPDC", {"\tBtfss 3,1"}},
        CodeCase{"Skpndc", "SKPNDC", {"\tBtfsc 3,1"}},
        CodeCase{"Lgoto", "LGOTO Here ' far", {"\tF@G Here"}},
        CodeCase{"Ljump", "LJUMP Here", {"\tF@G Here"}},
        CodeCase{"Tgoto", "TGOTO 1,PORTB,0,Here", {"\tt@g 1,PORTB,0,Here"}},
        CodeCase{"Brset", "BRSET PortB,1,Here", {"\tBrset PORTB,1,Here"}},
        CodeCase{"Brclr", "BRCLR PortB,1,Here", {"\tBrclr PORTB,1,Here"}},
        // BASIC words in their assembler spelling; labels and numbers stay.
        CodeCase{"BasicWords", "BRSET W1.HIGHBYTE,K,Here", {"\tBrset W1H,300,Here"}},
        CodeCase{"SingleLetter", "TGOTO 1,X,$7,Here", {"\tt@g 1,_X,7,Here"}},
        CodeCase{"TwoOnALine", "CLRC : SETZ", {"\tBcf 3,0", "", "\tBsf 3,2"}}),
    testName);

struct ErrorCase {
    const char* name;
    const char* statement;
    const char* message;
};

void PrintTo(const ErrorCase& c, std::ostream* os) {
    *os << c.statement;
}

class MnemonicErrors : public testing::TestWithParam<ErrorCase> {};

TEST_P(MnemonicErrors, ReportsExactMessage) {
    const ErrorCase& tc = GetParam();
    std::vector<std::string> messages = test::statementMessages(tc.statement);
    ASSERT_FALSE(messages.empty()) << tc.statement;
    EXPECT_EQ(messages[0], test::frame(test::statementLine(), tc.statement, tc.message));
}

INSTANTIATE_TEST_SUITE_P(
    All, MnemonicErrors,
    testing::Values(ErrorCase{"BitRegister", "ANDWF F,W",
                              "BIT type variables are not compatible with this mnemonic"},
                    ErrorCase{"BitMovwf", "MOVWF G",
                              "BIT type variables are not compatible with this mnemonic"},
                    ErrorCase{"VariableAsBit", "BSF A,B", "Cannot assign a variable as a BIT"},
                    ErrorCase{"BitCommaMissing", "BCF A 3", "Comma missing"},
                    ErrorCase{"NoRegister", "CLRF", "Syntax Error"},
                    ErrorCase{"NoLiteral", "MOVLW", "Syntax Error"},
                    ErrorCase{"LiteralUndefined", "MOVLW Q", " Variable ' _Q ' not defined"},
                    ErrorCase{"LiteralNotANumber", "MOVLW ?", "Integer Expected"},
                    ErrorCase{"JumpWithoutLabel", "JUMP", "Syntax Error"},
                    ErrorCase{"JumpUnknownLabel", "JUMP NOWHERE", "Label 'NOWHERE' not found"},
                    ErrorCase{"BranchUnknownLabel", "BZ NOWHERE", "Label 'NOWHERE' not found"},
                    ErrorCase{"LgotoWithoutText", "LGOTO", "Syntax Error"}),
    [](const testing::TestParamInfo<ErrorCase>& info) { return std::string(info.param.name); });

} // namespace
} // namespace zorvel
