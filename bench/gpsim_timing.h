// Shared by the simulator benches: assembling a loop with gpasm and timing
// gpsim on the result for a fixed number of cycles (from its start with
// `break c`, minus the time of a run that only loads and quits).
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

namespace zorvel::bench {

double secondsSince(std::chrono::steady_clock::time_point start);

// Writes `<name>.asm` into `folder` and assembles it for the 16F877 into
// `<name>.hex` and `<name>.cod`; false when gpasm fails.
bool assemble(const std::filesystem::path& folder, const std::string& name,
              const std::string& source);

// Wall-clock seconds gpsim takes to load `<name>.cod` and run `cycles`
// cycles (0: only load and quit); -1 when gpsim is not available.
double gpsimSeconds(const std::filesystem::path& folder, const std::string& name, uint64_t cycles);

// Seconds gpsim spends simulating `cycles` cycles of `<name>.cod`, with its
// start-up excluded (returned in `startup`); -1 when gpsim is not available.
double gpsimRunSeconds(const std::filesystem::path& folder, const std::string& name,
                       uint64_t cycles, double& startup);

} // namespace zorvel::bench
