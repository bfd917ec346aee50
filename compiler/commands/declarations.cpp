#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/const_expr.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/ram.h"
#include "compiler/frontend/reserved_names.h"

namespace zorvel {
namespace {

void emitEquate(Compilation& c, const std::string& name, int address) {
    emitDeclaration(c, name + "\t\tEqu " + std::to_string(address));
}

void emitDefine(Compilation& c, const std::string& name, const std::string& text) {
    emitDeclaration(c, "\t\t#Define " + name + " " + text);
}

// --- Variables --------------------------------------------------------------

void declareByte(Compilation& c, const std::string& name) {
    if (!belowVariableLimit(c)) return;
    auto at = placeBytes(c, 1);
    if (!at) return;
    emitEquate(c, name, (*at)[0]);
    if (!addSymbol(c, {name, name, kKindByte, (*at)[0], -1})) return;
    c.ctx.variablesUsed += 1;
}

void warnBankCrossing(Compilation& c, const std::string& name, int low) {
    const DeviceInfo& info = c.device.info;
    static const char* const crossings[] = {"0-1", "1-2", "2-3"};
    for (int b = 0; b < 3; ++b) {
        if (low == info.bankEnd(b))
            reportWarning(c, kWarnText,
                          "WORD Variable '" + name + "' Crossing Bank boundary " + crossings[b]);
    }
}

void declareWord(Compilation& c, const std::string& name) {
    if (!belowVariableLimit(c)) return;
    auto at = placeBytes(c, 2);
    if (!at) return;
    int low = (*at)[0], high = (*at)[1];
    warnBankCrossing(c, name, low);
    emitEquate(c, name, low);
    emitEquate(c, name + "H", high);
    if (!addSymbol(c, {name, name, kKindWord, low, -1})) return;
    if (!addSymbol(c, {name + "H", name + "H", kKindByte, high, -1})) return;
    c.ctx.variablesUsed += 2;
}

void declareBit(Compilation& c, const std::string& name) {
    AllocatorState& a = c.alloc;
    if (a.bitIndex == 0 || a.bitIndex == 8) {
        if (!belowVariableLimit(c)) return;
        auto at = placeBytes(c, 1);
        if (!at) return;
        a.bitIndex = 0;
        a.bitByte = "B@VR" + std::to_string(++a.bitByteCount);
        emitEquate(c, a.bitByte, (*at)[0]);
        if (!addSymbol(c, {a.bitByte, a.bitByte, kKindByte, (*at)[0], -1})) return;
        c.ctx.variablesUsed += 1;
    }
    const SymbolEntry* byte = c.symbols.find(a.bitByte);
    if (!addSymbol(c, {name, a.bitByte, kKindBit, byte->address, a.bitIndex})) return;
    emitDefine(c, name, a.bitByte + "," + std::to_string(a.bitIndex));
    ++a.bitIndex;
}

// First and last element addresses of an array placed from here.
std::pair<int, int> arraySpan(Compilation& c, int size) {
    int saved = c.device.allocAddress;
    int first = -1, last = -1;
    for (int i = 0; i < size; ++i) {
        int a = gapSkip(c, c.device.allocAddress);
        if (i == 0) first = a;
        last = a;
        c.device.allocAddress = a + 1;
    }
    c.device.allocAddress = saved;
    return {first, last};
}

void warnHighArray(Compilation& c, const std::string& name, int size) {
    if (c.device.allocAddress <= 255) return;
    auto [first, last] = arraySpan(c, size);
    const DeviceInfo& info = c.device.info;
    bool inBank2 = first >= info.bankStart(2) && first <= info.bankEnd(2);
    bool inBank3 = info.bankStart(3) > 0 && first >= info.bankStart(3) && first <= info.bankEnd(3);
    if ((inBank2 && last > info.bankEnd(2)) || (inBank3 && last > info.bankEnd(3)))
        reportWarning(
            c, kWarnText,
            "Array ' " + name + " ' is declared at address " + std::to_string(first) +
                ". Which is over the 255 RAM address boundary and crosses BANK3 boundary");
}

void emitElementLine(Compilation& c, std::string& items) {
    if (items.empty()) return;
    items.pop_back(); // the final ","
    emitDeclaration(c, "Variable " + items);
    items.clear();
}

void declareArray(Compilation& c, const std::string& name, int size) {
    if (!belowVariableLimit(c)) return;
    warnHighArray(c, name, size);
    auto at = placeBytes(c, size);
    if (!at) return;
    emitEquate(c, name, (*at)[0]);
    if (!addSymbol(c, {name, name, kKindByteArray, (*at)[0], size})) return;
    std::string items;
    for (int i = 0; i < size; ++i) {
        std::string element = name + "#" + std::to_string(i);
        if (!addSymbol(c, {element, element, kKindByte, (*at)[i], -1})) return;
        items += element + "=" + std::to_string((*at)[i]) + ",";
        if ((i + 1) % 4 == 0) emitElementLine(c, items);
    }
    emitElementLine(c, items);
    c.ctx.variablesUsed += size;
}

// --- Aliases and constants --------------------------------------------------

void declareConstant(Compilation& c, const std::string& name, int32_t value) {
    if (!addSymbol(c, {name, std::to_string(value), kKindNum, value, -1})) return;
    emitDefine(c, name, std::to_string(value));
    if (value < 256) return;
    int32_t high = value >> 8;
    emitDefine(c, name + "H", std::to_string(high));
    addSymbol(c, {name + "H", std::to_string(high), kKindNum, high, -1});
}

void declareVariableAlias(Compilation& c, const std::string& name, const SymbolEntry& of) {
    if (!addSymbol(c, {name, of.target, of.kind, of.address, of.bit})) return;
    emitDefine(c, name, of.target);
    if (of.kind != kKindWord) return;
    const SymbolEntry* high = c.symbols.find(of.name + "H");
    int highAddress = high ? high->address : of.address + 1;
    emitDefine(c, name + "H", of.target + "H");
    addSymbol(c, {name + "H", of.target + "H", kKindByte, highAddress, -1});
}

void declarePartAlias(Compilation& c, const std::string& name, const SymbolEntry& of,
                      const std::string& part) {
    bool low = part == "LOWBYTE" || part == "BYTE0";
    bool high = part == "HIGHBYTE" || part == "BYTE1";
    if (!low && !high) {
        reportError(c, kErrText, "Variable type declaration missing or incorrect");
        return;
    }
    std::string which = low ? "LOWBYTE" : "HIGHBYTE";
    if (of.kind == kKindBit) {
        reportError(c, kErrText, "Cannot extract a " + which + " from a BIT type Variable");
        return;
    }
    if (of.kind == kKindNum) {
        reportError(c, kErrText, "Cannot extract a " + which + " from a Number");
        return;
    }
    if (high && of.kind != kKindWord) {
        reportError(c, kErrText, "Cannot extract a HIGHBYTE from a BYTE type Variable");
        return;
    }
    std::string target = low ? of.target : of.target + "H";
    int address = of.address;
    if (high) {
        const SymbolEntry* h = c.symbols.find(of.name + "H");
        address = h ? h->address : of.address + 1;
    }
    if (!addSymbol(c, {name, target, kKindByte, address, -1})) return;
    emitDefine(c, name, target);
}

void declareBitAlias(Compilation& c, const std::string& name, const SymbolEntry& of, int n) {
    if (n < 0 || n > 15) {
        reportError(c, kErrText, "Bit out of range. Only 0 to 15 allowed");
        return;
    }
    if (of.kind == kKindNum) {
        reportError(c, kErrText, "Cannot assign a bit to a constant declaration");
        return;
    }
    if (of.kind == kKindBit) {
        reportError(c, kErrText, "Cannot assign a bit, to a bit declaration");
        return;
    }
    if (of.kind != kKindWord && n > 7) {
        reportError(c, kErrText, "Variable '" + of.name + "' Only has 8-bits");
        return;
    }
    std::string byte = of.target;
    int address = of.address;
    if (n > 7) {
        n -= 8;
        byte += "H";
        const SymbolEntry* h = c.symbols.find(of.name + "H");
        address = h ? h->address : of.address + 1;
    }
    if (!addSymbol(c, {name, byte, kKindBit, address, n})) return;
    emitDefine(c, name, byte + "," + std::to_string(n));
}

// The right-hand side shared by DIM ... AS and SYMBOL: an existing symbol
// with a byte part or a bit, a constant expression, or a variable to alias.
void declareFromExisting(Compilation& c, const std::string& name, const char* typeError) {
    skipBlanks(c);
    size_t start = c.line.pos;
    char first = c.line.peek();
    if (first == '(' || isDigitLike(first)) {
        if (std::optional<int32_t> v = evaluateConstExpr(c)) declareConstant(c, name, *v);
        return;
    }
    std::string word = readOperand(c);
    if (word.empty()) {
        reportError(c, kErrText, typeError);
        return;
    }
    size_t dot = word.find('.');
    std::string base = normaliseName(word.substr(0, dot));
    const SymbolEntry* of = c.symbols.find(base);
    if (!of) {
        reportError(c, kErrText, typeError);
        return;
    }
    SymbolEntry target = *of;
    if (dot != std::string::npos) {
        std::string suffix = word.substr(dot + 1);
        if (!suffix.empty() && suffix[0] >= '0' && suffix[0] <= '9')
            declareBitAlias(c, name, target, std::atoi(suffix.c_str()));
        else
            declarePartAlias(c, name, target, suffix);
        return;
    }
    if (target.kind == kKindNum) {
        c.line.pos = start;
        if (std::optional<int32_t> v = evaluateConstExpr(c)) declareConstant(c, name, *v);
        return;
    }
    declareVariableAlias(c, name, target);
}

// --- Statements -------------------------------------------------------------

// Reads and checks a new name; reports and returns "" when it cannot be used.
// DIM looks for a duplicate before a keyword, SYMBOL the other way round.
std::string readNewName(Compilation& c, const char* duplicate, bool keywordFirst) {
    std::string word = readWord(c);
    if (word.empty()) {
        if (c.line.pos < c.line.length())
            reportError(c, kErrSyntax);
        else
            reportError(c, kErrText, "Variable Expected");
        return {};
    }
    if (!isValidName(word)) {
        reportError(c, kErrText, "'" + word + "' is not a valid name. " + kNameRule);
        return {};
    }
    std::string name = normaliseName(word);
    bool keyword = lookupKeyword(name).found();
    bool known = c.symbols.find(name) != nullptr;
    if ((keyword && keywordFirst) || (keyword && !known)) {
        reportError(c, kErrText, "'" + name + "' is a reserved KEYWORD");
        return {};
    }
    if (known) {
        reportError(c, kErrText, duplicate);
        return {};
    }
    if (const char* clash = assemblerNameClash(c, name)) {
        reportError(c, kErrText, "'" + name + "' " + clash);
        return {};
    }
    if (c.labels.contains(name)) {
        reportError(c, kErrText, "'" + name + "' is already a label");
        return {};
    }
    if (c.names.defines.count(name)) {
        reportError(c, kErrText, "'" + name + "' is already defined");
        return {};
    }
    return name;
}

std::optional<int> readArraySize(Compilation& c, const std::string& name) {
    ++c.line.pos; // "["
    skipBlanks(c);
    if (isStatementEnd(c.line.peek()) || c.line.peek() == ']') {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    std::optional<int32_t> size = evaluateConstExpr(c);
    if (!size) return std::nullopt;
    skipBlanks(c);
    if (c.line.peek() != ']') {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    ++c.line.pos;
    if (*size < 1) {
        reportError(c, kErrText,
                    "Too few elements in ARRAY '" + name + "' Declaration. Minimum value is 1");
        return std::nullopt;
    }
    if (*size > 256) {
        reportError(c, kErrText,
                    "Too many elements in ARRAY '" + name + "' Declaration. Maximum value is 256");
        return std::nullopt;
    }
    return *size;
}

// One "name [size] [AS type]" of a DIM statement.
void compileDimItem(Compilation& c) {
    std::string name = readNewName(c, "Duplicate Variable Error", false);
    if (name.empty()) return;
    std::optional<int> size;
    skipBlanks(c);
    if (c.line.peek() == '[') {
        size = readArraySize(c, name);
        if (!size) return;
    }
    if (peekWord(c) != "AS") {
        size ? declareArray(c, name, *size) : declareByte(c, name);
        return;
    }
    readWord(c); // AS
    std::string type = peekWord(c);
    if (type == "WORD" || type == "BYTE" || type == "BIT") readWord(c);
    if (type == "WORD") {
        if (size)
            reportError(c, kErrText, "WORD ARRAYS not implemented in this version of the compiler");
        else
            declareWord(c, name);
    } else if (type == "BYTE") {
        size ? declareArray(c, name, *size) : declareByte(c, name);
    } else if (type == "BIT") {
        if (size)
            reportError(c, kErrText, "BIT ARRAYS not implemented in this version of the compiler");
        else
            declareBit(c, name);
    } else if (size) {
        reportError(c, kErrText, "Variable type declaration missing or incorrect");
    } else {
        declareFromExisting(c, name, "Variable type declaration missing or incorrect");
    }
}

} // namespace

void compileDim(Compilation& c) {
    remarksEcho(c);
    if (c.stmt.lineHasLabel) {
        reportError(c, kErrText, "Label not allowed with DIM statement");
        return;
    }
    int errors = c.ctx.errorCount;
    do {
        compileDimItem(c);
        if (c.ctx.errorCount != errors || c.line.atEnd()) return;
        skipBlanks(c);
        if (c.line.peek() != ',') return;
        ++c.line.pos;
    } while (true);
}

void compileSymbol(Compilation& c) {
    remarksEcho(c);
    if (c.stmt.lineHasLabel) {
        reportError(c, kErrText, "Label not allowed with SYMBOL statement");
        return;
    }
    std::string name = readNewName(c, "Duplicate Declaration Error", true);
    if (name.empty()) return;
    skipBlanks(c);
    if (c.line.peek() != '=') {
        reportError(c, kErrText, "Symbol type declaration missing or incorrect");
        return;
    }
    ++c.line.pos;
    declareFromExisting(c, name, "Symbol type declaration missing or incorrect");
}

} // namespace zorvel
