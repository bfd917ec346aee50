// Array elements in the simulator: arrays placed in every bank, across the
// bank gaps and above address 255 are written and read back at every index
// with byte, word, bit, constant and expression indexes, and the bytes just
// before and after each array keep their values.
#include "support/exec_support.h"

#include <gtest/gtest.h>
#include <sstream>

namespace zorvel::test {
namespace {

struct ArraySpec {
    std::string name;
    int size;
};

// Every element ends as index + 8, element 0 as 200, element 1 (bit index)
// gets 3 more and the last (expression index) is 55.
int expectedElement(const ArraySpec& a, int i) {
    if (i == 0) return 200;
    if (i == a.size - 1) return 55;
    return i + 8 + (i == 1 ? 3 : 0);
}

std::string arrayProgram(const std::string& device, const std::vector<ArraySpec>& arrays) {
    std::ostringstream s;
    s << "DEVICE " << device << "\nDIM IX AS BYTE\nDIM WX AS WORD\nDIM V AS BYTE\nDIM FB AS BIT\n";
    for (const ArraySpec& a : arrays)
        s << "DIM LO" << a.name << "\nDIM " << a.name << "[" << a.size << "]\nDIM HI" << a.name
          << "\n";
    s << "FB = 1\n";
    for (const ArraySpec& a : arrays) {
        const std::string& n = a.name;
        s << "LO" << n << " = 85\nHI" << n << " = 170\n";
        s << "FOR IX = 0 TO " << a.size - 1 << "\n" << n << "[IX] = IX + 7\nNEXT\n";
        s << "FOR IX = 0 TO " << a.size - 1 << "\nWX = IX\nV = " << n << "[WX]\n"
          << n << "[WX] = V + 1\nNEXT\n";
        s << n << "[FB] = " << n << "[FB] + 3\n";
        s << "IX = " << a.size - 2 << "\n" << n << "[IX + 1] = 55\n";
        s << n << "[0] = 200\n";
    }
    s << "END\n";
    return s.str();
}

void checkArrays(const std::string& device, const std::vector<ArraySpec>& arrays) {
    std::string source = arrayProgram(device, arrays);
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    ASSERT_TRUE(p.runToEnd()) << source;
    for (const ArraySpec& a : arrays) {
        EXPECT_EQ(p.byte("LO" + a.name), 85) << a.name << "\n" << source;
        EXPECT_EQ(p.byte("HI" + a.name), 170) << a.name << "\n" << source;
        for (int i = 0; i < a.size; ++i)
            EXPECT_EQ(p.byte(a.name + "#" + std::to_string(i)), expectedElement(a, i))
                << a.name << "[" << i << "]\n"
                << source;
    }
}

TEST(ArraysExec, SingleBankDevice) {
    checkArrays("16F84", {{"AA", 4}, {"AB", 16}, {"AC", 2}});
}

// The 16F877's banks: 32..127, 160..239, 272..367, 400..495.
TEST(ArraysExec, EveryBankAndEveryGap) {
    std::vector<ArraySpec> arrays = {{"A1", 20}, {"A2", 60}, {"A3", 40}, {"A4", 60},
                                     {"A5", 30}, {"A6", 60}, {"A7", 20}};
    std::string source = arrayProgram("16F877", arrays);
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure();
    // The layout the test is about.
    EXPECT_LT(p.address("A2#0"), 128);
    EXPECT_GE(p.address("A2#59"), 160);
    EXPECT_LT(p.address("A4#0"), 240);
    EXPECT_GE(p.address("A4#59"), 272);
    EXPECT_GE(p.address("A5#0"), 272);
    EXPECT_LE(p.address("A5#29"), 367);
    EXPECT_LT(p.address("A6#0"), 368);
    EXPECT_GE(p.address("A6#59"), 400);
    EXPECT_GE(p.address("A7#0"), 400);
    checkArrays("16F877", arrays);
}

} // namespace
} // namespace zorvel::test
