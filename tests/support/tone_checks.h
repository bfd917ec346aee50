// The checks of FREQOUT, SOUND and DTMFOUT read back from the pin, shared by
// the execution tests (4 and 20 MHz) and the crystal sweep (all six
// crystals). Each check runs its statements in one program and reports the
// worst errors it saw, so the sweep can print them.
#pragma once

#include "support/tone_analysis.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace zorvel::test {

// The largest deviations seen, as fractions (0.01 = 1 %), and the smallest
// DTMF margin (power ratio).
struct ToneFigures {
    double frequency = 0;
    double duration = 0;
    double dtmfOn = 0;
    double dtmfOff = 0;
    double dtmfMargin = 1e30;

    void add(const ToneFigures& other) {
        frequency = std::max(frequency, other.frequency);
        duration = std::max(duration, other.duration);
        dtmfOn = std::max(dtmfOn, other.dtmfOn);
        dtmfOff = std::max(dtmfOff, other.dtmfOff);
        dtmfMargin = std::min(dtmfMargin, other.dtmfMargin);
    }
    std::string text() const {
        std::ostringstream s;
        s << "frequency " << 100 * frequency << " %, duration " << 100 * duration << " %, DTMF on "
          << 100 * dtmfOn << " %, off " << 100 * dtmfOff << " %, DTMF margin " << dtmfMargin;
        return s.str();
    }
};

constexpr double kTolerance = 0.02;

inline double deviation(double measured, double wanted) {
    return std::abs(measured - wanted) / wanted;
}

// The spectrum of the pin from `from` to `to`, or of its middle 100 ms when
// that is longer (enough to tell tones apart; longer windows only cost time).
inline Spectrum spectrumOf(const ToneRun& run, int mhz, uint64_t from, uint64_t to) {
    uint64_t longest = static_cast<uint64_t>(cyclesOfMs(100, mhz));
    if (to - from > longest) {
        from += (to - from - longest) / 2;
        to = from + longest;
    }
    return Spectrum(sampleLevel(run.initial, run.edges, from, to, sampleInterval(mhz)),
                    kSampleRate);
}

// The spectrum of the tone: from the run's first edge to its last.
inline Spectrum toneSpectrum(const ToneRun& run, int mhz) {
    return spectrumOf(run, mhz, run.edges.front().cycle, run.edges.back().cycle);
}

// The edges a timed loop made: without a last falling edge less than one
// pass (or half period) before the end, which is the routine leaving the pin
// low after its loop rather than a pass of it.
inline std::vector<sim::Edge> passEdges(const ToneRun& run, uint64_t pass) {
    std::vector<sim::Edge> edges = run.edges;
    if (!edges.empty() && !edges.back().level && run.end - edges.back().cycle < pass)
        edges.pop_back();
    return edges;
}

// FREQOUT PORTB.1, ms, f1[, f2]; f2 = 0 leaves the second tone out.
struct FreqoutCase {
    int ms;
    int f1;
    int f2 = 0;
    std::string statement() const {
        return "FREQOUT PORTB.1, " + std::to_string(ms) + ", " + std::to_string(f1) +
               (f2 ? ", " + std::to_string(f2) : "");
    }
};

// The strongest frequency (of each half of the range around the two tones)
// within 2 %, its power 0.5 to 1.7 times that of the full amplitude (one
// tone) or of half of it (each of two tones), every edge on the grid of 100-cycle passes, the
// statement's time and the span of the tone within 2 % of the duration, the pin an output and low
// afterwards.
inline ToneFigures checkFreqout(int mhz, const std::vector<FreqoutCase>& cases) {
    ToneFigures figures;
    std::vector<std::string> statements;
    for (const FreqoutCase& k : cases)
        statements.push_back(k.statement());
    std::string failure;
    std::vector<ToneRun> runs = runToneStatements(mhz, {}, statements, failure);
    EXPECT_TRUE(failure.empty()) << failure;
    for (size_t i = 0; i < runs.size(); ++i) {
        const FreqoutCase& k = cases[i];
        const ToneRun& run = runs[i];
        std::string where = std::to_string(mhz) + " MHz: " + k.statement();
        EXPECT_TRUE(run.outputAfter && run.lowAfter) << where;
        if (run.edges.size() < 2) {
            ADD_FAILURE() << where << ": no tone on the pin";
            continue;
        }
        uint64_t first = run.edges.front().cycle, last = run.edges.back().cycle;
        size_t offGrid = 0;
        for (const sim::Edge& e : passEdges(run, 100))
            offGrid += (e.cycle - first) % 100 != 0;
        EXPECT_EQ(offGrid, 0u) << where << ": edges off the 100-cycle passes";
        double wanted = cyclesOfMs(k.ms, mhz);
        double total = deviation(static_cast<double>(run.end - run.start), wanted);
        double span = deviation(static_cast<double>(last - first), wanted);
        EXPECT_LE(total, kTolerance)
            << where << ": statement took " << run.end - run.start << " cycles for " << wanted;
        EXPECT_LE(span, kTolerance)
            << where << ": tone lasted " << last - first << " cycles for " << wanted;
        figures.duration = std::max({figures.duration, total, span});
        Spectrum spectrum = toneSpectrum(run, mhz);
        double lo = std::min(k.f1, k.f2 ? k.f2 : k.f1), hi = std::max(k.f1, k.f2);
        double split = std::sqrt(lo * hi);
        double top = std::min(20000.0, 0.45 * kSampleRate);
        std::vector<std::pair<double, double>> tones; // wanted, found
        if (k.f2 == 0) {
            tones.push_back({lo, spectrum.strongest(50, top)});
        } else {
            tones.push_back({lo, spectrum.strongest(50, split)});
            tones.push_back({hi, spectrum.strongest(split, top)});
        }
        // A tone alone swings the pin's density by 127/256 each way, two by
        // half that each.
        double amplitude = (k.f2 ? 127.0 / 512 : 127.0 / 256);
        for (auto [want, found] : tones) {
            double error = deviation(found, want);
            EXPECT_LE(error, kTolerance)
                << where << ": strongest frequency " << found << " Hz for " << want << " Hz";
            figures.frequency = std::max(figures.frequency, error);
            double power = spectrum.power(found) / (amplitude * amplitude);
            EXPECT_TRUE(power > 0.5 && power < 1.7)
                << where << ": " << power << " times the power wanted at " << found << " Hz";
        }
    }
    return figures;
}

// SOUND PORTB.1, [note, duration]: one note per statement.
struct SoundCase {
    int note;
    int duration;
    std::string statement() const {
        return "SOUND PORTB.1, [" + std::to_string(note) + ", " + std::to_string(duration) + "]";
    }
};

inline double soundStepCycles(int mhz) {
    return 12.5 * mhz;
}

// Notes 1-127: every high and low pulse exactly 128 - note steps of 50 us
// and the strongest frequency within 2 % of 10000 / (128 - note) Hz; note 0:
// no edge; notes 128-255: edges only on the step grid, about half the steps
// high and about half of them changing. Every note: the statement's time
// within 2 % of duration x 12 ms, the pin an output and low afterwards.
inline ToneFigures checkSound(int mhz, const std::vector<SoundCase>& cases) {
    ToneFigures figures;
    std::vector<std::string> statements;
    for (const SoundCase& k : cases)
        statements.push_back(k.statement());
    std::string failure;
    std::vector<ToneRun> runs = runToneStatements(mhz, {}, statements, failure);
    EXPECT_TRUE(failure.empty()) << failure;
    double step = soundStepCycles(mhz);
    for (size_t i = 0; i < runs.size(); ++i) {
        const SoundCase& k = cases[i];
        const ToneRun& run = runs[i];
        std::string where = std::to_string(mhz) + " MHz: " + k.statement();
        EXPECT_TRUE(run.outputAfter && run.lowAfter) << where;
        double wanted = cyclesOfMs(12.0 * k.duration, mhz);
        double total = deviation(static_cast<double>(run.end - run.start), wanted);
        EXPECT_LE(total, kTolerance)
            << where << ": statement took " << run.end - run.start << " cycles for " << wanted;
        figures.duration = std::max(figures.duration, total);
        if (k.note == 0) {
            EXPECT_TRUE(run.edges.empty()) << where << ": the pin moved during silence";
            continue;
        }
        if (run.edges.size() < 4) {
            ADD_FAILURE() << where << ": no sound on the pin";
            continue;
        }
        uint64_t first = run.edges.front().cycle;
        if (k.note < 128) {
            double half = (128 - k.note) * step;
            std::vector<sim::Edge> edges = passEdges(run, static_cast<uint64_t>(half));
            size_t wrong = 0;
            for (size_t e = 0; e + 1 < edges.size(); ++e)
                wrong += static_cast<double>(edges[e + 1].cycle - edges[e].cycle) != half;
            EXPECT_EQ(wrong, 0u) << where << ": pulses other than " << half << " cycles";
            double want = 10000.0 / (128 - k.note);
            double found = toneSpectrum(run, mhz).strongest(50, 20000);
            double error = deviation(found, want);
            EXPECT_LE(error, kTolerance)
                << where << ": strongest frequency " << found << " Hz for " << want << " Hz";
            figures.frequency = std::max(figures.frequency, error);
            continue;
        }
        size_t offGrid = 0;
        for (const sim::Edge& e : passEdges(run, static_cast<uint64_t>(step)))
            offGrid += std::fmod(static_cast<double>(e.cycle - first), step) != 0;
        EXPECT_EQ(offGrid, 0u) << where << ": edges off the 50 us steps";
        std::vector<double> levels =
            sampleLevel(run.initial, run.edges, first, first + static_cast<uint64_t>(wanted * 0.95),
                        static_cast<uint64_t>(step));
        double high = 0, changes = 0;
        for (size_t s = 0; s < levels.size(); ++s) {
            high += levels[s];
            changes += s > 0 && levels[s] != levels[s - 1];
        }
        double n = static_cast<double>(levels.size());
        EXPECT_NEAR(high / n, 0.5, 0.05) << where << ": share of high steps";
        EXPECT_NEAR(changes / n, 0.5, 0.05) << where << ": share of changing steps";
    }
    return figures;
}

// DTMFOUT PORTB.1, on, off, [digits]: each burst of the pin decoded back to
// its digit with both tones clearly above the other six, the bursts `on` ms
// long and the gaps `off` ms, within 2 %.
inline ToneFigures checkDtmf(int mhz, int on, int off, const std::string& dial,
                             double minimumMargin) {
    ToneFigures figures;
    const std::string keys = "0123456789*#ABCD";
    std::string list;
    for (char d : dial)
        list += (list.empty() ? "" : ", ") + std::to_string(keys.find(d));
    std::string statement =
        "DTMFOUT PORTB.1, " + std::to_string(on) + ", " + std::to_string(off) + ", [" + list + "]";
    std::string where = std::to_string(mhz) + " MHz: " + statement;
    std::string failure;
    std::vector<ToneRun> runs = runToneStatements(mhz, {}, {statement}, failure);
    EXPECT_TRUE(failure.empty()) << failure;
    if (runs.size() != 1) return figures;
    const ToneRun& run = runs[0];
    EXPECT_TRUE(run.outputAfter && run.lowAfter) << where;
    std::vector<Burst> bursts =
        findBursts(run.edges, static_cast<uint64_t>(cyclesOfMs(std::min(on, off) / 3.0, mhz)));
    EXPECT_EQ(bursts.size(), dial.size()) << where;
    std::string decoded;
    for (size_t i = 0; i < bursts.size(); ++i) {
        const Burst& b = bursts[i];
        DtmfReading reading = decodeDtmf(spectrumOf(run, mhz, b.first, b.last));
        decoded += reading.digit;
        figures.dtmfMargin = std::min(figures.dtmfMargin, reading.margin);
        EXPECT_GE(reading.margin, minimumMargin)
            << where << ": digit " << i << " read as " << reading.digit;
        double onError = deviation(static_cast<double>(b.last - b.first), cyclesOfMs(on, mhz));
        EXPECT_LE(onError, kTolerance)
            << where << ": digit " << i << " lasted " << b.last - b.first << " cycles";
        figures.dtmfOn = std::max(figures.dtmfOn, onError);
        if (i + 1 < bursts.size()) {
            double gap = static_cast<double>(bursts[i + 1].first - b.last);
            double offError = deviation(gap, cyclesOfMs(off, mhz));
            EXPECT_LE(offError, kTolerance)
                << where << ": silence after digit " << i << " lasted " << gap << " cycles";
            figures.dtmfOff = std::max(figures.dtmfOff, offError);
        }
    }
    EXPECT_EQ(decoded, dial) << where;
    // The silence after the last digit: from its last edge to the end.
    if (!bursts.empty()) {
        double tail = static_cast<double>(run.end - bursts.back().last);
        double offError = deviation(tail, cyclesOfMs(off, mhz));
        EXPECT_LE(offError, kTolerance) << where << ": last silence lasted " << tail << " cycles";
        figures.dtmfOff = std::max(figures.dtmfOff, offError);
    }
    return figures;
}

} // namespace zorvel::test
