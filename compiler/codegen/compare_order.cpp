// Greater or equal, less or equal, greater and less. After W = a - b the
// carry is set when a >= b: "a >= b" jumps on carry set, "a < b" on carry
// clear; less-or-equal and greater subtract the other way round.
#include "compiler/codegen/compare_members.h"
#include "compiler/codegen/emit.h"
#include "compiler/driver/compilation.h"

#include <cassert>

namespace zorvel::compare {
namespace {

[[maybe_unused]] bool isOrder(Relation r) {
    return r == Relation::GreaterEqual || r == Relation::LessEqual || r == Relation::Greater ||
           r == Relation::Less;
}

// True when the relation reads "a >= b" for some order of the operands,
// false when it reads "a < b".
bool atLeast(Relation r) {
    assert(isOrder(r) && "an order relation");
    return r == Relation::GreaterEqual || r == Relation::LessEqual;
}

// True when the right operand is the "a" of "a >= b" / "a < b".
bool rightFirst(Relation r) {
    return r == Relation::LessEqual || r == Relation::Greater;
}

// Subtracts the low bytes in the relation's order and jumps on the carry.
void carryTest(Compilation& c, Relation r, const Value& l, const Value& rt,
               std::string_view label) {
    const Value& a = rightFirst(r) ? rt : l;
    const Value& b = rightFirst(r) ? l : rt;
    subtract(c, a.name, b.name);
    jumpOnCarry(c, atLeast(r) ? 1 : 0, label);
}

} // namespace

void orderByteByte(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label) {
    emitClrwdt(c);
    carryTest(c, r, l, rt, label);
}

// L >= k or L < k with k = n (>=, <) or n + 1 (>, <=); a k above 255 is
// decided now.
void orderByteConst(Compilation& c, Relation r, const Value& l, const Value& rt,
                    std::string_view label) {
    long n = constantOf(rt);
    if (n < 0) {
        emitDecided(c, holds(r, 0, n), label);
        return;
    }
    bool upward = r == Relation::GreaterEqual || r == Relation::Greater;
    long k = r == Relation::GreaterEqual || r == Relation::Less ? n : n + 1;
    if (k > 255) {
        emitDecided(c, !upward, label);
        return;
    }
    emitClrwdt(c);
    constToW(c, Constant{std::to_string(k), static_cast<int>(k)});
    emitOp(c, Op1::SubwfW, l.name);
    jumpOnCarry(c, upward ? 1 : 0, label);
}

// >= and <: W = byte - bit with the carry telling whether it borrowed.
// > and <=: W = bit + 1, compared with the byte.
void orderByteBit(Compilation& c, Relation r, const Value& l, const Value& rt,
                  std::string_view label) {
    emitClrwdt(c);
    if (r == Relation::GreaterEqual || r == Relation::Less) {
        emitOp(c, Op0::Setc);
        emitOp(c, Op1::MovFW, l.name);
        emitBit(c, BitOp::BtfscBanked, rt.name, rt.bit);
        emitOp(c, Op1::Addlw, "-1");
        jumpOnCarry(c, r == Relation::GreaterEqual ? 1 : 0, label);
        return;
    }
    emitOp(c, Op1::Movlw, "1");
    emitBit(c, BitOp::BtfscBanked, rt.name, rt.bit);
    emitOp(c, Op1::Movlw, "2");
    emitOp(c, Op1::SubwfW, l.name);
    jumpOnCarry(c, r == Relation::Greater ? 1 : 0, label);
}

// A word whose high byte is not zero is greater than every byte; otherwise
// the low bytes decide.
void orderByteWord(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label) {
    bool holdsWhenHigh = r == Relation::LessEqual || r == Relation::Less;
    std::string skip = holdsWhenHigh ? std::string() : compareLabel(c, "CP@LB");
    emitClrwdt(c);
    emitOp(c, Op1::MovFF, highByte(rt));
    jumpOnZero(c, 0, holdsWhenHigh ? label : std::string_view(skip));
    carryTest(c, r, l, rt, label);
    if (!holdsWhenHigh) emitLabel(c, skip);
}

// High bytes first; when they are equal the low bytes decide.
void orderWordWord(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label) {
    const Value& a = rightFirst(r) ? rt : l;
    const Value& b = rightFirst(r) ? l : rt;
    bool up = atLeast(r);
    std::string skip = compareLabel(c, "CP@LB");
    emitClrwdt(c);
    subtract(c, highByte(a), highByte(b));
    jumpOnCarry(c, 0, up ? std::string_view(skip) : label); // aH < bH
    subtract(c, highByte(a), highByte(b));
    jumpOnZero(c, 0, up ? label : std::string_view(skip)); // aH > bH
    subtract(c, a.name, b.name);
    jumpOnCarry(c, up ? 1 : 0, label);
    emitLabel(c, skip);
}

// >= and <= hold unless one pattern of the two bits; > and < need both bits
// tested, the first one skipping to a compare label.
void orderBitBit(Compilation& c, Relation r, const Value& l, const Value& rt,
                 std::string_view label) {
    emitClrwdt(c);
    if (r == Relation::GreaterEqual || r == Relation::LessEqual) {
        int leftHolds = r == Relation::GreaterEqual ? 1 : 0;
        emitTestAndJump(c, leftHolds, l.name, l.bit, label);
        emitTestAndJump(c, 1 - leftHolds, rt.name, rt.bit, label);
        return;
    }
    int leftNeeded = r == Relation::Greater ? 1 : 0;
    std::string skip = compareLabel(c, "P@LB");
    emitTestAndJump(c, 1 - leftNeeded, l.name, l.bit, skip);
    emitTestAndJump(c, 1 - leftNeeded, rt.name, rt.bit, label);
    emitLabel(c, skip);
}

} // namespace zorvel::compare
