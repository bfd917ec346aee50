// The example programs compile, assemble and do in the simulator what their
// comments say.
#include "sim/parts/logic_probe.h"
#include "sim/parts/uart_receiver.h"
#include "sim/pic16.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

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
    pic->run(30000); // 30 ms at 4 MHz
    EXPECT_EQ(rx->text(), "Hello from Zorvel\r\n");
    EXPECT_EQ(rx->framingErrors(), 0);
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

} // namespace
} // namespace zorvel::test
