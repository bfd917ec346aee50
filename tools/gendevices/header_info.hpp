// Reads what gendevices needs from a gputils processor header (p*.inc).
#pragma once

#include "gpasm_info.hpp"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace gendevices {

struct Symbol {
    std::string name;
    unsigned value = 0;
};

struct HeaderInfo {
    // The "Register Files" section in header order, without W and F and
    // without repeated names.
    std::vector<Symbol> registers;
    // Option values of the first configuration word, leading underscore
    // removed, repeated names dropped.
    std::vector<Symbol> fuses;
    std::vector<AddressRange> badRam;
    std::optional<unsigned> maxRam;
    // Every name the header defines (EQU, SET or #define), upper-case.
    std::set<std::string> definedNames;

    // gpasm runs case-insensitive, so lookups ignore case.
    bool defines(std::string_view name) const;
    bool hasRegister(std::string_view name) const;
    bool isRegisterAddress(unsigned address) const;
    bool isBadRam(unsigned address) const;
};

HeaderInfo parseHeader(std::string_view text);
std::optional<HeaderInfo> readHeader(const std::filesystem::path& path);

} // namespace gendevices
