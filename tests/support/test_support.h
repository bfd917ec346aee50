// Helpers for compiler tests: compile a source text in a scratch folder and
// look at the message list and the emitted lines.
#pragma once

#include "compiler/driver/compilation.h"

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace zorvel::test {

using Lines = std::vector<std::string>;

// The parts one after the other.
inline Lines join(std::initializer_list<Lines> parts) {
    Lines out;
    for (const Lines& p : parts)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

// A scratch folder removed when the object goes.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path write(const std::string& name, const std::string& text) const;

private:
    std::filesystem::path path_;
};

// The project's data folder (device files), the home folder of the tests.
std::filesystem::path dataFolder();

struct CompileResult {
    std::unique_ptr<Compilation> compilation;
    std::vector<std::string> messages;
    std::vector<std::string> output; // the saved .asm split at CR LF, or pass 2's lines
    int errors = 0;
    std::vector<std::string> alerts;
};

// Compiles `source` (lines joined with "\n") as prog.bas in a fresh folder,
// to assembly only.
CompileResult compileSource(const std::string& source, const std::string& fileName = "prog.bas");

// Compiles an existing file with the given home folder; `assemble` runs gpasm.
CompileResult compileFile(const std::filesystem::path& file, const std::filesystem::path& home,
                          bool assemble = false);

// Joins lines with "\n".
std::string lines(std::initializer_list<std::string> items);

// The emitted lines after the banner and the #include line.
std::vector<std::string> body(const CompileResult& result);

// Puts `text` into the line buffers as the line reader would: an upper-case
// working copy, the case-preserving copy and the raw copy, cursor at `pos`.
void setLine(Compilation& c, const std::string& text, size_t pos = 0);

// A pass-2 compilation positioned on line 1 of x.bas, for tests of readers.
struct PassTwo {
    Compilation c{{"/tmp/x.bas", "/tmp"}};
    PassTwo() {
        c.ctx.pass = 2;
        c.ctx.currentFile = "x.bas";
        c.ctx.currentSourceLine = 0;
    }
};

// The standard error frame for line `line` of prog.bas.
std::string frame(int line, const std::string& text, const std::string& what);

// The standard error frame for line 1 of x.bas.
std::string errorFrame(const std::string& upperLine, const std::string& text);

// Compiles a program and returns its body lines without the final END line.
std::vector<std::string> statementLines(const std::string& source);

} // namespace zorvel::test
