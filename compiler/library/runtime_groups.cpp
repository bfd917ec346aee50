#include "compiler/library/runtime_groups.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/library/runtime_marks.h"
#include "compiler/library/runtime_routines.h"

#include <array>

namespace zorvel {
namespace {

// Group 27: the label in front of the RSOUT routine, the target of the
// character dispatcher; written even when the routine itself is not.
void writeRsoutLabel(Compilation&, LibraryOutput& out) {
    out.add("rsout@");
}

using G = Group;
using GroupWriter = void (*)(Compilation&, LibraryOutput&);

// One routine group: its text (nullptr while the compiler has no generator
// that calls it), the later groups it calls, and whether its code uses the
// BPF and BPFH state registers, which the start-up code then clears.
struct RuntimeGroup {
    Group group;
    GroupWriter write;
    std::array<Group, 6> calls{}; // unused slots hold 0
    bool usesBpf = false;
    bool usesBpfh = false;
};

// In writing order. Every group named in `calls` comes later than the group.
constexpr RuntimeGroup kGroups[] = {
    {G::Cos, writeCos, {G::Sin}},
    {G::Sin, writeSin, {G::CommonExit}},
    {G::FreqOut, writeFreqOut, {G::CommonExit, G::Sin, G::Multiply}},
    {G::DtmfOut, writeDtmfOut, {G::CommonExit, G::DelayMs, G::FreqOut}},
    {G::PutArray, writePutArray, {G::CommonExit, G::FindAddress}},
    {G::GetArray, writeGetArray, {G::CommonExit, G::FindAddress}},
    {G::FindAddress, writeFindAddress, {G::CommonExit}},
    {G::Inkey, writeInkey, {G::CommonExit}},
    {G::Compare, writeComparisons, {G::CommonExit}},
    {G::Counter, writeCounter, {G::CommonExit, G::Multiply}},
    {G::Cls, writeCls, {G::Dispatcher, G::DelayUs}, true, true},
    {G::Cursor, writeCursor, {G::LcdCursor, G::Dispatcher}, true, true},
    {G::LcdCursor, writeLcdCursor, {G::Dispatcher}, true, true},
    {G::Bin, writeBinary, {G::Dispatcher, G::SendDigit}, false, true},
    {G::Hex, writeHex, {G::Dispatcher}, true, true},
    {G::Dec, writeDecimal, {G::Divide, G::Dispatcher, G::SendDigit}, false, true},
    {G::SendDigit, writeDigitSender},
    {G::StringOneBank, writeStringOneBank, {G::CommonExit, G::Dispatcher}, false, true},
    {G::StringAcrossBanks,
     writeStringAcrossBanks,
     {G::GetArray, G::CommonExit, G::Dispatcher},
     false,
     true},
    {G::Rep, writeRepeat, {G::CommonExit, G::Dispatcher}, false, true},
    {G::Print, writePrint, {G::Dispatcher, G::CommonExit, G::DelayUs}, true, true},
    {G::BusIn, nullptr, {G::BusOut, G::CommonExit}, true, false},
    {G::BusOut, nullptr, {G::DelayUs, G::CommonExit}, true, true},
    {G::SerIn, writeSerin, {G::CommonExit, G::BitsHigh, G::BitsLow, G::SerialBit}},
    {G::SerOut, writeSerout, {G::CommonExit, G::DelayMs, G::SerialBit}},
    {G::SerialBit, writeSerialBit, {G::DelayUs}},
    {G::RsoutLabel, writeRsoutLabel},
    {G::Rsout, writeRsout, {G::CommonExit, G::BitDelay, G::DelayUs, G::Dispatcher}, false, true},
    {G::RsinTimeout, writeRsinTimeout, {G::CommonExit, G::RsinStart}},
    {G::Rsin, writeRsin, {G::CommonExit, G::RsinStart}},
    {G::RsinStart, writeRsinStart, {G::BitDelay}},
    {G::BitDelay, writeBitDelay, {G::DelayUs}},
    {G::Dispatcher, writeDispatcher},
    {G::Hpwm, writeHpwm, {G::CommonExit, G::Multiply, G::Divide}},
    {G::Pwm, writePwm, {G::CommonExit, G::Negate, G::InputPin}},
    {G::Pulsout, writePulsout, {G::CommonExit, G::Negate}},
    {G::Pulsin, writePulsin, {G::CommonExit, G::Rcin, G::EdgeCount}},
    {G::Pot, writePot, {G::CommonExit, G::BitsLow, G::DelayUs}},
    {G::Rcin, writeRcin, {G::EdgeCount}},
    {G::EdgeCount, writeEdgeCount, {G::CommonExit}},
    {G::Eread, nullptr, {G::CommonExit}},
    {G::Ewrite, nullptr, {G::CommonExit}},
    {G::CodeString, nullptr, {G::Cread, G::CommonExit, G::Dispatcher}, false, true},
    {G::Cread, nullptr, {G::CommonExit}},
    {G::Cwrite, nullptr, {G::CommonExit}},
    {G::Adin, nullptr, {G::CommonExit, G::DelayUs}},
    {G::Sound, writeSound, {G::CommonExit, G::Random}},
    {G::Random, writeRandom, {G::CommonExit}},
    {G::Shin, nullptr, {G::CommonExit, G::ShiftClock, G::ReverseBits}},
    {G::Shout, nullptr, {G::CommonExit, G::BitsHigh, G::BitsLow, G::ShiftClock, G::ReverseBits}},
    {G::ShiftClock, nullptr, {G::DelayUs}},
    {G::Snooze, writeSnooze, {G::CommonExit}},
    {G::SleepPeriod, writeSleepPeriod, {G::CommonExit, G::Multiply}},
    {G::DelayMs, writeMillisecondDelay, {G::CommonExit, G::DelayUs}},
    {G::DelayUs, writeMicrosecondDelay},
    {G::Lookup, nullptr, {G::CommonExit, G::BitTable}},
    {G::Toggle, writeToggle, {G::PinMask, G::OutputPin}},
    {G::PinMask, writePinMask, {G::BitTable}},
    {G::BitTable, writeBitTable},
    {G::Dig, writeDig, {G::Divide, G::CommonExit}},
    {G::Divide, writeDivide, {G::CommonExit}},
    {G::Multiply, writeMultiply, {G::CommonExit}},
    {G::ReverseBits, nullptr, {G::ShiftLeft}},
    {G::ShiftLeft, writeShiftLeft, {G::CommonExit}},
    {G::ShiftRight, writeShiftRight, {G::CommonExit}},
    {G::Negate, writeNegate, {G::IncrementPP0}},
    {G::IncrementPP0, writeIncrementPP0},
    {G::InputPin, writeInputPin, {G::CommonExit}},
    {G::BitsHigh, writeBitsHigh, {G::OutputPin}},
    {G::BitsLow, writeBitsLow, {G::OutputPin}},
    {G::InvertOut, nullptr, {G::OutputPin}},
    {G::OutputPin, writeOutputPin, {G::CommonExit}},
    {G::CommonExit, writeCommonExit},
};

constexpr bool inWritingOrder() {
    int number = 0;
    for (const RuntimeGroup& entry : kGroups)
        if (static_cast<int>(entry.group) != ++number) return false;
    return number == RuntimeState::kGroupCount;
}
static_assert(inWritingOrder(), "one entry per routine group, in writing order");

// The calls whose callee comes before its caller in the order: marked before
// the first group is looked at.
void markEarlierCallees(Compilation& c) {
    if (needed(c, G::DtmfOut)) need(c, G::FreqOut);
    if (needed(c, G::FreqOut)) need(c, G::Sin);
    if (needed(c, G::StringOneBank) || needed(c, G::StringAcrossBanks)) need(c, G::GetArray);
    if (needed(c, G::CodeString)) need(c, G::Dispatcher);
}

bool isWritten(const Compilation& c, const RuntimeGroup& entry) {
    if (!entry.write) return false;
    return entry.group == G::RsoutLabel || needed(c, entry.group);
}

// Marks the callees and the used registers, then writes the group's lines.
void writeGroup(Compilation& c, LibraryOutput& out, const RuntimeGroup& entry) {
    for (Group callee : entry.calls)
        if (static_cast<int>(callee) != 0) need(c, callee);
    out.bpfUsed = out.bpfUsed || entry.usesBpf;
    out.bpfhUsed = out.bpfhUsed || entry.usesBpfh;
    entry.write(c, out);
}

// The routine labels a BASIC name could spell (the others hold an "@"), by
// group. gpasm ignores case, so a variable or label COUNT meets the COUNTER
// routine's label when the routine is in the program.
struct GroupLabels {
    Group group;
    std::array<std::string_view, 4> labels;
};

constexpr GroupLabels kNameableLabels[] = {
    {G::Cos, {"COS"}},
    {G::Sin, {"SIN"}},
    {G::Inkey, {"INKEY"}},
    {G::Counter, {"COUNT"}},
    {G::Cls, {"LCD_CLS", "CLS"}},
    {G::Cursor, {"LCD_CUR", "CURSOR"}},
    {G::LcdCursor, {"LCD_CRS", "CURS"}},
    {G::Bin, {"OUT_BIN2", "OUT_BIN", "OUT_BINB"}},
    {G::Hex, {"OUT_HEX", "OUT_HEX4", "OUT_HEX3", "HDIG"}},
    {G::Hex, {"OUT_HEX2", "OUT_HEX1"}},
    {G::Print, {"PRINT"}},
    {G::BusIn, {"BUSIN2", "BUSIN"}},
    {G::BusOut, {"BUSOUT2", "BUSOUT", "BSTART", "BUSCHR"}},
    {G::SerIn, {"SERIN"}},
    {G::SerOut, {"SEROUT"}},
    {G::Rsout, {"RSOUT"}},
    {G::RsinTimeout, {"RSIN2"}},
    {G::Rsin, {"RSIN"}},
    {G::Pwm, {"PWM"}},
    {G::Pot, {"POT"}},
    {G::Rcin, {"CRIN"}},
    {G::Sound, {"NOISE"}},
    {G::Random, {"RNDM"}},
    {G::Dig, {"DIG"}},
};

} // namespace

void reportRoutineNameClashes(Compilation& c) {
    for (const GroupLabels& entry : kNameableLabels) {
        if (!needed(c, entry.group)) continue;
        for (std::string_view label : entry.labels) {
            if (label.empty()) continue;
            std::string name(label);
            // The program's own names: those declared after the device's.
            const std::vector<SymbolEntry>& all = c.symbols.entries();
            bool clash = c.labels.contains(name);
            for (size_t i = c.device.loadedSymbols; i < all.size() && !clash; ++i)
                clash = all[i].target == name;
            if (!clash) continue;
            reportError(c, kErrWhole,
                        "'" + name + "' is also the label of a runtime routine this program " +
                            "uses (the assembler ignores case). Rename it");
        }
    }
}

void reportPinClashes(Compilation& c) {
    if (!needed(c, G::Inkey) || !needed(c, G::Print)) return;
    const DeviceSettings& s = c.device.settings;
    const std::string& keypad = s[kKeypadPort].port;
    for (Setting lcd : {kLcdDtPin, kLcdRsPin, kLcdEnPin}) {
        if (s[lcd].port != keypad) continue;
        reportWarning(c, kWarnWhole,
                      "INKEY scans " + keypad +
                          ", which also carries the LCD's lines: the scan disturbs the "
                          "display. Move the keypad (KEYPAD_PORT) or the LCD");
        return;
    }
}

void writeRuntimeGroups(Compilation& c, LibraryOutput& out) {
    markEarlierCallees(c);
    for (const RuntimeGroup& entry : kGroups)
        if (isWritten(c, entry)) writeGroup(c, out, entry);
}

} // namespace zorvel
