#include "compiler/driver/file_io.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>
#include <unistd.h>

namespace zorvel {

std::optional<std::string> readFile(const fs::path& path) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec)) return std::nullopt;
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream ss;
    ss << in.rdbuf();
    return std::move(ss).str();
}

std::vector<std::string> splitLines(std::string_view text) {
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\n' && text[i] != '\r') continue;
        lines.emplace_back(text.substr(start, i - start));
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
        start = i + 1;
    }
    if (start < text.size()) lines.emplace_back(text.substr(start));
    return lines;
}

static bool equalsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) ==
                      std::toupper(static_cast<unsigned char>(y));
           });
}

namespace {

// The entry of `dir` named `part`: the exact name first, then one that
// differs only in case. `wantFile` picks regular files, else folders.
std::optional<fs::path> findEntry(const fs::path& dir, const std::string& part, bool wantFile) {
    std::error_code ec;
    auto fits = [&](const fs::path& p) {
        return wantFile ? fs::is_regular_file(p, ec) : fs::is_directory(p, ec);
    };
    if (part == "." || part == "..") return dir / part;
    if (fits(dir / part)) return dir / part;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        if (equalsNoCase(it->path().filename().string(), part) && fits(it->path()))
            return it->path();
    }
    return std::nullopt;
}

} // namespace

std::optional<fs::path> findInFolder(const fs::path& folder, std::string_view name) {
    std::string relative(name);
    std::replace(relative.begin(), relative.end(), '\\', '/');
    fs::path want(relative);
    fs::path at = want.is_absolute() ? want.root_path() : folder;
    std::vector<std::string> parts;
    for (const fs::path& part : want.relative_path())
        if (!part.empty()) parts.push_back(part.string());
    if (parts.empty()) return std::nullopt;
    for (size_t i = 0; i < parts.size(); ++i) {
        std::optional<fs::path> next = findEntry(at, parts[i], i + 1 == parts.size());
        if (!next) return std::nullopt;
        at = *next;
    }
    return at;
}

std::string writeFileAtomic(const fs::path& path, std::string_view text) {
    fs::path temp = path;
    temp += ".tmp" + std::to_string(::getpid());
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out) return "Unable to create " + path.string();
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        out.close();
        if (!out) {
            std::error_code ec;
            fs::remove(temp, ec);
            return "Unable to write " + path.string();
        }
    }
    std::error_code ec;
    fs::rename(temp, path, ec);
    if (ec) {
        fs::remove(temp, ec);
        return "Unable to write " + path.string();
    }
    return {};
}

} // namespace zorvel
