// The pulse and measurement routines of the runtime library: PULSOUT (p@out),
// PWM (pwm), HPWM (h@pwm), PULSIN (p@in), RCIN (crin), their shared edge
// counter (fl@st), POT (pot) and COUNTER (count). A pin arrives as its port
// register's address in FSR and its bit mask in W; the direction register is
// 128 bytes above the port (FSR bit 7). The timed loops are counted in
// instruction cycles: one pass of the PULSOUT, PULSIN and RCIN loops is 10
// cycles, of the PWM and COUNTER loops 20 cycles, of the POT loop 20 us.
#include "compiler/driver/compilation.h"
#include "compiler/library/crystal.h"
#include "compiler/library/runtime_routines.h"

#include <algorithm>
#include <optional>

namespace zorvel {
namespace {

// Cycles of one POT pass: 20 us, X / 4 cycles each.
int potPassCycles(int mhz) {
    return 5 * mhz;
}

// The registers the routines name, as decimal addresses.
struct Registers {
    std::string indf, status, fsr, gen, genh;
    std::string pp0, pp0h, pp1, pp1h, pp2, pp2h, pp3, pp3h, pp4h;

    explicit Registers(const Compilation& c)
        : indf(regAddress(c, "INDF")), status(regAddress(c, "STATUS")), fsr(regAddress(c, "FSR")),
          gen(regAddress(c, "GEN")), genh(regAddress(c, "GENH")), pp0(regAddress(c, "PP0")),
          pp0h(regAddress(c, "PP0H")), pp1(regAddress(c, "PP1")), pp1h(regAddress(c, "PP1H")),
          pp2(regAddress(c, "PP2")), pp2h(regAddress(c, "PP2H")), pp3(regAddress(c, "PP3")),
          pp3h(regAddress(c, "PP3H")), pp4h(regAddress(c, "PP4H")) {}
};

// Exactly `cycles` instruction cycles with at least one filler (a clrwdt
// when the watchdog is on): a loop counting `counter` down from k
// (3k + 1 cycles) for long waits, then "goto $+1" and fillers.
void writePad(Compilation& c, LibraryOutput& out, int cycles, const std::string& counter) {
    if (cycles >= 9) {
        int k = std::min((cycles - 2) / 3, 255);
        out.add("\tmovlw " + number(k));
        out.add("\tmovwf " + counter);
        out.add("\tdecfsz " + counter + ",f");
        out.add("\tgoto $-1");
        cycles -= 3 * k + 1;
    }
    out.add(filler(c));
    for (--cycles; cycles >= 2; cycles -= 2)
        out.add("\tgoto $+1");
    if (cycles == 1) out.add(filler(c));
}

// The count in PP0H:PP0 is tested for 0 (then the routine returns at once)
// and negated for counting up; the pin (mask in W, kept in GEN) becomes an
// output at the level its latch holds.
void writeCountAndOutput(LibraryOutput& out, const Registers& r, const std::string& label) {
    out.add(label + "\tmovwf " + r.gen);
    out.add("\tmovf " + r.pp0 + ",w");
    out.add("\tiorwf " + r.pp0h + ",w");
    out.add("\tbtfsc " + r.status + ",2");
    out.add("\tgoto i@nt");
    out.add("\tcall n@gt");
    out.add("\tbsf " + r.fsr + ",7");
    out.add("\tcomf " + r.gen + ",w");
    out.add("\tandwf " + r.indf + ",f");
    out.add("\tbcf " + r.fsr + ",7");
}

// One step of the up-counting word PP0H:PP0 in 3 cycles; Z is set when it
// reaches 0.
void writeCountUp(LibraryOutput& out, const Registers& r) {
    out.add("\tincf " + r.pp0 + ",f");
    out.add("\tskpnz");
    out.add("\tincf " + r.pp0h + ",f");
}

// Where HPWM's channel drives its pin: the direction register and bit.
struct CcpPin {
    std::string tris;
    int bit;
};

bool isOneOf(const std::string& name, std::initializer_list<const char*> names) {
    for (const char* n : names)
        if (name == n) return true;
    return false;
}

// The CCP1 (channel 1) or CCP2 (channel 2) pin of the device: RC2 and RC1
// on the 28- and 40-pin parts, RC5 (CCP1) and RD2 (CCP2) on the 14- and
// 20-pin parts and the LCD parts, RB3, RB0 or RB2 (the default CCPMX
// setting) or GP2/RA2 on parts without PORTC. nullopt when the device's
// symbols lack the register.
std::optional<CcpPin> ccpPin(const Compilation& c, int channel) {
    const std::string& d = c.device.name;
    CcpPin pin{"TRISC", channel == 1 ? 2 : 1};
    if (isOneOf(d, {"16F616", "16HV616", "16F684", "16F685", "16F690", "16F720", "16F721",
                    "16LF720", "16LF721", "16F753", "16HV753", "16F785", "16HV785", "16F913",
                    "16F914", "16F916", "16F917", "16F946"}))
        pin = channel == 1 ? CcpPin{"TRISC", 5} : CcpPin{"TRISD", 2};
    else if (isOneOf(d, {"16F87", "16F88"}))
        pin = {"TRISB", 0};
    else if (isOneOf(d, {"16F818", "16F819"}))
        pin = {"TRISB", 2};
    else if (isOneOf(d, {"12F683", "12F615", "12F617", "12HV615"}))
        pin = {"TRISIO", 2};
    else if (isOneOf(d, {"12F752", "12HV752"}))
        pin = {"TRISA", 2};
    else if (!c.symbols.find("TRISC"))
        pin = {"TRISB", 3};
    if (!c.symbols.find(pin.tris)) return std::nullopt;
    return pin;
}

} // namespace

// p@out: the pin (mask in W, port in FSR) becomes an output and is inverted
// for PP0H:PP0 units of 10 cycles, then inverted back; a count of 0 returns
// at once and leaves the pin alone. Between the two inversions lie 10n - 1
// cycles: n - 1 passes of 10 and a last one of 9 that falls out of the loop.
void writePulsout(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    writeCountAndOutput(out, r, "p@out");
    out.add("\tmovf " + r.gen + ",w");
    out.add("\txorwf " + r.indf + ",f");
    out.add("po@lp\tgoto $+1");
    out.add(filler(c));
    out.add(filler(c));
    writeCountUp(out, r);
    out.add("\tskpz");
    out.add("\tgoto po@lp");
    out.add("\txorwf " + r.indf + ",f");
    out.add("\tgoto i@nt");
}

// pwm: PP0H:PP0 cycles (0 returns at once) of 256 passes of 20 cycles on the
// pin (mask in W, port in FSR). Each pass adds the duty in PP1 to PP1H and
// writes the carry to the pin, so `duty` of every 256 passes are high; the
// port is written by one instruction at the same place of every pass. The
// pass count is GENH; every 256th pass takes the cycle step instead of the
// padding. Afterwards the pin is an input.
void writePwm(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    writeCountAndOutput(out, r, "pwm");
    out.add("\tclrf " + r.pp1h);
    out.add("\tclrf " + r.genh);
    out.add("pw@lp\tgoto $+1");
    out.add("\tgoto $+1");
    out.add(filler(c));
    out.add("\tmovf " + r.pp1 + ",w");
    out.add("\taddwf " + r.pp1h + ",f");
    out.add("\tmovf " + r.indf + ",w");
    out.add("\tiorwf " + r.gen + ",w");
    out.add("\tbtfss " + r.status + ",0");
    out.add("\txorwf " + r.gen + ",w");
    out.add("\tmovwf " + r.indf);
    out.add("\tincfsz " + r.genh + ",f");
    out.add("\tgoto pw@pad");
    writeCountUp(out, r);
    out.add("\tskpz");
    out.add("\tgoto pw@lp");
    out.add("\tmovf " + r.gen + ",w");
    out.add("\tgoto i@bi");
    out.add("pw@pad\tgoto $+1");
    out.add(filler(c));
    out.add("\tgoto pw@lp");
}

// h@pwm: channel in W, frequency in PP1H:PP1 (Hz), duty 0..255 in GEN.
// fosc / 1024 divided by the frequency picks the Timer2 prescaler (1:1 below
// 1, 1:4 below 4, else 1:16); fosc / 4 divided by the prescaler and by the
// frequency is the period count n, and n - 1 goes to PR2. n times the duty
// (256 for a duty of 255) is the 10-bit duty value shifted left by 6: its
// middle byte goes to CCPRxL and its bits 7:6 to CCPxCON<5:4>. Channel 2
// (W bit 1 set) is CCP2 on devices that have it, anything else CCP1.
void writeHpwm(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    if (!c.symbols.find("CCP1CON") || !c.symbols.find("T2CON") || !c.symbols.find("PR2")) {
        out.add("h@pwm");
        out.add("\terror \"HPWM needs a device with a CCP module\"");
        return;
    }
    long fosc = static_cast<long>(crystalMhz(c)) * 1000000;
    long coarse = fosc / 1024, fine = fosc / 4;
    out.add("h@pwm\tmovwf " + r.pp4h);
    out.add("\tmovlw " + number(coarse / 256));
    out.add("\tmovwf " + r.pp0h);
    out.add("\tmovlw " + number(coarse % 256));
    out.add("\tmovwf " + r.pp0);
    out.add("\tcall d@vd");
    for (const char* line :
         {"\tskpnz", "\tbcf T2CON,T2CKPS0", "\tskpz", "\tbsf\tT2CON,T2CKPS0", "\taddlw 252",
          "\tskpc", "\tbcf\tT2CON,T2CKPS1", "\tskpnc", "\tbsf\tT2CON,T2CKPS1"})
        out.add(line);
    out.add("\tmovlw " + number(fine >> 16));
    out.add("\tmovwf " + r.pp2);
    out.add("\tmovlw " + number((fine >> 8) & 255));
    out.add("\tmovwf " + r.pp0h);
    out.add("\tmovlw " + number(fine & 255));
    out.add("\tmovwf " + r.pp0);
    out.add("\tclrf " + r.pp2h);
    out.add("\tbtfsc T2CON,T2CKPS0");
    out.add("\tcall hpw@2s");
    out.add("\tbtfsc T2CON,T2CKPS1");
    out.add("\tcall hpw@2s");
    // d@vd2's remainder has 16 bits: from 32768 Hz on, both halves.
    out.add("\tbtfsc " + r.pp1h + ",7");
    out.add("\tcall hpw@hf");
    out.add("\tcall d@vd2");
    out.add("\tmovwf " + r.pp1);
    out.add("\taddlw 255");
    out.add("\tbsf " + r.status + ",5");
    out.add("\tmovwf PR2");
    out.add("\tbcf " + r.status + ",5");
    out.add("\tmovf " + r.pp0h + ",w");
    out.add("\tmovwf " + r.pp1h);
    // The duty as the multiplier: 0..254 as it is, 255 as 256 (always high).
    out.add("\tclrf " + r.pp3h);
    out.add("\tmovf " + r.gen + ",w");
    out.add("\tmovwf " + r.pp3);
    out.add("\tincfsz " + r.pp3 + ",w");
    out.add("\tgoto $+3");
    out.add("\tclrf " + r.pp3);
    out.add("\tincf " + r.pp3h + ",f");
    out.add("\tcall m@py");
    // 256 x 256 carries into the third byte: the largest duty value instead.
    out.add("\tmovf " + r.pp0 + ",w");
    out.add("\tsubwf " + r.pp2h + ",f");
    out.add("\tsubwf " + r.pp2 + ",f");
    out.add("\tmovlw 12");
    out.add("\tbtfsc " + r.pp2 + ",6");
    out.add("\tiorlw 16");
    out.add("\tbtfsc " + r.pp2 + ",7");
    out.add("\tiorlw 32");
    std::optional<CcpPin> pin1 = ccpPin(c, 1);
    std::optional<CcpPin> pin2 = ccpPin(c, 2);
    bool two = c.symbols.find("CCP2CON") && c.symbols.find("CCPR2L");
    if (two) {
        out.add("\tbtfsc " + r.pp4h + ",1");
        out.add("\tgoto hpw@c2");
    }
    auto writeChannel = [&](const char* con, const char* low, const std::optional<CcpPin>& pin) {
        out.add(std::string("\tmovwf ") + con);
        out.add("\tmovf " + r.pp2h + ",w");
        out.add(std::string("\tmovwf ") + low);
        if (pin) {
            out.add("\tbsf " + r.status + ",5");
            out.add("\tbcf " + pin->tris + "," + number(pin->bit));
        }
    };
    writeChannel("CCP1CON", "CCPR1L", pin1);
    if (two) {
        out.add("\tgoto hpw@on");
        out.add("hpw@c2");
        writeChannel("CCP2CON", "CCPR2L", pin2);
    }
    out.add("hpw@on\tbcf " + r.status + ",5");
    out.add("\tbsf T2CON,TMR2ON");
    out.add("\tgoto i@nt");
    // hpw@hf halves the frequency and the dividend; hpw@2s divides
    // PP2:PP0H:PP0 by 4, shifting once through hpw@2l and falling into it for
    // the second shift.
    out.add("hpw@hf\tclrc");
    out.add("\trrf " + r.pp1h + ",f");
    out.add("\trrf " + r.pp1 + ",f");
    out.add("\tgoto hpw@2l");
    out.add("hpw@2s\tcall hpw@2l");
    out.add("hpw@2l\tclrc");
    out.add("\trrf " + r.pp2 + ",f");
    out.add("\trrf " + r.pp0h + ",f");
    out.add("\trrf " + r.pp0 + ",f");
    out.add("\treturn");
}

// p@in: state (bit 0 of PP0) and pin as crin takes them. crin waits while
// the pin is in the state; the loop here (fl@up's, counting its time-out in
// PP2H:PP2) waits while it is in the other state, so the edge into the state
// starts the pulse; fl@up then counts the pulse. W holds the mask after a
// wait that ended on a change, so "xorwf" turns the reference state over.
// The reading that sees the pulse's start is unit 1 (PP0H:PP0 = 1 is set
// before the wait) and fl@up's first reading comes 10 cycles after it, so
// the result is the number of 10-cycle readings that see the pulse: its
// width in units of 10 cycles, rounded up or down by where the edge fell
// between two readings. A wait or count that reaches 65536 units returns 0.
void writePulsin(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    out.add("p@in\tcall crin");
    out.add("\tbtfsc " + r.status + ",2");
    out.add("\tgoto i@nt");
    out.add("\txorwf " + r.pp1 + ",f");
    out.add("\tclrf " + r.pp0h);
    out.add("\tmovlw 1");
    out.add("\tmovwf " + r.pp0);
    out.add("\tclrf " + r.pp2);
    out.add("\tclrf " + r.pp2h);
    out.add(filler(c));
    out.add("pi@wt\tmovf " + r.indf + ",w");
    out.add("\txorwf " + r.pp1 + ",w");
    out.add("\tandwf " + r.gen + ",w");
    out.add("\tbtfss " + r.status + ",2");
    out.add("\tgoto pi@go");
    out.add("\tincfsz " + r.pp2 + ",f");
    out.add("\tgoto pi@nx");
    out.add("\tincfsz " + r.pp2h + ",f");
    out.add("\tgoto pi@wt");
    out.add("\tclrf " + r.pp0);
    out.add("\tgoto i@nt");
    out.add("pi@nx\tgoto pi@wt");
    out.add("pi@go\txorwf " + r.pp1 + ",f");
    out.add(filler(c));
    out.add("\tgoto fl@up");
}

// crin: the pin (mask in W, kept in GEN; port in FSR) becomes an input, the
// state (bit 0 of PP0) becomes the reference in PP1 (0 or the mask), and the
// code falls into fl@st, which the writing order puts next. The first
// reading comes 10 cycles after crin's first instruction, so the result is
// the time from there to the first reading outside the state, in units of
// 10 cycles rounded up (at least 1).
void writeRcin(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    out.add("crin\tmovwf " + r.gen);
    out.add("\tbsf " + r.fsr + ",7");
    out.add("\tiorwf " + r.indf + ",f");
    out.add("\tbcf " + r.fsr + ",7");
    out.add("\tbtfss " + r.pp0 + ",0");
    out.add("\tclrw");
    out.add("\tmovwf " + r.pp1);
}

// fl@st: PP0H:PP0 counts from 1, one count per 10-cycle pass, while the pin
// (port through INDF, mask in GEN) reads as PP1 (0 or the mask). It returns
// with Z clear and W = the mask when the pin leaves that state, with Z set
// and PP0H:PP0 = 0 when the count wraps. fl@up goes on from the count in
// PP0H:PP0. The pass ends in two jumps, or across the high byte's step when
// the low byte wraps; both take 10 cycles.
void writeEdgeCount(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    out.add("fl@st\tclrf " + r.pp0h);
    out.add("\tmovlw 1");
    out.add("\tmovwf " + r.pp0);
    out.add("fl@up\tmovf " + r.indf + ",w");
    out.add("\txorwf " + r.pp1 + ",w");
    out.add("\tandwf " + r.gen + ",w");
    out.add("\tbtfss " + r.status + ",2");
    out.add("\tgoto i@nt");
    out.add("\tincfsz " + r.pp0 + ",f");
    out.add("\tgoto fl@nx");
    out.add("\tincfsz " + r.pp0h + ",f");
    out.add("\tgoto fl@up");
    out.add("\tgoto i@nt");
    out.add("fl@nx\tgoto fl@up");
}

// pot: the pin (mask in W, port in FSR) is driven low for 1000 us to empty
// the capacitor, then released; every 20 us the scale in PP2 is added to
// PP1H:PP1 until the pin reads high, and PP1H is the result in W:
// count x scale / 256, stopped at 255. A scale of 0 returns 0 at once
// without touching the pin. The pass is 13 cycles and a pad to 20 us.
void writePot(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    out.add("pot\tmovwf " + r.gen);
    out.add("\tmovf " + r.pp2 + ",w");
    out.add("\tbtfsc " + r.status + ",2");
    out.add("\tgoto i@nt");
    out.add("\tmovf " + r.gen + ",w");
    out.add("\tcall b@lo");
    out.add("\tbcf " + r.fsr + ",7");
    out.add("\tmovlw 3");
    out.add("\tmovwf " + r.pp0h);
    out.add("\tmovlw 232");
    out.add("\tcall dlus@w");
    out.add("\tclrf " + r.pp1);
    out.add("\tclrf " + r.pp1h);
    out.add("\tbsf " + r.fsr + ",7");
    out.add("\tmovf " + r.gen + ",w");
    out.add("\tiorwf " + r.indf + ",f");
    out.add("\tbcf " + r.fsr + ",7");
    out.add("pt@lp\tmovf " + r.indf + ",w");
    out.add("\tandwf " + r.gen + ",w");
    out.add("\tbtfss " + r.status + ",2");
    out.add("\tgoto pt@end");
    out.add("\tmovf " + r.pp2 + ",w");
    out.add("\taddwf " + r.pp1 + ",f");
    out.add("\tskpnc");
    out.add("\tincf " + r.pp1h + ",f");
    out.add("\tincfsz " + r.pp1h + ",w");
    out.add("\tgoto pt@pad");
    out.add("pt@end\tmovf " + r.pp1h + ",w");
    out.add("\tgoto i@nt");
    out.add("pt@pad");
    writePad(c, out, potPassCycles(crystalMhz(c)) - 13, r.pp0);
    out.add("\tgoto pt@lp");
}

// count: the pin (mask in W, port in FSR) becomes an input; the period in
// PP1H:PP1 (ms) times the passes per millisecond is the pass count n, whose
// complement counts up through n + 1 passes of 20 cycles. A pass reads the
// pin, counts a rising edge (low at the last reading, high now) in PP1H:PP1
// and steps the 24-bit pass count PP0:PP2H:PP2. GENH holds the last reading,
// the mask at the start, so an edge counts only between two readings of the
// loop: the window from the first reading to the last is n x 20 cycles, the
// period. Result: W = low byte, PP1H = high byte.
void writeCounter(Compilation& c, LibraryOutput& out) {
    Registers r(c);
    out.add("count\tmovwf " + r.gen);
    out.add("\tmovwf " + r.genh);
    out.add("\tbsf " + r.fsr + ",7");
    out.add("\tiorwf " + r.indf + ",f");
    out.add("\tbcf " + r.fsr + ",7");
    out.add("\tmovlw " + number(millisecondLoops(crystalMhz(c))));
    out.add("\tmovwf " + r.pp3);
    out.add("\tclrf " + r.pp3h);
    out.add("\tcall m@py");
    out.add("\tcomf " + r.pp2 + ",f");
    out.add("\tcomf " + r.pp2h + ",f");
    out.add("\tcomf " + r.pp0 + ",f");
    out.add("\tclrf " + r.pp1);
    out.add("\tclrf " + r.pp1h);
    out.add("ct@lp\tmovf " + r.indf + ",w");
    out.add("\tandwf " + r.gen + ",w");
    out.add("\txorwf " + r.genh + ",w");
    out.add("\txorwf " + r.genh + ",f");
    out.add("\tandwf " + r.genh + ",w");
    out.add("\tbtfss " + r.status + ",2");
    out.add("\tincfsz " + r.pp1 + ",f");
    out.add("\tgoto $+2");
    out.add("\tincf " + r.pp1h + ",f");
    out.add("\tgoto $+1");
    out.add(filler(c));
    out.add("\tincf " + r.pp2 + ",f");
    out.add("\tskpnz");
    out.add("\tincf " + r.pp2h + ",f");
    out.add("\tskpnz");
    out.add("\tincf " + r.pp0 + ",f");
    out.add("\tskpz");
    out.add("\tgoto ct@lp");
    out.add("\tmovf " + r.pp1 + ",w");
    out.add("\tgoto i@nt");
}

} // namespace zorvel
