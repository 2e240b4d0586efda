#include "track_site.h"

#include "platform/game_text.h"
#include "startup/typed_settings.h"
#include "startup/web_addresses.h"

namespace korvel {

TrackSite TrackSite::configured(SettingsStore& store) {
    const ProgramSettings settings(store);
    TrackSite site;
    site.siteRoot = addressInForce(settings, WebAddress::TrackSite);
    if (!site.siteRoot.isEmpty() && !site.siteRoot.endsWith(QLatin1Char('/')))
        site.siteRoot += QLatin1Char('/');
    const QString list = addressInForce(settings, WebAddress::TrackList);
    if (!list.isEmpty())
        site.listUrl = QUrl(list);
    return site;
}

QString TrackSite::missingSiteHint() {
    return missingAddressHint(WebAddress::TrackSite);
}

QString TrackSite::missingListHint() {
    return missingAddressHint(WebAddress::TrackList);
}

QString TrackSite::trackAddress(std::string_view tag) const {
    return hasSite() ? siteRoot + fromGameText(tag) : QString();
}

} // namespace korvel
