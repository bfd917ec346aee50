// Character output of the runtime library: the digit sender of the number
// formatters and the dispatcher that routes each character to the outputs
// selected by the bits of BPFH.
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_marks.h"
#include "compiler/library/runtime_routines.h"

namespace zorvel {

// Sends the digit value in W unless it is dropped: GEN4 counts the digits
// still to come, a width in GEN4H (not 0) drops the digits before the last
// GEN4H, and while BPF bit 3 is set leading zeros are dropped; a non-zero
// digit and the last digit end that suppression.
void writeDigitSender(Compilation& c, LibraryOutput& out) {
    std::string pp0 = regAddress(c, "PP0"), gen4 = regAddress(c, "GEN4");
    std::string bpf = regAddress(c, "BPF");
    out.add("send@it\tmovwf " + pp0);
    out.add("\tdecf " + gen4 + ",f");
    out.add("\tskpnz");
    out.add("\tbcf " + bpf + ",3");
    out.add("\tmovfw " + regAddress(c, "GEN4H"));
    out.add("\tbz $+4");
    out.add("\tSubwf " + gen4 + ",w");
    out.add("\tskpnc");
    out.add("\treturn");
    out.add("\tmovfw " + pp0);
    out.add("\tskpz");
    out.add("\tbcf " + bpf + ",3");
    out.add("\tbtfsc " + bpf + ",3");
    out.add("\treturn");
    out.add("\tgoto d@snd");
}

// d@snd turns a digit 0..9 into its character; ch@snd jumps to the output
// whose BPFH bit is set, with the character in W. Only the outputs the
// program has are tested.
void writeDispatcher(Compilation& c, LibraryOutput& out) {
    out.add("d@snd");
    out.add("\taddlw 48");
    out.add("ch@snd");
    std::string bpfh = regAddress(c, "BPFH");
    struct Output {
        bool used;
        int bit;
        const char* target;
    };
    const RuntimeState& rt = c.runtime;
    const Output outputs[] = {{needed(c, Group::Print), 7, "print"},
                              {needed(c, Group::Rsout), 6, "rsout@"},
                              {rt.serout, 5, "serout"},
                              {rt.seroutFlow, 4, "sro@f"},
                              {rt.seroutTimeout, 3, "sro@t"}};
    for (const Output& o : outputs) {
        if (!o.used) continue;
        out.add("\tbtfsc " + bpfh + "," + std::to_string(o.bit));
        out.add(std::string("\tgoto ") + o.target);
    }
}

} // namespace zorvel
