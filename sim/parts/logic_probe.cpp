#include "sim/parts/logic_probe.h"

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
    pin_->addListener(this);
}

void LogicProbe::pinChanged(Pin&, bool level, uint64_t cycle) {
    bool last = edges_.empty() ? initial_ : edges_.back().level;
    if (level != last) edges_.push_back({cycle, level});
}

int LogicProbe::risingEdges() const {
    int count = 0;
    for (const Edge& e : edges_)
        count += e.level ? 1 : 0;
    return count;
}

std::vector<uint64_t> LogicProbe::widths(bool level) const {
    std::vector<uint64_t> out;
    for (size_t i = 0; i + 1 < edges_.size(); ++i)
        if (edges_[i].level == level) out.push_back(edges_[i + 1].cycle - edges_[i].cycle);
    return out;
}

double LogicProbe::frequency() const {
    uint64_t first = 0, last = 0;
    int periods = -1;
    for (const Edge& e : edges_) {
        if (!e.level) continue;
        if (periods < 0) first = e.cycle;
        last = e.cycle;
        ++periods;
    }
    if (periods < 1 || last == first) return 0.0;
    return periods / ((last - first) * cycleSeconds_);
}

} // namespace zorvel::sim
