// The number and string formatters of the runtime library: BIN (out_bin2,
// out_bin, out_binb), HEX (out_hex, out_hex4 .. out_hex1, hdig), DEC and the
// "@" item (o@dec2b, o@dec2, o@dec, o@decb, s@dig), STR from one RAM bank
// (sb@strout) or across the bank gaps (mb@strout), and REP (rep). They send
// each character through the dispatcher ch@snd, which picks the output by
// the bit of BPFH the caller set. The value to format is PP2H:PP2; GEN4 and
// GEN4H are the digit count and width (or the string and repeat counts).
// The output routines keep PP2, PP2H, GEN4 and GEN4H, so these routines
// keep their state there across the characters.
//
// With the timed SEROUT (sro@t) in the program, each character is followed
// by a carry test that stops the routine when a send timed out (carry
// clear), and every normal end leaves the carry set.
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_routines.h"

namespace zorvel {
namespace {

bool timedSerout(const Compilation& c) {
    return c.runtime.seroutTimeout;
}

// After a character: stop when it timed out (only with sro@t).
void stopOnTimeout(const Compilation& c, LibraryOutput& out) {
    if (!timedSerout(c)) return;
    out.add("\tskpc");
    out.add("\tgoto i@nt");
}

// A normal end leaves the carry set (only with sro@t).
void carrySet(const Compilation& c, LibraryOutput& out) {
    if (timedSerout(c)) out.add("\tsetc");
}

} // namespace

// Group 14: the 16 binary digits of PP2H:PP2, most significant first,
// through send@it. out_bin2 clears the width and falls into out_bin, which
// drops leading zeros; out_binb sends the last GEN4H digits (all 16 with
// GEN4H = 0). send@it returns with the carry as it found it when it drops a
// digit, and the digit's bit is in the carry here: with sro@t the carry is
// set before each call, so that a dropped 0 does not read as a timeout.
void writeBinary(Compilation& c, LibraryOutput& out) {
    std::string pp2 = regAddress(c, "PP2"), pp2h = regAddress(c, "PP2H");
    std::string gen4 = regAddress(c, "GEN4");
    out.add("out_bin2\tclrf " + regAddress(c, "GEN4H"));
    out.add("out_bin\tbsf " + regAddress(c, "BPF") + ",3");
    out.add("out_binb movlw 16");
    out.add("\tmovwf " + gen4);
    out.add("\tclrw");
    out.add("\trlf " + pp2 + ",f");
    out.add("\trlf " + pp2h + ",f");
    out.add("\tskpnc");
    out.add("\tmovlw 1");
    carrySet(c, out);
    out.add("\tcall send@it");
    stopOnTimeout(c, out);
    out.add("\tmovfw " + gen4);
    out.add(timedSerout(c) ? "\tbnz $-11" : "\tbnz $-8");
    out.add("\treturn");
}

// Group 15: hexadecimal digits of PP2H:PP2. out_hex4 .. out_hex1 send the
// last 4 .. 1 digits with their zeros; each falls into the next. out_hex
// sends all four but drops leading zeros (h@dg), the last digit always.
// hdig turns W's low nibble into '0'..'9', 'A'..'F'.
void writeHex(Compilation& c, LibraryOutput& out) {
    std::string pp2 = regAddress(c, "PP2"), pp2h = regAddress(c, "PP2H");
    std::string bpf = regAddress(c, "BPF");
    out.add("out_hex\tbsf " + bpf + ",3");
    out.add("\tswapf " + pp2h + ",w");
    out.add("\tcall h@dg");
    stopOnTimeout(c, out);
    out.add("\tmovfw " + pp2h);
    out.add("\tcall h@dg");
    stopOnTimeout(c, out);
    out.add("\tswapf " + pp2 + ",w");
    out.add("\tcall h@dg");
    stopOnTimeout(c, out);
    out.add("\tgoto out_hex1");
    out.add("out_hex4\tswapf " + pp2h + ",w");
    out.add("\tcall hdig");
    stopOnTimeout(c, out);
    out.add("out_hex3\tmovfw " + pp2h);
    out.add("\tcall hdig");
    stopOnTimeout(c, out);
    out.add("out_hex2\tswapf " + pp2 + ",w");
    out.add("\tcall hdig");
    stopOnTimeout(c, out);
    out.add("out_hex1\tbcf " + bpf + ",3");
    out.add("\tmovfw " + pp2);
    out.add("hdig\tandlw 15");
    out.add("\taddlw 246");
    out.add("\tskpnc");
    out.add("\taddlw 7");
    out.add("\taddlw 10");
    out.add("\tgoto d@snd");
    // A digit of out_hex: dropped while it and all before it are 0.
    out.add("h@dg\tandlw 15");
    out.add("\tskpz");
    out.add("\tbcf " + bpf + ",3");
    out.add("\tbtfss " + bpf + ",3");
    out.add("\tgoto hdig");
    carrySet(c, out);
    out.add("\treturn");
}

// Group 16: the five decimal digits of PP2H:PP2 through send@it, which
// drops leading zeros while BPF bit 3 is set and all but the last GEN4H
// digits when GEN4H is not 0. o@dec2b clears PP2H (a byte value); o@dec2 and
// o@dec clear the width and drop leading zeros; o@decb is the counted entry
// (width in GEN4H, BPF bit 3 cleared by the caller). s@dig divides by PP1H:W
// (d@vd), sends the quotient digit and leaves the remainder in PP2H:PP2.
void writeDecimal(Compilation& c, LibraryOutput& out) {
    std::string pp2 = regAddress(c, "PP2"), pp2h = regAddress(c, "PP2H");
    std::string pp1h = regAddress(c, "PP1H");
    out.add("o@dec2b\tclrf " + pp2h);
    out.add("o@dec2");
    out.add("o@dec\tclrf " + regAddress(c, "GEN4H"));
    out.add("\tbsf " + regAddress(c, "BPF") + ",3");
    out.add("o@decb\tmovlw 5");
    out.add("\tmovwf " + regAddress(c, "GEN4"));
    for (int divisor : {10000, 1000, 100, 10}) {
        out.add("\tmovlw " + std::to_string(divisor / 256));
        out.add("\tmovwf " + pp1h);
        out.add("\tmovlw " + std::to_string(divisor % 256));
        out.add("\tcall s@dig");
        stopOnTimeout(c, out);
    }
    out.add("\tmovfw " + pp2);
    carrySet(c, out);
    out.add("\tgoto send@it");
    out.add("s@dig\tmovwf " + regAddress(c, "PP1"));
    out.add("\tmovfw " + pp2);
    out.add("\tmovwf " + regAddress(c, "PP0"));
    out.add("\tmovfw " + pp2h);
    out.add("\tmovwf " + regAddress(c, "PP0H"));
    out.add("\tcall d@vd");
    carrySet(c, out);
    out.add("\tgoto send@it");
}

// Group 18: up to GEN4 characters from the RAM address W (kept in PP2; its
// bit 8 in PP2H bit 0, which sets IRP on devices with more than two banks),
// stopping early at a 0 byte.
void writeStringOneBank(Compilation& c, LibraryOutput& out) {
    std::string pp2 = regAddress(c, "PP2"), gen4 = regAddress(c, "GEN4");
    std::string status = regAddress(c, "STATUS");
    out.add("sb@strout\tmovwf " + pp2);
    out.add("sb@stroutlp");
    carrySet(c, out);
    out.add("\tmovf " + gen4 + ",f");
    out.add("\tbz i@nt");
    out.add("\tmovfw " + pp2);
    out.add("\tmovwf " + regAddress(c, "FSR"));
    if (c.device.info.ramBanks() > 2) {
        out.add("\tbcf " + status + ",7");
        out.add("\tbtfsc " + regAddress(c, "PP2H") + ",0");
        out.add("\tbsf " + status + ",7");
    }
    out.add("\tmovfw " + regAddress(c, "INDF"));
    out.add("\tbz i@nt");
    out.add("\tcall ch@snd");
    stopOnTimeout(c, out);
    out.add("\tincf " + pp2 + ",f");
    out.add("\tdecf " + gen4 + ",f");
    out.add("\tgoto sb@stroutlp");
}

// Group 19: the same for an array that crosses a gap between RAM banks.
// The address of the current character is kept in PP2 (bit 8 in PP2H bit
// 0); find@address, get@array's address step, moves it on by one element
// over the gaps (by 0 for the first character). get@array itself is not
// used: its base register GEN3H is SEROUT's pace, and its exit clears IRP.
void writeStringAcrossBanks(Compilation& c, LibraryOutput& out) {
    std::string pp2 = regAddress(c, "PP2"), pp2h = regAddress(c, "PP2H");
    std::string gen4 = regAddress(c, "GEN4"), gpr = regAddress(c, "GPR");
    std::string status = regAddress(c, "STATUS"), fsr = regAddress(c, "FSR");
    out.add("mb@strout\tmovwf " + pp2);
    out.add("\tclrw");
    out.add("\tgoto $+2");
    out.add("mb@stroutlp\tmovlw 1");
    out.add("\tmovwf " + gpr);
    carrySet(c, out);
    out.add("\tmovf " + gen4 + ",f");
    out.add("\tbz i@nt");
    out.add("\tmovfw " + pp2);
    out.add("\tmovwf " + fsr);
    out.add("\tbcf " + status + ",7");
    out.add("\tbtfsc " + pp2h + ",0");
    out.add("\tbsf " + status + ",7");
    out.add("\tmovfw " + gpr);
    out.add("\tcall find@address");
    out.add("\tmovfw " + fsr);
    out.add("\tmovwf " + pp2);
    out.add("\tbcf " + pp2h + ",0");
    out.add("\tbtfsc " + status + ",7");
    out.add("\tbsf " + pp2h + ",0");
    out.add("\tmovfw " + regAddress(c, "INDF"));
    out.add("\tbcf " + status + ",7");
    out.add("\tbz i@nt");
    out.add("\tcall ch@snd");
    stopOnTimeout(c, out);
    out.add("\tdecf " + gen4 + ",f");
    out.add("\tgoto mb@stroutlp");
}

// Group 20: the character in W, GEN4H times (0 sends nothing).
void writeRepeat(Compilation& c, LibraryOutput& out) {
    std::string pp2 = regAddress(c, "PP2"), gen4h = regAddress(c, "GEN4H");
    out.add("rep\tmovwf " + pp2);
    carrySet(c, out);
    out.add("\tmovf " + gen4h + ",f");
    out.add("\tbz i@nt");
    out.add("\tmovfw " + pp2);
    out.add("\tcall ch@snd");
    stopOnTimeout(c, out);
    out.add("\tdecf " + gen4h + ",f");
    out.add(timedSerout(c) ? "\tgoto $-9" : "\tgoto $-6");
}

} // namespace zorvel
