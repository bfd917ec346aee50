// Text of the generated .inf and .zvi files.
#pragma once

#include "device_data.hpp"

#include <filesystem>
#include <string>
#include <string_view>

namespace gendevices {

// The comment line of the .inf file that separates the register lines from the
// configuration fuse lines that follow it.
constexpr std::string_view fuseSectionComment = "; Configuration fuses";
constexpr std::string_view assemblerNamesComment = "; Assembler names";

std::string infText(const DeviceData& device);
std::string zviText(const DeviceData& device);

std::string infFileName(const DeviceData& device); // "P16F877A.inf"
std::string zviFileName(const DeviceData& device); // "P16F877A.zvi"

// Writes text byte for byte (no newline translation); false on failure.
bool writeTextFile(const std::filesystem::path& path, const std::string& text);

} // namespace gendevices
