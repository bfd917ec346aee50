// Measures the delays that PAUSE, DELAYMS, PAUSEUS and DELAYUS compile to:
// each statement runs in the simulator between two labels, and the
// instruction cycles spent are compared with the requested time. Used by the
// execution tests and by bench/delay_accuracy.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zorvel::test {

// The crystals that have a microsecond delay routine.
inline constexpr int kDelayCrystals[] = {4, 8, 10, 12, 16, 20};

struct DelayMeasurement {
    std::string statement; // as compiled, with the variable's value when it has one
    int value = 0;         // the requested count (us, or ms for DELAYMS)
    double requestedCycles = 0;
    int64_t cycles = -1; // measured; -1 when the program did not build or run
};

// The difference allowed: 1 % of the requested time or 2 cycles, the larger.
double allowedError(double requestedCycles);
bool withinTolerance(const DelayMeasurement& m);

// Instruction cycles in `micros` microseconds at `mhz`.
double cyclesFor(double micros, int mhz);

// Statements with constant times and the time each requests in us.
struct DelayStatements {
    std::vector<std::string> statements;
    std::vector<double> micros;
};

// DELAYMS 1, 100 and 1000, then DELAYUS 1 to 1000.
DelayStatements constantDelayStatements();

// Each statement between its own pair of labels, split into programs that
// fit the 16F84's program memory (and its 1000 labels). `micros` gives each requested time.
// `failure` is set when a program does not build or a run does not finish.
std::vector<DelayMeasurement> measureStatements(int mhz, const std::vector<std::string>& statements,
                                                const std::vector<double>& micros,
                                                std::string& failure);

// One statement "keyword VARIABLE" run once per value, the variable (BYTE or
// WORD) set before each run; the requested time is the value in us, or in ms
// when `milliseconds`.
std::vector<DelayMeasurement> measureVariable(int mhz, const std::string& keyword, bool word,
                                              const std::vector<int>& values, bool milliseconds,
                                              std::string& failure);

} // namespace zorvel::test
