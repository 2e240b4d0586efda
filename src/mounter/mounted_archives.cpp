#include "mounted_archives.h"

#include "platform/game_path.h"

#include <QDateTime>
#include <QFileInfo>

namespace korvel {

std::optional<LocatedArchive> locateMountedArchive(const FileServices& files, const std::string& gameFolder,
                                                   const std::string& storedPath) {
    for (int attempt = isAbsoluteGamePath(storedPath) ? 1 : 0; attempt < 2; ++attempt) {
        std::string path = attempt == 0 ? gameFolder + "\\" + storedPath : storedPath;
        const QString host = files.hostPath(path);
        if (host.isEmpty())
            continue;
        const QFileInfo info(host);
        if (info.isFile())
            return LocatedArchive{std::move(path), host, info.size(), info.lastModified().toMSecsSinceEpoch()};
    }
    return std::nullopt;
}

std::optional<std::string> mountedArchivePath(const FileServices& files, const std::string& gameFolder,
                                              const std::string& storedPath) {
    std::optional<LocatedArchive> found = locateMountedArchive(files, gameFolder, storedPath);
    if (!found)
        return std::nullopt;
    return std::move(found->path);
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
