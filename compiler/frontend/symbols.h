// Symbol table (registers, fuses, variables, constants, aliases) and the
// plain name tables used for labels and macro names.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zorvel {

// Operand kind codes shared by the symbol table and the generators.
enum Kind : int {
    kKindByte = 0,
    kKindWord = 1,
    kKindBit = 8,
    kKindNum = 11,
    kKindWreg = 12,
    kKindByteArray = 20,
    kKindWordArray = 21,
};

// The description of the operand a generator is working on.
struct Operand {
    std::string name;   // as written, normalised
    std::string target; // the text the output uses for it
    int kind = kKindByte;
    int address = 0;
    int bit = -1;
};

struct SymbolEntry {
    std::string name;   // upper case
    std::string target; // variable: its name; alias: the aliased text; constant: value
    int kind = kKindByte;
    int address = 0; // RAM address, constant value, or address of a bit's byte
    int bit = -1;    // bit number, element count of an array, -1 otherwise
};

// Up to kCapacity entries in declaration order; the first entry of a name wins.
class SymbolTable {
public:
    static constexpr size_t kCapacity = 2000;

    void clear();
    bool full() const { return entries_.size() >= kCapacity; }
    size_t size() const { return entries_.size(); }

    // Appends an entry; returns false when the table is full.
    bool add(SymbolEntry entry);
    const SymbolEntry* find(std::string_view name) const;
    SymbolEntry* findMutable(std::string_view name);
    const std::vector<SymbolEntry>& entries() const { return entries_; }

private:
    std::vector<SymbolEntry> entries_;
    std::unordered_map<std::string, size_t> index_;
};

// A fixed-capacity set of names kept in insertion order (labels, macro names).
class NameTable {
public:
    explicit NameTable(size_t capacity) : capacity_(capacity) {}

    void clear();
    bool contains(std::string_view name) const;
    bool full() const { return names_.size() >= capacity_; }
    // Adds a name not yet present; returns false when the table is full.
    bool add(std::string_view name);
    size_t size() const { return names_.size(); }
    size_t capacity() const { return capacity_; }

private:
    size_t capacity_;
    std::vector<std::string> names_;
    std::unordered_map<std::string, size_t> index_;
};

} // namespace zorvel
