// The built-in functions RANDOM, SIN, COS, DIG and PEEK: their operands into
// the runtime routine's registers, the call, and the result into the
// assignment's destination.
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/pin_operands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"

namespace zorvel {
namespace {

void call(Compilation& c, std::string_view routine, Group group) {
    need(c, group);
    emitOp(c, Op1::FarCall, routine);
}

// A byte register into the destination: a word gets a clear high byte, a
// bit the register's bit 0.
void storeFromByte(Compilation& c, std::string_view reg, const Value& dest) {
    switch (dest.kind) {
    case kKindWord: byteToWord(c, reg, dest.name); return;
    case kKindBit: emitByteBit(c, reg, dest.name, dest.bit); return;
    case kKindWreg: byteToW(c, reg); return;
    default: byteToByte(c, reg, dest.name); return;
    }
}

} // namespace

// The destination's value is the seed and takes the next value of the
// sequence.
void compileRandom(Compilation& c, const Value& dest) {
    switch (dest.kind) {
    case kKindWord: wordToWord(c, dest.name, "PP0"); break;
    case kKindBit: bitToWord(c, dest.name, dest.bit, "PP0"); break;
    case kKindWreg: wToWord(c, "PP0"); break;
    default: byteToWord(c, dest.name, "PP0"); break;
    }
    call(c, "Rndm", Group::Random);
    if (dest.kind != kKindWord) return storeFromW(c, dest);
    wToByte(c, dest.name);
    byteToByte(c, "PP0H", dest.name + "H");
}

void compileSin(Compilation& c, const Value& dest) {
    if (!loadByte(c, "W", "SIN", true)) return;
    call(c, "Sin", Group::Sin);
    storeFromW(c, dest);
}

void compileCos(Compilation& c, const Value& dest) {
    if (!loadByte(c, "W", "COS", true)) return;
    call(c, "cos", Group::Cos);
    storeFromW(c, dest);
}

void compileDig(Compilation& c, const Value& dest) {
    if (!loadWord(c, "PP0", "DIG") || !readComma(c) || !loadByte(c, "W", "DIG")) return;
    call(c, "Dig", Group::Dig);
    storeFromW(c, dest);
}

// The register the operand names: a constant is a register address, a
// variable the variable itself (a WORD's low byte).
void compilePeek(Compilation& c, const Value& dest) {
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (!classifyOperand(c, true, token)) return;
    const Operand& op = c.operand;
    if (op.kind == kKindNum) {
        if (op.address < 0 || op.address > 511) {
            reportError(c, kErrText,
                        "PEEK address " + std::to_string(op.address) +
                            " is outside the RAM (0 to 511)");
            return;
        }
        return storeFromByte(c, std::to_string(op.address), dest);
    }
    if (op.kind != kKindByte && op.kind != kKindWord) {
        reportError(c, kErrText, "Variable Expected");
        return;
    }
    storeFromByte(c, op.target, dest);
}

} // namespace zorvel
