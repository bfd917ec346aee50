#include "compiler/driver/home_folder.h"

#include <cstdlib>

#ifndef ZORVEL_SOURCE_DATA
#define ZORVEL_SOURCE_DATA ""
#endif

namespace zorvel {

namespace fs = std::filesystem;

static bool hasInc(const fs::path& folder) {
    std::error_code ec;
    return fs::is_directory(folder / "inc", ec);
}

HomeFolderResult findHomeFolder(const std::optional<fs::path>& explicitFolder,
                                const fs::path& executable) {
    if (explicitFolder) {
        if (hasInc(*explicitFolder)) return {*explicitFolder, {}};
        return {std::nullopt, "home folder " + explicitFolder->string() + " has no inc folder"};
    }
    if (const char* env = std::getenv("ZORVEL_HOME"); env && *env) {
        if (hasInc(env)) return {fs::path(env), {}};
        return {std::nullopt, std::string("ZORVEL_HOME=") + env + " has no inc folder"};
    }
    std::error_code ec;
    fs::path exe = fs::weakly_canonical(executable, ec);
    fs::path installed = exe.parent_path().parent_path() / "share" / "zorvel";
    if (!executable.empty() && hasInc(installed)) return {installed, {}};
    fs::path sourceData = ZORVEL_SOURCE_DATA;
    if (!sourceData.empty() && hasInc(sourceData)) return {sourceData, {}};
    return {std::nullopt, "no home folder found: use --home DIR or set ZORVEL_HOME"};
}

} // namespace zorvel
