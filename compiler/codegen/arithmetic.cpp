// The dispatch of binary operations by type-pair code and operator, the
// constant folding and the plain transfers of one operand into a result.
#include "compiler/codegen/arithmetic.h"

#include "compiler/codegen/operation.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"

#include <array>
#include <cassert>
#include <cstdint>

namespace zorvel {
namespace {

constexpr std::array<std::string_view, kOperatorCount> kTokens = {"+",  "-", "/", "//", "*",  "**",
                                                                  "*/", "&", "|", "^",  "<<", ">>"};

using Generator = void (*)(Compilation&, const Operation&);

constexpr std::array<Generator, kOperatorCount> kGenerators = {
    emitAdd,      emitSubtract,     emitDivide,         emitRemainder,
    emitMultiply, emitMultiplyHigh, emitMultiplyMiddle, emitAnd,
    emitOr,       emitXor,          emitShiftLeft,      emitShiftRight};

constexpr std::array<std::string_view, 4> kOperandTags = {"BT", "NM", "BI", "WD"};
constexpr std::array<std::string_view, 4> kResultTags = {"WR", "BT", "BI", "WD"};

std::string_view tagOf(int kind) {
    switch (kind) {
    case kKindByte:
    case kKindByteArray: return "BT";
    case kKindWord:
    case kKindWordArray: return "WD";
    case kKindBit: return "BI";
    case kKindNum: return "NM";
    case kKindWreg: return "WR";
    default: return "";
    }
}

// The place of a code among the 64, in dispatch order; -1 when absent.
int pairIndex(std::string_view code) {
    int index = 0;
    for (std::string_view left : kOperandTags)
        for (std::string_view right : kOperandTags)
            for (std::string_view result : kResultTags) {
                if (code.substr(0, 2) == left && code.substr(2, 2) == right &&
                    code.substr(4, 2) == result)
                    return index;
                ++index;
            }
    return -1;
}

// The operation name of the diagnostic when the operator does not take a
// BIT operand in that place; empty when it does.
std::string_view refusedBit(int op, const Value& left, const Value& right) {
    bool anyBit = left.kind == kKindBit || right.kind == kKindBit;
    switch (op) {
    case kOpMultiplyHigh: return anyBit ? "MULTIPLY HIGH" : "";
    case kOpRemainder: return anyBit ? "MODULUS" : "";
    case kOpShiftLeft: return anyBit ? "SHIFT LEFT" : "";
    case kOpShiftRight: return anyBit ? "SHIFT RIGHT" : "";
    case kOpDivide: return right.kind == kKindBit ? "DIVIDE" : "";
    default: return "";
    }
}

// Operands of the array kinds are their first element or the element itself.
Value plain(Value v) {
    if (v.kind == kKindByteArray) v.kind = kKindByte;
    if (v.kind == kKindWordArray) v.kind = kKindWord;
    return v;
}

} // namespace

std::string_view operatorToken(int opIndex) {
    assert(opIndex >= 0 && opIndex < kOperatorCount && "operator index out of range");
    return kTokens[opIndex];
}

std::string typePairCode(const Value& left, const Value& right, const Value& result) {
    std::string code;
    code += tagOf(left.kind);
    code += tagOf(right.kind);
    code += tagOf(result.kind);
    return code;
}

bool emitOperation(Compilation& c, int opIndex, const Value& left, const Value& right,
                   const Value& result) {
    if (opIndex < 0 || opIndex >= kOperatorCount) return false;
    Operation o{opIndex, plain(left), plain(right), plain(result)};
    if (pairIndex(typePairCode(o.a, o.b, o.d)) < 0) {
        reportError(c, kErrText,
                    "Operands of this kind cannot be combined with '" +
                        std::string(kTokens[opIndex]) + "'");
        return false;
    }
    if (std::string_view name = refusedBit(opIndex, o.a, o.b); !name.empty()) {
        reportError(c, kErrBitNotSupported, name);
        return false;
    }
    if (o.a.kind == kKindNum && o.b.kind == kKindNum) {
        std::optional<int> v = foldOperation(opIndex, constantOf(o.a), constantOf(o.b));
        if (!v) {
            reportError(c, kErrText, "Division by zero in constant expression");
            return false;
        }
        emitConstantResult(c, *v, o.d);
        return true;
    }
    kGenerators[opIndex](c, o);
    return true;
}

std::optional<int> foldOperation(int opIndex, int left, int right) {
    int64_t a = left & 0xFFFF, b = right & 0xFFFF;
    int64_t v = 0;
    switch (opIndex) {
    case kOpAdd: v = a + b; break;
    case kOpSubtract: v = a - b; break;
    case kOpDivide:
    case kOpRemainder:
        if (b == 0) return std::nullopt;
        v = opIndex == kOpDivide ? a / b : a % b;
        break;
    case kOpMultiply: v = a * b; break;
    case kOpMultiplyHigh: v = (a * b) >> 16; break;
    case kOpMultiplyMiddle: v = (a * b) >> 8; break;
    case kOpAnd: v = a & b; break;
    case kOpOr: v = a | b; break;
    case kOpXor: v = a ^ b; break;
    case kOpShiftLeft: v = b >= 16 ? 0 : a << b; break;
    case kOpShiftRight: v = b >= 16 ? 0 : a >> b; break;
    default: return std::nullopt;
    }
    return static_cast<int>(v & 0xFFFF);
}

void emitConstantResult(Compilation& c, int value, const Value& result) {
    int low = value & 255;
    Constant n{std::to_string(low), low};
    switch (result.kind) {
    case kKindWreg: constToW(c, n); return;
    case kKindBit: constToBit(c, n, result.name, result.bit); return;
    case kKindWord:
    case kKindWordArray: constToWord(c, value, result.name); return;
    default: constToByte(c, n, result.name); return;
    }
}

namespace {

void transferFromW(Compilation& c, const Value& to) {
    switch (to.kind) {
    case kKindWreg: return;
    case kKindBit: emitWregBit(c, to.name, to.bit); return;
    case kKindWord: wToWord(c, to.name); return;
    default: wToByte(c, to.name); return;
    }
}

void transferFromBit(Compilation& c, const Value& from, const Value& to) {
    switch (to.kind) {
    case kKindWreg: bitToW(c, from.name, from.bit); return;
    case kKindBit:
        if (from.name != to.name || from.bit != to.bit)
            emitBitBit(c, from.name, from.bit, to.name, to.bit);
        return;
    case kKindWord: bitToWord(c, from.name, from.bit, to.name); return;
    default: bitToByte(c, from.name, from.bit, to.name); return;
    }
}

void transferFromRegister(Compilation& c, const Value& from, const Value& to) {
    bool word = from.kind == kKindWord;
    switch (to.kind) {
    case kKindWreg: byteToW(c, from.name); return;
    case kKindBit: wordToBit(c, from.name, to.name, to.bit); return; // bit 0 of the low byte
    case kKindWord:
        word ? wordToWord(c, from.name, to.name) : byteToWord(c, from.name, to.name);
        return;
    default: byteToByte(c, from.name, to.name); return;
    }
}

} // namespace

void emitTransfer(Compilation& c, const Value& from, const Value& to) {
    Value source = plain(from), target = plain(to);
    switch (source.kind) {
    case kKindNum: emitConstantResult(c, constantOf(source), target); return;
    case kKindWreg: transferFromW(c, target); return;
    case kKindBit: transferFromBit(c, source, target); return;
    default: transferFromRegister(c, source, target); return;
    }
}

} // namespace zorvel
