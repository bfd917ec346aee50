// Records every level change of one pin with its cycle, and measures pulse
// widths and the frequency from them.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zorvel::sim {

struct Edge {
    uint64_t cycle = 0;
    bool level = false; // the level after the change
};

class LogicProbe : public Part, public PinListener {
public:
    explicit LogicProbe(std::string pin);
    ~LogicProbe() override;

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    bool initialLevel() const { return initial_; }
    const std::vector<Edge>& edges() const { return edges_; }
    int risingEdges() const;
    // Lengths in cycles of the complete high (or low) pulses: from an edge
    // to that level to the next edge away from it.
    std::vector<uint64_t> highWidths() const { return widths(true); }
    std::vector<uint64_t> lowWidths() const { return widths(false); }
    // Cycles from the first rising edge to the last divided by the periods
    // between them, as Hz; 0 with fewer than two rising edges.
    double frequency() const;
    double cycleSeconds() const { return cycleSeconds_; }

private:
    std::vector<uint64_t> widths(bool level) const;

    std::string pinName_;
    Pin* pin_ = nullptr;
    double cycleSeconds_ = 1e-6;
    bool initial_ = false;
    std::vector<Edge> edges_;
};

} // namespace zorvel::sim
