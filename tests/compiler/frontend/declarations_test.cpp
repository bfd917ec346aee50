// DIM and SYMBOL: the equates and defines each declaration writes, where the
// allocator puts variables, and every declaration error.
#include "compiler/frontend/ram.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

struct DeclCase {
    const char* name;
    std::string source;
    Lines expected;
    friend void PrintTo(const DeclCase& c, std::ostream* os) { *os << c.name; }
};

class DeclarationOutput : public ::testing::TestWithParam<DeclCase> {};

TEST_P(DeclarationOutput, EmitsExactLines) {
    const DeclCase& tc = GetParam();
    CompileResult r = compileSource(tc.source);
    ASSERT_EQ(r.errors, 0) << (r.messages.empty() ? "" : r.messages[0]);
    EXPECT_EQ(statementLines(tc.source), tc.expected);
}

// On the 16F84 user variables start at 39 (12 + 27 system bytes).
INSTANTIATE_TEST_SUITE_P(
    Declarations, DeclarationOutput,
    ::testing::Values(
        DeclCase{"Byte", "DIM COUNT", {"COUNT\t\tEqu 39"}},
        DeclCase{"SingleLetterGetsUnderscore", "DIM X AS BYTE", {"_X\t\tEqu 39"}},
        DeclCase{"Word", "DIM TOTAL AS WORD", {"TOTAL\t\tEqu 39", "TOTALH\t\tEqu 40"}},
        DeclCase{"Bits",
                 "DIM A AS BIT, B AS BIT",
                 {"B@VR1\t\tEqu 39", "\t\t#Define _A B@VR1,0", "\t\t#Define _B B@VR1,1"}},
        DeclCase{"ArrayOfSix",
                 "DIM BUF[6]",
                 {"BUF\t\tEqu 39", "Variable BUF#0=39,BUF#1=40,BUF#2=41,BUF#3=42",
                  "Variable BUF#4=43,BUF#5=44"}},
        DeclCase{"ArrayOfFour",
                 "DIM Q[2 * 2] AS BYTE",
                 {"_Q\t\tEqu 39", "Variable _Q#0=39,_Q#1=40,_Q#2=41,_Q#3=42"}},
        DeclCase{"Constant", "DIM LIMIT AS 100", {"\t\t#Define LIMIT 100"}},
        DeclCase{"ConstantWithHighByte",
                 "SYMBOL BIG = $1234",
                 {"\t\t#Define BIG 4660", "\t\t#Define BIGH 18"}},
        DeclCase{"ConstantFromConstant",
                 "DIM A AS 10\nDIM B AS A * 3",
                 {"\t\t#Define _A 10", "\t\t#Define _B 30"}},
        DeclCase{"ConstantExpression", "DIM K AS (300 / 2)", {"\t\t#Define _K 150"}},
        DeclCase{"VariableAlias",
                 "DIM W AS WORD\nDIM V AS W",
                 {"_W\t\tEqu 39", "_WH\t\tEqu 40", "\t\t#Define _V _W", "\t\t#Define _VH _WH"}},
        DeclCase{"ByteParts",
                 "DIM W AS WORD\nDIM L AS W.LOWBYTE, H AS W.BYTE1",
                 {"_W\t\tEqu 39", "_WH\t\tEqu 40", "\t\t#Define _L _W", "\t\t#Define _H _WH"}},
        DeclCase{"BitOfWordHighByte",
                 "DIM W AS WORD\nDIM F AS W.12",
                 {"_W\t\tEqu 39", "_WH\t\tEqu 40", "\t\t#Define _F _WH,4"}},
        DeclCase{"BitOfRegister", "SYMBOL LED = PORTB.0", {"\t\t#Define LED PORTB,0"}},
        DeclCase{"SymbolAliasOfRegister", "SYMBOL OUT = PORTB", {"\t\t#Define OUT PORTB"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Declarations, NineBitsUseTwoBitBytes) {
    std::string source;
    for (int i = 0; i < 9; ++i)
        source += "DIM F" + std::to_string(i) + " AS BIT\n";
    Lines lines = statementLines(source);
    EXPECT_EQ(lines[0], "B@VR1\t\tEqu 39");
    EXPECT_EQ(lines[8], "\t\t#Define F7 B@VR1,7");
    EXPECT_EQ(lines[9], "B@VR2\t\tEqu 40");
    EXPECT_EQ(lines[10], "\t\t#Define F8 B@VR2,0");
    EXPECT_EQ(lines.size(), 11u);
    CompileResult r = compileSource(source);
    EXPECT_EQ(r.compilation->ctx.variablesUsed, 2);
}

TEST(Declarations, SymbolTableEntries) {
    CompileResult r = compileSource("DIM W AS WORD, B, F AS W.9, BUF[3]\nSYMBOL K = 500");
    ASSERT_EQ(r.errors, 0);
    const SymbolTable& t = r.compilation->symbols;
    EXPECT_EQ(t.find("_W")->kind, kKindWord);
    EXPECT_EQ(t.find("_WH")->address, 40);
    EXPECT_EQ(t.find("_B")->address, 41);
    EXPECT_EQ(t.find("_F")->kind, kKindBit);
    EXPECT_EQ(t.find("_F")->bit, 1);
    EXPECT_EQ(t.find("_F")->target, "_WH");
    EXPECT_EQ(t.find("BUF")->kind, kKindByteArray);
    EXPECT_EQ(t.find("BUF")->bit, 3);
    EXPECT_EQ(t.find("BUF#2")->address, 44);
    EXPECT_EQ(t.find("_K")->address, 500);
    EXPECT_EQ(t.find("_KH")->address, 1);
    EXPECT_EQ(r.compilation->ctx.variablesUsed, 6);
}

TEST(Declarations, WordCrossingBankBoundaryWarns) {
    // 16F877 bank 0 ends at 127: fill up to 126, then a word at 127 crosses.
    std::string source = "DEVICE 16F877\nDIM PAD[68]\nDIM A AS WORD\n";
    CompileResult r = compileSource(source);
    EXPECT_EQ(r.errors, 0);
    EXPECT_EQ(r.messages,
              (Lines{"Warning Line [3]\tIn file [prog.bas]\tDIM A AS WORD\t*** WORD Variable '_A' "
                     "Crossing Bank boundary 0-1! ***"}));
    EXPECT_EQ(r.compilation->symbols.find("_A")->address, 127);
    EXPECT_EQ(r.compilation->symbols.find("_AH")->address, 160);
    EXPECT_TRUE(r.compilation->ctx.warningRaised);
}

TEST(Declarations, GapSkipLeavesRoomForInterruptSaveBytes) {
    std::string source = "DEVICE 16F877\nON_INTERRUPT ISR\nDIM PAD[64]\nDIM NEXT1\nISR:\n";
    CompileResult r = compileSource(source);
    ASSERT_EQ(r.errors, 0) << r.messages[0];
    // 32..35 save bytes, 36..62 system, 63..126 PAD, 127 ... then bank 1 after WSAVE1.
    EXPECT_EQ(r.compilation->symbols.find("PAD#63")->address, 126);
    EXPECT_EQ(r.compilation->symbols.find("NEXT1")->address, 127);
    CompileResult r2 =
        compileSource("DEVICE 16F877\nON_INTERRUPT ISR\nDIM PAD[65]\nDIM NEXT1\nISR:\n");
    EXPECT_EQ(r2.compilation->symbols.find("NEXT1")->address, 161);
}

TEST(Declarations, NoVariableOnAnInterruptSaveByte) {
    // 368 bytes: 4 save bytes in bank 0, 3 more in banks 1-3, 27 system bytes.
    int free = 368 - 4 - 3 - 27;
    std::string fill = "DEVICE 16F877\nON_INTERRUPT ISR\n";
    for (int i = 0; i < free; ++i)
        fill += "DIM V" + std::to_string(i) + "\n";
    CompileResult r = compileSource(fill + "ISR:\n");
    ASSERT_EQ(r.errors, 0) << r.messages[0];
    for (const SymbolEntry& e : r.compilation->symbols.entries()) {
        if (e.name.rfind("V", 0) != 0) continue;
        EXPECT_NE(e.address, 160) << e.name;
        EXPECT_NE(e.address, 288) << e.name;
        EXPECT_NE(e.address, 416) << e.name;
    }
    EXPECT_EQ(r.compilation->symbols.find("WSAVE2")->address, 288);
    CompileResult over = compileSource(fill + "DIM ONE_MORE\nISR:\n");
    EXPECT_EQ(over.messages, (Lines{"\t\t*** Too Many Variables ***"}));
}

TEST(Declarations, HighArrayCrossingBank3Warns) {
    // Bank 0: 32..127 (96 - 27 = 69 free), bank 1: 160..239 (80), bank 2: 272..367 (96).
    std::string source = "DEVICE 16F877\nDIM A[69]\nDIM B[80]\nDIM C[90]\nDIM DD[10]\n";
    CompileResult r = compileSource(source);
    EXPECT_EQ(r.errors, 0);
    ASSERT_EQ(r.messages.size(), 1u);
    EXPECT_EQ(r.messages[0],
              "Warning Line [5]\tIn file [prog.bas]\tDIM DD[10]\t*** Array ' DD ' is "
              "declared at address 362. Which is over the 255 RAM address boundary "
              "and crosses BANK3 boundary! ***");
    EXPECT_EQ(r.compilation->symbols.find("DD#5")->address, 367);
    EXPECT_EQ(r.compilation->symbols.find("DD#6")->address, 400);
}

TEST(Declarations, TooManyVariablesAtTheLimit) {
    // The 16F84 has 68 bytes; 27 go to the system variables, 41 are left.
    CompileResult full = compileSource("DIM A[41]\n");
    EXPECT_EQ(full.errors, 0);
    CompileResult over = compileSource("DIM A[41]\nDIM B\n");
    EXPECT_EQ(over.messages, (Lines{"\t\t*** Too Many Variables ***"}));
    CompileResult array = compileSource("DIM A[42]\n");
    EXPECT_EQ(array.messages, (Lines{"\t\t*** Too Many Variables ***"}));
    CompileResult word = compileSource("DIM A[40]\nDIM W AS WORD\n");
    EXPECT_EQ(word.messages, (Lines{"\t\t*** Too Many Variables ***"}));
    // Constants and aliases take no RAM and are still accepted.
    CompileResult alias = compileSource("DIM A[41]\nSYMBOL LED = PORTB.1\nDIM K AS 5\n");
    EXPECT_EQ(alias.errors, 0);
}

TEST(Declarations, TemporariesAreNumberedFromSeven) {
    CompileResult r = compileSource("");
    Compilation& c = *r.compilation;
    c.ctx.pass = 2;
    c.asmlist.clear();
    int before = c.device.allocAddress;
    EXPECT_EQ(requestTemporary(c, kKindByte), "N@VAR7");
    EXPECT_EQ(requestTemporary(c, kKindWord), "N@VAR8");
    releaseTemporary(c);
    EXPECT_EQ(requestTemporary(c, kKindWord), "N@VAR8"); // already declared: no new lines
    EXPECT_EQ(c.asmlist,
              (Lines{"N@VAR7 = " + std::to_string(before), "N@VAR8 = " + std::to_string(before + 1),
                     "N@VAR8H = " + std::to_string(before + 2)}));
}

struct DeclError {
    std::string source;
    std::string message;
    friend void PrintTo(const DeclError& c, std::ostream* os) { *os << c.source; }
};

class DeclarationErrors : public ::testing::TestWithParam<DeclError> {};

TEST_P(DeclarationErrors, ReportsExactLine) {
    CompileResult r = compileSource(GetParam().source);
    ASSERT_FALSE(r.messages.empty()) << GetParam().source;
    EXPECT_EQ(r.messages.back(), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Declarations, DeclarationErrors,
    ::testing::Values(
        DeclError{"DIM A\nDIM A", frame(2, "DIM A", "Duplicate Variable Error")},
        DeclError{"DIM RANDOM", frame(1, "DIM RANDOM", "Duplicate Variable Error")},
        DeclError{"DIM PRINT", frame(1, "DIM PRINT", "'PRINT' is a reserved KEYWORD")},
        DeclError{"SYMBOL RANDOM = 1",
                  frame(1, "SYMBOL RANDOM = 1", "'RANDOM' is a reserved KEYWORD")},
        DeclError{"SYMBOL A = 1\nSYMBOL A = 2",
                  frame(2, "SYMBOL A = 2", "Duplicate Declaration Error")},
        DeclError{"L1: DIM A", frame(1, "L1: DIM A", "Label not allowed with DIM statement")},
        DeclError{"L1: SYMBOL A = 1",
                  frame(1, "L1: SYMBOL A = 1", "Label not allowed with SYMBOL statement")},
        DeclError{
            "DIM B[0]",
            frame(1, "DIM B[0]", "Too few elements in ARRAY '_B' Declaration. Minimum value is 1")},
        DeclError{"DIM B[257]",
                  frame(1, "DIM B[257]",
                        "Too many elements in ARRAY '_B' Declaration. Maximum value is 256")},
        DeclError{"DIM B[4", frame(1, "DIM B[4", "Syntax Error")},
        DeclError{"DIM B[]", frame(1, "DIM B[]", "Syntax Error")},
        DeclError{"DIM B[4] AS WORD",
                  frame(1, "DIM B[4] AS WORD",
                        "WORD ARRAYS not implemented in this version of the compiler")},
        DeclError{"DIM B AS STRING",
                  frame(1, "DIM B AS STRING", "Variable type declaration missing or incorrect")},
        DeclError{"SYMBOL B = NOWHERE",
                  frame(1, "SYMBOL B = NOWHERE", "Symbol type declaration missing or incorrect")},
        DeclError{"SYMBOL B 5",
                  frame(1, "SYMBOL B 5", "Symbol type declaration missing or incorrect")},
        DeclError{
            "DIM Y\nDIM X AS Y.HIGHBYTE",
            frame(2, "DIM X AS Y.HIGHBYTE", "Cannot extract a HIGHBYTE from a BYTE type Variable")},
        DeclError{
            "DIM Y AS BIT\nDIM X AS Y.LOWBYTE",
            frame(2, "DIM X AS Y.LOWBYTE", "Cannot extract a LOWBYTE from a BIT type Variable")},
        DeclError{
            "DIM Y AS BIT\nDIM X AS Y.HIGHBYTE",
            frame(2, "DIM X AS Y.HIGHBYTE", "Cannot extract a HIGHBYTE from a BIT type Variable")},
        DeclError{"DIM Y AS 5\nDIM X AS Y.LOWBYTE",
                  frame(2, "DIM X AS Y.LOWBYTE", "Cannot extract a LOWBYTE from a Number")},
        DeclError{"DIM Y AS 5\nDIM X AS Y.HIGHBYTE",
                  frame(2, "DIM X AS Y.HIGHBYTE", "Cannot extract a HIGHBYTE from a Number")},
        DeclError{"DIM W AS WORD\nDIM X AS W.16",
                  frame(2, "DIM X AS W.16", "Bit out of range. Only 0 to 15 allowed")},
        DeclError{"DIM Y AS 5\nDIM X AS Y.1",
                  frame(2, "DIM X AS Y.1", "Cannot assign a bit to a constant declaration")},
        DeclError{"DIM Y AS BIT\nDIM X AS Y.1",
                  frame(2, "DIM X AS Y.1", "Cannot assign a bit, to a bit declaration")},
        DeclError{"DIM B\nDIM X AS B.9", frame(2, "DIM X AS B.9", "Variable '_B' Only has 8-bits")},
        DeclError{"DIM LIST",
                  frame(1, "DIM LIST", "'LIST' is an assembler word and cannot be used as a name")},
        DeclError{
            "DIM RP0",
            frame(1, "DIM RP0",
                  "'RP0' is a name of the device's register file and cannot be used as a name")},
        DeclError{"DIM", frame(1, "DIM", "Variable Expected")}),
    [](const auto& info) { return "Case" + std::to_string(info.index); });

} // namespace
} // namespace zorvel::test
