// The texts of the runtime subroutine groups, one writer per group. The
// writers only append lines; which groups are written, and the marks they
// pass on to the routines they call, is runtime_groups.cpp's business.
#pragma once

#include "compiler/library/library_text.h"

namespace zorvel {

// Arithmetic (runtime_arith.cpp).
void writeDivide(Compilation& c, LibraryOutput& out);       // d@vd, d@vd2
void writeMultiply(Compilation& c, LibraryOutput& out);     // m@py
void writeShiftLeft(Compilation& c, LibraryOutput& out);    // l@sh
void writeShiftRight(Compilation& c, LibraryOutput& out);   // r@sh
void writeNegate(Compilation& c, LibraryOutput& out);       // n@gt
void writeIncrementPP0(Compilation& c, LibraryOutput& out); // i@pp0
void writeRandom(Compilation& c, LibraryOutput& out);       // rndm
void writeDig(Compilation& c, LibraryOutput& out);          // dig, d@b
void writeCommonExit(Compilation& c, LibraryOutput& out);   // i@nt

// Array access across banks (runtime_arrays.cpp).
void writePutArray(Compilation& c, LibraryOutput& out);    // put@array
void writeGetArray(Compilation& c, LibraryOutput& out);    // get@array
void writeFindAddress(Compilation& c, LibraryOutput& out); // find@address

// The word comparisons t@eb .. t@st (runtime_compare.cpp).
void writeComparisons(Compilation& c, LibraryOutput& out);

// Delays (runtime_delays.cpp).
void writeMillisecondDelay(Compilation& c, LibraryOutput& out); // dl@ms, dly@w
void writeMicrosecondDelay(Compilation& c, LibraryOutput& out); // dl@us, dlus@w

// Tones (runtime_tones.cpp).
void writeCos(Compilation& c, LibraryOutput& out);     // cos, falls into sin
void writeSin(Compilation& c, LibraryOutput& out);     // sin, si@g
void writeFreqOut(Compilation& c, LibraryOutput& out); // fr@out1, fr@outc, fr@out, fr@lp, fr@stp
void writeDtmfOut(Compilation& c, LibraryOutput& out); // dtmf@o, dtmf@r, dtmf@l, dtf@tbl, dtf@rtb
void writeSound(Compilation& c, LibraryOutput& out);   // noise, n@lp, n@lp1

// Pulses and measurements (runtime_pulses.cpp).
void writeCounter(Compilation& c, LibraryOutput& out); // count, ct@lp
void writeHpwm(Compilation& c, LibraryOutput& out); // h@pwm, hpw@c2, hpw@on, hpw@hf, hpw@2s, hpw@2l
void writePwm(Compilation& c, LibraryOutput& out);  // pwm, pw@lp, pw@pad
void writePulsout(Compilation& c, LibraryOutput& out);   // p@out, po@lp
void writePulsin(Compilation& c, LibraryOutput& out);    // p@in, pi@wt, pi@nx, pi@go
void writePot(Compilation& c, LibraryOutput& out);       // pot, pt@lp, pt@end, pt@pad
void writeRcin(Compilation& c, LibraryOutput& out);      // crin, falls into fl@st
void writeEdgeCount(Compilation& c, LibraryOutput& out); // fl@st, fl@up, fl@nx

// Character output (runtime_output.cpp).
void writeDigitSender(Compilation& c, LibraryOutput& out); // send@it
void writeDispatcher(Compilation& c, LibraryOutput& out);  // d@snd, ch@snd

// Number and string output (runtime_format.cpp).
void writeBinary(Compilation& c, LibraryOutput& out);  // out_bin2, out_bin, out_binb
void writeHex(Compilation& c, LibraryOutput& out);     // out_hex, out_hex4..1, hdig, h@dg
void writeDecimal(Compilation& c, LibraryOutput& out); // o@dec2b, o@dec2, o@dec, o@decb, s@dig
void writeStringOneBank(Compilation& c, LibraryOutput& out);     // sb@strout, sb@stroutlp
void writeStringAcrossBanks(Compilation& c, LibraryOutput& out); // mb@strout, mb@stroutlp
void writeRepeat(Compilation& c, LibraryOutput& out);            // rep

// The character LCD and the keypad (runtime_lcd.cpp).
void writeInkey(Compilation& c, LibraryOutput& out);     // inkey, Scan@row, sc@col
void writeCls(Compilation& c, LibraryOutput& out);       // lcd_cls, cls
void writeCursor(Compilation& c, LibraryOutput& out);    // lcd_cur, cursor
void writeLcdCursor(Compilation& c, LibraryOutput& out); // lcd_crs, curs
void writePrint(Compilation& c, LibraryOutput& out);     // print, prt@c, prt@1, pr@ex, pr@lp, prt@s

// The software serial links (runtime_serial.cpp).
void writeSerin(Compilation& c,
                LibraryOutput& out); // srin@f, srin@ft, srin@t, serin, srin@s, srin@b
void writeSerout(Compilation& c, LibraryOutput& out); // sro@t, sro@f, serout, sro@x, sro@b, sro@gf
void writeSerialBit(Compilation& c, LibraryOutput& out);   // srin@sd, srin@d, so@fin, sr@par
void writeRsout(Compilation& c, LibraryOutput& out);       // rsout, rso@bit
void writeRsinTimeout(Compilation& c, LibraryOutput& out); // rsin2
void writeRsin(Compilation& c, LibraryOutput& out);        // rsin
void writeRsinStart(Compilation& c, LibraryOutput& out);   // rsin@st
void writeBitDelay(Compilation& c, LibraryOutput& out);    // sr@dly

// Pins and the watchdog sleeps (runtime_pins.cpp).
void writeToggle(Compilation& c, LibraryOutput& out);      // t@gl
void writePinMask(Compilation& c, LibraryOutput& out);     // c@pin
void writeBitTable(Compilation& c, LibraryOutput& out);    // c@bt, c@tbl
void writeInputPin(Compilation& c, LibraryOutput& out);    // i@bi
void writeBitsHigh(Compilation& c, LibraryOutput& out);    // b@hi
void writeBitsLow(Compilation& c, LibraryOutput& out);     // b@lo
void writeOutputPin(Compilation& c, LibraryOutput& out);   // o@bi
void writeSnooze(Compilation& c, LibraryOutput& out);      // sn@ze
void writeSleepPeriod(Compilation& c, LibraryOutput& out); // dl@s, dl@sw

} // namespace zorvel
