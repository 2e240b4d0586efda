#pragma once

#include "mounted_entry.h"
#include "platform/file_services.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace korvel {

struct ScanInputs {
    std::string gameFolder;             // no trailing "\"
    std::string shortGameFolder;        // with a trailing "\"
    std::vector<std::string> extraDirs; // the extra folders, in the order they are scanned
};

// Upper-cased stored paths, for look-ups that ignore case.
using PathKeySet = std::unordered_set<std::string>;
PathKeySet pathKeys(const std::vector<MountedEntry>& rows);

// The order of the unmounted list: compare the keys of two display texts byte by byte.
std::string displaySortKey(std::string_view text);

// The unmounted archives: "*.pod" files of the game folder, of its first-level subfolders and of
// the extra folders, whose stored path is not in `mounted` (ignoring case), sorted by display
// text. Rows come with status "Unmounted".
std::vector<MountedEntry> ScanUnmounted(const FileServices& files, const ScanInputs& inputs, const PathKeySet& mounted);

} // namespace korvel
