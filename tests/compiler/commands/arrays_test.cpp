// Array elements as operands and targets: the element symbol for a constant
// index, the inline FSR/INDF access (with IRP above address 255), the
// put@array/get@array calls for an array that crosses a bank gap, and every
// diagnostic.
#include "support/test_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

using Lines = std::vector<std::string>;

// On the 16F877 ARR lies in bank 0; SPAN crosses from bank 0 into bank 1
// (bank 0 ends at 127) and HIGHARR lies above address 255.
const std::string kDeclarations =
    "DEVICE 16F877\nDIM IX AS BYTE\nDIM WD AS WORD\nDIM FLG AS BIT\nDIM BV AS BYTE\n"
    "DIM ARR[10]\nDIM PAD[48]\nDIM SPAN[8]\nDIM FILL1[70]\nDIM FILL2[30]\nDIM HIGHARR[4]\n";

Lines statementOutput(const std::string& statement) {
    Lines all = statementLines(kDeclarations + statement);
    Lines declarations = statementLines(kDeclarations);
    if (all.size() < declarations.size()) return all;
    return Lines(all.begin() + static_cast<long>(declarations.size()), all.end());
}

struct ArrayCase {
    std::string statement;
    Lines expected;
};

void PrintTo(const ArrayCase& a, std::ostream* os) {
    *os << a.statement;
}

class ArrayLines : public testing::TestWithParam<ArrayCase> {};

TEST_P(ArrayLines, Emitted) {
    EXPECT_EQ(statementOutput(GetParam().statement), GetParam().expected) << GetParam().statement;
}

INSTANTIATE_TEST_SUITE_P(
    Arrays, ArrayLines,
    testing::Values(
        ArrayCase{"BV = ARR[3]", {"\tMov@fw ARR#3", "\tMov@wf BV"}},
        ArrayCase{"ARR[3] = BV", {"\tMov@fw BV", "\tMov@wf ARR#3"}},
        ArrayCase{"ARR[IX] = 5",
                  {"\tMov@fw IX", "\tAddlw ARR", "\tMovwf FSR", "\tMovlw 5", "\tMovwf INDF"}},
        ArrayCase{"ARR[WD] = BV",
                  {"\tMov@fw WD", "\tAddlw ARR", "\tMovwf FSR", "\tMov@fw BV", "\tMovwf INDF"}},
        ArrayCase{"ARR[FLG] = 7",
                  {"\tMovlw ARR", "\tBtf@sc B@VR1,0", "\tAddlw 1", "\tMovwf FSR", "\tMovlw 7",
                   "\tMovwf INDF"}},
        ArrayCase{"ARR[IX] = FLG",
                  {"\tMov@fw IX", "\tAddlw ARR", "\tMovwf FSR", "\tClrf INDF", "\tBtf@sc B@VR1,0",
                   "\tIncf INDF,F"}},
        ArrayCase{"BV = ARR[IX]",
                  {"\tMov@fw IX", "\tAddlw ARR", "\tMovwf FSR", "\tMovfw INDF", "\tMov@wf BV"}},
        ArrayCase{"WD = ARR[IX]",
                  {"\tMov@fw IX", "\tAddlw ARR", "\tMovwf FSR", "\tMovfw INDF", "\tMov@wf WD",
                   "\tClr@F WDH"}},
        ArrayCase{
            "FLG = ARR[IX]",
            {"\tMov@fw IX", "\tAddlw ARR", "\tMovwf FSR", "\tMovfw INDF", "\tWreg_Bit B@VR1,0"}},
        ArrayCase{"HIGHARR[IX] = 9",
                  {"\tMov@fw IX", "\tAddlw HIGHARR", "\tMovwf FSR", "\tBsf STATUS,IRP", "\tMovlw 9",
                   "\tMovwf INDF", "\tBcf STATUS,IRP"}},
        ArrayCase{"BV = HIGHARR[IX]",
                  {"\tMov@fw IX", "\tAddlw HIGHARR", "\tMovwf FSR", "\tBsf STATUS,IRP",
                   "\tMovfw INDF", "\tBcf STATUS,IRP", "\tMov@wf BV"}},
        ArrayCase{"SPAN[IX] = BV",
                  {"\tMovlw SPAN", "\tMov@wf GEN4", "\tMov@fw IX", "\tMov@wf GEN4H", "\tMov@fw BV",
                   "\tF@C put@array"}},
        ArrayCase{
            "BV = SPAN[IX]",
            {"\tMovlw SPAN", "\tMov@wf GEN3H", "\tMov@fw IX", "\tF@C get@array", "\tMov@wf BV"}},
        ArrayCase{"ARR[IX + 1] = 3",
                  {"N@VAR7 = 298", "\tIncf@W IX", "\tMov@wf N@VAR7", "\tMov@fw N@VAR7",
                   "\tAddlw ARR", "\tMovwf FSR", "\tMovlw 3", "\tMovwf INDF"}},
        ArrayCase{"ARR[2 + 1] = 3", {"\tMovlw 3", "\tMov@wf ARR#3"}},
        ArrayCase{"BV = ARR[IX] + 1",
                  {"\tMov@fw IX", "\tAddlw ARR", "\tMovwf FSR", "\tMovfw INDF", "N@VAR7 = 298",
                   "\tMov@wf N@VAR7", "\tIncf@W N@VAR7", "\tMov@wf BV"}},
        ArrayCase{"IF ARR[IX] = 4 THEN\nENDIF",
                  {"\tMov@fw IX", "\tAddlw ARR", "\tMovwf FSR", "\tMovfw INDF", "\tMov@wf PP7",
                   "\tClrwdt", "\tMovlw 4", "\tSubwf@W PP7", "\tT@G 0,STATUS,2,I@Lb2",
                   "I@Lb2 R@B"}},
        ArrayCase{"IF BV > SPAN[IX] THEN\nENDIF",
                  {"\tMovlw SPAN", "\tMov@wf GEN3H", "\tMov@fw IX", "\tF@C get@array",
                   "\tMov@wf PP1", "\tClrwdt", "\tMov@fw BV", "\tSubwf@W PP1",
                   "\tT@G 1,STATUS,0,I@Lb2", "I@Lb2 R@B"}},
        ArrayCase{"DELAYMS ARR[IX]",
                  {"\tMov@fw IX", "\tAddlw ARR", "\tMovwf FSR", "\tMovfw INDF", "\tF@C dl@ms"}},
        ArrayCase{"DELAYUS ARR[2]", {"\tMov@fw ARR#2", "\tF@C dl@us"}}));

struct ArrayError {
    std::string statement;
    std::string message;
};

void PrintTo(const ArrayError& a, std::ostream* os) {
    *os << a.statement;
}

class ArrayErrors : public testing::TestWithParam<ArrayError> {};

TEST_P(ArrayErrors, Reported) {
    CompileResult r = compileSource(kDeclarations + GetParam().statement + "\n");
    int line = 12;
    std::string upper = GetParam().statement;
    for (char& ch : upper)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    ASSERT_FALSE(r.messages.empty()) << GetParam().statement;
    EXPECT_EQ(r.messages.front(), frame(line, upper, GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    Arrays, ArrayErrors,
    testing::Values(
        ArrayError{"ARR[ARR[1]] = 2", "ARRAY variables not supported within ARRAY variables"},
        ArrayError{"BV = ARR[SPAN]", "ARRAY variables not supported within ARRAY variables"},
        ArrayError{"ARR[IX = 2", "']' missing"}, ArrayError{"BV = ARR[]", "Syntax Error"},
        ArrayError{"BV = ARR[10]", "Index 10 is outside ARRAY 'ARR'"},
        ArrayError{"IX[2] = 1", "Variable 'IX' is not an ARRAY"},
        ArrayError{"INC ARR[1]", "ARRAY variables not supported in INC"},
        ArrayError{"DEC ARR[IX]", "ARRAY variables not supported in DEC"},
        ArrayError{"FOR ARR[1] = 1 TO 3", "ARRAY variables not supported in FOR"}));

} // namespace
} // namespace zorvel::test
