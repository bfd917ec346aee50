// Reading working lines into the line buffers and compiling them in order.
#pragma once

namespace zorvel {

class Compilation;

// Loads the working line at lineIndex; false for an empty line or at the limit.
bool readLine(Compilation& c);

enum class LoopExit { Finished, ClosingKeyword };

// Compiles lines from lineIndex on. Re-entrant: block statements call it for
// their bodies, and it returns (in pass 2) at ELSE, ENDIF, WEND, NEXT or UNTIL.
LoopExit lineLoop(Compilation& c);

} // namespace zorvel
