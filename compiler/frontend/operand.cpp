#include "compiler/frontend/operand.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/numbers.h"

#include <algorithm>

namespace zorvel {
namespace {

enum class Part { None, Low, High };

bool isVariableKind(int kind) {
    return kind == kKindByte || kind == kKindWord || kind == kKindByteArray ||
           kind == kKindWordArray;
}

bool fail(Compilation& c, std::string_view text) {
    reportError(c, kErrText, text);
    return false;
}

// Applies LOWBYTE/HIGHBYTE to the current operand.
bool applyPart(Compilation& c, Part part) {
    Operand& op = c.operand;
    const char* which = part == Part::Low ? "LOWBYTE" : "HIGHBYTE";
    if (op.kind == kKindBit)
        return fail(c, std::string("Cannot extract a ") + which + " from a BIT type Variable");
    if (op.kind == kKindNum) {
        op.address = part == Part::Low ? (op.address & 255) : ((op.address >> 8) & 255);
        op.target = std::to_string(op.address);
        return true;
    }
    if (part == Part::High) {
        if (op.kind == kKindByte || op.kind == kKindByteArray)
            return fail(c, "Cannot extract a HIGHBYTE from a BYTE type Variable");
        op.target += "H";
        op.address += 1;
        if (const SymbolEntry* high = c.symbols.find(op.name + "H")) op.address = high->address;
    }
    op.kind = kKindByte;
    op.bit = -1;
    return true;
}

// Makes the current operand bit `n` of itself.
bool applyBit(Compilation& c, int n) {
    Operand& op = c.operand;
    if (op.kind == kKindBit) return fail(c, "The variable is already a BIT type");
    if (op.kind == kKindNum) return fail(c, "Cannot assign a bit to a Constant or Number");
    if (op.kind == kKindWord || op.kind == kKindWordArray) {
        if (n > 15) return fail(c, "Bit value too large for this variable");
        if (n > 7) {
            n -= 8;
            op.target += "H";
            op.address += 1;
            if (const SymbolEntry* high = c.symbols.find(op.name + "H")) op.address = high->address;
        }
    } else if (n > 7) {
        return fail(c, "Bit value too large for this variable");
    }
    op.kind = kKindBit;
    op.bit = n;
    return true;
}

// The bit number a suffix names: digits, or a constant's name.
std::optional<int> suffixBit(Compilation& c, bool report, std::string_view suffix) {
    if (isDigitLike(suffix[0])) return convertNumber(c, suffix);
    const SymbolEntry* e = c.symbols.find(normaliseName(suffix));
    if (!e) {
        if (report)
            reportError(c, kErrText, " Variable ' " + normaliseName(suffix) + " ' not defined");
        return std::nullopt;
    }
    if (isVariableKind(e->kind)) {
        reportError(c, kErrText, "Cannot assign a Variable to a BIT");
        return std::nullopt;
    }
    return e->address;
}

bool classifyBase(Compilation& c, bool report, std::string_view base) {
    if (base.empty()) {
        if (report) reportError(c, kErrText, "Variable Expected");
        return false;
    }
    if (isDigitLike(base[0])) {
        std::optional<int32_t> v = convertNumber(c, base);
        if (!v) return false;
        c.operand = Operand{std::string(base), std::to_string(*v), kKindNum, *v, -1};
        return true;
    }
    // W has no address: only expressions and assignments know how to read it.
    if (base == "WREG" && !c.symbols.find("WREG")) {
        if (report)
            reportError(c, kErrText, "WREG cannot be used here. Copy it into a variable first");
        return false;
    }
    return findSymbol(c, normaliseName(base), report);
}

} // namespace

std::optional<bool> classifyOperand(Compilation& c, bool report, std::string_view text) {
    size_t dot = text.find('.');
    std::string_view base = text.substr(0, dot);
    std::string_view suffix = dot == std::string_view::npos ? "" : text.substr(dot + 1);
    Part part = Part::None;
    std::optional<int> bit;
    if (!suffix.empty()) {
        if (suffix == "LOWBYTE" || suffix == "BYTE0") {
            part = Part::Low;
        } else if (suffix == "HIGHBYTE" || suffix == "BYTE1") {
            part = Part::High;
        } else {
            bit = suffixBit(c, report, suffix);
            if (!bit) return std::nullopt;
        }
    } else if (dot != std::string_view::npos) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    if (!classifyBase(c, report, base)) return std::nullopt;
    if (part != Part::None) return applyPart(c, part) ? std::optional<bool>(false) : std::nullopt;
    if (bit) return applyBit(c, *bit) ? std::optional<bool>(true) : std::nullopt;
    return false;
}

namespace {

// A word read for the pre-scan: no reports, cursor moved past it.
std::string scanWord(Compilation& c) {
    LineBuffer& l = c.line;
    skipBlanks(c);
    if (l.peek() == '"' && l.pos + 1 < l.length()) {
        unsigned char code = static_cast<unsigned char>(l.casedAt(l.pos + 1));
        l.pos = std::min(l.pos + 3, l.length());
        return std::to_string(code);
    }
    size_t start = l.pos;
    while (l.pos < l.length()) {
        char ch = l.upper[l.pos];
        if (!isIdentifierChar(ch) && ch != '#' && ch != '.') break;
        ++l.pos;
    }
    return l.upper.substr(start, l.pos - start);
}

bool scanOperator(Compilation& c) {
    static constexpr std::string_view ops[] = {"**", "*/", "//", "<<", ">>", "+",
                                               "-",  "*",  "/",  "&",  "|",  "^"};
    LineBuffer& l = c.line;
    skipBlanks(c);
    for (std::string_view op : ops) {
        if (l.upper.compare(l.pos, op.size(), op) == 0) {
            l.pos += op.size();
            return true;
        }
    }
    return false;
}

void skipBracketed(Compilation& c, char open, char close) {
    LineBuffer& l = c.line;
    int depth = 0;
    while (l.pos < l.length()) {
        char ch = l.upper[l.pos++];
        if (ch == open) ++depth;
        if (ch == close && --depth == 0) return;
    }
}

void recordTerm(Compilation& c, const std::string& word) {
    TermScan& scan = c.termScan;
    ++scan.terms;
    if (scan.entries.size() >= TermScan::kMaxEntries) return;
    TermScan::Entry entry{word, -1, 0};
    if (isDigitLike(word[0])) {
        // A number: constant when it converts; the pre-scan never reports.
        int64_t v = 0;
        bool ok = true;
        std::string_view digits = word;
        int base = 10;
        if (word[0] == '$') base = 16, digits.remove_prefix(1);
        if (word[0] == '%') base = 2, digits.remove_prefix(1);
        for (char ch : digits) {
            int d = ch >= '0' && ch <= '9' ? ch - '0' : ch >= 'A' && ch <= 'F' ? ch - 'A' + 10 : 99;
            if (d >= base)
                ok = false;
            else
                v = std::min<int64_t>(v * base + d, 1 << 20);
        }
        if (ok && !digits.empty() && v <= 65535)
            entry.kind = kKindNum, entry.value = static_cast<int>(v);
    } else if (const SymbolEntry* e = c.symbols.find(normaliseName(word));
               e && word.find('.') == std::string::npos) {
        entry.kind = e->kind;
        entry.value = e->address;
    }
    scan.entries.push_back(entry);
}

} // namespace

int countTerms(Compilation& c) {
    size_t saved = c.line.pos;
    TermScan& scan = c.termScan;
    scan = TermScan{};
    do {
        skipBlanks(c);
        while (c.line.peek() == '(')
            ++c.line.pos, skipBlanks(c);
        std::string word = scanWord(c);
        if (word.empty()) break;
        recordTerm(c, word);
        skipBlanks(c);
        if (c.line.peek() == '[') skipBracketed(c, '[', ']');
        if (c.line.peek() == '(') skipBracketed(c, '(', ')');
        skipBlanks(c);
        while (c.line.peek() == ')')
            ++c.line.pos, skipBlanks(c);
    } while (scanOperator(c));
    c.line.pos = saved;
    int constants = 0;
    for (const auto& e : scan.entries)
        constants += e.kind == kKindNum;
    scan.allConstant = scan.terms > 0 && constants == scan.terms;
    return scan.terms;
}

namespace {

bool isWordChar(char ch) {
    return isLetterLike(ch) || (ch >= '0' && ch <= '9') || ch == '.' || ch == '$' || ch == '%';
}

std::string assemblerWord(Compilation& c, const std::string& word) {
    std::string upper = word;
    for (char& ch : upper)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    if ((upper[0] == '$' || upper[0] == '%') && upper.size() > 1) {
        std::optional<int32_t> value = convertNumber(c, upper);
        return value ? std::to_string(*value) : word;
    }
    if (!isLetterLike(upper[0])) return word;
    size_t dot = upper.find('.');
    std::string base = upper.substr(0, dot);
    std::string part = dot == std::string::npos ? "" : upper.substr(dot);
    const std::vector<std::string>& params = c.names.openMacroParams;
    if (std::find(params.begin(), params.end(), base) != params.end()) return word;
    const SymbolEntry* s = c.symbols.find(normaliseName(base));
    if (!s) return word;
    bool low = part.empty() || part == ".LOWBYTE" || part == ".BYTE0";
    bool high = part == ".HIGHBYTE" || part == ".BYTE1";
    if (s->kind == kKindNum && part.empty()) return std::to_string(s->address);
    if ((s->kind == kKindByte || s->kind == kKindWord) && low) return s->name;
    if (s->kind == kKindWord && high) return s->name + "H";
    return word;
}

} // namespace

std::string assemblerOperandText(Compilation& c, std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size();) {
        if (!isWordChar(text[i])) {
            out += text[i++];
            continue;
        }
        size_t end = i;
        while (end < text.size() && isWordChar(text[end]))
            ++end;
        out += assemblerWord(c, std::string(text.substr(i, end - i)));
        i = end;
    }
    return out;
}

} // namespace zorvel
