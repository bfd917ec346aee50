// Conditions in the simulator: every operator spelling and every pair of
// operand kinds takes the right branch of an IF ... ELSE on both sides of
// each boundary. One program holds many IFs; each sets a bit in its THEN
// part (RES bytes) or in its ELSE part (ELS bytes), and the test checks
// both for every set of input values.
#include "support/exec_support.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace zorvel::test {
namespace {

enum class Slot { LB, LW, LT, RB, RW, RT, Num };

struct Operand {
    Slot slot;
    long n = 0; // Num only
    std::string text() const {
        static const char* names[] = {"LB", "LW", "LT", "RB", "RW", "RT"};
        return slot == Slot::Num ? std::to_string(n) : names[static_cast<int>(slot)];
    }
};

struct Inputs {
    int lb = 0, lw = 0, lt = 0, rb = 0, rw = 0, rt = 0;
};

long valueOf(const Operand& o, const Inputs& in) {
    switch (o.slot) {
    case Slot::LB: return in.lb;
    case Slot::LW: return in.lw;
    case Slot::LT: return in.lt;
    case Slot::RB: return in.rb;
    case Slot::RW: return in.rw;
    case Slot::RT: return in.rt;
    case Slot::Num: return o.n;
    }
    return 0;
}

const std::string kSpellings[] = {"=",  "==", "<>", "!=", "<",  ">",
                                  "<=", "=<", "!>", ">=", "=>", "!<"};

bool holds(const std::string& op, long a, long b) {
    if (op == "=" || op == "==") return a == b;
    if (op == "<>" || op == "!=") return a != b;
    if (op == "<") return a < b;
    if (op == ">") return a > b;
    if (op == "<=" || op == "=<" || op == "!>") return a <= b;
    return a >= b; // ">=", "=>", "!<"
}

struct Case {
    Operand left;
    std::string op;
    Operand right;
    std::string text() const { return left.text() + " " + op + " " + right.text(); }
};

std::string programFor(const std::vector<Case>& cases) {
    std::ostringstream s;
    s << "DEVICE 16F877\nDIM LB AS BYTE\nDIM LW AS WORD\nDIM LT AS BIT\n"
      << "DIM RB AS BYTE\nDIM RW AS WORD\nDIM RT AS BIT\n";
    for (size_t k = 0; k < (cases.size() + 7) / 8; ++k)
        s << "DIM RES" << k << " AS BYTE\nDIM ELS" << k << " AS BYTE\n";
    s << "Start:\n";
    for (size_t k = 0; k < cases.size(); ++k) {
        std::string bit = std::to_string(k / 8) + "," + std::to_string(k % 8);
        s << "IF " << cases[k].text() << " THEN\n@ bsf RES" << bit << "\nELSE\n@ bsf ELS" << bit
          << "\nENDIF\n";
    }
    s << "Done:\nGOTO Start\n";
    return s.str();
}

std::string describe(const Inputs& in) {
    std::ostringstream s;
    s << "LB=" << in.lb << " LW=" << in.lw << " LT=" << in.lt << " RB=" << in.rb << " RW=" << in.rw
      << " RT=" << in.rt;
    return s.str();
}

// Runs every input set through the program and checks every case.
void checkCases(const std::vector<Case>& cases, const std::vector<Inputs>& inputs) {
    std::string source = programFor(cases);
    SimProgram p(source);
    ASSERT_TRUE(p.ok()) << p.failure() << "\n" << source;
    size_t bytes = (cases.size() + 7) / 8;
    int failures = 0;
    for (const Inputs& in : inputs) {
        ASSERT_TRUE(p.runTo("Start"));
        p.setByte("LB", in.lb), p.setWord("LW", in.lw), p.setBit("LT", in.lt);
        p.setByte("RB", in.rb), p.setWord("RW", in.rw), p.setBit("RT", in.rt);
        for (size_t k = 0; k < bytes; ++k)
            p.setByte("RES" + std::to_string(k), 0), p.setByte("ELS" + std::to_string(k), 0);
        ASSERT_TRUE(p.runTo("Done")) << describe(in);
        for (size_t k = 0; k < cases.size() && failures < 10; ++k) {
            int taken = (p.byte("RES" + std::to_string(k / 8)) >> (k % 8)) & 1;
            int other = (p.byte("ELS" + std::to_string(k / 8)) >> (k % 8)) & 1;
            int want = holds(cases[k].op, valueOf(cases[k].left, in), valueOf(cases[k].right, in));
            bool good = taken == want && other == 1 - want;
            if (!good) ++failures;
            EXPECT_TRUE(good) << "IF " << cases[k].text() << " with " << describe(in) << ": THEN "
                              << taken << ", ELSE " << other
                              << (failures == 1 ? "\nsource:\n" + source : "");
        }
    }
}

// Word values at the byte and sign boundaries and at the extremes; each is
// paired with itself and its neighbours, and with all four bit patterns.
std::vector<Inputs> variableInputs() {
    const int words[] = {0,   1,   2,   127,   128,   254,   255,  256,
                         257, 261, 511, 32767, 32768, 65534, 65535};
    std::vector<Inputs> out;
    for (int v : words) {
        for (int d : {-1, 0, 1}) {
            int w = std::clamp(v + d, 0, 65535);
            for (int bits = 0; bits < 4; ++bits) {
                Inputs in{v & 255, v, bits & 1, w & 255, w, bits >> 1};
                out.push_back(in);
                // A byte equal to the low byte of a word above 255.
                out.push_back(Inputs{w & 255, v, bits & 1, v & 255, w, bits >> 1});
            }
        }
    }
    std::mt19937 rng(20240611);
    for (int i = 0; i < 60; ++i) {
        int a = static_cast<int>(rng() % 65536), b = static_cast<int>(rng() % 65536);
        out.push_back(Inputs{a & 255, a, static_cast<int>(rng() & 1), b & 255, b,
                             static_cast<int>(rng() & 1)});
    }
    return out;
}

TEST(ConditionExec, EveryOperatorAndVariableKindPair) {
    std::vector<Case> cases;
    for (Slot l : {Slot::LB, Slot::LW, Slot::LT})
        for (Slot r : {Slot::RB, Slot::RW, Slot::RT})
            for (const std::string& op : kSpellings)
                cases.push_back(Case{{l}, op, {r}});
    checkCases(cases, variableInputs());
}

// Inputs near every constant the cases use.
std::vector<Inputs> constantInputs() {
    const int bytes[] = {0, 1, 2, 126, 127, 128, 253, 254, 255};
    const int words[] = {0, 1, 2, 254, 255, 256, 257, 999, 1000, 1001, 65533, 65534, 65535};
    std::vector<Inputs> out;
    for (int i = 0; i < 2 * 9 * 13; ++i)
        out.push_back(Inputs{bytes[i % 9], words[i % 13], (i / 9) & 1, 0, 0, 0});
    return out;
}

std::vector<Case> constantCases(Slot variable, std::initializer_list<long> constants) {
    const std::string ops[] = {"=", "!=", "<", "=>", ">", "=<"};
    std::vector<Case> cases;
    for (long n : constants) {
        for (const std::string& op : ops) {
            cases.push_back(Case{{variable}, op, {Slot::Num, n}});
            cases.push_back(Case{{Slot::Num, n}, op, {variable}});
        }
    }
    return cases;
}

TEST(ConditionExec, BytesAndBitsAgainstConstants) {
    std::vector<Case> cases = constantCases(Slot::LB, {0, 1, 127, 254, 255, 256, 1000});
    std::vector<Case> bits = constantCases(Slot::LT, {0, 1, 2});
    cases.insert(cases.end(), bits.begin(), bits.end());
    for (const std::string& op : kSpellings)
        for (auto [a, b] : {std::pair{3L, 3L}, {3L, 4L}, {4L, 3L}})
            cases.push_back(Case{{Slot::Num, a}, op, {Slot::Num, b}});
    checkCases(cases, constantInputs());
}

TEST(ConditionExec, WordsAgainstConstants) {
    checkCases(constantCases(Slot::LW, {0, 1, 255, 256, 1000, 65534, 65535}), constantInputs());
}

} // namespace
} // namespace zorvel::test
