// The built-in calculator's arithmetic: a value or a small integer
// expression in, a 64-bit result or a readable error out, and the result
// shown in decimal, hex and binary for a 16-bit or 32-bit register.
#pragma once

#include <QString>
#include <QtGlobal>

namespace zorvel::ide {

struct CalcResult {
    bool ok = false;
    qint64 value = 0;
    QString error; // empty when ok
};

// Numbers are decimal (200), hex ($C8) or binary (%11001000). Operators, from
// the tightest binding: unary - + ~, then * /, + -, << >>, &, ^, |, with
// parentheses for grouping. Overflow beyond 64 bits, division by zero and bad
// shift counts are errors, never wrong numbers.
CalcResult evaluateExpression(const QString& text);

struct CalcView {
    QString decimal;  // unsigned, with the signed value in brackets when negative
    QString hex;      // "$" and bits/4 digits
    QString binary;   // "%" and bits digits
    bool fits = true; // false when the value needed more bits than shown
};

// The low `bits` bits of value; bits is 16 or 32.
CalcView formatValue(qint64 value, int bits);

} // namespace zorvel::ide
