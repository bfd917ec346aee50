// A character LCD with an HD44780 controller, written to through RS, E,
// optionally RW, and a 4-bit (D4-D7) or 8-bit (D0-D7) data bus. The
// controller latches on the falling edge of E. It starts with an 8-bit
// interface; a function set with DL=0 switches to 4-bit transfers (high
// nibble first). Reads (RW high) are ignored: the part never drives the bus.
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zorvel::sim {

struct Hd44780Pins {
    std::string rs;
    std::string e;
    std::optional<std::string> rw;
    std::vector<std::string> data; // D4..D7 (4 pins) or D0..D7 (8 pins)
    int lines = 2;                 // 1, 2 or 4
    int columns = 16;              // 16 or 20
};

class Hd44780 : public Part, public PinListener {
public:
    explicit Hd44780(Hd44780Pins pins);
    ~Hd44780() override;

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    // The device's cycle count restarts: forget the busy time (the display keeps its state).
    void reset() override { busyUntil_ = 0; }
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    // The visible text, one string of `columns` characters per line (spaces
    // where nothing is written, all spaces while the display is off).
    std::vector<std::string> lines() const;
    int busyViolations() const { return busyViolations_; }
    bool displayOn() const { return displayOn_; }
    bool fourBitInterface() const { return !eightBit_; }
    int address() const { return address_; } // the DDRAM address counter
    uint8_t ddram(int address) const { return ddram_[address & 0x7F]; }
    int writes() const { return writes_; } // completed instructions and data writes

private:
    void latch(uint64_t cycle);
    void transfer(uint8_t value, bool data, bool violated, uint64_t cycle);
    void command(uint8_t value, uint64_t cycle);
    void writeData(uint8_t value);
    void functionSet(uint8_t value);
    void cursorOrDisplayShift(uint8_t value);
    int step(int address, int delta) const;
    char shown(int line, int column) const;

    Hd44780Pins config_;
    Pin* rs_ = nullptr;
    Pin* e_ = nullptr;
    Pin* rw_ = nullptr;
    std::vector<Pin*> data_;
    uint64_t shortCycles_ = 1;
    uint64_t longCycles_ = 1;
    bool lastE_ = false;

    bool eightBit_ = true;
    bool highNibblePending_ = false; // 4-bit transfers: the first half is in
    uint8_t pendingNibble_ = 0;
    bool pendingViolated_ = false;
    uint64_t busyUntil_ = 0;
    int busyViolations_ = 0;
    int writes_ = 0;

    std::array<uint8_t, 128> ddram_{};
    std::array<uint8_t, 64> cgram_{};
    bool toCgram_ = false;
    int address_ = 0;
    int cgAddress_ = 0;
    int shift_ = 0;
    bool increment_ = true;
    bool shiftOnWrite_ = false;
    bool displayOn_ = false;
    bool cursorOn_ = false;
    bool blinkOn_ = false;
    bool twoLineMode_ = false;
};

} // namespace zorvel::sim
