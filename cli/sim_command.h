// `zorvel sim`: run a HEX file on the simulated device with parts attached
// (serial receivers and senders, a character LCD, a keypad, logic probes,
// signal sources on input pins), then print what they saw and the final
// state.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace zorvel::cli {

struct SimOptions {
    std::string hexFile;
    std::string device;
    double xtalMhz = 4.0;
    std::optional<std::string> cycles; // checked by runSim: CLI11 would wrap "-1"
    std::optional<double> milliseconds;
    std::vector<std::string> uartRx;       // PIN:BAUD[:inv]
    std::vector<std::string> uartTx;       // PIN:BAUD[:inv]:TEXT
    std::optional<std::string> lcd;        // RS,E,D4..D7 or RS,E,D0..D7, [:LINES[xCOLUMNS]]
    std::optional<std::string> keypad;     // ROW0..ROW3,COL0..COL3:KEYS[:MS]
    std::vector<std::string> probes;       // PIN
    std::optional<std::string> probeEdges; // text, like cycles
    std::vector<std::string> drives;       // PIN:square:.., PIN:pulse:.., PIN:rc:..
    std::optional<std::string> dump;       // regs | ram
    std::optional<std::string> vcd;
    std::optional<std::string> home;
};

void addSimCommand(CLI::App& app, SimOptions& options);

// Returns the exit status: 0 after a run, 2 for bad arguments or files.
int runSim(const SimOptions& options, const std::filesystem::path& executable);

} // namespace zorvel::cli
