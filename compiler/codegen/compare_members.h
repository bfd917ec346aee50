// The pieces the comparison jump generators share, and the members of each
// relation family. A member handles one pair of operand kinds; the table in
// compare.cpp picks it by the kinds of the left and right operand.
#pragma once

#include "compiler/codegen/compare.h"

#include <string>
#include <string_view>

namespace zorvel::compare {

using Member = void (*)(Compilation& c, Relation r, const Value& left, const Value& right,
                        std::string_view label);

// STATUS bits the jumps test.
constexpr int kCarry = 0;
constexpr int kZero = 2;

long constantOf(const Value& v);
std::string highByte(const Value& v); // "x" gives "xH"
bool holds(Relation r, long a, long b);

// An unconditional jump when `jump`, else nothing: a comparison decided now.
void emitDecided(Compilation& c, bool jump, std::string_view label);
void jumpOnCarry(Compilation& c, int value, std::string_view label);
void jumpOnZero(Compilation& c, int value, std::string_view label);
// W = a - b, carry set when a >= b, zero set when a == b.
void subtract(Compilation& c, std::string_view a, std::string_view b);
// A new skip target from the compare counter ("CP@LB" or "P@LB").
std::string compareLabel(Compilation& c, std::string_view prefix);

// Equal and not equal (compare_equal.cpp).
void equalByteByte(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label);
void equalByteConst(Compilation& c, Relation r, const Value& l, const Value& rt,
                    std::string_view label);
void equalByteBit(Compilation& c, Relation r, const Value& l, const Value& rt,
                  std::string_view label);
void equalByteWord(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label);
void equalWordWord(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label);
void equalBitBit(Compilation& c, Relation r, const Value& l, const Value& rt,
                 std::string_view label);

// Greater or equal, less or equal, greater, less (compare_order.cpp).
void orderByteByte(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label);
void orderByteConst(Compilation& c, Relation r, const Value& l, const Value& rt,
                    std::string_view label);
void orderByteBit(Compilation& c, Relation r, const Value& l, const Value& rt,
                  std::string_view label);
void orderByteWord(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label);
void orderWordWord(Compilation& c, Relation r, const Value& l, const Value& rt,
                   std::string_view label);
void orderBitBit(Compilation& c, Relation r, const Value& l, const Value& rt,
                 std::string_view label);

} // namespace zorvel::compare
