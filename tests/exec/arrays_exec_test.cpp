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

std::string arrayProgram(const std::string& device, const std::vector<ArraySpec>& arrays,
                         bool handler = false) {
    std::ostringstream s;
    s << "DEVICE " << device << (handler ? "\nON_INTERRUPT isr" : "")
      << "\nDIM IX AS BYTE\nDIM WX AS WORD\nDIM V AS BYTE\nDIM FB AS BIT\n";
    for (const ArraySpec& a : arrays)
        s << "DIM LO" << a.name << "\nDIM " << a.name << "[" << a.size << "]\nDIM HI" << a.name
          << "\n";
    if (handler) s << "GOTO MAINPART\nisr:\nMAINPART:\n";
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

void checkArrays(const std::string& device, const std::vector<ArraySpec>& arrays,
                 bool handler = false) {
    std::string source = arrayProgram(device, arrays, handler);
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

// With an interrupt handler the allocator leaves out the save bytes at 160
// and 288; an array with 288 inside it goes through find@address.
TEST(ArraysExec, AroundInterruptSaveBytes) {
    std::vector<ArraySpec> arrays = {{"A1", 50}, {"A2", 60}, {"A3", 45}, {"A4", 20}};
    std::string source = arrayProgram("16F877", arrays, true);
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    // A2 runs from bank 0 over the gap and the save byte at 160; A3 from bank 1
    // over the gap into bank 2 and over the save byte at 288.
    EXPECT_LT(p.address("A2#0"), 128) << source;
    EXPECT_GT(p.address("A2#59"), 160) << source;
    EXPECT_LT(p.address("A3#0"), 240) << source;
    EXPECT_GT(p.address("A3#44"), 288) << source;
    checkArrays("16F877", arrays, true);
}

// STR copies exactly the given count (through get@array and put@array for
// arrays that cross a bank gap) and fills from texts and lists.
TEST(ArraysExec, StrCopiesAndFills) {
    std::string source =
        "DEVICE 16F877\nDIM BV AS BYTE\nDIM PAD[30]\nDIM SRC[40]\nDIM MID[20]\nDIM LO1\n"
        "DIM DST[70]\nDIM HI1\nDIM TXT[5]\nDIM LST[3]\nDIM HI2\n"
        "LO1 = 85 : HI1 = 170 : HI2 = 170 : BV = 77\n"
        "FOR BV = 0 TO 39\nSRC[BV] = BV + 50\nNEXT\n"
        "FOR BV = 0 TO 69\nDST[BV] = 9\nNEXT\n"
        "STR DST = STR SRC \\ 40\nSTR TXT = \"Ab'c\"\nBV = 77\nSTR LST = 3, BV, 200\nEND\n";
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    EXPECT_LT(p.address("SRC#0"), 128) << "SRC should cross into bank 1";
    EXPECT_GE(p.address("SRC#39"), 160);
    ASSERT_TRUE(p.runToEnd()) << source;
    for (int i = 0; i < 70; ++i)
        EXPECT_EQ(p.byte("DST#" + std::to_string(i)), i < 40 ? i + 50 : 9) << i << "\n" << source;
    EXPECT_EQ(p.byte("LO1"), 85);
    EXPECT_EQ(p.byte("HI1"), 170);
    std::string text = "Ab'c";
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(p.byte("TXT#" + std::to_string(i)), text[static_cast<size_t>(i)]) << i;
    EXPECT_EQ(p.byte("TXT#4"), 0);
    EXPECT_EQ(p.byte("LST#0"), 3);
    EXPECT_EQ(p.byte("LST#1"), 77);
    EXPECT_EQ(p.byte("LST#2"), 200);
    EXPECT_EQ(p.byte("HI2"), 170);
}

} // namespace
} // namespace zorvel::test
