// The logic probe's running summary (kept when its edge list is capped) and
// the pulse source's endless square wave.
#include "sim/parts/logic_probe.h"
#include "sim/parts/loose_pins.h"
#include "sim/parts/pulse_source.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace zorvel::sim;
using zorvel::test::LoosePins;

namespace {
// Drives `P` high for each of `highs` cycles, then low for the matching `lows`.
void pulses(LoosePins& bench, const std::vector<uint64_t>& highs,
            const std::vector<uint64_t>& lows) {
    for (size_t i = 0; i < highs.size(); ++i) {
        bench.drive("P", true);
        bench.advance(highs[i]);
        bench.drive("P", false);
        bench.advance(lows[i]);
    }
}
} // namespace

TEST(LogicProbe, SummaryCountsEveryEdgeWhenTheListIsCapped) {
    LoosePins bench; // 1 us cycles
    bench.drive("P", false);
    bench.advance(7);
    LogicProbe probe("P");
    probe.connect(bench.wiring());
    probe.keepEdges(3);
    pulses(bench, {20, 30, 25, 20}, {80, 60, 75, 10});
    ASSERT_EQ(probe.edges().size(), 3u);
    EXPECT_EQ(probe.edges()[0].cycle, 7u);
    EXPECT_EQ(probe.edges()[2].cycle, 107u);
    const ProbeSummary& s = probe.summary();
    EXPECT_EQ(s.edges, 8u);
    EXPECT_EQ(s.risingEdges, 4u);
    EXPECT_EQ(probe.risingEdges(), 4);
    EXPECT_EQ(s.highPulses, 4u);
    EXPECT_EQ(s.minHigh, 20u);
    EXPECT_EQ(s.maxHigh, 30u);
    EXPECT_EQ(s.lowPulses, 3u); // the last low is still under way
    EXPECT_EQ(s.minLow, 60u);
    EXPECT_EQ(s.maxLow, 80u);
    EXPECT_EQ(s.periods, 3u);
    EXPECT_EQ(s.periodCycles, 100u + 90u + 100u);
    EXPECT_EQ(s.highInPeriods, 20u + 30u + 25u); // not the high of the last period
    EXPECT_NEAR(probe.frequency(), 3 / 290e-6, 1e-6);
}

TEST(LogicProbe, StartingHighTheFirstFallIsNotAPulse) {
    LoosePins bench;
    bench.drive("P", true);
    LogicProbe probe("P");
    probe.connect(bench.wiring());
    bench.advance(40);
    bench.drive("P", false);
    bench.advance(10);
    bench.drive("P", true);
    bench.advance(5);
    EXPECT_TRUE(probe.initialLevel());
    const ProbeSummary& s = probe.summary();
    EXPECT_EQ(s.edges, 2u);
    EXPECT_EQ(s.highPulses, 0u);
    EXPECT_EQ(s.lowPulses, 1u);
    EXPECT_EQ(s.minLow, 10u);
    EXPECT_EQ(s.periods, 0u);
    EXPECT_EQ(probe.frequency(), 0.0);
}

TEST(PulseSource, SquareWaveEdgesFollowTheCycleCount) {
    LoosePins bench;
    PulseSource source("RB0");
    source.connect(bench.wiring());
    LogicProbe probe("RB0");
    probe.connect(bench.wiring());
    source.square(10, 3, 8);
    bench.advance(40);
    std::vector<uint64_t> cycles;
    for (const Edge& e : probe.edges())
        cycles.push_back(e.cycle);
    EXPECT_EQ(cycles, (std::vector<uint64_t>{10, 13, 18, 21, 26, 29, 34, 37}));
    EXPECT_TRUE(probe.edges()[0].level);
    EXPECT_EQ(probe.summary().minHigh, 3u);
    EXPECT_EQ(probe.summary().maxLow, 5u);
    // One event at a time however long the wave runs.
    bench.advance(1000000);
    EXPECT_EQ(probe.summary().risingEdges, (1000040u - 10u) / 8 + 1);
}

TEST(PulseSource, SquareWaveSetBeforeConnectingStartsAtItsLevel) {
    LoosePins bench;
    PulseSource source("RB0", true); // idle high: the wave's active level is low
    source.square(0, 2, 5);
    source.connect(bench.wiring());
    LogicProbe probe("RB0");
    probe.connect(bench.wiring());
    EXPECT_FALSE(probe.initialLevel());
    bench.advance(11);
    std::vector<uint64_t> cycles;
    for (const Edge& e : probe.edges())
        cycles.push_back(e.cycle);
    EXPECT_EQ(cycles, (std::vector<uint64_t>{2, 5, 7, 10}));
}

TEST(PulseSource, SquareWaveKeepsItsPhaseAcrossAReset) {
    LoosePins bench;
    PulseSource source("RB0");
    source.connect(bench.wiring());
    LogicProbe probe("RB0");
    probe.connect(bench.wiring());
    source.square(0, 4, 10);
    bench.advance(12);
    bench.scheduler().clear(); // as a device reset does, then the parts' reset()
    source.reset();
    bench.advance(20);
    std::vector<uint64_t> cycles;
    for (const Edge& e : probe.edges())
        cycles.push_back(e.cycle);
    EXPECT_EQ(cycles, (std::vector<uint64_t>{0, 4, 10, 14, 20, 24, 30}));
}

TEST(PulseSource, SquareWaveNeedsBothLevels) {
    PulseSource source("RB0");
    EXPECT_THROW(source.square(0, 0, 10), std::invalid_argument);
    EXPECT_THROW(source.square(0, 10, 10), std::invalid_argument);
    EXPECT_NO_THROW(source.square(0, 9, 10));
}
