// The track-list download as a module of its own: korvel-cli loads it for `tracks update` only, so
// every other command starts without Qt Network and the libraries it brings.

#include "tracklist/track_fetch_module.h"
#include "tracklist/track_list_download.h"

extern "C" Q_DECL_EXPORT void korvel_fetch_track_list(const QUrl& url, qint64 timeoutMs,
                                                      korvel::TrackListReply& reply) {
    reply = korvel::fetchTrackList(url, std::chrono::milliseconds(timeoutMs));
}
