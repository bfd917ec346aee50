#include "sim/parts/i2c_eeprom.h"
#include "sim/parts/loose_pins.h"

#include <gtest/gtest.h>

using zorvel::sim::I2cEeprom;
using zorvel::test::LoosePins;

namespace {

// A bit-banged I2C master on SDA and SCL: it pulls a line low or releases it.
class Master {
public:
    explicit Master(LoosePins& bench) : bench_(bench) {}
    void sda(bool high) {
        high ? bench_.release("SDA") : bench_.drive("SDA", false);
        step();
    }
    void scl(bool high) {
        high ? bench_.release("SCL") : bench_.drive("SCL", false);
        step();
    }
    void start() {
        sda(true);
        scl(true);
        sda(false);
        scl(false);
    }
    void stop() {
        sda(false);
        scl(true);
        sda(true);
    }
    // Sends a byte; true when the part acknowledged.
    bool write(uint8_t value) {
        for (int i = 7; i >= 0; --i) {
            sda((value >> i) & 1);
            scl(true);
            scl(false);
        }
        sda(true);
        scl(true);
        bool ack = !bench_.level("SDA");
        scl(false);
        return ack;
    }
    uint8_t read(bool ack) {
        sda(true);
        uint8_t value = 0;
        for (int i = 0; i < 8; ++i) {
            scl(true);
            value = static_cast<uint8_t>(value << 1 | (bench_.level("SDA") ? 1 : 0));
            scl(false);
        }
        sda(!ack);
        scl(true);
        scl(false);
        sda(true);
        return value;
    }

private:
    void step() { bench_.advance(5); }
    LoosePins& bench_;
};

struct EepromBench : ::testing::Test {
    LoosePins bench;
    I2cEeprom eeprom{"SDA", "SCL", 2};
    Master m{bench};
    void SetUp() override { eeprom.connect(bench.wiring()); }
    bool addressFor(bool read) { return m.write(static_cast<uint8_t>(0xA4 | (read ? 1 : 0))); }
};

} // namespace

TEST_F(EepromBench, ReleasedLinesReadHigh) {
    EXPECT_TRUE(bench.level("SDA"));
    EXPECT_TRUE(bench.level("SCL"));
    bench.drive("SDA", false);
    EXPECT_FALSE(bench.level("SDA"));
}

TEST_F(EepromBench, WritesAPageThenReadsItBack) {
    m.start();
    ASSERT_TRUE(addressFor(false));
    EXPECT_TRUE(m.write(0x12));
    EXPECT_TRUE(m.write(0x34));
    for (uint8_t b : {0x11, 0x22, 0x33})
        EXPECT_TRUE(m.write(b));
    m.stop();
    EXPECT_EQ(eeprom.stops(), 1);
    EXPECT_EQ(eeprom.memory()[0x1234], 0x11);
    EXPECT_EQ(eeprom.memory()[0x1236], 0x33);
    bench.advance(6000); // the 5 ms write cycle
    m.start();
    ASSERT_TRUE(addressFor(false));
    m.write(0x12);
    m.write(0x34);
    m.start(); // repeated start
    ASSERT_TRUE(addressFor(true));
    EXPECT_EQ(m.read(true), 0x11);
    EXPECT_EQ(m.read(true), 0x22);
    EXPECT_EQ(m.read(false), 0x33);
    m.stop();
    EXPECT_EQ(eeprom.addressCounter(), 0x1237);
}

TEST_F(EepromBench, OtherChipAddressesAreNotAcknowledged) {
    m.start();
    EXPECT_FALSE(m.write(0xA0));
    m.stop();
    m.start();
    EXPECT_FALSE(m.write(0x90));
    m.stop();
    m.start();
    EXPECT_TRUE(addressFor(false));
    m.stop();
}

TEST_F(EepromBench, NoAcknowledgeDuringTheWriteCycle) {
    m.start();
    addressFor(false);
    m.write(0);
    m.write(0);
    m.write(0x5A);
    m.stop();
    int polls = 0;
    uint64_t begin = bench.now();
    for (;;) {
        m.start();
        bool ack = addressFor(false);
        m.stop();
        if (ack) break;
        ++polls;
        ASSERT_LT(polls, 1000);
    }
    EXPECT_GT(polls, 10);
    EXPECT_GE(bench.now() - begin, 5000u);
    EXPECT_EQ(eeprom.memory()[0], 0x5A);
}

TEST_F(EepromBench, PageWritesWrapInsideThePage) {
    m.start();
    addressFor(false);
    m.write(0x00);
    m.write(0x7E); // two bytes before the end of the page at 0x40
    for (int i = 0; i < 4; ++i)
        m.write(static_cast<uint8_t>(0xC0 + i));
    m.stop();
    EXPECT_EQ(eeprom.memory()[0x7E], 0xC0);
    EXPECT_EQ(eeprom.memory()[0x7F], 0xC1);
    EXPECT_EQ(eeprom.memory()[0x40], 0xC2);
    EXPECT_EQ(eeprom.memory()[0x41], 0xC3);
    EXPECT_EQ(eeprom.memory()[0x80], 0xFF);
}

TEST_F(EepromBench, CurrentAddressReadAndSequentialRollover) {
    eeprom.memory()[0x7FFF] = 0xAB;
    eeprom.memory()[0] = 0xCD;
    m.start();
    addressFor(false);
    m.write(0x7F);
    m.write(0xFF);
    m.stop(); // no data: nothing written, no write cycle
    m.start();
    ASSERT_TRUE(addressFor(true));
    EXPECT_EQ(m.read(true), 0xAB);
    EXPECT_EQ(m.read(false), 0xCD);
    m.stop();
}

TEST_F(EepromBench, AStartWithoutStopAbandonsTheWrite) {
    m.start();
    addressFor(false);
    m.write(0x00);
    m.write(0x10);
    m.write(0x99);
    m.start();
    m.stop();
    EXPECT_EQ(eeprom.memory()[0x10], 0xFF);
}
