// The emission layer: one function per kind of output line, the label-line
// writer and generated labels, and the transfer helpers that move a value
// between constants, W, bytes, words and bits. Generators write only through
// these, so the bank tracker of the library's macros stays right: every
// variable access is banked, every generated label resets the bank.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zorvel {

class Compilation;

// Instructions and macro calls without operand.
enum class Op0 {
    Option,
    Retfie,
    Nop,
    Clrw,
    Clrc,
    Setc,
    Clrdc,
    Setdc,
    Clrz,
    Setz,
    Skpc,
    Skpnc,
    Skpdc,
    Skpndc,
    Skpz,
    Skpnz,
    BankReset,
};

// Instructions and macro calls with one operand.
enum class Op1 {
    Movlw,
    Addlw,
    Sublw,
    Andlw,
    Iorlw,
    Xorlw,
    Retlw,
    AddwfW,
    SubwfW,
    AndwfW,
    IorwfW,
    XorwfW,
    ComfW,
    IncfW,
    DecfW,
    RrfW,
    RlfW,
    AddwfF,
    SubwfF,
    AndwfF,
    IorwfF,
    XorwfF,
    IncfF,
    DecfF,
    IncfszF,
    RrfF,
    RlfF,
    ClrF,
    MovFW,
    MovWF,
    MovFF,
    SelectBank,
    Goto,
    FarGoto,
    FarCall,
    Tris,
};

// Bit instructions: plain ones for registers present in every bank (STATUS,
// FSR, INDF, PCLATH), banked ones for everything else.
enum class BitOp { Btfsc, Bsf, Bcf, BtfssBanked, BtfscBanked, BsfBanked, BcfBanked, Btfss };

void emitOp(Compilation& c, Op0 op);
void emitOp(Compilation& c, Op1 op, std::string_view operand);
void emitBit(Compilation& c, BitOp op, std::string_view reg, int bit);
// A bit line whose operand is already written out ("STATUS,C").
void emitBitText(Compilation& c, BitOp op, std::string_view operand);

void emitClrwdt(Compilation& c); // only while the watchdog is on
void emitReturn(Compilation& c); // bank reset, then return
void emitMovLF(Compilation& c, std::string_view literal, std::string_view reg);
void emitWregBit(Compilation& c, std::string_view reg, int bit);
void emitBitBit(Compilation& c, std::string_view from, int fromBit, std::string_view to, int toBit);
void emitByteBit(Compilation& c, std::string_view from, std::string_view to, int bit);
enum class Flag { Carry, DigitCarry };
// Sets or clears bit `bit` of the banked register `reg` as the flag stands.
void emitFlagToBit(Compilation& c, Flag flag, std::string_view reg, int bit);
// Jumps to `label` when bit `bit` of `reg` equals `value` (0 or 1).
void emitTestAndJump(Compilation& c, int value, std::string_view reg, int bit,
                     std::string_view label);

// Label line: the label, a blank and "R@B". A label written inside a macro
// body is also declared Local at the top of the macro, so that every use of the
// macro has its own.
void emitLabel(Compilation& c, std::string_view label);

// In pass 2, while a macro body is compiled: where the macro's header line is
// in the output.
std::optional<size_t> openMacroHeader(const Compilation& c);

enum class LabelCounter { Block, Compare, Step };
// The next generated label of a counter: prefix + (counter + 1).
std::string newLabel(Compilation& c, std::string_view prefix, LabelCounter counter);

// A constant operand: the text to write and its value.
struct Constant {
    std::string text;
    int value = 0;
};

void constToW(Compilation& c, const Constant& n);
void constToByte(Compilation& c, const Constant& n, std::string_view y);
void constToBit(Compilation& c, const Constant& n, std::string_view y, int bit);
void constToWord(Compilation& c, int value, std::string_view y);
void wToByte(Compilation& c, std::string_view y);
void wToWord(Compilation& c, std::string_view y);
void byteToW(Compilation& c, std::string_view x); // also a word's low byte
void bitToW(Compilation& c, std::string_view x, int bit);
void bitToByte(Compilation& c, std::string_view x, int bit, std::string_view y);
void bitToWord(Compilation& c, std::string_view x, int bit, std::string_view y);
void byteToByte(Compilation& c, std::string_view x, std::string_view y);
void byteToWord(Compilation& c, std::string_view x, std::string_view y);
void wordToByte(Compilation& c, std::string_view x, std::string_view y);
void wordToBit(Compilation& c, std::string_view x, std::string_view y, int bit);
void wordToWord(Compilation& c, std::string_view x, std::string_view y);
void wAndWordToWord(Compilation& c, std::string_view x, std::string_view y);
void wordToWordLowInW(Compilation& c, std::string_view x, std::string_view y);

// Whether two names resolve to the same RAM address (aliases count).
bool sameAddress(const Compilation& c, std::string_view x, std::string_view y);

} // namespace zorvel
