// Records every level change of one pin with its cycle, and measures pulse
// widths and the frequency from them.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace zorvel::sim {

struct Edge {
    uint64_t cycle = 0;
    bool level = false; // the level after the change
};

// Counts over every edge the probe saw, kept or not (see keepEdges()). A
// complete pulse runs from an edge to the next edge away from its level; a
// complete period from a rising edge to the next rising edge.
struct ProbeSummary {
    uint64_t edges = 0;
    uint64_t risingEdges = 0;
    uint64_t highPulses = 0, minHigh = 0, maxHigh = 0; // widths in cycles
    uint64_t lowPulses = 0, minLow = 0, maxLow = 0;
    uint64_t periods = 0;
    uint64_t periodCycles = 0;  // from the first rising edge to the last
    uint64_t highInPeriods = 0; // high cycles inside those periods
};

class LogicProbe : public Part, public PinListener {
public:
    explicit LogicProbe(std::string pin);
    ~LogicProbe() override;

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    // Keeps only the first `count` edges in edges(); summary(), risingEdges()
    // and frequency() still count every edge, so a long run costs bounded
    // memory. By default every edge is kept.
    void keepEdges(size_t count) { keep_ = count; }

    bool initialLevel() const { return initial_; }
    const std::vector<Edge>& edges() const { return edges_; }
    const ProbeSummary& summary() const { return summary_; }
    int risingEdges() const { return static_cast<int>(summary_.risingEdges); }
    // Lengths in cycles of the complete high (or low) pulses among the kept
    // edges: from an edge to that level to the next edge away from it.
    std::vector<uint64_t> highWidths() const { return widths(true); }
    std::vector<uint64_t> lowWidths() const { return widths(false); }
    // Cycles from the first rising edge to the last divided by the periods
    // between them, as Hz; 0 with fewer than two rising edges.
    double frequency() const;
    double cycleSeconds() const { return cycleSeconds_; }

private:
    std::vector<uint64_t> widths(bool level) const;
    void count(bool level, uint64_t cycle);

    std::string pinName_;
    Pin* pin_ = nullptr;
    double cycleSeconds_ = 1e-6;
    bool initial_ = false;
    bool last_ = false;
    size_t keep_ = std::numeric_limits<size_t>::max();
    std::vector<Edge> edges_;
    ProbeSummary summary_;
    bool seenEdge_ = false;
    uint64_t lastEdge_ = 0;
    bool seenRise_ = false;
    uint64_t firstRise_ = 0;
    uint64_t highSinceRise_ = 0; // the high pulse of the period under way
};

} // namespace zorvel::sim
