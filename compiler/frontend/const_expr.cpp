#include "compiler/frontend/const_expr.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/numbers.h"

namespace zorvel {
namespace {

using Value = std::optional<int32_t>;

int32_t wrap(int64_t v) {
    return static_cast<int32_t>(static_cast<uint32_t>(v));
}

// Reads a two-character operator if present, else a one-character one.
bool accept(Compilation& c, std::string_view op) {
    LineBuffer& l = c.line;
    if (l.upper.compare(l.pos, op.size(), op) != 0) return false;
    l.pos += op.size();
    return true;
}

Value expression(Compilation& c);

Value factor(Compilation& c) {
    skipBlanks(c);
    char ch = c.line.peek();
    if (isLetterLike(ch)) {
        std::string name = normaliseName(readWord(c));
        if (name.empty() || !findSymbol(c, name, true)) return std::nullopt;
        return c.operand.address;
    }
    if (!isDigitLike(ch)) {
        reportError(c, kErrText, "Integer Expected");
        return std::nullopt;
    }
    std::string text = readWord(c);
    if (text.empty()) {
        reportError(c, kErrText, "Integer Expected");
        return std::nullopt;
    }
    return convertNumber(c, text);
}

Value primary(Compilation& c) {
    skipBlanks(c);
    if (!accept(c, "(")) return factor(c);
    Value v = expression(c);
    if (!v) return v;
    skipBlanks(c);
    if (!accept(c, ")")) {
        reportError(c, kErrText, ") Expected");
        return std::nullopt;
    }
    return v;
}

Value divide(Compilation& c, int64_t left, int64_t right, bool remainder) {
    if (right == 0) {
        reportError(c, kErrText, "Division by zero in constant expression");
        return std::nullopt;
    }
    if (left == INT32_MIN && right == -1) return remainder ? 0 : INT32_MIN;
    return wrap(remainder ? left % right : left / right);
}

Value term(Compilation& c) {
    Value left = primary(c);
    while (left) {
        skipBlanks(c);
        int64_t l = *left;
        if (accept(c, "*/")) {
            Value r = primary(c);
            if (!r) return r;
            left = wrap(l * *r / 256);
        } else if (accept(c, "**")) {
            Value r = primary(c);
            if (!r) return r;
            left = wrap(l * *r / 65536);
        } else if (accept(c, "//")) {
            Value r = primary(c);
            if (!r) return r;
            left = divide(c, l, *r, true);
        } else if (accept(c, "&")) {
            Value r = primary(c);
            if (!r) return r;
            left = static_cast<int32_t>(l & *r);
        } else if (accept(c, "*")) {
            Value r = primary(c);
            if (!r) return r;
            left = wrap(l * *r);
        } else if (accept(c, "/")) {
            Value r = primary(c);
            if (!r) return r;
            left = divide(c, l, *r, false);
        } else {
            break;
        }
    }
    return left;
}

Value expression(Compilation& c) {
    Value left = term(c);
    while (left) {
        skipBlanks(c);
        char op = c.line.peek();
        if (op != '+' && op != '-' && op != '^' && op != '|') break;
        ++c.line.pos;
        Value r = term(c);
        if (!r) return r;
        int64_t l = *left;
        switch (op) {
        case '+': left = wrap(l + *r); break;
        case '-': left = wrap(l - *r); break;
        case '^': left = static_cast<int32_t>(l ^ *r); break;
        default: left = static_cast<int32_t>(l | *r); break;
        }
    }
    return left;
}

} // namespace

std::optional<int32_t> evaluateConstExpr(Compilation& c) {
    return expression(c);
}

} // namespace zorvel
