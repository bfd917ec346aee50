#include "compiler/frontend/device.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/driver/file_io.h"

#include <cctype>
#include <charconv>

namespace zorvel {
namespace {

bool isNameChar(char ch) {
    return std::isalnum(static_cast<unsigned char>(ch)) || ch == '_';
}
bool isBlank(char ch) {
    return ch == ' ' || ch == '\t';
}

std::string upperTrimmed(std::string_view s) {
    size_t b = 0, e = s.size();
    while (b < e && std::isspace(static_cast<unsigned char>(s[b])))
        ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1])))
        --e;
    std::string out(s.substr(b, e - b));
    for (char& ch : out)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return out;
}

// Parses "NAME = VALUE" (the separator is any one character) into name and value.
// The value is decimal, or hexadecimal after "$"; 65535 reads as -1.
bool parseDefinitionLine(const std::string& line, std::string& name, int& value) {
    size_t i = 0;
    while (i < line.size() && isNameChar(line[i]))
        ++i;
    if (i == 0) return false;
    name = line.substr(0, i);
    while (i < line.size() && isBlank(line[i]))
        ++i;
    if (i >= line.size()) return false;
    ++i; // the separator
    while (i < line.size() && isBlank(line[i]))
        ++i;
    bool negative = i < line.size() && line[i] == '-';
    if (negative) ++i;
    int base = 10;
    if (i < line.size() && line[i] == '$') {
        base = 16;
        ++i;
    }
    long long v = 0;
    const char* first = line.data() + i;
    const char* last = line.data() + line.size();
    auto [ptr, ec] = std::from_chars(first, last, v, base);
    if (ec != std::errc() || ptr == first) return false;
    while (ptr < last && isBlank(*ptr))
        ++ptr;
    if (ptr != last || v > 0x7fffffffLL) return false;
    value = static_cast<int>(negative ? -v : v);
    if (value == 65535) value = -1;
    return true;
}

} // namespace

DeviceFile parseDeviceFile(std::string_view text) {
    DeviceFile file;
    std::vector<std::string> lines = splitLines(text);
    if (lines.size() < DeviceInfo::kFieldCount) {
        file.error = "it has " + std::to_string(lines.size()) + " lines, fewer than the " +
                     std::to_string(DeviceInfo::kFieldCount) + " field lines";
        return file;
    }
    std::string name;
    bool fuseSection = false, sawFuseMarker = false, nameSection = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string line = upperTrimmed(lines[i]);
        bool field = i < DeviceInfo::kFieldCount;
        bool comment = !field && !line.empty() && line[0] == ';';
        if (comment && line.find("FUSES") != std::string::npos) fuseSection = sawFuseMarker = true;
        if (comment && line.find("ASSEMBLER NAMES") != std::string::npos) nameSection = true;
        if (!field && (line.empty() || line[0] == ';')) continue;
        if (nameSection) {
            file.assemblerNames.insert(line.substr(0, line.find_first_of(" \t=")));
            continue;
        }
        int value = 0;
        if (!parseDefinitionLine(line, name, value)) {
            file.error = "line " + std::to_string(i + 1) + " is not NAME = number";
            return file;
        }
        if (field)
            file.info.field[i] = value;
        else
            file.names.emplace_back(name, value);
        if (!field && fuseSection) file.fuses.insert(name);
    }
    if (!sawFuseMarker) {
        file.fuses.clear();
        for (const auto& entry : file.names)
            file.fuses.insert(entry.first);
    }
    return file;
}

const DeviceFile& DeviceFileCache::get(const fs::path& incFolder, const std::string& device) {
    auto it = files_.find(device);
    if (it != files_.end()) return it->second;
    DeviceFile file;
    std::optional<fs::path> path = findInFolder(incFolder, "P" + device + ".inf");
    std::optional<std::string> text = path ? readFile(*path) : std::nullopt;
    if (!text) {
        file.missing = true;
        file.error = "missing";
    } else {
        file = parseDeviceFile(*text);
    }
    return files_.emplace(device, std::move(file)).first->second;
}

const std::array<SettingDef, kSettingCount>& settingTable() {
    using K = SettingKind;
    static const std::array<SettingDef, kSettingCount> table = {{
        {"BOOTLOADER", K::Switch, 1, "", 0},       {"XTAL", K::Number, 4, "", 0},
        {"RSOUT_PIN", K::Pin, 0, "PORTB", 0},      {"RSIN_PIN", K::Pin, 0, "PORTB", 1},
        {"SERIAL_BAUD", K::Number, 9600, "", 0},   {"RSOUT_MODE", K::Mode, 1, "", 0},
        {"RSIN_MODE", K::Mode, 0, "", 0},          {"RSOUT_PACE", K::Number, 0, "", 0},
        {"RSIN_TIMEOUT", K::Number, 1000, "", 0},  {"SDA_PIN", K::Pin, 0, "PortA", 0},
        {"SCL_PIN", K::Pin, 0, "PortA", 1},        {"BUS_DELAYMS", K::Number, 0, "", 0},
        {"SLOW_BUS", K::BusSwitch, 0, "", 0},      {"INTERNAL_BUS", K::BusSwitch, 0, "", 0},
        {"LCD_DTPIN", K::Pin, 0, "PORTB", 4},      {"LCD_RSPIN", K::Pin, 0, "PORTB", 3},
        {"LCD_ENPIN", K::Pin, 0, "PORTB", 2},      {"LCD_INTERFACE", K::LcdInterface, 4, "", 0},
        {"LCD_LINES", K::LcdLines, 2, "", 0},      {"KEYPAD_PORT", K::Port, 0, "PORTB", 0},
        {"SHIFT_DELAYUS", K::Number, 0, "", 0},    {"ADIN_TAD", K::Tad, 3, "", 0},
        {"ADIN_STIME", K::Number, 50, "", 0},      {"ADIN_RES", K::Number, 0, "", 0},
        {"LCD_DTPORT", K::Opaque, 0, "", 0},       {"LCD_RWPIN", K::Opaque, 0, "", 0},
        {"LCD_CS1PIN", K::Opaque, 0, "", 0},       {"LCD_CS2PIN", K::Opaque, 0, "", 0},
        {"LCD_TYPE", K::Opaque, 0, "", 0},         {"INTERNAL_FONT", K::Opaque, 0, "", 0},
        {"FONT_ADDR", K::Opaque, 0, "", 0},        {"GLCD_CS_INVERT", K::Opaque, 0, "", 0},
        {"GLCD_FAST_STROBE", K::Opaque, 0, "", 0},
    }};
    return table;
}

int findSetting(std::string_view key) {
    const auto& table = settingTable();
    for (size_t i = 0; i < table.size(); ++i)
        if (key == table[i].key) return static_cast<int>(i);
    return -1;
}

void DeviceSettings::reset() {
    const auto& table = settingTable();
    for (size_t i = 0; i < table.size(); ++i) {
        values[i] = SettingValue{};
        values[i].number = table[i].number;
        values[i].port = table[i].port;
        values[i].pin = table[i].pin;
    }
}

void DeviceModel::resetForPass() {
    settings.reset();
    watchdog = true;
    configText.clear();
    configGiven = false;
    contextUsed = false;
    oscCalSmall = false;
    oscCalLarge = false;
    setThisPass = false;
}

namespace {

void declare(Compilation& c, std::string name, int kind, int address, int bit) {
    std::string target = kind == kKindNum ? std::to_string(address) : name;
    c.symbols.add({std::move(name), std::move(target), kind, address, bit});
}

// The interrupt save bytes: four in bank 0 and one at the start of each other bank.
void allocateSaveBytes(Compilation& c) {
    DeviceModel& d = c.device;
    for (const char* name : {"WSAVE", "SSAVE", "PSAVE", "FSRSAVE"}) {
        declare(c, name, kKindByte, d.allocAddress++, -1);
        ++c.ctx.variablesUsed;
    }
    for (int bank = 1; bank < 4; ++bank) {
        if (d.info.ramBanks() <= bank) continue;
        declare(c, "WSAVE" + std::to_string(bank), kKindByte, bankSaveAddress(d.info, bank), -1);
        ++c.ctx.variablesUsed;
    }
}

// GEN .. GEN4, PP0 .. PP7 (words with their H bytes), GPR and BPF.
void allocateSystemVariables(Compilation& c) {
    DeviceModel& d = c.device;
    auto word = [&](const std::string& name) {
        declare(c, name, kKindWord, d.allocAddress++, -1);
        declare(c, name + "H", kKindByte, d.allocAddress++, -1);
    };
    word("GEN");
    for (int i = 2; i <= 4; ++i)
        word("GEN" + std::to_string(i));
    for (int i = 0; i <= 7; ++i)
        word("PP" + std::to_string(i));
    declare(c, "GPR", kKindByte, d.allocAddress++, -1);
    word("BPF");
}

void declarePortNames(Compilation& c) {
    static const char* const names[][4] = {
        {"GPIO", "GPIO", "TRISIO", "TRISIO"},
        {"PORTB", "PORTA", "TRISB", "TRISA"},
        {"PORTB", "PORTC", "TRISB", "TRISC"},
    };
    int style = c.device.info.portStyle();
    int row = style == 1 ? 0 : style >= 3 ? 2 : 1;
    static const char* const constants[] = {"PORTLO", "PORTHI", "TRISLO", "TRISHI"};
    for (int i = 0; i < 4; ++i) {
        const SymbolEntry* reg = c.symbols.find(names[row][i]);
        if (reg) declare(c, constants[i], kKindNum, reg->address, -1);
    }
}

} // namespace

bool loadDevice(Compilation& c) {
    DeviceModel& d = c.device;
    const DeviceFile& file = c.deviceFiles.get(c.options.homeFolder / "inc", d.name);
    if (file.missing) {
        c.alert("Unrecognised PIC type.");
        c.ctx.deviceSet = false;
        return false;
    }
    if (!file.error.empty()) {
        c.alert("Device definition file P" + d.name + ".inf is malformed: " + file.error + ".");
        c.ctx.deviceSet = false;
        return false;
    }
    d.info = file.info;
    d.fuses = file.fuses;
    d.assemblerNames = file.assemblerNames;
    c.symbols.clear();
    for (const auto& [name, value] : file.names)
        declare(c, name, kKindByte, value, 0);
    for (const char* name : {"RANDOM", "EREAD", "SIN", "INKEY"})
        declare(c, name, kKindByte, 0, 0);
    declare(c, "XTAL", kKindNum, d.settings[kXtal].number, -1);
    d.allocAddress = d.info.bankStart(0);
    c.ctx.variablesUsed = 0;
    if (d.interruptOn) allocateSaveBytes(c);
    allocateSystemVariables(c);
    declarePortNames(c);
    d.loadedSymbols = c.symbols.size();
    return true;
}

int bankSaveAddress(const DeviceInfo& info, int bank) {
    return info.bankStart(0) + 128 * bank;
}

bool checkPort(Compilation& c, std::string_view port) {
    static const struct {
        const char* name;
        bool (*invalid)(int style);
    } ports[] = {
        {"PORTA", [](int s) { return s < 2; }}, {"PORTB", [](int) { return false; }},
        {"PORTC", [](int s) { return s < 3; }}, {"PORTD", [](int s) { return s < 4; }},
        {"PORTE", [](int s) { return s < 5; }}, {"GPIO", [](int s) { return s > 1; }},
    };
    for (const auto& p : ports) {
        if (port != p.name) continue;
        if (!p.invalid(c.device.info.portStyle())) return true;
        reportError(c, kErrText, "Invalid Port for this device");
        return false;
    }
    reportError(c, kErrText, "Unknown port Definition");
    return false;
}

} // namespace zorvel
