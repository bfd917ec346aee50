// A stand-in for the core in peripheral tests: a flat register array with
// read/write hooks, a cycle counter the test advances, the scheduler and the
// pins of ports A..E.
#pragma once

#include "sim/device_layout.h"
#include "sim/peripheral.h"
#include "sim/pic16.h"

#include <array>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zorvel::sim::test {

class FakeCore : public CoreAccess {
public:
    FakeCore(const std::string& device, double crystalMhz, uint16_t config = 0x3FFF)
        : mhz_(crystalMhz), config_(config) {
        std::string error;
        auto layout = loadDeviceLayout(std::string(ZORVEL_SOURCE_DATA) + "/inc", device, error);
        if (!layout)
            ADD_FAILURE() << error;
        else
            layout_ = *layout;
        for (int port = 0; port < 5; ++port)
            for (int bit = 0; bit < 8; ++bit)
                pins_.push_back(std::make_unique<Pin>("PORT" + std::string(1, char('A' + port)) +
                                                          "." + std::to_string(bit),
                                                      port, bit));
        regs_.fill(0);
        peripherals = createPeripherals(*this);
        for (auto& p : peripherals)
            p->reset(ResetKind::PowerOn);
    }

    // CoreAccess.
    uint8_t& storage(int address) override { return regs_[size_t(address & 0x1FF)]; }
    void hookRead(int address, std::function<uint8_t(uint8_t)> read) override {
        reads_[address] = std::move(read);
    }
    void hookWrite(int address, std::function<void(uint8_t)> write) override {
        writes_[address] = std::move(write);
    }
    uint64_t cycles() const override { return now_; }
    double cycleSeconds() const override { return 4.0 / (mhz_ * 1e6); }
    Scheduler& scheduler() override { return scheduler_; }
    const DeviceLayout& layout() const override { return layout_; }
    Pin* pin(int port, int bit) override { return pins_[size_t(port * 8 + bit)].get(); }
    uint16_t configWord() const override { return config_; }
    uint16_t programWord(int address) const override {
        auto it = program.find(address);
        return it == program.end() ? 0x3FFF : it->second;
    }
    void writeProgramWord(int address, uint16_t value) override { program[address] = value; }
    void interruptStateChanged() override { ++interruptChecks; }
    void stall(uint64_t cycles) override {
        stalled += cycles;
        advance(cycles);
    }

    // What a program does.
    int address(const std::string& reg) const {
        int a = layout_.address(reg);
        EXPECT_GE(a, 0) << reg;
        return a;
    }
    void write(const std::string& reg, uint8_t value) {
        int a = address(reg);
        regs_[size_t(a)] = value;
        if (auto it = writes_.find(a); it != writes_.end()) it->second(value);
        if (reg.size() == 5 && reg.rfind("TRIS", 0) == 0) drivePort(reg[4] - 'A');
    }
    // The port model's part peripherals rely on: a TRIS bit of 0 makes the
    // pin an output driving its latch (PORTx), else an input.
    void drivePort(int port) {
        int tris = layout_.address(std::string("TRIS") + char('A' + port));
        int data = layout_.address(std::string("PORT") + char('A' + port));
        if (tris < 0 || data < 0) return;
        for (int b = 0; b < 8; ++b) {
            bool output = !((regs_[size_t(tris)] >> b) & 1);
            pin(port, b)->setPicOutput(
                output ? std::optional<bool>((regs_[size_t(data)] >> b) & 1) : std::nullopt, now_);
        }
    }
    uint8_t read(const std::string& reg) {
        int a = address(reg);
        auto it = reads_.find(a);
        return it == reads_.end() ? regs_[size_t(a)] : it->second(regs_[size_t(a)]);
    }
    bool bit(const std::string& reg, int n) { return (read(reg) >> n) & 1; }
    // Moves time on by `cycles`, running scheduled events cycle by cycle.
    void advance(uint64_t cycles) {
        for (uint64_t i = 0; i < cycles; ++i) {
            ++now_;
            scheduler_.runDue(now_);
        }
    }
    void advanceTo(uint64_t cycle) {
        if (cycle > now_) advance(cycle - now_);
    }
    Pin* pinByName(char port, int bit) { return pin(port - 'A', bit); }
    void resetAll(ResetKind kind) {
        for (auto& p : peripherals)
            p->reset(kind);
    }

    std::vector<std::unique_ptr<Peripheral>> peripherals;
    std::map<int, uint16_t> program;
    int interruptChecks = 0;
    uint64_t stalled = 0;

private:
    double mhz_;
    uint16_t config_;
    uint64_t now_ = 0;
    DeviceLayout layout_;
    Scheduler scheduler_;
    std::array<uint8_t, 512> regs_{};
    std::map<int, std::function<uint8_t(uint8_t)>> reads_;
    std::map<int, std::function<void(uint8_t)>> writes_;
    std::vector<std::unique_ptr<Pin>> pins_;
};

// Records the level changes of a pin with their cycles.
struct EdgeRecorder : PinListener {
    std::vector<std::pair<uint64_t, bool>> edges;
    void pinChanged(Pin&, bool level, uint64_t cycle) override { edges.push_back({cycle, level}); }
};

// Decodes 8N1 frames from recorded edges by sampling mid-bit.
inline std::string decode(const std::vector<std::pair<uint64_t, bool>>& edges, uint64_t bit) {
    auto levelAt = [&](uint64_t cycle) {
        bool level = true; // idle
        for (auto [at, l] : edges)
            if (at <= cycle) level = l;
        return level;
    };
    std::string out;
    for (size_t i = 0; i < edges.size(); ++i) {
        if (edges[i].second) continue;
        uint64_t start = edges[i].first;
        if (!out.empty() && start < edges[0].first) continue;
        if (levelAt(start + bit / 2)) continue;
        int value = 0;
        for (int b = 0; b < 8; ++b)
            if (levelAt(start + bit / 2 + bit * uint64_t(b + 1))) value |= 1 << b;
        if (!levelAt(start + bit / 2 + bit * 9)) return out + "<framing>";
        out += char(value);
        // Skip edges inside this frame.
        while (i + 1 < edges.size() && edges[i + 1].first < start + bit * 10 - bit / 2)
            ++i;
    }
    return out;
}

} // namespace zorvel::sim::test
