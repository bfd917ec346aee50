// The runtime subroutines of the library file: one group of routines per
// need mark, written in the fixed order of their group numbers.
#pragma once

#include "compiler/library/library_text.h"

namespace zorvel {

// Appends every group whose need mark is set (group 27, the rsout@ label, in
// every file), taking the groups in ascending order of their numbers. A
// group sets the marks of the later groups it calls before its first line,
// and the BPF/BPFH used marks of `out` when its code uses them.
void writeRuntimeGroups(Compilation& c, LibraryOutput& out);

// After the groups are written: reports a variable or label of the program
// that spells the label of a written routine (COUNT with COUNTER's routine).
void reportRoutineNameClashes(Compilation& c);
// After the groups are written: warns when INKEY's keypad port also carries
// the LCD's lines, which the scan would disturb.
void reportPinClashes(Compilation& c);

} // namespace zorvel
