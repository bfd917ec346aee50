#include "compiler/driver/source_reader.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/file_io.h"

#include <cctype>
#include <string>
#include <vector>

namespace zorvel {
namespace {

constexpr int kMaxIncludeDepth = 16;
constexpr uintmax_t kMaxFileSize = uintmax_t{64} << 20;

// The file name of an INCLUDE line, or nullopt when the line is no INCLUDE.
// Sets `quoted` false when the opening quote is missing.
std::optional<std::string> includeName(const std::string& text, bool& quoted) {
    size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
        ++i;
    size_t start = i;
    while (i < text.size() && std::isalnum(static_cast<unsigned char>(text[i])))
        ++i;
    std::string word = text.substr(start, i - start);
    for (char& ch : word)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    if (word != "INCLUDE") return std::nullopt;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
        ++i;
    quoted = i < text.size() && text[i] == '"';
    if (!quoted) return std::string();
    std::string name;
    for (++i; i < text.size() && text[i] != '"'; ++i) {
        name += static_cast<char>(std::toupper(static_cast<unsigned char>(text[i])));
        if (text[i] == '\'') break;
    }
    return name;
}

struct Expander {
    Compilation& c;
    std::vector<fs::path> chain; // the files being expanded, outermost first

    bool fail(std::string message) {
        c.ctx.runMessage = std::move(message);
        return false;
    }

    // Home folder, its inc folder, then the including file's folder.
    std::optional<fs::path> locate(const std::string& name, const fs::path& includer) {
        const fs::path& home = c.options.homeFolder;
        for (const fs::path& dir : {home, home / "inc", includer.parent_path()}) {
            if (auto found = findInFolder(dir, name)) return found;
        }
        return std::nullopt;
    }

    bool expandFile(const fs::path& file, const std::string& entryPath) {
        std::error_code ec;
        if (fs::is_regular_file(file, ec) && fs::file_size(file, ec) > kMaxFileSize)
            return fail("\t" + (entryPath.empty() ? file.string() : entryPath) +
                        " is larger than " + std::to_string(kMaxFileSize >> 20) +
                        " MiB: not a source file!");
        std::optional<std::string> text = readFile(file);
        if (!text) return fail("\tInclude file " + entryPath + " Cannot be read!");
        return expandText(file, entryPath, std::move(*text));
    }

    bool expandText(const fs::path& file, const std::string& entryPath, std::string text) {
        std::vector<std::string> lines = splitLines(text);
        text.clear();
        int fileIndex = static_cast<int>(c.sourceFiles.size());
        c.sourceFiles.push_back({entryPath, file.filename().string()});
        for (size_t i = 0; i < lines.size(); ++i) {
            c.workfile.push_back({fileIndex, static_cast<int>(i), std::move(lines[i])});
            bool quoted = true;
            std::optional<std::string> name = includeName(c.workfile.back().text, quoted);
            if (!name) continue;
            if (!quoted) return fail("\tQuotes missing in INCLUDE directive!");
            if (!expandInclude(*name, file)) return false;
        }
        return true;
    }

    bool expandInclude(const std::string& name, const fs::path& includer) {
        std::optional<fs::path> found = locate(name, includer);
        if (!found) return fail("\tInclude file " + name + " Cannot be found!");
        std::error_code ec;
        fs::path canonical = fs::weakly_canonical(*found, ec);
        for (const fs::path& open : chain) {
            if (open == canonical) return fail("\tInclude file " + name + " includes itself!");
        }
        if (static_cast<int>(chain.size()) > kMaxIncludeDepth)
            return fail("\tInclude file " + name + " is nested more than " +
                        std::to_string(kMaxIncludeDepth) + " levels deep!");
        chain.push_back(canonical);
        bool ok = expandFile(*found, found->string());
        chain.pop_back();
        return ok;
    }
};

} // namespace

bool readAndExpandSource(Compilation& c) {
    c.workfile.clear();
    c.sourceFiles.clear();
    const fs::path& source = c.options.sourceName;
    std::error_code ec;
    if (!c.options.sourceText && !fs::is_regular_file(source, ec)) {
        c.ctx.runMessage = "\tUnable to read source file " + source.string() + "!";
        return false;
    }
    Expander expander{c, {}};
    expander.chain.push_back(fs::weakly_canonical(source, ec));
    bool expanded = c.options.sourceText ? expander.expandText(source, "", *c.options.sourceText)
                                         : expander.expandFile(source, "");
    if (!expanded) return false;
    if (static_cast<int>(c.workfile.size()) > c.ctx.lineLimit) {
        c.ctx.runMessage = "\tSource too long: more than " + std::to_string(c.ctx.lineLimit) +
                           " lines after INCLUDE expansion!";
        return false;
    }
    return true;
}

} // namespace zorvel
