#pragma once

#include <string>
#include <vector>

namespace korvel {

inline constexpr size_t kMaxRecentArchives = 8;

// The recent-archives list after listing folder + fileName: the first item equal to that path is
// removed, the path (folder's first character upper-cased) goes to the top, and the list keeps at
// most eight archives.
std::vector<std::string> updateRecentArchives(std::vector<std::string> recent, const std::string& folder,
                                              const std::string& fileName);

} // namespace korvel
