// A character LCD with an HD44780 controller, written to through RS, E,
// optionally RW, and a 4-bit (D4-D7) or 8-bit (D0-D7) data bus. The
// controller latches on the falling edge of E. It starts with an 8-bit
// interface; a function set with DL=0 switches to 4-bit transfers (high
// nibble first). Reads (RW high) are ignored: the part never drives the bus.
//
// Timing, as the data sheet gives it (fosc 270 kHz; bus timing for the
// whole 2.7-5.5 V range): the controller is busy for 15 ms after power-on,
// 4.1 ms after the first function set of the initialisation by instruction
// and 100 us after the second, 1.52 ms after clear and home, 37 us after
// anything else. A transfer that ends while it is busy is lost and counted
// (busyViolations). The bus itself is checked at every write: E high for at
// least 450 ns, 1000 ns from one rising edge of E to the next, RS (and RW)
// settled 60 ns before E rises and held 20 ns after it falls, the data
// settled 195 ns before E falls and held 10 ns after. Each breach is counted
// (timingViolations) and described (timingReport).
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zorvel::sim {

// One instruction or data write as the controller took it: the cycles of the
// E falls that started and ended it (the same for an 8-bit transfer), and
// whether it came while the controller was busy (and was lost).
struct Hd44780Transfer {
    uint64_t start = 0, end = 0;
    uint8_t value = 0;
    bool data = false;
    bool lost = false;
};

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
    // A power-on reset (the cycle count starts again from 0) powers the
    // display up again; other resets leave it running.
    void reset() override;
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    // The visible text, one string of `columns` characters per line (spaces
    // where nothing is written, all spaces while the display is off).
    std::vector<std::string> lines() const;
    int busyViolations() const { return busyViolations_; }
    int timingViolations() const { return timingViolations_; }
    // The first few bus timing breaches, each with its cycle.
    const std::vector<std::string>& timingReport() const { return timingReport_; }
    bool displayOn() const { return displayOn_; }
    bool fourBitInterface() const { return !eightBit_; }
    int address() const { return address_; } // the DDRAM address counter
    uint8_t ddram(int address) const { return ddram_[address & 0x7F]; }
    int writes() const { return writes_; } // completed instructions and data writes
    // Keeps the first `count` transfers (none unless asked, so that a long
    // run costs no memory).
    void keepTransfers(size_t count) { keepTransfers_ = count; }
    const std::vector<Hd44780Transfer>& transfers() const { return transfers_; }

private:
    void powerUp(uint64_t cycle);
    void busTiming(Pin& pin, bool level, uint64_t cycle);
    void breach(const std::string& what, uint64_t cycle);
    void latch(uint64_t cycle);
    void transfer(uint8_t value, bool data, bool violated, uint64_t start, uint64_t cycle);
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
    std::function<uint64_t()> now_;
    uint64_t shortCycles_ = 1;
    uint64_t longCycles_ = 1;
    uint64_t powerOnCycles_ = 1;
    uint64_t firstResetCycles_ = 1;  // after the first function set of the start-up
    uint64_t secondResetCycles_ = 1; // after the second
    int resetStep_ = 0;              // 8-bit function sets seen since power-on (up to 2)
    bool lastE_ = false;

    // Bus timing limits in cycles, and the last changes.
    uint64_t enableHighCycles_ = 1, enableCycleCycles_ = 1;
    uint64_t addressSetupCycles_ = 1, addressHoldCycles_ = 1;
    uint64_t dataSetupCycles_ = 1, dataHoldCycles_ = 1;
    std::optional<uint64_t> eRose_, eFell_, addressChanged_, dataChanged_;
    int timingViolations_ = 0;
    std::vector<std::string> timingReport_;

    bool eightBit_ = true;
    bool highNibblePending_ = false; // 4-bit transfers: the first half is in
    uint8_t pendingNibble_ = 0;
    bool pendingViolated_ = false;
    uint64_t pendingStart_ = 0;
    size_t keepTransfers_ = 0;
    std::vector<Hd44780Transfer> transfers_;
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
