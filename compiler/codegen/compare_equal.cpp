// Equal and not equal. Every member ends in a test of the Z flag: set after
// a subtraction of equal values, so "equal" jumps on Z set and "not equal"
// on Z clear.
#include "compiler/codegen/compare_members.h"
#include "compiler/codegen/emit.h"
#include "compiler/driver/compilation.h"

#include <cassert>

namespace zorvel::compare {
namespace {

// The Z value on which the jump is taken.
int zeroWhenHolds(Relation r) {
    assert((r == Relation::Equal || r == Relation::NotEqual) && "an equality relation");
    return r == Relation::Equal ? 1 : 0;
}

// Finishes a two-part test once the high parts have set Z (set when they
// match): a mismatch decides at once, else the low parts `x` - `y` decide.
void lowPartsDecide(Compilation& c, Relation r, std::string_view x, std::string_view y,
                    std::string_view label) {
    bool equal = r == Relation::Equal;
    std::string skip = equal ? compareLabel(c, "CP@LB") : std::string();
    jumpOnZero(c, 0, equal ? std::string_view(skip) : label);
    subtract(c, x, y);
    jumpOnZero(c, zeroWhenHolds(r), label);
    if (equal) emitLabel(c, skip);
}

} // namespace

void equalByteByte(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label) {
    emitClrwdt(c);
    subtract(c, rt.name, l.name);
    jumpOnZero(c, zeroWhenHolds(r), label);
}

// 0 is tested by moving the byte onto itself, 255 by incrementing it into W;
// a constant no byte can hold is decided now.
void equalByteConst(Compilation& c, Relation r, const Value& l, const Value& rt,
                    std::string_view label) {
    long n = constantOf(rt);
    if (n < 0 || n > 255) {
        emitDecided(c, r == Relation::NotEqual, label);
        return;
    }
    emitClrwdt(c);
    if (n == 0) {
        emitOp(c, Op1::MovFF, l.name);
    } else if (n == 255) {
        emitOp(c, Op1::IncfW, l.name);
    } else {
        constToW(c, Constant{rt.name, static_cast<int>(n)});
        emitOp(c, Op1::SubwfW, l.name);
    }
    jumpOnZero(c, zeroWhenHolds(r), label);
}

// W = byte, or 1 - byte when the bit is set: zero exactly when they match.
void equalByteBit(Compilation& c, Relation r, const Value& l, const Value& rt,
                  std::string_view label) {
    emitClrwdt(c);
    emitOp(c, Op1::MovFW, l.name);
    emitBit(c, BitOp::BtfscBanked, rt.name, rt.bit);
    emitOp(c, Op1::Sublw, "1");
    jumpOnZero(c, zeroWhenHolds(r), label);
}

// A word whose high byte is not zero differs from every byte.
void equalByteWord(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label) {
    emitClrwdt(c);
    emitOp(c, Op1::MovFF, highByte(rt));
    lowPartsDecide(c, r, l.name, rt.name, label);
}

// High bytes first: when they differ the words differ.
void equalWordWord(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label) {
    emitClrwdt(c);
    subtract(c, highByte(rt), highByte(l));
    lowPartsDecide(c, r, rt.name, l.name, label);
}

// W = left bit, then 1 - W when the right bit is set: zero when they match.
void equalBitBit(Compilation& c, Relation r, const Value& l, const Value& rt,
                 std::string_view label) {
    emitClrwdt(c);
    emitOp(c, Op0::Clrw);
    emitBit(c, BitOp::BtfscBanked, l.name, l.bit);
    emitOp(c, Op1::Addlw, "1");
    emitBit(c, BitOp::BtfscBanked, rt.name, rt.bit);
    emitOp(c, Op1::Sublw, "1");
    jumpOnZero(c, zeroWhenHolds(r), label);
}

} // namespace zorvel::compare
