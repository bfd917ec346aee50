#include "compiler/codegen/emit.h"

#include "compiler/driver/compilation.h"

#include <array>
#include <string>

namespace zorvel {
namespace {

constexpr std::array<std::string_view, 17> kOp0Text = {
    "\tOption", "\tRetfie", "\tNop",  "\tClrw",  "\tClrc", "\tSetc",
    "\tClrdc",  "\tSetdc",  "\tClrz", "\tSetz",  "\tSkpc", "\tSkpnc",
    "\tSkpdc",  "\tSkpndc", "\tSkpz", "\tSkpnz", "\tR@B",
};

constexpr std::array<std::string_view, 36> kOp1Text = {
    "\tMovlw ",    "\tAddlw ",   "\tSublw ",   "\tAndlw ",   "\tIorlw ",   "\tXorlw ",
    "\tRetlw ",    "\tAddwf@W ", "\tSubwf@W ", "\tAndwf@W ", "\tIorwf@W ", "\tXorwf@W ",
    "\tComf@W ",   "\tIncf@W ",  "\tDecf@W ",  "\tRrf@W ",   "\tRlf@W ",   "\tAddwf@F ",
    "\tSubwf@F ",  "\tAndwf@F ", "\tIorwf@F ", "\tXorwf@F ", "\tIncf@F ",  "\tDecf@F ",
    "\tIncfsz@F ", "\tRrf@F ",   "\tRlf@F ",   "\tClr@F ",   "\tMov@fw ",  "\tMov@wf ",
    "\tMov@ff ",   "\tS@B ",     "\tGoto ",    "\tF@G ",     "\tF@C ",     "\tTris ",
};

constexpr std::array<std::string_view, 8> kBitText = {
    "\tBtfsc ", "\tBsf ", "\tBcf ", "\tBtf@ss ", "\tBtf@sc ", "\tBs@f ", "\tBc@f ", "\tBtfss ",
};

std::string join(std::initializer_list<std::string_view> parts) {
    std::string s;
    for (std::string_view p : parts)
        s += p;
    return s;
}

std::string highName(std::string_view name) {
    return std::string(name) + "H";
}

int& counterOf(Compilation& c, LabelCounter counter) {
    switch (counter) {
    case LabelCounter::Compare: return c.counters.compare;
    case LabelCounter::Step: return c.counters.step;
    default: return c.counters.block;
    }
}

} // namespace

void emitOp(Compilation& c, Op0 op) {
    c.emit(std::string(kOp0Text[static_cast<size_t>(op)]));
}

void emitOp(Compilation& c, Op1 op, std::string_view operand) {
    c.emit(join({kOp1Text[static_cast<size_t>(op)], operand}));
}

void emitBit(Compilation& c, BitOp op, std::string_view reg, int bit) {
    c.emit(join({kBitText[static_cast<size_t>(op)], reg, ",", std::to_string(bit)}));
}

void emitBitText(Compilation& c, BitOp op, std::string_view operand) {
    c.emit(join({kBitText[static_cast<size_t>(op)], operand}));
}

void emitClrwdt(Compilation& c) {
    if (c.watchdogOn()) c.emit("\tClrwdt");
}

void emitReturn(Compilation& c) {
    emitOp(c, Op0::BankReset);
    c.emit("\tReturn");
}

void emitMovLF(Compilation& c, std::string_view literal, std::string_view reg) {
    c.emit(join({"\tMov@LF ", literal, ",", reg}));
}

void emitWregBit(Compilation& c, std::string_view reg, int bit) {
    c.emit(join({"\tWreg_Bit ", reg, ",", std::to_string(bit)}));
}

void emitBitBit(Compilation& c, std::string_view from, int fromBit, std::string_view to,
                int toBit) {
    c.emit(join(
        {"\tBit_Bit ", from, ",", std::to_string(fromBit), ",", to, ",", std::to_string(toBit)}));
}

void emitByteBit(Compilation& c, std::string_view from, std::string_view to, int bit) {
    c.emit(join({"\tByte_Bit ", from, ",", to, ",", std::to_string(bit)}));
}

void emitFlagToBit(Compilation& c, Flag flag, std::string_view reg, int bit) {
    bool carry = flag == Flag::Carry;
    emitOp(c, Op1::SelectBank, reg);
    emitOp(c, carry ? Op0::Skpnc : Op0::Skpndc);
    emitBit(c, BitOp::Bsf, reg, bit);
    emitOp(c, carry ? Op0::Skpc : Op0::Skpdc);
    emitBit(c, BitOp::Bcf, reg, bit);
}

void emitTestAndJump(Compilation& c, int value, std::string_view reg, int bit,
                     std::string_view label) {
    c.emit(join({"\tT@G ", std::to_string(value), ",", reg, ",", std::to_string(bit), ",", label}));
}

void emitLabel(Compilation& c, std::string_view label) {
    if (std::optional<size_t> header = openMacroHeader(c)) {
        size_t at = *header + 1;
        while (at < c.asmlist.size() && c.asmlist[at].rfind("\tLocal ", 0) == 0)
            ++at;
        c.asmlist.insert(c.asmlist.begin() + static_cast<std::ptrdiff_t>(at),
                         join({"\tLocal ", label}));
    }
    c.emit(join({label, " R@B"}));
}

std::optional<size_t> openMacroHeader(const Compilation& c) {
    const std::string& macro = c.names.openMacro;
    if (c.ctx.pass != 2 || macro.empty()) return std::nullopt;
    const std::string header = macro + "\tMacro ";
    for (size_t i = c.asmlist.size(); i-- > 0;)
        if (c.asmlist[i].rfind(header, 0) == 0) return i;
    return std::nullopt;
}

std::string newLabel(Compilation& c, std::string_view prefix, LabelCounter counter) {
    return std::string(prefix) + std::to_string(++counterOf(c, counter));
}

void constToW(Compilation& c, const Constant& n) {
    if (n.value == 0)
        emitOp(c, Op0::Clrw);
    else
        emitOp(c, Op1::Movlw, n.text);
}

void constToByte(Compilation& c, const Constant& n, std::string_view y) {
    if (n.value == 0) {
        emitOp(c, Op1::ClrF, y);
        return;
    }
    emitOp(c, Op1::Movlw, n.text);
    emitOp(c, Op1::MovWF, y);
}

void constToBit(Compilation& c, const Constant& n, std::string_view y, int bit) {
    emitBit(c, (n.value & 1) ? BitOp::BsfBanked : BitOp::BcfBanked, y, bit);
}

void constToWord(Compilation& c, int value, std::string_view y) {
    int low = value & 255;
    int high = value >> 8; // arithmetic shift, not masked
    constToByte(c, {std::to_string(low), low}, y);
    constToByte(c, {std::to_string(high), high}, highName(y));
}

void wToByte(Compilation& c, std::string_view y) {
    emitOp(c, Op1::MovWF, y);
}

void wToWord(Compilation& c, std::string_view y) {
    emitOp(c, Op1::MovWF, y);
    emitOp(c, Op1::ClrF, highName(y));
}

void byteToW(Compilation& c, std::string_view x) {
    emitOp(c, Op1::MovFW, x);
}

void bitToW(Compilation& c, std::string_view x, int bit) {
    emitOp(c, Op0::Clrw);
    emitBit(c, BitOp::BtfscBanked, x, bit);
    emitOp(c, Op1::Movlw, "1");
}

void bitToByte(Compilation& c, std::string_view x, int bit, std::string_view y) {
    bitToW(c, x, bit);
    wToByte(c, y);
}

void bitToWord(Compilation& c, std::string_view x, int bit, std::string_view y) {
    bitToW(c, x, bit);
    wToWord(c, y);
}

void byteToByte(Compilation& c, std::string_view x, std::string_view y) {
    if (sameAddress(c, x, y)) {
        emitOp(c, Op1::MovFF, x);
        return;
    }
    emitOp(c, Op1::MovFW, x);
    emitOp(c, Op1::MovWF, y);
}

void byteToWord(Compilation& c, std::string_view x, std::string_view y) {
    emitOp(c, Op1::MovFW, x);
    emitOp(c, Op1::MovWF, y);
    emitOp(c, Op1::ClrF, highName(y));
}

void wordToByte(Compilation& c, std::string_view x, std::string_view y) {
    byteToByte(c, x, y);
}

void wordToBit(Compilation& c, std::string_view x, std::string_view y, int bit) {
    emitByteBit(c, x, y, bit);
}

void wordToWord(Compilation& c, std::string_view x, std::string_view y) {
    if (sameAddress(c, x, y)) return;
    byteToByte(c, x, y);
    byteToByte(c, highName(x), highName(y));
}

void wAndWordToWord(Compilation& c, std::string_view x, std::string_view y) {
    emitOp(c, Op1::MovWF, y);
    byteToByte(c, highName(x), highName(y));
}

void wordToWordLowInW(Compilation& c, std::string_view x, std::string_view y) {
    byteToByte(c, highName(x), highName(y));
    emitOp(c, Op1::MovFW, x);
}

bool sameAddress(const Compilation& c, std::string_view x, std::string_view y) {
    const SymbolEntry* a = c.symbols.find(x);
    const SymbolEntry* b = c.symbols.find(y);
    if (!a || !b || a->kind == kKindNum || b->kind == kKindNum) return x == y;
    return a->address == b->address;
}

} // namespace zorvel
