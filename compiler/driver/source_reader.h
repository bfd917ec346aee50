// Reading the main source and expanding INCLUDE directives into the working
// source, each line tagged with its file and line number.
#pragma once

namespace zorvel {

class Compilation;

// Fills the working source; returns false with runMessage set on failure.
bool readAndExpandSource(Compilation& c);

} // namespace zorvel
