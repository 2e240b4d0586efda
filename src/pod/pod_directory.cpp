#include "pod_directory.h"

#include "platform/diagnostics.h"
#include "platform/dialogs.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace korvel {

namespace {

constexpr qint64 kPod1Header = 84;
constexpr qint64 kPod1Record = 40;
constexpr qint64 kPod2Header = 96;
constexpr qint64 kPod2Record = 20;
constexpr qint64 kDirectoryChunk = qint64(8) << 20;  // records read per call, in bytes
constexpr qint64 kTrackInfoLimit = qint64(16) << 20; // a track-information file is a few kilobytes

qint32 int32At(const char* bytes) {
    quint32 value = 0;
    for (int i = 0; i < 4; ++i)
        value |= quint32(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return static_cast<qint32>(value);
}

std::string textUpToNul(const char* bytes, size_t width) {
    const void* nul = std::memchr(bytes, '\0', width);
    return std::string(bytes, nul ? static_cast<const char*>(nul) - bytes : width);
}

bool fitsInt32(qint64 value) {
    return value >= std::numeric_limits<qint32>::min() && value <= std::numeric_limits<qint32>::max();
}

Failure unreadable() {
    return readError(unreadablePodText());
}

// Reads `length` bytes at `offset`; bytes past the end of the file read as zeros.
bool readAt(QIODevice& file, qint64 offset, qint64 length, std::string& out) {
    out.assign(static_cast<size_t>(length), '\0');
    if (!file.seek(offset))
        return offset >= file.size();
    qint64 done = 0;
    while (done < length) {
        const qint64 got = file.read(out.data() + done, length - done);
        if (got < 0)
            return false;
        if (got == 0)
            break;
        done += got;
    }
    return true;
}

struct Reader {
    QIODevice& file;
    PodDirectory& listing;
    qint32 sitSize = 0;
    qint32 sitStart = 0;

    std::optional<Failure> addRow(std::string name, qint32 size, qint32 start) {
        const qint64 end = qint64(start) + qint64(size);
        if (!fitsInt32(end))
            return unreadable();
        switch (classifyEntryName(name)) {
        case 1:
            sitSize = size;
            sitStart = start;
            ++listing.trackInfoCount;
            break;
        case 2:
            ++listing.truckCount;
            break;
        default:
            break;
        }
        listing.entries.push_back(PodEntry{std::move(name), size, start, static_cast<qint32>(end)});
        return std::nullopt;
    }

    std::optional<Failure> readPod1() {
        std::string header;
        if (!readAt(file, 0, kPod1Header, header))
            return podRuntimeFailure(75);
        listing.headerCount = int32At(header.data());
        listing.comment = textUpToNul(header.data() + 4, 80);
        const qint64 count = listing.headerCount;
        if (count <= 0)
            return std::nullopt;
        if (count > (listing.archiveSize - kPod1Header) / kPod1Record)
            return unreadable();
        listing.entries.reserve(static_cast<size_t>(count));
        std::string chunk;
        for (qint64 first = 0; first < count;) {
            const qint64 rows = std::min(count - first, kDirectoryChunk / kPod1Record);
            if (!readAt(file, kPod1Header + first * kPod1Record, rows * kPod1Record, chunk))
                return podRuntimeFailure(75);
            for (qint64 i = 0; i < rows; ++i) {
                const char* record = chunk.data() + i * kPod1Record;
                if (auto failure = addRow(textUpToNul(record, 32), int32At(record + 32), int32At(record + 36)))
                    return failure;
            }
            first += rows;
        }
        return std::nullopt;
    }

    std::optional<Failure> readPod2() {
        std::string header;
        if (!readAt(file, 0, kPod2Header + 12, header))
            return podRuntimeFailure(75);
        listing.comment = textUpToNul(header.data() + 8, 80);
        listing.headerCount = int32At(header.data() + 88);
        const qint64 count = listing.headerCount;
        const qint64 firstStart = int32At(header.data() + 104);
        // The name table runs up to the data of entry 0, less the last name's closing NUL.
        const qint64 recordBytes = kPod2Record * count;
        const qint64 nameLength = firstStart - recordBytes - (kPod2Header + 1);
        if (!fitsInt32(recordBytes) || !fitsInt32(firstStart - recordBytes) || !fitsInt32(nameLength))
            return unreadable();
        if (nameLength < 0)
            return podRuntimeFailure(5);
        const qint64 nameOffset = kPod2Header + recordBytes;
        if (nameOffset < 0)
            return podRuntimeFailure(63);
        if (nameOffset > listing.archiveSize || nameLength > listing.archiveSize - nameOffset)
            return unreadable();
        std::string table;
        if (!readAt(file, nameOffset, nameLength, table))
            return podRuntimeFailure(75);
        std::vector<std::string> names = splitText(table, '\0');
        if (count <= 0)
            return std::nullopt;
        if (static_cast<qint64>(names.size()) < count)
            return podRuntimeFailure(9);
        listing.entries.reserve(static_cast<size_t>(count));
        std::string chunk;
        for (qint64 first = 0; first < count;) {
            const qint64 rows = std::min(count - first, kDirectoryChunk / kPod2Record);
            if (!readAt(file, kPod2Header + first * kPod2Record, rows * kPod2Record, chunk))
                return podRuntimeFailure(75);
            for (qint64 i = 0; i < rows; ++i) {
                const char* record = chunk.data() + i * kPod2Record;
                if (auto failure = addRow(std::move(names[static_cast<size_t>(first + i)]), int32At(record + 4),
                                          int32At(record + 8)))
                    return failure;
            }
            first += rows;
        }
        return std::nullopt;
    }

    // Reads the track-information file: the editor and the race type it names.
    std::optional<Failure> readTrackInfo(std::string& editor, std::string& raceType) {
        if (sitSize == 0 || sitStart == 0)
            return std::nullopt;
        if (sitSize < 0)
            return podRuntimeFailure(5);
        if (sitStart < 0)
            return podRuntimeFailure(63);
        const qint64 available = std::max<qint64>(0, listing.archiveSize - sitStart);
        std::string text;
        if (!readAt(file, sitStart, std::min({qint64(sitSize), available, kTrackInfoLimit}), text))
            return podRuntimeFailure(75);
        std::vector<std::string> lines;
        size_t from = 0;
        for (size_t at; (at = text.find("\r\n", from)) != std::string::npos; from = at + 2)
            lines.push_back(text.substr(from, at - from));
        lines.push_back(text.substr(from));
        const size_t raceLine = listing.pod2 ? 12 : 18;
        if (lines.size() <= std::max<size_t>(raceLine, 4))
            return podRuntimeFailure(9);
        editor = (!listing.pod2 && lines[4] == "Traxxville USA") ? "Traxx" : "TrackEd";
        static const char* const kRaceTypes[] = {"Drag", "Circuit", "Rally", "Rumble", "Bomb Tag"};
        const std::string& code = lines[raceLine];
        raceType = "Unknown";
        if (code.size() == 1 && code[0] >= '1' && code[0] <= '5')
            raceType = kRaceTypes[code[0] - '1'];
        return std::nullopt;
    }
};

} // namespace

Failure podRuntimeFailure(int number) {
    QString description;
    switch (number) {
    case 5:
        description = QStringLiteral("Invalid procedure call or argument");
        break;
    case 9:
        description = QStringLiteral("Subscript out of range");
        break;
    case 53:
        description = QStringLiteral("File not found");
        break;
    case 61:
        description = QStringLiteral("Disk full");
        break;
    case 63:
        description = QStringLiteral("Bad record number");
        break;
    case 70:
        description = QStringLiteral("Permission denied");
        break;
    case 76:
        description = QStringLiteral("Path not found");
        break;
    default:
        number = 75;
        description = QStringLiteral("Path/File access error");
        break;
    }
    return unexpectedError(unexpectedErrorText(number, description));
}

QString unreadablePodText() {
    return QStringLiteral(
        "Sorry, but Korvel was unable to read this POD. Please note that POD3 files are not yet supported.");
}

std::string PodDirectory::sizeText() const {
    return AddCommas(static_cast<double>(archiveSize));
}

std::string PodDirectory::totalText() const {
    return AddCommas(headerCount);
}

int classifyEntryName(const std::string& name) {
    const std::string trimmed = trimTrailingBlanks(name);
    if (trimmed.size() < 4)
        return 0;
    const std::string tail = upperGame(std::string_view(trimmed).substr(trimmed.size() - 4));
    if (tail == ".SIT")
        return 1;
    return tail == ".TRK" ? 2 : 0;
}

Result<PodDirectory> ListPOD(const FileServices& files, const std::string& path) {
    const QString host = files.hostPath(path);
    QFile file(host);
    if (host.isEmpty() || !file.exists())
        return podRuntimeFailure(53);
    if (!file.open(QIODevice::ReadOnly))
        return podRuntimeFailure(70);
    Result<PodDirectory> listing = listPodFrom(file, path);
    if (!listing)
        qCInfo(lcPod) << "archive refused:" << host << listing.failure().message;
    return listing;
}

Result<PodDirectory> listPodFrom(QIODevice& archive, const std::string& path) {
    PodDirectory listing;
    listing.folder = FolderOf(path);
    listing.fileName = FileNameOf(path);
    listing.archiveSize = archive.size();

    std::string magic;
    if (!readAt(archive, 0, 4, magic))
        return podRuntimeFailure(75);
    listing.magic = magic;
    listing.pod2 = magic == "POD2";

    Reader reader{archive, listing};
    if (auto failure = listing.pod2 ? reader.readPod2() : reader.readPod1())
        return *failure;

    std::string editor;
    std::string raceType;
    if (auto failure = reader.readTrackInfo(editor, raceType))
        return *failure;

    const int sits = listing.trackInfoCount;
    const int trucks = listing.truckCount;
    if (sits == 1 && trucks == 0) {
        listing.editorText = editor;
        listing.typeText = raceType;
    } else if (sits == 0 && trucks > 0) {
        listing.editorText = "TrackEd";
        listing.typeText = "Truck";
    } else if (sits == 0 && trucks == 0) {
        listing.editorText = "Unknown";
        listing.typeText = "Other";
    } else {
        listing.editorText = "PODMate";
        listing.typeText = "Merged";
    }
    if (listing.pod2)
        listing.typeText += " (POD2)";
    return listing;
}

std::string AddCommas(double value) {
    if (!std::isfinite(value))
        return "0";
    const double rounded = std::round(value);
    if (rounded == 0)
        return "0";
    std::string digits;
    if (std::fabs(rounded) < 9.0e18)
        digits = std::to_string(static_cast<long long>(std::fabs(rounded)));
    else
        digits = QString::number(std::fabs(rounded), 'f', 0).toStdString();
    std::string out;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i != 0 && (digits.size() - i) % 3 == 0)
            out += ',';
        out += digits[i];
    }
    return rounded < 0 ? "-" + out : out;
}

QString secondsText(double seconds) {
    const double rounded = std::round(seconds * 100.0) / 100.0;
    QString text = QString::number(rounded, 'f', 2);
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text;
}

QString listedStatusText(const PodDirectory& listing, double seconds) {
    return QStringLiteral("Contents of ") + fromGameText(listing.fileName) + QStringLiteral(" listed in ") +
           secondsText(seconds) + QStringLiteral("s");
}

std::vector<const PodEntry*> displayOrder(const PodDirectory& listing, bool sorted) {
    std::vector<const PodEntry*> rows;
    rows.reserve(listing.entries.size());
    for (const PodEntry& entry : listing.entries)
        rows.push_back(&entry);
    if (sorted) {
        std::vector<std::pair<std::string, const PodEntry*>> keyed;
        keyed.reserve(rows.size());
        for (const PodEntry* entry : rows)
            keyed.emplace_back(upperGame(entry->name), entry);
        std::stable_sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        for (size_t i = 0; i < keyed.size(); ++i)
            rows[i] = keyed[i].second;
    }
    return rows;
}

} // namespace korvel
