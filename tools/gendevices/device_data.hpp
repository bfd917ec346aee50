// Everything written for one device: the numeric fields of the .inf file,
// its register and fuse lists and the aliases of the .zvi file.
#pragma once

#include "gpasm_info.hpp"
#include "header_info.hpp"
#include "ram_layout.hpp"

#include <array>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace gendevices {

constexpr std::size_t fieldCount = 46;

// Position of each numeric field in the .inf file; the reader goes by line number.
enum InfField : std::size_t {
    RamCapacity = 0,
    CodeWords = 1,
    CodeSizeClass = 2,
    PokeStyle = 3,
    PortStyle = 4,
    AdcPresent = 5,
    AdcBits = 6,
    EepromBytes = 7,
    Bank0Start = 8, // bank b start is Bank0Start + 2b, its end the line after
    RamBanks = 16,
    EepromAddress = 18,
    Osccal = 19,
    PgmEndFlag = 20,
    PgmExtraPasses = 22,
    PgmDelayMs = 23,
    EraseDelayMs = 24,
    ConfigAddress = 25,
    OscRc = 29,
    OscEc = 30,
    FuseWdt = 32,
    FusePwrte = 35,
    FuseMclre = 36,
    FuseBoren = 38,
    FuseLvp = 40,
    SelfAccess = 42,
    FuseDebug = 45,
};

extern const std::array<std::string_view, fieldCount> fieldNames;

struct Alias {
    std::string name;
    std::string target;
};

struct DeviceData {
    std::string chip;       // gpasm's name, e.g. "p16f877a"
    std::string deviceName; // upper case without the leading P, e.g. "16F877A"
    std::string headerFile; // e.g. "p16f877a.inc"
    std::array<long, fieldCount> fields{};
    std::vector<Symbol> registers;
    std::vector<Symbol> fuses;
    std::vector<Alias> aliases;              // .zvi EQU lines, fuse aliases first
    std::vector<std::string> assemblerNames; // further names the .zvi defines, sorted
    std::vector<BankLayout> banks;
    std::vector<std::string> notes;  // remarks for the tool's report
    std::vector<std::string> errors; // inconsistent data; the device must not be written
};

struct Rejection {
    std::string reason;
};

// Builds the data of a device already known to be a classic PIC14 part.
std::variant<DeviceData, Rejection> buildDevice(const ChipProperties& chip,
                                                const HeaderInfo& header);

} // namespace gendevices
