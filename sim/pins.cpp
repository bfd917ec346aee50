#include "sim/pins.h"

#include <algorithm>

namespace zorvel::sim {

void Pin::removeListener(PinListener* listener) {
    listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), listener), listeners_.end());
}

void Pin::setExternal(std::optional<bool> level, uint64_t cycle) {
    external_ = level;
    update(cycle);
}

void Pin::setPicOutput(std::optional<bool> level, uint64_t cycle) {
    picOutput_ = level;
    update(cycle);
}

void Pin::setPullUp(bool on, uint64_t cycle) {
    pullUp_ = on;
    update(cycle);
}

void Pin::update(uint64_t cycle) {
    // An open-drain output driving high leaves the pin floating.
    picDrives_ = picOutput_.has_value() && !(openDrain_ && *picOutput_);
    bool level = false;
    if (picDrives_)
        level = *picOutput_;
    else if (external_)
        level = *external_;
    else
        level = pullUp_;
    if (level == level_) return;
    level_ = level;
    // Listeners may remove themselves while being told.
    std::vector<PinListener*> copy = listeners_;
    for (PinListener* l : copy)
        l->pinChanged(*this, level, cycle);
}

} // namespace zorvel::sim
