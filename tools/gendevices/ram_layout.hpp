// Finds the general-purpose RAM of each data-memory bank.
#pragma once

#include "gpasm_info.hpp"
#include "header_info.hpp"

#include <optional>
#include <vector>

namespace gendevices {

struct BankLayout {
    unsigned bank = 0;
    std::vector<AddressRange> runs;    // every contiguous stretch of RAM, ascending
    std::optional<AddressRange> range; // the longest run, the first one on a tie
};

// One entry per bank reported by gpasm (at most four).
std::vector<BankLayout> findBanks(const ChipProperties& chip, const HeaderInfo& header);

} // namespace gendevices
