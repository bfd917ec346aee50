// The formatters, strings, REP, CLS and the cursor routine in a SEROUT with
// a flow pin and a timeout: with the flow pin at its go level they send
// their text; with the receiver never ready they give up at the first
// character that times out instead of waiting out the timeout once per
// character.
#include "sim/parts/uart_receiver.h"
#include "support/exec_support.h"

#include <gtest/gtest.h>
#include <memory>

namespace zorvel::test {
namespace {

struct Item {
    std::string text;     // the SEROUT item
    std::string expected; // what it sends, X being 1234
};

TEST(OutputTimeouts, RoutinesStopAtTheFirstCharacterThatTimesOut) {
    const std::vector<Item> items = {
        {"BIN X", "10011010010"},
        {"BIN16 X", "0000010011010010"},
        {"DEC X", "1234"},
        {"DEC5 X", "01234"},
        {"@X", "1234"},
        {"HEX X", "4D2"},
        {"HEX4 X", "04D2"},
        {"STR A\\5", "hello"},
        {"REP \"-\"\\4", "----"},
        {"CLS", "\xFE\x01"},
        {"AT 2, 3", "\xFE\xC2"},
        {"\"ab\", DEC X", "ab1234"},
        // A variable row must not disturb the data pin SEROUT keeps in GEN.
        {"AT R, R, \"x\"", "\xFE\xC1x"},
    };
    const int timeoutMs = 5;
    std::string source = "DEVICE 16F877\nDECLARE XTAL 20\nDIM X AS WORD\nDIM A[6] AS BYTE\n"
                         "DIM R AS BYTE\nX = 1234\nSTR A = \"hello\"\nR = 2\n";
    for (size_t i = 0; i < items.size(); ++i)
        source += "S" + std::to_string(i) + ":\nSEROUT PORTC.6\\PORTC.5, 84, " +
                  std::to_string(timeoutMs) + ", T" + std::to_string(i) + ", [" + items[i].text +
                  "]\nT" + std::to_string(i) + ":\n";
    source += "GOTO S0\n";
    SimProgram p(source, 20);
    ASSERT_TRUE(p.ok()) << p.failure();
    auto part = std::make_unique<sim::UartReceiver>("PORTC.6", 9600);
    sim::UartReceiver& uart = *part;
    p.pic().attach(std::move(part));
    sim::Pin& flow = *p.pic().pin("PORTC.5");
    const uint64_t cyclesPerMs = 5000;
    for (bool ready : {true, false}) {
        flow.setExternal(!ready, p.pic().cycles()); // true mode: low is "go"
        for (size_t i = 0; i < items.size(); ++i) {
            std::string what = items[i].text + (ready ? ", receiver ready" : ", never ready");
            ASSERT_TRUE(p.runTo("S" + std::to_string(i), 50 * cyclesPerMs)) << what;
            size_t before = uart.bytes().size();
            uint64_t start = p.pic().cycles();
            ASSERT_TRUE(p.runTo("T" + std::to_string(i), 200 * cyclesPerMs)) << what;
            uint64_t took = p.pic().cycles() - start;
            if (ready) {
                // The last stop bit ends after the routine returns.
                p.runTo("S" + std::to_string((i + 1) % items.size()), 5 * cyclesPerMs);
                std::string sent;
                for (size_t b = before; b < uart.bytes().size(); ++b)
                    sent += static_cast<char>(uart.bytes()[b].value);
                EXPECT_EQ(sent, items[i].expected) << what;
            } else {
                EXPECT_EQ(uart.bytes().size(), before) << what;
                // One timeout, not one per character (at least two each).
                EXPECT_GE(took, timeoutMs * cyclesPerMs) << what;
                EXPECT_LT(took, timeoutMs * cyclesPerMs * 3 / 2) << what;
            }
        }
    }
}

} // namespace
} // namespace zorvel::test
