#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <string_view>

namespace korvel {

class SettingsStore;

// Where the add-on tracks and their list live, and how long a download may take. Either address
// may be empty: nothing is built in.
struct TrackSite {
    QString siteRoot; // a track's address is this followed by its path
    QUrl listUrl;     // the track-list document
    std::chrono::milliseconds timeout{15000};

    // The addresses in force: the stored "TrackSite" and "TrackListAddress" with
    // KORVEL_TRACK_SITE and KORVEL_TRACK_LIST_URL on top. A site given without a closing "/"
    // gets one, so that the tracks' paths land beneath it.
    static TrackSite configured(SettingsStore& store);

    bool hasSite() const { return !siteRoot.isEmpty(); }
    bool hasList() const { return !listUrl.isEmpty(); }
    // What the commands that need an address say while it is missing: where to set one.
    static QString missingSiteHint();
    static QString missingListHint();

    // The download address of a track: the site root followed by the menu entry's tag; empty
    // while no site is set.
    QString trackAddress(std::string_view tag) const;
};

} // namespace korvel
