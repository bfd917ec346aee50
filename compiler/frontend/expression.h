// The expression evaluator: parses the right-hand side of an assignment (or
// any operand expression) with its precedence levels, folds constants, and
// dispatches every binary operation to its type-pair generator.
#pragma once

#include "compiler/frontend/symbols.h"

#include <string>

namespace zorvel {

class Compilation;

// An operand as the generators see it.
struct Value {
    std::string name;     // output text: a variable, a constant's decimal value, "PP7", "WREG"
    int kind = kKindByte; // kKindByte, kKindWord, kKindBit, kKindNum or kKindWreg
    int bit = -1;         // BIT only
};

// Compiles the expression at the cursor into `destination`. The expression
// ends at the end of the statement, at a lone "<", ">" or "=" (a comparison),
// at a comma, or at a word that is not an operator (TO, STEP, THEN).
void compileExpression(Compilation& c, const Value& destination);

} // namespace zorvel
