// Finding the home folder: the folder whose inc/ holds the device files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace zorvel {

// The first of: the explicit folder, $ZORVEL_HOME, <exe dir>/../share/zorvel,
// the source tree's data folder. A candidate counts only when it has inc/.
// An explicit folder or ZORVEL_HOME without inc/ is an error (returned text).
struct HomeFolderResult {
    std::optional<std::filesystem::path> folder;
    std::string error;
};

HomeFolderResult findHomeFolder(const std::optional<std::filesystem::path>& explicitFolder,
                                const std::filesystem::path& executable);

} // namespace zorvel
