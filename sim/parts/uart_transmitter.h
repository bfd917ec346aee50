// Sends bytes as asynchronous serial (8N1, or 7E1: 7 data bits and an even
// parity bit) into an input pin of the device, the line idling high (true)
// or low (inverted). With a flow pin, each byte waits until the device
// holds that pin at its "go" level.
#pragma once

#include "sim/part.h"
#include "sim/parts/uart_receiver.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace zorvel::sim {

class UartTransmitter : public Part, public PinListener {
public:
    UartTransmitter(std::string pin, int baud, bool inverted = false,
                    UartFormat format = UartFormat::EightNone);
    ~UartTransmitter() override;

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    // The device reset cleared the scheduler: the byte being sent starts again
    // after one bit time of idle line.
    void reset() override;
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    // Each byte starts only while `pin` is at `goLevel` (the device's flow
    // control output); a byte under way is finished. Set before connect().
    void setFlowPin(std::string pin, bool goLevel);

    // Queues bytes to be sent back to back, the first start bit not before
    // `startCycle`. 7E1 sends bits 0-6 and their even parity; with
    // `wrongParity` the parity bit is inverted.
    void send(std::string_view bytes, uint64_t startCycle = 0, bool wrongParity = false);
    bool idle() const { return !sending_ && queue_.empty(); }
    // The cycle of the last start bit sent.
    uint64_t lastStart() const { return frameStart_; }

private:
    struct Queued {
        uint8_t value;
        bool wrongParity;
    };

    void drive(bool mark, uint64_t cycle);
    bool mayStart() const;
    void startNext(uint64_t now);
    void sendBit(int bit, uint64_t now);
    bool dataBit(int bit) const; // bits 1..8 of the frame

    std::string pinName_;
    int baud_;
    bool inverted_;
    UartFormat format_;
    std::string flowName_;
    bool flowGo_ = false;
    Pin* pin_ = nullptr;
    Pin* flow_ = nullptr;
    Scheduler* scheduler_ = nullptr;
    std::function<uint64_t()> now_;
    double cyclesPerBit_ = 0;
    std::deque<Queued> queue_;
    uint64_t notBefore_ = 0;
    bool sending_ = false;
    bool startPending_ = false; // a startNext is scheduled
    uint64_t frameStart_ = 0;
    Queued current_{0, false};
};

} // namespace zorvel::sim
