// A 4x4 matrix keypad on 4 row pins and 4 column pins. A pressed key joins
// its row and column: a line the device drives low pulls the lines joined to
// it low. Lines nobody drives read high through pull-up resistors (the
// part's own unless told otherwise; without them they are left floating).
#pragma once

#include "sim/part.h"
#include "sim/parts/wiring.h"

#include <array>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>

namespace zorvel::sim {

class Keypad4x4 : public Part, public PinListener {
public:
    // Key labels by row and column, as on the usual telephone-style pad.
    static constexpr const char* labels = "123A456B789C*0#D";

    Keypad4x4(std::array<std::string, 4> rows, std::array<std::string, 4> columns,
              bool pullUps = true);
    ~Keypad4x4() override;

    void attach(Pic16& pic) override;
    void connect(const Wiring& wiring);
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;

    void press(int row, int column);
    void release(int row, int column);
    // By label ("123A456B789C*0#D"); false when there is no such key.
    bool press(char key);
    bool release(char key);
    void releaseAll();
    const std::set<std::pair<int, int>>& pressed() const { return pressed_; }

private:
    void settle(uint64_t cycle);
    std::optional<bool> lineLevel(int line) const;

    std::array<std::string, 4> rowNames_;
    std::array<std::string, 4> columnNames_;
    bool pullUps_;
    std::array<Pin*, 8> lines_{}; // rows 0-3, columns 4-7
    std::function<uint64_t()> now_;
    std::set<std::pair<int, int>> pressed_;
    bool settling_ = false;
};

} // namespace zorvel::sim
