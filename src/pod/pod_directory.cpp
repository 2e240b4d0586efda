#include "pod_directory.h"

#include "platform/diagnostics.h"
#include "platform/dialogs.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <optional>

namespace korvel {

namespace {

constexpr qint64 kPod1Header = 84;
constexpr qint64 kPod1Record = 40;
constexpr qint64 kPod2Header = 96;
constexpr qint64 kPod2Record = 20;
constexpr qint64 kDirectoryChunk = qint64(256) << 10; // directory bytes read per call
constexpr qint64 kNameChunk = qint64(64) << 10;       // name-table bytes read per call
constexpr qint64 kTrackInfoLimit = qint64(16) << 20;  // a track-information file is a few kilobytes

qint32 int32At(const char* bytes) {
    quint32 value = 0;
    std::memcpy(&value, bytes, 4);
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
    value = qFromLittleEndian(value);
#endif
    return static_cast<qint32>(value);
}

std::string_view textUpToNul(const char* bytes, size_t width) {
    const void* nul = std::memchr(bytes, '\0', width);
    return std::string_view(bytes, nul ? static_cast<size_t>(static_cast<const char*>(nul) - bytes) : width);
}

bool fitsInt32(qint64 value) {
    return value >= std::numeric_limits<qint32>::min() && value <= std::numeric_limits<qint32>::max();
}

Failure unreadable() {
    return readError(unreadablePodText());
}

// Reads `length` bytes at `offset`; bytes past the end of the file read as zeros. `out` is reused
// between calls of the same length, so it is not cleared first.
bool readAt(QIODevice& file, qint64 offset, qint64 length, std::string& out) {
    out.resize(static_cast<size_t>(length));
    qint64 done = 0;
    if (!file.seek(offset)) {
        if (offset < file.size())
            return false;
    } else {
        while (done < length) {
            const qint64 got = file.read(out.data() + done, length - done);
            if (got < 0)
                return false;
            if (got == 0)
                break;
            done += got;
        }
    }
    std::memset(out.data() + done, 0, size_t(length - done));
    return true;
}

// Reads exactly `length` bytes at `offset` into `out`; bytes past the end of the file read as zeros.
bool readInto(QIODevice& file, qint64 offset, qint64 length, char* out) {
    qint64 done = 0;
    if (file.seek(offset)) {
        while (done < length) {
            const qint64 got = file.read(out + done, length - done);
            if (got < 0)
                return false;
            if (got == 0)
                break;
            done += got;
        }
    } else if (offset < file.size()) {
        return false;
    }
    std::memset(out + done, 0, size_t(length - done));
    return true;
}

} // namespace

void PodEntries::add(std::string_view name, qint32 size, qint32 start) {
    m_rows.push_back(Row{static_cast<quint32>(m_names.size()), static_cast<quint32>(name.size()), size, start});
    m_names.append(name);
}

void PodEntries::clear() {
    m_rows.clear();
    m_names.clear();
}

struct PodReader {
    QIODevice& file;
    PodDirectory& listing;
    qint32 sitSize = 0;
    qint32 sitStart = 0;

    // Gives the row its numbers and classifies its name.
    std::optional<Failure> finishRow(size_t index, qint32 size, qint32 start) {
        if (!fitsInt32(qint64(start) + qint64(size)))
            return unreadable();
        PodEntries::Row& row = listing.entries.m_rows[index];
        row.size = size;
        row.start = start;
        switch (classifyEntryName(listing.entries.nameAt(index))) {
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
        return std::nullopt;
    }

    std::optional<Failure> checkCount(qint64 count) const {
        if (count > kMaxPodEntries)
            return readError(tooManyEntriesText(count));
        return std::nullopt;
    }

    std::optional<Failure> readPod1() {
        std::string header;
        if (!readAt(file, 0, kPod1Header, header))
            return podRuntimeFailure(75);
        listing.headerCount = int32At(header.data());
        listing.comment = std::string(textUpToNul(header.data() + 4, 80));
        const qint64 count = listing.headerCount;
        if (count <= 0)
            return std::nullopt;
        if (count > (listing.archiveSize - kPod1Header) / kPod1Record)
            return unreadable();
        if (auto failure = checkCount(count))
            return failure;
        PodEntries& entries = listing.entries;
        entries.m_rows.reserve(static_cast<size_t>(count));
        std::string chunk;
        for (qint64 first = 0; first < count;) {
            const qint64 rows = std::min(count - first, kDirectoryChunk / kPod1Record);
            if (!readAt(file, kPod1Header + first * kPod1Record, rows * kPod1Record, chunk))
                return podRuntimeFailure(75);
            for (qint64 i = 0; i < rows; ++i) {
                const char* record = chunk.data() + i * kPod1Record;
                entries.add(textUpToNul(record, 32), 0, 0);
                if (auto failure = finishRow(entries.size() - 1, int32At(record + 32), int32At(record + 36)))
                    return failure;
            }
            first += rows;
        }
        return std::nullopt;
    }

    // Splits the name table at NUL bytes into the names of the first `count` rows, reading it piece by
    // piece and stopping at the last name wanted: the table's length never decides what is held.
    std::optional<Failure> readNames(qint64 offset, qint64 length, qint64 count) {
        PodEntries& entries = listing.entries;
        entries.m_rows.reserve(static_cast<size_t>(count));
        // The table is read straight into the name buffer, its NUL bytes left between the names.
        std::string& names = entries.m_names;
        // Room for the first piece only: a table grows the buffer as its bytes really arrive, never
        // by what the header claims.
        names.reserve(size_t(std::min({length, count * (kMaxPodNameLength + 1), kNameChunk})));
        size_t nameStart = 0;
        const auto addName = [&](size_t end) {
            entries.m_rows.push_back(
                PodEntries::Row{static_cast<quint32>(nameStart), static_cast<quint32>(end - nameStart), 0, 0});
            nameStart = end + 1;
        };
        for (qint64 done = 0; done < length;) {
            const qint64 piece = std::min(length - done, kNameChunk);
            const size_t base = names.size();
            names.resize(base + size_t(piece));
            if (!readInto(file, offset + done, piece, names.data() + base))
                return podRuntimeFailure(75);
            done += piece;
            size_t at = base;
            while (at < names.size()) {
                const void* nul = std::memchr(names.data() + at, '\0', names.size() - at);
                if (!nul)
                    break;
                const size_t end = size_t(static_cast<const char*>(nul) - names.data());
                if (qint64(end - nameStart) > kMaxPodNameLength)
                    return unreadable();
                addName(end);
                if (qint64(entries.m_rows.size()) == count) {
                    names.resize(end); // nothing beyond the last name wanted is kept
                    if (names.capacity() - names.size() > names.size() / 4 + 4096)
                        names.shrink_to_fit();
                    return std::nullopt;
                }
                at = end + 1;
            }
            if (qint64(names.size() - std::min(nameStart, names.size())) > kMaxPodNameLength)
                return unreadable();
        }
        addName(std::max(names.size(), nameStart)); // the text after the last NUL is one more name
        if (qint64(entries.m_rows.size()) < count)
            return podRuntimeFailure(9);
        return std::nullopt;
    }

    std::optional<Failure> readPod2() {
        std::string header;
        if (!readAt(file, 0, kPod2Header + 12, header))
            return podRuntimeFailure(75);
        listing.comment = std::string(textUpToNul(header.data() + 8, 80));
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
        if (count <= 0)
            return std::nullopt;
        if (auto failure = checkCount(count))
            return failure;
        if (auto failure = readNames(nameOffset, nameLength, count))
            return failure;
        std::string chunk;
        for (qint64 first = 0; first < count;) {
            const qint64 rows = std::min(count - first, kDirectoryChunk / kPod2Record);
            if (!readAt(file, kPod2Header + first * kPod2Record, rows * kPod2Record, chunk))
                return podRuntimeFailure(75);
            for (qint64 i = 0; i < rows; ++i) {
                const char* record = chunk.data() + i * kPod2Record;
                if (auto failure = finishRow(size_t(first + i), int32At(record + 4), int32At(record + 8)))
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

QString tooManyEntriesText(qint64 count) {
    std::string number;
    appendWithCommas(number, count);
    return QStringLiteral("This POD lists %1 files, more than Korvel can show.").arg(QString::fromLatin1(number));
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

int classifyEntryName(std::string_view name) {
    while (!name.empty() && name.back() == ' ')
        name.remove_suffix(1);
    if (name.size() < 4 || name[name.size() - 4] != '.')
        return 0;
    // The letters compared are ASCII, which the game's upper-casing maps by clearing bit 5 alone.
    const auto is = [&name](const char* tail) {
        for (size_t i = 0; i < 3; ++i)
            if ((name[name.size() - 3 + i] | 0x20) != tail[i])
                return false;
        return true;
    };
    return is("sit") ? 1 : is("trk") ? 2 : 0;
}

Result<PodDirectory> ListPOD(const FileServices& files, const std::string& path) {
    const QString host = files.hostPath(path);
    QFile file(host);
    if (host.isEmpty() || !file.exists())
        return podRuntimeFailure(53);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
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

    PodReader reader{archive, listing};
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

namespace {

// "000" to "999", three characters each.
constexpr std::array<char, 3000> kTriples = [] {
    std::array<char, 3000> table{};
    for (int i = 0; i < 1000; ++i) {
        table[size_t(i) * 3] = char('0' + i / 100);
        table[size_t(i) * 3 + 1] = char('0' + i / 10 % 10);
        table[size_t(i) * 3 + 2] = char('0' + i % 10);
    }
    return table;
}();

// 0 to 999 without leading zeros.
char* writeLeadingGroup(char* out, unsigned value) {
    const int skip = value >= 100 ? 0 : value >= 10 ? 1 : 2;
    std::memcpy(out, kTriples.data() + value * 3 + skip, 3);
    return out + 3 - skip;
}

} // namespace

char* writeWithCommas(char* out, qint64 value) {
    if (value < 0)
        *out++ = '-';
    quint64 rest = value < 0 ? 0 - quint64(value) : quint64(value);
    unsigned groups[7];
    int count = 0;
    while (rest >= 1000) {
        groups[count++] = unsigned(rest % 1000);
        rest /= 1000;
    }
    out = writeLeadingGroup(out, unsigned(rest));
    while (count > 0) {
        *out = ',';
        std::memcpy(out + 1, kTriples.data() + groups[--count] * 3, 3);
        out += 4;
    }
    return out;
}

void appendWithCommas(std::string& out, qint64 value) {
    char text[kMaxGroupedLength];
    out.append(text, size_t(writeWithCommas(text, value) - text));
}

std::string AddCommas(double value) {
    if (!std::isfinite(value))
        return "0";
    const double rounded = std::round(value);
    if (rounded == 0)
        return "0";
    std::string out;
    if (std::fabs(rounded) < 9.0e18) {
        appendWithCommas(out, static_cast<qint64>(rounded));
        return out;
    }
    const std::string digits = QString::number(std::fabs(rounded), 'f', 0).toStdString();
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

std::vector<quint32> displayOrder(const PodDirectory& listing, bool sorted) {
    const PodEntries& entries = listing.entries;
    std::vector<quint32> rows(entries.size());
    std::iota(rows.begin(), rows.end(), quint32(0));
    if (!sorted)
        return rows;
    // Upper-case every name once, into one buffer laid out as the names are.
    std::vector<std::string_view> keys(entries.size());
    std::string upper;
    size_t total = 0;
    for (size_t i = 0; i < entries.size(); ++i)
        total += entries.nameAt(i).size();
    upper.reserve(total);
    for (size_t i = 0; i < entries.size(); ++i) {
        for (char c : entries.nameAt(i))
            upper += upperGameChar(c);
    }
    for (size_t i = 0, at = 0; i < entries.size(); ++i) {
        const size_t length = entries.nameAt(i).size();
        keys[i] = std::string_view(upper).substr(at, length);
        at += length;
    }
    std::stable_sort(rows.begin(), rows.end(), [&keys](quint32 a, quint32 b) { return keys[a] < keys[b]; });
    return rows;
}

} // namespace korvel
