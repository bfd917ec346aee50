// The reference the execution tests compare compiled expressions with: every
// operation on 16-bit words with wrap-around, the result truncated to the
// destination's kind (low byte for W and BYTE, bit 0 for a BIT).
#pragma once

#include <cstdint>
#include <string>

namespace zorvel::test {

enum class Kind { Byte, Num, Bit, Word, Wreg };

inline const char* const kOperatorTokens[12] = {"+",  "-", "/", "//", "*",  "**",
                                                "*/", "&", "|", "^",  "<<", ">>"};

inline int referenceOperation(int op, int a, int b) {
    uint32_t x = static_cast<uint32_t>(a) & 0xFFFF, y = static_cast<uint32_t>(b) & 0xFFFF;
    uint32_t v = 0;
    switch (op) {
    case 0: v = x + y; break;
    case 1: v = x - y; break;
    case 2: v = y == 0 ? 0xFFFF : x / y; break; // what the runtime division returns
    case 3: v = y == 0 ? x : x % y; break;
    case 4: v = x * y; break;
    case 5: v = static_cast<uint32_t>((uint64_t{x} * y) >> 16); break;
    case 6: v = static_cast<uint32_t>((uint64_t{x} * y) >> 8); break;
    case 7: v = x & y; break;
    case 8: v = x | y; break;
    case 9: v = x ^ y; break;
    case 10: v = y >= 16 ? 0 : x << y; break;
    case 11: v = y >= 16 ? 0 : x >> y; break;
    }
    return static_cast<int>(v & 0xFFFF);
}

inline int truncateTo(Kind kind, int value) {
    switch (kind) {
    case Kind::Word: return value & 0xFFFF;
    case Kind::Bit: return value & 1;
    default: return value & 255;
    }
}

// Whether the operator takes a BIT operand in that place.
inline bool takesBits(int op, Kind left, Kind right) {
    bool anyBit = left == Kind::Bit || right == Kind::Bit;
    if (op == 3 || op == 5 || op == 10 || op == 11) return !anyBit;
    if (op == 2) return right != Kind::Bit;
    return true;
}

} // namespace zorvel::test
