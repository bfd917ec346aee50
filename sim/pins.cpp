#include "sim/pins.h"

#include <algorithm>

namespace zorvel::sim {

void Pin::removeListener(PinListener* listener) {
    if (notifying_ > 0) {
        // Keep the indices of the running notification loop valid.
        std::replace(listeners_.begin(), listeners_.end(), listener,
                     static_cast<PinListener*>(nullptr));
        removedWhileNotifying_ = true;
        return;
    }
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

void Pin::setPeripheralOutput(std::optional<bool> level, uint64_t cycle, bool onlyAsOutput) {
    peripheralOutput_ = level;
    peripheralOnlyAsOutput_ = onlyAsOutput;
    update(cycle);
}

void Pin::setPullUp(bool on, uint64_t cycle) {
    pullUp_ = on;
    update(cycle);
}

void Pin::update(uint64_t cycle) {
    // A claiming peripheral replaces the port latch.
    std::optional<bool> output = picOutput_;
    if (peripheralOutput_ && (!peripheralOnlyAsOutput_ || picOutput_)) output = peripheralOutput_;
    // An open-drain output driving high leaves the pin floating.
    picDrives_ = output.has_value() && !(openDrain_ && *output);
    bool level = false;
    if (picDrives_)
        level = *output;
    else if (external_)
        level = *external_;
    else
        level = pullUp_;
    if (level == level_) return;
    level_ = level;
    // Listeners may add or remove listeners while being told: those added are
    // told from the next change on, those removed are not told any more.
    ++notifying_;
    size_t count = listeners_.size();
    for (size_t i = 0; i < count; ++i)
        if (PinListener* l = listeners_[i]) l->pinChanged(*this, level, cycle);
    if (--notifying_ == 0 && removedWhileNotifying_) {
        removedWhileNotifying_ = false;
        listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), nullptr),
                         listeners_.end());
    }
}

} // namespace zorvel::sim
