// The need marks of the runtime subroutines. A generator that emits a call of
// a routine marks its group; the library writer writes exactly the marked
// groups, in the order of their numbers.
#pragma once

#include <string>

namespace zorvel {

class Compilation;

// Routine groups, numbered in writing order.
enum class Group : int {
    Cos = 1,
    Sin,
    FreqOut,
    DtmfOut,
    PutArray,
    GetArray,
    FindAddress,
    Inkey,
    Compare, // t@eb .. t@st; see needTest for the entries
    Counter,
    Cls,
    Cursor,
    LcdCursor,
    Bin,
    Hex,
    Dec,
    SendDigit,
    StringOneBank,
    StringAcrossBanks,
    Rep,
    Print,
    BusIn,
    BusOut,
    SerIn,
    SerOut,
    SerialBit,
    RsoutLabel,
    Rsout,
    RsinTimeout,
    Rsin,
    RsinStart,
    BitDelay,
    Dispatcher,
    Hpwm,
    Pwm,
    Pulsout,
    Pulsin,
    Pot,
    Rcin,
    EdgeCount,
    Eread,
    Ewrite,
    CodeString,
    Cread,
    Cwrite,
    Adin,
    Sound,
    Random,
    Shin,
    Shout,
    ShiftClock,
    Snooze,
    SleepPeriod,
    DelayMs,
    DelayUs,
    Lookup,
    Toggle,
    PinMask,
    BitTable,
    Dig,
    Divide,
    Multiply,
    ReverseBits,
    ShiftLeft,
    ShiftRight,
    Negate,
    IncrementPP0,
    InputPin,
    BitsHigh,
    BitsLow,
    InvertOut,
    OutputPin,
    CommonExit, // 73
};

void need(Compilation& c, Group group);
bool needed(const Compilation& c, Group group);

// The six relations of the word comparison routines, in the order the
// library writes them, and their three entries each.
enum class Test { Equal, GreaterEqual, Greater, LessEqual, Less, NotEqual };
enum class TestEntry { Byte, Word, Full };

// Marks one entry of the comparison group ("t@ge", "t@ltb", ...).
void needTest(Compilation& c, Test test, TestEntry entry);
bool neededTest(const Compilation& c, Test test, TestEntry entry);
// The entry's label: "t@e" + "b"/"w"/"" for Equal, and so on.
std::string testLabel(Test test, TestEntry entry);

} // namespace zorvel
