// Number literals: decimal, "$" hexadecimal, "%" binary, limited to 16 bits.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace zorvel {

class Compilation;

// Converts a number literal and fills the number value record. Reports an
// invalid or too large number and returns nullopt.
std::optional<int32_t> convertNumber(Compilation& c, std::string_view text);

} // namespace zorvel
