#include "fuzz/program_generator.h"

#include <algorithm>
#include <cctype>

namespace zorvel::fuzz {
namespace {

using Device = ProgramGenerator::Device;
using Strings = std::vector<std::string>;

// Devices of data/inc with their ports and a choice of their fuse names.
const std::vector<Device>& devices() {
    static const Strings kClassicFuses = {"XT_OSC",  "HS_OSC", "RC_OSC",   "LP_OSC",
                                          "WDT_OFF", "WDT_ON", "PWRTE_ON", "PWRTE_OFF"};
    static const Strings k628Fuses = {"XT_OSC",    "HS_OSC",    "INTRC_OSC_NOCLKOUT",
                                      "WDT_OFF",   "PWRTE_ON",  "MCLRE_ON",
                                      "MCLRE_OFF", "BODEN_OFF", "LVP_OFF",
                                      "CP_OFF",    "CPD_OFF"};
    static const Strings k877Fuses = {"XT_OSC",  "HS_OSC",   "RC_OSC",    "WDT_OFF",
                                      "WDT_ON",  "PWRTE_ON", "BODEN_OFF", "BOREN_ON",
                                      "LVP_OFF", "CPD_OFF",  "DEBUG_OFF", "CP_OFF"};
    static const Strings k675Fuses = {"INTRC_OSC_NOCLKOUT", "XT_OSC",    "WDT_OFF", "PWRTE_ON",
                                      "MCLRE_OFF",          "BODEN_OFF", "CP_OFF"};
    static const Strings kAB = {"PORTA", "PORTB"};
    static const Strings kABC = {"PORTA", "PORTB", "PORTC"};
    static const Strings kABCDE = {"PORTA", "PORTB", "PORTC", "PORTD", "PORTE"};
    static const std::vector<Device> list = {
        // name, ports, fuses, RAM bytes for variables, OSCCAL, program words, CCP channels
        {"16F84", kAB, kClassicFuses, 30, false, 1024, 0},
        {"16F84A", kAB, kClassicFuses, 30, false, 1024, 0},
        {"16F628", kAB, k628Fuses, 120, false, 2048, 1},
        {"16F628A", kAB, k628Fuses, 120, false, 2048, 1},
        {"16F648A", kAB, k628Fuses, 150, false, 4096, 1},
        {"16F873", kABC, k877Fuses, 120, false, 4096, 2},
        {"16F876", kABC, k877Fuses, 200, false, 8192, 2},
        {"16F876A", kABC, k877Fuses, 200, false, 8192, 2},
        {"16F877", kABCDE, k877Fuses, 200, false, 8192, 2},
        {"16F877A", kABCDE, k877Fuses, 200, false, 8192, 2},
        {"12F675", {"GPIO"}, k675Fuses, 26, true, 1024, 0},
    };
    return list;
}

const Strings kOperators = {"+", "-", "*", "**", "*/", "/", "//", "&", "|", "^", "<<", ">>"};
const Strings kRelations = {"=", "==", "<>", "!=", "<", ">", "<=", "=<", "!>", ">=", "=>", "!<"};
const Strings kCrystals = {"4", "8", "10", "12", "16", "20"};

// The operators that refuse a BIT operand on the side given.
bool refusesBitLeft(const std::string& op) {
    return op == "**" || op == "//" || op == "<<" || op == ">>";
}
bool refusesBitRight(const std::string& op) {
    return refusesBitLeft(op) || op == "/";
}

std::string indexed(const std::string& stem, size_t n) {
    return stem + std::to_string(n);
}

} // namespace

// --- Random choices -------------------------------------------------------------

bool ProgramGenerator::chance(double p) {
    return std::bernoulli_distribution(p)(rng_);
}

int ProgramGenerator::number(int lo, int hi) {
    return std::uniform_int_distribution<int>(lo, hi)(rng_);
}

// Names are case-insensitive: now and then one is written in lower or mixed case.
std::string ProgramGenerator::cased(const std::string& name) {
    if (!chance(0.08)) return name;
    std::string s = name;
    bool mixed = chance(0.5);
    for (size_t i = 0; i < s.size(); ++i)
        if (!mixed || i % 2 == 1)
            s[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(s[i])));
    return s;
}

// --- Lines ----------------------------------------------------------------------

void ProgramGenerator::add(const std::string& text) {
    std::string indent(static_cast<size_t>(p_.depth) * 4, ' ');
    if (chance(0.03)) indent = "\t" + indent;
    std::string comment = chance(0.03) ? "   ' note " + std::to_string(p_.lines.size()) : "";
    p_.lines.push_back(indent + text + comment);
}

void ProgramGenerator::addComment() {
    switch (number(0, 3)) {
    case 0: add("' comment line " + std::to_string(p_.lines.size())); break;
    case 1: add("REM a remark"); break;
    case 2: add("; a semicolon comment"); break;
    default: p_.lines.emplace_back(); break;
    }
}

// --- The program ----------------------------------------------------------------

GeneratedProgram ProgramGenerator::program(uint64_t index) {
    std::seed_seq seq{static_cast<uint32_t>(seed_), static_cast<uint32_t>(seed_ >> 32),
                      static_cast<uint32_t>(index), static_cast<uint32_t>(index >> 32)};
    rng_.seed(seq);
    p_ = Program{};
    p_.breakagesLeft = chance(0.2) ? (chance(0.75) ? 1 : 2) : 0;
    header();
    settings();
    declarations();
    macroDefinitions();
    interruptHandler();
    subroutines();
    mainPart();
    GeneratedProgram out;
    out.index = index;
    for (const std::string& line : p_.lines)
        out.source += line + "\n";
    out.breakages = p_.breakages;
    return out;
}

void ProgramGenerator::header() {
    add("' Generated program");
    p_.device = chance(0.95) ? pick(devices()) : devices()[0];
    for (int i = number(2, 5); i > 0; --i)
        p_.labels.push_back(indexed("LBL", p_.labels.size()));
    p_.placed.assign(p_.labels.size(), false);
}

void ProgramGenerator::settings() {
    if (p_.device.name != "16F84" || chance(0.8)) add(cased("DEVICE ") + p_.device.name);
    if (p_.breakagesLeft > 0 && chance(0.1)) {
        // A crystal the delays are not timed for: refused at the first delay.
        --p_.breakagesLeft;
        std::string mhz = pick(Strings{"1", "3", "7", "13", "19"});
        add("DECLARE XTAL " + mhz);
        add("PAUSE 1");
        p_.breakages.push_back("out of range: DECLARE XTAL " + mhz + " with a delay");
    } else if (chance(0.6)) {
        add("DECLARE XTAL " + pick(kCrystals));
    }
    if (chance(0.1)) add("DECLARE BOOTLOADER " + pick(Strings{"OFF", "ON", "0", "TRUE"}));
    if (chance(0.05)) add("DECLARE SERIAL_BAUD " + pick(Strings{"9600", "19200", "2400"}));
    if (chance(0.05))
        add("DECLARE RSOUT_PIN " + pick(p_.device.ports) + "." + std::to_string(number(0, 5)));
    if (chance(0.05)) add("DECLARE RSOUT_MODE " + pick(Strings{"TRUE", "INVERTED", "0", "1"}));
    if (chance(0.5)) {
        Strings fuses = p_.device.fuses;
        std::shuffle(fuses.begin(), fuses.end(), rng_);
        fuses.resize(static_cast<size_t>(number(1, 4)));
        std::string line = "CONFIG ";
        for (size_t i = 0; i < fuses.size(); ++i)
            line += (i ? ", " : "") + fuses[i];
        add(line);
        p_.watchdogOff = line.find("WDT_OFF") != std::string::npos;
    }
    if (p_.device.oscCal && chance(0.5)) add("SET_OSCCAL");
    if (chance(0.1)) add("REMARKS " + pick(Strings{"ON", "1"}));
    p_.macroParams = chance(0.6);
    if (p_.macroParams) add("MACRO_PARAMS ON");
}

// --- Declarations ---------------------------------------------------------------

void ProgramGenerator::declarations() {
    declareVariables();
    declareArraysAndConstants();
    declareAliases();
    if (breakHere()) brokenStatement();
}

void ProgramGenerator::declareVariables() {
    int budget = p_.device.ramBytes;
    int byteCount = number(2, 5), wordCount = number(1, std::min(4, budget / 6)),
        bitCount = number(1, 4);
    for (int i = 0; i < byteCount; ++i)
        p_.bytes.push_back(chance(0.15) ? pick(Strings{"A", "J", "Y", "Q"}) : indexed("BYT", i));
    std::sort(p_.bytes.begin(), p_.bytes.end());
    p_.bytes.erase(std::unique(p_.bytes.begin(), p_.bytes.end()), p_.bytes.end());
    for (int i = 0; i < wordCount; ++i)
        p_.words.push_back(indexed("WRD", i));
    for (int i = 0; i < bitCount; ++i)
        p_.bits.push_back(indexed("FLG", i));
    if (chance(0.4)) {
        std::string line = "DIM ";
        for (size_t i = 0; i < p_.bytes.size(); ++i)
            line += (i ? ", " : "") + p_.bytes[i];
        add(line);
    } else {
        for (const std::string& b : p_.bytes)
            add("DIM " + cased(b) + (chance(0.5) ? " AS BYTE" : ""));
    }
    for (const std::string& w : p_.words)
        add("DIM " + w + " AS WORD");
    for (const std::string& f : p_.bits)
        add(chance(0.5) ? "DIM " + f + " AS BIT" : "Dim " + f + " as Bit");
}

void ProgramGenerator::declareArraysAndConstants() {
    int room = p_.device.ramBytes - static_cast<int>(p_.bytes.size() + 2 * p_.words.size() + 1);
    for (int i = number(0, 2); i > 0 && room > 4; --i) {
        Array a{indexed("BUF", p_.arrays.size()), number(1, std::min(12, room / 2))};
        room -= a.size;
        p_.arrays.push_back(a);
        add("DIM " + a.name + "[" + std::to_string(a.size) + "]" + (chance(0.3) ? " AS BYTE" : ""));
    }
    for (int i = number(1, 3); i > 0; --i) {
        Constant k{indexed("KON", p_.constants.size()),
                   chance(0.6) ? number(0, 9)
                               : pick(std::vector<int>{100, 255, 256, 300, 1000, 65535})};
        p_.constants.push_back(k);
        std::string value = numberText(k.value);
        switch (number(0, 2)) {
        case 0: add("DIM " + k.name + " AS " + value); break;
        case 1: add("SYMBOL " + k.name + " = " + value); break;
        default: add("DIM " + k.name + " AS (" + value + " * 2 / 2)"); break;
        }
    }
}

void ProgramGenerator::declareAliases() {
    if (chance(0.5)) {
        std::string name = "ALB0";
        std::string of =
            chance(0.5)
                ? pick(p_.bytes)
                : pick(p_.words) + pick(Strings{".LOWBYTE", ".HIGHBYTE", ".BYTE0", ".BYTE1"});
        add(chance(0.5) ? "DIM " + name + " AS " + of : "SYMBOL " + name + " = " + of);
        p_.byteAliases.push_back(name);
    }
    if (chance(0.5)) {
        std::string name = "ALF0";
        std::string of;
        switch (number(0, 2)) {
        case 0: of = pick(p_.device.ports) + "." + std::to_string(number(0, 5)); break;
        case 1: of = pick(p_.bytes) + "." + std::to_string(number(0, 7)); break;
        default: of = pick(p_.words) + "." + std::to_string(number(0, 15)); break;
        }
        add(chance(0.5) ? "DIM " + name + " AS " + of : "SYMBOL " + name + " = " + of);
        p_.bitAliases.push_back(name);
    }
}

// --- Macros ---------------------------------------------------------------------

ProgramGenerator::Macro ProgramGenerator::newMacro(int n) {
    Macro m;
    m.name = indexed("MAC", static_cast<size_t>(n));
    for (int i = number(0, 3); i > 0; --i)
        m.params.push_back(static_cast<Param>(number(0, 3)));
    if (chance(0.6)) m.result = static_cast<Result>(number(1, 4));
    return m;
}

// One name per argument position: a BIT takes two, its register and its bit.
std::vector<std::string> ProgramGenerator::parameterNames(const Macro& m) {
    Strings names;
    for (size_t i = 0; i < m.params.size(); ++i) {
        std::string name = "ARG" + std::to_string(i + 1);
        names.push_back(name);
        if (m.params[i] == Param::Bit) names.push_back(name + "B");
    }
    return names;
}

void ProgramGenerator::macroDefinitions() {
    if (!chance(0.45)) return;
    for (int i = number(1, 2) - 1; i >= 0; --i) {
        Macro m = newMacro(static_cast<int>(p_.macros.size()));
        Strings names = parameterNames(m);
        std::string head = m.name + " MACRO";
        for (size_t k = 0; k < names.size(); ++k)
            head += (k ? ", " : " ") + names[k];
        add(head);
        ++p_.depth;
        p_.inMacro = true;
        macroBody(m, names, static_cast<int>(p_.macros.size()));
        p_.inMacro = false;
        --p_.depth;
        add("ENDM");
        p_.macros.push_back(m);
    }
}

void ProgramGenerator::macroBody(const Macro& m, const Strings& names, int n) {
    bool loop = chance(0.2);
    std::string local = "LQ" + std::to_string(n);
    if (loop) add("#LOCAL " + local);
    for (int i = number(1, 4); i > 0; --i) {
        int kind = number(0, 99);
        if (kind < 55 && !m.params.empty()) {
            size_t at = 0;
            size_t which = static_cast<size_t>(number(0, static_cast<int>(m.params.size()) - 1));
            for (size_t k = 0; k < which; ++k)
                at += m.params[k] == Param::Bit ? 2 : 1;
            add(parameterLine(m.params[which], names, at));
        } else if (kind < 75) {
            add(pick(Strings{"NOP", "CLRC", "SETC", "CLRW", "MOVLW " + literal(0, 255)}));
        } else if (kind < 92) {
            add(chance(0.7) ? assignment() : incDec());
        } else {
            ifBlock();
        }
    }
    if (loop) {
        add(local + ":");
        add("DECFSZ " +
            (m.params.empty() || m.params[0] != Param::Byte ? pick(p_.bytes) : names[0]) + ", F");
        add(pick(Strings{"JUMP ", "GOTO "}) + local);
    }
    if (chance(0.08)) add("EXITM");
    if (m.result != Result::None) add(resultLine(m, names));
}

// A statement on the parameter at `at` that suits its kind.
std::string ProgramGenerator::parameterLine(Param kind, const Strings& names, size_t& at) {
    const std::string& p = names[at];
    std::string g = pick(p_.bytes), w = pick(p_.words), bit = std::to_string(number(0, 7));
    switch (kind) {
    case Param::Byte:
        return pick(Strings{"MOVF " + p + ", W", "MOVWF " + p, "INCF " + p + ", F",
                            "DECF " + p + ", F", "COMF " + p + ", F", "CLRF " + p,
                            "RLF " + p + ", F", "SWAPF " + p + ", W", "BYTE_BYTE " + p + ", " + g,
                            "BYTE_WORD " + p + ", " + w, "BYTE_WREG " + p, "WREG_BYTE " + p,
                            "BCF " + p + ", " + bit, "BTFSC " + p + ", " + bit,
                            "BYTE_BIT " + p + ", " + g + ", " + bit});
    case Param::Word:
        return pick(Strings{"WORD_WORD " + p + ", " + w, "WORD_BYTE " + p + ", " + g,
                            "WORD_WREG " + p, "WREG_WORD " + p, "INCF " + p + ", F",
                            "MOVF " + p + ", W", "WORD_BIT " + p + ", " + g + ", " + bit,
                            "WORD_WORD " + p + ", PP2"});
    case Param::Number:
        return pick(Strings{"NUM_WREG " + p, "NUM_BYTE " + p + ", " + g, "NUM_WORD " + p + ", " + w,
                            "NUM_BIT " + p + ", " + g + ", " + bit});
    case Param::Bit: {
        const std::string& b = names[at + 1];
        std::string rb = p + ", " + b;
        return pick(Strings{"BSF " + rb, "BCF " + rb, "BTFSC " + rb, "BTFSS " + rb,
                            "BIT_WREG " + rb, "BIT_BYTE " + rb + ", " + g,
                            "BIT_WORD " + rb + ", " + w, "BIT_BIT " + rb + ", " + g + ", " + bit,
                            "WREG_BIT " + rb, "NUM_BIT 1, " + rb, "BYTE_BIT " + g + ", " + rb});
    }
    }
    return "NOP";
}

std::string ProgramGenerator::resultLine(const Macro& m, const Strings& names) {
    auto paramOf = [&](Param kind) -> std::string {
        size_t at = 0;
        for (Param k : m.params) {
            if (k == kind) return names[at];
            at += k == Param::Bit ? 2 : 1;
        }
        return "";
    };
    switch (m.result) {
    case Result::Wreg: return "RETURN_WREG";
    case Result::Byte: {
        std::string p = paramOf(Param::Byte);
        return "RETURN_BYTE " + (p.empty() || chance(0.3) ? pick(p_.bytes) : p);
    }
    case Result::Word: {
        std::string p = paramOf(Param::Word);
        return "RETURN_WORD " +
               (p.empty() || chance(0.3) ? pick(Strings{pick(p_.words), "PP2"}) : p);
    }
    case Result::Bit: {
        std::string p = paramOf(Param::Bit);
        if (!p.empty()) return "RETURN_BIT " + p + ", " + p + "B";
        return "RETURN_BIT " + pick(p_.bytes) + ", " + std::to_string(number(0, 7));
    }
    case Result::None: break;
    }
    return "NOP";
}

std::string ProgramGenerator::macroArgument(Param kind) {
    switch (kind) {
    case Param::Byte:
        if (chance(0.15) && !p_.arrays.empty()) return pick(p_.arrays).name;
        return chance(0.15) ? pick(p_.device.ports) : pick(p_.bytes);
    case Param::Word: return pick(p_.words);
    case Param::Number:
        if (chance(0.1)) return "\"" + std::string(1, static_cast<char>(number('A', 'Z'))) + "\"";
        return literal(0, 255);
    case Param::Bit: return bitOperand();
    }
    return "0";
}

std::string ProgramGenerator::macroArguments(const Macro& m) {
    std::string args;
    for (size_t i = 0; i < m.params.size(); ++i)
        args += (i ? ", " : "") + macroArgument(m.params[i]);
    if (!args.empty() && chance(0.1)) return " (" + args + ")";
    return args.empty() ? "" : " " + args;
}

std::string ProgramGenerator::macroCall() {
    const Macro& m = pick(p_.macros);
    return cased(m.name) + macroArguments(m);
}

// `target = MACRO args`, or an ordinary assignment when no macro returns a value.
std::string ProgramGenerator::macroValue(const std::string& target) {
    std::vector<const Macro*> valued;
    for (const Macro& m : p_.macros)
        if (m.result != Result::None) valued.push_back(&m);
    if (valued.empty()) return target + " = " + expression(0);
    const Macro& m = *pick(valued);
    return target + " = " + m.name + macroArguments(m);
}

// --- Program parts --------------------------------------------------------------

void ProgramGenerator::interruptHandler() {
    if (!chance(0.06)) return;
    p_.interrupt = true;
    add("ON_INTERRUPT " + pick(Strings{"GOTO ", ""}) + "ISR0");
    add("GOTO AFTER_ISR");
    add("ISR0:");
    ++p_.depth;
    add("CONTEXT SAVE");
    statements(number(1, 3));
    add(pick(p_.device.ports == Strings{"GPIO"} ? Strings{"INTCON.1 = 0"}
                                                : Strings{"INTCON.1 = 0", "INTCON.2 = 0"}));
    add("CONTEXT RESTORE");
    --p_.depth;
    add("AFTER_ISR:");
}

void ProgramGenerator::subroutines() {
    if (!chance(0.35)) return;
    add("GOTO LBLM");
    for (int i = number(1, 2); i > 0; --i) {
        size_t which = static_cast<size_t>(number(0, static_cast<int>(p_.labels.size()) - 1));
        if (p_.placed[which]) continue;
        p_.placed[which] = true;
        add(p_.labels[which] + ":");
        ++p_.depth;
        statements(number(1, 4));
        add("RETURN");
        --p_.depth;
    }
    add("LBLM:");
}

void ProgramGenerator::mainPart() {
    statements(number(3, 30));
    while (p_.breakagesLeft > 0)
        brokenStatement();
    placeRemainingLabels();
    if (chance(0.1)) add("STOP");
    // Only END follows a high ORG; on devices of 2K words and more the code
    // before it always ends below it.
    if (p_.device.codeWords >= 2048 && chance(0.03))
        add("ORG " + std::to_string(p_.device.codeWords - 8));
    if (chance(0.97)) add(cased("END"));
}

void ProgramGenerator::placeRemainingLabels() {
    for (size_t i = 0; i < p_.labels.size(); ++i) {
        if (p_.placed[i]) continue;
        p_.placed[i] = true;
        add(p_.labels[i] + ":" + (chance(0.4) ? " " + simpleStatement() : ""));
    }
}

// --- Statements -----------------------------------------------------------------

void ProgramGenerator::statements(int count) {
    for (int i = 0; i < count; ++i)
        statement();
}

void ProgramGenerator::statement() {
    ++p_.statements;
    if (breakHere()) {
        brokenStatement();
        return;
    }
    maybeLabel();
    int kind = number(0, 99);
    if (kind < 22 && p_.depth < 3) {
        blockStatement();
        return;
    }
    if (kind < 26) {
        addComment();
        return;
    }
    if (kind < 28) {
        add(simpleStatement() + " : REM trailing remark");
        return;
    }
    add(fitting(200, "NOP", [&] { return simpleStatement(true); }));
}

void ProgramGenerator::maybeLabel() {
    if (p_.inMacro || !chance(0.12)) return;
    size_t which = static_cast<size_t>(number(0, static_cast<int>(p_.labels.size()) - 1));
    if (p_.placed[which]) return;
    p_.placed[which] = true;
    // A label stands at the start of its line whatever the block depth.
    p_.lines.push_back(p_.labels[which] + ":");
}

void ProgramGenerator::blockStatement() {
    switch (number(0, 5)) {
    case 0:
    case 1: ifBlock(); break;
    case 2: forBlock(); break;
    case 3: whileBlock(); break;
    case 4: repeatBlock(); break;
    default: add(oneLineForm()); break;
    }
}

void ProgramGenerator::body() {
    ++p_.depth;
    statements(number(0, 4));
    --p_.depth;
}

void ProgramGenerator::ifBlock() {
    add("IF " + condition() + (chance(0.85) ? " THEN" : ""));
    body();
    if (chance(0.4)) {
        add(chance(0.3) ? "ELSE " + simpleStatement() : "ELSE");
        body();
    }
    add(pick(Strings{"ENDIF", "ENDIF", "EndIf", "ENDIF : " + simpleStatement()}));
}

void ProgramGenerator::forBlock() {
    bool byteCounter = chance(0.6);
    std::string v = byteCounter ? pick(p_.bytes) : pick(p_.words);
    std::string line =
        "FOR " + v + " = " + loopBound(byteCounter) + " TO " + loopBound(byteCounter);
    if (chance(0.5)) {
        std::string step = chance(0.7) ? literal(1, byteCounter ? 255 : 1000)
                                       : (byteCounter ? pick(p_.bytes) : pick(p_.words));
        line += " STEP " + std::string(chance(0.4) ? "-" : "") + step;
    }
    add(line);
    body();
    add(chance(0.5) ? "NEXT" : "NEXT " + v);
}

void ProgramGenerator::whileBlock() {
    add("WHILE " + condition());
    body();
    add("WEND");
}

void ProgramGenerator::repeatBlock() {
    add("REPEAT");
    body();
    add("UNTIL " + condition());
}

std::string ProgramGenerator::simpleStatements() {
    std::string s = simpleStatement();
    for (int i = number(0, 2); i > 0; --i)
        s += " : " + simpleStatement();
    return s;
}

std::string ProgramGenerator::oneLineForm() {
    return fitting(200, "NOP", [&] { return chance(0.5) ? singleLineIf() : singleLineLoop(); });
}

std::string ProgramGenerator::singleLineIf() {
    std::string head = "IF " + condition() + " THEN ";
    if (chance(0.2)) return head + label();
    std::string s = head + simpleStatements();
    if (chance(0.4)) s += " ELSE " + simpleStatements();
    if (chance(0.2)) s += " : ENDIF";
    return s;
}

std::string ProgramGenerator::singleLineLoop() {
    switch (number(0, 2)) {
    case 0: {
        std::string v = pick(p_.bytes);
        return "FOR " + v + " = " + loopBound(true) + " TO " + loopBound(true) + " : " +
               simpleStatement() + " : NEXT";
    }
    case 1: return "WHILE " + condition() + " : " + simpleStatement() + " : WEND";
    default: return "REPEAT : " + simpleStatement() + " : UNTIL " + condition();
    }
}

std::string ProgramGenerator::simpleStatement(bool alone) {
    int kind = number(0, 99);
    if (kind < 30) return assignment();
    if (kind < 37) return incDec();
    if (kind < 40) return swap();
    if (kind < 48) return jump();
    if (kind < 52) return poke();
    if (kind < 58) return delay();
    if (kind < 63 && !p_.arrays.empty()) return str();
    if (kind < 80) return mnemonic(alone);
    if (kind < 90 && !p_.macros.empty())
        return chance(0.6) ? macroCall() : macroValue(valueTarget());
    if (kind < 93) return pinCommand();
    if (kind < 95) return pulseCommand();
    if (kind < 96) return toneCommand();
    if (kind < 98) return measurement();
    if (kind < 99) return chance(0.5) ? serialCommand() : lcdCommand();
    return miscellaneous();
}

std::string ProgramGenerator::pin() {
    const std::string& port = pick(p_.device.ports);
    return cased(port) + "." + std::to_string(number(0, port == "PORTE" ? 2 : 5));
}

std::string ProgramGenerator::pinCommand() {
    switch (number(0, 7)) {
    case 0: return pick(Strings{"HIGH ", "SET "}) + pin();
    case 1: return pick(Strings{"LOW ", "CLEAR "}) + pin();
    case 2: return pick(Strings{"HIGH ", "LOW ", "SET ", "CLEAR "}) + pick(p_.device.ports);
    case 3:
        return pick(Strings{"SET ", "CLEAR "}) +
               cased(pick(chance(0.5) ? p_.bytes : (chance(0.5) ? p_.words : p_.bits)));
    case 4:
        return "TOGGLE " + (chance(0.6) ? pin() : chance(0.5) ? literal(0, 15) : pick(p_.bytes));
    case 5: return pick(Strings{"INPUT ", "OUTPUT "}) + pin();
    case 6:
        if (p_.watchdogOff || chance(0.5)) return "SLEEP";
        return "SNOOZE " + pick(Strings{"18MS", "36MS", "72MS", "1S", "2S"});
    default: return p_.watchdogOff ? "SLEEP" : "SLEEP " + literal(0, 3);
    }
}

std::string ProgramGenerator::pulseCommand() {
    switch (number(0, 3)) {
    case 0: {
        std::string level = pick(Strings{"", ", HIGH", ", LOW"});
        return "PULSOUT " + pin() + ", " + wordOperand() + level;
    }
    case 1: return "PWM " + pin() + ", " + byteOperand() + ", " + literal(0, 3);
    case 2: return "SERVO " + pin() + ", " + (chance(0.5) ? literal(0, 2000) : wordOperand());
    default:
        if (p_.device.ccpChannels == 0) return "PULSOUT " + pin() + ", " + literal(0, 100);
        return "HPWM " + std::to_string(number(1, p_.device.ccpChannels)) + ", " + byteOperand() +
               ", " + literal(1000, 20000);
    }
}

std::string ProgramGenerator::toneCommand() {
    switch (number(0, 2)) {
    case 0: {
        std::string pairs;
        for (int i = number(1, 3); i > 0; --i)
            pairs += (pairs.empty() ? "" : ", ") + literal(0, 255) + ", " + literal(0, 3);
        return "SOUND " + pin() + ", [" + pairs + "]";
    }
    case 1: {
        std::string second = chance(0.5) ? ", " + literal(100, 3000) : "";
        return "FREQOUT " + pin() + ", " + literal(0, 5) + ", " + literal(100, 3000) + second;
    }
    default: {
        std::string times =
            pick(Strings{"", literal(0, 5) + ", ", literal(0, 5) + ", " + literal(0, 5) + ", "});
        std::string digits;
        for (int i = number(1, 4); i > 0; --i)
            digits += (digits.empty() ? "" : ", ") + literal(0, 15);
        return "DTMFOUT " + pin() + ", " + times + "[" + digits + "]";
    }
    }
}

std::string ProgramGenerator::measurement() {
    std::string target = assignTarget();
    switch (number(0, 7)) {
    case 0: return target + " = PULSIN " + pin() + ", " + pick(Strings{"HIGH", "LOW", "0", "1"});
    case 1: return target + " = RCIN " + pin() + ", " + pick(Strings{"HIGH", "LOW", "1"});
    case 2: return target + " = POT " + pin() + ", " + byteOperand();
    case 3: return target + " = COUNTER " + pin() + ", " + literal(0, 3);
    case 4: return target + " = RANDOM";
    case 5: return target + " = " + pick(Strings{"SIN ", "COS "}) + byteOperand();
    case 6: return target + " = DIG " + wordOperand() + ", " + literal(0, 5);
    default: return target + " = PEEK " + (chance(0.5) ? literal(0, 511) : pick(p_.bytes));
    }
}

// One output item of RSOUT, SEROUT or PRINT.
std::string ProgramGenerator::outputItem() {
    std::string count;
    switch (number(0, 9)) {
    case 0: return "\"" + pick(Strings{"Hi", "it's", "a\\b", "T=", ""}) + "\"";
    case 1:
        count = chance(0.5) ? std::to_string(number(1, 4)) : "";
        return "HEX" + count + " " + byteOperand();
    case 2:
        count = chance(0.5) ? std::to_string(number(1, 16)) : "";
        return "BIN" + count + " " + wordOperand();
    case 3:
        count = chance(0.5) ? std::to_string(number(1, 5)) : "";
        return "DEC" + count + " " + wordOperand();
    case 4: return "@" + byteOperand();
    case 5: return "REP " + pick(Strings{"\"-\"", literal(32, 126)}) + "\\" + literal(0, 20);
    case 6:
        if (p_.arrays.empty()) return "CLS";
        return "STR " + pick(p_.arrays).name + (chance(0.5) ? "\\1" : "");
    case 7:
        return chance(0.5) ? "AT " + literal(1, 4) + ", " + literal(1, 20)
                           : "AT " + byteOperand() + ", 1";
    case 8: return "CLS";
    default: return byteOperand();
    }
}

std::string ProgramGenerator::outputItems() {
    std::string items = outputItem();
    for (int i = number(0, 2); i > 0; --i)
        items += ", " + outputItem();
    return items;
}

// One input item of RSIN or SERIN.
std::string ProgramGenerator::inputItem() {
    switch (number(0, 4)) {
    case 0: return pick(p_.bytes);
    case 1: return pick(p_.words);
    case 2: return pick(p_.bits);
    case 3: return "WAIT(\"" + pick(Strings{"OK", "x", "it's"}) + "\")";
    default:
        if (p_.arrays.empty()) return pick(p_.bytes);
        return "STR " + pick(p_.arrays).name + (chance(0.5) ? "\\1" : "");
    }
}

std::string ProgramGenerator::serialCommand() {
    std::string mode = pick(Strings{"84", "188", "16468", "8276", "396", "813"});
    std::string flow = chance(0.3) ? "\\" + pin() : "";
    switch (number(0, 4)) {
    case 0: return "RSOUT " + outputItems();
    case 1: return "RSIN " + (chance(0.3) ? "{" + label() + "}, " : "") + inputItem();
    case 2: {
        std::string options;
        if (chance(0.3)) options += literal(0, 5) + ", ";
        if (!flow.empty() && chance(0.4)) options += literal(1, 500) + ", " + label() + ", ";
        return "SEROUT " + pin() + flow + ", " + mode + ", " + options + "[" + outputItems() + "]";
    }
    case 3: {
        std::string options = chance(0.3) ? label() + ", " : "";
        if (chance(0.3)) options += literal(1, 500) + ", " + label() + ", ";
        return "SERIN " + pin() + flow + ", " + mode + ", " + options + "[" + inputItem() + "]";
    }
    default: return pick(p_.bytes) + " = RSIN" + (chance(0.3) ? ", {" + label() + "}" : "");
    }
}

std::string ProgramGenerator::lcdCommand() {
    if (p_.device.ports.size() < 2) return "RSOUT " + outputItems();
    switch (number(0, 3)) {
    case 0: return "PRINT " + outputItems();
    case 1: return "CLS";
    case 2:
        return "CURSOR " + (chance(0.5) ? literal(1, 4) : byteOperand()) + ", " + literal(1, 16);
    default: return assignTarget() + " = INKEY";
    }
}

std::string ProgramGenerator::assignment() {
    std::string target = assignTarget();
    std::string value = chance(0.25) ? term(0, true) : expression(0);
    std::string let = chance(0.1) ? "LET " : "";
    return let + target + " = " + value;
}

std::string ProgramGenerator::incDec() {
    std::string op = pick(Strings{"INC ", "DEC ", "INCREMENT ", "DECREMENT "});
    int kind = number(0, 9);
    if (kind < 4) return op + pick(p_.bytes);
    if (kind < 7) return op + pick(p_.words);
    if (kind < 8) return op + pick(p_.bits);
    if (kind < 9) return op + "WREG";
    return op + (p_.byteAliases.empty() ? pick(p_.device.ports) : pick(p_.byteAliases));
}

std::string ProgramGenerator::swap() {
    Strings pool = p_.bytes;
    pool.insert(pool.end(), p_.words.begin(), p_.words.end());
    std::string a = pick(pool);
    int kind = number(0, 9);
    if (kind < 2) return "SWAP " + pick(p_.bits) + ", " + pick(p_.bits);
    if (kind < 4) return "SWAP WREG, " + pick(pool);
    return "SWAP " + a + ", " + pick(pool);
}

std::string ProgramGenerator::jump() {
    switch (number(0, 5)) {
    case 0:
    case 1: return "GOTO " + label();
    case 2:
    case 3: return "GOSUB " + label();
    case 4: return "RETURN";
    default: return "CALL " + label();
    }
}

std::string ProgramGenerator::poke() {
    std::string address = chance(0.7) ? literal(0, 511) : anyNumericVariable();
    std::string value = chance(0.6) ? literal(0, 255) : anyNumericVariable();
    return "POKE " + address + ", " + value;
}

std::string ProgramGenerator::delay() {
    std::string op = pick(Strings{"PAUSE ", "DELAYMS ", "PAUSEUS ", "DELAYUS "});
    int kind = number(0, 9);
    if (kind < 4) return op + literal(0, chance(0.8) ? 100 : 65535);
    if (kind < 6) return op + anyNumericVariable();
    if (kind < 7) return op + pick(p_.bits);
    if (kind < 8 && !p_.arrays.empty()) return op + element(1);
    return op + expression(0);
}

std::string ProgramGenerator::str() {
    const Array& a = pick(p_.arrays);
    switch (number(0, 2)) {
    case 0: {
        std::string text;
        for (int i = number(1, a.size); i > 0; --i)
            text += static_cast<char>(chance(0.1) ? ' ' : number('A', 'Z'));
        return "STR " + a.name + " = \"" + text + "\"";
    }
    case 1: {
        std::string list;
        for (int i = number(1, a.size); i > 0; --i) {
            int kind = number(0, 2);
            // A list starting with "c" would read as the text form.
            std::string v = kind == 0   ? numberText(number(0, 255), false)
                            : kind == 1 ? pick(p_.bytes)
                                        : pick(p_.bits);
            list += (list.empty() ? "" : ", ") + v;
        }
        return "STR " + a.name + " = " + list;
    }
    default: {
        const Array& b = pick(p_.arrays);
        int most = std::min(a.size, b.size);
        if (a.size <= b.size && chance(0.4)) return "STR " + a.name + " = STR " + b.name;
        return "STR " + a.name + " = STR " + b.name + " \\ " + std::to_string(number(1, most));
    }
    }
}

std::string ProgramGenerator::mnemonic(bool alone) {
    switch (number(0, 4)) {
    case 0: return literalMnemonic();
    case 1:
    case 2: return registerMnemonic();
    case 3: return bitMnemonic();
    default: return pseudoMnemonic(alone);
    }
}

std::string ProgramGenerator::literalMnemonic() {
    std::string op = pick(Strings{"MOVLW ", "ADDLW ", "ANDLW ", "IORLW ", "SUBLW ", "XORLW "});
    switch (number(0, 5)) {
    case 0: return op + constantOperand();
    case 1: return op + pick(Strings{"HIGH ", "LOW "}) + literal(0, 65535);
    case 2: return op + literal(0, 100) + " + " + literal(0, 100);
    case 3: return op + "-" + literal(1, 100);
    default: return op + literal(0, 255);
    }
}

std::string ProgramGenerator::registerMnemonic() {
    static const Strings withDestination = {"ADDWF", "ANDWF",  "COMF",  "DECF", "DECFSZ",
                                            "INCF",  "INCFSZ", "IORWF", "MOVF", "RLF",
                                            "RRF",   "SUBWF",  "SWAPF", "XORWF"};
    std::string reg = registerOperand();
    int kind = number(0, 9);
    if (kind < 2) return pick(Strings{"CLRF ", "MOVWF "}) + reg;
    if (kind < 3) return "MOVFW " + reg;
    std::string line = pick(withDestination) + " " + reg;
    int dest = number(0, 4);
    if (dest == 0) return line;
    return line + ", " + pick(Strings{"W", "F", "0", "1", "w", "f"});
}

std::string ProgramGenerator::bitMnemonic() {
    std::string op = pick(Strings{"BCF ", "BSF ", "BTFSC ", "BTFSS "});
    int kind = number(0, 3);
    if (kind == 0) return op + pick(p_.bits);
    if (kind == 1 && !p_.bitAliases.empty()) return op + pick(p_.bitAliases);
    if (kind == 2) return op + "STATUS, " + pick(Strings{"C", "Z", "DC", "RP0", "0", "2"});
    return op + registerOperand() + ", " + std::to_string(number(0, 7));
}

// LGOTO, LJUMP, TGOTO, BRSET and BRCLR take the rest of the line: they stand alone on it.
std::string ProgramGenerator::pseudoMnemonic(bool alone) {
    switch (alone ? number(2, 9) : number(5, 9)) {
    case 2: return pick(Strings{"LGOTO ", "LJUMP "}) + label();
    case 3:
        return "TGOTO " + std::to_string(number(0, 1)) + ", " + registerOperand() + ", " +
               std::to_string(number(0, 7)) + ", " + label();
    case 4:
        return pick(Strings{"BRSET ", "BRCLR "}) + registerOperand() + ", " +
               std::to_string(number(0, 7)) + ", " + label();
    case 5: return pick(Strings{"NOP", "CLRW", "CLRWDT", "OPTION", "RET", "RETFIE"});
    case 6: return pick(Strings{"BC ", "BNC ", "BZ ", "BNZ ", "BDC ", "BNDC ", "JUMP "}) + label();
    case 7: return pick(Strings{"SETC", "CLRC", "SETZ", "CLRZ", "SETDC", "CLRDC"});
    case 8: return pick(Strings{"SKPC", "SKPNC", "SKPZ", "SKPNZ", "SKPDC", "SKPNDC", "SKIP"});
    default: return pick(Strings{"RETLW " + literal(0, 255), "TRIS " + pick(p_.device.ports)});
    }
}

std::string ProgramGenerator::miscellaneous() {
    switch (number(0, 3)) {
    case 0: return "STOP";
    case 1: return "REMARKS " + pick(Strings{"ON", "OFF", "1", "0"});
    case 2: return "MACRO_PARAMS " + pick(Strings{"ON", "OFF"});
    default: return "LET " + assignTarget() + " = " + expression(0);
    }
}

// --- Operands and expressions ---------------------------------------------------

std::string ProgramGenerator::numberText(int value, bool character) {
    int style = number(0, 9);
    if (style < 6) return std::to_string(value);
    if (style < 8) {
        static const char* digits = "0123456789ABCDEF";
        std::string hex;
        for (int v = value; v > 0 || hex.empty(); v /= 16)
            hex.insert(hex.begin(), digits[v % 16]);
        return "$" + hex;
    }
    if (style < 9 || !character || value < 32 || value > 126 || value == '"') {
        std::string bin;
        for (int v = value; v > 0 || bin.empty(); v /= 2)
            bin.insert(bin.begin(), static_cast<char>('0' + v % 2));
        return "%" + bin;
    }
    return "\"" + std::string(1, static_cast<char>(value)) + "\"";
}

std::string ProgramGenerator::literal(int lo, int hi) {
    return numberText(number(lo, hi));
}

std::string ProgramGenerator::constantOperand() {
    int kind = number(0, 9);
    if (kind < 6) return literal(0, chance(0.7) ? 255 : 65535);
    if (kind < 9) return pick(p_.constants).name;
    return "XTAL";
}

std::string ProgramGenerator::byteOperand() {
    int kind = number(0, 9);
    if (kind < 6) return cased(pick(p_.bytes));
    if (kind < 7 && !p_.byteAliases.empty()) return pick(p_.byteAliases);
    if (kind < 8)
        return pick(p_.words) + pick(Strings{".HIGHBYTE", ".LOWBYTE", ".BYTE0", ".BYTE1"});
    return pick(p_.device.ports);
}

std::string ProgramGenerator::wordOperand() {
    return cased(pick(p_.words));
}

std::string ProgramGenerator::bitOperand() {
    int kind = number(0, 9);
    if (kind < 5) return cased(pick(p_.bits));
    if (kind < 6 && !p_.bitAliases.empty()) return pick(p_.bitAliases);
    if (kind < 7) return pick(p_.bytes) + "." + std::to_string(number(0, 7));
    if (kind < 8) return pick(p_.words) + "." + std::to_string(number(0, 15));
    return pick(p_.device.ports) + "." + std::to_string(number(0, 7));
}

std::string ProgramGenerator::registerOperand() {
    int kind = number(0, 9);
    if (kind < 5) return pick(p_.bytes);
    if (kind < 7) return pick(p_.words) + (chance(0.5) ? ".HIGHBYTE" : "");
    if (kind < 8 && !p_.byteAliases.empty()) return pick(p_.byteAliases);
    if (kind < 9) return pick(p_.device.ports);
    return literal(12, 40);
}

std::string ProgramGenerator::anyNumericVariable() {
    return chance(0.6) ? pick(p_.bytes) : pick(p_.words);
}

std::string ProgramGenerator::indexOperand(const Array& a, int depth) {
    int kind = number(0, 9);
    if (kind < 4) return literal(0, a.size - 1);
    if (kind < 5) {
        for (const Constant& k : p_.constants)
            if (k.value < a.size) return k.name;
        return "0";
    }
    if (kind < 7) return pick(p_.bytes);
    if (kind < 8) return pick(p_.words);
    if (kind < 9) return pick(p_.bits);
    if (depth > 1) return pick(p_.bytes);
    return pick(p_.bytes) + " " + pick(Strings{"+", "-", "&", "*", "|"}) + " " +
           (chance(0.5) ? literal(0, 3) : pick(p_.bytes));
}

std::string ProgramGenerator::element(int depth) {
    const Array& a = pick(p_.arrays);
    return cased(a.name) + "[" + indexOperand(a, depth) + "]";
}

// One operand of an expression; a BIT only when `bitAllowed`.
std::string ProgramGenerator::term(int depth, bool bitAllowed) {
    if (bitAllowed && chance(0.1)) return bitOperand();
    int kind = number(0, 99);
    if (kind < 10 && depth < 3) return "(" + expression(depth + 1, false) + ")";
    if (kind < 35) return byteOperand();
    if (kind < 52) return wordOperand();
    if (kind < 80) return constantOperand();
    if (kind < 92 && !p_.arrays.empty()) return element(depth);
    if (kind < 96) return "WREG";
    return byteOperand();
}

// `bitFirst`: the first operand may be a BIT. A bracketed expression is an
// operand of the one around it, so it never starts with a BIT that might stand alone.
std::string ProgramGenerator::expression(int depth, bool bitFirst) {
    // Bits are decided here so that the operators that refuse them never meet one.
    bool lastBit = bitFirst && chance(0.1);
    std::string e = lastBit ? bitOperand() : term(depth, false);
    for (int n = number(depth == 0 ? 1 : 0, 3); n > 0; --n) {
        std::string op = pick(kOperators);
        if (lastBit && refusesBitLeft(op)) op = "+";
        bool bit = !refusesBitRight(op) && chance(0.1);
        std::string right = bit ? bitOperand() : term(depth, false);
        e += " " + op + " " + right;
        lastBit = bit;
    }
    return e;
}

std::string ProgramGenerator::assignTarget() {
    int kind = number(0, 99);
    if (kind < 30) return cased(pick(p_.bytes));
    if (kind < 55) return cased(pick(p_.words));
    if (kind < 68) return bitOperand();
    if (kind < 73) return "WREG";
    if (kind < 85 && !p_.arrays.empty()) return element(1);
    if (kind < 92) return pick(p_.device.ports);
    if (!p_.byteAliases.empty()) return pick(p_.byteAliases);
    return pick(p_.bytes);
}

// A destination for a macro's result: anything but WREG.
std::string ProgramGenerator::valueTarget() {
    std::string target = assignTarget();
    return target == "WREG" ? pick(p_.bytes) : target;
}

std::string ProgramGenerator::loopBound(bool byteCounter) {
    int kind = number(0, 9);
    if (kind < 6) return literal(0, byteCounter ? 255 : 2000);
    if (kind < 8) return pick(p_.bytes);
    if (kind < 9) return byteCounter ? pick(p_.bytes) : pick(p_.words);
    for (const Constant& k : p_.constants)
        if (!byteCounter || k.value < 256) return k.name;
    return "1";
}

std::string ProgramGenerator::relation() {
    return pick(kRelations);
}

std::string ProgramGenerator::condition() {
    return fitting(90, pick(p_.bytes) + " = 1", [&] { return comparison(); });
}

// One side of a comparison: an operand, an expression, an element, WREG or a
// macro that returns a value.
std::string ProgramGenerator::comparisonSide() {
    int kind = number(0, 99);
    if (kind < 35) return term(2, true);
    if (kind < 60) return expression(2);
    if (kind < 70 && !p_.arrays.empty()) return element(2);
    if (kind < 75) return "WREG";
    if (kind < 80) {
        for (const Macro& m : p_.macros)
            if (m.result != Result::None) return m.name + macroArguments(m);
    }
    return constantOperand();
}

std::string ProgramGenerator::comparison() {
    std::string left = comparisonSide();
    return left + " " + relation() + " " + comparisonSide();
}

std::string ProgramGenerator::label() {
    return cased(pick(p_.labels));
}

// --- Lines broken on purpose ----------------------------------------------------

bool ProgramGenerator::breakHere() {
    return p_.breakagesLeft > 0 && chance(0.06);
}

void ProgramGenerator::brokenStatement() {
    --p_.breakagesLeft;
    std::string line;
    switch (number(0, 8)) {
    case 0: line = missingOperand(); break;
    case 1: line = undeclaredName(); break;
    case 2: line = wrongType(); break;
    case 3: line = outOfRange(); break;
    case 4: duplicatedLabel(); return;
    case 5: unclosedBlock(); return;
    case 6: line = strayCloser(); break;
    case 7: line = badName(); break;
    default: line = tooManyArguments(); break;
    }
    add(line);
}

std::string ProgramGenerator::missingOperand() {
    std::string b = pick(p_.bytes), w = pick(p_.words);
    Strings lines = {b + " =",
                     w + " = " + b + " " + pick(kOperators),
                     b + " = (" + w + " + 1",
                     "INC",
                     "SWAP " + b + ",",
                     "GOTO",
                     "GOSUB",
                     "POKE 12,",
                     "POKE",
                     "DELAYMS",
                     "PAUSEUS",
                     "IF " + b + " > THEN " + b + " = 1",
                     "IF THEN " + b + " = 1",
                     "FOR " + b + " = 1 TO : NEXT",
                     "FOR " + b + " = TO 5 : NEXT",
                     "WHILE " + b + " < : WEND",
                     "REPEAT : UNTIL",
                     "MOVWF",
                     "MOVLW",
                     "BSF " + pick(p_.device.ports) + ",",
                     "BTFSC",
                     "JUMP",
                     "TGOTO 1, " + b,
                     "BRSET " + b + ", 1",
                     "LGOTO",
                     "DIM",
                     "SYMBOL KX =",
                     "CONFIG",
                     "DECLARE XTAL",
                     "LET = 5",
                     "CALL",
                     "STR",
                     "HIGH",
                     "TOGGLE",
                     "INPUT " + b,
                     "PULSOUT " + pin() + ",",
                     "PWM " + pin() + ", 1",
                     "HPWM " + b + ", 1, 1000",
                     "SERVO " + b + ", 1500",
                     "SOUND " + pin() + ", [1, 2",
                     "SOUND " + pin() + ", 1, 2",
                     "FREQOUT " + pin() + ", 10",
                     "DTMFOUT " + pin() + ", 1, 2 3",
                     "DTMFOUT " + pin() + ", [1,]",
                     b + " = PULSIN " + pin() + ", " + b,
                     b + " = COUNTER " + pin() + ",",
                     b + " = POT " + b + ", 1",
                     "SNOOZE"};
    if (!p_.arrays.empty()) {
        lines.push_back(b + " = " + p_.arrays[0].name + "[");
        lines.push_back(b + " = " + p_.arrays[0].name + "[]");
        lines.push_back("STR " + p_.arrays[0].name + " =");
    }
    for (const Macro& m : p_.macros)
        if (m.params.size() > 1) lines.push_back(m.name + " " + macroArgument(m.params[0]));
    std::string line = pick(lines);
    p_.breakages.push_back("missing operand: " + line);
    return line;
}

// Not among them: an undeclared single name as the register, bit or label of an
// instruction written as a statement (MOVWF NOSUCH, BRSET PORTB, 1, NOSUCH). The
// compiler leaves such a name to the assembler, since an ASM block may define it.
std::string ProgramGenerator::undeclaredName() {
    std::string b = pick(p_.bytes), port = pick(p_.device.ports);
    std::string u = pick(Strings{"NOSUCH", "UNDECLARED_1", "ZZ9", "Q_Q"});
    Strings lines = {b + " = " + u + " + 1",
                     u + " = 5",
                     "IF " + u + " > 1 THEN " + b + " = 1",
                     "INC " + u,
                     "GOTO " + u,
                     "GOSUB " + u,
                     "POKE " + u + ", 1",
                     "DELAYMS " + u,
                     "FOR " + u + " = 1 TO 5 : NEXT",
                     "SWAP " + b + ", " + u,
                     "BSF " + u,
                     "JUMP " + u,
                     "BZ " + u,
                     "CONFIG " + u + "_OSC",
                     "DIM KX AS " + u,
                     "SYMBOL KX = " + u + ".3",
                     "DECLARE RSOUT_PIN " + u + ".1",
                     b + " = " + pick(p_.words) + "." + u,
                     u + " " + b + ", 1",
                     "STR " + u + " = 1, 2"};
    if (!p_.arrays.empty()) lines.push_back(b + " = " + p_.arrays[0].name + "[" + u + "]");
    for (const Macro& m : p_.macros)
        if (!m.params.empty()) lines.push_back(m.name + " " + u);
    std::string line = pick(lines);
    p_.breakages.push_back("undeclared name: " + line);
    return line;
}

std::string ProgramGenerator::wrongType() {
    std::string b = pick(p_.bytes), w = pick(p_.words), f = pick(p_.bits);
    Strings lines = {b + " = " + f + " ** 2",
                     b + " = " + b + " << " + f,
                     b + " = " + w + " / " + f,
                     w + " = " + f + " // 3",
                     w + " = " + f + " >> 1",
                     "SWAP WREG, " + f,
                     "FOR " + f + " = 0 TO 1 : NEXT",
                     pick(p_.constants).name + " = 5",
                     "MOVWF " + f,
                     "INCF " + f + ", F",
                     "POKE " + f + ", 1",
                     "DELAYMS WREG",
                     "PAUSEUS WREG",
                     b + " = " + b + ".HIGHBYTE",
                     "GOTO " + b,
                     b + " = " + pick(p_.labels),
                     "DIM QA[4] AS WORD",
                     "DIM QB[4] AS BIT",
                     "STR " + b + " = 1, 2",
                     "IF " + b + " > 1 AND " + w + " < 2 THEN " + b + " = 1",
                     "IF " + b + " > 1 OR " + f + " = 0 THEN " + b + " = 1",
                     "WHILE " + b + " : WEND",
                     "BSF " + pick(p_.constants).name};
    if (!p_.arrays.empty()) {
        const std::string& a = p_.arrays[0].name;
        lines.insert(lines.end(), {"INC " + a + "[0]", "DEC " + a + "[0]",
                                   "SWAP " + a + "[0], " + b, "FOR " + a + "[0] = 1 TO 3 : NEXT",
                                   b + " = " + a, a + " = 5", "STR " + a + " = STR " + b,
                                   "DELAYMS " + a, b + " = " + a + "[" + a + "[0]]"});
    }
    for (const Macro& m : p_.macros)
        if (m.result != Result::None) lines.push_back("WREG = " + m.name + macroArguments(m));
    std::string line = pick(lines);
    p_.breakages.push_back("wrong type: " + line);
    return line;
}

std::string ProgramGenerator::outOfRange() {
    std::string b = pick(p_.bytes), w = pick(p_.words);
    Strings lines = {b + " = 65536",
                     w + " = 70000",
                     w + " = 99999999999",
                     "POKE 600, " + b,
                     "POKE 12, 300",
                     "FOR " + b + " = 300 TO 400 : NEXT",
                     "FOR " + b + " = 1 TO 5 STEP 300 : NEXT",
                     "DIM QC[0]",
                     "DIM QD[257]",
                     b + " = " + b + ".8",
                     b + " = " + w + ".16",
                     "BSF " + pick(p_.device.ports) + ", 8",
                     "BCF " + b + ", 9",
                     "DELAYMS 70000",
                     "MOVLW 300",
                     "MOVLW 70000",
                     b + " = %2",
                     b + " = $FG",
                     b + " = 12A",
                     b + " = 1 / 0 + " + b,
                     "TGOTO 2, " + b + ", 9, " + pick(p_.labels),
                     "DECLARE XTAL " + pick(Strings{"0", "25", "100", "4.5"})};
    if (!p_.arrays.empty()) {
        const Array& a = p_.arrays[0];
        std::string more;
        for (int i = 0; i <= a.size; ++i)
            more += (i ? ", " : "") + std::to_string(i);
        lines.insert(lines.end(), {b + " = " + a.name + "[" + std::to_string(a.size) + "]",
                                   a.name + "[300] = 1", "STR " + a.name + " = " + more,
                                   "STR " + a.name + " = \"" + std::string(a.size + 1, 'X') + "\"",
                                   "STR " + a.name + " = STR " + a.name + " \\ 99"});
    }
    std::string line = pick(lines);
    p_.breakages.push_back("out of range: " + line);
    return line;
}

std::string ProgramGenerator::badName() {
    Strings lines = {"DIM 1ABC",
                     "DIM AB$C",
                     "DIM A-B",
                     "DIM X.Y",
                     "DIM " + std::string(33, 'N'),
                     "9LBL: NOP",
                     "LB-L: NOP",
                     "M-1 MACRO",
                     "DIM PRINT",
                     "DIM MOVLW",
                     "DIM STATUS",
                     "DIM RP0",
                     "SYMBOL 2X = 5",
                     "DIM GOTO AS WORD",
                     "DIM " + pick(p_.bytes) + "#1",
                     "LBL%: NOP",
                     "END MACRO"};
    std::string line = pick(lines);
    p_.breakages.push_back("bad name: " + line);
    return line;
}

std::string ProgramGenerator::tooManyArguments() {
    std::string b = pick(p_.bytes), c = pick(p_.bytes);
    Strings lines = {"INC " + b + ", " + c,
                     "DEC " + b + " " + c,
                     "SWAP " + b + ", " + c + ", " + b,
                     "POKE 12, 2, 3",
                     "GOTO " + pick(p_.labels) + ", " + pick(p_.labels),
                     "GOTO " + pick(p_.labels) + " " + pick(p_.labels),
                     "DELAYMS 5, 6",
                     "MOVWF " + b + ", F",
                     "CLRF " + b + ", " + c,
                     "BSF " + pick(p_.device.ports) + ", 1, 2",
                     "MOVLW 1, 2",
                     "NOP 5",
                     "RETURN 5",
                     "STOP 1",
                     "CLRW " + b,
                     "SKPC 1",
                     "TRIS " + pick(p_.device.ports) + ", 1",
                     "REMARKS ON OFF",
                     "MACRO_PARAMS ON 1",
                     "LET " + b + " = 1, 2",
                     b + " = " + c + " " + b,
                     "IF " + b + " > 1 THEN " + b + " = 1 " + c + " = 2",
                     "FOR " + b + " = 1 TO 5 STEP 1 2 : NEXT",
                     "CONFIG " + p_.device.fuses[0] + " " + p_.device.fuses[1],
                     "DECLARE XTAL 4 8",
                     "DEVICE 16F84 16F877",
                     "JUMP " + pick(p_.labels) + ", 1",
                     "BRSET " + b + ", 1, " + pick(p_.labels) + ", 5",
                     "CALL " + pick(p_.labels) + ", " + b,
                     "PAUSEUS " + b + " " + c};
    for (const Macro& m : p_.macros) {
        std::string many;
        for (int i = 0; i < 16; ++i)
            many += (i ? ", " : " ") + std::to_string(i);
        lines.push_back(m.name + many);
    }
    std::string line = pick(lines);
    p_.breakages.push_back("too many arguments: " + line);
    return line;
}

std::string ProgramGenerator::strayCloser() {
    std::string line = pick(Strings{
        "NEXT", "WEND", "ENDIF", "ELSE", "UNTIL " + pick(p_.bytes) + " = 1", "ENDM", "EXITM",
        "NEXT " + pick(p_.bytes), "ENDASM", "#LOCAL XL", "RETURN_BYTE " + pick(p_.bytes)});
    p_.breakages.push_back("stray closing keyword: " + line);
    return line;
}

void ProgramGenerator::unclosedBlock() {
    int kind = number(0, 5);
    static const Strings kinds = {"IF", "FOR", "WHILE", "REPEAT", "MACRO", "wrong closer"};
    p_.breakages.push_back("unclosed block: " + kinds[static_cast<size_t>(kind)]);
    switch (kind) {
    case 0: add("IF " + condition() + " THEN"); break;
    case 1: add("FOR " + pick(p_.bytes) + " = 1 TO 10"); break;
    case 2: add("WHILE " + condition()); break;
    case 3: add("REPEAT"); break;
    case 4: add("MQ MACRO ARG1"); break;
    default:
        add("FOR " + pick(p_.bytes) + " = 1 TO 10");
        body();
        add(pick(Strings{"WEND", "ENDIF", "UNTIL " + condition()}));
        return;
    }
    body();
}

void ProgramGenerator::duplicatedLabel() {
    int kind = number(0, 5);
    if (kind == 0 || kind == 1) {
        size_t which = static_cast<size_t>(number(0, static_cast<int>(p_.labels.size()) - 1));
        p_.lines.push_back(p_.labels[which] + ":");
        p_.lines.push_back(p_.labels[which] + ": " + simpleStatement());
        p_.placed[which] = true;
        p_.breakages.push_back("duplicated label: " + p_.labels[which]);
        return;
    }
    if (kind == 2) {
        std::string name = pick(p_.bytes);
        add(name + ": NOP");
        p_.breakages.push_back("duplicated label: variable name " + name + " as a label");
        return;
    }
    if (kind == 3) {
        add("DIM " + pick(p_.words) + " AS BYTE");
        p_.breakages.push_back("duplicated label: variable declared twice");
        return;
    }
    // A label in a macro body without #LOCAL, the macro used twice.
    std::string b = pick(p_.bytes);
    add("MQD MACRO ARG1");
    add("LQD:");
    add("DECFSZ ARG1, F");
    add("JUMP LQD");
    add("ENDM");
    add("MQD " + b);
    add("MQD " + b);
    p_.breakages.push_back("duplicated label: macro label without #LOCAL, macro used twice");
}

} // namespace zorvel::fuzz
