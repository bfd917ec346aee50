// The statement generators of the command files, one route table per file.
#pragma once

#include "compiler/frontend/builtin_statements.h"
#include "compiler/frontend/expression.h"

#include <optional>
#include <span>

namespace zorvel {

std::span<const Route> assignmentRoutes(); // LET, INC, DEC, SWAP (assignment.cpp)
// A statement that begins with a name: "target = expression".
void compileAssignment(Compilation& c);
std::span<const Route> conditionRoutes(); // IF (if_statement.cpp)
std::span<const Route> loopRoutes();      // FOR, WHILE, REPEAT (loops.cpp)
std::span<const Route> jumpRoutes();      // GOTO, GOSUB, CALL, RETURN, POKE (jumps.cpp)
std::span<const Route> timingRoutes();    // PAUSE, DELAYMS, PAUSEUS, DELAYUS (timing.cpp)
std::span<const Route> strRoutes();       // STR (str.cpp)
// PIC16 instructions with BASIC operands and the pseudo-instructions (inline_mnemonics.cpp).
std::span<const Route> mnemonicRoutes();

// User macros (macros.cpp): ENDM, EXITM, #LOCAL and the type-pair statements.
std::span<const Route> macroRoutes();
// The "name MACRO p1, p2, ..." line.
void compileMacroDeclaration(Compilation& c);
// Whether the statement keyword calls a macro (or names nothing known).
bool isMacroStatement(Compilation& c);
void compileMacroCall(Compilation& c);
// Whether the word at the cursor is a declared macro.
bool macroFollows(Compilation& c);
// A macro call at the cursor whose result goes to `dest`.
void compileMacroValue(Compilation& c, const Value& dest);
// A macro call as a condition operand, its result in the WORD `registerName`.
std::optional<Value> compileMacroOperand(Compilation& c, const char* registerName);

} // namespace zorvel
