// Every operator with every left, right and result kind, compiled, assembled
// and run: randomised operands (fixed seed, with the edge values) against the
// 16-bit reference. One program per operator and operand kinds holds all its
// cases; variables are set at the label before each case and the result is
// read at the label after it.
#include "operation_reference.h"
#include "support/exec_support.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace zorvel::test {
namespace {

constexpr int kCasesPerCombination = 50;

const Kind kOperandKinds[] = {Kind::Byte, Kind::Num, Kind::Bit, Kind::Word};
const Kind kResultKinds[] = {Kind::Wreg, Kind::Byte, Kind::Bit, Kind::Word};

std::string kindName(Kind k) {
    switch (k) {
    case Kind::Byte: return "BYTE";
    case Kind::Num: return "NUM";
    case Kind::Bit: return "BIT";
    case Kind::Word: return "WORD";
    default: return "WREG";
    }
}

// The variable of an operand or result kind; left and right never share one.
std::string variableOf(Kind k, bool left) {
    switch (k) {
    case Kind::Byte: return left ? "LB" : "RB";
    case Kind::Bit: return left ? "LF" : "RF";
    case Kind::Word: return left ? "LW" : "RW";
    default: return "";
    }
}

std::string resultOf(Kind k) {
    switch (k) {
    case Kind::Byte: return "RESB";
    case Kind::Bit: return "RESF";
    case Kind::Word: return "RESW";
    default: return "WREG";
    }
}

int randomValue(std::mt19937& rng, Kind k, int op, bool right, int index) {
    static const int byteEdges[] = {0, 1, 255};
    static const int wordEdges[] = {0, 1, 255, 256, 65535};
    static const int numEdges[] = {0, 1, 2, 4, 8, 255, 256, 65535};
    bool shiftCount = right && (op == 10 || op == 11);
    if (k == Kind::Bit) return static_cast<int>(rng() & 1);
    if (shiftCount && index % 3 != 0) return static_cast<int>(rng() % 18);
    if (k == Kind::Byte) return index < 3 ? byteEdges[index] : static_cast<int>(rng() & 255);
    if (k == Kind::Word) return index < 5 ? wordEdges[index] : static_cast<int>(rng() & 0xFFFF);
    if (index < 8) return numEdges[index];
    return static_cast<int>(rng() % 2 ? rng() & 255 : rng() & 0xFFFF);
}

struct Case {
    size_t slot = 0; // the statement it runs
    Kind left, right, result;
    int a = 0, b = 0;
    std::string target; // the variable read afterwards; "WREG" for W
    int expected = 0;
};

// The statements of a program and the cases run on them. Statements without
// constants are shared by all cases; a constant operand is written into its
// case's own statement.
struct Batch {
    std::vector<std::string> statements;
    std::vector<Case> cases;
};

std::string operandText(Kind k, bool left, int value) {
    return k == Kind::Num ? std::to_string(value) : variableOf(k, left);
}

// The result kinds, and in place into each variable operand now and then.
std::vector<std::pair<Kind, std::string>> targetsFor(Kind left, Kind right, int index) {
    std::vector<std::pair<Kind, std::string>> targets;
    for (Kind r : kResultKinds)
        targets.push_back({r, resultOf(r)});
    if (left != Kind::Num && index % 4 == 0) targets.push_back({left, variableOf(left, true)});
    if (right != Kind::Num && index % 4 == 2) targets.push_back({right, variableOf(right, false)});
    return targets;
}

size_t slotFor(Batch& batch, const std::string& statement, bool shared) {
    if (shared) {
        for (size_t i = 0; i < batch.statements.size(); ++i)
            if (batch.statements[i] == statement) return i;
    }
    batch.statements.push_back(statement);
    return batch.statements.size() - 1;
}

Batch casesFor(int op, Kind left, Kind right, std::mt19937& rng) {
    Batch batch;
    bool shared = left != Kind::Num && right != Kind::Num;
    for (int i = 0; i < kCasesPerCombination; ++i) {
        int a = randomValue(rng, left, op, false, i), b = randomValue(rng, right, op, true, i);
        std::string expr = operandText(left, true, a) + " " + kOperatorTokens[op] + " " +
                           operandText(right, false, b);
        for (auto& [kind, name] : targetsFor(left, right, i)) {
            size_t slot = slotFor(batch, name + " = " + expr, shared);
            int value = truncateTo(kind, referenceOperation(op, a, b));
            batch.cases.push_back({slot, left, right, kind, a, b, name, value});
        }
    }
    return batch;
}

// The statements labelled C0, C1, ...; after the last one the program goes
// back to C0.
std::string programFor(const Batch& batch) {
    std::ostringstream s;
    s << "DEVICE 16F877\n"
         "DIM LB AS BYTE\nDIM RB AS BYTE\nDIM RESB AS BYTE\n"
         "DIM LW AS WORD\nDIM RW AS WORD\nDIM RESW AS WORD\n"
         "DIM LF AS BIT\nDIM RF AS BIT\nDIM RESF AS BIT\n";
    for (size_t i = 0; i < batch.statements.size(); ++i)
        s << "C" << i << ": " << batch.statements[i] << "\n";
    s << "C" << batch.statements.size() << ":\n@ goto C0\nEND\n";
    return s.str();
}

void setOperand(SimProgram& p, Kind k, bool left, int value) {
    std::string name = variableOf(k, left);
    if (k == Kind::Byte) p.setByte(name, value);
    if (k == Kind::Word) p.setWord(name, value);
    if (k == Kind::Bit) p.setBit(name, value);
}

int readResult(SimProgram& p, const Case& c) {
    if (c.target == "WREG") return p.pic().w();
    if (c.result == Kind::Word) return p.word(c.target);
    if (c.result == Kind::Bit) return p.bit(c.target);
    return p.byte(c.target);
}

std::string label(size_t slot) {
    return "C" + std::to_string(slot);
}

// Runs every case; returns the failures, each with its statement and operands.
std::vector<std::string> runCases(SimProgram& p, const Batch& batch) {
    std::vector<std::string> failures;
    for (const Case& c : batch.cases) {
        const std::string& statement = batch.statements[c.slot];
        if (!p.runTo(label(c.slot))) {
            failures.push_back("did not reach " + statement);
            break;
        }
        setOperand(p, c.left, true, c.a);
        setOperand(p, c.right, false, c.b);
        p.pic().setW(0x5A); // W holds nothing the statement may rely on
        if (!p.runTo(label(c.slot + 1))) {
            failures.push_back("did not finish: " + statement);
            break;
        }
        int got = readResult(p, c);
        if (got != c.expected)
            failures.push_back(statement + "  [a=" + std::to_string(c.a) +
                               " b=" + std::to_string(c.b) + "] expected " +
                               std::to_string(c.expected) + " got " + std::to_string(got));
    }
    return failures;
}

class OperatorExecution : public testing::TestWithParam<int> {};

TEST_P(OperatorExecution, EveryKindCombinationMatchesReference) {
    int op = GetParam();
    std::mt19937 rng(7919u + static_cast<unsigned>(op));
    for (Kind left : kOperandKinds) {
        for (Kind right : kOperandKinds) {
            if (!takesBits(op, left, right)) continue;
            Batch batch = casesFor(op, left, right, rng);
            SimProgram p(programFor(batch));
            ASSERT_TRUE(p.ok()) << p.failure() << "\n" << p.source();
            std::vector<std::string> failures = runCases(p, batch);
            std::string report;
            for (size_t i = 0; i < failures.size() && i < 12; ++i)
                report += failures[i] + "\n";
            EXPECT_TRUE(failures.empty())
                << kOperatorTokens[op] << " " << kindName(left) << " with " << kindName(right)
                << ": " << failures.size() << " failing cases\n"
                << report;
        }
    }
}

std::string operatorName(const testing::TestParamInfo<int>& info) {
    static const char* const names[] = {"Add",      "Subtract",     "Divide",         "Remainder",
                                        "Multiply", "MultiplyHigh", "MultiplyMiddle", "And",
                                        "Or",       "Xor",          "ShiftLeft",      "ShiftRight"};
    return names[info.param];
}

INSTANTIATE_TEST_SUITE_P(Operators, OperatorExecution, testing::Range(0, 12), operatorName);

} // namespace
} // namespace zorvel::test
