// STR: fills a BYTE array from another array (a counted copy loop), from a
// quoted text, or from a list of values, one element symbol per value.
#include "compiler/codegen/array_access.h"
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/ram.h"
#include "compiler/frontend/statement.h"

#include <optional>

namespace zorvel {
namespace {

bool accept(Compilation& c, char ch) {
    skipBlanks(c);
    if (c.line.peek() != ch) return false;
    ++c.line.pos;
    return true;
}

std::string elementName(const Element& e, int i) {
    return e.array + "#" + std::to_string(i);
}

void tooMany(Compilation& c) {
    reportError(c, kErrText, "Too many values for the length of the ARRAY");
}

// "\" length after the source; without it the target's length.
std::optional<int> copyLength(Compilation& c, const Element& target, const Element& source) {
    if (!accept(c, '\\')) return target.length;
    int errors = c.ctx.errorCount;
    std::string text = readOperand(c);
    if (text.empty() || !classifyOperand(c, true, text) || c.operand.kind != kKindNum) {
        if (c.ctx.errorCount == errors)
            reportError(c, kErrText, "Must be a constant value for STR length");
        return std::nullopt;
    }
    int length = c.operand.address;
    if (length < 1 || length > target.length || length > source.length) {
        reportError(c, kErrText, "STR length must be 1 to the length of both ARRAYs");
        return std::nullopt;
    }
    return length;
}

void emitCopyLoop(Compilation& c, Element target, Element source, int length) {
    std::string counter = requestTemporary(c, kKindByte);
    emitOp(c, Op1::ClrF, counter);
    std::string loop = newLabel(c, "Pb@lab", LabelCounter::Block);
    emitLabel(c, loop);
    source.index = target.index = {counter, kKindByte, -1};
    elementToW(c, source);
    emitOp(c, Op1::MovWF, "PP7");
    writeElement(c, target, {"PP7", kKindByte, -1});
    emitOp(c, Op1::IncfF, counter);
    emitOp(c, Op1::MovFW, counter);
    emitOp(c, Op1::Sublw, std::to_string(length));
    emitTestAndJump(c, 0, "STATUS", 2, loop);
    releaseTemporary(c);
}

void copyForm(Compilation& c, const Element& target) {
    readWord(c); // STR
    int errors = c.ctx.errorCount;
    std::string text = readOperand(c);
    std::optional<Element> source = text.empty() ? std::nullopt : wholeArray(c, text);
    if (!source) {
        if (c.ctx.errorCount == errors)
            reportError(c, kErrText, "Must be a BYTE ARRAY variable for STR directive");
        return;
    }
    std::optional<int> length = copyLength(c, target, *source);
    if (length) emitCopyLoop(c, target, *source, *length);
}

void storeCharacter(Compilation& c, const Element& target, int i, char ch) {
    std::string literal = ch == '\'' ? "\\'" : std::string(1, ch);
    emitOp(c, Op1::Movlw, "'" + literal + "'");
    emitOp(c, Op1::MovWF, elementName(target, i));
}

void textForm(Compilation& c, const Element& target) {
    LineBuffer& l = c.line;
    size_t close = l.upper.find('"', l.pos + 1);
    if (close == std::string::npos) {
        reportError(c, kErrText, "End Quote Expected");
        return;
    }
    if (static_cast<int>(close - l.pos - 1) > target.length) return tooMany(c);
    for (size_t at = l.pos + 1; at < close; ++at)
        storeCharacter(c, target, static_cast<int>(at - l.pos - 1), l.casedAt(at));
    l.pos = close + 1;
}

bool storeValue(Compilation& c, const Element& target, int i) {
    std::string text = readOperand(c);
    if (text.empty()) {
        reportError(c, kErrSyntax);
        return false;
    }
    if (!classifyOperand(c, true, text)) return false;
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum: constToW(c, {std::to_string(op.address & 255), op.address & 255}); break;
    case kKindByte:
    case kKindWord: byteToW(c, op.target); break;
    case kKindBit: bitToW(c, op.target, op.bit); break;
    default: reportError(c, kErrSyntax); return false;
    }
    emitOp(c, Op1::MovWF, elementName(target, i));
    return true;
}

void listForm(Compilation& c, const Element& target) {
    int i = 0;
    do {
        if (i == target.length) return tooMany(c);
        if (!storeValue(c, target, i++)) return;
    } while (accept(c, ','));
}

} // namespace

void compileStr(Compilation& c) {
    remarksEcho(c);
    int errors = c.ctx.errorCount;
    std::string text = readOperand(c);
    std::optional<Element> target = text.empty() ? std::nullopt : wholeArray(c, text);
    if (!target) {
        if (c.ctx.errorCount == errors) reportError(c, kErrSyntax);
        return;
    }
    if (!accept(c, '=')) {
        reportError(c, kErrText, "Operator missing");
        return;
    }
    skipBlanks(c);
    if (c.line.peek() == '"') return textForm(c, *target);
    if (peekWord(c) == "STR") return copyForm(c, *target);
    listForm(c, *target);
}

} // namespace zorvel
