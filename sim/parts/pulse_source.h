// Drives a pin from outside with single pulses, pulse trains or an endless
// square wave at given cycles; between pulses the pin is held at the idle level.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zorvel::sim {

class PulseSource : public Part {
public:
    explicit PulseSource(std::string pin, bool idleLevel = false);

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    // The device reset cleared the scheduler: pulses not yet over are
    // scheduled again at their cycles (a pulse under way keeps its end).
    void reset() override;

    // A pulse to the active (non-idle) level from `startCycle` for `width` cycles.
    void pulse(uint64_t startCycle, uint64_t width);
    // `count` pulses of `width` cycles, one every `period` cycles.
    void train(uint64_t startCycle, uint64_t width, uint64_t period, int count);
    // From `startCycle` on, the active level for `width` cycles of every
    // `period`, without end; throws std::invalid_argument unless
    // 0 < width < period. Only the next edge is ever scheduled, so a long run
    // costs no memory. A second call replaces the wave. Not meant to be mixed
    // with pulse() or train() on the same source.
    void square(uint64_t startCycle, uint64_t width, uint64_t period);
    // Converts microseconds to cycles at the attached device's clock.
    uint64_t cyclesForMicroseconds(double us) const;

private:
    void arm(uint64_t startCycle, uint64_t width);
    struct Square {
        uint64_t start, width, period;
    };
    bool squareActive(uint64_t cycle) const;
    // Sets the level the square wave has at `now` and schedules its next edge.
    void squareStep(uint64_t now);

    std::string pinName_;
    bool idle_;
    Pin* pin_ = nullptr;
    Scheduler* scheduler_ = nullptr;
    std::function<uint64_t()> now_;
    std::vector<std::pair<uint64_t, uint64_t>> armed_; // start, width
    double cycleSeconds_ = 1e-6;
    std::vector<std::pair<uint64_t, uint64_t>> waiting_; // requested before connect
    std::optional<Square> square_;
    int squareEvent_ = 0; // its next edge
};

// A resistor-capacitor network on a pin, as read by RCTIME/POT-style code:
// while the device drives the pin the capacitor follows it (driven low it
// discharges); once the device releases the pin after discharging it, the pin
// reads low until the capacitor has charged for `chargeMicroseconds`, then high.
class RcSource : public Part, public PinListener {
public:
    RcSource(std::string pin, double chargeMicroseconds);
    ~RcSource() override;

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;
    // The device reset cleared the scheduler: start over, charged.
    void reset() override;

    void setChargeMicroseconds(double us) { chargeMicroseconds_ = us; }
    int measurements() const { return measurements_; } // releases after a discharge

private:
    void watchRelease(uint64_t now);

    std::string pinName_;
    double chargeMicroseconds_;
    Pin* pin_ = nullptr;
    Scheduler* scheduler_ = nullptr;
    double cycleSeconds_ = 1e-6;
    std::function<uint64_t()> now_;
    bool watching_ = false;
    bool lastDriven_ = true; // the level the device last drove
    int chargeEvent_ = 0;
    int measurements_ = 0;
};

} // namespace zorvel::sim
