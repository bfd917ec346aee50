// The example programs compile, assemble and do in the simulator what their
// comments say.
#include "sim/parts/hd44780.h"
#include "sim/parts/logic_probe.h"
#include "sim/parts/uart_receiver.h"
#include "sim/parts/uart_transmitter.h"
#include "sim/pic16.h"
#include "support/test_support.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <vector>

namespace zorvel::test {
namespace {

namespace fs = std::filesystem;

fs::path examplesFolder() {
    return fs::path(ZORVEL_SOURCE_DATA).parent_path() / "examples";
}

// Builds an example in a scratch folder and loads its HEX into a simulator.
std::unique_ptr<sim::Pic16> buildAndLoad(const std::string& example, const std::string& device,
                                         double mhz, TempDir& dir) {
    fs::path source = dir.path() / example;
    fs::copy_file(examplesFolder() / example, source);
    CompileResult r = compileFile(source, dataFolder(), true);
    EXPECT_EQ(r.errors, 0) << (r.messages.empty() ? "" : r.messages[0]);
    if (r.errors != 0) return nullptr;
    std::string error;
    auto layout = sim::loadDeviceLayout(dataFolder() / "inc", device, error);
    auto hex = sim::readHex(fs::path(source).replace_extension(".hex"), error);
    EXPECT_TRUE(layout && hex) << error;
    if (!layout || !hex) return nullptr;
    auto pic = std::make_unique<sim::Pic16>(*layout, mhz);
    pic->load(*hex);
    return pic;
}

TEST(Examples, HelloSendsItsText) {
    TempDir dir;
    auto pic = buildAndLoad("hello.bas", "16F877", 4.0, dir);
    ASSERT_TRUE(pic);
    auto receiver = std::make_unique<sim::UartReceiver>("PORTB.0", 9600);
    sim::UartReceiver* rx = receiver.get();
    pic->attach(std::move(receiver));
    pic->run(60000); // 60 ms at 4 MHz
    EXPECT_EQ(rx->text(), "Hello from Zorvel\r\ncount 1\r\ncount 2\r\ncount 3\r\n");
    EXPECT_EQ(rx->framingErrors(), 0);
}

// A line typed into the serial input comes back; five quiet seconds are
// reported.
TEST(Examples, EchoSendsBackALineAndReportsSilence) {
    TempDir dir;
    auto pic = buildAndLoad("echo.bas", "16F877", 4.0, dir);
    ASSERT_TRUE(pic);
    auto receiver = std::make_unique<sim::UartReceiver>("PORTC.6", 9600);
    sim::UartReceiver* rx = receiver.get();
    pic->attach(std::move(receiver));
    auto transmitter = std::make_unique<sim::UartTransmitter>("PORTC.7", 9600);
    sim::UartTransmitter* tx = transmitter.get();
    pic->attach(std::move(transmitter));
    tx->send("Zorvel 1.1\r", 20000);
    pic->run(100000);
    EXPECT_EQ(rx->text(), "Ready\r\nYou typed: Zorvel 1.1\r\n");
    pic->run(5100000); // the 5 s timeout of the next line
    EXPECT_EQ(rx->text(), "Ready\r\nYou typed: Zorvel 1.1\r\n(nothing for 5 s)\r\n");
    EXPECT_EQ(rx->framingErrors(), 0);
}

// The count on the LCD's second line goes up every 100 ms or so, the same
// number in decimal and hexadecimal; the display never gets a command while busy.
TEST(Examples, LcdCounterShowsItsCount) {
    TempDir dir;
    auto pic = buildAndLoad("lcd_counter.bas", "16F877", 4.0, dir);
    ASSERT_TRUE(pic);
    auto display = std::make_unique<sim::Hd44780>(sim::Hd44780Pins{
        "PORTB.3", "PORTB.2", std::nullopt, {"PORTB.4", "PORTB.5", "PORTB.6", "PORTB.7"}, 2, 16});
    sim::Hd44780* lcd = display.get();
    pic->attach(std::move(display));
    pic->run(450000);
    std::vector<std::string> shown = lcd->lines();
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[0], "Zorvel counter  ");
    int count = std::stoi(shown[1].substr(0, 5));
    EXPECT_GE(count, 3);
    EXPECT_LE(count, 4);
    char expected[17];
    std::snprintf(expected, sizeof expected, "%05d $%04X     ", count, count);
    EXPECT_EQ(shown[1], expected);
    EXPECT_EQ(lcd->busyViolations(), 0);
}

TEST(Examples, BlinkTogglesAboutTwiceASecond) {
    TempDir dir;
    auto pic = buildAndLoad("blink.bas", "16F84A", 4.0, dir);
    ASSERT_TRUE(pic);
    auto probe = std::make_unique<sim::LogicProbe>("PORTB.0");
    sim::LogicProbe* p = probe.get();
    pic->attach(std::move(probe));
    pic->run(1100000); // 1.1 s
    const auto& edges = p->edges();
    ASSERT_GE(edges.size(), 4u);
    // Each half period is about 250 ms: 250,000 cycles within 1 %.
    for (size_t i = 1; i < edges.size(); ++i) {
        double half = static_cast<double>(edges[i].cycle - edges[i - 1].cycle);
        EXPECT_NEAR(half, 250000.0, 2500.0) << "edge " << i;
    }
}

// The stretches of activity on a pin: from the first edge of a stretch to its
// last, stretches apart by more than `gap` cycles.
struct Stretch {
    uint64_t first = 0;
    uint64_t last = 0;
};

std::vector<Stretch> stretchesOf(const std::vector<sim::Edge>& edges, uint64_t gap) {
    std::vector<Stretch> out;
    for (const sim::Edge& e : edges) {
        if (out.empty() || e.cycle - out.back().last > gap)
            out.push_back({e.cycle, e.cycle});
        else
            out.back().last = e.cycle;
    }
    return out;
}

// tones.bas at 20 MHz (5000 cycles a millisecond): the tune, the chirp, the
// 1 kHz note, the noise, the sweep and seven dial tones, each where its
// comment puts it and as long as it says.
TEST(Examples, TonesPlaysItsTuneChirpAndDialString) {
    TempDir dir;
    auto pic = buildAndLoad("tones.bas", "16F877", 20.0, dir);
    ASSERT_TRUE(pic);
    auto probe = std::make_unique<sim::LogicProbe>("PORTB.0");
    sim::LogicProbe* p = probe.get();
    pic->attach(std::move(probe));
    constexpr double kCyclesPerMs = 5000.0;
    pic->run(static_cast<uint64_t>(5600 * kCyclesPerMs));
    // The SOUND rests and the pauses are 120 ms or more; inside a sound the
    // pin never rests for 50 ms.
    std::vector<Stretch> parts = stretchesOf(p->edges(), static_cast<uint64_t>(50 * kCyclesPerMs));
    ASSERT_EQ(parts.size(), 12u);
    auto ms = [&](uint64_t cycles) { return static_cast<double>(cycles) / kCyclesPerMs; };
    auto length = [&](const Stretch& s) { return ms(s.last - s.first); };
    EXPECT_NEAR(length(parts[0]), 200 + 200 + 200 + 400 + 600, 5) << "the tune";
    EXPECT_NEAR(length(parts[1]), 13 * 36, 5) << "the chirp";
    EXPECT_NEAR(length(parts[2]), 300, 2) << "the 1 kHz note";
    EXPECT_NEAR(length(parts[3]), 60, 2) << "the noise";
    EXPECT_NEAR(length(parts[4]), 13 * 30, 5) << "the sweep";
    EXPECT_NEAR(ms(parts[2].first - parts[1].last), 120, 2) << "the rest before 1 kHz";
    EXPECT_NEAR(ms(parts[4].first - parts[3].last), 300, 2) << "the pause before the sweep";
    // The 1 kHz note: the pin turns every 500 us.
    int turns = 0;
    for (size_t i = 1; i < p->edges().size(); ++i) {
        const sim::Edge& e = p->edges()[i];
        if (e.cycle <= parts[2].first || e.cycle > parts[2].last) continue;
        EXPECT_NEAR(ms(e.cycle - p->edges()[i - 1].cycle), 0.5, 0.001) << "edge " << i;
        ++turns;
    }
    EXPECT_EQ(turns, 599);
    // Seven digits: 100 ms of tone, each starting 160 ms after the last.
    for (size_t d = 5; d < parts.size(); ++d) {
        EXPECT_NEAR(length(parts[d]), 100, 1) << "digit " << d - 5;
        if (d > 5) {
            EXPECT_NEAR(ms(parts[d].first - parts[d - 1].first), 160, 1) << "digit " << d - 5;
        }
    }
    // The program has reached its end: the pin is quiet and low.
    EXPECT_LT(ms(parts.back().last), 5200);
    EXPECT_FALSE(p->edges().back().level);
}

} // namespace
} // namespace zorvel::test
