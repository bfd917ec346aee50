// User macros: declarations, calls as statements, values and condition
// operands, the type-pair statements, and every message.
#include "support/statement_code.h"

#include <gtest/gtest.h>

namespace zorvel {
namespace {

using Lines = std::vector<std::string>;

const std::string kKindNames = "\tLocal BYTE=0,WORD=1,BIT=2,LABEL=3,OPERAND=6,NUM8=8,NUM16=16";

// Unused header positions from `from` to 15.
std::string unusedFrom(int from) {
    std::string s;
    for (int i = from; i <= 15; ++i)
        s += (i == 1 ? "" : ",") + std::string("p@") + std::to_string(i);
    return s;
}

// The call line's padding for `used` positions.
std::string padding(int used) {
    std::string s;
    for (int i = used; i < 15; ++i)
        s += i == 0 ? "0" : ",0";
    return s;
}

// Two macros declared before the statements under test.
const std::string kMacros = "ADD2 MACRO P1, P2\nENDM\nNOARGS MACRO\nENDM\n";

const Lines kMacroLines = {"ADD2\tMacro P1,P2" + unusedFrom(3), kKindNames, "\tEndm",
                           "NOARGS\tMacro " + unusedFrom(1),    kKindNames, "\tEndm"};

// The lines of `statements` after the two declarations.
Lines callCode(const std::string& statements) {
    Lines all = test::statementCode(kMacros + statements);
    EXPECT_GE(all.size(), kMacroLines.size()) << statements;
    if (all.size() < kMacroLines.size()) return all;
    EXPECT_EQ(Lines(all.begin(), all.begin() + 6), kMacroLines);
    return Lines(all.begin() + 6, all.end());
}

TEST(MacroDeclaration, PadsToFifteenParameters) {
    EXPECT_EQ(test::statementCode("M1 MACRO A1, B1, C1\nEXITM\nENDM"),
              (Lines{"M1\tMacro A1,B1,C1" + unusedFrom(4), kKindNames, "\tExitm", "\tEndm"}));
}

TEST(MacroDeclaration, WithoutParametersAllPositionsUnused) {
    EXPECT_EQ(test::statementCode("M1 MACRO\nENDM"),
              (Lines{"M1\tMacro " + unusedFrom(1), kKindNames, "\tEndm"}));
}

TEST(MacroDeclaration, FifteenParametersFit) {
    std::string params, header;
    for (int i = 1; i <= 15; ++i) {
        params += (i > 1 ? ", Q" : "Q") + std::to_string(i);
        header += (i > 1 ? ",Q" : "Q") + std::to_string(i);
    }
    EXPECT_EQ(test::statementCode("M1 MACRO " + params + "\nENDM"),
              (Lines{"M1\tMacro " + header, kKindNames, "\tEndm"}));
}

TEST(MacroDeclaration, LocalNamesAndTypePairs) {
    EXPECT_EQ(test::statementCode("M1 MACRO P1\n#LOCAL Loop1, Done\nBYTE_WORD P1, PP2 ' copy\n"
                                  "RETURN_WREG\nENDM"),
              (Lines{"M1\tMacro P1" + unusedFrom(2), kKindNames, "\tLocal Loop1, Done",
                     "\tbyte_word P1, PP2 ", "\treturn_wreg ", "\tEndm"}));
}

TEST(MacroDeclaration, EveryTypePairWordInLowerCase) {
    const char* words[] = {"NUM_WREG",    "NUM_BYTE",    "NUM_WORD",  "NUM_BIT",   "BYTE_WREG",
                           "BYTE_BYTE",   "BYTE_WORD",   "BYTE_BIT",  "WORD_WREG", "WORD_BYTE",
                           "WORD_WORD",   "WORD_BIT",    "BIT_WREG",  "BIT_BYTE",  "BIT_WORD",
                           "BIT_BIT",     "WREG_BYTE",   "WREG_WORD", "WREG_BIT",  "RETURN_WREG",
                           "RETURN_BYTE", "RETURN_WORD", "RETURN_BIT"};
    for (const char* w : words) {
        std::string lower = w;
        for (char& ch : lower)
            ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
        Lines code = test::statementCode("M9 MACRO\n" + std::string(w) + " x1,Y2\nENDM");
        ASSERT_EQ(code.size(), 4u) << w;
        EXPECT_EQ(code[2], "\t" + lower + " x1,Y2") << w;
        EXPECT_EQ(test::statementMessages(std::string(w) + " x1,Y2"),
                  Lines{test::frame(test::statementLine(), std::string(w) + " X1,Y2",
                                    std::string(w) + " outside a macro")})
            << w;
    }
}

struct CallCase {
    const char* name;
    const char* statements;
    Lines expected;
};

void PrintTo(const CallCase& c, std::ostream* os) {
    *os << c.statements;
}

class MacroCall : public testing::TestWithParam<CallCase> {};

TEST_P(MacroCall, EmitsExactLines) {
    const CallCase& tc = GetParam();
    EXPECT_EQ(callCode(tc.statements), tc.expected) << tc.statements;
    EXPECT_TRUE(test::statementMessages(kMacros + tc.statements).empty()) << tc.statements;
}

const std::string kOn = "MACRO_PARAMS ON\n";

INSTANTIATE_TEST_SUITE_P(
    Statements, MacroCall,
    testing::Values(
        CallCase{"SwitchOff", "ADD2 A, 30", {"\tADD2 _A,30" + padding(2)}},
        CallCase{"SwitchOffAgain",
                 "MACRO_PARAMS ON\nMACRO_PARAMS OFF\nADD2 A, 30",
                 {"\tADD2 _A,30" + padding(2)}},
        CallCase{"ByteAndSmallConstant",
                 "MACRO_PARAMS ON\nADD2 A, 30",
                 {"Variable PRM_1=0,PRM_2=8", "Variable PRM_C=2", "\tADD2 _A,30" + padding(2),
                  "Variable PRM_C=2", "Variable PRM_1=0,PRM_2=8"}},
        CallCase{"WordAndLargeConstant",
                 "MACRO_PARAMS ON\nADD2 W1, K",
                 {"Variable PRM_1=1,PRM_2=16", "Variable PRM_C=2", "\tADD2 W1,300" + padding(2),
                  "Variable PRM_C=2", "Variable PRM_1=1,PRM_2=16"}},
        CallCase{"BitTakesTwoPositions",
                 "MACRO_PARAMS 1\nADD2 G, B",
                 {"Variable PRM_1=0,PRM_2=2,PRM_3=0", "Variable PRM_C=3",
                  "\tADD2 B@VR1,1,_B" + padding(3), "Variable PRM_C=3",
                  "Variable PRM_1=0,PRM_2=2,PRM_3=0"}},
        CallCase{"TextCharacters",
                 "MACRO_PARAMS ON\nADD2 \"Hi\"",
                 {"Variable PRM_1=8,PRM_2=8", "Variable PRM_C=2", "\tADD2 'H','i'" + padding(2),
                  "Variable PRM_C=2", "Variable PRM_1=8,PRM_2=8"}},
        CallCase{"QuoteAndBackslashAsCodes", "ADD2 \"'\\\"", {"\tADD2 39,92" + padding(2)}},
        CallCase{"OperatorAndLabel",
                 "MACRO_PARAMS ON\nADD2 A, +, HERE",
                 {"Variable PRM_1=0,PRM_2=6,PRM_3=3", "Variable PRM_C=3",
                  "\tADD2 _A,43,HERE" + padding(3), "Variable PRM_C=3",
                  "Variable PRM_1=0,PRM_2=6,PRM_3=3"}},
        CallCase{"BracketedArguments", "ADD2 (A, B)", {"\tADD2 _A,_B" + padding(2)}},
        CallCase{"ArrayName", "ADD2 ARR", {"\tADD2 ARR" + padding(1)}},
        CallCase{"NoArgumentsSwitchOff", "NOARGS", {"\tNOARGS  " + padding(0)}},
        CallCase{"NoArgumentsSwitchOn",
                 "MACRO_PARAMS ON\nNOARGS",
                 {"Variable PRM_C=0", "\tNOARGS  " + padding(0), "Variable PRM_C=0"}},
        CallCase{"FifteenPositions",
                 "ADD2 \"ABCDEFGHIJKLM\", F",
                 {"\tADD2 'A','B','C','D','E','F','G','H','I','J','K','L','M',B@VR1,0"}}),
    [](const testing::TestParamInfo<CallCase>& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Values, MacroCall,
    testing::Values(
        CallCase{"IntoByte",
                 "MACRO_PARAMS ON\nX = ADD2 A, B",
                 {"Variable PRM_1=0,PRM_2=0", "Variable RETURN_TYPE=0,RETURN_VAR=_X,PRM_C=2",
                  "\tADD2 _A,_B" + padding(2), "Variable RETURN_TYPE=0,RETURN_VAR=_X,PRM_C=2",
                  "Variable PRM_1=0,PRM_2=0"}},
        CallCase{"IntoWord",
                 "MACRO_PARAMS ON\nW2 = ADD2 W1, 5",
                 {"Variable PRM_1=1,PRM_2=8", "Variable RETURN_TYPE=1,RETURN_VAR=W2,PRM_C=2",
                  "\tADD2 W1,5" + padding(2), "Variable RETURN_TYPE=1,RETURN_VAR=W2,PRM_C=2",
                  "Variable PRM_1=1,PRM_2=8"}},
        CallCase{"IntoBit",
                 "MACRO_PARAMS ON\nG = ADD2 F",
                 {"Variable PRM_1=0,PRM_2=2",
                  "Variable RETURN_TYPE=2,RETURN_VAR=B@VR1,RETURN_BITNUM=1,PRM_C=2",
                  "\tADD2 B@VR1,0" + padding(2),
                  "Variable RETURN_TYPE=2,RETURN_VAR=B@VR1,RETURN_BITNUM=1,PRM_C=2",
                  "Variable PRM_1=0,PRM_2=2"}},
        CallCase{"WithoutArguments",
                 "MACRO_PARAMS ON\nLET X = NOARGS",
                 {"Variable RETURN_TYPE=0,RETURN_VAR=_X,PRM_C=0", "\tNOARGS  " + padding(0),
                  "Variable RETURN_TYPE=0,RETURN_VAR=_X,PRM_C=0"}},
        CallCase{"SwitchOffOnlyTheCall", "X = ADD2 A, 1", {"\tADD2 _A,1" + padding(2)}}),
    [](const testing::TestParamInfo<CallCase>& info) { return std::string(info.param.name); });

TEST(MacroCondition, LeftOperandReturnsIntoPP7) {
    Lines code = callCode(kOn + "IF ADD2 A, 1 = 5 THEN\nENDIF");
    ASSERT_GE(code.size(), 5u);
    EXPECT_EQ(Lines(code.begin(), code.begin() + 5),
              (Lines{"Variable PRM_1=0,PRM_2=8", "Variable RETURN_TYPE=1,RETURN_VAR=PP7,PRM_C=2",
                     "\tADD2 _A,1" + padding(2), "Variable RETURN_TYPE=1,RETURN_VAR=PP7,PRM_C=2",
                     "Variable PRM_1=0,PRM_2=8"}));
}

TEST(MacroCondition, RightOperandReturnsIntoPP1) {
    Lines code = callCode(kOn + "IF A <> NOARGS THEN\nENDIF");
    ASSERT_GE(code.size(), 3u);
    EXPECT_EQ(Lines(code.begin(), code.begin() + 3),
              (Lines{"Variable RETURN_TYPE=1,RETURN_VAR=PP1,PRM_C=0", "\tNOARGS  " + padding(0),
                     "Variable RETURN_TYPE=1,RETURN_VAR=PP1,PRM_C=0"}));
}

struct ErrorCase {
    const char* name;
    std::string statements; // the failing one last
    const char* message;
};

void PrintTo(const ErrorCase& c, std::ostream* os) {
    *os << c.statements;
}

class MacroErrors : public testing::TestWithParam<ErrorCase> {};

// The message names the last line of the statements.
TEST_P(MacroErrors, ReportsExactMessage) {
    const ErrorCase& tc = GetParam();
    std::string all = kMacros + tc.statements;
    size_t lastBreak = all.rfind('\n');
    int line = test::statementLine();
    for (char ch : all)
        line += ch == '\n' ? 1 : 0;
    std::string upper = all.substr(lastBreak + 1);
    for (char& ch : upper)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    std::vector<std::string> messages = test::statementMessages(all);
    ASSERT_FALSE(messages.empty()) << all;
    EXPECT_EQ(messages[0], test::frame(line, upper, tc.message));
    EXPECT_EQ(messages.size(), 1u) << messages.back();
}

std::string sixteen(const std::string& head, const std::string& item) {
    std::string s = head;
    for (int i = 1; i <= 16; ++i)
        s += (i > 1 ? ", " : " ") + item + std::to_string(i);
    return s;
}

INSTANTIATE_TEST_SUITE_P(
    All, MacroErrors,
    testing::Values(
        ErrorCase{"SixteenParameters", sixteen("M1 MACRO", "Q"), "Macro parameter limit exceeded"},
        ErrorCase{"ParameterCommaMissing", "M1 MACRO P1 P2", "Comma missing"},
        ErrorCase{"SixteenArguments", "ADD2 \"ABCDEFGHIJKLMNOP\"",
                  "Macro parameter limit exceeded"},
        ErrorCase{"BitPastFifteen", "ADD2 \"ABCDEFGHIJKLMN\", F", "Macro parameter limit exceeded"},
        ErrorCase{"ArgumentCommaMissing", "ADD2 A B", "Comma missing"},
        ErrorCase{"OpenText", "ADD2 \"AB", "End Quote Expected"},
        ErrorCase{"UnknownMacro", "NOSUCH 1, 2", "Macro 'NOSUCH' not found"},
        ErrorCase{"UnknownArgument", "ADD2 Q", " Variable ' _Q ' not defined"},
        ErrorCase{"ResultIntoWreg", "WREG = ADD2 A", "A macro result cannot be stored in 'WREG'"},
        ErrorCase{"LocalOutsideMacro", "#LOCAL X", "#LOCAL outside a macro"},
        ErrorCase{"ExitmOutsideMacro", "EXITM", "EXITM outside a macro"},
        ErrorCase{"EndmWithoutMacro", "ENDM", "ENDM without MACRO"},
        ErrorCase{"KeywordAsName", "PRINT MACRO P1", "'PRINT' is a reserved KEYWORD"}),
    [](const testing::TestParamInfo<ErrorCase>& info) { return std::string(info.param.name); });

TEST(MacroErrors, FailedDeclarationWritesNoMacroLines) {
    Lines code = test::statementCode(sixteen("M1 MACRO", "Q"));
    EXPECT_TRUE(code.empty()) << code[0];
}

} // namespace
} // namespace zorvel
