#include "unmounted_scan.h"

#include "path_cache.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/short_path.h"
#include "pod_ini.h"

#include <algorithm>
#include <array>
#include <functional>

namespace korvel {

namespace {

// The mounted paths' keys in one flat open-addressing table. The scan asks once per archive found;
// a node-based set answers with several dependent cache misses (bucket, node, text), which made the
// scan of a large game folder grow faster than the folder once the set outgrew the cache.
class KeyTable {
public:
    explicit KeyTable(const PathKeySet& keys) {
        size_t size = 16;
        while (size < keys.size() * 2)
            size *= 2;
        m_slots.resize(size);
        m_mask = size - 1;
        for (const std::string& key : keys) {
            const size_t hash = std::hash<std::string>{}(key);
            size_t i = hash & m_mask;
            while (m_slots[i].key)
                i = (i + 1) & m_mask;
            m_slots[i] = {hash, &key}; // the set's elements stay where they are while it lives
        }
    }

    bool contains(const std::string& key) const {
        const size_t hash = std::hash<std::string>{}(key);
        for (size_t i = hash & m_mask; m_slots[i].key; i = (i + 1) & m_mask) {
            if (m_slots[i].hash == hash && *m_slots[i].key == key)
                return true;
        }
        return false;
    }

private:
    struct Slot {
        size_t hash = 0;
        const std::string* key = nullptr;
    };
    std::vector<Slot> m_slots;
    size_t m_mask = 0;
};

class Collector {
public:
    Collector(const FileServices& files, const ScanInputs& inputs, const PathKeySet& mounted)
        : m_files(files), m_mounted(mounted), m_paths(files, inputs.shortGameFolder) {}

    // Every name of `folder`\*.pod; `prefix` turns a name into the candidate path.
    void scan(const std::string& folder, const std::string& prefix) {
        // `prefix` is empty or ends in "\", which is never the first byte of a two-byte character:
        // the folder part upper-cases and shortens once for all its names.
        const std::string upperPrefix = upperGame(prefix);
        const std::string* shortFolder = m_paths.foldersAlone() ? &m_paths.shortFolder(upperPrefix) : nullptr;
        for (const std::string& name : m_files.search(folder + "\\*.pod", SearchFilter::NormalFiles)) {
            if (!hasPodSuffix(name))
                continue;
            const std::string upperName = upperGame(name);
            add(shortFolder ? *shortFolder + upperName : m_paths.shortPath(upperPrefix + upperName));
        }
    }

    std::vector<MountedEntry> take() { return std::move(m_rows); }

private:
    void add(std::string path) {
        MountedEntry row;
        row.path = std::move(path);
        if (m_mounted.contains(upperGame(row.path)))
            return;
        row.text = ArchiveDisplayName(row.path);
        row.status = std::string(kStatusUnmounted);
        m_rows.push_back(std::move(row));
    }

    const FileServices& m_files;
    KeyTable m_mounted;
    PathCache m_paths;
    std::vector<MountedEntry> m_rows;
};

} // namespace

std::string displaySortKey(std::string_view text) {
    // Ignoring case, with punctuation before digits and digits before letters, as the list views
    // of the desktop sort: "\ADDON\X.POD" comes before "ZETA.POD".
    static const std::array<unsigned char, 256> weight = [] {
        std::array<unsigned char, 256> table{};
        int next = 0;
        auto isAlnum = [](int c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
        for (int c = 0; c < 0x80; ++c) {
            if (!isAlnum(c))
                table[static_cast<size_t>(c)] = static_cast<unsigned char>(next++);
        }
        for (int c = '0'; c <= '9'; ++c)
            table[static_cast<size_t>(c)] = static_cast<unsigned char>(next++);
        for (int c = 'A'; c <= 'Z'; ++c)
            table[static_cast<size_t>(c)] = static_cast<unsigned char>(next++);
        for (int c = 0x80; c < 0x100; ++c)
            table[static_cast<size_t>(c)] = static_cast<unsigned char>(c);
        return table;
    }();
    std::string key;
    key.reserve(text.size());
    for (char c : text)
        key += static_cast<char>(weight[static_cast<unsigned char>(upperGameChar(c))]);
    return key;
}

PathKeySet pathKeys(const std::vector<MountedEntry>& rows) {
    PathKeySet keys;
    keys.reserve(rows.size() * 2);
    for (const MountedEntry& row : rows)
        keys.insert(upperGame(row.path));
    return keys;
}

std::vector<MountedEntry> ScanUnmounted(const FileServices& files, const ScanInputs& inputs,
                                        const PathKeySet& mounted) {
    Collector collector(files, inputs, mounted);
    const std::string& game = inputs.gameFolder;

    // The game folder itself (its "." entry) and its first-level subfolders, in search order.
    for (const std::string& folder : files.search(game + "\\*", SearchFilter::Folders)) {
        if (folder == "..")
            continue;
        if (folder == ".")
            collector.scan(game, std::string());
        else
            collector.scan(game + "\\" + folder, folder + "\\");
    }

    const std::string gamePrefix = upperGame(game) + "\\";
    for (std::string folder : inputs.extraDirs) {
        if (!folder.empty() && folder.back() == '\\')
            folder.pop_back();
        if (folder.empty() || folder.find('\0') != std::string::npos)
            continue; // names no folder
        const std::string prefix = replaceAll(upperGame(folder), gamePrefix, "") + "\\";
        collector.scan(folder, prefix);
    }

    std::vector<MountedEntry> rows = collector.take();
    std::vector<std::pair<std::string, size_t>> keys;
    keys.reserve(rows.size());
    for (size_t i = 0; i < rows.size(); ++i)
        keys.emplace_back(displaySortKey(rows[i].text), i);
    std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<MountedEntry> sorted;
    sorted.reserve(rows.size());
    for (const auto& key : keys)
        sorted.push_back(std::move(rows[key.second]));
    return sorted;
}

} // namespace korvel
