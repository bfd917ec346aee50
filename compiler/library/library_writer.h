// The library file (<source name>.zvl): listing options, device include, RAM
// bank constants, macro prelude, system variable equates, EEPROM data,
// vectors, runtime subroutines and start-up code. The main assembly file
// includes it near its top and continues behind its Start@ label.
#pragma once

#include "compiler/library/library_text.h"

#include <string>
#include <vector>

namespace zorvel {

class Compilation;

// Builds the library file line by line. An entry may hold embedded "\r\n".
// Sets the need marks of the runtime groups that written groups call.
std::vector<std::string> libraryLines(Compilation& c);

// Writes the library file beside the source file, "\r\n" after every line.
// When the file cannot be created it alerts the user and writes nothing.
void writeLibraryFile(Compilation& c);

// Appends the Start@ label and the start-up lines: clears of BPF and BPFH by
// the used marks in `out`, and the oscillator calibration load.
void writeStartUp(const Compilation& c, LibraryOutput& out);

} // namespace zorvel
