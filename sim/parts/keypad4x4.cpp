#include "sim/parts/keypad4x4.h"

#include <cstring>

namespace zorvel::sim {

Keypad4x4::Keypad4x4(std::array<std::string, 4> rows, std::array<std::string, 4> columns,
                     bool pullUps)
    : rowNames_(std::move(rows)), columnNames_(std::move(columns)), pullUps_(pullUps) {}

Keypad4x4::~Keypad4x4() {
    for (Pin* pin : lines_)
        if (pin) pin->removeListener(this);
}

void Keypad4x4::attach(Pic16& pic) {
    connect(wiringOf(pic));
}

void Keypad4x4::connect(const Wiring& wiring) {
    for (int i = 0; i < 4; ++i) {
        lines_[static_cast<size_t>(i)] = &wiring.require(rowNames_[static_cast<size_t>(i)]);
        lines_[static_cast<size_t>(i + 4)] = &wiring.require(columnNames_[static_cast<size_t>(i)]);
    }
    now_ = wiring.now;
    for (Pin* pin : lines_)
        pin->addListener(this);
    settle(now_ ? now_() : 0);
}

void Keypad4x4::pinChanged(Pin&, bool, uint64_t cycle) {
    if (!settling_) settle(cycle);
}

// What the keypad puts on a line: low when a pressed key joins it to a line
// the device drives low, high when joined only to lines driven high, else
// the pull-up (or nothing).
std::optional<bool> Keypad4x4::lineLevel(int line) const {
    bool high = false;
    for (auto [row, column] : pressed_) {
        int other = line < 4 ? (row == line ? column + 4 : -1) : (column == line - 4 ? row : -1);
        if (other < 0) continue;
        const Pin* pin = lines_[static_cast<size_t>(other)];
        if (!pin->picDrives()) continue;
        if (!pin->level()) return false;
        high = true;
    }
    if (high || pullUps_) return true;
    return std::nullopt;
}

void Keypad4x4::settle(uint64_t cycle) {
    if (!lines_[0]) return;
    settling_ = true;
    for (int line = 0; line < 8; ++line) {
        Pin* pin = lines_[static_cast<size_t>(line)];
        std::optional<bool> want = lineLevel(line);
        if (pin->external() != want) pin->setExternal(want, cycle);
    }
    settling_ = false;
}

void Keypad4x4::press(int row, int column) {
    pressed_.insert({row & 3, column & 3});
    settle(now_ ? now_() : 0);
}

void Keypad4x4::release(int row, int column) {
    pressed_.erase({row & 3, column & 3});
    settle(now_ ? now_() : 0);
}

void Keypad4x4::releaseAll() {
    pressed_.clear();
    settle(now_ ? now_() : 0);
}

namespace {
int keyIndex(char key) {
    const char* found = key ? std::strchr(Keypad4x4::labels, key) : nullptr;
    return found ? static_cast<int>(found - Keypad4x4::labels) : -1;
}
} // namespace

bool Keypad4x4::press(char key) {
    int index = keyIndex(key);
    if (index < 0) return false;
    press(index / 4, index % 4);
    return true;
}

bool Keypad4x4::release(char key) {
    int index = keyIndex(key);
    if (index < 0) return false;
    release(index / 4, index % 4);
    return true;
}

} // namespace zorvel::sim
