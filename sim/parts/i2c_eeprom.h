// A 24LC256-like serial EEPROM: 32 KiB on an I2C bus (SDA, SCL). The part
// answers to the control byte 1010 A2 A1 A0 R/W, takes a 16-bit word address,
// reads sequentially, writes pages of up to 64 bytes (wrapping inside the
// page) and, for 5 ms after a write, does not acknowledge (acknowledge
// polling). Both lines are open drain: the part pulls SDA low or releases it,
// and a released line reads high through the bus pull-up resistors, which
// this part provides unless told otherwise.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zorvel::sim {

class I2cEeprom : public Part, public PinListener {
public:
    static constexpr int size = 32768;
    static constexpr int pageSize = 64;

    I2cEeprom(std::string sda, std::string scl, int chipAddress = 0, bool pullUps = true);
    ~I2cEeprom() override;

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    // The device's cycle count restarts: a write cycle in progress ends.
    void reset() override { busyUntil_ = 0; }
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    std::array<uint8_t, size>& memory() { return memory_; }
    const std::array<uint8_t, size>& memory() const { return memory_; }
    int addressCounter() const { return address_; }
    bool writeBusy(uint64_t cycle) const { return cycle < busyUntil_; }
    int starts() const { return starts_; }
    int stops() const { return stops_; }

private:
    enum class State { Idle, Control, AddressHigh, AddressLow, WriteData, Read };

    void start();
    void stop(uint64_t cycle);
    void clockRise();
    void clockFall(uint64_t cycle);
    void byteReceived(uint64_t cycle);
    void releaseSda(uint64_t cycle);
    void pullSda(uint64_t cycle);
    void presentBit(uint64_t cycle);

    std::string sdaName_;
    std::string sclName_;
    int chipAddress_;
    bool pullUps_;
    Pin* sda_ = nullptr;
    Pin* scl_ = nullptr;
    uint64_t writeCycles_ = 1;

    std::array<uint8_t, size> memory_{};
    State state_ = State::Idle;
    int bits_ = 0;          // bits of the current byte clocked so far (9 with the ACK)
    uint8_t shift_ = 0;     // the byte being received or sent
    bool acking_ = false;   // the part pulls SDA low in this byte's 9th clock
    bool masterAck_ = true; // in reads: the master acknowledged the last byte
    int address_ = 0;
    std::vector<std::pair<int, uint8_t>> page_;
    uint64_t busyUntil_ = 0;
    bool lastSda_ = true;
    bool lastScl_ = true;
    int starts_ = 0;
    int stops_ = 0;
};

} // namespace zorvel::sim
