#include "support/delay_timing.h"

#include "support/exec_support.h"

#include <algorithm>
#include <cmath>

namespace zorvel::test {
namespace {

// The 16F84 has 1K words of program memory; a statement takes at most six.
constexpr size_t kStatementsPerProgram = 150;

std::string header(int mhz) {
    return "DEVICE 16F84\nDECLARE XTAL " + std::to_string(mhz) +
           "\nDIM BV AS BYTE\nDIM DUR AS WORD\n";
}

// Long enough for the longest delay measured (1000 ms at 20 MHz) and more.
constexpr uint64_t kRunLimit = 20'000'000;

void measureChunk(int mhz, const std::vector<std::string>& statements,
                  const std::vector<double>& micros, size_t first, size_t count,
                  std::vector<DelayMeasurement>& out, std::string& failure) {
    std::string source = header(mhz);
    for (size_t i = 0; i < count; ++i)
        source += "T" + std::to_string(i) + ":\n" + statements[first + i] + "\n";
    source += "T" + std::to_string(count) + ":\nEND\n";
    SimProgram p(source, mhz);
    if (!p.ok()) {
        failure = p.failure();
        return;
    }
    if (!p.runTo("T0", kRunLimit)) {
        failure = "did not reach T0\n" + source;
        return;
    }
    for (size_t i = 0; i < count; ++i) {
        uint64_t start = p.pic().cycles();
        if (!p.runTo("T" + std::to_string(i + 1), kRunLimit)) {
            failure = "did not finish " + statements[first + i] + "\n" + source;
            return;
        }
        out.push_back({statements[first + i], 0, cyclesFor(micros[first + i], mhz),
                       static_cast<int64_t>(p.pic().cycles() - start)});
    }
}

} // namespace

double allowedError(double requestedCycles) {
    return std::max(0.01 * requestedCycles, 2.0);
}

bool withinTolerance(const DelayMeasurement& m) {
    return m.cycles >= 0 && std::abs(static_cast<double>(m.cycles) - m.requestedCycles) <=
                                allowedError(m.requestedCycles) + 1e-9;
}

double cyclesFor(double micros, int mhz) {
    return micros * mhz / 4.0;
}

DelayStatements constantDelayStatements() {
    DelayStatements out;
    for (int ms : {1, 100, 1000})
        out.statements.push_back("DELAYMS " + std::to_string(ms)),
            out.micros.push_back(ms * 1000.0);
    for (int us = 1; us <= 1000; ++us)
        out.statements.push_back("DELAYUS " + std::to_string(us)), out.micros.push_back(us);
    return out;
}

std::vector<DelayMeasurement> measureStatements(int mhz, const std::vector<std::string>& statements,
                                                const std::vector<double>& micros,
                                                std::string& failure) {
    std::vector<DelayMeasurement> out;
    for (size_t first = 0; first < statements.size() && failure.empty();
         first += kStatementsPerProgram) {
        size_t count = std::min(kStatementsPerProgram, statements.size() - first);
        measureChunk(mhz, statements, micros, first, count, out, failure);
    }
    return out;
}

std::vector<DelayMeasurement> measureVariable(int mhz, const std::string& keyword, bool word,
                                              const std::vector<int>& values, bool milliseconds,
                                              std::string& failure) {
    std::string variable = word ? "DUR" : "BV";
    std::string statement = keyword + " " + variable;
    std::string source = header(mhz) + "Top:\n" + statement + "\nDone:\n@ goto Top\nEND\n";
    std::vector<DelayMeasurement> out;
    SimProgram p(source, mhz);
    if (!p.ok()) {
        failure = p.failure();
        return out;
    }
    for (int value : values) {
        if (!p.runTo("Top", kRunLimit)) {
            failure = "did not reach Top\n" + source;
            return out;
        }
        if (word)
            p.setWord(variable, value);
        else
            p.setByte(variable, value);
        uint64_t start = p.pic().cycles();
        if (!p.runTo("Done", kRunLimit)) {
            failure = "did not finish " + statement + " = " + std::to_string(value) + "\n" + source;
            return out;
        }
        double micros = milliseconds ? value * 1000.0 : value;
        out.push_back({statement + " (" + variable + " = " + std::to_string(value) + ")", value,
                       cyclesFor(micros, mhz), static_cast<int64_t>(p.pic().cycles() - start)});
    }
    return out;
}

} // namespace zorvel::test
