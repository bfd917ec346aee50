// Runs a program in gpsim (the Debian gpsim 0.31 command-line mode, with
// commands on standard input) up to a PC breakpoint or a cycle count and
// reads back W, STATUS, PC, the cycle counter and the register file.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

namespace zorvel::test {

struct GpsimState {
    bool ok = false;
    std::string output; // gpsim's console output
    uint8_t w = 0;
    uint8_t status = 0;
    uint16_t pc = 0;
    uint64_t cycles = 0;
    std::array<int, 512> ram{}; // -1 where gpsim shows "--" (unimplemented)
};

bool gpsimAvailable();

// `cod` is the gpasm symbol file; `endAddress` < 0 runs `maxCycles` only.
GpsimState runGpsim(const std::filesystem::path& cod, int endAddress, uint64_t maxCycles);

} // namespace zorvel::test
