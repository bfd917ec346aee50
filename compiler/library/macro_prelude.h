// The macro prelude of the library file: the assembler macros that the code
// generators write instead of raw instructions (bank selection, context
// saving, banked single instructions, table offset, type-pair transfers, far
// calls and jumps, function results).
#pragma once

#include "compiler/library/library_text.h"

namespace zorvel {

// Appends the whole prelude in its fixed order: s@b, r@b, [consave, conres],
// the banked single-instruction macros with mov@lf and jump, [s@o], the
// type-pair macros, f@c, f@g, t@g and the four return macros.
void writeMacroPrelude(Compilation& c, LibraryOutput& out);

} // namespace zorvel
