#include "compiler/frontend/lexer.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"

#include <cctype>

namespace zorvel {

bool isDigitLike(char ch) {
    return (ch >= '0' && ch <= '9') || ch == '$' || ch == '%' || ch == '"';
}
bool isLetterLike(char ch) {
    return (ch >= 'A' && ch <= 'Z') || (ch >= 'a' && ch <= 'z') || ch == '_';
}
bool isIdentifierChar(char ch) {
    return isDigitLike(ch) || isLetterLike(ch);
}
bool isBlank(char ch) {
    return ch == ' ' || ch == '\t';
}
bool isDelimiter(char ch) {
    switch (ch) {
    case ']':
    case '[':
    case ',':
    case ';':
    case ':':
    case '=':
    case '\\': return true;
    default: return false;
    }
}
bool isStatementEnd(char ch) {
    return ch == '\r' || ch == '\n' || ch == '\0' || ch == ':' || ch == '\'';
}

bool isValidName(std::string_view name) {
    if (name.empty() || !isLetterLike(name[0])) return false;
    for (char ch : name)
        if (!isLetterLike(ch) && !(ch >= '0' && ch <= '9')) return false;
    return true;
}

void skipBlanks(Compilation& c) {
    LineBuffer& l = c.line;
    while (l.pos < l.length() && isBlank(l.upper[l.pos]))
        ++l.pos;
}

bool readCharLiteral(Compilation& c) {
    LineBuffer& l = c.line;
    if (l.peek() != '"' || l.pos + 1 >= l.length()) return false;
    unsigned char code = static_cast<unsigned char>(l.casedAt(l.pos + 1));
    c.stmt.token = std::to_string(code);
    l.pos = std::min(l.pos + 3, l.length());
    skipBlanks(c);
    return true;
}

namespace {

const std::string& readRun(Compilation& c, bool withDot) {
    LineBuffer& l = c.line;
    std::string& token = c.stmt.token;
    token.clear();
    skipBlanks(c);
    if (readCharLiteral(c)) return token;
    size_t start = l.pos;
    while (l.pos < l.length()) {
        char ch = l.upper[l.pos];
        if (!isIdentifierChar(ch) && ch != '#' && !(withDot && ch == '.')) break;
        ++l.pos;
    }
    token.assign(l.upper, start, l.pos - start);
    if (token.size() > kMaxWordLength) {
        std::string word = token;
        token.clear();
        reportError(c, kErrText,
                    "'" + word + "' is too long. Names and words have at most 32 characters");
    }
    return token;
}

} // namespace

const std::string& readWord(Compilation& c) {
    return readRun(c, false);
}
const std::string& readOperand(Compilation& c) {
    return readRun(c, true);
}

std::string peekWord(Compilation& c) {
    size_t saved = c.line.pos;
    std::string saveToken = c.stmt.token;
    // A look-ahead must not report: measure the word without the length check.
    LineBuffer& l = c.line;
    skipBlanks(c);
    std::string word;
    if (readCharLiteral(c)) {
        word = c.stmt.token;
    } else {
        size_t start = l.pos;
        while (l.pos < l.length() && (isIdentifierChar(l.upper[l.pos]) || l.upper[l.pos] == '#'))
            ++l.pos;
        word.assign(l.upper, start, l.pos - start);
    }
    l.pos = saved;
    c.stmt.token = std::move(saveToken);
    return word;
}

const std::string& readText(Compilation& c) {
    skipBlanks(c);
    if (readCharLiteral(c)) return c.stmt.token;
    c.stmt.token = readStatementRest(c);
    return c.stmt.token;
}

std::string readStatementRest(Compilation& c) {
    LineBuffer& l = c.line;
    skipBlanks(c);
    size_t start = l.pos;
    while (l.pos < l.length() && !isStatementEnd(l.upper[l.pos]))
        ++l.pos;
    return l.cased.substr(start, l.pos - start);
}

char separatorCheck(Compilation& c) {
    skipBlanks(c);
    if (c.line.peek() == ':') return ':';
    c.line.pos = c.line.length();
    return '\0';
}

std::string normaliseName(std::string_view name) {
    if (name.size() == 1 && isLetterLike(name[0])) return "_" + std::string(name);
    return std::string(name);
}

bool lookupLabel(Compilation& c, bool report, std::string_view name) {
    if (c.ctx.pass != 2) return false;
    if (c.labels.contains(name)) {
        c.names.firstReference.try_emplace(std::string(name), c.ctx.lineIndex);
        c.names.labelUses.emplace_back(std::string(name), c.ctx.lineIndex);
        c.names.labelUseMacros.push_back(c.names.openMacro);
        return true;
    }
    if (report) reportError(c, kErrText, "Label '" + std::string(name) + "' not found");
    return false;
}

void recordLabel(Compilation& c, std::string_view name) {
    if (c.ctx.pass != 1 || name.empty()) return;
    if (!c.labels.add(name)) reportError(c, kErrText, "Too many labels. The maximum is 1000");
}

bool findSymbol(Compilation& c, std::string_view name, bool report) {
    const SymbolEntry* e = c.symbols.find(name);
    if (!e) {
        if (report) reportError(c, kErrText, " Variable ' " + std::string(name) + " ' not defined");
        return false;
    }
    c.operand = Operand{e->name, e->target, e->kind, e->address, e->bit};
    return true;
}

} // namespace zorvel
