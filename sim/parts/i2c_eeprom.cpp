#include "sim/parts/i2c_eeprom.h"

namespace zorvel::sim {

namespace {
constexpr double writeSeconds = 5e-3;
} // namespace

I2cEeprom::I2cEeprom(std::string sda, std::string scl, int chipAddress, bool pullUps)
    : sdaName_(std::move(sda)), sclName_(std::move(scl)), chipAddress_(chipAddress & 7),
      pullUps_(pullUps) {
    memory_.fill(0xFF);
}

I2cEeprom::~I2cEeprom() {
    if (sda_) sda_->removeListener(this);
    if (scl_) scl_->removeListener(this);
}

void I2cEeprom::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void I2cEeprom::connect(const Wiring& wiring) {
    sda_ = &wiring.require(sdaName_);
    scl_ = &wiring.require(sclName_);
    writeCycles_ = wiring.cyclesFor(writeSeconds);
    uint64_t now = wiring.now ? wiring.now() : 0;
    driveOpenDrain(*scl_, false, pullUps_, now);
    driveOpenDrain(*sda_, false, pullUps_, now);
    lastSda_ = sda_->level();
    lastScl_ = scl_->level();
    sda_->addListener(this);
    scl_->addListener(this);
}

void I2cEeprom::releaseSda(uint64_t cycle) {
    driveOpenDrain(*sda_, false, pullUps_, cycle);
}
void I2cEeprom::pullSda(uint64_t cycle) {
    driveOpenDrain(*sda_, true, pullUps_, cycle);
}

void I2cEeprom::pinChanged(Pin& pin, bool level, uint64_t cycle) {
    if (&pin == sda_) {
        bool was = lastSda_;
        lastSda_ = level;
        if (!lastScl_ || was == level) return;
        if (level)
            stop(cycle);
        else
            start();
        return;
    }
    bool was = lastScl_;
    lastScl_ = level;
    if (was == level) return;
    if (level)
        clockRise();
    else
        clockFall(cycle);
}

void I2cEeprom::start() {
    ++starts_;
    page_.clear(); // a write not ended by STOP is abandoned
    state_ = State::Control;
    bits_ = 0;
    shift_ = 0;
    acking_ = false;
}

// A STOP after written data starts the internal write cycle.
void I2cEeprom::stop(uint64_t cycle) {
    ++stops_;
    if (state_ == State::WriteData && !page_.empty()) {
        for (auto [address, value] : page_)
            memory_[static_cast<size_t>(address)] = value;
        busyUntil_ = cycle + writeCycles_;
    }
    page_.clear();
    state_ = State::Idle;
    releaseSda(cycle);
}

// SCL rose: the receiver samples SDA.
void I2cEeprom::clockRise() {
    if (state_ == State::Idle) return;
    bool bit = sda_->level();
    if (bits_ < 8) {
        if (state_ != State::Read) shift_ = static_cast<uint8_t>(shift_ << 1 | (bit ? 1 : 0));
    } else if (state_ == State::Read) {
        masterAck_ = !bit;
    }
    ++bits_;
}

// SCL fell: the part changes SDA, after the 8th bit to acknowledge, after
// the 9th to go on with the next byte.
void I2cEeprom::clockFall(uint64_t cycle) {
    if (state_ == State::Idle) return;
    if (bits_ == 8) {
        if (state_ == State::Read) {
            releaseSda(cycle); // the master acknowledges
        } else {
            byteReceived(cycle);
            if (acking_) pullSda(cycle);
        }
        return;
    }
    if (bits_ == 9) {
        bits_ = 0;
        shift_ = 0;
        releaseSda(cycle);
        if (!acking_ && state_ != State::Read) {
            state_ = State::Idle; // not addressed, or busy: wait for the next START
            return;
        }
        if (state_ == State::Read) {
            if (!masterAck_) {
                state_ = State::Idle;
                return;
            }
            shift_ = memory_[static_cast<size_t>(address_)];
            address_ = (address_ + 1) % size;
        }
    }
    if (state_ == State::Read) presentBit(cycle);
}

void I2cEeprom::presentBit(uint64_t cycle) {
    if (shift_ & (0x80 >> bits_))
        releaseSda(cycle);
    else
        pullSda(cycle);
}

void I2cEeprom::byteReceived(uint64_t cycle) {
    uint8_t value = shift_;
    switch (state_) {
    case State::Control: {
        bool match = (value >> 1) == (0x50 | chipAddress_);
        acking_ = match && !writeBusy(cycle);
        if (!acking_) return;
        if (value & 1) {
            state_ = State::Read;
            masterAck_ = true; // the first byte follows the part's own ACK
        } else {
            state_ = State::AddressHigh;
        }
        return;
    }
    case State::AddressHigh:
        address_ = (value & 0x7F) << 8 | (address_ & 0xFF);
        state_ = State::AddressLow;
        break;
    case State::AddressLow:
        address_ = (address_ & 0x7F00) | value;
        state_ = State::WriteData;
        break;
    case State::WriteData: {
        page_.emplace_back(address_, value);
        int pageStart = address_ & ~(pageSize - 1);
        address_ = pageStart | ((address_ + 1) & (pageSize - 1));
        break;
    }
    default: break;
    }
    acking_ = true;
}

} // namespace zorvel::sim
