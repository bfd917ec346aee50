// The word comparison routines in the simulator: every entry of every
// relation against C++ comparisons, on both sides of each boundary.
#include "compiler/library/runtime_marks.h"
#include "support/exec_support.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace zorvel::test {
namespace {

using Relation = zorvel::Test; // testing::Test hides the name inside TEST bodies

constexpr Relation kTests[] = {Relation::Equal,     Relation::GreaterEqual, Relation::Greater,
                               Relation::LessEqual, Relation::Less,         Relation::NotEqual};
constexpr TestEntry kEntries[] = {TestEntry::Byte, TestEntry::Word, TestEntry::Full};

bool holds(Relation test, int a, int b) {
    switch (test) {
    case Relation::Equal: return a == b;
    case Relation::GreaterEqual: return a >= b;
    case Relation::Greater: return a > b;
    case Relation::LessEqual: return a <= b;
    case Relation::Less: return a < b;
    case Relation::NotEqual: return a != b;
    }
    return false;
}

// Entry k is called between labels E<k> and E<k+1>, the right low byte
// loaded from RGT into W; the last label jumps back to E0.
std::string callerSource() {
    std::string source = "DEVICE 16F84\nDIM RGT AS BYTE\n";
    int k = 0;
    for (Relation test : kTests) {
        for (TestEntry entry : kEntries) {
            source += "E" + std::to_string(k++) + ":\n@ movf RGT,w\n";
            source += "@ call " + testLabel(test, entry) + "\n";
        }
    }
    return source + "E" + std::to_string(k) + ":\n@ goto E0\nEND\n";
}

// Values on both sides of byte and word boundaries, plus random pairs.
std::vector<std::pair<int, int>> pairs(int limit) {
    std::vector<std::pair<int, int>> out;
    for (int a : {0, 1, 127, 128, 254, 255, 256, 257, 0x12FF, 0x1300, 0x8000, 65534, 65535}) {
        if (a > limit) continue;
        for (int d : {-257, -256, -255, -1, 0, 1, 255, 256, 257})
            if (a + d >= 0 && a + d <= limit) out.push_back({a, a + d});
    }
    std::mt19937 rng(99);
    std::uniform_int_distribution<int> value(0, limit);
    for (int i = 0; i < 40; ++i)
        out.push_back({value(rng), value(rng)});
    return out;
}

TEST(RuntimeCompare, EveryEntryMatchesReference) {
    std::string source = callerSource();
    SimProgram p(source, 4.0, [](Compilation& c) {
        for (Relation test : kTests)
            needTest(c, test, TestEntry::Byte);
    });
    ASSERT_TRUE(p.ok()) << p.failure();
    int k = 0;
    for (Relation test : kTests) {
        for (TestEntry entry : kEntries) {
            std::string label = testLabel(test, entry);
            // The byte entry compares low bytes, the word entry a word with a
            // byte; the registers they clear hold junk beforehand.
            int leftLimit = entry == TestEntry::Byte ? 255 : 65535;
            int rightLimit = entry == TestEntry::Full ? 65535 : 255;
            for (auto [a, b] : pairs(65535)) {
                if (a > leftLimit || b > rightLimit) continue;
                ASSERT_TRUE(p.runTo("E" + std::to_string(k)));
                p.setWord("PP0", entry == TestEntry::Byte ? (a | 0xA500) : a);
                p.setWord("PP1", entry == TestEntry::Full ? b : (0x5A00 | 0x77));
                p.setByte("RGT", b & 255);
                ASSERT_TRUE(p.runTo("E" + std::to_string(k + 1)));
                int expected = holds(test, a, b) ? 255 : 0;
                ASSERT_EQ(p.pic().w(), expected)
                    << label << " left=" << a << " right=" << b << "\nsource:\n"
                    << source;
            }
            ++k;
        }
    }
}

} // namespace
} // namespace zorvel::test
