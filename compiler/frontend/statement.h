// Statement dispatch: splits a line into statements, reads each statement's
// label and keyword, and routes it to the generator that compiles it.
#pragma once

#include <string_view>
#include <vector>

namespace zorvel {

class Compilation;

using StatementHandler = void (*)(Compilation&);

// Compiles every statement of the current working line (cursor at 0).
void compileStatementsOfLine(Compilation& c);

// Reads the label (if any) and the keyword of the statement at the cursor.
void readStatementHead(Compilation& c);

// Routes the statement whose keyword is in the keyword buffer.
void dispatchStatement(Compilation& c);

// The generator of a keyword, or nullptr when the statement is an assignment.
StatementHandler findRoute(std::string_view keyword);

// Every keyword the dispatcher routes to a generator (the statements that
// compile, and those reported as not supported yet).
std::vector<std::string_view> routedKeywords();

// True for ELSE, ENDIF, WEND, NEXT and UNTIL, which end a block body.
bool isBlockClosingKeyword(std::string_view keyword);

// True when the next word at the cursor is a block-closing keyword: it ends
// the statement before it as a ":" would (IF A THEN X = 1 ELSE X = 2).
bool closingKeywordFollows(Compilation& c);

// Writes the source line as a comment once per line when remarks are on.
void remarksEcho(Compilation& c);

} // namespace zorvel
