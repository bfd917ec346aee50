#include "compiler/driver/assembler.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/file_io.h"
#include "compiler/driver/process.h"

#include <algorithm>
#include <fstream>

namespace zorvel {
namespace {

constexpr int kMaxAssemblerErrors = 5;

void assemblerFailed(Compilation& c) {
    c.messages.push_back("ASSEMBLER ERROR! HEX file NOT created");
    ++c.ctx.errorCount;
}

// Runs gpasm in the source's folder; false (with an alert) when it did not run.
// `status` receives its exit status.
bool runAssembler(Compilation& c, int& status) {
    const std::string& program = c.options.assembler;
    fs::path asmFile = outputPath(c, ".asm");
    std::error_code ec;
    fs::remove(outputPath(c, ".hex"), ec);
    fs::remove(outputPath(c, ".err"), ec);
    // No -q: gpasm 1.4 leaves the error file empty when it runs quietly.
    std::vector<std::string> args = {"-a", "inhx8m", "-k", "-w", "2", "-i", "-I"};
    args.push_back((c.options.homeFolder / "inc").string());
    args.push_back(asmFile.filename().string());
    ProcessResult r = runProcess(program, args, asmFile.parent_path());
    switch (r.outcome) {
    case ProcessResult::Outcome::Ended: status = r.exitStatus; return true;
    case ProcessResult::Outcome::NotFound:
        c.alert("Unable to Find " + program +
                "\r\nMake sure gputils is installed or set the "
                "assembler path");
        return false;
    case ProcessResult::Outcome::NotStarted:
        c.alert("Unable to Run " + program + "\r\n" + r.error);
        return false;
    }
    return false;
}

// The "E" lines of the error file, at most five; returns how many were read.
int readAssemblerErrors(Compilation& c) {
    std::ifstream in(outputPath(c, ".err"));
    int errors = 0;
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] != 'E') continue;
        if (errors == kMaxAssemblerErrors) {
            c.messages.push_back("Too many ASSEMBLER ERRORS");
            break;
        }
        c.messages.push_back(line);
        ++errors;
    }
    return errors;
}

void readHexBack(Compilation& c) {
    fs::path hex = outputPath(c, ".hex");
    HexReading reading = readHexFile(hex, c.device.info.configAddress());
    if (!reading.found) {
        c.alert("Unable to load " + hex.string());
        c.ctx.wordsUsed = 0;
        return;
    }
    c.ctx.wordsUsed = reading.wordsUsed;
    c.hex = std::move(reading.image);
    int size = c.device.info.codeWords();
    if (size <= 0) return;
    auto beyond =
        std::find_if(c.hex.program.begin() + std::min(size, 0x2000), c.hex.program.begin() + 0x2000,
                     [](uint16_t word) { return word != 0x3FFF; });
    if (c.ctx.wordsUsed > size || beyond != c.hex.program.begin() + 0x2000) {
        c.messages.push_back("\tProgram too large: the " + c.device.name + " has " +
                             std::to_string(size) + " words of program memory!");
        assemblerFailed(c);
        std::error_code ec;
        fs::remove(outputPath(c, ".hex"), ec); // it could not be programmed
    }
}

bool hasBootloaderArea(const std::string& device) {
    static const char* const devices[] = {"16F870", "16F871", "16F872", "16F873",
                                          "16F874", "16F876", "16F877"};
    return std::any_of(std::begin(devices), std::end(devices),
                       [&](const char* d) { return device == d; });
}

} // namespace

fs::path outputPath(const Compilation& c, const char* extension) {
    return fs::path(c.options.sourceName).replace_extension(extension);
}

void assembleAndReadBack(Compilation& c) {
    int status = 0;
    if (!runAssembler(c, status)) {
        assemblerFailed(c);
        return;
    }
    if (readAssemblerErrors(c) > 0) {
        assemblerFailed(c);
        return;
    }
    if (status != 0) {
        // A failure that left no error line must not pass for a clean build.
        c.messages.push_back("Error: " + c.options.assembler + " ended with status " +
                             std::to_string(status) + " without an error line");
        assemblerFailed(c);
        return;
    }
    readHexBack(c);
}

void appendSummary(Compilation& c) {
    CompileContext& ctx = c.ctx;
    const DeviceModel& d = c.device;
    c.messages.push_back("\tZORVEL COMPILED OK.  " + std::to_string(ctx.wordsUsed) + " Words used");
    if (hasBootloaderArea(d.name) && d.settings[kBootloader].number != 0 &&
        d.info.codeWords() - 256 < ctx.wordsUsed) {
        c.messages.push_back(
            "\tWarning! Code will overwrite bootloader routine at top of program area.");
        ctx.warningRaised = true;
    }
    std::string used = std::to_string(ctx.variablesUsed + 26);
    std::string possible = std::to_string(d.info.ramCapacity());
    if (ctx.defaultDevice)
        c.messages.push_back("\t" + used + " Variables used in the DEFAULT " + d.name +
                             " from a possible " + possible);
    else
        c.messages.push_back("\t" + used + " Variables used in the " + d.name +
                             " from a possible " + possible);
    if (ctx.warningRaised) c.messages.push_back("\tThere are Warnings!");
}

} // namespace zorvel
