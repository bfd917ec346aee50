// Variables, constants and aliases: the RAM allocator, DIM, SYMBOL and the
// numbered temporaries the generators borrow.
#pragma once

#include "compiler/frontend/builtin_statements.h"

#include <optional>
#include <span>
#include <string>

namespace zorvel {

class Compilation;

std::span<const Route> declarationRoutes();

// Reads the name that DEFINE, or DECLARE with a key it does not know, hands
// to the assembler's #define: one valid name, defined once, and no name the
// program or the assembler already uses. Reports and returns false otherwise;
// the cursor stays where it was.
bool claimDefineName(Compilation& c);

// Writes a line that declares a name (an equate, a #define, a temporary). While a
// macro body is compiled the line goes in front of the macro's header: the
// assembler would define the name only where the macro is used, and once per use.
void emitDeclaration(Compilation& c, std::string line);

// Places one RAM byte (after the bank gap skip); nullopt when RAM is full.
std::optional<int> placeByte(Compilation& c);

// A numbered temporary "N@VAR<n>" of the given kind (byte or word); hand it
// back with releaseTemporary when done.
std::string requestTemporary(Compilation& c, int kind);
void releaseTemporary(Compilation& c);

} // namespace zorvel
