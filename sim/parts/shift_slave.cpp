#include "sim/parts/shift_slave.h"

namespace zorvel::sim {

ShiftSlave::ShiftSlave(ShiftSlavePins pins) : config_(std::move(pins)) {}

ShiftSlave::~ShiftSlave() {
    if (clock_) clock_->removeListener(this);
}

void ShiftSlave::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void ShiftSlave::connect(const Wiring& wiring) {
    clock_ = &wiring.require(config_.clock);
    if (config_.dataIn) dataIn_ = &wiring.require(*config_.dataIn);
    if (config_.dataOut) dataOut_ = &wiring.require(*config_.dataOut);
    now_ = wiring.now;
    lastClock_ = clock_->level();
    clock_->addListener(this);
    if (!outgoing_.empty()) showNext(now_ ? now_() : 0);
}

void ShiftSlave::pinChanged(Pin&, bool level, uint64_t cycle) {
    bool was = lastClock_;
    lastClock_ = level;
    if (was == level || level != config_.risingEdge) return;
    if (dataIn_) bits_.push_back(dataIn_->level());
    if (presenting_) {
        presenting_ = false;
        showNext(cycle);
    }
}

void ShiftSlave::showNext(uint64_t cycle) {
    if (!dataOut_) return;
    if (outgoing_.empty()) {
        dataOut_->setExternal(std::nullopt, cycle);
        return;
    }
    dataOut_->setExternal(outgoing_.front(), cycle);
    outgoing_.pop_front();
    presenting_ = true;
}

void ShiftSlave::present(const std::vector<bool>& bits) {
    outgoing_.insert(outgoing_.end(), bits.begin(), bits.end());
    if (!presenting_ && dataOut_) showNext(now_ ? now_() : 0);
}

void ShiftSlave::presentByte(uint8_t value, bool msbFirst) {
    std::vector<bool> bits;
    for (int i = 0; i < 8; ++i)
        bits.push_back(value >> (msbFirst ? 7 - i : i) & 1);
    present(bits);
}

namespace {
std::vector<uint8_t> group(const std::vector<bool>& bits, bool msbFirst) {
    std::vector<uint8_t> out;
    for (size_t i = 0; i + 8 <= bits.size(); i += 8) {
        uint8_t value = 0;
        for (size_t k = 0; k < 8; ++k)
            if (bits[i + k]) value = static_cast<uint8_t>(value | 1 << (msbFirst ? 7 - k : k));
        out.push_back(value);
    }
    return out;
}
} // namespace

std::vector<uint8_t> ShiftSlave::bytesMsbFirst() const {
    return group(bits_, true);
}
std::vector<uint8_t> ShiftSlave::bytesLsbFirst() const {
    return group(bits_, false);
}

} // namespace zorvel::sim
