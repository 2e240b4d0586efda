// Feeds arbitrary "TrackList" values and downloaded documents to the track-list parser.
#include "tracklist/track_list.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const korvel::TrackMenu menu = korvel::LoadTrackList(text);
    const auto rows = static_cast<size_t>(std::count(text.begin(), text.end(), '*')) + 1;
    // Never more entries than rows; a complete read of a non-empty value gives one per row.
    if (menu.entries.size() > rows || (!text.empty() && !menu.failure && menu.entries.size() != rows))
        std::abort();
    for (const korvel::TrackMenuEntry& entry : menu.entries) {
        if (entry.caption.find("\t<") == std::string::npos || entry.caption.back() != '>')
            std::abort();
    }
    // A reply's list is the text after its six-character mark, less the line breaks around it.
    if (const auto list = korvel::trackListFromReply(text);
        list && (list->size() + 6 > text.size() || text.substr(6).find(*list) == std::string_view::npos ||
                 (!list->empty() && (list->back() == '\n' || list->back() == '\r'))))
        std::abort();
    return 0;
}
