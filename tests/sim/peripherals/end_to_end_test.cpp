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
    EdgeRecorder edges;
    pic->pin("RC2")->addListener(&edges);
    pic->run(1000);
    pic->pin("RC2")->removeListener(&edges);
    std::vector<uint64_t> rises, falls;
    for (auto [at, level] : edges.edges)
        (level ? rises : falls).push_back(at);
    ASSERT_GE(rises.size(), 5u);
    for (size_t i = 1; i < rises.size(); ++i)
        EXPECT_EQ(rises[i] - rises[i - 1], 100u);
    // Duty 25 * 4 + 2 = 102 Tosc = 25.5 cycles, rounded to 26.
    for (uint64_t rise : rises) {
        auto fall = std::lower_bound(falls.begin(), falls.end(), rise);
        if (fall == falls.end()) continue;
        EXPECT_EQ(*fall - rise, 26u);
    }
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
    EdgeRecorder edges;
    pic->pin("RC6")->addListener(&edges);
    pic->run(104 * 25);
    pic->pin("RC6")->removeListener(&edges);
    EXPECT_EQ(decode(edges.edges, 104), "Hi");
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

} // namespace
} // namespace zorvel::sim::test
