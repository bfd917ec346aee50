#include "compiler/library/library_writer.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/file_io.h"
#include "compiler/library/macro_prelude.h"
#include "compiler/library/runtime_groups.h"

namespace zorvel {
namespace {

void writeHeader(LibraryOutput& out) {
    out.add(";*********************************************");
    out.add(";*           Code Produced by the            *");
    out.add(";* ZORVEL Compiler. Version 1.10 *");
    out.add(";*********************************************");
}

// gpasm takes an assignment only in column one, so CONFIG_REQ has no tab.
void writeListing(const Compilation& c, LibraryOutput& out) {
    if (c.device.configGiven) out.add("CONFIG_REQ=1");
    out.add("\tLIST  P=" + c.device.name + " , w=2, x=on, r=DEC");
    out.add("\t#include \"P" + c.device.name + ".zvi\"");
}

// XTAL, the RAM bank constants (banks 1..3 only where the device has them).
void writeDeviceConstants(const Compilation& c, LibraryOutput& out) {
    const DeviceInfo& info = c.device.info;
    out.add("XTAL = " + std::to_string(c.device.settings[kXtal].number));
    out.add("RAM_BANKS = " + std::to_string(info.ramBanks()));
    for (int bank = 0; bank < 4; ++bank) {
        if (bank > 0 && info.bankStart(bank) <= 0) continue;
        std::string prefix = "BANK" + std::to_string(bank);
        out.add(prefix + "_START = " + std::to_string(info.bankStart(bank)));
        out.add(prefix + "_END = " + std::to_string(info.bankEnd(bank)));
    }
}

// The bank tracker, the code size in K words, and the configuration fuses.
void writeAssemblerSettings(const Compilation& c, LibraryOutput& out) {
    out.add("p@b=0");
    switch (c.device.info.codeSizeClass()) {
    case 1: out.add("c@s=2"); break;
    case 2: out.add("c@s=4"); break;
    case 3:
    case 4: out.add("c@s=8"); break;
    default: break;
    }
    if (c.device.configGiven) out.add(c.device.configText);
}

// The interrupt save registers and the system variables, at consecutive
// addresses from the start of bank 0 (the symbol table allocates the same).
void writeEquates(const Compilation& c, LibraryOutput& out) {
    const DeviceInfo& info = c.device.info;
    int next = info.bankStart(0);
    auto equate = [&](const std::string& name, int address) {
        out.add(name + " Equ " + std::to_string(address));
    };
    if (c.device.interruptOn) {
        for (const char* name : {"WSAVE", "SSAVE", "PSAVE", "FSRSAVE"})
            equate(name, next++);
        for (int bank = 1; bank < 4; ++bank)
            if (info.ramBanks() > bank)
                equate("WSAVE" + std::to_string(bank), bankSaveAddress(info, bank));
    }
    for (const char* name :
         {"GEN",  "GENH", "GEN2", "GEN2H", "GEN3", "GEN3H", "GEN4", "GEN4H", "PP0",
          "PP0H", "PP1",  "PP1H", "PP2",   "PP2H", "PP3",   "PP3H", "PP4",   "PP4H",
          "PP5",  "PP5H", "PP6",  "PP6H",  "PP7",  "PP7H",  "GPR",  "BPF",   "BPFH"})
        equate(name, next++);
}

void writeEepromData(const Compilation& c, LibraryOutput& out) {
    if (!c.eeprom.present) return;
    out.add("\tOrg " + std::to_string(c.device.info.eepromAddress()));
    for (int32_t value : c.eeprom.values)
        out.add("\tDE " + std::to_string(value));
}

// The reset vector (with the bootloader's three instructions in front of the
// jump) and the interrupt vector.
void writeVectors(const Compilation& c, LibraryOutput& out) {
    out.add("\torg 0");
    if (c.device.settings[kBootloader].number != 0) {
        out.add(filler(c));
        out.add("\tclrf " + regAddress(c, "BPF"));
        out.add("\tclrf " + regAddress(c, "PCLATH"));
    }
    out.add("\tgoto Start@");
    if (!c.device.interruptOn) return;
    out.add("\torg 4");
    out.add("\tgoto " + c.device.handlerLabel);
}

// The program calls the runtime subroutines with the page bits clear, so
// everything above must end inside the first 2K-word page.
void writePageCheck(LibraryOutput& out) {
    out.add("\tif($>=800h)");
    out.add("\tERROR \"Library has exceeded page 0.\"");
    out.add("\tendif");
}

std::string joinWithLineEnds(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    return text;
}

} // namespace

// The calibration value sits in a retlw at the top of program memory. OSCCAL
// lives in bank 1 on some devices: select it there for the write.
void writeOscCal(const Compilation& c, LibraryOutput& out, const char* call) {
    const SymbolEntry* osccal = c.symbols.find("OSCCAL");
    bool bank1 = osccal && (osccal->address & 128) != 0;
    out.add(call);
    if (bank1) out.add("\tbsf 3,5");
    out.add("\tmovwf OSCCAL");
    if (bank1) out.add("\tbcf 3,5");
}

void writeStartUp(const Compilation& c, LibraryOutput& out) {
    out.add("Start@");
    if (out.bpfUsed) out.add("\tclrf " + regAddress(c, "BPF"));
    if (out.bpfhUsed) out.add("\tclrf " + regAddress(c, "BPFH"));
    if (c.device.oscCalSmall) writeOscCal(c, out, "\tcall 03FFh");
    if (c.device.oscCalLarge) writeOscCal(c, out, "\tcall 07FFh");
}

std::vector<std::string> libraryLines(Compilation& c) {
    LibraryOutput out;
    writeHeader(out);
    writeListing(c, out);
    writeDeviceConstants(c, out);
    writeAssemblerSettings(c, out);
    writeMacroPrelude(c, out);
    writeEquates(c, out);
    writeEepromData(c, out);
    writeVectors(c, out);
    writeRuntimeGroups(c, out);
    writePageCheck(out);
    writeStartUp(c, out);
    return out.lines;
}

void writeLibraryFile(Compilation& c) {
    const std::string& name = c.ctx.libraryName;
    std::filesystem::path path = c.options.sourceName.parent_path() / name;
    bool written =
        !name.empty() && writeFileAtomic(path, joinWithLineEnds(libraryLines(c))).empty();
    if (!written) c.alert("Unable to Create " + name + "\r\nMake sure it's not Write Protected");
}

} // namespace zorvel
