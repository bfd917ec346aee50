// Output tests for the statements the dispatcher compiles itself: each case
// is a source and the exact lines it emits (after the banner and #include).
#include "compiler/driver/compile_run.h"
#include "support/test_support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

struct OutputCase {
    const char* name;
    std::string source;
    Lines expected;
    friend void PrintTo(const OutputCase& c, std::ostream* os) { *os << c.name; }
};

class StatementOutput : public ::testing::TestWithParam<OutputCase> {};

TEST_P(StatementOutput, EmitsExactLines) {
    const OutputCase& tc = GetParam();
    CompileResult r = compileSource(tc.source);
    ASSERT_EQ(r.errors, 0) << tc.source << "\n" << (r.messages.empty() ? "" : r.messages[0]);
    EXPECT_EQ(statementLines(tc.source), tc.expected) << tc.source;
}

const std::string kLong(300, 'X');

INSTANTIATE_TEST_SUITE_P(
    Dispatcher, StatementOutput,
    ::testing::Values(
        OutputCase{"LabelAlone", "LOOP1:", {"LOOP1\tR@B"}},
        OutputCase{"LabelThenComment", "START: ' text", {"START\tR@B"}},
        OutputCase{"DataLabelDash", "TABLE:- ", {"TABLE"}},
        OutputCase{"CommentsSilentWithoutRemarks", "' hello\nREM there\n; semi", {}},
        OutputCase{"CommentsEchoWithRemarks",
                   "REMARKS ON\n' Hello World\nREM Text Kept\n; Semi",
                   {";' Hello World", "; Text Kept", ";; Semi"}},
        OutputCase{"RemarksOffAgain", "REMARKS ON\nREMARKS 0\n' gone", {}},
        OutputCase{"RemarksOtherWordKeepsState", "REMARKS ON\nREMARKS MAYBE\n' kept", {";' kept"}},
        OutputCase{"LongLineCutTo249", "REMARKS ON\n'" + kLong, {";'" + std::string(248, 'X')}},
        OutputCase{"Define", "DEFINE LED_PIN 3", {"\t#DEFINE LED_PIN 3"}},
        OutputCase{"DefineKeepsCase", "  define Led 3", {"\t#define Led 3"}},
        OutputCase{"OneLineAsm", "@ movlw 5 ; Five", {"  movlw 5 ; Five"}},
        OutputCase{"OneLineAsmAfterStatement", "REMARKS ON : @ nop", {"", "REMARKS ON :   nop"}},
        OutputCase{"AsmBlock",
                   "ASM\n   movlw 1\n\n\tMovwf PORTB ; Keep\nENDASM\nDEFINE X 1",
                   {"\tR@B", "; Start of Inline Code", "movlw 1", "Movwf PORTB ; Keep",
                    "; End of Inline Code", "\t#DEFINE X 1"}},
        OutputCase{"AsmWithoutEndasmCopiesToTheEnd",
                   "ASM\nnop\nEND\nDEFINE Y 2",
                   {"\tR@B", "; Start of Inline Code", "nop", "END", "DEFINE Y 2"}},
        OutputCase{"DirectiveIf", "#IF XTAL > 4 : REMARKS ON", {"\tif XTAL > 4 ", ""}},
        OutputCase{"DefineCopiesTheWholeLine",
                   "REMARKS ON : DEFINE A 1",
                   {"", "\t#REMARKS ON : DEFINE A 1"}},
        OutputCase{"Directives",
                   "#IFDEF Foo\n#ELSE\n#ENDIF\n#IFNDEF Bar\n#DEFINE Baz 1\n#UNDEFINE Baz\n"
                   "#WHILE i < 3\n#ENDW\n#INCLUDE \"extra.inc\"",
                   {"\tifdef Foo", "\telse", "\tendif", "\tifndef Bar", "\t#define Baz 1",
                    "\tundefine Baz", "\twhile i < 3", "\tendw", "\t#Include \"extra.inc\""}},
        OutputCase{"ErrorDirective",
                   "' 1\n' 2\n' 3\n' 4\n#ERROR \"Bad value\"",
                   {"\tError \"Line[5] Bad value\""}},
        OutputCase{
            "ErrorDirectiveKeepsCase", "#error \"Mixed Case\"", {"\tError \"Line[1] Mixed Case\""}},
        OutputCase{"StopWithWatchdog", "STOP", {"Pb@lab2 R@B", "\tClrwdt", "\tF@G Pb@lab2"}},
        OutputCase{"StopWithoutWatchdog",
                   "CONFIG WDT_OFF\nSTOP\nSTOP",
                   {"Pb@lab2 R@B", "\tF@G Pb@lab2", "Pb@lab3 R@B", "\tF@G Pb@lab3"}},
        OutputCase{"StopEchoesRemarks",
                   "REMARKS ON\nHALT: STOP",
                   {"HALT\tR@B", "; STOP", "Pb@lab2 R@B", "\tClrwdt", "\tF@G Pb@lab2"}},
        OutputCase{"SeparatorEmitsEmptyLine", "REMARKS ON : REMARKS OFF : ' quiet", {"", ""}},
        OutputCase{
            "ElseColonIsNotALabel", "DEFINE Q 1 : DEFINE R 2", {"\t#DEFINE Q 1 : DEFINE R 2"}},
        OutputCase{"OrgConstantExpression", "ORG (10 + 6) */ 128", {"\tOrg 8"}},
        OutputCase{"OrgChain", "ORG 2*3*4", {"\tOrg 24"}},
        OutputCase{
            "DeclareUnknownKeyPassesThrough", "DECLARE MY_OPTION 3", {"\t#Define MY_OPTION 3"}},
        OutputCase{"DeclareSecondTimePassesThrough",
                   "DECLARE XTAL 20\nDECLARE Xtal 4",
                   {"\t#Define Xtal 4"}},
        OutputCase{"ConfigEmitsNothingInMainFile", "CONFIG XT_OSC, WDT_OFF", {}},
        OutputCase{"ContextWithoutHandlerEmitsNothing", "CONTEXT SAVE", {}},
        OutputCase{"ContextWithHandler",
                   "ON_INTERRUPT GOTO ISR\nCONTEXT SAVE\nISR:\nCONTEXT RESTORE",
                   {"\tConsave", "ISR", "\tConres"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(StatementOutput, SeparatorWithHandlerEmitsBankReset) {
    EXPECT_EQ(statementLines("ON_INTERRUPT ISR\nREMARKS ON : REMARKS OFF\nISR:"),
              (Lines{"\tR@B", "ISR"}));
}

TEST(StatementOutput, EndStopsTheCompile) {
    CompileResult r = compileSource("DEFINE A 1\nEND\nDEFINE B 2\nREMARKS\n");
    EXPECT_EQ(r.errors, 0);
    EXPECT_EQ(body(r),
              (Lines{"\t#DEFINE A 1", "Pb@lab2 R@B", "\tClrwdt", "\tF@G Pb@lab2", "\tEND", ""}));
}

TEST(StatementOutput, BannerIncludeAndFinalEnd) {
    CompileResult r = compileSource("", "My Prog.bas");
    EXPECT_EQ(r.errors, 0);
    EXPECT_EQ(r.output, (Lines{";*********************************************",
                               ";*           Code Produced by the            *",
                               ";* ZORVEL Compiler. Version 1.10 *",
                               ";*********************************************", "",
                               "\t#include \"My Prog.zvl\" ", "", "\tEND", ""}));
}

struct ErrorCase {
    const char* name;
    std::string source;
    std::string message; // the first message line
    friend void PrintTo(const ErrorCase& c, std::ostream* os) { *os << c.name; }
};

class StatementErrors : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(StatementErrors, ReportsExactLine) {
    const ErrorCase& tc = GetParam();
    CompileResult r = compileSource(tc.source);
    EXPECT_EQ(r.messages, std::vector<std::string>{tc.message}) << tc.source;
    EXPECT_EQ(r.errors, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Dispatcher, StatementErrors,
    ::testing::Values(
        ErrorCase{"LabelStartingWithDigit",
                  "1ABC:", frame(1, "1ABC:", "Labels must not start with a number")},
        ErrorCase{"MacroNamedLikeKeyword", "PRINT MACRO",
                  frame(1, "PRINT MACRO", "'PRINT' is a reserved KEYWORD")},
        ErrorCase{"RemarksWithoutOperand", "REMARKS", frame(1, "REMARKS", "Syntax Error")},
        ErrorCase{"MacroParamsWithoutOperand", "\n  MACRO_PARAMS  ",
                  frame(2, "MACRO_PARAMS", "Syntax Error")},
        ErrorCase{"DirectiveWithoutText", "#IF", frame(1, "#IF", "Syntax Error")},
        ErrorCase{"ErrorWithoutQuotes", "#ERROR oops", frame(1, "#ERROR OOPS", "Missing quotes")},
        ErrorCase{"NotSupportedYet", "PLOT", frame(1, "PLOT", "'PLOT' is not supported yet")},
        ErrorCase{"PrefixIsNotAKeyword", "PRINTER = 1",
                  frame(1, "PRINTER = 1", " Variable ' PRINTER ' not defined")},
        ErrorCase{"StrayEndif", "ENDIF", frame(1, "ENDIF", "ENDIF without IF")},
        ErrorCase{"StrayNext", "NEXT I", frame(1, "NEXT I", "NEXT without FOR")},
        ErrorCase{"WordTooLong", "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 = 1",
                  frame(1, "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 = 1",
                        "'ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789' is too long. Names and words "
                        "have at most 32 characters")},
        ErrorCase{
            "ControlCharacter", std::string("DEFINE A\x01", 9),
            frame(1, std::string("DEFINE A\x01", 9), "Unexpected control character (code 1)")},
        ErrorCase{"GotoLabelAfterSeparatorNotRecorded", "ON_INTERRUPT L2\nDEFINE A 1 : L2: STOP",
                  frame(1, "ON_INTERRUPT L2", "Label 'L2' not found")}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ErrorLimits, OneErrorCompletesBothPasses) {
    CompileResult r = compileSource("REMARKS\nDEFINE A 1\n");
    EXPECT_EQ(r.errors, 1);
    EXPECT_EQ(r.messages, (Lines{frame(1, "REMARKS", "Syntax Error")}));
}

TEST(ErrorLimits, SecondErrorStopsTheCompile) {
    CompileResult r = compileSource("REMARKS\nDEFINE A 1\nREMARKS\nREMARKS\nREMARKS\n");
    EXPECT_EQ(r.errors, 2);
    EXPECT_EQ(r.messages,
              (Lines{frame(1, "REMARKS", "Syntax Error"), frame(3, "REMARKS", "Syntax Error"),
                     "\tToo many COMPILER ERRORS."}));
}

TEST(ErrorLimits, AnErrorSkipsTheRestOfTheLine) {
    CompileResult r = compileSource("REMARKS : DEFINE NOT_EMITTED 1\nDEFINE EMITTED 2");
    EXPECT_EQ(r.errors, 1);
    Lines out = r.compilation->asmlist;
    EXPECT_EQ(std::count(out.begin(), out.end(), "\t#DEFINE EMITTED 2"), 1);
    for (const std::string& line : out)
        EXPECT_EQ(line.find("NOT_EMITTED"), std::string::npos);
}

TEST(ErrorLimits, NoOutputFileWhenThereAreErrors) {
    TempDir dir;
    std::filesystem::path file = dir.write("bad.bas", "REMARKS\n");
    CompileResult r = compileFile(file, dataFolder());
    EXPECT_EQ(r.errors, 1);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "bad.asm"));
}

TEST(TwoCompilations, RunSideBySideWithoutSharingState) {
    TempDir dir;
    std::filesystem::path a = dir.write("a.bas", "DEVICE 16F877\nREMARKS ON\n' from a\n");
    std::filesystem::path b = dir.write("b.bas", "' from b\nREMARKS\n");
    Compilation ca({a, dataFolder()});
    Compilation cb({b, dataFolder()});
    runCompile(ca);
    runCompile(cb);
    EXPECT_EQ(ca.ctx.errorCount, 0);
    EXPECT_EQ(cb.ctx.errorCount, 1);
    EXPECT_EQ(ca.device.name, "16F877");
    EXPECT_EQ(cb.device.name, "16F84");
    EXPECT_FALSE(cb.stmt.remarksOn);
}

} // namespace
} // namespace zorvel::test
