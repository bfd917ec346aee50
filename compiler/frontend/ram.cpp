#include "compiler/frontend/ram.h"

#include "compiler/codegen/emit.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/const_expr.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/reserved_names.h"

namespace zorvel {
namespace {

constexpr int kSystemBytes = 26; // what the summary adds for the system variables

// --- RAM allocation -------------------------------------------------------

// With an interrupt handler, the bytes where it saves W in banks 1 to 3.
bool isSaveByte(const Compilation& c, int address) {
    if (!c.device.interruptOn) return false;
    const DeviceInfo& info = c.device.info;
    for (int bank = 1; bank < 4; ++bank)
        if (info.ramBanks() > bank && address == bankSaveAddress(info, bank)) return true;
    return false;
}

bool inRam(const Compilation& c, int address) {
    const DeviceInfo& info = c.device.info;
    for (int b = 0; b < 4; ++b) {
        if (b > 0 && info.bankStart(b) <= 0) continue;
        if (address >= info.bankStart(b) && address <= info.bankEnd(b)) return true;
    }
    return false;
}

} // namespace

// Moves an address that has run past a bank's RAM to the next bank's start,
// and past a byte that holds an interrupt save byte.
int gapSkip(const Compilation& c, int address) {
    const DeviceInfo& info = c.device.info;
    for (int b = 0; b < 3; ++b) {
        int next = info.bankStart(b + 1);
        if (next > 0 && address > info.bankEnd(b) && address < next) address = next;
    }
    return isSaveByte(c, address) ? gapSkip(c, address + 1) : address;
}

bool belowVariableLimit(Compilation& c) {
    if (c.ctx.variablesUsed < c.device.info.ramCapacity() - kSystemBytes) return true;
    reportError(c, kErrWhole, "Too Many Variables");
    return false;
}

// Places `count` bytes; on failure nothing is placed and the error is reported.
std::optional<std::vector<int>> placeBytes(Compilation& c, int count) {
    int saved = c.device.allocAddress;
    std::vector<int> addresses;
    for (int i = 0; i < count; ++i) {
        std::optional<int> a = placeByte(c);
        if (!a) {
            c.device.allocAddress = saved;
            reportError(c, kErrWhole, "Too Many Variables");
            return std::nullopt;
        }
        addresses.push_back(*a);
    }
    return addresses;
}

bool addSymbol(Compilation& c, SymbolEntry entry) {
    if (c.symbols.add(std::move(entry))) return true;
    reportError(c, kErrText, "Too many symbols. A program has at most 2000");
    return false;
}

bool claimDefineName(Compilation& c) {
    LineBuffer& l = c.line;
    size_t saved = l.pos;
    skipBlanks(c);
    size_t end = l.pos;
    while (end < l.length() && !isBlank(l.upper[end]) && !isStatementEnd(l.upper[end]))
        ++end;
    std::string name = l.upper.substr(l.pos, end - l.pos);
    l.pos = saved;
    std::string fault;
    if (name.empty())
        fault = "Name expected";
    else if (!isValidName(name))
        fault = "'" + name + "' is not a valid name. " + kNameRule;
    else if (c.names.defines.count(name))
        fault = "'" + name + "' is already defined";
    else if (const char* clash = assemblerNameClash(c, name))
        fault = "'" + name + "' " + clash;
    else if (findSetting(name) < 0 && (c.symbols.find(name) || c.labels.contains(name)))
        fault = "'" + name + "' is already declared";
    if (fault.empty()) {
        c.names.defines.insert(name);
        return true;
    }
    reportError(c, kErrText, fault);
    return false;
}

void emitDeclaration(Compilation& c, std::string line) {
    if (std::optional<size_t> header = openMacroHeader(c)) {
        c.asmlist.insert(c.asmlist.begin() + static_cast<std::ptrdiff_t>(*header), std::move(line));
        return;
    }
    c.emit(std::move(line));
}

std::optional<int> placeByte(Compilation& c) {
    int a = gapSkip(c, c.device.allocAddress);
    if (!inRam(c, a)) return std::nullopt;
    c.device.allocAddress = a + 1;
    return a;
}

std::string requestTemporary(Compilation& c, int kind) {
    std::string name = "N@VAR" + std::to_string(c.alloc.nextTemporary++);
    int bytes = kind == kKindWord ? 2 : 1;
    for (int i = 0; i < bytes; ++i) {
        // A name used as a byte before gets its high byte when asked for a word.
        std::string part = i == 0 ? name : name + "H";
        if (c.symbols.find(part)) continue;
        int address = c.device.allocAddress++;
        emitDeclaration(c, part + " = " + std::to_string(address));
        addSymbol(c, {part, part, i == 0 ? kind : kKindByte, address, -1});
        ++c.ctx.variablesUsed;
    }
    return name;
}

void releaseTemporary(Compilation& c) {
    --c.alloc.nextTemporary;
}

} // namespace zorvel
