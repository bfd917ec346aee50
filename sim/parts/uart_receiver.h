// Decodes bit-banged asynchronous serial (8 data bits, no parity, 1 stop bit)
// on one pin. The line idles high (true) or low (inverted). A start edge
// begins a frame; each bit is sampled in the middle of its bit time.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zorvel::sim {

struct UartByte {
    uint8_t value = 0;
    uint64_t startCycle = 0;   // the cycle of the start edge
    bool framingError = false; // the stop bit was not at the idle level
};

class UartReceiver : public Part, public PinListener {
public:
    UartReceiver(std::string pin, int baud, bool inverted = false);
    ~UartReceiver() override;

    void attach(Pic16& pic) override;
    void reset() override { busy_ = false; }
    void connect(const Wiring& wiring);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    const std::vector<UartByte>& bytes() const { return bytes_; }
    // The bytes received without framing errors, as text.
    std::string text() const;
    int framingErrors() const { return framingErrors_; }

private:
    bool mark() const; // the line is at the idle (1) level
    uint64_t bitTime(int halfBits) const;
    void sample(int bit, uint64_t now);

    std::string pinName_;
    int baud_;
    bool inverted_;
    Pin* pin_ = nullptr;
    Scheduler* scheduler_ = nullptr;
    double cyclesPerBit_ = 0;
    bool busy_ = false;
    uint64_t frameStart_ = 0;
    uint8_t shift_ = 0;
    std::vector<UartByte> bytes_;
    int framingErrors_ = 0;
};

} // namespace zorvel::sim
