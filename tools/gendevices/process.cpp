#include "process.hpp"

#include <array>
#include <cstdio>
#include <sys/wait.h>

namespace gendevices {

namespace {

std::string shellQuote(const std::string& argument) {
    std::string quoted = "'";
    for (char c : argument) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    quoted += '\'';
    return quoted;
}

std::string commandLine(const std::vector<std::string>& arguments) {
    std::string line;
    for (const std::string& argument : arguments) {
        if (!line.empty()) line += ' ';
        line += shellQuote(argument);
    }
    line += " 2>/dev/null";
    return line;
}

} // namespace

CommandResult runCommand(const std::vector<std::string>& arguments) {
    CommandResult result;
    FILE* pipe = popen(commandLine(arguments).c_str(), "r");
    if (pipe == nullptr) return result;
    result.started = true;
    std::array<char, 4096> buffer{};
    std::size_t count = 0;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        result.output.append(buffer.data(), count);
    int status = pclose(pipe);
    if (status != -1 && WIFEXITED(status)) result.exitStatus = WEXITSTATUS(status);
    return result;
}

} // namespace gendevices
