// How a part reaches the outside world: pins by name, the scheduler, the
// current cycle and the length of a cycle. A Pic16 provides all four; tests
// can build one from loose Pin objects and a Scheduler.
#pragma once

#include "sim/pins.h"
#include "sim/scheduler.h"

#include <cstdint>
#include <functional>
#include <string>

namespace zorvel::sim {

class Pic16;

struct Wiring {
    std::function<Pin*(const std::string&)> pin; // nullptr when there is no such pin
    Scheduler* scheduler = nullptr;
    std::function<uint64_t()> now;
    double cycleSeconds = 1e-6;

    // The pin called `name`; throws std::invalid_argument when there is none.
    Pin& require(const std::string& name) const;
    // Cycles (rounded up, at least 1) that last `seconds`.
    uint64_t cyclesFor(double seconds) const;
};

Wiring wiringOf(Pic16& pic);

// Drives an open-drain line: low, or released. A released line reads high
// when `pullUp` is set (the bus resistor), otherwise it is left undriven.
void driveOpenDrain(Pin& pin, bool low, bool pullUp, uint64_t cycle);

} // namespace zorvel::sim
