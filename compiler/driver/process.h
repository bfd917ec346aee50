// Running an external program (the assembler) in a given folder and waiting
// for it to end.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zorvel {

struct ProcessResult {
    enum class Outcome { Ended, NotFound, NotStarted } outcome = Outcome::NotStarted;
    int exitStatus = -1; // when it ended: its exit status, or 128 + signal
    std::string error;   // why it could not be found or started
};

// Runs `program` (a path, or a name looked up on PATH) with `args` in `folder`,
// its standard output and error discarded, and waits for it.
ProcessResult runProcess(const std::string& program, const std::vector<std::string>& args,
                         const std::filesystem::path& folder);

} // namespace zorvel
