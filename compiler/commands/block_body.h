// The bodies of the block statements (IF, FOR, WHILE, REPEAT): compiled by
// the line compiler, which stops at a closing keyword (ELSE, ENDIF, NEXT,
// WEND, UNTIL) and leaves it as the current keyword for the statement that
// waits for it.
#pragma once

#include <string_view>

namespace zorvel {

class Compilation;

// True when a statement follows on the line (not the end, not a comment).
bool textFollows(Compilation& c);

// Compiles the statements from the cursor to the end of the line, or up to
// a closing keyword.
void compileRestOfLine(Compilation& c);

// Compiles the lines after the current one until a closing keyword or the
// end of the source.
void compileFollowingLines(Compilation& c);

// Compiles the rest of the line and, unless it closed the block already,
// the following lines. True when the body ended at `closer`.
bool compileBody(Compilation& c, std::string_view closer);

// True when the current keyword is `closer`; it is then cleared as handled.
bool takeCloser(Compilation& c, std::string_view closer);

// Reports a block that was not closed, against the line that opened it:
// `text` begins with "]" ("] IF without ENDIF").
void reportUnclosed(Compilation& c, int openingLine, std::string_view text);

} // namespace zorvel
