// Whole-file reads of the simulator's inputs (HEX files, device files). The
// file is looked at before it is opened: anything but a regular file (links
// are followed) or a file above the size limit is refused, so a device, a
// FIFO or a huge file gives an error instead of a hang.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace zorvel::sim {

// `kind` names the file in messages ("HEX file"); nullopt with `error` set
// when the file is refused or cannot be read.
std::optional<std::string> readInputFile(const std::filesystem::path& path, const std::string& kind,
                                         uintmax_t maxBytes, std::string& error);

} // namespace zorvel::sim
