// Every generated device builds a program that fills its RAM with variables
// of every kind, through the real assembler, and the words-used figure agrees
// with a count made here from the HEX file.
#include "compiler/driver/file_io.h"
#include "support/test_support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> deviceNames() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dataFolder() / "inc")) {
        std::string file = entry.path().filename().string();
        if (file.size() > 5 && file[0] == 'P' && entry.path().extension() == ".inf")
            names.push_back(file.substr(1, file.size() - 5));
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The fuse names of a definition file (the lines after its fuse marker).
std::vector<std::string> fusesOf(const std::string& device) {
    std::vector<std::string> fuses;
    bool inFuses = false;
    for (const std::string& line :
         splitLines(*readFile(dataFolder() / "inc" / ("P" + device + ".inf")))) {
        if (line.rfind(';', 0) == 0) {
            inFuses = line.find("fuses") != std::string::npos;
            continue;
        }
        if (inFuses) fuses.push_back(line.substr(0, line.find(' ')));
    }
    return fuses;
}

int field(const std::string& device, int index) {
    std::vector<std::string> lines =
        splitLines(*readFile(dataFolder() / "inc" / ("P" + device + ".inf")));
    return std::stoi(lines.at(index).substr(lines[index].find('=') + 1));
}

// Program words in a HEX file: data bytes below the configuration area, halved.
int programWords(const fs::path& hex) {
    int bytes = 0;
    for (const std::string& line : splitLines(*readFile(hex))) {
        if (line.size() < 11 || line[0] != ':') continue;
        int count = std::stoi(line.substr(1, 2), nullptr, 16);
        int address = std::stoi(line.substr(3, 4), nullptr, 16);
        int type = std::stoi(line.substr(7, 2), nullptr, 16);
        if (type == 0 && address < 0x4000) bytes += count;
    }
    return bytes / 2;
}

// DEVICE, CONFIG, then declarations that take exactly `freeBytes` bytes.
std::string fillingProgram(const std::string& device, int freeBytes) {
    std::vector<std::string> fuses = fusesOf(device);
    std::string config = fuses.front();
    auto wdtOff = std::find(fuses.begin(), fuses.end(), "WDT_OFF");
    if (wdtOff != fuses.end()) config += ", WDT_OFF";
    std::string s = "DEVICE " + device + "\nCONFIG " + config + "\n";
    s += "DIM TOTAL AS WORD\n";
    for (int i = 0; i < 9; ++i)
        s += "DIM FLAG" + std::to_string(i) + " AS BIT\n";
    int left = freeBytes - 4;
    for (int n = 0; left >= 16; ++n, left -= 16)
        s += "DIM BUF" + std::to_string(n) + "[16]\n";
    for (int n = 0; left > 0; ++n, --left)
        s += "DIM BYTE" + std::to_string(n) + "\n";
    s += "START:\nASM\n  movlw 5\n  goto START\nENDASM\nEND\n";
    return s;
}

class EveryDevice : public ::testing::TestWithParam<std::string> {};

TEST_P(EveryDevice, FillsRamAndAssembles) {
    const std::string& device = GetParam();
    int freeBytes = field(device, 0) - 27;
    ASSERT_GT(freeBytes, 4) << device;
    TempDir dir;
    std::string source = fillingProgram(device, freeBytes);
    CompileResult r = compileFile(dir.write("fill.bas", source), dataFolder(), true);
    ASSERT_EQ(r.errors, 0) << device << "\n" << (r.messages.empty() ? "" : r.messages[0]);
    EXPECT_EQ(r.compilation->ctx.variablesUsed, freeBytes);
    int words = programWords(dir.path() / "fill.hex");
    EXPECT_GT(words, 0);
    EXPECT_EQ(r.compilation->ctx.wordsUsed, words) << device;
    std::string summary = "\tZORVEL COMPILED OK.  " + std::to_string(words) + " Words used";
    EXPECT_EQ(std::count(r.messages.begin(), r.messages.end(), summary), 1) << device;

    // One byte more does not fit.
    std::string over = source;
    over.insert(over.find("START:"), "DIM EXTRA\n");
    CompileResult full = compileFile(dir.write("over.bas", over), dataFolder());
    ASSERT_FALSE(full.messages.empty());
    EXPECT_EQ(full.messages.back(), "\t\t*** Too Many Variables ***") << device;
    EXPECT_EQ(full.errors, 1) << device;
}

INSTANTIATE_TEST_SUITE_P(Devices, EveryDevice, ::testing::ValuesIn(deviceNames()),
                         [](const auto& info) { return "P" + info.param; });

} // namespace
} // namespace zorvel::test
