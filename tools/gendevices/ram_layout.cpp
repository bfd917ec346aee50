#include "ram_layout.hpp"

#include "text_util.hpp"

#include <algorithm>
#include <array>

namespace gendevices {

namespace {

constexpr unsigned bankSize = 128;
constexpr unsigned maxBanks = 4;

// Offsets 0x00-0x0B are special-function registers in every bank: INDF, PCL,
// STATUS, FSR, PCLATH and INTCON are mirrored in all banks, TMR0/OPTION_REG and
// PORTB/TRISB in banks 2 and 3. The headers list each register once, at its
// home address, so the mirrors would otherwise look like free RAM.
constexpr unsigned coreRegisterBlock = 0x0C;

using enum BankFactKind;

// Datasheet facts about data memory that the gputils headers do not give: on
// these chips banks 2 and 3 are not RAM of their own but reach banks 0 and 1,
// so counting them would place variables on top of others. Each row comes from
// the register file map of the datasheet named in it; the byte counts in the
// comments are the datasheets' data memory sizes, which the corrected ranges
// add up to. A mirror row lists only the addresses that gpasm's common RAM does
// not already exclude. docs/device-data.md says which rows were checked how.
constexpr auto facts = std::to_array<BankFact>({
    // PIC16F72, DS39597: 128 bytes, 20h-7Fh and A0h-BFh. C0h-FFh reach 40h-7Fh
    // (gpasm's common RAM 40h-7Fh); bank 2 reaches bank 0, bank 3 bank 1.
    {"p16f72", Mirror, {0x120, 0x13F}, 0x020, "DS39597 register file map"},
    {"p16f72", Mirror, {0x1A0, 0x1BF}, 0x0A0, "DS39597 register file map"},
    // PIC16F73/74, DS30325: 192 bytes, 20h-7Fh and A0h-FFh; bank 2 reaches
    // bank 0, bank 3 bank 1 (the 16F76/77 of the same datasheet have 368).
    {"p16f73", Mirror, {0x120, 0x17F}, 0x020, "DS30325 register file map"},
    {"p16f73", Mirror, {0x1A0, 0x1FF}, 0x0A0, "DS30325 register file map"},
    {"p16f74", Mirror, {0x120, 0x17F}, 0x020, "DS30325 register file map"},
    {"p16f74", Mirror, {0x1A0, 0x1FF}, 0x0A0, "DS30325 register file map"},
    // PIC16F818, DS39598: 128 bytes, 20h-7Fh and A0h-BFh. C0h-FFh reach
    // 40h-7Fh (gpasm's common RAM); banks 2 and 3 both reach bank 0.
    {"p16f818", Mirror, {0x120, 0x13F}, 0x020, "DS39598 register file map"},
    {"p16f818", Mirror, {0x1A0, 0x1BF}, 0x020, "DS39598 register file map"},
    // PIC16F819, DS39598: 256 bytes, 20h-7Fh, A0h-EFh and 120h-16Fh (F0h-FFh
    // and 170h-17Fh reach gpasm's common RAM 70h-7Fh); bank 3 reaches bank 0.
    {"p16f819", Mirror, {0x1A0, 0x1EF}, 0x020, "DS39598 register file map"},
    // PIC16F870/871, DS30569, and PIC16F872, DS30221: 128 bytes, 20h-7Fh and
    // A0h-BFh; bank 2 reaches bank 0, bank 3 bank 1.
    {"p16f870", Mirror, {0x120, 0x16F}, 0x020, "DS30569 register file map"},
    {"p16f870", Mirror, {0x1A0, 0x1BF}, 0x0A0, "DS30569 register file map"},
    {"p16f871", Mirror, {0x120, 0x16F}, 0x020, "DS30569 register file map"},
    {"p16f871", Mirror, {0x1A0, 0x1BF}, 0x0A0, "DS30569 register file map"},
    {"p16f872", Mirror, {0x120, 0x16F}, 0x020, "DS30221 register file map"},
    {"p16f872", Mirror, {0x1A0, 0x1BF}, 0x0A0, "DS30221 register file map"},
    // PIC16F873/874, DS30292, and PIC16F873A/874A, DS39582: 192 bytes,
    // 20h-7Fh and A0h-FFh. There is no common RAM on these parts (gpasm
    // reports 70h-7Fh): F0h-FFh is bank 1's own RAM; bank 2 reaches bank 0,
    // bank 3 bank 1.
    {"p16f873", OwnRam, {0x0F0, 0x0FF}, 0, "DS30292 register file map"},
    {"p16f873", Mirror, {0x120, 0x17F}, 0x020, "DS30292 register file map"},
    {"p16f873", Mirror, {0x1A0, 0x1FF}, 0x0A0, "DS30292 register file map"},
    {"p16f874", OwnRam, {0x0F0, 0x0FF}, 0, "DS30292 register file map"},
    {"p16f874", Mirror, {0x120, 0x17F}, 0x020, "DS30292 register file map"},
    {"p16f874", Mirror, {0x1A0, 0x1FF}, 0x0A0, "DS30292 register file map"},
    {"p16f873a", OwnRam, {0x0F0, 0x0FF}, 0, "DS39582 register file map"},
    {"p16f873a", Mirror, {0x120, 0x17F}, 0x020, "DS39582 register file map"},
    {"p16f873a", Mirror, {0x1A0, 0x1FF}, 0x0A0, "DS39582 register file map"},
    {"p16f874a", OwnRam, {0x0F0, 0x0FF}, 0, "DS39582 register file map"},
    {"p16f874a", Mirror, {0x120, 0x17F}, 0x020, "DS39582 register file map"},
    {"p16f874a", Mirror, {0x1A0, 0x1FF}, 0x0A0, "DS39582 register file map"},
    // PIC16C745/765, DS41124: 256 bytes, 20h-7Fh, A0h-EFh and 120h-16Fh;
    // 1A0h-1DFh is the USB dual-port RAM (buffer descriptors and endpoint
    // buffers), which the USB engine writes.
    {"p16c745", NotGpr, {0x1A0, 0x1DF}, 0, "DS41124 register file map"},
    {"p16c765", NotGpr, {0x1A0, 0x1DF}, 0, "DS41124 register file map"},
});

bool covers(const BankFact& fact, std::string_view chip, BankFactKind kind, unsigned address) {
    return fact.chip == chip && fact.kind == kind && fact.range.contains(address);
}

bool hasFact(std::string_view chip, BankFactKind kind, unsigned address) {
    return std::any_of(facts.begin(), facts.end(),
                       [&](const BankFact& fact) { return covers(fact, chip, kind, address); });
}

bool isGeneralPurpose(unsigned address, unsigned bank, const ChipProperties& chip,
                      const HeaderInfo& header) {
    unsigned offset = address % bankSize;
    if (offset < coreRegisterBlock) return false;
    if (!header.maxRam || address > *header.maxRam) return false;
    if (header.isBadRam(address) || header.isRegisterAddress(address)) return false;
    // Mirrors reach RAM counted elsewhere, exactly like common RAM below.
    if (hasFact(chip.name, Mirror, address) || hasFact(chip.name, NotGpr, address)) return false;
    if (hasFact(chip.name, OwnRam, address)) return true;
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

std::string describe(const BankFact& fact) {
    return std::string(fact.chip) + " 0x" + hexUpper(fact.range.first, 3) + "-0x" +
           hexUpper(fact.range.last, 3);
}

bool insideBanks(unsigned address, const std::vector<BankLayout>& banks) {
    return std::any_of(banks.begin(), banks.end(), [address](const BankLayout& layout) {
        return layout.range && layout.range->contains(address);
    });
}

} // namespace

std::span<const BankFact> bankFacts() {
    return facts;
}

std::vector<std::string> checkBankFacts() {
    std::vector<std::string> problems;
    for (const BankFact& fact : facts) {
        unsigned bank = fact.range.first / bankSize;
        if (fact.range.first > fact.range.last || fact.range.last / bankSize != bank)
            problems.push_back(describe(fact) + " does not lie in one bank");
        if (fact.kind != Mirror) continue;
        bool sameOffset = fact.mirrorOf % bankSize == fact.range.first % bankSize;
        if (!sameOffset || fact.mirrorOf / bankSize >= bank)
            problems.push_back(describe(fact) + " must mirror the same offsets of a lower bank");
    }
    for (auto it = facts.begin(); it != facts.end(); ++it) {
        for (auto other = std::next(it); other != facts.end(); ++other) {
            bool overlap = it->chip == other->chip && it->range.first <= other->range.last &&
                           other->range.first <= it->range.last;
            if (overlap) problems.push_back(describe(*it) + " overlaps " + describe(*other));
        }
    }
    return problems;
}

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

std::vector<std::string> checkMirrorTargets(std::string_view chip,
                                            const std::vector<BankLayout>& banks) {
    std::vector<std::string> problems;
    for (const BankFact& fact : facts) {
        if (fact.chip != chip || fact.kind != Mirror) continue;
        for (unsigned address = fact.range.first; address <= fact.range.last; ++address) {
            unsigned target = fact.mirrorOf + (address - fact.range.first);
            if (insideBanks(target, banks)) continue;
            problems.push_back(describe(fact) + ": 0x" + hexUpper(address, 3) + " mirrors 0x" +
                               hexUpper(target, 3) + ", which is not counted RAM");
            break;
        }
    }
    return problems;
}

} // namespace gendevices
