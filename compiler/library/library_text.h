// What the parts of the library writer share: the lines written so far, the
// marks of the start-up clears, and the two operand texts every part writes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zorvel {

class Compilation;

// The library file being built, one entry per written line (an entry may
// hold embedded "\r\n"), and the used marks of BPF and BPFH, which the
// runtime groups set and the start-up code reads.
struct LibraryOutput {
    std::vector<std::string> lines;
    bool bpfUsed = false;
    bool bpfhUsed = false;

    void add(std::string line) { lines.push_back(std::move(line)); }
};

// The address of a register or system variable as unsigned decimal text,
// looked up in the symbol table. A name the table lacks (no device loaded)
// is written as itself, so the assembler resolves or reports it.
std::string regAddress(const Compilation& c, std::string_view name);

// The crystal in MHz (the XTAL setting; at least 1).
int crystalMhz(const Compilation& c);

// A number as decimal text, for the operands of routine lines.
std::string number(long value);

// The one-cycle filler of timing code: "\tclrwdt" with the watchdog on,
// "\tnop" with it off.
std::string filler(const Compilation& c);

} // namespace zorvel
