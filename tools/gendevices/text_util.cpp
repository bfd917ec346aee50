#include "text_util.hpp"

#include <cctype>
#include <charconv>

namespace gendevices {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

} // namespace

std::string_view trim(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string toUpper(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return result;
}

std::string toLower(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

std::vector<std::string> splitWords(std::string_view text) {
    std::vector<std::string> words;
    std::size_t pos = 0;
    while (pos < text.size()) {
        while (pos < text.size() && isBlank(text[pos]))
            ++pos;
        std::size_t end = pos;
        while (end < text.size() && !isBlank(text[end]))
            ++end;
        if (end > pos) words.emplace_back(text.substr(pos, end - pos));
        pos = end;
    }
    return words;
}

std::vector<std::string> splitLines(std::string_view text) {
    std::vector<std::string> lines;
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(pos, end - pos);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.emplace_back(line);
        pos = end + 1;
    }
    return lines;
}

std::optional<unsigned> parseHex(std::string_view text) {
    text = trim(text);
    if (text.size() >= 3 && (text[0] == 'H' || text[0] == 'h') && text[1] == '\'' &&
        text.back() == '\'') {
        text = text.substr(2, text.size() - 3);
    } else if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text.remove_prefix(2);
    }
    if (text.empty()) return std::nullopt;
    unsigned value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::string hexUpper(unsigned value, int minDigits) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    do {
        result.insert(result.begin(), digits[value % 16]);
        value /= 16;
    } while (value != 0);
    while (static_cast<int>(result.size()) < minDigits)
        result.insert(result.begin(), '0');
    return result;
}

} // namespace gendevices
