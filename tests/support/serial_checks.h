// Checks of the software serial statements in the simulator, shared by the
// execution tests (4 and 20 MHz) and the crystal sweep: RSOUT and SEROUT
// send bytes that a UartReceiver on the pin decodes and times, RSIN and
// SERIN receive bytes that a UartTransmitter sends. A failing byte is
// reported with its value, the link and the crystal.
#pragma once

#include <string>
#include <vector>

namespace zorvel::test {

// One direction of a link: the statement, its rate and framing.
struct SerialLink {
    enum class Kind { Rsout, Serout, Rsin, Serin };
    Kind kind = Kind::Rsout;
    int mhz = 4;
    int baud = 9600; // RSIN/RSOUT: SERIAL_BAUD; SERIN/SEROUT: mode code 1000000 / baud - 20
    bool inverted = false;
    bool sevenEven = false; // SERIN/SEROUT: 7 data bits and even parity
    bool openDrive = false; // SEROUT

    int modeWord() const;     // SERIN/SEROUT
    std::string name() const; // "SEROUT 9600 inverted 7E1 at 4 MHz"
    double bitCycles() const; // the wanted bit time: 1 / baud
    int valueCount() const;   // 256, or 128 with 7E1
};

struct SendFigures {
    int bytes = 0;         // sent and decoded exactly
    double worstError = 0; // the largest bit-time error in %, with its sign
};

// RSOUT or SEROUT sends every value (0..255, 0..127 with 7E1) in a loop;
// each must arrive exactly, without framing or parity error, with its bit
// time within 2 % of 1 / baud.
SendFigures checkSend(const SerialLink& link);

// RSIN or SERIN receives every value from a transmitter at the exact rate,
// each sent once the statement waits (at a phase that varies from byte to
// byte); 7E1 returns the 7 data bits with PP4 bit 0 clear. Returns the
// number received correctly.
int checkReceive(const SerialLink& link, const std::vector<int>& values);

// The values 0 .. count - 1.
std::vector<int> allValues(int count);

// The standard rates 300 .. 57600 that the link's statement times at its
// crystal (serialModeProblem / serialBaudProblem say nothing).
std::vector<int> allowedRates(SerialLink::Kind kind, int mhz);

} // namespace zorvel::test
