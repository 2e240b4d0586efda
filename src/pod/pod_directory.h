#pragma once

#include "platform/file_services.h"
#include "platform/result.h"

#include <QIODevice>
#include <QString>
#include <QtGlobal>

#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

struct PodReader;

// One stored file of an archive, as its directory record gives it. The name views the listing's
// name buffer: it stays valid while the listing it came from is alive and unchanged.
struct PodEntry {
    std::string_view name; // game text as stored; may hold "\" separators
    qint32 size = 0;
    qint32 start = 0; // byte offset of the data from the start of the archive
    qint32 end = 0;   // start + size
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
    qint32 sizeAt(size_t index) const { return m_rows[index].size; }
    qint32 startAt(size_t index) const { return m_rows[index].start; }
    qint32 endAt(size_t index) const { return endOf(m_rows[index]); }
    const_iterator begin() const { return const_iterator(this, 0); }
    const_iterator end() const { return const_iterator(this, m_rows.size()); }

    // Adds a row; start + size must fit in 32 bits (the reader refuses rows where it does not).
    void add(std::string_view name, qint32 size, qint32 start);
    void reserve(size_t rows) { m_rows.reserve(rows); }
    void clear();
    // Bytes held for the rows and the names.
    size_t memoryBytes() const { return m_rows.capacity() * sizeof(Row) + m_names.capacity(); }

private:
    struct Row {
        quint32 nameOffset;
        quint32 nameLength;
        qint32 size;
        qint32 start;
    };
    static qint32 endOf(const Row& row) { return static_cast<qint32>(qint64(row.start) + row.size); }
    friend struct PodReader;

    std::string m_names;
    std::vector<Row> m_rows;
};

// Everything one listing of an archive yields. The Extractor's list, its information boxes, the
// export, extraction and the command line all work from this value; nothing reads the directory twice.
struct PodDirectory {
    std::string folder;   // with its trailing "\"
    std::string fileName; // the archive's file name
    bool pod2 = false;
    std::string magic;   // the first four bytes as read
    std::string comment; // up to its first NUL
    qint64 archiveSize = 0;
    qint32 headerCount = 0;
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

// The name the rest of the program knows a listing by.
using PodListing = PodDirectory;

// The most entries a listing holds. Real archives hold a few thousand; a directory claiming more
// than this is refused with tooManyEntriesText() before anything is read, so a small download can
// never make a listing take gigabytes.
inline constexpr qint64 kMaxPodEntries = qint64(1) << 20;
// The longest entry name a listing keeps; a longer one makes the archive unreadable.
inline constexpr qint64 kMaxPodNameLength = 4096;

// The general unexpected-error report for a run-time fault with the old runtime's error number
// (5 invalid argument, 9 subscript, 53 file not found, 63 bad record, 70 permission, 75 access...).
Failure podRuntimeFailure(int number);

// The message for an archive that cannot be read as POD1 or POD2.
QString unreadablePodText();
// "This POD lists 107,374,182 files, more than Korvel can show."
QString tooManyEntriesText(qint64 count);

// Lists the archive at `path` (a game path). Overflowing or impossible directories fail with a
// ReadError carrying unreadablePodText(); more than kMaxPodEntries entries with a ReadError carrying
// tooManyEntriesText(); other faults with the general unexpected-error report.
Result<PodDirectory> ListPOD(const FileServices& files, const std::string& path);

// The same listing from an open, seekable device holding the archive (named `path`).
Result<PodDirectory> listPodFrom(QIODevice& archive, const std::string& path);

// Classifies a trimmed, upper-cased entry name: 1 for a track-information file, 2 for a truck, 0 else.
int classifyEntryName(std::string_view name);

// Digit grouping with "," and "0" for zero (the program reads its own display back by removing ",").
std::string AddCommas(double value);
// The same grouping of an integer, appended to `out` without any other allocation.
void appendWithCommas(std::string& out, qint64 value);
// The same into a buffer with room for kMaxGroupedLength characters; returns the end of the text.
inline constexpr size_t kMaxGroupedLength = 27; // "-9,223,372,036,854,775,808"
char* writeWithCommas(char* out, qint64 value);

// Seconds rounded to two decimals in the ordinary number-to-text form (0.5, 2, 0.27).
QString secondsText(double seconds);

// "Contents of TRUCKS.POD listed in 0.05s"
QString listedStatusText(const PodDirectory& listing, double seconds);

// The row indices in the order the list shows them: directory order, or by name ignoring case
// (ties in directory order) when sorted, as Autosort does.
std::vector<quint32> displayOrder(const PodDirectory& listing, bool sorted);

} // namespace korvel
