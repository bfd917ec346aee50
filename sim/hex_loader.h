// Intel HEX files (INHX8M and INHX32) as the simulator loads them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zorvel::sim {

struct HexData {
    std::map<int, uint16_t> program; // word address -> 14-bit word (code, IDs, config)
    std::map<int, uint8_t> eeprom;   // EEPROM address (from 0x2100) -> byte
    std::optional<uint16_t> configWord;
};

// Parses HEX text; nullopt with `error` (naming the line) when it is malformed.
std::optional<HexData> parseHex(std::string_view text, std::string& error);
std::optional<HexData> readHex(const std::filesystem::path& path, std::string& error);

} // namespace zorvel::sim
