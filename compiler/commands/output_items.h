// The item lists of the text commands: the output items that SEROUT, RSOUT
// and PRINT share (text, numbers in decimal, hexadecimal and binary, strings,
// repeats, CLS and AT), and the end of one item of a list.
#pragma once

#include "compiler/library/runtime_marks.h"

#include <string>
#include <string_view>

namespace zorvel {

class Compilation;

// Where the characters of an output list go.
struct OutputTarget {
    std::string_view keyword; // the statement, named in messages
    std::string_view routine; // the character routine (character in W)
    Group group;              // its need mark
    int flagBit;              // its BPFH bit, the output the formatters use
    bool repeatFlag;          // set the BPFH bit again before each formatter call
    bool lcd;                 // PRINT: the graphic modifiers, and AT through LCD_crs
    std::string timeoutLabel; // SEROUT with a timeout: taken when a send times out
};

// Compiles the output items up to `closer` (']'), or to the end of the
// statement when `closer` is '\0'. Returns false after an error.
bool compileOutputItems(Compilation& c, const OutputTarget& target, char closer);

enum class ListStep { More, Done, Failed };
// After an item: "," goes on, `closer` (or the statement end when `closer`
// is '\0') ends the list; anything else is reported.
ListStep nextItem(Compilation& c, char closer);

// A character as the assembler's literal: "'" + ch + "'", with the quote and
// the backslash escaped as the assembler wants them.
std::string characterLiteral(char ch);
// "\tMovlw " + the character's literal.
void characterToW(Compilation& c, char ch);

// The cursor address of a display position: row 1 to 4, column from 1.
int cursorAddress(int row, int column);

} // namespace zorvel
