// The pin, pulse and tone commands, SLEEP and SNOOZE: the exact lines of each
// operand form, the FSR and GEN pin forms, the loaders and result stores, and
// every message.
#include "support/statement_code.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

const Lines kFsrB0 = {"\tMovlw 6", "\tMov@wf FSR", "\tMovlw 1"};
const Lines kFsrB1 = {"\tMovlw 6", "\tMov@wf FSR", "\tMovlw 2"};
const Lines kGenB0 = {"\tMovlw 6", "\tMov@wf GEN", "\tMovlw 1", "\tMov@wf GENH"};
const Lines kGenA0 = {"\tMovlw 5", "\tMov@wf GEN", "\tMovlw 1", "\tMov@wf GENH"};
const Lines kDtmfDefaults = {"\tMovlw 200", "\tMov@wf GEN2", "\tClr@F GEN2H",
                             "\tMovlw 50",  "\tMov@wf GEN4", "\tClr@F GEN4H"};

class PinCommandCode : public StatementCodeTest {};

TEST_P(PinCommandCode, Emitted) {
    expectExactCode(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Pins, PinCommandCode,
    testing::Values(
        CodeCase{"HighPin", "HIGH PORTB.3", {"\tBc@f TRISB,3", "\tBs@f PORTB,3"}},
        CodeCase{"LowPort", "LOW PORTB", {"\tClr@F TRISB", "\tClr@F PORTB"}},
        CodeCase{"SetBit", "SET F", {"\tBs@f B@VR1,0"}},
        CodeCase{
            "SetWord", "SET W1", {"\tMovlw 255", "\tMov@wf W1", "\tMovlw 255", "\tMov@wf W1H"}},
        CodeCase{"ClearByte", "CLEAR A", {"\tClr@F _A"}},
        CodeCase{"NumberIsARegister", "HIGH 6", {"\tMovlw 255", "\tMov@wf 6"}},
        CodeCase{"HighElement", "HIGH ARR[2]", {"\tMovlw 255", "\tMov@wf ARR#2"}},
        CodeCase{"TogglePin", "TOGGLE PORTB.1", {"\tMovlw 2", "\tXorwf@F PORTB", "\tBc@f 134,1"}},
        // A BIT variable has no direction register.
        CodeCase{"ToggleBit", "TOGGLE F", {"\tMovlw 1", "\tXorwf@F B@VR1"}},
        CodeCase{"TogglePinNumber", "TOGGLE A", {"\tMov@fw _A", "\tF@C t@gl"}},
        CodeCase{"ToggleConstant", "TOGGLE 9", {"\tMovlw 9", "\tF@C t@gl"}},
        CodeCase{
            "Input", "INPUT PORTA.0", {"\tMovlw 5", "\tMov@wf FSR", "\tMovlw 1", "\tF@C i@bi"}},
        CodeCase{"Output",
                 "OUTPUT PORTB.7",
                 {"\tMovlw 6", "\tMov@wf FSR", "\tMovlw 128", "\tF@C o@bi"}}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Pulses, PinCommandCode,
    testing::Values(
        CodeCase{"PulsoutConstant", "PULSOUT PORTB.1, 1000",
                 join({{"\tMovlw 232", "\tMov@wf PP0", "\tMovlw 3", "\tMov@wf PP0H"},
                       kFsrB1,
                       {"\tF@C p@out"}})},
        CodeCase{"PulsoutHigh", "PULSOUT PORTB.1, W1, HIGH",
                 join({{"\tMov@fw W1", "\tMov@wf PP0", "\tMov@fw W1H", "\tMov@wf PP0H",
                        "\tBc@f TRISB,1", "\tBc@f PORTB,1"},
                       kFsrB1,
                       {"\tF@C p@out"}})},
        CodeCase{"PulsoutLow", "PULSOUT PORTB.1, A, LOW",
                 join({{"\tMov@fw _A", "\tMov@wf PP0", "\tClr@F PP0H", "\tBc@f TRISB,1",
                        "\tBs@f PORTB,1"},
                       kFsrB1,
                       {"\tF@C p@out"}})},
        CodeCase{"PulsoutOtherWord", "PULSOUT PORTB.1, 5, OTHER",
                 join({{"\tMovlw 5", "\tMov@wf PP0", "\tClr@F PP0H"}, kFsrB1, {"\tF@C p@out"}})},
        CodeCase{
            "PulsoutElement", "PULSOUT PORTB.1, ARR[1]",
            join({{"\tMov@fw ARR#1", "\tMov@wf PP0", "\tClr@F PP0H"}, kFsrB1, {"\tF@C p@out"}})},
        CodeCase{
            "PulsoutExpression", "PULSOUT PORTB.1, A + 1",
            join({{"\tMovlw 1", "\tAddwf@W _A", "\tMov@wf PP0", "\tClr@F PP0H", "\tRlf@F PP0H"},
                  kFsrB1,
                  {"\tF@C p@out"}})},
        CodeCase{"PwmBitAndWord",
                 "PWM PORTB.2, F, W1",
                 {"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tMov@wf PP1", "\tMov@fw W1",
                  "\tMov@wf PP0", "\tMov@fw W1H", "\tMov@wf PP0H", "\tMovlw 6", "\tMov@wf FSR",
                  "\tMovlw 4", "\tF@C PWM"}},
        CodeCase{"ServoConstant",
                 "SERVO PORTB.4, 1500",
                 {"\tBc@f TRISB,4", "\tBs@f PORTB,4", "\tMovlw 5", "\tMov@wf PP0H", "\tMovlw 220",
                  "\tF@C dlus@w", "\tBc@f PORTB,4"}},
        // Never in line, however short.
        CodeCase{"ServoOnABit",
                 "SERVO F, 100",
                 {"\tBs@f B@VR1,0", "\tMovlw 100", "\tF@C dl@us", "\tBc@f B@VR1,0"}},
        CodeCase{
            "ServoShort",
            "SERVO PORTB.4, 2",
            {"\tBc@f TRISB,4", "\tBs@f PORTB,4", "\tMovlw 2", "\tF@C dl@us", "\tBc@f PORTB,4"}},
        CodeCase{"PulsinToByte", "A = PULSIN PORTB.0, HIGH",
                 join({{"\tMovlw 1", "\tMov@wf PP0"},
                       kFsrB0,
                       {"\tF@C p@in", "\tMov@fw PP0", "\tMov@wf _A"}})},
        CodeCase{
            "PulsinToWord", "W1 = PULSIN PORTB.0, 5",
            join({{"\tMovlw 1", "\tMov@wf PP0"},
                  kFsrB0,
                  {"\tF@C p@in", "\tMov@fw PP0", "\tMov@wf W1", "\tMov@fw PP0H", "\tMov@wf W1H"}})},
        CodeCase{"PulsinToBit", "F = PULSIN PORTB.0, 0",
                 join({{"\tClr@F PP0"}, kFsrB0, {"\tF@C p@in", "\tByte_Bit PP0,B@VR1,0"}})},
        CodeCase{"RcinLow",
                 "W1 = RCIN PORTB.2, LOW",
                 {"\tClr@F PP0", "\tMovlw 6", "\tMov@wf FSR", "\tMovlw 4", "\tF@C crin",
                  "\tMov@fw PP0", "\tMov@wf W1", "\tMov@fw PP0H", "\tMov@wf W1H"}},
        CodeCase{"PotToWord",
                 "W1 = POT PORTB.5, W1",
                 {"\tMov@fw W1", "\tMov@wf PP2", "\tMovlw 6", "\tMov@wf FSR", "\tMovlw 32",
                  "\tF@C pot", "\tMov@wf W1", "\tClr@F W1H"}},
        CodeCase{"PotToBit",
                 "F = POT PORTB.5, 1",
                 {"\tMovlw 1", "\tMov@wf PP2", "\tMovlw 6", "\tMov@wf FSR", "\tMovlw 32",
                  "\tF@C pot", "\tWreg_Bit B@VR1,0"}},
        CodeCase{"CounterToWord", "W1 = COUNTER PORTB.0, W1",
                 join({{"\tMov@fw W1", "\tMov@wf PP1", "\tMov@fw W1H", "\tMov@wf PP1H"},
                       kFsrB0,
                       {"\tF@C count", "\tMov@wf W1", "\tMov@fw PP1H", "\tMov@wf W1H"}})},
        CodeCase{"CounterToElement", "ARR[1] = COUNTER PORTB.0, 10",
                 join({{"\tMovlw 10", "\tMov@wf PP1", "\tClr@F PP1H"},
                       kFsrB0,
                       {"\tF@C count", "\tMov@wf PP7", "\tMov@fw PP1H", "\tMov@wf PP7H",
                        "\tMov@fw PP7", "\tMov@wf ARR#1"}})},
        CodeCase{
            "PulsinToVariableElement", "ARR[A] = PULSIN PORTB.0, 1",
            join({{"\tMovlw 1", "\tMov@wf PP0"},
                  kFsrB0,
                  {"\tF@C p@in", "\tMov@fw PP0", "\tMov@wf PP7", "\tMov@fw PP0H", "\tMov@wf PP7H",
                   "\tMov@fw _A", "\tAddlw ARR", "\tMovwf FSR", "\tMov@fw PP7", "\tMovwf INDF"}})}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Tones, PinCommandCode,
    testing::Values(
        CodeCase{"SoundPairs", "SOUND PORTB.0, [100, 10, 50, ARR[1]]",
                 join({kGenB0,
                       {"\tMovlw 100", "\tMov@wf PP1", "\tMovlw 10", "\tF@C Noise", "\tMovlw 50",
                        "\tMov@wf PP1", "\tMov@fw ARR#1", "\tF@C Noise"}})},
        CodeCase{"FreqoutOneTone", "FREQOUT PORTB.0, 100, 1000",
                 join({kGenB0,
                       {"\tMovlw 100", "\tMov@wf GEN2", "\tClr@F GEN2H", "\tMovlw 232",
                        "\tMov@wf PP2", "\tMovlw 3", "\tMov@wf PP2H", "\tF@C fr@out1"}})},
        CodeCase{"FreqoutTwoTones",
                 "FREQOUT PORTB.1, W1, A, K",
                 {"\tMovlw 6", "\tMov@wf GEN", "\tMovlw 2", "\tMov@wf GENH", "\tMov@fw W1",
                  "\tMov@wf GEN2", "\tMov@fw W1H", "\tMov@wf GEN2H", "\tMov@fw _A", "\tMov@wf PP2",
                  "\tClr@F PP2H", "\tMovlw 44", "\tMov@wf PP7", "\tMovlw 1", "\tMov@wf PP7H",
                  "\tF@C fr@outc"}},
        CodeCase{"DtmfDefaults", "DTMFOUT PORTA.0, [1,2,3]",
                 join({kGenA0,
                       kDtmfDefaults,
                       {"\tMovlw 1", "\tF@C dtmf@o", "\tMovlw 2", "\tF@C dtmf@o", "\tMovlw 3",
                        "\tF@C dtmf@o"}})},
        CodeCase{"DtmfOnTime", "DTMFOUT PORTA.0, 100, [5]",
                 join({kGenA0,
                       {"\tMovlw 100", "\tMov@wf GEN2", "\tClr@F GEN2H", "\tMovlw 50",
                        "\tMov@wf GEN4", "\tClr@F GEN4H", "\tMovlw 5", "\tF@C dtmf@o"}})},
        CodeCase{"DtmfBothTimes", "DTMFOUT PORTA.0, 100, 20, [A]",
                 join({kGenA0,
                       {"\tMovlw 100", "\tMov@wf GEN2", "\tClr@F GEN2H", "\tMovlw 20",
                        "\tMov@wf GEN4", "\tClr@F GEN4H", "\tMov@fw _A", "\tF@C dtmf@o"}})}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Sleep, PinCommandCode,
    testing::Values(CodeCase{"SleepAlone", "SLEEP", {"\tSleep"}},
                    CodeCase{"SleepByte", "SLEEP 10", {"\tMovlw 10", "\tF@C dl@s"}},
                    CodeCase{"SleepWord",
                             "SLEEP W1",
                             {"\tMov@fw W1H", "\tMov@wf PP3H", "\tMov@fw W1", "\tF@C dl@sw"}},
                    CodeCase{"SleepWide",
                             "SLEEP 300",
                             {"\tMovlw 1", "\tMov@wf PP3H", "\tMovlw 44", "\tF@C dl@sw"}},
                    CodeCase{"SnoozeKeyword", "SNOOZE 2S", {"\tMovlw 6", "\tF@C sn@ze"}},
                    CodeCase{"SnoozeFirstKeyword", "SNOOZE 18MS", {"\tClrw", "\tF@C sn@ze"}},
                    CodeCase{"SnoozeWordLowByte", "SNOOZE W1", {"\tMov@fw W1", "\tF@C sn@ze"}},
                    CodeCase{"SnoozeBit",
                             "SNOOZE F",
                             {"\tClrw", "\tBtf@sc B@VR1,0", "\tMovlw 1", "\tF@C sn@ze"}},
                    CodeCase{"SnoozeExpression", "SNOOZE A + 1", {"\tIncf@W _A", "\tF@C sn@ze"}}),
    caseName);

class PinCommandMessages : public StatementMessageTest {};

TEST_P(PinCommandMessages, Reported) {
    expectMessage(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    All, PinCommandMessages,
    testing::Values(
        MessageCase{"HighEmpty", "HIGH", "Syntax Error"},
        MessageCase{"ToggleElement", "TOGGLE ARR[1]", "ARRAY variables not supported in TOGGLE"},
        MessageCase{"InputByte", "INPUT A", "Must be a PORT.BIT declaration for the INPUT pin"},
        MessageCase{"OutputWord", "OUTPUT W1", "Must be a PORT.BIT declaration for the OUTPUT pin"},
        MessageCase{"PulsoutPin", "PULSOUT A, 5",
                    "Must be a PORT.BIT declaration for the PULSOUT pin"},
        MessageCase{"PulsoutNoPeriod", "PULSOUT PORTB.1,", "Syntax Error"},
        MessageCase{"PulsoutNoComma", "PULSOUT PORTB.1 5", "Comma missing"},
        MessageCase{"PwmPin", "PWM 5, 1, 1", "Must be a PORT.BIT declaration for the PWM pin"},
        MessageCase{"HpwmChannel", "HPWM A, 1, 2", "Must be a constant value for the HPWM channel"},
        MessageCase{"ServoPin", "SERVO A, 1", "Must be a PORT.BIT declaration for the SERVO pin"},
        MessageCase{"SoundPin", "SOUND A, [1,2]",
                    "Must be a PORT.BIT declaration for the output pin"},
        // A routine would turn a BIT variable "around" in the RAM above it.
        MessageCase{"SoundOnABit", "SOUND F, [1,2]",
                    "Must be a PORT.BIT declaration for the output pin"},
        MessageCase{"FreqoutOnAWordBit", "FREQOUT W1.9, 1, 2",
                    "Must be a PORT.BIT declaration for the FREQOUT output pin"},
        MessageCase{"InputOnABit", "INPUT F", "Must be a PORT.BIT declaration for the INPUT pin"},
        MessageCase{"SoundBracket", "SOUND PORTB.0, 100", "'[' missing"},
        MessageCase{"SoundUnclosed", "SOUND PORTB.0, [100, 10, 50", "']' missing"},
        MessageCase{"SoundStray", "SOUND PORTB.0, [100, 10 X", "Comma missing"},
        MessageCase{"FreqoutPin", "FREQOUT A, 1, 2",
                    "Must be a PORT.BIT declaration for the FREQOUT output pin"},
        MessageCase{"BitOfABit", "DTMFOUT F.9, [1]", "The variable is already a BIT type"},
        MessageCase{"DtmfoutPin", "DTMFOUT 5, [1]",
                    "Must be a PORT.BIT declaration for the DTMFOUT output pin"},
        MessageCase{"DtmfoutNoBracket", "DTMFOUT PORTA.0, 100, 20, A", "'[' missing"},
        MessageCase{"DtmfoutEmptyDigit", "DTMFOUT PORTA.0, [1,]", "Syntax Error"},
        MessageCase{"PulsinPin", "A = PULSIN A, 1",
                    "Must be a PORT.BIT declaration for the PULSIN pin"},
        MessageCase{"RcinPin", "A = RCIN A, 1", "Must be a PORT.BIT declaration for the RCIN pin"},
        MessageCase{"RcinState", "A = RCIN PORTB.2, A",
                    "Must be a CONSTANT declaration for the STATE"},
        MessageCase{"PulsinStateExpression", "A = PULSIN PORTB.2, 1 + 1",
                    "Must be a CONSTANT declaration for the STATE"},
        MessageCase{"PotPin", "A = POT A, 1", "Must be a PORT.BIT declaration for the POT pin"},
        MessageCase{"CounterPin", "A = COUNTER A, 1",
                    "Must be a PORT.BIT declaration for the COUNT pin"},
        MessageCase{"CounterNoPeriod", "A = COUNTER PORTB.0,", "Syntax Error"},
        MessageCase{"LaterFunction", "A = PIXEL", "Function 'PIXEL' is not supported yet"},
        MessageCase{"SnoozeEmpty", "SNOOZE", "Syntax Error"}),
    caseName);

// The statements that sleep on the watchdog refuse to compile without it;
// a plain SLEEP does not need it. A device with one port names TRISIO.
TEST(PinCommandDevices, WatchdogAndSinglePortDevices) {
    const std::string off = "DEVICE 16F84\nCONFIG XT_OSC, WDT_OFF, PWRTE_ON\n";
    EXPECT_TRUE(compileSource(off + "SLEEP\nEND").messages.empty());
    EXPECT_EQ(compileSource(off + "SLEEP 10\nEND").messages,
              Lines{frame(3, "SLEEP 10", "WATCHDOG fuse disabled with CONFIG directive")});
    EXPECT_EQ(compileSource(off + "SNOOZE 1S\nEND").messages,
              Lines{frame(3, "SNOOZE 1S", "WATCHDOG fuse disabled in CONFIG directive")});
    EXPECT_EQ(linesAfter("DEVICE 12F675\n", "DEVICE 12F675\nHIGH GPIO.0"),
              (Lines{"\tBc@f TRISIO,0", "\tBs@f GPIO,0"}));
    // The timed routines need one of the six crystals.
    const std::string xtal6 = "DEVICE 16F877\nDECLARE XTAL 6\nDIM A AS BYTE\n";
    const char* timed =
        "Delays are timed for crystals of 4, 8, 10, 12, 16 and 20 MHz only (XTAL is 6)";
    for (const char* statement :
         {"A = POT PORTB.0, 1", "DTMFOUT PORTB.0, [1]", "PULSOUT PORTB.0, 5",
          "SOUND PORTB.0, [1, 1]", "A = COUNTER PORTB.0, 1"})
        EXPECT_EQ(compileSource(xtal6 + statement + "\nEND").messages,
                  Lines{frame(4, statement, timed)});
    // A name that spells the label of a routine the program uses.
    const std::string count = "DEVICE 16F877\nDIM COUNT AS BYTE\n";
    EXPECT_TRUE(compileSource(count + "COUNT = 1\nEND").messages.empty());
    EXPECT_EQ(compileSource(count + "COUNT = COUNTER PORTB.0, 1\nEND").messages,
              Lines{"\t\t*** 'COUNT' is also the label of a runtime routine this program uses (the "
                    "assembler ignores case). Rename it ***"});
    // HPWM needs the CCP module of its channel.
    const std::string ccp = "DEVICE 16F877\nDIM A AS BYTE\nDIM W1 AS WORD\n";
    EXPECT_EQ(linesAfter(ccp, ccp + "HPWM 2, A, W1"),
              (Lines{"\tMov@fw _A", "\tMov@wf GEN", "\tMov@fw W1", "\tMov@wf PP1", "\tMov@fw W1H",
                     "\tMov@wf PP1H", "\tMovlw 2", "\tF@C H@PWM"}));
    EXPECT_EQ(compileSource(ccp + "HPWM 3, 1, 1000\nEND").messages,
              Lines{frame(4, "HPWM 3, 1, 1000", "The HPWM channel is 1 (CCP1) or 2 (CCP2)")});
    EXPECT_EQ(compileSource("DEVICE 16F84\nHPWM 1, 1, 1000\nEND").messages,
              Lines{frame(2, "HPWM 1, 1, 1000",
                          "HPWM channel 1 needs a CCP module, which 16F84 does not have")});
}

} // namespace
} // namespace zorvel::test
