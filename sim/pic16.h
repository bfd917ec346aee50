// A PIC16 (14-bit core) instruction-set simulator: program memory, the banked
// register file, W, PC and the 8-level stack, cycle-exact timing, resets,
// SLEEP and the watchdog, and the device's peripherals. The device layout
// comes from the project's device definition files.
#pragma once

#include "sim/device_layout.h"
#include "sim/hex_loader.h"
#include "sim/part.h"
#include "sim/pins.h"
#include "sim/scheduler.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zorvel::sim {

enum class ResetKind { PowerOn, Mclr, Watchdog, WatchdogWake };

// Why run() returned.
enum class StopReason { CycleLimit, Condition, Sleep, Breakpoint };

class Pic16 {
public:
    Pic16(DeviceLayout layout, double crystalMhz = 4.0);
    ~Pic16();
    Pic16(const Pic16&) = delete;
    Pic16& operator=(const Pic16&) = delete;

    // Loads program words, the configuration word (watchdog fuse honoured)
    // and EEPROM data, then resets (power-on).
    void load(const HexData& hex);
    void reset(ResetKind kind);

    // Executes one instruction (or one cycle of SLEEP); returns its cycles.
    int step();
    // Runs until `cycles` more cycles have passed, a breakpoint PC is reached,
    // or (when stopOnSleep) SLEEP is entered without a wake-up source.
    StopReason run(uint64_t cycles, bool stopOnSleep = false);
    // Runs until `condition` holds (checked after every instruction) or
    // `maxCycles` have passed.
    StopReason runUntil(const std::function<bool()>& condition, uint64_t maxCycles);
    void addBreakpoint(uint16_t pc);

    // State.
    uint8_t w() const;
    uint16_t pc() const;
    uint8_t status() const;
    uint64_t cycles() const;
    bool sleeping() const;
    int stackDepth() const;
    const DeviceLayout& layout() const;
    double crystalMhz() const;
    // Seconds per instruction cycle (4 / Fosc).
    double cycleSeconds() const;

    // Register file by address (0..511) as the program sees it after banking
    // is resolved: mirrors return the same byte; unimplemented addresses read 0.
    // peek has no side effects; poke writes the stored byte directly.
    uint8_t peek(int address) const;
    void poke(int address, uint8_t value);
    // By register name from the device file ("PORTB", "STATUS", "TMR0").
    int address(const std::string& name) const; // -1 when unknown
    uint8_t peek(const std::string& name) const;
    void setW(uint8_t value);

    uint16_t programWord(int address) const;
    uint8_t eepromByte(int address) const;

    // Pins by name: "PORTB.0", "RB0", "GPIO.2", "GP2". nullptr when absent.
    Pin* pin(const std::string& name);
    std::vector<Pin*> pins();

    Scheduler& scheduler();
    // Parts are owned by the simulator once attached.
    void attach(std::unique_ptr<Part> part);

    struct Impl;

private:
    std::unique_ptr<Impl> impl_;
};

} // namespace zorvel::sim
