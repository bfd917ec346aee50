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

TEST_P(RegisterInclude, AssemblesWithGpasm) {
    const std::string gpasm = ZORVEL_GPASM;
    if (gpasm.empty() || gpasm.ends_with("NOTFOUND"))
        GTEST_SKIP() << "gpasm was not found when the tests were configured";
    const std::string& device = GetParam();
    std::string fuse = firstFuse(device);
    ASSERT_FALSE(fuse.empty()) << "no fuse alias in P" << device << ".zvi";

    ScratchFolder folder(device);
    fs::path source = folder.path() / "probe.asm";
    std::ofstream(source, std::ios::binary) << "\tLIST P=p" << lowerCase(device) << "\n"
                                            << "\t#include \"P" << device << ".zvi\"\n"
                                            << "\t__CONFIG " << fuse << "\n"
                                            << "\torg 0\n"
                                            << "\tnop\n"
                                            << "\tend\n";
    RunResult result = run(quoted(gpasm) + " -a inhx8m -k -w 2 -i -q -I " +
                           quoted(dataFolder().string()) + " " + quoted(source.string()));
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_TRUE(fs::is_regular_file(folder.path() / "probe.hex")) << result.output;
    fs::path errors = folder.path() / "probe.err";
    if (fs::exists(errors)) {
        EXPECT_EQ(readText(errors).find("Error"), std::string::npos) << readText(errors);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryDevice, RegisterInclude, testing::ValuesIn(deviceNames()),
                         [](const testing::TestParamInfo<std::string>& info) {
                             return "P" + info.param;
                         });

} // namespace
