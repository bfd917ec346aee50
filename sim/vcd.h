// Records the level of every device pin as a Value Change Dump that waveform
// viewers (GTKWave and others) open. Times are in nanoseconds computed from
// the cycle count and the cycle length. The dump is written as the run goes,
// so a long run costs file space, not memory.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace zorvel::sim {

class VcdWriter : public Part, public PinListener {
public:
    // Writes to `out`, which must outlive the writer.
    explicit VcdWriter(std::ostream& out) : out_(out) {}
    ~VcdWriter() override;

    void attach(Pic16& pic) override;
    // Records the given pins and writes the header and their levels at
    // cycle `now`; called once.
    void connect(const std::vector<Pin*>& pins, double cycleSeconds, uint64_t now);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    // Ends the dump at `endCycle`; the caller flushes and checks the stream.
    void finish(uint64_t endCycle);
    size_t changes() const { return changes_; }

private:
    uint64_t nanoseconds(uint64_t cycle) const;
    static std::string identifier(size_t index);

    std::ostream& out_;
    std::vector<Pin*> pins_;
    std::map<const Pin*, size_t> index_;
    double cycleSeconds_ = 1e-6;
    uint64_t last_ = 0; // the time of the last '#' line
    size_t changes_ = 0;
};

} // namespace zorvel::sim
