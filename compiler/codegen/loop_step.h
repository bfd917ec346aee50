// The step code at the NEXT of a FOR loop: adds the step to (or subtracts it
// from) the loop variable and jumps back to the loop top, unless the
// variable ran past the end of its range; then it falls through to the exit.
#pragma once

#include "compiler/frontend/expression.h"

#include <string_view>

namespace zorvel {

class Compilation;

// `counter` is a BYTE or WORD variable; `step` a BYTE, WORD or constant
// (a constant step of a BYTE counter is at most 255).
void emitForStep(Compilation& c, const Value& counter, const Value& step, bool down,
                 std::string_view top);

} // namespace zorvel
