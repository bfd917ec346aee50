// "*", "**" and "*/": the runtime multiplication m@py takes the left operand
// in PP3 and the right in PP1 and leaves the 32-bit product in W (bits 0..7),
// PP2H (8..15), PP0 (16..23) and PP0H (24..31). A BYTE times 0, 1, 2, 4 or 8
// and anything times a BIT are done inline.
#include "compiler/codegen/operation.h"
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_marks.h"

namespace zorvel {
namespace {

void callMultiply(Compilation& c, const Operation& o) {
    loadWord(c, o.a, "PP3");
    loadWord(c, o.b, "PP1");
    emitOp(c, Op1::FarCall, "m@py");
    need(c, Group::Multiply);
}

int shiftsFor(int n) {
    switch (n) {
    case 2: return 1;
    case 4: return 2;
    case 8: return 3;
    default: return n == 1 ? 0 : -1;
    }
}

// A BYTE times 0, 1, 2, 4 or 8 into a BYTE, WORD or BIT; into W up to 2.
bool multiplyByteInline(Compilation& c, const Operation& o) {
    bool leftByte = o.a.kind == kKindByte && o.b.kind == kKindNum;
    bool rightByte = o.b.kind == kKindByte && o.a.kind == kKindNum;
    if (!leftByte && !rightByte) return false;
    const Value& x = leftByte ? o.a : o.b;
    int n = constantOf(leftByte ? o.b : o.a);
    int shifts = n == 0 ? 0 : shiftsFor(n);
    if (shifts < 0 || (o.d.kind == kKindWreg && shifts > 1)) return false;
    if (n == 0 || (o.d.kind == kKindBit && shifts > 0)) {
        emitConstantResult(c, 0, o.d);
        return true;
    }
    if (o.d.kind == kKindWreg || o.d.kind == kKindBit) {
        if (shifts == 0) return emitTransfer(c, x, o.d), true;
        emitOp(c, Op0::Clrc);
        emitOp(c, Op1::RlfW, x.name);
        return true;
    }
    if (!sameRegister(c, x, o.d) || o.d.kind == kKindWord) emitTransfer(c, x, o.d);
    for (int i = 0; i < shifts; ++i) {
        emitOp(c, Op0::Clrc);
        emitOp(c, Op1::RlfF, o.d.name);
        if (o.d.kind == kKindWord) emitOp(c, Op1::RlfF, highName(o.d.name));
    }
    return true;
}

// x * bit: each byte of x, cleared when the bit is clear.
bool multiplyByBit(Compilation& c, const Operation& o) {
    if (o.a.kind != kKindBit && o.b.kind != kKindBit) return false;
    const Value& bit = o.b.kind == kKindBit ? o.b : o.a;
    const Value& x = o.b.kind == kKindBit ? o.a : o.b;
    auto maskW = [&] {
        emitBit(c, BitOp::BtfssBanked, bit.name, bit.bit);
        emitOp(c, Op0::Clrw);
    };
    if (o.d.kind != kKindWord) {
        loadW(c, lowPart(x));
        maskW();
        storeW(c, o.d);
        return true;
    }
    // The bit is read again for the high byte: it must not live in the result.
    if (sameAddress(c, bit.name, o.d.name) || sameAddress(c, bit.name, highName(o.d.name)))
        return false;
    loadW(c, lowPart(x));
    maskW();
    emitOp(c, Op1::MovWF, o.d.name);
    BytePart high = highPart(x);
    if (high.isZero()) return emitOp(c, Op1::ClrF, highName(o.d.name)), true;
    loadW(c, high);
    maskW();
    emitOp(c, Op1::MovWF, highName(o.d.name));
    return true;
}

} // namespace

void emitMultiply(Compilation& c, const Operation& o) {
    if (multiplyByteInline(c, o) || multiplyByBit(c, o)) return;
    callMultiply(c, o);
    if (o.d.kind == kKindWord)
        wAndWordToWord(c, "PP2", o.d.name); // bits 8..15 are in PP2H
    else
        storeW(c, o.d);
}

void emitMultiplyHigh(Compilation& c, const Operation& o) {
    callMultiply(c, o);
    storeWord(c, "PP0", o.d);
}

void emitMultiplyMiddle(Compilation& c, const Operation& o) {
    if (o.a.kind == kKindBit || o.b.kind == kKindBit) {
        // (x * bit) >> 8 is x's high byte when the bit is set, else 0.
        const Value& bit = o.b.kind == kKindBit ? o.b : o.a;
        const Value& x = o.b.kind == kKindBit ? o.a : o.b;
        BytePart high = highPart(x);
        if (high.isZero()) return emitConstantResult(c, 0, o.d);
        loadW(c, high);
        emitBit(c, BitOp::BtfssBanked, bit.name, bit.bit);
        emitOp(c, Op0::Clrw);
        return storeW(c, o.d);
    }
    callMultiply(c, o);
    Value middle{"PP2H", kKindByte, -1};
    if (o.d.kind != kKindWord) return emitTransfer(c, middle, o.d);
    byteToByte(c, "PP2H", o.d.name);
    byteToByte(c, "PP0", highName(o.d.name));
}

} // namespace zorvel
