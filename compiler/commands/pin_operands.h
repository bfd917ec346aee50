// What the pin, pulse and tone commands share: reading a pin operand, the two
// ways of handing a pin to a runtime routine, the byte and word parameter
// loaders, and the stores of a measuring function's result.
#pragma once

#include "compiler/frontend/expression.h"
#include "compiler/library/runtime_marks.h"

#include <optional>
#include <string>
#include <string_view>

namespace zorvel {

class Compilation;

// A port bit (or, for the commands that drive it in line, a BIT variable):
// the register the output names, its file register address, and the bit
// 0..7 within it.
struct Pin {
    std::string reg;
    int address = 0;
    int bit = 0;
    int mask() const { return 1 << bit; }
};

// Reads the operand at the cursor as a pin; reports `message` (or "Syntax
// Error" when there is no operand) and returns nullopt otherwise. A pin that
// a runtime routine turns around through its direction register must be a
// port bit (`portOnly`); a BIT variable would have the routine write into the
// RAM 128 bytes above it.
std::optional<Pin> readPin(Compilation& c, std::string_view message, bool portOnly = true);

// Consumes a "," or reports "Comma missing".
bool readComma(Compilation& c);
// Consumes a "," when one follows.
bool skipComma(Compilation& c);

// The direction register of a port register ("TRISB", or "TRISIO" on a
// device whose only port is GPIO), or "" when `reg` is not a port of the device.
std::string directionRegister(Compilation& c, std::string_view reg, int address);

// FSR form: the pin's register address into FSR, the bit mask into W, then
// the call of `routine`, marking `group`.
void emitFsrForm(Compilation& c, const Pin& pin, std::string_view routine, Group group);
// GEN form: the register address into GEN and the bit mask into GENH. (A
// bit of a WORD's high byte would be written "low (NAME+1)"; pins are port
// bits, so the address is always a number.)
void emitGenForm(Compilation& c, const Pin& pin);

// The byte parameter loader: the operand at the cursor into the system
// variable `target`, or into W when `target` is "W". A WORD array element
// operand is refused with the ARRAY error of `keyword`, unless `wordArrayAsByte`.
bool loadByte(Compilation& c, std::string_view target, std::string_view keyword,
              bool wordArrayAsByte = false);
// The word parameter loader: the operand into `target` and `target` + "H".
bool loadWord(Compilation& c, std::string_view target, std::string_view keyword);

// Whether the crystal is one the timed routines are written for (4, 8, 10,
// 12, 16 or 20 MHz); reports an error otherwise.
bool checkTimedCrystal(Compilation& c);

// W <- a literal: "Movlw n", or "Clrw" for 0.
void literalToW(Compilation& c, int value);

// The stores of a function's result into its destination.
void storeFromPP0(Compilation& c, const Value& dest);      // PP0/PP0H
void storeFromW(Compilation& c, const Value& dest);        // W
void storeFromWAndPP1H(Compilation& c, const Value& dest); // W, high byte in PP1H

} // namespace zorvel
