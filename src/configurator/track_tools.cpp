#include "track_tools.h"

#include "pod/pod_directory.h"

#include <QFile>

#include <vector>

namespace korvel {

namespace {

constexpr qint64 kSearchChunk = qint64(1) << 20;

// 0-based offset of the first `marker` at or after `from`, or -1.
std::optional<qint64> findForward(QFile& file, qint64 from, std::string_view marker, qint64& found) {
    found = -1;
    const qint64 length = file.size();
    const qint64 overlap = static_cast<qint64>(marker.size()) - 1;
    std::vector<char> buffer(static_cast<size_t>(kSearchChunk + overlap));
    for (qint64 at = from; at < length;) {
        if (!file.seek(at))
            return std::nullopt;
        const qint64 want = std::min<qint64>(kSearchChunk + overlap, length - at);
        const qint64 got = file.read(buffer.data(), want);
        if (got != want)
            return std::nullopt;
        const std::string_view window(buffer.data(), static_cast<size_t>(got));
        if (const size_t hit = window.find(marker); hit != std::string_view::npos) {
            found = at + static_cast<qint64>(hit);
            return found;
        }
        if (got < static_cast<qint64>(marker.size()))
            break;
        at += got - overlap;
    }
    return found;
}

} // namespace

std::optional<RaceType> raceTypeFromName(std::string_view name) {
    if (name == "drag")
        return RaceType::Drag;
    if (name == "circuit")
        return RaceType::Circuit;
    if (name == "rally")
        return RaceType::Rally;
    if (name == "rumble")
        return RaceType::Rumble;
    if (name == "bomb-tag")
        return RaceType::BombTag;
    return std::nullopt;
}

QString compatiblizedText() {
    return QStringLiteral("The selected truck should now be compatible with the original 4x4 Evolution.");
}

Result<qint64> patchAfterMarker(const FileServices& files, const std::string& archivePath, qint64 entryStart,
                                std::string_view marker, int step, char digit) {
    const QString host = files.hostPath(archivePath);
    QFile file(host);
    if (host.isEmpty() || !file.exists())
        return podRuntimeFailure(53);
    if (!file.open(QIODevice::ReadWrite))
        return podRuntimeFailure(70);
    // The search starts one byte before the entry's first byte; a start before the file's first
    // byte is an invalid argument to the search, as it always was.
    if (entryStart < 1 || marker.empty())
        return podRuntimeFailure(5);
    qint64 found = -1;
    if (!findForward(file, entryStart - 1, marker, found))
        return podRuntimeFailure(75);
    const qint64 target = (found < 0 ? 0 : found + 1) + step - 1;
    if (target >= file.size())
        return podRuntimeFailure(5);
    if (!file.seek(target) || file.write(&digit, 1) != 1 || !file.flush())
        return podRuntimeFailure(75);
    return target;
}

Result<qint64> convertRaceType(const FileServices& files, const std::string& archivePath, qint64 entryStart,
                               RaceType type) {
    return patchAfterMarker(files, archivePath, entryStart, "Track Race Type", 17,
                            static_cast<char>('0' + static_cast<int>(type)));
}

Result<qint64> compatiblizeTruck(const FileServices& files, const std::string& archivePath, qint64 entryStart) {
    return patchAfterMarker(files, archivePath, entryStart, "version", 9, '6');
}

} // namespace korvel
