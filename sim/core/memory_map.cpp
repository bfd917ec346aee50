#include "sim/core/memory_map.h"

#include <set>

namespace zorvel::sim::core {

namespace {

bool coreRegister(int offset) {
    return offset == 0 || offset == 2 || offset == 3 || offset == 4 || offset == 0x0A ||
           offset == 0x0B;
}

bool inBank(const DeviceLayout& l, int bank, int address) {
    return l.bankEnd[bank] > 0 && address >= l.bankStart[bank] && address <= l.bankEnd[bank];
}

// The address an access of `address` reaches once whole-bank mirrors are resolved.
int unfoldBanks(const DeviceLayout& l, int address) {
    if (l.bankCount == 2) return address & 0xFF; // RP1 has no effect
    bool banks23Mirror = l.bankEnd[2] == 0 && l.bankEnd[3] == 0 && l.ramBanks <= 2;
    if (banks23Mirror && address >= 0x100) return address - 0x100;
    return address;
}

int resolve(const DeviceLayout& l, const std::set<int>& registers, int address) {
    int a = unfoldBanks(l, address);
    int bank = a >> 7;
    int offset = a & 0x7F;
    if (coreRegister(offset)) return offset;
    if (registers.count(a) || inBank(l, bank, a)) return a;
    // TMR0/PORTB and OPTION_REG/TRISB repeat in banks 2 and 3.
    if (bank >= 2 && (offset == 1 || offset == 6) && registers.count(a - 0x100)) return a - 0x100;
    if (bank >= 1 && inBank(l, 0, offset) && !inBank(l, bank, a)) {
        if (l.bankCount == 2 && l.bankEnd[1] == 0) return offset; // bank 1 repeats bank 0
        if (offset >= 0x70) return offset;                        // common RAM
    }
    return -1;
}

} // namespace

MemoryMap buildMemoryMap(const DeviceLayout& layout) {
    std::set<int> registers;
    for (const auto& [name, address] : layout.registers)
        registers.insert(address);
    MemoryMap map;
    for (int a = 0; a < 512; ++a) {
        int c = resolve(layout, registers, a);
        map.canonical[a] = static_cast<int16_t>(c);
    }
    for (int a = 0; a < 512; ++a) {
        int bank = a >> 7;
        map.ram[a] = !registers.count(a) && !coreRegister(a & 0x7F) && inBank(layout, bank, a);
    }
    return map;
}

} // namespace zorvel::sim::core
