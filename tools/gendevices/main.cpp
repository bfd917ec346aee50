// gendevices: writes the device definition (.inf) and register include (.zvi)
// files for every classic mid-range PIC12/PIC16 part that gputils describes.
//
//   gendevices [--out DIR] [--gpasm PATH] [--headers DIR]

#include "device_data.hpp"
#include "gpasm_info.hpp"
#include "header_info.hpp"
#include "output_files.hpp"
#include "ram_layout.hpp"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace fs = std::filesystem;
using namespace gendevices;

namespace {

struct Options {
    fs::path outDir = "data/inc";
    std::string gpasm = "gpasm";
    fs::path headerDir = "/usr/share/gputils/header";
};

void printUsage(std::ostream& out) {
    out << "usage: gendevices [--out DIR] [--gpasm PATH] [--headers DIR]\n"
           "  --out DIR      folder for the P<DEVICE>.inf and .zvi files (default data/inc)\n"
           "  --gpasm PATH   gpasm executable (default gpasm)\n"
           "  --headers DIR  gputils header folder (default /usr/share/gputils/header)\n";
}

std::optional<Options> parseOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        bool hasValue = i + 1 < argc;
        if (argument == "--out" && hasValue)
            options.outDir = argv[++i];
        else if (argument == "--gpasm" && hasValue)
            options.gpasm = argv[++i];
        else if (argument == "--headers" && hasValue)
            options.headerDir = argv[++i];
        else
            return std::nullopt;
    }
    return options;
}

struct Report {
    int generated = 0;
    std::set<std::string> generatedChips;
    int ignored = 0; // names that are not PIC12/PIC16 parts
    std::vector<std::string> skipped;
    std::vector<std::string> notes;
};

bool isCandidate(const std::string& chip) {
    return chip.starts_with("p12") || chip.starts_with("p16");
}

// Returns the reason a chip is left out, or nothing when it qualifies.
std::optional<std::string> exclusion(const std::string& chip,
                                     const std::optional<ChipProperties>& properties,
                                     const fs::path& headerDir) {
    if (chip == "p16cxx") return "generic processor name";
    if (!properties) return "gpasm has no processor properties for it";
    if (properties->processorClass != "PIC14")
        return "class " + properties->processorClass + ", not classic mid-range PIC14";
    if (properties->bankCount == 0 || properties->bankCount > 4)
        return std::to_string(properties->bankCount) + " banks";
    if (properties->headerFile.empty() || !fs::is_regular_file(headerDir / properties->headerFile))
        return "no header file in " + headerDir.string();
    return std::nullopt;
}

bool writeDevice(const DeviceData& device, const fs::path& outDir) {
    return writeTextFile(outDir / infFileName(device), infText(device)) &&
           writeTextFile(outDir / zviFileName(device), zviText(device));
}

// Returns false only on a write error; a skipped device is recorded in report.
bool processChip(const std::string& chip, const Options& options, Report& report) {
    std::optional<ChipProperties> properties = queryChip(options.gpasm, chip);
    if (auto reason = exclusion(chip, properties, options.headerDir)) {
        report.skipped.push_back(chip + ": " + *reason);
        return true;
    }
    std::optional<HeaderInfo> header = readHeader(options.headerDir / properties->headerFile);
    if (!header) {
        report.skipped.push_back(chip + ": cannot read " + properties->headerFile);
        return true;
    }
    auto built = buildDevice(*properties, *header);
    if (auto* rejection = std::get_if<Rejection>(&built)) {
        report.skipped.push_back(chip + ": " + rejection->reason);
        return true;
    }
    const DeviceData& device = std::get<DeviceData>(built);
    if (!device.errors.empty()) {
        for (const std::string& error : device.errors)
            std::cerr << "gendevices: " << chip << ": " << error << "\n";
        return false;
    }
    for (const std::string& note : device.notes)
        report.notes.push_back("P" + device.deviceName + ": " + note);
    if (!writeDevice(device, options.outDir)) {
        std::cerr << "gendevices: cannot write the files of " << chip << " into "
                  << options.outDir.string() << "\n";
        return false;
    }
    ++report.generated;
    report.generatedChips.insert(chip);
    return true;
}

void printReport(const Report& report, const Options& options) {
    std::cout << "generated " << report.generated << " devices into " << options.outDir.string()
              << "\n";
    std::cout << "ignored " << report.ignored << " names that are not PIC12/PIC16 parts\n";
    std::cout << "skipped " << report.skipped.size() << " devices:\n";
    for (const std::string& line : report.skipped)
        std::cout << "  " << line << "\n";
    for (const std::string& line : report.notes)
        std::cout << "note: " << line << "\n";
    std::set<std::string_view> unused;
    for (const BankFact& fact : bankFacts()) {
        if (!report.generatedChips.contains(std::string(fact.chip))) unused.insert(fact.chip);
    }
    for (std::string_view chip : unused)
        std::cout << "note: the RAM table names " << chip << ", which was not generated\n";
}

int run(const Options& options) {
    std::vector<std::string> tableProblems = checkBankFacts();
    for (const std::string& problem : tableProblems)
        std::cerr << "gendevices: RAM table: " << problem << "\n";
    if (!tableProblems.empty()) return EXIT_FAILURE;
    GpasmQuery query = listChips(options.gpasm);
    if (!query.ran || query.chips.empty()) {
        std::cerr << "gendevices: cannot get the chip list from '" << options.gpasm << " -l14'\n";
        return EXIT_FAILURE;
    }
    std::error_code error;
    fs::create_directories(options.outDir, error);
    if (error) {
        std::cerr << "gendevices: cannot create " << options.outDir.string() << "\n";
        return EXIT_FAILURE;
    }
    Report report;
    for (const std::string& chip : query.chips) {
        if (!isCandidate(chip)) {
            ++report.ignored;
            continue;
        }
        if (!processChip(chip, options, report)) return EXIT_FAILURE;
    }
    printReport(report, options);
    // No device at all means a wrong gpasm or header folder, not a valid result.
    return report.generated > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && (std::string(argv[1]) == "--help" || std::string(argv[1]) == "-h")) {
        printUsage(std::cout);
        return EXIT_SUCCESS;
    }
    std::optional<Options> options = parseOptions(argc, argv);
    if (!options) {
        printUsage(std::cerr);
        return EXIT_FAILURE;
    }
    return run(*options);
}
