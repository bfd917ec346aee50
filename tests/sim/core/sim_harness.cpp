#include "sim/core/sim_harness.h"

#include "support/test_support.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace zorvel::test {

namespace fs = std::filesystem;

sim::DeviceLayout deviceLayout(const std::string& device) {
    std::string error;
    auto layout = sim::loadDeviceLayout(dataFolder() / "inc", device, error);
    if (!layout) {
        ADD_FAILURE() << error;
        return {};
    }
    return *layout;
}

AssembledProgram assemble(const std::string& source, const fs::path& folder,
                          const std::string& processor) {
    AssembledProgram result;
    result.folder = folder;
    {
        std::ofstream out(folder / "prog.asm");
        out << source;
    }
    std::string command = "cd '" + folder.string() + "' && gpasm -a inhx8m -i -w 2 -p " +
                          processor + " prog.asm > gpasm.log 2>&1";
    int rc = std::system(command.c_str());
    std::ifstream log(folder / "gpasm.log");
    std::stringstream ss;
    ss << log.rdbuf();
    result.log = ss.str();
    if (rc != 0) return result;
    std::string error;
    auto hex = sim::readHex(folder / "prog.hex", error);
    if (!hex) {
        result.log += error;
        return result;
    }
    result.hex = *hex;
    result.ok = true;
    return result;
}

std::unique_ptr<sim::Pic16> loadProgram(const std::string& source, const std::string& device) {
    TempDir dir;
    std::string processor = "p" + device;
    for (char& c : processor)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    AssembledProgram program = assemble(source, dir.path(), processor);
    auto pic = std::make_unique<sim::Pic16>(deviceLayout(device));
    if (!program.ok) {
        ADD_FAILURE() << "gpasm failed:\n" << program.log;
        return pic;
    }
    pic->load(program.hex);
    return pic;
}

std::unique_ptr<sim::Pic16> loadWords(std::initializer_list<uint16_t> words,
                                      const std::string& device) {
    sim::HexData hex;
    int address = 0;
    for (uint16_t w : words)
        hex.program[address++] = w;
    hex.configWord = 0x3FFB; // watchdog off
    hex.program[0x2007] = 0x3FFB;
    auto pic = std::make_unique<sim::Pic16>(deviceLayout(device));
    pic->load(hex);
    return pic;
}

int endLoopAddress(const sim::HexData& hex) {
    for (auto [address, word] : hex.program) {
        if (address >= 0x2000) break;
        if ((word & 0x3800) == 0x2800 && (word & 0x7FF) == (address & 0x7FF)) return address;
    }
    return -1;
}

} // namespace zorvel::test
