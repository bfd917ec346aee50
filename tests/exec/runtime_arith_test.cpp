// The arithmetic routines of the runtime library run in the simulator:
// division, multiplication, the variable shifts and the negation, each
// called from inline assembly with its operands poked into the PP registers
// and checked against plain C++ arithmetic.
#include "compiler/library/runtime_marks.h"
#include "support/exec_support.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace zorvel::test {
namespace {

// One call of each routine in a loop; the test stops at each label, sets the
// operands of the next call and reads the results of the last.
const std::string kCaller =
    lines({"DEVICE 16F84", "DIM CNT AS BYTE", "Divide:", "@ call d@vd", "Multiply:", "@ call m@py",
           "ShiftLeft:", "@ movf CNT,w", "@ call l@sh", "ShiftRight:", "@ movf CNT,w",
           "@ call r@sh", "Negate:", "@ call n@gt", "Back:", "@ goto Divide", "END"});

SimProgram arithmeticProgram() {
    return SimProgram(kCaller, 4.0, [](Compilation& c) {
        for (Group g :
             {Group::Divide, Group::Multiply, Group::ShiftLeft, Group::ShiftRight, Group::Negate})
            need(c, g);
    });
}

// Operand pairs: every pair of the edge values, then random ones.
std::vector<std::pair<int, int>> operandPairs(int randomCount) {
    const int edges[] = {0, 1, 255, 256, 65535};
    std::vector<std::pair<int, int>> pairs;
    for (int a : edges)
        for (int b : edges)
            pairs.push_back({a, b});
    std::mt19937 rng(20240611);
    std::uniform_int_distribution<int> word(0, 65535), byte(0, 255);
    for (int i = 0; i < randomCount; ++i)
        pairs.push_back({word(rng), i % 3 == 0 ? byte(rng) : word(rng)});
    return pairs;
}

std::string operands(SimProgram& p, int a, int b) {
    return "a=" + std::to_string(a) + " b=" + std::to_string(b) + "\nsource:\n" + p.source();
}

TEST(RuntimeArithmetic, DivideMatchesReference) {
    SimProgram p = arithmeticProgram();
    ASSERT_TRUE(p.ok()) << p.failure();
    for (auto [a, b] : operandPairs(400)) {
        ASSERT_TRUE(p.runTo("Divide"));
        p.setWord("PP0", a);
        p.setWord("PP1", b);
        p.setWord("PP2", 0x5A5A); // d@vd clears the remainder itself
        ASSERT_TRUE(p.runTo("Multiply"));
        // A divisor of 0 never borrows: quotient 65535, remainder the dividend.
        int quotient = b == 0 ? 65535 : a / b;
        int remainder = b == 0 ? a : a % b;
        ASSERT_EQ(p.word("PP0"), quotient) << operands(p, a, b);
        ASSERT_EQ(p.word("PP2"), remainder) << operands(p, a, b);
        ASSERT_EQ(p.pic().w(), quotient & 255) << operands(p, a, b);
        ASSERT_EQ(p.word("PP1"), b) << "divisor kept\n" << operands(p, a, b);
    }
}

TEST(RuntimeArithmetic, MultiplyMatchesReference) {
    SimProgram p = arithmeticProgram();
    ASSERT_TRUE(p.ok()) << p.failure();
    for (auto [a, b] : operandPairs(400)) {
        ASSERT_TRUE(p.runTo("Multiply"));
        p.setWord("PP3", a);
        p.setWord("PP1", b);
        ASSERT_TRUE(p.runTo("ShiftLeft"));
        uint32_t product = static_cast<uint32_t>(a) * static_cast<uint32_t>(b);
        uint32_t got = static_cast<uint32_t>(p.word("PP0")) << 16 | p.word("PP2");
        ASSERT_EQ(got, product) << operands(p, a, b);
        ASSERT_EQ(p.pic().w(), product & 255) << operands(p, a, b);
        ASSERT_EQ(p.word("PP1"), b) << "multiplicand kept\n" << operands(p, a, b);
    }
}

// Shift counts: 0 to 17, the byte edges, and random ones.
std::vector<int> shiftCounts() {
    std::vector<int> counts;
    for (int n = 0; n <= 17; ++n)
        counts.push_back(n);
    for (int n : {31, 128, 254, 255})
        counts.push_back(n);
    return counts;
}

TEST(RuntimeArithmetic, ShiftsMatchReference) {
    SimProgram p = arithmeticProgram();
    ASSERT_TRUE(p.ok()) << p.failure();
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> word(0, 65535);
    std::vector<int> values = {0, 1, 255, 256, 65535, 0x8001};
    for (int i = 0; i < 30; ++i)
        values.push_back(word(rng));
    for (int value : values) {
        for (int count : shiftCounts()) {
            ASSERT_TRUE(p.runTo("ShiftLeft"));
            p.setWord("PP0", value);
            p.setByte("CNT", count);
            p.pic().poke(3, p.pic().peek(3) | 1); // a carry left set must not shift in
            ASSERT_TRUE(p.runTo("ShiftRight"));
            int left = count >= 16 ? 0 : (value << count) & 0xFFFF;
            ASSERT_EQ(p.word("PP0"), left)
                << "l@sh count=" << count << " " << operands(p, value, 0);
            ASSERT_EQ(p.pic().w(), left & 255) << "l@sh count=" << count;
            p.setWord("PP0", value);
            p.pic().poke(3, p.pic().peek(3) | 1);
            ASSERT_TRUE(p.runTo("Negate"));
            int right = count >= 16 ? 0 : value >> count;
            ASSERT_EQ(p.word("PP0"), right)
                << "r@sh count=" << count << " " << operands(p, value, 0);
            ASSERT_EQ(p.pic().w(), right & 255) << "r@sh count=" << count;
        }
    }
}

TEST(RuntimeArithmetic, NegateSetsZeroOnlyForZero) {
    SimProgram p = arithmeticProgram();
    ASSERT_TRUE(p.ok()) << p.failure();
    for (int value : {0, 1, 255, 256, 65535, 0x8000, 12345}) {
        ASSERT_TRUE(p.runTo("Negate"));
        p.setWord("PP0", value);
        ASSERT_TRUE(p.runTo("Back"));
        int negated = (65536 - value) & 0xFFFF;
        ASSERT_EQ(p.word("PP0"), negated) << "value=" << value;
        ASSERT_EQ((p.pic().peek(3) >> 2) & 1, negated == 0 ? 1 : 0) << "Z for value=" << value;
    }
}

} // namespace
} // namespace zorvel::test
