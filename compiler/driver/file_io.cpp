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

std::optional<fs::path> findInFolder(const fs::path& folder, std::string_view name) {
    std::error_code ec;
    fs::path exact = folder / fs::path(std::string(name));
    if (fs::is_regular_file(exact, ec)) return exact;
    fs::path want(std::string{name});
    fs::path dir = (folder / want).parent_path();
    std::string leaf = want.filename().string();
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        if (equalsNoCase(it->path().filename().string(), leaf) &&
            fs::is_regular_file(it->path(), ec))
            return it->path();
    }
    return std::nullopt;
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
