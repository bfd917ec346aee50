#include "compiler/frontend/numbers.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"

#include <cctype>

namespace zorvel {
namespace {

constexpr int64_t kTooLarge = int64_t{1} << 32;

int digitValue(char ch) {
    if (ch >= '0' && ch <= '9') return ch - '0';
    if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
    if (ch >= 'a' && ch <= 'f') return ch - 'a' + 10;
    return 99;
}

// Digits in `base`; saturates at kTooLarge so that any length stays safe.
std::optional<int64_t> parseDigits(std::string_view digits, int base) {
    if (digits.empty()) return std::nullopt;
    int64_t v = 0;
    for (char ch : digits) {
        int d = digitValue(ch);
        if (d >= base) return std::nullopt;
        v = std::min(v * base + d, kTooLarge);
    }
    return v;
}

// Binary digits: "1" adds its weight, "0" and blanks add nothing.
std::optional<int64_t> parseBinary(std::string_view digits) {
    if (digits.empty()) return std::nullopt;
    int64_t v = 0;
    for (char ch : digits) {
        if (ch != '0' && ch != '1' && ch != ' ') return std::nullopt;
        v = std::min(v * 2 + (ch == '1'), kTooLarge);
    }
    return v;
}

} // namespace

std::optional<int32_t> convertNumber(Compilation& c, std::string_view text) {
    std::optional<int64_t> v;
    if (!text.empty() && text[0] == '%') {
        v = parseBinary(text.substr(1));
        if (!v) {
            reportError(c, kErrText, "Not a Valid binary number");
            return std::nullopt;
        }
    } else if (!text.empty() && text[0] == '$') {
        v = parseDigits(text.substr(1), 16);
    } else {
        v = parseDigits(text, 10);
    }
    if (!v) {
        reportError(c, kErrText, "Invalid number '" + std::string(text) + "'");
        return std::nullopt;
    }
    if (*v > 65535) {
        reportError(c, kErrText, "Number larger than 16-bits (0 to 65535)");
        return std::nullopt;
    }
    NumberValue& n = c.number;
    n.value = static_cast<int32_t>(*v);
    n.text = std::to_string(n.value);
    n.high = std::to_string(n.value >> 8);
    n.low = std::to_string(n.value & 255);
    return n.value;
}

} // namespace zorvel
