#pragma once

#include "platform/file_services.h"
#include "platform/result.h"

#include <QString>
#include <QtGlobal>

#include <optional>
#include <string>
#include <string_view>

namespace korvel {

// The race types a track can be converted to; the value is the digit written into the archive.
enum class RaceType { Drag = 1, Circuit = 2, Rally = 3, Rumble = 4, BombTag = 5 };

// "drag", "circuit", "rally", "rumble", "bomb-tag" (the command line's names).
std::optional<RaceType> raceTypeFromName(std::string_view name);

// "The selected truck should now be compatible with the original 4x4 Evolution."
QString compatiblizedText();

// Overwrites one byte of the archive in place: the first occurrence of `marker` (case-sensitive) at
// or after byte `entryStart` - 1, plus `step`, gets `digit`. When the marker does not occur there,
// byte `step` - 1 of the archive (its `step`-th byte) is overwritten instead, as the track tools
// always did. The archive is searched in bounded chunks and never rewritten whole; its length stays
// the same. Returns the 0-based offset written.
Result<qint64> patchAfterMarker(const FileServices& files, const std::string& archivePath, qint64 entryStart,
                                std::string_view marker, int step, char digit);

// Race-type conversion: marker "Track Race Type", third byte after it.
Result<qint64> convertRaceType(const FileServices& files, const std::string& archivePath, qint64 entryStart,
                               RaceType type);

// Truck compatibility: marker "version", third byte after it becomes "6".
Result<qint64> compatiblizeTruck(const FileServices& files, const std::string& archivePath, qint64 entryStart);

} // namespace korvel
