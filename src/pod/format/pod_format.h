#pragma once

// The POD directory reader, its numbers and the plain-text listing, in plain C++ without Qt: the
// command-line launcher lists an archive with it before any library of the full program is loaded,
// and the full program lists through the same code.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// One stored file of an archive, as its directory record gives it. The name views the listing's
// name buffer: it stays valid while the listing it came from is alive and unchanged.
struct PodEntry {
    std::string_view name; // game text as stored; may hold "\" separators
    std::int32_t size = 0;
    std::int32_t start = 0; // byte offset of the data from the start of the archive
    std::int32_t end = 0;   // start + size
};

// The rows of a listing, kept compact: every name in one buffer, the numbers as integers (16 bytes a
// row besides the name's bytes). Texts with thousands separators are made only when a row is shown.
class PodEntries {
public:
    class const_iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = PodEntry;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = PodEntry;

        const_iterator() = default;
        const_iterator(const PodEntries* rows, size_t index) : m_rows(rows), m_index(index) {}
        PodEntry operator*() const { return (*m_rows)[m_index]; }
        const_iterator& operator++() { return ++m_index, *this; }
        const_iterator operator++(int) { return const_iterator(m_rows, m_index++); }
        const_iterator& operator+=(difference_type n) { return m_index += size_t(n), *this; }
        const_iterator operator+(difference_type n) const { return const_iterator(m_rows, m_index + size_t(n)); }
        difference_type operator-(const const_iterator& other) const {
            return difference_type(m_index) - difference_type(other.m_index);
        }
        bool operator==(const const_iterator& other) const { return m_index == other.m_index; }
        bool operator!=(const const_iterator& other) const { return m_index != other.m_index; }

    private:
        const PodEntries* m_rows = nullptr;
        size_t m_index = 0;
    };

    size_t size() const { return m_rows.size(); }
    bool empty() const { return m_rows.empty(); }
    PodEntry operator[](size_t index) const {
        const Row& row = m_rows[index];
        return PodEntry{nameAt(index), row.size, row.start, endOf(row)};
    }
    std::string_view nameAt(size_t index) const {
        const Row& row = m_rows[index];
        return std::string_view(m_names).substr(row.nameOffset, row.nameLength);
    }
    std::int32_t sizeAt(size_t index) const { return m_rows[index].size; }
    std::int32_t startAt(size_t index) const { return m_rows[index].start; }
    std::int32_t endAt(size_t index) const { return endOf(m_rows[index]); }
    const_iterator begin() const { return const_iterator(this, 0); }
    const_iterator end() const { return const_iterator(this, m_rows.size()); }

    // Adds a row; start + size must fit in 32 bits (the reader refuses rows where it does not).
    void add(std::string_view name, std::int32_t size, std::int32_t start);
    void reserve(size_t rows) { m_rows.reserve(rows); }
    void clear();
    // Bytes held for the rows and the names.
    size_t memoryBytes() const { return m_rows.capacity() * sizeof(Row) + m_names.capacity(); }

private:
    struct Row {
        std::uint32_t nameOffset;
        std::uint32_t nameLength;
        std::int32_t size;
        std::int32_t start;
    };
    static std::int32_t endOf(const Row& row) { return static_cast<std::int32_t>(std::int64_t(row.start) + row.size); }
    friend struct PodReader;

    std::string m_names;
    std::vector<Row> m_rows;
};

// Everything one listing of an archive yields. The Extractor's list, its information boxes, the
// export, extraction and the command line all work from this value; nothing reads the directory twice.
// (`long long` is the type the rest of the program knows as qint64.)
struct PodDirectory {
    std::string folder;   // with its trailing "\"
    std::string fileName; // the archive's file name
    bool pod2 = false;
    std::string magic;   // the first four bytes as read
    std::string comment; // up to its first NUL
    long long archiveSize = 0;
    std::int32_t headerCount = 0;
    PodEntries entries;     // directory order
    int trackInfoCount = 0; // entries ending in ".SIT"
    int truckCount = 0;     // entries ending in ".TRK"
    std::string typeText;   // "Truck", "Rally (POD2)", "Merged", ...
    std::string editorText; // "TrackEd", "Traxx", "PODMate", "Unknown"

    std::string path() const { return folder + fileName; }
    std::string formatName() const { return pod2 ? "POD2" : "POD1"; }
    // The texts of the information boxes.
    std::string nameText() const { return comment; }
    std::string sizeText() const;
    std::string totalText() const;
};

// The directory's layout: a POD1 header of 84 bytes (count, 80-byte comment) and records of 40 bytes
// (32-byte name, size, offset); a POD2 header of 96 bytes and records of 20 bytes (name offset,
// size, offset, time, checksum) followed by the name table.
inline constexpr long long kPod1Header = 84;
inline constexpr long long kPod1Record = 40;
inline constexpr long long kPod2Header = 96;
inline constexpr long long kPod2Record = 20;

// The most entries a listing holds. Real archives hold a few thousand; a directory claiming more
// than this is refused before anything is read, so a small download can never make a listing take
// gigabytes.
inline constexpr long long kMaxPodEntries = 1LL << 20;
// The longest entry name a listing keeps; a longer one makes the archive unreadable.
inline constexpr long long kMaxPodNameLength = 4096;

// The archive's bytes, read at any offset.
class PodSource {
public:
    virtual ~PodSource() = default;
    virtual long long size() const = 0;
    // Reads up to `length` bytes at `offset` into `out`: the count read (0 at or past the end of the
    // file, fewer near it), or -1 on a fault.
    virtual long long readAt(long long offset, char* out, long long length) = 0;
};

// Why a directory could not be listed.
struct PodParseError {
    enum Kind {
        Unreadable, // not a POD1 or POD2 directory, or one that overflows the file
        TooManyEntries,
        Runtime, // the old runtime's error `number` (5 invalid argument, 9 subscript, 63, 75 access)
    };
    Kind kind = Unreadable;
    long long count = 0; // the entries claimed, for TooManyEntries
    int number = 0;      // for Runtime
};

// Reads the directory of the archive in `source` into `listing` (all but its folder and file name):
// rows, comment, counts, type and editor.
std::optional<PodParseError> parsePodDirectory(PodSource& source, PodDirectory& listing);

// Classifies a trimmed, upper-cased entry name: 1 for a track-information file, 2 for a truck, 0 else.
int classifyEntryName(std::string_view name);

// Digit grouping with "," ("0" for zero), appended to `out` without any other allocation.
void appendWithCommas(std::string& out, long long value);
// The same into a buffer with room for kMaxGroupedLength characters; returns the end of the text.
inline constexpr size_t kMaxGroupedLength = 27; // "-9,223,372,036,854,775,808"
char* writeWithCommas(char* out, long long value);

// The row indices in the order the list shows them: directory order, or by name ignoring case
// (ties in directory order) when sorted. `upper` upper-cases one byte of game text.
std::vector<std::uint32_t> podDisplayOrder(const PodEntries& entries, bool sorted, char (*upper)(char));

// True when every byte is below 0x80.
bool isPlainAscii(std::string_view text);
// True when the comment and every entry name are plain ASCII: text no code page changes.
bool listingIsPlainAscii(const PodDirectory& listing);

// A stream written through one large buffer, handed to the system in large pieces.
class PodOutput {
public:
    explicit PodOutput(std::FILE* stream);
    ~PodOutput();
    PodOutput(const PodOutput&) = delete;
    PodOutput& operator=(const PodOutput&) = delete;

    void append(std::string_view text);
    // Room for `length` (a few kilobytes at most) more characters: write them at the pointer
    // returned, then commit() the end of what was written.
    char* room(size_t length);
    void commit(const char* end) { m_size = size_t(end - m_data.get()); }
    // Writes out what is buffered and flushes the stream; false once any write has failed, with
    // errorNumber() the system's reason.
    bool flush();
    int errorNumber() const { return m_error; }

private:
    void write(const char* data, size_t length);

    static constexpr size_t kCapacity = size_t(256) << 10;
    std::FILE* m_stream;
    std::unique_ptr<char[]> m_data;
    size_t m_size = 0;
    int m_error = 0;
};

// Appends game text that is not plain ASCII to `out` in the output's encoding (UTF-8).
using GameTextAppender = void (*)(std::string& out, std::string_view gameText);

// The listing as text: the "POD Name:", "POD Size:", "POD Type:", "Editor Used:" and "Total Files:"
// lines, a blank line, then one line a row in `rows` order: name, size, start and end separated by
// tabs, the numbers with thousands separators. Text that is not plain ASCII goes through `convert`.
// Returns false when writing failed (see PodOutput::flush).
bool writePodTextListing(const PodDirectory& listing, const std::vector<std::uint32_t>& rows, PodOutput& output,
                         GameTextAppender convert);

// The message for a listing that could not be written: "korvel-cli list: the listing could not be
// written (No space left on device)."
std::string listingWriteFailureText(int errorNumber);

} // namespace korvel
