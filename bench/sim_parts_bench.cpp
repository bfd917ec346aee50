// Simulated instructions per second on a 16F877 whose RB0 a tight loop
// toggles, bare and with a UartReceiver listening on that pin (every toggle
// starts a frame and schedules samples).
#include "sim/parts/uart_receiver.h"
#include "sim/pic16.h"

#include <chrono>
#include <cstdio>
#include <string>

using namespace zorvel::sim;

namespace {

// bsf STATUS,RP0; clrf TRISB; bcf STATUS,RP0; movlw 1; loop: xorwf PORTB,f; goto loop
HexData toggleLoop() {
    HexData hex;
    const uint16_t words[] = {0x1683, 0x0186, 0x1283, 0x3001, 0x0686, 0x2804};
    for (int i = 0; i < 6; ++i)
        hex.program[i] = words[i];
    return hex;
}

double measure(const DeviceLayout& layout, bool withReceiver, uint64_t cycles) {
    Pic16 pic(layout, 20.0);
    pic.load(toggleLoop());
    if (withReceiver) pic.attach(std::make_unique<UartReceiver>("PORTB.0", 115200));
    auto begin = std::chrono::steady_clock::now();
    pic.run(cycles);
    std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    double instructions = static_cast<double>(pic.cycles()) * 2.0 / 3.0; // 1 + 2 cycles per pair
    return instructions / seconds.count();
}

} // namespace

int main(int argc, char** argv) {
    uint64_t cycles = argc > 1 ? std::stoull(argv[1]) : 20000000;
    std::string error;
    auto layout = loadDeviceLayout(std::string(ZORVEL_SOURCE_DATA) + "/inc", "16F877", error);
    if (!layout) {
        std::fprintf(stderr, "sim_parts_bench: %s\n", error.c_str());
        return 1;
    }
    std::printf("bare:          %.1f M instructions/s\n", measure(*layout, false, cycles) / 1e6);
    std::printf("UartReceiver:  %.1f M instructions/s\n", measure(*layout, true, cycles) / 1e6);
    return 0;
}
