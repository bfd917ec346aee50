#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/const_expr.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/numbers.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/ram.h"

#include <string>

namespace zorvel {
namespace {

constexpr size_t kMaxDeviceName = 19;

bool atStatementEnd(Compilation& c) {
    skipBlanks(c);
    return isStatementEnd(c.line.peek());
}

// A word value; a missing one is a syntax error.
bool readValueWord(Compilation& c, std::string& word) {
    word = readWord(c);
    if (!word.empty()) return true;
    reportError(c, kErrSyntax);
    return false;
}

bool readNumberValue(Compilation& c, int& value) {
    if (atStatementEnd(c)) {
        reportError(c, kErrSyntax);
        return false;
    }
    std::optional<int32_t> v = evaluateConstExpr(c);
    if (v) value = *v;
    return v.has_value();
}

void readSwitch(Compilation& c, SettingValue& s, bool wordsToo) {
    std::string word;
    if (!readValueWord(c, word)) return;
    if (word == "ON" || word == "1" || (wordsToo && word == "TRUE")) s.number = 1;
    if (word == "OFF" || word == "0" || (wordsToo && word == "FALSE")) s.number = 0;
}

void readMode(Compilation& c, SettingValue& s) {
    std::string word;
    if (!readValueWord(c, word)) return;
    if (word == "TRUE" || word == "0")
        s.number = 0;
    else if (word == "INVERTED" || word == "1")
        s.number = 1;
    else
        reportError(c, kErrText, "TRUE or INVERTED expected");
}

void readPin(Compilation& c, SettingValue& s) {
    std::string text = readOperand(c);
    if (text.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    std::optional<bool> isBit = classifyOperand(c, true, text);
    if (!isBit) return;
    if (!*isBit) {
        reportError(c, kErrText, "Not a valid Port/Bit combination");
        return;
    }
    std::string port = normaliseName(text.substr(0, text.find('.')));
    if (!checkPort(c, port)) return;
    if (c.operand.bit > 7) {
        reportError(c, kErrText, "Invalid bit number");
        return;
    }
    s.port = port;
    s.pin = c.operand.bit;
}

bool isPortName(std::string_view name) {
    return name == "PORTA" || name == "PORTB" || name == "PORTC" || name == "PORTD" ||
           name == "PORTE" || name == "GPIO";
}

void readPort(Compilation& c, SettingValue& s) {
    std::string word;
    if (!readValueWord(c, word)) return;
    if (!isPortName(word)) {
        reportError(c, kErrText, "Not a valid Port declaration");
        return;
    }
    s.port = word;
}

void readTad(Compilation& c, SettingValue& s) {
    static const struct {
        const char* word;
        int value;
    } names[] = {{"2_FOSC", 0}, {"8_FOSC", 1}, {"32_FOSC", 2}, {"FRC", 3}};
    std::string word = peekWord(c);
    for (const auto& n : names) {
        if (word != n.word) continue;
        readWord(c);
        s.number = n.value;
        return;
    }
    readNumberValue(c, s.number);
}

void readChoice(Compilation& c, SettingValue& s, std::initializer_list<int> allowed,
                const char* error) {
    int value = 0;
    if (!readNumberValue(c, value)) return;
    for (int a : allowed) {
        if (a != value) continue;
        s.number = value;
        return;
    }
    reportError(c, kErrText, error);
}

void readOpaque(Compilation& c, SettingValue& s) {
    s.text = readStatementRest(c);
    if (s.text.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    s.number = std::atoi(s.text.c_str());
}

void readSetting(Compilation& c, Setting key) {
    SettingValue& s = c.device.settings[key];
    s.declared = true;
    switch (settingTable()[key].kind) {
    case SettingKind::Switch: readSwitch(c, s, true); break;
    case SettingKind::BusSwitch: readSwitch(c, s, false); break;
    case SettingKind::Number: readNumberValue(c, s.number); break;
    case SettingKind::Pin: readPin(c, s); break;
    case SettingKind::Mode: readMode(c, s); break;
    case SettingKind::Port: readPort(c, s); break;
    case SettingKind::Tad: readTad(c, s); break;
    case SettingKind::LcdInterface: readChoice(c, s, {4, 8}, "Invalid LCD interface type"); break;
    case SettingKind::LcdLines:
        readChoice(c, s, {1, 2, 4}, "Invalid number of Lines. 1, 2 or 4");
        break;
    case SettingKind::Opaque: readOpaque(c, s); break;
    }
}

// The crystal is a whole number of MHz that a mid-range PIC can run at.
void checkCrystal(Compilation& c) {
    int& mhz = c.device.settings[kXtal].number;
    if (mhz >= 1 && mhz <= 20 && atStatementEnd(c)) return;
    reportError(c, kErrText, "XTAL is a whole number of MHz from 1 to 20");
    mhz = settingTable()[kXtal].number;
}

// The XTAL constant follows the crystal setting.
void updateXtalSymbol(Compilation& c) {
    if (SymbolEntry* xtal = c.symbols.findMutable("XTAL"); xtal && xtal->kind == kKindNum) {
        xtal->address = c.device.settings[kXtal].number;
        xtal->target = std::to_string(xtal->address);
    }
}

} // namespace

void compileDeclare(Compilation& c) {
    size_t afterDeclare = c.line.pos;
    std::string key = readWord(c);
    int index = findSetting(key);
    if (index >= 0 && !c.device.settings.values[index].declared) {
        int errors = c.ctx.errorCount;
        readSetting(c, static_cast<Setting>(index));
        if (index == kXtal && c.ctx.errorCount == errors) checkCrystal(c);
        if (index == kXtal) updateXtalSymbol(c);
        return;
    }
    c.line.pos = afterDeclare;
    if (!claimDefineName(c)) return;
    c.emit("\t#Define " + readStatementRest(c));
}

// Only the first DEVICE of a pass loads; a later one cannot undo a failed load.
// Loading rebuilds the symbol table, so it must come before any declaration.
void compileDevice(Compilation& c) {
    c.ctx.defaultDevice = false;
    std::string name = readWord(c);
    if (name.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (c.device.setThisPass) return;
    c.ctx.deviceSet = true;
    if (name.size() > kMaxDeviceName) {
        reportError(c, kErrText, "Device name '" + name + "' is too long. 19 characters maximum");
        return;
    }
    if (c.symbols.size() > c.device.loadedSymbols) {
        reportError(c, kErrText, "DEVICE must come before the declarations and statements");
        return;
    }
    c.device.name = name;
    c.device.setThisPass = true;
    loadDevice(c);
}

void compileConfig(Compilation& c) {
    remarksEcho(c);
    DeviceModel& d = c.device;
    d.configGiven = true;
    d.configText = "\t__CONFIG ";
    while (true) {
        std::string fuse = readWord(c);
        if (fuse.empty()) {
            reportError(c, kErrSyntax);
            return;
        }
        if (fuse == "WDT_OFF") d.watchdog = false;
        if (!d.fuses.contains(fuse)) {
            reportError(c, kErrText, "Invalid Fuse setting [ " + fuse + " ]");
            return;
        }
        d.configText += fuse + "&";
        skipBlanks(c);
        char next = c.line.peek();
        if (next == ',') {
            ++c.line.pos;
            continue;
        }
        if (isStatementEnd(next)) break;
        reportError(c, kErrComma);
        return;
    }
    d.configText.back() = ' ';
}

void compileContext(Compilation& c) {
    remarksEcho(c);
    std::string word = readWord(c);
    if (word.empty()) {
        reportError(c, kErrText, "SAVE or RESTORE expected after CONTEXT");
        return;
    }
    c.device.contextUsed = true;
    if (!c.device.interruptOn) return;
    if (word == "SAVE")
        c.emit("\tConsave");
    else if (word == "RESTORE")
        c.emit("\tConres");
    else
        reportError(c, kErrSyntax);
}

void compileOrg(Compilation& c) {
    if (atStatementEnd(c)) {
        reportError(c, kErrSyntax);
        return;
    }
    std::optional<int32_t> value = evaluateConstExpr(c);
    if (value) c.emit("\tOrg " + std::to_string(*value));
}

void compileSetOscCal(Compilation& c) {
    const DeviceInfo& info = c.device.info;
    if (info.oscCal() == 0) {
        reportError(c, kErrText, "No on-board oscillator on this device");
        return;
    }
    if (info.codeWords() <= 1024) c.device.oscCalSmall = true;
    if (info.codeWords() >= 2048) c.device.oscCalLarge = true;
}

void compileOnInterrupt(Compilation& c) {
    std::string label = readWord(c);
    if (label.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (label == "GOTO") {
        label = readWord(c);
        if (label.empty()) {
            reportError(c, kErrSyntax);
            return;
        }
    }
    if (!lookupLabel(c, true, label) && c.ctx.pass == 2) return;
    DeviceModel& d = c.device;
    d.handlerLabel = label;
    d.interruptOn = true;
    d.interruptUsed = true;
}

} // namespace zorvel
