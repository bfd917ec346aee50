// The USART against a fake core: frames on the TX pin decoded by a sampler,
// frames driven onto RX, flags and the receive FIFO.
#include "fake_core.h"

#include <gtest/gtest.h>
#include <string>

namespace zorvel::sim::test {
namespace {

constexpr int TRMT = 1, TXIF = 4, RCIF = 5, OERR = 1, FERR = 2;

struct BaudCase {
    const char* device;
    double mhz;
    uint8_t spbrg;
    bool brgh;
    char txPort;
    int txBit;
    uint64_t bitCycles;
};

class UsartTransmit : public ::testing::TestWithParam<BaudCase> {};

TEST_P(UsartTransmit, SendsFramesWithTheBitTime) {
    const BaudCase& c = GetParam();
    FakeCore core(c.device, c.mhz);
    Pin* tx = core.pinByName(c.txPort, c.txBit);
    EdgeRecorder edges;
    tx->addListener(&edges);
    core.write("SPBRG", c.spbrg);
    core.write("TXSTA", uint8_t(0x20 | (c.brgh ? 0x04 : 0)));
    core.write("RCSTA", 0x80);
    EXPECT_TRUE(tx->level());
    EXPECT_TRUE(core.bit("PIR1", TXIF));
    EXPECT_TRUE(core.bit("TXSTA", TRMT));
    core.write("TXREG", 'H');
    EXPECT_FALSE(core.bit("PIR1", TXIF));
    core.advance(1);
    EXPECT_TRUE(core.bit("PIR1", TXIF)); // moved to the shift register
    EXPECT_FALSE(core.bit("TXSTA", TRMT));
    core.write("TXREG", 'i');
    EXPECT_FALSE(core.bit("PIR1", TXIF));
    core.advance(c.bitCycles * 20 + 10);
    EXPECT_TRUE(core.bit("TXSTA", TRMT));
    EXPECT_TRUE(core.bit("PIR1", TXIF));
    ASSERT_FALSE(edges.edges.empty());
    EXPECT_EQ(decode(edges.edges, c.bitCycles), "Hi");
    // The first edge is the idle level; then 'H' = 0x48: start 0, data 0,0,0,1: the
    // first rising edge comes 4 bits after the start.
    ASSERT_GE(edges.edges.size(), 3u);
    EXPECT_TRUE(edges.edges[0].second);
    uint64_t firstStart = edges.edges[1].first;
    EXPECT_FALSE(edges.edges[1].second);
    EXPECT_EQ(edges.edges[2].first - firstStart, 4 * c.bitCycles);
    // The second start bit follows the first frame's stop bit directly.
    uint64_t secondStart = firstStart + 10 * c.bitCycles;
    bool found = false;
    for (auto [at, level] : edges.edges)
        found |= at == secondStart && !level;
    EXPECT_TRUE(found);
}

INSTANTIATE_TEST_SUITE_P(Rates, UsartTransmit,
                         ::testing::Values(BaudCase{"16F877", 4.0, 25, true, 'C', 6, 104},
                                           BaudCase{"16F877", 20.0, 129, true, 'C', 6, 520},
                                           BaudCase{"16F877", 20.0, 31, false, 'C', 6, 512},
                                           BaudCase{"16F628A", 4.0, 12, false, 'B', 2, 208}));

// Drives a frame onto `pin` starting at `start`.
void driveFrame(FakeCore& core, Pin* pin, uint64_t start, uint64_t bit, uint8_t value,
                bool stop = true) {
    for (int i = 0; i < 10; ++i) {
        bool level = i == 0 ? false : i == 9 ? stop : bool((value >> (i - 1)) & 1);
        core.scheduler().schedule(start + bit * uint64_t(i),
                                  [pin, level](uint64_t at) { pin->setExternal(level, at); });
    }
    core.scheduler().schedule(start + bit * 10, [pin](uint64_t at) { pin->setExternal(true, at); });
}

struct ReceiveCase {
    const char* device;
    double mhz;
    uint8_t spbrg;
    bool brgh;
    char rxPort;
    int rxBit;
    uint64_t bitCycles;
};

class UsartReceive : public ::testing::TestWithParam<ReceiveCase> {};

TEST_P(UsartReceive, FillsTheFifoAndFlagsOverrun) {
    const ReceiveCase& c = GetParam();
    FakeCore core(c.device, c.mhz);
    Pin* rx = core.pinByName(c.rxPort, c.rxBit);
    rx->setExternal(true, 0);
    core.write("SPBRG", c.spbrg);
    core.write("TXSTA", c.brgh ? 0x04 : 0x00);
    core.write("RCSTA", 0x90); // SPEN, CREN
    uint64_t bit = c.bitCycles;
    driveFrame(core, rx, 10, bit, 0xA5);
    core.advanceTo(10 + bit * 9);
    EXPECT_FALSE(core.bit("PIR1", RCIF));
    core.advanceTo(10 + bit * 10);
    EXPECT_TRUE(core.bit("PIR1", RCIF));
    driveFrame(core, rx, 10 + bit * 11, bit, 0x3C);
    driveFrame(core, rx, 10 + bit * 22, bit, 0x77); // the FIFO is full: lost
    core.advanceTo(10 + bit * 35);
    EXPECT_TRUE(core.bit("RCSTA", OERR));
    EXPECT_EQ(core.read("RCREG"), 0xA5);
    EXPECT_TRUE(core.bit("PIR1", RCIF));
    EXPECT_EQ(core.read("RCREG"), 0x3C);
    EXPECT_FALSE(core.bit("PIR1", RCIF));
    // Reception is stopped until CREN is cleared.
    driveFrame(core, rx, core.cycles() + 5, bit, 0x11);
    core.advance(bit * 12);
    EXPECT_FALSE(core.bit("PIR1", RCIF));
    core.write("RCSTA", 0x80);
    EXPECT_FALSE(core.bit("RCSTA", OERR));
    core.write("RCSTA", 0x90);
    driveFrame(core, rx, core.cycles() + 5, bit, 0x11);
    core.advance(bit * 12);
    EXPECT_TRUE(core.bit("PIR1", RCIF));
    EXPECT_EQ(core.read("RCREG"), 0x11);
}

INSTANTIATE_TEST_SUITE_P(Rates, UsartReceive,
                         ::testing::Values(ReceiveCase{"16F877", 4.0, 25, true, 'C', 7, 104},
                                           ReceiveCase{"16F877", 20.0, 129, true, 'C', 7, 520},
                                           ReceiveCase{"16F628A", 4.0, 12, false, 'B', 1, 208}));

TEST(Usart, LowStopBitSetsFerr) {
    FakeCore core("16F877", 4.0);
    Pin* rx = core.pinByName('C', 7);
    rx->setExternal(true, 0);
    core.write("SPBRG", 25);
    core.write("TXSTA", 0x04);
    core.write("RCSTA", 0x90);
    driveFrame(core, rx, 10, 104, 0x55, false);
    core.advance(104 * 11);
    EXPECT_TRUE(core.bit("PIR1", RCIF));
    EXPECT_TRUE(core.bit("RCSTA", FERR));
    EXPECT_EQ(core.read("RCREG"), 0x55);
    EXPECT_FALSE(core.bit("RCSTA", FERR));
}

TEST(Usart, ShortGlitchIsNotAStartBit) {
    FakeCore core("16F877", 4.0);
    Pin* rx = core.pinByName('C', 7);
    rx->setExternal(true, 0);
    core.write("SPBRG", 25);
    core.write("TXSTA", 0x04);
    core.write("RCSTA", 0x90);
    core.scheduler().schedule(10, [rx](uint64_t at) { rx->setExternal(false, at); });
    core.scheduler().schedule(20, [rx](uint64_t at) { rx->setExternal(true, at); });
    core.advance(104 * 12);
    EXPECT_FALSE(core.bit("PIR1", RCIF));
}

TEST(Usart, NothingHappensWithoutSpen) {
    FakeCore core("16F877", 4.0);
    Pin* tx = core.pinByName('C', 6);
    core.write("TXSTA", 0x24);
    core.write("TXREG", 'x');
    core.advance(2000);
    EXPECT_FALSE(tx->picDrives());
    EXPECT_TRUE(core.bit("TXSTA", TRMT));
}

} // namespace
} // namespace zorvel::sim::test
