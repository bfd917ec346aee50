#include "cli/build_command.h"

#include "compiler/driver/assembler.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/compile_run.h"
#include "compiler/driver/home_folder.h"

#include <iostream>

namespace zorvel::cli {

void addBuildCommand(CLI::App& app, BuildOptions& options) {
    CLI::App* build =
        app.add_subcommand("build", "Compile a BASIC source file to assembly and a HEX file");
    build->add_option("FILE", options.source, "The .bas source file")->required();
    build->add_option("--home", options.home, "Folder whose inc/ holds the device files");
    build->add_option("--assembler", options.assembler,
                      "The gpasm program (default: gpasm on PATH)");
}

int runBuild(const BuildOptions& options, const std::filesystem::path& executable) {
    std::optional<std::filesystem::path> explicitHome;
    if (options.home) explicitHome = *options.home;
    HomeFolderResult home = findHomeFolder(explicitHome, executable);
    if (!home.folder) {
        std::cerr << "zorvel: " << home.error << "\n";
        return 2;
    }
    Compilation c({std::filesystem::absolute(options.source),
                   std::filesystem::absolute(*home.folder), options.assembler});
    runCompile(c);
    for (const std::string& alert : c.alerts)
        std::cerr << "zorvel: " << alert << "\n";
    for (const std::string& line : c.messages)
        std::cout << line << "\n";
    if (c.ctx.errorCount != 0) return 1;
    std::cout << outputPath(c, ".hex").string() << "\n";
    return 0;
}

} // namespace zorvel::cli
