// Feeds arbitrary POD.INI texts to the mounted-list reader: the entries, their rows (short paths,
// display texts, the existence test) and the canonical rewrite, which must read back the same.
#include "mounter/pod_ini.h"
#include "platform/file_services.h"
#include "platform/path_map.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> entries = korvel::podIniEntries(text);
    for (const std::string& entry : entries) {
        if (entry.empty() || entry.find_first_of("\r\n") != std::string::npos)
            std::abort();
        (void)korvel::ArchiveDisplayName(entry);
    }
    if (korvel::podIniEntries(korvel::podIniText(entries)) != entries)
        std::abort();

    // No drives are mapped: every look-up of an absolute path fails at once, so this stays in memory.
    static const korvel::PathMap paths;
    static const korvel::FileServices files(paths);
    std::vector<std::string> some(entries.begin(), entries.begin() + std::min<size_t>(entries.size(), 16));
    for (auto& entry : some) {
        if (!entry.empty() && entry[0] != '\\' && !(entry.size() >= 2 && entry[1] == ':'))
            entry.insert(0, "C:\\"); // keep relative look-ups off the current folder
    }
    const std::vector<korvel::MountedEntry> rows = korvel::mountedEntriesFor(files, "C:\\GAME", "C:\\GAME\\", some);
    if (rows.size() != some.size())
        std::abort();
    return 0;
}
