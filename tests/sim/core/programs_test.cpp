// Programs assembled with gpasm and run: banking, indirect addressing,
// computed jumps across pages, the stack, Timer0, the watchdog, SLEEP and
// interrupts. Expected values are worked out from the PIC16F877 data sheet.
#include "sim/core/sim_harness.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

const std::string kHeader = "    #include <p16f877.inc>\n"
                            "    __config _WDT_OFF & _XT_OSC & _LVP_OFF\n"
                            "    org 0\n";
const std::string kHeaderWdt = "    #include <p16f877.inc>\n"
                               "    __config _WDT_ON & _XT_OSC & _LVP_OFF\n"
                               "    org 0\n";

bool runToEnd(sim::Pic16& pic, uint64_t maxCycles = 1'000'000) {
    uint16_t last = 0xFFFF;
    pic.runUntil(
        [&] {
            bool stuck = pic.pc() == last;
            last = pic.pc();
            return stuck;
        },
        maxCycles);
    return pic.programWord(pic.pc()) == (0x2800 | (pic.pc() & 0x7FF));
}

TEST(Programs, BanksAndCommonRam) {
    auto pic = loadProgram(kHeader + R"(
    movlw 0x11
    movwf 0x20
    bsf STATUS,RP0
    movlw 0x22
    movwf 0x20      ; 0xA0
    bsf STATUS,RP1
    movlw 0x44
    movwf 0x20      ; 0x1A0
    movlw 0x55
    movwf 0x7F      ; 0x1FF = common 0x7F
    bcf STATUS,RP0
    movlw 0x33
    movwf 0x20      ; 0x120
    incf 0x7F,f     ; 0x17F = common 0x7F
    clrf STATUS
    goto $
    end
)");
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x20), 0x11);
    EXPECT_EQ(pic->peek(0xA0), 0x22);
    EXPECT_EQ(pic->peek(0x120), 0x33);
    EXPECT_EQ(pic->peek(0x1A0), 0x44);
    EXPECT_EQ(pic->peek(0x7F), 0x56);
    EXPECT_EQ(pic->peek(0xFF), 0x56);
}

TEST(Programs, IndirectAddressingAcrossIrp) {
    auto pic = loadProgram(kHeader + R"(
    bsf STATUS,IRP
    movlw 0x20
    movwf FSR
    movlw 0x66
    movwf INDF      ; 0x120
    movlw 0xA0
    movwf FSR
    movlw 0x77
    movwf INDF      ; 0x1A0
    bcf STATUS,IRP
    movlw 0x88
    movwf INDF      ; 0xA0
    clrf FSR
    movlw 0x99
    movwf INDF      ; INDF through INDF: nothing
    movf INDF,w     ; reads 0
    movwf 0x21
    goto $
    end
)");
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x120), 0x66);
    EXPECT_EQ(pic->peek(0x1A0), 0x77);
    EXPECT_EQ(pic->peek(0xA0), 0x88);
    EXPECT_EQ(pic->peek(0x20), 0x00);
    EXPECT_EQ(pic->peek(0x21), 0x00);
    EXPECT_EQ(pic->status() & 0x04, 0x04);
}

TEST(Programs, ComputedJumpAcrossA256WordPage) {
    auto pic = loadProgram(kHeader + R"(
    movlw HIGH (table+1+3)
    movwf PCLATH
    movlw 3
    call table
    movwf 0x20
    movlw HIGH (table+1+0)
    movwf PCLATH
    movlw 0
    call table
    movwf 0x21
    clrf PCLATH
    goto $
    org 0x2FE
table addwf PCL,f
    retlw 0xA0      ; 0x2FF
    retlw 0xA1      ; 0x300
    retlw 0xA2
    retlw 0xA3
    end
)");
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x20), 0xA3);
    EXPECT_EQ(pic->peek(0x21), 0xA0);
}

TEST(Programs, CallIntoAnotherPageThroughPclath) {
    auto pic = loadProgram(kHeader + R"(
    movlw HIGH far
    movwf PCLATH
    call far
    clrf PCLATH
    movwf 0x20
    goto $
    org 0x1A00
far retlw 0x5E
    end
)");
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x20), 0x5E);
}

// The stack is a circular buffer of eight entries: the ninth call overwrites
// the first return address (PIC16F877 data sheet, 2.3 Program Memory/Stack).
// gpsim 0.31 does not wrap: this program never reaches its end loop there.
TEST(Programs, StackWrapsOnTheNinthCall) {
    auto pic = loadProgram(kHeader + R"(
    cblock 0x20
    depth, marks
    endc
    call s1
    incf marks,f
    goto done
s1 call s2
    incf depth,f
    return
s2 call s3
    incf depth,f
    return
s3 call s4
    incf depth,f
    return
s4 call s5
    incf depth,f
    return
s5 call s6
    incf depth,f
    return
s6 call s7
    incf depth,f
    return
s7 call s8
    incf depth,f
    return
s8 call s9
    incf depth,f
    btfsc depth,3
    goto done
    return
s9 incf depth,f
    return
done goto done
    end
)");
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x20), 10);
    EXPECT_EQ(pic->peek(0x21), 0);
}

TEST(Programs, Timer0WithPrescaler256) {
    auto pic = loadProgram(kHeader + R"(
    bsf STATUS,RP0
    movlw b'11010111'
    movwf OPTION_REG
    bcf STATUS,RP0
    clrf TMR0       ; cycle 4: counting resumes from cycle 6
    goto $
    end
)");
    pic->run(1000);
    EXPECT_EQ(pic->cycles(), 1001u);
    EXPECT_EQ(pic->peek("TMR0"), (1001 - 6) / 256);
    pic->run(65541 - pic->cycles());
    EXPECT_EQ(pic->peek("TMR0"), 255);
    EXPECT_EQ(pic->peek("INTCON") & 0x04, 0);
    pic->run(4);
    EXPECT_EQ(pic->peek("INTCON") & 0x04, 0x04);
    EXPECT_EQ(pic->peek("TMR0"), 0);
}

TEST(Programs, Timer0WriteInhibitsTwoCycles) {
    auto pic = loadProgram(kHeader + R"(
    bsf STATUS,RP0
    movlw b'11011000' ; internal clock (T0CS is set after reset), TMR0 1:1
    movwf OPTION_REG
    bcf STATUS,RP0
    movlw 0x40
    movwf TMR0      ; cycle 5
    movf TMR0,w     ; cycle 6: 0x40
    movwf 0x20      ; cycle 7: 0x40 (inhibited)
    movf TMR0,w     ; cycle 8: 0x41
    movwf 0x21
    goto $
    end
)");
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x20), 0x40);
    EXPECT_EQ(pic->peek(0x21), 0x41);
}

TEST(Programs, WatchdogWakesFromSleep) {
    auto pic = loadProgram(kHeaderWdt + R"(
    bsf STATUS,RP0
    movlw b'11111000' ; the prescaler stays on the watchdog, 1:1 (after reset it is 1:128)
    movwf OPTION_REG
    bcf STATUS,RP0
    sleep           ; cycle 4; the watchdog restarts at cycle 5
    nop
    goto $
    end
)");
    pic->run(4);
    EXPECT_EQ(pic->step(), 1);
    EXPECT_TRUE(pic->sleeping());
    EXPECT_EQ(pic->status() & 0x18, 0x10); // TO set, PD clear
    pic->runUntil([&] { return pic->pc() == 6; }, 100000);
    EXPECT_EQ(pic->cycles(), 18006u); // 18 ms at 4 MHz, then the nop
    EXPECT_EQ(pic->status() & 0x18, 0x00);
}

TEST(Programs, WatchdogResetWithPostscaler) {
    auto pic = loadProgram(kHeaderWdt + R"(
    bsf STATUS,RP0
    movlw b'11111001'   ; PSA=1, 1:2
    movwf OPTION_REG
    bcf STATUS,RP0
    clrwdt              ; cycle 4: time-out at 5 + 36000
    incf 0x20,f
    goto $
    end
)");
    pic->run(36004);
    EXPECT_EQ(pic->peek(0x20), 1);
    EXPECT_EQ(pic->status() & 0x18, 0x18);
    pic->run(3); // the goto ends at 36006, the reset, then bsf STATUS,RP0 from address 0
    EXPECT_EQ(pic->status() & 0x18, 0x08); // TO clear after a watchdog reset
    EXPECT_EQ(pic->peek("OPTION_REG"), 0xFF);
    EXPECT_EQ(pic->pc(), 1);
    EXPECT_EQ(pic->peek(0x20), 1); // RAM is kept
}

const std::string kIntProgram = R"(
    goto start
    org 4
    incf 0x70,f
    bcf INTCON,INTF
    retfie
start
    bsf INTCON,INTE
    %GIE%
    sleep
    incf 0x71,f
    goto $
    end
)";

std::string withGie(bool gie) {
    std::string s = kIntProgram;
    s.replace(s.find("%GIE%"), 5, gie ? "bsf INTCON,GIE" : "nop");
    return kHeader + s;
}

TEST(Programs, Rb0EdgeWakesAndInterruptsAfterTheNextInstruction) {
    auto pic = loadProgram(withGie(true));
    pic->run(100, true);
    ASSERT_TRUE(pic->sleeping());
    pic->pin("RB0")->setExternal(true, pic->cycles()); // rising edge, INTEDG=1 after reset
    EXPECT_FALSE(pic->sleeping());
    pic->step(); // incf 0x71 runs first, then the vector
    EXPECT_EQ(pic->peek(0x71), 1);
    EXPECT_EQ(pic->pc(), 4);
    EXPECT_EQ(pic->peek("INTCON") & 0x80, 0);
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x70), 1);
    EXPECT_EQ(pic->peek("INTCON") & 0x82, 0x80);
}

TEST(Programs, Rb0EdgeWakesWithoutVectorWhenGieIsClear) {
    auto pic = loadProgram(withGie(false));
    pic->run(100, true);
    ASSERT_TRUE(pic->sleeping());
    pic->pin("PORTB.0")->setExternal(true, pic->cycles());
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x71), 1);
    EXPECT_EQ(pic->peek(0x70), 0);
    EXPECT_EQ(pic->status() & 0x18, 0x10); // PD clear from SLEEP, TO set
}

TEST(Programs, PortBChangeSetsRbifAgainstTheLastRead) {
    auto pic = loadProgram(kHeader + R"(
    movf PORTB,w
    goto $
    end
)");
    pic->run(10);
    EXPECT_EQ(pic->peek("INTCON") & 0x01, 0);
    pic->pin("RB5")->setExternal(true, pic->cycles());
    EXPECT_EQ(pic->peek("INTCON") & 0x01, 0x01);
    // RB3 has no change interrupt.
    pic->poke(0x0B, 0);
    pic->pin("RB3")->setExternal(true, pic->cycles());
    EXPECT_EQ(pic->peek("INTCON") & 0x01, 0);
}

TEST(Programs, PeripheralFlagNeedsPeie) {
    auto pic = loadProgram(kHeader + R"(
    goto start
    org 4
    incf 0x70,f
    goto $
start
    bsf STATUS,RP0
    bsf PIE1,TMR1IE
    bcf STATUS,RP0
    bsf INTCON,GIE
    bsf PIR1,TMR1IF
    nop
    nop
    bsf INTCON,PEIE
    nop
    goto $
    end
)");
    pic->runUntil([&] { return pic->pc() == 4; }, 1000);
    EXPECT_EQ(pic->pc(), 4);
    // Vectored after bsf INTCON,PEIE (address 0x0C), so the return address is 0x0D.
    pic->step();
    EXPECT_EQ(pic->peek(0x70), 1);
    EXPECT_EQ(pic->stackDepth(), 1);
}

TEST(Programs, WatchdogDefaultPeriodUses128AfterReset) {
    auto pic = loadProgram(kHeaderWdt + "    sleep\n    goto $\n    end\n");
    pic->runUntil([&] { return !pic->sleeping() && pic->cycles() > 1; }, 5'000'000);
    EXPECT_EQ(pic->cycles(), 1u + 18000u * 128u + 2u); // wake, then the goto
}

// At 100 Hz the nominal 18 ms rounds to no cycle at all; the period stays at
// least one cycle (128 with the postscaler after reset), so the run ends.
TEST(Programs, WatchdogOnAVerySlowClockStillLetsTheRunEnd) {
    sim::Pic16 pic(deviceLayout("16F877"), 0.0001);
    sim::HexData hex;
    hex.program[0] = 0x2800; // goto $
    hex.configWord = 0x3FFF; // watchdog on
    pic.load(hex);
    EXPECT_EQ(pic.run(1000), sim::StopReason::CycleLimit);
    EXPECT_EQ(pic.cycles(), 1000u);
    EXPECT_EQ(pic.status() & 0x10, 0x00); // TO clear: the watchdog has reset the device
}

TEST(Programs, ResetValues) {
    auto pic = loadProgram(kHeader + "    goto $\n    end\n");
    EXPECT_EQ(pic->status(), 0x18);
    EXPECT_EQ(pic->peek("OPTION_REG"), 0xFF);
    EXPECT_EQ(pic->peek("TRISA"), 0x3F);
    EXPECT_EQ(pic->peek("TRISB"), 0xFF);
    EXPECT_EQ(pic->peek("TRISE"), 0x07);
    EXPECT_EQ(pic->peek("PCLATH"), 0);
    EXPECT_EQ(pic->peek("INTCON"), 0);
    EXPECT_EQ(pic->pc(), 0);
    EXPECT_EQ(pic->peek(0x183), 0x18); // STATUS in every bank
    EXPECT_EQ(pic->peek(0x181), 0xFF); // OPTION_REG in bank 3
}

TEST(Ports, AnalogPinsReadZeroUntilAdcon1MakesThemDigital) {
    auto pic = loadProgram(kHeader + R"(
    movf PORTA,w
    movwf 0x20
    bsf STATUS,RP0
    movlw 0x06
    movwf ADCON1
    bcf STATUS,RP0
    movf PORTA,w
    movwf 0x21
    goto $
    end
)");
    pic->pin("RA0")->setExternal(true, 0);
    pic->pin("RA4")->setExternal(true, 0);
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x20), 0x10); // RA4 is digital only
    EXPECT_EQ(pic->peek(0x21), 0x11);
}

TEST(Ports, PullUpsOpenDrainAndOutputs) {
    auto pic = loadProgram(kHeader + R"(
    bsf STATUS,RP0
    bcf OPTION_REG,NOT_RBPU
    movlw 0xF0
    movwf TRISB
    bcf TRISA,4
    bcf STATUS,RP0
    movlw 0x05
    movwf PORTB
    bsf PORTA,4
    movf PORTB,w
    movwf 0x20
    goto $
    end
)");
    ASSERT_TRUE(runToEnd(*pic));
    EXPECT_EQ(pic->peek(0x20), 0xF5); // inputs pulled up, outputs 0101
    EXPECT_TRUE(pic->pin("RB0")->picDrives());
    EXPECT_FALSE(pic->pin("RA4")->level()); // open drain high floats
    EXPECT_FALSE(pic->pin("RA4")->picDrives());
    pic->pin("RB7")->setExternal(false, pic->cycles());
    EXPECT_EQ(pic->peek("PORTB"), 0x75);
}

TEST(MemoryMap, MirrorsOfOtherDevices) {
    {
        sim::Pic16 pic(deviceLayout("16F84A"));
        pic.poke(0x0C, 0x12);
        EXPECT_EQ(pic.peek(0x8C), 0x12); // bank 1 repeats bank 0
        EXPECT_EQ(pic.peek(0x50), 0x00);
        pic.poke(0x50, 0x34);
        EXPECT_EQ(pic.peek(0x50), 0x00); // unimplemented
    }
    {
        sim::Pic16 pic(deviceLayout("16F628A"));
        pic.poke(0x70, 0x56);
        EXPECT_EQ(pic.peek(0xF0), 0x56);
        EXPECT_EQ(pic.peek(0x170), 0x56);
        EXPECT_EQ(pic.peek(0x1F0), 0x56);
        pic.poke(0x1A0, 0x78);
        EXPECT_EQ(pic.peek(0x1A0), 0x00);
        EXPECT_EQ(pic.peek(0x181), 0xFF); // OPTION_REG
        EXPECT_EQ(pic.peek("CMCON"), 0x00);
    }
    {
        sim::Pic16 pic(deviceLayout("16F877"));
        pic.poke(0x8F, 0x9A);
        EXPECT_EQ(pic.peek(0x8F), 0x00);
        pic.poke(0x20, 1);
        EXPECT_EQ(pic.peek(0xA0), 0x00);
    }
}

TEST(Ports, ComparatorPinsOf16F628AStartAnalog) {
    sim::Pic16 pic(deviceLayout("16F628A"));
    pic.pin("RA0")->setExternal(true, 0);
    pic.pin("RA5")->setExternal(true, 0);
    EXPECT_EQ(pic.peek("PORTA"), 0x20);
    pic.poke(pic.address("CMCON"), 0x07);
    EXPECT_EQ(pic.peek("PORTA"), 0x21);
}

} // namespace
} // namespace zorvel::test
