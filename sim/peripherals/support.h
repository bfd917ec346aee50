// Small helpers the peripherals share: bit tests, raising an interrupt flag,
// converting times to instruction cycles, finding a pin by port letter.
#pragma once

#include "sim/peripheral.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace zorvel::sim::periph {

inline bool bitSet(uint8_t value, int bit) {
    return (value >> bit) & 1;
}

inline void setBit(uint8_t& value, int bit, bool on) {
    value = on ? uint8_t(value | (1u << bit)) : uint8_t(value & ~(1u << bit));
}

// Sets flag `bit` of the register at `address` and lets the core re-evaluate
// interrupts. Does nothing when the register is absent (-1).
inline void raiseFlag(CoreAccess& core, int address, int bit) {
    if (address < 0) return;
    setBit(core.storage(address), bit, true);
    core.interruptStateChanged();
}

inline void clearFlag(CoreAccess& core, int address, int bit) {
    if (address < 0) return;
    setBit(core.storage(address), bit, false);
    core.interruptStateChanged();
}

// Instruction cycles covering `seconds` at the simulated crystal (rounded up, at least 1).
inline uint64_t cyclesFor(const CoreAccess& core, double seconds) {
    double cycles = std::ceil(seconds / core.cycleSeconds() - 1e-9);
    return cycles < 1 ? 1 : uint64_t(cycles);
}

// Port number of a port letter ('A' = 0); the pin or nullptr when the port is absent.
inline Pin* portPin(CoreAccess& core, char port, int bit) {
    std::string name = std::string("PORT") + port;
    if (port == 'A' && !core.layout().has("PORTA") && core.layout().has("GPIO")) name = "GPIO";
    if (!core.layout().has(name)) return nullptr;
    return core.pin(port - 'A', bit);
}

// A peripheral claims `pin` at `level` (nullopt releases it to the port);
// the level shows only while the pin's TRIS bit is 0 (an output).
inline void driveIfOutput(Pin* pin, std::optional<bool> level, uint64_t cycle) {
    if (pin) pin->setPeripheralOutput(level, cycle, true);
}

} // namespace zorvel::sim::periph
