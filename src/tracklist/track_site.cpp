#include "track_site.h"

#include "platform/game_text.h"

namespace korvel {

TrackSite TrackSite::defaults() {
    TrackSite site;
    site.siteRoot = QStringLiteral("http://www.gravlenforge.example/");
    site.listUrl = QUrl(QStringLiteral("http://www.gravlenforge.example/korvel/tracklist.txt"));
    return site;
}

TrackSite TrackSite::fromEnvironment() {
    TrackSite site = defaults();
    const QString root = qEnvironmentVariable("KORVEL_TRACK_SITE");
    if (!root.isEmpty())
        site.siteRoot = root;
    const QString list = qEnvironmentVariable("KORVEL_TRACK_LIST_URL");
    if (!list.isEmpty())
        site.listUrl = QUrl(list);
    return site;
}

QString TrackSite::trackAddress(std::string_view tag) const {
    return siteRoot + fromGameText(tag);
}

} // namespace korvel
