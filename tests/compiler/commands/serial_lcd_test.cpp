// SERIN, SEROUT, RSIN, RSOUT, PRINT, CLS, CURSOR and INKEY: the exact lines of
// each option and item, and every message.
#include "support/statement_code.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

const Lines kDataB0 = {"\tMovlw 6", "\tMov@wf GEN", "\tMovlw 1", "\tMov@wf GENH"};
const Lines kDataB1 = {"\tMovlw 6", "\tMov@wf GEN", "\tMovlw 2", "\tMov@wf GENH"};
const Lines kFlowB2 = {"\tMovlw 6", "\tMov@wf GEN2", "\tMovlw 4", "\tMov@wf GEN2H"};
const Lines kMode84 = {"\tMovlw 84", "\tMov@wf PP5", "\tClr@F PP5H"};
const Lines kNoPace = {"\tClr@F GEN3", "\tClr@F GEN3H"};

class SerialCode : public StatementCodeTest {};

TEST_P(SerialCode, Emitted) {
    expectExactCode(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Output, SerialCode,
    testing::Values(
        CodeCase{"SeroutText", "SEROUT PORTB.0, 84, [\"Hi\"]",
                 join({kDataB0,
                       kMode84,
                       kNoPace,
                       {"\tBs@f BPFH,5", "\tMovlw 'H'", "\tF@C Serout", "\tMovlw 'i'",
                        "\tF@C Serout", "\tClr@F BPFH"}})},
        CodeCase{"SeroutPace", "SEROUT PORTB.0, 16468, A, [X]",
                 join({kDataB0,
                       {"\tMovlw 84", "\tMov@wf PP5", "\tMovlw 64", "\tMov@wf PP5H", "\tMov@fw _A",
                        "\tMov@wf GEN3", "\tClr@F GEN3H", "\tBs@f BPFH,5", "\tMov@fw _X",
                        "\tF@C Serout", "\tClr@F BPFH"}})},
        CodeCase{"SeroutFlow", "SEROUT PORTB.0\\PORTB.2, 84, [1]",
                 join({kDataB0,
                       kFlowB2,
                       kMode84,
                       kNoPace,
                       {"\tBs@f BPFH,4", "\tMovlw 1", "\tF@C sro@f", "\tClr@F BPFH"}})},
        // The timeout is tested after every send, numbers included.
        CodeCase{"SeroutTimeout", "SEROUT PORTB.0\\PORTB.2, 84, 500, Here, [\"A\", DEC A]",
                 join({kDataB0,
                       kFlowB2,
                       kMode84,
                       kNoPace,
                       {"\tMovlw 244", "\tMov@wf PP7", "\tMovlw 1", "\tMov@wf PP7H",
                        "\tBs@f BPFH,3", "\tMovlw 'A'", "\tF@C sro@t", "\tT@G 0,STATUS,0,HERE",
                        "\tMov@fw _A", "\tMov@wf PP2", "\tClr@F PP2H", "\tF@C o@dec",
                        "\tT@G 0,STATUS,0,HERE", "\tClr@F BPFH"}})},
        CodeCase{"SeroutPaceAndTimeout", "SEROUT PORTB.0\\PORTB.2, 84, 2, 9, Here, [0]",
                 join({kDataB0,
                       kFlowB2,
                       kMode84,
                       {"\tMovlw 2", "\tMov@wf GEN3", "\tClr@F GEN3H", "\tMovlw 9", "\tMov@wf PP7",
                        "\tClr@F PP7H", "\tBs@f BPFH,3", "\tClrw", "\tF@C sro@t",
                        "\tT@G 0,STATUS,0,HERE", "\tClr@F BPFH"}})},
        // Quote and backslash are escaped inside the character literal.
        CodeCase{"RsoutEscapes",
                 "RSOUT \"'\\\"",
                 {"\tBs@f BPFH,6", "\tMovlw '\\''", "\tF@C Rsout", "\tMovlw '\\\\'", "\tF@C Rsout",
                  "\tClr@F BPFH"}},
        // A constant is always stored as a word: no stale high byte.
        CodeCase{"RsoutHex4Constant",
                 "RSOUT HEX4 10",
                 {"\tBs@f BPFH,6", "\tMovlw 10", "\tMov@wf PP2", "\tClr@F PP2H", "\tBs@f BPFH,6",
                  "\tF@C Out_Hex4", "\tClr@F BPFH"}},
        CodeCase{"RsoutHexWord",
                 "RSOUT HEX W1",
                 {"\tBs@f BPFH,6", "\tMov@fw W1", "\tMov@wf PP2", "\tMov@fw W1H", "\tMov@wf PP2H",
                  "\tBs@f BPFH,6", "\tF@C Out_Hex", "\tClr@F BPFH"}},
        CodeCase{"RsoutBinCounted",
                 "RSOUT BIN8 A",
                 {"\tBs@f BPFH,6", "\tMov@fw _A", "\tMov@wf PP2", "\tClr@F PP2H", "\tMovlw 8",
                  "\tMov@wf GEN4H", "\tBc@f BPF,3", "\tBs@f BPFH,6", "\tF@C Out_Binb",
                  "\tClr@F BPFH"}},
        CodeCase{"RsoutBinBit",
                 "RSOUT BIN F",
                 {"\tBs@f BPFH,6", "\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tMov@wf PP2",
                  "\tClr@F PP2H", "\tBs@f BPFH,6", "\tF@C Out_Bin2", "\tClr@F BPFH"}},
        CodeCase{"RsoutDecCounted",
                 "RSOUT DEC5 K",
                 {"\tBs@f BPFH,6", "\tMovlw 44", "\tMov@wf PP2", "\tMovlw 1", "\tMov@wf PP2H",
                  "\tMovlw 5", "\tMov@wf GEN4H", "\tBc@f BPF,3", "\tBs@f BPFH,6", "\tF@C o@decb",
                  "\tClr@F BPFH"}},
        CodeCase{"RsoutAtByte",
                 "RSOUT @A",
                 {"\tBs@f BPFH,6", "\tMov@fw _A", "\tMov@wf PP2", "\tBs@f BPFH,6", "\tF@C o@dec2b",
                  "\tClr@F BPFH"}},
        CodeCase{"RsoutAtWord",
                 "RSOUT @W1",
                 {"\tBs@f BPFH,6", "\tMov@fw W1", "\tMov@wf PP2", "\tMov@fw W1H", "\tMov@wf PP2H",
                  "\tBs@f BPFH,6", "\tF@C o@dec2", "\tClr@F BPFH"}},
        CodeCase{"RsoutRepeat",
                 "RSOUT REP \"-\"\\10",
                 {"\tBs@f BPFH,6", "\tMovlw 10", "\tMov@wf GEN4H", "\tMovlw 45", "\tF@C Rep",
                  "\tClr@F BPFH"}},
        CodeCase{"RsoutRepeatVariable",
                 "RSOUT REP A\\B",
                 {"\tBs@f BPFH,6", "\tMov@fw _B", "\tMov@wf GEN4H", "\tMov@fw _A", "\tF@C Rep",
                  "\tClr@F BPFH"}},
        CodeCase{"RsoutString",
                 "RSOUT STR ARR\\2",
                 {"\tBs@f BPFH,6", "\tMovlw 2", "\tMov@wf GEN4", "\tClr@F PP2H", "\tMovlw 49",
                  "\tF@C sb@strout", "\tClr@F BPFH"}},
        CodeCase{"RsoutClsAndAt",
                 "RSOUT CLS, AT 2, 3",
                 {"\tBs@f BPFH,6", "\tF@C Cls", "\tMovlw 194", "\tF@C curs", "\tClr@F BPFH"}},
        CodeCase{"RsoutAtVariable",
                 "RSOUT AT A, 1",
                 {"\tBs@f BPFH,6", "\tMov@fw _A", "\tMov@wf PP4", "\tMovlw 1", "\tF@C Cursor",
                  "\tClr@F BPFH"}},
        CodeCase{"RsoutExpression",
                 "RSOUT A + 1",
                 {"\tBs@f BPFH,6", "\tIncf@W _A", "\tF@C Rsout", "\tClr@F BPFH"}},
        CodeCase{"RsoutFunction",
                 "RSOUT INKEY",
                 {"\tBs@f BPFH,6", "\tF@C Inkey", "\tF@C Rsout", "\tClr@F BPFH"}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Input, SerialCode,
    testing::Values(
        CodeCase{"RsinPlain", "RSIN X", {"\tF@C Rsin", "\tMov@wf _X"}},
        CodeCase{"RsinTimeout",
                 "RSIN {Here}, W1, F",
                 {"\tF@C Rsin2", "\tT@G 0,STATUS,0,HERE", "\tMov@wf W1", "\tClr@F W1H",
                  "\tF@C Rsin2", "\tT@G 0,STATUS,0,HERE", "\tWreg_Bit B@VR1,0"}},
        CodeCase{"RsinFunction", "X = RSIN", {"\tF@C rsin", "\tMov@wf _X"}},
        CodeCase{"RsinFunctionTimeout",
                 "W1 = RSIN, {Here}",
                 {"\tF@C rsin2", "\tT@G 0,STATUS,0,HERE", "\tMov@wf W1", "\tClr@F W1H"}},
        CodeCase{"SerinParityAndTimeout", "SERIN PORTB.1\\PORTB.2, 84, Here, 100, Here, [X]",
                 join({kDataB1,
                       kFlowB2,
                       kMode84,
                       {"\tMovlw 100", "\tMov@wf GEN3", "\tClr@F GEN3H", "\tF@C Srin@ft",
                        "\tT@G 0,STATUS,0,HERE", "\tT@G 1,PP4,0,HERE", "\tMov@wf _X"}})},
        CodeCase{"SerinFlow", "SERIN PORTB.1\\PORTB.2, 84, [X]",
                 join({kDataB1, kFlowB2, kMode84, {"\tF@C srin@f", "\tMov@wf _X"}})}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Lcd, SerialCode,
    testing::Values(
        CodeCase{"PrintAtConstant",
                 "PRINT AT 2,1, \"Hi\"",
                 {"\tBs@f BPFH,7", "\tMovlw 192", "\tF@C LCD_crs", "\tMovlw 'H'", "\tF@C Print",
                  "\tMovlw 'i'", "\tF@C Print", "\tClr@F BPFH"}},
        CodeCase{"PrintAtLastColumn",
                 "PRINT AT 4,20",
                 {"\tBs@f BPFH,7", "\tMovlw 231", "\tF@C LCD_crs", "\tClr@F BPFH"}},
        CodeCase{"PrintAtRowThree",
                 "PRINT AT 3,1",
                 {"\tBs@f BPFH,7", "\tMovlw 148", "\tF@C LCD_crs", "\tClr@F BPFH"}},
        CodeCase{"PrintAtVariable",
                 "PRINT AT A,1",
                 {"\tBs@f BPFH,7", "\tMov@fw _A", "\tMov@wf PP4", "\tMovlw 1", "\tF@C Cursor",
                  "\tClr@F BPFH"}},
        CodeCase{"PrintDecAndCls",
                 "PRINT CLS, DEC W1",
                 {"\tBs@f BPFH,7", "\tF@C Cls", "\tMov@fw W1", "\tMov@wf PP2", "\tMov@fw W1H",
                  "\tMov@wf PP2H", "\tBs@f BPFH,7", "\tF@C o@dec", "\tClr@F BPFH"}},
        CodeCase{"PrintElementValue",
                 "PRINT ARR[1]",
                 {"\tBs@f BPFH,7", "\tMov@fw ARR#1", "\tF@C Print", "\tClr@F BPFH"}},
        CodeCase{"Cls", "CLS", {"\tF@C Lcd_Cls", "\tClr@F BPFH"}},
        CodeCase{"CursorConstant", "CURSOR 1, 3", {"\tMovlw 130", "\tF@C LCD_crs", "\tClr@F BPFH"}},
        CodeCase{"CursorVariable",
                 "CURSOR A, 3",
                 {"\tMov@fw _A", "\tMov@wf PP4", "\tMovlw 3", "\tF@C Lcd_Cur"}},
        CodeCase{"Inkey", "X = INKEY", {"\tF@C Inkey", "\tMov@wf _X"}},
        CodeCase{"InkeyIntoWord", "W1 = INKEY", {"\tF@C Inkey", "\tMov@wf W1", "\tClr@F W1H"}},
        // A function word alone is not an operand of an element assignment.
        CodeCase{
            "InkeyIntoElement",
            "ARR[1] = INKEY",
            {"\tF@C Inkey", "\tMov@wf PP7", "\tClr@F PP7H", "\tMov@fw PP7", "\tMov@wf ARR#1"}}),
    caseName);

class SerialMessages : public StatementMessageTest {};

TEST_P(SerialMessages, Reported) {
    expectMessage(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    All, SerialMessages,
    testing::Values(
        MessageCase{"DataPin", "SEROUT A, 84, [1]",
                    "Must be a PORT.BIT declaration for the DATA pin"},
        MessageCase{"FlowPin", "SERIN PORTB.0\\A, 84, [X]",
                    "Must be a PORT.BIT declaration for the FLOW pin"},
        MessageCase{"TimeoutWithoutFlow", "SEROUT PORTB.0, 84, 500, Here, [X]",
                    "TIMEOUT must be used in conjunction with a FLOW control pin"},
        MessageCase{"SeroutBracket", "SEROUT PORTB.0, 84, 5, 6, 7, 8, X", "Syntax Error"},
        MessageCase{"SerinBracket", "SERIN PORTB.0, 84, 100, Here, X", "'[' missing"},
        MessageCase{"SerinUnclosed", "SERIN PORTB.0, 84, [X", "']' missing"},
        MessageCase{"SerinStray", "SERIN PORTB.0, 84, [X Y]", "Comma missing"},
        MessageCase{"SerinTimeoutLabel", "SERIN PORTB.0, 84, 100, Nowhere, [X]",
                    "Label 'NOWHERE' not found"},
        MessageCase{"InputString", "RSIN STR A", "Must be a BYTE ARRAY variable for STR directive"},
        MessageCase{"OutputString", "RSOUT STR A",
                    "Must be a BYTE array variable for STR directive"},
        MessageCase{"StringLength", "RSOUT STR ARR\\A", "Must be a constant value for STR length"},
        MessageCase{"StringTooLong", "RSIN STR ARR\\5",
                    "STR length must be 1 to the length of the ARRAY"},
        MessageCase{"WaitWithoutText", "SERIN PORTB.0, 84, [WAIT(A)]", "Syntax Error"},
        MessageCase{"InputConstant", "RSIN 5", "Variable Expected"},
        MessageCase{"Hex5", "RSOUT HEX5 W1", "Invalid HEX instruction"},
        MessageCase{"Bin17", "RSOUT BIN17 W1", "Invalid BIN instruction"},
        MessageCase{"Dec6", "PRINT DEC6 W1", "Invalid DEC instruction"},
        MessageCase{"RepWithoutCount", "RSOUT REP \"-\"", "Invalid REP instruction"},
        MessageCase{"RepQuote", "RSOUT REP \"-\\3", "Missing Quote"},
        MessageCase{"RepArray", "RSOUT REP \"-\"\\ARR[1]", "ARRAY variables not supported by REP"},
        MessageCase{"TextQuote", "RSOUT \"abc", "Missing Quote"},
        MessageCase{"ItemStray", "RSOUT A B", "Comma missing"},
        MessageCase{"NoItems", "RSOUT", "Syntax Error"},
        MessageCase{"VstrLater", "RSOUT VSTR Here", "'VSTR' is not supported yet"},
        MessageCase{"AtRange", "PRINT AT 5, 1", "AT wants a row of 1 to 4 and a column of 1 to 40"},
        MessageCase{"Inverse", "PRINT INVERSE", "Invalid LCD Type for the INVERSE modifier"},
        MessageCase{"Font", "PRINT FONT 1", "Invalid LCD Type for the FONT modifier"},
        MessageCase{"Xor", "PRINT XOR", "Invalid LCD Type for the XOR modifier"},
        MessageCase{"Or", "PRINT OR", "Invalid LCD Type for the OR modifier"},
        MessageCase{"UnclosedBrace", "RSIN {Here X", "'}' missing"},
        MessageCase{"RsinFunctionBrace", "X = RSIN, Here", "'{' missing"},
        MessageCase{"CursorComma", "CURSOR A 3", "Comma missing"}),
    caseName);

// The loops: STR receives into element [counter] until the count is reached;
// WAIT restarts the match after any wrong character.
TEST(SerialLoops, StringAndWait) {
    Lines str = statementLines(statementProgram("RSIN STR ARR\\3"));
    auto loop = std::find_if(str.begin(), str.end(),
                             [](const std::string& l) { return l.rfind("Pb@lab", 0) == 0; });
    ASSERT_NE(loop, str.end());
    std::string label = loop->substr(0, loop->find(' '));
    std::string counter = (loop - 1)->substr((loop - 1)->find(' ') + 1);
    EXPECT_EQ(*(loop - 1), "\tClr@F " + counter);
    EXPECT_EQ(Lines(loop + 1, loop + 3), (Lines{"\tSetc", "\tF@C Rsin"}));
    auto end = std::find(loop, str.end(), "\tT@G 0,STATUS,2," + label);
    ASSERT_NE(end, str.end());
    EXPECT_EQ(Lines(end - 4, end),
              (Lines{"\tMovwf INDF", "\tIncf@F " + counter, "\tMov@fw " + counter, "\tSublw 3"}));

    // A wrong character after "O" is compared with "O" again.
    Lines wait = statementLines(statementProgram("SERIN PORTB.1, 84, [WAIT(\"OK\"), X]"));
    auto first = std::find_if(wait.begin(), wait.end(),
                              [](const std::string& l) { return l.rfind("Pb@lab", 0) == 0; });
    ASSERT_LE(first + 17, wait.end());
    EXPECT_EQ(Lines(first, first + 17),
              (Lines{"Pb@lab2 R@B", "\tF@C Serin", "\tSublw 'O'", "\tT@G 0,STATUS,2,Pb@lab2",
                     "Pb@lab3 R@B", "\tF@C Serin", "\tSublw 'K'", "\tT@G 0,STATUS,2,Pb@lab4",
                     "\tF@G Pb@lab5", "Pb@lab4 R@B", "\tMov@fw PP1", "\tSublw 'O'",
                     "\tT@G 1,STATUS,2,Pb@lab3", "\tF@G Pb@lab2", "Pb@lab5 R@B", "\tF@C Serin",
                     "\tMov@wf _X"}));
}

// Devices with one port have no room for an LCD or keypad; every PRINT ends
// by clearing the output flags, even after an error.
TEST(SerialDevices, PortsCrystalAndFlags) {
    const std::string gpio = "DEVICE 12F675\nDIM A AS BYTE\n";
    EXPECT_EQ(compileSource(gpio + "PRINT 1\nEND").messages,
              Lines{frame(3, "PRINT 1", "Not Enough Pins for an LCD on this Device")});
    EXPECT_EQ(compileSource(gpio + "A = INKEY\nEND").messages,
              Lines{frame(3, "A = INKEY", "Not Enough pins for a KEYPAD on this device")});
    // RSOUT's and RSIN's default pins are PORTB bits.
    EXPECT_EQ(compileSource(gpio + "RSOUT A\nEND").messages,
              Lines{frame(3, "RSOUT A",
                          "RSOUT_PIN is PORTB.0, which 12F675 does not have: DECLARE RSOUT_PIN "
                          "with a pin of the device")});
    EXPECT_TRUE(compileSource("DEVICE 12F675\nDECLARE RSIN_PIN GPIO.2\nDIM A AS BYTE\n"
                              "A = RSIN\nEND")
                    .messages.empty());
    EXPECT_TRUE(
        compileSource("DEVICE 16F877\nDECLARE RSOUT_PIN portc.6\nRSOUT 1\nEND").messages.empty());
    // The keypad scan would disturb an LCD on the same port.
    const std::string both = "DIM A AS BYTE\nA = INKEY\nPRINT A\nEND";
    EXPECT_EQ(compileSource("DEVICE 16F877\n" + both).messages,
              Lines{"\tWarning!\t*** INKEY scans PORTB, which also carries the LCD's lines: the "
                    "scan disturbs the display. Move the keypad (KEYPAD_PORT) or the LCD ***"});
    EXPECT_TRUE(
        compileSource("DEVICE 16F877\nDECLARE KEYPAD_PORT PORTD\n" + both).messages.empty());
    EXPECT_EQ(statementCode("PRINT \"a\", HEX9 A"),
              (Lines{"\tBs@f BPFH,7", "\tMovlw 'a'", "\tF@C Print", "\tClr@F BPFH"}));
}

} // namespace
} // namespace zorvel::test
