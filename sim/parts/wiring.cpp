#include "sim/parts/wiring.h"

#include "sim/pic16.h"

#include <cmath>
#include <stdexcept>

namespace zorvel::sim {

Pin& Wiring::require(const std::string& name) const {
    Pin* found = pin ? pin(name) : nullptr;
    if (!found) throw std::invalid_argument("no pin called " + name);
    return *found;
}

uint64_t Wiring::cyclesFor(double seconds) const {
    double cycles = std::ceil(seconds / cycleSeconds - 1e-9);
    return cycles < 1 ? 1 : static_cast<uint64_t>(cycles);
}

Wiring wiringOf(Pic16& pic) {
    Wiring w;
    w.pin = [&pic](const std::string& name) { return pic.pin(name); };
    w.scheduler = &pic.scheduler();
    w.now = [&pic] { return pic.cycles(); };
    w.cycleSeconds = pic.cycleSeconds();
    return w;
}

void driveOpenDrain(Pin& pin, bool low, bool pullUp, uint64_t cycle) {
    std::optional<bool> want;
    if (low)
        want = false;
    else if (pullUp)
        want = true;
    if (pin.external() != want) pin.setExternal(want, cycle);
}

} // namespace zorvel::sim
