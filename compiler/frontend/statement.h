// The statement head: the label and the keyword of each statement, read
// before the dispatcher (compiler/commands/command_table.cpp) routes it.
#pragma once

#include <string_view>

namespace zorvel {

class Compilation;

using StatementHandler = void (*)(Compilation&);

// Reads the label (if any) and the keyword of the statement at the cursor.
void readStatementHead(Compilation& c);

// True for ELSE, ENDIF, WEND, NEXT and UNTIL, which end a block body.
bool isBlockClosingKeyword(std::string_view keyword);

// True when the next word at the cursor is a block-closing keyword: it ends
// the statement before it as a ":" would (IF A THEN X = 1 ELSE X = 2).
bool closingKeywordFollows(Compilation& c);

// Writes the source line as a comment once per line when remarks are on.
void remarksEcho(Compilation& c);

} // namespace zorvel
