#include "cli/build_command.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/compile_run.h"
#include "compiler/driver/home_folder.h"

#include <iostream>

namespace zorvel::cli {

void addBuildCommand(CLI::App& app, BuildOptions& options) {
    CLI::App* build = app.add_subcommand("build", "Compile a BASIC source file to assembly");
    build->add_option("FILE", options.source, "The .bas source file")->required();
    build->add_option("--home", options.home, "Folder whose inc/ holds the device files");
}

int runBuild(const BuildOptions& options, const std::filesystem::path& executable) {
    std::optional<std::filesystem::path> explicitHome;
    if (options.home) explicitHome = *options.home;
    HomeFolderResult home = findHomeFolder(explicitHome, executable);
    if (!home.folder) {
        std::cerr << "zorvel: " << home.error << "\n";
        return 2;
    }
    Compilation c({std::filesystem::absolute(options.source), *home.folder});
    runCompile(c);
    for (const std::string& alert : c.alerts)
        std::cerr << "zorvel: " << alert << "\n";
    for (const std::string& line : c.messages)
        std::cout << line << "\n";
    if (c.ctx.errorCount != 0) return 1;
    std::cout << c.ctx.asmName << "\n";
    return 0;
}

} // namespace zorvel::cli
