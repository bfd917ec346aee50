#include "sim/parts/uart_transmitter.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace zorvel::sim {

UartTransmitter::UartTransmitter(std::string pin, int baud, bool inverted, UartFormat format)
    : pinName_(std::move(pin)), baud_(baud), inverted_(inverted), format_(format) {}

UartTransmitter::~UartTransmitter() {
    if (flow_) flow_->removeListener(this);
}

void UartTransmitter::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void UartTransmitter::setFlowPin(std::string pin, bool goLevel) {
    flowName_ = std::move(pin);
    flowGo_ = goLevel;
}

void UartTransmitter::connect(const Wiring& wiring) {
    pin_ = &wiring.require(pinName_);
    if (!flowName_.empty()) {
        flow_ = &wiring.require(flowName_);
        flow_->addListener(this);
    }
    scheduler_ = wiring.scheduler;
    now_ = wiring.now;
    cyclesPerBit_ = 1.0 / (baud_ * wiring.cycleSeconds);
    uint64_t now = wiring.now ? wiring.now() : 0;
    drive(true, now);
    if (!queue_.empty()) {
        startPending_ = true;
        scheduler_->schedule(std::max(now, notBefore_), [this](uint64_t t) { startNext(t); });
    }
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
    startPending_ = !queue_.empty();
    if (startPending_) scheduler_->schedule(notBefore_, [this](uint64_t t) { startNext(t); });
}

// The flow pin reached its go level while bytes wait: the next one starts.
void UartTransmitter::pinChanged(Pin&, bool level, uint64_t cycle) {
    if (level != flowGo_ || sending_ || startPending_ || queue_.empty()) return;
    startPending_ = true;
    scheduler_->schedule(std::max(cycle, notBefore_), [this](uint64_t t) { startNext(t); });
}

void UartTransmitter::drive(bool mark, uint64_t cycle) {
    pin_->setExternal(mark != inverted_, cycle);
}

bool UartTransmitter::mayStart() const {
    return !flow_ || flow_->level() == flowGo_;
}

void UartTransmitter::send(std::string_view bytes, uint64_t startCycle, bool wrongParity) {
    bool wasIdle = idle();
    for (char c : bytes)
        queue_.push_back({static_cast<uint8_t>(c), wrongParity});
    notBefore_ = std::max(notBefore_, startCycle);
    if (wasIdle && scheduler_ && !queue_.empty() && !startPending_) {
        startPending_ = true;
        scheduler_->schedule(std::max(notBefore_, now_ ? now_() : 0),
                             [this](uint64_t t) { startNext(t); });
    }
}

// Without the go level the byte waits for pinChanged().
void UartTransmitter::startNext(uint64_t now) {
    startPending_ = false;
    if (sending_ || queue_.empty() || !mayStart()) return;
    sending_ = true;
    current_ = queue_.front();
    queue_.pop_front();
    frameStart_ = std::max(now, notBefore_);
    sendBit(0, frameStart_);
}

bool UartTransmitter::dataBit(int bit) const {
    if (format_ == UartFormat::SevenEven && bit == 8) {
        bool odd = std::popcount(static_cast<unsigned>(current_.value & 0x7F)) % 2 != 0;
        return odd != current_.wrongParity;
    }
    return (current_.value >> (bit - 1) & 1) != 0;
}

// Bit 0 is the start bit, 1..8 the data bits (LSB first), 9 the stop bit.
void UartTransmitter::sendBit(int bit, uint64_t now) {
    if (bit == 10) {
        sending_ = false;
        notBefore_ = now;
        startNext(now);
        return;
    }
    bool mark = bit == 9 || (bit >= 1 && dataBit(bit));
    drive(mark, now);
    uint64_t next = frameStart_ + static_cast<uint64_t>(std::llround((bit + 1) * cyclesPerBit_));
    scheduler_->schedule(next, [this, bit](uint64_t t) { sendBit(bit + 1, t); });
}

} // namespace zorvel::sim
