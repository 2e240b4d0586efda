#include "pod_format.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <numeric>

namespace korvel {

namespace {

constexpr long long kDirectoryChunk = 256LL << 10; // directory bytes read per call
constexpr long long kNameChunk = 64LL << 10;       // name-table bytes read per call
constexpr long long kTrackInfoLimit = 16LL << 20;  // a track-information file is a few kilobytes

std::int32_t int32At(const char* bytes) {
    const auto* b = reinterpret_cast<const unsigned char*>(bytes);
    const std::uint32_t value =
        std::uint32_t(b[0]) | std::uint32_t(b[1]) << 8 | std::uint32_t(b[2]) << 16 | std::uint32_t(b[3]) << 24;
    return static_cast<std::int32_t>(value);
}

std::string_view textUpToNul(const char* bytes, size_t width) {
    const void* nul = std::memchr(bytes, '\0', width);
    return std::string_view(bytes, nul ? static_cast<size_t>(static_cast<const char*>(nul) - bytes) : width);
}

bool fitsInt32(long long value) {
    return value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max();
}

PodParseError unreadable() {
    return PodParseError{PodParseError::Unreadable, 0, 0};
}

PodParseError runtime(int number) {
    return PodParseError{PodParseError::Runtime, 0, number};
}

// Reads exactly `length` bytes at `offset` into `out`; bytes past the end of the file read as zeros.
bool readInto(PodSource& source, long long offset, long long length, char* out) {
    const long long done = source.readAt(offset, out, length);
    if (done < 0)
        return false;
    std::memset(out + done, 0, size_t(length - done));
    return true;
}

// The same into `out`, which is reused between calls of the same length.
bool readAt(PodSource& source, long long offset, long long length, std::string& out) {
    out.resize(static_cast<size_t>(length));
    return readInto(source, offset, length, out.data());
}

} // namespace

void PodEntries::add(std::string_view name, std::int32_t size, std::int32_t start) {
    m_rows.push_back(
        Row{static_cast<std::uint32_t>(m_names.size()), static_cast<std::uint32_t>(name.size()), size, start});
    m_names.append(name);
}

void PodEntries::clear() {
    m_rows.clear();
    m_names.clear();
}

struct PodReader {
    PodSource& file;
    PodDirectory& listing;
    std::int32_t sitSize = 0;
    std::int32_t sitStart = 0;

    // Gives the row its numbers and classifies its name.
    std::optional<PodParseError> finishRow(size_t index, std::int32_t size, std::int32_t start) {
        if (!fitsInt32(static_cast<long long>(start) + size))
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

    static std::optional<PodParseError> checkCount(long long count) {
        if (count > kMaxPodEntries)
            return PodParseError{PodParseError::TooManyEntries, count, 0};
        return std::nullopt;
    }

    std::optional<PodParseError> readPod1() {
        std::string header;
        if (!readAt(file, 0, kPod1Header, header))
            return runtime(75);
        listing.headerCount = int32At(header.data());
        listing.comment = std::string(textUpToNul(header.data() + 4, 80));
        const long long count = listing.headerCount;
        if (count <= 0)
            return std::nullopt;
        if (count > (listing.archiveSize - kPod1Header) / kPod1Record)
            return unreadable();
        if (auto failure = checkCount(count))
            return failure;
        PodEntries& entries = listing.entries;
        entries.m_rows.reserve(static_cast<size_t>(count));
        std::string chunk;
        for (long long first = 0; first < count;) {
            const long long rows = std::min(count - first, kDirectoryChunk / kPod1Record);
            if (!readAt(file, kPod1Header + first * kPod1Record, rows * kPod1Record, chunk))
                return runtime(75);
            for (long long i = 0; i < rows; ++i) {
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
    std::optional<PodParseError> readNames(long long offset, long long length, long long count) {
        PodEntries& entries = listing.entries;
        entries.m_rows.reserve(static_cast<size_t>(count));
        // The table is read straight into the name buffer, its NUL bytes left between the names.
        std::string& names = entries.m_names;
        // Room for the first piece only: a table grows the buffer as its bytes really arrive, never
        // by what the header claims.
        names.reserve(size_t(std::min({length, count * (kMaxPodNameLength + 1), kNameChunk})));
        size_t nameStart = 0;
        const auto addName = [&](size_t end) {
            entries.m_rows.push_back(PodEntries::Row{static_cast<std::uint32_t>(nameStart),
                                                     static_cast<std::uint32_t>(end - nameStart), 0, 0});
            nameStart = end + 1;
        };
        for (long long done = 0; done < length;) {
            const long long piece = std::min(length - done, kNameChunk);
            const size_t base = names.size();
            names.resize(base + size_t(piece));
            if (!readInto(file, offset + done, piece, names.data() + base))
                return runtime(75);
            done += piece;
            size_t at = base;
            while (at < names.size()) {
                const void* nul = std::memchr(names.data() + at, '\0', names.size() - at);
                if (!nul)
                    break;
                const size_t end = size_t(static_cast<const char*>(nul) - names.data());
                if (static_cast<long long>(end - nameStart) > kMaxPodNameLength)
                    return unreadable();
                addName(end);
                if (static_cast<long long>(entries.m_rows.size()) == count) {
                    names.resize(end); // nothing beyond the last name wanted is kept
                    if (names.capacity() - names.size() > names.size() / 4 + 4096)
                        names.shrink_to_fit();
                    return std::nullopt;
                }
                at = end + 1;
            }
            if (static_cast<long long>(names.size() - std::min(nameStart, names.size())) > kMaxPodNameLength)
                return unreadable();
        }
        addName(std::max(names.size(), nameStart)); // the text after the last NUL is one more name
        if (static_cast<long long>(entries.m_rows.size()) < count)
            return runtime(9);
        return std::nullopt;
    }

    std::optional<PodParseError> readPod2() {
        std::string header;
        if (!readAt(file, 0, kPod2Header + 12, header))
            return runtime(75);
        listing.comment = std::string(textUpToNul(header.data() + 8, 80));
        listing.headerCount = int32At(header.data() + 88);
        const long long count = listing.headerCount;
        const long long firstStart = int32At(header.data() + 104);
        // The name table runs up to the data of entry 0, less the last name's closing NUL.
        const long long recordBytes = kPod2Record * count;
        const long long nameLength = firstStart - recordBytes - (kPod2Header + 1);
        if (!fitsInt32(recordBytes) || !fitsInt32(firstStart - recordBytes) || !fitsInt32(nameLength))
            return unreadable();
        if (nameLength < 0)
            return runtime(5);
        const long long nameOffset = kPod2Header + recordBytes;
        if (nameOffset < 0)
            return runtime(63);
        if (nameOffset > listing.archiveSize || nameLength > listing.archiveSize - nameOffset)
            return unreadable();
        if (count <= 0)
            return std::nullopt;
        if (auto failure = checkCount(count))
            return failure;
        if (auto failure = readNames(nameOffset, nameLength, count))
            return failure;
        std::string chunk;
        for (long long first = 0; first < count;) {
            const long long rows = std::min(count - first, kDirectoryChunk / kPod2Record);
            if (!readAt(file, kPod2Header + first * kPod2Record, rows * kPod2Record, chunk))
                return runtime(75);
            for (long long i = 0; i < rows; ++i) {
                const char* record = chunk.data() + i * kPod2Record;
                if (auto failure = finishRow(size_t(first + i), int32At(record + 4), int32At(record + 8)))
                    return failure;
            }
            first += rows;
        }
        return std::nullopt;
    }

    // Reads the track-information file: the editor and the race type it names.
    std::optional<PodParseError> readTrackInfo(std::string& editor, std::string& raceType) {
        if (sitSize == 0 || sitStart == 0)
            return std::nullopt;
        if (sitSize < 0)
            return runtime(5);
        if (sitStart < 0)
            return runtime(63);
        const long long available = std::max<long long>(0, listing.archiveSize - sitStart);
        std::string text;
        if (!readAt(file, sitStart, std::min({static_cast<long long>(sitSize), available, kTrackInfoLimit}), text))
            return runtime(75);
        std::vector<std::string> lines;
        size_t from = 0;
        for (size_t at; (at = text.find("\r\n", from)) != std::string::npos; from = at + 2)
            lines.push_back(text.substr(from, at - from));
        lines.push_back(text.substr(from));
        const size_t raceLine = listing.pod2 ? 12 : 18;
        if (lines.size() <= std::max<size_t>(raceLine, 4))
            return runtime(9);
        editor = (!listing.pod2 && lines[4] == "Traxxville USA") ? "Traxx" : "TrackEd";
        static const char* const kRaceTypes[] = {"Drag", "Circuit", "Rally", "Rumble", "Bomb Tag"};
        const std::string& code = lines[raceLine];
        raceType = "Unknown";
        if (code.size() == 1 && code[0] >= '1' && code[0] <= '5')
            raceType = kRaceTypes[code[0] - '1'];
        return std::nullopt;
    }
};

std::optional<PodParseError> parsePodDirectory(PodSource& source, PodDirectory& listing) {
    listing.archiveSize = source.size();
    std::string magic;
    if (!readAt(source, 0, 4, magic))
        return runtime(75);
    listing.magic = magic;
    listing.pod2 = magic == "POD2";

    PodReader reader{source, listing};
    if (auto failure = listing.pod2 ? reader.readPod2() : reader.readPod1())
        return failure;

    std::string editor;
    std::string raceType;
    if (auto failure = reader.readTrackInfo(editor, raceType))
        return failure;

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
    return std::nullopt;
}

std::string PodDirectory::sizeText() const {
    std::string text;
    appendWithCommas(text, archiveSize);
    return text;
}

std::string PodDirectory::totalText() const {
    std::string text;
    appendWithCommas(text, headerCount);
    return text;
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

char* writeWithCommas(char* out, long long value) {
    if (value < 0)
        *out++ = '-';
    unsigned long long rest =
        value < 0 ? 0 - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
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

void appendWithCommas(std::string& out, long long value) {
    char text[kMaxGroupedLength];
    out.append(text, size_t(writeWithCommas(text, value) - text));
}

std::vector<std::uint32_t> podDisplayOrder(const PodEntries& entries, bool sorted, char (*upper)(char)) {
    std::vector<std::uint32_t> rows(entries.size());
    std::iota(rows.begin(), rows.end(), std::uint32_t(0));
    if (!sorted)
        return rows;
    // Upper-case every name once, into one buffer laid out as the names are.
    std::vector<std::string_view> keys(entries.size());
    std::string upperNames;
    size_t total = 0;
    for (size_t i = 0; i < entries.size(); ++i)
        total += entries.nameAt(i).size();
    upperNames.reserve(total);
    for (size_t i = 0; i < entries.size(); ++i) {
        for (char c : entries.nameAt(i))
            upperNames += upper(c);
    }
    for (size_t i = 0, at = 0; i < entries.size(); ++i) {
        const size_t length = entries.nameAt(i).size();
        keys[i] = std::string_view(upperNames).substr(at, length);
        at += length;
    }
    std::stable_sort(rows.begin(), rows.end(), [&keys](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    return rows;
}

bool isPlainAscii(std::string_view text) {
    unsigned char high = 0;
    for (char c : text)
        high |= static_cast<unsigned char>(c);
    return high < 0x80;
}

bool listingIsPlainAscii(const PodDirectory& listing) {
    if (!isPlainAscii(listing.comment) || !isPlainAscii(listing.typeText) || !isPlainAscii(listing.editorText))
        return false;
    for (size_t i = 0; i < listing.entries.size(); ++i)
        if (!isPlainAscii(listing.entries.nameAt(i)))
            return false;
    return true;
}

PodOutput::PodOutput(std::FILE* stream) : m_stream(stream), m_data(new char[kCapacity]) {}

PodOutput::~PodOutput() {
    flush();
}

void PodOutput::write(const char* data, size_t length) {
    if (length == 0 || m_error != 0)
        return;
    if (std::fwrite(data, 1, length, m_stream) != length)
        m_error = errno != 0 ? errno : EIO;
}

void PodOutput::append(std::string_view text) {
    if (text.size() > kCapacity - m_size) {
        write(m_data.get(), m_size);
        m_size = 0;
        if (text.size() > kCapacity) {
            write(text.data(), text.size());
            return;
        }
    }
    std::memcpy(m_data.get() + m_size, text.data(), text.size());
    m_size += text.size();
}

char* PodOutput::room(size_t length) {
    if (length > kCapacity - m_size) {
        write(m_data.get(), m_size);
        m_size = 0;
    }
    return m_data.get() + m_size;
}

bool PodOutput::flush() {
    write(m_data.get(), m_size);
    m_size = 0;
    if (m_error == 0 && std::fflush(m_stream) != 0)
        m_error = errno != 0 ? errno : EIO;
    return m_error == 0;
}

bool writePodTextListing(const PodDirectory& listing, const std::vector<std::uint32_t>& rows, PodOutput& output,
                         GameTextAppender convert) {
    std::string head;
    const auto text = [&](std::string_view gameText) {
        if (isPlainAscii(gameText))
            head.append(gameText);
        else
            convert(head, gameText);
    };
    head += "POD Name: ";
    text(listing.nameText());
    head += "\nPOD Size: ";
    appendWithCommas(head, listing.archiveSize);
    head += "\nPOD Type: ";
    text(listing.typeText);
    head += "\nEditor Used: ";
    text(listing.editorText);
    head += "\nTotal Files: ";
    appendWithCommas(head, listing.headerCount);
    head += "\n\n";
    output.append(head);

    const PodEntries& entries = listing.entries;
    std::string converted;
    for (std::uint32_t row : rows) {
        const PodEntry entry = entries[row];
        char* at = output.room(entry.name.size() + 3 * (kMaxGroupedLength + 1));
        unsigned char high = 0;
        for (char c : entry.name) {
            high |= static_cast<unsigned char>(c);
            *at++ = c;
        }
        if (high >= 0x80) { // not plain ASCII: converted from the game's code page
            output.commit(at - entry.name.size());
            converted.clear();
            convert(converted, entry.name);
            output.append(converted);
            at = output.room(3 * (kMaxGroupedLength + 1));
        }
        *at++ = '\t';
        at = writeWithCommas(at, entry.size);
        *at++ = '\t';
        at = writeWithCommas(at, entry.start);
        *at++ = '\t';
        at = writeWithCommas(at, entry.end);
        *at++ = '\n';
        output.commit(at);
    }
    return output.flush();
}

std::string listingWriteFailureText(int errorNumber) {
    return std::string("korvel-cli list: the listing could not be written (") + std::strerror(errorNumber) + ").";
}

} // namespace korvel
