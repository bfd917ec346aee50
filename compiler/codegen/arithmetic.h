// The binary operations of expressions: one generator for every combination
// of left kind, right kind and result kind (BYTE, NUM, BIT, WORD operands;
// WREG, BYTE, BIT, WORD results) and every operator.
#pragma once

#include "compiler/frontend/expression.h"

#include <optional>
#include <string>
#include <string_view>

namespace zorvel {

class Compilation;

// Operator indices, in the order of the dispatch.
enum OperatorIndex : int {
    kOpAdd = 0,
    kOpSubtract,
    kOpDivide,
    kOpRemainder,
    kOpMultiply,
    kOpMultiplyHigh,
    kOpMultiplyMiddle,
    kOpAnd,
    kOpOr,
    kOpXor,
    kOpShiftLeft,
    kOpShiftRight,
    kOperatorCount,
};

// The source token of an operator ("+", "//", "<<", ...).
std::string_view operatorToken(int opIndex);

// The six-letter type-pair code ("BTNMWD"); empty when a kind has no tag.
std::string typePairCode(const Value& left, const Value& right, const Value& result);

// Emits the code of `left op right`; returns false when it was refused into `result`. A BIT operand
// that the operator does not take is reported and nothing is emitted.
bool emitOperation(Compilation& c, int opIndex, const Value& left, const Value& right,
                   const Value& result);

// A constant into the result: masked to 8 bits for W and BYTE, bit 0 for a BIT.
void emitConstantResult(Compilation& c, int value, const Value& result);

// A single operand into the result, with the transfer of its pair of kinds
// (a WREG source is the value in W).
void emitTransfer(Compilation& c, const Value& from, const Value& to);

// The operation on two 16-bit values as the generated code computes it;
// nullopt for a division or remainder by zero.
std::optional<int> foldOperation(int opIndex, int left, int right);

} // namespace zorvel
