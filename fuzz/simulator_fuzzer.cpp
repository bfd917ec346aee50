// Runs a fuzzed program image on the simulator for a bounded number of
// cycles, with a serial receiver and an LCD attached to its pins. The first
// three bytes pick the device, the crystal and the configuration word's low
// byte; the rest are little-endian 14-bit program words from address 0.
#include "sim/device_layout.h"
#include "sim/parts/hd44780.h"
#include "sim/parts/uart_receiver.h"
#include "sim/pic16.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace {

constexpr uint64_t kCycles = 4000;
constexpr std::array<const char*, 6> kDevices = {"16F84",  "16F628", "16F877",
                                                 "12F675", "16F88",  "16F690"};
constexpr std::array<double, 6> kCrystals = {4, 8, 10, 12, 16, 20};

// Device layouts read once from the source tree's device files.
const zorvel::sim::DeviceLayout* layoutFor(int index) {
    static std::map<int, std::optional<zorvel::sim::DeviceLayout>> layouts;
    auto it = layouts.find(index);
    if (it == layouts.end()) {
        std::string error;
        it = layouts
                 .emplace(index,
                          zorvel::sim::loadDeviceLayout(std::string(ZORVEL_SOURCE_DATA) + "/inc",
                                                        kDevices[index], error))
                 .first;
        if (!it->second) std::abort(); // the project's own device files must load
    }
    return &*it->second;
}

void attachParts(zorvel::sim::Pic16& pic) {
    for (const char* serialPin : {"PORTB.0", "GPIO.0", "GP0", "PORTA.0"}) {
        if (!pic.pin(serialPin)) continue;
        pic.attach(std::make_unique<zorvel::sim::UartReceiver>(serialPin, 9600));
        break;
    }
    zorvel::sim::Hd44780Pins lcd{
        "PORTB.2", "PORTB.3", std::nullopt, {"PORTB.4", "PORTB.5", "PORTB.6", "PORTB.7"}, 2, 16};
    for (const char* name : {"PORTB.2", "PORTB.3", "PORTB.4", "PORTB.5", "PORTB.6", "PORTB.7"})
        if (!pic.pin(name)) return;
    pic.attach(std::make_unique<zorvel::sim::Hd44780>(lcd));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    int device = data[0] % static_cast<int>(kDevices.size());
    const zorvel::sim::DeviceLayout* layout = layoutFor(device);
    zorvel::sim::Pic16 pic(*layout, kCrystals[data[1] % kCrystals.size()]);
    zorvel::sim::HexData hex;
    hex.configWord = static_cast<uint16_t>(0x3F00 | data[2]);
    hex.program[layout->configAddress] = *hex.configWord;
    for (size_t i = 3; i + 1 < size && static_cast<int>((i - 3) / 2) < layout->codeWords; i += 2)
        hex.program[static_cast<int>((i - 3) / 2)] =
            static_cast<uint16_t>((data[i] | data[i + 1] << 8) & 0x3FFF);
    pic.load(hex);
    attachParts(pic);
    pic.run(kCycles);
    if (pic.stackDepth() < 0 || pic.stackDepth() > 8) std::abort();
    if (pic.pc() >= 0x2000) std::abort();
    return 0;
}
