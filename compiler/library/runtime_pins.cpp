// The pin helpers of the runtime library (a pin's direction, its level, a
// pin number turned into port and mask) and the two watchdog sleeps. A pin
// is handed over as its port register's address in FSR and its bit mask in
// W; the direction register lies 128 bytes above the port (FSR bit 7).
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_routines.h"

namespace zorvel {

// Group 57: inverts the pin whose number is in W and makes it an output.
void writeToggle(Compilation& c, LibraryOutput& out) {
    out.add("t@gl\tcall c@pin");
    out.add("\txorwf " + regAddress(c, "INDF") + ",f");
    out.add("\tgoto o@bi");
}

// Group 58: pin number 0..15 in W to port (FSR) and mask (W, through c@bt,
// which follows). Pins 0..7 are PORTB (GPIO on devices without PORTB),
// 8..15 PORTA.
void writePinMask(Compilation& c, LibraryOutput& out) {
    std::string scratch = regAddress(c, "PP7H");
    bool portB = c.symbols.find("PORTB") != nullptr;
    out.add("c@pin\tmovwf " + scratch);
    out.add("\tmovlw " + regAddress(c, portB ? "PORTB" : "GPIO"));
    out.add("\tbtfsc " + scratch + ",3");
    out.add("\tmovlw " + regAddress(c, portB ? "PORTA" : "GPIO"));
    out.add("\tmovwf " + regAddress(c, "FSR"));
    out.add("\tmovfw " + scratch);
}

// Group 59: W's low three bits to the mask 1..128: a carry shifted into a
// cleared byte once more than the bit number.
void writeBitTable(Compilation& c, LibraryOutput& out) {
    std::string count = regAddress(c, "PP7H"), mask = regAddress(c, "PP7");
    out.add("c@bt	andlw 7");
    out.add("	movwf " + count);
    out.add("	clrf " + mask);
    out.add("	bsf " + regAddress(c, "STATUS") + ",0");
    out.add("c@tbl	rlf " + mask + ",f");
    out.add("	decf " + count + ",f");
    out.add("	btfss " + count + ",7");
    out.add("	goto c@tbl");
    out.add("	movfw " + mask);
    out.add("	return");
}

// Group 68: the pin (mask in W, port in FSR) becomes an input.
void writeInputPin(Compilation& c, LibraryOutput& out) {
    out.add("i@bi\tbsf " + regAddress(c, "FSR") + ",7");
    out.add("\tiorwf " + regAddress(c, "INDF") + ",f");
    out.add("\tgoto i@nt");
}

// Group 69: the pins of the mask are set, then made outputs.
void writeBitsHigh(Compilation& c, LibraryOutput& out) {
    out.add("b@hi\tiorwf " + regAddress(c, "INDF") + ",f");
    out.add("\tgoto o@bi");
}

// Group 70: the pins of the mask are cleared, then made outputs.
void writeBitsLow(Compilation& c, LibraryOutput& out) {
    std::string indf = regAddress(c, "INDF");
    out.add("b@lo\txorlw 255");
    out.add("\tandwf " + indf + ",f");
    out.add("\txorlw 255");
    out.add("\tgoto o@bi");
}

// Group 72: the pins of the mask become outputs.
void writeOutputPin(Compilation& c, LibraryOutput& out) {
    out.add("o@bi\txorlw 255");
    out.add("\tbsf " + regAddress(c, "FSR") + ",7");
    out.add("\tandwf " + regAddress(c, "INDF") + ",f");
    out.add("\tgoto i@nt");
}

// Group 52: one watchdog period of prescaler code W (18 ms << W nominal),
// then the prescaler back to the watchdog at 1:128.
void writeSnooze(Compilation& c, LibraryOutput& out) {
    std::string status = regAddress(c, "STATUS");
    out.add("sn@ze \tbsf " + status + ",5");
    out.add("\tiorlw 248");
    out.add("\tandwf 1,f");
    out.add("\tandlw 15");
    out.add("\tiorwf 1,f");
    out.add("\tclrwdt");
    out.add("\tsleep");
    out.add("\tmovlw 15");
    out.add("\tiorwf 1,f");
    out.add("\tgoto i@nt");
}

// Group 53: W (and PP3H) seconds of sleep in watchdog periods of 18 ms:
// seconds x 28444 / 512 periods (55.55 per second), counted in the 24 bits
// PP0H:PP0:PP2H. The prescaler goes to the watchdog at 1:1 for the naps and
// back to 1:128 at the end.
void writeSleepPeriod(Compilation& c, LibraryOutput& out) {
    std::string status = regAddress(c, "STATUS");
    std::string pp0 = regAddress(c, "PP0"), pp0h = regAddress(c, "PP0H");
    std::string pp2h = regAddress(c, "PP2H");
    out.add("dl@s\tclrf " + regAddress(c, "PP3H"));
    out.add("dl@sw\tmovwf " + regAddress(c, "PP3"));
    out.add("\tmovlw 28");
    out.add("\tmovwf " + regAddress(c, "PP1"));
    out.add("\tmovlw 111");
    out.add("\tmovwf " + regAddress(c, "PP1H"));
    out.add("\tcall m@py");
    out.add("\tclrc");
    out.add("\trrf " + pp0h + ",f");
    out.add("\trrf " + pp0 + ",f");
    out.add("\trrf " + pp2h + ",f");
    out.add("\tclrwdt");
    out.add("\tbsf " + status + ",5");
    out.add("\tmovlw 248");
    out.add("\tandwf 1,f");
    out.add("\tbsf 1,3");
    out.add("\tbcf " + status + ",5");
    out.add("dl@slp\tmovfw " + pp2h);
    out.add("\tiorwf " + pp0 + ",w");
    out.add("\tiorwf " + pp0h + ",w");
    out.add("\tbz $+9");
    out.add("\tsleep");
    out.add("\tmovlw 1");
    out.add("\tsubwf " + pp2h + ",f");
    out.add("\tskpc");
    out.add("\tsubwf " + pp0 + ",f");
    out.add("\tskpc");
    out.add("\tsubwf " + pp0h + ",f");
    out.add("\tgoto dl@slp");
    out.add("\tbsf " + status + ",5");
    out.add("\tmovlw 15");
    out.add("\tiorwf 1,f");
    out.add("\tgoto i@nt");
}

} // namespace zorvel
