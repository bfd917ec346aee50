#include "sim/gpsim/gpsim_runner.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace zorvel::test {

namespace fs = std::filesystem;

bool gpsimAvailable() {
    return std::system("gpsim -v > /dev/null 2>&1") == 0;
}

namespace {

std::string readAll(const fs::path& path) {
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool isHex(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

// A dump row: "0020:  12 00 -- ..." (4 hex digits, a colon, 16 cells).
bool parseRow(const std::string& line, GpsimState& state) {
    if (line.size() < 7 + 16 * 3 || line[4] != ':' || line[5] != ' ' || line[6] != ' ')
        return false;
    for (int i = 0; i < 4; ++i)
        if (!isHex(line[i]) || std::isupper(static_cast<unsigned char>(line[i]))) return false;
    int base = std::stoi(line.substr(0, 4), nullptr, 16);
    if (base >= 512) return true;
    for (int i = 0; i < 16; ++i) {
        std::string cell = line.substr(7 + static_cast<size_t>(i) * 3, 2);
        if (cell == "--")
            state.ram[base + i] = -1;
        else if (isHex(cell[0]) && isHex(cell[1]))
            state.ram[base + i] = std::stoi(cell, nullptr, 16);
        else
            return false;
    }
    return true;
}

bool parseRam(const std::string& text, GpsimState& state) {
    std::istringstream in(text);
    std::string line;
    int rows = 0;
    state.ram.fill(-1); // rows gpsim leaves out are not compared
    while (std::getline(in, line))
        if (parseRow(line, state)) ++rows;
    return rows > 0;
}

// The hex number after the last "<name> = " (with any spaces) in the text.
bool lastAssignment(const std::string& text, const std::string& name, uint64_t& value) {
    bool found = false;
    for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + 1)) {
        bool wordStart = at == 0 || !std::isalnum(static_cast<unsigned char>(text[at - 1]));
        size_t p = at + name.size();
        while (p < text.size() && text[p] == ' ')
            ++p;
        if (!wordStart || p >= text.size() || text[p] != '=') continue;
        ++p;
        while (p < text.size() && text[p] == ' ')
            ++p;
        size_t e = p;
        while (e < text.size() && isHex(text[e]))
            ++e;
        if (e == p) continue;
        value = std::stoull(text.substr(p, e - p), nullptr, 16);
        found = true;
    }
    return found;
}

// The stopwatch command prints "$0000002A" on a line of its own.
bool lastStopwatch(const std::string& text, uint64_t& value) {
    std::istringstream in(text);
    std::string line;
    bool found = false;
    while (std::getline(in, line)) {
        if (line.size() < 2 || line[0] != '$') continue;
        size_t e = 1;
        while (e < line.size() && isHex(line[e]))
            ++e;
        if (e == 1) continue;
        value = std::stoull(line.substr(1, e - 1), nullptr, 16);
        found = true;
    }
    return found;
}

} // namespace

GpsimState runGpsim(const fs::path& cod, int endAddress, uint64_t maxCycles) {
    GpsimState state;
    fs::path folder = cod.parent_path();
    fs::path script = folder / "gpsim_commands.txt";
    fs::path out = folder / "gpsim_output.txt";
    {
        std::ofstream s(script);
        s << "frequency 4000000\n"; // gpsim's default crystal is 20 MHz
        if (endAddress >= 0) s << "break e 0x" << std::hex << endAddress << std::dec << "\n";
        s << "break c " << maxCycles << "\n";
        s << "run\ndump\nstopwatch\nquit\n";
    }
    std::string command = "cd '" + folder.string() + "' && timeout 120 gpsim -i -S disable -s '" +
                          cod.filename().string() + "' < '" + script.string() + "' > '" +
                          out.string() + "' 2>&1";
    int rc = std::system(command.c_str());
    state.output = readAll(out);
    if (rc != 0) return state;
    uint64_t v = 0;
    bool ok = parseRam(state.output, state);
    ok = ok && lastAssignment(state.output, "PC", v);
    state.pc = static_cast<uint16_t>(v);
    ok = ok && lastAssignment(state.output, "status", v);
    state.status = static_cast<uint8_t>(v);
    ok = ok && lastAssignment(state.output, "W", v);
    state.w = static_cast<uint8_t>(v);
    ok = ok && lastStopwatch(state.output, v);
    state.cycles = v;
    state.ok = ok;
    return state;
}

} // namespace zorvel::test
