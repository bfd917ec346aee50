// The statement generators of the command files, one route table per file.
#pragma once

#include "compiler/frontend/builtin_statements.h"

#include <span>

namespace zorvel {

std::span<const Route> assignmentRoutes(); // LET, INC, DEC, SWAP (assignment.cpp)
// A statement that begins with a name: "target = expression".
void compileAssignment(Compilation& c);
std::span<const Route> conditionRoutes(); // IF (if_statement.cpp)
std::span<const Route> loopRoutes();      // FOR, WHILE, REPEAT (loops.cpp)
std::span<const Route> jumpRoutes();      // GOTO, GOSUB, CALL, RETURN, POKE (jumps.cpp)
std::span<const Route> timingRoutes();    // PAUSE, DELAYMS, PAUSEUS, DELAYUS (timing.cpp)
// PIC16 instructions with BASIC operands and the pseudo-instructions (inline_mnemonics.cpp).
std::span<const Route> mnemonicRoutes();

} // namespace zorvel
