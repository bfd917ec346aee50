#include "sim/parts/logic_probe.h"

#include <algorithm>

namespace zorvel::sim {

LogicProbe::LogicProbe(std::string pin) : pinName_(std::move(pin)) {}

LogicProbe::~LogicProbe() {
    if (pin_) pin_->removeListener(this);
}

void LogicProbe::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void LogicProbe::connect(const Wiring& wiring) {
    pin_ = &wiring.require(pinName_);
    cycleSeconds_ = wiring.cycleSeconds;
    initial_ = pin_->level();
    last_ = initial_;
    pin_->addListener(this);
}

void LogicProbe::pinChanged(Pin&, bool level, uint64_t cycle) {
    if (level == last_) return;
    last_ = level;
    if (edges_.size() < keep_) edges_.push_back({cycle, level});
    count(level, cycle);
}

void LogicProbe::count(bool level, uint64_t cycle) {
    ProbeSummary& s = summary_;
    ++s.edges;
    if (seenEdge_) { // the pulse that this edge ends is complete
        uint64_t width = cycle - lastEdge_;
        uint64_t& pulses = level ? s.lowPulses : s.highPulses;
        uint64_t& least = level ? s.minLow : s.minHigh;
        uint64_t& most = level ? s.maxLow : s.maxHigh;
        least = pulses == 0 ? width : std::min(least, width);
        most = std::max(most, width);
        ++pulses;
        if (!level && seenRise_) highSinceRise_ = width;
    }
    seenEdge_ = true;
    lastEdge_ = cycle;
    if (!level) return;
    ++s.risingEdges;
    if (seenRise_) {
        ++s.periods;
        s.periodCycles = cycle - firstRise_;
        s.highInPeriods += highSinceRise_;
    } else {
        firstRise_ = cycle;
    }
    seenRise_ = true;
    highSinceRise_ = 0;
}

std::vector<uint64_t> LogicProbe::widths(bool level) const {
    std::vector<uint64_t> out;
    for (size_t i = 0; i + 1 < edges_.size(); ++i)
        if (edges_[i].level == level) out.push_back(edges_[i + 1].cycle - edges_[i].cycle);
    return out;
}

double LogicProbe::frequency() const {
    if (summary_.periods < 1 || summary_.periodCycles == 0) return 0.0;
    return static_cast<double>(summary_.periods) /
           (static_cast<double>(summary_.periodCycles) * cycleSeconds_);
}

} // namespace zorvel::sim
