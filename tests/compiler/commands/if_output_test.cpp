// IF in its single-line and block forms: labels, the ELSE and ENDIF lines,
// nesting and the echo of the source lines.
#include "compiler/commands/commands_support.h"

namespace zorvel::test {
namespace {

struct IfCase {
    const char* name;
    std::string source;
    Lines expected;
    friend void PrintTo(const IfCase& c, std::ostream* os) { *os << c.name; }
};

class IfOutput : public ::testing::TestWithParam<IfCase> {};

TEST_P(IfOutput, EmitsExactLines) {
    EXPECT_EQ(emitted(GetParam().source), GetParam().expected) << GetParam().source;
}

const Lines kAEqualsB = {"\tClrwdt", "\tMov@fw _A", "\tSubwf@W _B", "\tT@G 0,STATUS,2,I@Lb2"};
const Lines kAAbove5 = {"\tClrwdt", "\tMovlw 6", "\tSubwf@W _A", "\tT@G 0,STATUS,0,I@Lb2"};

INSTANTIATE_TEST_SUITE_P(
    Forms, IfOutput,
    ::testing::Values(
        IfCase{"ThenLabel", "LOOP1:\nIF A = B THEN LOOP1\n",
               join({{"LOOP1\tR@B"}, kAEqualsB, {"\tF@G LOOP1", "I@Lb2 R@B"}})},
        IfCase{"ThenOmitted", "IF A = B POKE 5, 1\n",
               join({kAEqualsB, {"\tMov@lf 1,5", "I@Lb2 R@B"}})},
        IfCase{"SingleLineElse", "IF A > 5 THEN A = 1 ELSE A = 2\n",
               join({kAAbove5,
                     {"\tMovlw 1", "\tMov@wf _A", "\tF@G Els@Lb3", "; Else", "I@Lb2 R@B",
                      "\tMovlw 2", "\tMov@wf _A", "Els@Lb3 R@B"}})},
        IfCase{
            "SingleLineElseEndifThenMore", "IF A > 5 THEN A = 1 ELSE A = 2 ENDIF : B = 3\n",
            join({kAAbove5,
                  {"\tMovlw 1", "\tMov@wf _A", "\tF@G Els@Lb3", "; Else", "I@Lb2 R@B", "\tMovlw 2",
                   "\tMov@wf _A", "; Endif", "Els@Lb3 R@B", "", "\tMovlw 3", "\tMov@wf _B"}})},
        IfCase{
            "SingleLineEndifThenMore", "IF A > 5 THEN A = 1 : ENDIF : B = 3\n",
            join({kAAbove5,
                  {"\tMovlw 1", "\tMov@wf _A", "", "I@Lb2 R@B", "", "\tMovlw 3", "\tMov@wf _B"}})},
        IfCase{"Block", "IF A = B THEN\nA = 1\nENDIF\n",
               join({kAEqualsB, {"\tMovlw 1", "\tMov@wf _A", "I@Lb2 R@B"}})},
        IfCase{"BlockElse", "IF A = B THEN\nA = 1\nELSE\nA = 2\nENDIF\n",
               join({kAEqualsB,
                     {"\tMovlw 1", "\tMov@wf _A", "\tF@G Els@Lb3", "I@Lb2 R@B", "\tMovlw 2",
                      "\tMov@wf _A", "Els@Lb3 R@B"}})},
        IfCase{"BlockEchoesWithRemarks", "REMARKS ON\nIF A = B THEN\nA = 1\nELSE\nENDIF : B = 2\n",
               join({{";IF A = B THEN"},
                     kAEqualsB,
                     {";A = 1", "\tMovlw 1", "\tMov@wf _A", "\tF@G Els@Lb3", ";ELSE", "I@Lb2 R@B",
                      ";ENDIF : B = 2", "Els@Lb3 R@B", "", "\tMovlw 2", "\tMov@wf _B"}})},
        IfCase{"NestedBlocks", "IF A = B THEN\nIF A > 5 THEN\nB = 1\nELSE\nB = 2\nENDIF\nENDIF\n",
               join({kAEqualsB,
                     {"\tClrwdt", "\tMovlw 6", "\tSubwf@W _A", "\tT@G 0,STATUS,0,I@Lb4",
                      "\tMovlw 1", "\tMov@wf _B", "\tF@G Els@Lb5", "I@Lb4 R@B", "\tMovlw 2",
                      "\tMov@wf _B", "Els@Lb5 R@B", "I@Lb2 R@B"}})},
        IfCase{"NestedSingleLine", "IF A = B THEN IF A > 5 THEN B = 1\n",
               join({kAEqualsB,
                     {"\tClrwdt", "\tMovlw 6", "\tSubwf@W _A", "\tT@G 0,STATUS,0,I@Lb4",
                      "\tMovlw 1", "\tMov@wf _B", "I@Lb4 R@B", "I@Lb2 R@B"}})},
        IfCase{"ByteNeverEquals300",
               "IF B = 300 THEN A = 1\n",
               {"\tF@G I@Lb2", "\tMovlw 1", "\tMov@wf _A", "I@Lb2 R@B"}},
        IfCase{"ByteAlwaysDiffersFrom300",
               "IF B <> 300 THEN A = 1\n",
               {"\tMovlw 1", "\tMov@wf _A", "I@Lb2 R@B"}},
        IfCase{"ConstantsTrue", "IF 1 = 1 THEN A = 1\n", {"\tMovlw 1", "\tMov@wf _A", "I@Lb2 R@B"}},
        IfCase{"ConstantsFalse",
               "IF 1 = 2 THEN A = 1\n",
               {"\tF@G I@Lb2", "\tMovlw 1", "\tMov@wf _A", "I@Lb2 R@B"}},
        IfCase{"CommentAfterThenIsBlockForm", "IF A = B THEN ' test\nA = 1\nENDIF\n",
               join({kAEqualsB, {"\tMovlw 1", "\tMov@wf _A", "I@Lb2 R@B"}})},
        IfCase{"ExpressionOperands",
               "IF A + 1 = B THEN\nENDIF\n",
               {"\tMovlw 1", "\tAddwf@W _A", "\tMov@wf PP7", "\tClr@F PP7H", "\tRlf@F PP7H",
                "\tClrwdt", "\tMov@ff PP7H", "\tT@G 0,STATUS,2,I@Lb2", "\tMov@fw PP7",
                "\tSubwf@W _B", "\tT@G 0,STATUS,2,I@Lb2", "I@Lb2 R@B"}}));

} // namespace
} // namespace zorvel::test
