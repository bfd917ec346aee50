#include "sim/vcd.h"

#include "sim/pic16.h"

#include <cmath>
#include <fstream>

namespace zorvel::sim {

VcdWriter::~VcdWriter() {
    for (Pin* pin : pins_)
        pin->removeListener(this);
}

void VcdWriter::attach(Pic16& pic) {
    connect(pic.pins(), pic.cycleSeconds(), pic.cycles());
}

void VcdWriter::connect(const std::vector<Pin*>& pins, double cycleSeconds, uint64_t now) {
    cycleSeconds_ = cycleSeconds;
    start_ = now;
    for (Pin* pin : pins) {
        if (!pin || index_.count(pin)) continue;
        index_[pin] = pins_.size();
        pins_.push_back(pin);
        initial_.push_back(pin->level());
        pin->addListener(this);
    }
}

void VcdWriter::pinChanged(Pin& pin, bool level, uint64_t cycle) {
    auto it = index_.find(&pin);
    if (it != index_.end()) changes_.push_back({cycle, it->second, level});
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

namespace {
// VCD names cannot hold spaces; a dot would read as a scope separator.
std::string signalName(const std::string& pin) {
    std::string out = pin;
    for (char& c : out)
        if (c == '.' || c == ' ') c = '_';
    return out;
}
} // namespace

void VcdWriter::write(std::ostream& out, uint64_t endCycle) const {
    out << "$date\n  zorvel sim\n$end\n$version\n  zorvel\n$end\n$timescale 1ns $end\n";
    out << "$scope module pic $end\n";
    for (size_t i = 0; i < pins_.size(); ++i)
        out << "$var wire 1 " << identifier(i) << ' ' << signalName(pins_[i]->name()) << " $end\n";
    out << "$upscope $end\n$enddefinitions $end\n";
    out << '#' << nanoseconds(start_) << "\n$dumpvars\n";
    for (size_t i = 0; i < pins_.size(); ++i)
        out << (initial_[i] ? '1' : '0') << identifier(i) << '\n';
    out << "$end\n";
    uint64_t last = nanoseconds(start_);
    for (const Change& c : changes_) {
        uint64_t t = nanoseconds(c.cycle);
        if (t != last) out << '#' << t << '\n';
        last = t;
        out << (c.level ? '1' : '0') << identifier(c.signal) << '\n';
    }
    uint64_t end = nanoseconds(endCycle);
    if (end > last) out << '#' << end << '\n';
}

bool VcdWriter::save(const std::filesystem::path& path, uint64_t endCycle,
                     std::string& error) const {
    std::ofstream file(path);
    if (file) write(file, endCycle);
    if (!file) {
        error = "cannot write " + path.string();
        return false;
    }
    return true;
}

} // namespace zorvel::sim
