#include "compiler/driver/process.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zorvel {
namespace {

namespace fs = std::filesystem;

bool isExecutable(const fs::path& p) {
    std::error_code ec;
    return fs::is_regular_file(p, ec) && ::access(p.c_str(), X_OK) == 0;
}

// The program's path: as given when it names a folder, else the first match on PATH.
std::string findProgram(const std::string& program) {
    if (program.find('/') != std::string::npos) return isExecutable(program) ? program : "";
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "/usr/local/bin:/usr/bin:/bin";
    size_t start = 0;
    while (start <= dirs.size()) {
        size_t end = dirs.find(':', start);
        if (end == std::string::npos) end = dirs.size();
        fs::path candidate = fs::path(dirs.substr(start, end - start)) / program;
        if (end > start && isExecutable(candidate)) return candidate.string();
        start = end + 1;
    }
    return {};
}

// In the child: folder, quiet output, exec; on failure report errno through `report`.
[[noreturn]] void execChild(const std::string& path, std::vector<char*>& argv,
                            const fs::path& folder, int report) {
    int err = 0;
    if (::chdir(folder.c_str()) != 0) err = errno;
    int null = ::open("/dev/null", O_RDWR);
    if (null >= 0) {
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
    }
    if (err == 0) {
        ::execv(path.c_str(), argv.data());
        err = errno;
    }
    ssize_t written = ::write(report, &err, sizeof err);
    (void)written;
    ::_exit(127);
}

} // namespace

ProcessResult runProcess(const std::string& program, const std::vector<std::string>& args,
                         const fs::path& folder) {
    ProcessResult result;
    std::string path = findProgram(program);
    if (path.empty()) {
        result.outcome = ProcessResult::Outcome::NotFound;
        result.error = program + " not found";
        return result;
    }
    std::vector<std::string> words = {path};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& w : words)
        argv.push_back(w.data());
    argv.push_back(nullptr);

    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0) {
        result.error = std::strerror(errno);
        return result;
    }
    pid_t pid = ::fork();
    if (pid < 0) {
        result.error = std::strerror(errno);
        ::close(pipeFds[0]);
        ::close(pipeFds[1]);
        return result;
    }
    if (pid == 0) execChild(path, argv, folder, pipeFds[1]);
    ::close(pipeFds[1]);
    int childErr = 0;
    ssize_t got = ::read(pipeFds[0], &childErr, sizeof childErr);
    ::close(pipeFds[0]);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {}
    if (got == static_cast<ssize_t>(sizeof childErr)) {
        result.error = std::strerror(childErr);
        return result;
    }
    result.outcome = ProcessResult::Outcome::Ended;
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

} // namespace zorvel
