#include "conflicts.h"

#include "mounted_archives.h"

#include "platform/game_text.h"
#include "pod/listing_rows.h"
#include "pod/pod_directory.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <unordered_set>

namespace korvel {

namespace {

constexpr quint32 kNone = std::numeric_limits<quint32>::max();
constexpr quint64 kEmptySlot = std::numeric_limits<quint64>::max();
constexpr qint64 kHashChunk = qint64(1) << 20;
constexpr size_t kPrefetchAhead = 16;

void prefetch(const void* address) {
#if defined(__GNUC__) || defined(__clang__)
    __builtin_prefetch(address);
#else
    (void)address;
#endif
}

// Each byte as the comparison sees it: upper case, "/" as "\".
struct FoldTable {
    std::array<char, 256> to{};
    FoldTable() {
        for (int i = 0; i < 256; ++i)
            to[static_cast<size_t>(i)] = i == '/' ? '\\' : upperGameChar(static_cast<char>(i));
    }
};

const FoldTable& foldTable() {
    static const FoldTable table;
    return table;
}

char foldChar(char c) {
    return foldTable().to[static_cast<unsigned char>(c)];
}

std::string_view trimmedView(std::string_view name) {
    const size_t first = name.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return name.substr(first, name.find_last_not_of(' ') - first + 1);
}

quint64 keyHash(std::string_view name) {
    const auto& fold = foldTable().to;
    quint64 h = 0xcbf29ce484222325ull;
    for (char c : trimmedView(name)) {
        h ^= static_cast<unsigned char>(fold[static_cast<unsigned char>(c)]);
        h *= 0x100000001b3ull;
    }
    return h;
}

bool sameKey(std::string_view a, std::string_view b) {
    a = trimmedView(a);
    b = trimmedView(b);
    if (a.size() != b.size())
        return false;
    const auto& fold = foldTable().to;
    for (size_t i = 0; i < a.size(); ++i)
        if (fold[static_cast<unsigned char>(a[i])] != fold[static_cast<unsigned char>(b[i])])
            return false;
    return true;
}

// Spreads the bits of a hash over the table's index.
quint64 mix(quint64 h) {
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdull;
    h ^= h >> 33;
    return h;
}

} // namespace

std::string conflictKey(std::string_view name) {
    std::string key(trimmedView(name));
    for (char& c : key)
        c = foldChar(c);
    return key;
}

bool sameContent(const ConflictHolder& a, const ConflictHolder& b) {
    return a.size == b.size && a.digest && b.digest && *a.digest == *b.digest;
}

// One archive's directory as the search needs it, kept while its file is unchanged.
struct ConflictFinder::Listing {
    QString host;
    qint64 fileSize = -1;
    qint64 modified = 0;
    bool ok = false;
    QString error;
    std::string names; // the entry names back to back
    std::vector<quint32> nameEnds;
    std::vector<quint64> hashes;
    std::vector<qint32> sizes;
    std::vector<qint32> starts;
    std::unordered_map<quint32, std::optional<ContentDigest>> digests;

    size_t count() const { return nameEnds.size(); }
    std::string_view name(size_t i) const {
        const quint32 from = i == 0 ? 0 : nameEnds[i - 1];
        return std::string_view(names).substr(from, nameEnds[i] - from);
    }
};

// The paths held by two or more rows, grouped once for a set of listings.
struct ConflictFinder::Index {
    struct Holder {
        int row;
        quint32 entry;
        std::optional<ContentDigest> digest; // when another holder has the same size
    };
    struct Group {
        std::string key;
        std::vector<Holder> holders; // by row
    };
    std::vector<std::shared_ptr<Listing>> rows; // the rows the groups were made for
    std::vector<Group> groups;                  // by key
};

ConflictFinder::ConflictFinder(const FileServices& files) : m_files(files) {}

ConflictFinder::~ConflictFinder() = default;

std::shared_ptr<ConflictFinder::Listing> ConflictFinder::listingFor(const std::string& archivePath, const QString& host,
                                                                    qint64 size, qint64 modified, bool& read) {
    read = false;
    auto it = m_cache.find(archivePath);
    if (it != m_cache.end() && it->second->fileSize == size && it->second->modified == modified &&
        it->second->host == host)
        return it->second;

    read = true;
    auto listing = std::make_shared<Listing>();
    listing->host = host;
    listing->fileSize = size;
    listing->modified = modified;
    const Result<PodDirectory> directory = ListPOD(m_files, archivePath);
    if (!directory) {
        listing->error = directory.failure().message;
    } else {
        listing->ok = true;
        const size_t count = rowCount(*directory);
        size_t bytes = 0;
        for (size_t i = 0; i < count; ++i)
            bytes += rowName(*directory, i).size();
        listing->names.reserve(bytes);
        listing->nameEnds.reserve(count);
        listing->hashes.reserve(count);
        listing->sizes.reserve(count);
        listing->starts.reserve(count);
        for (size_t i = 0; i < count; ++i) {
            const std::string_view name = rowName(*directory, i);
            listing->names.append(name);
            listing->nameEnds.push_back(static_cast<quint32>(listing->names.size()));
            listing->hashes.push_back(keyHash(name));
            listing->sizes.push_back(rowSize(*directory, i));
            listing->starts.push_back(rowStart(*directory, i));
        }
    }
    m_cache[archivePath] = listing;
    return listing;
}

void ConflictFinder::buildIndex(const std::vector<std::shared_ptr<Listing>>& rows) {
    auto index = std::make_unique<Index>();
    index->rows = rows;
    size_t total = 0;
    std::vector<size_t> base(rows.size(), 0);
    for (size_t r = 0; r < rows.size(); ++r) {
        base[r] = total;
        if (rows[r])
            total += rows[r]->count();
    }
    size_t capacity = 16;
    while (capacity < total + total / 3 + 1)
        capacity <<= 1;
    const size_t mask = capacity - 1;
    // One 8-byte slot per path: the upper half of its hash, and its latest entry (the chain's head).
    std::vector<quint64> table(capacity, kEmptySlot);
    std::vector<quint32> next(total, kNone);
    std::vector<quint32> refRow(total);
    std::vector<size_t> shared; // table slots that hold two or more entries

    auto refName = [&](quint32 ref) {
        const size_t row = refRow[ref];
        return rows[row]->name(ref - base[row]);
    };
    for (size_t r = 0; r < rows.size(); ++r) {
        const Listing* listing = rows[r].get();
        if (!listing)
            continue;
        const size_t count = listing->count();
        for (size_t e = 0; e < count; ++e) {
            // The table is far larger than the caches: ask for the slot a few entries ahead early.
            if (e + kPrefetchAhead < count)
                prefetch(&table[mix(listing->hashes[e + kPrefetchAhead]) & mask]);
            const auto ref = static_cast<quint32>(base[r] + e);
            refRow[ref] = static_cast<quint32>(r);
            const quint64 h = listing->hashes[e];
            const quint64 tag = h & 0xFFFFFFFF00000000ull;
            for (size_t slot = mix(h) & mask;; slot = (slot + 1) & mask) {
                const quint64 held = table[slot];
                if (held == kEmptySlot) {
                    table[slot] = tag | ref;
                    break;
                }
                const auto head = static_cast<quint32>(held);
                if ((held & 0xFFFFFFFF00000000ull) == tag && sameKey(refName(head), listing->name(e))) {
                    if (next[head] == kNone)
                        shared.push_back(slot);
                    next[ref] = head;
                    table[slot] = tag | ref;
                    break;
                }
            }
        }
    }

    std::vector<Index::Holder> holders;
    for (size_t slot : shared) {
        const auto head = static_cast<quint32>(table[slot]);
        holders.clear();
        for (quint32 ref = head; ref != kNone; ref = next[ref])
            holders.push_back(Index::Holder{static_cast<int>(refRow[ref]),
                                            static_cast<quint32>(ref - base[refRow[ref]]), std::nullopt});
        // One holder per row: the row's first entry of that path.
        std::sort(holders.begin(), holders.end(), [](const Index::Holder& a, const Index::Holder& b) {
            return a.row != b.row ? a.row < b.row : a.entry < b.entry;
        });
        holders.erase(std::unique(holders.begin(), holders.end(),
                                  [](const Index::Holder& a, const Index::Holder& b) { return a.row == b.row; }),
                      holders.end());
        if (holders.size() < 2)
            continue;
        index->groups.push_back(Index::Group{conflictKey(refName(head)), holders});
    }
    std::sort(index->groups.begin(), index->groups.end(),
              [](const Index::Group& a, const Index::Group& b) { return a.key < b.key; });
    m_index = std::move(index);
}

void ConflictFinder::hashNeeded() {
    const auto& rows = m_index->rows;
    auto sizeOf = [&](const Index::Holder& holder) {
        return rows[static_cast<size_t>(holder.row)]->sizes[holder.entry];
    };
    auto needed = [&](const Index::Group& group, const Index::Holder& holder) {
        return std::any_of(group.holders.begin(), group.holders.end(), [&](const Index::Holder& other) {
            return &other != &holder && sizeOf(other) == sizeOf(holder);
        });
    };
    std::map<Listing*, std::vector<quint32>> wanted;
    for (const Index::Group& group : m_index->groups) {
        for (const Index::Holder& holder : group.holders) {
            Listing* listing = rows[static_cast<size_t>(holder.row)].get();
            if (!holder.digest && needed(group, holder) && !listing->digests.count(holder.entry))
                wanted[listing].push_back(holder.entry);
        }
    }
    std::vector<char> buffer;
    for (auto& [listing, entries] : wanted) {
        std::sort(entries.begin(), entries.end(),
                  [listing = listing](quint32 a, quint32 b) { return listing->starts[a] < listing->starts[b]; });
        entries.erase(std::unique(entries.begin(), entries.end()), entries.end());
        QFile file(listing->host);
        const bool open = file.open(QIODevice::ReadOnly);
        for (quint32 entry : entries) {
            ++m_entriesHashed;
            std::optional<ContentDigest> digest;
            const qint64 start = listing->starts[entry];
            qint64 left = listing->sizes[entry];
            if (open && start >= 0 && left >= 0 && start + left <= listing->fileSize && file.seek(start)) {
                QCryptographicHash hash(QCryptographicHash::Sha256);
                while (left > 0) {
                    buffer.resize(static_cast<size_t>(std::min(left, kHashChunk)));
                    const qint64 got = file.read(buffer.data(), static_cast<qint64>(buffer.size()));
                    if (got <= 0)
                        break;
                    hash.addData(QByteArrayView(buffer.data(), got));
                    left -= got;
                }
                if (left == 0) {
                    const QByteArray result = hash.result();
                    digest.emplace();
                    std::copy(result.begin(), result.begin() + static_cast<qsizetype>(digest->size()), digest->begin());
                }
            }
            listing->digests[entry] = digest;
        }
    }
    for (Index::Group& group : m_index->groups) {
        for (Index::Holder& holder : group.holders) {
            if (holder.digest)
                continue;
            const Listing& listing = *rows[static_cast<size_t>(holder.row)];
            if (auto digest = listing.digests.find(holder.entry); digest != listing.digests.end())
                holder.digest = digest->second;
        }
    }
}

Result<ConflictReport> ConflictFinder::find(const std::string& gameFolder, const std::vector<std::string>& storedPaths,
                                            const WorkProgress& progress) {
    m_listingsRead = 0;
    m_entriesHashed = 0;
    ConflictReport report;
    report.archives.resize(storedPaths.size());
    std::vector<std::shared_ptr<Listing>> rows(storedPaths.size());
    std::unordered_set<std::string> used;
    const auto total = static_cast<qint64>(storedPaths.size());
    for (size_t i = 0; i < storedPaths.size(); ++i) {
        if (progress && !progress(static_cast<qint64>(i), total))
            return refused(cancelledText());
        ConflictArchive& archive = report.archives[i];
        archive.storedPath = storedPaths[i];
        const std::optional<LocatedArchive> found = locateMountedArchive(m_files, gameFolder, storedPaths[i]);
        if (!found) {
            archive.state = MountedArchiveState::NotFound;
            continue;
        }
        archive.archivePath = found->path;
        used.insert(found->path);
        bool read = false;
        std::shared_ptr<Listing> listing = listingFor(found->path, found->host, found->size, found->modified, read);
        m_listingsRead += read ? 1 : 0;
        if (!listing->ok) {
            archive.state = MountedArchiveState::Damaged;
            archive.error = listing->error;
            continue;
        }
        archive.state = MountedArchiveState::Listed;
        archive.entryCount = static_cast<int>(listing->count());
        rows[i] = std::move(listing);
    }
    for (auto it = m_cache.begin(); it != m_cache.end();)
        it = used.count(it->first) ? std::next(it) : m_cache.erase(it);

    // The same listings in another order keep their groups: only the rows are renumbered.
    std::vector<int> rowOf;
    if (m_index) {
        std::unordered_map<const Listing*, std::vector<int>> newRows;
        size_t listed = 0;
        for (size_t r = rows.size(); r-- > 0;) {
            if (rows[r]) {
                newRows[rows[r].get()].push_back(static_cast<int>(r));
                ++listed;
            }
        }
        rowOf.assign(m_index->rows.size(), -1);
        size_t matched = 0;
        for (size_t r = 0; r < m_index->rows.size(); ++r) {
            if (!m_index->rows[r])
                continue;
            auto it = newRows.find(m_index->rows[r].get());
            if (it == newRows.end() || it->second.empty())
                break;
            rowOf[r] = it->second.back();
            it->second.pop_back();
            ++matched;
        }
        if (matched != listed || std::count_if(m_index->rows.begin(), m_index->rows.end(), [](const auto& p) {
                                     return p != nullptr;
                                 }) != static_cast<std::ptrdiff_t>(listed))
            rowOf.clear();
    }
    if (rowOf.empty()) {
        buildIndex(rows);
        rowOf.resize(rows.size());
        for (size_t r = 0; r < rows.size(); ++r)
            rowOf[r] = static_cast<int>(r);
    }
    hashNeeded();

    report.paths.reserve(m_index->groups.size());
    for (const Index::Group& group : m_index->groups) {
        ConflictPath path;
        std::vector<std::pair<ConflictHolder, std::string_view>> holders;
        holders.reserve(group.holders.size());
        for (const Index::Holder& held : group.holders) {
            const Listing& listing = *m_index->rows[static_cast<size_t>(held.row)];
            ConflictHolder holder;
            holder.archive = rowOf[static_cast<size_t>(held.row)];
            holder.size = listing.sizes[held.entry];
            holder.digest = held.digest;
            holders.emplace_back(holder, listing.name(held.entry));
        }
        std::sort(holders.begin(), holders.end(),
                  [](const auto& a, const auto& b) { return a.first.archive < b.first.archive; });
        path.name = std::string(trimmedView(holders.front().second));
        path.identical = true;
        for (auto& [holder, name] : holders) {
            path.identical = path.identical && sameContent(holder, holders.front().first);
            path.holders.push_back(holder);
        }
        const int index = static_cast<int>(report.paths.size());
        for (const ConflictHolder& holder : path.holders) {
            ConflictArchive& archive = report.archives[static_cast<size_t>(holder.archive)];
            archive.paths.push_back(index);
            ++archive.sharedCount;
        }
        report.paths.push_back(std::move(path));
    }
    // Paths shared with each other row, counted in one array across the rows.
    std::vector<int> counts(report.archives.size(), 0);
    for (size_t row = 0; row < report.archives.size(); ++row) {
        ConflictArchive& archive = report.archives[row];
        if (archive.paths.empty())
            continue;
        for (int index : archive.paths)
            for (const ConflictHolder& other : report.paths[static_cast<size_t>(index)].holders)
                ++counts[static_cast<size_t>(other.archive)];
        for (size_t other = 0; other < counts.size(); ++other) {
            if (counts[other] != 0 && other != row)
                archive.sharedWith.emplace_back(static_cast<int>(other), counts[other]);
            counts[other] = 0;
        }
    }
    if (progress)
        progress(total, total);
    return report;
}

} // namespace korvel
