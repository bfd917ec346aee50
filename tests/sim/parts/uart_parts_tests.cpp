#include "sim/parts/loose_pins.h"
#include "sim/parts/uart_receiver.h"
#include "sim/parts/uart_transmitter.h"

#include <cmath>
#include <gtest/gtest.h>

using zorvel::sim::UartReceiver;
using zorvel::sim::UartTransmitter;
using zorvel::test::LoosePins;

namespace {

// The device bit-bangs one 8N1 frame on `pin`, starting now; `stopBit`
// false makes a framing error.
void sendFrame(LoosePins& bench, const std::string& pin, uint8_t value, double bitCycles,
               bool inverted = false, bool stopBit = true) {
    uint64_t start = bench.now();
    for (int bit = 0; bit < 10; ++bit) {
        bool mark = bit == 0 ? false : bit == 9 ? stopBit : ((value >> (bit - 1)) & 1) != 0;
        bench.advanceTo(start + static_cast<uint64_t>(std::llround(bit * bitCycles)));
        bench.drive(pin, mark != inverted);
    }
    bench.advanceTo(start + static_cast<uint64_t>(std::llround(10 * bitCycles)));
    bench.drive(pin, !inverted);
}

} // namespace

TEST(UartReceiver, DecodesBytesWithStartTimes) {
    LoosePins bench; // 1 us cycles
    bench.drive("PORTB.0", true);
    UartReceiver rx("PORTB.0", 9600);
    rx.connect(bench.wiring());
    bench.advance(500);
    double bit = 1e6 / 9600;
    uint64_t firstStart = bench.now();
    for (char c : std::string("Hi!"))
        sendFrame(bench, "PORTB.0", static_cast<uint8_t>(c), bit);
    bench.advance(2000);
    EXPECT_EQ(rx.text(), "Hi!");
    ASSERT_EQ(rx.bytes().size(), 3u);
    EXPECT_EQ(rx.bytes()[0].startCycle, firstStart);
    EXPECT_EQ(rx.bytes()[1].startCycle, firstStart + static_cast<uint64_t>(std::llround(10 * bit)));
    EXPECT_EQ(rx.framingErrors(), 0);
}

TEST(UartReceiver, InvertedLineIdlesLow) {
    LoosePins bench(0.2e-6); // 20 MHz
    bench.drive("PORTC.6", false);
    UartReceiver rx("PORTC.6", 2400, true);
    rx.connect(bench.wiring());
    bench.advance(100);
    double bit = 1.0 / (2400 * 0.2e-6);
    sendFrame(bench, "PORTC.6", 0xA5, bit, true);
    sendFrame(bench, "PORTC.6", 0x00, bit, true);
    bench.advance(10000);
    ASSERT_EQ(rx.bytes().size(), 2u);
    EXPECT_EQ(rx.bytes()[0].value, 0xA5);
    EXPECT_EQ(rx.bytes()[1].value, 0x00);
    EXPECT_EQ(rx.framingErrors(), 0);
}

TEST(UartReceiver, ReportsAWrongStopBit) {
    LoosePins bench;
    bench.drive("PORTB.1", true);
    UartReceiver rx("PORTB.1", 9600);
    rx.connect(bench.wiring());
    bench.advance(50);
    double bit = 1e6 / 9600;
    sendFrame(bench, "PORTB.1", 'x', bit, false, false);
    bench.advance(1000);
    sendFrame(bench, "PORTB.1", 'y', bit);
    bench.advance(1000);
    ASSERT_EQ(rx.bytes().size(), 2u);
    EXPECT_TRUE(rx.bytes()[0].framingError);
    EXPECT_FALSE(rx.bytes()[1].framingError);
    EXPECT_EQ(rx.framingErrors(), 1);
    EXPECT_EQ(rx.text(), "y");
}

TEST(UartReceiver, IgnoresAGlitchShorterThanHalfABit) {
    LoosePins bench;
    bench.drive("PORTB.0", true);
    UartReceiver rx("PORTB.0", 9600);
    rx.connect(bench.wiring());
    bench.advance(10);
    bench.drive("PORTB.0", false);
    bench.advance(20);
    bench.drive("PORTB.0", true);
    bench.advance(2000);
    EXPECT_TRUE(rx.bytes().empty());
}

TEST(UartReceiver, WrongBaudRateGivesOtherBytes) {
    LoosePins bench;
    bench.drive("PORTB.0", true);
    UartReceiver rx("PORTB.0", 4800);
    rx.connect(bench.wiring());
    bench.advance(10);
    sendFrame(bench, "PORTB.0", 'U', 1e6 / 9600);
    bench.advance(5000);
    EXPECT_NE(rx.text(), "U");
}

TEST(UartTransmitter, LoopsBackIntoAReceiver) {
    LoosePins bench(1.0 / 5e6); // 20 MHz crystal
    UartTransmitter tx("PORTC.7", 19200);
    UartReceiver rx("PORTC.7", 19200);
    tx.send("Zorvel\r\n", 1000);
    tx.connect(bench.wiring());
    rx.connect(bench.wiring());
    EXPECT_TRUE(bench.level("PORTC.7")); // idle high
    bench.advance(999);
    EXPECT_TRUE(rx.bytes().empty());
    bench.advance(100000);
    EXPECT_EQ(rx.text(), "Zorvel\r\n");
    EXPECT_TRUE(tx.idle());
    ASSERT_FALSE(rx.bytes().empty());
    EXPECT_EQ(rx.bytes()[0].startCycle, 1000u);
}

TEST(UartTransmitter, InvertedBitsAndTiming) {
    LoosePins bench; // 1 us cycles, 10000 baud = 100 cycles a bit
    UartTransmitter tx("PORTA.0", 10000, true);
    tx.connect(bench.wiring());
    EXPECT_FALSE(bench.level("PORTA.0"));
    tx.send("\x01", 10);
    bench.advanceTo(10);
    EXPECT_TRUE(bench.level("PORTA.0")); // start bit (inverted)
    bench.advanceTo(110);
    EXPECT_FALSE(bench.level("PORTA.0")); // bit 0 = 1
    bench.advanceTo(209);
    EXPECT_FALSE(bench.level("PORTA.0"));
    bench.advanceTo(210);
    EXPECT_TRUE(bench.level("PORTA.0")); // bit 1 = 0
    bench.advanceTo(1000);
    EXPECT_FALSE(bench.level("PORTA.0")); // stop bit, 910 to 1010
    EXPECT_FALSE(tx.idle());
    bench.advanceTo(1010);
    EXPECT_TRUE(tx.idle());
}

TEST(UartTransmitter, ThePicOverridesTheLine) {
    LoosePins bench;
    UartTransmitter tx("PORTB.7", 9600);
    tx.connect(bench.wiring());
    bench.drive("PORTB.7", false);
    EXPECT_FALSE(bench.level("PORTB.7"));
    bench.release("PORTB.7");
    EXPECT_TRUE(bench.level("PORTB.7"));
}

TEST(Wiring, UnknownPinIsAnError) {
    zorvel::sim::Wiring wiring;
    wiring.pin = [](const std::string&) -> zorvel::sim::Pin* { return nullptr; };
    UartReceiver rx("PORTZ.9", 9600);
    EXPECT_THROW(rx.connect(wiring), std::invalid_argument);
}

namespace {

// A 7E1 frame: 7 data bits, the parity bit (even, or odd when `wrong`).
void sendSevenEven(LoosePins& bench, const std::string& pin, uint8_t value, double bitCycles,
                   bool wrong = false) {
    int ones = 0;
    for (int b = 0; b < 7; ++b)
        ones += (value >> b) & 1;
    uint8_t frame = static_cast<uint8_t>((value & 0x7F) | ((ones % 2 != 0) != wrong ? 0x80 : 0));
    sendFrame(bench, pin, frame, bitCycles);
}

} // namespace

TEST(UartReceiver, SevenDataBitsAndEvenParity) {
    LoosePins bench;
    bench.drive("PORTB.0", true);
    UartReceiver rx("PORTB.0", 9600, false, zorvel::sim::UartFormat::SevenEven);
    rx.connect(bench.wiring());
    bench.advance(20);
    double bit = 1e6 / 9600;
    sendSevenEven(bench, "PORTB.0", 'C', bit);       // 3 ones: parity 1
    sendSevenEven(bench, "PORTB.0", 0x7F, bit);      // 7 ones
    sendSevenEven(bench, "PORTB.0", 'A', bit, true); // 2 ones, parity bit set
    sendSevenEven(bench, "PORTB.0", 0x00, bit);
    bench.advance(1000);
    ASSERT_EQ(rx.bytes().size(), 4u);
    EXPECT_EQ(rx.bytes()[0].value, 'C');
    EXPECT_EQ(rx.bytes()[1].value, 0x7F);
    EXPECT_EQ(rx.bytes()[2].value, 'A');
    EXPECT_FALSE(rx.bytes()[0].parityError);
    EXPECT_FALSE(rx.bytes()[1].parityError);
    EXPECT_TRUE(rx.bytes()[2].parityError);
    EXPECT_FALSE(rx.bytes()[3].parityError);
    EXPECT_EQ(rx.parityErrors(), 1);
    EXPECT_EQ(rx.text(), "C\x7F"
                         "A" +
                             std::string(1, '\0'));
}

// The bit time the sender used, fitted to the frame's edges: a sender 3 %
// slow and one 1.5 % fast at 9600 baud.
TEST(UartReceiver, MeasuresTheSendersBitTime) {
    LoosePins bench;
    bench.drive("PORTB.0", true);
    UartReceiver rx("PORTB.0", 9600);
    rx.connect(bench.wiring());
    bench.advance(20);
    double bit = 1e6 / 9600;
    sendFrame(bench, "PORTB.0", 0x55, bit * 1.03);
    sendFrame(bench, "PORTB.0", 0x00, bit * 0.985);
    sendFrame(bench, "PORTB.0", 0xF0, bit);
    bench.advance(1000);
    ASSERT_EQ(rx.bytes().size(), 3u);
    EXPECT_NEAR(rx.bytes()[0].bitCycles, bit * 1.03, 0.2);
    EXPECT_EQ(rx.bytes()[0].lastEdgeBit, 9); // the stop bit's edge
    EXPECT_NEAR(rx.bytes()[1].bitCycles, bit * 0.985, 0.2);
    EXPECT_EQ(rx.bytes()[1].lastEdgeBit, 9); // its only edge after the start
    EXPECT_NEAR(rx.bytes()[2].bitCycles, bit, 0.2);
    EXPECT_EQ(rx.bytes()[2].lastEdgeBit, 5); // into bit 4, the first 1
    EXPECT_NEAR(rx.nominalBitCycles(), bit, 1e-9);
}

TEST(UartTransmitter, SevenEvenWithARightAndAWrongParityBit) {
    LoosePins bench(0.2e-6);
    UartTransmitter tx("PORTC.7", 4800, true, zorvel::sim::UartFormat::SevenEven);
    UartReceiver rx("PORTC.7", 4800, true, zorvel::sim::UartFormat::SevenEven);
    tx.connect(bench.wiring());
    rx.connect(bench.wiring());
    tx.send("Hi\xff", 100);
    tx.send("!", 0, true);
    bench.advance(200000);
    ASSERT_EQ(rx.bytes().size(), 4u);
    EXPECT_EQ(rx.text(), std::string("Hi\x7f!"));
    EXPECT_FALSE(rx.bytes()[2].parityError); // bit 7 of 0xFF is not sent
    EXPECT_TRUE(rx.bytes()[3].parityError);
    EXPECT_EQ(rx.parityErrors(), 1);
}

// With a flow pin each byte starts only while the device holds the pin at
// the go level; a byte under way finishes.
TEST(UartTransmitter, WaitsForTheFlowPin) {
    LoosePins bench; // 1 us cycles, 10000 baud: 100 cycles a bit
    UartTransmitter tx("PORTB.1", 10000);
    UartReceiver rx("PORTB.1", 10000);
    tx.setFlowPin("PORTB.2", false); // go when low
    bench.drive("PORTB.2", true);
    tx.connect(bench.wiring());
    rx.connect(bench.wiring());
    tx.send("ab", 0);
    bench.advance(5000);
    EXPECT_TRUE(rx.bytes().empty());
    bench.drive("PORTB.2", false); // go at 5000
    bench.advance(500);
    bench.drive("PORTB.2", true); // stop during 'a'
    bench.advance(5000);
    ASSERT_EQ(rx.bytes().size(), 1u);
    EXPECT_EQ(rx.bytes()[0].value, 'a');
    EXPECT_EQ(rx.bytes()[0].startCycle, 5000u);
    bench.drive("PORTB.2", false); // go at 10500
    bench.advance(2000);
    EXPECT_EQ(rx.text(), "ab");
    EXPECT_EQ(rx.bytes()[1].startCycle, 10500u);
    EXPECT_TRUE(tx.idle());
}
