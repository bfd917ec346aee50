// The word lists of the BASIC highlighter: statement keywords, built-in
// functions, DECLARE setting names, PIC16 mnemonics and pseudo-instructions,
// assembler directives, the names of the runtime library and the assembler
// variables a macro call passes. All lookups ignore case.
#pragma once

#include <string_view>

namespace zorvel::ide {

enum class WordClass {
    None,
    Statement,      // a statement keyword or a word of a statement's syntax
    Function,       // a built-in function that yields a value
    DeclareSetting, // a key of DECLARE
    Mnemonic,       // a PIC16 instruction or pseudo-instruction
    Directive,      // an assembler directive, or a "#" directive of the BASIC source
    RuntimeName,    // a label, macro or variable of the runtime library
    MacroVariable,  // an assembler variable that a macro call sets (PRM_1, RETURN_TYPE, ...)
};

// Where a word stands: in BASIC statements, or in assembler text (the lines of
// an ASM ... ENDASM block and the rest of an "@" line).
enum class CodeContext { Basic, Assembler };

// The class of `word` in `context`. In BASIC a statement keyword wins over a
// mnemonic of the same spelling (CALL, GOTO, RETURN, SLEEP); in assembler
// text BASIC keywords mean nothing and those words are mnemonics.
WordClass classifyWord(std::string_view word, CodeContext context);

// Words that are never labels, even when a ":" follows them directly.
bool isNeverLabel(std::string_view word);

} // namespace zorvel::ide
