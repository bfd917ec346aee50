#include "cli/sim_command.h"

#include "compiler/driver/home_folder.h"
#include "sim/parts/hd44780.h"
#include "sim/parts/keypad4x4.h"
#include "sim/parts/logic_probe.h"
#include "sim/parts/pulse_source.h"
#include "sim/parts/uart_receiver.h"
#include "sim/parts/uart_transmitter.h"
#include "sim/pic16.h"
#include "sim/vcd.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

namespace zorvel::cli {

namespace {

constexpr uint64_t defaultCycles = 1000000;
// About half a minute of simulation on a fast machine.
constexpr uint64_t kMaxCycles = 10'000'000'000;
// From a 32.768 kHz watch crystal to twice the 20 MHz of the classic parts.
constexpr double kMinXtalMhz = 0.032;
constexpr double kMaxXtalMhz = 40.0;

// Edges listed per probe unless --probe-edges says otherwise, and the most it
// may ask for (each kept edge costs 16 bytes for the whole run).
constexpr int kDefaultProbeEdges = 50;
constexpr int kMaxProbeEdges = 1000000;
// The lowest square wave frequency and the longest times a drive accepts:
// far beyond any run, small enough for whole cycles to fit 64 bits.
constexpr double kMinSquareHz = 0.01;
constexpr double kMaxDriveUs = 1e10;

struct UartRequest {
    std::string pin;
    int baud = 0;
    bool inverted = false;
    std::string text; // --uart-tx: the bytes to send
};

// --uart-tx: the line idles this long before the first start bit.
constexpr double kUartTxIdleMs = 10;
// --keypad: each key is held this long, after as long with no key down.
constexpr int kDefaultKeyMs = 100;
constexpr int kMaxKeyMs = 100000;

// A key of --keypad going down or up at a cycle.
struct KeyEvent {
    uint64_t cycle = 0;
    char key = 0;
    bool down = false;
};

struct KeypadRequest {
    std::array<std::string, 4> rows, columns;
    std::vector<KeyEvent> events; // in time order
};

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, separator))
        parts.push_back(item);
    if (!text.empty() && text.back() == separator) parts.emplace_back();
    return parts;
}

// A signal driven onto an input pin from cycle 0, in cycles at the crystal.
struct DriveRequest {
    enum class Kind { Square, Pulse, Rc };
    std::string pin;
    Kind kind = Kind::Square;
    bool idle = false;   // Square, Pulse: the level outside the pulses
    uint64_t start = 0;  // Square, Pulse
    uint64_t width = 0;  // Square, Pulse: cycles at the active level
    uint64_t period = 0; // Square
    double chargeUs = 0; // Rc
};

std::optional<int> number(const std::string& text) {
    if (text.empty() || text.size() > 9) return std::nullopt;
    for (char c : text)
        if (c < '0' || c > '9') return std::nullopt;
    return std::stoi(text);
}

// A whole number of cycles from 0 to kMaxCycles, digits only.
std::optional<uint64_t> cycleCount(const std::string& text) {
    if (text.empty() || text.size() > 11) return std::nullopt;
    for (char c : text)
        if (c < '0' || c > '9') return std::nullopt;
    uint64_t value = std::stoull(text);
    if (value > kMaxCycles) return std::nullopt;
    return value;
}

// A plain decimal number: digits with at most one point, no sign or exponent.
std::optional<double> decimal(const std::string& text) {
    if (text.empty() || text.size() > 20 || text == ".") return std::nullopt;
    bool point = false;
    for (char c : text) {
        if (c == '.' && !point)
            point = true;
        else if (c < '0' || c > '9')
            return std::nullopt;
    }
    return std::stod(text);
}

std::string formatNumber(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::optional<UartRequest> parseUart(const std::string& text) {
    std::vector<std::string> parts = split(text, ':');
    if (parts.size() < 2 || parts.size() > 3 || parts[0].empty()) return std::nullopt;
    std::optional<int> baud = number(parts[1]);
    if (!baud || *baud < 1) return std::nullopt;
    if (parts.size() == 3 && parts[2] != "inv") return std::nullopt;
    return UartRequest{parts[0], *baud, parts.size() == 3, ""};
}

// RS,E and four (D4-D7) or eight (D0-D7) data pins, then the lines and
// optionally the columns: 2 lines of 16 unless told (4 lines: 20 columns).
std::optional<sim::Hd44780Pins> parseLcd(const std::string& text) {
    std::vector<std::string> outer = split(text, ':');
    if (outer.empty() || outer.size() > 2) return std::nullopt;
    std::vector<std::string> names = split(outer[0], ',');
    if (names.size() != 6 && names.size() != 10) return std::nullopt;
    for (const std::string& n : names)
        if (n.empty()) return std::nullopt;
    sim::Hd44780Pins pins{names[0], names[1], std::nullopt, {names.begin() + 2, names.end()},
                          2,        16};
    if (outer.size() == 2) {
        std::vector<std::string> size = split(outer[1], 'x');
        if (size.size() > 2) return std::nullopt;
        std::optional<int> lines = number(size[0]);
        if (!lines || (*lines != 1 && *lines != 2 && *lines != 4)) return std::nullopt;
        pins.lines = *lines;
        if (*lines == 4) pins.columns = 20;
        if (size.size() == 2) {
            std::optional<int> columns = number(size[1]);
            if (!columns || *columns < 8 || *columns > 40) return std::nullopt;
            pins.columns = *columns;
        }
    }
    return pins;
}

// TEXT of --uart-tx with its escapes: \n, \r, \t, \\ and \xHH.
std::optional<std::string> unescape(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out += text[i];
            continue;
        }
        if (++i == text.size()) return std::nullopt;
        switch (text[i]) {
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case '\\': out += '\\'; break;
        case 'x': {
            std::string hex = text.substr(i + 1, 2);
            if (hex.size() != 2 || !std::isxdigit(static_cast<unsigned char>(hex[0])) ||
                !std::isxdigit(static_cast<unsigned char>(hex[1])))
                return std::nullopt;
            out += static_cast<char>(std::stoi(hex, nullptr, 16));
            i += 2;
            break;
        }
        default: return std::nullopt;
        }
    }
    return out;
}

// PIN:BAUD:TEXT or PIN:BAUD:inv:TEXT; TEXT runs to the end and may hold ':'.
std::optional<UartRequest> parseUartTx(const std::string& text) {
    std::vector<std::string> parts = split(text, ':');
    if (parts.size() < 3 || parts[0].empty()) return std::nullopt;
    std::optional<int> baud = number(parts[1]);
    if (!baud || *baud < 1) return std::nullopt;
    bool inverted = parts.size() >= 4 && parts[2] == "inv";
    size_t skip = parts[0].size() + parts[1].size() + 2 + (inverted ? 4 : 0);
    std::optional<std::string> bytes = unescape(text.substr(skip));
    if (!bytes || bytes->empty()) return std::nullopt;
    return UartRequest{parts[0], *baud, inverted, *bytes};
}

// ROW0..ROW3,COL0..COL3:KEYS[:MS]: each key of KEYS ("123A456B789C*0#D",
// '-' for none) goes down after MS ms with no key down and stays down MS ms.
std::optional<KeypadRequest> parseKeypad(const std::string& text, double xtalMhz) {
    std::vector<std::string> parts = split(text, ':');
    if (parts.size() < 2 || parts.size() > 3) return std::nullopt;
    std::vector<std::string> names = split(parts[0], ',');
    if (names.size() != 8) return std::nullopt;
    KeypadRequest k;
    for (size_t i = 0; i < 8; ++i) {
        if (names[i].empty()) return std::nullopt;
        (i < 4 ? k.rows[i] : k.columns[i - 4]) = names[i];
    }
    int ms = kDefaultKeyMs;
    if (parts.size() == 3) {
        std::optional<int> given = number(parts[2]);
        if (!given || *given < 1 || *given > kMaxKeyMs) return std::nullopt;
        ms = *given;
    }
    const std::string& keys = parts[1];
    if (keys.empty()) return std::nullopt;
    auto slot = static_cast<uint64_t>(std::llround(ms * xtalMhz * 1e3 / 4));
    uint64_t at = 0;
    for (char key : keys) {
        char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(key)));
        if (upper != '-' && !std::strchr(sim::Keypad4x4::labels, upper)) return std::nullopt;
        at += slot;
        if (upper != '-') {
            k.events.push_back({at, upper, true});
            k.events.push_back({at + slot, upper, false});
        }
        at += slot;
    }
    return k;
}

const char* const kDriveForms =
    "--drive wants PIN:square:HZ[:DUTY], PIN:pulse:START_US:WIDTH_US[:low] "
    "or PIN:rc:CHARGE_US";

// Parses one --drive value for a crystal of `xtalMhz`; on failure says why in `error`.
std::optional<DriveRequest> parseDrive(const std::string& text, double xtalMhz,
                                       std::string& error) {
    std::vector<std::string> parts = split(text, ':');
    error = std::string(kDriveForms) + ", not '" + text + "'";
    if (parts.size() < 3 || parts[0].empty()) return std::nullopt;
    const std::string xtal = formatNumber("%.10g", xtalMhz);
    const double cyclesPerUs = xtalMhz / 4;
    DriveRequest d;
    d.pin = parts[0];
    const std::string& kind = parts[1];
    if (kind == "square") {
        if (parts.size() > 4) return std::nullopt;
        d.kind = DriveRequest::Kind::Square;
        double maxHz = xtalMhz * 1e6 / 8; // a period of two cycles
        std::optional<double> hz = decimal(parts[2]);
        if (!hz || *hz < kMinSquareHz || *hz > maxHz) {
            error = "--drive square wants a frequency from 0.01 to " +
                    formatNumber("%.10g", maxHz) + " Hz at " + xtal +
                    " MHz (a period of at least two cycles), not '" + parts[2] + "'";
            return std::nullopt;
        }
        double duty = 50;
        std::string dutyText = "50";
        if (parts.size() == 4) {
            std::optional<double> given = decimal(parts[3]);
            if (!given || *given <= 0 || *given >= 100) {
                error =
                    "--drive square wants a duty above 0 and below 100 %, not '" + parts[3] + "'";
                return std::nullopt;
            }
            duty = *given;
            dutyText = parts[3];
        }
        d.period = static_cast<uint64_t>(std::llround(cyclesPerUs * 1e6 / *hz));
        d.width = static_cast<uint64_t>(std::llround(static_cast<double>(d.period) * duty / 100));
        if (d.width == 0 || d.width >= d.period) {
            error = "--drive square: a duty of " + dutyText + " % of a " +
                    std::to_string(d.period) +
                    "-cycle period leaves one level shorter than a cycle";
            return std::nullopt;
        }
        return d;
    }
    if (kind == "pulse") {
        if (parts.size() > 5 || parts.size() < 4) return std::nullopt;
        if (parts.size() == 5 && parts[4] != "low") return std::nullopt;
        d.kind = DriveRequest::Kind::Pulse;
        d.idle = parts.size() == 5;
        std::optional<double> start = decimal(parts[2]);
        std::optional<double> width = decimal(parts[3]);
        if (!start || !width || *start > kMaxDriveUs || *width > kMaxDriveUs) {
            error = "--drive pulse wants START_US and WIDTH_US from 0 to 10000000000, not '" +
                    text + "'";
            return std::nullopt;
        }
        d.start = static_cast<uint64_t>(std::llround(*start * cyclesPerUs));
        d.width = static_cast<uint64_t>(std::llround(*width * cyclesPerUs));
        if (d.width == 0) {
            error = "--drive pulse: a width of " + parts[3] + " us is less than one cycle at " +
                    xtal + " MHz";
            return std::nullopt;
        }
        return d;
    }
    if (kind == "rc") {
        if (parts.size() != 3) return std::nullopt;
        d.kind = DriveRequest::Kind::Rc;
        std::optional<double> charge = decimal(parts[2]);
        if (!charge || *charge > kMaxDriveUs) {
            error = "--drive rc wants a charge time in us from 0 to 10000000000, not '" + parts[2] +
                    "'";
            return std::nullopt;
        }
        d.chargeUs = *charge;
        return d;
    }
    return std::nullopt;
}

// Everything the command line asked for, checked before anything runs.
struct Plan {
    std::vector<UartRequest> uarts;
    std::vector<UartRequest> senders;
    std::optional<sim::Hd44780Pins> lcd;
    std::optional<KeypadRequest> keypad;
    std::vector<std::string> probes;
    int probeEdges = kDefaultProbeEdges;
    std::vector<DriveRequest> drives;
    uint64_t cycles = defaultCycles;
};

std::optional<Plan> makePlan(const SimOptions& o, std::string& error) {
    Plan plan;
    for (const std::string& u : o.uartRx) {
        std::optional<UartRequest> r = parseUart(u);
        if (!r) {
            error = "--uart-rx wants PIN:BAUD or PIN:BAUD:inv, not '" + u + "'";
            return std::nullopt;
        }
        plan.uarts.push_back(*r);
    }
    for (const std::string& u : o.uartTx) {
        std::optional<UartRequest> r = parseUartTx(u);
        if (!r) {
            error = "--uart-tx wants PIN:BAUD:TEXT or PIN:BAUD:inv:TEXT (escapes \\n \\r \\t "
                    "\\\\ \\xHH), not '" +
                    u + "'";
            return std::nullopt;
        }
        plan.senders.push_back(*r);
    }
    if (o.lcd) {
        plan.lcd = parseLcd(*o.lcd);
        if (!plan.lcd) {
            error = "--lcd wants RS,E,D4,D5,D6,D7 or RS,E,D0,...,D7, then :LINES or "
                    ":LINESxCOLUMNS if wanted, not '" +
                    *o.lcd + "'";
            return std::nullopt;
        }
    }
    if (o.dump && *o.dump != "regs" && *o.dump != "ram") {
        error = "--dump wants regs or ram, not '" + *o.dump + "'";
        return std::nullopt;
    }
    if (!(o.xtalMhz >= kMinXtalMhz && o.xtalMhz <= kMaxXtalMhz)) {
        error = "--xtal wants a crystal frequency in MHz from 0.032 to 40";
        return std::nullopt;
    }
    plan.probes = o.probes;
    if (o.probeEdges) {
        std::optional<int> edges = number(*o.probeEdges);
        if (!edges || *edges > kMaxProbeEdges) {
            error = "--probe-edges wants a whole number from 0 to " +
                    std::to_string(kMaxProbeEdges) + ", not '" + *o.probeEdges + "'";
            return std::nullopt;
        }
        plan.probeEdges = *edges;
    }
    if (o.keypad) {
        plan.keypad = parseKeypad(*o.keypad, o.xtalMhz);
        if (!plan.keypad) {
            error = "--keypad wants ROW0,ROW1,ROW2,ROW3,COL0,COL1,COL2,COL3:KEYS or ...:KEYS:MS "
                    "(keys from 123A456B789C*0#D, - for none; MS from 1 to 100000), not '" +
                    *o.keypad + "'";
            return std::nullopt;
        }
    }
    for (const std::string& text : o.drives) {
        std::optional<DriveRequest> d = parseDrive(text, o.xtalMhz, error);
        if (!d) return std::nullopt;
        plan.drives.push_back(*d);
    }
    if (o.cycles) {
        std::optional<uint64_t> cycles = cycleCount(*o.cycles);
        if (!cycles) {
            error = "--cycles wants a whole number from 0 to " + std::to_string(kMaxCycles) +
                    ", not '" + *o.cycles + "'";
            return std::nullopt;
        }
        plan.cycles = *cycles;
    }
    if (o.milliseconds) {
        // The same limit in milliseconds at this crystal, whole milliseconds.
        double cyclesPerMs = o.xtalMhz * 1e3 / 4;
        double maxMs = std::floor(static_cast<double>(kMaxCycles) / cyclesPerMs);
        if (!(*o.milliseconds >= 0.0 && *o.milliseconds <= maxMs)) {
            char xtal[32];
            std::snprintf(xtal, sizeof xtal, "%g", o.xtalMhz);
            error = "--ms wants a number of milliseconds from 0 to " +
                    std::to_string(static_cast<uint64_t>(maxMs)) + " at " + xtal + " MHz (" +
                    std::to_string(kMaxCycles) + " cycles)";
            return std::nullopt;
        }
        plan.cycles = static_cast<uint64_t>(std::llround(*o.milliseconds * cyclesPerMs));
    }
    return plan;
}

std::string hex(unsigned value, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*X", digits, value);
    return text;
}

void printRegisters(const sim::Pic16& pic) {
    std::multimap<int, std::string> byAddress;
    for (const auto& [name, address] : pic.layout().registers)
        byAddress.emplace(address, name);
    for (const auto& [address, name] : byAddress)
        std::cout << name << " (0x" << hex(static_cast<unsigned>(address), 3) << ") = 0x"
                  << hex(pic.peek(address), 2) << "\n";
}

void printRam(const sim::Pic16& pic) {
    int banks = pic.layout().bankCount > 0 ? pic.layout().bankCount : 2;
    for (int row = 0; row < banks * 128; row += 16) {
        std::cout << hex(static_cast<unsigned>(row), 3) << ":";
        for (int i = 0; i < 16; ++i)
            std::cout << ' ' << hex(pic.peek(row + i), 2);
        std::cout << "\n";
    }
}

// Microseconds with three decimals: single cycles show up to 40 MHz (0.1 us).
std::string microseconds(double cycles, double cycleSeconds) {
    return formatNumber("%.3f", cycles * cycleSeconds * 1e6) + " us";
}

// The probe's listed edges and a summary line, each line led by "probe PIN: ".
void printProbe(const std::string& name, const sim::LogicProbe& probe) {
    const std::string lead = "probe " + name + ": ";
    const double cs = probe.cycleSeconds();
    std::cout << lead << "starts " << (probe.initialLevel() ? "high" : "low") << "\n";
    for (const sim::Edge& e : probe.edges())
        std::cout << lead << microseconds(static_cast<double>(e.cycle), cs) << " cycle " << e.cycle
                  << ' ' << (e.level ? "high" : "low") << "\n";
    const sim::ProbeSummary& s = probe.summary();
    if (s.edges > probe.edges().size())
        std::cout << lead << s.edges - probe.edges().size() << " more edges not listed\n";
    std::cout << lead << s.edges << " edges, " << s.risingEdges << " rising; high ";
    auto range = [cs](uint64_t least, uint64_t most) {
        return formatNumber("%.3f", static_cast<double>(least) * cs * 1e6) + " to " +
               microseconds(static_cast<double>(most), cs);
    };
    std::cout << (s.highPulses ? range(s.minHigh, s.maxHigh) : "none") << "; low "
              << (s.lowPulses ? range(s.minLow, s.maxLow) : "none") << "; ";
    if (s.periods == 0) {
        std::cout << "no complete period\n";
        return;
    }
    double period = static_cast<double>(s.periodCycles) / static_cast<double>(s.periods);
    double duty =
        100.0 * static_cast<double>(s.highInPeriods) / static_cast<double>(s.periodCycles);
    std::cout << "period " << microseconds(period, cs) << "; duty " << formatNumber("%.2f", duty)
              << " %; frequency " << formatNumber("%.3f", probe.frequency()) << " Hz\n";
}

void printResults(const sim::Pic16& pic, const std::vector<const sim::UartReceiver*>& uarts,
                  const std::vector<UartRequest>& requests, const sim::Hd44780* lcd,
                  const std::vector<const sim::LogicProbe*>& probes,
                  const std::vector<std::string>& probeNames) {
    for (size_t i = 0; i < uarts.size(); ++i) {
        std::cout << "uart " << requests[i].pin << ": " << uarts[i]->text() << "\n";
        if (uarts[i]->framingErrors() != 0)
            std::cout << "uart " << requests[i].pin << ": " << uarts[i]->framingErrors()
                      << " framing error(s)\n";
    }
    if (lcd) {
        for (const std::string& line : lcd->lines())
            std::cout << "lcd |" << line << "|\n";
        if (lcd->busyViolations() != 0)
            std::cout << "lcd: " << lcd->busyViolations() << " write(s) while busy\n";
        if (lcd->timingViolations() != 0) {
            std::cout << "lcd: " << lcd->timingViolations() << " bus timing breach(es)\n";
            for (const std::string& line : lcd->timingReport())
                std::cout << "lcd: " << line << "\n";
        }
    }
    for (size_t i = 0; i < probes.size(); ++i)
        printProbe(probeNames[i], *probes[i]);
    std::cout << "PC=0x" << hex(pic.pc(), 4) << " W=0x" << hex(pic.w(), 2) << " STATUS=0x"
              << hex(pic.status(), 2) << " cycles=" << pic.cycles() << "\n";
}

int fail(const std::string& message) {
    std::cerr << "zorvel: " << message << "\n";
    return 2;
}

// "cannot write PATH: reason", the reason from errno when the failing call set it.
std::string cannotWrite(const std::string& path) {
    std::string text = "cannot write " + path;
    if (errno != 0) text += std::string(": ") + std::strerror(errno);
    return text;
}

} // namespace

void addSimCommand(CLI::App& app, SimOptions& o) {
    CLI::App* sim = app.add_subcommand("sim", "Run a HEX file on a simulated PIC16");
    sim->add_option("FILE", o.hexFile, "The .hex file (INHX8M or INHX32)")->required();
    sim->add_option("--device", o.device, "The device, e.g. 16F877")->required();
    sim->add_option("--xtal", o.xtalMhz, "Crystal frequency in MHz, 0.032 to 40 (default 4)");
    auto* cycles = sim->add_option(
        "--cycles", o.cycles, "Instruction cycles to run, up to 10000000000 (default 1000000)");
    auto* ms = sim->add_option("--ms", o.milliseconds,
                               "Simulated milliseconds to run, up to 10000000000 cycles' worth");
    cycles->excludes(ms);
    sim->add_option("--uart-rx", o.uartRx, "Decode serial output: PIN:BAUD[:inv]");
    sim->add_option("--uart-tx", o.uartTx,
                    "Send serial input (8N1) into a pin after 10 ms of idle line: "
                    "PIN:BAUD[:inv]:TEXT, with \\n \\r \\t \\\\ \\xHH in TEXT "
                    "(repeatable)");
    sim->add_option("--lcd", o.lcd,
                    "HD44780 LCD: RS,E,D4,D5,D6,D7 (4-bit) or RS,E,D0,...,D7 (8-bit), then "
                    ":LINES (1, 2 or 4) or :LINESxCOLUMNS if wanted (default 2x16; 4 lines: 20 "
                    "columns)");
    sim->add_option(
        "--keypad", o.keypad,
        "4x4 keypad (with pull-ups): ROW0,ROW1,ROW2,ROW3,COL0,COL1,COL2,COL3:KEYS[:MS]; "
        "each key of KEYS (123A456B789C*0#D, - for none) goes down after MS ms "
        "(default 100) with no key down and is held MS ms");
    sim->add_option("--probe", o.probes,
                    "Log a pin's edges (time, cycle, level) and its high/low widths, period, "
                    "duty and frequency, e.g. PORTB.0 (repeatable)");
    sim->add_option("--probe-edges", o.probeEdges,
                    "Edges listed per probe, 0 to 1000000 (default 50); the summary counts all");
    sim->add_option("--drive", o.drives,
                    "Drive an input pin (repeatable): PIN:square:HZ[:DUTY] from cycle 0, "
                    "PIN:pulse:START_US:WIDTH_US[:low] or PIN:rc:CHARGE_US (DUTY in %, times "
                    "in microseconds)");
    sim->add_option("--dump", o.dump, "Print the registers (regs) or the RAM (ram)");
    sim->add_option("--vcd", o.vcd, "Write the pin levels to a VCD file");
    sim->add_option("--home", o.home, "Folder whose inc/ holds the device files");
}

int runSim(const SimOptions& o, const std::filesystem::path& executable) {
    std::string error;
    std::optional<Plan> plan = makePlan(o, error);
    if (!plan) return fail(error);
    std::optional<std::filesystem::path> explicitHome;
    if (o.home) explicitHome = *o.home;
    HomeFolderResult home = findHomeFolder(explicitHome, executable);
    if (!home.folder) return fail(home.error);
    std::optional<sim::DeviceLayout> layout =
        sim::loadDeviceLayout(*home.folder / "inc", o.device, error);
    if (!layout) return fail(error);
    std::optional<sim::HexData> hexData = sim::readHex(o.hexFile, error);
    if (!hexData) return fail(error);

    std::ofstream vcdFile; // outlives the machine, whose VCD writer points at it
    sim::Pic16 pic(*layout, o.xtalMhz);
    pic.load(*hexData);
    std::vector<const sim::UartReceiver*> uarts;
    const sim::Hd44780* lcd = nullptr;
    sim::Keypad4x4* keypad = nullptr;
    std::vector<const sim::LogicProbe*> probes;
    try {
        // Sources first, so that probes and the VCD start from the levels they set.
        std::set<const sim::Pin*> driven;
        for (const DriveRequest& d : plan->drives) {
            const sim::Pin* pin = pic.pin(d.pin);
            if (pin && !driven.insert(pin).second)
                return fail("--drive: " + d.pin + " is driven twice");
            if (d.kind == DriveRequest::Kind::Rc) {
                pic.attach(std::make_unique<sim::RcSource>(d.pin, d.chargeUs));
                continue;
            }
            auto part = std::make_unique<sim::PulseSource>(d.pin, d.idle);
            if (d.kind == DriveRequest::Kind::Square)
                part->square(d.start, d.width, d.period);
            else
                part->pulse(d.start, d.width);
            pic.attach(std::move(part));
        }
        for (const UartRequest& r : plan->uarts) {
            auto part = std::make_unique<sim::UartReceiver>(r.pin, r.baud, r.inverted);
            uarts.push_back(part.get());
            pic.attach(std::move(part));
        }
        for (const UartRequest& r : plan->senders) {
            auto part = std::make_unique<sim::UartTransmitter>(r.pin, r.baud, r.inverted);
            sim::UartTransmitter& sender = *part;
            pic.attach(std::move(part));
            sender.send(r.text,
                        static_cast<uint64_t>(std::llround(kUartTxIdleMs * o.xtalMhz * 1e3 / 4)));
        }
        if (plan->lcd) {
            auto part = std::make_unique<sim::Hd44780>(*plan->lcd);
            lcd = part.get();
            pic.attach(std::move(part));
        }
        if (plan->keypad) {
            auto part = std::make_unique<sim::Keypad4x4>(plan->keypad->rows, plan->keypad->columns);
            keypad = part.get();
            pic.attach(std::move(part));
        }
        for (const std::string& name : plan->probes) {
            auto part = std::make_unique<sim::LogicProbe>(name);
            part->keepEdges(static_cast<size_t>(plan->probeEdges));
            probes.push_back(part.get());
            pic.attach(std::move(part));
        }
    } catch (const std::invalid_argument& e) {
        return fail(std::string(e.what()) + " on " + layout->name);
    }
    // The VCD file is opened before the run, so that a path that cannot be
    // written is reported at once; it is written as the run goes.
    sim::VcdWriter* vcd = nullptr;
    if (o.vcd) {
        std::error_code ec;
        if (std::filesystem::equivalent(*o.vcd, o.hexFile, ec))
            return fail("--vcd " + *o.vcd + " would overwrite the HEX file");
        errno = 0;
        vcdFile.open(*o.vcd, std::ios::binary);
        if (!vcdFile) return fail(cannotWrite(*o.vcd));
        auto part = std::make_unique<sim::VcdWriter>(vcdFile);
        vcd = part.get();
        pic.attach(std::move(part));
    }
    // The keys go down and up between runs up to their cycles.
    if (keypad)
        for (const KeyEvent& e : plan->keypad->events) {
            if (e.cycle >= plan->cycles) break;
            if (e.cycle > pic.cycles()) pic.run(e.cycle - pic.cycles());
            if (e.down)
                keypad->press(e.key);
            else
                keypad->release(e.key);
        }
    if (plan->cycles > pic.cycles()) pic.run(plan->cycles - pic.cycles());
    printResults(pic, uarts, plan->uarts, lcd, probes, plan->probes);
    if (o.dump && *o.dump == "regs") printRegisters(pic);
    if (o.dump && *o.dump == "ram") printRam(pic);
    if (!vcd) return 0;
    vcd->finish(pic.cycles());
    errno = 0;
    vcdFile.close();
    if (!vcdFile) return fail(cannotWrite(*o.vcd));
    return 0;
}

} // namespace zorvel::cli
