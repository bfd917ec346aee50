// Arithmetic routines of the runtime library: 16-bit division and
// multiplication, variable shifts, negation and increment of PP0, the random
// step, and the common exit that every routine returns through. Operands
// travel in the PP system variables, written as their decimal addresses.
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_routines.h"

namespace zorvel {
namespace {

// toH:to plus (or minus) fromH:from. The carry (or borrow) of the low bytes
// goes into W as fromH + 1; "incfsz" skips the high update when that wraps
// to 0, which leaves the high byte as it would be anyway.
void writeWordStep(LibraryOutput& out, bool subtract, const std::string& from,
                   const std::string& fromH, const std::string& to, const std::string& toH) {
    std::string op = subtract ? "\tsubwf " : "\taddwf ";
    out.add("\tmovfw " + from);
    out.add(op + to + ",f");
    out.add("\tmovfw " + fromH);
    out.add(subtract ? "\tskpc" : "\tskpnc");
    out.add("\tincfsz " + fromH + ",w");
    out.add(op + toH + ",f");
}

} // namespace

// 16 by 16 bit unsigned division by shift and restoring subtraction.
// Dividend PP0H:PP0, divisor PP1H:PP1; quotient in PP0H:PP0 (W = low byte),
// remainder in PP2H:PP2. d@vd2 starts from a remainder already in PP2H:PP2.
// A divisor of 0 never borrows: every quotient bit is 1, so the quotient is
// 65535 and the remainder is the dividend.
void writeDivide(Compilation& c, LibraryOutput& out) {
    std::string pp0 = regAddress(c, "PP0"), pp0h = regAddress(c, "PP0H");
    std::string pp1 = regAddress(c, "PP1"), pp1h = regAddress(c, "PP1H");
    std::string pp2 = regAddress(c, "PP2"), pp2h = regAddress(c, "PP2H");
    out.add("d@vd\tclrf " + pp2h);
    out.add("\tclrf " + pp2);
    out.add("d@vd2\tmovlw 16");
    out.add("\tmovwf " + regAddress(c, "PP3"));
    out.add("\trlf " + pp0h + ",w");
    out.add("\trlf " + pp2 + ",f");
    out.add("\trlf " + pp2h + ",f");
    writeWordStep(out, true, pp1, pp1h, pp2, pp2h);
    out.add("\tbc $+8");
    writeWordStep(out, false, pp1, pp1h, pp2, pp2h);
    out.add("\tclrc");
    out.add("\trlf " + pp0 + ",f");
    out.add("\trlf " + pp0h + ",f");
    out.add("\tdecfsz " + regAddress(c, "PP3") + ",f");
    out.add("\tgoto $-21");
    out.add("\tmovfw " + pp0);
    out.add("\tgoto i@nt");
}

// 16 by 16 bit multiplication by shift and add, 16 rounds counted in PP6H.
// Multiplier PP3H:PP3, multiplicand PP1H:PP1; the 32-bit product ends in
// PP0H:PP0:PP2H:PP2, W = its low byte.
void writeMultiply(Compilation& c, LibraryOutput& out) {
    std::string pp0 = regAddress(c, "PP0"), pp0h = regAddress(c, "PP0H");
    std::string pp1 = regAddress(c, "PP1"), pp1h = regAddress(c, "PP1H");
    std::string pp2 = regAddress(c, "PP2"), pp2h = regAddress(c, "PP2H");
    std::string pp6h = regAddress(c, "PP6H");
    out.add("m@py\tmovlw 16");
    out.add("\tmovwf " + pp6h);
    out.add("\tclrf " + pp0h);
    out.add("\tclrf " + pp0);
    out.add("\trrf " + regAddress(c, "PP3H") + ",f");
    out.add("\trrf " + regAddress(c, "PP3") + ",f");
    out.add("\tbnc $+7");
    writeWordStep(out, false, pp1, pp1h, pp0, pp0h);
    out.add("\trrf " + pp0h + ",f");
    out.add("\trrf " + pp0 + ",f");
    out.add("\trrf " + pp2h + ",f");
    out.add("\trrf " + pp2 + ",f");
    out.add("\tdecfsz " + pp6h + ",f");
    out.add("\tgoto $-15");
    out.add("\tmovfw " + pp2);
    out.add("\tgoto i@nt");
}

namespace {

// A variable shift of PP0H:PP0 by W places: W counts down through
// "addlw 255", whose carry is clear once the count is used up (at once for a
// count of 0); each pass shifts in a 0, so 16 or more places leave 0. W
// returns the low byte. gpasm refuses a label after column one, so the label
// starts the line.
void writeShift(Compilation& c, LibraryOutput& out, const char* label, bool left) {
    std::string pp0 = regAddress(c, "PP0"), pp0h = regAddress(c, "PP0H");
    out.add("\tclrc");
    out.add(std::string(label) + "\taddlw 255");
    out.add("\tbnc $+5");
    out.add("\tclrc");
    out.add(left ? "\trlf " + pp0 + ",f" : "\trrf " + pp0h + ",f");
    out.add(left ? "\trlf " + pp0h + ",f" : "\trrf " + pp0 + ",f");
    out.add("\tgoto $-6");
    out.add("\tmovfw " + pp0);
    out.add("\tgoto i@nt");
}

} // namespace

void writeShiftLeft(Compilation& c, LibraryOutput& out) {
    writeShift(c, out, "l@sh", true);
}

void writeShiftRight(Compilation& c, LibraryOutput& out) {
    writeShift(c, out, "r@sh", false);
}

// Two's complement of PP0H:PP0: complement both bytes, then fall into the
// increment below.
void writeNegate(Compilation& c, LibraryOutput& out) {
    out.add("n@gt\tcomf " + regAddress(c, "PP0H") + ",f");
    out.add("\tcomf " + regAddress(c, "PP0") + ",f");
}

// PP0H:PP0 plus 1, W kept; Z is set when the word wraps to 0 (the high
// byte is incremented only when the low byte wrapped).
void writeIncrementPP0(Compilation& c, LibraryOutput& out) {
    out.add("i@pp0\tincf " + regAddress(c, "PP0") + ",f");
    out.add("\tskpnz");
    out.add("\tincf " + regAddress(c, "PP0H") + ",f");
    out.add("\treturn");
}

// One step of the 16-bit shift register PP0H:PP0 (a zero seed becomes 1):
// shifted left, the new bit 0 is bit 15 exclusive-or bits 4, 2 and 1.
void writeRandom(Compilation& c, LibraryOutput& out) {
    std::string pp0 = regAddress(c, "PP0"), pp0h = regAddress(c, "PP0H");
    out.add("rndm \tmovfw " + pp0h);
    out.add("\tiorwf " + pp0 + ",w");
    out.add("\tskpnz");
    out.add("\tincf " + pp0 + ",f");
    out.add("\tmovlw 128");
    for (int bit : {4, 2, 1}) {
        out.add("\tbtfsc " + pp0 + "," + std::to_string(bit));
        out.add("\txorwf " + pp0h + ",f");
    }
    out.add("\trlf " + pp0h + ",w");
    out.add("\trlf " + pp0 + ",f");
    out.add("\trlf " + pp0h + ",f");
    out.add("\tmovfw " + pp0);
    out.add("\tgoto i@nt");
}

// The common exit: returns in bank 0 with IRP, RP0 and RP1 clear.
void writeCommonExit(Compilation& c, LibraryOutput& out) {
    std::string status = regAddress(c, "STATUS");
    out.add("i@nt\tbcf " + status + ",7");
    out.add("\tbcf " + status + ",5");
    out.add("\tbcf " + status + ",6");
    out.add(filler(c));
    out.add("\treturn");
}

// dig: decimal digit W (0 = units) of PP0H:PP0. Divides by 10 W + 1 times
// (d@vd leaves the quotient in PP0H:PP0 and the remainder in PP2) and returns
// the last remainder: digit 5 and above of a word is 0.
void writeDig(Compilation& c, LibraryOutput& out) {
    std::string count = regAddress(c, "PP4");
    out.add("dig\tmovwf " + count);
    out.add("\tincf " + count + ",f");
    out.add("d@b\tmovlw 10");
    out.add("\tmovwf " + regAddress(c, "PP1"));
    out.add("\tclrf " + regAddress(c, "PP1H"));
    out.add("\tcall d@vd");
    out.add("\tdecfsz " + count + ",f");
    out.add("\tgoto d@b");
    out.add("\tmovfw " + regAddress(c, "PP2"));
    out.add("\tgoto i@nt");
}

} // namespace zorvel
