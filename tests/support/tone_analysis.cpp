#include "support/tone_analysis.h"

#include "sim/pic16.h"
#include "support/exec_support.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

namespace zorvel::test {

std::vector<double> sampleLevel(bool initial, const std::vector<sim::Edge>& edges, uint64_t from,
                                uint64_t to, uint64_t interval) {
    std::vector<double> samples;
    bool level = initial;
    size_t next = 0;
    for (uint64_t t = from; t < to; t += interval) {
        while (next < edges.size() && edges[next].cycle <= t)
            level = edges[next++].level;
        samples.push_back(level ? 1.0 : 0.0);
    }
    return samples;
}

Spectrum::Spectrum(const std::vector<double>& samples, double sampleRate)
    : sampleRate_(sampleRate) {
    size_t n = samples.size();
    if (n < 2) return;
    double mean = 0;
    for (double s : samples)
        mean += s;
    mean /= static_cast<double>(n);
    double windowSum = 0;
    windowed_.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        double w = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) /
                                        static_cast<double>(n - 1));
        windowSum += w;
        windowed_.push_back((samples[i] - mean) * w);
    }
    scale_ = windowSum / 2;
}

double Spectrum::power(double frequency) const {
    double coefficient = 2 * std::cos(2 * std::numbers::pi * frequency / sampleRate_);
    double s1 = 0, s2 = 0;
    for (double x : windowed_) {
        double s0 = x + coefficient * s1 - s2;
        s2 = s1;
        s1 = s0;
    }
    double p = s1 * s1 + s2 * s2 - coefficient * s1 * s2;
    return p / (scale_ * scale_);
}

double Spectrum::strongest(double lo, double hi) const {
    // A Hann window's main lobe is 2 / T either side of a tone: steps of at
    // most a quarter of that cannot step over it.
    double seconds = static_cast<double>(windowed_.size()) / sampleRate_;
    double widest = 0.5 / std::max(seconds, 1e-3);
    double best = lo, bestPower = -1;
    for (double f = lo; f <= hi; f += std::min(0.004 * f, widest)) {
        double p = power(f);
        if (p > bestPower) best = f, bestPower = p;
    }
    double centre = best, step = std::min(0.0002 * centre, widest / 10);
    for (double f = centre - 30 * step; f <= centre + 30 * step; f += step) {
        double p = power(f);
        if (p > bestPower) best = f, bestPower = p;
    }
    return best;
}

std::vector<Burst> findBursts(const std::vector<sim::Edge>& edges, uint64_t gap) {
    std::vector<Burst> bursts;
    for (const sim::Edge& e : edges) {
        if (bursts.empty() || e.cycle - bursts.back().last > gap)
            bursts.push_back({e.cycle, e.cycle});
        else
            bursts.back().last = e.cycle;
    }
    return bursts;
}

const double kDtmfRows[4] = {697, 770, 852, 941};
const double kDtmfColumns[4] = {1209, 1336, 1477, 1633};

char dtmfDigit(int row, int column) {
    static const char* const keys[4] = {"123A", "456B", "789C", "*0#D"};
    return keys[row][column];
}

DtmfReading decodeDtmf(const Spectrum& spectrum) {
    double rows[4], columns[4];
    for (int i = 0; i < 4; ++i) {
        rows[i] = spectrum.power(kDtmfRows[i]);
        columns[i] = spectrum.power(kDtmfColumns[i]);
    }
    int row = static_cast<int>(std::max_element(rows, rows + 4) - rows);
    int column = static_cast<int>(std::max_element(columns, columns + 4) - columns);
    double other = 0;
    for (int i = 0; i < 4; ++i) {
        if (i != row) other = std::max(other, rows[i]);
        if (i != column) other = std::max(other, columns[i]);
    }
    double weaker = std::min(rows[row], columns[column]);
    return {dtmfDigit(row, column), other > 0 ? weaker / other : 1e30};
}

namespace {

// PORTB and TRISB of the 16F877; the probed pin is bit 1.
constexpr uint16_t kPortB = 0x06, kTrisB = 0x86, kStatus = 0x03;
constexpr int kPinMask = 2;

// Long enough for several seconds of tones at 20 MHz.
constexpr uint64_t kStatementLimit = 200'000'000;

} // namespace

std::vector<ToneRun> runToneStatements(int mhz, const std::vector<std::string>& declarations,
                                       const std::vector<std::string>& statements,
                                       std::string& failure) {
    std::string source = "DEVICE 16F877\nDECLARE XTAL " + std::to_string(mhz) + "\n";
    for (const std::string& d : declarations)
        source += d + "\n";
    for (size_t i = 0; i < statements.size(); ++i)
        source += "T" + std::to_string(i) + ":\n" + statements[i] + "\n";
    source += "T" + std::to_string(statements.size()) + ":\nEND\n";
    std::vector<ToneRun> runs;
    SimProgram p(source, mhz);
    if (!p.ok()) {
        failure = p.failure();
        return runs;
    }
    auto probe = std::make_unique<sim::LogicProbe>("RB1");
    sim::LogicProbe& edges = *probe;
    p.pic().attach(std::move(probe));
    if (!p.runTo("T0", kStatementLimit)) {
        failure = "did not reach T0\n" + source;
        return runs;
    }
    size_t seen = 0;
    for (size_t i = 0; i < statements.size(); ++i) {
        ToneRun run;
        run.statement = statements[i];
        run.start = p.pic().cycles();
        run.initial = (p.pic().peek(kPortB) & kPinMask) != 0;
        if (!p.runTo("T" + std::to_string(i + 1), kStatementLimit)) {
            failure = "did not finish " + statements[i] + " at " + std::to_string(mhz) + " MHz\n" +
                      source;
            return runs;
        }
        run.end = p.pic().cycles();
        run.edges.assign(edges.edges().begin() + static_cast<long>(seen), edges.edges().end());
        seen = edges.edges().size();
        run.outputAfter = (p.pic().peek(kTrisB) & kPinMask) == 0;
        run.lowAfter = (p.pic().peek(kPortB) & kPinMask) == 0;
        run.timeOutBitAfter = (p.pic().peek(kStatus) & 0x10) != 0;
        runs.push_back(std::move(run));
    }
    return runs;
}

double cyclesOfMs(double ms, int mhz) {
    return ms * 1000.0 * mhz / 4.0;
}

uint64_t sampleInterval(int mhz) {
    return static_cast<uint64_t>(mhz) * 10 / 4;
}

} // namespace zorvel::test
