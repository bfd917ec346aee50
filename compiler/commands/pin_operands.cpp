#include "compiler/commands/pin_operands.h"

#include "compiler/codegen/array_access.h"
#include "compiler/codegen/emit.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/library/crystal.h"

namespace zorvel {
namespace {

constexpr std::string_view kPorts[] = {"PORTA", "PORTB", "PORTC", "PORTD", "PORTE", "GPIO"};

// Reads one operand and classifies it; an array element is left to the
// caller: `element` is set and the operand is not classified.
enum class Read { Failed, Element, Operand };

Read readOne(Compilation& c, std::string& token) {
    token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return Read::Failed;
    }
    if (elementFollows(c)) return Read::Element;
    if (!classifyOperand(c, true, token)) return Read::Failed;
    return Read::Operand;
}

bool refuseWholeArray(Compilation& c, std::string_view keyword) {
    if (c.operand.kind != kKindByteArray) return false;
    reportError(c, kErrArrayNotSupported, std::string(keyword));
    return true;
}

} // namespace

std::optional<Pin> readPin(Compilation& c, std::string_view message, bool portOnly) {
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    int errors = c.ctx.errorCount;
    bool classified = !elementFollows(c) && classifyOperand(c, false, token);
    if (c.ctx.errorCount != errors) return std::nullopt; // a fault of the operand itself
    if (!classified || c.operand.kind != kKindBit ||
        (portOnly && directionRegister(c, c.operand.target, c.operand.address).empty())) {
        reportError(c, kErrText, std::string(message));
        return std::nullopt;
    }
    const Operand& op = c.operand;
    if (op.address > 255) {
        reportError(c, kErrText, "The pin's register must lie in RAM banks 0 or 1");
        return std::nullopt;
    }
    return Pin{op.target, op.address, op.bit};
}

bool readComma(Compilation& c) {
    if (skipComma(c)) return true;
    reportError(c, kErrComma);
    return false;
}

bool skipComma(Compilation& c) {
    skipBlanks(c);
    if (c.line.peek() != ',') return false;
    ++c.line.pos;
    return true;
}

std::string directionRegister(Compilation& c, std::string_view reg, int address) {
    if (address < 5 || address > 9) return "";
    bool port = false;
    for (std::string_view p : kPorts)
        port = port || p == reg;
    if (!port) return "";
    if (reg != "GPIO") {
        std::string tris = "TRIS" + std::string(1, reg[4]);
        if (c.symbols.find(tris)) return tris;
    }
    return "TRISIO";
}

void emitFsrForm(Compilation& c, const Pin& pin, std::string_view routine, Group group) {
    constToByte(c, {std::to_string(pin.address), pin.address}, "FSR");
    literalToW(c, pin.mask());
    need(c, group);
    emitOp(c, Op1::FarCall, routine);
}

void emitGenForm(Compilation& c, const Pin& pin) {
    literalToW(c, pin.address);
    emitOp(c, Op1::MovWF, "GEN");
    literalToW(c, pin.mask());
    emitOp(c, Op1::MovWF, "GENH");
}

bool checkTimedCrystal(Compilation& c) {
    int mhz = c.device.settings[kXtal].number;
    if (hasMicrosecondDelay(mhz)) return true;
    reportError(c, kErrText,
                "Delays are timed for crystals of 4, 8, 10, 12, 16 and 20 MHz only (XTAL is " +
                    std::to_string(mhz) + ")");
    return false;
}

void literalToW(Compilation& c, int value) {
    constToW(c, {std::to_string(value), value});
}

bool loadByte(Compilation& c, std::string_view target, std::string_view keyword,
              bool wordArrayAsByte) {
    bool toW = target == "W";
    int errors = c.ctx.errorCount;
    if (countTerms(c) > 1) {
        compileExpression(c, toW ? Value{"WREG", kKindWreg, -1}
                                 : Value{std::string(target), kKindByte, -1});
        return c.ctx.errorCount == errors;
    }
    std::string token;
    Read r = readOne(c, token);
    if (r == Read::Failed) return false;
    if (r == Read::Element) {
        std::optional<Element> e = readElement(c, token);
        if (!e) return false;
        if (toW)
            elementToW(c, *e);
        else
            elementInto(c, *e, Value{std::string(target), kKindByte, -1});
        releaseElement(c, *e);
        return c.ctx.errorCount == errors;
    }
    if (refuseWholeArray(c, keyword)) return false;
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum: {
        int low = op.address & 255;
        if (toW)
            literalToW(c, low);
        else
            constToByte(c, {std::to_string(low), low}, target);
        return true;
    }
    case kKindWordArray:
        if (!wordArrayAsByte) {
            reportError(c, kErrArrayNotSupported, std::string(keyword));
            return false;
        }
        [[fallthrough]];
    case kKindByte:
    case kKindWord:
        if (toW)
            byteToW(c, op.target);
        else
            byteToByte(c, op.target, target);
        return true;
    case kKindBit:
        bitToW(c, op.target, op.bit);
        if (!toW) emitOp(c, Op1::MovWF, target);
        return true;
    default: reportError(c, kErrSyntax); return false;
    }
}

bool loadWord(Compilation& c, std::string_view target, std::string_view keyword) {
    int errors = c.ctx.errorCount;
    Value dest{std::string(target), kKindWord, -1};
    if (countTerms(c) > 1) {
        compileExpression(c, dest);
        return c.ctx.errorCount == errors;
    }
    std::string token;
    Read r = readOne(c, token);
    if (r == Read::Failed) return false;
    if (r == Read::Element) {
        std::optional<Element> e = readElement(c, token);
        if (!e) return false;
        elementInto(c, *e, dest);
        releaseElement(c, *e);
        return c.ctx.errorCount == errors;
    }
    if (refuseWholeArray(c, keyword)) return false;
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum: constToWord(c, op.address & 65535, target); return true;
    case kKindByte: byteToWord(c, op.target, target); return true;
    case kKindWord: wordToWord(c, op.target, target); return true;
    case kKindBit: bitToWord(c, op.target, op.bit, target); return true;
    case kKindWordArray: reportError(c, kErrArrayNotSupported, std::string(keyword)); return false;
    default: reportError(c, kErrSyntax); return false;
    }
}

void storeFromPP0(Compilation& c, const Value& dest) {
    switch (dest.kind) {
    case kKindWord: wordToWord(c, "PP0", dest.name); return;
    case kKindBit: emitByteBit(c, "PP0", dest.name, dest.bit); return;
    case kKindWreg: byteToW(c, "PP0"); return;
    default: byteToByte(c, "PP0", dest.name); return;
    }
}

void storeFromW(Compilation& c, const Value& dest) {
    switch (dest.kind) {
    case kKindWord: wToWord(c, dest.name); return;
    case kKindBit: emitWregBit(c, dest.name, dest.bit); return;
    case kKindWreg: return;
    default: wToByte(c, dest.name); return;
    }
}

void storeFromWAndPP1H(Compilation& c, const Value& dest) {
    if (dest.kind != kKindWord) return storeFromW(c, dest);
    wToByte(c, dest.name);
    byteToByte(c, "PP1H", dest.name + "H");
}

} // namespace zorvel
