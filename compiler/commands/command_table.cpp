// The command table: every statement and function keyword of the language
// with the generator that compiles it, and the statement dispatcher that
// looks keywords up in it. A keyword without a generator reports that it is
// not supported yet; the table is the only place that decides which.
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/lexer.h"

#include <unordered_map>

namespace zorvel {
namespace {

struct Entry {
    std::string_view keyword;
    StatementHandler statement;
    FunctionHandler function;
    bool statementWord; // the keyword begins a statement (RSIN and BUSIN also
                        // yield a value; isFunctionKeyword knows the function words)
};

constexpr Entry stmt(std::string_view k, StatementHandler h) {
    return {k, h, nullptr, true};
}
constexpr Entry laterStmt(std::string_view k) {
    return {k, nullptr, nullptr, true};
}
constexpr Entry fn(std::string_view k, FunctionHandler f) {
    return {k, nullptr, f, false};
}
constexpr Entry both(std::string_view k, StatementHandler h, FunctionHandler f) {
    return {k, h, f, true};
}
constexpr Entry laterFn(std::string_view k) {
    return {k, nullptr, nullptr, false};
}

constexpr Entry kEntries[] = {
    // Comments, inline assembly and the compile switches.
    stmt("REM", compileComment),
    stmt("ASM", compileAsmBlock),
    stmt("S_ASM", compileOneLineAsm),
    stmt("DEFINE", compileDefine),
    stmt("INCLUDE", skipIncludeName),
    stmt("REMARKS", compileRemarks),
    stmt("MACRO_PARAMS", compileMacroParams),
    stmt("END", compileEnd),
    stmt("STOP", compileStop),
    stmt("#ERROR", compileError),
    stmt("#INCLUDE", compileIncludeDirective),
    stmt("#IF", compileIfDirective),
    stmt("#IFDEF", compileIfdefDirective),
    stmt("#IFNDEF", compileIfndefDirective),
    stmt("#ELSE", compileElseDirective),
    stmt("#ENDIF", compileEndifDirective),
    stmt("#WHILE", compileWhileDirective),
    stmt("#ENDW", compileEndwDirective),
    stmt("#DEFINE", compileDefineDirective),
    stmt("#UNDEFINE", compileUndefineDirective),
    laterStmt("#ENABLE"),
    // Block ends: their block statement has compiled them already.
    stmt("ELSE", compileNothing),
    stmt("ENDIF", compileNothing),
    stmt("WEND", compileNothing),
    stmt("UNTIL", compileNothing),
    stmt("NEXT", compileNothing),
    // The target and declarations.
    stmt("DEVICE", compileDevice),
    stmt("DECLARE", compileDeclare),
    stmt("CONFIG", compileConfig),
    stmt("ORG", compileOrg),
    stmt("CONTEXT", compileContext),
    stmt("SET_OSCCAL", compileSetOscCal),
    stmt("ON_INTERRUPT", compileOnInterrupt),
    stmt("DIM", compileDim),
    stmt("SYMBOL", compileSymbol),
    // Assignment, blocks and jumps.
    stmt("LET", compileLet),
    stmt("INC", compileIncrement),
    stmt("INCREMENT", compileIncrement),
    stmt("DEC", compileDecrement),
    stmt("DECREMENT", compileDecrement),
    stmt("SWAP", compileSwap),
    stmt("IF", compileIf),
    stmt("FOR", compileFor),
    stmt("WHILE", compileWhile),
    stmt("REPEAT", compileRepeat),
    stmt("GOTO", compileGoto),
    stmt("GOSUB", compileGosub),
    stmt("CALL", compileCall),
    stmt("RETURN", compileReturn),
    stmt("POKE", compilePoke),
    stmt("STR", compileStr),
    // Macros.
    stmt("ENDM", compileEndm),
    stmt("EXITM", compileExitm),
    stmt("#LOCAL", compileLocal),
    // Timing and power.
    stmt("PAUSE", compileMilliseconds),
    stmt("DELAYMS", compileMilliseconds),
    stmt("PAUSEUS", compileMicroseconds),
    stmt("DELAYUS", compileMicroseconds),
    stmt("SLEEP", compileSleep),
    stmt("SNOOZE", compileSnooze),
    // Pins, pulses and tones.
    stmt("HIGH", compileHigh),
    stmt("SET", compileHigh),
    stmt("LOW", compileLow),
    stmt("CLEAR", compileLow),
    stmt("TOGGLE", compileToggle),
    stmt("INPUT", compileInput),
    stmt("OUTPUT", compileOutput),
    stmt("PULSOUT", compilePulsout),
    stmt("PWM", compilePwm),
    stmt("HPWM", compileHpwm),
    stmt("SERVO", compileServo),
    stmt("SOUND", compileSound),
    stmt("FREQOUT", compileFreqout),
    stmt("DTMFOUT", compileDtmfout),
    fn("PULSIN", compilePulsin),
    fn("RCIN", compileRcin),
    fn("POT", compilePot),
    fn("COUNTER", compileCounter),
    // Serial links, LCD and keypad.
    stmt("RSOUT", compileRsout),
    stmt("SERIN", compileSerin),
    stmt("SEROUT", compileSerout),
    stmt("PRINT", compilePrint),
    stmt("CLS", compileCls),
    stmt("CURSOR", compileCursor),
    fn("INKEY", compileInkey),
    both("RSIN", compileRsin, compileRsinFunction),
    // Shift, bus, data tables, EEPROM, code memory, lookups and branches.
    laterStmt("SHIN"),
    laterStmt("SHOUT"),
    laterStmt("BUSOUT"),
    laterStmt("OREAD"),
    laterStmt("OWRITE"),
    laterStmt("DATA"),
    laterStmt("READ"),
    laterStmt("RESTORE"),
    laterStmt("CDATA"),
    laterStmt("EDATA"),
    laterStmt("EWRITE"),
    laterStmt("CWRITE"),
    laterStmt("BRANCH"),
    laterStmt("BRANCHL"),
    laterStmt("BUSIN"),
    laterFn("EREAD"),
    laterFn("CREAD"),
    laterFn("LOOKUP"),
    laterFn("LOOKUPL"),
    laterFn("LOOKDOWN"),
    laterFn("LOOKDOWNL"),
    fn("RANDOM", compileRandom),
    fn("SIN", compileSin),
    fn("COS", compileCos),
    fn("DIG", compileDig),
    fn("PEEK", compilePeek),
    laterFn("ADIN"),
    // Graphic LCDs.
    laterStmt("LCDWRITE"),
    laterStmt("PLOT"),
    laterStmt("UNPLOT"),
    laterFn("LCDREAD"),
    laterFn("PIXEL"),
};

const std::unordered_map<std::string_view, const Entry*>& index() {
    static const std::unordered_map<std::string_view, const Entry*> map = [] {
        std::unordered_map<std::string_view, const Entry*> m;
        for (const Entry& e : kEntries)
            m.emplace(e.keyword, &e);
        return m;
    }();
    return map;
}

const Entry* findEntry(std::string_view keyword) {
    auto it = index().find(keyword);
    return it == index().end() ? nullptr : it->second;
}

void reportNotSupported(Compilation& c) {
    compileNotSupported(c, c.stmt.keyword);
}

} // namespace

std::span<const Command> commandTable() {
    static const std::vector<Command> table = [] {
        std::vector<Command> t;
        for (const Entry& e : kEntries)
            t.push_back(
                {e.keyword,
                 e.statementWord ? (e.statement ? e.statement : reportNotSupported) : nullptr,
                 e.function});
        return t;
    }();
    return table;
}

FunctionHandler findFunction(std::string_view keyword) {
    const Entry* e = findEntry(keyword);
    return e ? e->function : nullptr;
}

void compileFunction(Compilation& c, const Value& dest) {
    std::string word = readWord(c);
    FunctionHandler f = isFunctionKeyword(word) ? findFunction(word) : nullptr;
    if (!f) {
        reportError(c, kErrText, "Function '" + word + "' is not supported yet");
        return;
    }
    Operand saved = c.operand;
    f(c, dest);
    c.operand = saved;
}

void compileNotSupported(Compilation& c, std::string_view what) {
    reportError(c, kErrText, "'" + std::string(what) + "' is not supported yet");
}

StatementHandler findRoute(std::string_view keyword) {
    if (const Entry* e = findEntry(keyword); e && e->statementWord)
        return e->statement ? e->statement : reportNotSupported;
    if (lookupKeyword(keyword).keywordClass == kClassTypePair) return compileTypePair;
    static const std::unordered_map<std::string_view, StatementHandler> mnemonics = [] {
        std::unordered_map<std::string_view, StatementHandler> m;
        for (const Route& r : mnemonicRoutes())
            m.emplace(r.keyword, r.handler);
        return m;
    }();
    auto it = mnemonics.find(keyword);
    return it == mnemonics.end() ? nullptr : it->second;
}

std::vector<std::string_view> routedKeywords() {
    std::vector<std::string_view> words;
    for (const Entry& e : kEntries)
        if (e.statementWord) words.push_back(e.keyword);
    for (const Keyword& k : keywordTable())
        if (k.keywordClass == kClassTypePair) words.push_back(k.text);
    for (const Route& r : mnemonicRoutes())
        words.push_back(r.keyword);
    return words;
}

void compileStatementsOfLine(Compilation& c) {
    LineBuffer& l = c.line;
    do {
        c.stmt.nothingToDispatch = false;
        int errors = c.ctx.errorCount;
        readStatementHead(c);
        if (!c.stmt.nothingToDispatch) {
            dispatchStatement(c);
            if (isBlockClosingKeyword(c.stmt.keyword)) return;
        }
        if (l.pos < l.length()) {
            skipBlanks(c);
            if (l.peek() != ':' && !closingKeywordFollows(c)) {
                if (c.ctx.pass == 2 && errors == c.ctx.errorCount && !isStatementEnd(l.peek()))
                    reportError(c, kErrText, "Unexpected text after the statement");
                l.pos = l.length();
            }
        }
    } while (l.pos < l.length());
}

void dispatchStatement(Compilation& c) {
    const std::string& keyword = c.stmt.keyword;
    if (keyword == "ON_INTERRUPT") {
        compileOnInterrupt(c);
        return;
    }
    if (c.ctx.pass != 2) return;
    placeDataSkipLabel(c);
    if (c.stmt.macroDefinition) {
        compileMacroDeclaration(c);
        return;
    }
    if (StatementHandler handler = findRoute(keyword)) {
        handler(c);
        return;
    }
    compileAssignment(c);
}

} // namespace zorvel
