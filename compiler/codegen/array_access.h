// Array elements: "name[index]" read and written either through the element's
// own symbol (constant index), inline through FSR and INDF (an array that lies
// in one bank), or through the put@array and get@array runtime routines (an
// array that crosses a bank gap or an interrupt save byte).
#pragma once

#include "compiler/frontend/expression.h"

#include <optional>
#include <string>

namespace zorvel {

class Compilation;

struct Element {
    std::string array; // the array's name, which the assembler knows as its base address
    int base = 0;      // address of element 0
    int length = 0;
    bool inlineAccess = true; // all elements consecutive inside one bank
    Value index;              // NUM, BYTE, WORD (low byte used), BIT, or a temporary holding it
    int temporaries = 0;      // numbered temporaries held for the index
};

// Whether an array element follows the cursor (the operand just read was
// followed by "[").
bool elementFollows(Compilation& c);

// Reads "[index]" after the array name `text`; nullopt after reporting. An
// index expression is compiled into a numbered temporary that stays held
// until releaseElement.
std::optional<Element> readElement(Compilation& c, const std::string& text);
void releaseElement(Compilation& c, const Element& e);

// The element's own symbol, for a constant index.
std::string elementSymbol(const Element& e);

// The element's value into W.
void elementToW(Compilation& c, const Element& e);
// The element into `destination` (W transfer; a constant index moves the
// element symbol directly).
void elementInto(Compilation& c, const Element& e, const Value& destination);
// Writes `value` (NUM, BYTE, WORD low byte, BIT or WREG) into the element.
void writeElement(Compilation& c, const Element& e, const Value& value);

} // namespace zorvel
