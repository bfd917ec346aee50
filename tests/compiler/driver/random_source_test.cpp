// Random sources built from the language's own pieces (keywords, labels,
// separators, quotes, numbers, operators, stray bytes) must compile to an
// outcome, never to a crash, an exception or a malformed message.
#include "compiler/driver/compile_run.h"
#include "compiler/frontend/keywords.h"
#include "support/test_support.h"

#include <gtest/gtest.h>
#include <random>

namespace zorvel::test {
namespace {

const std::vector<std::string>& pieces() {
    static const std::vector<std::string> p = [] {
        std::vector<std::string> v = {":",
                                      " : ",
                                      "'",
                                      ";",
                                      "\"",
                                      "\"A\"",
                                      "@",
                                      "#",
                                      "#IF",
                                      "#ERROR",
                                      "#DEFINE",
                                      "[",
                                      "]",
                                      "(",
                                      ")",
                                      ",",
                                      ".",
                                      ".0",
                                      ".9",
                                      ".HIGHBYTE",
                                      "=",
                                      "+",
                                      "-",
                                      "*",
                                      "/",
                                      "//",
                                      "**",
                                      "*/",
                                      "&",
                                      "|",
                                      "^",
                                      "<<",
                                      ">>",
                                      "$FF",
                                      "%101",
                                      "%2",
                                      "65535",
                                      "65536",
                                      "99999999999999999999",
                                      "0",
                                      "1",
                                      "LBL:",
                                      "LBL:-",
                                      "X",
                                      "PORTB.3",
                                      "PORTB",
                                      "XT_OSC",
                                      "WDT_OFF",
                                      "16F877",
                                      "16F84",
                                      "MACRO",
                                      "ENDASM",
                                      "ASM",
                                      "\t",
                                      "  ",
                                      std::string(40, 'Q'),
                                      std::string("\x01", 1),
                                      std::string("\0", 1),
                                      "\xff",
                                      "ON",
                                      "OFF",
                                      "GOTO",
                                      "SAVE",
                                      "RESTORE",
                                      "XTAL",
                                      "LCD_LINES",
                                      "RSOUT_PIN",
                                      "BOOTLOADER",
                                      "ADIN_TAD",
                                      "8_FOSC",
                                      "INCLUDE"};
        for (const Keyword& k : keywordTable())
            v.emplace_back(k.text);
        return v;
    }();
    return p;
}

std::string randomLine(std::mt19937& rng) {
    std::uniform_int_distribution<size_t> count(0, 9), pick(0, pieces().size() - 1);
    std::bernoulli_distribution blank(0.6);
    std::string line;
    for (size_t n = count(rng); n > 0; --n) {
        line += pieces()[pick(rng)];
        if (blank(rng)) line += ' ';
    }
    return line;
}

bool wellFormed(const std::string& message) {
    return message.rfind("Error at Line [", 0) == 0 || message.rfind("\t", 0) == 0 ||
           message.rfind("Warning Line [", 0) == 0;
}

TEST(RandomSources, CompileWithoutCrashing) {
    std::mt19937 rng(20261122);
    std::uniform_int_distribution<int> lineCount(1, 12);
    for (int program = 0; program < 3000; ++program) {
        std::string source;
        for (int i = lineCount(rng); i > 0; --i)
            source += randomLine(rng) + "\n";
        SCOPED_TRACE("source:\n" + source);
        CompileResult r;
        ASSERT_NO_THROW(r = compileSource(source));
        EXPECT_LE(r.errors, 4);
        for (const std::string& m : r.messages)
            ASSERT_TRUE(wellFormed(m)) << m;
        if (r.errors == 0) {
            EXPECT_FALSE(r.output.empty());
        }
    }
}

// The pin, pulse, tone and sleep commands with operands picked at random
// from pins, variables, constants, brackets, commas and broken tokens.
TEST(RandomSources, PinCommandsWithRandomOperands) {
    static const std::vector<std::string> heads = {
        "HIGH",    "LOW",    "SET",        "CLEAR",    "TOGGLE",  "INPUT",           "OUTPUT",
        "PULSOUT", "PWM",    "HPWM",       "SERVO",    "SOUND",   "FREQOUT",         "DTMFOUT",
        "SLEEP",   "SNOOZE", "A = PULSIN", "W = RCIN", "F = POT", "ARR[A] = COUNTER"};
    static const std::vector<std::string> operands = {
        "PORTB.0", "PORTA.7", "PORTE.9", "GPIO.1", "A",    "W",    "W.12", "F",     "F.1",
        "ARR",     "ARR[A]",  "ARR[",    "]",      "[",    ",",    ",",    ",",     "0",
        "65535",   "65536",   "-1",      "HIGH",   "LOW",  "2S",   "1S",   "A + 1", "(",
        ")",       "\"",      "\"x\"",   "$FFFF",  "%102", "WREG", "K",    ""};
    std::mt19937 rng(20261125);
    std::uniform_int_distribution<size_t> head(0, heads.size() - 1), op(0, operands.size() - 1),
        count(0, 8);
    for (int program = 0; program < 150; ++program) {
        std::string source = "DEVICE 16F877\nDIM A AS BYTE\nDIM W AS WORD\nDIM F AS BIT\n"
                             "DIM ARR[4]\nSYMBOL K = 3\n";
        for (int line = 0; line < 3; ++line) {
            source += heads[head(rng)];
            for (size_t n = count(rng); n > 0; --n)
                source += " " + operands[op(rng)];
            source += "\n";
        }
        SCOPED_TRACE("source:\n" + source);
        CompileResult r;
        ASSERT_NO_THROW(r = compileSource(source));
        for (const std::string& m : r.messages)
            ASSERT_TRUE(wellFormed(m)) << m;
    }
}

} // namespace
} // namespace zorvel::test
