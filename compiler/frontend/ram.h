// The RAM allocator, the names DEFINE claims and the numbered temporaries
// the generators borrow.
#pragma once

#include "compiler/frontend/symbols.h"

#include <optional>
#include <string>
#include <vector>

namespace zorvel {

class Compilation;

// Reads the name that DEFINE, or DECLARE with a key it does not know, hands
// to the assembler's #define: one valid name, defined once, and no name the
// program or the assembler already uses. Reports and returns false otherwise;
// the cursor stays where it was.
bool claimDefineName(Compilation& c);

// Writes a line that declares a name (an equate, a #define, a temporary). While a
// macro body is compiled the line goes in front of the macro's header: the
// assembler would define the name only where the macro is used, and once per use.
void emitDeclaration(Compilation& c, std::string line);

// Moves an address that has run past a bank's RAM to the next bank's start,
// and past a byte that holds an interrupt save byte.
int gapSkip(const Compilation& c, int address);

// Counts against the RAM the device leaves for variables; reports "Too Many
// Variables" and returns false when it is used up.
bool belowVariableLimit(Compilation& c);
// Places `count` bytes; on failure nothing is placed and the error is reported.
std::optional<std::vector<int>> placeBytes(Compilation& c, int count);
// Adds a symbol, reporting a full symbol table.
bool addSymbol(Compilation& c, SymbolEntry entry);

// Places one RAM byte (after the bank gap skip); nullopt when RAM is full.
std::optional<int> placeByte(Compilation& c);

// A numbered temporary "N@VAR<n>" of the given kind (byte or word); hand it
// back with releaseTemporary when done.
std::string requestTemporary(Compilation& c, int kind);
void releaseTemporary(Compilation& c);

} // namespace zorvel
