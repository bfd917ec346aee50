// Operand classification (names, numbers, byte parts, bit suffixes) and the
// pre-scan that tells whether an operand expression is constant.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zorvel {

class Compilation;

// Resolves an operand such as 100, COUNT, W.HIGHBYTE or PORTB.3 into the
// current operand. Returns whether it had a bit suffix, or nullopt after
// reporting a fault (misses are reported only when `report`).
std::optional<bool> classifyOperand(Compilation& c, bool report, std::string_view text);

// Scans the operand expression ahead without moving the cursor or emitting
// anything; fills the term scan record and returns the number of terms.
int countTerms(Compilation& c);

// Operand text handed to the assembler as written (LGOTO, TGOTO, BRSET, the
// type-pair statements) with each BASIC word in its assembler spelling: a
// declared variable by its own name (X is _X), a word's .HIGHBYTE/.BYTE1 as
// its high byte, a constant by its value, $hex and %binary numbers in decimal.
// Other words (labels, macro parameters, assembler symbols) stay as written.
std::string assemblerOperandText(Compilation& c, std::string_view text);

} // namespace zorvel
