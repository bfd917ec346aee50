// The software serial statements in the simulator at 4 and 20 MHz: RSOUT and
// SEROUT (true, inverted, 7E1, open drive) decoded and timed by a
// UartReceiver, RSIN and SERIN fed by a UartTransmitter, and the options
// around them: paces, WAIT, STR, timeouts, the parity label and both flow
// pins. tests/exec/sweep/serial_sweep_test.cpp runs every byte at every
// standard rate of all six crystals.
#include "sim/parts/logic_probe.h"
#include "sim/parts/pulse_source.h"
#include "sim/parts/uart_receiver.h"
#include "sim/parts/uart_transmitter.h"
#include "support/exec_support.h"
#include "support/serial_checks.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>

namespace zorvel::test {
namespace {

using Kind = SerialLink::Kind;

template <class P, class... Args>
P& attach(SimProgram& p, Args&&... args) {
    auto part = std::make_unique<P>(std::forward<Args>(args)...);
    P& ref = *part;
    p.pic().attach(std::move(part));
    return ref;
}

void runCycles(SimProgram& p, uint64_t cycles) {
    uint64_t end = p.pic().cycles() + cycles;
    while (p.pic().cycles() < end)
        p.pic().run(end - p.pic().cycles());
}

std::string program(int mhz, const std::string& body) {
    return "DEVICE 16F877\nDECLARE XTAL " + std::to_string(mhz) +
           "\nDIM B AS BYTE\nDIM C AS BYTE\nDIM W1 AS WORD\nDIM A[4]\n" + body + "END\n";
}

// Cycles in `ms` milliseconds at `mhz`.
double msCycles(double ms, int mhz) {
    return ms * 1000.0 * mhz / 4.0;
}

class SerialStatements : public testing::TestWithParam<int> {
protected:
    int mhz() const { return GetParam(); }
    // 9600 baud at 4 MHz, 19200 at 20 MHz.
    int baud() const { return mhz() == 4 ? 9600 : 19200; }
    int code() const { return 1000000 / baud() - 20; }
    double bit() const { return mhz() * 1e6 / 4.0 / baud(); }
    std::unique_ptr<SimProgram> build(const std::string& body) {
        auto p = std::make_unique<SimProgram>(program(mhz(), body), mhz());
        EXPECT_TRUE(p->ok()) << p->failure();
        return p->ok() ? std::move(p) : nullptr;
    }
};

// Every byte arrives exactly, each bit within 2 % of 1 / baud; the first
// character after reset too (the line idles at its mark level before the
// pin becomes an output).
TEST_P(SerialStatements, RsoutAndSeroutSendEveryByte) {
    const bool kInverted[] = {false, true};
    for (bool inverted : kInverted) {
        for (Kind kind : {Kind::Rsout, Kind::Serout}) {
            SerialLink link{kind, mhz(), baud(), inverted};
            SendFigures f = checkSend(link);
            std::printf("%s: %d bytes exact, worst bit error %+.2f %%\n", link.name().c_str(),
                        f.bytes, f.worstError);
        }
        for (SerialLink link : {SerialLink{Kind::Serout, mhz(), baud(), inverted, true},
                                SerialLink{Kind::Serout, mhz(), baud(), inverted, false, true}}) {
            SendFigures f = checkSend(link);
            std::printf("%s: %d bytes exact, worst bit error %+.2f %%\n", link.name().c_str(),
                        f.bytes, f.worstError);
        }
    }
}

TEST_P(SerialStatements, RsinAndSerinReceiveEveryByte) {
    for (bool inverted : {false, true}) {
        for (SerialLink link : {SerialLink{Kind::Rsin, mhz(), baud(), inverted},
                                SerialLink{Kind::Serin, mhz(), baud(), inverted},
                                SerialLink{Kind::Serin, mhz(), baud(), inverted, true}}) {
            std::vector<int> values = allValues(link.valueCount());
            EXPECT_EQ(checkReceive(link, values), static_cast<int>(values.size())) << link.name();
        }
    }
}

// Start edges of consecutive characters: one frame, the pause and the
// routine's own cycles apart; the pause is the difference to no pause.
std::vector<uint64_t> starts(SimProgram& p, sim::UartReceiver& rx, int count, uint64_t limit) {
    std::vector<uint64_t> at;
    if (!p.runTo("Sent", limit)) ADD_FAILURE() << "Sent not reached";
    runCycles(p, 1000);
    for (const sim::UartByte& b : rx.bytes())
        at.push_back(b.startCycle);
    EXPECT_EQ(static_cast<int>(at.size()), count) << rx.text();
    return at;
}

TEST_P(SerialStatements, RsoutPaceAndSeroutPace) {
    struct Case {
        std::string declare, statement;
        double pauseCycles;
    };
    std::string rs = "DECLARE SERIAL_BAUD " + std::to_string(baud()) +
                     "\nDECLARE RSOUT_PIN PORTB.0\nDECLARE RSOUT_MODE INVERTED\n";
    std::string sero = "SEROUT PORTB.0, " + std::to_string(code() + 16384);
    const Case cases[] = {
        {rs, "RSOUT \"AB\"", 0},
        {rs + "DECLARE RSOUT_PACE 300\n", "RSOUT \"AB\"", 300.0 * mhz() / 4},
        {rs + "DECLARE RSOUT_PACE 2500\n", "RSOUT \"AB\"", 2500.0 * mhz() / 4},
        {"", sero + ", [\"AB\"]", 0},
        {"", sero + ", 3, [\"AB\"]", msCycles(3, mhz())},
        {"", sero + ", 270, [\"AB\"]", msCycles(270, mhz())},
    };
    double base = 0;
    for (const Case& k : cases) {
        std::unique_ptr<SimProgram> built = build(k.declare + k.statement + "\nSent:\n");
        if (!built) continue;
        SimProgram& p = *built;
        auto& rx = attach<sim::UartReceiver>(p, "PORTB.0", baud(), true);
        std::vector<uint64_t> at =
            starts(p, rx, 2, static_cast<uint64_t>(bit() * 40 + k.pauseCycles * 2) + 10000);
        if (at.size() != 2 || rx.text() != "AB") continue;
        double gap = static_cast<double>(at[1] - at[0]);
        if (k.pauseCycles == 0) {
            base = gap;
            EXPECT_LT(gap, 10 * bit() + 120) << k.statement << ": " << gap << " cycles";
            continue;
        }
        double pause = gap - base;
        EXPECT_NEAR(pause, k.pauseCycles, 0.01 * k.pauseCycles + 4)
            << k.declare << k.statement << ": a pause of " << pause << " cycles";
        std::printf("%s%s: pause %.0f cycles for %.0f\n", k.declare.empty() ? "" : "RSOUT_PACE, ",
                    k.statement.c_str(), pause, k.pauseCycles);
    }
}

// The items travel through the number and string formatters into the
// sender, which keeps their registers; with sro@t in the program every
// character ends with the carry set.
TEST_P(SerialStatements, FormattersSendThroughTheSerialRoutines) {
    std::string mode = std::to_string(code());
    std::string items =
        "[\"<\", DEC W1, \" \", HEX2 B, \" \", BIN4 B, REP \"-\"\\3, STR A\\3, \">\"]";
    std::string setup = "W1 = 12345\nB = 171\nA[0] = \"x\"\nA[1] = \"y\"\nA[2] = \"z\"\n";
    std::string rs = "DECLARE SERIAL_BAUD " + std::to_string(baud()) +
                     "\nDECLARE RSOUT_PIN PORTB.0\nDECLARE RSOUT_MODE TRUE\n";
    std::string rsItems = items.substr(1, items.size() - 2);
    const std::string bodies[] = {
        setup + "SEROUT PORTB.0, " + mode + ", " + items + "\nSent:\n",
        setup + "SEROUT PORTB.0\\PORTB.2, " + mode + ", 50, Late, " + items +
            "\nSent:\nGOTO Sent\nLate:\nC = 1\n",
        rs + setup + "RSOUT " + rsItems + "\nSent:\n",
    };
    for (const std::string& body : bodies) {
        std::unique_ptr<SimProgram> built = build(body);
        if (!built) continue;
        SimProgram& p = *built;
        p.pic().pin("PORTB.0")->setExternal(true, 0);
        p.pic().pin("PORTB.2")->setExternal(false, 0); // flow: go
        auto& rx = attach<sim::UartReceiver>(p, "PORTB.0", baud());
        ASSERT_TRUE(p.runTo("Sent", static_cast<uint64_t>(bit() * 12 * 40) + 100000)) << body;
        runCycles(p, static_cast<uint64_t>(bit() * 2));
        EXPECT_EQ(rx.text(), "<12345 AB 1011---xyz>") << body;
        EXPECT_EQ(p.byte("C"), 0) << body;
    }
}

// WAIT finds its text after any wrong start: a wrong character is compared
// again with the start of the text, so "OOK" matches "OK" and "ABABAC"
// matches "ABAC"; the character after the match goes into B.
TEST_P(SerialStatements, WaitMatchesAcrossAWrongStart) {
    std::string rs = "DECLARE SERIAL_BAUD " + std::to_string(baud()) +
                     "\nDECLARE RSIN_PIN PORTB.1\nDECLARE RSIN_MODE TRUE\n";
    const std::string bodies[] = {
        "SERIN PORTB.1, " + std::to_string(code()) + ", [WAIT(\"OK\"), WAIT(\"ABAC\"), B]\nGot:\n",
        rs + "RSIN WAIT(\"OK\"), WAIT(\"ABAC\"), B\nGot:\n",
    };
    for (const std::string& body : bodies) {
        for (const char* text : {"OKABACa", "xOOKABABACb", "OxOKAABACc", "OOOKABAABACd"}) {
            std::unique_ptr<SimProgram> built = build(body);
            if (!built) continue;
            SimProgram& p = *built;
            auto& tx = attach<sim::UartTransmitter>(p, "PORTB.1", baud());
            runCycles(p, 200);
            tx.send(text);
            ASSERT_TRUE(p.runTo("Got", static_cast<uint64_t>(bit() * 150))) << body << text;
            EXPECT_EQ(p.byte("B"), text[std::string(text).size() - 1]) << body << " after " << text;
        }
    }
}

// STR A\3 takes three characters sent back to back.
TEST_P(SerialStatements, StrWithACount) {
    std::string rs = "DECLARE SERIAL_BAUD " + std::to_string(baud()) +
                     "\nDECLARE RSIN_PIN PORTB.1\nDECLARE RSIN_MODE TRUE\n";
    const std::string bodies[] = {
        "SERIN PORTB.1, " + std::to_string(code()) + ", [STR A\\3, B]\nGot:\n",
        rs + "RSIN STR A\\3, B\nGot:\n",
    };
    for (const std::string& body : bodies) {
        std::unique_ptr<SimProgram> built = build(body);
        if (!built) continue;
        SimProgram& p = *built;
        auto& tx = attach<sim::UartTransmitter>(p, "PORTB.1", baud());
        runCycles(p, 200);
        tx.send(std::string("\xff\x00Z!", 4));
        ASSERT_TRUE(p.runTo("Got", static_cast<uint64_t>(bit() * 50))) << body;
        EXPECT_EQ(p.byte("A"), 255) << body;
        int a = p.address("A");
        EXPECT_EQ(p.pic().peek(a + 1), 0) << body;
        EXPECT_EQ(p.pic().peek(a + 2), 'Z') << body;
        EXPECT_EQ(p.byte("B"), '!') << body;
    }
}

// Without a character the timed receives leave for their label after the
// timeout; RSIN_TIMEOUT and the SERIN timeout are milliseconds.
TEST_P(SerialStatements, ReceiveTimeoutsJumpToTheLabel) {
    struct Case {
        std::string body;
        double ms;
    };
    std::string rs = "DECLARE SERIAL_BAUD " + std::to_string(baud()) +
                     "\nDECLARE RSIN_PIN PORTB.1\nDECLARE RSIN_TIMEOUT ";
    std::string mode = std::to_string(code());
    const Case cases[] = {
        {rs + "7\nTop:\nRSIN {Tmo}, B\nGot:\nGOTO Got\nTmo:\n", 7},
        {rs + "150\nTop:\nB = RSIN, {Tmo}\nGot:\nGOTO Got\nTmo:\n", 150},
        {"Top:\nSERIN PORTB.1, " + mode + ", 9, Tmo, [B]\nGot:\nGOTO Got\nTmo:\n", 9},
        {"Top:\nSERIN PORTB.1\\PORTB.2, " + mode + ", 120, Tmo, [B]\nGot:\nGOTO Got\nTmo:\n", 120},
        {"Top:\nSERIN PORTB.1, " + mode + ", 0, Tmo, [B]\nGot:\nGOTO Got\nTmo:\n", 0},
    };
    for (const Case& k : cases) {
        std::unique_ptr<SimProgram> built = build(k.body);
        if (!built) continue;
        SimProgram& p = *built;
        p.pic().pin("PORTB.1")->setExternal(true, 0); // idle line
        ASSERT_TRUE(p.runTo("Top"));
        uint64_t start = p.pic().cycles();
        ASSERT_TRUE(p.runTo("Tmo", static_cast<uint64_t>(msCycles(k.ms, mhz()) * 1.1) + 1000))
            << k.body;
        double took = static_cast<double>(p.pic().cycles() - start);
        double want = msCycles(k.ms, mhz());
        EXPECT_NEAR(took, want, 0.02 * want + 80) << k.body << ": " << took << " cycles";
        std::printf("%.0f ms timeout: %.0f cycles for %.0f\n", k.ms, took, want);
    }
}

// A 7E1 character with the wrong parity bit takes the parity label; one
// with the right bit is stored.
TEST_P(SerialStatements, ParityLabelOnAParityError) {
    std::string body = "Top:\nSERIN PORTB.1, " + std::to_string(code() + 8192) +
                       ", Perr, [B]\nGot:\nGOTO Got\nPerr:\nC = 1\nGOTO Perr\n";
    for (bool wrong : {false, true}) {
        std::unique_ptr<SimProgram> built = build(body);
        if (!built) continue;
        SimProgram& p = *built;
        auto& tx =
            attach<sim::UartTransmitter>(p, "PORTB.1", baud(), false, sim::UartFormat::SevenEven);
        runCycles(p, 200);
        tx.send("W", 0, wrong);
        runCycles(p, static_cast<uint64_t>(bit() * 13));
        EXPECT_EQ(p.byte("C"), wrong ? 1 : 0) << (wrong ? "wrong" : "right") << " parity";
        if (!wrong) {
            EXPECT_EQ(p.byte("B"), 'W');
        }
    }
}

// SERIN with a flow pin holds it at its go level (true mode low, inverted
// high) while it waits and receives, and drives it back afterwards; the
// transmitter starts only on the go level.
TEST_P(SerialStatements, SerinHoldsTheFlowPinWhileReceiving) {
    for (bool inverted : {false, true}) {
        std::string mode = std::to_string(code() + (inverted ? 16384 : 0));
        std::unique_ptr<SimProgram> built =
            build("Top:\nSERIN PORTB.1\\PORTB.2, " + mode + ", [B]\nGot:\nGOTO Got\n");
        if (!built) continue;
        SimProgram& p = *built;
        // The flow line rests at its stop level until the device drives it.
        p.pic().pin("PORTB.2")->setExternal(!inverted, 0);
        auto part = std::make_unique<sim::UartTransmitter>("PORTB.1", baud(), inverted);
        part->setFlowPin("PORTB.2", inverted);
        sim::UartTransmitter& tx = *part;
        p.pic().attach(std::move(part));
        auto& flow = attach<sim::LogicProbe>(p, "PORTB.2");
        tx.send("f");
        ASSERT_TRUE(p.runTo("Got", static_cast<uint64_t>(bit() * 20))) << mode;
        EXPECT_EQ(p.byte("B"), 'f') << mode;
        runCycles(p, 100);
        // Go level before the start bit, the other level after the stop.
        const std::vector<sim::Edge>& e = flow.edges();
        ASSERT_GE(e.size(), 2u) << mode;
        const sim::Edge& go = e[e.size() - 2];
        const sim::Edge& back = e.back();
        EXPECT_EQ(go.level, inverted) << mode;
        EXPECT_EQ(back.level, !inverted) << mode;
        EXPECT_LE(go.cycle, tx.lastStart()) << mode;
        EXPECT_GE(static_cast<double>(back.cycle - tx.lastStart()), 8.5 * bit()) << mode;
    }
}

// SEROUT with a flow pin sends only once the pin is at its go level; with a
// timeout it gives up after that many milliseconds and sends nothing.
TEST_P(SerialStatements, SeroutWaitsForTheFlowPin) {
    for (bool inverted : {false, true}) {
        std::string mode = std::to_string(code() + (inverted ? 16384 : 0));
        std::unique_ptr<SimProgram> built =
            build("SEROUT PORTB.0\\PORTB.2, " + mode + ", [\"g\"]\nSent:\nGOTO Sent\n");
        if (!built) continue;
        SimProgram& p = *built;
        auto& gate = attach<sim::PulseSource>(p, "PORTB.2", !inverted);
        uint64_t open = static_cast<uint64_t>(msCycles(2, mhz()));
        gate.pulse(open, 1000000);
        auto& rx = attach<sim::UartReceiver>(p, "PORTB.0", baud(), inverted);
        ASSERT_TRUE(p.runTo("Sent", open + static_cast<uint64_t>(bit() * 12))) << mode;
        runCycles(p, static_cast<uint64_t>(bit()));
        ASSERT_EQ(rx.text(), "g") << mode;
        uint64_t start = rx.bytes()[0].startCycle;
        EXPECT_GE(start, open) << mode;
        EXPECT_LE(start, open + 60) << mode;

        std::unique_ptr<SimProgram> timed = build("Top:\nSEROUT PORTB.0\\PORTB.2, " + mode +
                                                  ", 25, Late, [\"h\"]\nSent:\nGOTO Sent\nLate:\n");
        if (!timed) continue;
        SimProgram& t = *timed;
        t.pic().pin("PORTB.2")->setExternal(!inverted, 0); // stop
        auto& none = attach<sim::UartReceiver>(t, "PORTB.0", baud(), inverted);
        ASSERT_TRUE(t.runTo("Top"));
        uint64_t top = t.pic().cycles();
        ASSERT_TRUE(t.runTo("Late", static_cast<uint64_t>(msCycles(30, mhz())))) << mode;
        double took = static_cast<double>(t.pic().cycles() - top);
        EXPECT_NEAR(took, msCycles(25, mhz()), 0.02 * msCycles(25, mhz())) << mode;
        EXPECT_TRUE(none.bytes().empty()) << mode;
    }
}

INSTANTIATE_TEST_SUITE_P(Crystals, SerialStatements, testing::Values(4, 20),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

} // namespace
} // namespace zorvel::test
