// Small string helpers shared by the gendevices parsers and writers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gendevices {

std::string_view trim(std::string_view text);
std::string toUpper(std::string_view text);
std::string toLower(std::string_view text);

// Splits on blanks and tabs; empty words are dropped.
std::vector<std::string> splitWords(std::string_view text);

// Splits into lines; a trailing "\r" is removed from every line.
std::vector<std::string> splitLines(std::string_view text);

// Accepts "1F", "0x1F" and the assembler form "H'1F'".
std::optional<unsigned> parseHex(std::string_view text);

// Upper-case hexadecimal without prefix, zero-padded to minDigits.
std::string hexUpper(unsigned value, int minDigits);

} // namespace gendevices
