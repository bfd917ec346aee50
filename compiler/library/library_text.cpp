#include "compiler/library/library_text.h"

#include "compiler/driver/compilation.h"

#include <algorithm>

namespace zorvel {

std::string regAddress(const Compilation& c, std::string_view name) {
    const SymbolEntry* entry = c.symbols.find(name);
    if (!entry) return std::string(name);
    return std::to_string(static_cast<unsigned>(entry->address));
}

int crystalMhz(const Compilation& c) {
    return std::max(c.device.settings[kXtal].number, 1);
}

std::string number(long value) {
    return std::to_string(value);
}

std::string filler(const Compilation& c) {
    return c.watchdogOn() ? "\tclrwdt" : "\tnop";
}

} // namespace zorvel
