#include "compiler/codegen/compare.h"

#include "compiler/codegen/compare_members.h"
#include "compiler/codegen/emit.h"
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_marks.h"

#include <cassert>
#include <string>

namespace zorvel {

Relation mirrored(Relation r) {
    switch (r) {
    case Relation::GreaterEqual: return Relation::LessEqual;
    case Relation::LessEqual: return Relation::GreaterEqual;
    case Relation::Greater: return Relation::Less;
    case Relation::Less: return Relation::Greater;
    default: return r;
    }
}

Relation negated(Relation r) {
    switch (r) {
    case Relation::Equal: return Relation::NotEqual;
    case Relation::NotEqual: return Relation::Equal;
    case Relation::GreaterEqual: return Relation::Less;
    case Relation::Less: return Relation::GreaterEqual;
    case Relation::LessEqual: return Relation::Greater;
    case Relation::Greater: return Relation::LessEqual;
    }
    return r;
}

namespace compare {

long constantOf(const Value& v) {
    assert(v.kind == kKindNum && "only a constant has a value");
    return std::stol(v.name);
}

std::string highByte(const Value& v) {
    return v.name + "H";
}

bool holds(Relation r, long a, long b) {
    switch (r) {
    case Relation::Equal: return a == b;
    case Relation::NotEqual: return a != b;
    case Relation::GreaterEqual: return a >= b;
    case Relation::LessEqual: return a <= b;
    case Relation::Greater: return a > b;
    case Relation::Less: return a < b;
    }
    return false;
}

void emitDecided(Compilation& c, bool jump, std::string_view label) {
    if (jump) emitOp(c, Op1::FarGoto, label);
}

void jumpOnCarry(Compilation& c, int value, std::string_view label) {
    emitTestAndJump(c, value, "STATUS", kCarry, label);
}

void jumpOnZero(Compilation& c, int value, std::string_view label) {
    emitTestAndJump(c, value, "STATUS", kZero, label);
}

void subtract(Compilation& c, std::string_view a, std::string_view b) {
    emitOp(c, Op1::MovFW, b);
    emitOp(c, Op1::SubwfW, a);
}

std::string compareLabel(Compilation& c, std::string_view prefix) {
    return newLabel(c, prefix, LabelCounter::Compare);
}

namespace {

Test testOf(Relation r) {
    switch (r) {
    case Relation::Equal: return Test::Equal;
    case Relation::NotEqual: return Test::NotEqual;
    case Relation::GreaterEqual: return Test::GreaterEqual;
    case Relation::LessEqual: return Test::LessEqual;
    case Relation::Greater: return Test::Greater;
    case Relation::Less: return Test::Less;
    }
    return Test::Equal;
}

// The runtime routine returns with Z clear when the relation holds.
void callTest(Compilation& c, Relation r, TestEntry entry, std::string_view label) {
    needTest(c, testOf(r), entry);
    emitOp(c, Op1::FarCall, testLabel(testOf(r), entry));
    jumpOnZero(c, 0, label);
}

void constConst(Compilation& c, Relation r, const Value& l, const Value& rt,
                std::string_view label) {
    emitDecided(c, holds(r, constantOf(l), constantOf(rt)), label);
}

// A bit is 0 or 1: the constant decides which value (if any) makes it hold.
void bitConst(Compilation& c, Relation r, const Value& l, const Value& rt, std::string_view label) {
    long n = constantOf(rt);
    bool whenClear = holds(r, 0, n);
    bool whenSet = holds(r, 1, n);
    if (whenClear == whenSet) {
        emitDecided(c, whenSet, label);
        return;
    }
    emitClrwdt(c);
    emitTestAndJump(c, whenSet ? 1 : 0, l.name, l.bit, label);
}

// Word in PP0, the constant's high byte in PP1H and low byte in W.
void wordConst(Compilation& c, Relation r, const Value& l, const Value& rt,
               std::string_view label) {
    long n = constantOf(rt);
    if (n < 0 || n > 65535) {
        emitDecided(c, holds(r, 0, n), label); // every word value lies on the same side
        return;
    }
    int value = static_cast<int>(n);
    wordToWord(c, l.name, "PP0");
    constToByte(c, Constant{std::to_string(value >> 8), value >> 8}, "PP1H");
    constToW(c, Constant{std::to_string(value & 255), value & 255});
    callTest(c, r, TestEntry::Full, label);
}

// Word in PP0, the bit as 0 or 1 in W.
void wordBit(Compilation& c, Relation r, const Value& l, const Value& rt, std::string_view label) {
    wordToWord(c, l.name, "PP0");
    bitToW(c, rt.name, rt.bit);
    callTest(c, r, TestEntry::Word, label);
}

void swapped(Compilation& c, Relation r, const Value& l, const Value& rt, std::string_view label) {
    emitJumpIf(c, mirrored(r), rt, l, label);
}

// Rows: left kind; columns: right kind; both in the order BYTE, WORD, BIT, constant.
using Table = Member[4][4];

constexpr Table kEqualityTable = {
    {equalByteByte, equalByteWord, equalByteBit, equalByteConst},
    {swapped, equalWordWord, wordBit, wordConst},
    {swapped, swapped, equalBitBit, bitConst},
    {swapped, swapped, swapped, constConst},
};

constexpr Table kOrderTable = {
    {orderByteByte, orderByteWord, orderByteBit, orderByteConst},
    {swapped, orderWordWord, wordBit, wordConst},
    {swapped, swapped, orderBitBit, bitConst},
    {swapped, swapped, swapped, constConst},
};

int kindIndex(const Value& v) {
    switch (v.kind) {
    case kKindByte: return 0;
    case kKindWord: return 1;
    case kKindBit: return 2;
    case kKindNum: return 3;
    default: assert(false && "a comparison operand is a byte, word, bit or constant"); return 0;
    }
}

} // namespace
} // namespace compare

void emitJumpIf(Compilation& c, Relation r, const Value& left, const Value& right,
                std::string_view label) {
    bool equality = r == Relation::Equal || r == Relation::NotEqual;
    const compare::Table& table = equality ? compare::kEqualityTable : compare::kOrderTable;
    table[compare::kindIndex(left)][compare::kindIndex(right)](c, r, left, right, label);
}

} // namespace zorvel
