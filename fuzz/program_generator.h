// Random BASIC programs built from the language's grammar: every statement the
// compiler supports, over declared variables of every kind, nested a few blocks
// deep. Most programs are valid; about one in five carries one or two lines
// broken on purpose (a missing operand, an undeclared name, a wrong type, a
// constant out of range, a duplicated label, an unclosed block, a stray closing
// keyword, bad name characters, too many arguments). No program holds
// user-written assembly: no ASM block, no @ line, no # directive but #LOCAL,
// no DEFINE.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace zorvel::fuzz {

struct GeneratedProgram {
    uint64_t index = 0;
    std::string source;
    std::vector<std::string> breakages; // what was broken on purpose; empty for a valid program
};

class ProgramGenerator {
public:
    explicit ProgramGenerator(uint64_t seed) : seed_(seed) {}

    // The program with this index: a seed and an index always give the same text.
    GeneratedProgram program(uint64_t index);
    // Programs 0, 1, 2, ... one per call.
    GeneratedProgram next() { return program(index_++); }
    void skipTo(uint64_t index) { index_ = index; }

    // Everything one program is made from; rebuilt for every program.
    struct Array {
        std::string name;
        int size = 1;
    };
    struct Constant {
        std::string name;
        int value = 0;
    };
    enum class Param { Byte, Word, Number, Bit };
    enum class Result { None, Wreg, Byte, Word, Bit };
    struct Macro {
        std::string name;
        std::vector<Param> params;
        Result result = Result::None;
    };
    struct Device {
        std::string name;
        std::vector<std::string> ports;
        std::vector<std::string> fuses;
        int ramBytes = 0; // bytes a program may declare before RAM runs short
        bool oscCal = false;
        int codeWords = 1024;
        int ccpChannels = 0; // HPWM channels: CCP1, and CCP2 when 2
    };

private:
    struct Program {
        Device device;
        std::vector<std::string> bytes, words, bits, byteAliases, bitAliases;
        std::vector<Array> arrays;
        std::vector<Constant> constants;
        std::vector<Macro> macros;
        std::vector<std::string> labels;
        std::vector<bool> placed;
        std::vector<std::string> lines;
        std::vector<std::string> breakages;
        int breakagesLeft = 0;
        int depth = 0;
        int statements = 0;
        bool macroParams = false;
        bool interrupt = false;
        bool watchdogOff = false; // CONFIG turned the watchdog off
        bool inMacro = false;     // labels of the label pool stay out of macro bodies
    };

    // Random choices.
    bool chance(double p);
    int number(int lo, int hi);
    template <class T>
    const T& pick(const std::vector<T>& items) {
        return items[static_cast<size_t>(number(0, static_cast<int>(items.size()) - 1))];
    }
    std::string cased(const std::string& name);
    // What `make` returns, made again while it is longer than `limit` (the
    // compiler reads 249 characters of a line); `fallback` after a few tries.
    template <class Make>
    std::string fitting(size_t limit, const std::string& fallback, Make make) {
        for (int tries = 0; tries < 8; ++tries) {
            std::string s = make();
            if (s.size() <= limit) return s;
        }
        return fallback;
    }

    // Lines.
    void add(const std::string& text);
    void addComment();

    // The parts of a program in order.
    void header();
    void settings();
    void declarations();
    void declareVariables();
    void declareArraysAndConstants();
    void declareAliases();
    void macroDefinitions();
    void interruptHandler();
    void subroutines();
    void mainPart();
    void placeRemainingLabels();

    // Macros.
    Macro newMacro(int number);
    std::vector<std::string> parameterNames(const Macro& m);
    void macroBody(const Macro& m, const std::vector<std::string>& names, int number);
    std::string parameterLine(Param kind, const std::vector<std::string>& names, size_t& at);
    std::string resultLine(const Macro& m, const std::vector<std::string>& names);
    std::string macroArguments(const Macro& m);
    std::string macroArgument(Param kind);
    std::string macroCall();
    std::string macroValue(const std::string& target);

    // Statements.
    void statements(int count);
    void statement();
    void blockStatement();
    std::string simpleStatement(bool alone = false);
    // The pin, pulse, tone and sleep commands and the measuring functions.
    std::string pin();
    std::string pinCommand();
    std::string pulseCommand();
    std::string toneCommand();
    std::string measurement();
    std::string outputItem();
    std::string outputItems();
    std::string inputItem();
    std::string serialCommand();
    std::string lcdCommand();
    std::string simpleStatements();
    void maybeLabel();
    void ifBlock();
    void forBlock();
    void whileBlock();
    void repeatBlock();
    void body();
    std::string singleLineIf();
    std::string singleLineLoop();
    std::string oneLineForm();
    std::string assignment();
    std::string incDec();
    std::string swap();
    std::string jump();
    std::string poke();
    std::string delay();
    std::string str();
    std::string mnemonic(bool alone);
    std::string literalMnemonic();
    std::string registerMnemonic();
    std::string bitMnemonic();
    std::string pseudoMnemonic(bool alone);
    std::string miscellaneous();

    // Operands, expressions and conditions.
    std::string expression(int depth, bool bitFirst = true);
    std::string term(int depth, bool bitAllowed);
    std::string literal(int lo, int hi);
    std::string numberText(int value, bool character = true);
    std::string constantOperand();
    std::string element(int depth);
    std::string indexOperand(const Array& a, int depth);
    std::string byteOperand();
    std::string wordOperand();
    std::string bitOperand();
    std::string registerOperand();
    std::string assignTarget();
    std::string valueTarget();
    std::string counter();
    std::string loopBound(bool byteCounter);
    std::string condition();
    std::string comparison();
    std::string comparisonSide();
    std::string relation();
    std::string label();
    std::string anyNumericVariable();

    // Lines broken on purpose.
    bool breakHere();
    void brokenStatement();
    std::string missingOperand();
    std::string undeclaredName();
    std::string wrongType();
    std::string outOfRange();
    std::string badName();
    std::string tooManyArguments();
    std::string strayCloser();
    void unclosedBlock();
    void duplicatedLabel();

    uint64_t seed_;
    uint64_t index_ = 0;
    std::mt19937_64 rng_;
    Program p_;
};

} // namespace zorvel::fuzz
