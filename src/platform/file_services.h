#pragma once

#include "file_lock.h"
#include "loaded_file_stamp.h"
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

// One read of a folder, for any number of searches of it (see FileServices::readFolder).
struct FolderListing {
    struct Entry {
        std::string key;  // upper-case name, the sort key
        std::string name; // game text
        bool file = false;
        bool dir = false;
    };
    std::vector<Entry> entries; // hidden entries left out; sorted by key, then name
    bool exists = false;        // false when the folder could not be found (no entries then)
    bool root = false;          // a drive's root or "/": folder searches give no "." and ".."

    // The first entry whose key is `key`, or nullptr.
    const Entry* find(std::string_view key) const;
    // What search() yields for a pattern whose last component is `pattern` (wildcards allowed).
    std::vector<std::string> search(std::string_view pattern, SearchFilter filter) const;
};

// The file services of the platform layer, on game paths. Every write goes through a temporary
// file and an atomic replace, so a failed write leaves the old file as it was. Every operation that
// can fail returns the reason, as the text a user is shown.
class FileServices {
public:
    explicit FileServices(const PathMap& paths);

    const PathMap& paths() const { return m_paths; }
    QString hostPath(const std::string& gamePath) const { return m_paths.toHost(gamePath); }

    // Names (game text) that a search for `pattern` yields: the folder part is a path, the last
    // component may hold the wildcards "*" and "?" (matched without regard to case). Sorted by name
    // without regard to case, so results do not depend on the host's directory order.
    std::vector<std::string> search(const std::string& pattern, SearchFilter filter) const;
    // The entries of `folder` (a game path; empty is the current folder) as the searches of it see
    // them: one read of the directory serves every later search of the listing.
    FolderListing readFolder(const std::string& folder) const;

    // True when a search for the path with normal attributes finds an entry (a folder does not count).
    bool FileExists(const std::string& path) const;
    // True when a search of `folder` for `name` yields that one name, ignoring case (a file or a
    // folder): the archive a file box shows is still there.
    bool findsName(const std::string& folder, const std::string& name) const;
    bool folderExists(const std::string& path) const;
    std::optional<qint64> fileSize(const std::string& path) const;

    // The short (8.3) form of an existing path where the platform has one; elsewhere the path itself
    // when it exists. nullopt when there is no short form to be had.
    std::optional<std::string> shortPathName(const std::string& path) const;

    Result<std::string> readAll(const std::string& path, qint64 limit = qint64(256) << 20) const;
    // Writes through a temporary file in the same folder and replaces the old file atomically.
    Status writeAll(const std::string& path, const std::string& bytes) const;
    // The lock of a read-modify-write of the file (see FileLock): take it before reading.
    Result<FileLock> lockForChange(const std::string& path) const;

    // The stamp of `bytes` just read from the file (its time taken from the file now).
    LoadedFileStamp stampFor(const std::string& path, std::string_view bytes) const;
    // The stamp of the file as it is now; a missing file has a stamp too. A failure when it exists
    // but cannot be read.
    Result<LoadedFileStamp> currentStamp(const std::string& path, qint64 limit = qint64(256) << 20) const;
    // Saves `bytes` as writeAll does. With `loaded`, the file must still hold what that stamp
    // describes, checked under the file's lock, which is held through the rename: otherwise nothing
    // is written and the failure (FailureKind::ChangedOnDisk) says that another program changed it.
    // Without it the file is written over whatever it holds, as writeAll does. Answers the stamp of
    // what was written.
    Result<LoadedFileStamp> writeChecked(const std::string& path, const std::string& bytes,
                                         const LoadedFileStamp* loaded) const;

    // Single-level make-directory; fails when the folder exists or its parent does not.
    Status makeDirectory(const std::string& path) const;
    // Copies atomically, replacing an existing copy. Fails when the source is missing or unreadable.
    Status copyFile(const std::string& from, const std::string& to) const;
    // Sends the files to the recycle bin (the desktop's trash). Tries every file; the failure names
    // those that could not be moved.
    Status moveToTrash(const std::vector<std::string>& paths) const;

private:
    const PathMap& m_paths;
};

// Writes `bytes` to a host file through QSaveFile. The failure text names the file and the reason
// and says that the old file was kept. Before writing, removes the temporaries that earlier saves
// of the same file left when they were killed (see removeStaleTemporaries).
Status writeFileAtomically(const QString& hostPath, const QByteArray& bytes);

// How long a temporary of an interrupted save stays untouched before the next save takes it away.
inline constexpr int kStaleTemporaryMinutes = 10;

// Removes what interrupted atomic saves of `hostPath` left beside it: files named as the file plus
// "." and six letters (the temporaries QSaveFile makes) that are older than kStaleTemporaryMinutes.
// Six letters that read as a word in one case ("backup", "BACKUP", "Backup") are left alone: a user
// may have named a copy so. Returns how many were removed.
int removeStaleTemporaries(const QString& hostPath);

// The DOS wildcard match used by searches: "*" any run, "?" one character, no regard to case.
bool wildcardMatch(std::string_view pattern, std::string_view name);

} // namespace korvel
