// File helpers: whole-file reads, case-insensitive lookup in a folder, and
// writes that never leave a half-written file behind.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zorvel {

namespace fs = std::filesystem;

// Reads a whole file; returns nullopt when it cannot be opened.
std::optional<std::string> readFile(const fs::path& path);

// Splits text into lines at LF, CR LF or a lone CR; a final line break does
// not start another line.
std::vector<std::string> splitLines(std::string_view text);

// Finds the file `name` below `folder`; `name` may hold folders, separated by
// "/" or "\\". Each part is matched by its exact name first, then by a name
// that differs only in case.
std::optional<fs::path> findInFolder(const fs::path& folder, std::string_view name);

// Writes `text` to a temporary file beside `path` and renames it over `path`.
// Returns an error text, or an empty string on success.
std::string writeFileAtomic(const fs::path& path, std::string_view text);

} // namespace zorvel
