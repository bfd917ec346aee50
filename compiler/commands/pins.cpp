// HIGH/SET, LOW/CLEAR, TOGGLE, INPUT and OUTPUT: a port pin driven or turned
// around in line, or through the pin routines of the runtime library.
#include "compiler/codegen/array_access.h"
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/pin_operands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/library/runtime_marks.h"

namespace zorvel {
namespace {

// An element of a BYTE array takes 255 or 0.
void setElement(Compilation& c, const std::string& token, bool high) {
    std::optional<Element> e = readElement(c, token);
    if (!e) return;
    writeElement(c, *e, Value{high ? "255" : "0", kKindNum, -1});
    releaseElement(c, *e);
}

// A port register, or a pin of one, becomes an output first.
void makeOutput(Compilation& c, const Operand& op) {
    std::string tris = directionRegister(c, op.target, op.address);
    if (tris.empty()) return;
    if (op.kind == kKindBit)
        emitBit(c, BitOp::BcfBanked, tris, op.bit);
    else
        emitOp(c, Op1::ClrF, tris);
}

void compileLevel(Compilation& c, bool high) {
    remarksEcho(c);
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (elementFollows(c)) return setElement(c, token, high);
    if (!classifyOperand(c, true, token)) return;
    Operand op = c.operand;
    makeOutput(c, op);
    switch (op.kind) {
    case kKindBit:
        emitBit(c, high ? BitOp::BsfBanked : BitOp::BcfBanked, op.target, op.bit);
        return;
    case kKindByte:
    case kKindNum: constToByte(c, {high ? "255" : "0", high ? 255 : 0}, op.target); return;
    case kKindWord:
    case kKindWordArray: constToWord(c, high ? 65535 : 0, op.target); return;
    default: reportError(c, kErrArrayNotSupported, c.stmt.keyword); return;
    }
}

void compileDirection(Compilation& c, bool input) {
    remarksEcho(c);
    std::optional<Pin> pin =
        readPin(c, input ? "Must be a PORT.BIT declaration for the INPUT pin"
                         : "Must be a PORT.BIT declaration for the OUTPUT pin");
    if (!pin) return;
    if (input)
        emitFsrForm(c, *pin, "i@bi", Group::InputPin);
    else
        emitFsrForm(c, *pin, "o@bi", Group::OutputPin);
}

} // namespace

void compileHigh(Compilation& c) {
    compileLevel(c, true);
}

void compileLow(Compilation& c) {
    compileLevel(c, false);
}

// A pin is inverted in line and made an output; a variable or constant is a
// pin number 0..15 (PORTB.0 .. PORTB.7, then PORTA.0 .. PORTA.7) for t@gl.
void compileToggle(Compilation& c) {
    remarksEcho(c);
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (elementFollows(c)) {
        reportError(c, kErrArrayNotSupported, "TOGGLE");
        return;
    }
    if (!classifyOperand(c, true, token)) return;
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindBit:
        literalToW(c, 1 << op.bit);
        emitOp(c, Op1::XorwfF, op.target);
        // Only a port has a direction register 128 bytes above it.
        if (!directionRegister(c, op.target, op.address).empty())
            emitBit(c, BitOp::BcfBanked, std::to_string(op.address + 128), op.bit);
        return;
    case kKindNum: literalToW(c, op.address & 255); break;
    case kKindByte:
    case kKindWord: byteToW(c, op.target); break;
    default: reportError(c, kErrArrayNotSupported, "TOGGLE"); return;
    }
    need(c, Group::Toggle);
    emitOp(c, Op1::FarCall, "t@gl");
}

void compileInput(Compilation& c) {
    compileDirection(c, true);
}

void compileOutput(Compilation& c) {
    compileDirection(c, false);
}

} // namespace zorvel
