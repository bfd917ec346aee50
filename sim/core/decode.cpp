#include "sim/core/decode.h"

namespace zorvel::sim::core {

namespace {

Decoded control(uint16_t word) {
    switch (word) {
    case 0x0008: return {Op::Return, 0, 0, 0};
    case 0x0009: return {Op::Retfie, 0, 0, 0};
    case 0x0062: return {Op::Option, 0, 0, 0};
    case 0x0063: return {Op::Sleep, 0, 0, 0};
    case 0x0064: return {Op::Clrwdt, 0, 0, 0};
    case 0x0065:
    case 0x0066:
    case 0x0067: return {Op::Tris, static_cast<uint8_t>(word & 7), 0, 0};
    default: return {Op::Nop, 0, 0, 0};
    }
}

Decoded byteOriented(uint16_t word) {
    static constexpr Op ops[16] = {
        Op::Movwf, Op::Clrf, Op::Subwf, Op::Decf,   Op::Iorwf, Op::Andwf, Op::Xorwf, Op::Addwf,
        Op::Movf,  Op::Comf, Op::Incf,  Op::Decfsz, Op::Rrf,   Op::Rlf,   Op::Swapf, Op::Incfsz};
    auto f = static_cast<uint8_t>(word & 0x7F);
    auto d = static_cast<uint8_t>((word >> 7) & 1);
    int group = (word >> 8) & 0xF;
    if (group == 0) return d ? Decoded{Op::Movwf, f, 1, 0} : control(word);
    if (group == 1) return d ? Decoded{Op::Clrf, f, 1, 0} : Decoded{Op::Clrw, 0, 0, 0};
    return {ops[group], f, d, 0};
}

Decoded literal(uint16_t word) {
    auto k = static_cast<uint16_t>(word & 0xFF);
    int group = (word >> 8) & 0xF;
    if (group < 4) return {Op::Movlw, 0, 0, k};
    if (group < 8) return {Op::Retlw, 0, 0, k};
    switch (group) {
    case 8: return {Op::Iorlw, 0, 0, k};
    case 9: return {Op::Andlw, 0, 0, k};
    case 10: return {Op::Xorlw, 0, 0, k};
    case 12:
    case 13: return {Op::Sublw, 0, 0, k};
    case 14:
    case 15: return {Op::Addlw, 0, 0, k};
    default: return {Op::Nop, 0, 0, 0}; // 11 1011 xxxx is not an instruction
    }
}

} // namespace

Decoded decode(uint16_t word) {
    word &= 0x3FFF;
    switch (word >> 12) {
    case 0: return byteOriented(word);
    case 1: {
        static constexpr Op ops[4] = {Op::Bcf, Op::Bsf, Op::Btfsc, Op::Btfss};
        return {ops[(word >> 10) & 3], static_cast<uint8_t>(word & 0x7F),
                static_cast<uint8_t>((word >> 7) & 7), 0};
    }
    case 2:
        return {(word & 0x0800) ? Op::Goto : Op::Call, 0, 0, static_cast<uint16_t>(word & 0x7FF)};
    default: return literal(word);
    }
}

} // namespace zorvel::sim::core
