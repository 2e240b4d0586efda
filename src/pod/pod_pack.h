#pragma once

#include "platform/file_services.h"
#include "platform/result.h"

#include <QString>
#include <QtGlobal>

#include <functional>
#include <string>
#include <vector>

namespace korvel {

enum class PodFormat { Pod1, Pod2 };

// Called with the number of items done and the total; returning false cancels the work, which then
// fails with cancelledText() and writes nothing.
using WorkProgress = std::function<bool(qint64 done, qint64 total)>;

QString cancelledText(); // "Cancelled."

inline constexpr size_t kPod1NameLimit = 31; // bytes; the record's 32-byte field keeps one NUL
inline constexpr size_t kCommentLimit = 79;  // bytes of the 80-byte comment field

// The entry name for a file at `relative` (its path beneath the packed folder, "/"-separated, as the
// host spells it): "\" separators, in the game's code page. Refused, naming the file, when the code
// page cannot represent it, when extraction would not write it back under the same name (blanks at
// either end, "..", ":", a "\" inside a host name, over 80 bytes), or for POD1 when over 31 bytes.
Result<std::string> packEntryName(const QString& relative, PodFormat format);

// An entry name the user typed (for `add`): "/" or "\" separators, blanks trimmed. Refused when it
// would leave the extraction folder or names no file, or for POD1 when over 31 bytes.
Result<std::string> typedEntryName(const QString& typed, PodFormat format);

// The archive comment in the game's code page; refused over 79 bytes or when not representable.
Result<std::string> podComment(const QString& comment);

// One entry of an archive to write, and where its data comes from.
struct PackItem {
    std::string name;        // entry name, game text
    qint64 size = 0;         // bytes
    qint64 modified = 0;     // Unix time, the POD2 record's timestamp
    std::string sourceHost;  // host path of the file that holds the data (QFile::encodeName bytes)
    qint64 sourceOffset = 0; // where the data starts in it
};

// The files beneath `folder` as entries, sorted by name without regard to case (the data goes in
// the same order). The file `skip` (a game path; the archive being written) is left out. Two files
// whose names differ only in case are refused, as is an empty folder.
Result<std::vector<PackItem>> collectPackItems(const FileServices& files, const std::string& folder, PodFormat format,
                                               const std::string& skip = {});

struct PackSummary {
    qint64 entries = 0;
    qint64 bytes = 0; // size of the archive written
};

// Writes the archive `target` from `items` in their order, through a temporary file that replaces
// the target only when everything was written. POD2 archives get the header checksum, each record's
// checksum and timestamp, and an empty audit trail.
Result<PackSummary> writePodArchive(const FileServices& files, const std::string& target,
                                    const std::vector<PackItem>& items, PodFormat format, const std::string& comment,
                                    const WorkProgress& progress = {});

struct PackOptions {
    PodFormat format = PodFormat::Pod1;
    QString comment;
    bool replaceExisting = false; // otherwise an existing target is refused
};

// Packs every file beneath `folder` into the new archive `target`.
Result<PackSummary> packFolder(const FileServices& files, const std::string& folder, const std::string& target,
                               const PackOptions& options, const WorkProgress& progress = {});

// Rewrites `archive` with the file `file` stored as `entryName` (as typedEntryName takes it): an
// entry of that name (any case) is replaced in its place, otherwise the new entry goes last. The
// comment, the other entries' data and their order are kept.
Result<PackSummary> addToArchive(const FileServices& files, const std::string& archive, const std::string& file,
                                 const QString& entryName, const WorkProgress& progress = {});

// Rewrites `archive` without the entry `entryName` (any case). Refused when no entry has that name
// or when it is the archive's only entry.
Result<PackSummary> removeFromArchive(const FileServices& files, const std::string& archive, const QString& entryName,
                                      const WorkProgress& progress = {});

} // namespace korvel
