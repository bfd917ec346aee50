// Records the level of every device pin and writes the result as a Value
// Change Dump that waveform viewers (GTKWave and others) open. Times are in
// nanoseconds computed from the cycle count and the cycle length.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace zorvel::sim {

class VcdWriter : public Part, public PinListener {
public:
    VcdWriter() = default;
    ~VcdWriter() override;

    void attach(Pic16& pic) override;
    // Records the given pins; `now` is the cycle of the initial levels.
    void connect(const std::vector<Pin*>& pins, double cycleSeconds, uint64_t now);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    // Writes the dump, ending at `endCycle`.
    void write(std::ostream& out, uint64_t endCycle) const;
    // Writes to a file; false with `error` set when it cannot be written.
    bool save(const std::filesystem::path& path, uint64_t endCycle, std::string& error) const;
    size_t changes() const { return changes_.size(); }

private:
    struct Change {
        uint64_t cycle;
        size_t signal;
        bool level;
    };
    uint64_t nanoseconds(uint64_t cycle) const;
    static std::string identifier(size_t index);

    std::vector<Pin*> pins_;
    std::map<const Pin*, size_t> index_;
    std::vector<bool> initial_;
    uint64_t start_ = 0;
    double cycleSeconds_ = 1e-6;
    std::vector<Change> changes_;
};

} // namespace zorvel::sim
