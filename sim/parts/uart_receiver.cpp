#include "sim/parts/uart_receiver.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace zorvel::sim {

UartReceiver::UartReceiver(std::string pin, int baud, bool inverted, UartFormat format)
    : pinName_(std::move(pin)), baud_(baud), inverted_(inverted), format_(format) {}

UartReceiver::~UartReceiver() {
    if (pin_) pin_->removeListener(this);
}

void UartReceiver::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void UartReceiver::connect(const Wiring& wiring) {
    pin_ = &wiring.require(pinName_);
    scheduler_ = wiring.scheduler;
    cyclesPerBit_ = 1.0 / (baud_ * wiring.cycleSeconds);
    pin_->addListener(this);
}

bool UartReceiver::mark() const {
    return pin_->level() != inverted_;
}

// The time from the start edge to `halfBits` half bit times later.
uint64_t UartReceiver::bitTime(int halfBits) const {
    return static_cast<uint64_t>(std::llround(halfBits * cyclesPerBit_ / 2));
}

void UartReceiver::pinChanged(Pin&, bool level, uint64_t cycle) {
    bool isMark = level != inverted_;
    // A frame whose samples were dropped (the device reset and cleared the
    // scheduler) would otherwise keep the receiver busy.
    if (busy_ && cycle > frameStart_ + bitTime(22)) busy_ = false;
    if (busy_) {
        edges_.push_back(cycle);
        return;
    }
    if (isMark) return;
    busy_ = true;
    frameStart_ = cycle;
    shift_ = 0;
    edges_.clear();
    scheduler_->schedule(frameStart_ + bitTime(1), [this](uint64_t now) { sample(0, now); });
}

// Bit 0 is the start bit, 1..8 the data bits (LSB first; 7E1: 7 data bits
// and the parity bit), 9 the stop bit.
void UartReceiver::sample(int bit, uint64_t) {
    bool value = mark();
    if (bit == 0 && value) { // a glitch, not a start bit
        busy_ = false;
        return;
    }
    if (bit >= 1 && bit <= 8) shift_ = static_cast<uint16_t>(shift_ | (value ? 1 << (bit - 1) : 0));
    if (bit == 9) {
        finishFrame(value);
        return;
    }
    scheduler_->schedule(frameStart_ + bitTime(2 * bit + 3),
                         [this, bit](uint64_t now) { sample(bit + 1, now); });
}

void UartReceiver::finishFrame(bool stopBit) {
    UartByte b;
    b.startCycle = frameStart_;
    b.framingError = !stopBit;
    if (format_ == UartFormat::SevenEven) {
        b.value = static_cast<uint8_t>(shift_ & 0x7F);
        b.parityError = std::popcount(static_cast<unsigned>(shift_ & 0xFF)) % 2 != 0;
    } else {
        b.value = static_cast<uint8_t>(shift_);
    }
    // Edge k bits after the start edge: t = k x P; least squares through 0.
    double tk = 0, kk = 0;
    for (uint64_t edge : edges_) {
        double t = static_cast<double>(edge - frameStart_);
        int k = static_cast<int>(std::lround(t / cyclesPerBit_));
        if (k < 1 || k > 9) continue;
        tk += t * k;
        kk += static_cast<double>(k) * k;
        b.lastEdgeBit = std::max(b.lastEdgeBit, k);
    }
    if (kk > 0) b.bitCycles = tk / kk;
    if (b.framingError) ++framingErrors_;
    if (b.parityError) ++parityErrors_;
    bytes_.push_back(b);
    busy_ = false;
}

std::string UartReceiver::text() const {
    std::string out;
    for (const UartByte& b : bytes_)
        if (!b.framingError) out.push_back(static_cast<char>(b.value));
    return out;
}

} // namespace zorvel::sim
