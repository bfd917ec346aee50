// What the operation generators share: the operation record, the byte parts
// of an operand, and the loads and stores around W and the word registers.
#pragma once

#include "compiler/codegen/arithmetic.h"
#include "compiler/codegen/emit.h"

#include <string>
#include <string_view>

namespace zorvel {

struct Operation {
    int op;
    Value a; // left operand
    Value b; // right operand
    Value d; // result
};

bool isRegister(const Value& v); // BYTE or WORD
int constantOf(const Value& v);  // a NUM operand's value
std::string highName(std::string_view name);

// Whether two operands are registers at the same RAM address.
bool sameRegister(const Compilation& c, const Value& x, const Value& y);

// One byte of an operand: a register, a constant, or a bit (0 or 1).
struct BytePart {
    enum Kind { Register, Constant, Bit } kind = Constant;
    std::string name;
    int value = 0; // Constant: 0..255
    int bit = -1;  // Bit
    bool isZero() const { return kind == Constant && value == 0; }
};

BytePart lowPart(const Value& v);
BytePart highPart(const Value& v); // BYTE, BIT: the constant 0

void loadW(Compilation& c, const BytePart& part);
// For a commutative operation on two byte parts: whether x goes to W first.
// A constant goes to W first, then a register; a bit is applied last unless
// the other part is a constant.
bool loadsFirst(const BytePart& x, const BytePart& y);
// Stores an 8-bit result held in W into the result (a WORD gets a clear high byte).
void storeW(Compilation& c, const Value& d);
// Any operand into a word register such as PP0.
void loadWord(Compilation& c, const Value& v, std::string_view reg);
// A word register's value into the result, truncated to its kind.
void storeWord(Compilation& c, std::string_view reg, const Value& d);

// The plain increment or decrement of a register whose bank is selected
// ("\t Incf " + name + ",F"), fit to follow a skip.
void emitPlainIncf(Compilation& c, std::string_view reg);
void emitPlainDecf(Compilation& c, std::string_view reg);

// A system word (PP0, PP1 or PP2) that none of the operation's operands
// lives in, free to hold a value for the length of one operation.
std::string scratchWord(const Compilation& c, const Operation& o);

// The generators by operator family.
void emitAdd(Compilation& c, const Operation& o);
void emitSubtract(Compilation& c, const Operation& o);
void emitAnd(Compilation& c, const Operation& o);
void emitOr(Compilation& c, const Operation& o);
void emitXor(Compilation& c, const Operation& o);
void emitMultiply(Compilation& c, const Operation& o);
void emitMultiplyHigh(Compilation& c, const Operation& o);
void emitMultiplyMiddle(Compilation& c, const Operation& o);
void emitDivide(Compilation& c, const Operation& o);
void emitRemainder(Compilation& c, const Operation& o);
void emitShiftLeft(Compilation& c, const Operation& o);
void emitShiftRight(Compilation& c, const Operation& o);

// A BIT result of a BIT operand combined with a constant, for the operators
// whose bit 0 depends only on the two bits 0: the bit is copied, inverted,
// set or cleared. Returns false when the operation is not of that form.
bool emitBitWithConstant(Compilation& c, const Operation& o);

} // namespace zorvel
