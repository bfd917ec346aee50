// Reader for the committed device definition files, used by the data tests.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zorvel_test {

constexpr std::size_t infFieldCount = 46;

// The comment line between the register lines and the configuration fuse lines.
constexpr const char* fuseSectionMarker = "; Configuration fuses";

// The comment line before the further names the register include defines.
constexpr const char* assemblerNamesMarker = "; Assembler names";

// Configuration options that some gputils headers (16F62x) spell without the
// leading underscore; the register include needs no alias for them.
bool isPlainOption(const std::string& name);

struct InfSymbol {
    std::string name;
    unsigned value = 0;
};

struct InfFile {
    std::string device; // file name without "P" and ".inf", e.g. "16F877A"
    std::vector<long> fields;
    std::vector<InfSymbol> registers;        // symbol lines before the fuse section marker
    std::vector<InfSymbol> fuses;            // symbol lines after it
    std::size_t fuseMarkers = 0;             // how many marker lines the file has
    std::vector<std::string> assemblerNames; // names after the assembler-names marker
    std::size_t nameMarkers = 0;
    std::vector<std::string> errors;

    long field(std::size_t index) const { return fields.at(index); }
};

std::filesystem::path dataFolder();
std::vector<std::filesystem::path> infPaths(); // sorted
std::vector<std::string> deviceNames();        // sorted, e.g. "16F877A"

InfFile readInf(const std::filesystem::path& path);
InfFile readDevice(const std::string& device);
std::string readText(const std::filesystem::path& path);

} // namespace zorvel_test
