// Reading tones back from a pin: the level a probe saw, sampled at a fixed
// rate; Goertzel filters over the samples and the strongest frequency of a
// range; the bursts of a dial string and the digit each burst carries; and
// test programs that run tone statements one after another with the pin
// probed.
#pragma once

#include "sim/parts/logic_probe.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zorvel::test {

// The pin level at cycles from, from + interval, ... below to, as 0 and 1,
// from the level before the first edge and the edges in order.
std::vector<double> sampleLevel(bool initial, const std::vector<sim::Edge>& edges, uint64_t from,
                                uint64_t to, uint64_t interval);

// Samples taken at `sampleRate` Hz with their mean taken off and a Hann
// window applied, ready for Goertzel filters.
class Spectrum {
public:
    Spectrum(const std::vector<double>& samples, double sampleRate);
    // The power at `frequency` from one Goertzel filter, scaled so that a
    // sine of amplitude A gives about A squared whatever the sample count.
    double power(double frequency) const;
    // The frequency between lo and hi of the largest power: a scan in steps
    // of 0.4 % (smaller where the window's main lobe is narrower), then
    // around the best in steps a twentieth of that.
    double strongest(double lo, double hi) const;

private:
    std::vector<double> windowed_;
    double sampleRate_;
    double scale_ = 1;
};

// A stretch of pin activity: from its first edge to its last.
struct Burst {
    uint64_t first = 0;
    uint64_t last = 0;
};

// The edges grouped into bursts separated by more than `gap` cycles.
std::vector<Burst> findBursts(const std::vector<sim::Edge>& edges, uint64_t gap);

// The telephone keypad: rows 697, 770, 852, 941 Hz, columns 1209, 1336,
// 1477, 1633 Hz; the digit of row r, column c ("123A", "456B", "789C",
// "*0#D").
extern const double kDtmfRows[4];
extern const double kDtmfColumns[4];
char dtmfDigit(int row, int column);

// What a decoder makes of one burst: the strongest row tone and column tone,
// and how far the weaker of those two stands above the strongest of the
// other six (a power ratio).
struct DtmfReading {
    char digit = '?';
    double margin = 0;
};
DtmfReading decodeDtmf(const Spectrum& spectrum);

// One tone statement's run: from its label to the next, the edges of the
// probed pin in between and the pin's state after it.
struct ToneRun {
    std::string statement;
    uint64_t start = 0;
    uint64_t end = 0;
    bool initial = false; // the level at the start
    std::vector<sim::Edge> edges;
    bool outputAfter = false;     // the pin's TRIS bit clear after the statement
    bool lowAfter = false;        // its latch low after the statement
    bool timeOutBitAfter = false; // STATUS.TO still set: no watchdog reset so far
};

// Compiles the statements as one 16F877 program at `mhz` (declarations
// first), each behind its own label, probes PORTB.1 and runs them in turn.
// On failure `failure` says why and the list ends early.
std::vector<ToneRun> runToneStatements(int mhz, const std::vector<std::string>& declarations,
                                       const std::vector<std::string>& statements,
                                       std::string& failure);

// Instruction cycles of `ms` milliseconds at `mhz`.
double cyclesOfMs(double ms, int mhz);

// Cycles between samples for a 100 kHz sample rate at `mhz` (4 MHz: 10).
uint64_t sampleInterval(int mhz);
constexpr double kSampleRate = 100000.0;

} // namespace zorvel::test
