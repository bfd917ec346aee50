// PAUSE and DELAYMS (milliseconds), PAUSEUS and DELAYUS (microseconds). The
// operand goes into W, its high byte into the routine's parameter register,
// and the 8-bit or 16-bit entry of the delay routine is called. A constant
// microsecond delay too short for the routine's call overhead is built in
// line from one-cycle and two-cycle instructions and a counted loop.
#include "compiler/codegen/array_access.h"
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/pin_operands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/expression.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/statement.h"
#include "compiler/library/crystal.h"
#include "compiler/library/runtime_marks.h"

#include <span>
#include <string_view>

namespace zorvel {
namespace {

// The routine a timing command calls: the 8-bit and 16-bit entries, the
// word system variable whose high byte carries the count's high byte.
struct DelayRoutine {
    Group group;
    const char* entry8;
    const char* entry16;
    const char* wordRegister;
    const char* highRegister;
};

constexpr DelayRoutine kMilliseconds = {Group::DelayMs, "dl@ms", "dly@w", "PP1", "PP1H"};
constexpr DelayRoutine kMicroseconds = {Group::DelayUs, "dl@us", "dlus@w", "PP0", "PP0H"};
// Sleeps on the watchdog: timed by its oscillator, not by the crystal.
constexpr DelayRoutine kSleepPeriod = {Group::SleepPeriod, "dl@s", "dl@sw", "PP3", "PP3H"};

void callRoutine(Compilation& c, const DelayRoutine& r, bool wide) {
    if (r.group != Group::SleepPeriod && !checkTimedCrystal(c)) return;
    need(c, r.group);
    emitOp(c, Op1::FarCall, wide ? r.entry16 : r.entry8);
}

void loadConstant(Compilation& c, const DelayRoutine& r, int value) {
    if (value <= 255) {
        literalToW(c, value);
        callRoutine(c, r, false);
        return;
    }
    literalToW(c, value >> 8);
    emitOp(c, Op1::MovWF, r.highRegister);
    literalToW(c, value & 255);
    callRoutine(c, r, true);
}

void loadWord(Compilation& c, const DelayRoutine& r, const std::string& word) {
    emitOp(c, Op1::MovFW, word + "H");
    emitOp(c, Op1::MovWF, r.highRegister);
    emitOp(c, Op1::MovFW, word);
    callRoutine(c, r, true);
}

// A several-term operand is an expression, evaluated into the routine's
// word register.
void loadExpression(Compilation& c, const DelayRoutine& r) {
    int errors = c.ctx.errorCount;
    compileExpression(c, Value{r.wordRegister, kKindWord});
    if (c.ctx.errorCount != errors) return;
    emitOp(c, Op1::MovFW, r.wordRegister);
    callRoutine(c, r, true);
}

// Loads the classified single operand by its kind and calls the routine.
void loadOperand(Compilation& c, const DelayRoutine& r) {
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum: loadConstant(c, r, op.address); return;
    case kKindByte:
        emitOp(c, Op1::MovFW, op.target);
        callRoutine(c, r, false);
        return;
    case kKindWord:
    case kKindWordArray: loadWord(c, r, op.target); return;
    case kKindBit:
        bitToW(c, op.target, op.bit);
        callRoutine(c, r, false);
        return;
    default: reportError(c, kErrSyntax); return;
    }
}

// Reads the one operand of the statement and classifies it; false after an
// error. Array elements are not supported here yet.
bool readSingleOperand(Compilation& c) {
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return false;
    }
    skipBlanks(c);
    if (c.line.peek() == '[') {
        reportError(c, kErrArrayNotSupported, c.stmt.keyword);
        return false;
    }
    if (!classifyOperand(c, true, token)) return false;
    if (c.operand.kind == kKindByteArray) {
        reportError(c, kErrArrayNotSupported, c.stmt.keyword);
        return false;
    }
    return true;
}

// --- In-line microsecond delays ---------------------------------------------

// The in-line sequence of each delay from 1 us up, per crystal: N one "Nop",
// G one "Goto $+1" (GG and GGG one line of two or three), Ln the counted
// loop of n passes. At 12 MHz every row is followed by two more "Nop".
struct InlineTable {
    int mhz;
    std::span<const std::string_view> rows;
};

constexpr std::string_view kRows4[] = {"N",    "G",      "N G",    "GG",   "GG N",   "GGG",
                                       "L2",   "L2 N",   "L2 N N", "L3 N", "L3 N N", "L4",
                                       "L4 N", "L4 N N", "L5",     "L5 N", "L5 N N", "L6",
                                       "L6 N", "L6 N N", "L7",     "L7 N", "L7 N N"};
constexpr std::string_view kRows8[] = {"G",    "GG", "GGG",    "L2 N", "L3", "L3 N N",
                                       "L4 N", "L5", "L5 N N", "L6 N", "L7"};
constexpr std::string_view kRows10[] = {"G", "GG N", "L2", "L3", "L3 N N", "L4 N N", "L5 N"};
constexpr std::string_view kRows12[] = {"N", "GG", "L2", "L3", "L4", "L5"};
constexpr std::string_view kRows16[] = {"GG", "L2 N", "L3 N N", "L5"};
constexpr std::string_view kRows20[] = {"GG N", "L2"};

constexpr InlineTable kInlineTables[] = {{4, kRows4},   {8, kRows8},   {10, kRows10},
                                         {12, kRows12}, {16, kRows16}, {20, kRows20}};

const InlineTable* inlineTable(int mhz) {
    for (const InlineTable& t : kInlineTables)
        if (t.mhz == mhz) return &t;
    return nullptr;
}

void emitCountedLoop(Compilation& c, std::string_view passes) {
    emitOp(c, Op1::Movlw, passes);
    emitOp(c, Op1::MovWF, "PP0");
    c.emit("\tDecfsz PP0,F");
    c.emit("\tGoto $-1");
}

void emitInlineStep(Compilation& c, std::string_view step) {
    if (step == "N") {
        emitOp(c, Op0::Nop);
    } else if (step[0] == 'L') {
        emitCountedLoop(c, step.substr(1));
    } else {
        std::string text = "\tGoto $+1";
        for (size_t i = 1; i < step.size(); ++i)
            text += "\r\n\tGoto $+1";
        c.emit(text);
    }
}

void emitInlineRow(Compilation& c, std::string_view row) {
    while (!row.empty()) {
        size_t blank = row.find(' ');
        emitInlineStep(c, row.substr(0, blank));
        row = blank == std::string_view::npos ? std::string_view{} : row.substr(blank + 1);
    }
}

// True when the constant delay was written in line (nothing to call).
bool emitInlineDelay(Compilation& c, int micros) {
    const InlineTable* table = inlineTable(c.device.settings[kXtal].number);
    if (!table || micros < 0 || micros > static_cast<int>(table->rows.size())) return false;
    if (micros == 0) {
        c.emit("; Blank ");
        return true;
    }
    emitInlineRow(c, table->rows[micros - 1]);
    if (table->mhz == 12) emitInlineRow(c, "N N");
    return true;
}

// An array element operand: its value in W and the 8-bit entry. False when
// no element follows (the cursor is then where it was).
bool loadElement(Compilation& c, const DelayRoutine& r) {
    size_t start = c.line.pos;
    std::string token = readOperand(c);
    if (token.empty() || !elementFollows(c)) {
        c.line.pos = start;
        return false;
    }
    std::optional<Element> e = readElement(c, token);
    if (!e) return true;
    elementToW(c, *e);
    releaseElement(c, *e);
    callRoutine(c, r, false);
    return true;
}

// --- SNOOZE -------------------------------------------------------------------

constexpr std::string_view kSnoozePeriods[] = {"18MS",  "36MS", "72MS", "144MS",
                                               "288MS", "1S",   "2S"};

// The period into W; false after an error.
bool loadSnoozePeriod(Compilation& c) {
    std::string word = peekWord(c);
    for (int code = 0; code < 7; ++code) {
        if (word != kSnoozePeriods[code]) continue;
        readWord(c);
        literalToW(c, code);
        return true;
    }
    int errors = c.ctx.errorCount;
    if (countTerms(c) > 1) {
        compileExpression(c, Value{"WREG", kKindWreg, -1});
        return c.ctx.errorCount == errors;
    }
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return false;
    }
    if (elementFollows(c)) {
        std::optional<Element> e = readElement(c, token);
        if (!e) return false;
        elementToW(c, *e);
        releaseElement(c, *e);
        return c.ctx.errorCount == errors;
    }
    if (!classifyOperand(c, true, token)) return false;
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum: literalToW(c, op.address & 255); break;
    case kKindBit: bitToW(c, op.target, op.bit); break;
    case kKindByte:
    case kKindWord:
    case kKindWordArray: emitOp(c, Op1::MovFW, op.target); break;
    default: break;
    }
    return true;
}

// --- The statements -----------------------------------------------------------

void compileDelay(Compilation& c, const DelayRoutine& r, bool inlineConstants) {
    remarksEcho(c);
    if (countTerms(c) > 1) {
        loadExpression(c, r);
        return;
    }
    if (loadElement(c, r)) return;
    if (!readSingleOperand(c)) return;
    if (inlineConstants && c.operand.kind == kKindNum && emitInlineDelay(c, c.operand.address))
        return;
    loadOperand(c, r);
}

} // namespace

void compileMilliseconds(Compilation& c) {
    compileDelay(c, kMilliseconds, false);
}

void compileMicroseconds(Compilation& c) {
    compileDelay(c, kMicroseconds, true);
}

bool compileMicrosecondWait(Compilation& c) {
    int errors = c.ctx.errorCount;
    compileDelay(c, kMicroseconds, false);
    return c.ctx.errorCount == errors;
}

// SLEEP alone is the instruction; with a period it sleeps that many seconds
// in watchdog periods.
void compileSleep(Compilation& c) {
    remarksEcho(c);
    skipBlanks(c);
    if (c.line.atEnd() || isStatementEnd(c.line.peek()) || closingKeywordFollows(c)) {
        c.emit("\tSleep");
        return;
    }
    need(c, Group::SleepPeriod);
    if (!c.watchdogOn()) {
        reportError(c, kErrText, "WATCHDOG fuse disabled with CONFIG directive");
        return;
    }
    compileDelay(c, kSleepPeriod, false);
}

// One watchdog period: a period keyword, or the prescaler code as a byte.
void compileSnooze(Compilation& c) {
    remarksEcho(c);
    need(c, Group::Snooze);
    if (!c.watchdogOn()) {
        reportError(c, kErrText, "WATCHDOG fuse disabled in CONFIG directive");
        return;
    }
    if (!loadSnoozePeriod(c)) return;
    emitOp(c, Op1::FarCall, "sn@ze");
}

} // namespace zorvel
