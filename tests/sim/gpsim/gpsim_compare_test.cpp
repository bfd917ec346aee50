// Runs every program of tests/sim/gpsim/programs in this simulator and in
// gpsim, up to the program's `goto $` end loop, and compares W, STATUS, PC,
// the cycle count and the register file. A program may declare a known
// gpsim deviation with a line
//     ; known-gpsim-deviation: <cycles|W|STATUS|PC|RAM 0xADDR> -- <reason>
// which leaves that item out of the comparison (it is still printed).
#include "sim/core/sim_harness.h"
#include "sim/gpsim/gpsim_runner.h"
#include "support/test_support.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace zorvel::test {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kMaxCycles = 2'000'000;

fs::path programFolder() {
    return fs::path(ZORVEL_SIM_TEST_DATA) / "gpsim" / "programs";
}

std::vector<std::string> programNames() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(programFolder()))
        if (entry.path().extension() == ".asm") names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string readText(const fs::path& path) {
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

std::set<std::string> knownDeviations(const std::string& source) {
    std::set<std::string> items;
    const std::string tag = "; known-gpsim-deviation:";
    std::istringstream in(source);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind(tag, 0) != 0) continue;
        std::string item = line.substr(tag.size());
        item = item.substr(0, item.find("--"));
        item.erase(0, item.find_first_not_of(' '));
        item.erase(item.find_last_not_of(' ') + 1);
        items.insert(item);
    }
    return items;
}

// "p16f84a" from a "; processor: p16f84a" line, else the 16F877.
std::string processorOf(const std::string& source) {
    const std::string tag = "; processor:";
    auto at = source.find(tag);
    if (at == std::string::npos) return "p16f877";
    std::istringstream in(source.substr(at + tag.size()));
    std::string name;
    in >> name;
    return name;
}

std::string deviceOf(const std::string& processor) {
    std::string device = processor.substr(1);
    for (char& c : device)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return device;
}

std::string hex(int v, int width = 2) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%0*X", width, v);
    return buf;
}

std::string describeOurs(const sim::Pic16& pic) {
    std::string s = "ours:  W=" + hex(pic.w()) + " STATUS=" + hex(pic.status()) +
                    " PC=" + hex(pic.pc(), 4) + " cycles=" + std::to_string(pic.cycles()) + "\n";
    for (int row = 0; row < 512; row += 16) {
        s += hex(row, 3) + ":";
        for (int i = 0; i < 16; ++i)
            s += " " + hex(pic.peek(row + i));
        s += "\n";
    }
    return s;
}

std::string describeGpsim(const GpsimState& g) {
    std::string s = "gpsim: W=" + hex(g.w) + " STATUS=" + hex(g.status) + " PC=" + hex(g.pc, 4) +
                    " cycles=" + std::to_string(g.cycles) + "\n";
    for (int row = 0; row < 512; row += 16) {
        s += hex(row, 3) + ":";
        for (int i = 0; i < 16; ++i)
            s += " " + (g.ram[row + i] < 0 ? "--" : hex(g.ram[row + i]));
        s += "\n";
    }
    return s;
}

class GpsimComparison : public ::testing::TestWithParam<std::string> {};

TEST_P(GpsimComparison, SameStateAtTheEndLoop) {
    if (!gpsimAvailable()) GTEST_SKIP() << "gpsim is not installed";
    const std::string name = GetParam();
    std::string source = readText(programFolder() / (name + ".asm"));
    std::set<std::string> known = knownDeviations(source);
    TempDir dir;
    std::string processor = processorOf(source);
    AssembledProgram program = assemble(source, dir.path(), processor);
    ASSERT_TRUE(program.ok) << program.log;
    int end = endLoopAddress(program.hex);
    ASSERT_GE(end, 0) << name << " has no goto $ end loop";

    sim::Pic16 pic(deviceLayout(deviceOf(processor)));
    pic.load(program.hex);
    pic.runUntil([&] { return pic.pc() == end; }, kMaxCycles);
    EXPECT_EQ(pic.pc(), end) << name << " did not reach its end loop";

    GpsimState g = runGpsim(dir.path() / "prog.cod", end, kMaxCycles);
    ASSERT_TRUE(g.ok) << "could not read gpsim's state:\n" << g.output;

    std::vector<std::string> mismatches;
    std::vector<std::string> excused;
    auto check = [&](const std::string& item, int ours, int theirs) {
        if (ours == theirs) return;
        std::string text = item + ": ours " + hex(ours) + ", gpsim " + hex(theirs);
        (known.count(item) ? excused : mismatches).push_back(text);
    };
    check("W", pic.w(), g.w);
    check("STATUS", pic.status(), g.status);
    check("PC", pic.pc(), g.pc);
    if (pic.cycles() != g.cycles) {
        std::string text =
            "cycles: ours " + std::to_string(pic.cycles()) + ", gpsim " + std::to_string(g.cycles);
        (known.count("cycles") ? excused : mismatches).push_back(text);
    }
    for (int a = 0; a < 512; ++a) {
        if (g.ram[a] < 0 || (a & 0x7F) == 0x02) continue; // unimplemented; PCL is compared as PC
        check("RAM 0x" + hex(a, 3), pic.peek(a), g.ram[a]);
    }
    for (const auto& e : excused)
        std::cout << "[known gpsim deviation] " << name << " " << e << "\n";
    if (!mismatches.empty()) {
        std::string all;
        for (const auto& m : mismatches)
            all += "  " + m + "\n";
        ADD_FAILURE() << name << ": " << mismatches.size() << " mismatches\n"
                      << all << describeOurs(pic) << describeGpsim(g);
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, GpsimComparison, ::testing::ValuesIn(programNames()),
                         [](const auto& info) { return info.param; });

} // namespace
} // namespace zorvel::test
