#pragma once

#include "track_list_download.h"

#include <QString>

namespace korvel {

// The file name (without prefix or suffix) of the module holding the track-list download, and the
// function it exports: fetchTrackList() behind a C name, for programs that load it when needed.
inline constexpr const char* kTrackFetchModule = "korvel_track_fetch";
inline constexpr const char* kTrackFetchFunction = "korvel_fetch_track_list";
using TrackFetchFunction = void (*)(const QUrl& url, qint64 timeoutMs, TrackListReply& reply);

} // namespace korvel
