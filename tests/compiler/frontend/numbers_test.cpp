// Tests of the number reader: decimal, "$" hexadecimal, "%" binary and
// character literals, the 16-bit limit and the number value record.
#include "compiler/driver/compilation.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/numbers.h"
#include "support/test_support.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <string>

namespace zorvel {
namespace {

using test::errorFrame;
using test::setLine;

struct Fixture : test::PassTwo {};

struct GoodCase {
    std::string text;
    int32_t value;
    std::string decimal, high, low;
};

TEST(NumberConversion, AcceptedNumbersFillTheRecord) {
    const GoodCase cases[] = {
        {"0", 0, "0", "0", "0"},
        {"7", 7, "7", "0", "7"},
        {"255", 255, "255", "0", "255"},
        {"$FF", 255, "255", "0", "255"},
        {"$ff", 255, "255", "0", "255"},
        {"$Ff", 255, "255", "0", "255"},
        {"%11111111", 255, "255", "0", "255"},
        {"%1111 1111", 495, "495", "1", "239"},
        {"%1 0", 4, "4", "0", "4"},
        {"%1 1", 5, "5", "0", "5"},
        {"% 1", 1, "1", "0", "1"},
        {"%0", 0, "0", "0", "0"},
        {"%1010", 10, "10", "0", "10"},
        {"256", 256, "256", "1", "0"},
        {"4660", 4660, "4660", "18", "52"},
        {"$1234", 4660, "4660", "18", "52"},
        {"$abcd", 43981, "43981", "171", "205"},
        {"65535", 65535, "65535", "255", "255"},
        {"$FFFF", 65535, "65535", "255", "255"},
        {"%1111111111111111", 65535, "65535", "255", "255"},
        {"0065535", 65535, "65535", "255", "255"},
        {"$0", 0, "0", "0", "0"},
        {"1000", 1000, "1000", "3", "232"},
    };
    for (const GoodCase& k : cases) {
        SCOPED_TRACE("number [" + k.text + "]");
        Fixture f;
        setLine(f.c, "X = " + k.text, 4);
        std::optional<int32_t> v = convertNumber(f.c, k.text);
        ASSERT_TRUE(v.has_value());
        EXPECT_EQ(*v, k.value);
        EXPECT_EQ(f.c.number.value, k.value);
        EXPECT_EQ(f.c.number.text, k.decimal);
        EXPECT_EQ(f.c.number.high, k.high);
        EXPECT_EQ(f.c.number.low, k.low);
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, 4u);
    }
}

// A character literal becomes its code before the number reader sees it, so
// the four spellings of 255 all give the same value.
TEST(NumberConversion, CharacterLiteralThroughReadWord) {
    struct Case {
        std::string line;
        int32_t value;
    };
    const Case cases[] = {
        {"\"\xFF\"", 255}, {"$FF", 255},  {"%11111111", 255}, {"255", 255},
        {"\"A\"", 65},     {"\"a\"", 97}, {"\"0\"", 48},      {"\" \"", 32},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE("line [" + k.line + "]");
        Fixture f;
        setLine(f.c, k.line);
        std::string word = readWord(f.c);
        std::optional<int32_t> v = convertNumber(f.c, word);
        ASSERT_TRUE(v.has_value());
        EXPECT_EQ(*v, k.value);
        EXPECT_EQ(f.c.number.text, std::to_string(k.value));
        EXPECT_EQ(f.c.number.low, std::to_string(k.value & 255));
        EXPECT_EQ(f.c.number.high, std::to_string(k.value >> 8));
        EXPECT_TRUE(f.c.messages.empty());
    }
}

struct BadCase {
    std::string text;
    std::string message;
};

TEST(NumberConversion, RefusedNumbers) {
    const std::string tooLarge = "Number larger than 16-bits (0 to 65535)";
    const std::string notBinary = "Not a Valid binary number";
    const BadCase cases[] = {
        {"65536", tooLarge},
        {"70000", tooLarge},
        {"4294967296", tooLarge},
        {"4294967295", tooLarge},
        {"2147483648", tooLarge},
        {"1234567890123456789012345678901234567890", tooLarge},
        {"$10000", tooLarge},
        {"$FFFFFFFF", tooLarge},
        {"$FFFFFFFFFFFFFFFFFFFFFFFF", tooLarge},
        {"%10000000000000000", tooLarge},
        {"%102", notBinary},
        {"%12", notBinary},
        {"%1 2", notBinary},
        {"%1A", notBinary},
        {"%$1", notBinary},
        {"12A", "Invalid number '12A'"},
        {"$G1", "Invalid number '$G1'"},
        {"$", "Invalid number '$'"},
        {"1.5", "Invalid number '1.5'"},
    };
    for (const BadCase& k : cases) {
        SCOPED_TRACE("number [" + k.text + "]");
        Fixture f;
        setLine(f.c, "X = " + k.text + " : Y = 1", 4);
        std::optional<int32_t> v = convertNumber(f.c, k.text);
        EXPECT_FALSE(v.has_value());
        ASSERT_EQ(f.c.messages.size(), 1u);
        EXPECT_EQ(f.c.messages[0], errorFrame(f.c.line.upper, k.message));
        EXPECT_EQ(f.c.ctx.errorCount, 1);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
    }
}

TEST(NumberConversion, RefusedNumbersSilentInPassOne) {
    const std::string cases[] = {"65536", "%102", "12A", "99999999999999999999"};
    for (const std::string& text : cases) {
        SCOPED_TRACE("number [" + text + "]");
        Fixture f;
        f.c.ctx.pass = 1;
        setLine(f.c, "X = " + text, 4);
        EXPECT_FALSE(convertNumber(f.c, text).has_value());
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
    }
}

} // namespace
} // namespace zorvel
