// The target device: the definition file read at DEVICE time, the settings
// that DECLARE changes, and the rest of the per-pass device state.
#pragma once

#include <array>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace zorvel {

class Compilation;

// The 46 numeric fields at the top of a device definition file.
struct DeviceInfo {
    static constexpr int kFieldCount = 46;
    std::array<int, kFieldCount> field{};

    int ramCapacity() const { return field[0]; }
    int codeWords() const { return field[1]; }
    int codeSizeClass() const { return field[2]; }
    int pokeBanks() const { return field[3]; }
    int portStyle() const { return field[4]; }
    int adcPresent() const { return field[5]; }
    int adcBits() const { return field[6]; }
    int eepromBytes() const { return field[7]; }
    int bankStart(int bank) const { return field[8 + 2 * bank]; }
    int bankEnd(int bank) const { return field[9 + 2 * bank]; }
    int ramBanks() const { return field[16]; }
    int eepromAddress() const { return field[18]; }
    int oscCal() const { return field[19]; }
    int configAddress() const { return field[25]; }
    int selfAccess() const { return field[42]; }
};

// A parsed definition file: the fields and the register and fuse names.
struct DeviceFile {
    DeviceInfo info;
    std::vector<std::pair<std::string, int>> names; // registers and fuses, in file order
    std::unordered_set<std::string> fuses;          // the configuration fuse names among them
    std::unordered_set<std::string> assemblerNames; // further names the register file defines
    std::string error; // why the file could not be used; empty when it is good
    bool missing = false;
};

// Parses the text of a definition file. Malformed text sets `error`. The
// fields come first, then "NAME = value" lines of registers; a comment line
// that mentions FUSES starts the configuration fuse names. Without such a
// line every name is accepted as a fuse. A comment line that mentions
// ASSEMBLER NAMES starts the names (bit names and the like) that the register
// include file defines besides registers and fuses; they are not symbols, but
// a program may not declare them.
DeviceFile parseDeviceFile(std::string_view text);

// Definition files read once per Compilation, keyed by device name.
class DeviceFileCache {
public:
    const DeviceFile& get(const std::filesystem::path& incFolder, const std::string& device);

private:
    std::map<std::string, DeviceFile> files_;
};

enum class SettingKind {
    Switch,
    BusSwitch,
    Number,
    Pin,
    Mode,
    Port,
    Tad,
    LcdInterface,
    LcdLines,
    Opaque
};

// The DECLARE settings, in table order.
enum Setting : int {
    kBootloader,
    kXtal,
    kRsoutPin,
    kRsinPin,
    kSerialBaud,
    kRsoutMode,
    kRsinMode,
    kRsoutPace,
    kRsinTimeout,
    kSdaPin,
    kSclPin,
    kBusDelayMs,
    kSlowBus,
    kInternalBus,
    kLcdDtPin,
    kLcdRsPin,
    kLcdEnPin,
    kLcdInterface,
    kLcdLines,
    kKeypadPort,
    kShiftDelayUs,
    kAdinTad,
    kAdinStime,
    kAdinRes,
    kLcdDtPort,
    kLcdRwPin,
    kLcdCs1Pin,
    kLcdCs2Pin,
    kLcdType,
    kInternalFont,
    kFontAddr,
    kGlcdCsInvert,
    kGlcdFastStrobe,
    kSettingCount
};

struct SettingDef {
    const char* key;
    SettingKind kind;
    int number;       // default number (or switch state)
    const char* port; // default port of a pin or port setting
    int pin;          // default bit of a pin setting
};

struct SettingValue {
    int number = 0;
    std::string port; // pins and ports: the port name as text
    int pin = 0;
    std::string text; // opaque settings: the value as written
    bool declared = false;
};

const std::array<SettingDef, kSettingCount>& settingTable();
int findSetting(std::string_view key); // index into settingTable(), or -1

struct DeviceSettings {
    std::array<SettingValue, kSettingCount> values;

    void reset();
    const SettingValue& operator[](Setting s) const { return values[s]; }
    SettingValue& operator[](Setting s) { return values[s]; }
};

struct DeviceModel {
    std::string name = "16F84";
    DeviceInfo info;
    DeviceSettings settings;
    bool watchdog = true;
    std::string configText;
    bool configGiven = false;
    bool interruptOn = false; // an ON_INTERRUPT handler exists (kept for the whole run)
    bool interruptUsed = false;
    std::string handlerLabel;
    std::unordered_set<std::string> fuses;          // names CONFIG accepts
    std::unordered_set<std::string> assemblerNames; // bit names and others of the register file
    bool contextUsed = false;
    bool oscCalSmall = false; // SET_OSCCAL on a device of at most 1K words
    bool oscCalLarge = false; // SET_OSCCAL on a device of 2K words or more
    bool setThisPass = false;
    int allocAddress = 0;     // next free RAM address
    size_t loadedSymbols = 0; // the symbol count right after the last load

    // Resets what every pass starts from.
    void resetForPass();
};

// Where an interrupt saves W when it interrupts code running in `bank` (1..3):
// the save byte in bank 0 seen through that bank's bank bits. Nothing else may
// live there while a handler exists.
int bankSaveAddress(const DeviceInfo& info, int bank);

// Reads the definition file of `device.name` and rebuilds the symbol table.
// Returns false (with an alert) when the file is missing or malformed.
bool loadDevice(Compilation& c);

// Checks a port name against the device's ports, reporting what is wrong.
bool checkPort(Compilation& c, std::string_view port);

} // namespace zorvel
