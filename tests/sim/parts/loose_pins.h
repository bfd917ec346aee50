// A stand-in for the device in part tests: named pins, a scheduler and a
// cycle counter. The test plays the PIC through drive()/release() and moves
// time on with advance(), which runs the scheduled callbacks in order.
#pragma once

#include "sim/parts/wiring.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace zorvel::test {

class LoosePins {
public:
    explicit LoosePins(double cycleSeconds = 1e-6) : cycleSeconds_(cycleSeconds) {}

    sim::Pin& pin(const std::string& name) {
        auto& slot = pins_[name];
        if (!slot) slot = std::make_unique<sim::Pin>(name, 0, 0);
        return *slot;
    }
    sim::Wiring wiring() {
        sim::Wiring w;
        w.pin = [this](const std::string& name) { return &pin(name); };
        w.scheduler = &scheduler_;
        w.now = [this] { return now_; };
        w.cycleSeconds = cycleSeconds_;
        return w;
    }
    uint64_t now() const { return now_; }
    sim::Scheduler& scheduler() { return scheduler_; }

    // Runs everything scheduled up to `cycle` and makes it the current cycle.
    void advanceTo(uint64_t cycle) {
        while (scheduler_.next() <= cycle) {
            now_ = scheduler_.next();
            scheduler_.runDue(now_);
        }
        if (cycle > now_) now_ = cycle;
    }
    void advance(uint64_t cycles) { advanceTo(now_ + cycles); }

    // The device side: drive a level, or make the pin an input.
    void drive(const std::string& name, bool level) { pin(name).setPicOutput(level, now_); }
    void release(const std::string& name) { pin(name).setPicOutput(std::nullopt, now_); }
    bool level(const std::string& name) { return pin(name).level(); }

private:
    double cycleSeconds_;
    uint64_t now_ = 0;
    sim::Scheduler scheduler_;
    std::map<std::string, std::unique_ptr<sim::Pin>> pins_;
};

} // namespace zorvel::test
