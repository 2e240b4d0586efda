#pragma once

#include "platform/file_services.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace korvel {

// Short paths and existence tests for many archives at once: each folder is shortened once and
// listed once, instead of once per archive. Lives for one load or one scan, so it never serves a
// stale answer across user actions.
class PathCache {
public:
    PathCache(const FileServices& files, std::string shortGameFolder);

    // ShortPath(path, false): the folder part in short form, the file name as written.
    std::string shortPath(const std::string& path);
    // The same for many names of one folder ("FOLDER\" or ""): shortPath(folder + name) is
    // shortFolder(folder) + name when foldersAlone(), which holds for a game folder given with its "\".
    bool foldersAlone() const { return m_shortGameFolder.empty() || m_shortGameFolder.back() == '\\'; }
    const std::string& shortFolder(const std::string& folder);

    // The existence test of a POD.INI entry: game folder + "\" + entry, or the entry itself,
    // names an existing file or folder (ignoring case).
    bool entryExists(const std::string& gameFolder, const std::string& entry);

private:
    bool listed(const std::string& path);

    const FileServices& m_files;
    std::string m_shortGameFolder;
    std::unordered_map<std::string, std::string> m_shortFolders;                 // folder part -> short form
    std::unordered_map<std::string, std::unordered_set<std::string>> m_listings; // upper folder -> upper names
};

} // namespace korvel
