// zorvel-generate-programs: compiles random programs of ProgramGenerator as
// `zorvel build` does and checks that each one either gets compiler errors or
// assembles with gpasm without an error. A crash, an exception, a compile that
// runs past the time limit, and an assembler error after a clean compile are
// failures; each failure is printed with its messages and its full source.
#include "compiler/driver/assembler.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/compile_run.h"
#include "fuzz/program_generator.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <optional>
#include <poll.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Options {
    std::optional<uint64_t> count;
    std::optional<double> seconds;
    uint64_t seed = 1;
    uint64_t start = 0;
    std::string home = ZORVEL_SOURCE_DATA;
    std::string assembler = "gpasm";
    std::string keep;
    double timeout = 10;
    bool showRefused = false;
    bool print = false;
};

enum class Outcome { CompilerErrors, Assembled, AssemblerError, Exception, Crash, Hang };

bool isFailure(Outcome o) {
    return o != Outcome::CompilerErrors && o != Outcome::Assembled;
}

const char* describe(Outcome o) {
    switch (o) {
    case Outcome::CompilerErrors: return "compiler errors";
    case Outcome::Assembled: return "assembled";
    case Outcome::AssemblerError: return "assembler error after a clean compile";
    case Outcome::Exception: return "exception";
    case Outcome::Crash: return "crash";
    case Outcome::Hang: return "time limit";
    }
    return "?";
}

struct Result {
    Outcome outcome = Outcome::Crash;
    std::string messages;
    double seconds = 0;
};

// --- The compile, in a child process ---------------------------------------------

// The report a child writes: one letter for the outcome, then the messages.
std::string childReport(const Options& o, const fs::path& source) {
    zorvel::CompileOptions options{source, fs::absolute(o.home), o.assembler};
    options.assemble = false;
    zorvel::Compilation c(options);
    zorvel::runCompile(c);
    std::string code = "E";
    if (c.ctx.errorCount == 0) {
        // The same assembler step and summary as a build with `assemble` set.
        zorvel::assembleAndReadBack(c);
        if (c.ctx.errorCount == 0) zorvel::appendSummary(c);
        code = c.ctx.errorCount == 0 && c.alerts.empty() ? "A" : "F";
        // A program too large for the device is refused after the assembler ran.
        for (const std::string& m : c.messages)
            if (m.rfind("\tProgram too large", 0) == 0) code = "E";
    }
    std::string report = code + "\n";
    for (const std::string& m : c.messages)
        report += m + "\n";
    for (const std::string& a : c.alerts)
        report += "alert: " + a + "\n";
    return report;
}

void writeAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        done += static_cast<size_t>(n);
    }
}

[[noreturn]] void runChild(int fd, const Options& o, const fs::path& source) {
    ::setpgid(0, 0);
    std::string report;
    try {
        report = childReport(o, source);
    } catch (const std::exception& e) {
        report = std::string("X\n") + e.what() + "\n";
    } catch (...) {
        report = "X\nunknown exception\n";
    }
    writeAll(fd, report);
    ::_exit(0);
}

// --- The parent: time limit and outcome ------------------------------------------

// Reads the child's report until it ends or the deadline passes; false on timeout.
bool readReport(int fd, Clock::time_point deadline, std::string& report) {
    char buffer[4096];
    while (true) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return false;
        pollfd p{fd, POLLIN, 0};
        int ready = ::poll(&p, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return false;
        ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return true;
        report.append(buffer, static_cast<size_t>(n));
    }
}

Result fromReport(const std::string& report, int status) {
    Result r;
    if (WIFSIGNALED(status)) {
        r.messages = "killed by signal " + std::to_string(WTERMSIG(status)) + " (" +
                     strsignal(WTERMSIG(status)) + ")\n" + report;
        return r;
    }
    if (report.size() < 2 || WEXITSTATUS(status) != 0) {
        r.messages = "ended with status " + std::to_string(WEXITSTATUS(status)) +
                     " without a complete report\n" + report;
        return r;
    }
    r.messages = report.substr(2);
    switch (report[0]) {
    case 'E': r.outcome = Outcome::CompilerErrors; break;
    case 'A': r.outcome = Outcome::Assembled; break;
    case 'F': r.outcome = Outcome::AssemblerError; break;
    default: r.outcome = Outcome::Exception; break;
    }
    return r;
}

Result compileInChild(const Options& o, const fs::path& source) {
    Result r;
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) {
        r.messages = std::string("pipe: ") + std::strerror(errno);
        return r;
    }
    std::cout.flush();
    pid_t pid = ::fork();
    if (pid < 0) {
        r.messages = std::string("fork: ") + std::strerror(errno);
        ::close(fds[0]);
        ::close(fds[1]);
        return r;
    }
    if (pid == 0) {
        ::close(fds[0]);
        runChild(fds[1], o, source);
    }
    ::close(fds[1]);
    ::setpgid(pid, pid);
    auto deadline = Clock::now() + std::chrono::duration<double>(o.timeout);
    std::string report;
    bool ended =
        readReport(fds[0], std::chrono::time_point_cast<Clock::duration>(deadline), report);
    ::close(fds[0]);
    if (!ended) {
        // The child and the assembler it started share the child's process group.
        ::kill(-pid, SIGKILL);
        ::kill(pid, SIGKILL);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {}
    if (!ended) {
        r.outcome = Outcome::Hang;
        std::ostringstream limit;
        limit << "no outcome within " << o.timeout << " s\n";
        r.messages = limit.str() + report;
        return r;
    }
    return fromReport(report, status);
}

Result checkProgram(const Options& o, const fs::path& folder, const std::string& source) {
    fs::path file = folder / "prog.bas";
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << source;
    }
    auto started = Clock::now();
    Result r = compileInChild(o, file);
    r.seconds = std::chrono::duration<double>(Clock::now() - started).count();
    if (!isFailure(r.outcome) && r.seconds > o.timeout) {
        std::ostringstream took;
        took << "took " << r.seconds << " s\n";
        r.messages = took.str() + r.messages;
        r.outcome = Outcome::Hang;
    }
    return r;
}

// --- Reporting ---------------------------------------------------------------------

struct Tally {
    uint64_t programs = 0, assembled = 0, assemblerErrors = 0, compilerErrors = 0, failures = 0;
    uint64_t broken = 0, brokenRefused = 0, validRefused = 0;
    // Compiled without an error, whatever gpasm then said.
    uint64_t cleanCompiles() const { return assembled + assemblerErrors; }
};

std::string indent(const std::string& text) {
    std::istringstream in(text);
    std::string out;
    for (std::string line; std::getline(in, line);)
        out += "    " + line + "\n";
    return out;
}

void printProgram(const char* heading, const Options& o, const zorvel::fuzz::GeneratedProgram& g,
                  const Result& r) {
    std::cout << heading << " program " << g.index << " (--seed " << o.seed << " --start "
              << g.index << " --count 1): " << describe(r.outcome) << "\n";
    for (const std::string& b : g.breakages)
        std::cout << "  broken on purpose: " << b << "\n";
    std::cout << "  messages:\n" << indent(r.messages) << "  source:\n" << indent(g.source);
    std::cout.flush();
}

void keepSource(const Options& o, const zorvel::fuzz::GeneratedProgram& g) {
    if (o.keep.empty()) return;
    std::error_code ec;
    fs::create_directories(o.keep, ec);
    std::ofstream out(fs::path(o.keep) / ("seed" + std::to_string(o.seed) + "-program" +
                                          std::to_string(g.index) + ".bas"));
    out << g.source;
}

void count(Tally& t, const zorvel::fuzz::GeneratedProgram& g, const Result& r) {
    ++t.programs;
    bool broken = !g.breakages.empty();
    t.broken += broken;
    switch (r.outcome) {
    case Outcome::Assembled: ++t.assembled; break;
    case Outcome::CompilerErrors:
        ++t.compilerErrors;
        t.brokenRefused += broken;
        t.validRefused += !broken;
        break;
    case Outcome::AssemblerError:
        ++t.assemblerErrors;
        ++t.failures;
        break;
    default: ++t.failures; break;
    }
}

std::string share(uint64_t part, uint64_t whole) {
    std::ostringstream s;
    s << std::fixed << std::setprecision(1) << (whole ? 100.0 * part / whole : 0.0) << "%";
    return s.str();
}

void printSummary(const Tally& t, double seconds) {
    std::cout << "programs " << t.programs << ", clean compiles " << t.cleanCompiles() << " ("
              << share(t.cleanCompiles(), t.programs) << "), assembled " << t.assembled << " ("
              << share(t.assembled, t.programs) << "), compiler-error programs " << t.compilerErrors
              << " (" << share(t.compilerErrors, t.programs) << "), failures " << t.failures << ", "
              << std::fixed << std::setprecision(1) << (seconds > 0 ? t.programs / seconds : 0.0)
              << " programs/s\n";
    std::cout << "broken on purpose " << t.broken << " (refused by the compiler " << t.brokenRefused
              << "), valid programs refused " << t.validRefused << "\n";
    std::cout << (t.programs - t.failures) << " passed, " << t.failures << " failed\n";
}

bool timeLeft(const Options& o, const Tally& t, Clock::time_point started) {
    if (o.count && t.programs >= *o.count) return false;
    if (o.seconds && std::chrono::duration<double>(Clock::now() - started).count() >= *o.seconds)
        return false;
    return true;
}

int run(const Options& o) {
    char pattern[] = "/tmp/zorvel-generated-XXXXXX";
    if (!::mkdtemp(pattern)) {
        std::cerr << "zorvel-generate-programs: cannot make a scratch folder: "
                  << std::strerror(errno) << "\n";
        return 2;
    }
    fs::path folder = pattern;
    zorvel::fuzz::ProgramGenerator generator(o.seed);
    generator.skipTo(o.start);
    Tally tally;
    auto started = Clock::now();
    while (timeLeft(o, tally, started)) {
        zorvel::fuzz::GeneratedProgram g = generator.next();
        if (o.print) std::cout << "program " << g.index << ":\n" << g.source;
        Result r = checkProgram(o, folder, g.source);
        count(tally, g, r);
        if (r.messages.find("alert: Unable to Find") != std::string::npos) {
            std::cerr << "zorvel-generate-programs: the assembler '" << o.assembler
                      << "' cannot be found\n";
            fs::remove_all(folder);
            return 2;
        }
        if (isFailure(r.outcome)) {
            printProgram("FAILED", o, g, r);
            keepSource(o, g);
        } else if (o.showRefused && r.outcome == Outcome::CompilerErrors && g.breakages.empty()) {
            printProgram("REFUSED", o, g, r);
        }
    }
    std::error_code ec;
    fs::remove_all(folder, ec);
    printSummary(tally, std::chrono::duration<double>(Clock::now() - started).count());
    return tally.failures == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Compiles random BASIC programs and checks that each gets compiler errors or "
                 "assembles with gpasm without an error"};
    Options o;
    app.add_option("--count", o.count, "Number of programs (default 1000 unless --seconds)");
    app.add_option("--seconds", o.seconds,
                   "Run time; stops at whichever of the limits comes first");
    app.add_option("--seed", o.seed, "Seed of the generator (default 1)");
    app.add_option("--start", o.start, "Index of the first program (to repeat one program)");
    app.add_option("--home", o.home, "Home folder holding inc/ (default: the source tree's data/)");
    app.add_option("--assembler", o.assembler, "The gpasm program (default: gpasm on PATH)");
    app.add_option("--keep", o.keep, "Folder for the sources of failing programs");
    app.add_option("--timeout", o.timeout, "Seconds one compile may take (default 10)");
    app.add_flag("--show-refused", o.showRefused,
                 "Also print the valid programs that got compiler errors");
    app.add_flag("--print", o.print, "Print every program before it is compiled");
    CLI11_PARSE(app, argc, argv);
    if (!o.count && !o.seconds) o.count = 1000;
    return run(o);
}
