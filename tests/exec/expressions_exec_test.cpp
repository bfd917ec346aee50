// Whole expressions of 2 to 8 operands with mixed precedence and parentheses,
// and INC, DEC and SWAP for every kind, run in the simulator against the
// reference: intermediate results are 16-bit words, the final result is
// truncated to the destination's kind.
#include "operation_reference.h"
#include "support/exec_support.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace zorvel::test {
namespace {

// Operand variables: V1, V2 bytes, W1, W2 words, F1, F2 bits; W itself.
struct Inputs {
    int v1 = 0, v2 = 0, w1 = 0, w2 = 0, f1 = 0, f2 = 0, wreg = 0;
    std::string text() const {
        std::ostringstream s;
        s << "V1=" << v1 << " V2=" << v2 << " W1=" << w1 << " W2=" << w2 << " F1=" << f1
          << " F2=" << f2 << " WREG=" << wreg;
        return s.str();
    }
};

struct Expr {
    std::string text;
    int value = 0;
    int level = 0; // 0 operand, 1 "*" level, 2 "+" level, 3 shifts
    Kind kind = Kind::Word;
};

int operatorLevel(int op) {
    if (op == 10 || op == 11) return 3;
    return (op == 0 || op == 1 || op == 8 || op == 9) ? 2 : 1;
}

class ExpressionMaker {
public:
    ExpressionMaker(std::mt19937& rng, const Inputs& in) : rng_(rng), in_(in) {}

    Expr make(int operands) {
        if (operands == 1) return leaf();
        int split = 1 + static_cast<int>(rng_() % static_cast<unsigned>(operands - 1));
        Expr left = make(split), right = make(operands - split);
        int op = pickOperator(left.kind, right.kind);
        int level = operatorLevel(op);
        Expr e;
        e.text = wrap(left, left.level > level) + " " + kOperatorTokens[op] + " " +
                 wrap(right, right.level >= level && right.level > 0);
        e.value = referenceOperation(op, left.value, right.value);
        e.level = level;
        return e;
    }

private:
    Expr leaf() {
        switch (rng_() % 8) {
        case 0: return {"V1", in_.v1, 0, Kind::Byte};
        case 1: return {"V2", in_.v2, 0, Kind::Byte};
        case 2: return {"W1", in_.w1, 0, Kind::Word};
        case 3: return {"W2", in_.w2, 0, Kind::Word};
        case 4: return {"F1", in_.f1, 0, Kind::Bit};
        case 5: return {"F2", in_.f2, 0, Kind::Bit};
        case 6: return {"WREG", in_.wreg, 0, Kind::Byte};
        default: {
            int n = static_cast<int>(rng_() % 3 == 0 ? rng_() % 65536 : rng_() % 20);
            return {std::to_string(n), n, 0, Kind::Num};
        }
        }
    }

    int pickOperator(Kind left, Kind right) {
        for (;;) {
            int op = static_cast<int>(rng_() % 12);
            if (takesBits(op, left, right)) return op;
        }
    }

    // Parentheses where precedence needs them, and now and then where not.
    std::string wrap(const Expr& e, bool needed) {
        if (needed || (e.level > 0 && rng_() % 5 == 0)) return "(" + e.text + ")";
        return e.text;
    }

    std::mt19937& rng_;
    const Inputs& in_;
};

struct ExprRun {
    std::string statement;
    Inputs inputs;
    Kind result;
    std::string target;
    int expected;
};

std::string program(const std::vector<ExprRun>& runs, const std::string& declarations) {
    std::ostringstream s;
    s << "DEVICE 16F877\n" << declarations;
    for (size_t i = 0; i < runs.size(); ++i)
        s << "C" << i << ": " << runs[i].statement << "\n";
    s << "C" << runs.size() << ":\n@ goto C0\nEND\n"; // the cases of shared statements loop
    return s.str();
}

int readTarget(SimProgram& p, Kind kind, const std::string& target) {
    if (target == "WREG") return p.pic().w();
    if (kind == Kind::Word) return p.word(target);
    if (kind == Kind::Bit) return p.bit(target);
    return p.byte(target);
}

const char* const kExpressionDeclarations =
    "DIM V1 AS BYTE\nDIM V2 AS BYTE\nDIM W1 AS WORD\nDIM W2 AS WORD\nDIM F1 AS BIT\n"
    "DIM F2 AS BIT\nDIM RB AS BYTE\nDIM RW AS WORD\nDIM RF AS BIT\n";

Inputs randomInputs(std::mt19937& rng) {
    Inputs in;
    in.v1 = static_cast<int>(rng() & 255);
    in.v2 = static_cast<int>(rng() % 4 == 0 ? rng() % 10 : rng() & 255);
    in.w1 = static_cast<int>(rng() & 0xFFFF);
    in.w2 = static_cast<int>(rng() % 4 == 0 ? rng() % 20 : rng() & 0xFFFF);
    in.f1 = static_cast<int>(rng() & 1);
    in.f2 = static_cast<int>(rng() & 1);
    in.wreg = static_cast<int>(rng() & 255);
    return in;
}

void poke(SimProgram& p, const Inputs& in) {
    p.setByte("V1", in.v1);
    p.setByte("V2", in.v2);
    p.setWord("W1", in.w1);
    p.setWord("W2", in.w2);
    p.setBit("F1", in.f1);
    p.setBit("F2", in.f2);
    p.pic().setW(static_cast<uint8_t>(in.wreg));
}

TEST(ExpressionExecution, MixedPrecedenceMatchesReference) {
    const Kind results[] = {Kind::Wreg, Kind::Byte, Kind::Bit, Kind::Word};
    const char* const targets[] = {"WREG", "RB", "RF", "RW"};
    std::mt19937 rng(424242u);
    for (int batch = 0; batch < 3; ++batch) {
        std::vector<ExprRun> runs;
        for (int i = 0; i < 70; ++i) {
            Inputs in = randomInputs(rng);
            int operands = 2 + i % 7;
            Expr e = ExpressionMaker(rng, in).make(operands);
            int r = static_cast<int>(rng() % 4);
            runs.push_back({std::string(targets[r]) + " = " + e.text, in, results[r], targets[r],
                            truncateTo(results[r], e.value)});
        }
        SimProgram p(program(runs, kExpressionDeclarations));
        ASSERT_TRUE(p.ok()) << p.failure() << "\n" << p.source();
        for (size_t i = 0; i < runs.size(); ++i) {
            const ExprRun& run = runs[i];
            ASSERT_TRUE(p.runTo("C" + std::to_string(i))) << run.statement;
            poke(p, run.inputs);
            ASSERT_TRUE(p.runTo("C" + std::to_string(i + 1))) << run.statement;
            EXPECT_EQ(readTarget(p, run.result, run.target), run.expected)
                << run.statement << "\n  " << run.inputs.text();
        }
    }
}

// --- INC, DEC, SWAP ---------------------------------------------------------------

struct Variable {
    const char* name;
    Kind kind;
};

const Variable kSwapVariables[] = {{"SA", Kind::Byte}, {"SB", Kind::Byte}, {"SW", Kind::Word},
                                   {"SV", Kind::Word}, {"SF", Kind::Bit},  {"SG", Kind::Bit}};

const char* const kSwapDeclarations = "DIM SA AS BYTE\nDIM SB AS BYTE\nDIM SW AS WORD\n"
                                      "DIM SV AS WORD\nDIM SF AS BIT\nDIM SG AS BIT\n";

void setVariable(SimProgram& p, const Variable& v, int value) {
    if (v.kind == Kind::Word) p.setWord(v.name, value);
    if (v.kind == Kind::Bit) p.setBit(v.name, value & 1);
    if (v.kind == Kind::Byte) p.setByte(v.name, value & 255);
}

int edgeOrRandom(std::mt19937& rng, int i) {
    static const int edges[] = {0, 1, 255, 256, 65535};
    return i < 5 ? edges[i] : static_cast<int>(rng() & 0xFFFF);
}

TEST(StepExecution, IncAndDecEveryKind) {
    std::vector<std::string> statements;
    std::vector<std::pair<const Variable*, int>> steps; // variable, +1 or -1
    for (int s = 0; s < 6; ++s) {
        const Variable& v = kSwapVariables[s % 2 == 0 ? s : s - 1];
        bool inc = s % 2 == 0;
        statements.push_back(std::string(inc ? "INC " : "DECREMENT ") + v.name);
        steps.push_back({&v, inc ? 1 : -1});
    }
    statements.push_back("INC WREG");
    statements.push_back("DEC WREG");
    std::vector<ExprRun> slots;
    for (const std::string& st : statements)
        slots.push_back({st, {}, Kind::Byte, "", 0});
    SimProgram p(program(slots, kSwapDeclarations));
    ASSERT_TRUE(p.ok()) << p.failure();
    std::mt19937 rng(99u);
    for (int i = 0; i < 40; ++i) {
        int value = edgeOrRandom(rng, i);
        for (size_t s = 0; s < statements.size(); ++s) {
            ASSERT_TRUE(p.runTo("C" + std::to_string(s)));
            bool wreg = s >= steps.size();
            int delta = wreg ? (s == steps.size() ? 1 : -1) : steps[s].second;
            Kind kind = wreg ? Kind::Wreg : steps[s].first->kind;
            if (wreg)
                p.pic().setW(static_cast<uint8_t>(value));
            else
                setVariable(p, *steps[s].first, value);
            ASSERT_TRUE(p.runTo("C" + std::to_string(s + 1)));
            int start = truncateTo(kind, value);
            int got = wreg ? p.pic().w() : readTarget(p, kind, steps[s].first->name);
            EXPECT_EQ(got, truncateTo(kind, start + delta)) << statements[s] << " from " << start;
        }
    }
    (void)p.runTo("C" + std::to_string(statements.size()));
}

TEST(StepExecution, SwapEveryKindPair) {
    // Every ordered pair of a byte, word and bit variable (two of each kind).
    std::vector<std::pair<const Variable*, const Variable*>> pairs;
    for (int a = 0; a < 6; a += 2)
        for (int b = 1; b < 6; b += 2)
            pairs.push_back({&kSwapVariables[a], &kSwapVariables[b]});
    std::vector<ExprRun> slots;
    for (auto [a, b] : pairs)
        slots.push_back({std::string("SWAP ") + a->name + ", " + b->name, {}, Kind::Byte, "", 0});
    slots.push_back({"SWAP WREG, SA", {}, Kind::Byte, "", 0});
    slots.push_back({"SWAP SW, WREG", {}, Kind::Byte, "", 0});
    SimProgram p(program(slots, kSwapDeclarations));
    ASSERT_TRUE(p.ok()) << p.failure();
    std::mt19937 rng(1234u);
    for (int i = 0; i < 30; ++i) {
        int x = edgeOrRandom(rng, i), y = edgeOrRandom(rng, (i + 2) % 30);
        for (size_t s = 0; s < slots.size(); ++s) {
            ASSERT_TRUE(p.runTo("C" + std::to_string(s)));
            bool withW = s >= pairs.size();
            const Variable& a = withW ? kSwapVariables[s == pairs.size() ? 0 : 2] : *pairs[s].first;
            setVariable(p, a, x);
            if (withW)
                p.pic().setW(static_cast<uint8_t>(y));
            else
                setVariable(p, *pairs[s].second, y);
            ASSERT_TRUE(p.runTo("C" + std::to_string(s + 1)));
            int ax = truncateTo(a.kind, x);
            if (withW) {
                EXPECT_EQ(p.pic().w(), ax & 255) << slots[s].statement << " x=" << x << " y=" << y;
                EXPECT_EQ(readTarget(p, a.kind, a.name), y & 255) << slots[s].statement;
                continue;
            }
            const Variable& b = *pairs[s].second;
            int by = truncateTo(b.kind, y);
            EXPECT_EQ(readTarget(p, a.kind, a.name), truncateTo(a.kind, by))
                << slots[s].statement << " x=" << x << " y=" << y;
            EXPECT_EQ(readTarget(p, b.kind, b.name), truncateTo(b.kind, ax))
                << slots[s].statement << " x=" << x << " y=" << y;
        }
    }
}

} // namespace
} // namespace zorvel::test
