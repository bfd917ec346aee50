// The delay routines of the runtime library. dl@ms/dly@w wait W (and PP1H)
// milliseconds, each one a call of dlus@w for the crystal's millisecond
// step; dl@us/dlus@w wait W (and PP0H) microseconds with a body counted in
// instruction cycles for one crystal. The call overhead is taken off first
// ("addlw" of a negative 8-bit number), the high byte is complemented into a
// loop counter, the inner loop takes a fixed step off per pass, and the tail
// burns what is left.
#include "compiler/driver/compilation.h"
#include "compiler/library/crystal.h"
#include "compiler/library/runtime_routines.h"

namespace zorvel {
namespace {

// dl@us clears the high byte and falls into dlus@w, which takes off the
// call overhead and stores the low count; then the high byte is turned into
// a counter that counts up to 0. Registers by number, or by name (10 MHz).
void writeMicrosecondHead(Compilation& c, LibraryOutput& out, int overhead, bool byName) {
    std::string pp0 = byName ? "PP0" : regAddress(c, "PP0");
    std::string pp0h = byName ? "PP0H" : regAddress(c, "PP0H");
    out.add("dl@us\tclrf " + regAddress(c, "PP0H"));
    out.add("dlus@w\taddlw " + std::to_string(overhead));
    out.add("\tmovwf " + pp0);
    out.add("\tcomf " + pp0h + (byName ? ",F" : ",f"));
}

// The loop of the 4, 8 and 16 MHz bodies: one step of `step` per pass.
void writeStepLoop(Compilation& c, LibraryOutput& out, int step) {
    std::string pp0 = regAddress(c, "PP0");
    out.add("\tmovlw " + std::to_string(step));
    out.add("\tbnc $+4");
    out.add("\taddwf " + pp0 + ",f");
    out.add("\tbc $-2");
    out.add("\taddwf " + pp0 + ",f");
    out.add(filler(c));
    out.add("\tincfsz " + regAddress(c, "PP0H") + ",f");
    out.add("\tgoto $-6");
}

void writeBody4(Compilation& c, LibraryOutput& out) {
    std::string pp0 = regAddress(c, "PP0");
    writeMicrosecondHead(c, out, 232, false);
    writeStepLoop(c, out, 252);
    out.add("\tbtfsc " + pp0 + ",0");
    out.add("\tgoto $+1");
    out.add("\tbtfss " + pp0 + ",1");
    out.add("\tgoto $+3");
    out.add(filler(c));
    out.add("\tgoto $+1");
    out.add("\treturn");
}

void writeBody8(Compilation& c, LibraryOutput& out) {
    std::string pp0 = regAddress(c, "PP0");
    writeMicrosecondHead(c, out, 244, false);
    writeStepLoop(c, out, 254);
    out.add(filler(c));
    for (int i = 0; i < 2; ++i) {
        out.add("\tbtfsc " + pp0 + ",0");
        out.add("\tgoto $+1");
    }
    out.add("\treturn");
}

void writeBody10(Compilation& c, LibraryOutput& out) {
    writeMicrosecondHead(c, out, 246, true);
    out.add("\tbnc $+7");
    out.add("\tmovlw 254");
    out.add(filler(c));
    out.add("\taddwf PP0,F");
    out.add("\tbc $-3");
    out.add("\taddwf PP0,F");
    out.add(filler(c));
    out.add("\tincfsz PP0H,F");
    out.add("\tgoto $-8");
    out.add(filler(c));
    for (int i = 0; i < 2; ++i) {
        out.add("\tbtfsc PP0,0");
        out.add("\tgoto $+1");
    }
    out.add("\treturn");
}

void writeBody12(Compilation& c, LibraryOutput& out) {
    std::string pp0 = regAddress(c, "PP0");
    writeMicrosecondHead(c, out, 247, false);
    out.add("\tbnc $+7");
    out.add("\tmovlw 254");
    out.add("\tgoto $+1");
    out.add("\taddwf " + pp0 + ",f");
    out.add("\tbc $-3");
    out.add("\taddwf " + pp0 + ",f");
    out.add(filler(c));
    out.add("\tnop");
    out.add("\tincfsz " + regAddress(c, "PP0H") + ",f");
    out.add("\tgoto $-9");
    out.add("\tgoto $+1");
    out.add("\tbtfss " + pp0 + ",0");
    out.add("\tgoto $+3");
    out.add("\tgoto $+1");
    out.add("\tgoto $+1");
    out.add("\treturn");
}

void writeBody16(Compilation& c, LibraryOutput& out) {
    writeMicrosecondHead(c, out, 251, false);
    writeStepLoop(c, out, 255);
    out.add(filler(c));
    out.add("\treturn");
}

void writeBody20(Compilation& c, LibraryOutput& out) {
    std::string pp0 = regAddress(c, "PP0");
    writeMicrosecondHead(c, out, 252, false);
    out.add("\tbnc $+7");
    out.add("\tmovlw 255");
    out.add(filler(c));
    out.add("\taddwf " + pp0 + ",f");
    out.add("\tbc $-3");
    out.add("\taddwf " + pp0 + ",f");
    out.add(filler(c));
    out.add("\tincfsz " + regAddress(c, "PP0H") + ",f");
    out.add("\tgoto $-8");
    out.add("\treturn");
}

} // namespace

// W (and PP1H) milliseconds: the count goes down by one per round until it
// borrows; a count of 0 returns at once through i@nt.
void writeMillisecondDelay(Compilation& c, LibraryOutput& out) {
    std::string pp1 = regAddress(c, "PP1"), pp1h = regAddress(c, "PP1H");
    int step = millisecondStep(crystalMhz(c));
    out.add("dl@ms\tclrf " + pp1h);
    out.add("dly@w\tmovwf " + pp1);
    out.add("\tmovlw 255");
    out.add("\taddwf " + pp1 + ",f");
    out.add("\tskpc");
    out.add("\taddwf " + pp1h + ",f");
    out.add("\tbnc i@nt");
    out.add("\tmovlw " + std::to_string(step / 256));
    out.add("\tmovwf " + regAddress(c, "PP0H"));
    out.add("\tmovlw " + std::to_string(step % 256));
    out.add("\tcall dlus@w");
    out.add("\tgoto $-10");
}

// Only the configured crystal's body is written; other crystals get none.
void writeMicrosecondDelay(Compilation& c, LibraryOutput& out) {
    switch (crystalMhz(c)) {
    case 4: writeBody4(c, out); break;
    case 8: writeBody8(c, out); break;
    case 10: writeBody10(c, out); break;
    case 12: writeBody12(c, out); break;
    case 16: writeBody16(c, out); break;
    case 20: writeBody20(c, out); break;
    default: break;
    }
}

} // namespace zorvel
