// Simulator speed: simulated instructions per second on a tight loop with no
// parts attached, and the same HEX run in gpsim for a fixed number of
// cycles (timed from its start with `break c` minus the time of a run that
// only loads and quits).
#include "gpsim_timing.h"
#include "sim/pic16.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace zorvel::sim;

namespace {

// incf 0x20,f / movf 0x20,w / addwf 0x22,f / decfsz 0x21,f / goto 0 / goto 0:
// 255 passes of 5 instructions (6 cycles), then one of 5 (6 cycles).
const char* kLoop = R"(    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    org 0
loop incf 0x20,f
    movf 0x20,w
    addwf 0x22,f
    decfsz 0x21,f
    goto loop
    goto loop
    end
)";

} // namespace

int main(int argc, char** argv) {
    uint64_t cycles = argc > 1 ? std::stoull(argv[1]) : 600'000'000ULL;
    fs::path folder =
        fs::temp_directory_path() / ("zorvel_sim_bench_" + std::to_string(::getpid()));
    fs::create_directories(folder);
    if (!zorvel::bench::assemble(folder, "loop", kLoop)) {
        std::cerr << "gpasm failed (see " << folder << ")\n";
        return 1;
    }
    std::string error;
    auto hex = readHex(folder / "loop.hex", error);
    auto layout = loadDeviceLayout(fs::path(ZORVEL_SOURCE_DATA) / "inc", "16F877", error);
    if (!hex || !layout) {
        std::cerr << error << "\n";
        return 1;
    }
    Pic16 pic(*layout, 20.0);
    pic.load(*hex);
    // Instructions per cycle of this loop: 5 instructions in 6 cycles.
    auto start = std::chrono::steady_clock::now();
    pic.run(cycles);
    double ours = zorvel::bench::secondsSince(start);
    double instructions = static_cast<double>(pic.cycles()) * 5.0 / 6.0;
    double ourRate = instructions / ours;
    std::printf("zorvel: %llu cycles in %.3f s: %.1f M instructions/s (%.1f M cycles/s)\n",
                static_cast<unsigned long long>(pic.cycles()), ours, ourRate / 1e6,
                static_cast<double>(pic.cycles()) / ours / 1e6);

    uint64_t gpsimCycles = cycles / 4;
    double startup = 0;
    double run = zorvel::bench::gpsimRunSeconds(folder, "loop", gpsimCycles, startup);
    if (run < 0) {
        std::printf("gpsim: not available\n");
    } else {
        double gpsimRate = static_cast<double>(gpsimCycles) * 5.0 / 6.0 / run;
        std::printf("gpsim:  %llu cycles in %.3f s (start-up %.3f s excluded): %.1f M "
                    "instructions/s\n",
                    static_cast<unsigned long long>(gpsimCycles), run, startup, gpsimRate / 1e6);
        std::printf("ratio zorvel/gpsim: %.2f\n", ourRate / gpsimRate);
    }
    fs::remove_all(folder);
    return 0;
}
