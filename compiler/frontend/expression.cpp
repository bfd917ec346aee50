#include "compiler/frontend/expression.h"

#include "compiler/codegen/arithmetic.h"
#include "compiler/codegen/array_access.h"
#include "compiler/codegen/emit.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/ram.h"

#include <optional>

namespace zorvel {
namespace {

constexpr int kFirstTemporary = 7; // PP7; PP0..PP7 exist in every program

// The state of one expression being compiled.
struct Evaluator {
    Compilation& c;
    Value destination;
    int terms = 0;      // operands counted by the pre-scan
    int operations = 0; // operations generated or folded so far
    int temporary = kFirstTemporary;
    bool written = false; // the last operation wrote the destination
    std::string wregCopy; // the byte holding W's value from the statement's start
    int held = 0;         // numbered temporaries held for array elements
};

using Result = std::optional<Value>;

Result fail(Evaluator& ev, std::string_view text) {
    reportError(ev.c, kErrText, text);
    return std::nullopt;
}

// PP<n>, declared (with its high byte) the first time a number above 7 is used.
std::optional<std::string> temporaryName(Evaluator& ev, int n) {
    Compilation& c = ev.c;
    std::string name = "PP" + std::to_string(n);
    if (c.symbols.find(name)) return name;
    for (const std::string& part : {name, name + "H"}) {
        std::optional<int> address = placeByte(c);
        if (!address) {
            reportError(c, kErrWhole, "Too Many Variables");
            return std::nullopt;
        }
        emitDeclaration(c, part + " Equ " + std::to_string(*address));
        bool low = part == name;
        if (!c.symbols.add({part, part, low ? kKindWord : kKindByte, *address, -1})) {
            reportError(c, kErrText, "Too many symbols. A program has at most 2000");
            return std::nullopt;
        }
        ++c.ctx.variablesUsed;
    }
    return name;
}

// --- Operands -----------------------------------------------------------------

// An element with a constant index is its own symbol; any other is read into
// W and kept in a numbered temporary until the expression is done.
Result elementValue(Evaluator& ev, const std::string& text) {
    Compilation& c = ev.c;
    int outer = c.alloc.firstExpressionTemporary;
    c.alloc.firstExpressionTemporary = ev.temporary + 1;
    std::optional<Element> e = readElement(c, text);
    c.alloc.firstExpressionTemporary = outer;
    if (!e) return std::nullopt;
    if (e->index.kind == kKindNum) return Value{elementSymbol(*e), kKindByte, -1};
    elementToW(c, *e);
    releaseElement(c, *e);
    std::string temp = requestTemporary(c, kKindByte);
    ++ev.held;
    wToByte(c, temp);
    return Value{temp, kKindByte, -1};
}

Result operandValue(Evaluator& ev, const std::string& text) {
    Compilation& c = ev.c;
    if (text == "WREG") {
        if (ev.wregCopy.empty()) return fail(ev, "WREG cannot be read here");
        return Value{ev.wregCopy, kKindByte, -1};
    }
    std::string base = text.substr(0, text.find('.'));
    if (isFunctionKeyword(base))
        return fail(ev, "Function '" + base + "' is not supported yet in expressions");
    if (elementFollows(c)) return elementValue(ev, text);
    if (!classifyOperand(c, true, text)) return std::nullopt;
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum: return Value{std::to_string(op.address), kKindNum, -1};
    case kKindBit: return Value{op.target, kKindBit, op.bit};
    case kKindByte:
    case kKindByteArray: return Value{op.target, kKindByte, -1};
    case kKindWord:
    case kKindWordArray: return Value{op.target, kKindWord, -1};
    default: return fail(ev, "'" + text + "' cannot be used in an expression");
    }
}

Result shiftLevel(Evaluator& ev);

Result primary(Evaluator& ev) {
    Compilation& c = ev.c;
    skipBlanks(c);
    if (c.line.peek() == '(') {
        ++c.line.pos;
        Result inner = shiftLevel(ev);
        if (!inner) return inner;
        skipBlanks(c);
        if (c.line.peek() != ')') return fail(ev, ") Expected");
        ++c.line.pos;
        return inner;
    }
    std::string text = readOperand(c);
    if (text.empty()) return fail(ev, "Variable Expected");
    return operandValue(ev, text);
}

// --- Operations ---------------------------------------------------------------

// A left operand kept while its right operand is compiled: with four or more
// operands it is copied into the next PP temporary (constants stay as they are).
struct Saved {
    Value value;
    bool inTemporary = false;
};

std::optional<Saved> save(Evaluator& ev, const Value& left) {
    if (ev.terms < 4 || left.kind == kKindNum) return Saved{left, false};
    std::optional<std::string> temp = temporaryName(ev, ev.temporary);
    if (!temp) return std::nullopt;
    Value word{*temp, kKindWord, -1};
    emitTransfer(ev.c, left, word);
    ++ev.temporary;
    return Saved{word, true};
}

// Generates (or folds) left op right; the last operation writes the
// destination, the others a WORD temporary.
Result apply(Evaluator& ev, int op, const Value& left, const Value& right) {
    ++ev.operations;
    if (left.kind == kKindNum && right.kind == kKindNum) {
        int v = foldOperation(op, std::stoi(left.name), std::stoi(right.name));
        return Value{std::to_string(v), kKindNum, -1};
    }
    Value result = ev.destination;
    bool last = ev.operations >= ev.terms - 1;
    if (!last) {
        std::optional<std::string> temp = temporaryName(ev, ev.temporary);
        if (!temp) return std::nullopt;
        result = {*temp, kKindWord, -1};
    }
    if (!emitOperation(ev.c, op, left, right, result)) return std::nullopt;
    ev.written = last;
    return result;
}

using Level = Result (*)(Evaluator&);

Result combine(Evaluator& ev, const Value& left, int op, Level next) {
    std::optional<Saved> saved = save(ev, left);
    if (!saved) return std::nullopt;
    Result right = next(ev);
    if (!right) return right;
    if (saved->inTemporary) --ev.temporary;
    return apply(ev, op, saved->value, *right);
}

bool accept(Compilation& c, std::string_view token) {
    if (c.line.upper.compare(c.line.pos, token.size(), token) != 0) return false;
    c.line.pos += token.size();
    return true;
}

// Level 1: "*", "**", "*/", "/", "//", "&".
std::optional<int> tightOperator(Compilation& c) {
    skipBlanks(c);
    if (accept(c, "**")) return kOpMultiplyHigh;
    if (accept(c, "*/")) return kOpMultiplyMiddle;
    if (accept(c, "*")) return kOpMultiply;
    if (accept(c, "//")) return kOpRemainder;
    if (accept(c, "/")) return kOpDivide;
    if (accept(c, "&")) return kOpAnd;
    return std::nullopt;
}

// Level 2: "+", "-", "|", "^".
std::optional<int> additiveOperator(Compilation& c) {
    skipBlanks(c);
    if (accept(c, "+")) return kOpAdd;
    if (accept(c, "-")) return kOpSubtract;
    if (accept(c, "|")) return kOpOr;
    if (accept(c, "^")) return kOpXor;
    return std::nullopt;
}

// Level 3: "<<", ">>"; a lone "<" or ">" is a comparison and ends the expression.
std::optional<int> shiftOperator(Compilation& c) {
    skipBlanks(c);
    if (accept(c, "<<")) return kOpShiftLeft;
    if (accept(c, ">>")) return kOpShiftRight;
    return std::nullopt;
}

template <Level Next, std::optional<int> (*Operator)(Compilation&)>
Result level(Evaluator& ev) {
    Result left = Next(ev);
    while (left) {
        std::optional<int> op = Operator(ev.c);
        if (!op) break;
        left = combine(ev, *left, *op, Next);
    }
    return left;
}

Result tightLevel(Evaluator& ev) {
    return level<primary, tightOperator>(ev);
}

Result additiveLevel(Evaluator& ev) {
    return level<tightLevel, additiveOperator>(ev);
}

Result shiftLevel(Evaluator& ev) {
    return level<additiveLevel, shiftOperator>(ev);
}

bool mentionsWreg(const Compilation& c) {
    for (const TermScan::Entry& e : c.termScan.entries)
        if (e.name == "WREG") return true;
    return false;
}

} // namespace

void compileExpression(Compilation& c, const Value& destination) {
    Evaluator ev{c, destination, 0, 0, c.alloc.firstExpressionTemporary, false, "", 0};
    ev.terms = countTerms(c);
    if (ev.terms == 0) {
        reportError(c, kErrText, "Variable Expected");
        return;
    }
    if (ev.terms == 1 && peekWord(c) == "WREG") {
        readOperand(c);
        emitTransfer(c, {"WREG", kKindWreg, -1}, destination);
        return;
    }
    if (mentionsWreg(c)) {
        // W is the first thing the statement's code changes: keep its value.
        ev.wregCopy = requestTemporary(c, kKindByte);
        wToByte(c, ev.wregCopy);
    }
    Result value = shiftLevel(ev);
    if (value && !ev.written) emitTransfer(c, *value, destination);
    for (int i = 0; i < ev.held; ++i)
        releaseTemporary(c);
    if (!ev.wregCopy.empty()) releaseTemporary(c);
}

} // namespace zorvel
