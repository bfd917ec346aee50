// Finds the general-purpose RAM of each data-memory bank.
#pragma once

#include "gpasm_info.hpp"
#include "header_info.hpp"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace gendevices {

struct BankLayout {
    unsigned bank = 0;
    std::vector<AddressRange> runs;    // every contiguous stretch of RAM, ascending
    std::optional<AddressRange> range; // the longest run, the first one on a tie
};

// What a datasheet says about a stretch of data memory that neither the gputils
// header nor gpasm's processor database describes.
enum class BankFactKind {
    Mirror, // the addresses reach other RAM (mirrorOf onwards): not RAM of their own
    NotGpr, // implemented memory that is not general-purpose RAM (USB buffers)
    OwnRam, // the bank's own RAM although gpasm reports the offsets as common RAM
};

struct BankFact {
    std::string_view chip; // gpasm's name, e.g. "p16f873"
    BankFactKind kind;
    AddressRange range; // inside one bank
    unsigned mirrorOf;  // Mirror only: the address range.first reaches
    std::string_view source;
};

std::span<const BankFact> bankFacts();

// Problems of the table itself (a range across banks, a mirror that does not
// keep the bank offset); empty when the table is sound.
std::vector<std::string> checkBankFacts();

// One entry per bank reported by gpasm (at most four).
std::vector<BankLayout> findBanks(const ChipProperties& chip, const HeaderInfo& header);

// Mirror facts of chip whose target is not general-purpose RAM in banks (a
// wrong table row); empty when every mirrored address reaches counted RAM.
std::vector<std::string> checkMirrorTargets(std::string_view chip,
                                            const std::vector<BankLayout>& banks);

} // namespace gendevices
