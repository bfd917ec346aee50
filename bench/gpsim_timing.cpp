#include "gpsim_timing.h"

#include <cstdlib>
#include <fstream>

namespace fs = std::filesystem;

namespace zorvel::bench {

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

bool assemble(const fs::path& folder, const std::string& name, const std::string& source) {
    std::ofstream(folder / (name + ".asm")) << source;
    std::string command = "cd '" + folder.string() + "' && gpasm -a inhx8m -i -w 2 -p p16f877 " +
                          name + ".asm > " + name + "_gpasm.txt 2>&1";
    return std::system(command.c_str()) == 0;
}

double gpsimSeconds(const fs::path& folder, const std::string& name, uint64_t cycles) {
    std::ofstream(folder / "cmd.txt")
        << (cycles ? "break c " + std::to_string(cycles) + "\nrun\n" : "") << "quit\n";
    std::string command = "cd '" + folder.string() + "' && gpsim -i -S disable -s " + name +
                          ".cod < cmd.txt > gpsim.txt 2>&1";
    auto start = std::chrono::steady_clock::now();
    int rc = std::system(command.c_str());
    double s = secondsSince(start);
    return rc == 0 ? s : -1.0;
}

double gpsimRunSeconds(const fs::path& folder, const std::string& name, uint64_t cycles,
                       double& startup) {
    startup = gpsimSeconds(folder, name, 0);
    double total = gpsimSeconds(folder, name, cycles);
    if (startup < 0 || total < 0) return -1.0;
    return total - startup;
}

} // namespace zorvel::bench
