#pragma once

#include "mounted_entry.h"
#include "platform/file_services.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// The text of POD.INI: a count line, then one stored path per line.

// "\" + parent folder + "\" + file name for a path that holds a "\"; other paths unchanged.
std::string ArchiveDisplayName(std::string_view path);

// The entry lines of a POD.INI text, as written (not trimmed): the first line is dropped, lines
// that are empty, blanks only, or a single ESC are skipped. CR LF, LF and CR all end a line.
std::vector<std::string> podIniEntries(std::string_view text);

// The canonical text: the count, then each path, every line ended by CR LF.
std::string podIniText(const std::vector<std::string>& paths);

// True when the path ends in ".POD", in any case: only such files are mounted or listed as unmounted.
bool hasPodSuffix(std::string_view path);

// True when the archive an entry names exists: a search for gameFolder + "\" + entry, or for the
// entry itself (relative to the process's current folder), yields its file name, ignoring case.
bool archiveEntryExists(const FileServices& files, const std::string& gameFolder, const std::string& entry);

class FolderSnapshot;

// Rows for the entry lines: stored path through ShortPath, display text, "Mounted" / "Not found".
// The folders are read through `folders` (made for the game's short folder).
std::vector<MountedEntry> mountedEntriesFor(FolderSnapshot& folders, const std::string& gameFolder,
                                            const std::vector<std::string>& entries);
std::vector<MountedEntry> mountedEntriesFor(const FileServices& files, const std::string& gameFolder,
                                            const std::string& shortGameFolder,
                                            const std::vector<std::string>& entries);

// The largest POD.INI the reader accepts.
inline constexpr qint64 kPodIniLimit = qint64(16) << 20;

} // namespace korvel
