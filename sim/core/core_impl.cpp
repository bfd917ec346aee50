#include "sim/core/core_impl.h"

#include "sim/core/interrupts.h"
#include "sim/core/ports.h"
#include "sim/core/timer0.h"
#include "sim/core/watchdog.h"
#include "sim/peripherals/eeprom.h"

namespace zorvel::sim {

using core::Decoded;
using core::Op;

Pic16::Impl::Impl(DeviceLayout layout, double mhz)
    : layout_(std::move(layout)), crystalMhz(mhz), map_(core::buildMemoryMap(layout_)),
      readHooks_(512), writeHooks_(512),
      program_(static_cast<size_t>(std::max(layout_.codeWords, 1)), 0x3FFF), decoded_(8192),
      breakpoints_(8192, false) {
    portRead_.fill(-1);
    portWrite_.fill(-1);
    for (int a = 0; a < 512; ++a) {
        int c = map_.canonical[a];
        fast_[a] = static_cast<int16_t>(c >= 0 && map_.ram[c] ? c : -1);
    }
    for (int a = 0; a < 8192; ++a)
        decoded_[a] = core::decode(program_[a % program_.size()]);
    ports_ = std::make_unique<core::Ports>(*this);
    timer0_ = std::make_unique<core::Timer0>(*this);
    watchdog_ = std::make_unique<core::Watchdog>(*this);
    interrupts_ = std::make_unique<core::Interrupts>(*this);
    peripherals_ = createPeripherals(*this);
    reset(ResetKind::PowerOn);
}

Pic16::Impl::~Impl() = default;

// ---- CoreAccess ----

uint8_t& Pic16::Impl::storage(int address) {
    int c = canonical(address);
    if (c < 0) return unimplemented_ = 0; // writes to it go nowhere
    return ram_[c];
}

void Pic16::Impl::hookRead(int address, std::function<uint8_t(uint8_t)> read) {
    int c = canonical(address);
    if (c < 0) return;
    readHooks_[c] = std::move(read);
    portRead_[c] = -1; // the last hook of a read wins
    for (int a = 0; a < 512; ++a)
        if (map_.canonical[a] == c) fast_[a] = -1;
}

void Pic16::Impl::hookWrite(int address, std::function<void(uint8_t)> write) {
    int c = canonical(address);
    if (c < 0) return;
    writeHooks_[c].push_back(std::move(write));
    for (int a = 0; a < 512; ++a)
        if (map_.canonical[a] == c) fast_[a] = -1;
}

void Pic16::Impl::hookPort(int address, int index, bool data) {
    int c = canonical(address);
    if (c < 0) return;
    if (data) portRead_[c] = static_cast<int8_t>(index);
    portWrite_[c] = static_cast<int8_t>(index);
    for (int a = 0; a < 512; ++a)
        if (map_.canonical[a] == c) fast_[a] = -1;
}

Pin* Pic16::Impl::pin(int port, int bit) {
    return ports_ ? ports_->pin(port, bit) : nullptr;
}

uint16_t Pic16::Impl::programWord(int address) const {
    if (address == layout_.configAddress) return configWord_;
    if (address < 0 || address >= static_cast<int>(program_.size())) return 0x3FFF;
    return program_[address];
}

void Pic16::Impl::writeProgramWord(int address, uint16_t value) {
    if (address < 0 || address >= static_cast<int>(program_.size())) return;
    program_[address] = value & 0x3FFF;
    Decoded d = core::decode(program_[address]);
    for (size_t a = address; a < decoded_.size(); a += program_.size())
        decoded_[a] = d;
}

void Pic16::Impl::interruptStateChanged() {
    irqPending_ = interrupts_->pending();
    if (sleeping_ && interrupts_->anyEnabled()) wake(false);
}

// ---- Loading and resets ----

void Pic16::Impl::load(const HexData& hex) {
    std::fill(program_.begin(), program_.end(), 0x3FFF);
    for (auto [address, word] : hex.program)
        if (address >= 0 && address < static_cast<int>(program_.size())) program_[address] = word;
    for (int a = 0; a < 8192; ++a)
        decoded_[a] = core::decode(program_[a % program_.size()]);
    configWord_ = hex.configWord.value_or(0x3FFF);
    if (DataEeprom* eeprom = findDataEeprom(peripherals_)) eeprom->load(hex.eeprom);
    reset(ResetKind::PowerOn);
}

void Pic16::Impl::resetRegisters(ResetKind kind) {
    auto& status = ram_[reg::STATUS];
    switch (kind) {
    case ResetKind::PowerOn:
        ram_.fill(0);
        status = reg::TO | reg::PD;
        break;
    case ResetKind::Mclr: status &= reg::TO | reg::PD | 0x07; break;
    case ResetKind::Watchdog: status = static_cast<uint8_t>((status & 0x07) | reg::PD); break;
    case ResetKind::WatchdogWake: status &= static_cast<uint8_t>(~(reg::TO | reg::PD)); return;
    }
    ram_[reg::PCLATH] = 0;
    ram_[reg::INTCON] &= reg::RBIF;
    ram_[reg::OPTION] = 0xFF;
    for (const char* tris : {"TRISA", "TRISB", "TRISC", "TRISD", "TRISIO", "TRISGPIO"})
        if (int a = layout_.address(tris); a >= 0) ram_[canonical(a)] = 0xFF;
    if (int a = layout_.address("TRISE"); a >= 0) ram_[canonical(a)] = 0x07;
}

void Pic16::Impl::reset(ResetKind kind) {
    resetRegisters(kind);
    if (kind == ResetKind::WatchdogWake) return;
    pc_ = 0;
    bankBase_ = 0;
    sleeping_ = false;
    if (kind == ResetKind::PowerOn) {
        cycles_ = 0;
        sp_ = depth_ = 0;
        stack_.fill(0);
    }
    scheduler_.clear();
    ports_->reset();
    timer0_->reset();
    watchdog_->reset();
    interrupts_->reset();
    for (auto& p : peripherals_)
        p->reset(kind);
    irqPending_ = interrupts_->pending();
    // The scheduler was cleared: parts re-arm what they had scheduled.
    for (auto& part : parts_)
        part->reset();
}

// ---- Sleep and the watchdog ----

void Pic16::Impl::enterSleep() {
    watchdog_->clear();
    if (ram_[reg::OPTION] & 0x08) timer0_->clearPrescaler();
    ram_[reg::STATUS] = static_cast<uint8_t>((ram_[reg::STATUS] & ~reg::PD) | reg::TO);
    sleeping_ = true;
    timer0_->sleep();
    // An enabled flag already set means SLEEP acts as a NOP.
    if (interrupts_->anyEnabled()) wake(false);
}

void Pic16::Impl::wake(bool byWatchdog) {
    sleeping_ = false;
    timer0_->wake();
    if (byWatchdog) ram_[reg::STATUS] &= static_cast<uint8_t>(~(reg::TO | reg::PD));
    irqPending_ = interrupts_->pending();
}

void Pic16::Impl::watchdogTimeout() {
    if (sleeping_) {
        wake(true);
        watchdog_->restart(0);
        return;
    }
    reset(ResetKind::Watchdog);
}

} // namespace zorvel::sim
