// The tone routines of the runtime library: the sine table (cos, sin), the
// two-tone synthesiser of FREQOUT, the telephone dial tones of DTMFOUT built
// on it, and the square waves and noise of SOUND. The timed loops are counted
// in instruction cycles; the same text runs at every crystal and only the
// loop counts and the padding change with it.
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_routines.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace zorvel {
namespace {

// Writes `cycles` instruction cycles of padding and returns the words used:
// first the filler (so that a timed loop clears the watchdog when it is on),
// then a loop that counts `counter` down from k (3k + 1 cycles) for waits of
// 8 cycles or more, then "goto $+1" (two cycles) and a filler for the rest.
int writePad(Compilation& c, LibraryOutput& out, int cycles, const std::string& counter) {
    if (cycles <= 0) return 0;
    out.add(filler(c));
    int words = 1;
    --cycles;
    if (cycles >= 8) {
        int k = std::min((cycles - 1) / 3, 255);
        out.add("\tmovlw " + number(k));
        out.add("\tmovwf " + counter);
        out.add("\tdecfsz " + counter + ",f");
        out.add("\tgoto $-1");
        words += 4;
        cycles -= 3 * k + 1;
    }
    for (; cycles >= 2; cycles -= 2, ++words)
        out.add("\tgoto $+1");
    if (cycles == 1) {
        out.add(filler(c));
        ++words;
    }
    return words;
}

// IRP cleared, the port address in GEN to FSR, the pin (mask in GENH)
// driven low and made an output through the TRIS register 128 bytes above
// the port. 9 words.
void writePinLowOutput(Compilation& c, LibraryOutput& out) {
    std::string fsr = regAddress(c, "FSR"), indf = regAddress(c, "INDF");
    out.add("\tbcf " + regAddress(c, "STATUS") + ",7");
    out.add("\tmovfw " + regAddress(c, "GEN"));
    out.add("\tmovwf " + fsr);
    out.add("\tmovfw " + regAddress(c, "GENH"));
    out.add("\txorlw 255");
    out.add("\tandwf " + indf + ",f");
    out.add("\tbsf " + fsr + ",7");
    out.add("\tandwf " + indf + ",f");
    out.add("\tbcf " + fsr + ",7");
}

// The pin at FSR/GENH driven low, then the common exit. 4 words.
void writePinLowExit(Compilation& c, LibraryOutput& out) {
    out.add("\tmovfw " + regAddress(c, "GENH"));
    out.add("\txorlw 255");
    out.add("\tandwf " + regAddress(c, "INDF") + ",f");
    out.add("\tgoto i@nt");
}

// The pin at FSR/GENH set to the carry with one write, at the same cycle
// whatever the carry: W = mask or 0, then INDF ^= (INDF ^ W) & mask.
// 6 words, 6 cycles.
void writePinFromCarry(Compilation& c, LibraryOutput& out) {
    std::string genh = regAddress(c, "GENH"), indf = regAddress(c, "INDF");
    out.add("\tmovfw " + genh);
    out.add("\tskpc");
    out.add("\tclrw");
    out.add("\txorwf " + indf + ",w");
    out.add("\tandwf " + genh + ",w");
    out.add("\txorwf " + indf + ",f");
}

// The quarter wave: round(127 sin(2 pi i / 256)) for i = 0..64, seven lines.
std::vector<std::string> quarterWaveLines() {
    const int perLine[] = {11, 10, 9, 9, 9, 9, 8};
    std::vector<std::string> lines;
    int i = 0;
    for (int count : perLine) {
        std::string line = "\tdt ";
        for (int k = 0; k < count; ++k, ++i) {
            double value = 127.0 * std::sin(2.0 * std::numbers::pi * i / 256.0);
            line += (k ? "," : "") + number(static_cast<int>(std::lround(value)));
        }
        lines.push_back(line);
    }
    return lines;
}

// Passes of the 100-cycle FREQOUT loop per millisecond: 2.5 X (10 at 4 MHz,
// 50 at 20 MHz), rounded for the crystals where it is not whole.
int passesPerMillisecond(int mhz) {
    return std::max((5 * mhz + 1) / 2, 1);
}

// The phase step of f Hz is f * 65536 / (2500 X), the passes per second:
// (f * M) >> 8 with M = round(2^24 / (2500 X)).
int stepFactor(int mhz) {
    return static_cast<int>(std::lround(16777216.0 / (2500.0 * mhz)));
}

// PP0:PP2H, the middle of m@py's product, rounded by bit 7 of PP2; the
// low byte left in W. When that bit is clear, PP2 + 128 neither carries nor
// is zero.
void writeRoundedStep(Compilation& c, LibraryOutput& out) {
    std::string pp2h = regAddress(c, "PP2H");
    out.add("\tmovlw 128");
    out.add("\taddwf " + regAddress(c, "PP2") + ",w");
    out.add("\tskpnc");
    out.add("\tincf " + pp2h + ",f");
    out.add("\tskpnz");
    out.add("\tincf " + regAddress(c, "PP0") + ",f");
    out.add("\tmovfw " + pp2h);
}

// to += from, 16 bits, 6 cycles whatever the carry (see runtime_arith.cpp).
void writeAddWord(Compilation& c, LibraryOutput& out, const std::string& from,
                  const std::string& to) {
    std::string fromH = regAddress(c, from + "H");
    out.add("\tmovfw " + regAddress(c, from));
    out.add("\taddwf " + regAddress(c, to) + ",f");
    out.add("\tmovfw " + fromH);
    out.add("\tskpnc");
    out.add("\tincfsz " + fromH + ",w");
    out.add("\taddwf " + regAddress(c, to + "H") + ",f");
}

// The steps of SOUND: 50 us each, 12.5 X cycles.
int soundStepCycles(int mhz) {
    return (25 * mhz + 1) / 2;
}

} // namespace

// cos adds a quarter turn and falls into sin, written next.
void writeCos(Compilation&, LibraryOutput& out) {
    out.add("cos\taddlw 64");
}

// sin: W = 127 sin(2 pi W / 256) as a signed byte, the angle kept in GEN3.
// si@g is the same with a plain return, 22 cycles with its call, for the
// timed loop of FREQOUT. The angle's low six bits index the quarter-wave
// table, mirrored (64 minus them) when bit 6 is set; bit 7 negates. The
// table is reached by a computed jump with PCLATH set from its address and
// the carry of the low byte, so it may cross a 256-word boundary.
void writeSin(Compilation& c, LibraryOutput& out) {
    std::string gen3 = regAddress(c, "GEN3"), pclath = regAddress(c, "PCLATH");
    out.add("sin\tcall si@g");
    out.add("\tgoto i@nt");
    out.add("si@g\tmovwf " + gen3);
    out.add("\tmovlw high ($+14)"); // the table, 14 words on
    out.add("\tmovwf " + pclath);
    out.add("\tmovfw " + gen3);
    out.add("\tandlw 63");
    out.add("\tbtfsc " + gen3 + ",6");
    out.add("\tsublw 64");
    out.add("\taddlw low ($+8)");
    out.add("\tskpnc");
    out.add("\tincf " + pclath + ",f");
    out.add("\tcall $+4");
    out.add("\tbtfsc " + gen3 + ",7");
    out.add("\tsublw 0");
    out.add("\treturn");
    out.add("\tmovwf " + regAddress(c, "PCL"));
    for (std::string& line : quarterWaveLines())
        out.add(std::move(line));
}

// FREQOUT. Port address in GEN, bit mask in GENH, milliseconds in GEN2H:GEN2,
// the first frequency in PP2H:PP2 (Hz), the second in PP7H:PP7; GEN, GENH,
// GEN2, GEN2H, GEN4 and GEN4H are kept (DTMFOUT plays several digits from
// one loading).
// fr@out1 plays the first alone: the second accumulator runs at the same
// frequency, so their mean is the first tone at full amplitude. fr@outc
// turns both frequencies into phase steps (PP4H:PP4, PP7H:PP7) through
// fr@stp; fr@out starts from the steps. Every pass of fr@lp runs the same
// 100 cycles: both 16-bit phases (PP5H:PP5, PP6H:PP6) advance, the sines of
// their high bytes are averaged and offset to 1..255, and that is added to
// PP1; the carry is the pin (a first-order delta-sigma converter). PP3
// counts the passes of one millisecond, PP2H:PP2 the milliseconds. The pin
// is made an output and left low.
void writeFreqOut(Compilation& c, LibraryOutput& out) {
    int mhz = crystalMhz(c);
    int factor = stepFactor(mhz);
    int passes = passesPerMillisecond(mhz);
    std::string pp0 = regAddress(c, "PP0"), pp0h = regAddress(c, "PP0H");
    std::string pp1 = regAddress(c, "PP1"), pp1h = regAddress(c, "PP1H");
    std::string pp2 = regAddress(c, "PP2"), pp2h = regAddress(c, "PP2H");
    std::string pp3 = regAddress(c, "PP3");
    auto copy = [&](const char* from, const char* to) {
        out.add("\tmovfw " + regAddress(c, from));
        out.add("\tmovwf " + regAddress(c, to));
    };
    out.add("fr@out1\tmovfw " + pp2);
    out.add("\tmovwf " + regAddress(c, "PP7"));
    copy("PP2H", "PP7H");
    out.add("fr@outc\tmovlw " + number(factor & 255));
    out.add("\tmovwf " + pp1);
    out.add("\tmovlw " + number(factor >> 8));
    out.add("\tmovwf " + pp1h);
    copy("PP2", "PP3");
    copy("PP2H", "PP3H");
    out.add("\tcall fr@stp");
    out.add("\tmovwf " + regAddress(c, "PP4"));
    copy("PP0", "PP4H");
    copy("PP7", "PP3");
    copy("PP7H", "PP3H");
    out.add("\tcall fr@stp");
    out.add("\tmovwf " + regAddress(c, "PP7"));
    copy("PP0", "PP7H");
    out.add("fr@out");
    writePinLowOutput(c, out);
    for (const char* name : {"PP5", "PP5H", "PP6", "PP6H", "PP1"})
        out.add("\tclrf " + regAddress(c, name));
    out.add("\tmovlw " + number(passes));
    out.add("\tmovwf " + pp3);
    copy("GEN2", "PP2");
    copy("GEN2H", "PP2H");
    out.add("\tiorwf " + pp2 + ",w");
    out.add("\tskpnz");
    out.add("\tgoto i@nt");
    // 71 cycles of synthesis and output.
    out.add("fr@lp");
    writeAddWord(c, out, "PP4", "PP5");
    writeAddWord(c, out, "PP7", "PP6");
    out.add("\tmovfw " + regAddress(c, "PP5H"));
    out.add("\tcall si@g");
    out.add("\txorlw 128");
    out.add("\tmovwf " + pp0);
    out.add("\tmovfw " + regAddress(c, "PP6H"));
    out.add("\tcall si@g");
    out.add("\txorlw 128");
    out.add("\taddwf " + pp0 + ",w");
    out.add("\tmovwf " + pp0);
    out.add("\trrf " + pp0 + ",w");
    out.add("\taddwf " + pp1 + ",f");
    writePinFromCarry(c, out);
    // 14 cycles of padding, then 15 of counting, the same whether the
    // millisecond ends or not: Z from the pass count selects the reload of
    // PP3 and the 1 taken off PP2H:PP2. The loop ends when that reaches 0.
    writePad(c, out, 100 - 71 - 15, pp0h);
    out.add("\tdecf " + pp3 + ",f");
    out.add("\tmovlw " + number(passes));
    out.add("\tskpnz");
    out.add("\tmovwf " + pp3);
    out.add("\tmovlw 0");
    out.add("\tskpnz");
    out.add("\tmovlw 1");
    out.add("\tsubwf " + pp2 + ",f");
    out.add("\tskpc");
    out.add("\tdecf " + pp2h + ",f");
    out.add("\tmovfw " + pp2);
    out.add("\tiorwf " + pp2h + ",w");
    out.add("\tskpz");
    out.add("\tgoto fr@lp");
    writePinLowExit(c, out);
    // The phase step of the frequency in PP3H:PP3 (M in PP1H:PP1): the
    // product's middle bytes, high byte in PP0, low byte in W.
    out.add("fr@stp\tcall m@py");
    writeRoundedStep(c, out);
    out.add("\treturn");
}

// DTMFOUT. Digit in W (0-9, 10 = *, 11 = #, 12-15 = A-D; above 15 returns
// at once), pin as for FREQOUT, tone time in GEN2H:GEN2 ms, silence after it
// in GEN4H:GEN4 ms; those and the pin are kept for the next digit. The two
// frequencies go to fr@outc, the silence to dly@w. dtf@tbl holds each digit's code (row in bits
// 2:1, column in bits 6:5), dtf@rtb the eight frequencies as high, low bytes; dtmf@r reads the
// frequency table, dtmf@l the code table (through GEN3).
void writeDtmfOut(Compilation& c, LibraryOutput& out) {
    std::string pp3 = regAddress(c, "PP3"), pp4 = regAddress(c, "PP4");
    std::string gen3 = regAddress(c, "GEN3"), pclath = regAddress(c, "PCLATH");
    out.add("dtmf@o\tmovwf " + pp3);
    out.add("\tsublw 15");
    out.add("\tskpc");
    out.add("\tgoto i@nt");
    out.add("\tmovfw " + pp3);
    out.add("\tcall dtmf@l");
    out.add("\tmovwf " + pp3);
    out.add("\tandlw 6");
    auto frequency = [&](const char* low, const char* high) {
        out.add("\tmovwf " + pp4);
        out.add("\tcall dtmf@r");
        out.add("\tmovwf " + regAddress(c, high));
        out.add("\tincf " + pp4 + ",w");
        out.add("\tcall dtmf@r");
        out.add("\tmovwf " + regAddress(c, low));
    };
    frequency("PP2", "PP2H");
    out.add("\tswapf " + pp3 + ",w");
    out.add("\tandlw 6");
    out.add("\taddlw 8");
    frequency("PP7", "PP7H");
    out.add("\tcall fr@outc");
    out.add("\tmovfw " + regAddress(c, "GEN4H"));
    out.add("\tmovwf " + regAddress(c, "PP1H"));
    out.add("\tmovfw " + regAddress(c, "GEN4"));
    out.add("\tgoto dly@w");
    out.add("dtmf@r\taddlw 16");
    out.add("dtmf@l\tmovwf " + gen3);
    out.add("\tmovlw high dtf@tbl");
    out.add("\tmovwf " + pclath);
    out.add("\tmovfw " + gen3);
    out.add("\taddlw low dtf@tbl");
    out.add("\tskpnc");
    out.add("\tincf " + pclath + ",f");
    out.add("\tmovwf " + regAddress(c, "PCL"));
    out.add("dtf@tbl");
    out.add("\tdt 166,128,160,192,130,162,194,132");
    out.add("\tdt 164,196,134,198,224,226,228,230");
    out.add("dtf@rtb");
    out.add("\tdt 2,185,3,2,3,84,3,173,4,185,5,56,5,197,6,97");
}

// SOUND. Port address in GEN, bit mask in GENH, note in PP1, duration in W
// (kept in PP1H, 12 ms a unit; 0 returns at once); GEN and GENH are kept for
// the next note. Each pass of n@lp is one step of 50 us (12.5 X cycles);
// PP2 counts 240 steps a unit. Notes 0-127: note 0 keeps the pin low (the
// mask in PP2H is 0), notes 1-127 toggle it every 128 - note steps (PP3,
// counted in PP3H), f = 10000 / (128 - note) Hz. Notes 128-255 go through
// n@lp1: the pin takes bit 0 of a new rndm value each step (white noise).
// The pin is made an output and left low.
void writeSound(Compilation& c, LibraryOutput& out) {
    int step = soundStepCycles(crystalMhz(c));
    std::string pp1 = regAddress(c, "PP1"), pp2 = regAddress(c, "PP2");
    std::string pp2h = regAddress(c, "PP2H"), pp4 = regAddress(c, "PP4");
    std::string pp3 = regAddress(c, "PP3"), pp3h = regAddress(c, "PP3H");
    std::string indf = regAddress(c, "INDF");
    out.add("noise\tmovwf " + regAddress(c, "PP1H"));
    out.add("\tiorlw 0");
    out.add("\tskpnz");
    out.add("\tgoto i@nt");
    writePinLowOutput(c, out);
    out.add("\tmovlw 240");
    out.add("\tmovwf " + pp2);
    out.add("\tmovfw " + regAddress(c, "GENH"));
    out.add("\tmovwf " + pp2h);
    out.add("\tmovf " + pp1 + ",f");
    out.add("\tskpnz");
    out.add("\tclrf " + pp2h);
    out.add("\tmovfw " + pp1);
    out.add("\tsublw 128");
    out.add("\tmovwf " + pp3);
    out.add("\tmovwf " + pp3h);
    // A tone step: 2 cycles of dispatch, 8 of toggling (W = the mask when
    // the half period ends, else 0; then the reload), the pad, 7 of counting.
    out.add("n@lp\tbtfsc " + pp1 + ",7");
    out.add("\tgoto n@lp1");
    out.add("\tmovfw " + pp2h);
    out.add("\tdecfsz " + pp3h + ",f");
    out.add("\tclrw");
    out.add("\txorwf " + indf + ",f");
    out.add("\tmovfw " + pp3);
    out.add("\tmovf " + pp3h + ",f");
    out.add("\tskpnz");
    out.add("\tmovwf " + pp3h);
    writePad(c, out, std::max(step - 2 - 8 - 7, 0), pp4);
    // The count, 7 cycles either way; at the end of the last unit it jumps
    // over its last two words to the end.
    out.add("\tdecfsz " + pp2 + ",f");
    out.add("\tgoto $+6");
    out.add("\tmovlw 240");
    out.add("\tmovwf " + pp2);
    out.add("\tdecfsz " + regAddress(c, "PP1H") + ",f");
    out.add("\tgoto n@lp");
    out.add("\tgoto $+3");
    out.add("\tgoto $+1");
    out.add("\tgoto n@lp");
    writePinLowExit(c, out);
    // A noise step: 3 cycles of dispatch, 31 for rndm with its call and
    // the pin from bit 0 of PP0, the pad, 2 back to the count and its 7.
    out.add("n@lp1\tcall rndm");
    out.add("\tmovfw " + pp2h);
    out.add("\tbtfss " + regAddress(c, "PP0") + ",0");
    out.add("\tclrw");
    out.add("\txorwf " + indf + ",w");
    out.add("\tandwf " + pp2h + ",w");
    out.add("\txorwf " + indf + ",f");
    int pad = writePad(c, out, std::max(step - 3 - 31 - 2 - 7, 0), pp4);
    // Back over the pad, this loop's first 7 words, the end (4) and the
    // count (9).
    out.add("\tgoto $-" + number(pad + 7 + 4 + 9));
}

} // namespace zorvel
