// The keyword table: statement keywords, built-in functions and the operand
// type-pair directives of macro bodies, in lookup order.
#pragma once

#include <span>
#include <string_view>

namespace zorvel {

enum KeywordClass : int {
    kClassNone = -1,
    kClassStatement = 0,
    kClassFunction = 1,
    kClassTypePair = 3
};

struct Keyword {
    std::string_view text;
    int number;
    int keywordClass;
};

struct KeywordLookup {
    int number = -1;
    int keywordClass = kClassNone;
    bool found() const { return number >= 0; }
};

std::span<const Keyword> keywordTable();

// Whole-word, case-sensitive lookup of an upper-case word; the first match wins.
KeywordLookup lookupKeyword(std::string_view word);

// True for a word that yields a value on the right of an assignment, the
// words of the function dispatcher (compiler/commands/command_table.cpp).
// The keyword table's function class is its own older grouping: it includes
// LOW and OREAD, which begin statements, and leaves out ADIN, DIG, RSIN and BUSIN.
bool isFunctionKeyword(std::string_view word);

} // namespace zorvel
