#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <string_view>

namespace korvel {

// Where the add-on tracks and their list live, and how long a download may take.
struct TrackSite {
    QString siteRoot; // a track's address is this followed by its path
    QUrl listUrl;     // the track-list document
    std::chrono::milliseconds timeout{15000};

    // The built-in addresses.
    static TrackSite defaults();
    // The built-in addresses with KORVEL_TRACK_SITE and KORVEL_TRACK_LIST_URL on top.
    static TrackSite fromEnvironment();

    // The download address of a track: the site root followed by the menu entry's tag.
    QString trackAddress(std::string_view tag) const;
};

} // namespace korvel
