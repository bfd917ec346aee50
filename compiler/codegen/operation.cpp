#include "compiler/codegen/operation.h"

#include "compiler/driver/compilation.h"

#include <cassert>

namespace zorvel {

bool isRegister(const Value& v) {
    return v.kind == kKindByte || v.kind == kKindWord;
}

int constantOf(const Value& v) {
    assert(v.kind == kKindNum && "constantOf needs a NUM operand");
    return std::stoi(v.name);
}

std::string highName(std::string_view name) {
    return std::string(name) + "H";
}

bool sameRegister(const Compilation& c, const Value& x, const Value& y) {
    return isRegister(x) && isRegister(y) && sameAddress(c, x.name, y.name);
}

BytePart lowPart(const Value& v) {
    switch (v.kind) {
    case kKindNum: return {BytePart::Constant, "", constantOf(v) & 255, -1};
    case kKindBit: return {BytePart::Bit, v.name, 0, v.bit};
    default: return {BytePart::Register, v.name, 0, -1};
    }
}

BytePart highPart(const Value& v) {
    switch (v.kind) {
    case kKindNum: return {BytePart::Constant, "", (constantOf(v) >> 8) & 255, -1};
    case kKindWord: return {BytePart::Register, highName(v.name), 0, -1};
    default: return {BytePart::Constant, "", 0, -1};
    }
}

void loadW(Compilation& c, const BytePart& part) {
    switch (part.kind) {
    case BytePart::Register: byteToW(c, part.name); return;
    case BytePart::Bit: bitToW(c, part.name, part.bit); return;
    case BytePart::Constant: constToW(c, {std::to_string(part.value), part.value}); return;
    }
}

bool loadsFirst(const BytePart& x, const BytePart& y) {
    if (x.kind == BytePart::Bit && y.kind != BytePart::Bit) return y.kind == BytePart::Constant;
    if (y.kind == BytePart::Bit) return x.kind != BytePart::Constant;
    return y.kind != BytePart::Constant || x.kind == BytePart::Constant;
}

void storeW(Compilation& c, const Value& d) {
    switch (d.kind) {
    case kKindWreg: return;
    case kKindWord: wToWord(c, d.name); return;
    case kKindBit: emitWregBit(c, d.name, d.bit); return;
    default: wToByte(c, d.name); return;
    }
}

void loadWord(Compilation& c, const Value& v, std::string_view reg) {
    switch (v.kind) {
    case kKindNum: constToWord(c, constantOf(v), reg); return;
    case kKindBit: bitToWord(c, v.name, v.bit, reg); return;
    case kKindWord: wordToWord(c, v.name, reg); return;
    default: byteToWord(c, v.name, reg); return;
    }
}

void storeWord(Compilation& c, std::string_view reg, const Value& d) {
    switch (d.kind) {
    case kKindWreg: byteToW(c, reg); return;
    case kKindWord: wordToWord(c, reg, d.name); return;
    case kKindBit: wordToBit(c, reg, d.name, d.bit); return;
    default: wordToByte(c, reg, d.name); return;
    }
}

void emitPlainIncf(Compilation& c, std::string_view reg) {
    c.emit("\t Incf " + std::string(reg) + ",F");
}

void emitPlainDecf(Compilation& c, std::string_view reg) {
    c.emit("\t Decf " + std::string(reg) + ",F");
}

std::string scratchWord(const Compilation& c, const Operation& o) {
    for (const char* name : {"PP0", "PP1", "PP2"}) {
        bool clash = false;
        for (const Value* v : {&o.a, &o.b, &o.d}) {
            if (v->kind == kKindNum || v->kind == kKindWreg) continue;
            clash =
                clash || sameAddress(c, v->name, name) || sameAddress(c, v->name, highName(name));
        }
        if (!clash) return name;
    }
    assert(false && "three operands cannot occupy three system words");
    return "PP0";
}

namespace {

enum class BitEffect { Copy, Invert, Set, Clear };

BitEffect bitEffect(int op, bool odd) {
    switch (op) {
    case kOpOr: return odd ? BitEffect::Set : BitEffect::Copy;
    case kOpAnd: return odd ? BitEffect::Copy : BitEffect::Clear;
    default: return odd ? BitEffect::Invert : BitEffect::Copy; // + - ^
    }
}

// The result bit becomes the inverse of the source bit, through the DC flag.
void emitInvertedBit(Compilation& c, const Value& from, const Value& d) {
    emitOp(c, Op0::Clrdc);
    emitBit(c, BitOp::BtfssBanked, from.name, from.bit);
    emitOp(c, Op0::Setdc);
    emitFlagToBit(c, Flag::DigitCarry, d.name, d.bit);
}

} // namespace

bool emitBitWithConstant(Compilation& c, const Operation& o) {
    if (o.d.kind != kKindBit) return false;
    bool leftBit = o.a.kind == kKindBit && o.b.kind == kKindNum;
    bool rightBit = o.b.kind == kKindBit && o.a.kind == kKindNum;
    if (!leftBit && !rightBit) return false;
    const Value& bit = leftBit ? o.a : o.b;
    const Value& n = leftBit ? o.b : o.a;
    switch (bitEffect(o.op, (constantOf(n) & 1) != 0)) {
    case BitEffect::Copy:
        if (bit.name != o.d.name || bit.bit != o.d.bit)
            emitBitBit(c, bit.name, bit.bit, o.d.name, o.d.bit);
        break;
    case BitEffect::Invert: emitInvertedBit(c, bit, o.d); break;
    case BitEffect::Set: emitBit(c, BitOp::BsfBanked, o.d.name, o.d.bit); break;
    case BitEffect::Clear: emitBit(c, BitOp::BcfBanked, o.d.name, o.d.bit); break;
    }
    return true;
}

} // namespace zorvel
