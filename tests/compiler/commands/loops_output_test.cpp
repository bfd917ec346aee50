// FOR/NEXT with every step form, WHILE/WEND, REPEAT/UNTIL, and the jumps.
#include "compiler/commands/commands.h"
#include "compiler/commands/commands_support.h"

#include <algorithm>

namespace zorvel::test {
namespace {

const std::string k877 = "DEVICE 16F877\n" + kDeclarations;

// The lines between the body's marker "@ nop" and the end of the loop.
Lines stepCode(const std::string& head, const std::string& forLine) {
    Lines out = emittedAfter(head, forLine + "\n@ nop\nNEXT\n");
    auto marker = std::find(out.begin(), out.end(), "  nop");
    EXPECT_NE(marker, out.end()) << forLine;
    return marker == out.end() ? out : Lines(marker + 1, out.end());
}

struct StepCase {
    const char* name;
    bool bigDevice; // 16F877: more than one code page
    std::string forLine;
    Lines expected; // the step code and the exit label
    friend void PrintTo(const StepCase& c, std::ostream* os) { *os << c.name; }
};

class ForStep : public ::testing::TestWithParam<StepCase> {};

TEST_P(ForStep, EmitsExactLines) {
    const StepCase& tc = GetParam();
    EXPECT_EQ(stepCode(tc.bigDevice ? k877 : kDeclarations, tc.forLine), tc.expected) << tc.forLine;
}

const std::string kTop = "fr@lab2";
const std::string kExit = "nx@lab3 R@B";
const std::string kLoopOnNoCarry = "\tT@G 0,STATUS,0,fr@lab2";
const std::string kLoopOnCarry = "\tT@G 1,STATUS,0,fr@lab2";
const std::string kLoopUnlessZero = "\tT@G 0,STATUS,2,fr@lab2";

INSTANTIATE_TEST_SUITE_P(
    Steps, ForStep,
    ::testing::Values(
        StepCase{"UpByteOneSinglePage",
                 false,
                 "FOR I = 1 TO 10",
                 {"\tIncfsz@F _I", "\tGoto fr@lab2", kExit}},
        StepCase{
            "UpByteOnePaged", true, "FOR I = 1 TO 10", {"\tIncf@F _I", kLoopUnlessZero, kExit}},
        StepCase{"UpByteConstant",
                 false,
                 "FOR I = 1 TO 10 STEP 3",
                 {"\tMovlw 3", "\tAddwf@F _I", kLoopOnNoCarry, kExit}},
        StepCase{"UpByteByte",
                 false,
                 "FOR I = 1 TO 10 STEP B",
                 {"\tMov@fw _B", "\tAddwf@F _I", kLoopOnNoCarry, kExit}},
        StepCase{"UpByteWord",
                 false,
                 "FOR I = 1 TO 10 STEP W",
                 {"\tMov@fw _W", "\tAddwf@F _I", "\tMov@fw _WH", "\tT@G 0,STATUS,2,N@Lab2",
                  kLoopOnNoCarry, "N@Lab2 R@B", kExit}},
        StepCase{"UpWordByte",
                 false,
                 "FOR J = 1 TO K STEP B",
                 {"\tMov@fw _B", "\tAddwf@F _J", kLoopOnNoCarry, "\tIncf@F _JH", kLoopUnlessZero,
                  kExit}},
        StepCase{"UpWordOneSinglePage",
                 false,
                 "FOR J = 1 TO K",
                 {"\tIncf@F _J", "\tS@B _JH", "\tSkpnz", "\tIncfsz _JH", "\tGoto fr@lab2", kExit}},
        StepCase{"UpWordOnePaged",
                 true,
                 "FOR J = 1 TO K",
                 {"\tIncf@F _J", "\tS@B _JH", "\tSkpnz", "\tIncf _JH", kLoopUnlessZero, kExit}},
        StepCase{"UpWordSmallSinglePage",
                 false,
                 "FOR J = 1 TO K STEP 5",
                 {"\tMovlw 5", "\tAddwf@F _J", kLoopOnNoCarry, "\tIncfsz@F _JH", "\tGoto fr@lab2",
                  kExit}},
        StepCase{"UpWordSmallPaged",
                 true,
                 "FOR J = 1 TO K STEP 255",
                 {"\tMovlw 255", "\tAddwf@F _J", kLoopOnNoCarry, "\tIncf@F _JH", kLoopUnlessZero,
                  kExit}},
        StepCase{"UpWordLarge",
                 false,
                 "FOR J = 1 TO K STEP 300",
                 {"\tMovlw 44", "\tAddwf@F _J", "\tMovlw 1", "\tSkpnc", "\tAddlw 1",
                  "\tT@G 1,STATUS,0,N@Lab2", "\tAddwf@F _JH", kLoopOnNoCarry, "N@Lab2 R@B", kExit}},
        StepCase{"UpWordWord",
                 false,
                 "FOR J = 1 TO K STEP W",
                 {"\tMov@fw _W", "\tAddwf@F _J", "\tMov@fw _WH", "\tSkpnc", "\tAddlw 1",
                  "\tT@G 1,STATUS,0,N@Lab2", "\tAddwf@F _JH", kLoopOnNoCarry, "N@Lab2 R@B", kExit}},
        StepCase{"DownByteByte",
                 false,
                 "FOR I = 10 TO 1 STEP -B",
                 {"\tMov@fw _B", "\tSubwf@F _I", kLoopOnCarry, kExit}},
        StepCase{"DownByteConstant",
                 false,
                 "FOR I = 10 TO 1 STEP -1",
                 {"\tMovlw 1", "\tSubwf@F _I", kLoopOnCarry, kExit}},
        StepCase{"DownByteWord",
                 false,
                 "FOR I = 10 TO 1 STEP -W",
                 {"\tMov@fw _W", "\tSubwf@F _I", "\tMov@fw _WH", "\tT@G 0,STATUS,2,N@Lab2",
                  kLoopOnCarry, "N@Lab2 R@B", kExit}},
        StepCase{"DownWordOne",
                 false,
                 "FOR J = K TO 0 STEP -1",
                 {"\tMovlw 1", "\tSubwf@F _J", "\tSkpc", "\tSubwf@F _JH", kLoopOnCarry, kExit}},
        StepCase{"DownWordByte",
                 false,
                 "FOR J = K TO 0 STEP -B",
                 {"\tMov@fw _B", "\tSubwf@F _J", "\tMovlw 1", "\tSkpc", "\tSubwf@F _JH",
                  kLoopOnCarry, kExit}},
        StepCase{"DownWordSmallConstant",
                 false,
                 "FOR J = K TO 0 STEP -7",
                 {"\tMovlw 7", "\tSubwf@F _J", "\tMovlw 1", "\tSkpc", "\tSubwf@F _JH", kLoopOnCarry,
                  kExit}},
        StepCase{"DownWordLargeConstant",
                 false,
                 "FOR J = K TO 0 STEP -512",
                 {"\tClrw", "\tSubwf@F _J", "\tMovlw 1", "\tSkpc", "\tSubwf@F _JH",
                  "\tT@G 0,STATUS,0,N@Lab2", "\tMovlw 2", "\tSubwf@F _JH", kLoopOnCarry,
                  "N@Lab2 R@B", kExit}},
        StepCase{"DownWordWord",
                 false,
                 "FOR J = K TO 0 STEP -W",
                 {"\tMov@fw _W", "\tSubwf@F _J", "\tMovlw 1", "\tSkpc", "\tSubwf@F _JH",
                  "\tT@G 0,STATUS,0,N@Lab2", "\tMov@fw _WH", "\tSubwf@F _JH", kLoopOnCarry,
                  "N@Lab2 R@B", kExit}}));

TEST(ForOutput, WholeLoopWithByteCounter) {
    EXPECT_EQ(
        emitted("FOR I = 1 TO 10\nNEXT I\n"),
        (Lines{"\tMovlw 1", "\tMov@wf _I", "fr@lab2 R@B", "\tClrwdt", "\tMovlw 11", "\tSubwf@W _I",
               "\tT@G 1,STATUS,0,nx@lab3", "\tIncfsz@F _I", "\tGoto fr@lab2", "nx@lab3 R@B"}));
}

TEST(ForOutput, DownwardLoopTestsForLess) {
    EXPECT_EQ(emitted("FOR I = 10 TO 1 STEP -1\nNEXT\n"),
              (Lines{"\tMovlw 10", "\tMov@wf _I", "fr@lab2 R@B", "\tClrwdt", "\tMovlw 1",
                     "\tSubwf@W _I", "\tT@G 0,STATUS,0,nx@lab3", "\tMovlw 1", "\tSubwf@F _I",
                     "\tT@G 1,STATUS,0,fr@lab2", "nx@lab3 R@B"}));
}

TEST(ForOutput, StartValuesByKind) {
    Lines fromWord = emitted("FOR I = W TO 3\nNEXT\n");
    EXPECT_EQ(Lines(fromWord.begin(), fromWord.begin() + 2), (Lines{"\tMov@fw _W", "\tMov@wf _I"}));
    Lines fromByte = emitted("FOR J = A TO K\nNEXT\n");
    EXPECT_EQ(Lines(fromByte.begin(), fromByte.begin() + 3),
              (Lines{"\tMov@fw _A", "\tMov@wf _J", "\tClr@F _JH"}));
    Lines fromConstant = emitted("FOR J = 300 TO K\nNEXT\n");
    EXPECT_EQ(Lines(fromConstant.begin(), fromConstant.begin() + 4),
              (Lines{"\tMovlw 44", "\tMov@wf _J", "\tMovlw 1", "\tMov@wf _JH"}));
    Lines fromZero = emitted("FOR I = 0 TO 3\nNEXT\n");
    EXPECT_EQ(fromZero.front(), "\tClr@F _I");
}

TEST(ForOutput, SingleLineLoopAndRestOfLine) {
    EXPECT_EQ(
        emitted("FOR I = 1 TO 3 : A = I : NEXT : B = 1\n"),
        (Lines{"\tMovlw 1", "\tMov@wf _I", "fr@lab2 R@B", "\tClrwdt", "\tMovlw 4", "\tSubwf@W _I",
               "\tT@G 1,STATUS,0,nx@lab3", "", "\tMov@fw _I", "\tMov@wf _A", "", "\tIncfsz@F _I",
               "\tGoto fr@lab2", "nx@lab3 R@B", "", "\tMovlw 1", "\tMov@wf _B"}));
}

TEST(WhileOutput, BlockForm) {
    EXPECT_EQ(emitted("WHILE A < 10\nA = A + 1\nWEND\n"),
              (Lines{"Whl@Lb2 R@B", "\tClrwdt", "\tMovlw 10", "\tSubwf@W _A",
                     "\tT@G 1,STATUS,0,Wnd@Lb3", "\tIncf@F _A", "\tF@G Whl@Lb2", "Wnd@Lb3 R@B"}));
}

TEST(WhileOutput, SingleLineForm) {
    EXPECT_EQ(emitted("WHILE A <> 0 : A = 0 : WEND\n"),
              (Lines{"Whl@Lb2 R@B", "\tClrwdt", "\tMov@ff _A", "\tT@G 1,STATUS,2,Wnd@Lb3", "",
                     "\tClr@F _A", "", "\tF@G Whl@Lb2", "Wnd@Lb3 R@B"}));
}

TEST(RepeatOutput, BlockForm) {
    EXPECT_EQ(emitted("REPEAT\nA = A + 1\nUNTIL A = 5\n"),
              (Lines{"Rpt@Lb2 R@B", "\tIncf@F _A", "\tClrwdt", "\tMovlw 5", "\tSubwf@W _A",
                     "\tT@G 0,STATUS,2,Rpt@Lb2"}));
}

TEST(RepeatOutput, SingleLineFormWithRest) {
    EXPECT_EQ(emitted("REPEAT : A = A + 1 : UNTIL A >= B : B = 0\n"),
              (Lines{"Rpt@Lb2 R@B", "", "\tIncf@F _A", "", "\tClrwdt", "\tMov@fw _B",
                     "\tSubwf@W _A", "\tT@G 0,STATUS,0,Rpt@Lb2", "", "\tClr@F _B"}));
}

TEST(LoopOutput, EightDeepNestingTakesLabelsInOrder) {
    std::string source;
    for (int i = 0; i < 4; ++i)
        source += "WHILE A < 10\nREPEAT\n";
    source += "B = 7\n";
    for (int i = 0; i < 4; ++i)
        source += "UNTIL A = 1\nWEND\n";
    Lines out = emitted(source);
    // Outermost WHILE takes 2 and 3, its REPEAT 4, the next WHILE 5 and 6, ...
    EXPECT_EQ(out.front(), "Whl@Lb2 R@B");
    EXPECT_EQ(out.back(), "Wnd@Lb3 R@B");
    EXPECT_NE(std::find(out.begin(), out.end(), "Rpt@Lb13 R@B"), out.end());
    EXPECT_NE(std::find(out.begin(), out.end(), "\tT@G 0,STATUS,2,Rpt@Lb13"), out.end());
    EXPECT_EQ(std::count(out.begin(), out.end(), "\tMovlw 7"), 1);
}

TEST(JumpOutput, GotoGosubCallReturn) {
    EXPECT_EQ(
        emitted("HERE:\nGOTO HERE\nGOSUB HERE\nCALL my@Sub\nRETURN\n"),
        (Lines{"HERE\tR@B", "\tF@G HERE", "\tF@C HERE", "\tF@C MY@SUB", "\tR@B", "\tReturn"}));
}

TEST(JumpOutput, PokeDirect) {
    EXPECT_EQ(emitted("POKE 5, 1\nPOKE A, B\nPOKE $20, W\n"),
              (Lines{"\tMov@lf 1,5", "\tMov@fw _B", "\tMov@wf _A", "\tMov@fw _W", "\tMov@wf 32"}));
}

TEST(JumpOutput, PokeIndirectOnDevicesWithoutBankedPoke) {
    PassTwo t;
    t.c.device.info.field[3] = 1;
    setLine(t.c, "POKE 12, 200", 4);
    findRoute("POKE")(t.c);
    EXPECT_EQ(t.c.asmlist, (Lines{"\tMovlw 12", "\tMov@wf FSR", "\tMovlw 200", "\tMov@wf INDF"}));
}

} // namespace
} // namespace zorvel::test
