#include "compiler/codegen/loop_step.h"

#include "compiler/codegen/emit.h"
#include "compiler/driver/compilation.h"

#include <cassert>
#include <string>

namespace zorvel {
namespace {

constexpr int kCarry = 0;
constexpr int kZero = 2;

struct Step {
    const Value& counter;
    const Value& step;
    std::string_view top;
    std::string high() const { return counter.name + "H"; }
    std::string stepHigh() const { return step.name + "H"; }
    bool constant() const { return step.kind == kKindNum; }
    int value() const { return constant() ? std::stoi(step.name) : -1; }
};

bool singlePage(const Compilation& c) {
    return c.device.info.codeSizeClass() == 1;
}

// The plain increments of a high byte whose bank is selected already; the
// instruction right before them skips exactly one instruction.
void emitPlainIncrement(Compilation& c, std::string_view reg) {
    c.emit("\tIncf " + std::string(reg));
}
void emitPlainIncrementSkip(Compilation& c, std::string_view reg) {
    c.emit("\tIncfsz " + std::string(reg));
}

int bankOf(int address) {
    return (address >> 7) & 3;
}

// A word whose high byte lies in the next bank (its low byte is the last of
// a bank) needs that bank selected before a skip instruction: the skip must
// pass over the access alone, not over a bank switch in front of it.
void selectHighBankIfSplit(Compilation& c, const Step& s) {
    const SymbolEntry* low = c.symbols.find(s.counter.name);
    if (!low) return;
    const SymbolEntry* high = c.symbols.find(s.high());
    int highAddress = high ? high->address : low->address + 1;
    if (bankOf(low->address) != bankOf(highAddress)) emitOp(c, Op1::SelectBank, s.high());
}

void jumpOnCarry(Compilation& c, int value, std::string_view label) {
    emitTestAndJump(c, value, "STATUS", kCarry, label);
}
void jumpUnlessZero(Compilation& c, std::string_view label) {
    emitTestAndJump(c, 0, "STATUS", kZero, label);
}

// Increments `reg` and loops back unless it wrapped to zero.
void incrementAndLoop(Compilation& c, std::string_view reg, std::string_view top) {
    if (singlePage(c)) {
        emitOp(c, Op1::IncfszF, reg);
        emitOp(c, Op1::Goto, top);
        return;
    }
    emitOp(c, Op1::IncfF, reg);
    jumpUnlessZero(c, top);
}

void upByte(Compilation& c, const Step& s) {
    if (s.constant() && s.value() == 1) {
        incrementAndLoop(c, s.counter.name, s.top);
        return;
    }
    if (s.constant())
        emitOp(c, Op1::Movlw, s.step.name);
    else
        emitOp(c, Op1::MovFW, s.step.name);
    emitOp(c, Op1::AddwfF, s.counter.name);
    if (s.step.kind != kKindWord) {
        jumpOnCarry(c, 0, s.top);
        return;
    }
    std::string exit = newLabel(c, "N@Lab", LabelCounter::Step);
    emitOp(c, Op1::MovFW, s.stepHigh());
    jumpUnlessZero(c, exit);
    jumpOnCarry(c, 0, s.top);
    emitLabel(c, exit);
}

void upWordByOne(Compilation& c, const Step& s) {
    emitOp(c, Op1::IncfF, s.counter.name);
    emitOp(c, Op1::SelectBank, s.high());
    emitOp(c, Op0::Skpnz);
    if (singlePage(c)) {
        emitPlainIncrementSkip(c, s.high());
        emitOp(c, Op1::Goto, s.top);
        return;
    }
    emitPlainIncrement(c, s.high());
    jumpUnlessZero(c, s.top);
}

// A step below 256: the carry out of the low byte increments the high byte.
void upWordBySmallStep(Compilation& c, const Step& s) {
    if (s.constant())
        constToW(c, Constant{s.step.name, s.value()});
    else
        emitOp(c, Op1::MovFW, s.step.name);
    emitOp(c, Op1::AddwfF, s.counter.name);
    jumpOnCarry(c, 0, s.top);
    if (s.constant()) {
        incrementAndLoop(c, s.high(), s.top);
        return;
    }
    emitOp(c, Op1::IncfF, s.high());
    jumpUnlessZero(c, s.top);
}

// A full 16-bit step: the high byte of the step plus the carry of the low
// bytes; a carry out of that sum or of the high bytes leaves the loop.
void upWordByWideStep(Compilation& c, const Step& s) {
    std::string exit = newLabel(c, "N@Lab", LabelCounter::Step);
    int value = s.value();
    if (s.constant())
        emitOp(c, Op1::Movlw, std::to_string(value & 255));
    else
        emitOp(c, Op1::MovFW, s.step.name);
    emitOp(c, Op1::AddwfF, s.counter.name);
    if (s.constant())
        emitOp(c, Op1::Movlw, std::to_string(value >> 8));
    else
        emitOp(c, Op1::MovFW, s.stepHigh());
    emitOp(c, Op0::Skpnc);
    emitOp(c, Op1::Addlw, "1");
    jumpOnCarry(c, 1, exit);
    emitOp(c, Op1::AddwfF, s.high());
    jumpOnCarry(c, 0, s.top);
    emitLabel(c, exit);
}

void upWord(Compilation& c, const Step& s) {
    if (s.constant() && s.value() == 1)
        upWordByOne(c, s);
    else if (s.step.kind == kKindByte || (s.constant() && s.value() < 256))
        upWordBySmallStep(c, s);
    else
        upWordByWideStep(c, s);
}

void downByte(Compilation& c, const Step& s) {
    if (s.constant())
        constToW(c, Constant{s.step.name, s.value()});
    else
        emitOp(c, Op1::MovFW, s.step.name);
    emitOp(c, Op1::SubwfF, s.counter.name);
    if (s.step.kind != kKindWord) {
        jumpOnCarry(c, 1, s.top);
        return;
    }
    std::string exit = newLabel(c, "N@Lab", LabelCounter::Step);
    emitOp(c, Op1::MovFW, s.stepHigh());
    jumpUnlessZero(c, exit);
    jumpOnCarry(c, 1, s.top);
    emitLabel(c, exit);
}

// Subtracts the low byte of the step and passes the borrow on to the high
// byte of the counter (W holds 1 for it). The carry is clear afterwards
// when the counter went below zero.
void subtractLowWithBorrow(Compilation& c, const Step& s) {
    if (s.constant() && s.value() == 1) {
        emitOp(c, Op1::Movlw, "1");
    } else if (s.constant()) {
        int low = s.value() & 255;
        constToW(c, Constant{std::to_string(low), low});
    } else {
        emitOp(c, Op1::MovFW, s.step.name);
    }
    emitOp(c, Op1::SubwfF, s.counter.name);
    if (!(s.constant() && s.value() == 1)) emitOp(c, Op1::Movlw, "1");
    selectHighBankIfSplit(c, s);
    emitOp(c, Op0::Skpc);
    emitOp(c, Op1::SubwfF, s.high());
}

void downWord(Compilation& c, const Step& s) {
    subtractLowWithBorrow(c, s);
    bool narrow = s.step.kind == kKindByte || (s.constant() && s.value() < 256);
    if (narrow) {
        jumpOnCarry(c, 1, s.top);
        return;
    }
    std::string exit = newLabel(c, "N@Lab", LabelCounter::Step);
    jumpOnCarry(c, 0, exit);
    if (s.constant()) {
        int high = s.value() >> 8;
        constToW(c, Constant{std::to_string(high), high});
    } else {
        emitOp(c, Op1::MovFW, s.stepHigh());
    }
    emitOp(c, Op1::SubwfF, s.high());
    jumpOnCarry(c, 1, s.top);
    emitLabel(c, exit);
}

} // namespace

void emitForStep(Compilation& c, const Value& counter, const Value& step, bool down,
                 std::string_view top) {
    assert((counter.kind == kKindByte || counter.kind == kKindWord) && "a BYTE or WORD counter");
    assert((step.kind == kKindByte || step.kind == kKindWord || step.kind == kKindNum) &&
           "a BYTE, WORD or constant step");
    Step s{counter, step, top};
    assert(!(counter.kind == kKindByte && s.constant() && s.value() > 255) &&
           "a BYTE counter takes constant steps up to 255");
    if (counter.kind == kKindByte)
        down ? downByte(c, s) : upByte(c, s);
    else
        down ? downWord(c, s) : upWord(c, s);
}

} // namespace zorvel
