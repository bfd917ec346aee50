// Simulated instructions per second with parts attached, against gpsim on the
// same HEX: a 16F877 whose RB0 a tight loop toggles, bare and with a
// UartReceiver listening on that pin (every toggle starts a frame and
// schedules samples); and the plain loop of sim_bench, bare and with a
// UartReceiver on an idle pin (RB1, never toggled), which shows what an
// attached but quiet part costs.
#include "gpsim_timing.h"
#include "sim/parts/uart_receiver.h"
#include "sim/pic16.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace zorvel::sim;

namespace {

// RB0 toggles every 3 cycles: 2 instructions per 3 cycles.
const char* kToggle = R"(    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    org 0
    bsf STATUS,RP0
    clrf TRISB
    bcf STATUS,RP0
    movlw 1
loop xorwf PORTB,f
    goto loop
    end
)";

// The loop of sim_bench: 5 instructions per 6 cycles; no port is touched.
const char* kTight = R"(    #include <p16f877.inc>
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

struct Loop {
    const char* name;
    const char* title;
    const char* source;
    double instructionsPerCycle;
    const char* receiverPin;
    uint64_t cycles;
    uint64_t gpsimCycles;
};

double measure(const DeviceLayout& layout, const HexData& hex, const Loop& loop,
               bool withReceiver) {
    Pic16 pic(layout, 20.0);
    pic.load(hex);
    if (withReceiver) pic.attach(std::make_unique<UartReceiver>(loop.receiverPin, 115200));
    auto begin = std::chrono::steady_clock::now();
    pic.run(loop.cycles);
    double seconds = zorvel::bench::secondsSince(begin);
    return static_cast<double>(pic.cycles()) * loop.instructionsPerCycle / seconds;
}

} // namespace

int main(int argc, char** argv) {
    uint64_t cycles = argc > 1 ? std::stoull(argv[1]) : 30'000'000ULL;
    std::string error;
    auto layout = loadDeviceLayout(fs::path(ZORVEL_SOURCE_DATA) / "inc", "16F877", error);
    if (!layout) {
        std::fprintf(stderr, "sim_parts_bench: %s\n", error.c_str());
        return 1;
    }
    fs::path folder =
        fs::temp_directory_path() / ("zorvel_sim_parts_bench_" + std::to_string(::getpid()));
    fs::create_directories(folder);
    const Loop loops[] = {
        {"toggle", "RB0 toggle loop (xorwf PORTB,f / goto)", kToggle, 2.0 / 3.0, "PORTB.0", cycles,
         cycles},
        {"tight", "plain loop of sim_bench, receiver on idle RB1", kTight, 5.0 / 6.0, "PORTB.1",
         cycles * 10, cycles * 10 / 4},
    };
    int status = 0;
    for (const Loop& loop : loops) {
        if (!zorvel::bench::assemble(folder, loop.name, loop.source)) {
            std::fprintf(stderr, "sim_parts_bench: gpasm failed (see %s)\n", folder.c_str());
            status = 1;
            break;
        }
        auto hex = readHex(folder / (std::string(loop.name) + ".hex"), error);
        if (!hex) {
            std::fprintf(stderr, "sim_parts_bench: %s\n", error.c_str());
            status = 1;
            break;
        }
        double bare = measure(*layout, *hex, loop, false);
        double withReceiver = measure(*layout, *hex, loop, true);
        uint64_t gpsimCycles = loop.gpsimCycles;
        double startup = 0;
        double run = zorvel::bench::gpsimRunSeconds(folder, loop.name, gpsimCycles, startup);
        std::printf("%s, %llu cycles\n", loop.title, static_cast<unsigned long long>(loop.cycles));
        std::printf("  zorvel bare:          %7.1f M instructions/s\n", bare / 1e6);
        std::printf("  zorvel UartReceiver:  %7.1f M instructions/s\n", withReceiver / 1e6);
        if (run < 0) {
            std::printf("  gpsim: not available\n");
            continue;
        }
        double gpsimRate = static_cast<double>(gpsimCycles) * loop.instructionsPerCycle / run;
        std::printf("  gpsim bare:           %7.1f M instructions/s (%llu cycles in %.3f s, "
                    "start-up %.3f s excluded)\n",
                    gpsimRate / 1e6, static_cast<unsigned long long>(gpsimCycles), run, startup);
        std::printf("  ratio zorvel/gpsim:   bare %.2f, UartReceiver %.2f\n", bare / gpsimRate,
                    withReceiver / gpsimRate);
    }
    fs::remove_all(folder);
    return status;
}
