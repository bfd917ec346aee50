#include "compiler/frontend/symbols.h"

namespace zorvel {

void SymbolTable::clear() {
    entries_.clear();
    index_.clear();
}

bool SymbolTable::add(SymbolEntry entry) {
    if (full()) return false;
    index_.try_emplace(entry.name, entries_.size());
    entries_.push_back(std::move(entry));
    return true;
}

const SymbolEntry* SymbolTable::find(std::string_view name) const {
    auto it = index_.find(std::string(name));
    return it == index_.end() ? nullptr : &entries_[it->second];
}

SymbolEntry* SymbolTable::findMutable(std::string_view name) {
    auto it = index_.find(std::string(name));
    return it == index_.end() ? nullptr : &entries_[it->second];
}

void NameTable::clear() {
    names_.clear();
    index_.clear();
}

bool NameTable::contains(std::string_view name) const {
    return index_.find(std::string(name)) != index_.end();
}

bool NameTable::add(std::string_view name) {
    if (contains(name)) return true;
    if (full()) return false;
    index_.emplace(std::string(name), names_.size());
    names_.emplace_back(name);
    return true;
}

} // namespace zorvel
