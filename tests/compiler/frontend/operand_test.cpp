// Tests of operand classification (numbers, names, byte parts, bit suffixes)
// and of the term pre-scan of operand expressions.
#include "compiler/driver/compilation.h"
#include "compiler/frontend/operand.h"
#include "support/test_support.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace zorvel {
namespace {

using test::errorFrame;
using test::setLine;

// A pass-2 compilation with registers, variables of every kind and constants,
// declared under the names the declarations use (single letters get "_").
struct Fixture : test::PassTwo {
    Fixture() {
        c.symbols.add({"STATUS", "STATUS", kKindByte, 3, -1});
        c.symbols.add({"PORTB", "PORTB", kKindByte, 6, -1});
        c.symbols.add({"COUNT", "COUNT", kKindByte, 32, -1});
        c.symbols.add({"_B", "_B", kKindByte, 33, -1});
        c.symbols.add({"_Y", "_Y", kKindByte, 34, -1});
        c.symbols.add({"TOTAL", "TOTAL", kKindWord, 40, -1});
        c.symbols.add({"TOTALH", "TOTALH", kKindByte, 41, -1});
        c.symbols.add({"_W", "_W", kKindWord, 50, -1});
        c.symbols.add({"_WH", "_WH", kKindByte, 51, -1});
        c.symbols.add({"FLAG", "B@VR1", kKindBit, 60, 2});
        c.symbols.add({"BUF", "BUF", kKindByteArray, 70, 10});
        c.symbols.add({"LED", "5", kKindNum, 5, -1});
        c.symbols.add({"_N", "2", kKindNum, 2, -1});
        c.symbols.add({"_K", "4660", kKindNum, 4660, -1});
    }
};

// ---------------------------------------------------------------------------
// Classify operand: accepted operands

struct GoodCase {
    std::string text;
    bool isBit; // the return value
    int kind;
    int address;
    int bit;
    std::string target;
};

TEST(OperandClassify, Accepted) {
    const GoodCase cases[] = {
        // numbers
        {"100", false, kKindNum, 100, -1, "100"},
        {"0", false, kKindNum, 0, -1, "0"},
        {"$FF", false, kKindNum, 255, -1, "255"},
        {"%101", false, kKindNum, 5, -1, "5"},
        {"65535", false, kKindNum, 65535, -1, "65535"},
        // plain names
        {"COUNT", false, kKindByte, 32, -1, "COUNT"},
        {"B", false, kKindByte, 33, -1, "_B"},
        {"TOTAL", false, kKindWord, 40, -1, "TOTAL"},
        {"W", false, kKindWord, 50, -1, "_W"},
        {"FLAG", false, kKindBit, 60, 2, "B@VR1"},
        {"LED", false, kKindNum, 5, -1, "5"},
        {"PORTB", false, kKindByte, 6, -1, "PORTB"},
        // byte parts
        {"TOTAL.HIGHBYTE", false, kKindByte, 41, -1, "TOTALH"},
        {"TOTAL.BYTE1", false, kKindByte, 41, -1, "TOTALH"},
        {"TOTAL.LOWBYTE", false, kKindByte, 40, -1, "TOTAL"},
        {"TOTAL.BYTE0", false, kKindByte, 40, -1, "TOTAL"},
        {"W.HIGHBYTE", false, kKindByte, 51, -1, "_WH"},
        {"W.LOWBYTE", false, kKindByte, 50, -1, "_W"},
        {"COUNT.LOWBYTE", false, kKindByte, 32, -1, "COUNT"},
        {"COUNT.BYTE0", false, kKindByte, 32, -1, "COUNT"},
        // byte parts of constants are constants
        {"K.HIGHBYTE", false, kKindNum, 18, -1, "18"},
        {"K.BYTE1", false, kKindNum, 18, -1, "18"},
        {"K.LOWBYTE", false, kKindNum, 52, -1, "52"},
        {"K.BYTE0", false, kKindNum, 52, -1, "52"},
        {"300.HIGHBYTE", false, kKindNum, 1, -1, "1"},
        {"300.LOWBYTE", false, kKindNum, 44, -1, "44"},
        // bits
        {"PORTB.3", true, kKindBit, 6, 3, "PORTB"},
        {"PORTB.0", true, kKindBit, 6, 0, "PORTB"},
        {"STATUS.2", true, kKindBit, 3, 2, "STATUS"},
        {"B.7", true, kKindBit, 33, 7, "_B"},
        {"COUNT.5", true, kKindBit, 32, 5, "COUNT"},
        {"TOTAL.0", true, kKindBit, 40, 0, "TOTAL"},
        {"TOTAL.7", true, kKindBit, 40, 7, "TOTAL"},
        {"TOTAL.8", true, kKindBit, 41, 0, "TOTALH"},
        {"TOTAL.15", true, kKindBit, 41, 7, "TOTALH"},
        {"W.12", true, kKindBit, 51, 4, "_WH"},
        // bit numbers given by a constant's name
        {"PORTB.LED", true, kKindBit, 6, 5, "PORTB"},
        {"PORTB.N", true, kKindBit, 6, 2, "PORTB"},
        {"TOTAL.LED", true, kKindBit, 40, 5, "TOTAL"},
    };
    for (const GoodCase& k : cases) {
        SCOPED_TRACE("operand [" + k.text + "]");
        Fixture f;
        setLine(f.c, "X = " + k.text, 4);
        std::optional<bool> r = classifyOperand(f.c, true, k.text);
        ASSERT_TRUE(r.has_value());
        EXPECT_EQ(*r, k.isBit);
        EXPECT_EQ(f.c.operand.kind, k.kind);
        EXPECT_EQ(f.c.operand.address, k.address);
        EXPECT_EQ(f.c.operand.bit, k.bit);
        EXPECT_EQ(f.c.operand.target, k.target);
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, 4u);
    }
}

// ---------------------------------------------------------------------------
// Classify operand: refused operands

struct BadCase {
    std::string text;
    std::string message;
};

TEST(OperandClassify, Refused) {
    const std::string tooLarge = "Bit value too large for this variable";
    const BadCase cases[] = {
        {"Y.HIGHBYTE", "Cannot extract a HIGHBYTE from a BYTE type Variable"},
        {"COUNT.HIGHBYTE", "Cannot extract a HIGHBYTE from a BYTE type Variable"},
        {"COUNT.BYTE1", "Cannot extract a HIGHBYTE from a BYTE type Variable"},
        {"FLAG.LOWBYTE", "Cannot extract a LOWBYTE from a BIT type Variable"},
        {"FLAG.BYTE0", "Cannot extract a LOWBYTE from a BIT type Variable"},
        {"FLAG.HIGHBYTE", "Cannot extract a HIGHBYTE from a BIT type Variable"},
        {"FLAG.BYTE1", "Cannot extract a HIGHBYTE from a BIT type Variable"},
        {"B.9", tooLarge},
        {"B.8", tooLarge},
        {"PORTB.8", tooLarge},
        {"TOTAL.COUNT", "Cannot assign a Variable to a BIT"},
        {"PORTB.COUNT", "Cannot assign a Variable to a BIT"},
        {"PORTB.TOTAL", "Cannot assign a Variable to a BIT"},
        {"PORTB.BUF", "Cannot assign a Variable to a BIT"},
        {"FLAG.1", "The variable is already a BIT type"},
        {"FLAG.LED", "The variable is already a BIT type"},
        {"K.1", "Cannot assign a bit to a Constant or Number"},
        {"LED.0", "Cannot assign a bit to a Constant or Number"},
        {"100.1", "Cannot assign a bit to a Constant or Number"},
        {"NOPE", " Variable ' NOPE ' not defined"},
        {"Q", " Variable ' _Q ' not defined"},
        {"NOPE.3", " Variable ' NOPE ' not defined"},
        {"PORTB.NOPE", " Variable ' NOPE ' not defined"},
        {"70000", "Number larger than 16-bits (0 to 65535)"},
    };
    for (const BadCase& k : cases) {
        SCOPED_TRACE("operand [" + k.text + "]");
        Fixture f;
        setLine(f.c, "X = " + k.text + " : Y = 1", 4);
        std::optional<bool> r = classifyOperand(f.c, true, k.text);
        EXPECT_FALSE(r.has_value());
        ASSERT_EQ(f.c.messages.size(), 1u);
        EXPECT_EQ(f.c.messages[0], errorFrame(f.c.line.upper, k.message));
        EXPECT_EQ(f.c.ctx.errorCount, 1);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
    }
}

// An unknown name looked up without reporting leaves no trace.
TEST(OperandClassify, UnknownNameWithoutReport) {
    const std::string cases[] = {"NOPE", "Q", "NOPE.3", "PORTB.NOPE", "NOPE.HIGHBYTE"};
    for (const std::string& text : cases) {
        SCOPED_TRACE("operand [" + text + "]");
        Fixture f;
        setLine(f.c, "X = " + text, 4);
        std::optional<bool> r = classifyOperand(f.c, false, text);
        EXPECT_FALSE(r.has_value());
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, 4u);
    }
}

// ---------------------------------------------------------------------------
// Count terms

struct TermCase {
    std::string line;
    size_t start;
    int terms;
    bool allConstant;
    std::vector<TermScan::Entry> entries;
};

void expectEntries(const std::vector<TermScan::Entry>& got,
                   const std::vector<TermScan::Entry>& expected) {
    ASSERT_EQ(got.size(), expected.size());
    for (size_t i = 0; i < got.size(); ++i) {
        SCOPED_TRACE("entry " + std::to_string(i));
        EXPECT_EQ(got[i].name, expected[i].name);
        EXPECT_EQ(got[i].kind, expected[i].kind);
        EXPECT_EQ(got[i].value, expected[i].value);
    }
}

TEST(OperandTermScan, CountsTermsAndConstants) {
    const TermCase cases[] = {
        {"100", 0, 1, true, {{"100", kKindNum, 100}}},
        {"X = 100", 4, 1, true, {{"100", kKindNum, 100}}},
        {"B + 1", 0, 2, false, {{"B", kKindByte, 33}, {"1", kKindNum, 1}}},
        {"PAUSE B + 1", 6, 2, false, {{"B", kKindByte, 33}, {"1", kKindNum, 1}}},
        {"(B + 2) * COUNT",
         0,
         3,
         false,
         {{"B", kKindByte, 33}, {"2", kKindNum, 2}, {"COUNT", kKindByte, 32}}},
        {"LED * 2", 0, 2, true, {{"LED", kKindNum, 5}, {"2", kKindNum, 2}}},
        {"$10 + %11", 0, 2, true, {{"$10", kKindNum, 16}, {"%11", kKindNum, 3}}},
        {"\"A\" + 1", 0, 2, true, {{"65", kKindNum, 65}, {"1", kKindNum, 1}}},
        {"TOTAL", 0, 1, false, {{"TOTAL", kKindWord, 40}}},
        {"W - TOTAL", 0, 2, false, {{"W", kKindWord, 50}, {"TOTAL", kKindWord, 40}}},
        {"FLAG", 0, 1, false, {{"FLAG", kKindBit, 60}}},
        {"1 + 2 * 3 / 4",
         0,
         4,
         true,
         {{"1", kKindNum, 1}, {"2", kKindNum, 2}, {"3", kKindNum, 3}, {"4", kKindNum, 4}}},
        {"5, B", 0, 1, true, {{"5", kKindNum, 5}}},
    };
    for (const TermCase& k : cases) {
        SCOPED_TRACE("line [" + k.line + "] from " + std::to_string(k.start));
        Fixture f;
        setLine(f.c, k.line, k.start);
        f.c.stmt.token = "KEEP";
        EXPECT_EQ(countTerms(f.c), k.terms);
        EXPECT_EQ(f.c.termScan.terms, k.terms);
        EXPECT_EQ(f.c.termScan.allConstant, k.allConstant);
        expectEntries(f.c.termScan.entries, k.entries);
        EXPECT_EQ(f.c.line.pos, k.start);
        EXPECT_EQ(f.c.stmt.token, "KEEP");
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_TRUE(f.c.asmlist.empty());
    }
}

// Names the symbol table does not know are recorded but never reported: the
// pre-scan only looks.
TEST(OperandTermScan, UnknownNamesAreNotReported) {
    const std::string cases[] = {"FOO + 1", "1 + FOO", "FOO"};
    for (const std::string& text : cases) {
        SCOPED_TRACE("line [" + text + "]");
        Fixture f;
        setLine(f.c, text);
        countTerms(f.c);
        EXPECT_FALSE(f.c.termScan.allConstant);
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, 0u);
    }
}

TEST(OperandTermScan, RecordsAtMostFortyOperands) {
    struct Case {
        int operands;
        size_t recorded;
        bool allConstant;
    };
    const Case cases[] = {{39, 39, true}, {40, 40, true}, {41, 40, false}, {45, 40, false}};
    for (const Case& k : cases) {
        SCOPED_TRACE(std::to_string(k.operands) + " operands");
        std::string text = "1";
        for (int i = 1; i < k.operands; ++i)
            text += " + " + std::to_string(i + 1);
        Fixture f;
        setLine(f.c, text);
        EXPECT_EQ(countTerms(f.c), k.operands);
        EXPECT_EQ(f.c.termScan.entries.size(), k.recorded);
        EXPECT_EQ(f.c.termScan.allConstant, k.allConstant);
        ASSERT_FALSE(f.c.termScan.entries.empty());
        EXPECT_EQ(f.c.termScan.entries.back().value, static_cast<int>(k.recorded));
        EXPECT_EQ(f.c.line.pos, 0u);
    }
}

// A second scan starts from a clean record.
TEST(OperandTermScan, EachScanStartsAfresh) {
    Fixture f;
    setLine(f.c, "1 + 2 + 3 + 4");
    EXPECT_EQ(countTerms(f.c), 4);
    setLine(f.c, "COUNT");
    EXPECT_EQ(countTerms(f.c), 1);
    expectEntries(f.c.termScan.entries, {{"COUNT", kKindByte, 32}});
    EXPECT_EQ(f.c.termScan.terms, 1);
    EXPECT_FALSE(f.c.termScan.allConstant);
}

} // namespace
} // namespace zorvel
