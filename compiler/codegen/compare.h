// The comparison jumps: for each relation and each pair of operand kinds
// (BYTE, WORD, BIT, constant) a short sequence that jumps to a label when
// the relation holds between the two operands. Conditions never build a
// truth value; they jump away when the written comparison is false.
#pragma once

#include "compiler/frontend/expression.h"

#include <string_view>

namespace zorvel {

class Compilation;

// The relation under which the jump is taken.
enum class Relation { Equal, NotEqual, GreaterEqual, LessEqual, Greater, Less };

// The same relation with the operands swapped (a < b is b > a).
Relation mirrored(Relation r);

// The relation that holds exactly when `r` does not.
Relation negated(Relation r);

// Emits code that jumps to `label` when `left r right` holds. Operands are
// BYTE, WORD, BIT or constant (kKindNum, decimal text in `name`).
void emitJumpIf(Compilation& c, Relation r, const Value& left, const Value& right,
                std::string_view label);

} // namespace zorvel
