// Text of the generated .inf and .zvi files.
#pragma once

#include "device_data.hpp"

#include <filesystem>
#include <string>

namespace gendevices {

std::string infText(const DeviceData& device);
std::string zviText(const DeviceData& device);

std::string infFileName(const DeviceData& device); // "P16F877A.inf"
std::string zviFileName(const DeviceData& device); // "P16F877A.zvi"

// Writes text byte for byte (no newline translation); false on failure.
bool writeTextFile(const std::filesystem::path& path, const std::string& text);

} // namespace gendevices
