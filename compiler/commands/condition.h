// Conditions: one comparison of a left operand, a relational operator and a
// right operand, compiled into a jump taken when the comparison is false.
#pragma once

#include "compiler/codegen/compare.h"
#include "compiler/frontend/expression.h"

#include <optional>
#include <string_view>

namespace zorvel {

class Compilation;

// The left operand at the cursor. An expression of several terms, or a
// function, is evaluated into PP7 as a WORD. nullopt after a reported error.
std::optional<Value> parseLeftOperand(Compilation& c);

// The right operand at the cursor; an expression is evaluated into PP1.
std::optional<Value> parseRightOperand(Compilation& c);

// One name or constant (no expression): a BYTE, WORD, BIT or constant.
std::optional<Value> parseSingleOperand(Compilation& c);

// Reads a relational operator; the relation returned is the one under which
// the jump is taken, the opposite of the written one ("<" gives >=).
// Reports "Unknown operator" when there is none.
std::optional<Relation> readFalseRelation(Compilation& c);

// Reads the operator and the right operand and emits the jump to `label`
// taken when `left` (already parsed) and the right operand fail the written
// comparison. False after a reported error.
bool compileComparison(Compilation& c, const Value& left, std::string_view label);

// A whole condition: left operand, operator, right operand.
bool compileCondition(Compilation& c, std::string_view label);

} // namespace zorvel
