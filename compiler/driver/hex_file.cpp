#include "compiler/driver/hex_file.h"

#include "compiler/driver/file_io.h"

#include <optional>

namespace zorvel {
namespace {

int hexDigit(char ch) {
    if (ch >= '0' && ch <= '9') return ch - '0';
    if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
    if (ch >= 'a' && ch <= 'f') return ch - 'a' + 10;
    return -1;
}

std::optional<int> hexByte(const std::string& s, size_t at) {
    if (at + 2 > s.size()) return std::nullopt;
    int hi = hexDigit(s[at]), lo = hexDigit(s[at + 1]);
    if (hi < 0 || lo < 0) return std::nullopt;
    return hi * 16 + lo;
}

struct Record {
    int count = 0;
    int address = 0;
    int type = 0;
    std::vector<uint8_t> data;
};

std::optional<Record> parseRecord(const std::string& line) {
    if (line.empty() || line[0] != ':') return std::nullopt;
    auto count = hexByte(line, 1), hi = hexByte(line, 3), lo = hexByte(line, 5),
         type = hexByte(line, 7);
    if (!count || !hi || !lo || !type) return std::nullopt;
    Record r{*count, *hi * 256 + *lo, *type, {}};
    for (int i = 0; i < r.count; ++i) {
        auto b = hexByte(line, 9 + 2 * static_cast<size_t>(i));
        if (!b) return std::nullopt;
        r.data.push_back(static_cast<uint8_t>(*b));
    }
    return r;
}

// Stores the record's words (low byte first) in the image.
void storeWords(const Record& r, int configAddress, HexImage& image) {
    for (size_t i = 0; i + 1 < r.data.size(); i += 2) {
        int word = (r.address + static_cast<int>(i)) / 2;
        uint16_t value = static_cast<uint16_t>(r.data[i] | (r.data[i + 1] << 8));
        if (word < HexImage::kProgramWords) image.program[word] = value;
        if (word == configAddress / 2) image.configWord = value;
    }
}

} // namespace

HexReading readHexFile(const std::filesystem::path& path, int configAddress) {
    HexReading reading;
    std::optional<std::string> text = readFile(path);
    if (!text) return reading;
    reading.found = true;
    int total = 0;
    bool counting = true;
    for (const std::string& line : splitLines(*text)) {
        std::optional<Record> r = parseRecord(line);
        if (!r) continue;
        reading.image.records.push_back(line);
        if (r->type == 1) break;
        if (r->type != 0) continue;
        if (r->address == configAddress) counting = false;
        if (counting) total += r->count;
        storeWords(*r, configAddress, reading.image);
    }
    reading.wordsUsed = total / 2;
    return reading;
}

} // namespace zorvel
