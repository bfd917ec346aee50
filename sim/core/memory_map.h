// Where each of the 512 register-file addresses really lives: the core
// registers mirrored in every bank, the device's RAM ranges, mirrored RAM
// (common RAM, banks that repeat bank 0) and unimplemented addresses.
#pragma once

#include "sim/device_layout.h"

#include <array>
#include <cstdint>

namespace zorvel::sim::core {

struct MemoryMap {
    std::array<int16_t, 512> canonical{}; // -1 when unimplemented
    std::array<bool, 512> ram{};          // canonical address is plain RAM
};

MemoryMap buildMemoryMap(const DeviceLayout& layout);

} // namespace zorvel::sim::core
