// Names a program may not declare because the assembler already gives them a
// meaning: directives, mnemonics, and the names of the device's register file.
#pragma once

#include <string_view>

namespace zorvel {

class Compilation;

// Why `name` (upper case) cannot be declared, or nullptr when it can.
const char* assemblerNameClash(const Compilation& c, std::string_view name);

} // namespace zorvel
