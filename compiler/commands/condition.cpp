#include "compiler/commands/condition.h"

#include "compiler/codegen/array_access.h"
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"

#include <string>

namespace zorvel {
namespace {

struct Operator {
    std::string_view text;
    Relation falseJump; // the jump that leaves the comparison when it fails
};

// Two-character operators before the single ones, in this order.
constexpr Operator kOperators[] = {
    {"!=", Relation::Equal},       {"<>", Relation::Equal},    {">=", Relation::Less},
    {"=>", Relation::Less},        {"<=", Relation::Greater},  {"=<", Relation::Greater},
    {"!<", Relation::Less},        {"!>", Relation::Greater},  {"==", Relation::NotEqual},
    {"<", Relation::GreaterEqual}, {">", Relation::LessEqual}, {"=", Relation::NotEqual},
};

bool atStatementEnd(Compilation& c) {
    skipBlanks(c);
    char ch = c.line.peek();
    return isStatementEnd(ch) || ch == ';';
}

// A report moves the cursor and counts; an error count above the limit only
// stops the line loop.
bool reportedSince(const Compilation& c, int errorsBefore) {
    return c.ctx.errorCount != errorsBefore || c.ctx.lineIndex >= c.ctx.lineLimit;
}

// Operands that need the expression evaluator: several terms, a bracketed
// or signed start, WREG, a function keyword or a macro with a result.
bool needsEvaluation(Compilation& c) {
    skipBlanks(c);
    char first = c.line.peek();
    if (!isIdentifierChar(first)) return first == '(' || first == '-';
    if (countTerms(c) > 1) return true;
    std::string word = peekWord(c);
    // W is no variable: the evaluator copies it into the operand's register.
    if (word == "WREG") return true;
    return isFunctionKeyword(word) || c.macroNames.contains(word);
}

std::optional<Value> evaluateInto(Compilation& c, const char* registerName) {
    int before = c.ctx.errorCount;
    Value result{registerName, kKindWord, -1};
    compileExpression(c, result);
    if (reportedSince(c, before)) return std::nullopt;
    return result;
}

// An array element operand, read into the operand's register. nullopt when no element follows.
std::optional<std::optional<Value>> elementOperand(Compilation& c, const char* registerName) {
    size_t start = c.line.pos;
    int errors = c.ctx.errorCount;
    std::string text = readOperand(c);
    if (reportedSince(c, errors)) return std::optional<Value>{};
    if (text.empty() || !elementFollows(c)) {
        c.line.pos = start;
        return std::nullopt;
    }
    std::optional<Element> e = readElement(c, text);
    if (!e) return std::optional<Value>{};
    Value result{registerName, kKindByte, -1};
    elementInto(c, *e, result);
    releaseElement(c, *e);
    return std::optional<Value>{result};
}

std::optional<Value> parseOperand(Compilation& c, const char* registerName) {
    if (atStatementEnd(c)) {
        reportError(c, kErrText, "Variable Expected");
        return std::nullopt;
    }
    if (macroFollows(c)) return compileMacroOperand(c, registerName);
    if (needsEvaluation(c)) return evaluateInto(c, registerName);
    std::optional<std::optional<Value>> element = elementOperand(c, registerName);
    return element ? *element : parseSingleOperand(c);
}

std::optional<Value> operandValue(Compilation& c, const std::string& text) {
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum: return Value{std::to_string(op.address), kKindNum, -1};
    case kKindByte:
    case kKindWord: return Value{op.target, op.kind, -1};
    case kKindBit: return Value{op.target, kKindBit, op.bit};
    case kKindByteArray:
    case kKindWordArray:
        reportError(c, kErrText, "Array '" + text + "' needs an element index");
        return std::nullopt;
    default:
        reportError(c, kErrText, "'" + text + "' is not a variable or constant");
        return std::nullopt;
    }
}

} // namespace

std::optional<Value> parseSingleOperand(Compilation& c) {
    int before = c.ctx.errorCount;
    std::string text = readOperand(c);
    if (text.empty()) {
        if (!reportedSince(c, before)) reportError(c, kErrText, "Variable Expected");
        return std::nullopt;
    }
    skipBlanks(c);
    if (c.line.peek() == '[') {
        reportError(c, kErrArrayNotSupported, c.stmt.keyword);
        return std::nullopt;
    }
    if (!classifyOperand(c, true, text)) return std::nullopt;
    return operandValue(c, text);
}

std::optional<Value> parseLeftOperand(Compilation& c) {
    return parseOperand(c, "PP7");
}

std::optional<Value> parseRightOperand(Compilation& c) {
    return parseOperand(c, "PP1");
}

std::optional<Relation> readFalseRelation(Compilation& c) {
    skipBlanks(c);
    LineBuffer& l = c.line;
    for (const Operator& op : kOperators) {
        if (l.upper.compare(l.pos, op.text.size(), op.text) == 0) {
            l.pos += op.text.size();
            return op.falseJump;
        }
    }
    reportError(c, kErrText, "Unknown operator");
    return std::nullopt;
}

bool compileComparison(Compilation& c, const Value& left, std::string_view label) {
    std::optional<Relation> relation = readFalseRelation(c);
    if (!relation) return false;
    std::optional<Value> right = parseRightOperand(c);
    if (!right) return false;
    emitJumpIf(c, *relation, left, *right, label);
    return true;
}

bool compileCondition(Compilation& c, std::string_view label) {
    std::optional<Value> left = parseLeftOperand(c);
    return left && compileComparison(c, *left, label);
}

} // namespace zorvel
