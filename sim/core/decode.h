// Predecoded 14-bit instructions: the program memory is decoded once into
// this form so that execution is a switch on a small opcode number.
#pragma once

#include <cstdint>

namespace zorvel::sim::core {

enum class Op : uint8_t {
    Nop,
    Movwf,
    Clrw,
    Clrf,
    Subwf,
    Decf,
    Iorwf,
    Andwf,
    Xorwf,
    Addwf,
    Movf,
    Comf,
    Incf,
    Decfsz,
    Rrf,
    Rlf,
    Swapf,
    Incfsz,
    Bcf,
    Bsf,
    Btfsc,
    Btfss,
    Call,
    Goto,
    Movlw,
    Retlw,
    Iorlw,
    Andlw,
    Xorlw,
    Sublw,
    Addlw,
    Return,
    Retfie,
    Sleep,
    Clrwdt,
    Option,
    Tris
};

struct Decoded {
    Op op = Op::Nop;
    uint8_t f = 0;   // register (7 bits) or TRIS port
    uint8_t arg = 0; // d bit (1 = file) or bit number
    uint16_t k = 0;  // literal or 11-bit address
};

Decoded decode(uint16_t word);

} // namespace zorvel::sim::core
