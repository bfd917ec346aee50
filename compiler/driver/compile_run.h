// One compile run: read and expand the source, pass 1, pass 2, the end
// checks, and the output files.
#pragma once

namespace zorvel {

class Compilation;

// Runs the whole compile. The outcome is in ctx.errorCount (0 = success) and
// the message list.
void runCompile(Compilation& c);

// Resets the per-pass state, writes the prologue and compiles every line.
void runPass(Compilation& c, int pass);

} // namespace zorvel
