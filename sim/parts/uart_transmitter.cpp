#include "sim/parts/uart_transmitter.h"

#include <algorithm>
#include <cmath>

namespace zorvel::sim {

UartTransmitter::UartTransmitter(std::string pin, int baud, bool inverted)
    : pinName_(std::move(pin)), baud_(baud), inverted_(inverted) {}

void UartTransmitter::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void UartTransmitter::connect(const Wiring& wiring) {
    pin_ = &wiring.require(pinName_);
    scheduler_ = wiring.scheduler;
    now_ = wiring.now;
    cyclesPerBit_ = 1.0 / (baud_ * wiring.cycleSeconds);
    uint64_t now = wiring.now ? wiring.now() : 0;
    drive(true, now);
    if (!queue_.empty())
        scheduler_->schedule(std::max(now, notBefore_), [this](uint64_t t) { startNext(t); });
}

void UartTransmitter::reset() {
    if (!scheduler_) return;
    if (sending_) queue_.push_front(current_);
    sending_ = false;
    uint64_t now = now_ ? now_() : 0;
    // One bit time of idle line first, so that a receiver restarted by the
    // same reset sees the start bit.
    notBefore_ = now + static_cast<uint64_t>(std::llround(cyclesPerBit_));
    drive(true, now);
    if (!queue_.empty()) scheduler_->schedule(notBefore_, [this](uint64_t t) { startNext(t); });
}

void UartTransmitter::drive(bool mark, uint64_t cycle) {
    pin_->setExternal(mark != inverted_, cycle);
}

void UartTransmitter::send(std::string_view bytes, uint64_t startCycle) {
    bool wasIdle = idle();
    for (char c : bytes)
        queue_.push_back(static_cast<uint8_t>(c));
    notBefore_ = std::max(notBefore_, startCycle);
    if (wasIdle && scheduler_ && !queue_.empty())
        scheduler_->schedule(notBefore_, [this](uint64_t t) { startNext(t); });
}

void UartTransmitter::startNext(uint64_t now) {
    if (sending_ || queue_.empty()) return;
    sending_ = true;
    current_ = queue_.front();
    queue_.pop_front();
    frameStart_ = std::max(now, notBefore_);
    sendBit(0, frameStart_);
}

// Bit 0 is the start bit, 1..8 the data bits (LSB first), 9 the stop bit.
void UartTransmitter::sendBit(int bit, uint64_t now) {
    if (bit == 10) {
        sending_ = false;
        notBefore_ = now;
        startNext(now);
        return;
    }
    bool mark = bit == 9 || (bit >= 1 && (current_ >> (bit - 1) & 1));
    drive(mark, now);
    uint64_t next = frameStart_ + static_cast<uint64_t>(std::llround((bit + 1) * cyclesPerBit_));
    scheduler_->schedule(next, [this, bit](uint64_t t) { sendBit(bit + 1, t); });
}

} // namespace zorvel::sim
