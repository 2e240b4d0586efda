#pragma once

#include "platform/file_services.h"
#include "platform/result.h"
#include "pod/pod_pack.h"

#include <QString>
#include <QtGlobal>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace korvel {

// A stored path as the game compares paths: any case, "/" read as "\", blanks at either end ignored.
std::string conflictKey(std::string_view name);

using ContentDigest = std::array<unsigned char, 32>; // SHA-256 of an entry's data

enum class MountedArchiveState {
    Listed,   // its directory was read
    NotFound, // no file at the entry's path
    Damaged,  // the listing failed (error holds its text)
};

// One row of the mounted list and what it shares with the others.
struct ConflictArchive {
    std::string storedPath;  // as POD.INI holds it
    std::string archivePath; // the game path it was found at; empty when not found
    MountedArchiveState state = MountedArchiveState::NotFound;
    QString error;
    int entryCount = 0;
    int sharedCount = 0; // how many of its paths other mounted archives also hold
    // (other archive's row, number of paths both hold), by row.
    std::vector<std::pair<int, int>> sharedWith;
    std::vector<int> paths; // indices into ConflictReport::paths of the paths it holds
};

struct ConflictHolder {
    int archive = 0; // row in the mounted list (mount order: a lower row is loaded earlier)
    qint32 size = 0;
    // Present when another holder of the path has the same size and the data could be read.
    std::optional<ContentDigest> digest;
};

// True when both holders are known to store the same bytes.
bool sameContent(const ConflictHolder& a, const ConflictHolder& b);

struct ConflictPath {
    std::string name;                    // as the earliest holder stores it, blanks trimmed
    std::vector<ConflictHolder> holders; // mount order, one per mounted row
    bool identical = false;              // every holder stores the same bytes
};

struct ConflictReport {
    std::vector<ConflictArchive> archives; // one per mounted row, in mount order
    std::vector<ConflictPath> paths;       // paths held by two or more rows, sorted by conflictKey
};

// Finds the paths that two or more mounted archives hold. Listings (and the digests of entries
// compared) are kept between calls, keyed by the archive's path, size and modification time, so a
// second call after the list was reordered, or after a few archives changed, reads only what
// changed; a reorder alone does not regroup the paths either.
class ConflictFinder {
public:
    explicit ConflictFinder(const FileServices& files);
    ~ConflictFinder();
    ConflictFinder(const ConflictFinder&) = delete;
    ConflictFinder& operator=(const ConflictFinder&) = delete;

    // `storedPaths` are the mounted list's stored paths in mount order. `progress` counts archives;
    // cancelling fails with cancelledText().
    Result<ConflictReport> find(const std::string& gameFolder, const std::vector<std::string>& storedPaths,
                                const WorkProgress& progress = {});

    // Archives whose directory the last find() read from disk (the others came from the cache).
    int listingsRead() const { return m_listingsRead; }
    // Entries whose data the last find() read to compare.
    int entriesHashed() const { return m_entriesHashed; }

private:
    struct Listing;
    struct Index;

    std::shared_ptr<Listing> listingFor(const std::string& archivePath, const QString& host, qint64 size,
                                        qint64 modified, bool& read);
    void buildIndex(const std::vector<std::shared_ptr<Listing>>& rows);
    void hashNeeded();

    const FileServices& m_files;
    std::unordered_map<std::string, std::shared_ptr<Listing>> m_cache;
    std::unique_ptr<Index> m_index;
    int m_listingsRead = 0;
    int m_entriesHashed = 0;
};

} // namespace korvel
