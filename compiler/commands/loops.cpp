// FOR ... NEXT, WHILE ... WEND and REPEAT ... UNTIL. Each loop keeps its
// labels on the stack while its body is compiled by the line compiler.
#include "compiler/codegen/compare.h"
#include "compiler/codegen/emit.h"
#include "compiler/codegen/loop_step.h"
#include "compiler/commands/block_body.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/condition.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/statement.h"

#include <optional>
#include <string>

namespace zorvel {
namespace {

struct ForLoop {
    Value counter;
    Value start;
    Value end;
    Value step{"1", kKindNum, -1};
    bool down = false;
    std::string top;  // "fr@lab": the exit test
    std::string exit; // "nx@lab": after the step code
    int line = 0;
};

bool fail(Compilation& c, std::string_view text) {
    reportError(c, kErrText, text);
    return false;
}

bool isConstantAbove(const Value& v, int limit) {
    return v.kind == kKindNum && std::stol(v.name) > limit;
}

bool readCounter(Compilation& c, ForLoop& loop) {
    skipBlanks(c);
    if (countTerms(c) > 1) return fail(c, "BYTE or WORD type Variable Required");
    std::optional<Value> counter = parseSingleOperand(c);
    if (!counter) return false;
    if (counter->kind != kKindByte && counter->kind != kKindWord)
        return fail(c, "BYTE or WORD type Variable Required");
    loop.counter = *counter;
    skipBlanks(c);
    if (c.line.peek() != '=') return fail(c, "'=' Assignment operator missing");
    ++c.line.pos;
    return true;
}

bool readRange(Compilation& c, ForLoop& loop) {
    std::optional<Value> start = parseRightOperand(c);
    if (!start) return false;
    if (start->kind == kKindBit) return fail(c, "BIT type variables are not valid in FOR-NEXT");
    loop.start = *start;
    if (readWord(c) != "TO") return fail(c, " For 'TO' missing");
    skipBlanks(c);
    if (countTerms(c) > 1) return fail(c, "Only a single variable definition allowed after 'TO'");
    std::optional<Value> end = parseSingleOperand(c);
    if (!end) return false;
    if (end->kind == kKindBit) return fail(c, "BIT type variables are not valid in FOR-NEXT");
    loop.end = *end;
    return true;
}

bool readStep(Compilation& c, ForLoop& loop) {
    if (peekWord(c) != "STEP") return true;
    readWord(c);
    skipBlanks(c);
    if (c.line.peek() == '-') {
        loop.down = true;
        ++c.line.pos;
        skipBlanks(c);
    }
    if (!isIdentifierChar(c.line.peek())) {
        reportError(c, kErrSyntax);
        return false;
    }
    if (countTerms(c) > 1)
        return fail(c, "Only a single variable or constant allowed after 'STEP'");
    std::optional<Value> step = parseSingleOperand(c);
    if (!step) return false;
    if (step->kind == kKindBit) return fail(c, "BIT type variables are not valid for STEP");
    loop.step = *step;
    return true;
}

// Constants that a BYTE counter cannot take.
bool checkByteCounter(Compilation& c, const ForLoop& loop) {
    if (loop.counter.kind != kKindByte) return true;
    const std::string& name = loop.counter.name;
    if (isConstantAbove(loop.start, 255))
        return fail(c, "Start value " + loop.start.name + " does not fit the BYTE variable '" +
                           name + "' (0 to 255)");
    if (isConstantAbove(loop.step, 255))
        return fail(c, "STEP " + loop.step.name + " is too large for the BYTE variable '" + name +
                           "' (at most 255)");
    return true;
}

void assignStart(Compilation& c, const ForLoop& loop) {
    const Value& from = loop.start;
    const std::string& to = loop.counter.name;
    bool toWord = loop.counter.kind == kKindWord;
    if (from.kind == kKindNum) {
        int value = std::stoi(from.name);
        toWord ? constToWord(c, value, to) : constToByte(c, Constant{from.name, value}, to);
    } else if (from.kind == kKindByte) {
        toWord ? byteToWord(c, from.name, to) : byteToByte(c, from.name, to);
    } else {
        toWord ? wordToWord(c, from.name, to) : wordToByte(c, from.name, to);
    }
}

// NEXT may name a variable; it must be declared but is not checked against
// the loop's own.
bool readNextVariable(Compilation& c) {
    std::string word = peekWord(c);
    if (word.empty()) return true;
    readOperand(c);
    return findSymbol(c, normaliseName(word), true);
}

void compileNext(Compilation& c, const ForLoop& loop) {
    remarksEcho(c);
    if (!readNextVariable(c)) return;
    emitForStep(c, loop.counter, loop.step, loop.down, loop.top);
    emitLabel(c, loop.exit);
}

} // namespace

void compileFor(Compilation& c) {
    ForLoop loop;
    loop.line = c.ctx.currentSourceLine + 1;
    remarksEcho(c);
    loop.top = newLabel(c, "fr@lab", LabelCounter::Block);
    loop.exit = newLabel(c, "nx@lab", LabelCounter::Block);
    if (!readCounter(c, loop) || !readRange(c, loop) || !readStep(c, loop)) return;
    if (!checkByteCounter(c, loop)) return;
    assignStart(c, loop);
    emitLabel(c, loop.top);
    Relation past = loop.down ? Relation::Less : Relation::Greater;
    emitJumpIf(c, past, loop.counter, loop.end, loop.exit);
    if (!compileBody(c, "NEXT")) {
        reportUnclosed(c, loop.line, "] FOR without next");
        return;
    }
    takeCloser(c, "NEXT");
    compileNext(c, loop);
}

void compileWhile(Compilation& c) {
    int line = c.ctx.currentSourceLine + 1;
    std::string top = newLabel(c, "Whl@Lb", LabelCounter::Block);
    std::string exit = newLabel(c, "Wnd@Lb", LabelCounter::Block);
    remarksEcho(c);
    emitLabel(c, top);
    if (!compileCondition(c, exit)) return;
    if (!compileBody(c, "WEND")) {
        reportUnclosed(c, line, "] WHILE without WEND");
        return;
    }
    takeCloser(c, "WEND");
    remarksEcho(c);
    emitOp(c, Op1::FarGoto, top);
    emitLabel(c, exit);
}

void compileRepeat(Compilation& c) {
    int line = c.ctx.currentSourceLine + 1;
    std::string top = newLabel(c, "Rpt@Lb", LabelCounter::Block);
    remarksEcho(c);
    emitLabel(c, top);
    if (!compileBody(c, "UNTIL")) {
        reportUnclosed(c, line, "] REPEAT without UNTIL");
        return;
    }
    takeCloser(c, "UNTIL");
    remarksEcho(c);
    compileCondition(c, top);
}

} // namespace zorvel
