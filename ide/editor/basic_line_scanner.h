// Splits one line of BASIC source into style runs. The scanner knows nothing
// of the editor: it takes the line's bytes (UTF-8, end-of-line characters
// included) and the state the previous line left, and returns the runs and
// the state for the next line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zorvel::ide {

// What a line hands on to the next one.
struct ScanState {
    bool inAsm = false;   // the next line belongs to an ASM ... ENDASM block
    bool inMacro = false; // the next line belongs to a macro body (up to ENDM)

    int toInt() const { return (inAsm ? 1 : 0) | (inMacro ? 2 : 0); }
    static ScanState fromInt(int bits) { return {(bits & 1) != 0, (bits & 2) != 0}; }
    bool operator==(const ScanState&) const = default;
};

struct StyleRun {
    int length; // in bytes
    int style;  // a BasicLexer::Style
};

struct LineScan {
    std::vector<StyleRun> runs; // consecutive from the line's first byte, covering all of it
    ScanState end;
    bool opensMacro = false;              // the line is a "name MACRO p1, p2" header
    std::vector<std::string> macroParams; // the header's parameter names, upper case
};

// `macroParams` are the parameter names (upper case) of the macro whose body
// the line belongs to; they are highlighted where they are used, while
// `start.inMacro` says the line is in a macro body.
LineScan scanLine(std::string_view text, ScanState start,
                  const std::vector<std::string>& macroParams);

} // namespace zorvel::ide
