// Prints, per crystal, the worst deviation of the compiled delays from the
// requested time: DELAYMS 1, 100 and 1000, DELAYUS 1 to 1000 as constants,
// DELAYUS with a BYTE variable of 1 to 255 and with a WORD variable of 1 to
// 1000. The tolerance is 1 % or 2 instruction cycles, the larger.
// Usage: bench_delay_accuracy
#include "support/delay_timing.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace zorvel::test;

namespace {

struct Summary {
    const DelayMeasurement* worst = nullptr;
    double worstError = -1;
    int outside = 0;
    int total = 0;
};

void add(Summary& s, const std::vector<DelayMeasurement>& ms) {
    for (const DelayMeasurement& m : ms) {
        ++s.total;
        if (!withinTolerance(m)) ++s.outside;
        // Worst relative to what the tolerance allows for that case.
        double error = std::abs(static_cast<double>(m.cycles) - m.requestedCycles) /
                       allowedError(m.requestedCycles);
        if (error > s.worstError) s.worstError = error, s.worst = &m;
    }
}

// Runs of consecutive cases outside the tolerance, one line per run: the
// first and last statement and the range of the error in cycles.
void printOutside(const std::vector<DelayMeasurement>& ms) {
    size_t i = 0;
    while (i < ms.size()) {
        if (withinTolerance(ms[i])) {
            ++i;
            continue;
        }
        size_t j = i;
        double low = 1e30, high = -1e30;
        while (j < ms.size() && !withinTolerance(ms[j])) {
            double e = static_cast<double>(ms[j].cycles) - ms[j].requestedCycles;
            low = std::min(low, e), high = std::max(high, e);
            ++j;
        }
        std::printf("    outside: %s .. %s: error %+.1f .. %+.1f cycles\n", ms[i].statement.c_str(),
                    ms[j - 1].statement.c_str(), low, high);
        i = j;
    }
}

} // namespace

int main() {
    int exitCode = 0;
    for (int mhz : kDelayCrystals) {
        std::string failure;
        DelayStatements list = constantDelayStatements();
        std::vector<DelayMeasurement> constants =
            measureStatements(mhz, list.statements, list.micros, failure);
        std::vector<int> bytes, words;
        for (int v = 1; v <= 255; ++v)
            bytes.push_back(v);
        for (int v = 1; v <= 1000; ++v)
            words.push_back(v);
        std::vector<DelayMeasurement> byteVars =
            measureVariable(mhz, "DELAYUS", false, bytes, false, failure);
        std::vector<DelayMeasurement> wordVars =
            measureVariable(mhz, "DELAYUS", true, words, false, failure);
        if (!failure.empty()) {
            std::printf("%2d MHz: %s\n", mhz, failure.c_str());
            exitCode = 1;
            continue;
        }
        Summary s;
        add(s, constants);
        add(s, byteVars);
        add(s, wordVars);
        std::printf("%2d MHz: worst %-34s requested %9.1f cycles, measured %8lld (%+.1f cycles, "
                    "%+.2f %%); %d of %d outside tolerance\n",
                    mhz, s.worst->statement.c_str(), s.worst->requestedCycles,
                    static_cast<long long>(s.worst->cycles),
                    static_cast<double>(s.worst->cycles) - s.worst->requestedCycles,
                    100.0 * (static_cast<double>(s.worst->cycles) - s.worst->requestedCycles) /
                        s.worst->requestedCycles,
                    s.outside, s.total);
        printOutside(constants);
        printOutside(byteVars);
        printOutside(wordVars);
    }
    return exitCode;
}
