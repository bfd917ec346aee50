#include "ram_layout.hpp"

#include <algorithm>

namespace gendevices {

namespace {

constexpr unsigned bankSize = 128;
constexpr unsigned maxBanks = 4;

// Offsets 0x00-0x0B are special-function registers in every bank: INDF, PCL,
// STATUS, FSR, PCLATH and INTCON are mirrored in all banks, TMR0/OPTION_REG and
// PORTB/TRISB in banks 2 and 3. The headers list each register once, at its
// home address, so the mirrors would otherwise look like free RAM.
constexpr unsigned coreRegisterBlock = 0x0C;

bool isGeneralPurpose(unsigned address, unsigned bank, const ChipProperties& chip,
                      const HeaderInfo& header) {
    unsigned offset = address % bankSize;
    if (offset < coreRegisterBlock) return false;
    if (!header.maxRam || address > *header.maxRam) return false;
    if (header.isBadRam(address) || header.isRegisterAddress(address)) return false;
    // Common RAM is reached from every bank but belongs to bank 0.
    return bank == 0 || !chip.commonRam || !chip.commonRam->contains(offset);
}

std::vector<AddressRange> findRuns(unsigned bank, const ChipProperties& chip,
                                   const HeaderInfo& header) {
    std::vector<AddressRange> runs;
    bool open = false;
    for (unsigned address = bank * bankSize; address < (bank + 1) * bankSize; ++address) {
        bool free = isGeneralPurpose(address, bank, chip, header);
        if (free && open)
            runs.back().last = address;
        else if (free)
            runs.push_back(AddressRange{address, address});
        open = free;
    }
    return runs;
}

std::optional<AddressRange> longestRun(const std::vector<AddressRange>& runs) {
    std::optional<AddressRange> best;
    for (const AddressRange& run : runs) {
        if (!best || run.size() > best->size()) best = run;
    }
    return best;
}

} // namespace

std::vector<BankLayout> findBanks(const ChipProperties& chip, const HeaderInfo& header) {
    std::vector<BankLayout> banks;
    unsigned count = std::min(chip.bankCount, maxBanks);
    for (unsigned bank = 0; bank < count; ++bank) {
        BankLayout layout;
        layout.bank = bank;
        layout.runs = findRuns(bank, chip, header);
        layout.range = longestRun(layout.runs);
        banks.push_back(layout);
    }
    return banks;
}

} // namespace gendevices
