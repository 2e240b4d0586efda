#include "path_cache.h"

#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/short_path.h"
#include "pod_ini.h"

namespace korvel {

PathCache::PathCache(const FileServices& files, std::string shortGameFolder)
    : m_files(files), m_shortGameFolder(std::move(shortGameFolder)) {}

std::string PathCache::shortPath(const std::string& path) {
    // Shortening only ever changes the folder part, and the game folder's short form ends in "\",
    // so it can only be found (and taken out) inside the folder part: the folder can be done alone.
    if (!foldersAlone())
        return ShortPath(m_files, m_shortGameFolder, path, false);
    return shortFolder(FolderOf(path)) + FileNameOf(path);
}

const std::string& PathCache::shortFolder(const std::string& folder) {
    auto it = m_shortFolders.find(folder);
    if (it == m_shortFolders.end())
        it = m_shortFolders.emplace(folder, ShortPath(m_files, m_shortGameFolder, folder, true)).first;
    return it->second;
}

bool PathCache::listed(const std::string& path) {
    const std::string folder = FolderOf(path);
    auto it = m_listings.find(upperGame(folder));
    if (it == m_listings.end()) {
        std::unordered_set<std::string> names;
        for (const std::string& name : m_files.search(folder + "*", SearchFilter::FilesAndFolders))
            names.insert(upperGame(name));
        it = m_listings.emplace(upperGame(folder), std::move(names)).first;
    }
    return it->second.count(upperGame(win32Name(FileNameOf(path)))) > 0;
}

bool PathCache::entryExists(const std::string& gameFolder, const std::string& entry) {
    // Wildcards, "." / ".." and empty components mean more than a name in a folder: ask the system.
    const bool plain = entry.find_first_of("*?") == std::string::npos && entry.find("\\\\") == std::string::npos &&
                       entry.find("\\.") == std::string::npos && entry.rfind('.', 0) != 0 &&
                       !FileNameOf(entry).empty() &&
                       (!isAbsoluteGamePath(entry) || (entry.size() > 2 && entry[2] == '\\'));
    if (!plain)
        return archiveEntryExists(m_files, gameFolder, entry);
    return listed(gameFolder + "\\" + entry) || listed(entry);
}

} // namespace korvel
