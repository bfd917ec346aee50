// Array access across RAM banks: put@array and get@array hand the array's
// base and the element's index to find@address, which walks the index over
// the holes the allocator leaves between the banks' RAM (and over the
// interrupt save bytes) and leaves the element's address in FSR and IRP.
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_routines.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zorvel {
namespace {

// A run of addresses that holds no array element, first to last.
using Hole = std::pair<int, int>;

// The holes in address order, adjacent ones joined: each gap between one
// bank's RAM and the next bank's, and with an interrupt handler each save
// byte of banks 1 to 3.
std::vector<Hole> elementHoles(const Compilation& c) {
    const DeviceInfo& info = c.device.info;
    std::vector<Hole> holes;
    for (int b = 0; b < 3; ++b)
        if (info.bankStart(b + 1) > 0)
            holes.push_back({info.bankEnd(b) + 1, info.bankStart(b + 1) - 1});
    if (c.device.interruptOn)
        for (int bank = 1; bank < 4; ++bank)
            if (info.ramBanks() > bank) {
                int save = bankSaveAddress(info, bank);
                holes.push_back({save, save});
            }
    std::sort(holes.begin(), holes.end());
    std::vector<Hole> joined;
    for (const Hole& h : holes) {
        if (!joined.empty() && h.first <= joined.back().second + 1)
            joined.back().second = std::max(joined.back().second, h.second);
        else
            joined.push_back(h);
    }
    return joined;
}

struct Registers {
    std::string status, fsr, remaining;
};

// Jumps to `skip` when the address in IRP:FSR is at or past `next`.
void jumpIfAtOrPast(LibraryOutput& out, const Registers& r, int next, const std::string& skip) {
    std::string low = std::to_string(next & 255);
    if (next > 255) {
        out.add("\tbtfss " + r.status + ",7");
        out.add("\tgoto $+5");
    } else {
        out.add("\tbtfsc " + r.status + ",7");
        out.add("\tgoto " + skip);
    }
    out.add("\tmovlw " + low);
    out.add("\tsubwf " + r.fsr + ",w");
    out.add("\tskpnc");
    out.add("\tgoto " + skip);
}

// One hole ahead of the address: when the remaining index reaches it, the
// address moves past it and the index shrinks by the distance walked.
void writeHoleStep(LibraryOutput& out, const Registers& r, const Hole& h, int number) {
    std::string skip = "f@ad" + std::to_string(number + 1);
    int next = h.second + 1;
    out.add("f@ad" + std::to_string(number));
    jumpIfAtOrPast(out, r, next, skip);
    out.add("\tmovfw " + r.fsr);
    out.add("\tsublw " + std::to_string(h.first & 255));
    out.add("\tsubwf " + r.remaining + ",w");
    out.add("\tskpc");
    out.add("\tgoto f@adx");
    out.add("\tmovwf " + r.remaining);
    out.add("\tmovlw " + std::to_string(next & 255));
    out.add("\tmovwf " + r.fsr);
    out.add(std::string(next > 255 ? "\tbsf " : "\tbcf ") + r.status + ",7");
}

} // namespace

// put@array: base address in GEN4, index in GEN4H, value in W.
void writePutArray(Compilation& c, LibraryOutput& out) {
    std::string gpr = regAddress(c, "GPR"), fsr = regAddress(c, "FSR");
    out.add("put@array\tmovwf " + gpr);
    out.add("\tmovfw " + regAddress(c, "GEN4"));
    out.add("\tmovwf " + fsr);
    out.add("\tmovfw " + regAddress(c, "GEN4H"));
    out.add("\tcall find@address");
    out.add("\tmovfw " + gpr);
    out.add("\tmovwf " + regAddress(c, "INDF"));
    out.add("\tgoto i@nt");
}

// get@array: base address in GEN3H, index in W; the element comes back in W.
void writeGetArray(Compilation& c, LibraryOutput& out) {
    std::string fsr = regAddress(c, "FSR");
    out.add("get@array\tmovwf " + regAddress(c, "GEN4H"));
    out.add("\tmovfw " + regAddress(c, "GEN3H"));
    out.add("\tmovwf " + fsr);
    out.add("\tmovfw " + regAddress(c, "GEN4H"));
    out.add("\tcall find@address");
    out.add("\tmovfw " + regAddress(c, "INDF"));
    out.add("\tgoto i@nt");
}

// find@address: the array's base in IRP:FSR (the caller sets IRP for an
// array above address 255), the index in W. Leaves the element's address
// in IRP:FSR; returns without the common exit, which would clear IRP.
void writeFindAddress(Compilation& c, LibraryOutput& out) {
    Registers r{regAddress(c, "STATUS"), regAddress(c, "FSR"), regAddress(c, "GEN4H")};
    out.add("find@address\tmovwf " + r.remaining);
    std::vector<Hole> holes = elementHoles(c);
    for (size_t i = 0; i < holes.size(); ++i)
        writeHoleStep(out, r, holes[i], static_cast<int>(i));
    out.add("f@ad" + std::to_string(holes.size()));
    out.add("f@adx\tmovfw " + r.remaining);
    out.add("\taddwf " + r.fsr + ",f");
    out.add("\treturn");
}

} // namespace zorvel
