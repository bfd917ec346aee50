#include "device_data.hpp"

#include "programmer_timing.hpp"
#include "text_util.hpp"

#include <algorithm>
#include <optional>
#include <set>

namespace gendevices {

const std::array<std::string_view, fieldCount> fieldNames{
    "RAM_CAPACITY",   "CODE_WORDS",  "CODE_SIZE_CLASS",  "POKE_STYLE",     "PORT_STYLE",
    "ADC_PRESENT",    "ADC_BITS",    "EEPROM_BYTES",     "BANK0_START",    "BANK0_END",
    "BANK1_START",    "BANK1_END",   "BANK2_START",      "BANK2_END",      "BANK3_START",
    "BANK3_END",      "RAM_BANKS",   "RESERVED_17",      "EEPROM_ADDRESS", "OSCCAL",
    "PGM_END_FLAG",   "RESERVED_21", "PGM_EXTRA_PASSES", "PGM_DELAY_MS",   "ERASE_DELAY_MS",
    "CONFIG_ADDRESS", "RESERVED_26", "RESERVED_27",      "RESERVED_28",    "OSC_RC",
    "OSC_EC",         "RESERVED_31", "FUSE_WDT",         "RESERVED_33",    "RESERVED_34",
    "FUSE_PWRTE",     "FUSE_MCLRE",  "RESERVED_37",      "FUSE_BOREN",     "RESERVED_39",
    "FUSE_LVP",       "RESERVED_41", "SELF_ACCESS",      "RESERVED_43",    "RESERVED_44",
    "FUSE_DEBUG",
};

namespace {

constexpr long absent = -1;
constexpr long eepromHexAddress = 0x2100;

std::string deviceNameOf(std::string_view chip) {
    std::string name = toUpper(chip);
    if (name.starts_with('P')) name.erase(0, 1);
    return name;
}

std::optional<long> codeSizeClass(unsigned words) {
    if (words > 0 && words <= 2048) return 1;
    if (words == 4096) return 2;
    if (words == 8192) return 3;
    return std::nullopt;
}

long portStyle(const HeaderInfo& header) {
    if (header.hasRegister("GPIO")) return 1;
    long style = 2;
    for (std::string_view port : {"PORTC", "PORTD", "PORTE"}) {
        if (!header.hasRegister(port)) break;
        ++style;
    }
    return style;
}

long adcBits(const HeaderInfo& header) {
    if (!header.hasRegister("ADCON0")) return 0;
    if (header.hasRegister("ADRESH")) return 10;
    return header.hasRegister("ADRES") ? 8 : 0;
}

void setRamFields(DeviceData& data) {
    long capacity = 0;
    long used = 0;
    for (const BankLayout& layout : data.banks) {
        if (!layout.range) continue;
        std::size_t start = Bank0Start + 2 * layout.bank;
        data.fields[start] = layout.range->first;
        data.fields[start + 1] = layout.range->last;
        capacity += layout.range->size();
        ++used;
    }
    data.fields[RamCapacity] = capacity;
    data.fields[RamBanks] = used;
}

enum class ClockKind { Other, Rc, External };

ClockKind clockKind(std::string_view option) {
    std::string name = toUpper(option);
    if (name.starts_with("RC") || name.starts_with("EXTRC")) return ClockKind::Rc;
    if (name.starts_with("EC") || name == "EXTCLK") return ClockKind::External;
    return ClockKind::Other;
}

// A programmer that only sets FOSC bits 1:0 reaches the option whose FOSC value
// is 0b11 with every other FOSC bit clear.
ClockKind fourthOscillator(const ConfigWord& word) {
    const ConfigDirective* fosc = word.find({"FOSC"});
    if (fosc == nullptr) return ClockKind::Other;
    unsigned mask = fosc->mask();
    for (const ConfigOption& option : fosc->options) {
        if ((option.value & mask) == 0x3) return clockKind(option.name);
    }
    return ClockKind::Other;
}

void setOscillatorFields(DeviceData& data, const ConfigWord& word) {
    ClockKind kind = fourthOscillator(word);
    data.fields[OscRc] = kind == ClockKind::Rc ? 3 : absent;
    data.fields[OscEc] = kind == ClockKind::External ? 3 : absent;
}

long fuseMask(const ConfigWord& word, std::initializer_list<std::string_view> names) {
    const ConfigDirective* directive = word.find(names);
    return directive ? static_cast<long>(directive->mask()) : absent;
}

long selfAccess(const HeaderInfo& header, const ConfigWord& word) {
    if (!header.defines("EEPGD")) return absent;
    long mask = fuseMask(word, {"WRT", "WRTEN"});
    return mask == absent ? 0 : mask;
}

void setFuseFields(DeviceData& data, const HeaderInfo& header, const ConfigWord& word) {
    data.fields[FuseWdt] = fuseMask(word, {"WDTE", "WDT"});
    data.fields[FusePwrte] = fuseMask(word, {"PWRTE", "PWRT"});
    data.fields[FuseMclre] = fuseMask(word, {"MCLRE"});
    data.fields[FuseBoren] = fuseMask(word, {"BOREN", "BODEN"});
    data.fields[FuseLvp] = fuseMask(word, {"LVP"});
    data.fields[SelfAccess] = selfAccess(header, word);
    data.fields[FuseDebug] = fuseMask(word, {"DEBUG"});
}

void setProgrammerFields(DeviceData& data) {
    ProgrammerTiming timing = programmerTiming(data.chip);
    data.fields[PgmEndFlag] = timing.endFlag;
    data.fields[PgmExtraPasses] = timing.extraPasses;
    data.fields[PgmDelayMs] = timing.programDelayMs;
    data.fields[EraseDelayMs] = timing.eraseDelayMs;
}

void setMemoryFields(DeviceData& data, const ChipProperties& chip, const HeaderInfo& header) {
    data.fields[CodeWords] = chip.programWords;
    data.fields[PokeStyle] = chip.bankCount;
    data.fields[PortStyle] = portStyle(header);
    data.fields[AdcPresent] = header.hasRegister("ADCON0") ? 1 : 0;
    data.fields[AdcBits] = adcBits(header);
    data.fields[EepromBytes] = chip.eeprom ? chip.eeprom->size() : 0;
    data.fields[EepromAddress] = eepromHexAddress;
    data.fields[Osccal] = header.hasRegister("OSCCAL") ? 1 : 0;
    data.fields[ConfigAddress] = static_cast<long>(chip.configWords.front().address) * 2;
}

// Fuse names without the underscore. A few headers already spell some options
// without it; those need no alias.
void addFuseAliases(DeviceData& data, const HeaderInfo& header) {
    for (const Symbol& fuse : data.fuses) {
        std::string target = "_" + fuse.name;
        bool underscored = header.defines(target);
        bool plain = header.defines(fuse.name);
        if (underscored && !plain)
            data.aliases.push_back(Alias{fuse.name, target});
        else if (underscored && plain)
            data.notes.push_back("fuse " + fuse.name + " clashes with a header symbol");
    }
}

// Generated code uses both spellings of the EEPROM data register.
void addRegisterAliases(DeviceData& data, const HeaderInfo& header) {
    if (header.defines("EEDATA") && !header.defines("EEDAT"))
        data.aliases.push_back(Alias{"EEDAT", "EEDATA"});
    if (header.defines("EEDAT") && !header.defines("EEDATA"))
        data.aliases.push_back(Alias{"EEDATA", "EEDAT"});
}

// Every further name the register include defines (bit names, the fuse names
// with their underscore, aliases): a program may not declare them.
void addAssemblerNames(DeviceData& data, const HeaderInfo& header) {
    std::set<std::string> taken;
    for (const Symbol& s : data.registers)
        taken.insert(toUpper(s.name));
    for (const Symbol& s : data.fuses)
        taken.insert(toUpper(s.name));
    std::set<std::string> names(header.definedNames.begin(), header.definedNames.end());
    for (const Alias& a : data.aliases)
        names.insert(toUpper(a.name));
    for (const std::string& name : names)
        if (!taken.count(name)) data.assemblerNames.push_back(name);
}

void addBankNotes(DeviceData& data) {
    std::vector<std::string_view> sources;
    for (const BankFact& fact : bankFacts()) {
        bool known = std::find(sources.begin(), sources.end(), fact.source) != sources.end();
        if (fact.chip == data.chip && !known) sources.push_back(fact.source);
    }
    for (std::string_view source : sources)
        data.notes.push_back("RAM banks corrected from " + std::string(source));
    for (const BankLayout& layout : data.banks) {
        if (layout.runs.size() < 2) continue;
        std::string note = "bank " + std::to_string(layout.bank) + " has " +
                           std::to_string(layout.runs.size()) + " separate RAM runs:";
        for (const AddressRange& run : layout.runs)
            note += " 0x" + hexUpper(run.first, 3) + "-0x" + hexUpper(run.last, 3);
        data.notes.push_back(note + "; kept the longest");
    }
}

std::optional<std::string> rejectionReason(const ChipProperties& chip, const HeaderInfo& header) {
    if (chip.configWords.empty()) return "gpasm lists no configuration word";
    if (!codeSizeClass(chip.programWords))
        return "unsupported program size of " + std::to_string(chip.programWords) + " words";
    if (!header.maxRam) return "header has no __MAXRAM";
    if (header.fuses.empty()) return "header lists no options for the first configuration word";
    return std::nullopt;
}

} // namespace

std::variant<DeviceData, Rejection> buildDevice(const ChipProperties& chip,
                                                const HeaderInfo& header) {
    if (auto reason = rejectionReason(chip, header)) return Rejection{*reason};
    DeviceData data;
    data.chip = chip.name;
    data.deviceName = deviceNameOf(chip.name);
    data.headerFile = chip.headerFile;
    data.registers = header.registers;
    data.fuses = header.fuses;
    data.banks = findBanks(chip, header);
    data.errors = checkMirrorTargets(chip.name, data.banks);
    const ConfigWord& word = chip.configWords.front();
    data.fields[CodeSizeClass] = *codeSizeClass(chip.programWords);
    setMemoryFields(data, chip, header);
    setRamFields(data);
    setProgrammerFields(data);
    setOscillatorFields(data, word);
    setFuseFields(data, header, word);
    addFuseAliases(data, header);
    addRegisterAliases(data, header);
    addAssemblerNames(data, header);
    addBankNotes(data);
    return data;
}

} // namespace gendevices
