#include "sim/input_file.h"

#include <fstream>
#include <system_error>

namespace zorvel::sim {

namespace fs = std::filesystem;

std::optional<std::string> readInputFile(const fs::path& path, const std::string& kind,
                                         uintmax_t maxBytes, std::string& error) {
    const std::string name = kind + " " + path.string();
    std::error_code ec;
    fs::file_status status = fs::status(path, ec);
    if (!fs::exists(status)) {
        error = "cannot open " + name;
        return std::nullopt;
    }
    if (!fs::is_regular_file(status)) {
        error = name + " is not a regular file";
        return std::nullopt;
    }
    uintmax_t size = fs::file_size(path, ec);
    if (ec) {
        error = "cannot read " + name;
        return std::nullopt;
    }
    if (size > maxBytes) {
        error = name + " is larger than " + std::to_string(maxBytes >> 20) + " MiB";
        return std::nullopt;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot open " + name;
        return std::nullopt;
    }
    // At most the size seen above, even if the file grows meanwhile.
    std::string text(size, '\0');
    in.read(text.data(), static_cast<std::streamsize>(size));
    if (in.bad()) {
        error = "cannot read " + name;
        return std::nullopt;
    }
    text.resize(static_cast<size_t>(in.gcount()));
    return text;
}

} // namespace zorvel::sim
