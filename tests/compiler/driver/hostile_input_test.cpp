// Sources that once compiled without an error and then failed in the
// assembler, or crashed the compiler: each now gets its message on its line,
// or compiles to a program that assembles.
#include "support/test_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

struct HostileCase {
    const char* name;
    const char* source;
    int line;         // of prog.bas
    const char* text; // the line as the message shows it
    const char* what; // the message
};

void PrintTo(const HostileCase& h, std::ostream* os) {
    *os << h.source;
}

class HostileSource : public testing::TestWithParam<HostileCase> {};

TEST_P(HostileSource, FirstMessage) {
    const HostileCase& h = GetParam();
    CompileResult r = compileSource(h.source);
    ASSERT_FALSE(r.messages.empty()) << h.source;
    EXPECT_EQ(r.messages[0], frame(h.line, h.text, h.what)) << h.source;
    EXPECT_GT(r.errors, 0);
}

INSTANTIATE_TEST_SUITE_P(
    All, HostileSource,
    testing::Values(
        HostileCase{"DeviceAfterBit", "DIM BT AS BIT\nDEVICE 16F877\nDIM BT2 AS BIT\nEND", 2,
                    "DEVICE 16F877", "DEVICE must come before the declarations and statements"},
        HostileCase{"QuoteInName", "DIM A\"B", 1, "DIM A\"B",
                    "'A\"B' is not a valid name. "
                    "Names begin with a letter or '_' and hold letters, digits and '_'"},
        HostileCase{"MacroNeverClosed", "ADDUP MACRO P1\nEND", 1, "ADDUP MACRO P1",
                    "Macro 'ADDUP' has no ENDM"},
        HostileCase{"ExitmAlone", "EXITM", 1, "EXITM", "EXITM outside a macro"},
        HostileCase{"TypePairAlone", "RETURN_WORD", 1, "RETURN_WORD",
                    "RETURN_WORD outside a macro"},
        HostileCase{"TypePairWithWords", "NUM_WREG A B C", 1, "NUM_WREG A B C",
                    "NUM_WREG outside a macro"},
        HostileCase{"LocalAlone", "#LOCAL X", 1, "#LOCAL X", "#LOCAL outside a macro"},
        HostileCase{"DefineNumber", "DEFINE 20", 1, "DEFINE 20",
                    "'20' is not a valid name. "
                    "Names begin with a letter or '_' and hold letters, digits and '_'"},
        HostileCase{"DefineTwice", "DEFINE X 1\nDEFINE X 2", 2, "DEFINE X 2",
                    "'X' is already defined"},
        HostileCase{"DefineAssemblerWord", "DEFINE B 2", 1, "DEFINE B 2",
                    "'B' is an assembler word and cannot be used as a name"},
        HostileCase{"DefineDeclaredName", "DIM COUNT AS BYTE\nDEFINE COUNT 2", 2, "DEFINE COUNT 2",
                    "'COUNT' is already declared"},
        HostileCase{"DeclareOwnKeyTwice", "DECLARE MY_SETTING 1\nDECLARE MY_SETTING 1", 2,
                    "DECLARE MY_SETTING 1", "'MY_SETTING' is already defined"},
        HostileCase{"DeclareKeyWithBracket", "DECLARE BUS_(DELAYMS 0", 1, "DECLARE BUS_(DELAYMS 0",
                    "'BUS_(DELAYMS' is not a valid name. "
                    "Names begin with a letter or '_' and hold letters, digits and '_'"},
        HostileCase{"GotoPastEnd", "GOTO L\nEND\nL:", 1, "GOTO L", "Label 'L' is after END"},
        HostileCase{"HandlerPastEnd", "ON_INTERRUPT ISR\nEND\nISR:", 1, "ON_INTERRUPT ISR",
                    "Label 'ISR' is after END"},
        HostileCase{"LabelTwice", "L1:\nL1:", 2, "L1:", "Label 'L1' is already defined"},
        HostileCase{"VariableIsLabel", "DIM CNT AS BYTE\nCNT:", 1, "DIM CNT AS BYTE",
                    "'CNT' is already a label"},
        HostileCase{"MnemonicTwoNames", "DIM A AS BYTE\nMOVLW A B", 2, "MOVLW A B",
                    "Unexpected text after the statement"},
        HostileCase{"DelayTwoNumbers", "PAUSE 10 20", 1, "PAUSE 10 20",
                    "Unexpected text after the statement"},
        HostileCase{"GotoTwoLabels", "GOTO Q Z\nQ:", 1, "GOTO Q Z",
                    "Unexpected text after the statement"},
        HostileCase{"TgotoOneOperand", "TGOTO 1", 1, "TGOTO 1", "TGOTO takes 4 operands"},
        HostileCase{"BrsetFourOperands", "L1:\nBRSET PORTB, 1, L1, 5", 2, "BRSET PORTB, 1, L1, 5",
                    "BRSET takes 3 operands"},
        HostileCase{"MacroLabelNotLocal", "M1 MACRO\nLQ:\nENDM", 2,
                    "LQ:", "Label 'LQ' in macro 'M1' must be declared with #LOCAL"},
        HostileCase{"JumpIntoMacro", "M1 MACRO\n#LOCAL LQ\nLQ:\nENDM\nGOTO LQ", 5, "GOTO LQ",
                    "Label 'LQ' is local to macro 'M1'"},
        HostileCase{"MacroInsideMacro", "M1 MACRO\nM2 MACRO\nENDM", 2, "M2 MACRO",
                    "Macro 'M2' declared inside macro 'M1'. ENDM missing"},
        HostileCase{"EndmAlone", "ENDM", 1, "ENDM", "ENDM without MACRO"},
        HostileCase{
            "CrystalWithoutDelays", "DECLARE XTAL 3\nDELAYMS 10", 2, "DELAYMS 10",
            "Delays are timed for crystals of 4, 8, 10, 12, 16 and 20 MHz only (XTAL is 3)"},
        HostileCase{"CrystalZero", "DECLARE XTAL 0\nDELAYMS 10", 1, "DECLARE XTAL 0",
                    "XTAL is a whole number of MHz from 1 to 20"},
        HostileCase{"CrystalTooHigh", "DECLARE XTAL 21", 1, "DECLARE XTAL 21",
                    "XTAL is a whole number of MHz from 1 to 20"},
        HostileCase{"CrystalFraction", "DECLARE XTAL 1.5", 1, "DECLARE XTAL 1.5",
                    "XTAL is a whole number of MHz from 1 to 20"},
        HostileCase{"CrystalText", "DECLARE XTAL TEXT", 1, "DECLARE XTAL TEXT",
                    " Variable ' TEXT ' not defined"},
        HostileCase{"MnemonicWithStatement", "LGOTO DECLARE BOOTLOADER OFF", 1,
                    "LGOTO DECLARE BOOTLOADER OFF",
                    "Each operand must be one name, number or expression"}),
    [](const testing::TestParamInfo<HostileCase>& info) { return std::string(info.param.name); });

// Two DEVICE lines naming a device without a file stop the run once, before
// anything reaches the assembler.
TEST(HostileDevice, UnknownDeviceTwiceStopsTheRun) {
    CompileResult r = compileSource("DEVICE FOO\nDEVICE FOO\nEND");
    EXPECT_GT(r.errors, 0);
    ASSERT_EQ(r.alerts.size(), 1u);
    EXPECT_EQ(r.alerts[0], "Unrecognised PIC type.");
}

// What these compile to must assemble: END inside a block stops only the
// program, the code after it is still compiled, and the jump over it lands.
TEST(HostileAssembles, EndInsideBlocksAndMacros) {
    const char* sources[] = {
        "DIM A AS BYTE\nIF A = 1 THEN END\nA = 2\nEND",
        "DIM A AS BYTE\nIF A = 1 THEN\nEND\nENDIF\nA = 2\nEND",
        "DIM A AS BYTE\nFOR A = 1 TO 3\nIF A = 2 THEN END\nNEXT\nEND",
        "STOPIT MACRO\nEND\nENDM\nSTOPIT\nEND",
    };
    for (const char* source : sources) {
        TempDir dir;
        CompileResult r = compileFile(dir.write("prog.bas", source), dataFolder(), true);
        EXPECT_EQ(r.errors, 0) << source << "\n" << (r.messages.empty() ? "" : r.messages[0]);
    }
}

// Each source compiles without an error and assembles.
void expectEachAssembles(std::initializer_list<const char*> sources) {
    for (const char* source : sources) {
        TempDir dir;
        CompileResult r = compileFile(dir.write("prog.bas", source), dataFolder(), true);
        EXPECT_EQ(r.errors, 0) << source << "\n" << (r.messages.empty() ? "" : r.messages[0]);
    }
}

// Declarations made while a macro body is compiled (DIM, and the temporaries
// of expressions) stand in front of the macro, so they exist whether the macro
// is used never, once or twice; quote and backslash characters reach a macro.
TEST(HostileAssembles, DeclarationsInsideMacrosAndQuoteArguments) {
    expectEachAssembles({
        "M1 MACRO\nDIM XX\nDIM FB AS BIT\nDIM BF[3]\nENDM\nXX = 1\nFB = 1\nBF[1] = 2\nEND",
        "M1 MACRO\nDIM XX\nDIM FB AS BIT\nENDM\nM1\nM1\nXX = 1\nFB = 1\nEND",
        "DIM A\nM1 MACRO\nA = A + WREG\nENDM\nA = A & WREG\nEND",
        "DIM A\nDIM W AS WORD\nM1 MACRO\nIF A */ (7 >> W) + 200 <= 3 THEN A = 1\nENDM\n"
        "A = A - (43421 ** 26714 + W)\nEND",
        "M1 MACRO P1\nENDM\nM1 \"'\"\nM1 \"A\\\\\"\nEND",
        // BASIC names in operands the assembler reads as written.
        "DIM Y\nDIM W AS WORD\nL1:\nBRSET Y, 1, L1\nTGOTO 1, W.HIGHBYTE, $5, L1\nEND",
        "DIM Y\nM1 MACRO P1\nBYTE_BYTE P1, Y\nENDM\nM1 Y\nEND",
        "DIM A\nM1 MACRO\n#LOCAL LQ\nLQ:\nA = A + 1\nIF A < 9 THEN GOTO LQ\nENDM\nM1\nM1\nEND",
    });
}

// The labels that IF, the loops, the comparisons, STR and STOP make inside a
// macro body are local to each use of the macro.
TEST(HostileAssembles, BlocksInsideMacroUsedTwice) {
    expectEachAssembles({
        "DIM A\nM1 MACRO\nIF A > 3 THEN A = 0\nENDM\nM1\nM1\nEND",
        "M1 MACRO\nSTOP\nENDM\nM1\nM1\nEND",
        "DIM A\nDIM W AS WORD\nDIM BF[3]\nDIM F AS BIT\nM1 MACRO\n"
        "FOR W = 1 TO 900 STEP -300 : A = 1 : NEXT\nWHILE A > 3 : A = 0 : WEND\n"
        "REPEAT : INC A : UNTIL W >= A\nIF F < A THEN\nA = 2\nELSE\nA = 3\nENDIF\n"
        "STR BF = STR BF\nENDM\nM1\nM1\nM1\nEND",
    });
}

// A statement line past the line buffer is refused rather than compiled cut
// short; a comment may run on.
TEST(HostileSize, LongStatementLineIsRefused) {
    std::string sum = "A = 1";
    for (int i = 0; i < 80; ++i)
        sum += " + 1";
    CompileResult r =
        compileSource("DIM A AS WORD\n" + sum + "\nA = 2 ' " + std::string(300, 'x') + "\nEND");
    ASSERT_EQ(r.messages.size(), 1u);
    EXPECT_EQ(r.messages[0],
              frame(2, sum.substr(0, 249), "Line too long: statements end within 249 characters"));
}

// A program larger than the device's program memory is no clean build, and
// leaves no HEX file to program.
TEST(HostileSize, ProgramLargerThanTheDevice) {
    // 1100 words of inline code: the assembler takes minutes over the same
    // size of compiled statements, whose macros it expands one by one.
    std::string source = "DEVICE 16F84\nDIM A AS WORD\nA = A * 3 + 7\nASM\n";
    for (int i = 0; i < 1100; ++i)
        source += "\tnop\n";
    source += "ENDASM\n";
    TempDir dir;
    CompileResult r = compileFile(dir.write("prog.bas", source + "END\n"), dataFolder(), true);
    EXPECT_EQ(r.messages, (Lines{"\tProgram too large: the 16F84 has 1024 words of program memory!",
                                 "ASSEMBLER ERROR! HEX file NOT created"}));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "prog.hex"));
}

// Folders in an INCLUDE name are found whatever their case on disk.
TEST(HostileInclude, FolderPartMatchedByCase) {
    TempDir dir;
    std::filesystem::create_directories(dir.path() / "sub");
    dir.write("sub/lower.inc", "DIM FROMSUB AS BYTE\n");
    CompileResult r = compileFile(
        dir.write("prog.bas", "INCLUDE \"sub/lower.inc\"\nFROMSUB = 1\nEND\n"), dataFolder());
    EXPECT_EQ(r.errors, 0) << (r.messages.empty() ? "" : r.messages[0]);
}

// A source name the assembler's #include cannot hold is refused before
// anything is written.
TEST(HostileInclude, SourceNameWithQuoteIsRefused) {
    TempDir dir;
    std::filesystem::path source = dir.write("q\"x.bas", "DIM A AS BYTE\nEND\n");
    CompileResult r = compileFile(source, dataFolder());
    ASSERT_EQ(r.messages.size(), 1u);
    EXPECT_EQ(r.messages[0], "\tThe source file name q\"x.bas cannot be used: the assembler "
                             "cannot include a file whose name has a double quote or a control "
                             "character. Rename the file!");
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "q\"x.asm"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "q\"x.zvl"));
}

} // namespace
} // namespace zorvel::test
