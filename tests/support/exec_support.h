// Execution tests: a BASIC program is compiled, assembled with gpasm and run
// in the simulator; the test reads variables by name and stops at labels.
#pragma once

#include "sim/pic16.h"
#include "support/test_support.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace zorvel::test {

class SimProgram {
public:
    // Compiles `source` as prog.bas in a scratch folder with gpasm and loads
    // the HEX into a simulator of the compiled device at `mhz`. ok() tells
    // whether it got that far; failure() says why not.
    explicit SimProgram(const std::string& source, double mhz = 4.0);
    // As above, with `prepare` called after the compile and before the
    // library file is written again and assembled: tests of runtime routines
    // that no statement calls yet set their need marks there.
    SimProgram(const std::string& source, double mhz,
               const std::function<void(Compilation&)>& prepare);

    bool ok() const { return pic_ != nullptr; }
    const std::string& failure() const { return failure_; }
    const CompileResult& compiled() const { return compiled_; }
    sim::Pic16& pic() { return *pic_; }
    const std::string& source() const { return source_; }

    // Program address of a label of the program or the library (from the
    // assembler's listing); -1 when the listing does not have it.
    int label(const std::string& name) const;

    // Runs until the PC reaches `label` (at once when it is there already);
    // false when `maxCycles` pass first or the label is unknown.
    bool runTo(const std::string& name, uint64_t maxCycles = 2'000'000);
    // Runs until the endless loop that END compiles to is reached.
    bool runToEnd(uint64_t maxCycles = 20'000'000);

    // Variables by their BASIC names (case-insensitive; X means _X).
    int address(const std::string& variable) const; // -1 when undeclared
    int byte(const std::string& variable) const;
    int word(const std::string& variable) const; // low byte at the name, high at name + "H"
    int bit(const std::string& variable) const;  // a BIT variable
    void setByte(const std::string& variable, int value);
    void setWord(const std::string& variable, int value);
    void setBit(const std::string& variable, int value);

private:
    const SymbolEntry* find(const std::string& variable) const; // nullptr when undeclared
    const SymbolEntry& symbol(const std::string& variable) const;
    const SymbolEntry& highSymbol(const std::string& variable) const;
    void load(double mhz);
    sim::Pic16& loaded() const;

    std::string source_;
    TempDir dir_;
    CompileResult compiled_;
    std::map<std::string, int> labels_; // upper-case names
    std::unique_ptr<sim::Pic16> pic_;
    std::string failure_;
};

} // namespace zorvel::test
