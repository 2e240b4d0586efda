#pragma once

#include "platform/result.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

class SettingsStore;

// One row of the stored track list: display name, race type, download path relative to the site root.
struct TrackRow {
    std::string name;
    std::string raceType;
    std::string path;
};

// The rows of a "TrackList" value. A row with fewer than three columns stops the reading there:
// the rows before it are kept and `failure` says which row it was.
struct TrackListParse {
    std::vector<TrackRow> rows;
    std::optional<Failure> failure;
    bool complete() const { return !failure.has_value(); }
};

TrackListParse parseTrackList(std::string_view value);

// One entry of the Tracks menu: the caption as it stands (an "&" in a name stays an access key)
// and the tag holding the download path.
struct TrackMenuEntry {
    std::string caption;
    std::string tag;
};

struct TrackMenu {
    // Entry i replaces menu entry i. No entries: the menu keeps its first entry's caption.
    std::vector<TrackMenuEntry> entries;
    std::optional<Failure> failure; // a short row stopped the rebuild; `entries` holds the rows before it
};

// Name + "\t<" + race type + ">".
std::string trackCaption(const TrackRow& row);

// Builds the Tracks menu from a "TrackList" value.
TrackMenu LoadTrackList(std::string_view value);

// The stored "TrackList" value; a value that cannot be read counts as missing (empty).
std::string readTrackList(SettingsStore& store);
// The stored value, or the built-in list when none is stored.
std::string storedOrDefaultTrackList(SettingsStore& store);

// The mark that opens every downloaded track list.
inline constexpr std::string_view kTrackListMark = "QXMTL$";

// The new "TrackList" value a downloaded document carries: everything after the mark, even when
// empty, without the line breaks around it; nullopt when the document does not start with the mark.
std::optional<std::string> trackListFromReply(std::string_view reply);

} // namespace korvel
