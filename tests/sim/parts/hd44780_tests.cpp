#include "sim/parts/hd44780.h"
#include "sim/parts/loose_pins.h"

#include <gtest/gtest.h>

using zorvel::sim::Hd44780;
using zorvel::sim::Hd44780Pins;
using zorvel::test::LoosePins;

namespace {

// The device side of the bus: E pulses with RS and the data pins set.
class LcdBus {
public:
    LcdBus(LoosePins& bench, bool eightBit) : bench_(bench), eightBit_(eightBit) {
        bench_.drive("RS", false);
        bench_.drive("E", false);
        for (int i = 0; i < 8; ++i)
            bench_.drive("D" + std::to_string(i), false);
    }
    Hd44780Pins pins(int lines = 2, int columns = 16) const {
        Hd44780Pins p{"RS", "E", std::nullopt, {}, lines, columns};
        for (int i = eightBit_ ? 0 : 4; i < 8; ++i)
            p.data.push_back("D" + std::to_string(i));
        return p;
    }
    // One E pulse with `value` on D0-D7 (D4-D7 for a nibble: value << 4).
    void strobe(bool rs, uint8_t value, uint64_t wait = 50) {
        bench_.drive("RS", rs);
        for (int i = 0; i < 8; ++i)
            bench_.drive("D" + std::to_string(i), (value >> i) & 1);
        bench_.advance(1);
        bench_.drive("E", true);
        bench_.advance(1);
        bench_.drive("E", false);
        bench_.advance(wait);
    }
    void nibble(bool rs, uint8_t n, uint64_t wait = 50) {
        strobe(rs, static_cast<uint8_t>(n << 4), wait);
    }
    void byte(bool rs, uint8_t value, uint64_t wait = 50) {
        if (eightBit_) {
            strobe(rs, value, wait);
            return;
        }
        nibble(rs, value >> 4, 2);
        nibble(rs, value & 15, wait);
    }
    void text(const std::string& s) {
        for (char c : s)
            byte(true, static_cast<uint8_t>(c));
    }
    // The controller is busy for 15 ms after power-on.
    void powerOnWait() { bench_.advance(15000); }
    // The start of the initialisation by instruction: three 8-bit function
    // sets, 4.1 ms and 100 us apart.
    void resetSequence() {
        powerOnWait();
        strobe(false, 0x30, 4200);
        strobe(false, 0x30, 150);
        strobe(false, 0x30, 50);
    }
    // The usual 4-bit start: 3, 3, 3, 2, then function set, display on, clear, entry.
    void initFourBit() {
        powerOnWait();
        nibble(false, 3, 4200);
        nibble(false, 3, 150);
        nibble(false, 3, 50);
        nibble(false, 2, 50);
        byte(false, 0x28);
        byte(false, 0x0C);
        byte(false, 0x01, 1600);
        byte(false, 0x06);
    }

private:
    LoosePins& bench_;
    bool eightBit_;
};

} // namespace

TEST(Hd44780, FourBitInitialisationAndText) {
    LoosePins bench;
    LcdBus bus(bench, false);
    Hd44780 lcd(bus.pins());
    lcd.connect(bench.wiring());
    EXPECT_FALSE(lcd.fourBitInterface());
    bus.initFourBit();
    EXPECT_TRUE(lcd.fourBitInterface());
    bus.text("Hello");
    bus.byte(false, 0xC0);
    bus.text("World!");
    auto lines = lcd.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "Hello           ");
    EXPECT_EQ(lines[1], "World!          ");
    EXPECT_EQ(lcd.busyViolations(), 0);
}

TEST(Hd44780, EightBitBusAndFourLinesOfTwenty) {
    LoosePins bench;
    LcdBus bus(bench, true);
    Hd44780 lcd(bus.pins(4, 20));
    lcd.connect(bench.wiring());
    bus.resetSequence();
    bus.byte(false, 0x38);
    bus.byte(false, 0x0C);
    bus.byte(false, 0x01, 1600);
    for (auto [address, text] :
         {std::pair{0x80, "one"}, {0xC0, "two"}, {0x94, "three"}, {0xD4, "four"}}) {
        bus.byte(false, static_cast<uint8_t>(address));
        bus.text(text);
    }
    auto lines = lcd.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "one                 ");
    EXPECT_EQ(lines[1], "two                 ");
    EXPECT_EQ(lines[2], "three               ");
    EXPECT_EQ(lines[3], "four                ");
}

TEST(Hd44780, WritesWhileBusyAreCountedAndLost) {
    LoosePins bench;
    LcdBus bus(bench, true);
    Hd44780 lcd(bus.pins());
    lcd.connect(bench.wiring());
    bus.resetSequence();
    bus.byte(false, 0x38);
    bus.byte(false, 0x0C);
    bus.byte(false, 0x01, 100); // clear needs 1.52 ms
    bus.text("A");
    EXPECT_EQ(lcd.busyViolations(), 1);
    bench.advance(1600);
    bus.byte(true, 'B', 10); // data needs 37 us
    bus.byte(true, 'C');
    EXPECT_EQ(lcd.busyViolations(), 2);
    EXPECT_EQ(lcd.lines()[0], "B               ");
}

TEST(Hd44780, EntryModeHomeAndShifts) {
    LoosePins bench;
    LcdBus bus(bench, true);
    Hd44780 lcd(bus.pins());
    lcd.connect(bench.wiring());
    bus.resetSequence();
    bus.byte(false, 0x38);
    bus.byte(false, 0x0C);
    bus.byte(false, 0x01, 1600);
    bus.byte(false, 0x85);
    bus.byte(false, 0x04); // decrement
    bus.text("abc");       // c at 3, b at 4, a at 5
    EXPECT_EQ(lcd.lines()[0], "   cba          ");
    bus.byte(false, 0x02, 1600); // home
    EXPECT_EQ(lcd.address(), 0);
    bus.byte(false, 0x06);
    bus.byte(false, 0x14); // cursor right
    bus.text("x");
    EXPECT_EQ(lcd.lines()[0], " x cba          ");
    bus.byte(false, 0x18); // display shift left
    EXPECT_EQ(lcd.lines()[0], "x cba           ");
    bus.byte(false, 0x08); // display off
    EXPECT_EQ(lcd.lines()[0], std::string(16, ' '));
}

TEST(Hd44780, CgramWritesDoNotTouchTheText) {
    LoosePins bench;
    LcdBus bus(bench, true);
    Hd44780 lcd(bus.pins());
    lcd.connect(bench.wiring());
    bus.resetSequence();
    bus.byte(false, 0x38);
    bus.byte(false, 0x0C);
    bus.byte(false, 0x01, 1600);
    bus.text("ok");
    bus.byte(false, 0x40);
    for (int i = 0; i < 8; ++i)
        bus.byte(true, 0x1F);
    bus.byte(false, 0x82);
    bus.text("!");
    EXPECT_EQ(lcd.lines()[0], "ok!             ");
}

TEST(Hd44780, SecondLineFollowsTheFirstAfterFortyCharacters) {
    LoosePins bench;
    LcdBus bus(bench, true);
    Hd44780 lcd(bus.pins());
    lcd.connect(bench.wiring());
    bus.resetSequence();
    bus.byte(false, 0x38);
    bus.byte(false, 0x0C);
    bus.byte(false, 0x80 + 39);
    bus.text("xy");
    EXPECT_EQ(lcd.ddram(39), 'x');
    EXPECT_EQ(lcd.lines()[1][0], 'y');
}

TEST(Hd44780, PowerOnWaitAndInitialisationWaits) {
    // Cycles of 1 us: 15 ms after power-on, 4.1 ms after the first function
    // set and 100 us after the second; each early write is lost and counted
    // (a lost first function set makes the next one the first).
    struct Case {
        uint64_t powerOn, first, second;
        int violations;
    };
    for (Case k : {Case{15000, 4200, 150, 0}, Case{14000, 4200, 150, 2}, Case{15000, 4000, 150, 1},
                   Case{15000, 4200, 90, 1}, Case{10, 10, 10, 3}}) {
        LoosePins bench;
        LcdBus bus(bench, true);
        Hd44780 lcd(bus.pins());
        lcd.connect(bench.wiring());
        bench.advance(k.powerOn);
        bus.strobe(false, 0x30, k.first);
        bus.strobe(false, 0x30, k.second);
        bus.strobe(false, 0x30, 50);
        EXPECT_EQ(lcd.busyViolations(), k.violations)
            << "power-on " << k.powerOn << ", first " << k.first << ", second " << k.second;
        EXPECT_EQ(lcd.timingViolations(), 0);
    }
}

TEST(Hd44780, BusTimingBreachesAreCounted) {
    // Two writes: the data changes, `setup` cycles later E rises, stays high
    // for `high` cycles and falls, and the bus is left alone for `hold`
    // cycles. At 20 MHz (200 ns cycles) a good write is 1, 3, 1 cycles.
    struct Case {
        double cycleSeconds;
        uint64_t setup, high, hold;
        bool dataWithFall, rsWhileHigh;
        int breaches;
    };
    const Case cases[] = {
        {200e-9, 1, 3, 1, false, false, 0},
        {200e-9, 1, 2, 1, false, false, 3}, // 400 ns high, 800 ns from rise to rise
        {200e-9, 1, 3, 1, true, false, 2},  // data held 0 ns after E falls
        {200e-9, 1, 3, 1, false, true, 2},  // RS changed during the pulse
        {100e-9, 2, 5, 1, false, false, 1}, // E rose again 800 ns after its last rise
        {100e-9, 2, 5, 3, false, false, 0},
    };
    for (const Case& k : cases) {
        LoosePins bench(k.cycleSeconds);
        bench.drive("RS", false);
        bench.drive("E", false);
        for (int i = 0; i < 8; ++i)
            bench.drive("D" + std::to_string(i), false);
        Hd44780 lcd(Hd44780Pins{
            "RS", "E", std::nullopt, {"D0", "D1", "D2", "D3", "D4", "D5", "D6", "D7"}, 2, 16});
        lcd.connect(bench.wiring());
        bench.advance(200000);
        for (int pass = 0; pass < 2; ++pass) {
            bench.drive("D0", pass == 0);
            bench.advance(k.setup);
            bench.drive("E", true);
            if (k.rsWhileHigh) bench.drive("RS", pass == 0);
            bench.advance(k.high);
            bench.drive("E", false);
            if (k.dataWithFall) bench.drive("D1", pass == 0);
            bench.advance(k.hold);
        }
        EXPECT_EQ(lcd.timingViolations(), k.breaches)
            << k.cycleSeconds * 1e9 << " ns cycles, setup " << k.setup << ", high " << k.high
            << ", hold " << k.hold << (k.dataWithFall ? ", data with E falling" : "")
            << (k.rsWhileHigh ? ", RS while E is high" : "");
        if (k.breaches > 0) {
            EXPECT_FALSE(lcd.timingReport().empty());
        }
    }
}

TEST(Hd44780, FourLineBasesFollowTheWidth) {
    for (int columns : {16, 20}) {
        LoosePins bench;
        LcdBus bus(bench, true);
        Hd44780 lcd(bus.pins(4, columns));
        lcd.connect(bench.wiring());
        bus.resetSequence();
        bus.byte(false, 0x38);
        bus.byte(false, 0x0C);
        for (int line = 0; line < 4; ++line) {
            int base = (line & 1 ? 0x40 : 0) + (line >= 2 ? columns : 0);
            bus.byte(false, static_cast<uint8_t>(0x80 + base));
            bus.text(std::string(1, static_cast<char>('1' + line)));
        }
        auto lines = lcd.lines();
        ASSERT_EQ(lines.size(), 4u);
        for (int line = 0; line < 4; ++line)
            EXPECT_EQ(lines[static_cast<size_t>(line)],
                      std::string(1, static_cast<char>('1' + line)) +
                          std::string(static_cast<size_t>(columns - 1), ' '))
                << columns << " columns, line " << line + 1;
        EXPECT_EQ(lcd.busyViolations(), 0);
    }
}

TEST(Hd44780, OneLineModeLeavesTheSecondLineDark) {
    LoosePins bench;
    LcdBus bus(bench, true);
    Hd44780 lcd(bus.pins(2, 16));
    lcd.connect(bench.wiring());
    bus.resetSequence();
    bus.byte(false, 0x30); // one line
    bus.byte(false, 0x0C);
    bus.text("top");
    bus.byte(false, 0xC0);
    bus.text("low");
    EXPECT_EQ(lcd.lines()[0], "top             ");
    EXPECT_EQ(lcd.lines()[1], std::string(16, ' '));
    bus.byte(false, 0x38); // two lines: the text at 0x40 shows
    EXPECT_EQ(lcd.lines()[1], "low             ");
}
