#include "sim/hex_loader.h"

#include "sim/input_file.h"

#include <vector>

namespace zorvel::sim {

namespace {

constexpr int kEepromByteAddress = 0x4200; // word address 0x2100
constexpr int kConfigWordAddress = 0x2007;
// Program memory, IDs, configuration and EEPROM data all lie below this byte
// address; keeping nothing above it bounds the memory a HEX file can take.
constexpr uint64_t kEndByteAddress = 0x4400;
// A full 8K-word program with its configuration and EEPROM data is well
// under 1 MiB of HEX text.
constexpr uintmax_t kMaxHexFileBytes = 16u << 20;

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

bool decodeBytes(std::string_view hex, std::vector<uint8_t>& bytes) {
    if (hex.size() % 2 != 0) return false;
    for (size_t i = 0; i < hex.size(); i += 2) {
        int hi = hexDigit(hex[i]);
        int lo = hexDigit(hex[i + 1]);
        if (hi < 0 || lo < 0) return false;
        bytes.push_back(static_cast<uint8_t>(hi * 16 + lo));
    }
    return true;
}

struct Loader {
    HexData data;
    std::map<int, uint8_t> bytes; // byte address -> byte
    uint32_t base = 0;
    bool ended = false;

    // Checks and applies one record; returns an error text or "".
    std::string record(std::string_view line) {
        if (ended) return "data after the end-of-file record";
        if (line.empty() || line[0] != ':') return "a record must start with ':'";
        std::vector<uint8_t> b;
        if (!decodeBytes(line.substr(1), b)) return "invalid hexadecimal digits";
        if (b.size() < 5 || b.size() != static_cast<size_t>(b[0]) + 5)
            return "record length does not match its byte count";
        uint8_t sum = 0;
        for (uint8_t v : b)
            sum = static_cast<uint8_t>(sum + v);
        if (sum != 0) return "checksum mismatch";
        uint32_t offset = static_cast<uint32_t>(b[1] << 8 | b[2]);
        switch (b[3]) {
        case 0x00:
            if (uint64_t{base} + offset + b[0] > kEndByteAddress)
                return "data beyond byte address 0x43FF, outside PIC16 memory";
            for (int i = 0; i < b[0]; ++i)
                bytes[static_cast<int>(base + offset + i)] = b[4 + i];
            return "";
        case 0x01: ended = true; return "";
        case 0x04:
            if (b[0] != 2) return "extended linear address record must hold 2 bytes";
            base = static_cast<uint32_t>(b[4] << 8 | b[5]) << 16;
            return "";
        case 0x02:
            if (b[0] != 2) return "extended segment address record must hold 2 bytes";
            base = static_cast<uint32_t>(b[4] << 8 | b[5]) << 4;
            return "";
        case 0x03:
        case 0x05: return "";
        default: return "unknown record type " + std::to_string(b[3]);
        }
    }

    void finish() {
        for (auto [address, value] : bytes) {
            if (address >= kEepromByteAddress && address < kEepromByteAddress + 0x200) {
                // EEPROM bytes are stored one per program word (low byte).
                if (address % 2 == 0) data.eeprom[(address - kEepromByteAddress) / 2] = value;
                continue;
            }
            int word = address / 2;
            uint16_t& w = data.program[word];
            if (address % 2 == 0)
                w = static_cast<uint16_t>((w & 0xFF00) | value);
            else
                w = static_cast<uint16_t>((w & 0x00FF) | (value << 8));
        }
        for (auto& [address, w] : data.program)
            w &= 0x3FFF;
        auto it = data.program.find(kConfigWordAddress);
        if (it != data.program.end()) data.configWord = it->second;
    }
};

} // namespace

std::optional<HexData> parseHex(std::string_view text, std::string& error) {
    Loader loader;
    int lineNumber = 0;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(pos, end - pos);
        pos = end + 1;
        ++lineNumber;
        while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
            line.remove_suffix(1);
        if (line.empty()) continue;
        std::string problem = loader.record(line);
        if (!problem.empty()) {
            error = "line " + std::to_string(lineNumber) + ": " + problem;
            return std::nullopt;
        }
    }
    if (!loader.ended) {
        error = "line " + std::to_string(lineNumber) + ": missing end-of-file record";
        return std::nullopt;
    }
    loader.finish();
    return loader.data;
}

std::optional<HexData> readHex(const std::filesystem::path& path, std::string& error) {
    std::optional<std::string> text = readInputFile(path, "HEX file", kMaxHexFileBytes, error);
    if (!text) return std::nullopt;
    auto result = parseHex(*text, error);
    if (!result) error = path.string() + ": " + error;
    return result;
}

} // namespace zorvel::sim
