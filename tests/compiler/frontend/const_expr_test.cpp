// Tests of the compile-time constant-expression evaluator.
#include "compiler/driver/compilation.h"
#include "compiler/frontend/const_expr.h"
#include "support/test_support.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace zorvel {
namespace {

using test::errorFrame;
using test::setLine;

// A pass-2 compilation with a few registers, variables and constants.
struct Fixture : test::PassTwo {
    Fixture() {
        c.symbols.add({"PORTB", "PORTB", kKindByte, 6, -1});
        c.symbols.add({"STATUS", "STATUS", kKindByte, 3, -1});
        c.symbols.add({"_K", "100", kKindNum, 100, -1});
        c.symbols.add({"_X", "3", kKindNum, 3, -1});
        c.symbols.add({"BIG", "4660", kKindNum, 4660, -1});
        c.symbols.add({"COUNT", "COUNT", kKindByte, 32, -1});
        c.symbols.add({"TOTAL", "TOTAL", kKindWord, 40, -1});
        c.symbols.add({"TOTALH", "TOTALH", kKindByte, 41, -1});
    }
};

struct ValueCase {
    std::string text;
    int32_t value;
};

TEST(ConstantExpression, Values) {
    const ValueCase cases[] = {
        // the scaled and remainder operators
        {"(10 + 6) */ 128", 8},
        {"1000 ** 3000", 45},
        {"17 // 5", 2},
        {"256 */ 256", 256},
        {"5 */ 0", 0},
        {"(0 - 300) */ 1", -1},
        {"(0 - 1000) ** 3000", -45},
        // chains, left to right
        {"2*3*4", 24},
        {"100/7/2", 7},
        {"100 - 10 - 20 - 30", 40},
        {"1000 / 10 / 10 / 2", 5},
        {"17 // 5 * 3", 6},
        {"2 * (3 + 4) * 5", 70},
        {"1 + 2 ^ 3", 0},
        {"8 - 2 | 1", 7},
        // precedence
        {"2+3*4", 14},
        {"2*3+4", 10},
        {"20 - 12 / 4", 17},
        {"1 + 10 // 4", 3},
        // logical operators: "&" binds like "*", "|" and "^" like "+"
        {"12 & 10", 8},
        {"12 | 3", 15},
        {"12 ^ 10", 6},
        {"1 | 6 & 3", 3},
        {"2 + 12 & 10", 10},
        {"12 ^ 10 | 1", 7},
        // parentheses
        {"(((7)))", 7},
        {"((2 + 3) * (4 + 1))", 25},
        {"(2 + 3) * 4", 20},
        {"2 * (3 + (4 - 1) * 2)", 18},
        // number forms
        {"$10 + %11", 19},
        {"\"A\" + 1", 66},
        {"$ff", 255},
        {"65535", 65535},
        // names: a constant gives its value, a register or variable its address
        {"K * 2", 200},
        {"K * 2 + X", 203},
        {"PORTB + 1", 7},
        {"STATUS", 3},
        {"COUNT", 32},
        {"TOTAL", 40},
        {"BIG / 256", 18},
        {"k + 1", 101},
        // signs and rounding toward zero
        {"0 - 5", -5},
        {"1 - 2", -1},
        {"(0 - 7) / 2", -3},
        {"(0 - 7) // 2", -1},
        {"7 // (0 - 2)", 1},
        // 32-bit wrap-around
        {"60000 * 60000", -694967296},
        {"65535 * 65535", -131071},
        {"65535 * 65535 + 1", -131070},
        {"65535*65535*65535", 196607},
        {"32768 * 32768 * 2", std::numeric_limits<int32_t>::min()},
        {"32768 * 32768 * 2 - 1", std::numeric_limits<int32_t>::max()},
        {"32768 * 32768 * 2 / (0 - 1)", std::numeric_limits<int32_t>::min()},
        {"32768 * 32768 * 2 // (0 - 1)", 0},
    };
    for (const ValueCase& k : cases) {
        SCOPED_TRACE("expression [" + k.text + "]");
        Fixture f;
        setLine(f.c, k.text);
        std::optional<int32_t> v = evaluateConstExpr(f.c);
        ASSERT_TRUE(v.has_value());
        EXPECT_EQ(*v, k.value);
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
    }
}

// The evaluator stops at the first character that cannot continue the
// expression and leaves the cursor there.
TEST(ConstantExpression, StopsAtTheEndOfTheExpression) {
    struct Case {
        std::string text;
        size_t start;
        int32_t value;
        size_t expectedPos;
    };
    const Case cases[] = {
        {"3 + 4 , X", 0, 7, 6},     {"(1+2)*3 THEN", 0, 9, 8}, {"ORG 10 * 4", 4, 40, 10},
        {"DIM A[4 * 2]", 6, 8, 11}, {"5 : X = 1", 0, 5, 2},    {"K = 3", 0, 100, 2},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE("expression [" + k.text + "] from " + std::to_string(k.start));
        Fixture f;
        setLine(f.c, k.text, k.start);
        std::optional<int32_t> v = evaluateConstExpr(f.c);
        ASSERT_TRUE(v.has_value());
        EXPECT_EQ(*v, k.value);
        EXPECT_EQ(f.c.line.pos, k.expectedPos);
        EXPECT_TRUE(f.c.messages.empty());
    }
}

struct ErrorCase {
    std::string text;
    std::string message;
};

TEST(ConstantExpression, Faults) {
    const std::string byZero = "Division by zero in constant expression";
    const ErrorCase cases[] = {
        {"FOO + 1", " Variable ' FOO ' not defined"},
        {"2 * NOPE", " Variable ' NOPE ' not defined"},
        {"Z", " Variable ' _Z ' not defined"},
        {"(1 + 2", ") Expected"},
        {"((1 + 2) * 3", ") Expected"},
        {"(4 5)", ") Expected"},
        {"", "Integer Expected"},
        {"+ 3", "Integer Expected"},
        {"2 * )", "Integer Expected"},
        {"4 + ", "Integer Expected"},
        {"(", "Integer Expected"},
        {"5 / 0", byZero},
        {"5 // 0", byZero},
        {"7 / (3 - 3)", byZero},
        {"1 + 8 // (2 - 2)", byZero},
        {"K / (K - 100)", byZero},
        {"70000", "Number larger than 16-bits (0 to 65535)"},
        {"1 + 65536", "Number larger than 16-bits (0 to 65535)"},
        {"12A + 1", "Invalid number '12A'"},
        {"%12", "Not a Valid binary number"},
    };
    for (const ErrorCase& k : cases) {
        SCOPED_TRACE("expression [" + k.text + "]");
        Fixture f;
        setLine(f.c, k.text);
        std::optional<int32_t> v = evaluateConstExpr(f.c);
        EXPECT_FALSE(v.has_value());
        ASSERT_EQ(f.c.messages.size(), 1u);
        EXPECT_EQ(f.c.messages[0], errorFrame(f.c.line.upper, k.message));
        EXPECT_EQ(f.c.ctx.errorCount, 1);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
    }
}

TEST(ConstantExpression, FaultsSilentInPassOne) {
    const std::string cases[] = {"FOO + 1", "(1 + 2", "5 / 0", "+"};
    for (const std::string& text : cases) {
        SCOPED_TRACE("expression [" + text + "]");
        Fixture f;
        f.c.ctx.pass = 1;
        setLine(f.c, text);
        EXPECT_FALSE(evaluateConstExpr(f.c).has_value());
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
    }
}

} // namespace
} // namespace zorvel
