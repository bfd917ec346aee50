// `zorvel build`: compile one source file and print the message list.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <string>

namespace zorvel::cli {

struct BuildOptions {
    std::string source;
    std::optional<std::string> home;
    std::string assembler = "gpasm";
};

void addBuildCommand(CLI::App& app, BuildOptions& options);

// Returns the exit status: 0 success, 1 errors in the program or its files.
int runBuild(const BuildOptions& options, const std::filesystem::path& executable);

} // namespace zorvel::cli
