// The simulator's state (Pic16::Impl): program memory, the register file,
// the CPU registers, time, and the peripherals the core owns.
#pragma once

#include "sim/core/decode.h"
#include "sim/core/memory_map.h"
#include "sim/peripheral.h"
#include "sim/pic16.h"

#include <array>
#include <memory>
#include <vector>

namespace zorvel::sim {

namespace core {
class Ports;
class Timer0;
class Watchdog;
class Interrupts;
} // namespace core

namespace reg {
constexpr int INDF = 0x00, TMR0 = 0x01, PCL = 0x02, STATUS = 0x03, FSR = 0x04, PCLATH = 0x0A,
              INTCON = 0x0B, OPTION = 0x81;
constexpr uint8_t C = 0x01, DC = 0x02, Z = 0x04, PD = 0x08, TO = 0x10, RP0 = 0x20, RP1 = 0x40,
                  IRP = 0x80;
constexpr uint8_t GIE = 0x80, PEIE = 0x40, T0IE = 0x20, INTE = 0x10, RBIE = 0x08, T0IF = 0x04,
                  INTF = 0x02, RBIF = 0x01;
} // namespace reg

struct Pic16::Impl final : CoreAccess {
    Impl(DeviceLayout layout, double crystalMhz);
    ~Impl() override;

    // CoreAccess.
    uint8_t& storage(int address) override;
    void hookRead(int address, std::function<uint8_t(uint8_t)> read) override;
    void hookWrite(int address, std::function<void(uint8_t)> write) override;
    // PORTx (`data`: reads too) or TRISx of port `index`: program accesses go
    // straight to the port model.
    void hookPort(int address, int index, bool data);
    uint64_t cycles() const override { return cycles_; }
    double cycleSeconds() const override { return 4.0 / (crystalMhz * 1e6); }
    Scheduler& scheduler() override { return scheduler_; }
    const DeviceLayout& layout() const override { return layout_; }
    Pin* pin(int port, int bit) override;
    uint16_t configWord() const override { return configWord_; }
    uint16_t programWord(int address) const override;
    void writeProgramWord(int address, uint16_t value) override;
    void interruptStateChanged() override;
    void stall(uint64_t cycles) override { cycles_ += cycles; }

    void load(const HexData& hex);
    void reset(ResetKind kind);
    int step();
    StopReason run(uint64_t cycles, bool stopOnSleep, const std::function<bool()>* condition);

    // Register file access as the program does it.
    uint8_t read(int address);
    void write(int address, uint8_t value);
    uint8_t peek(int address) const;
    void poke(int address, uint8_t value);
    int canonical(int address) const {
        return address < 0 || address > 511 ? -1 : map_.canonical[address];
    }

    // Core events used by the core peripherals.
    void enterSleep();
    void wake(bool byWatchdog);
    void watchdogTimeout();

    // State.
    DeviceLayout layout_;
    double crystalMhz;
    core::MemoryMap map_;
    std::array<int16_t, 512> fast_{}; // canonical address of plain RAM, else -1
    std::array<uint8_t, 512> ram_{};
    uint8_t unimplemented_ = 0; // storage() of an unimplemented address
    std::vector<std::function<uint8_t(uint8_t)>> readHooks_;
    std::vector<std::vector<std::function<void(uint8_t)>>> writeHooks_;
    std::array<int8_t, 512> portRead_;  // by canonical address: port index, else -1
    std::array<int8_t, 512> portWrite_; // by canonical address: port index, else -1
    std::vector<uint16_t> program_;
    std::vector<core::Decoded> decoded_; // 8192 entries, aliased over the program size
    uint16_t configWord_ = 0x3FFF;

    uint8_t w_ = 0;
    uint16_t pc_ = 0;
    std::array<uint16_t, 8> stack_{};
    int sp_ = 0;
    int depth_ = 0;
    int bankBase_ = 0;
    uint64_t cycles_ = 0;
    bool sleeping_ = false;
    bool pclWritten_ = false;
    bool irqPending_ = false;
    bool peeking_ = false;
    std::vector<bool> breakpoints_;
    bool hasBreakpoints_ = false;

    Scheduler scheduler_;
    std::vector<std::unique_ptr<Pin>> pins_;
    std::unique_ptr<core::Ports> ports_;
    std::unique_ptr<core::Timer0> timer0_;
    std::unique_ptr<core::Watchdog> watchdog_;
    std::unique_ptr<core::Interrupts> interrupts_;
    std::vector<std::unique_ptr<Peripheral>> peripherals_;
    std::vector<std::unique_ptr<Part>> parts_;

private:
    uint8_t readSlow(int canon);
    void writeSlow(int canon, uint8_t value);
    void execute(const core::Decoded& d);
    template <bool kChecks>
    StopReason runLoop(uint64_t limit, bool stopOnSleep, const std::function<bool()>* condition);
    void push(uint16_t address);
    uint16_t pop();
    void setFlags(uint8_t mask, uint8_t flags) {
        ram_[reg::STATUS] = static_cast<uint8_t>((ram_[reg::STATUS] & ~mask) | flags);
    }
    void storeResult(const core::Decoded& d, uint8_t value);
    void resetRegisters(ResetKind kind);
    void sleepUntilEvent(uint64_t limit);
    void serviceInterrupt();
};

} // namespace zorvel::sim
