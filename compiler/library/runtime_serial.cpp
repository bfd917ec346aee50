// The software serial routines of the runtime library.
//
// SERIN and SEROUT take everything from registers: the data pin as its port
// register's address in GEN and bit mask in GENH, the flow pin in GEN2 and
// GEN2H, the mode word in PP5H:PP5 (bits 0-12 the period code m of a bit of
// m + 20 us; bit 13 seven data bits and even parity; bit 14 inverted, idle
// low; bit 15 open drive), the SERIN timeout or the SEROUT pace in
// GEN3H:GEN3 and the SEROUT timeout in PP7H:PP7 (milliseconds). A bit of
// both loops is the wait of srin@d (m plus a correction, through dlus@w)
// and the loop's own cycles, which the correction takes off.
//
// RSOUT, RSIN and their bit delay sr@dly take the pin, mode and baud rate
// of the DECLARE settings as assembler constants.
#include "compiler/driver/compilation.h"
#include "compiler/library/crystal.h"
#include "compiler/library/runtime_marks.h"
#include "compiler/library/runtime_routines.h"
#include "compiler/library/serial_timing.h"

#include <algorithm>

namespace zorvel {
namespace {

// The registers the routines name, as decimal addresses.
struct Registers {
    std::string indf, status, fsr, gen, genh, gen2, gen2h, gen3, gen3h;
    std::string pp0, pp0h, pp1, pp1h, pp3, pp3h, pp4, pp5, pp5h, pp7, pp7h, gpr;

    explicit Registers(const Compilation& c)
        : indf(regAddress(c, "INDF")), status(regAddress(c, "STATUS")), fsr(regAddress(c, "FSR")),
          gen(regAddress(c, "GEN")), genh(regAddress(c, "GENH")), gen2(regAddress(c, "GEN2")),
          gen2h(regAddress(c, "GEN2H")), gen3(regAddress(c, "GEN3")), gen3h(regAddress(c, "GEN3H")),
          pp0(regAddress(c, "PP0")), pp0h(regAddress(c, "PP0H")), pp1(regAddress(c, "PP1")),
          pp1h(regAddress(c, "PP1H")), pp3(regAddress(c, "PP3")), pp3h(regAddress(c, "PP3H")),
          pp4(regAddress(c, "PP4")), pp5(regAddress(c, "PP5")), pp5h(regAddress(c, "PP5H")),
          pp7(regAddress(c, "PP7")), pp7h(regAddress(c, "PP7H")), gpr(regAddress(c, "GPR")) {}
};

// `cycles` cycles of padding.
void writePadding(const Compilation& c, LibraryOutput& out, int cycles) {
    for (; cycles >= 2; cycles -= 2)
        out.add("\tgoto $+1");
    if (cycles == 1) out.add(filler(c));
}

// The start-bit test of SERIN: W = the data pin's bit, flipped by the mask in
// PP3H in inverted mode, so that Z is set while the line is at the space
// level (a start bit). The flow-pin test of SEROUT is the same on GEN2H.
void writeSpaceTest(LibraryOutput& out, const Registers& r, const std::string& mask) {
    out.add("\tmovfw " + r.indf);
    out.add("\txorwf " + r.pp3h + ",w");
    out.add("\tandwf " + mask + ",w");
}

// The millisecond count of a timed wait, 16 bits in `high`:`low`, goes down
// by one; when it was already 0 the wait leaves through i@nt with the carry
// clear. 6 cycles, the same whether the low byte borrows or not.
void writeMillisecondStep(LibraryOutput& out, const std::string& low, const std::string& high) {
    out.add("\tmovlw 255");
    out.add("\taddwf " + low + ",f");
    out.add("\tskpc");
    out.add("\taddwf " + high + ",f");
    out.add("\tbnc i@nt");
}

} // namespace

// `label`: the pin (port address in `port`, mask in `mask`) becomes an
// input, FSR its port; PP3H = the mask in inverted mode, else 0 (the mask
// stays in W).
void writePinAsInput(LibraryOutput& out, const Registers& r, const std::string& label,
                     const std::string& port, const std::string& mask) {
    out.add(label + "\tbcf " + r.status + ",7");
    out.add("\tmovfw " + port);
    out.add("\tmovwf " + r.fsr);
    out.add("\tbsf " + r.fsr + ",7");
    out.add("\tmovfw " + mask);
    out.add("\tiorwf " + r.indf + ",f");
    out.add("\tbcf " + r.fsr + ",7");
    out.add("\tclrf " + r.pp3h);
    out.add("\tbtfsc " + r.pp5h + ",6");
    out.add("\tmovwf " + r.pp3h);
    out.add("\treturn");
}

// A wait of at most the millisecond count in `high`:`low` for the space
// level on the pin whose mask is `mask` (the start bit of SERIN, the "go"
// level of SEROUT's flow pin), which jumps to `found`. One millisecond is the
// step of the count and the reload of the pass count (8 cycles), a test and
// padding (11), and PASSES - 1 passes of 20 cycles, the last one a cycle
// longer (the skip and the jump back): 20 x PASSES cycles. When the count
// runs out it leaves through i@nt with the carry clear.
struct TimedWait {
    std::string stepLabel, loopLabel, low, high, mask, found;
};

void writeTimedWait(const Compilation& c, LibraryOutput& out, const Registers& r,
                    const TimedWait& w) {
    out.add(w.stepLabel);
    writeMillisecondStep(out, w.low, w.high);
    out.add("\tmovlw " + number(millisecondLoops(crystalMhz(c)) - 1));
    out.add("\tmovwf " + r.pp0);
    writeSpaceTest(out, r, w.mask);
    out.add("\tbz " + w.found);
    for (int i = 0; i < 3; ++i)
        out.add("\tgoto $+1");
    out.add(w.loopLabel);
    writeSpaceTest(out, r, w.mask);
    out.add("\tbz " + w.found);
    writeSpaceTest(out, r, w.mask);
    out.add("\tbz " + w.found);
    out.add(filler(c));
    out.add(filler(c));
    writeSpaceTest(out, r, w.mask);
    out.add("\tbz " + w.found);
    out.add("\tdecfsz " + r.pp0 + ",f");
    out.add("\tgoto " + w.loopLabel);
    out.add("\tgoto " + w.stepLabel);
}

// Group 24. srin@f and srin@ft hold the flow pin at its "go" level (true
// mode low, inverted high) while they receive through serin or srin@t, and
// drive it to the other level afterwards. srin@t waits at most GEN3H:GEN3
// ms for the start bit and returns with the carry clear when none came.
// srin@s receives the character after the start edge: the first data bit is
// sampled 1.5 bits after the edge, the others a bit apart; then it waits for
// the stop level. The character returns in W, PP1 and GPR with the carry
// set; PP4 bit 0 is set when a 7E1 character has the wrong parity.
void writeSerin(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    out.add("srin@f\tcall sf@on");
    out.add("\tcall serin");
    out.add("\tgoto sf@end");
    out.add("srin@ft\tcall sf@on");
    out.add("\tcall srin@t");
    out.add("sf@end\tcall sf@off");
    out.add("\tmovfw " + r.gpr);
    out.add("\tgoto i@nt");
    // The flow pin to its go level (sf@on) or back (sf@off), through b@lo
    // and b@hi. The carry is kept.
    out.add("sf@off\tmovlw 64");
    out.add("\tgoto $+2");
    out.add("sf@on\tclrw");
    out.add("\txorwf " + r.pp5h + ",w");
    out.add("\tmovwf " + r.pp0);
    out.add("\tbcf " + r.status + ",7");
    out.add("\tmovfw " + r.gen2);
    out.add("\tmovwf " + r.fsr);
    out.add("\tmovfw " + r.gen2h);
    out.add("\tbtfss " + r.pp0 + ",6");
    out.add("\tgoto b@lo");
    out.add("\tgoto b@hi");
    // srin@t: the start bit's wait, at most GEN3H:GEN3 ms.
    out.add("srin@t\tcall sr@in");
    out.add("\tmovfw " + r.gen3);
    out.add("\tmovwf " + r.pp3);
    out.add("\tmovfw " + r.gen3h);
    out.add("\tmovwf " + r.pp1h);
    writeTimedWait(c, out, r, {"st@ms", "st@lp", r.pp3, r.pp1h, r.genh, "srin@s"});
    // serin: waits for the start bit without a limit.
    out.add("serin\tcall sr@in");
    out.add("sr@wt" + filler(c));
    writeSpaceTest(out, r, r.genh);
    out.add("\tbnz sr@wt");
    // srin@s: 5 cycles after the test that saw the start bit.
    out.add("srin@s\tcall srin@sd");
    out.add("\tmovlw 8");
    out.add("\tmovwf " + r.pp1h);
    out.add("\tgoto sr@smp");
    out.add("srin@b\tcall srin@d");
    out.add("sr@smp\tmovfw " + r.indf);
    out.add("\txorwf " + r.pp3h + ",w");
    out.add("\tandwf " + r.genh + ",w");
    out.add("\taddlw 255");
    out.add("\trrf " + r.pp3 + ",f");
    out.add("\tgoto $+1");
    out.add("\tgoto $+1");
    out.add("\tdecfsz " + r.pp1h + ",f");
    out.add("\tgoto srin@b");
    // The stop bit: wait for the idle level.
    out.add("sr@stp" + filler(c));
    writeSpaceTest(out, r, r.genh);
    out.add("\tbz sr@stp");
    out.add("\tbcf " + r.pp4 + ",0");
    out.add("\tbtfss " + r.pp5h + ",5");
    out.add("\tgoto sr@8");
    out.add("\tmovfw " + r.pp3);
    out.add("\tcall sr@par");
    out.add("\tbtfsc " + r.pp3 + ",7");
    out.add("\txorlw 1");
    out.add("\tandlw 1");
    out.add("\tskpz");
    out.add("\tbsf " + r.pp4 + ",0");
    out.add("\tbcf " + r.pp3 + ",7");
    out.add("sr@8\tmovfw " + r.pp3);
    out.add("\tmovwf " + r.pp1);
    out.add("\tmovwf " + r.gpr);
    out.add("\tsetc");
    out.add("\tgoto so@fin");
    // sr@in: the data pin becomes an input, FSR its port; PP3H = the mask
    // in inverted mode, else 0.
    writePinAsInput(out, r, "sr@in", r.gen, r.genh);
}

// Group 25. sro@f waits until the flow pin is at its go level (true mode
// low, inverted high), sro@t the same for at most PP7H:PP7 ms, returning with
// the carry clear when it ran out. serout sends the character in W: start
// bit, 8 bits (7E1: seven data bits and the even parity), stop bit, then
// waits the pace GEN3H:GEN3 ms; it returns W unchanged with the carry set.
void writeSerout(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    // sro@t: the flow pin's wait, at most PP7H:PP7 ms.
    out.add("sro@t\tmovwf " + r.gpr);
    out.add("\tcall sro@gf");
    out.add("\tmovfw " + r.pp7);
    out.add("\tmovwf " + r.pp1);
    out.add("\tmovfw " + r.pp7h);
    out.add("\tmovwf " + r.pp1h);
    writeTimedWait(c, out, r, {"so@ms", "so@lp", r.pp1, r.pp1h, r.gen2h, "so@go"});
    // sro@f: waits without a limit.
    out.add("sro@f\tmovwf " + r.gpr);
    out.add("\tcall sro@gf");
    out.add("sf@wt" + filler(c));
    writeSpaceTest(out, r, r.gen2h);
    out.add("\tbnz sf@wt");
    out.add("so@go\tmovfw " + r.gpr);
    // serout: 7E1 puts the parity into bit 7. The latch of the data pin is
    // set to the mark level (push-pull) or the space level (open drive);
    // push-pull drives the port bit (FSR = port), open drive the direction
    // bit (FSR = TRIS: released is the mark). PP1 = the mask when the port
    // bit is the inverse of the carry (inverted push-pull), else 0.
    out.add("serout\tmovwf " + r.gpr);
    out.add("\tmovwf " + r.pp3);
    out.add("\tbtfss " + r.pp5h + ",5");
    out.add("\tgoto so@8");
    out.add("\tcall sr@par");
    out.add("\tbcf " + r.pp3 + ",7");
    out.add("\tskpz");
    out.add("\tbsf " + r.pp3 + ",7");
    out.add("so@8\tbcf " + r.status + ",7");
    out.add("\tmovfw " + r.gen);
    out.add("\tmovwf " + r.fsr);
    out.add("\trlf " + r.pp5h + ",w");
    out.add("\txorwf " + r.pp5h + ",w");
    out.add("\tmovwf " + r.pp1);
    out.add("\tcomf " + r.genh + ",w");
    out.add("\tbtfsc " + r.pp1 + ",7");
    out.add("\tandwf " + r.indf + ",f");
    out.add("\tmovfw " + r.genh);
    out.add("\tbtfss " + r.pp1 + ",7");
    out.add("\tiorwf " + r.indf + ",f");
    out.add("\tbsf " + r.fsr + ",7");
    out.add("\tclrf " + r.pp1);
    out.add("\tbtfsc " + r.pp5h + ",7");
    out.add("\tgoto so@od");
    out.add("\tbtfsc " + r.pp5h + ",6");
    out.add("\tmovwf " + r.pp1);
    out.add("\txorlw 255");
    out.add("\tandwf " + r.indf + ",f");
    out.add("\tbcf " + r.fsr + ",7");
    out.add("\tgoto sro@x");
    out.add("so@od\tiorwf " + r.indf + ",f");
    // sro@x: the start bit, 8 bits from PP3 and the stop bit; the bit
    // count in PP1H. The last pass of the count and the stop bit's setc take
    // as long as the jump back.
    out.add("sro@x\tmovlw 9");
    out.add("\tmovwf " + r.pp1h);
    out.add("\tclrc");
    out.add("\tcall sro@b");
    out.add("\trrf " + r.pp3 + ",f");
    out.add("\tdecfsz " + r.pp1h + ",f");
    out.add("\tgoto $-3");
    out.add("\tsetc");
    out.add("\tcall sro@b");
    out.add("\tmovfw " + r.gen3h);
    out.add("\tmovwf " + r.pp1h);
    out.add("\tmovfw " + r.gen3);
    out.add("\tcall dly@w");
    out.add("\tsetc");
    out.add("\tgoto so@fin");
    // sro@b: the bit in the carry onto the pin, 5 cycles after the call,
    // then one bit time.
    out.add("sro@b\tmovfw " + r.indf);
    out.add("\tiorwf " + r.genh + ",w");
    out.add("\tskpc");
    out.add("\txorwf " + r.genh + ",w");
    out.add("\txorwf " + r.pp1 + ",w");
    out.add("\tmovwf " + r.indf);
    out.add("\tgoto srin@d");
    // sro@gf: the same for the flow pin.
    writePinAsInput(out, r, "sro@gf", r.gen2, r.gen2h);
}

// Group 26. srin@d waits one bit of the period code in PP5H:PP5 (bits 0-12)
// less the bit loops' own cycles: m + correction us through dlus@w, after 9
// cycles and the crystal's padding. srin@sd waits from the start edge to the
// first data bit's middle: 1.5 (m + correction) + the start correction.
// so@fin is the common end (W = GPR); sr@par gives in W bit 0 (Z clear) the
// even parity bit of W's bits 0-6.
void writeSerialBit(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    int mhz = crystalMhz(c);
    int bit = serialBitCorrection(mhz) & 0xFFFF;
    int start = (serialBitCorrection(mhz) * 3 / 2 + serialStartCorrection(mhz)) & 0xFFFF;
    out.add("srin@sd\tmovfw " + r.pp5h);
    out.add("\tandlw 31");
    out.add("\tmovwf " + r.pp0h);
    out.add("\tmovfw " + r.pp5);
    out.add("\tmovwf " + r.pp0);
    out.add("\tclrc");
    out.add("\trrf " + r.pp0h + ",f");
    out.add("\trrf " + r.pp0 + ",f");
    out.add("\tmovfw " + r.pp5h);
    out.add("\tandlw 31");
    out.add("\taddwf " + r.pp0h + ",f");
    out.add("\tmovfw " + r.pp5);
    out.add("\taddwf " + r.pp0 + ",f");
    out.add("\tskpnc");
    out.add("\tincf " + r.pp0h + ",f");
    out.add("\tmovlw " + number(start / 256));
    out.add("\taddwf " + r.pp0h + ",f");
    out.add("\tmovlw " + number(start % 256));
    out.add("\taddwf " + r.pp0 + ",w");
    out.add("\tskpnc");
    out.add("\tincf " + r.pp0h + ",f");
    out.add("\tgoto dlus@w");
    out.add("srin@d\tmovfw " + r.pp5h);
    out.add("\tandlw 31");
    out.add("\tmovwf " + r.pp0h);
    out.add("\tmovlw " + number(bit / 256));
    out.add("\taddwf " + r.pp0h + ",f");
    out.add("\tmovlw " + number(bit % 256));
    out.add("\taddwf " + r.pp5 + ",w");
    out.add("\tskpnc");
    out.add("\tincf " + r.pp0h + ",f");
    writePadding(c, out, serialLoopPadding(mhz));
    out.add("\tgoto dlus@w");
    out.add("so@fin\tmovfw " + r.gpr);
    out.add("\tgoto i@nt");
    out.add("sr@par\tandlw 127");
    out.add("\tmovwf " + r.pp0);
    out.add("\tswapf " + r.pp0 + ",w");
    out.add("\txorwf " + r.pp0 + ",w");
    out.add("\tmovwf " + r.pp0);
    out.add("\trrf " + r.pp0 + ",f");
    out.add("\trrf " + r.pp0 + ",f");
    out.add("\txorwf " + r.pp0 + ",f");
    out.add("\trrf " + r.pp0 + ",w");
    out.add("\txorwf " + r.pp0 + ",w");
    out.add("\tandlw 1");
    out.add("\treturn");
}

// Group 28: RSOUT on the RSOUT_PIN port bit. The carry is the bit rso@bit
// puts on the pin: a start bit (clear), eight data bits from PP1, least
// significant first, and a stop bit (set); in true mode a clear bit drives
// the pin low, in inverted mode (RSOUT_MODE 1) high.
void writeRsout(Compilation& c, LibraryOutput& out) {
    const SettingValue& pin = c.device.settings[kRsoutPin];
    int mode = c.device.settings[kRsoutMode].number;
    int pace = c.device.settings[kRsoutPace].number;
    std::string p = pin.port, n = number(pin.pin);
    std::string status = regAddress(c, "STATUS"), gpr = regAddress(c, "GPR");
    std::string pp1 = regAddress(c, "PP1"), pp1h = regAddress(c, "PP1H");
    out.add("RSOUT_PORT=" + p);
    out.add("RSOUT_PIN=" + n);
    out.add("RSOUT_MODE=" + number(mode));
    out.add("rsout \tmovwf " + gpr);
    out.add("\tmovwf PP1");
    // The latch at the idle level before the pin becomes an output, so that
    // the first start bit starts on time (docs/decisions.md).
    out.add((mode == 1 ? "\tbcf " : "\tbsf ") + p + "," + n);
    out.add("\tbsf " + status + ",5");
    out.add("\tbcf " + p + "," + n);
    out.add("\tbcf " + status + ",5");
    out.add("\tmovlw 9");
    out.add("\tmovwf " + pp1h);
    out.add("\tclrc");
    out.add("\tcall rso@bit");
    out.add("\trrf " + pp1 + ",f");
    out.add("\tdecfsz " + pp1h + ",f");
    out.add("\tgoto $-3");
    out.add("\tsetc");
    out.add("\tcall rso@bit");
    if (pace > 0) {
        out.add("\tmovlw " + number(pace / 256));
        out.add("\tmovwf " + regAddress(c, "PP0H"));
        out.add("\tmovlw " + number(pace % 256));
        out.add("\tcall dlus@w");
    }
    out.add("\tmovfw " + gpr);
    if (c.runtime.seroutTimeout) out.add("\tsetc");
    out.add("\tgoto i@nt");
    std::string space = (mode == 1 ? "\tbsf " : "\tbcf ") + p + "," + n;
    std::string mark = (mode == 1 ? "\tbcf " : "\tbsf ") + p + "," + n;
    out.add("rso@bit bc $+4");
    out.add(filler(c));
    out.add(space);
    out.add("\tgoto Sr@dly");
    out.add(mark);
    out.add("\tgoto Sr@dly");
}

namespace {

// RSIN_PORT, RSIN_PIN and RSIN_MODE, written once, by the first RSIN group
// in the file.
void writeRsinConstants(const Compilation& c, LibraryOutput& out) {
    const SettingValue& pin = c.device.settings[kRsinPin];
    out.add("RSIN_PORT=" + pin.port);
    out.add("RSIN_PIN=" + number(pin.pin));
    out.add("RSIN_MODE=" + number(c.device.settings[kRsinMode].number));
}

// The RSIN pin becomes an input.
void writeRsinInput(const Compilation& c, LibraryOutput& out) {
    const SettingValue& pin = c.device.settings[kRsinPin];
    std::string status = regAddress(c, "STATUS");
    out.add("\tbsf " + status + ",5");
    out.add("\tbsf " + pin.port + "," + number(pin.pin));
    out.add("\tbcf " + status + ",5");
}

// A test that skips the next line while the RSIN line is idle (true mode
// high, inverted low).
std::string rsinIdleSkip(const Compilation& c) {
    const SettingValue& pin = c.device.settings[kRsinPin];
    bool inverted = c.device.settings[kRsinMode].number == 1;
    return (inverted ? "\tbtfsc " : "\tbtfss ") + pin.port + "," + number(pin.pin);
}

// A test that skips the next line once the RSIN line is at the start bit's
// level (true mode low, inverted high).
std::string rsinStartSkip(const Compilation& c) {
    const SettingValue& pin = c.device.settings[kRsinPin];
    bool inverted = c.device.settings[kRsinMode].number == 1;
    return (inverted ? "\tbtfss " : "\tbtfsc ") + pin.port + "," + number(pin.pin);
}

} // namespace

// Group 29: RSIN with a timeout of RSIN_TIMEOUT ms. The count PP0H:PP0 (ms)
// and PP1 (passes of the millisecond) goes down by one every pass of 20
// cycles without a branch; when PP1 borrows it is reloaded with the passes
// of a millisecond less one (this pass is the first of them) and the
// millisecond count goes down; when that borrows too, the routine leaves
// through "bnc i@nt" with the carry clear. The pin is tested twice a pass.
void writeRsinTimeout(Compilation& c, LibraryOutput& out) {
    int timeout = c.device.settings[kRsinTimeout].number & 0xFFFF;
    int loops = millisecondLoops(crystalMhz(c));
    std::string pp0 = regAddress(c, "PP0"), pp0h = regAddress(c, "PP0H");
    std::string pp1 = regAddress(c, "PP1");
    writeRsinConstants(c, out);
    out.add("rsin2\tmovlw " + number(timeout % 256));
    out.add("\tmovwf " + pp0);
    out.add("\tmovlw " + number(timeout / 256));
    out.add("\tmovwf " + pp0h);
    out.add("\tclrf " + pp1);
    writeRsinInput(c, out);
    out.add("r2@lp " + rsinIdleSkip(c));
    out.add("\tgoto rsin@st");
    out.add("\tmovlw 1");
    out.add("\tsubwf " + pp1 + ",f");
    out.add("\tmovlw " + number(loops - 1));
    out.add("\tskpc");
    out.add("\tmovwf " + pp1);
    out.add("\tmovlw 255");
    out.add(rsinIdleSkip(c));
    out.add("\tgoto rsin@st");
    out.add("\tskpc");
    out.add("\taddwf " + pp0 + ",f");
    out.add("\tskpc");
    out.add("\taddwf " + pp0h + ",f");
    out.add("\tbnc i@nt");
    out.add(filler(c));
    out.add(filler(c));
    out.add("\tgoto r2@lp");
}

// Group 30: RSIN without a timeout: waits for the start bit and falls into
// rsin@st, which the writing order puts right after it.
void writeRsin(Compilation& c, LibraryOutput& out) {
    if (!needed(c, Group::RsinTimeout)) writeRsinConstants(c, out);
    out.add("rsin");
    writeRsinInput(c, out);
    out.add(filler(c));
    out.add(rsinStartSkip(c));
    out.add("\tgoto $-2");
}

// Group 31, in full: a quarter bit after the start edge, then eight bits a
// bit time apart, least significant first, into PP1; the return is a bit
// after the last one, in the stop bit. The timeout variant returns the
// carry set (a character came).
void writeRsinStart(Compilation& c, LibraryOutput& out) {
    const SettingValue& pin = c.device.settings[kRsinPin];
    int quarter = bitTime(crystalMhz(c), c.device.settings[kSerialBaud].number) / 4;
    std::string pp1 = regAddress(c, "PP1"), pp1h = regAddress(c, "PP1H");
    bool inverted = c.device.settings[kRsinMode].number == 1;
    out.add("rsin@st \tmovlw " + number(quarter / 256));
    out.add("\tmovwf " + regAddress(c, "PP0H"));
    out.add("\tmovlw " + number(quarter % 256));
    out.add("\tcall dlus@w ");
    out.add("\tmovlw 8");
    out.add("\tmovwf " + pp1h);
    out.add("\tcall sr@dly");
    out.add("\tclrc");
    out.add((inverted ? "\tbtfss " : "\tbtfsc ") + pin.port + "," + number(pin.pin));
    out.add("\tsetc");
    out.add("\trrf " + pp1 + ",f");
    out.add(filler(c));
    out.add("\tgoto $+1");
    out.add("\tdecfsz " + pp1h + ",f");
    out.add("\tgoto $-8");
    out.add("\tcall Sr@dly");
    if (needed(c, Group::RsinTimeout)) out.add("\tsetc");
    out.add("\tmovfw " + pp1);
    out.add("\tgoto i@nt");
}

// Group 32, in full: one bit time T = 1000000 / SERIAL_BAUD - 52 / X us
// through dlus@w.
void writeBitDelay(Compilation& c, LibraryOutput& out) {
    int baud = c.device.settings[kSerialBaud].number;
    int t = bitTime(crystalMhz(c), baud);
    out.add("SERIAL_BAUD=" + number(baud));
    out.add("sr@dly \tmovlw " + number(t / 256));
    out.add("\tmovwf " + regAddress(c, "PP0H"));
    out.add("\tmovlw " + number(t % 256));
    out.add("\tgoto dlus@w");
}

} // namespace zorvel
