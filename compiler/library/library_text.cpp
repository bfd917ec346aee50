#include "compiler/library/library_text.h"

#include "compiler/driver/compilation.h"

namespace zorvel {

std::string regAddress(const Compilation& c, std::string_view name) {
    const SymbolEntry* entry = c.symbols.find(name);
    if (!entry) return std::string(name);
    return std::to_string(static_cast<unsigned>(entry->address));
}

std::string filler(const Compilation& c) {
    return c.watchdogOn() ? "\tclrwdt" : "\tnop";
}

} // namespace zorvel
