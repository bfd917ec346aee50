// The far end of a synchronous serial link (SHIFTOUT/SHIFTIN): records the
// bit on a data pin at every active clock edge (rising or falling), and can
// present bits of its own on a data-out pin for the device to read.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace zorvel::sim {

struct ShiftSlavePins {
    std::string clock;
    std::optional<std::string> dataIn;  // the device's output, recorded
    std::optional<std::string> dataOut; // driven by this part
    bool risingEdge = true;             // the active clock edge
};

class ShiftSlave : public Part, public PinListener {
public:
    explicit ShiftSlave(ShiftSlavePins pins);
    ~ShiftSlave() override;

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    const std::vector<bool>& bits() const { return bits_; }
    // The recorded bits in groups of eight (a last partial group is left out).
    std::vector<uint8_t> bytesMsbFirst() const;
    std::vector<uint8_t> bytesLsbFirst() const;
    void clearBits() { bits_.clear(); }

    // Queues bits for the data-out pin: the first is presented at once (or
    // when the previous bits are used up), each active clock edge moves on to
    // the next. The pin is released when the queue is empty.
    void present(const std::vector<bool>& bits);
    void presentByte(uint8_t value, bool msbFirst = true);

private:
    void showNext(uint64_t cycle);

    ShiftSlavePins config_;
    Pin* clock_ = nullptr;
    Pin* dataIn_ = nullptr;
    Pin* dataOut_ = nullptr;
    std::function<uint64_t()> now_;
    bool lastClock_ = false;
    std::vector<bool> bits_;
    std::deque<bool> outgoing_;
    bool presenting_ = false;
};

} // namespace zorvel::sim
