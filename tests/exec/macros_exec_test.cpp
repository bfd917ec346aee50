// User macros and inline mnemonics run in the simulator: a macro that adds
// its two arguments, whatever their kinds, returns the sum into byte, word
// and bit destinations; inline mnemonics with BASIC operands change RAM
// exactly as the same instructions written in an ASM block.
#include "support/exec_support.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <vector>

namespace zorvel::test {
namespace {

// Loads the argument at position `at` (a bit when the next position is a
// BIT kind) into the WORD `into`.
std::string loadArgument(int at, const std::string& into) {
    std::string p = "P" + std::to_string(at), kind = "PRM_" + std::to_string(at);
    std::string next = "P" + std::to_string(at + 1);
    std::ostringstream s;
    s << "#IF " << kind << " == WORD\nWORD_WORD " << p << ", " << into << "\n#ENDIF\n"
      << "#IF " << kind << " == NUM8 || " << kind << " == NUM16\nNUM_WORD " << p << ", " << into
      << "\n#ENDIF\n"
      << "#IF " << kind << " == BYTE\n#IF PRM_C > " << at << "\n#IF PRM_" << at + 1
      << " == BIT\nBIT_WORD " << p << ", " << next << ", " << into << "\n#ELSE\nBYTE_WORD " << p
      << ", " << into << "\n#ENDIF\n#ELSE\nBYTE_WORD " << p << ", " << into << "\n#ENDIF\n#ENDIF\n";
    return s.str();
}

// ADDUP a, b: a + b as a 16-bit sum, returned by kind of destination. The
// second argument starts at position 3 when the first is a BIT.
std::string addupMacro() {
    std::ostringstream s;
    s << "ADDUP MACRO P1, P2, P3, P4\n"
      << loadArgument(1, "PP2") << "#IF PRM_2 == BIT\n"
      << loadArgument(3, "PP3") << "#ELSE\n"
      << loadArgument(2, "PP3") << "#ENDIF\n"
      << "MOVF PP3, W\nADDWF PP2, F\nBTFSC STATUS, C\nINCF PP2H, F\n"
      << "MOVF PP3H, W\nADDWF PP2H, F\nRETURN_WORD PP2\nENDM\n";
    return s.str();
}

struct Argument {
    std::string text; // as written in the call
    int kind;         // 0 byte, 1 word, 2 bit, 3 constant
    int constant = 0;
};

const std::vector<Argument> kArguments = {
    {"AB", 0}, {"AW", 1}, {"AT", 2}, {"30", 3, 30}, {"700", 3, 700}, {"BB", 0}, {"BW", 1},
};

struct Inputs {
    int ab, aw, at, bb, bw;
    std::string text() const {
        std::ostringstream s;
        s << "AB=" << ab << " AW=" << aw << " AT=" << at << " BB=" << bb << " BW=" << bw;
        return s.str();
    }
};

int valueOf(const Argument& a, const Inputs& in) {
    if (a.text == "AB") return in.ab;
    if (a.text == "AW") return in.aw;
    if (a.text == "AT") return in.at;
    if (a.text == "BB") return in.bb;
    if (a.text == "BW") return in.bw;
    return a.constant;
}

struct Call {
    Argument left, right;
    int destination;  // 0 byte, 1 word, 2 bit, 3 element of the byte array SUMA
    std::string name; // result variable or element
    int element = -1; // index into SUMA
    std::string text() const { return name + " = ADDUP " + left.text + ", " + right.text; }
};

int arrayElements(const std::vector<Call>& calls) {
    int n = 0;
    for (const Call& c : calls)
        n += c.destination == 3;
    return n;
}

std::vector<Call> allCalls() {
    std::vector<Call> calls;
    for (const Argument& l : kArguments) {
        if (l.text == "BB" || l.text == "BW") continue;
        for (const Argument& r : kArguments) {
            if (r.text == "AB" || r.text == "AW") continue;
            for (int d = 0; d < 4; ++d) {
                if (d == 3) {
                    int element = arrayElements(calls);
                    calls.push_back({l, r, d, "SUMA[" + std::to_string(element) + "]", element});
                    continue;
                }
                std::string name = std::string(d == 0   ? "SUMB"
                                               : d == 1 ? "SUMW"
                                                        : "SUMT") +
                                   std::to_string(calls.size());
                calls.push_back({l, r, d, name});
            }
        }
    }
    return calls;
}

std::string addupProgram(const std::vector<Call>& calls) {
    std::ostringstream s;
    s << "DEVICE 16F877\nDIM AB AS BYTE\nDIM AW AS WORD\nDIM AT AS BIT\nDIM BB AS BYTE\n"
      << "DIM BW AS WORD\n";
    s << "DIM SUMA[" << arrayElements(calls) << "]\n";
    for (const Call& c : calls)
        if (c.destination != 3)
            s << "DIM " << c.name << " AS "
              << (c.destination == 0   ? "BYTE"
                  : c.destination == 1 ? "WORD"
                                       : "BIT")
              << "\n";
    s << "MACRO_PARAMS ON\nGOTO Start\n" << addupMacro() << "Start:\n";
    for (const Call& c : calls)
        s << c.text() << "\n";
    s << "Done:\nGOTO Start\n";
    return s.str();
}

int resultOf(SimProgram& p, const Call& c) {
    if (c.destination == 0) return p.byte(c.name);
    if (c.destination == 1) return p.word(c.name);
    if (c.destination == 3) return p.byte("SUMA#" + std::to_string(c.element));
    return p.bit(c.name);
}

int expectedOf(const Call& c, const Inputs& in) {
    int sum = (valueOf(c.left, in) + valueOf(c.right, in)) & 0xFFFF;
    if (c.destination == 1) return sum;
    return c.destination == 2 ? sum & 1 : sum & 255;
}

TEST(MacroExec, AddsEveryArgumentKindIntoEveryDestinationKind) {
    std::vector<Call> calls = allCalls();
    std::string source = addupProgram(calls);
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    std::vector<Inputs> inputs = {
        {0, 0, 0, 0, 0}, {255, 65535, 1, 255, 65535}, {1, 255, 1, 2, 256}};
    std::mt19937 rng(7261);
    for (int i = 0; i < 5; ++i)
        inputs.push_back({static_cast<int>(rng() % 256), static_cast<int>(rng() % 65536),
                          static_cast<int>(rng() % 2), static_cast<int>(rng() % 256),
                          static_cast<int>(rng() % 65536)});
    int failures = 0;
    for (const Inputs& in : inputs) {
        ASSERT_TRUE(p.runTo("Start"));
        p.setByte("AB", in.ab), p.setWord("AW", in.aw), p.setBit("AT", in.at);
        p.setByte("BB", in.bb), p.setWord("BW", in.bw);
        ASSERT_TRUE(p.runTo("Done")) << in.text();
        for (const Call& c : calls) {
            int got = resultOf(p, c), want = expectedOf(c, in);
            if (got != want && ++failures > 5) continue;
            EXPECT_EQ(got, want) << c.text() << " with " << in.text()
                                 << (failures == 1 ? "\nsource:\n" + source : "");
        }
    }
}

// The same instruction sequence written twice: with BASIC operands on the
// variables ending in 1, and as assembly on those ending in 2.
const char* const kBasicSequence = R"(MOVLW 37
ADDWF A1, F
MOVF B1, W
SUBWF A1, W
MOVWF C1
COMF B1
RLF A1
RRF B1, W
MOVWF D1
SWAPF C1
INCF D1
DECF A1, W
MOVWF E1
IORLW $0F
XORWF B1
ANDLW HIGH 1000
ANDWF E1
BSF F1
BCF A1, 0
BTFSC B1, 1
INCF C1
BTFSS STATUS,C
DECF D1
MOVFW W1
ADDLW -3
MOVWF W1
INCFSZ W1.HIGHBYTE, W
MOVWF E1
DECFSZ C1
SUBLW 200
XORLW LOW 1000
MOVWF D1
RRF D1, 0
BTFSC STATUS, Z
CLRF B1
CLRW
IORWF C1
)";

const char* const kAsmSequence = R"(movlw 37
addwf A2,f
movf B2,w
subwf A2,w
movwf C2
comf B2,f
rlf A2,f
rrf B2,w
movwf D2
swapf C2,f
incf D2,f
decf A2,w
movwf E2
iorlw 15
xorwf B2,f
andlw 3
andwf E2,f
bsf B@VR1,1
bcf A2,0
btfsc B2,1
incf C2,f
btfss STATUS,C
decf D2,f
movf W2,w
addlw -3
movwf W2
incfsz W2H,w
movwf E2
decfsz C2,f
sublw 200
xorlw 232
movwf D2
rrf D2,w
btfsc STATUS,Z
clrf B2
clrw
iorwf C2,f
)";

TEST(MnemonicExec, BasicOperandsMatchAssembly) {
    std::ostringstream s;
    for (const char* v : {"A", "B", "C", "D", "E"})
        s << "DIM " << v << "1 AS BYTE\nDIM " << v << "2 AS BYTE\n";
    s << "DIM F1 AS BIT\nDIM F2 AS BIT\nDIM W1 AS WORD\nDIM W2 AS WORD\nStart:\n"
      << kBasicSequence << "ASM\n"
      << kAsmSequence << "ENDASM\nDone:\nGOTO Start\n";
    std::string source = s.str();
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    std::mt19937 rng(1193);
    for (int round = 0; round < 40; ++round) {
        ASSERT_TRUE(p.runTo("Start"));
        std::ostringstream values;
        for (const char* v : {"A", "B", "C", "D", "E"}) {
            int x = static_cast<int>(rng() % 256);
            p.setByte(std::string(v) + "1", x), p.setByte(std::string(v) + "2", x);
            values << v << "=" << x << " ";
        }
        int w = static_cast<int>(rng() % 65536);
        p.setWord("W1", w), p.setWord("W2", w), p.setBit("F1", 0), p.setBit("F2", 0);
        values << "W=" << w;
        ASSERT_TRUE(p.runTo("Done"));
        for (const char* v : {"A", "B", "C", "D", "E"})
            EXPECT_EQ(p.byte(std::string(v) + "1"), p.byte(std::string(v) + "2"))
                << v << " with " << values.str();
        EXPECT_EQ(p.word("W1"), p.word("W2")) << values.str();
        EXPECT_EQ(p.bit("F1"), 1);
        EXPECT_EQ(p.bit("F2"), 1) << "the assembly side's bit is bit 1 of B@VR1";
    }
}

// A macro's result compared on either side of a condition.
// BRSET and BRCLR jump on the bit's state and fall through otherwise.
TEST(MnemonicExec, BranchOnBitSetOrClear) {
    const std::string source = "DEVICE 16F877\nDIM FLAGS AS BYTE\nDIM R AS BYTE\n"
                               "FLAGS = 5\nR = 0\n"
                               "BRSET FLAGS, 0, L1\nR = R + 1\nL1:\n"
                               "BRCLR FLAGS, 1, L2\nR = R + 10\nL2:\n"
                               "BRSET FLAGS, 1, L3\nR = R + 100\nL3:\n"
                               "BRCLR FLAGS, 2, L4\nR = R + 20\nL4:\nEND\n";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.byte("R"), 120) << source;
}

TEST(MacroExec, ResultsAsConditionOperands) {
    std::string source = "DIM AB AS BYTE\nDIM AW AS WORD\nDIM BB AS BYTE\nDIM LEFT AS BYTE\n"
                         "DIM RIGHT AS BYTE\nMACRO_PARAMS ON\nGOTO Start\n" +
                         addupMacro() +
                         "Start:\nLEFT = 0\nRIGHT = 0\nIF ADDUP AB, 1 = 5 THEN\nLEFT = 1\nENDIF\n"
                         "IF 300 < ADDUP AW, BB THEN\nRIGHT = 1\nENDIF\nDone:\nGOTO Start\n";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    const int cases[][3] = {{4, 300, 0}, {5, 299, 2}, {3, 200, 100}, {4, 0, 255}, {255, 65535, 1}};
    for (const auto& v : cases) {
        ASSERT_TRUE(p.runTo("Start"));
        p.setByte("AB", v[0]), p.setWord("AW", v[1]), p.setByte("BB", v[2]);
        ASSERT_TRUE(p.runTo("Done"));
        std::string in = "AB=" + std::to_string(v[0]) + " AW=" + std::to_string(v[1]) +
                         " BB=" + std::to_string(v[2]);
        EXPECT_EQ(p.byte("LEFT"), v[0] + 1 == 5 ? 1 : 0) << in;
        EXPECT_EQ(p.byte("RIGHT"), 300 < ((v[1] + v[2]) & 0xFFFF) ? 1 : 0) << in;
    }
}

// A macro holding an IF block with a word comparison and a WHILE loop, used
// twice: each use jumps to the labels of its own copy.
TEST(MacroExec, BlocksInsideMacroUsedTwice) {
    const std::string source = "DEVICE 16F877\nDIM A AS BYTE\nDIM W AS WORD\nDIM HIGHS AS BYTE\n"
                               "DIM LOWS AS BYTE\nDIM STEPS AS BYTE\nCOUNTIT MACRO\n"
                               "IF W > A THEN\nINC HIGHS\nELSE\nINC LOWS\nENDIF\n"
                               "WHILE A > 0 : DEC A : INC STEPS : WEND\nENDM\n"
                               "Start:\nCOUNTIT\nA = 2\nCOUNTIT\nDone:\nGOTO Start\n";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    const int cases[][2] = {{5, 3}, {1, 1000}, {0, 0}, {255, 2}, {2, 256}};
    for (const auto& v : cases) {
        ASSERT_TRUE(p.runTo("Start"));
        p.setByte("A", v[0]), p.setWord("W", v[1]);
        p.setByte("HIGHS", 0), p.setByte("LOWS", 0), p.setByte("STEPS", 0);
        ASSERT_TRUE(p.runTo("Done"));
        int highs = (v[1] > v[0]) + (v[1] > 2);
        std::string in = "A=" + std::to_string(v[0]) + " W=" + std::to_string(v[1]);
        EXPECT_EQ(p.byte("HIGHS"), highs) << in;
        EXPECT_EQ(p.byte("LOWS"), 2 - highs) << in;
        EXPECT_EQ(p.byte("STEPS"), (v[0] + 2) & 255) << in;
    }
}

// Calls without arguments, text, operator and label arguments, with the
// kind variables on and off, assemble and do what their bodies say.
TEST(MacroExec, TextOperatorLabelAndEmptyCalls) {
    const std::string source = R"(DIM C1 AS BYTE
DIM C2 AS BYTE
DIM OP AS BYTE
DIM N AS BYTE
DIM KINDS AS BYTE
BUMP MACRO
INCF N, F
ENDM
PUTC MACRO P1, P2, P3
NUM_BYTE P1, C1
NUM_BYTE P2, C2
NUM_BYTE P3, OP
NUM_BYTE PRM_C * 16 + PRM_3, KINDS
ENDM
GOVIA MACRO P1
LGOTO P1
ENDM
N = 0
MACRO_PARAMS ON
BUMP
PUTC "Hi", *
MACRO_PARAMS OFF
BUMP : BUMP
GOVIA Over
N = 99
Over:
END
)";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    ASSERT_TRUE(p.runToEnd());
    EXPECT_EQ(p.byte("N"), 3);
    EXPECT_EQ(p.byte("C1"), 'H');
    EXPECT_EQ(p.byte("C2"), 'i');
    EXPECT_EQ(p.byte("OP"), '*');
    EXPECT_EQ(p.byte("KINDS"), 3 * 16 + 6) << "three positions, the last an operator";
}

} // namespace
} // namespace zorvel::test
