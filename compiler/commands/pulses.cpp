// PULSOUT, PWM, HPWM and SERVO, and the measuring functions PULSIN, RCIN,
// POT and COUNTER: parameters into the system variables, the pin through
// FSR, and the call of the runtime routine.
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

// The pin's direction line: a port pin becomes an output.
void emitPinOutput(Compilation& c, const Pin& pin) {
    std::string tris = directionRegister(c, pin.reg, pin.address);
    if (!tris.empty()) emitBit(c, BitOp::BcfBanked, tris, pin.bit);
}

// The pin, then the comma after it. The routines these commands call are
// timed for the crystal.
std::optional<Pin> readPinAndComma(Compilation& c, std::string_view message, bool portOnly = true) {
    if (!checkTimedCrystal(c)) return std::nullopt;
    std::optional<Pin> pin = readPin(c, message, portOnly);
    if (!pin || !readComma(c)) return std::nullopt;
    return pin;
}

// PULSIN's and RCIN's state: HIGH, LOW or a constant (any nonzero value is 1).
std::optional<int> readState(Compilation& c) {
    std::string word = peekWord(c);
    if (word == "HIGH" || word == "LOW") {
        readWord(c);
        return word == "HIGH" ? 1 : 0;
    }
    std::string token = countTerms(c) == 1 ? readOperand(c) : "";
    if (token.empty() || !classifyOperand(c, false, token) || c.operand.kind != kKindNum) {
        reportError(c, kErrText, "Must be a CONSTANT declaration for the STATE");
        return std::nullopt;
    }
    return c.operand.address != 0 ? 1 : 0;
}

void compileEdgeTimer(Compilation& c, const Value& dest, std::string_view message,
                      std::string_view routine, Group group) {
    std::optional<Pin> pin = readPinAndComma(c, message);
    if (!pin) return;
    std::optional<int> state = readState(c);
    if (!state) return;
    constToByte(c, {std::to_string(*state), *state}, "PP0");
    emitFsrForm(c, *pin, routine, group);
    storeFromPP0(c, dest);
}

} // namespace

void compilePulsout(Compilation& c) {
    remarksEcho(c);
    std::optional<Pin> pin =
        readPinAndComma(c, "Must be a PORT.BIT declaration for the PULSOUT pin");
    if (!pin || !loadWord(c, "PP0", "PULSOUT")) return;
    if (skipComma(c)) {
        std::string level = readWord(c);
        if (level.empty()) {
            reportError(c, kErrSyntax);
            return;
        }
        // The pin idles at the other level; the routine inverts it for the pulse.
        if (level == "HIGH" || level == "LOW") {
            emitPinOutput(c, *pin);
            emitBit(c, level == "HIGH" ? BitOp::BcfBanked : BitOp::BsfBanked, pin->reg, pin->bit);
        }
    }
    emitFsrForm(c, *pin, "p@out", Group::Pulsout);
}

void compilePwm(Compilation& c) {
    remarksEcho(c);
    std::optional<Pin> pin = readPinAndComma(c, "Must be a PORT.BIT declaration for the PWM pin");
    if (!pin || !loadByte(c, "PP1", "PWM") || !readComma(c) || !loadWord(c, "PP0", "PWM")) return;
    emitFsrForm(c, *pin, "PWM", Group::Pwm);
}

void compileHpwm(Compilation& c) {
    remarksEcho(c);
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (!classifyOperand(c, false, token) || c.operand.kind != kKindNum) {
        reportError(c, kErrText, "Must be a constant value for the HPWM channel");
        return;
    }
    int channel = c.operand.address;
    if (channel != 1 && channel != 2) {
        reportError(c, kErrText, "The HPWM channel is 1 (CCP1) or 2 (CCP2)");
        return;
    }
    if (!c.symbols.find(channel == 1 ? "CCP1CON" : "CCP2CON") || !c.symbols.find("PR2")) {
        reportError(c, kErrText,
                    "HPWM channel " + std::to_string(channel) + " needs a CCP module, which " +
                        c.device.name + " does not have");
        return;
    }
    if (!readComma(c) || !loadByte(c, "GEN", "HPWM") || !readComma(c) ||
        !loadWord(c, "PP1", "HPWM"))
        return;
    literalToW(c, channel & 255);
    need(c, Group::Hpwm);
    emitOp(c, Op1::FarCall, "H@PWM");
}

// The pin is driven high for the width in microseconds, always through the
// delay routine.
void compileServo(Compilation& c) {
    remarksEcho(c);
    // Driven in line, so any BIT can carry the pulse.
    std::optional<Pin> pin =
        readPinAndComma(c, "Must be a PORT.BIT declaration for the SERVO pin", false);
    if (!pin) return;
    emitPinOutput(c, *pin);
    emitBit(c, BitOp::BsfBanked, pin->reg, pin->bit);
    if (!compileMicrosecondWait(c)) return;
    emitBit(c, BitOp::BcfBanked, pin->reg, pin->bit);
}

void compilePulsin(Compilation& c, const Value& dest) {
    compileEdgeTimer(c, dest, "Must be a PORT.BIT declaration for the PULSIN pin", "p@in",
                     Group::Pulsin);
}

void compileRcin(Compilation& c, const Value& dest) {
    compileEdgeTimer(c, dest, "Must be a PORT.BIT declaration for the RCIN pin", "crin",
                     Group::Rcin);
}

void compilePot(Compilation& c, const Value& dest) {
    std::optional<Pin> pin = readPinAndComma(c, "Must be a PORT.BIT declaration for the POT pin");
    if (!pin || !loadByte(c, "PP2", "POT", true)) return;
    emitFsrForm(c, *pin, "pot", Group::Pot);
    storeFromW(c, dest);
}

void compileCounter(Compilation& c, const Value& dest) {
    std::optional<Pin> pin = readPinAndComma(c, "Must be a PORT.BIT declaration for the COUNT pin");
    if (!pin) return;
    if (countTerms(c) == 0) {
        reportError(c, kErrSyntax);
        return;
    }
    if (!loadWord(c, "PP1", "COUNTER")) return;
    emitFsrForm(c, *pin, "count", Group::Counter);
    storeFromWAndPP1H(c, dest);
}

} // namespace zorvel
