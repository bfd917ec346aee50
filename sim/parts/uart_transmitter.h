// Sends bytes as asynchronous serial (8N1) into an input pin of the device,
// the line idling high (true) or low (inverted).
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace zorvel::sim {

class UartTransmitter : public Part {
public:
    UartTransmitter(std::string pin, int baud, bool inverted = false);

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    // The device reset cleared the scheduler: the byte being sent starts again
    // after one bit time of idle line.
    void reset() override;

    // Queues bytes to be sent back to back, the first start bit not before
    // `startCycle`.
    void send(std::string_view bytes, uint64_t startCycle = 0);
    bool idle() const { return !sending_ && queue_.empty(); }

private:
    void drive(bool mark, uint64_t cycle);
    void startNext(uint64_t now);
    void sendBit(int bit, uint64_t now);

    std::string pinName_;
    int baud_;
    bool inverted_;
    Pin* pin_ = nullptr;
    Scheduler* scheduler_ = nullptr;
    std::function<uint64_t()> now_;
    double cyclesPerBit_ = 0;
    std::deque<uint8_t> queue_;
    uint64_t notBefore_ = 0;
    bool sending_ = false;
    uint64_t frameStart_ = 0;
    uint8_t current_ = 0;
};

} // namespace zorvel::sim
