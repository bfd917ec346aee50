#include "support/pulse_checks.h"

#include "sim/parts/logic_probe.h"
#include "sim/parts/pulse_source.h"
#include "support/exec_support.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sstream>

namespace zorvel::test {
namespace {

// A program for `device` at `mhz` with the variables the checks use.
std::string program(int mhz, std::initializer_list<std::string> body,
                    const std::string& device = "16F877") {
    std::string text = "DEVICE " + device + "\nDECLARE XTAL " + std::to_string(mhz) +
                       "\nDIM N AS WORD\nDIM R AS WORD\nDIM B AS BYTE\nDIM S AS BYTE\n"
                       "DIM HOLD AS BYTE\n";
    for (const std::string& line : body)
        text += line + "\n";
    return text + "END\n";
}

template <class P, class... Args>
P& attach(SimProgram& p, Args&&... args) {
    auto part = std::make_unique<P>(std::forward<Args>(args)...);
    P& ref = *part;
    p.pic().attach(std::move(part));
    return ref;
}

// Cycles the probed pin is high in [from, to).
uint64_t highCycles(const sim::LogicProbe& probe, uint64_t from, uint64_t to) {
    bool level = probe.initialLevel();
    uint64_t start = 0, total = 0;
    auto addHigh = [&](uint64_t a, uint64_t b) {
        uint64_t lo = std::max(a, from), hi = std::min(b, to);
        if (hi > lo) total += hi - lo;
    };
    for (const sim::Edge& e : probe.edges()) {
        if (level) addHigh(start, e.cycle);
        level = e.level;
        start = e.cycle;
    }
    if (level) addHigh(start, to);
    return total;
}

// Runs `cycles` cycles on, past any breakpoint the program's labels left.
void runCycles(SimProgram& p, uint64_t cycles) {
    uint64_t end = p.pic().cycles() + cycles;
    while (p.pic().cycles() < end)
        p.pic().run(end - p.pic().cycles());
}

uint64_t ceilDiv(uint64_t a, uint64_t b) {
    return (a + b - 1) / b;
}

std::string failed(const SimProgram& p) {
    return "the program did not build: " + p.failure() + "\nsource:\n" + p.source();
}

} // namespace

std::string checkPulsout(int mhz, const std::vector<int>& counts) {
    SimProgram p(program(mhz, {"Top:", "PULSOUT PORTB.0, N, HIGH",
                               "Mid:", "PULSOUT PORTB.1, N, LOW", "Back:", "GOTO Top"}),
                 mhz);
    if (!p.ok()) {
        ADD_FAILURE() << failed(p);
        return "";
    }
    sim::LogicProbe& highPin = attach<sim::LogicProbe>(p, "PORTB.0");
    sim::LogicProbe& lowPin = attach<sim::LogicProbe>(p, "PORTB.1");
    int pulses = 0, exact = 0;
    for (int n : counts) {
        for (bool activeHigh : {true, false}) {
            sim::LogicProbe& probe = activeHigh ? highPin : lowPin;
            const char* from = activeHigh ? "Top" : "Mid";
            const char* to = activeHigh ? "Mid" : "Back";
            if (!p.runTo(from)) {
                ADD_FAILURE() << "PULSOUT " << n << ": " << from << " not reached";
                return "";
            }
            if (activeHigh) p.setWord("N", n);
            size_t first = probe.edges().size();
            if (!p.runTo(to, 10ull * static_cast<uint64_t>(n) + 10000)) {
                ADD_FAILURE() << "PULSOUT " << n << " did not return";
                return "";
            }
            std::vector<sim::Edge> seen(probe.edges().begin() + static_cast<long>(first),
                                        probe.edges().end());
            std::string what = std::to_string(mhz) + " MHz PULSOUT count " + std::to_string(n) +
                               (activeHigh ? " HIGH" : " LOW");
            // The LOW form's first run sets the idle level: one more edge.
            if (!seen.empty() && seen.front().level == !activeHigh && seen.size() % 2 == 1)
                seen.erase(seen.begin());
            if (n == 0) {
                EXPECT_TRUE(seen.empty()) << what << ": " << seen.size() << " edges";
                continue;
            }
            ++pulses;
            if (seen.size() != 2 || seen[0].level != activeHigh || seen[1].level == activeHigh) {
                ADD_FAILURE() << what << ": " << seen.size() << " edges instead of one pulse";
                continue;
            }
            uint64_t width = seen[1].cycle - seen[0].cycle;
            EXPECT_EQ(width, 10ull * static_cast<uint64_t>(n)) << what;
            if (width == 10ull * static_cast<uint64_t>(n)) ++exact;
        }
    }
    std::ostringstream s;
    s << "PULSOUT " << mhz << " MHz: " << exact << " of " << pulses
      << " pulses exactly 10 x count cycles";
    return s.str();
}

std::string checkPulsin(int mhz, const std::vector<uint64_t>& widths, int phases) {
    SimProgram p(program(mhz, {"Top:", "R = PULSIN PORTB.1, 1", "Mid:", "R = PULSIN PORTB.2, 0",
                               "Back:", "GOTO Top"}),
                 mhz);
    if (!p.ok()) {
        ADD_FAILURE() << failed(p);
        return "";
    }
    sim::PulseSource& highPulses = attach<sim::PulseSource>(p, "PORTB.1", false);
    sim::PulseSource& lowPulses = attach<sim::PulseSource>(p, "PORTB.2", true);
    int wait = p.label("pi@wt");
    std::mt19937 rng(4711);
    std::uniform_int_distribution<int> phase(0, 9);
    int cases = 0, exact = 0, rounded = 0;
    double worst = 0;
    // One measurement: a pulse from `delay` cycles after the statement starts
    // (none when width is 0). `lag` receives the cycles from the pulse's
    // start to the reading of the wait loop that sees it, the loop reading
    // every 10 cycles from its first pass.
    auto measure = [&](bool state, uint64_t delay, uint64_t width, uint64_t& lag) -> int {
        sim::PulseSource& source = state ? highPulses : lowPulses;
        if (!p.runTo(state ? "Top" : "Mid")) return -1;
        uint64_t start = p.pic().cycles() + delay;
        if (width) source.pulse(start, width);
        sim::Pic16& pic = p.pic();
        pic.runUntil([&] { return pic.pc() == wait; }, 2000);
        uint64_t first = pic.cycles();
        lag = start <= first ? first - start : ceilDiv(start - first, 10) * 10 - (start - first);
        if (!p.runTo(state ? "Mid" : "Back", 3 * 700'000ull + width)) return -1;
        return p.word("R");
    };
    for (uint64_t width : widths) {
        for (int k = 0; k < phases; ++k) {
            uint64_t delay = 200 + static_cast<uint64_t>(phase(rng));
            for (bool state : {true, false}) {
                uint64_t lag = 0;
                int r = measure(state, delay, width, lag);
                std::ostringstream what;
                what << mhz << " MHz PULSIN state " << state << " width " << width
                     << " cycles, starting " << delay << " cycles after the statement, seen " << lag
                     << " cycles after its start";
                if (r < 0) {
                    ADD_FAILURE() << what.str() << ": did not return";
                    return "";
                }
                // The readings 10 cycles apart that see the pulse; 65536 or
                // more is a time-out.
                uint64_t readings = width > lag ? ceilDiv(width - lag, 10) : 0;
                int expected = readings >= 65536 ? 0 : static_cast<int>(readings);
                ++cases;
                EXPECT_EQ(r, expected) << what.str();
                if (r == expected) ++exact;
                if (width < 10 || readings >= 65536) continue;
                uint64_t low = width / 10, high = ceilDiv(width, 10);
                bool near = static_cast<uint64_t>(r) == low || static_cast<uint64_t>(r) == high;
                EXPECT_TRUE(near) << what.str() << ": " << r;
                if (near) ++rounded;
                worst = std::max(worst, std::abs(r - static_cast<double>(width) / 10));
            }
        }
    }
    // Time-outs: the pin held in the state past 65536 units, and no pulse.
    for (bool state : {true, false}) {
        uint64_t lag = 0;
        EXPECT_EQ(measure(state, 0, 700'000, lag), 0)
            << mhz << " MHz PULSIN state " << state << ": pin held in the state";
        runCycles(p, 100'000); // past the end of that pulse
        EXPECT_EQ(measure(state, 0, 0, lag), 0)
            << mhz << " MHz PULSIN state " << state << ": no pulse";
    }
    std::ostringstream s;
    s << "PULSIN " << mhz << " MHz: " << exact << " of " << cases
      << " results equal to the 10-cycle readings that see the pulse; " << rounded
      << " pulses of 1 to 65535 units read as width/10 rounded down or up, worst error " << worst
      << " units";
    return s.str();
}

std::string checkRcin(int mhz, const std::vector<uint64_t>& cycles) {
    SimProgram p(program(mhz, {"Top:", "R = RCIN PORTB.3, 1", "Mid:", "R = RCIN PORTB.4, 0",
                               "Back:", "GOTO Top"}),
                 mhz);
    if (!p.ok()) {
        ADD_FAILURE() << failed(p);
        return "";
    }
    sim::PulseSource& highPin = attach<sim::PulseSource>(p, "PORTB.3", false);
    sim::PulseSource& lowPin = attach<sim::PulseSource>(p, "PORTB.4", true);
    int cases = 0, exact = 0;
    for (uint64_t w : cycles) {
        for (bool state : {true, false}) {
            const char* from = state ? "Top" : "Mid";
            const char* to = state ? "Mid" : "Back";
            std::string what = std::to_string(mhz) + " MHz RCIN state " + std::to_string(state) +
                               ", pin in the state for " + std::to_string(w) +
                               " cycles from crin's first instruction";
            if (!p.runTo(from) || !p.runTo("crin")) {
                ADD_FAILURE() << what << ": crin not reached";
                return "";
            }
            if (w) (state ? highPin : lowPin).pulse(p.pic().cycles(), w);
            if (!p.runTo(to, 700'000 + w)) {
                ADD_FAILURE() << what << ": did not return";
                return "";
            }
            uint64_t units = std::max<uint64_t>(1, ceilDiv(w, 10));
            int expected = units >= 65536 ? 0 : static_cast<int>(units);
            ++cases;
            EXPECT_EQ(p.word("R"), expected) << what;
            if (p.word("R") == expected) ++exact;
            runCycles(p, w > 700'000 ? w : 0); // past the end of a held pin
        }
    }
    std::ostringstream s;
    s << "RCIN " << mhz << " MHz: " << exact << " of " << cases
      << " exactly ceil(cycles/10) (1 at least, 0 from 65536 units)";
    return s.str();
}

std::string checkCounter(int mhz, const std::vector<CounterCase>& cases) {
    SimProgram p(program(mhz, {"Top:", "R = COUNTER PORTB.5, N", "Back:", "GOTO Top"}), mhz);
    if (!p.ok()) {
        ADD_FAILURE() << failed(p);
        return "";
    }
    sim::PulseSource& source = attach<sim::PulseSource>(p, "PORTB.5", false);
    uint64_t passesPerMs = 50ull * static_cast<uint64_t>(mhz) / 4;
    double worst = 0;
    int good = 0;
    for (const CounterCase& k : cases) {
        std::ostringstream what;
        what << mhz << " MHz COUNTER of a square wave of " << k.period << " cycles (high " << k.high
             << ") for " << k.ms << " ms";
        if (!p.runTo("Top")) {
            ADD_FAILURE() << what.str() << ": Top not reached";
            return "";
        }
        p.setWord("N", k.ms);
        uint64_t start = p.pic().cycles() + 37; // an odd phase
        source.square(start, k.high, k.period);
        if (!p.runTo("ct@lp")) {
            ADD_FAILURE() << what.str() << ": the loop not reached";
            return "";
        }
        uint64_t first = p.pic().cycles();
        uint64_t window = 20 * passesPerMs * static_cast<uint64_t>(k.ms);
        if (!p.runTo("Back", window + 10000)) {
            ADD_FAILURE() << what.str() << ": did not return";
            return "";
        }
        // Rising edges at start + i x period inside (first, first + window].
        auto upTo = [&](uint64_t t) -> uint64_t {
            return t < start ? 0 : (t - start) / k.period + 1;
        };
        uint64_t expected = (upTo(first + window) - upTo(first)) % 65536;
        // The last reading is the last pass's first instruction; the routine
        // then needs 19 - 0 cycles of that pass, movf and goto i@nt, i@nt and
        // the return: the statement ends 20 x passes + a few cycles after the
        // first reading.
        uint64_t spent = p.pic().cycles() - first;
        EXPECT_GE(spent, window) << what.str();
        EXPECT_LE(spent, window + 60) << what.str();
        int r = p.word("R");
        EXPECT_EQ(static_cast<uint64_t>(r), expected) << what.str();
        double ideal = static_cast<double>(window) / static_cast<double>(k.period);
        double error = std::abs(r - ideal);
        if (ideal < 65536) {
            EXPECT_LE(error, 1.0) << what.str() << ": " << r << " for " << ideal;
            worst = std::max(worst, error);
        }
        if (static_cast<uint64_t>(r) == expected) ++good;
    }
    std::ostringstream s;
    s << "COUNTER " << mhz << " MHz: " << good << " of " << cases.size()
      << " counts equal to the rising edges in the window; worst " << worst
      << " counts from frequency x period";
    return s.str();
}

std::string checkPot(int mhz, const std::vector<double>& chargeUs, const std::vector<int>& scales) {
    SimProgram p(program(mhz, {"Top:", "B = POT PORTB.6, S", "Back:", "@ nop",
                               "WHILE HOLD = 0 : WEND", "HOLD = 0", "GOTO Top"}),
                 mhz);
    if (!p.ok()) {
        ADD_FAILURE() << failed(p);
        return "";
    }
    sim::RcSource& rc = attach<sim::RcSource>(p, "PORTB.6", 0.0);
    sim::LogicProbe& probe = attach<sim::LogicProbe>(p, "PORTB.6");
    uint64_t pass = 5ull * static_cast<uint64_t>(mhz);
    double cyclesPerUs = mhz / 4.0;
    int cases = 0, exact = 0, decreases = 0;
    for (int scale : scales) {
        int last = -1;
        for (double us : chargeUs) {
            std::ostringstream what;
            what << mhz << " MHz POT scale " << scale << ", charge time " << us << " us";
            if (!p.runTo("Top")) {
                ADD_FAILURE() << what.str() << ": Top not reached";
                return "";
            }
            p.setByte("S", scale);
            rc.setChargeMicroseconds(us);
            size_t firstEdge = probe.edges().size();
            if (!p.runTo("Back", 20'000'000)) {
                ADD_FAILURE() << what.str() << ": did not return";
                return "";
            }
            auto charge = static_cast<uint64_t>(std::llround(us * cyclesPerUs));
            uint64_t count = charge == 0 ? 0 : ceilDiv(charge - 1, pass);
            int expected =
                scale == 0 ? 0 : static_cast<int>(std::min<uint64_t>(255, count * scale / 256));
            int r = p.byte("B");
            ++cases;
            EXPECT_EQ(r, expected) << what.str();
            if (r == expected) ++exact;
            if (r < last) ++decreases;
            EXPECT_GE(r, last) << what.str() << ": less than at the shorter charge time";
            last = r;
            // The capacitor is emptied for at least 1000 us before the release
            // and charges afterwards (the check waits for that, so the next
            // discharge starts from a charged capacitor).
            runCycles(p, charge + 1000);
            p.setByte("HOLD", 1);
            const std::vector<sim::Edge>& e = probe.edges();
            size_t edges = e.size() - firstEdge;
            if (scale == 0) {
                EXPECT_EQ(edges, 0u) << what.str() << ": the pin moved";
                continue;
            }
            bool pulse = edges == 2 && !e[firstEdge].level && e[firstEdge + 1].level;
            EXPECT_TRUE(pulse) << what.str() << ": " << edges << " edges instead of a low pulse";
            if (pulse) {
                EXPECT_GE(e[firstEdge + 1].cycle - e[firstEdge].cycle,
                          static_cast<uint64_t>(1000 * cyclesPerUs) + charge)
                    << what.str();
            }
        }
    }
    std::ostringstream s;
    s << "POT " << mhz << " MHz: " << exact << " of " << cases
      << " results equal to min(255, ceil(charge/20us) x scale / 256); " << decreases
      << " decreases";
    return s.str();
}

std::string checkPwm(int mhz, const std::vector<int>& duties, const std::vector<int>& cycles) {
    SimProgram p(program(mhz, {"Top:", "PWM PORTB.7, B, N", "Back:", "GOTO Top"}), mhz);
    if (!p.ok()) {
        ADD_FAILURE() << failed(p);
        return "";
    }
    sim::LogicProbe& probe = attach<sim::LogicProbe>(p, "PORTB.7");
    int trisb = p.pic().address("TRISB");
    int cases = 0, exact = 0;
    double worst = 0;
    for (int n : cycles) {
        for (int duty : duties) {
            std::ostringstream what;
            what << mhz << " MHz PWM duty " << duty << " for " << n << " cycles";
            if (!p.runTo("Top")) {
                ADD_FAILURE() << what.str() << ": Top not reached";
                return "";
            }
            p.setByte("B", duty);
            p.setWord("N", n);
            size_t edgesBefore = probe.edges().size();
            uint64_t window = 5120ull * static_cast<uint64_t>(n);
            if (n == 0) {
                if (!p.runTo("Back", 1000)) ADD_FAILURE() << what.str() << ": did not return";
                EXPECT_EQ(probe.edges().size(), edgesBefore) << what.str() << ": the pin moved";
                EXPECT_TRUE(p.pic().peek(trisb) & 0x80) << what.str() << ": the pin was touched";
                continue;
            }
            if (!p.runTo("pwm")) {
                ADD_FAILURE() << what.str() << ": pwm not reached";
                return "";
            }
            // The first pass writes the port 31 cycles after pwm's first
            // instruction; one pass of 20 cycles follows another.
            uint64_t from = p.pic().cycles() + 31;
            if (!p.runTo("Back", window + 1000)) {
                ADD_FAILURE() << what.str() << ": did not return";
                return "";
            }
            uint64_t high = highCycles(probe, from, from + window);
            // duty high passes per 256; the last pass is always one of them
            // (the sum returns to 0 with a carry) and ends 12 cycles after
            // its write, when the pin becomes an input.
            uint64_t expected = duty == 0 ? 0 : 20ull * static_cast<uint64_t>(duty * n) - 8;
            ++cases;
            EXPECT_EQ(high, expected) << what.str();
            if (high == expected) ++exact;
            double fraction = static_cast<double>(high) / static_cast<double>(window);
            double error = std::abs(fraction - duty / 256.0);
            worst = std::max(worst, error);
            EXPECT_LE(error, 0.01) << what.str() << ": duty " << fraction;
            EXPECT_TRUE(p.pic().peek(trisb) & 0x80) << what.str() << ": not an input afterwards";
        }
    }
    std::ostringstream s;
    s << "PWM " << mhz << " MHz: " << exact << " of " << cases
      << " high times exactly 20 x duty x cycles - 8; worst duty error " << worst * 100
      << " % of the period";
    return s.str();
}

std::string checkHpwm(int mhz, const std::vector<HpwmCase>& cases, const std::string& device) {
    // Channel 2 only where the device has CCP2.
    bool two = device == "16F877";
    std::string source =
        two ? program(mhz,
                      {"Top:", "HOLD = 0", "IF S = 2 THEN", "HPWM 2, B, N", "ELSE", "HPWM 1, B, N",
                       "ENDIF", "Wait:", "@ nop", "WHILE HOLD = 0 : WEND", "GOTO Top"},
                      device)
            : program(mhz,
                      {"Top:", "HOLD = 0", "HPWM 1, B, N", "Wait:", "@ nop",
                       "WHILE HOLD = 0 : WEND", "GOTO Top"},
                      device);
    SimProgram p(source, mhz);
    if (!p.ok()) {
        ADD_FAILURE() << failed(p);
        return "";
    }
    // CCP1 and CCP2 pins; the 16F628A has only CCP1, on RB3.
    sim::LogicProbe& ccp1 = attach<sim::LogicProbe>(p, two ? "PORTC.2" : "PORTB.3");
    sim::LogicProbe& ccp2 = two ? attach<sim::LogicProbe>(p, "PORTC.1") : ccp1;
    long fosc = mhz * 1000000L;
    double worstHz = 0, worstDuty = 0;
    int good = 0;
    for (const HpwmCase& k : cases) {
        std::ostringstream what;
        what << device << " at " << mhz << " MHz: HPWM " << k.channel << ", " << k.duty << ", "
             << k.hz;
        if (!p.runTo("Top")) {
            ADD_FAILURE() << what.str() << ": Top not reached";
            return "";
        }
        p.setByte("S", k.channel);
        p.setByte("B", k.duty);
        p.setWord("N", k.hz);
        if (!p.runTo("Wait", 100'000)) {
            ADD_FAILURE() << what.str() << ": did not return";
            return "";
        }
        // The documented arithmetic.
        long q = fosc / 1024 / k.hz;
        long prescale = q == 0 ? 1 : q < 4 ? 4 : 16;
        // From 32768 Hz on, the routine halves the dividend and the frequency.
        long n = k.hz >= 32768 ? fosc / 8 / prescale / (k.hz / 2) : fosc / 4 / prescale / k.hz;
        long m = k.duty == 255 ? 256 : k.duty;
        long value = std::min(1023L, n * m / 64);
        uint64_t period = static_cast<uint64_t>(n * prescale);
        sim::LogicProbe& probe = k.channel == 2 ? ccp2 : ccp1;
        size_t first = probe.edges().size();
        uint64_t begin = p.pic().cycles();
        runCycles(p, period * 12);
        p.setByte("HOLD", 1);
        const std::vector<sim::Edge>& e = probe.edges();
        std::vector<uint64_t> rises;
        for (size_t i = first; i < e.size(); ++i)
            if (e[i].level) rises.push_back(e[i].cycle);
        bool always = value == 0 || value * prescale >= static_cast<long>(period) * 4;
        if (always) {
            // No edge after the first period: the pin stays at one level.
            size_t late = 0;
            for (size_t i = first; i < e.size(); ++i)
                if (e[i].cycle > begin + period) ++late;
            EXPECT_EQ(late, 0u) << what.str() << ": edges on a constant output";
            bool level = e.empty() ? probe.initialLevel() : e.back().level;
            EXPECT_EQ(level, value != 0) << what.str();
            EXPECT_LE(std::abs((value != 0) - k.duty / 256.0), 0.02) << what.str();
            if (late == 0 && level == (value != 0)) ++good;
            continue;
        }
        if (rises.size() < 4) {
            ADD_FAILURE() << what.str() << ": " << rises.size() << " rising edges";
            continue;
        }
        // Periods and high times after the first two rising edges.
        uint64_t a = rises[2], b = rises.back();
        uint64_t periods = rises.size() - 3;
        double measuredPeriod = static_cast<double>(b - a) / static_cast<double>(periods);
        double high = static_cast<double>(highCycles(probe, a, b)) / static_cast<double>(periods);
        double hz = fosc / 4.0 / measuredPeriod;
        double duty = high / measuredPeriod;
        double expectedHigh = std::round(static_cast<double>(value * prescale) / 4.0);
        EXPECT_EQ(measuredPeriod, static_cast<double>(period)) << what.str();
        EXPECT_NEAR(high, expectedHigh, 1.0) << what.str();
        double hzError = std::abs(hz - k.hz) / k.hz;
        double dutyError = std::abs(duty - k.duty / 256.0);
        EXPECT_LE(hzError, 0.02) << what.str() << ": " << hz << " Hz";
        EXPECT_LE(dutyError, 0.02) << what.str() << ": duty " << duty;
        worstHz = std::max(worstHz, hzError);
        worstDuty = std::max(worstDuty, dutyError);
        if (measuredPeriod == static_cast<double>(period) && std::abs(high - expectedHigh) <= 1)
            ++good;
    }
    std::ostringstream s;
    s << "HPWM " << device << " " << mhz << " MHz: " << good << " of " << cases.size()
      << " outputs as computed; worst frequency error " << worstHz * 100 << " %, duty error "
      << worstDuty * 100 << " % of the period";
    return s.str();
}

} // namespace zorvel::test
