// Decodes bit-banged asynchronous serial on one pin: 8 data bits and no
// parity (8N1), or 7 data bits and an even parity bit (7E1), then 1 stop
// bit. The line idles high (true) or low (inverted). A start edge begins a
// frame; each bit is sampled in the middle of its bit time. The edges inside
// a frame also give the bit time the sender actually used.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zorvel::sim {

// The framing of both UART parts.
enum class UartFormat {
    EightNone, // 8 data bits, no parity
    SevenEven, // 7 data bits, even parity
};

struct UartByte {
    uint8_t value = 0;         // 7E1: the 7 data bits (bit 7 clear)
    uint64_t startCycle = 0;   // the cycle of the start edge
    bool framingError = false; // the stop bit was not at the idle level
    bool parityError = false;  // 7E1: the parity bit made the ones odd
    // The sender's bit time in cycles, fitted to the edges of the frame
    // after the start edge (edge k bits in lies k x bitCycles after it; a
    // least-squares fit through the start edge); 0 when the frame had no
    // other edge. lastEdgeBit is the bit number of the latest edge used.
    double bitCycles = 0;
    int lastEdgeBit = 0;
};

class UartReceiver : public Part, public PinListener {
public:
    UartReceiver(std::string pin, int baud, bool inverted = false,
                 UartFormat format = UartFormat::EightNone);
    ~UartReceiver() override;

    void attach(Pic16& pic) override;
    void reset() override { busy_ = false; }
    void connect(const Wiring& wiring);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    const std::vector<UartByte>& bytes() const { return bytes_; }
    // The bytes received without framing errors, as text.
    std::string text() const;
    int framingErrors() const { return framingErrors_; }
    int parityErrors() const { return parityErrors_; }
    // The nominal bit time at the configured baud rate, in cycles.
    double nominalBitCycles() const { return cyclesPerBit_; }

private:
    bool mark() const; // the line is at the idle (1) level
    uint64_t bitTime(int halfBits) const;
    void sample(int bit, uint64_t now);
    void finishFrame(bool stopBit);

    std::string pinName_;
    int baud_;
    bool inverted_;
    UartFormat format_;
    Pin* pin_ = nullptr;
    Scheduler* scheduler_ = nullptr;
    double cyclesPerBit_ = 0;
    bool busy_ = false;
    uint64_t frameStart_ = 0;
    uint16_t shift_ = 0;
    std::vector<uint64_t> edges_; // the frame's edges after the start edge
    std::vector<UartByte> bytes_;
    int framingErrors_ = 0;
    int parityErrors_ = 0;
};

} // namespace zorvel::sim
