#include "recent_archives.h"

#include "platform/game_text.h"

#include <algorithm>

namespace korvel {

std::vector<std::string> updateRecentArchives(std::vector<std::string> recent, const std::string& folder,
                                              const std::string& fileName) {
    const std::string path = folder + fileName;
    if (auto it = std::find(recent.begin(), recent.end(), path); it != recent.end())
        recent.erase(it);
    std::string shown = folder;
    if (!shown.empty())
        shown[0] = upperGameChar(shown[0]);
    recent.insert(recent.begin(), shown + fileName);
    if (recent.size() > kMaxRecentArchives)
        recent.resize(kMaxRecentArchives);
    return recent;
}

} // namespace korvel
