// The comparison jumps as IF emits them: IF jumps to its false label I@Lb2
// under the opposite of the written operator ("IF A <> B" jumps when equal).
#include "compiler/commands/commands_support.h"
#include "compiler/library/runtime_marks.h"

#include <algorithm>

namespace zorvel::test {
namespace {

struct CompareCase {
    const char* name;
    std::string condition; // between IF and THEN
    Lines expected;        // the comparison lines; the IF's false label follows
    friend void PrintTo(const CompareCase& c, std::ostream* os) { *os << c.name; }
};

class CompareOutput : public ::testing::TestWithParam<CompareCase> {};

TEST_P(CompareOutput, EmitsExactLines) {
    const CompareCase& tc = GetParam();
    Lines expected = tc.expected;
    expected.push_back("I@Lb2 R@B");
    EXPECT_EQ(emitted("IF " + tc.condition + " THEN\nENDIF\n"), expected) << tc.condition;
}

const std::string kJumpEq = "\tT@G 1,STATUS,2,I@Lb2";
const std::string kJumpNe = "\tT@G 0,STATUS,2,I@Lb2";
const std::string kJumpCarry = "\tT@G 1,STATUS,0,I@Lb2";
const std::string kJumpNoCarry = "\tT@G 0,STATUS,0,I@Lb2";
const Lines kWordToPP0 = {"\tMov@fw _W", "\tMov@wf PP0", "\tMov@fw _WH", "\tMov@wf PP0H"};

Lines withWordInPP0(const Lines& tail) {
    return join({kWordToPP0, tail});
}

INSTANTIATE_TEST_SUITE_P(
    JumpWhenEqual, CompareOutput,
    ::testing::Values(
        CompareCase{"ByteByte", "A <> B", {"\tClrwdt", "\tMov@fw _A", "\tSubwf@W _B", kJumpEq}},
        CompareCase{"ByteZero", "A <> 0", {"\tClrwdt", "\tMov@ff _A", kJumpEq}},
        CompareCase{"Byte255", "A != 255", {"\tClrwdt", "\tIncf@W _A", kJumpEq}},
        CompareCase{"ByteConstant", "A <> 7", {"\tClrwdt", "\tMovlw 7", "\tSubwf@W _A", kJumpEq}},
        CompareCase{"ByteHexConstantInDecimal",
                    "A <> $10",
                    {"\tClrwdt", "\tMovlw 16", "\tSubwf@W _A", kJumpEq}},
        CompareCase{
            "ByteCharConstant", "A <> \"a\"", {"\tClrwdt", "\tMovlw 97", "\tSubwf@W _A", kJumpEq}},
        CompareCase{"ByteNeverEqual256", "A <> 256", {}},
        CompareCase{
            "ConstantLeftMirrors", "7 <> A", {"\tClrwdt", "\tMovlw 7", "\tSubwf@W _A", kJumpEq}},
        CompareCase{"ByteBit",
                    "A <> F",
                    {"\tClrwdt", "\tMov@fw _A", "\tBtf@sc B@VR1,0", "\tSublw 1", kJumpEq}},
        CompareCase{"ByteWord",
                    "A <> W",
                    {"\tClrwdt", "\tMov@ff _WH", "\tT@G 0,STATUS,2,CP@LB2", "\tMov@fw _W",
                     "\tSubwf@W _A", kJumpEq, "CP@LB2 R@B"}},
        CompareCase{"ConstantsEqual", "1 <> 1", {"\tF@G I@Lb2"}},
        CompareCase{"ConstantsDiffer", "1 <> 2", {}},
        CompareCase{"ZeroAndBit", "0 <> F", {"\tClrwdt", "\tT@G 0,B@VR1,0,I@Lb2"}},
        CompareCase{"OneAndBit", "1 <> G", {"\tClrwdt", "\tT@G 1,B@VR1,1,I@Lb2"}},
        CompareCase{"TwoNeverEqualsBit", "2 <> F", {}},
        CompareCase{
            "ConstantWord", "300 <> W",
            withWordInPP0({"\tMovlw 1", "\tMov@wf PP1H", "\tMovlw 44", "\tF@C t@e", kJumpNe})},
        CompareCase{"BitBit",
                    "F <> G",
                    {"\tClrwdt", "\tClrw", "\tBtf@sc B@VR1,0", "\tAddlw 1", "\tBtf@sc B@VR1,1",
                     "\tSublw 1", kJumpEq}},
        CompareCase{"WordWord",
                    "W <> V",
                    {"\tClrwdt", "\tMov@fw _WH", "\tSubwf@W _VH", "\tT@G 0,STATUS,2,CP@LB2",
                     "\tMov@fw _W", "\tSubwf@W _V", kJumpEq, "CP@LB2 R@B"}},
        CompareCase{
            "WordBit", "W <> F",
            withWordInPP0({"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tF@C t@ew", kJumpNe})}));

INSTANTIATE_TEST_SUITE_P(
    JumpWhenNotEqual, CompareOutput,
    ::testing::Values(
        CompareCase{"ByteByte", "A = B", {"\tClrwdt", "\tMov@fw _A", "\tSubwf@W _B", kJumpNe}},
        CompareCase{
            "ByteByteDoubleEquals", "A == B", {"\tClrwdt", "\tMov@fw _A", "\tSubwf@W _B", kJumpNe}},
        CompareCase{"ByteZero", "A = 0", {"\tClrwdt", "\tMov@ff _A", kJumpNe}},
        CompareCase{"ByteAlwaysDiffers300", "A = 300", {"\tF@G I@Lb2"}},
        CompareCase{"ConstantsDiffer", "1 = 2", {"\tF@G I@Lb2"}},
        CompareCase{"ConstantsEqual", "1 = 1", {}},
        CompareCase{"BitAlwaysDiffersFrom5", "F = 5", {"\tF@G I@Lb2"}},
        CompareCase{"BitAndOne", "F = 1", {"\tClrwdt", "\tT@G 0,B@VR1,0,I@Lb2"}},
        CompareCase{"WordByteHighByteFirst",
                    "W = A",
                    {"\tClrwdt", "\tMov@ff _WH", kJumpNe, "\tMov@fw _W", "\tSubwf@W _A", kJumpNe}},
        CompareCase{"WordWord",
                    "W = V",
                    {"\tClrwdt", "\tMov@fw _WH", "\tSubwf@W _VH", kJumpNe, "\tMov@fw _W",
                     "\tSubwf@W _V", kJumpNe}},
        CompareCase{"WordConstant", "W = 0",
                    withWordInPP0({"\tClr@F PP1H", "\tClrw", "\tF@C t@ne", kJumpNe})},
        CompareCase{"WordBeyond16Bits", "W = 65535",
                    withWordInPP0({"\tMovlw 255", "\tMov@wf PP1H", "\tMovlw 255", "\tF@C t@ne",
                                   kJumpNe})}));

INSTANTIATE_TEST_SUITE_P(
    JumpWhenGreaterOrEqual, CompareOutput,
    ::testing::Values(
        CompareCase{"ByteByte", "A < B", {"\tClrwdt", "\tMov@fw _B", "\tSubwf@W _A", kJumpCarry}},
        CompareCase{
            "ByteConstant", "A < 10", {"\tClrwdt", "\tMovlw 10", "\tSubwf@W _A", kJumpCarry}},
        CompareCase{
            "ByteZeroLoadsWithClrw", "A < 0", {"\tClrwdt", "\tClrw", "\tSubwf@W _A", kJumpCarry}},
        CompareCase{"ByteNever256", "A < 256", {}},
        CompareCase{
            "ByteBit",
            "A < F",
            {"\tClrwdt", "\tSetc", "\tMov@fw _A", "\tBtf@sc B@VR1,0", "\tAddlw -1", kJumpCarry}},
        CompareCase{"ByteWord",
                    "A < W",
                    {"\tClrwdt", "\tMov@ff _WH", "\tT@G 0,STATUS,2,CP@LB2", "\tMov@fw _W",
                     "\tSubwf@W _A", kJumpCarry, "CP@LB2 R@B"}},
        CompareCase{"ConstantsDecided", "5 < 3", {"\tF@G I@Lb2"}},
        CompareCase{"ConstantsNot", "3 < 5", {}},
        CompareCase{"WordWord",
                    "W < V",
                    {"\tClrwdt", "\tMov@fw _VH", "\tSubwf@W _WH", "\tT@G 0,STATUS,0,CP@LB2",
                     "\tMov@fw _VH", "\tSubwf@W _WH", "\tT@G 0,STATUS,2,I@Lb2", "\tMov@fw _V",
                     "\tSubwf@W _W", kJumpCarry, "CP@LB2 R@B"}},
        CompareCase{"WordConstant", "W < 5",
                    withWordInPP0({"\tClr@F PP1H", "\tMovlw 5", "\tF@C t@ge", kJumpNe})},
        CompareCase{
            "WordBit", "W < F",
            withWordInPP0({"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tF@C t@gew", kJumpNe})},
        CompareCase{"ConstantWordMirrors", "5 !< W",
                    withWordInPP0({"\tClr@F PP1H", "\tMovlw 5", "\tF@C t@gt", kJumpNe})}));

// A BYTE against a constant: >= and < load n, <= and > load n + 1.
INSTANTIATE_TEST_SUITE_P(
    ByteAgainstConstant, CompareOutput,
    ::testing::Values(
        CompareCase{
            "LessOrEqual", "A > 9", {"\tClrwdt", "\tMovlw 10", "\tSubwf@W _A", kJumpNoCarry}},
        CompareCase{"LessOrEqual255Always", "A > 255", {"\tF@G I@Lb2"}},
        CompareCase{
            "LessOrEqual254", "A > 254", {"\tClrwdt", "\tMovlw 255", "\tSubwf@W _A", kJumpNoCarry}},
        CompareCase{"NotGreater", "A !> 9", {"\tClrwdt", "\tMovlw 10", "\tSubwf@W _A", kJumpCarry}},
        CompareCase{"Greater", "A <= 9", {"\tClrwdt", "\tMovlw 10", "\tSubwf@W _A", kJumpCarry}},
        CompareCase{"GreaterNever255", "A =< 255", {}},
        CompareCase{"Less", "A >= 9", {"\tClrwdt", "\tMovlw 9", "\tSubwf@W _A", kJumpNoCarry}},
        CompareCase{"LessAlways256", "A => 256", {"\tF@G I@Lb2"}},
        CompareCase{"MirroredGreaterEqual",
                    "9 < A",
                    {"\tClrwdt", "\tMovlw 10", "\tSubwf@W _A", kJumpNoCarry}},
        CompareCase{
            "MirroredLess", "9 >= A", {"\tClrwdt", "\tMovlw 10", "\tSubwf@W _A", kJumpCarry}}));

// Both bits must be tested for greater and less: the first test skips to a
// P@LB compare label.
INSTANTIATE_TEST_SUITE_P(
    BitAgainstBit, CompareOutput,
    ::testing::Values(
        CompareCase{"Greater",
                    "F <= G",
                    {"\tClrwdt", "\tT@G 0,B@VR1,0,P@LB2", "\tT@G 0,B@VR1,1,I@Lb2", "P@LB2 R@B"}},
        CompareCase{"Less",
                    "F >= G",
                    {"\tClrwdt", "\tT@G 1,B@VR1,0,P@LB2", "\tT@G 1,B@VR1,1,I@Lb2", "P@LB2 R@B"}},
        CompareCase{"GreaterOrEqual",
                    "F < G",
                    {"\tClrwdt", "\tT@G 1,B@VR1,0,I@Lb2", "\tT@G 0,B@VR1,1,I@Lb2"}},
        CompareCase{"LessOrEqual",
                    "F > G",
                    {"\tClrwdt", "\tT@G 0,B@VR1,0,I@Lb2", "\tT@G 1,B@VR1,1,I@Lb2"}}));

TEST(CompareOutput, WatchdogOffDropsClrwdt) {
    std::string head = "DEVICE 16F84\nCONFIG XT_OSC, WDT_OFF, PWRTE_ON\n" + kDeclarations;
    EXPECT_EQ(emittedAfter(head, "IF A <> B THEN\nENDIF\n"),
              (Lines{"\tMov@fw _A", "\tSubwf@W _B", kJumpEq, "I@Lb2 R@B"}));
}

TEST(CompareOutput, CompareLabelsCountOnFromTwo) {
    Lines out = emitted("IF A <> W THEN\nENDIF\nIF A <> W THEN\nENDIF\n");
    EXPECT_NE(std::find(out.begin(), out.end(), "CP@LB2 R@B"), out.end());
    EXPECT_NE(std::find(out.begin(), out.end(), "CP@LB3 R@B"), out.end());
    EXPECT_NE(std::find(out.begin(), out.end(), "I@Lb4 R@B"), out.end());
}

TEST(CompareOutput, RuntimeTestsAreMarkedAsNeeded) {
    CompileResult r = compileSource(kDeclarations + "IF W < 5 THEN\nENDIF\nIF F = W THEN\nENDIF\n");
    ASSERT_EQ(r.errors, 0);
    const Compilation& c = *r.compilation;
    EXPECT_TRUE(neededTest(c, zorvel::Test::GreaterEqual, TestEntry::Full));
    EXPECT_TRUE(neededTest(c, zorvel::Test::NotEqual, TestEntry::Word));
    EXPECT_FALSE(neededTest(c, zorvel::Test::Less, TestEntry::Full));
    EXPECT_TRUE(needed(c, Group::Compare));
}

TEST(CompareOutput, InlineComparisonsNeedNoRuntimeTest) {
    CompileResult r = compileSource(kDeclarations + "IF A < W THEN\nENDIF\n");
    ASSERT_EQ(r.errors, 0);
    EXPECT_FALSE(needed(*r.compilation, Group::Compare));
}

} // namespace
} // namespace zorvel::test
