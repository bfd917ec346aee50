#include "sim/vcd.h"

#include "sim/pic16.h"

#include <cmath>

namespace zorvel::sim {

VcdWriter::~VcdWriter() {
    for (Pin* pin : pins_)
        pin->removeListener(this);
}

void VcdWriter::attach(Pic16& pic) {
    connect(pic.pins(), pic.cycleSeconds(), pic.cycles());
}

namespace {
// VCD names cannot hold spaces; a dot would read as a scope separator.
std::string signalName(const std::string& pin) {
    std::string out = pin;
    for (char& c : out)
        if (c == '.' || c == ' ') c = '_';
    return out;
}
} // namespace

void VcdWriter::connect(const std::vector<Pin*>& pins, double cycleSeconds, uint64_t now) {
    cycleSeconds_ = cycleSeconds;
    for (Pin* pin : pins) {
        if (!pin || index_.count(pin)) continue;
        index_[pin] = pins_.size();
        pins_.push_back(pin);
        pin->addListener(this);
    }
    out_ << "$date\n  zorvel sim\n$end\n$version\n  zorvel\n$end\n$timescale 1ns $end\n";
    out_ << "$scope module pic $end\n";
    for (size_t i = 0; i < pins_.size(); ++i)
        out_ << "$var wire 1 " << identifier(i) << ' ' << signalName(pins_[i]->name()) << " $end\n";
    out_ << "$upscope $end\n$enddefinitions $end\n";
    last_ = nanoseconds(now);
    out_ << '#' << last_ << "\n$dumpvars\n";
    for (size_t i = 0; i < pins_.size(); ++i)
        out_ << (pins_[i]->level() ? '1' : '0') << identifier(i) << '\n';
    out_ << "$end\n";
}

void VcdWriter::pinChanged(Pin& pin, bool level, uint64_t cycle) {
    auto it = index_.find(&pin);
    if (it == index_.end()) return;
    uint64_t t = nanoseconds(cycle);
    if (t != last_) out_ << '#' << t << '\n';
    last_ = t;
    out_ << (level ? '1' : '0') << identifier(it->second) << '\n';
    ++changes_;
}

void VcdWriter::finish(uint64_t endCycle) {
    uint64_t end = nanoseconds(endCycle);
    if (end > last_) out_ << '#' << end << '\n';
}

uint64_t VcdWriter::nanoseconds(uint64_t cycle) const {
    return static_cast<uint64_t>(std::llround(static_cast<double>(cycle) * cycleSeconds_ * 1e9));
}

// Short identifiers from the printable characters '!' to '~'.
std::string VcdWriter::identifier(size_t index) {
    std::string id;
    do {
        id.push_back(static_cast<char>('!' + index % 94));
        index /= 94;
    } while (index != 0);
    return id;
}

} // namespace zorvel::sim
