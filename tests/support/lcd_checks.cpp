#include "support/lcd_checks.h"

#include "sim/parts/hd44780.h"
#include "sim/parts/keypad4x4.h"
#include "sim/parts/logic_probe.h"
#include "sim/parts/pulse_source.h"
#include "support/exec_support.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sstream>

namespace zorvel::test {
namespace {

template <class P, class... Args>
P& attach(SimProgram& p, Args&&... args) {
    auto part = std::make_unique<P>(std::forward<Args>(args)...);
    P& ref = *part;
    p.pic().attach(std::move(part));
    return ref;
}

std::string failed(const SimProgram& p) {
    return "the program did not build: " + p.failure() + "\nsource:\n" + p.source();
}

double microseconds(uint64_t cycles, int mhz) {
    return static_cast<double>(cycles) * 4.0 / mhz;
}

std::string format(const char* f, double value) {
    char text[64];
    std::snprintf(text, sizeof text, f, value);
    return text;
}

// "\xHH" for a byte the text cannot show as it is.
std::string hexByte(uint8_t b) {
    char text[8];
    std::snprintf(text, sizeof text, "\\x%02X", b);
    return text;
}

// --- The display: wiring and a reference model -------------------------------

struct BusPins {
    std::string declarations; // the DECLARE lines
    sim::Hd44780Pins pins;
};

BusPins busPins(LcdBus bus, int lines) {
    int columns = lines == 4 ? 20 : 16;
    std::string shape = "DECLARE LCD_LINES " + std::to_string(lines) + "\n";
    switch (bus) {
    case LcdBus::FourBitHigh:
        return {shape,
                {"PORTB.3",
                 "PORTB.2",
                 std::nullopt,
                 {"PORTB.4", "PORTB.5", "PORTB.6", "PORTB.7"},
                 lines,
                 columns}};
    case LcdBus::FourBitLow:
        return {shape + "DECLARE LCD_DTPIN PORTD.0\nDECLARE LCD_RSPIN PORTD.4\n"
                        "DECLARE LCD_ENPIN PORTD.5\n",
                {"PORTD.4",
                 "PORTD.5",
                 std::nullopt,
                 {"PORTD.0", "PORTD.1", "PORTD.2", "PORTD.3"},
                 lines,
                 columns}};
    case LcdBus::EightBit:
        return {shape + "DECLARE LCD_INTERFACE 8\nDECLARE LCD_DTPIN PORTD.0\n"
                        "DECLARE LCD_RSPIN PORTC.0\nDECLARE LCD_ENPIN PORTC.1\n",
                {"PORTC.0",
                 "PORTC.1",
                 std::nullopt,
                 {"PORTD.0", "PORTD.1", "PORTD.2", "PORTD.3", "PORTD.4", "PORTD.5", "PORTD.6",
                  "PORTD.7"},
                 lines,
                 columns}};
    }
    return {};
}

// What PRINT puts into the display RAM of a display in two-line mode: a
// byte 254 makes the next byte a command (a DDRAM or CGRAM address, or a
// clear); the address runs from 0x27 on to 0x40 and from 0x67 to 0x00.
class DisplayModel {
public:
    DisplayModel() { ram_.fill(' '); }
    void send(const std::string& bytes) {
        for (char ch : bytes)
            send(static_cast<uint8_t>(ch));
    }
    void send(uint8_t b) {
        if (command_) {
            command_ = false;
            if (b & 0x80) {
                address_ = b & 0x7F;
                cgram_ = false;
            } else if (b & 0x40) {
                cgram_ = true;
            } else if (b == 1) {
                ram_.fill(' ');
                address_ = 0;
                cgram_ = false;
            }
            return;
        }
        if (b == 254) {
            command_ = true;
            return;
        }
        if (cgram_) return;
        ram_[static_cast<size_t>(address_)] = b;
        address_ = address_ == 0x27 ? 0x40 : address_ == 0x67 ? 0x00 : address_ + 1;
    }
    // The 80 bytes of both lines, as text with unprintable bytes escaped.
    std::string text() const {
        return shown([this](int a) { return ram_[size_t(a)]; });
    }
    static std::string shown(const std::function<uint8_t(int)>& at) {
        std::string s;
        for (int a : {0x00, 0x40})
            for (int i = 0; i < 40; ++i) {
                uint8_t b = at(a + i);
                if (b >= 32 && b < 127 && b != '\\')
                    s += static_cast<char>(b);
                else
                    s += hexByte(b);
            }
        return s;
    }

private:
    std::array<uint8_t, 128> ram_{};
    int address_ = 0;
    bool command_ = false;
    bool cgram_ = false;
};

std::string partText(const sim::Hd44780& lcd) {
    return DisplayModel::shown([&lcd](int a) { return lcd.ddram(a); });
}

// The display's complaints, as text ("" when there are none).
std::string complaints(const sim::Hd44780& lcd) {
    std::string s;
    if (lcd.busyViolations() != 0)
        s += std::to_string(lcd.busyViolations()) + " write(s) while busy; ";
    for (const std::string& line : lcd.timingReport())
        s += line + "; ";
    return s;
}

// --- Reference formatters -----------------------------------------------------

// The last `digits` digits of `value` in `base` among `width` digits; with
// digits < 0 all of them without leading zeros (at least one).
std::string digitsOf(unsigned value, unsigned base, int width, int digits) {
    std::string s(static_cast<size_t>(width), '0');
    for (int i = width - 1; i >= 0; --i, value /= base)
        s[static_cast<size_t>(i)] = "0123456789ABCDEF"[value % base];
    if (digits >= 0) return s.substr(static_cast<size_t>(width - digits));
    size_t first = s.find_first_not_of('0');
    return first == std::string::npos ? "0" : s.substr(first);
}

struct FormatItem {
    std::string keyword; // "DEC3", "" for the plain value
    std::function<std::string(unsigned)> text;
};

std::vector<FormatItem> formatItems(bool second) {
    auto dec = [](int d) { return [d](unsigned v) { return digitsOf(v, 10, 5, d); }; };
    auto hex = [](int d) { return [d](unsigned v) { return digitsOf(v, 16, 4, d); }; };
    auto bin = [](int d) { return [d](unsigned v) { return digitsOf(v, 2, 16, d); }; };
    if (!second)
        // DEC after DEC1 and BIN after BIN1: the widths left behind must not
        // cut the numbers without a count.
        return {{"DEC5 ", dec(5)}, {"DEC4 ", dec(4)}, {"DEC3 ", dec(3)}, {"DEC2 ", dec(2)},
                {"DEC1 ", dec(1)}, {"DEC ", dec(-1)}, {"HEX4 ", hex(4)}, {"HEX3 ", hex(3)},
                {"HEX2 ", hex(2)}, {"HEX1 ", hex(1)}, {"HEX ", hex(-1)}, {"@", dec(-1)}};
    return {{"BIN16 ", bin(16)},
            {"BIN9 ", bin(9)},
            {"BIN8 ", bin(8)},
            {"BIN3 ", bin(3)},
            {"BIN1 ", bin(1)},
            {"BIN ", bin(-1)},
            {"", [](unsigned v) { return std::string(1, static_cast<char>(v & 255)); }}};
}

// PRINT AT 1,1 and the items of one segment, "/" between them and "|" at
// the end, three items to a statement.
std::string printSegment(const std::vector<FormatItem>& items, const std::string& operand) {
    std::string s = "PRINT AT 1, 1";
    for (size_t i = 0; i < items.size(); ++i) {
        if (i % 3 == 0 && i > 0)
            s += "\nPRINT \"/\"";
        else if (i > 0)
            s += ", \"/\"";
        s += ", " + items[i].keyword + operand;
    }
    return s + ", \"|\"\n";
}

std::string segmentBytes(const std::vector<FormatItem>& items, unsigned value) {
    std::string s = "\xFE\x80";
    for (size_t i = 0; i < items.size(); ++i)
        s += (i > 0 ? "/" : "") + items[i].text(value);
    return s + "|";
}

} // namespace

const char* busName(LcdBus bus) {
    switch (bus) {
    case LcdBus::FourBitHigh: return "4-bit high nibble";
    case LcdBus::FourBitLow: return "4-bit low nibble";
    case LcdBus::EightBit: return "8-bit";
    }
    return "";
}

const char* operandName(Operand operand) {
    switch (operand) {
    case Operand::Byte: return "byte";
    case Operand::Word: return "word";
    case Operand::Bit: return "bit";
    case Operand::Element: return "array element";
    case Operand::Expression: return "expression";
    case Operand::Function: return "function";
    }
    return "";
}

std::string checkDisplay(int mhz, LcdBus bus, int lines) {
    BusPins wiring = busPins(bus, lines);
    std::string what =
        std::to_string(mhz) + " MHz " + busName(bus) + " " + std::to_string(lines) + " line(s)";
    std::ostringstream src;
    src << "DEVICE 16F877\nDECLARE XTAL " << mhz << "\n"
        << wiring.declarations << "DIM R AS BYTE\nDIM C AS BYTE\n"
        << "PRINT \"Zorvel\"\nPRINT AT 2, 3, \"two\"\nCURSOR 1, 12\nPRINT \"c\"\n";
    if (lines > 1)
        src << "R = 3\nC = 2\nPRINT AT R, C, \"three\"\nR = 4\nC = 7\nCURSOR R, C\n"
            << "PRINT \"four\"\n";
    src << "PRINT $FE, $C0 + 12, \"#\", $FE, 2, \"Z\"\nShown:\nCLS\nR = 1\nC = 5\nPRINT AT R, C, "
           "\"after\"\n"
        << "Cleared:\nEND\n";
    SimProgram p(src.str(), mhz);
    if (!p.ok()) {
        ADD_FAILURE() << what << ": " << failed(p);
        return "";
    }
    sim::Hd44780& lcd = attach<sim::Hd44780>(p, wiring.pins);
    lcd.keepTransfers(400);
    sim::LogicProbe& enable = attach<sim::LogicProbe>(p, wiring.pins.e);
    if (!p.runTo("Shown", 400'000ull * static_cast<uint64_t>(mhz))) {
        ADD_FAILURE() << what << ": Shown not reached";
        return "";
    }
    // Where the text stands: the screen, and the DDRAM of the lines a
    // smaller display does not show.
    int columns = wiring.pins.columns;
    auto row = [columns](std::string s) {
        s.resize(static_cast<size_t>(columns), ' ');
        return s;
    };
    std::vector<std::string> want = {row("Zorvel     c"), row("  two       #")};
    if (lines == 4) {
        want.push_back(row(" three"));
        want.push_back(row("      four"));
    }
    if (lines == 1) want.resize(1);
    EXPECT_EQ(lcd.lines(), want) << what << "\n" << p.source();
    auto ramText = [&lcd](int address, size_t length) {
        std::string s;
        for (size_t i = 0; i < length; ++i)
            s += static_cast<char>(lcd.ddram(address + static_cast<int>(i)));
        return s;
    };
    EXPECT_EQ(ramText(0x42, 3), "two") << what;
    EXPECT_EQ(ramText(0x4C, 1), "#") << what;
    if (lines > 1) {
        EXPECT_EQ(ramText(0x15, 5), "three") << what; // row 3, column 2: 148 + 1
        EXPECT_EQ(ramText(0x5A, 4), "four") << what;  // row 4, column 7: 212 + 6
    }
    if (!p.runTo("Cleared", 200'000ull * static_cast<uint64_t>(mhz))) {
        ADD_FAILURE() << what << ": Cleared not reached";
        return "";
    }
    std::vector<std::string> cleared(static_cast<size_t>(lines), row(""));
    cleared[0] = row("    after");
    EXPECT_EQ(lcd.lines(), cleared) << what;
    EXPECT_EQ(complaints(lcd), "") << what;

    // The initialisation: three 8-bit function sets, the switch to 4 bits,
    // the function set, display on, entry mode.
    const std::vector<sim::Hd44780Transfer>& t = lcd.transfers();
    bool eight = bus == LcdBus::EightBit;
    int functionSet = (eight ? 0x30 : 0x20) | (lines > 1 ? 0x08 : 0);
    std::vector<int> start = {eight ? 0x33 : 0x30, eight ? 0x33 : 0x30, eight ? 0x33 : 0x30};
    if (!eight) start.push_back(0x20);
    for (int command : {functionSet, 0x0C, 0x06})
        start.push_back(command);
    std::vector<int> seen;
    for (size_t i = 0; i < std::min(t.size(), start.size()); ++i)
        seen.push_back(t[i].data ? -t[i].value : t[i].value);
    EXPECT_EQ(seen, start) << what;
    if (t.size() < start.size()) return "";

    // The margins: from the end of each transfer to the start of the next,
    // less what the controller needs (power-on 15 ms, 4.1 ms and 100 us
    // after the first two function sets, 1.52 ms after clear and home,
    // 37 us else).
    double powerOn = microseconds(t[0].start, mhz);
    double first = microseconds(t[1].start - t[0].end, mhz);
    double second = microseconds(t[2].start - t[1].end, mhz);
    double shortest = 1e18, afterClear = 1e18, perCharacter = 1e18;
    for (size_t i = 2; i + 1 < t.size(); ++i) {
        double gap = microseconds(t[i + 1].start - t[i].end, mhz);
        bool slow = !t[i].data && t[i].value >= 1 && t[i].value <= 3;
        (slow ? afterClear : shortest) = std::min(slow ? afterClear : shortest, gap);
        if (t[i].data && t[i + 1].data)
            perCharacter = std::min(perCharacter, microseconds(t[i + 1].start - t[i].start, mhz));
    }
    double eHigh = static_cast<double>(enable.summary().minHigh) * 4000.0 / mhz;
    std::string s = what + ": E high " + format("%.0f", eHigh) + " ns; first write " +
                    format("%.2f", powerOn / 1000) + " ms after power-on (15); then " +
                    format("%.2f", first / 1000) + " ms (4.1), " + format("%.0f", second) +
                    " us (100); at least " + format("%.1f", shortest) +
                    " us after a character or command (37), " + format("%.0f", afterClear) +
                    " us after a clear (1520); a character every " + format("%.1f", perCharacter) +
                    " us";
    EXPECT_GE(eHigh, 450.0) << s;
    EXPECT_GE(powerOn, 15000.0) << s;
    EXPECT_GE(first, 4100.0) << s;
    EXPECT_GE(second, 100.0) << s;
    EXPECT_GE(shortest, 37.0) << s;
    EXPECT_GE(afterClear, 1520.0) << s;
    return s;
}

std::string checkFormatters(int mhz, Operand operand, int randoms) {
    struct Kind {
        std::string declarations, operand;
        unsigned largest;
    };
    const Kind kinds[] = {
        {"DIM B AS BYTE\n", "B", 255},
        {"DIM WV AS WORD\n", "WV", 65535},
        {"DIM FB AS BIT\n", "FB", 1},
        {"DIM ARR[8] AS BYTE\nDIM IX AS BYTE\n", "ARR[IX]", 255},
        {"DIM X AS WORD\nDIM Y AS WORD\n", "X + Y", 65535},
        {"", "POT PORTC.1, 255", 255},
    };
    const Kind& kind = kinds[static_cast<int>(operand)];
    std::string what = std::to_string(mhz) + " MHz " + operandName(operand) + " operand";
    std::vector<FormatItem> first = formatItems(false), second = formatItems(true);
    std::string source = "DEVICE 16F877\nDECLARE XTAL " + std::to_string(mhz) + "\n" +
                         kind.declarations + "Top:\n" + printSegment(first, kind.operand) +
                         "Half:\n" + printSegment(second, kind.operand) + "Done:\nGOTO Top\n";
    SimProgram p(source, mhz);
    if (!p.ok()) {
        ADD_FAILURE() << what << ": " << failed(p);
        return "";
    }
    sim::Hd44780& lcd = attach<sim::Hd44780>(p, busPins(LcdBus::FourBitHigh, 2).pins);
    sim::RcSource* network =
        operand == Operand::Function ? &attach<sim::RcSource>(p, "PORTC.1", 10.0) : nullptr;

    std::vector<unsigned> values;
    for (unsigned v : {0u, 1u, 9u, 10u, 255u, 256u, 65535u})
        if (v <= kind.largest) values.push_back(v);
    std::mt19937 rng(20240611u + static_cast<unsigned>(operand));
    std::uniform_int_distribution<unsigned> pick(0, kind.largest);
    for (int i = 0; i < randoms; ++i)
        values.push_back(pick(rng));

    DisplayModel model;
    int checked = 0;
    for (unsigned v : values) {
        if (!p.runTo("Top", 100'000'000)) {
            ADD_FAILURE() << what << " " << v << ": Top not reached";
            return "";
        }
        switch (operand) {
        case Operand::Byte: p.setByte("B", static_cast<int>(v)); break;
        case Operand::Word: p.setWord("WV", static_cast<int>(v)); break;
        case Operand::Bit: p.setBit("FB", static_cast<int>(v)); break;
        case Operand::Element: {
            int index = static_cast<int>(v % 8);
            for (int i = 0; i < 8; ++i)
                p.setByte("ARR#" + std::to_string(i), i == index ? static_cast<int>(v) : 0xEE);
            p.setByte("IX", index);
            break;
        }
        case Operand::Expression: {
            unsigned x = (v * 40503u + 12345u) & 0xFFFF;
            p.setWord("X", static_cast<int>(x));
            p.setWord("Y", static_cast<int>((v - x) & 0xFFFF));
            break;
        }
        case Operand::Function:
            // POT with the scale 255 reads count - 1 for a charge time of
            // count 20 us units (rounded up): the middle of unit v + 1.
            network->setChargeMicroseconds(20.0 * (v + 1) - 10);
            break;
        }
        for (const auto& [items, stop] : {std::pair{&first, "Half"}, std::pair{&second, "Done"}}) {
            model.send(segmentBytes(*items, v));
            if (!p.runTo(stop, 200'000'000)) {
                ADD_FAILURE() << what << " " << v << ": " << stop << " not reached";
                return "";
            }
            EXPECT_EQ(partText(lcd), model.text())
                << what << ", value " << v << ", items before " << stop << "\n"
                << source;
            ++checked;
        }
    }
    EXPECT_EQ(complaints(lcd), "") << what;
    return what + ": " + std::to_string(values.size()) + " values, " + std::to_string(checked) +
           " PRINT segments as the reference";
}

std::string checkRepeatsAndStrings(int mhz, int randoms) {
    // The 16F877's RAM: 32..127, 160..239, 272..367, 400..495. S2 crosses
    // the first gap, S3 the second (and address 256), S4 lies above 255,
    // S5 crosses the third gap.
    struct Array {
        std::string name;
        int size;
    };
    const std::vector<Array> arrays = {{"S1", 12}, {"S2", 30}, {"S3", 40}, {"S4", 20}, {"S5", 40}};
    std::string what = std::to_string(mhz) + " MHz REP and STR";
    std::ostringstream src;
    src << "DEVICE 16F877\nDECLARE XTAL " << mhz << "\nDIM N AS BYTE\nDIM CH AS BYTE\n"
        << "DIM S1[12] AS BYTE\nDIM F1[40] AS BYTE\nDIM S2[30] AS BYTE\nDIM F2[50] AS BYTE\n"
        << "DIM S3[40] AS BYTE\nDIM S4[20] AS BYTE\nDIM F3[36] AS BYTE\nDIM S5[40] AS BYTE\n"
        << "Top:\nPRINT AT 1, 1, REP CH\\N, \"|\"\nR1:\n"
        << "PRINT AT 1, 1, REP \"*\"\\N, \"/\", REP 65\\3, \"/\", REP CH\\0, \"|\"\nR2:\n"
        // Constants: a word first, then small ones whose high byte must be 0.
        << "PRINT AT 1, 1, HEX4 $ABCD, \"/\", HEX4 10, \"/\", DEC5 $FFFF, \"/\", DEC3 7\n"
        << "PRINT \"/\", BIN16 $8001, \"/\", BIN9 2, \"/\", @300, \"/\", @9, \"|\"\nK1:\n";
    for (const Array& a : arrays)
        src << "PRINT AT 1, 1, STR " << a.name << ", \"/\", STR " << a.name << "\\5, \"|\"\n"
            << a.name << "A:\n";
    src << "Done:\nGOTO Top\n";
    SimProgram p(src.str(), mhz);
    if (!p.ok()) {
        ADD_FAILURE() << what << ": " << failed(p);
        return "";
    }
    // The layout the test is about.
    EXPECT_LT(p.address("S1#11"), 128);
    EXPECT_LT(p.address("S2#0"), 128);
    EXPECT_GE(p.address("S2#29"), 160);
    EXPECT_LT(p.address("S3#0"), 240);
    EXPECT_GE(p.address("S3#39"), 272);
    EXPECT_GE(p.address("S4#0"), 256);
    EXPECT_LT(p.address("S5#0"), 368);
    EXPECT_GE(p.address("S5#39"), 400);
    EXPECT_GE(p.label("mb@strout"), 0);
    EXPECT_GE(p.label("sb@strout"), 0);
    sim::Hd44780& lcd = attach<sim::Hd44780>(p, busPins(LcdBus::FourBitHigh, 2).pins);
    DisplayModel model;
    std::mt19937 rng(7321u);
    std::uniform_int_distribution<int> printable(32, 126);
    std::vector<int> counts = {0, 1, 2, 9, 10, 40, 100, 255};
    std::uniform_int_distribution<int> count(0, 255);
    for (int i = 0; i < randoms; ++i)
        counts.push_back(count(rng));
    int checked = 0;
    auto check = [&](const std::string& stop, const std::string& bytes, const std::string& input) {
        model.send(bytes);
        if (!p.runTo(stop, 50'000'000)) {
            ADD_FAILURE() << what << ": " << stop << " not reached (" << input << ")";
            return false;
        }
        EXPECT_EQ(partText(lcd), model.text()) << what << ": " << input;
        ++checked;
        return true;
    };
    for (int n : counts) {
        if (!p.runTo("Top", 50'000'000)) return "";
        char ch = static_cast<char>(printable(rng));
        p.setByte("N", n);
        p.setByte("CH", static_cast<unsigned char>(ch));
        std::string input = "N = " + std::to_string(n) + ", CH = '" + std::string(1, ch) + "'";
        if (!check("R1", "\xFE\x80" + std::string(static_cast<size_t>(n), ch) + "|", input))
            return "";
        if (!check("R2", "\xFE\x80" + std::string(static_cast<size_t>(n), '*') + "/AAA/|", input))
            return "";
        if (!check("K1",
                   std::string("\xFE\x80") +
                       "ABCD/000A/65535/007/1000000000000001/000000010/300/9|",
                   "constants"))
            return "";
        // The strings: printable bytes, with a 0 somewhere in half of the runs.
        std::string stringInput;
        std::vector<std::string> expected;
        for (const Array& a : arrays) {
            std::string text;
            std::uniform_int_distribution<int> end(0, a.size * 2);
            int stopAt = end(rng);
            for (int i = 0; i < a.size; ++i) {
                int b = i == stopAt ? 0 : printable(rng);
                p.setByte(a.name + "#" + std::to_string(i), b);
                text += static_cast<char>(b);
            }
            std::string whole = text.substr(0, text.find('\0'));
            std::string five = text.substr(0, 5);
            five = five.substr(0, five.find('\0'));
            expected.push_back("\xFE\x80" + whole + "/" + five + "|");
            stringInput += " " + a.name + " 0 at " + std::to_string(stopAt);
        }
        for (size_t i = 0; i < arrays.size(); ++i)
            if (!check(arrays[i].name + "A", expected[i], input + stringInput)) return "";
    }
    EXPECT_EQ(complaints(lcd), "") << what;
    return what + ": " + std::to_string(checked) + " PRINT statements as the reference";
}

std::string checkKeypad(int mhz, bool portB) {
    std::string what = std::to_string(mhz) + " MHz keypad on " + (portB ? "PORTB" : "PORTD");
    std::string source = "DEVICE 16F877\nDECLARE XTAL " + std::to_string(mhz) + "\n" +
                         (portB ? "" : "DECLARE KEYPAD_PORT PORTD\n") +
                         "DIM K AS BYTE\nTop:\nK = INKEY\nDone:\nGOTO Top\n";
    SimProgram p(source, mhz);
    if (!p.ok()) {
        ADD_FAILURE() << what << ": " << failed(p);
        return "";
    }
    std::string port = portB ? "PORTB." : "PORTD.";
    std::array<std::string, 4> rows, columns;
    for (int i = 0; i < 4; ++i) {
        rows[static_cast<size_t>(i)] = port + std::to_string(i);
        columns[static_cast<size_t>(i)] = port + std::to_string(i + 4);
    }
    // On PORTB the columns read high only through the port's weak pull-ups.
    sim::Keypad4x4& pad = attach<sim::Keypad4x4>(p, rows, columns, !portB);
    struct Case {
        std::vector<int> keys;
        int result;
    };
    std::vector<Case> cases;
    for (int k = 0; k < 16; ++k)
        cases.push_back({{k}, k});
    cases.push_back({{}, 16});
    cases.push_back({{13, 6}, 6});
    cases.push_back({{15, 3}, 3});
    cases.push_back({{9, 10, 11}, 9});
    int right = 0;
    for (const Case& k : cases) {
        if (!p.runTo("Top")) {
            ADD_FAILURE() << what << ": Top not reached";
            return "";
        }
        pad.releaseAll();
        for (int key : k.keys)
            pad.press(key / 4, key % 4);
        if (!p.runTo("Done")) {
            ADD_FAILURE() << what << ": Done not reached";
            return "";
        }
        std::string keys;
        for (int key : k.keys)
            keys += " " + std::to_string(key);
        EXPECT_EQ(p.byte("K"), k.result) << what << ", keys down:" << keys;
        if (p.byte("K") == k.result) ++right;
        // The rows are left high; on PORTB the pull-ups stay on.
        EXPECT_EQ(p.pic().peek(portB ? 0x06 : 0x08) & 15, 15) << what;
        if (portB) {
            EXPECT_EQ(p.pic().peek(0x81) & 0x80, 0) << what;
        }
    }
    return what + ": " + std::to_string(right) + " of " + std::to_string(cases.size()) +
           " readings right";
}

} // namespace zorvel::test
