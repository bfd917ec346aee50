// The zorvel command line: one subcommand per job.
#include "cli/build_command.h"
#include "cli/sim_command.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

int main(int argc, char** argv) {
    CLI::App app{"Zorvel: a BASIC compiler for PIC16 microcontrollers", "zorvel"};
    app.require_subcommand(1);
    zorvel::cli::BuildOptions build;
    zorvel::cli::addBuildCommand(app, build);
    zorvel::cli::SimOptions sim;
    zorvel::cli::addSimCommand(app, sim);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::cerr << "zorvel: " << e.what() << " (try zorvel --help)\n";
        return 2;
    }
    std::error_code ec;
    std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec) exe = argv[0];
    if (app.got_subcommand("build")) return zorvel::cli::runBuild(build, exe);
    if (app.got_subcommand("sim")) return zorvel::cli::runSim(sim, exe);
    return 2;
}
