// Random statements over declared variables: expressions with every operator
// and kind, conditions, nested and unclosed blocks. Each program must end in
// an outcome (no crash, well-formed messages), and a clean one must assemble.
#include "support/test_support.h"

#include <gtest/gtest.h>
#include <random>

namespace zorvel::test {
namespace {

const std::vector<std::string> kOperands = {"A", "B",     "W1",  "W2",          "F",     "G",
                                            "0", "1",     "255", "256",         "65535", "WREG",
                                            "K", "PORTB", "B.7", "W1.HIGHBYTE", "W2.15"};
// Operands without bits or W, for the operators and statements that refuse them.
const std::vector<std::string> kNumeric = {"A",   "B",   "W1",    "W2",          "0", "1",
                                           "255", "256", "65535", "W1.HIGHBYTE", "K", "PORTB"};
const std::vector<std::string> kOperators = {"+",  "-", "*", "**", "*/", "/",
                                             "//", "&", "|", "^",  "<<", ">>"};
const std::vector<std::string> kRelations = {"=",  "==", "<>", "!=", "<",  ">",
                                             "<=", "=<", "!>", ">=", "=>", "!<"};
const std::vector<std::string> kTargets = {"A", "B", "W1", "W2", "F", "WREG"};

class Generator {
public:
    explicit Generator(uint32_t seed) : rng_(seed) {}

    std::string program(int statements) {
        std::string s = pick({"", "DEVICE 16F877\n"}) +
                        "DIM A AS BYTE\nDIM B AS BYTE\nDIM W1 AS WORD\nDIM W2 AS WORD\n"
                        "DIM F AS BIT\nDIM G AS BIT\nSYMBOL K = 300\nLBL:\n";
        for (int i = 0; i < statements; ++i)
            s += statement(0);
        return s + (chance(0.95) ? "END\n" : "");
    }

private:
    bool chance(double p) { return std::bernoulli_distribution(p)(rng_); }
    int number(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    std::string pick(const std::vector<std::string>& v) {
        return v[static_cast<size_t>(number(0, static_cast<int>(v.size()) - 1))];
    }

    std::string expression(int depth) {
        std::string e =
            chance(0.15) && depth < 3 ? "(" + expression(depth + 1) + ")" : pick(kOperands);
        for (int n = number(0, 4); n > 0; --n) {
            std::string op = pick(kOperators);
            // Bits are refused around these operators: keep most programs valid.
            bool refusesBits = op == "**" || op == "//" || op == "/" || op == "<<" || op == ">>";
            e += " " + op + " " +
                 (chance(0.15) && depth < 3 ? "(" + expression(depth + 1) + ")"
                                            : pick(refusesBits ? kNumeric : kOperands));
        }
        return e;
    }

    std::string condition() {
        std::string left = chance(0.3) ? pick(kOperands) : expression(2);
        return left + " " + pick(kRelations) + " " + expression(2);
    }

    std::string body(int depth) {
        std::string s;
        for (int n = number(0, 3); n > 0; --n)
            s += statement(depth + 1);
        return s;
    }

    // A closing keyword, sometimes left out or wrong, to reach the block errors.
    std::string closer(const std::string& right) {
        if (chance(0.97)) return right + "\n";
        return chance(0.5) ? "" : pick({"NEXT", "WEND", "ENDIF", "UNTIL A = 1", "ELSE"}) + "\n";
    }

    std::string statement(int depth) {
        int kind = depth > 3 ? number(0, 3) : number(0, 9);
        switch (kind) {
        case 0:
        case 1:
            return pick(kTargets) + " = " + (chance(0.2) ? pick(kOperands) : expression(0)) + "\n";
        case 2: return pick({"INC ", "DEC "}) + pick(kTargets) + "\n";
        case 3: return "SWAP " + pick(kTargets) + ", " + pick(kTargets) + "\n";
        case 4:
            return "IF " + condition() + " THEN " + pick(kTargets) + " = " + expression(1) + "\n";
        case 5:
            return "IF " + condition() + " THEN\n" + body(depth) +
                   (chance(0.5) ? "ELSE\n" + body(depth) : "") + closer("ENDIF");
        case 6:
            return "FOR " + pick({"A", "W1"}) + " = " + pick(kNumeric) + " TO " + pick(kNumeric) +
                   (chance(0.5) ? " STEP " + pick({"", "-"}) + pick(kNumeric) : "") + "\n" +
                   body(depth) + closer("NEXT");
        case 7: return "WHILE " + condition() + "\n" + body(depth) + closer("WEND");
        case 8: return "REPEAT\n" + body(depth) + closer("UNTIL " + condition());
        default:
            return pick({"GOTO LBL", "GOSUB LBL", "RETURN", "POKE 12, A", "DELAYUS W1",
                         "DELAYMS " + pick(kNumeric)}) +
                   "\n";
        }
    }

    std::mt19937 rng_;
};

bool wellFormed(const std::string& message) {
    return message.rfind("Error at Line [", 0) == 0 || message.rfind("\t", 0) == 0 ||
           message.rfind("Warning Line [", 0) == 0;
}

TEST(RandomStatements, CompileToAnOutcomeAndCleanProgramsAssemble) {
    Generator gen(20261123);
    int clean = 0, assembled = 0;
    for (int i = 0; i < 600; ++i) {
        std::string source = gen.program(1 + i % 12);
        SCOPED_TRACE("source:\n" + source);
        TempDir dir;
        // Every tenth program also goes through gpasm.
        bool assemble = i % 10 == 0;
        CompileResult r;
        ASSERT_NO_THROW(r = compileFile(dir.write("prog.bas", source), dataFolder(), assemble));
        for (const std::string& m : r.messages) {
            ASSERT_NE(m.rfind("Error[", 0), 0u) << "the assembler refused the output: " << m;
            ASSERT_TRUE(wellFormed(m)) << m;
        }
        if (r.errors != 0) {
            continue;
        }
        ++clean;
        if (!assemble) continue;
        EXPECT_TRUE(std::filesystem::exists(dir.path() / "prog.hex"));
        ++assembled;
    }
    // The generator is meant to produce mostly valid programs.
    EXPECT_GT(clean, 200);
    EXPECT_GT(assembled, 10);
}

} // namespace
} // namespace zorvel::test
