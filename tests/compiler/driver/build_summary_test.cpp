// A build through the assembler: the summary lines, the bootloader warning
// at the exact size, and the words-used figure.
#include "support/test_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

// A 16F877 program padded with `nops` one-word instructions.
std::string paddedProgram(int nops, bool bootloader = true) {
    std::string s = "DEVICE 16F877\n";
    if (!bootloader) s += "DECLARE BOOTLOADER OFF\n";
    s += "ASM\n";
    for (int i = 0; i < nops; ++i)
        s += "  nop\n";
    return s + "ENDASM\n";
}

CompileResult build(const std::string& source) {
    TempDir dir;
    return compileFile(dir.write("prog.bas", source), dataFolder(), true);
}

TEST(BuildSummary, CleanBuildLines) {
    CompileResult r = build("DIM A, B AS WORD\n");
    ASSERT_EQ(r.errors, 0) << r.messages[0];
    ASSERT_EQ(r.messages.size(), 2u);
    EXPECT_EQ(r.messages[0], "\tZORVEL COMPILED OK.  " +
                                 std::to_string(r.compilation->ctx.wordsUsed) + " Words used");
    EXPECT_EQ(r.messages[1], "\t29 Variables used in the DEFAULT 16F84 from a possible 68");
    EXPECT_GT(r.compilation->ctx.wordsUsed, 0);
}

TEST(BuildSummary, NamedDeviceWordingAndWarnings) {
    CompileResult r = build("DEVICE 16F877\nDIM PAD[68]\nDIM A AS WORD\n");
    ASSERT_EQ(r.errors, 0);
    ASSERT_EQ(r.messages.size(), 4u);
    EXPECT_EQ(r.messages[2], "\t96 Variables used in the 16F877 from a possible 368");
    EXPECT_EQ(r.messages[3], "\tThere are Warnings!");
}

TEST(BuildSummary, BootloaderWarningFromTheExactSize) {
    CompileResult base = build(paddedProgram(0));
    ASSERT_EQ(base.errors, 0);
    int pad = 7936 - base.compilation->ctx.wordsUsed;
    ASSERT_GT(pad, 0);

    CompileResult fits = build(paddedProgram(pad));
    ASSERT_EQ(fits.errors, 0) << fits.messages[0];
    EXPECT_EQ(fits.compilation->ctx.wordsUsed, 7936);
    EXPECT_EQ(fits.messages, (Lines{"\tZORVEL COMPILED OK.  7936 Words used",
                                    "\t26 Variables used in the 16F877 from a possible 368"}));

    CompileResult over = build(paddedProgram(pad + 1));
    ASSERT_EQ(over.errors, 0);
    EXPECT_EQ(
        over.messages,
        (Lines{"\tZORVEL COMPILED OK.  7937 Words used",
               "\tWarning! Code will overwrite bootloader routine at top of program area.",
               "\t26 Variables used in the 16F877 from a possible 368", "\tThere are Warnings!"}));

    // Without the bootloader the reset vector is three words shorter, and
    // no size gives the warning.
    CompileResult off = build(paddedProgram(pad + 1 + 3, false));
    ASSERT_EQ(off.errors, 0);
    EXPECT_EQ(off.compilation->ctx.wordsUsed, 7937);
    EXPECT_EQ(off.messages, (Lines{"\tZORVEL COMPILED OK.  7937 Words used",
                                   "\t26 Variables used in the 16F877 from a possible 368"}));
}

TEST(BuildSummary, ProgramImageAndConfigurationWord) {
    CompileResult r = build("DEVICE 16F877\nCONFIG HS_OSC, WDT_OFF, LVP_OFF\n");
    ASSERT_EQ(r.errors, 0) << r.messages[0];
    const HexImage& hex = r.compilation->hex;
    // HS = 10, watchdog off clears bit 2, LVP off clears bit 7.
    EXPECT_EQ(hex.configWord & 0x87, 0x02);
    EXPECT_EQ(hex.program[0x2007], hex.configWord);
    EXPECT_NE(hex.program[0], 0x3FFF); // the reset vector holds code
    EXPECT_FALSE(hex.records.empty());
}

TEST(BuildSummary, AssemblerErrorsAreReportedAtMostFive) {
    std::string source = "ASM\n";
    for (int i = 0; i < 7; ++i)
        source += "  movlw NOT_DEFINED_" + std::to_string(i) + "\n";
    source += "ENDASM\n";
    CompileResult r = build(source);
    ASSERT_EQ(r.messages.size(), 7u);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(r.messages[i].rfind("Error[", 0), 0u) << r.messages[i];
    EXPECT_EQ(r.messages[5], "Too many ASSEMBLER ERRORS");
    EXPECT_EQ(r.messages[6], "ASSEMBLER ERROR! HEX file NOT created");
    EXPECT_EQ(r.errors, 1);
}

} // namespace
} // namespace zorvel::test
