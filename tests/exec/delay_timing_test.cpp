// Delay timing in the simulator at every crystal with a microsecond routine:
// DELAYMS 1, 100 and 1000, DELAYUS 1 to 1000 as constants, and DELAYUS with
// BYTE (1..255) and WORD (1..1000) variables. Each measured delay must be
// within 1 % or 2 instruction cycles of the request, except where the given
// routine texts cannot reach it; those cases are pinned to their measured
// error here, so a change in either direction shows.
#include "support/delay_timing.h"

#include <gtest/gtest.h>
#include <map>

namespace zorvel::test {
namespace {

// Known deviations of constant statements: statement -> error in cycles.
std::map<std::string, double> knownConstantErrors(int mhz) {
    std::map<std::string, double> known;
    if (mhz == 4) {
        known["DELAYMS 1"] = 18; // dl@ms's fixed overhead is 1.8 % of one millisecond
        // The 16-bit entry costs 3 cycles more than the 8-bit one; from 300 us
        // on the 1 % allowance covers it.
        for (int us = 256; us <= 279; ++us)
            known["DELAYUS " + std::to_string(us)] = 3;
    }
    if (mhz == 20) known["DELAYUS 2"] = -3; // the in-line L(2) is 7 cycles, not 10
    return known;
}

double error(const DelayMeasurement& m) {
    return static_cast<double>(m.cycles) - m.requestedCycles;
}

void checkConstants(int mhz) {
    DelayStatements list = constantDelayStatements();
    std::string failure;
    std::vector<DelayMeasurement> ms =
        measureStatements(mhz, list.statements, list.micros, failure);
    ASSERT_TRUE(failure.empty()) << failure;
    ASSERT_EQ(ms.size(), list.statements.size());
    std::map<std::string, double> known = knownConstantErrors(mhz);
    for (const DelayMeasurement& m : ms) {
        auto k = known.find(m.statement);
        if (k != known.end())
            EXPECT_EQ(error(m), k->second) << mhz << " MHz " << m.statement;
        else
            EXPECT_TRUE(withinTolerance(m))
                << mhz << " MHz " << m.statement << ": requested " << m.requestedCycles
                << " cycles, measured " << m.cycles;
    }
}

// A variable delay goes through the routine, whose call costs about 20
// cycles: requests below that come out at the routine's minimum.
void checkVariable(int mhz, bool word) {
    std::vector<int> values;
    for (int v = 1; v <= (word ? 1000 : 255); ++v)
        values.push_back(v);
    std::string failure;
    std::vector<DelayMeasurement> ms =
        measureVariable(mhz, "DELAYUS", word, values, false, failure);
    ASSERT_TRUE(failure.empty()) << failure;
    ASSERT_EQ(ms.size(), values.size());
    for (const DelayMeasurement& m : ms) {
        if (withinTolerance(m)) continue;
        bool belowCallCost = m.requestedCycles < 24 && m.cycles >= 14 && m.cycles <= 26;
        bool wideEntryAt4 = mhz == 4 && word && m.value >= 256 && m.value <= 279 && error(m) == 3;
        EXPECT_TRUE(belowCallCost || wideEntryAt4)
            << mhz << " MHz " << m.statement << ": requested " << m.requestedCycles
            << " cycles, measured " << m.cycles;
    }
}

class DelayTiming : public testing::TestWithParam<int> {};

TEST_P(DelayTiming, ConstantDelays) {
    checkConstants(GetParam());
}

TEST_P(DelayTiming, ByteVariableDelays) {
    checkVariable(GetParam(), false);
}

TEST_P(DelayTiming, WordVariableDelays) {
    checkVariable(GetParam(), true);
}

INSTANTIATE_TEST_SUITE_P(Crystals, DelayTiming, testing::ValuesIn(kDelayCrystals),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

// A millisecond delay from a WORD variable: the 16-bit entry dly@w.
TEST(DelayTimingMs, WordVariableMilliseconds) {
    for (int mhz : kDelayCrystals) {
        std::string failure;
        std::vector<DelayMeasurement> ms =
            measureVariable(mhz, "PAUSE", true, {1, 2, 255, 256, 300}, true, failure);
        ASSERT_TRUE(failure.empty()) << failure;
        for (const DelayMeasurement& m : ms) {
            // The fixed overhead is at most 1.8 % of one millisecond (4 MHz).
            double allowed = m.value == 1 && mhz == 4 ? 24 : allowedError(m.requestedCycles);
            EXPECT_LE(std::abs(error(m)), allowed) << mhz << " MHz " << m.statement;
        }
    }
}

} // namespace
} // namespace zorvel::test
