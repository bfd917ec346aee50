#include "support/exec_support.h"

#include "compiler/driver/assembler.h"
#include "compiler/frontend/lexer.h"
#include "compiler/library/library_writer.h"
#include "sim/device_layout.h"
#include "sim/hex_loader.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zorvel::test {
namespace fs = std::filesystem;

namespace {

std::string upper(std::string s) {
    for (char& ch : s)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return s;
}

// The symbol table at the end of a gpasm listing: "NAME   0000ABCD" lines.
std::map<std::string, int> listingLabels(const fs::path& lst) {
    std::map<std::string, int> labels;
    std::ifstream in(lst);
    std::string line;
    bool inTable = false;
    while (std::getline(in, line)) {
        if (line.rfind("SYMBOL TABLE", 0) == 0) {
            inTable = true;
            continue;
        }
        if (!inTable) continue;
        std::istringstream fields(line);
        std::string name, value;
        if (!(fields >> name >> value) || value.size() != 8) continue;
        try {
            labels.emplace(upper(name), std::stoi(value, nullptr, 16));
        } catch (const std::exception&) {}
    }
    return labels;
}

std::string joinMessages(const std::vector<std::string>& messages) {
    std::string s;
    for (const std::string& m : messages)
        s += m + "\n";
    return s;
}

} // namespace

SimProgram::SimProgram(const std::string& source, double mhz) : source_(source) {
    fs::path file = dir_.write("prog.bas", source);
    compiled_ = compileFile(file, dataFolder(), true);
    load(mhz);
}

SimProgram::SimProgram(const std::string& source, double mhz,
                       const std::function<void(Compilation&)>& prepare)
    : source_(source) {
    fs::path file = dir_.write("prog.bas", source);
    compiled_ = compileFile(file, dataFolder(), false);
    Compilation& c = *compiled_.compilation;
    if (compiled_.errors == 0) {
        prepare(c);
        writeLibraryFile(c);
        assembleAndReadBack(c);
    }
    compiled_.messages = c.messages;
    compiled_.errors = c.ctx.errorCount;
    compiled_.alerts = c.alerts;
    load(mhz);
}

void SimProgram::load(double mhz) {
    if (compiled_.errors != 0 || !compiled_.alerts.empty() ||
        !fs::exists(dir_.path() / "prog.hex")) {
        failure_ = "build failed:\n" + joinMessages(compiled_.messages) +
                   joinMessages(compiled_.alerts) + "source:\n" + source_;
        return;
    }
    labels_ = listingLabels(dir_.path() / "prog.lst");
    std::string error;
    auto layout =
        sim::loadDeviceLayout(dataFolder() / "inc", compiled_.compilation->device.name, error);
    auto hex = sim::readHex(dir_.path() / "prog.hex", error);
    if (!layout || !hex) {
        failure_ = "cannot load: " + error;
        return;
    }
    pic_ = std::make_unique<sim::Pic16>(*layout, mhz);
    pic_->load(*hex);
}

int SimProgram::label(const std::string& name) const {
    auto it = labels_.find(upper(name));
    return it == labels_.end() ? -1 : it->second;
}

bool SimProgram::runTo(const std::string& name, uint64_t maxCycles) {
    int target = label(name);
    if (target < 0 || !pic_) return false;
    pic_->addBreakpoint(static_cast<uint16_t>(target));
    uint64_t limit = pic_->cycles() + maxCycles;
    while (pic_->pc() != target) {
        if (pic_->cycles() >= limit) return false;
        pic_->run(limit - pic_->cycles());
    }
    return true;
}

bool SimProgram::runToEnd(uint64_t maxCycles) {
    // END compiles to the last "Pb@lab" loop of the program.
    std::string last;
    int lastAddress = -1;
    for (const auto& [name, address] : labels_) {
        if (name.rfind("PB@LAB", 0) == 0 && address > lastAddress) {
            last = name;
            lastAddress = address;
        }
    }
    return !last.empty() && runTo(last, maxCycles);
}

// The high byte of a word: its name + "H" after the single-letter rule (S is _S, _SH).
const SymbolEntry& SimProgram::highSymbol(const std::string& variable) const {
    return symbol(normaliseName(upper(variable)) + "H");
}

const SymbolEntry* SimProgram::find(const std::string& variable) const {
    return compiled_.compilation->symbols.find(normaliseName(upper(variable)));
}

const SymbolEntry& SimProgram::symbol(const std::string& variable) const {
    const SymbolEntry* e = find(variable);
    if (!e) throw std::runtime_error("no variable " + variable);
    return *e;
}

int SimProgram::address(const std::string& variable) const {
    const SymbolEntry* e = find(variable);
    return e ? e->address : -1;
}

// A test that reads or writes RAM of a program that did not build fails with
// the build's messages instead of crashing.
sim::Pic16& SimProgram::loaded() const {
    if (!pic_) throw std::logic_error("program not loaded: " + failure_);
    return *pic_;
}

int SimProgram::byte(const std::string& variable) const {
    return loaded().peek(symbol(variable).address);
}

int SimProgram::word(const std::string& variable) const {
    return loaded().peek(symbol(variable).address) | loaded().peek(highSymbol(variable).address)
                                                         << 8;
}

int SimProgram::bit(const std::string& variable) const {
    const SymbolEntry& e = symbol(variable);
    return (loaded().peek(e.address) >> e.bit) & 1;
}

void SimProgram::setByte(const std::string& variable, int value) {
    loaded().poke(symbol(variable).address, static_cast<uint8_t>(value));
}

void SimProgram::setWord(const std::string& variable, int value) {
    loaded().poke(symbol(variable).address, static_cast<uint8_t>(value));
    loaded().poke(highSymbol(variable).address, static_cast<uint8_t>(value >> 8));
}

void SimProgram::setBit(const std::string& variable, int value) {
    const SymbolEntry& e = symbol(variable);
    uint8_t old = loaded().peek(e.address);
    uint8_t mask = static_cast<uint8_t>(1 << e.bit);
    loaded().poke(e.address, static_cast<uint8_t>(value ? old | mask : old & ~mask));
}

} // namespace zorvel::test
