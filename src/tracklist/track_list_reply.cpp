#include "track_list_download.h"

#include "platform/dialogs.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "track_list.h"

namespace korvel {

Result<std::string> storeTrackListReply(SettingsStore& store, const TrackListReply& reply) {
    std::optional<std::string> list;
    if (reply.ok)
        list = trackListFromReply(std::string_view(reply.body.constData(), static_cast<size_t>(reply.body.size())));
    if (!list)
        return unexpectedError(QString::fromLatin1(kUpdateFailedText));
    store.writeProgram(settings::kTrackList, *list);
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
