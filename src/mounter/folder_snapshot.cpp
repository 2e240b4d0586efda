#include "folder_snapshot.h"

#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/short_path.h"
#include "pod_ini.h"

namespace korvel {

FolderSnapshot::FolderSnapshot(const FileServices& files, std::string shortGameFolder)
    : m_files(files), m_shortGameFolder(std::move(shortGameFolder)) {}

const FolderListing& FolderSnapshot::listing(std::string_view folder) {
    auto it = m_listings.find(folder);
    if (it == m_listings.end()) {
        std::string key(folder);
        FolderListing read = m_files.readFolder(key);
        it = m_listings.emplace(std::move(key), std::move(read)).first;
    }
    return it->second;
}

std::string FolderSnapshot::shortPath(std::string_view path) {
    // Shortening only ever changes the folder part, and the game folder's short form ends in "\",
    // so it can only be found (and taken out) inside the folder part: the folder can be done alone.
    if (!foldersAlone())
        return ShortPath(m_files, m_shortGameFolder, std::string(path), false);
    const size_t slash = path.rfind('\\');
    const size_t nameStart = slash == std::string_view::npos ? 0 : slash + 1;
    const std::string& folder = shortFolder(path.substr(0, nameStart));
    std::string result;
    result.reserve(folder.size() + path.size() - nameStart);
    result += folder;
    result += path.substr(nameStart);
    return result;
}

const std::string& FolderSnapshot::shortFolder(std::string_view folder) {
    auto it = m_shortFolders.find(folder);
    if (it == m_shortFolders.end()) {
        std::string key(folder);
        std::string shortForm = ShortPath(m_files, m_shortGameFolder, key, true);
        it = m_shortFolders.emplace(std::move(key), std::move(shortForm)).first;
    }
    return it->second;
}

bool FolderSnapshot::listed(std::string_view folder, std::string_view name) {
    const FolderListing& entries = listing(folder);
    const std::string key = upperGame(win32Name(name));
    const FolderListing::Entry* entry = entries.find(key);
    if (!entry)
        return false;
    for (const FolderListing::Entry* end = entries.entries.data() + entries.entries.size();
         entry != end && entry->key == key; ++entry) {
        if (entry->file || entry->dir)
            return true;
    }
    return false;
}

bool FolderSnapshot::entryExists(const std::string& gameFolder, const std::string& entry) {
    // Wildcards, "." / ".." and empty components mean more than a name in a folder: ask the system.
    const bool plain = entry.find_first_of("*?") == std::string::npos && entry.find("\\\\") == std::string::npos &&
                       entry.find("\\.") == std::string::npos && entry.rfind('.', 0) != 0 &&
                       !FileNameOf(entry).empty() &&
                       (!isAbsoluteGamePath(entry) || (entry.size() > 2 && entry[2] == '\\'));
    if (!plain)
        return archiveEntryExists(m_files, gameFolder, entry);
    const size_t slash = entry.rfind('\\');
    const size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    const std::string_view name = std::string_view(entry).substr(nameStart);
    const std::string_view folder = std::string_view(entry).substr(0, nameStart);
    m_folder.assign(gameFolder);
    m_folder += '\\';
    m_folder += folder;
    return listed(m_folder, name) || listed(folder, name);
}

} // namespace korvel
