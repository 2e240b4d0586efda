#include "unmounted_scan.h"

#include "platform/game_path.h"
#include "platform/game_text.h"
#include "pod_ini.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>

namespace korvel {

namespace {

// The mounted paths' upper-case keys in one buffer, found through a flat open-addressing table.
// The scan asks once per archive found; a node-based set answers with several dependent cache
// misses (bucket, node, text), which made the scan of a large game folder grow faster than the
// folder once the set outgrew the cache.
class KeyTable {
public:
    explicit KeyTable(const std::vector<MountedEntry>& rows) {
        size_t size = 16;
        while (size < rows.size() * 2)
            size *= 2;
        m_slots.resize(size);
        m_mask = size - 1;
        size_t bytes = 0;
        for (const MountedEntry& row : rows)
            bytes += row.path.size();
        m_keys.reserve(bytes);
        for (const MountedEntry& row : rows)
            m_keys += upperGame(row.path);
        size_t offset = 0;
        for (const MountedEntry& row : rows) {
            const std::string_view key(m_keys.data() + offset, row.path.size());
            offset += row.path.size();
            const size_t hash = std::hash<std::string_view>{}(key);
            size_t i = hash & m_mask;
            while (m_slots[i].used) {
                if (m_slots[i].hash == hash && keyAt(m_slots[i]) == key)
                    break; // the same path twice
                i = (i + 1) & m_mask;
            }
            m_slots[i] = {hash, static_cast<uint32_t>(key.data() - m_keys.data()), static_cast<uint32_t>(key.size()),
                          true};
        }
    }

    bool contains(std::string_view key) const {
        const size_t hash = std::hash<std::string_view>{}(key);
        for (size_t i = hash & m_mask; m_slots[i].used; i = (i + 1) & m_mask) {
            if (m_slots[i].hash == hash && keyAt(m_slots[i]) == key)
                return true;
        }
        return false;
    }

private:
    struct Slot {
        size_t hash = 0;
        uint32_t offset = 0;
        uint32_t size = 0;
        bool used = false;
    };
    std::string_view keyAt(const Slot& slot) const { return {m_keys.data() + slot.offset, slot.size}; }

    std::string m_keys;
    std::vector<Slot> m_slots;
    size_t m_mask = 0;
};

class Collector {
public:
    Collector(FolderSnapshot& folders, const std::vector<MountedEntry>& mounted, size_t capacity)
        : m_folders(folders), m_mounted(mounted) {
        m_rows.reserve(capacity);
    }

    // Every "*.pod" name of `folder`; `prefix` turns a name into the candidate path.
    void scan(const std::string& folder, const std::string& prefix) {
        const FolderListing& listing = m_folders.listing(folder + "\\");
        // `prefix` is empty or ends in "\", which is never the first byte of a two-byte character:
        // the folder part upper-cases and shortens once for all its names, and so do the mounted
        // key and the display text when the short folder ends where a name can start.
        const std::string upperPrefix = upperGame(prefix);
        const std::string* shortFolder = m_folders.foldersAlone() ? &m_folders.shortFolder(upperPrefix) : nullptr;
        std::string upperShort, displayPrefix;
        bool joined = false;
        if (shortFolder) {
            upperShort = upperGame(*shortFolder);
            joined = upperShort.empty() || upperShort.back() == '\\';
            displayPrefix = ArchiveDisplayName(*shortFolder);
        }
        for (const FolderListing::Entry& entry : listing.entries) {
            // The key is the upper-cased name: it ends in ".POD" exactly when the name has the suffix.
            if (!entry.file || !entry.key.ends_with(".POD"))
                continue;
            // The stored path keeps the short folder and the upper-cased name.
            const std::string_view name = entry.key;
            const bool whole = joined && name.find('\\') == std::string_view::npos;
            if (whole) {
                m_key.assign(upperShort);
                m_key += name;
                if (m_mounted.contains(m_key))
                    continue;
                MountedEntry& row = m_rows.emplace_back();
                row.path.reserve(shortFolder->size() + name.size());
                row.path += *shortFolder;
                row.path += name;
                row.text.reserve(displayPrefix.size() + name.size());
                row.text += displayPrefix;
                row.text += name;
                row.status = kStatusUnmounted;
            } else {
                std::string path =
                    shortFolder ? *shortFolder + entry.key : m_folders.shortPath(upperPrefix + entry.key);
                if (m_mounted.contains(upperGame(path)))
                    continue;
                MountedEntry& row = m_rows.emplace_back();
                row.text = ArchiveDisplayName(path);
                row.path = std::move(path);
                row.status = kStatusUnmounted;
            }
        }
    }

    std::vector<MountedEntry> take() { return std::move(m_rows); }

private:
    FolderSnapshot& m_folders;
    KeyTable m_mounted;
    std::vector<MountedEntry> m_rows;
    std::string m_key; // scratch: the mounted key of a candidate
};

// Ignoring case, with punctuation before digits and digits before letters, as the list views of
// the desktop sort: "\ADDON\X.POD" comes before "ZETA.POD". One byte of a display text weighs
// sortWeights()[byte], compared byte by byte.
std::array<unsigned char, 256> sortWeights() {
    std::array<unsigned char, 256> weight{};
    int next = 0;
    auto isAlnum = [](int c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    for (int c = 0; c < 0x80; ++c) {
        if (!isAlnum(c))
            weight[static_cast<size_t>(c)] = static_cast<unsigned char>(next++);
    }
    for (int c = '0'; c <= '9'; ++c)
        weight[static_cast<size_t>(c)] = static_cast<unsigned char>(next++);
    for (int c = 'A'; c <= 'Z'; ++c)
        weight[static_cast<size_t>(c)] = static_cast<unsigned char>(next++);
    for (int c = 0x80; c < 0x100; ++c)
        weight[static_cast<size_t>(c)] = static_cast<unsigned char>(c);
    // Folded with the code page's upper-casing, byte by byte.
    std::array<unsigned char, 256> folded{};
    for (int c = 0; c < 0x100; ++c)
        folded[static_cast<size_t>(c)] = weight[static_cast<unsigned char>(upperGameChar(static_cast<char>(c)))];
    return folded;
}

// `rows` in the order of their display texts; rows with equal keys keep their order.
std::vector<MountedEntry> sortedByDisplay(std::vector<MountedEntry> rows) {
    const std::array<unsigned char, 256> weight = sortWeights();
    // Every key in one buffer, and an index array sorted instead of the rows.
    size_t bytes = 0;
    for (const MountedEntry& row : rows)
        bytes += row.text.size();
    std::string keys;
    struct Key {
        size_t offset;
        size_t size;
        size_t row;
    };
    std::vector<Key> order;
    order.reserve(rows.size());
    keys.resize(bytes);
    char* out = keys.data();
    for (size_t i = 0; i < rows.size(); ++i) {
        order.push_back({static_cast<size_t>(out - keys.data()), rows[i].text.size(), i});
        for (char c : rows[i].text)
            *out++ = static_cast<char>(weight[static_cast<unsigned char>(c)]);
    }
    const char* base = keys.data();
    std::stable_sort(order.begin(), order.end(), [base](const Key& a, const Key& b) {
        return std::string_view(base + a.offset, a.size) < std::string_view(base + b.offset, b.size);
    });
    // The rows move into that order in place, a cycle of the permutation at a time.
    constexpr size_t kPlaced = SIZE_MAX;
    for (size_t start = 0; start < order.size(); ++start) {
        if (order[start].row == kPlaced || order[start].row == start)
            continue;
        MountedEntry held = std::move(rows[start]);
        size_t at = start;
        while (order[at].row != start) {
            const size_t from = order[at].row;
            rows[at] = std::move(rows[from]);
            order[at].row = kPlaced;
            at = from;
        }
        rows[at] = std::move(held);
        order[at].row = kPlaced;
    }
    return rows;
}

} // namespace

std::vector<MountedEntry> ScanUnmounted(FolderSnapshot& folders, const ScanInputs& inputs,
                                        const std::vector<MountedEntry>& mounted) {
    const std::string& game = inputs.gameFolder;
    // The folders to scan with the prefix that turns a name into a candidate path: the game folder
    // itself (its "." entry) and its first-level subfolders in search order, then the extra folders.
    std::vector<std::pair<std::string, std::string>> scanned;
    for (const std::string& folder : folders.listing(game + "\\").search("*", SearchFilter::Folders)) {
        if (folder == "..")
            continue;
        if (folder == ".")
            scanned.emplace_back(game, std::string());
        else
            scanned.emplace_back(game + "\\" + folder, folder + "\\");
    }
    const std::string gamePrefix = upperGame(game) + "\\";
    for (std::string folder : inputs.extraDirs) {
        if (!folder.empty() && folder.back() == '\\')
            folder.pop_back();
        if (folder.empty() || folder.find('\0') != std::string::npos)
            continue; // names no folder
        std::string prefix = replaceAll(upperGame(folder), gamePrefix, "") + "\\";
        scanned.emplace_back(std::move(folder), std::move(prefix));
    }

    // Every folder is read first, so the rows are allocated once.
    size_t entries = 0;
    for (const auto& [folder, prefix] : scanned)
        entries += folders.listing(folder + "\\").entries.size();
    Collector collector(folders, mounted, entries);
    for (const auto& [folder, prefix] : scanned)
        collector.scan(folder, prefix);

    return sortedByDisplay(collector.take());
}

} // namespace korvel
