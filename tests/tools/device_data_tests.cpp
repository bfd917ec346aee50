// Checks the committed device definition files (data/inc/P*.inf): field
// values of well-known parts against their datasheets, and the shape of
// every file.

#include "inf_file.hpp"

#include <array>
#include <cctype>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <set>
#include <sstream>
#include <string>

namespace fs = std::filesystem;
using namespace zorvel_test;

namespace {

enum Field : std::size_t {
    RamCapacity = 0,
    CodeWords = 1,
    CodeSizeClass = 2,
    PokeStyle = 3,
    PortStyle = 4,
    AdcPresent = 5,
    AdcBits = 6,
    EepromBytes = 7,
    Bank0Start = 8,
    RamBanks = 16,
    EepromAddress = 18,
    Osccal = 19,
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

constexpr long none = -1;

// Values from the devices' datasheets (memory maps and configuration word).
struct Reference {
    const char* device;
    long ramCapacity;
    std::array<long, 8> banks; // start and end of banks 0..3, 0/0 when absent
    long ramBanks;
    long codeWords;
    long sizeClass;
    long bankCount;
    long eepromBytes;
    long portStyle;
    long adcBits; // 0 without A/D converter
    long osccal;
    long wdt, pwrte, mclre, boren, lvp, selfAccess, debug;
    long oscRc, oscEc;
};

// clang-format off
const std::array<Reference, 8> references{{
    // 68 bytes at 0Ch-4Fh, bank 1 maps to bank 0; config: FOSC 1:0, WDTE 2, PWRTE 3.
    {"16F84", 68, {12, 79, 0, 0, 0, 0, 0, 0}, 1, 1024, 1, 2, 64, 2, 0, 0,
     4, 8, none, none, none, none, none, 3, none},
    {"16F84A", 68, {12, 79, 0, 0, 0, 0, 0, 0}, 1, 1024, 1, 2, 64, 2, 0, 0,
     4, 8, none, none, none, none, none, 3, none},
    // 224 bytes: 20h-7Fh, A0h-EFh, 120h-14Fh; FOSC 011 is ECIO.
    {"16F628A", 224, {32, 127, 160, 239, 288, 335, 0, 0}, 3, 2048, 1, 4, 128, 2, 0, 0,
     4, 8, 32, 64, 128, none, none, none, 3},
    // 368 bytes: 20h-7Fh, A0h-EFh, 110h-16Fh, 190h-1EFh; WRT bit 9, DEBUG bit 11.
    {"16F877", 368, {32, 127, 160, 239, 272, 367, 400, 495}, 4, 8192, 3, 4, 256, 5, 10, 0,
     4, 8, none, 64, 128, 512, 2048, 3, none},
    // Same map; WRT1:WRT0 are bits 10:9.
    {"16F877A", 368, {32, 127, 160, 239, 272, 367, 400, 495}, 4, 8192, 3, 4, 256, 5, 10, 0,
     4, 8, none, 64, 128, 1536, 2048, 3, none},
    {"16F876A", 368, {32, 127, 160, 239, 272, 367, 400, 495}, 4, 8192, 3, 4, 256, 3, 10, 0,
     4, 8, none, 64, 128, 1536, 2048, 3, none},
    // 64 bytes at 20h-5Fh, mirrored in bank 1; GPIO port, OSCCAL, FOSC 011 is EC.
    {"12F675", 64, {32, 95, 0, 0, 0, 0, 0, 0}, 1, 1024, 1, 2, 128, 1, 10, 1,
     8, 16, 32, 64, none, none, none, none, 3},
    // 368 bytes like the 16F877; 4K words in two pages; FOSC 011 is ECIO.
    {"16F88", 368, {32, 127, 160, 239, 272, 367, 400, 495}, 4, 4096, 2, 4, 256, 2, 10, 0,
     4, 8, 32, 64, 128, 1536, 2048, none, 3},
}};
// clang-format on

// Names the parameter in test listings instead of dumping its bytes.
void PrintTo(const Reference& ref, std::ostream* out) {
    *out << ref.device;
}

class ReferenceDevice : public testing::TestWithParam<Reference> {};

TEST_P(ReferenceDevice, MemoryMatchesDatasheet) {
    const Reference& ref = GetParam();
    InfFile inf = readDevice(ref.device);
    ASSERT_TRUE(inf.errors.empty()) << inf.errors.front();
    EXPECT_EQ(inf.field(RamCapacity), ref.ramCapacity);
    for (std::size_t i = 0; i < ref.banks.size(); ++i)
        EXPECT_EQ(inf.field(Bank0Start + i), ref.banks[i]) << "bank field " << i;
    EXPECT_EQ(inf.field(RamBanks), ref.ramBanks);
    EXPECT_EQ(inf.field(CodeWords), ref.codeWords);
    EXPECT_EQ(inf.field(CodeSizeClass), ref.sizeClass);
    EXPECT_EQ(inf.field(PokeStyle), ref.bankCount);
    EXPECT_EQ(inf.field(EepromBytes), ref.eepromBytes);
    EXPECT_EQ(inf.field(EepromAddress), 0x2100);
    EXPECT_EQ(inf.field(ConfigAddress), 0x2007 * 2);
}

TEST_P(ReferenceDevice, PeripheralsMatchDatasheet) {
    const Reference& ref = GetParam();
    InfFile inf = readDevice(ref.device);
    ASSERT_TRUE(inf.errors.empty()) << inf.errors.front();
    EXPECT_EQ(inf.field(PortStyle), ref.portStyle);
    EXPECT_EQ(inf.field(AdcPresent), ref.adcBits != 0 ? 1 : 0);
    EXPECT_EQ(inf.field(AdcBits), ref.adcBits);
    EXPECT_EQ(inf.field(Osccal), ref.osccal);
}

TEST_P(ReferenceDevice, FusesMatchDatasheet) {
    const Reference& ref = GetParam();
    InfFile inf = readDevice(ref.device);
    ASSERT_TRUE(inf.errors.empty()) << inf.errors.front();
    EXPECT_EQ(inf.field(FuseWdt), ref.wdt);
    EXPECT_EQ(inf.field(FusePwrte), ref.pwrte);
    EXPECT_EQ(inf.field(FuseMclre), ref.mclre);
    EXPECT_EQ(inf.field(FuseBoren), ref.boren);
    EXPECT_EQ(inf.field(FuseLvp), ref.lvp);
    EXPECT_EQ(inf.field(SelfAccess), ref.selfAccess);
    EXPECT_EQ(inf.field(FuseDebug), ref.debug);
    EXPECT_EQ(inf.field(OscRc), ref.oscRc);
    EXPECT_EQ(inf.field(OscEc), ref.oscEc);
}

INSTANTIATE_TEST_SUITE_P(Datasheet, ReferenceDevice, testing::ValuesIn(references),
                         [](const testing::TestParamInfo<Reference>& info) {
                             return std::string("P") + info.param.device;
                         });

// Chips whose banks 2 and 3 reach the RAM of banks 0 and 1 instead of holding
// their own (and the USB parts, whose bank 3 holds USB buffers): only the RAM
// they really have may be counted. Capacities and ranges from the datasheets'
// register file maps.
struct MirroredRam {
    const char* device;
    long ramCapacity;
    std::array<long, 8> banks; // start and end of banks 0..3, 0/0 when absent
    long ramBanks;
};

// clang-format off
const std::array<MirroredRam, 14> mirroredRam{{
    // 20h-7Fh and A0h-BFh (C0h-FFh reach 40h-7Fh); banks 2/3 reach banks 0/1.
    {"16F72", 128, {32, 127, 160, 191, 0, 0, 0, 0}, 2},
    // 20h-7Fh and A0h-FFh; banks 2/3 reach banks 0/1.
    {"16F73", 192, {32, 127, 160, 255, 0, 0, 0, 0}, 2},
    {"16F74", 192, {32, 127, 160, 255, 0, 0, 0, 0}, 2},
    // 20h-7Fh and A0h-BFh; banks 2 and 3 reach bank 0.
    {"16F818", 128, {32, 127, 160, 191, 0, 0, 0, 0}, 2},
    // 20h-7Fh, A0h-EFh and 120h-16Fh; bank 3 reaches bank 0.
    {"16F819", 256, {32, 127, 160, 239, 288, 367, 0, 0}, 3},
    // 20h-7Fh and A0h-BFh; banks 2/3 reach banks 0/1.
    {"16F870", 128, {32, 127, 160, 191, 0, 0, 0, 0}, 2},
    {"16F871", 128, {32, 127, 160, 191, 0, 0, 0, 0}, 2},
    {"16F872", 128, {32, 127, 160, 191, 0, 0, 0, 0}, 2},
    // 20h-7Fh and A0h-FFh, no common RAM; banks 2/3 reach banks 0/1.
    {"16F873", 192, {32, 127, 160, 255, 0, 0, 0, 0}, 2},
    {"16F874", 192, {32, 127, 160, 255, 0, 0, 0, 0}, 2},
    {"16F873A", 192, {32, 127, 160, 255, 0, 0, 0, 0}, 2},
    {"16F874A", 192, {32, 127, 160, 255, 0, 0, 0, 0}, 2},
    // 20h-7Fh, A0h-EFh and 120h-16Fh; 1A0h-1DFh is USB dual-port RAM.
    {"16C745", 256, {32, 127, 160, 239, 288, 367, 0, 0}, 3},
    {"16C765", 256, {32, 127, 160, 239, 288, 367, 0, 0}, 3},
}};
// clang-format on

void PrintTo(const MirroredRam& ref, std::ostream* out) {
    *out << ref.device;
}

class MirroredRamDevice : public testing::TestWithParam<MirroredRam> {};

TEST_P(MirroredRamDevice, CountsOnlyItsOwnRam) {
    const MirroredRam& ref = GetParam();
    InfFile inf = readDevice(ref.device);
    ASSERT_TRUE(inf.errors.empty()) << inf.errors.front();
    EXPECT_EQ(inf.field(RamCapacity), ref.ramCapacity);
    for (std::size_t i = 0; i < ref.banks.size(); ++i)
        EXPECT_EQ(inf.field(Bank0Start + i), ref.banks[i]) << "bank field " << i;
    EXPECT_EQ(inf.field(RamBanks), ref.ramBanks);
    // Four banks are still selectable; only their RAM is shared.
    EXPECT_EQ(inf.field(PokeStyle), 4);
}

INSTANTIATE_TEST_SUITE_P(Datasheet, MirroredRamDevice, testing::ValuesIn(mirroredRam),
                         [](const testing::TestParamInfo<MirroredRam>& info) {
                             return std::string("P") + info.param.device;
                         });

TEST(DeviceFiles, ReferenceDevicesArePresent) {
    std::vector<std::string> names = deviceNames();
    std::set<std::string> present(names.begin(), names.end());
    for (const Reference& ref : references)
        EXPECT_TRUE(present.contains(ref.device)) << ref.device;
    for (const MirroredRam& ref : mirroredRam)
        EXPECT_TRUE(present.contains(ref.device)) << ref.device;
    // Roughly 150 classic mid-range parts; far fewer means devices went missing.
    EXPECT_GE(names.size(), 100u);
}

TEST(DeviceFiles, EveryFileParses) {
    for (const fs::path& path : infPaths()) {
        InfFile inf = readInf(path);
        EXPECT_TRUE(inf.errors.empty()) << path << ": " << inf.errors.front();
        EXPECT_EQ(inf.fields.size(), infFieldCount) << path;
        EXPECT_FALSE(inf.registers.empty()) << path;
        EXPECT_FALSE(inf.fuses.empty()) << path;
        std::string text = readText(path);
        EXPECT_TRUE(text.ends_with("\n")) << path;
        EXPECT_EQ(text.find('\r'), std::string::npos) << path;
    }
}

TEST(DeviceFiles, EveryDefinitionHasARegisterInclude) {
    for (const fs::path& path : infPaths()) {
        fs::path zvi = path;
        zvi.replace_extension(".zvi");
        EXPECT_TRUE(fs::is_regular_file(zvi)) << zvi;
    }
}

// Banks are 128 bytes; a present range must lie in its own bank, start before
// it ends, and the totals must agree with the ranges.
void checkBankTotals(const InfFile& inf) {
    long capacity = 0;
    long used = 0;
    for (long bank = 0; bank < 4; ++bank) {
        long start = inf.field(Bank0Start + 2 * bank);
        long end = inf.field(Bank0Start + 2 * bank + 1);
        if (start == 0 && end == 0) continue;
        EXPECT_LE(start, end) << inf.device << " bank " << bank;
        EXPECT_EQ(start / 128, bank) << inf.device << " bank " << bank;
        EXPECT_EQ(end / 128, bank) << inf.device << " bank " << bank;
        EXPECT_LT(bank, inf.field(PokeStyle)) << inf.device << " bank " << bank;
        capacity += end - start + 1;
        ++used;
    }
    EXPECT_EQ(inf.field(RamCapacity), capacity) << inf.device;
    EXPECT_EQ(inf.field(RamBanks), used) << inf.device;
    EXPECT_GT(used, 0) << inf.device;
}

TEST(DeviceFiles, BankRangesAreConsistent) {
    for (const fs::path& path : infPaths()) {
        InfFile inf = readInf(path);
        ASSERT_TRUE(inf.errors.empty()) << path;
        checkBankTotals(inf);
    }
}

// Fuse names are the ones the register include maps to an underscored header name.
std::set<std::string> fuseNames(const std::string& device) {
    std::set<std::string> names;
    std::istringstream text(readText(dataFolder() / ("P" + device + ".zvi")));
    std::string line;
    while (std::getline(text, line)) {
        std::size_t equ = line.find("\tEQU\t_");
        if (equ != std::string::npos) names.insert(line.substr(0, equ));
    }
    return names;
}

bool insideBank(const InfFile& inf, std::size_t bank, unsigned address) {
    long start = inf.field(Bank0Start + 2 * bank);
    long end = inf.field(Bank0Start + 2 * bank + 1);
    if (start == 0 && end == 0) return false;
    return static_cast<long>(address) >= start && static_cast<long>(address) <= end;
}

TEST(DeviceFiles, BankRangesDoNotOverlapRegisters) {
    for (const fs::path& path : infPaths()) {
        InfFile inf = readInf(path);
        ASSERT_TRUE(inf.errors.empty()) << path;
        for (const InfSymbol& symbol : inf.registers) {
            for (std::size_t bank = 0; bank < 4; ++bank) {
                EXPECT_FALSE(insideBank(inf, bank, symbol.value))
                    << inf.device << ": " << symbol.name << " at " << symbol.value
                    << " is inside the RAM of bank " << bank;
            }
        }
    }
}

// The reader tells registers from fuses by the marker line alone.
TEST(DeviceFiles, EveryFileMarksItsFuseSectionOnce) {
    for (const fs::path& path : infPaths()) {
        InfFile inf = readInf(path);
        ASSERT_TRUE(inf.errors.empty()) << path << ": " << inf.errors.front();
        EXPECT_EQ(inf.fuseMarkers, 1u) << path;
        std::string text = readText(path);
        std::size_t marker = text.find("\n" + std::string(fuseSectionMarker) + "\n");
        ASSERT_NE(marker, std::string::npos) << path;
        // Registers come before the marker, fuses after it.
        EXPECT_FALSE(inf.registers.empty()) << path;
        EXPECT_FALSE(inf.fuses.empty()) << path;
    }
}

// The names after the marker are exactly the fuses the register include
// aliases (NAME EQU _NAME), plus the few options a header spells without
// underscore; no register line carries such a name.
TEST(DeviceFiles, FuseSectionHoldsTheRegisterIncludeFuses) {
    for (const fs::path& path : infPaths()) {
        InfFile inf = readInf(path);
        ASSERT_TRUE(inf.errors.empty()) << path;
        std::set<std::string> aliased = fuseNames(inf.device);
        std::set<std::string> fuses;
        for (const InfSymbol& fuse : inf.fuses) {
            fuses.insert(fuse.name);
            EXPECT_TRUE(aliased.contains(fuse.name) || isPlainOption(fuse.name))
                << inf.device << ": " << fuse.name << " is not a fuse of the register include";
        }
        for (const std::string& name : aliased)
            EXPECT_TRUE(fuses.contains(name)) << inf.device << ": " << name;
        for (const InfSymbol& reg : inf.registers) {
            EXPECT_FALSE(aliased.contains(reg.name) || isPlainOption(reg.name))
                << inf.device << ": " << reg.name;
        }
    }
}

TEST(DeviceFiles, ValuesStayInRange) {
    for (const fs::path& path : infPaths()) {
        InfFile inf = readInf(path);
        ASSERT_TRUE(inf.errors.empty()) << path;
        EXPECT_TRUE(inf.field(CodeSizeClass) >= 1 && inf.field(CodeSizeClass) <= 3) << path;
        EXPECT_TRUE(inf.field(PokeStyle) == 2 || inf.field(PokeStyle) == 4) << path;
        EXPECT_TRUE(inf.field(PortStyle) >= 1 && inf.field(PortStyle) <= 5) << path;
        EXPECT_EQ(inf.field(AdcPresent) == 1, inf.field(AdcBits) != 0) << path;
        EXPECT_FALSE(inf.field(OscRc) == 3 && inf.field(OscEc) == 3) << path;
    }
}

TEST(RegisterIncludes, AliasTheMissingEepromDataSpelling) {
    // The 16F877 header spells it EEDATA only, the 12F675 header has both.
    std::string f877 = readText(dataFolder() / "P16F877.zvi");
    EXPECT_NE(f877.find("\nEEDAT\tEQU\tEEDATA\n"), std::string::npos);
    std::string f675 = readText(dataFolder() / "P12F675.zvi");
    EXPECT_EQ(f675.find("EQU\tEEDAT"), std::string::npos);
}

TEST(RegisterIncludes, IncludeTheGputilsHeader) {
    for (const std::string& device : deviceNames()) {
        std::string text = readText(dataFolder() / ("P" + device + ".zvi"));
        std::string lower = device;
        for (char& c : lower)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        EXPECT_NE(text.find("\t#include \"p" + lower + ".inc\"\n"), std::string::npos) << device;
    }
}

} // namespace
