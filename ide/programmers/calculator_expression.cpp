#include "ide/programmers/calculator_expression.h"

#include <QStringList>
#include <array>
#include <limits>

namespace zorvel::ide {

namespace {

constexpr int kMaxDepth = 200;

// Binary operator levels, loosest first.
const std::array<QStringList, 6> kLevels = {QStringList{"|"},      QStringList{"^"},
                                            QStringList{"&"},      QStringList{"<<", ">>"},
                                            QStringList{"+", "-"}, QStringList{"*", "/"}};

int digitValue(QChar c, int base) {
    const int d = c.isDigit()                                  ? c.digitValue()
                  : (c.toUpper() >= 'A' && c.toUpper() <= 'F') ? c.toUpper().unicode() - 'A' + 10
                                                               : -1;
    return d >= 0 && d < base ? d : -1;
}

// Recursive descent over the text. The first error sticks; after it every
// step returns 0 and the caller only reports the error.
class Parser {
public:
    explicit Parser(const QString& text) : text_(text) {}

    CalcResult run() {
        skipBlanks();
        if (pos_ == text_.size()) return {false, 0, QStringLiteral("Empty expression")};
        const qint64 value = parseLevel(0);
        skipBlanks();
        if (error_.isEmpty() && pos_ < text_.size())
            fail(QStringLiteral("Unexpected '%1' at position %2").arg(text_[pos_]).arg(pos_ + 1));
        if (!error_.isEmpty()) return {false, 0, error_};
        return {true, value, {}};
    }

private:
    const QString& text_;
    qsizetype pos_ = 0;
    int depth_ = 0;
    QString error_;

    bool failed() const { return !error_.isEmpty(); }
    qint64 fail(const QString& message) {
        if (error_.isEmpty()) error_ = message;
        return 0;
    }
    QString here() const { return QString::number(pos_ + 1); }

    void skipBlanks() {
        while (pos_ < text_.size() && text_[pos_].isSpace())
            ++pos_;
    }

    bool take(const QString& op) {
        skipBlanks();
        if (!QStringView(text_).mid(pos_).startsWith(op)) return false;
        pos_ += op.size();
        return true;
    }

    QString takeOperator(const QStringList& ops) {
        for (const QString& op : ops)
            if (take(op)) return op;
        return {};
    }

    qint64 parseLevel(size_t level) {
        if (level == kLevels.size()) return parseUnary();
        qint64 left = parseLevel(level + 1);
        while (!failed()) {
            const QString op = takeOperator(kLevels[level]);
            if (op.isEmpty()) break;
            const qint64 right = parseLevel(level + 1);
            if (failed()) break;
            left = apply(op, left, right);
        }
        return left;
    }

    qint64 apply(const QString& op, qint64 a, qint64 b) {
        qint64 r = 0;
        if (op == "|") return a | b;
        if (op == "^") return a ^ b;
        if (op == "&") return a & b;
        if (op == "+") return __builtin_add_overflow(a, b, &r) ? tooLarge() : r;
        if (op == "-") return __builtin_sub_overflow(a, b, &r) ? tooLarge() : r;
        if (op == "*") return __builtin_mul_overflow(a, b, &r) ? tooLarge() : r;
        if (op == "/") return divide(a, b);
        return shift(op, a, b);
    }

    qint64 tooLarge() { return fail(QStringLiteral("Number too large")); }

    qint64 divide(qint64 a, qint64 b) {
        if (b == 0) return fail(QStringLiteral("Division by zero"));
        if (a == std::numeric_limits<qint64>::min() && b == -1) return tooLarge();
        return a / b;
    }

    qint64 shift(const QString& op, qint64 a, qint64 count) {
        if (count < 0 || count > 63) return fail(QStringLiteral("Shift count must be 0 to 63"));
        if (op == ">>") return a >> count;
        const qint64 r = a << count;
        return (r >> count) == a ? r : tooLarge();
    }

    qint64 parseUnary() {
        if (++depth_ > kMaxDepth) return fail(QStringLiteral("Expression nested too deeply"));
        qint64 value = 0;
        if (take("-")) {
            value = parseUnary();
            if (value == std::numeric_limits<qint64>::min()) value = tooLarge();
            value = -value;
        } else if (take("+")) {
            value = parseUnary();
        } else if (take("~")) {
            value = ~parseUnary();
        } else {
            value = parsePrimary();
        }
        --depth_;
        return failed() ? 0 : value;
    }

    qint64 parsePrimary() {
        skipBlanks();
        if (take("(")) {
            const qint64 value = parseLevel(0);
            if (!failed() && !take(")")) return fail("Missing ) at position " + here());
            return value;
        }
        if (take("$")) return parseDigits(16, QStringLiteral("Hex digit expected after $"));
        if (take("%")) return parseDigits(2, QStringLiteral("Binary digit expected after %"));
        if (pos_ < text_.size() && text_[pos_].isDigit())
            return parseDigits(10, QStringLiteral("Number expected"));
        if (pos_ == text_.size()) return fail(QStringLiteral("Number expected at the end"));
        return fail("Number expected at position " + here());
    }

    qint64 parseDigits(int base, const QString& missing) {
        if (pos_ == text_.size() || digitValue(text_[pos_], base) < 0)
            return fail(missing + " at position " + here());
        qint64 value = 0;
        for (; pos_ < text_.size() && digitValue(text_[pos_], base) >= 0; ++pos_) {
            if (__builtin_mul_overflow(value, base, &value) ||
                __builtin_add_overflow(value, digitValue(text_[pos_], base), &value))
                return tooLarge();
        }
        return value;
    }
};

} // namespace

CalcResult evaluateExpression(const QString& text) {
    return Parser(text).run();
}

CalcView formatValue(qint64 value, int bits) {
    const quint64 mask = bits >= 64 ? ~quint64{0} : (quint64{1} << bits) - 1;
    const quint64 low = quint64(value) & mask;
    const quint64 top = quint64{1} << (bits - 1);
    CalcView view;
    view.decimal = QString::number(low);
    if (low & top) view.decimal += " (" + QString::number(qint64(low) - qint64(mask) - 1) + ")";
    view.hex = "$" + QString::number(low, 16).toUpper().rightJustified(bits / 4, '0');
    view.binary = "%" + QString::number(low, 2).rightJustified(bits, '0');
    const qint64 lowest = -qint64(top);
    view.fits = value < 0 ? value >= lowest : quint64(value) <= mask;
    return view;
}

} // namespace zorvel::ide
