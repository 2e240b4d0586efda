#include "track_list_download.h"

#include "platform/dialogs.h"
#include "startup/setting_limits.h"
#include "startup/settings_store.h"
#include "startup/typed_settings.h"
#include "track_list.h"

namespace korvel {

Result<std::string> storeTrackListReply(SettingsStore& store, const TrackListReply& reply) {
    std::optional<std::string> list;
    if (reply.ok)
        list = trackListFromReply(std::string_view(reply.body.constData(), static_cast<size_t>(reply.body.size())));
    // A list too long to read back would be lost at the next start: the old list stays instead.
    if (!list || !fitsStoredValue(*list))
        return unexpectedError(QString::fromLatin1(kUpdateFailedText));
    ProgramSettings(store).setTrackList(*list);
    return *list;
}

void showTrackListUpdateOutcome(Dialogs& dialogs, const Result<std::string>& outcome) {
    if (outcome.ok())
        dialogs.message(QStringLiteral("Information"), QString::fromLatin1(kUpdateSucceededText),
                        MessageIcon::Information);
    else
        dialogs.message(outcome.failure().title(), outcome.failure().message, MessageIcon::Critical);
}

} // namespace korvel
