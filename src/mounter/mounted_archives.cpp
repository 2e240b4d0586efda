#include "mounted_archives.h"

#include "platform/game_path.h"

namespace korvel {

std::optional<std::string> mountedArchivePath(const FileServices& files, const std::string& gameFolder,
                                              const std::string& storedPath) {
    if (!isAbsoluteGamePath(storedPath)) {
        const std::string inGame = gameFolder + "\\" + storedPath;
        if (files.fileSize(inGame))
            return inGame;
    }
    if (files.fileSize(storedPath))
        return storedPath;
    return std::nullopt;
}

Result<std::vector<MountedCheck>> checkMountedArchives(const FileServices& files, const std::string& gameFolder,
                                                       const std::vector<std::string>& storedPaths,
                                                       const WorkProgress& progress) {
    std::vector<MountedCheck> checks;
    checks.reserve(storedPaths.size());
    const auto total = static_cast<qint64>(storedPaths.size());
    for (const std::string& stored : storedPaths) {
        if (progress && !progress(static_cast<qint64>(checks.size()), total))
            return refused(cancelledText());
        MountedCheck row;
        row.storedPath = stored;
        if (const std::optional<std::string> path = mountedArchivePath(files, gameFolder, stored)) {
            row.check = checkArchive(files, *path);
        } else {
            row.check.path = stored;
            row.check.findings.push_back({CheckProblem::NotFound, notFoundText()});
        }
        checks.push_back(std::move(row));
    }
    if (progress)
        progress(total, total);
    return checks;
}

} // namespace korvel
