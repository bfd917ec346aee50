// "&", "|" and "^": byte by byte, in place when the result is one of the
// operands, with the constant and bit forms where they save a load.
#include "compiler/codegen/operation.h"
#include "compiler/driver/compilation.h"

namespace zorvel {
namespace {

struct LogicCodes {
    int op;
    Op1 toW;     // W = W op register
    Op1 inPlace; // register = W op register
    Op1 literal; // W = W op literal
};

constexpr LogicCodes kAnd{kOpAnd, Op1::AndwfW, Op1::AndwfF, Op1::Andlw};
constexpr LogicCodes kOr{kOpOr, Op1::IorwfW, Op1::IorwfF, Op1::Iorlw};
constexpr LogicCodes kXor{kOpXor, Op1::XorwfW, Op1::XorwfF, Op1::Xorlw};

// W = W op part.
void applyPart(Compilation& c, const LogicCodes& k, const BytePart& part) {
    switch (part.kind) {
    case BytePart::Register: emitOp(c, k.toW, part.name); return;
    case BytePart::Constant: emitOp(c, k.literal, std::to_string(part.value)); return;
    case BytePart::Bit:
        if (k.op == kOpAnd) {
            emitOp(c, Op1::Andlw, "1");
            emitBit(c, BitOp::BtfssBanked, part.name, part.bit);
            emitOp(c, Op0::Clrw);
            return;
        }
        emitBit(c, BitOp::BtfscBanked, part.name, part.bit);
        emitOp(c, k.literal, "1");
        return;
    }
}

// W = x op y.
void computeByte(Compilation& c, const LogicCodes& k, const BytePart& x, const BytePart& y) {
    bool xFirst = loadsFirst(x, y);
    loadW(c, xFirst ? x : y);
    applyPart(c, k, xFirst ? y : x);
}

// The high byte of a word result when one of the high parts is zero.
void emitHighWithZero(Compilation& c, const LogicCodes& k, const BytePart& other,
                      std::string_view dh) {
    if (k.op == kOpAnd || other.isZero()) {
        emitOp(c, Op1::ClrF, dh);
        return;
    }
    if (other.kind == BytePart::Register)
        byteToByte(c, other.name, dh);
    else
        constToByte(c, {std::to_string(other.value), other.value}, dh);
}

// reg = reg op other, for a word register; `other` goes through W.
void emitWordInPlace(Compilation& c, const LogicCodes& k, const Value& reg, const Value& other) {
    loadW(c, lowPart(other));
    emitOp(c, k.inPlace, reg.name);
    BytePart high = highPart(other);
    std::string rh = highName(reg.name);
    if (high.isZero()) {
        if (k.op == kOpAnd) emitOp(c, Op1::ClrF, rh);
        return;
    }
    loadW(c, high);
    emitOp(c, k.inPlace, rh);
}

void emitWord(Compilation& c, const LogicCodes& k, const Operation& o) {
    if (o.a.kind == kKindWord && sameRegister(c, o.a, o.d)) return emitWordInPlace(c, k, o.d, o.b);
    if (o.b.kind == kKindWord && sameRegister(c, o.b, o.d)) return emitWordInPlace(c, k, o.d, o.a);
    computeByte(c, k, lowPart(o.a), lowPart(o.b));
    emitOp(c, Op1::MovWF, o.d.name);
    BytePart ha = highPart(o.a), hb = highPart(o.b);
    std::string dh = highName(o.d.name);
    if (ha.isZero()) return emitHighWithZero(c, k, hb, dh);
    if (hb.isZero()) return emitHighWithZero(c, k, ha, dh);
    computeByte(c, k, ha, hb);
    emitOp(c, Op1::MovWF, dh);
}

void emitByte(Compilation& c, const LogicCodes& k, const Operation& o) {
    if (o.d.kind == kKindByte) {
        for (const auto& [reg, other] : {std::pair{&o.a, &o.b}, std::pair{&o.b, &o.a}}) {
            if (!sameRegister(c, *reg, o.d)) continue;
            loadW(c, lowPart(*other));
            emitOp(c, k.inPlace, o.d.name);
            return;
        }
    }
    computeByte(c, k, lowPart(o.a), lowPart(o.b));
    storeW(c, o.d);
}

void emitLogic(Compilation& c, const LogicCodes& k, const Operation& o) {
    if (emitBitWithConstant(c, o)) return;
    if (o.d.kind == kKindWord)
        emitWord(c, k, o);
    else
        emitByte(c, k, o);
}

} // namespace

void emitAnd(Compilation& c, const Operation& o) {
    emitLogic(c, kAnd, o);
}

void emitOr(Compilation& c, const Operation& o) {
    emitLogic(c, kOr, o);
}

void emitXor(Compilation& c, const Operation& o) {
    emitLogic(c, kXor, o);
}

} // namespace zorvel
