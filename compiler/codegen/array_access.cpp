#include "compiler/codegen/array_access.h"

#include "compiler/codegen/arithmetic.h"
#include "compiler/codegen/emit.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/const_expr.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/ram.h"
#include "compiler/library/runtime_marks.h"

#include <algorithm>
#include <cassert>

namespace zorvel {
namespace {

// --- Fixed lines of the indirect access ---------------------------------------

void emitPointerFromW(Compilation& c) {
    c.emit("\tMovwf FSR");
}

void emitUpperOn(Compilation& c, const Element& e) {
    if (e.base > 255) c.emit("\tBsf STATUS,IRP");
}

void emitUpperOff(Compilation& c, const Element& e) {
    if (e.base > 255) c.emit("\tBcf STATUS,IRP");
}

// --- The array and its index --------------------------------------------------

// All bytes from `first` to `last` inside one bank's RAM; with an interrupt
// handler each bank's first byte is left out (it may hold a save byte).
bool liesInOneBank(const Compilation& c, int first, int last) {
    const DeviceInfo& info = c.device.info;
    int skip = c.device.interruptOn ? 1 : 0;
    for (int b = 0; b < 4; ++b) {
        if (b > 0 && info.bankStart(b) <= 0) continue;
        if (first >= info.bankStart(b) + skip && last <= info.bankEnd(b)) return true;
    }
    return false;
}

Element describeArray(const Compilation& c) {
    const Operand& op = c.operand;
    Element e;
    e.array = op.target;
    e.base = op.address;
    e.length = op.bit;
    const SymbolEntry* last = c.symbols.find(e.array + "#" + std::to_string(e.length - 1));
    assert(last && "an array declares one symbol per element");
    // Elements are placed in rising order, so the span tells whether any was moved.
    bool consecutive = last->address - e.base == e.length - 1;
    e.inlineAccess = consecutive && liesInOneBank(c, e.base, last->address);
    return e;
}

std::optional<Element> arrayOf(Compilation& c, const std::string& text) {
    if (!classifyOperand(c, true, text)) return std::nullopt;
    if (c.operand.kind != kKindByteArray) {
        reportError(c, kErrText, "Variable '" + text + "' is not an ARRAY");
        return std::nullopt;
    }
    return describeArray(c);
}

bool constantIndex(Compilation& c, Element& e, int value) {
    if (value < 0 || value >= e.length) {
        reportError(c, kErrText,
                    "Index " + std::to_string(value) + " is outside ARRAY '" + e.array + "'");
        return false;
    }
    e.index = {std::to_string(value), kKindNum, -1};
    return true;
}

bool singleIndex(Compilation& c, Element& e) {
    std::string text = readOperand(c);
    if (text.empty()) {
        reportError(c, kErrSyntax);
        return false;
    }
    skipBlanks(c);
    if (c.line.peek() == '[') {
        reportError(c, kErrText, "ARRAY variables not supported within ARRAY variables");
        return false;
    }
    if (!classifyOperand(c, true, text)) return false;
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum: return constantIndex(c, e, op.address);
    case kKindByte:
    case kKindWord: e.index = {op.target, kKindByte, -1}; return true;
    case kKindBit: e.index = {op.target, kKindBit, op.bit}; return true;
    case kKindByteArray:
    case kKindWordArray:
        reportError(c, kErrText, "ARRAY variables not supported within ARRAY variables");
        return false;
    default: reportError(c, kErrSyntax); return false;
    }
}

// An index of several terms: folded when constant, otherwise compiled into a
// numbered temporary. Its own temporaries start above any PP temporary an
// enclosing expression holds (and above PP7, which conditions keep).
bool expressionIndex(Compilation& c, Element& e) {
    if (c.termScan.allConstant) {
        std::optional<int32_t> v = evaluateConstExpr(c);
        return v && constantIndex(c, e, *v);
    }
    std::string temp = requestTemporary(c, kKindByte);
    ++e.temporaries;
    int outer = c.alloc.firstExpressionTemporary;
    c.alloc.firstExpressionTemporary = std::max(outer, 8);
    int errors = c.ctx.errorCount;
    compileExpression(c, {temp, kKindByte, -1});
    c.alloc.firstExpressionTemporary = outer;
    e.index = {temp, kKindByte, -1};
    return c.ctx.errorCount == errors;
}

bool readIndex(Compilation& c, Element& e) {
    ++c.line.pos; // "["
    skipBlanks(c);
    if (c.line.peek() == ']') {
        reportError(c, kErrSyntax);
        return false;
    }
    bool several = c.line.peek() == '(' || countTerms(c) > 1;
    if (!(several ? expressionIndex(c, e) : singleIndex(c, e))) return false;
    skipBlanks(c);
    if (c.line.peek() != ']') {
        reportError(c, kErrCloseBracket);
        return false;
    }
    ++c.line.pos;
    return true;
}

// --- Index and value into W ---------------------------------------------------

// W = address of the element (the index added to the array's base).
void addressToW(Compilation& c, const Element& e) {
    if (e.index.kind == kKindBit) {
        emitOp(c, Op1::Movlw, e.array);
        emitBit(c, BitOp::BtfscBanked, e.index.name, e.index.bit);
        emitOp(c, Op1::Addlw, "1");
        return;
    }
    emitOp(c, Op1::MovFW, e.index.name);
    emitOp(c, Op1::Addlw, e.array);
}

void pointAtElement(Compilation& c, const Element& e) {
    addressToW(c, e);
    emitPointerFromW(c);
    emitUpperOn(c, e);
}

void indexToW(Compilation& c, const Element& e) {
    if (e.index.kind == kKindBit)
        bitToW(c, e.index.name, e.index.bit);
    else
        byteToW(c, e.index.name);
}

// A value of kind NUM, BYTE, WORD or BIT into W.
void valueToW(Compilation& c, const Value& v) {
    switch (v.kind) {
    case kKindNum: emitOp(c, Op1::Movlw, std::to_string(std::stoi(v.name) & 255)); return;
    case kKindBit: bitToW(c, v.name, v.bit); return;
    default: byteToW(c, v.name); return;
    }
}

void writeInline(Compilation& c, const Element& e, const Value& v) {
    pointAtElement(c, e);
    if (v.kind == kKindBit) {
        c.emit("\tClrf INDF");
        emitBit(c, BitOp::BtfscBanked, v.name, v.bit);
        c.emit("\tIncf INDF,F");
    } else {
        valueToW(c, v);
        c.emit("\tMovwf INDF");
    }
    emitUpperOff(c, e);
}

void writeThroughRoutine(Compilation& c, const Element& e, const Value& v) {
    emitOp(c, Op1::Movlw, e.array);
    emitOp(c, Op1::MovWF, "GEN4");
    indexToW(c, e);
    emitOp(c, Op1::MovWF, "GEN4H");
    valueToW(c, v);
    emitUpperOn(c, e);
    need(c, Group::PutArray);
    emitOp(c, Op1::FarCall, "put@array");
}

} // namespace

std::optional<Element> wholeArray(Compilation& c, const std::string& text) {
    if (!classifyOperand(c, true, text) || c.operand.kind != kKindByteArray) return std::nullopt;
    return describeArray(c);
}

bool elementFollows(Compilation& c) {
    skipBlanks(c);
    return c.line.peek() == '[';
}

std::optional<Element> readElement(Compilation& c, const std::string& text) {
    assert(c.line.peek() == '[' && "readElement starts at the bracket");
    std::optional<Element> e = arrayOf(c, text);
    if (!e) return std::nullopt;
    bool ok = readIndex(c, *e);
    if (ok) return e;
    releaseElement(c, *e);
    return std::nullopt;
}

void releaseElement(Compilation& c, const Element& e) {
    for (int i = 0; i < e.temporaries; ++i)
        releaseTemporary(c);
}

std::string elementSymbol(const Element& e) {
    assert(e.index.kind == kKindNum && "only a constant index names an element");
    return e.array + "#" + e.index.name;
}

void elementToW(Compilation& c, const Element& e) {
    if (e.index.kind == kKindNum) return byteToW(c, elementSymbol(e));
    if (e.inlineAccess) {
        pointAtElement(c, e);
        c.emit("\tMovfw INDF");
        emitUpperOff(c, e);
        return;
    }
    emitOp(c, Op1::Movlw, e.array);
    emitOp(c, Op1::MovWF, "GEN3H");
    indexToW(c, e);
    emitUpperOn(c, e);
    need(c, Group::GetArray);
    emitOp(c, Op1::FarCall, "get@array");
}

void elementInto(Compilation& c, const Element& e, const Value& destination) {
    if (e.index.kind == kKindNum) {
        emitTransfer(c, {elementSymbol(e), kKindByte, -1}, destination);
        return;
    }
    elementToW(c, e);
    emitTransfer(c, {"WREG", kKindWreg, -1}, destination);
}

void writeElement(Compilation& c, const Element& e, const Value& value) {
    if (e.index.kind == kKindNum) {
        emitTransfer(c, value, {elementSymbol(e), kKindByte, -1});
        return;
    }
    if (value.kind == kKindWreg) {
        // The address computation needs W: keep the value in a temporary first.
        std::string temp = requestTemporary(c, kKindByte);
        wToByte(c, temp);
        writeElement(c, e, {temp, kKindByte, -1});
        releaseTemporary(c);
        return;
    }
    if (e.inlineAccess)
        writeInline(c, e, value);
    else
        writeThroughRoutine(c, e, value);
}

} // namespace zorvel
