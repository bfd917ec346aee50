// Parts across device resets: every reset clears the scheduler, and the parts
// schedule again what they had pending.
#include "sim/core/sim_harness.h"
#include "sim/parts/logic_probe.h"
#include "sim/parts/pulse_source.h"
#include "sim/parts/uart_transmitter.h"
#include "sim/pic16.h"

#include <gtest/gtest.h>

using namespace zorvel::sim;

namespace {

// Receives bytes with the USART (9600 baud at 4 MHz) into 0x20, 0x21, ...
const char* kReceiver = R"(
    list p=16f877
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    org 0
    banksel SPBRG
    movlw D'25'
    movwf SPBRG
    movlw 0x04
    movwf TXSTA
    banksel RCSTA
    movlw 0x90
    movwf RCSTA
    movlw 0x20
    movwf FSR
wait
    btfss PIR1,RCIF
    goto wait
    movf RCREG,W
    movwf INDF
    incf FSR,F
    goto wait
    end
)";

} // namespace

TEST(PartsAndResets, UartTransmitterResumesAfterAWatchdogReset) {
    auto pic = zorvel::test::loadProgram(kReceiver);
    ASSERT_TRUE(pic);
    auto part = std::make_unique<UartTransmitter>("RC7", 9600);
    UartTransmitter& tx = *part;
    pic->attach(std::move(part));
    tx.send("AB", 200);
    pic->run(200 + 104 * 14); // 'A' received, 'B' under way
    ASSERT_EQ(pic->peek(0x20), 'A');
    pic->reset(ResetKind::Watchdog);
    EXPECT_EQ(pic->status() & 0x18, 0x08); // TO clear: a watchdog reset
    pic->run(104 * 30);
    EXPECT_TRUE(tx.idle());
    EXPECT_EQ(pic->peek(0x20), 'B'); // 'B' sent again from its start bit
}

TEST(PartsAndResets, PulseSourceKeepsItsPulsesAcrossAReset) {
    auto pic = zorvel::test::loadProgram(R"(
    list p=16f877
    #include <p16f877.inc>
    org 0
done
    goto done
    end
)");
    ASSERT_TRUE(pic);
    auto source = std::make_unique<PulseSource>("RB0");
    PulseSource& pulses = *source;
    auto probe = std::make_unique<LogicProbe>("RB0");
    LogicProbe& edges = *probe;
    pic->attach(std::move(source));
    pic->attach(std::move(probe));
    pulses.pulse(500, 100); // under way at the reset
    pulses.pulse(2000, 50); // after it
    pic->run(550);
    pic->reset(ResetKind::Watchdog);
    EXPECT_TRUE(pic->pin("RB0")->level());
    pic->run(3000);
    EXPECT_FALSE(pic->pin("RB0")->level());
    ASSERT_EQ(edges.edges().size(), 4u);
    EXPECT_EQ(edges.edges()[1].cycle, 600u);
    EXPECT_EQ(edges.edges()[2].cycle, 2000u);
    EXPECT_EQ(edges.edges()[3].cycle, 2050u);
}
