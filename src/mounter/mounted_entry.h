#pragma once

#include <string>
#include <string_view>

namespace korvel {

inline constexpr std::string_view kStatusMounted = "Mounted";
inline constexpr std::string_view kStatusNotFound = "Not found";
inline constexpr std::string_view kStatusUnmounted = "Unmounted";

// One row of the mounted or the unmounted list. Texts are game-side text (bytes).
struct MountedEntry {
    std::string text;   // display text, ArchiveDisplayName(path)
    std::string status; // "Mounted", "Not found" or "Unmounted"
    std::string path;   // stored path: what POD.INI holds for this archive

    bool operator==(const MountedEntry&) const = default;
};

} // namespace korvel
