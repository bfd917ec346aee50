// The small readers every statement compiler uses to take its operands from
// the current line: character classes, blanks, words, texts, literals.
#pragma once

#include <string>
#include <string_view>

namespace zorvel {

class Compilation;

constexpr size_t kMaxWordLength = 32;

bool isDigitLike(char ch);  // can start a number: 0-9 $ % "
bool isLetterLike(char ch); // A-Z a-z _
bool isIdentifierChar(char ch);
bool isBlank(char ch);
bool isDelimiter(char ch);
bool isStatementEnd(char ch);

void skipBlanks(Compilation& c);

// A double-quoted character at the cursor becomes its code in decimal.
bool readCharLiteral(Compilation& c);

// Reads the next word (identifier characters and "#") into the token buffer.
// A word longer than 32 characters is refused with an error and gives "".
const std::string& readWord(Compilation& c);

// As readWord, with "." part of the word (PORTB.3, W.HIGHBYTE).
const std::string& readOperand(Compilation& c);

// As readWord, but the cursor stays where it was.
std::string peekWord(Compilation& c);

// The case-preserving text up to the end of the statement (":" or "'").
const std::string& readText(Compilation& c);

// The case-preserving rest of the statement without the literal rule.
std::string readStatementRest(Compilation& c);

// Returns ':' when a statement separator follows; otherwise moves to the end.
char separatorCheck(Compilation& c);

// A name the program may declare or use as a label: a letter or "_", then
// letters, digits and "_".
bool isValidName(std::string_view name);
constexpr const char* kNameRule =
    "Names begin with a letter or '_' and hold letters, digits and '_'";

// A single-letter name gets a leading "_" (X becomes _X).
std::string normaliseName(std::string_view name);

// Looks a label up (pass 2 only); reports a missing one when `report`.
bool lookupLabel(Compilation& c, bool report, std::string_view name);

// Records a label in pass 1 (while the label table has room).
void recordLabel(Compilation& c, std::string_view name);

// Looks a symbol up and makes it the current operand; reports a miss when `report`.
bool findSymbol(Compilation& c, std::string_view name, bool report);

} // namespace zorvel
