#include "inf_file.hpp"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace zorvel_test {

namespace {

struct Line {
    std::string name;
    std::string value;
};

bool splitLine(const std::string& text, Line& line) {
    std::size_t separator = text.find(" = ");
    if (separator == std::string::npos || separator == 0) return false;
    line.name = text.substr(0, separator);
    line.value = text.substr(separator + 3);
    return !line.value.empty();
}

bool parseNumber(const std::string& text, int base, long& value) {
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, value, base);
    return error == std::errc() && stop == end;
}

void readField(InfFile& inf, const std::string& text, std::size_t number) {
    Line line;
    long value = 0;
    if (splitLine(text, line) && parseNumber(line.value, 10, value))
        inf.fields.push_back(value);
    else
        inf.errors.push_back("field line " + std::to_string(number) + " is malformed: " + text);
}

bool isUpperHex(const std::string& digits) {
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
    });
}

// "PORTB = $06": a name and an upper-case hexadecimal value. Comment lines
// (";" first) are allowed after the fields; the fuse section marker among them
// sends the following symbols to the fuse list.
void readSymbol(InfFile& inf, const std::string& text, std::size_t number) {
    if (text == fuseSectionMarker) {
        ++inf.fuseMarkers;
        return;
    }
    if (text == assemblerNamesMarker) {
        ++inf.nameMarkers;
        return;
    }
    if (text.starts_with(';')) return;
    if (inf.nameMarkers > 0) {
        inf.assemblerNames.push_back(text);
        return;
    }
    Line line;
    long value = 0;
    if (splitLine(text, line) && line.value.starts_with('$') && isUpperHex(line.value.substr(1)) &&
        parseNumber(line.value.substr(1), 16, value)) {
        auto& list = inf.fuseMarkers > 0 ? inf.fuses : inf.registers;
        list.push_back(InfSymbol{line.name, static_cast<unsigned>(value)});
    } else {
        inf.errors.push_back("symbol line " + std::to_string(number) + " is malformed: " + text);
    }
}

} // namespace

bool isPlainOption(const std::string& name) {
    return name == "DATA_CP_ON" || name == "DATA_CP_OFF";
}

fs::path dataFolder() {
    return fs::path(ZORVEL_SOURCE_DATA) / "inc";
}

std::vector<fs::path> infPaths() {
    std::vector<fs::path> paths;
    for (const fs::directory_entry& entry : fs::directory_iterator(dataFolder())) {
        std::string name = entry.path().filename().string();
        if (name.starts_with("P") && entry.path().extension() == ".inf")
            paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<std::string> deviceNames() {
    std::vector<std::string> names;
    for (const fs::path& path : infPaths())
        names.push_back(path.stem().string().substr(1));
    return names;
}

std::string readText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

InfFile readInf(const fs::path& path) {
    InfFile inf;
    inf.device = path.stem().string().substr(1);
    std::istringstream text(readText(path));
    std::string line;
    std::size_t number = 0;
    while (std::getline(text, line)) {
        if (number < infFieldCount)
            readField(inf, line, number);
        else
            readSymbol(inf, line, number);
        ++number;
    }
    if (number < infFieldCount) inf.errors.push_back("only " + std::to_string(number) + " lines");
    return inf;
}

InfFile readDevice(const std::string& device) {
    return readInf(dataFolder() / ("P" + device + ".inf"));
}

} // namespace zorvel_test
