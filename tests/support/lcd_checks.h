// Checks of PRINT, CLS, CURSOR, the number and string formatters and INKEY
// in the simulator, shared by the execution tests (4 and 20 MHz) and the
// crystal sweep. Each compiles a 16F877 program, wires an HD44780 (or a 4x4
// keypad) to its pins, runs it case by case and reports every case that
// differs from the reference through gtest, with its input; the returned
// line holds the measured figures.
#pragma once

#include <string>
#include <vector>

namespace zorvel::test {

// How the display hangs on the device.
enum class LcdBus {
    FourBitHigh, // the default pins: D4-D7 on RB4-RB7, RS on RB3, E on RB2
    FourBitLow,  // D4-D7 on RD0-RD3, RS on RD4, E on RD5
    EightBit,    // D0-D7 on RD0-RD7, RS on RC0, E on RC1
};
const char* busName(LcdBus bus);

// PRINT with text, constant and variable AT, constant and variable CURSOR,
// raw 254 commands (cursor, home) and CLS on a display of `lines` lines (16 columns, 20
// with 4 lines): the text must stand where the cursor addresses put it, the
// initialisation must be the documented one, and the display must see no
// write while busy and no bus timing breach. Returns the measured E pulse
// and waits.
std::string checkDisplay(int mhz, LcdBus bus, int lines);

// The operands the formatters are checked with: a BYTE, WORD and BIT
// variable, an element of a BYTE array at a variable index, the sum of two
// WORDs, and POT reading an RC network (a function, 0 to 255).
enum class Operand { Byte, Word, Bit, Element, Expression, Function };
const char* operandName(Operand operand);

// DEC, DEC1..DEC5, HEX, HEX1..HEX4, @, BIN, BIN1, BIN3, BIN8, BIN9, BIN16 and
// the plain value of one operand kind, for 0, 1, 9, 10, 255, 256, 65535 (as
// far as the operand holds them) and `randoms` random values (fixed seed):
// the display's DDRAM must hold exactly the reference text.
std::string checkFormatters(int mhz, Operand operand, int randoms);

// REP with variable and constant characters and counts (0 to 255), STR of
// arrays in one bank, across the bank gaps and above address 255, with and
// without a count, stopping at a 0 byte; HEX4, DEC5, DEC3, BIN16, BIN9 and @
// of constants, small ones after a large one (no high byte left behind).
std::string checkRepeatsAndStrings(int mhz, int randoms);

// INKEY on a keypad on PORTB (no pull-up resistors: the port's weak
// pull-ups, which INKEY switches on) or PORTD (resistors on the keypad):
// each key alone gives its number, none gives 16, two keys the lower.
std::string checkKeypad(int mhz, bool portB);

} // namespace zorvel::test
