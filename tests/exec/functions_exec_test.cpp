// RANDOM, SIN, COS, DIG and PEEK run: each value against a C++ reference.
#include "support/exec_support.h"

#include <cmath>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

// One step of the 16-bit shift register: a zero seed counts as 1; shifted
// left, the new bit 0 is bit 15 exclusive-or bits 4, 2 and 1.
int nextRandom(int v) {
    if (v == 0) v = 1;
    int feedback = ((v >> 15) ^ (v >> 4) ^ (v >> 2) ^ (v >> 1)) & 1;
    return ((v << 1) & 0xFFFF) | feedback;
}

TEST(Functions, RandomStepsItsShiftRegister) {
    SimProgram p("DEVICE 16F877\nDIM R AS WORD\nDIM B AS BYTE\nR = 0\nAGAIN:\nR = RANDOM\n"
                 "B = RANDOM\nSTEP_DONE:\nGOTO AGAIN\n");
    ASSERT_TRUE(p.ok()) << p.failure();
    int r = 0;
    for (int i = 0; i < 300; ++i) {
        int seed = i * 7 % 256; // a byte destination seeds with its own value
        if (i > 0) p.setByte("B", seed);
        ASSERT_TRUE(p.runTo("STEP_DONE")) << i;
        r = nextRandom(r);
        ASSERT_EQ(p.word("R"), r) << "step " << i;
        if (i > 0) {
            ASSERT_EQ(p.byte("B"), nextRandom(seed) & 255) << "seed " << seed;
        }
        ASSERT_TRUE(p.runTo("AGAIN")) << i;
    }
}

// 256 steps a turn, amplitude 127, two's complement below zero; COS is SIN a
// quarter turn on. Within one step of 127 sin(2 pi a / 256).
TEST(Functions, SineAndCosineOfEveryAngle) {
    SimProgram p("DEVICE 16F877\nDIM A AS BYTE\nDIM S AS BYTE\nDIM C AS BYTE\nA = 0\nAGAIN:\n"
                 "S = SIN A\nC = COS A\nGOT:\nINC A\nGOTO AGAIN\n");
    ASSERT_TRUE(p.ok()) << p.failure();
    for (int a = 0; a < 256; ++a) {
        ASSERT_TRUE(p.runTo("GOT")) << a;
        int s = static_cast<int8_t>(p.byte("S")), c = static_cast<int8_t>(p.byte("C"));
        EXPECT_NEAR(s, 127 * std::sin(2 * M_PI * a / 256), 1.0) << "SIN " << a;
        EXPECT_NEAR(c, 127 * std::cos(2 * M_PI * a / 256), 1.0) << "COS " << a;
        ASSERT_TRUE(p.runTo("AGAIN")) << a;
    }
}

TEST(Functions, DigitsOfWordsAndPeek) {
    SimProgram p("DEVICE 16F877\nDIM V AS WORD\nDIM N AS BYTE\nDIM D AS BYTE\nDIM P AS WORD\n"
                 "AGAIN:\nD = DIG V, N\nP = PEEK D\nGOT:\nGOTO AGAIN\n");
    ASSERT_TRUE(p.ok()) << p.failure();
    for (int v : {0, 9, 10, 255, 256, 12345, 65535}) {
        for (int n = 0; n < 7; ++n) {
            p.setWord("V", v);
            p.setByte("N", n);
            ASSERT_TRUE(p.runTo("GOT")) << v << " " << n;
            int expected = n < 5 ? v / static_cast<int>(std::pow(10, n)) % 10 : 0;
            EXPECT_EQ(p.byte("D"), expected) << "DIG " << v << ", " << n;
            EXPECT_EQ(p.word("P"), expected) << "PEEK of the variable";
            ASSERT_TRUE(p.runTo("AGAIN"));
        }
    }
}

} // namespace
} // namespace zorvel::test
