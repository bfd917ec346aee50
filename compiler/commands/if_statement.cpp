// IF: a condition that jumps to the false label, then either the rest of the
// line (single-line IF) or the following lines up to ELSE / ENDIF.
#include "compiler/codegen/emit.h"
#include "compiler/commands/block_body.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/condition.h"
#include "compiler/driver/compilation.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/statement.h"

#include <string>

namespace zorvel {
namespace {

struct IfLabels {
    std::string falseLabel; // "I@Lb": where a false condition goes
    std::string endLabel;   // "Els@Lb": the end of the ELSE part
};

void emitElse(Compilation& c, const IfLabels& labels) {
    emitOp(c, Op1::FarGoto, labels.endLabel);
    c.emit("; Else");
    emitLabel(c, labels.falseLabel);
}

// THEN followed by a known label jumps there.
void compileThenLabel(Compilation& c) {
    std::string word = peekWord(c);
    if (word.empty() || !lookupLabel(c, false, word)) return;
    readWord(c);
    emitOp(c, Op1::FarGoto, word);
}

void compileSingleLineIf(Compilation& c, const IfLabels& labels) {
    compileThenLabel(c);
    compileRestOfLine(c);
    if (takeCloser(c, "ELSE")) {
        emitElse(c, labels);
        compileRestOfLine(c);
        if (takeCloser(c, "ENDIF")) c.emit("; Endif");
        emitLabel(c, labels.endLabel);
        return;
    }
    takeCloser(c, "ENDIF");
    emitLabel(c, labels.falseLabel);
}

void compileElsePart(Compilation& c, const IfLabels& labels, int line) {
    emitOp(c, Op1::FarGoto, labels.endLabel);
    remarksEcho(c);
    emitLabel(c, labels.falseLabel);
    if (!compileBody(c, "ENDIF")) {
        reportUnclosed(c, line, "] IF without ENDIF");
        return;
    }
    takeCloser(c, "ENDIF");
    remarksEcho(c);
    emitLabel(c, labels.endLabel);
}

void compileBlockIf(Compilation& c, const IfLabels& labels, int line) {
    compileFollowingLines(c);
    if (takeCloser(c, "ELSE")) {
        compileElsePart(c, labels, line);
        return;
    }
    if (!takeCloser(c, "ENDIF")) {
        reportUnclosed(c, line, "] IF without ENDIF");
        return;
    }
    remarksEcho(c);
    emitLabel(c, labels.falseLabel);
}

} // namespace

void compileIf(Compilation& c) {
    int line = c.ctx.currentSourceLine + 1;
    remarksEcho(c);
    std::optional<Value> left = parseLeftOperand(c);
    if (!left) return;
    IfLabels labels;
    labels.falseLabel = newLabel(c, "I@Lb", LabelCounter::Block);
    labels.endLabel = newLabel(c, "Els@Lb", LabelCounter::Block);
    if (!compileComparison(c, *left, labels.falseLabel)) return;
    if (peekWord(c) == "THEN") readWord(c);
    if (textFollows(c))
        compileSingleLineIf(c, labels);
    else
        compileBlockIf(c, labels, line);
}

} // namespace zorvel
