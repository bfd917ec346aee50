// Peripherals driven by programs assembled with gpasm and run on Pic16.
#include "fake_core.h"
#include "sim/hex_loader.h"
#include "sim/pic16.h"
#include "support/test_support.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

namespace zorvel::sim::test {
namespace {

// Assembles `body` for `device` ("16F877") and loads it into a new Pic16.
std::unique_ptr<Pic16> build(const std::string& device, double mhz, const std::string& body) {
    zorvel::test::TempDir dir;
    std::string lower = device;
    for (char& ch : lower)
        ch = char(std::tolower(static_cast<unsigned char>(ch)));
    auto asmFile = dir.write("prog.asm", "    list p=" + lower + "\n    #include <p" + lower +
                                             ".inc>\n    org 0\n" + body + "\n    end\n");
    std::string command = "cd " + dir.path().string() + " && gpasm -a inhx8m -i -w 2 -p p" + lower +
                          " prog.asm > gpasm.out 2>&1";
    if (std::system(command.c_str()) != 0) {
        std::ifstream out(dir.path() / "gpasm.out");
        ADD_FAILURE() << "gpasm failed: " << out.rdbuf();
        return nullptr;
    }
    std::string error;
    auto hex = readHex(dir.path() / "prog.hex", error);
    auto layout = loadDeviceLayout(std::string(ZORVEL_SOURCE_DATA) + "/inc", device, error);
    if (!hex || !layout) {
        ADD_FAILURE() << error;
        return nullptr;
    }
    auto pic = std::make_unique<Pic16>(*layout, mhz);
    pic->load(*hex);
    return pic;
}

const char* eepromWrite84 = R"(
    bcf STATUS,RP0
    movlw 5
    movwf EEADR
    movlw 0x3C
    movwf EEDATA
    bsf STATUS,RP0
    bsf EECON1,WREN
    movlw 0x55
    movwf EECON2
    movlw 0xAA
    movwf EECON2
    bsf EECON1,WR
wait
    btfsc EECON1,WR
    goto wait
    bcf EECON1,WREN
    bcf STATUS,RP0
    clrf EEDATA
    bsf STATUS,RP0
    bsf EECON1,RD
    bcf STATUS,RP0
    movf EEDATA,W
    movwf 0x20
done
    goto done
)";

const char* eepromWrite877 = R"(
    banksel EEADR
    movlw 5
    movwf EEADR
    movlw 0x3C
    movwf EEDATA
    banksel EECON1
    bcf EECON1,EEPGD
    bsf EECON1,WREN
    movlw 0x55
    movwf EECON2
    movlw 0xAA
    movwf EECON2
    bsf EECON1,WR
wait
    btfsc EECON1,WR
    goto wait
    bcf EECON1,WREN
    banksel EEDATA
    clrf EEDATA
    banksel EECON1
    bsf EECON1,RD
    banksel EEDATA
    movf EEDATA,W
    movwf 0x70
done
    goto done
)";

struct EepromProgram {
    const char* device;
    double mhz;
    const char* source;
    int result; // RAM address of the byte read back
    uint64_t writeCycles;
};

class EndToEndEeprom : public ::testing::TestWithParam<EepromProgram> {};

TEST_P(EndToEndEeprom, WritesThenReadsBack) {
    const EepromProgram& c = GetParam();
    auto pic = build(c.device, c.mhz, c.source);
    ASSERT_TRUE(pic);
    int eecon1 = pic->address("EECON1");
    ASSERT_EQ(pic->runUntil([&] { return pic->peek(eecon1) & 2; }, 1000), StopReason::Condition);
    uint64_t start = pic->cycles();
    ASSERT_EQ(pic->runUntil([&] { return !(pic->peek(eecon1) & 2); }, 200000),
              StopReason::Condition);
    uint64_t took = pic->cycles() - start;
    EXPECT_GE(took + 2, c.writeCycles);
    EXPECT_LE(took, c.writeCycles + 3);
    pic->run(100);
    EXPECT_EQ(pic->peek(c.result), 0x3C);
}

INSTANTIATE_TEST_SUITE_P(Devices, EndToEndEeprom,
                         ::testing::Values(EepromProgram{"16F84", 4.0, eepromWrite84, 0x20, 10000},
                                           EepromProgram{"16F84A", 4.0, eepromWrite84, 0x20, 4000},
                                           EepromProgram{"16F877", 4.0, eepromWrite877, 0x70, 4000},
                                           EepromProgram{"16F877", 20.0, eepromWrite877, 0x70,
                                                         20000}));

// Runs `cycles` cycles and returns every edge of `pin` with its cycle.
std::vector<std::pair<uint64_t, bool>> recordPin(Pic16& pic, const char* pin, uint64_t cycles) {
    EdgeRecorder edges;
    pic.pin(pin)->addListener(&edges);
    pic.run(cycles);
    pic.pin(pin)->removeListener(&edges);
    return edges.edges;
}

// Runs 1000 cycles and checks the PWM on RC2: rising edges `period` cycles
// apart, each followed by a falling edge `high` cycles later. Returns the
// number of rising edges.
size_t expectPwmOnRc2(Pic16& pic, uint64_t period, uint64_t high) {
    std::vector<uint64_t> rises, falls;
    for (auto [at, level] : recordPin(pic, "RC2", 1000))
        (level ? rises : falls).push_back(at);
    EXPECT_GE(rises.size(), 5u);
    for (size_t i = 1; i < rises.size(); ++i)
        EXPECT_EQ(rises[i] - rises[i - 1], period);
    for (uint64_t rise : rises) {
        auto fall = std::lower_bound(falls.begin(), falls.end(), rise);
        if (fall == falls.end()) continue;
        EXPECT_EQ(*fall - rise, high);
    }
    return rises.size();
}

TEST(EndToEnd, AdcReadsInjectedVoltage) {
    auto pic = build("16F877", 4.0, R"(
    banksel ADCON1
    movlw 0x80
    movwf ADCON1
    banksel ADCON0
    movlw 0x49
    movwf ADCON0
    nop
    nop
    bsf ADCON0,GO
wait
    btfsc ADCON0,GO
    goto wait
    movf ADRESH,W
    movwf 0x70
    banksel ADRESL
    movf ADRESL,W
    movwf 0x71
done
    goto done
)");
    ASSERT_TRUE(pic);
    pic->pin("RA1")->setVoltage(3.3); // AN1: 675 = 0x2A3
    pic->run(200);
    EXPECT_EQ(pic->peek(0x70), 0x02);
    EXPECT_EQ(pic->peek(0x71), 0xA3);
}

TEST(EndToEnd, PwmPeriodAndDutyOnRc2) {
    auto pic = build("16F877", 4.0, R"(
    banksel TRISC
    bcf TRISC,2
    movlw D'99'
    movwf PR2
    banksel CCPR1L
    movlw D'25'
    movwf CCPR1L
    movlw 0x2C
    movwf CCP1CON
    movlw 0x04
    movwf T2CON
done
    goto done
)");
    ASSERT_TRUE(pic);
    // Duty 25 * 4 + 2 = 102 Tosc = 25.5 cycles, rounded to 26.
    expectPwmOnRc2(*pic, 100, 26);
}

TEST(EndToEnd, UsartSendsHi) {
    auto pic = build("16F877", 4.0, R"(
    banksel SPBRG
    movlw D'25'
    movwf SPBRG
    movlw 0x24
    movwf TXSTA
    banksel RCSTA
    movlw 0x80
    movwf RCSTA
    movlw 'H'
    call send
    movlw 'i'
    call send
done
    goto done
send
    btfss PIR1,TXIF
    goto send
    movwf TXREG
    return
)");
    ASSERT_TRUE(pic);
    EXPECT_EQ(decode(recordPin(*pic, "RC6", 104 * 25), 104), "Hi");
}

TEST(EndToEnd, UsartReceivesAByte) {
    auto pic = build("16F877", 20.0, R"(
    banksel SPBRG
    movlw D'129'
    movwf SPBRG
    movlw 0x04
    movwf TXSTA
    banksel RCSTA
    movlw 0x90
    movwf RCSTA
wait
    btfss PIR1,RCIF
    goto wait
    movf RCREG,W
    movwf 0x70
done
    goto done
)");
    ASSERT_TRUE(pic);
    Pin* rx = pic->pin("RC7");
    rx->setExternal(true, pic->cycles());
    uint64_t start = pic->cycles() + 100;
    uint8_t value = 0xC9;
    for (int i = 0; i < 10; ++i) {
        bool level = i == 0 ? false : i == 9 ? true : bool((value >> (i - 1)) & 1);
        pic->scheduler().schedule(start + 520 * uint64_t(i),
                                  [rx, level](uint64_t at) { rx->setExternal(level, at); });
    }
    pic->run(100 + 520 * 12);
    EXPECT_EQ(pic->peek(0x70), 0xC9);
    EXPECT_FALSE(pic->peek("PIR1") & 0x20);
}

// EEPROM data from the HEX file (DE at 0x2100) is what the program reads back.
TEST(EndToEnd, HexEepromDataReadsBackOn16F84) {
    auto pic = build("16F84", 4.0, R"(
    bcf STATUS,RP0
    movlw 1
    movwf EEADR
    bsf STATUS,RP0
    bsf EECON1,RD
    bcf STATUS,RP0
    movf EEDATA,W
    movwf 0x20
done
    goto done
    org 0x2100
    de 0x12, 0x34, 0x56
)");
    ASSERT_TRUE(pic);
    pic->run(100);
    EXPECT_EQ(pic->peek(0x20), 0x34);
    EXPECT_EQ(pic->eepromByte(0), 0x12);
    EXPECT_EQ(pic->eepromByte(2), 0x56);
    EXPECT_EQ(pic->eepromByte(3), 0xFF);
}

TEST(EndToEnd, HexEepromDataReadsBackOn16F877) {
    auto pic = build("16F877", 4.0, R"(
    banksel EEADR
    movlw 2
    movwf EEADR
    banksel EECON1
    bcf EECON1,EEPGD
    bsf EECON1,RD
    banksel EEDATA
    movf EEDATA,W
    banksel 0x20
    movwf 0x20
done
    goto done
    org 0x2100
    de 0xA1, 0xB2, 0xC3
)");
    ASSERT_TRUE(pic);
    pic->run(100);
    EXPECT_EQ(pic->peek(0x20), 0xC3);
    EXPECT_EQ(pic->eepromByte(1), 0xB2);
}

// An EEPROM write with EEIE (INTCON<6> on the 16F84A) and GIE set vectors to
// 4 once EEIF (EECON1<4>) is set at the end of the write.
const char* eepromWriteInterrupt84A = R"(
    goto main
    org 4
    movlw 0xAA
    movwf 0x20
    bsf STATUS,RP0
    bcf EECON1,EEIF
    bcf STATUS,RP0
    retfie
main
    clrf 0x20
    movlw 0xC0
    movwf INTCON
    movlw 5
    movwf EEADR
    movlw 0x3C
    movwf EEDATA
    bsf STATUS,RP0
    bsf EECON1,WREN
    movlw 0x55
    movwf EECON2
    movlw 0xAA
    movwf EECON2
    bsf EECON1,WR
    bcf STATUS,RP0
done
    goto done
)";

TEST(EndToEnd, EepromWriteInterruptOn16F84A) {
    auto pic = build("16F84A", 4.0, eepromWriteInterrupt84A);
    ASSERT_TRUE(pic);
    pic->run(3900); // the write takes 4 ms = 4000 cycles
    EXPECT_EQ(pic->peek(0x20), 0x00);
    EXPECT_EQ(pic->eepromByte(5), 0xFF);
    pic->run(200);
    EXPECT_EQ(pic->eepromByte(5), 0x3C);
    EXPECT_EQ(pic->peek(0x20), 0xAA);
    EXPECT_EQ(pic->peek("INTCON") & 0x80, 0x80); // RETFIE set GIE again
}

TEST(EndToEnd, EepromWriteWakesA16F84AFromSleep) {
    auto pic = build("16F84A", 4.0, R"(
    clrf 0x20
    movlw 0x40
    movwf INTCON
    movlw 5
    movwf EEADR
    movlw 0x3C
    movwf EEDATA
    bsf STATUS,RP0
    bsf EECON1,WREN
    movlw 0x55
    movwf EECON2
    movlw 0xAA
    movwf EECON2
    bsf EECON1,WR
    bcf STATUS,RP0
    sleep
    incf 0x20,F
done
    goto done
)");
    ASSERT_TRUE(pic);
    pic->run(3900);
    EXPECT_TRUE(pic->sleeping());
    pic->run(200);
    EXPECT_FALSE(pic->sleeping());
    EXPECT_EQ(pic->peek(0x20), 1);
}

// PWM on RC2 while the program keeps writing the whole of PORTC.
TEST(EndToEnd, PwmKeepsRunningWhileTheProgramWritesPortc) {
    auto pic = build("16F877", 4.0, R"(
    banksel TRISC
    movlw 0xF0
    movwf TRISC
    movlw D'99'
    movwf PR2
    banksel CCPR1L
    movlw D'25'
    movwf CCPR1L
    movlw 0x2C
    movwf CCP1CON
    movlw 0x04
    movwf T2CON
loop
    movlw 0x0F
    movwf PORTC
    clrf PORTC
    bsf PORTC,2
    goto loop
)");
    ASSERT_TRUE(pic);
    EXPECT_LE(expectPwmOnRc2(*pic, 100, 26), 11u);
}

// The USART TX pin keeps its frames while the program toggles RC0.
TEST(EndToEnd, UsartFramesSurviveWritesToOtherPortcBits) {
    auto pic = build("16F877", 4.0, R"(
    banksel SPBRG
    movlw 0xC0
    movwf TRISC
    movlw D'25'
    movwf SPBRG
    movlw 0x24
    movwf TXSTA
    banksel RCSTA
    movlw 0x80
    movwf RCSTA
    movlw 'H'
    call send
    movlw 'i'
    call send
done
    movlw 1
    movwf PORTC
    clrf PORTC
    goto done
send
    movwf 0x20
wait
    movlw 1
    movwf PORTC
    clrf PORTC
    btfss PIR1,TXIF
    goto wait
    movf 0x20,W
    movwf TXREG
    return
)");
    ASSERT_TRUE(pic);
    EXPECT_EQ(decode(recordPin(*pic, "RC6", 104 * 25), 104), "Hi");
}

// Turning the transmitter off gives TX back to the port.
TEST(EndToEnd, UsartReleasesTxWhenTurnedOff) {
    auto pic = build("16F877", 4.0, R"(
    banksel TRISC
    movlw 0x80
    movwf TRISC
    movlw 0x24
    movwf TXSTA
    banksel RCSTA
    movlw 0x80
    movwf RCSTA
    clrf PORTC
    nop
    clrf RCSTA
done
    goto done
)");
    ASSERT_TRUE(pic);
    pic->run(12);
    EXPECT_TRUE(pic->pin("RC6")->level()); // the idle line, whatever the latch
    pic->run(20);
    EXPECT_FALSE(pic->pin("RC6")->level()); // the latch (0) again
    EXPECT_TRUE(pic->pin("RC6")->picDrives());
}

// peek("TMR2") shows the value a program read at the same cycle gives.
TEST(EndToEnd, PeekTmr2MatchesAProgramRead) {
    auto pic = build("16F877", 4.0, R"(
    banksel PR2
    movlw 0xC8
    movwf PR2
    banksel T2CON
    movlw 0x05
    movwf T2CON
loop
    nop
    nop
    movf TMR2,W
    goto loop
)");
    ASSERT_TRUE(pic);
    int readAt = -1;
    for (int a = 0; a < 20; ++a)
        if ((pic->programWord(a) & 0x3F00) == 0x0800 && (pic->programWord(a) & 0x7F) == 0x11)
            readAt = a;
    ASSERT_GE(readAt, 0);
    for (uint64_t n : {37u, 1000u, 4321u}) {
        pic->run(n);
        while (pic->pc() != readAt)
            pic->step();
        uint8_t peeked = pic->peek("TMR2");
        pic->step();
        EXPECT_EQ(peeked, pic->w()) << n;
    }
}

} // namespace
} // namespace zorvel::sim::test
