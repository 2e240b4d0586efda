#pragma once

#include "platform/file_services.h"
#include "pod/pod_check.h"
#include "pod/pod_pack.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace korvel {

// Where a mounted archive was found, and the file's size and modification time (milliseconds).
struct LocatedArchive {
    std::string path; // game path
    QString host;
    qint64 size = 0;
    qint64 modified = 0;
};

// The archive a POD.INI entry names: game folder + "\" + entry when that is a file, else the entry
// itself (absolute, or relative to the current folder); nullopt when neither is.
std::optional<LocatedArchive> locateMountedArchive(const FileServices& files, const std::string& gameFolder,
                                                   const std::string& storedPath);

// The game path of the archive a POD.INI entry names: game folder + "\" + entry when that is a
// file, else the entry itself (absolute, or relative to the current folder); nullopt when neither is.
std::optional<std::string> mountedArchivePath(const FileServices& files, const std::string& gameFolder,
                                              const std::string& storedPath);

struct MountedCheck {
    std::string storedPath; // as POD.INI holds it
    ArchiveCheck check;     // a missing archive is reported as "Not found"
};

// Checks every mounted archive, in mount order. Cancelling through `progress` fails with
// cancelledText().
Result<std::vector<MountedCheck>> checkMountedArchives(const FileServices& files, const std::string& gameFolder,
                                                       const std::vector<std::string>& storedPaths,
                                                       const WorkProgress& progress = {});

} // namespace korvel
