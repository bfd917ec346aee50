// Reads gpasm's processor database: the chip list (-l14) and one chip's
// properties (-s -p <chip>).
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gendevices {

struct AddressRange {
    unsigned first = 0;
    unsigned last = 0;

    unsigned size() const { return last - first + 1; }
    bool contains(unsigned address) const { return address >= first && address <= last; }
};

struct ConfigOption {
    std::string name;
    unsigned value = 0;
};

struct ConfigDirective {
    std::string name;
    std::vector<ConfigOption> options;

    // All bits the directive can change: the OR of its option values.
    unsigned mask() const;
};

struct ConfigWord {
    unsigned address = 0;
    std::vector<ConfigDirective> directives;

    // The first directive whose name is one of names, or nullptr.
    const ConfigDirective* find(std::initializer_list<std::string_view> names) const;
};

struct ChipProperties {
    std::string name; // as gpasm lists it, e.g. "p16f877"
    std::string processorClass;
    unsigned bankCount = 0;
    std::optional<AddressRange> commonRam;
    unsigned programWords = 0;
    std::optional<AddressRange> eeprom;
    std::string headerFile;
    std::vector<ConfigWord> configWords; // in gpasm's order; the first is the main word
};

std::vector<std::string> parseChipList(std::string_view text);

// Parses the block of `gpasm -s` output that describes chip. gpasm prints every
// processor when it does not know the name, so the block is picked by its
// "Names" line.
std::optional<ChipProperties> parseChipProperties(std::string_view text, std::string_view chip);

struct GpasmQuery {
    bool ran = false; // gpasm could be started and exited normally
    std::vector<std::string> chips;
};

GpasmQuery listChips(const std::string& gpasm);
std::optional<ChipProperties> queryChip(const std::string& gpasm, const std::string& chip);

} // namespace gendevices
