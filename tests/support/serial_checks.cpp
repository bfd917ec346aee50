#include "support/serial_checks.h"

#include "compiler/library/serial_timing.h"
#include "sim/parts/uart_receiver.h"
#include "sim/parts/uart_transmitter.h"
#include "support/exec_support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>

namespace zorvel::test {
namespace {

using Kind = SerialLink::Kind;

bool isSerinOrSerout(const SerialLink& link) {
    return link.kind == Kind::Serin || link.kind == Kind::Serout;
}

// The program: the settings of RSIN/RSOUT (data on PORTB.0 out, PORTB.1 in)
// and the statement with B between the labels Top and Got.
std::string program(const SerialLink& link, const std::string& after) {
    std::string text = "DEVICE 16F877\nDECLARE XTAL " + std::to_string(link.mhz) + "\n";
    if (!isSerinOrSerout(link)) {
        std::string mode = link.inverted ? "INVERTED" : "TRUE";
        text += "DECLARE SERIAL_BAUD " + std::to_string(link.baud) + "\n";
        text += "DECLARE RSOUT_PIN PORTB.0\nDECLARE RSOUT_MODE " + mode + "\n";
        text += "DECLARE RSIN_PIN PORTB.1\nDECLARE RSIN_MODE " + mode + "\n";
    }
    text += "DIM B AS BYTE\nTop:\n";
    std::string mode = std::to_string(link.modeWord());
    switch (link.kind) {
    case Kind::Rsout: text += "RSOUT B\n"; break;
    case Kind::Serout: text += "SEROUT PORTB.0, " + mode + ", [B]\n"; break;
    case Kind::Rsin: text += "RSIN B\n"; break;
    case Kind::Serin: text += "SERIN PORTB.1, " + mode + ", [B]\n"; break;
    }
    return text + "Got:\n" + after + "END\n";
}

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

sim::UartFormat format(const SerialLink& link) {
    return link.sevenEven ? sim::UartFormat::SevenEven : sim::UartFormat::EightNone;
}

} // namespace

int SerialLink::modeWord() const {
    return (1000000 / baud - 20) | (sevenEven ? 8192 : 0) | (inverted ? 16384 : 0) |
           (openDrive ? 32768 : 0);
}

std::string SerialLink::name() const {
    static const char* const kNames[] = {"RSOUT", "SEROUT", "RSIN", "SERIN"};
    std::string text = kNames[static_cast<int>(kind)];
    text += " " + std::to_string(baud) + (inverted ? " inverted" : " true");
    if (sevenEven) text += " 7E1";
    if (openDrive) text += " open drive";
    if (isSerinOrSerout(*this)) text += " (mode " + std::to_string(modeWord()) + ")";
    return text + " at " + std::to_string(mhz) + " MHz";
}

double SerialLink::bitCycles() const {
    return mhz * 1e6 / 4.0 / baud;
}

int SerialLink::valueCount() const {
    return sevenEven ? 128 : 256;
}

std::vector<int> allValues(int count) {
    std::vector<int> values;
    for (int v = 0; v < count; ++v)
        values.push_back(v);
    return values;
}

std::vector<int> allowedRates(SerialLink::Kind kind, int mhz) {
    std::vector<int> rates;
    for (int baud : {300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600}) {
        bool fits = kind == Kind::Serin || kind == Kind::Serout
                        ? serialModeFits(mhz, 1000000 / baud - 20)
                        : rsBaudFits(mhz, baud);
        if (fits) rates.push_back(baud);
    }
    return rates;
}

SendFigures checkSend(const SerialLink& link) {
    SendFigures figures;
    int count = link.valueCount();
    std::string loop =
        "B = B + 1\nIF B <> " + std::to_string(count % 256) + " THEN GOTO Top\nDone:\nGOTO Done\n";
    SimProgram p(program(link, loop), link.mhz);
    if (!p.ok()) {
        ADD_FAILURE() << link.name() << ": " << p.failure();
        return figures;
    }
    // The line's idle level when nothing drives it (the receiver's bias):
    // true mode high, inverted low.
    p.pic().pin("PORTB.0")->setExternal(!link.inverted, 0);
    auto& rx = attach<sim::UartReceiver>(p, "PORTB.0", link.baud, link.inverted, format(link));
    double bit = link.bitCycles();
    if (!p.runTo("Done", static_cast<uint64_t>(bit * 14 * count) + 100000)) {
        ADD_FAILURE() << link.name() << ": the loop did not end; " << rx.bytes().size()
                      << " bytes arrived";
        return figures;
    }
    runCycles(p, static_cast<uint64_t>(bit * 2));
    const std::vector<sim::UartByte>& got = rx.bytes();
    if (got.size() != static_cast<size_t>(count))
        ADD_FAILURE() << link.name() << ": " << got.size() << " bytes arrived instead of " << count;
    for (size_t i = 0; i < got.size() && i < static_cast<size_t>(count); ++i) {
        const sim::UartByte& b = got[i];
        if (b.value != static_cast<int>(i) || b.framingError || b.parityError) {
            ADD_FAILURE() << link.name() << ": byte " << i << " arrived as " << int(b.value)
                          << (b.framingError ? " with a framing error" : "")
                          << (b.parityError ? " with a parity error" : "");
            continue;
        }
        double error = b.bitCycles > 0 ? (b.bitCycles - bit) / bit * 100 : 0;
        if (std::fabs(error) > 2.0)
            ADD_FAILURE() << link.name() << ": byte " << i << " bit time " << b.bitCycles
                          << " cycles instead of " << bit << " (" << error << " %)";
        else
            ++figures.bytes;
        if (std::fabs(error) > std::fabs(figures.worstError)) figures.worstError = error;
    }
    return figures;
}

int checkReceive(const SerialLink& link, const std::vector<int>& values) {
    SimProgram p(program(link, "GOTO Top\n"), link.mhz);
    if (!p.ok()) {
        ADD_FAILURE() << link.name() << ": " << p.failure();
        return 0;
    }
    auto& tx = attach<sim::UartTransmitter>(p, "PORTB.1", link.baud, link.inverted, format(link));
    int pp4 = p.compiled().compilation->symbols.find("PP4")->address;
    double bit = link.bitCycles();
    int received = 0;
    if (!p.runTo("Top")) {
        ADD_FAILURE() << link.name() << ": Top not reached";
        return 0;
    }
    for (size_t i = 0; i < values.size(); ++i) {
        int v = values[i];
        // The statement's loads and the routine's set-up come first; after
        // a character the stop bit ends while the next statement starts.
        runCycles(p, 60 + i % 23);
        tx.send(std::string(1, static_cast<char>(v)), p.pic().cycles() + i % 17);
        if (!p.runTo("Got", static_cast<uint64_t>(bit * 14) + 10000)) {
            ADD_FAILURE() << link.name() << ": byte " << v << " was not received";
            return received;
        }
        int want = link.sevenEven ? v & 127 : v;
        int got = p.byte("B");
        bool parity = link.kind == Kind::Serin && (p.pic().peek(pp4) & 1) != 0;
        if (got != want || parity)
            ADD_FAILURE() << link.name() << ": byte " << v << " received as " << got
                          << (parity ? " with the parity flag set" : "");
        else
            ++received;
        // The rest of the stop bit.
        runCycles(p, static_cast<uint64_t>(bit * 2));
    }
    return received;
}

} // namespace zorvel::test
