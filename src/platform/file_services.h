#pragma once

#include "path_map.h"
#include "result.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace korvel {

// What a directory search matches, as the game-era attribute filters do.
enum class SearchFilter {
    NormalFiles,     // ordinary files: no folders, no hidden or system files
    FilesAndFolders, // ordinary files and folders (no "." / "..")
    Folders,         // folders only, led by "." and ".." unless the folder is a drive's root
};

// The file services of the platform layer, on game paths. Every write goes through a temporary
// file and an atomic replace, so a failed write leaves the old file as it was.
class FileServices {
public:
    explicit FileServices(const PathMap& paths);

    const PathMap& paths() const { return m_paths; }
    QString hostPath(const std::string& gamePath) const { return m_paths.toHost(gamePath); }

    // Names (game text) that a search for `pattern` yields: the folder part is a path, the last
    // component may hold the wildcards "*" and "?" (matched without regard to case). Sorted by name
    // without regard to case, so results do not depend on the host's directory order.
    std::vector<std::string> search(const std::string& pattern, SearchFilter filter) const;

    // True when a search for the path with normal attributes finds an entry (a folder does not count).
    bool FileExists(const std::string& path) const;
    bool folderExists(const std::string& path) const;
    std::optional<qint64> fileSize(const std::string& path) const;

    // The short (8.3) form of an existing path where the platform has one; elsewhere the path itself
    // when it exists. nullopt when there is no short form to be had.
    std::optional<std::string> shortPathName(const std::string& path) const;

    Result<std::string> readAll(const std::string& path, qint64 limit = qint64(256) << 20) const;
    // Writes through a temporary file in the same folder and replaces the old file atomically.
    Status writeAll(const std::string& path, const std::string& bytes) const;

    // Single-level make-directory; fails when the folder exists or its parent does not.
    bool makeDirectory(const std::string& path) const;
    // Copies, replacing an existing copy. False when the source is missing or the copy failed.
    bool copyFile(const std::string& from, const std::string& to) const;
    // Sends the files to the recycle bin (the desktop's trash). False when any could not be moved.
    bool moveToTrash(const std::vector<std::string>& paths) const;

private:
    const PathMap& m_paths;
};

// Writes `bytes` to a host file through QSaveFile. The failure text names the file and the reason
// and says that the old file was kept.
Status writeFileAtomically(const QString& hostPath, const QByteArray& bytes);

// The DOS wildcard match used by searches: "*" any run, "?" one character, no regard to case.
bool wildcardMatch(std::string_view pattern, std::string_view name);

} // namespace korvel
