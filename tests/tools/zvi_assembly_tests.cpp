// Assembles a minimal program against every committed register include
// (data/inc/P*.zvi) with gpasm, the way generated code is assembled.

#include "inf_file.hpp"

#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace zorvel_test;

namespace {

std::string lowerCase(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

// The first fuse the register include defines, e.g. "FOSC_LP" from
// "FOSC_LP\tEQU\t_FOSC_LP".
std::string firstFuse(const std::string& device) {
    std::istringstream text(readText(dataFolder() / ("P" + device + ".zvi")));
    std::string line;
    while (std::getline(text, line)) {
        std::size_t equ = line.find("\tEQU\t_");
        if (equ != std::string::npos) return line.substr(0, equ);
    }
    return {};
}

struct RunResult {
    int exitStatus = -1;
    std::string output;
};

RunResult run(const std::string& command) {
    RunResult result;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return result;
    std::array<char, 1024> buffer{};
    std::size_t count = 0;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        result.output.append(buffer.data(), count);
    int status = pclose(pipe);
    if (status != -1 && WIFEXITED(status)) result.exitStatus = WEXITSTATUS(status);
    return result;
}

class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& name)
        : path_(fs::temp_directory_path() /
                ("zorvel_zvi_" + std::to_string(getpid()) + "_" + name)) {
        fs::create_directories(path_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

class RegisterInclude : public testing::TestWithParam<std::string> {};

bool gpasmMissing() {
    const std::string gpasm = ZORVEL_GPASM;
    return gpasm.empty() || gpasm.ends_with("NOTFOUND");
}

// Assembles body after the register include of device, as generated code is.
void expectAssembles(const std::string& device, const std::string& body) {
    ScratchFolder folder(device);
    fs::path source = folder.path() / "probe.asm";
    std::ofstream(source, std::ios::binary) << "\tLIST P=p" << lowerCase(device) << "\n"
                                            << "\t#include \"P" << device << ".zvi\"\n"
                                            << body << "\tend\n";
    RunResult result = run(quoted(ZORVEL_GPASM) + " -a inhx8m -k -w 2 -i -q -I " +
                           quoted(dataFolder().string()) + " " + quoted(source.string()));
    fs::path errors = folder.path() / "probe.err";
    std::string messages = result.output + (fs::exists(errors) ? readText(errors) : "");
    EXPECT_EQ(result.exitStatus, 0) << messages;
    EXPECT_TRUE(fs::is_regular_file(folder.path() / "probe.hex")) << messages;
    if (fs::exists(errors)) {
        EXPECT_EQ(readText(errors).find("Error"), std::string::npos) << readText(errors);
    }
}

TEST_P(RegisterInclude, AssemblesWithGpasm) {
    if (gpasmMissing()) GTEST_SKIP() << "gpasm was not found when the tests were configured";
    const std::string& device = GetParam();
    std::string fuse = firstFuse(device);
    ASSERT_FALSE(fuse.empty()) << "no fuse alias in P" << device << ".zvi";
    expectAssembles(device, "\t__CONFIG " + fuse + "\n\torg 0\n\tnop\n");
}

std::string hexValue(unsigned value) {
    std::ostringstream text;
    text << std::uppercase << std::hex << value;
    return "H'" + text.str() + "'";
}

// Every register and fuse name of the .inf file is defined, with the same
// value, once the register include is read; a fuse name is the configuration
// option of the header (its underscored spelling, except the few options a
// header spells without underscore), a register name is not.
TEST_P(RegisterInclude, DefinesEveryInfSymbolWithItsValue) {
    if (gpasmMissing()) GTEST_SKIP() << "gpasm was not found when the tests were configured";
    const std::string& device = GetParam();
    InfFile inf = readDevice(device);
    ASSERT_TRUE(inf.errors.empty()) << inf.errors.front();
    ASSERT_FALSE(inf.fuses.empty());
    std::string body;
    for (const InfSymbol& reg : inf.registers) {
        body += "\tif (" + reg.name + ") != " + hexValue(reg.value) + "\n\terror \"register " +
                reg.name + " differs\"\n\tendif\n";
        body += "\tifdef _" + reg.name + "\n\terror \"register " + reg.name +
                " is a configuration option\"\n\tendif\n";
    }
    for (const InfSymbol& fuse : inf.fuses) {
        body += "\tif (" + fuse.name + ") != " + hexValue(fuse.value) + "\n\terror \"fuse " +
                fuse.name + " differs\"\n\tendif\n";
        if (isPlainOption(fuse.name)) continue;
        body += "\tifndef _" + fuse.name + "\n\terror \"fuse " + fuse.name +
                " is no configuration option\"\n\telse\n\tif (" + fuse.name + ") != (_" +
                fuse.name + ")\n\terror \"fuse " + fuse.name + " is not the option _" + fuse.name +
                "\"\n\tendif\n\tendif\n";
    }
    expectAssembles(device, body + "\torg 0\n\tnop\n");
}

INSTANTIATE_TEST_SUITE_P(EveryDevice, RegisterInclude, testing::ValuesIn(deviceNames()),
                         [](const testing::TestParamInfo<std::string>& info) {
                             return "P" + info.param;
                         });

} // namespace
