// The device's I/O pins as seen from outside: what the PIC drives, what
// attached parts drive, pull-ups, open-drain outputs and analogue voltages.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zorvel::sim {

class Pin;

// Told whenever the level of a pin changes, with the cycle of the change.
class PinListener {
public:
    virtual ~PinListener() = default;
    virtual void pinChanged(Pin& pin, bool level, uint64_t cycle) = 0;
};

class Pin {
public:
    Pin(std::string name, int port, int bit) : name_(std::move(name)), port_(port), bit_(bit) {}

    const std::string& name() const { return name_; } // "PORTB.0", "GPIO.2"
    int port() const { return port_; }                // 0 = PORTA/GPIO, 1 = PORTB, ...
    int bit() const { return bit_; }

    // The level seen on the pin: the PIC's output when it drives it, else what
    // a part drives, else the pull-up (high) when enabled, else low. An
    // open-drain output (RA4) driving high does not drive: it floats.
    bool level() const { return level_; }
    bool picDrives() const { return picDrives_; }

    // What attached parts drive: a level, or nothing (nullopt).
    void setExternal(std::optional<bool> level, uint64_t cycle);
    std::optional<bool> external() const { return external_; }
    // The voltage an A/D converter reads on this pin.
    void setVoltage(double volts) { volts_ = volts; }
    double voltage() const { return volts_; }

    void addListener(PinListener* listener) { listeners_.push_back(listener); }
    // Safe from inside pinChanged(): a listener removed while the pin is
    // telling its listeners is not told again.
    void removeListener(PinListener* listener);

    // Used by the port model: what the PIC drives (nullopt = input), pull-up,
    // open drain.
    void setPicOutput(std::optional<bool> level, uint64_t cycle);
    void setPullUp(bool on, uint64_t cycle);
    void setOpenDrain(bool on) { openDrain_ = on; }
    // Used by on-chip peripherals (CCP PWM, USART TX): while a level is
    // claimed it replaces the port latch, so program writes to the port or its
    // TRIS do not disturb it; nullopt releases the pin to the port. With
    // `onlyAsOutput` the claimed level applies only while the port drives the
    // pin as an output (TRIS bit 0), as for the CCP pin.
    void setPeripheralOutput(std::optional<bool> level, uint64_t cycle, bool onlyAsOutput = false);
    bool peripheralClaimed() const { return peripheralOutput_.has_value(); }

private:
    void update(uint64_t cycle);

    std::string name_;
    int port_ = 0;
    int bit_ = 0;
    bool level_ = false;
    bool picDrives_ = false;
    std::optional<bool> picOutput_;
    std::optional<bool> peripheralOutput_;
    bool peripheralOnlyAsOutput_ = false;
    std::optional<bool> external_;
    bool pullUp_ = false;
    bool openDrain_ = false;
    double volts_ = 0.0;
    std::vector<PinListener*> listeners_; // removed while notifying: nullptr
    int notifying_ = 0;                   // depth of nested notifications
    bool removedWhileNotifying_ = false;
};

} // namespace zorvel::sim
