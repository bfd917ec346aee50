// Runs an external program and collects what it writes to standard output.
#pragma once

#include <string>
#include <vector>

namespace gendevices {

struct CommandResult {
    bool started = false; // false when the shell could not be started at all
    int exitStatus = -1;  // exit status of the program, -1 when it did not exit normally
    std::string output;   // standard output; standard error is discarded
};

// Each argument is quoted for /bin/sh, so names with blanks or quotes are safe.
CommandResult runCommand(const std::vector<std::string>& arguments);

} // namespace gendevices
