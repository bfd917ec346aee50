// PIC16 instructions written as statements with BASIC operands, and the
// pseudo-instructions (JUMP, BC .. BNDC, CLRC .. SETZ, SKIP, SKPC .. SKPNDC,
// LGOTO, TGOTO, BRSET, BRCLR). The instructions are written plain: no bank
// selection is added, the program selects banks itself.
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/const_expr.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/statement.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <string>

namespace zorvel {
namespace {

bool atOperandEnd(Compilation& c) {
    skipBlanks(c);
    return c.line.atEnd() || isStatementEnd(c.line.peek());
}

// The rest of the line up to a comment quote, trailing blanks cut.
std::string readLineRest(Compilation& c) {
    LineBuffer& l = c.line;
    skipBlanks(c);
    size_t start = l.pos;
    while (l.pos < l.length() && l.upper[l.pos] != '\'')
        ++l.pos;
    size_t end = l.pos;
    while (end > start && isBlank(l.cased[end - 1]))
        --end;
    return l.cased.substr(start, end - start);
}

// --- Operand readers --------------------------------------------------------

// A constant expression evaluated now, in decimal; an optional sign and an
// optional HIGH or LOW are kept in front of it.
std::optional<std::string> readLiteral(Compilation& c) {
    skipBlanks(c);
    std::string prefix;
    char sign = c.line.peek();
    if (sign == '+' || sign == '-') {
        prefix += sign;
        ++c.line.pos;
        skipBlanks(c);
    }
    std::string word = peekWord(c);
    if (word == "HIGH" || word == "LOW") {
        readWord(c);
        prefix += word + " ";
    }
    if (atOperandEnd(c)) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    std::optional<int32_t> value = evaluateConstExpr(c);
    if (!value) return std::nullopt;
    return prefix + std::to_string(*value);
}

// Classifies `text` without reporting a miss: true for a known operand,
// false for an unknown name, nullopt after a reported fault.
std::optional<bool> knownOperand(Compilation& c, const std::string& text) {
    int errors = c.ctx.errorCount;
    std::optional<bool> r = classifyOperand(c, false, text);
    if (c.ctx.errorCount != errors) return std::nullopt;
    return r.has_value();
}

// A register operand: a variable's name, a constant's value, or a name the
// program does not declare (a macro parameter, an assembler symbol) as written.
std::optional<std::string> readRegister(Compilation& c) {
    std::string text = readOperand(c);
    if (text.empty()) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    std::optional<bool> known = knownOperand(c, text);
    if (!known) return std::nullopt;
    if (!*known) return text;
    const Operand& op = c.operand;
    if (op.kind == kKindBit) {
        reportError(c, kErrText, "BIT type variables are not compatible with this mnemonic");
        return std::nullopt;
    }
    if (op.kind == kKindNum) return std::to_string(op.address);
    return op.target;
}

void skipComma(Compilation& c) {
    skipBlanks(c);
    if (c.line.peek() == ',') ++c.line.pos;
}

// ",W" for a following W or 0, ",F" for anything else.
std::string readDestination(Compilation& c) {
    skipComma(c);
    if (atOperandEnd(c)) return ",F";
    std::string word = readWord(c);
    return word == "W" || word == "0" ? ",W" : ",F";
}

// The bit after the register's comma.
std::optional<std::string> readBitNumber(Compilation& c) {
    skipBlanks(c);
    if (isDigitLike(c.line.peek()) || c.line.peek() == '(') {
        std::optional<int32_t> value = evaluateConstExpr(c);
        if (!value) return std::nullopt;
        return std::to_string(*value);
    }
    std::string word = readWord(c);
    if (word.empty()) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    if (word == "C" || word == "Z" || word == "DC") return word;
    if (!findSymbol(c, normaliseName(word), false)) return word;
    if (c.operand.kind == kKindNum) return std::to_string(c.operand.address);
    reportError(c, kErrText, "Cannot assign a variable as a BIT");
    return std::nullopt;
}

// A BIT variable, or a register, a comma and a bit.
std::optional<std::string> readBitOperand(Compilation& c) {
    size_t start = c.line.pos;
    std::string text = readOperand(c);
    std::optional<bool> known = text.empty() ? false : knownOperand(c, text);
    if (!known) return std::nullopt;
    if (*known && c.operand.kind == kKindBit)
        return c.operand.target + "," + std::to_string(c.operand.bit);
    c.line.pos = start;
    std::optional<std::string> reg = readRegister(c);
    if (!reg) return std::nullopt;
    skipBlanks(c);
    if (c.line.peek() != ',') {
        reportError(c, kErrComma);
        return std::nullopt;
    }
    ++c.line.pos;
    std::optional<std::string> bit = readBitNumber(c);
    if (!bit) return std::nullopt;
    return *reg + "," + *bit;
}

// --- Instructions -------------------------------------------------------------

struct LiteralMnemonic {
    std::string_view keyword;
    Op1 op;
};

constexpr LiteralMnemonic kLiteralMnemonics[] = {
    {"ADDLW", Op1::Addlw}, {"ANDLW", Op1::Andlw}, {"IORLW", Op1::Iorlw}, {"MOVLW", Op1::Movlw},
    {"RETLW", Op1::Retlw}, {"SUBLW", Op1::Sublw}, {"XORLW", Op1::Xorlw},
};

void compileLiteralMnemonic(Compilation& c) {
    remarksEcho(c);
    std::optional<std::string> literal = readLiteral(c);
    if (!literal) return;
    for (const LiteralMnemonic& m : kLiteralMnemonics)
        if (m.keyword == c.stmt.keyword) emitOp(c, m.op, *literal);
}

// Register instructions: the line head and whether a destination follows.
struct RegisterMnemonic {
    std::string_view keyword;
    std::string_view head;
    bool destination;
};

constexpr RegisterMnemonic kRegisterMnemonics[] = {
    {"ADDWF", "\tAddwf ", true}, {"ANDWF", "\tAndwf ", true},   {"CLRF", "\tClrf ", false},
    {"COMF", "\tComf ", true},   {"DECF", "\tDecf ", true},     {"DECFSZ", "\tDecfsz ", true},
    {"INCF", "\tIncf ", true},   {"INCFSZ", "\tIncfsz ", true}, {"IORWF", "\tIorwf ", true},
    {"MOVF", "\tMovf ", true},   {"MOVWF", "\tMovwf ", false},  {"RLF", "\tRlf ", true},
    {"RRF", "\tRrf ", true},     {"SUBWF", "\tSubwf ", true},   {"SWAPF", "\tSwapf ", true},
    {"XORWF", "\tXorwf ", true},
};

const RegisterMnemonic* findRegisterMnemonic(std::string_view keyword) {
    for (const RegisterMnemonic& m : kRegisterMnemonics)
        if (m.keyword == keyword) return &m;
    return nullptr;
}

void compileRegisterMnemonic(Compilation& c) {
    remarksEcho(c);
    const RegisterMnemonic* m = findRegisterMnemonic(c.stmt.keyword);
    assert(m && "register mnemonic routed without its table entry");
    std::optional<std::string> reg = readRegister(c);
    if (!reg) return;
    if (!m->destination) {
        skipComma(c);
        c.emit(std::string(m->head) + *reg);
        return;
    }
    c.emit(std::string(m->head) + *reg + readDestination(c));
}

void compileMovfw(Compilation& c) {
    remarksEcho(c);
    std::optional<std::string> reg = readRegister(c);
    if (!reg) return;
    skipComma(c);
    c.emit("\tMovf " + *reg + ",W");
}

struct BitMnemonic {
    std::string_view keyword;
    BitOp op;
};

constexpr BitMnemonic kBitMnemonics[] = {
    {"BCF", BitOp::Bcf}, {"BSF", BitOp::Bsf}, {"BTFSC", BitOp::Btfsc}, {"BTFSS", BitOp::Btfss}};

void compileBitMnemonic(Compilation& c) {
    remarksEcho(c);
    std::optional<std::string> operand = readBitOperand(c);
    if (!operand) return;
    for (const BitMnemonic& m : kBitMnemonics)
        if (m.keyword == c.stmt.keyword) emitBitText(c, m.op, *operand);
}

void compileTris(Compilation& c) {
    remarksEcho(c);
    if (std::optional<std::string> reg = readRegister(c)) emitOp(c, Op1::Tris, *reg);
}

void compileRet(Compilation& c) {
    remarksEcho(c);
    c.emit("\tReturn");
}

void compileOp0(Compilation& c, Op0 op) {
    remarksEcho(c);
    emitOp(c, op);
}

// --- Pseudo-instructions --------------------------------------------------------

// A label that must exist, or an assembler-relative address starting with "$".
void compileJump(Compilation& c) {
    remarksEcho(c);
    skipBlanks(c);
    LineBuffer& l = c.line;
    if (l.peek() == '$') {
        size_t start = l.pos;
        while (l.pos < l.length() && !isBlank(l.upper[l.pos]) && !isStatementEnd(l.upper[l.pos]))
            ++l.pos;
        emitOp(c, Op1::Goto, l.upper.substr(start, l.pos - start));
        return;
    }
    std::string label = readWord(c);
    if (label.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (lookupLabel(c, true, label)) emitOp(c, Op1::Goto, label);
}

// A status bit test that skips the jump unless the flag is as named.
void compileBranch(Compilation& c, BitOp test, int bit) {
    remarksEcho(c);
    emitBit(c, test, "3", bit);
    compileJump(c);
}

void compileStatusBit(Compilation& c, BitOp op, int bit) {
    remarksEcho(c);
    emitBit(c, op, "3", bit);
}

bool isNameChar(char ch) {
    return isLetterLike(ch) || (ch >= '0' && ch <= '9') || ch == '@' || ch == '#' || ch == '.' ||
           ch == '$';
}

// One assembler operand: names, numbers and "$" joined by operators, with
// brackets; two names side by side are no operand.
bool isOneOperand(std::string_view text) {
    static constexpr std::string_view kPrefix = "+-~!", kInfix = "+-*/%&|^";
    bool wantOperand = true;
    int depth = 0;
    for (size_t i = 0; i < text.size();) {
        char ch = text[i];
        if (isBlank(ch)) {
            ++i;
        } else if (wantOperand && (ch == '(' || kPrefix.find(ch) != std::string_view::npos)) {
            depth += ch == '(';
            ++i;
        } else if (wantOperand && isNameChar(ch)) {
            while (i < text.size() && isNameChar(text[i]))
                ++i;
            wantOperand = false;
        } else if (!wantOperand && ch == ')' && depth > 0) {
            --depth;
            ++i;
        } else if (!wantOperand && kInfix.find(ch) != std::string_view::npos) {
            i += (ch == '&' || ch == '|') && i + 1 < text.size() && text[i + 1] == ch ? 2 : 1;
            wantOperand = true;
        } else if (!wantOperand && (text.substr(i, 2) == "<<" || text.substr(i, 2) == ">>")) {
            i += 2;
            wantOperand = true;
        } else {
            return false;
        }
    }
    return !wantOperand && depth == 0;
}

// Operands separated by commas, each one name or expression.
bool isOperandList(std::string_view text) {
    size_t start = 0;
    while (true) {
        size_t comma = text.find(',', start);
        if (!isOneOperand(text.substr(start, comma - start))) return false;
        if (comma == std::string_view::npos) return true;
        start = comma + 1;
    }
}

// A line head followed by the rest of the source line, `count` operands in
// their assembler spelling.
void compileLineRest(Compilation& c, std::string_view head, int count) {
    remarksEcho(c);
    std::string rest = readLineRest(c);
    if (rest.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (!isOperandList(rest)) {
        reportError(c, kErrText, "Each operand must be one name, number or expression");
        return;
    }
    if (std::count(rest.begin(), rest.end(), ',') + 1 != count) {
        reportError(c, kErrText,
                    c.stmt.keyword + " takes " + std::to_string(count) +
                        (count == 1 ? " operand" : " operands"));
        return;
    }
    c.emit(std::string(head) + assemblerOperandText(c, rest));
}

constexpr Route kMnemonicRoutes[] = {
    {"ANDWF", compileRegisterMnemonic},
    {"ANDLW", compileLiteralMnemonic},
    {"ADDWF", compileRegisterMnemonic},
    {"ADDLW", compileLiteralMnemonic},
    {"BCF", compileBitMnemonic},
    {"BSF", compileBitMnemonic},
    {"BTFSC", compileBitMnemonic},
    {"BTFSS", compileBitMnemonic},
    {"CLRF", compileRegisterMnemonic},
    {"CLRW", [](Compilation& c) { compileOp0(c, Op0::Clrw); }},
    {"CLRWDT",
     [](Compilation& c) {
         remarksEcho(c);
         emitClrwdt(c);
     }},
    {"COMF", compileRegisterMnemonic},
    {"DECF", compileRegisterMnemonic},
    {"DECFSZ", compileRegisterMnemonic},
    {"INCF", compileRegisterMnemonic},
    {"INCFSZ", compileRegisterMnemonic},
    {"IORLW", compileLiteralMnemonic},
    {"IORWF", compileRegisterMnemonic},
    {"MOVLW", compileLiteralMnemonic},
    {"MOVF", compileRegisterMnemonic},
    {"MOVWF", compileRegisterMnemonic},
    {"NOP", [](Compilation& c) { compileOp0(c, Op0::Nop); }},
    {"OPTION", [](Compilation& c) { compileOp0(c, Op0::Option); }},
    {"RETFIE", [](Compilation& c) { compileOp0(c, Op0::Retfie); }},
    {"RET", compileRet},
    {"RETLW", compileLiteralMnemonic},
    {"RLF", compileRegisterMnemonic},
    {"RRF", compileRegisterMnemonic},
    {"SUBLW", compileLiteralMnemonic},
    {"SUBWF", compileRegisterMnemonic},
    {"SWAPF", compileRegisterMnemonic},
    {"TRIS", compileTris},
    {"XORLW", compileLiteralMnemonic},
    {"XORWF", compileRegisterMnemonic},
    {"MOVFW", compileMovfw},
    {"BC", [](Compilation& c) { compileBranch(c, BitOp::Btfsc, 0); }},
    {"BNC", [](Compilation& c) { compileBranch(c, BitOp::Btfss, 0); }},
    {"BZ", [](Compilation& c) { compileBranch(c, BitOp::Btfsc, 2); }},
    {"BNZ", [](Compilation& c) { compileBranch(c, BitOp::Btfss, 2); }},
    {"BDC", [](Compilation& c) { compileBranch(c, BitOp::Btfsc, 1); }},
    {"BNDC", [](Compilation& c) { compileBranch(c, BitOp::Btfss, 1); }},
    {"CLRC", [](Compilation& c) { compileStatusBit(c, BitOp::Bcf, 0); }},
    {"CLRDC", [](Compilation& c) { compileStatusBit(c, BitOp::Bcf, 1); }},
    {"CLRZ", [](Compilation& c) { compileStatusBit(c, BitOp::Bcf, 2); }},
    {"SETC", [](Compilation& c) { compileStatusBit(c, BitOp::Bsf, 0); }},
    {"SETDC", [](Compilation& c) { compileStatusBit(c, BitOp::Bsf, 1); }},
    {"SETZ", [](Compilation& c) { compileStatusBit(c, BitOp::Bsf, 2); }},
    {"SKIP",
     [](Compilation& c) {
         remarksEcho(c);
         emitOp(c, Op1::Goto, "$+1");
     }},
    {"SKPC", [](Compilation& c) { compileStatusBit(c, BitOp::Btfss, 0); }},
    {"SKPNC", [](Compilation& c) { compileStatusBit(c, BitOp::Btfsc, 0); }},
    {"SKPZ", [](Compilation& c) { compileStatusBit(c, BitOp::Btfss, 2); }},
    {"SKPNZ", [](Compilation& c) { compileStatusBit(c, BitOp::Btfsc, 2); }},
    {"SKPDC", [](Compilation& c) { compileStatusBit(c, BitOp::Btfss, 1); }},
    {"SKPNDC", [](Compilation& c) { compileStatusBit(c, BitOp::Btfsc, 1); }},
    {"JUMP", compileJump},
    {"LGOTO", [](Compilation& c) { compileLineRest(c, "\tF@G ", 1); }},
    {"LJUMP", [](Compilation& c) { compileLineRest(c, "\tF@G ", 1); }},
    {"TGOTO", [](Compilation& c) { compileLineRest(c, "\tt@g ", 4); }},
    {"BRSET", [](Compilation& c) { compileLineRest(c, "\tBrset ", 3); }},
    {"BRCLR", [](Compilation& c) { compileLineRest(c, "\tBrclr ", 3); }},
};

} // namespace

std::span<const Route> mnemonicRoutes() {
    return kMnemonicRoutes;
}

} // namespace zorvel
