#include "sim/parts/hd44780.h"

#include <stdexcept>

namespace zorvel::sim {

namespace {
// Execution times at fosc = 270 kHz.
constexpr double shortSeconds = 37e-6;
constexpr double longSeconds = 1.52e-3;
// Initialisation by instruction: the waits after power-on (supply at
// 4.5 V) and after the first and second function set.
constexpr double powerOnSeconds = 15e-3;
constexpr double firstResetSeconds = 4.1e-3;
constexpr double secondResetSeconds = 100e-6;
// Bus timing of a write, the limits that hold from 2.7 to 5.5 V.
constexpr double enableHighSeconds = 450e-9;  // PWEH
constexpr double enableCycleSeconds = 1e-6;   // tcycE
constexpr double addressSetupSeconds = 60e-9; // tAS
constexpr double addressHoldSeconds = 20e-9;  // tAH
constexpr double dataSetupSeconds = 195e-9;   // tDSW
constexpr double dataHoldSeconds = 10e-9;     // tH
constexpr size_t kReportedBreaches = 10;
} // namespace

Hd44780::Hd44780(Hd44780Pins pins) : config_(std::move(pins)) {
    if (config_.data.size() != 4 && config_.data.size() != 8)
        throw std::invalid_argument("an HD44780 needs 4 or 8 data pins");
    if (config_.lines != 1 && config_.lines != 2 && config_.lines != 4)
        throw std::invalid_argument("an HD44780 display has 1, 2 or 4 lines");
    if (config_.columns < 1 || config_.columns > 40)
        throw std::invalid_argument("an HD44780 display has 1 to 40 columns");
    ddram_.fill(' ');
}

Hd44780::~Hd44780() {
    for (Pin* pin : {e_, rs_, rw_})
        if (pin) pin->removeListener(this);
    for (Pin* pin : data_)
        pin->removeListener(this);
}

void Hd44780::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void Hd44780::connect(const Wiring& wiring) {
    rs_ = &wiring.require(config_.rs);
    e_ = &wiring.require(config_.e);
    if (config_.rw) rw_ = &wiring.require(*config_.rw);
    for (const std::string& name : config_.data)
        data_.push_back(&wiring.require(name));
    shortCycles_ = wiring.cyclesFor(shortSeconds);
    longCycles_ = wiring.cyclesFor(longSeconds);
    powerOnCycles_ = wiring.cyclesFor(powerOnSeconds);
    firstResetCycles_ = wiring.cyclesFor(firstResetSeconds);
    secondResetCycles_ = wiring.cyclesFor(secondResetSeconds);
    enableHighCycles_ = wiring.cyclesFor(enableHighSeconds);
    enableCycleCycles_ = wiring.cyclesFor(enableCycleSeconds);
    addressSetupCycles_ = wiring.cyclesFor(addressSetupSeconds);
    addressHoldCycles_ = wiring.cyclesFor(addressHoldSeconds);
    dataSetupCycles_ = wiring.cyclesFor(dataSetupSeconds);
    dataHoldCycles_ = wiring.cyclesFor(dataHoldSeconds);
    now_ = wiring.now;
    lastE_ = e_->level();
    for (Pin* pin : {e_, rs_, rw_})
        if (pin) pin->addListener(this);
    for (Pin* pin : data_)
        pin->addListener(this);
    powerUp(now_ ? now_() : 0);
}

// The state after the internal reset: 8-bit interface, one line, display
// off, increment, DDRAM cleared; busy for the power-on wait.
void Hd44780::powerUp(uint64_t cycle) {
    eightBit_ = true;
    highNibblePending_ = false;
    busyUntil_ = cycle + powerOnCycles_;
    resetStep_ = 0;
    ddram_.fill(' ');
    cgram_.fill(0);
    toCgram_ = false;
    address_ = cgAddress_ = shift_ = 0;
    increment_ = true;
    shiftOnWrite_ = displayOn_ = cursorOn_ = blinkOn_ = twoLineMode_ = false;
    eRose_ = eFell_ = addressChanged_ = dataChanged_ = std::nullopt;
}

void Hd44780::reset() {
    if (now_ && now_() == 0) powerUp(0);
}

void Hd44780::breach(const std::string& what, uint64_t cycle) {
    ++timingViolations_;
    if (timingReport_.size() < kReportedBreaches)
        timingReport_.push_back("cycle " + std::to_string(cycle) + ": " + what);
}

// The write timing of the bus, checked at each change of E, RS, RW and data.
void Hd44780::busTiming(Pin& pin, bool level, uint64_t cycle) {
    auto since = [cycle](const std::optional<uint64_t>& at) {
        return at ? cycle - *at : UINT64_MAX;
    };
    if (&pin == e_) {
        if (level) {
            if (since(eRose_) < enableCycleCycles_) breach("E rose again within 1000 ns", cycle);
            if (since(addressChanged_) < addressSetupCycles_)
                breach("E rose within 60 ns of a change of RS", cycle);
            eRose_ = cycle;
        } else if (!rw_ || !rw_->level()) {
            if (since(eRose_) < enableHighCycles_) breach("E high for less than 450 ns", cycle);
            if (since(dataChanged_) < dataSetupCycles_)
                breach("E fell within 195 ns of a change of the data", cycle);
            eFell_ = cycle;
        }
        return;
    }
    bool eHigh = e_->level();
    if (&pin == rs_ || &pin == rw_) {
        if (eHigh)
            breach("RS changed while E was high", cycle);
        else if (since(eFell_) < addressHoldCycles_)
            breach("RS changed within 20 ns of E falling", cycle);
        addressChanged_ = cycle;
        return;
    }
    if (!eHigh && since(eFell_) < dataHoldCycles_)
        breach("the data changed within 10 ns of E falling", cycle);
    dataChanged_ = cycle;
}

void Hd44780::pinChanged(Pin& pin, bool level, uint64_t cycle) {
    busTiming(pin, level, cycle);
    if (&pin != e_) return;
    bool falling = lastE_ && !level;
    lastE_ = level;
    if (falling) latch(cycle);
}

// E fell: take what the bus holds.
void Hd44780::latch(uint64_t cycle) {
    if (rw_ && rw_->level()) return; // a read: the part does not drive the bus
    uint8_t bus = 0;
    for (size_t i = 0; i < data_.size(); ++i)
        if (data_[i]->level()) bus = static_cast<uint8_t>(bus | 1 << i);
    bool isData = rs_->level();
    bool violated = cycle < busyUntil_;
    if (data_.size() == 8) {
        transfer(bus, isData, violated, cycle, cycle);
        return;
    }
    if (eightBit_) { // only D4-D7 are wired: D0-D3 read as 0
        transfer(static_cast<uint8_t>(bus << 4), isData, violated, cycle, cycle);
        return;
    }
    if (!highNibblePending_) {
        highNibblePending_ = true;
        pendingNibble_ = bus;
        pendingViolated_ = violated;
        pendingStart_ = cycle;
        return;
    }
    highNibblePending_ = false;
    transfer(static_cast<uint8_t>(pendingNibble_ << 4 | bus), isData, pendingViolated_,
             pendingStart_, cycle);
}

// A complete byte; one written while the controller is busy is lost.
void Hd44780::transfer(uint8_t value, bool data, bool violated, uint64_t start, uint64_t cycle) {
    if (transfers_.size() < keepTransfers_)
        transfers_.push_back({start, cycle, value, data, violated});
    if (violated) {
        ++busyViolations_;
        return;
    }
    ++writes_;
    busyUntil_ = cycle + shortCycles_;
    if (data)
        writeData(value);
    else
        command(value, cycle);
}

void Hd44780::command(uint8_t value, uint64_t cycle) {
    // The first two 8-bit function sets after power-on are the start of the
    // initialisation by instruction; anything else ends it.
    bool resetSet = (value & 0xF0) == 0x30 && eightBit_;
    if (resetSet && resetStep_ < 2)
        busyUntil_ = cycle + (resetStep_++ == 0 ? firstResetCycles_ : secondResetCycles_);
    else
        resetStep_ = 2;
    if (value & 0x80) {
        toCgram_ = false;
        address_ = value & 0x7F;
    } else if (value & 0x40) {
        toCgram_ = true;
        cgAddress_ = value & 0x3F;
    } else if (value & 0x20) {
        functionSet(value);
    } else if (value & 0x10) {
        cursorOrDisplayShift(value);
    } else if (value & 0x08) {
        displayOn_ = value & 0x04;
        cursorOn_ = value & 0x02;
        blinkOn_ = value & 0x01;
    } else if (value & 0x04) {
        increment_ = value & 0x02;
        shiftOnWrite_ = value & 0x01;
    } else if (value & 0x02) { // return home
        address_ = 0;
        shift_ = 0;
        toCgram_ = false;
        busyUntil_ = cycle + longCycles_;
    } else if (value & 0x01) { // clear display
        ddram_.fill(' ');
        address_ = 0;
        shift_ = 0;
        increment_ = true;
        toCgram_ = false;
        busyUntil_ = cycle + longCycles_;
    }
}

void Hd44780::functionSet(uint8_t value) {
    bool eight = value & 0x10;
    if (eight != eightBit_) highNibblePending_ = false;
    eightBit_ = eight;
    twoLineMode_ = value & 0x08;
}

void Hd44780::cursorOrDisplayShift(uint8_t value) {
    int delta = (value & 0x04) ? 1 : -1; // right or left
    if (value & 0x08)
        shift_ -= delta; // the text moves the way the display shifts
    else
        address_ = step(address_, delta);
}

// The next DDRAM address: two 40-character lines at 0x00 and 0x40 in
// two-line mode, one 80-character line from 0x00 otherwise.
int Hd44780::step(int address, int delta) const {
    if (!twoLineMode_) return ((address + delta) % 80 + 80) % 80;
    int base = address >= 0x40 ? 0x40 : 0x00;
    int offset = address - base + delta;
    if (offset >= 40) return base == 0 ? 0x40 : 0x00;
    if (offset < 0) return base == 0 ? 0x67 : 0x27;
    return base + offset;
}

void Hd44780::writeData(uint8_t value) {
    int delta = increment_ ? 1 : -1;
    if (toCgram_) {
        cgram_[cgAddress_] = value;
        cgAddress_ = (cgAddress_ + delta) & 0x3F;
        return;
    }
    ddram_[address_ & 0x7F] = value;
    address_ = step(address_, delta);
    if (shiftOnWrite_) shift_ += delta;
}

// Line starts: 0x00, 0x40, then `columns` and 0x40 + `columns` (0x14 and
// 0x54 on a 20-column display). Each line scrolls inside its 40 characters.
char Hd44780::shown(int line, int column) const {
    int start = (line & 1 ? 0x40 : 0x00) + (line >= 2 ? config_.columns : 0);
    int base = start >= 0x40 ? 0x40 : 0x00;
    int span = twoLineMode_ ? 40 : 80;
    int offset = ((start - base + column + shift_) % span + span) % span;
    uint8_t c = ddram_[(base + offset) & 0x7F];
    return c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
}

// In one-line mode the controller drives only the lines of its first
// DDRAM line (0x00-0x27 in two-line terms): the others stay blank.
std::vector<std::string> Hd44780::lines() const {
    std::vector<std::string> out;
    for (int line = 0; line < config_.lines; ++line) {
        std::string text(static_cast<size_t>(config_.columns), ' ');
        bool driven = twoLineMode_ || (line & 1) == 0;
        if (displayOn_ && driven)
            for (int column = 0; column < config_.columns; ++column)
                text[static_cast<size_t>(column)] = shown(line, column);
        out.push_back(text);
    }
    return out;
}

} // namespace zorvel::sim
