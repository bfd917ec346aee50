// Assignment ("target = expression", LET), INC, DEC and SWAP.
#include "compiler/codegen/arithmetic.h"
#include "compiler/codegen/array_access.h"
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/const_expr.h"
#include "compiler/frontend/expression.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/statement.h"

#include <optional>

namespace zorvel {
namespace {

bool isVariable(int kind) {
    return kind == kKindByte || kind == kKindWord || kind == kKindBit || kind == kKindByteArray;
}

// The current operand as a generator operand; an array name is its first element.
Value currentValue(const Compilation& c) {
    const Operand& op = c.operand;
    return {op.target, op.kind == kKindByteArray ? kKindByte : op.kind, op.bit};
}

// A variable named by `text`, or WREG; nullopt after reporting.
std::optional<Value> readTarget(Compilation& c, const std::string& text, std::string_view what) {
    if (text == "WREG") return Value{"WREG", kKindWreg, -1};
    if (!classifyOperand(c, true, text)) return std::nullopt;
    if (c.operand.kind == kKindNum) {
        reportError(c, kErrText, what);
        return std::nullopt;
    }
    if (!isVariable(c.operand.kind)) {
        reportError(c, kErrArrayNotSupported, c.stmt.keyword);
        return std::nullopt;
    }
    return currentValue(c);
}

bool atStatementEnd(Compilation& c) {
    skipBlanks(c);
    return c.line.atEnd() || isStatementEnd(c.line.peek()) || closingKeywordFollows(c);
}

bool readEquals(Compilation& c) {
    skipBlanks(c);
    if (c.line.peek() != '=') {
        reportError(c, kErrText, "Assignment operator '=' missing");
        return false;
    }
    ++c.line.pos;
    return true;
}

// A right-hand side that is one array element goes through W straight into
// the destination; true when it was one.
bool assignSingleElement(Compilation& c, const Value& dest) {
    if (countTerms(c) != 1 || !isIdentifierChar(c.line.peek())) return false;
    size_t start = c.line.pos;
    std::string text = readOperand(c);
    if (!elementFollows(c)) {
        c.line.pos = start;
        return false;
    }
    std::optional<Element> e = readElement(c, text);
    if (!e) return true;
    elementInto(c, *e, dest);
    releaseElement(c, *e);
    return true;
}

void assignValue(Compilation& c, const Value& dest) {
    int errors = c.ctx.errorCount;
    skipBlanks(c);
    if (isFunctionKeyword(peekWord(c)))
        compileFunction(c, dest);
    else if (macroFollows(c))
        compileMacroValue(c, dest);
    else if (!assignSingleElement(c, dest))
        compileExpression(c, dest);
    if (c.ctx.errorCount == errors && !atStatementEnd(c)) reportError(c, kErrSyntax);
}

// The value of an element assignment: one plain operand is written as it
// is; anything else is compiled into PP7 first.
std::optional<Value> elementSource(Compilation& c) {
    skipBlanks(c);
    size_t start = c.line.pos;
    if (countTerms(c) == 1 && isIdentifierChar(c.line.peek()) && !isFunctionKeyword(peekWord(c))) {
        std::string text = readOperand(c);
        if (text == "WREG") return Value{"WREG", kKindWreg, -1};
        if (!elementFollows(c) && classifyOperand(c, false, text)) {
            const Operand& op = c.operand;
            if (op.kind == kKindNum) return Value{std::to_string(op.address), kKindNum, -1};
            if (op.kind == kKindBit) return Value{op.target, kKindBit, op.bit};
            if (op.kind == kKindByte || op.kind == kKindWord)
                return Value{op.target, kKindByte, -1};
        }
        c.line.pos = start;
    }
    if (countTerms(c) > 1 && c.termScan.allConstant) {
        std::optional<int32_t> v = evaluateConstExpr(c);
        if (!v) return std::nullopt;
        return Value{std::to_string(*v & 255), kKindNum, -1};
    }
    Value pp7{"PP7", kKindWord, -1};
    int errors = c.ctx.errorCount;
    assignValue(c, pp7);
    if (c.ctx.errorCount != errors) return std::nullopt;
    return Value{"PP7", kKindByte, -1};
}

void assignToElement(Compilation& c, const std::string& target) {
    std::optional<Element> e = readElement(c, target);
    if (!e) return;
    if (readEquals(c)) {
        std::optional<Value> value = elementSource(c);
        if (value && atStatementEnd(c))
            writeElement(c, *e, *value);
        else if (value)
            reportError(c, kErrSyntax);
    }
    releaseElement(c, *e);
}

void assignTo(Compilation& c, const std::string& target) {
    if (elementFollows(c)) return assignToElement(c, target);
    std::optional<Value> dest =
        readTarget(c, target, "Cannot assign a Variable to a Numeric constant");
    if (!dest) return;
    if (readEquals(c)) assignValue(c, *dest);
}

// INC and DEC: the add or subtract generator with the constant 1, the
// variable being both left operand and result.
void compileStep(Compilation& c, int op, std::string_view constantMessage) {
    remarksEcho(c);
    std::string text = readOperand(c);
    if (text.empty()) {
        reportError(c, kErrText, "Variable Expected");
        return;
    }
    skipBlanks(c);
    if (c.line.peek() == '[') {
        reportError(c, kErrArrayNotSupported, c.stmt.keyword);
        return;
    }
    std::optional<Value> v = readTarget(c, text, constantMessage);
    if (!v) return;
    if (v->kind == kKindWreg) {
        emitOp(c, Op1::Addlw, op == kOpAdd ? "1" : "255");
        return;
    }
    emitOperation(c, op, *v, {"1", kKindNum, -1}, *v);
}

// --- SWAP -----------------------------------------------------------------------

// b - a into W, a + W = b into a, b - W = a into b.
void swapBytes(Compilation& c, std::string_view a, std::string_view b) {
    emitOp(c, Op1::MovFW, a);
    emitOp(c, Op1::SubwfW, b);
    emitOp(c, Op1::AddwfF, a);
    emitOp(c, Op1::SubwfF, b);
}

// W and a register exchanged by three exclusive-ors.
void swapWithW(Compilation& c, const Value& v) {
    emitOp(c, Op1::XorwfF, v.name);
    emitOp(c, Op1::XorwfW, v.name);
    emitOp(c, Op1::XorwfF, v.name);
    if (v.kind == kKindWord) emitOp(c, Op1::ClrF, v.name + "H");
}

void swapBits(Compilation& c, const Value& a, const Value& b) {
    emitOp(c, Op0::Clrdc);
    emitBit(c, BitOp::BtfscBanked, a.name, a.bit);
    emitOp(c, Op0::Setdc);
    emitOp(c, Op0::Clrc);
    emitBit(c, BitOp::BtfscBanked, b.name, b.bit);
    emitOp(c, Op0::Setc);
    emitFlagToBit(c, Flag::Carry, a.name, a.bit);
    emitFlagToBit(c, Flag::DigitCarry, b.name, b.bit);
}

void swapValues(Compilation& c, const Value& a, const Value& b) {
    if (a.kind == kKindBit && b.kind == kKindBit) return swapBits(c, a, b);
    if (a.kind == kKindWreg || b.kind == kKindWreg) {
        const Value& v = a.kind == kKindWreg ? b : a;
        if (v.kind == kKindWreg) return;
        if (v.kind == kKindBit) {
            reportError(c, kErrText, "SWAP of WREG with a BIT is not supported");
            return;
        }
        return swapWithW(c, v);
    }
    if (a.kind == kKindBit || b.kind == kKindBit) {
        const Value& bit = a.kind == kKindBit ? a : b;
        const Value& v = a.kind == kKindBit ? b : a;
        bitToW(c, bit.name, bit.bit);
        swapWithW(c, v);
        emitWregBit(c, bit.name, bit.bit);
        return;
    }
    swapBytes(c, a.name, b.name);
    if (a.kind == kKindWord && b.kind == kKindWord) return swapBytes(c, a.name + "H", b.name + "H");
    if (a.kind == kKindWord) emitOp(c, Op1::ClrF, a.name + "H");
    if (b.kind == kKindWord) emitOp(c, Op1::ClrF, b.name + "H");
}

std::optional<Value> readSwapOperand(Compilation& c) {
    std::string text = readOperand(c);
    if (text.empty()) {
        reportError(c, kErrText, "Variable Expected");
        return std::nullopt;
    }
    skipBlanks(c);
    if (c.line.peek() == '[') {
        reportError(c, kErrArrayNotSupported, "SWAP");
        return std::nullopt;
    }
    return readTarget(c, text, "Cannot SWAP a numeric constant");
}

} // namespace

void compileLet(Compilation& c) {
    remarksEcho(c);
    std::string target = readOperand(c);
    if (target.empty()) {
        reportError(c, kErrText, "Variable Expected");
        return;
    }
    assignTo(c, target);
}

void compileIncrement(Compilation& c) {
    compileStep(c, kOpAdd, "Cannot increment a numeric constant");
}

void compileDecrement(Compilation& c) {
    compileStep(c, kOpSubtract, "Cannot decrement a numeric constant");
}

void compileSwap(Compilation& c) {
    remarksEcho(c);
    std::optional<Value> a = readSwapOperand(c);
    if (!a) return;
    skipBlanks(c);
    if (c.line.peek() != ',') {
        reportError(c, kErrComma);
        return;
    }
    ++c.line.pos;
    std::optional<Value> b = readSwapOperand(c);
    if (!b) return;
    swapValues(c, *a, *b);
}

void compileAssignment(Compilation& c) {
    if (isMacroStatement(c)) return compileMacroCall(c);
    remarksEcho(c);
    assignTo(c, c.stmt.keyword);
}

} // namespace zorvel
