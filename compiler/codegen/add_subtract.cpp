// "+" and "-": 8-bit results are computed in W on the low bytes; word results
// carry (or borrow) from the low byte into the high byte, in place when the
// result is one of the word operands.
#include "compiler/codegen/operation.h"
#include "compiler/driver/compilation.h"

namespace zorvel {
namespace {

// W = `high` plus the carry of the low bytes: `skip` is Skpnc after an add
// (carry out) and Skpc after a subtract (borrow, carry clear).
void loadHighWithCarry(Compilation& c, const BytePart& high, Op0 skip) {
    loadW(c, high);
    emitOp(c, skip);
    emitOp(c, Op1::Addlw, "1");
}

// W = W + part. With `carry` the carry flag afterwards is the carry out.
void applyAdd(Compilation& c, const BytePart& part, bool carry) {
    switch (part.kind) {
    case BytePart::Register: emitOp(c, Op1::AddwfW, part.name); return;
    case BytePart::Constant:
        if (carry || part.value != 0) emitOp(c, Op1::Addlw, std::to_string(part.value));
        return;
    case BytePart::Bit:
        if (carry) emitOp(c, Op0::Clrc);
        emitBit(c, BitOp::BtfscBanked, part.name, part.bit);
        emitOp(c, Op1::Addlw, "1");
        return;
    }
}

bool isConstant(const BytePart& p, int value) {
    return p.kind == BytePart::Constant && p.value == value;
}

void addByte(Compilation& c, const Operation& o) {
    if (o.d.kind == kKindByte) {
        for (const auto& [reg, other] : {std::pair{&o.a, &o.b}, std::pair{&o.b, &o.a}}) {
            if (!sameRegister(c, *reg, o.d)) continue;
            BytePart part = lowPart(*other);
            if (isConstant(part, 1)) return emitOp(c, Op1::IncfF, o.d.name);
            if (isConstant(part, 0)) return;
            loadW(c, part);
            return emitOp(c, Op1::AddwfF, o.d.name);
        }
    }
    BytePart x = lowPart(o.a), y = lowPart(o.b);
    if (!loadsFirst(x, y)) std::swap(x, y);
    if (isConstant(x, 1) && y.kind == BytePart::Register) {
        emitOp(c, Op1::IncfW, y.name);
    } else {
        loadW(c, x);
        applyAdd(c, y, false);
    }
    storeW(c, o.d);
}

// reg = reg + other for a word register.
void addWordInPlace(Compilation& c, const Value& reg, const Value& other) {
    BytePart low = lowPart(other), high = highPart(other);
    std::string rh = highName(reg.name);
    if (isConstant(low, 1) && high.isZero()) {
        emitOp(c, Op1::IncfF, reg.name);
        emitOp(c, Op1::SelectBank, rh);
        emitOp(c, Op0::Skpnz);
        return emitPlainIncf(c, rh);
    }
    loadW(c, low);
    emitOp(c, Op1::AddwfF, reg.name);
    if (other.kind == kKindNum) emitOp(c, Op1::SelectBank, rh);
    if (high.isZero()) {
        if (other.kind != kKindNum) emitOp(c, Op1::SelectBank, rh);
        emitOp(c, Op0::Skpnc);
        return emitPlainIncf(c, rh);
    }
    loadHighWithCarry(c, high, Op0::Skpnc);
    emitOp(c, Op1::AddwfF, rh);
}

void addWord(Compilation& c, const Operation& o) {
    if (o.a.kind == kKindWord && sameRegister(c, o.a, o.d)) return addWordInPlace(c, o.d, o.b);
    if (o.b.kind == kKindWord && sameRegister(c, o.b, o.d)) return addWordInPlace(c, o.d, o.a);
    const Value* first = &o.a;
    const Value* second = &o.b;
    if (!loadsFirst(lowPart(o.a), lowPart(o.b))) std::swap(first, second);
    loadW(c, lowPart(*first));
    applyAdd(c, lowPart(*second), true);
    emitOp(c, Op1::MovWF, o.d.name);
    std::string dh = highName(o.d.name);
    BytePart h1 = highPart(*first), h2 = highPart(*second);
    if (h1.isZero() && h2.isZero()) {
        emitOp(c, Op1::ClrF, dh);
        return emitOp(c, Op1::RlfF, dh);
    }
    loadHighWithCarry(c, h1, Op0::Skpnc);
    applyAdd(c, h2, false);
    emitOp(c, Op1::MovWF, dh);
}

// W = x - y for the low bytes.
void subtractToW(Compilation& c, const BytePart& x, const BytePart& y) {
    if (y.kind == BytePart::Bit) {
        loadW(c, x);
        emitBit(c, BitOp::BtfscBanked, y.name, y.bit);
        emitOp(c, Op1::Addlw, "255");
    } else if (x.kind == BytePart::Bit && y.kind == BytePart::Register) {
        loadW(c, y);
        emitOp(c, Op1::Sublw, "0");
        emitBit(c, BitOp::BtfscBanked, x.name, x.bit);
        emitOp(c, Op1::Addlw, "1");
    } else if (x.kind != BytePart::Register && y.kind == BytePart::Constant) {
        loadW(c, x); // a bit, or (folded already) a constant
        if (y.value != 0) emitOp(c, Op1::Addlw, std::to_string((256 - y.value) & 255));
    } else if (x.kind == BytePart::Constant) {
        loadW(c, y);
        emitOp(c, Op1::Sublw, std::to_string(x.value));
    } else if (isConstant(y, 1)) {
        emitOp(c, Op1::DecfW, x.name);
    } else if (isConstant(y, 0)) {
        byteToW(c, x.name);
    } else {
        loadW(c, y);
        emitOp(c, Op1::SubwfW, x.name);
    }
}

void subtractByte(Compilation& c, const Operation& o) {
    if (o.d.kind == kKindByte && sameRegister(c, o.a, o.d)) {
        BytePart part = lowPart(o.b);
        if (isConstant(part, 1)) return emitOp(c, Op1::DecfF, o.d.name);
        if (isConstant(part, 0)) return;
        loadW(c, part);
        return emitOp(c, Op1::SubwfF, o.d.name);
    }
    subtractToW(c, lowPart(o.a), lowPart(o.b));
    storeW(c, o.d);
}

// reg = reg - other for a word register.
void subtractWordInPlace(Compilation& c, const Value& reg, const Value& other) {
    std::string rh = highName(reg.name);
    loadW(c, lowPart(other));
    emitOp(c, Op1::SubwfF, reg.name);
    BytePart high = highPart(other);
    if (high.isZero()) {
        emitOp(c, Op1::SelectBank, rh);
        emitOp(c, Op0::Skpc);
        return emitPlainDecf(c, rh);
    }
    loadHighWithCarry(c, high, Op0::Skpc);
    emitOp(c, Op1::SubwfF, rh);
}

// W = part - W, the borrow (clear carry) afterwards.
void applyReverseSubtract(Compilation& c, const BytePart& part) {
    if (part.kind == BytePart::Register)
        emitOp(c, Op1::SubwfW, part.name);
    else
        emitOp(c, Op1::Sublw, std::to_string(part.value));
}

void subtractWord(Compilation& c, const Operation& o) {
    if (o.a.kind == kKindWord && sameRegister(c, o.a, o.d)) {
        return subtractWordInPlace(c, o.d, o.b);
    }
    Value left = o.a;
    if (left.kind == kKindBit) {
        // The subtraction takes its left operand from a register.
        left = {scratchWord(c, o), kKindByte, -1};
        bitToByte(c, o.a.name, o.a.bit, left.name);
    }
    loadW(c, lowPart(o.b));
    applyReverseSubtract(c, lowPart(left));
    emitOp(c, Op1::MovWF, o.d.name);
    std::string dh = highName(o.d.name);
    BytePart ha = highPart(left), hb = highPart(o.b);
    if (ha.isZero() && hb.isZero()) {
        emitOp(c, Op1::ClrF, dh);
        emitOp(c, Op0::Skpc);
        return emitPlainDecf(c, dh);
    }
    loadHighWithCarry(c, hb, Op0::Skpc);
    applyReverseSubtract(c, ha);
    emitOp(c, Op1::MovWF, dh);
}

} // namespace

void emitAdd(Compilation& c, const Operation& o) {
    if (emitBitWithConstant(c, o)) return;
    if (o.d.kind == kKindWord)
        addWord(c, o);
    else
        addByte(c, o);
}

void emitSubtract(Compilation& c, const Operation& o) {
    if (emitBitWithConstant(c, o)) return;
    if (o.d.kind == kKindWord)
        subtractWord(c, o);
    else
        subtractByte(c, o);
}

} // namespace zorvel
