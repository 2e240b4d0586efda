#pragma once

#include "folder_snapshot.h"
#include "mounted_entry.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvel {

struct ScanInputs {
    std::string gameFolder;             // no trailing "\"
    std::string shortGameFolder;        // with a trailing "\"
    std::vector<std::string> extraDirs; // the extra folders, in the order they are scanned
};

// The order of the unmounted list: compare the keys of two display texts byte by byte.
std::string displaySortKey(std::string_view text);

// The unmounted archives: "*.pod" files of the game folder, of its first-level subfolders and of
// the extra folders, whose stored path is not the path of a row of `mounted` (ignoring case),
// sorted by display text. Rows come with status "Unmounted". The folders are read through
// `folders`, whose short game folder must be `inputs.shortGameFolder`.
std::vector<MountedEntry> ScanUnmounted(FolderSnapshot& folders, const ScanInputs& inputs,
                                        const std::vector<MountedEntry>& mounted);

} // namespace korvel
