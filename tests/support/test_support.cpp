#include "support/test_support.h"

#include "compiler/driver/compile_run.h"
#include "compiler/driver/file_io.h"

#include <atomic>
#include <cctype>
#include <fstream>
#include <unistd.h>

namespace zorvel::test {

namespace fs = std::filesystem;

TempDir::TempDir() {
    static std::atomic<int> counter{0};
    path_ = fs::temp_directory_path() /
            ("zorvel-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    fs::create_directories(path_);
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(path_, ec);
}

fs::path TempDir::write(const std::string& name, const std::string& text) const {
    fs::path p = path_ / name;
    fs::create_directories(p.parent_path());
    std::ofstream out(p, std::ios::binary);
    out << text;
    return p;
}

fs::path dataFolder() {
    return ZORVEL_SOURCE_DATA;
}

CompileResult compileSource(const std::string& source, const std::string& fileName) {
    TempDir dir;
    return compileFile(dir.write(fileName, source), dataFolder());
}

std::string lines(std::initializer_list<std::string> items) {
    std::string out;
    for (const std::string& item : items)
        out += item + "\n";
    return out;
}

CompileResult compileFile(const fs::path& file, const fs::path& home, bool assemble) {
    CompileResult r;
    CompileOptions options{file, home};
    options.assemble = assemble;
    r.compilation = std::make_unique<Compilation>(options);
    Compilation& c = *r.compilation;
    runCompile(c);
    r.messages = c.messages;
    r.errors = c.ctx.errorCount;
    r.alerts = c.alerts;
    std::optional<std::string> saved = readFile(c.ctx.asmName);
    if (saved) {
        std::string text = *saved;
        size_t start = 0;
        for (size_t pos; (pos = text.find("\r\n", start)) != std::string::npos; start = pos + 2)
            r.output.push_back(text.substr(start, pos - start));
        r.output.push_back(text.substr(start));
    } else {
        r.output = c.asmlist;
    }
    return r;
}

void setLine(Compilation& c, const std::string& text, size_t pos) {
    c.line.cased = text;
    c.line.raw = text;
    c.line.upper = text;
    for (char& ch : c.line.upper)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    c.line.pos = pos;
}

std::string frame(int line, const std::string& text, const std::string& what) {
    return "Error at Line [" + std::to_string(line) + "]\tIn file [prog.bas]\t" + text + "\t*** " +
           what + "! ***";
}

std::string errorFrame(const std::string& upperLine, const std::string& text) {
    return "Error at Line [1]\tIn file [x.bas]\t" + upperLine + "\t*** " + text + "! ***";
}

std::vector<std::string> body(const CompileResult& result) {
    // Banner (4 lines) and the #include string "\r\n\t#include ... \r\n" (3 lines when split).
    const std::vector<std::string>& out = result.output;
    size_t skip = 0;
    for (size_t i = 0; i < out.size(); ++i) {
        if (out[i].rfind("\t#include ", 0) == 0) {
            skip = i + 2;
            break;
        }
    }
    return std::vector<std::string>(out.begin() + std::min(skip, out.size()), out.end());
}

std::vector<std::string> statementLines(const std::string& source) {
    CompileResult r = compileSource(source);
    std::vector<std::string> lines = body(r);
    // Drop the final "\tEND\r\n" line: "\tEND" and the empty piece after its CR LF.
    if (lines.size() >= 2 && lines.back().empty() && lines[lines.size() - 2] == "\tEND")
        lines.resize(lines.size() - 2);
    return lines;
}

} // namespace zorvel::test
