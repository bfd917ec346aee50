#include "sim/device_layout.h"

#include "sim/input_file.h"

#include <cctype>
#include <sstream>
#include <vector>

namespace zorvel::sim {

namespace {

constexpr int kNumericFields = 46;
// Device files are a few kilobytes.
constexpr uintmax_t kMaxDeviceFileBytes = 1u << 20;

std::string trim(const std::string& s) {
    size_t b = s.find_first_not_of(" \t\r");
    if (b == std::string::npos) return "";
    size_t e = s.find_last_not_of(" \t\r");
    return s.substr(b, e - b + 1);
}

// "NAME = VALUE" into name and value text; false without '='.
bool splitAssignment(const std::string& line, std::string& name, std::string& value) {
    size_t eq = line.find('=');
    if (eq == std::string::npos) return false;
    name = trim(line.substr(0, eq));
    value = trim(line.substr(eq + 1));
    return !name.empty() && !value.empty();
}

bool parseHexValue(const std::string& text, int& value) {
    if (text.size() < 2 || text[0] != '$') return false;
    try {
        size_t used = 0;
        value = std::stoi(text.substr(1), &used, 16);
        return used == text.size() - 1;
    } catch (...) {
        return false;
    }
}

// Why the numeric fields cannot describe a mid-range PIC, or "" when they can.
std::string fieldFault(const std::vector<int>& f) {
    auto outside = [](int v, int lo, int hi) { return v < lo || v > hi; };
    if (outside(f[1], 1, 8192)) return "CODE_WORDS must be 1 to 8192";
    if (outside(f[7], 0, 256)) return "EEPROM_BYTES must be 0 to 256";
    if (outside(f[16], 1, 4)) return "RAM_BANKS must be 1 to 4";
    for (int i = 8; i < 16; ++i)
        if (outside(f[i], 0, 511)) return "the bank limits must be register addresses 0 to 511";
    return "";
}

void applyFields(const std::vector<int>& f, DeviceLayout& layout) {
    layout.codeWords = f[1];
    layout.bankCount = f[3] == 4 ? 4 : 2;
    layout.eepromBytes = f[7];
    for (int b = 0; b < 4; ++b) {
        layout.bankStart[b] = f[8 + 2 * b];
        layout.bankEnd[b] = f[9 + 2 * b];
    }
    layout.ramBanks = f[16];
    layout.configAddress = f[25] / 2;
    layout.fuseWdt = f[32];
}

} // namespace

std::optional<DeviceLayout> loadDeviceLayout(const std::filesystem::path& incFolder,
                                             const std::string& device, std::string& error) {
    std::string upper;
    for (char c : device)
        upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (upper.rfind("PIC", 0) == 0)
        upper = upper.substr(3);
    else if (upper.size() > 1 && upper[0] == 'P' &&
             std::isdigit(static_cast<unsigned char>(upper[1])))
        upper = upper.substr(1);
    std::filesystem::path file = incFolder / ("P" + upper + ".inf");
    std::optional<std::string> text =
        readInputFile(file, "device file", kMaxDeviceFileBytes, error);
    if (!text) return std::nullopt;
    std::istringstream in(*text);
    DeviceLayout layout;
    layout.name = upper;
    std::vector<int> fields;
    enum { Registers, Fuses, Names } section = Registers;
    std::string line;
    int lineNumber = 0;
    while (std::getline(in, line)) {
        ++lineNumber;
        line = trim(line);
        if (line.empty()) continue;
        auto bad = [&](const std::string& what) {
            error = file.string() + " line " + std::to_string(lineNumber) + ": " + what;
            return std::nullopt;
        };
        std::string name, value;
        if (static_cast<int>(fields.size()) < kNumericFields) {
            if (!splitAssignment(line, name, value)) return bad("expected NAME = number");
            try {
                fields.push_back(std::stoi(value));
            } catch (...) {
                return bad("invalid number '" + value + "'");
            }
            continue;
        }
        if (line[0] == ';') {
            if (line.find("Configuration fuses") != std::string::npos)
                section = Fuses;
            else if (line.find("Assembler names") != std::string::npos)
                section = Names;
            continue;
        }
        if (section == Names) {
            layout.bitNames.insert(line);
            continue;
        }
        int number = 0;
        if (!splitAssignment(line, name, value) || !parseHexValue(value, number))
            return bad("expected NAME = $HEX");
        if (section == Registers && (number < 0 || number > 511))
            return bad("register " + name + " is outside the register file (0 to 511)");
        if (section == Registers)
            layout.registers.emplace(name, number);
        else
            layout.fuses.emplace(name, number);
    }
    if (static_cast<int>(fields.size()) < kNumericFields) {
        error = file.string() + ": only " + std::to_string(fields.size()) + " numeric fields";
        return std::nullopt;
    }
    if (std::string fault = fieldFault(fields); !fault.empty()) {
        error = file.string() + ": " + fault;
        return std::nullopt;
    }
    applyFields(fields, layout);
    return layout;
}

} // namespace zorvel::sim
