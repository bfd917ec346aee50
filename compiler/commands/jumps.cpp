// GOTO, GOSUB, CALL, RETURN and POKE.
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/statement.h"

#include <optional>
#include <string>

namespace zorvel {
namespace {

// The label after GOTO or GOSUB; it must exist.
std::optional<std::string> readTargetLabel(Compilation& c) {
    std::string label = readWord(c);
    if (label.empty()) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    if (!lookupLabel(c, true, label)) return std::nullopt;
    return label;
}

// A POKE operand: a constant or a declared BYTE or WORD variable.
std::optional<Operand> readPokeOperand(Compilation& c) {
    std::string text = readOperand(c);
    if (text.empty()) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    if (!classifyOperand(c, true, text)) return std::nullopt;
    const Operand& op = c.operand;
    if (op.kind == kKindBit) {
        reportError(c, kErrBitNotSupported, "POKE");
        return std::nullopt;
    }
    if (op.kind != kKindNum && op.kind != kKindByte && op.kind != kKindWord) {
        reportError(c, kErrText, "Variable Expected");
        return std::nullopt;
    }
    return op;
}

bool checkPokeRange(Compilation& c, const Operand& address, const Operand& value) {
    if (address.kind == kKindNum && (address.address < 0 || address.address > 511)) {
        reportError(c, kErrText,
                    "POKE address " + std::to_string(address.address) +
                        " is outside the RAM (0 to 511)");
        return false;
    }
    if (value.kind == kKindNum && (value.address < 0 || value.address > 255)) {
        reportError(c, kErrText,
                    "POKE value " + std::to_string(value.address) + " does not fit a byte");
        return false;
    }
    return true;
}

std::string operandText(const Operand& op) {
    return op.kind == kKindNum ? std::to_string(op.address) : op.target;
}

void operandToW(Compilation& c, const Operand& op) {
    emitOp(c, op.kind == kKindNum ? Op1::Movlw : Op1::MovFW, operandText(op));
}

// A constant stored into a register by the library's literal move.
void emitPokeLiteral(Compilation& c, const std::string& value, const std::string& address) {
    c.emit("\tMov@lf " + value + "," + address);
}

void emitPoke(Compilation& c, const Operand& address, const Operand& value) {
    if (c.device.info.pokeBanks() < 2) {
        operandToW(c, address);
        emitOp(c, Op1::MovWF, "FSR");
        operandToW(c, value);
        emitOp(c, Op1::MovWF, "INDF");
        return;
    }
    if (value.kind == kKindNum) {
        emitPokeLiteral(c, operandText(value), operandText(address));
        return;
    }
    emitOp(c, Op1::MovFW, operandText(value));
    emitOp(c, Op1::MovWF, operandText(address));
}

} // namespace

void compileGoto(Compilation& c) {
    remarksEcho(c);
    if (std::optional<std::string> label = readTargetLabel(c)) emitOp(c, Op1::FarGoto, *label);
}

void compileGosub(Compilation& c) {
    remarksEcho(c);
    if (std::optional<std::string> label = readTargetLabel(c)) emitOp(c, Op1::FarCall, *label);
}

// CALL takes any name up to the next delimiter, unchecked: it may be a
// label of inline assembly.
void compileCall(Compilation& c) {
    skipBlanks(c);
    LineBuffer& l = c.line;
    size_t start = l.pos;
    while (l.pos < l.length() && !isBlank(l.upper[l.pos]) && !isDelimiter(l.upper[l.pos]) &&
           !isStatementEnd(l.upper[l.pos]))
        ++l.pos;
    if (l.pos == start) {
        reportError(c, kErrSyntax);
        return;
    }
    emitOp(c, Op1::FarCall, l.upper.substr(start, l.pos - start));
}

void compileReturn(Compilation& c) {
    remarksEcho(c);
    emitReturn(c);
}

void compilePoke(Compilation& c) {
    remarksEcho(c);
    skipBlanks(c);
    if (c.line.peek() == '(') {
        reportError(c, kErrText, "Braces not required for POKE");
        return;
    }
    std::optional<Operand> address = readPokeOperand(c);
    if (!address) return;
    skipBlanks(c);
    if (c.line.peek() != ',') {
        reportError(c, kErrComma);
        return;
    }
    ++c.line.pos;
    std::optional<Operand> value = readPokeOperand(c);
    if (!value || !checkPokeRange(c, *address, *value)) return;
    emitPoke(c, *address, *value);
}

} // namespace zorvel
