// How peripherals meet the core: each peripheral is created with access to
// the register file, hooks the registers it owns, and schedules its timed
// events. The core calls reset() on every device reset.
#pragma once

#include "sim/device_layout.h"
#include "sim/pins.h"
#include "sim/scheduler.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace zorvel::sim {

enum class ResetKind;

class CoreAccess {
public:
    virtual ~CoreAccess() = default;
    // The stored byte of a register (banking and mirrors resolved).
    virtual uint8_t& storage(int address) = 0;
    // The value a program read of `address` returns, computed from the stored byte.
    virtual void hookRead(int address, std::function<uint8_t(uint8_t stored)> read) = 0;
    // Called after a program write of `address` has stored `value` (the hook may
    // change the stored byte, for example to keep read-only bits).
    virtual void hookWrite(int address, std::function<void(uint8_t value)> write) = 0;
    virtual uint64_t cycles() const = 0;
    virtual double cycleSeconds() const = 0;
    virtual Scheduler& scheduler() = 0;
    virtual const DeviceLayout& layout() const = 0;
    virtual Pin* pin(int port, int bit) = 0; // port 0 = PORTA/GPIO, 1 = PORTB, ...
    virtual uint16_t configWord() const = 0;
    virtual uint16_t programWord(int address) const = 0;
    virtual void writeProgramWord(int address, uint16_t value) = 0;
    // An interrupt flag or enable bit changed: the core re-evaluates pending
    // interrupts and wakes the device from SLEEP when one is enabled.
    virtual void interruptStateChanged() = 0;
    // The core stalls the program for `cycles` (a program-memory write does).
    virtual void stall(uint64_t cycles) = 0;
};

class Peripheral {
public:
    virtual ~Peripheral() = default;
    virtual void reset(ResetKind kind) = 0;
};

// The peripherals the device has beyond ports, TMR0, the watchdog and the
// interrupt logic (which the core owns): data EEPROM, program-memory access,
// the A/D converter, Timer2 with CCP1/CCP2, the USART.
std::vector<std::unique_ptr<Peripheral>> createPeripherals(CoreAccess& core);

} // namespace zorvel::sim
