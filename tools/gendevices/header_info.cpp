#include "header_info.hpp"

#include "text_util.hpp"

#include <fstream>
#include <map>
#include <sstream>

namespace gendevices {

namespace {

// Section headings look like ";----- Register Files ------"; the register
// list also has sub-headings ";-----Bank0------" that do not end it.
std::optional<std::string> sectionTitle(std::string_view line) {
    if (!line.starts_with(";-----")) return std::nullopt;
    std::size_t first = line.find_first_not_of(";- \t");
    if (first == std::string_view::npos) return std::string();
    std::size_t last = line.find_last_not_of("- \t\r");
    return std::string(line.substr(first, last - first + 1));
}

// "CONFIG Options" -> 1, "CONFIG2 Options" -> 2, anything else -> nullopt.
std::optional<unsigned> configWordNumber(std::string_view title) {
    constexpr std::string_view prefix = "CONFIG";
    constexpr std::string_view suffix = " Options";
    if (!title.starts_with(prefix) || !title.ends_with(suffix)) return std::nullopt;
    std::string_view digits =
        title.substr(prefix.size(), title.size() - prefix.size() - suffix.size());
    if (digits.empty()) return 1;
    unsigned number = 0;
    for (char c : digits) {
        if (c < '0' || c > '9') return std::nullopt;
        number = number * 10 + static_cast<unsigned>(c - '0');
    }
    return number;
}

std::string_view codePart(std::string_view line) {
    std::size_t comment = line.find(';');
    return line.substr(0, comment);
}

struct Definition {
    std::string name;
    std::optional<unsigned> value;
};

std::optional<Definition> parseDefinition(const std::vector<std::string>& words) {
    if (words.size() >= 2 && toLower(words[0]) == "#define")
        return Definition{words[1], std::nullopt};
    if (words.size() >= 3) {
        std::string directive = toUpper(words[1]);
        if (directive == "EQU" || directive == "SET")
            return Definition{words[0], parseHex(words[2])};
    }
    return std::nullopt;
}

// "H'0105'" or "H'0107'-H'0109'", several separated by commas.
std::vector<AddressRange> parseBadRam(std::string_view arguments) {
    std::vector<AddressRange> ranges;
    std::stringstream list{std::string(arguments)};
    std::string item;
    while (std::getline(list, item, ',')) {
        std::size_t dash = item.find('-');
        auto first = parseHex(item.substr(0, dash));
        auto last = dash == std::string::npos ? first : parseHex(item.substr(dash + 1));
        if (first && last && *first <= *last) ranges.push_back(AddressRange{*first, *last});
    }
    return ranges;
}

bool isAddressSymbol(std::string_view name) {
    return name.starts_with("CONFIG") || name.starts_with("IDLOC") || name.starts_with("DEVID");
}

void addUnique(std::vector<Symbol>& symbols, Symbol symbol) {
    std::string upper = toUpper(symbol.name);
    for (const Symbol& existing : symbols) {
        if (toUpper(existing.name) == upper) return;
    }
    symbols.push_back(std::move(symbol));
}

class HeaderParser {
public:
    void line(std::string_view text);
    HeaderInfo finish();

private:
    void definition(const Definition& definition);
    void directive(const std::vector<std::string>& words, std::string_view code);

    HeaderInfo info_;
    std::string section_;
    std::map<unsigned, std::vector<Symbol>> configSections_;
};

void HeaderParser::line(std::string_view text) {
    if (auto title = sectionTitle(text)) {
        if (!title->starts_with("Bank")) section_ = *title;
        return;
    }
    std::string_view code = codePart(text);
    std::vector<std::string> words = splitWords(code);
    if (words.empty()) return;
    if (auto found = parseDefinition(words))
        definition(*found);
    else
        directive(words, code);
}

void HeaderParser::definition(const Definition& found) {
    info_.definedNames.insert(toUpper(found.name));
    if (!found.value) return;
    if (section_ == "Register Files" && found.name != "W" && found.name != "F")
        addUnique(info_.registers, Symbol{found.name, *found.value});
    if (auto word = configWordNumber(section_))
        configSections_[*word].push_back(Symbol{found.name, *found.value});
}

void HeaderParser::directive(const std::vector<std::string>& words, std::string_view code) {
    std::string keyword = toUpper(words[0]);
    if (keyword == "__MAXRAM" && words.size() >= 2) {
        info_.maxRam = parseHex(words[1]);
    } else if (keyword == "__BADRAM") {
        std::size_t start = code.find(words[0]) + words[0].size();
        for (const AddressRange& range : parseBadRam(code.substr(start)))
            info_.badRam.push_back(range);
    }
}

HeaderInfo HeaderParser::finish() {
    if (!configSections_.empty()) {
        for (const Symbol& option : configSections_.begin()->second) {
            std::string name = option.name;
            if (name.starts_with('_')) name.erase(0, 1);
            if (!isAddressSymbol(toUpper(name))) addUnique(info_.fuses, Symbol{name, option.value});
        }
    }
    return std::move(info_);
}

} // namespace

bool HeaderInfo::defines(std::string_view name) const {
    return definedNames.contains(toUpper(name));
}

bool HeaderInfo::hasRegister(std::string_view name) const {
    std::string upper = toUpper(name);
    for (const Symbol& symbol : registers) {
        if (toUpper(symbol.name) == upper) return true;
    }
    return false;
}

bool HeaderInfo::isRegisterAddress(unsigned address) const {
    for (const Symbol& symbol : registers) {
        if (symbol.value == address) return true;
    }
    return false;
}

bool HeaderInfo::isBadRam(unsigned address) const {
    for (const AddressRange& range : badRam) {
        if (range.contains(address)) return true;
    }
    return false;
}

HeaderInfo parseHeader(std::string_view text) {
    HeaderParser parser;
    for (const std::string& line : splitLines(text))
        parser.line(line);
    return parser.finish();
}

std::optional<HeaderInfo> readHeader(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::ostringstream text;
    text << file.rdbuf();
    return parseHeader(text.str());
}

} // namespace gendevices
