// The tone routines run in the simulator: sin and cos against the rounded
// sine, and FREQOUT, SOUND and DTMFOUT read back from the pin with Goertzel
// filters (the strongest frequency, a DTMF decoder) and timed from the edges.
#include "compiler/library/library_writer.h"
#include "compiler/library/runtime_groups.h"
#include "compiler/library/runtime_marks.h"
#include "support/exec_support.h"
#include "support/tone_checks.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace zorvel::test {
namespace {

// sin and cos of ANG into SV and CV, in a loop the test steps through.
const std::string kSineCaller =
    lines({"DEVICE 16F877", "DIM ANG AS BYTE", "DIM SV AS BYTE", "DIM CV AS BYTE",
           "Top:", "@ movf ANG,w", "@ call sin", "@ movwf SV", "Cosine:", "@ movf ANG,w",
           "@ call cos", "@ movwf CV", "Back:", "@ goto Top", "END"});

int roundedSine(int angle) {
    return static_cast<int>(std::lround(127.0 * std::sin(2.0 * std::numbers::pi * angle / 256.0)));
}

int signedByte(int value) {
    return value >= 128 ? value - 256 : value;
}

TEST(ToneRoutines, SineAndCosineOfEveryAngle) {
    SimProgram p(kSineCaller, 4.0, [](Compilation& c) { need(c, Group::Cos); });
    ASSERT_TRUE(p.ok()) << p.failure();
    for (int angle = 0; angle < 256; ++angle) {
        ASSERT_TRUE(p.runTo("Top"));
        p.setByte("ANG", angle);
        ASSERT_TRUE(p.runTo("Cosine"));
        uint64_t start = p.pic().cycles();
        ASSERT_TRUE(p.runTo("Back"));
        EXPECT_EQ(signedByte(p.byte("SV")), roundedSine(angle)) << "sin " << angle;
        EXPECT_EQ(signedByte(p.byte("CV")), roundedSine((angle + 64) % 256)) << "cos " << angle;
        // movf, call cos, addlw, si@g with its call, goto i@nt, i@nt with
        // its return, movwf: the same time for every angle.
        EXPECT_EQ(p.pic().cycles() - start, 1u + 2 + 1 + 22 + 2 + 6 + 1) << "cos " << angle;
    }
}

// The library text of the tone groups on a 16F84.
Lines toneLibrary(std::initializer_list<Group> marks) {
    CompileResult r = compileSource("DEVICE 16F84\n");
    Compilation& c = *r.compilation;
    c.runtime = RuntimeState{};
    for (Group g : marks)
        need(c, g);
    LibraryOutput out;
    writeRuntimeGroups(c, out);
    return out.lines;
}

TEST(ToneText, QuarterWaveTableFollowsSin) {
    Lines lib = toneLibrary({Group::Cos});
    auto cos = std::find(lib.begin(), lib.end(), "cos\taddlw 64");
    ASSERT_NE(cos, lib.end());
    EXPECT_EQ(cos[1], "sin\tcall si@g");
    auto first = std::find(lib.begin(), lib.end(), "\tdt 0,3,6,9,12,16,19,22,25,28,31");
    ASSERT_NE(first, lib.end());
    EXPECT_EQ(first[-1], "\tmovwf 2"); // the computed jump into it
    EXPECT_EQ(first[6], "\tdt 125,126,126,126,127,127,127,127");
    // Seven lines, 65 entries, each the rounded sine of its index.
    std::vector<int> values;
    for (int line = 0; line < 7; ++line) {
        ASSERT_TRUE(first[line].starts_with("\tdt ")) << first[line];
        std::string text = first[line].substr(4);
        for (size_t pos = 0; pos < text.size();) {
            size_t comma = text.find(',', pos);
            values.push_back(std::stoi(text.substr(pos, comma - pos)));
            pos = comma == std::string::npos ? text.size() : comma + 1;
        }
    }
    ASSERT_EQ(values.size(), 65u);
    for (int i = 0; i <= 64; ++i)
        EXPECT_EQ(values[i], roundedSine(i)) << "entry " << i;
    EXPECT_FALSE(first[7].starts_with("\tdt")) << first[7];
}

TEST(ToneText, DtmfTablesAndEveryLabel) {
    Lines lib = toneLibrary({Group::DtmfOut, Group::Sound});
    auto codes = std::find(lib.begin(), lib.end(), "dtf@tbl");
    ASSERT_NE(codes, lib.end());
    EXPECT_EQ(Lines(codes, codes + 5), (Lines{"dtf@tbl", "\tdt 166,128,160,192,130,162,194,132",
                                              "\tdt 164,196,134,198,224,226,228,230", "dtf@rtb",
                                              "\tdt 2,185,3,2,3,84,3,173,4,185,5,56,5,197,6,97"}));
    Lines labels;
    for (const std::string& l : lib)
        if (!l.empty() && l[0] != '\t') labels.push_back(l.substr(0, l.find_first_of(" \t")));
    for (const char* label : {"sin", "si@g", "fr@out1", "fr@outc", "fr@out", "fr@lp", "fr@stp",
                              "dtmf@o", "dtmf@r", "dtmf@l", "dtf@tbl", "dtf@rtb", "noise", "n@lp",
                              "n@lp1", "m@py", "dly@w", "rndm", "i@nt"})
        EXPECT_EQ(std::count(labels.begin(), labels.end(), label), 1) << label;
    EXPECT_EQ(std::count(labels.begin(), labels.end(), "cos"), 0);
}

class ToneStatements : public testing::TestWithParam<int> {};

TEST_P(ToneStatements, FreqoutStrongestFrequencyAndDuration) {
    int mhz = GetParam();
    std::vector<FreqoutCase> cases = {{100, 440}, {100, 1000}, {60, 2500}, {100, 697, 1477}};
    if (mhz == 20) cases.push_back({60, 5000});
    checkFreqout(mhz, cases);
}

TEST_P(ToneStatements, SoundNotesAndNoise) {
    int mhz = GetParam();
    checkSound(mhz, {{1, 10}, {64, 8}, {100, 8}, {127, 5}, {0, 4}, {200, 8}});
}

TEST_P(ToneStatements, DtmfDialStringDecodes) {
    checkDtmf(GetParam(), 100, 100, "0123456789*#ABCD", 10);
}

// Nothing to play: FREQOUT of 0 ms sets the pin up and returns, SOUND of
// duration 0 returns at once, a DTMF digit above 15 plays nothing.
TEST_P(ToneStatements, NothingToPlayReturnsAtOnce) {
    int mhz = GetParam();
    std::vector<std::string> statements = {"FREQOUT PORTB.1, 0, 1000", "SOUND PORTB.1, [100, 0]",
                                           "DTMFOUT PORTB.1, 100, 100, [16]"};
    // The step computation of FREQOUT takes the longest (about 500
    // cycles); the other two return within their first few instructions.
    std::vector<uint64_t> within = {700, 40, 40};
    std::string failure;
    std::vector<ToneRun> runs = runToneStatements(mhz, {}, statements, failure);
    ASSERT_TRUE(failure.empty()) << failure;
    ASSERT_EQ(runs.size(), 3u);
    for (size_t i = 0; i < runs.size(); ++i) {
        EXPECT_TRUE(runs[i].edges.empty()) << runs[i].statement;
        EXPECT_LT(runs[i].end - runs[i].start, within[i]) << runs[i].statement;
    }
    EXPECT_TRUE(runs[0].outputAfter && runs[0].lowAfter);
}

// Two notes of one SOUND statement: the pin is loaded once, so the second
// note needs the routine to keep it.
TEST_P(ToneStatements, SoundPlaysEveryNoteOfTheList) {
    int mhz = GetParam();
    std::string failure;
    std::vector<ToneRun> runs =
        runToneStatements(mhz, {}, {"SOUND PORTB.1, [120, 5, 100, 5]"}, failure);
    ASSERT_TRUE(failure.empty()) << failure;
    ASSERT_EQ(runs.size(), 1u);
    double step = soundStepCycles(mhz);
    std::vector<double> widths;
    const std::vector<sim::Edge>& edges = runs[0].edges;
    for (size_t i = 0; i + 1 < edges.size(); ++i)
        widths.push_back(static_cast<double>(edges[i + 1].cycle - edges[i].cycle));
    // 5 units of 240 steps with a toggle every 8 steps (1250 Hz), then 5
    // with one every 28: 1200 / 8 and 1200 / 28 (rounded down) toggles, one
    // width fewer each between them, and one width from note to note.
    size_t first = static_cast<size_t>(std::count(widths.begin(), widths.end(), 8 * step));
    size_t second = static_cast<size_t>(std::count(widths.begin(), widths.end(), 28 * step));
    EXPECT_EQ(first, 1200u / 8 - 1);
    EXPECT_EQ(second, 1200u / 28 - 1);
    EXPECT_EQ(widths.size(), first + second + 1);
}

// With the watchdog on (no CONFIG line leaves it on; 2.3 s after reset)
// tones of three seconds run to their end: every timed loop clears it.
TEST_P(ToneStatements, LongTonesClearTheWatchdog) {
    int mhz = GetParam();
    std::vector<std::string> statements = {"SOUND PORTB.1, [100, 250]", "SOUND PORTB.1, [0, 250]",
                                           "SOUND PORTB.1, [200, 250]",
                                           "FREQOUT PORTB.1, 3000, 1000"};
    std::vector<double> ms = {3000, 3000, 3000, 3000};
    std::string failure;
    std::vector<ToneRun> runs = runToneStatements(mhz, {}, statements, failure);
    ASSERT_TRUE(failure.empty()) << failure;
    ASSERT_EQ(runs.size(), statements.size());
    for (size_t i = 0; i < runs.size(); ++i) {
        double took = static_cast<double>(runs[i].end - runs[i].start);
        EXPECT_LE(deviation(took, cyclesOfMs(ms[i], mhz)), kTolerance)
            << mhz << " MHz " << statements[i] << " took " << took << " cycles";
        EXPECT_TRUE(runs[i].timeOutBitAfter) << mhz << " MHz " << statements[i];
    }
}

INSTANTIATE_TEST_SUITE_P(Crystals, ToneStatements, testing::Values(4, 20),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

} // namespace
} // namespace zorvel::test
