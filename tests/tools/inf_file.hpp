// Reader for the committed device definition files, used by the data tests.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zorvel_test {

constexpr std::size_t infFieldCount = 46;

struct InfSymbol {
    std::string name;
    unsigned value = 0;
};

struct InfFile {
    std::string device; // file name without "P" and ".inf", e.g. "16F877A"
    std::vector<long> fields;
    std::vector<InfSymbol> symbols; // register and fuse lines after the fields
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
