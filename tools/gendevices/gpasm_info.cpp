#include "gpasm_info.hpp"

#include "process.hpp"
#include "text_util.hpp"

#include <algorithm>
#include <charconv>

namespace gendevices {

namespace {

struct Field {
    std::string key;
    std::string value;
};

// "Bank Number    : 4" -> {"Bank Number", "4"}; lines without " : " give nullopt.
std::optional<Field> splitField(std::string_view line) {
    std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    return Field{std::string(trim(line.substr(0, colon))),
                 std::string(trim(line.substr(colon + 1)))};
}

std::optional<unsigned> parseDecimal(std::string_view text) {
    unsigned value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end == text.data()) return std::nullopt;
    return value;
}

// "0x70 - 0x7F" -> {0x70, 0x7F}
std::optional<AddressRange> parseRange(std::string_view text) {
    std::size_t dash = text.find('-');
    if (dash == std::string_view::npos) return std::nullopt;
    auto first = parseHex(text.substr(0, dash));
    auto last = parseHex(text.substr(dash + 1));
    if (!first || !last || *last < *first) return std::nullopt;
    return AddressRange{*first, *last};
}

// "  Config Word  : address = 0x2007, mask = 0x3BFF, default = 0xFFFF"
std::optional<unsigned> configWordAddress(std::string_view value) {
    std::size_t pos = value.find("address =");
    if (pos == std::string_view::npos) return std::nullopt;
    std::string_view rest = value.substr(pos + 9);
    std::size_t comma = rest.find(',');
    return parseHex(rest.substr(0, comma));
}

// "Option:   LP        = 0x0000 (default)" after splitting off "Option"
std::optional<ConfigOption> parseOption(std::string_view value) {
    std::size_t equals = value.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    std::vector<std::string> right = splitWords(value.substr(equals + 1));
    if (right.empty()) return std::nullopt;
    auto number = parseHex(right.front());
    if (!number) return std::nullopt;
    return ConfigOption{std::string(trim(value.substr(0, equals))), *number};
}

bool namesChip(std::string_view namesValue, std::string_view chip) {
    std::string wanted = toLower(chip);
    std::string list = toLower(namesValue);
    std::replace(list.begin(), list.end(), ',', ' ');
    for (const std::string& name : splitWords(list)) {
        if (name == wanted) return true;
    }
    return false;
}

// Returns the lines of the block that starts with a "Names" line naming chip.
std::vector<std::string> chipBlock(std::string_view text, std::string_view chip) {
    std::vector<std::string> block;
    bool inside = false;
    for (const std::string& line : splitLines(text)) {
        auto field = splitField(line);
        if (field && field->key == "Names") {
            if (inside) break;
            inside = namesChip(field->value, chip);
        }
        if (inside) block.push_back(line);
    }
    return block;
}

void applyConfigLine(ChipProperties& chip, const Field& field) {
    if (field.key == "Config Word") {
        if (auto address = configWordAddress(field.value))
            chip.configWords.push_back(ConfigWord{*address, {}});
    } else if (field.key == "Directive" && !chip.configWords.empty()) {
        chip.configWords.back().directives.push_back(ConfigDirective{field.value, {}});
    } else if (field.key == "Option" && !chip.configWords.empty() &&
               !chip.configWords.back().directives.empty()) {
        if (auto option = parseOption(field.value))
            chip.configWords.back().directives.back().options.push_back(*option);
    }
}

void applyField(ChipProperties& chip, const Field& field) {
    if (field.key == "Class") {
        chip.processorClass = field.value;
    } else if (field.key == "Bank Number") {
        chip.bankCount = parseDecimal(field.value).value_or(0);
    } else if (field.key == "Common RAM") {
        chip.commonRam = parseRange(field.value);
    } else if (field.key == "Program Size") {
        chip.programWords = parseDecimal(field.value).value_or(0);
    } else if (field.key == "EEPROM Range") {
        chip.eeprom = parseRange(field.value);
    } else if (field.key == "Header File") {
        chip.headerFile = field.value;
    } else {
        applyConfigLine(chip, field);
    }
}

} // namespace

unsigned ConfigDirective::mask() const {
    unsigned bits = 0;
    for (const ConfigOption& option : options)
        bits |= option.value;
    return bits;
}

const ConfigDirective* ConfigWord::find(std::initializer_list<std::string_view> names) const {
    for (const ConfigDirective& directive : directives) {
        for (std::string_view name : names) {
            if (directive.name == name) return &directive;
        }
    }
    return nullptr;
}

std::vector<std::string> parseChipList(std::string_view text) {
    std::vector<std::string> chips = splitWords(text);
    std::sort(chips.begin(), chips.end());
    chips.erase(std::unique(chips.begin(), chips.end()), chips.end());
    return chips;
}

std::optional<ChipProperties> parseChipProperties(std::string_view text, std::string_view chip) {
    std::vector<std::string> block = chipBlock(text, chip);
    if (block.empty()) return std::nullopt;
    ChipProperties properties;
    properties.name = std::string(chip);
    for (const std::string& line : block) {
        if (auto field = splitField(line)) applyField(properties, *field);
    }
    return properties;
}

GpasmQuery listChips(const std::string& gpasm) {
    CommandResult result = runCommand({gpasm, "-l14"});
    GpasmQuery query;
    query.ran = result.started && result.exitStatus == 0;
    if (query.ran) query.chips = parseChipList(result.output);
    return query;
}

std::optional<ChipProperties> queryChip(const std::string& gpasm, const std::string& chip) {
    CommandResult result = runCommand({gpasm, "-s", "-p", chip});
    if (!result.started || result.exitStatus != 0) return std::nullopt;
    return parseChipProperties(result.output, chip);
}

} // namespace gendevices
