// The assembler step of a build: run gpasm on the saved files, report its
// errors, read the HEX file back and write the summary.
#pragma once

#include <filesystem>

namespace zorvel {

class Compilation;

// Paths of the build's output files, beside the source.
std::filesystem::path outputPath(const Compilation& c, const char* extension);

// Runs the assembler, reads its error file and the HEX file. Errors go to
// the message list and count as errors of the run.
void assembleAndReadBack(Compilation& c);

// The summary lines of a clean build: words used, the bootloader warning,
// the variables line and the warnings line.
void appendSummary(Compilation& c);

} // namespace zorvel
