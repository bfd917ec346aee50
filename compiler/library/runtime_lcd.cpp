// The character LCD and keypad routines of the runtime library: the
// HD44780 driver (print), clearing the display (lcd_cls, cls), moving the
// cursor (lcd_cur, cursor, lcd_crs, curs) and the 4x4 keypad scan (inkey).
// The LCD's pins come from the DECLARE settings LCD_DTPIN (the data port;
// bit 0 puts a 4-bit bus on the low nibble, any other bit on the high one),
// LCD_RSPIN, LCD_ENPIN, LCD_INTERFACE (4 or 8) and LCD_LINES (1, 2 or 4).
// The routines never read the display's busy flag: every transfer is
// followed by a wait longer than the instruction's execution time.
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_routines.h"

#include <algorithm>

namespace zorvel {
namespace {

// The LCD's pins and bus as the settings give them.
struct LcdWiring {
    std::string dataPort, rsPort, enPort; // decimal register addresses
    int rsPin, enPin;
    bool eightBit;
    bool lowNibble; // 4-bit bus on bits 0-3 of the data port
    int functionSet;

    explicit LcdWiring(const Compilation& c) {
        const SettingValue& dt = c.device.settings[kLcdDtPin];
        const SettingValue& rs = c.device.settings[kLcdRsPin];
        const SettingValue& en = c.device.settings[kLcdEnPin];
        dataPort = regAddress(c, dt.port);
        rsPort = regAddress(c, rs.port);
        enPort = regAddress(c, en.port);
        rsPin = rs.pin;
        enPin = en.pin;
        eightBit = c.device.settings[kLcdInterface].number == 8;
        lowNibble = dt.pin < 1;
        // DL (16) for 8 bits, N (8) for two lines; four-line displays are two
        // lines of the controller.
        bool oneLine = c.device.settings[kLcdLines].number == 1;
        functionSet = 32 + (eightBit ? 16 : 0) + (oneLine ? 0 : 8);
    }
    std::string rs() const { return rsPort + "," + number(rsPin); }
    std::string en() const { return enPort + "," + number(enPin); }
};

// Cycles of the E pulse: high for at least 450 ns, the HD44780's shortest
// enable pulse over its whole supply range (X / 4 cycles per microsecond).
int enablePulseCycles(int mhz) {
    return std::max(1, (450 * mhz + 3999) / 4000);
}

void addPadding(Compilation& c, LibraryOutput& out, int cycles) {
    for (; cycles >= 2; cycles -= 2)
        out.add("\tgoto $+1");
    if (cycles == 1) out.add(filler(c));
}

// A wait of `us` microseconds through dlus@w.
void longWait(Compilation& c, LibraryOutput& out, int us, bool tail = false) {
    out.add("\tmovlw " + number(us / 256));
    out.add("\tmovwf " + regAddress(c, "PP0H"));
    out.add("\tmovlw " + number(us % 256));
    out.add(tail ? "\tgoto dlus@w" : "\tcall dlus@w");
}

bool timedSerout(const Compilation& c) {
    return c.runtime.seroutTimeout;
}

void stopOnTimeout(const Compilation& c, LibraryOutput& out) {
    if (!timedSerout(c)) return;
    out.add("\tskpc");
    out.add("\tgoto i@nt");
}

// The wait after clearing the display or sending the cursor home
// (commands 0 to 3): 1600 us, more than the controller's 1.52 ms.
constexpr int kLongCommandUs = 1600;
// The wait after any other command or a character (37 us, 41 us with the
// address update of a data write).
constexpr int kShortCommandUs = 50;

} // namespace

// Group 8: a 4x4 keypad on KEYPAD_PORT: rows on bits 0-3 (driven low one at
// a time, the others high), columns on bits 4-7 (inputs; a key joins its
// row and column, so a pressed key reads low). The key number, row x 4 +
// column, is counted in PP7; W returns it, or 16 with no key down. Each row
// is read 5 us after it is driven; the scan ends with every row high.
void writeInkey(Compilation& c, LibraryOutput& out) {
    const std::string& portName = c.device.settings[kKeypadPort].port;
    std::string port = regAddress(c, portName), status = regAddress(c, "STATUS");
    std::string key = regAddress(c, "PP7"), columns = regAddress(c, "PP7H");
    out.add("inkey\tclrf " + key);
    out.add("\tbcf " + status + ",0");
    out.add("\tbsf " + status + ",5");
    if (portName == "PORTB") out.add("\tbcf Option_Reg,7");
    out.add("\tmovlw 11110000b");
    out.add("\tmovwf " + port);
    out.add("\tbcf " + status + ",5");
    for (const char* row : {"00001110b", "00001101b", "00001011b", "00000111b"}) {
        out.add(std::string("\tmovlw ") + row);
        out.add("\tcall Scan@row");
    }
    out.add("\tmovlw 15");
    out.add("\tiorwf " + port + ",f");
    out.add("\tmovfw " + key);
    out.add("\tgoto i@nt");
    // One row (pattern in W); the carry is set once a key is found, and the
    // later rows then return at once with the count left at that key.
    int settle = (5 * crystalMhz(c) + 3) / 4; // cycles in 5 us
    out.add("Scan@row\tbtfsc " + status + ",0");
    out.add("\treturn");
    out.add("\tmovwf " + port);
    out.add("\tmovlw " + number(std::max(1, (settle + 1) / 3)));
    out.add("\tmovwf " + columns);
    out.add("\tdecfsz " + columns + ",f");
    out.add("\tgoto $-1");
    out.add("\tcomf " + port + ",w");
    out.add("\tmovwf " + columns);
    out.add("\tswapf " + columns + ",f");
    out.add("sc@col\trrf " + columns + ",f");
    out.add("\tskpnc");
    out.add("\treturn");
    out.add("\tincf " + key + ",f");
    out.add("\tmovlw 3");
    out.add("\tandwf " + key + ",w");
    out.add("\tbnz sc@col");
    out.add("\treturn");
}

// Group 11: 254, 1 (clear display) through the dispatcher, then 30 ms for a
// display behind a serial link. lcd_cls selects the LCD itself.
void writeCls(Compilation& c, LibraryOutput& out) {
    out.add("lcd_cls\tbsf " + regAddress(c, "BPFH") + ",7");
    out.add("cls\tmovlw 254");
    out.add("\tcall ch@snd");
    stopOnTimeout(c, out);
    out.add("\tmovlw 1");
    out.add("\tcall ch@snd");
    stopOnTimeout(c, out);
    longWait(c, out, 30000);
    if (timedSerout(c)) out.add("\tsetc");
    out.add("\tgoto i@nt");
}

// Group 12: the cursor to line PP4 (0 counts as 1), column W (0 counts as
// 1): the DDRAM address of a 4 x 20 display, lines at 128, 192, 148 and 212
// (the line number taken modulo 4), plus the column - 1, through curs.
// lcd_cur selects the LCD itself.
void writeCursor(Compilation& c, LibraryOutput& out) {
    std::string column = regAddress(c, "PP2"), line = regAddress(c, "PP2H");
    out.add("lcd_cur\tbsf " + regAddress(c, "BPFH") + ",7");
    out.add("cursor\taddlw 255");
    out.add("\tskpc");
    out.add("\tclrw");
    out.add("\tmovwf " + column);
    out.add("\tmovf " + regAddress(c, "PP4") + ",w");
    out.add("\tskpz");
    out.add("\taddlw 255");
    out.add("\tmovwf " + line);
    out.add("\tmovlw 128");
    out.add("\tbtfsc " + line + ",0");
    out.add("\tmovlw 192");
    out.add("\tbtfsc " + line + ",1");
    out.add("\taddlw 20");
    out.add("\taddwf " + column + ",w");
    out.add("\tgoto curs");
}

// Group 13: 254 and then W (a display command) through the dispatcher.
// lcd_crs selects the LCD itself.
void writeLcdCursor(Compilation& c, LibraryOutput& out) {
    std::string keep = regAddress(c, "PP2");
    out.add("lcd_crs\tbsf " + regAddress(c, "BPFH") + ",7");
    out.add("curs\tmovwf " + keep);
    out.add("\tmovlw 254");
    out.add("\tcall ch@snd");
    stopOnTimeout(c, out);
    out.add("\tmovfw " + keep);
    out.add("\tgoto ch@snd");
}

// Group 21: the HD44780 driver. print takes the character in W (kept in
// PP3H and returned in W), makes E, RS and the data lines outputs and, on
// the first call (BPF bit 1 clear), initialises the display by instruction.
// A 254 is not shown: it makes the next byte a command (BPF bit 0). pr@lp
// sends one byte, as a command while BPF bit 0 is set, else as data, and
// waits for it; prt@s puts W's data bits on the bus and pulses E.
void writePrint(Compilation& c, LibraryOutput& out) {
    const DeviceSettings& s = c.device.settings;
    LcdWiring w(c);
    std::string status = regAddress(c, "STATUS"), bpf = regAddress(c, "BPF");
    std::string pp3 = regAddress(c, "PP3"), pp3h = regAddress(c, "PP3H");
    out.add("LCD_DTPORT=" + s[kLcdDtPin].port);
    out.add("LCD_DTPIN=" + number(s[kLcdDtPin].pin));
    out.add("LCD_RSPORT=" + s[kLcdRsPin].port);
    out.add("LCD_RSPIN=" + number(s[kLcdRsPin].pin));
    out.add("LCD_ENPORT=" + s[kLcdEnPin].port);
    out.add("LCD_ENPIN=" + number(s[kLcdEnPin].pin));
    out.add("LCD_INTERFACE=" + number(s[kLcdInterface].number));
    out.add("LCD_LINES=" + number(s[kLcdLines].number));
    out.add("LCD_TYPE=" + number(s[kLcdType].number));

    out.add("print\tmovwf " + pp3h);
    out.add("\tbcf " + w.en());
    out.add("\tbsf " + status + ",5");
    out.add("\tbcf " + w.en());
    out.add("\tbcf " + w.rs());
    if (w.eightBit) {
        out.add("\tclrf " + w.dataPort);
    } else {
        out.add(w.lowNibble ? "\tmovlw 240" : "\tmovlw 15");
        out.add("\tandwf " + w.dataPort + ",f");
    }
    out.add("\tbcf " + status + ",5");
    out.add("\tbtfsc " + bpf + ",1");
    out.add("\tgoto prt@c");

    // Initialisation by instruction: three 8-bit function sets after the
    // power-on wait, 4 bits from then on for a 4-bit bus, the function set,
    // display on (cursor off), entry mode increment.
    out.add("\tbcf " + w.rs());
    longWait(c, out, 16000);
    out.add("\tmovlw 51");
    out.add("\tcall prt@s");
    longWait(c, out, 5000);
    for (int i = 0; i < 2; ++i) {
        out.add("\tmovlw 51");
        out.add("\tcall prt@s");
        out.add("\tmovlw 100");
        out.add("\tcall dl@us");
    }
    if (!w.eightBit) {
        out.add("\tmovlw 34");
        out.add("\tcall prt@s");
        out.add("\tmovlw " + number(kShortCommandUs));
        out.add("\tcall dl@us");
    }
    out.add("\tbsf " + bpf + ",0");
    for (int command : {w.functionSet, 12, 6}) {
        out.add("\tmovlw " + number(command));
        out.add("\tcall pr@lp");
    }
    out.add("\tbcf " + bpf + ",0");
    out.add("\tbsf " + bpf + ",1");

    out.add("prt@c\tbtfsc " + bpf + ",0");
    out.add("\tgoto prt@1");
    out.add("\tmovlw 254");
    out.add("\txorwf " + pp3h + ",w");
    out.add("\tbnz prt@1");
    out.add("\tbsf " + bpf + ",0");
    out.add("\tgoto pr@ex");
    out.add("prt@1\tmovfw " + pp3h);
    out.add("\tcall pr@lp");
    out.add("\tbcf " + bpf + ",0");
    out.add("pr@ex\tmovfw " + pp3h);
    if (timedSerout(c)) out.add("\tsetc");
    out.add("\tgoto i@nt");

    out.add("pr@lp\tmovwf " + pp3);
    out.add("\tbsf " + w.rs());
    out.add("\tbtfsc " + bpf + ",0");
    out.add("\tbcf " + w.rs());
    if (w.eightBit) {
        out.add("\tmovfw " + pp3);
        out.add("\tcall prt@s");
    } else {
        // The high nibble first.
        out.add(w.lowNibble ? "\tswapf " + pp3 + ",w" : "\tmovfw " + pp3);
        out.add("\tcall prt@s");
        out.add(w.lowNibble ? "\tmovfw " + pp3 : "\tswapf " + pp3 + ",w");
        out.add("\tcall prt@s");
    }
    out.add("\tmovlw " + number(kShortCommandUs));
    out.add("\tbtfss " + bpf + ",0");
    out.add("\tgoto dl@us");
    out.add("\tmovlw 252");
    out.add("\tandwf " + pp3 + ",w");
    out.add("\tmovlw " + number(kShortCommandUs));
    out.add("\tskpz");
    out.add("\tgoto dl@us");
    longWait(c, out, kLongCommandUs, true);

    if (w.eightBit) {
        out.add("prt@s\tmovwf " + w.dataPort);
    } else {
        // Only the data nibble changes: port ^ ((port ^ W) & nibble).
        out.add("prt@s\txorwf " + w.dataPort + ",w");
        out.add(w.lowNibble ? "\tandlw 15" : "\tandlw 240");
        out.add("\txorwf " + w.dataPort + ",f");
    }
    out.add("\tbsf " + w.en());
    addPadding(c, out, enablePulseCycles(crystalMhz(c)) - 1);
    out.add("\tbcf " + w.en());
    out.add("\treturn");
}

} // namespace zorvel
