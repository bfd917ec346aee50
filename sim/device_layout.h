// What the simulator needs to know about a device, read from the project's
// device definition file (P<DEVICE>.inf): memory sizes, RAM banks and the
// special-function register addresses by name.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace zorvel::sim {

struct DeviceLayout {
    std::string name; // "16F877"
    int codeWords = 0;
    int eepromBytes = 0;
    int ramBanks = 0;
    int bankStart[4] = {};
    int bankEnd[4] = {};
    int configAddress = 0x2007;           // word address
    int bankCount = 2;                    // register banks selected by RP0/RP1 (2 or 4)
    std::map<std::string, int> registers; // special-function registers by name
    std::map<std::string, int> fuses;     // configuration fuse values by name
    int fuseWdt = 4;                      // watchdog enable mask in the config word, -1 absent
    std::set<std::string> bitNames;       // the assembler's bit names ("RB0", "GP2", "GIE")

    bool has(const std::string& reg) const { return registers.count(reg) != 0; }
    int address(const std::string& reg) const {
        auto it = registers.find(reg);
        return it == registers.end() ? -1 : it->second;
    }
};

// Reads <incFolder>/P<DEVICE>.inf; nullopt with `error` set on failure.
std::optional<DeviceLayout> loadDeviceLayout(const std::filesystem::path& incFolder,
                                             const std::string& device, std::string& error);

} // namespace zorvel::sim
