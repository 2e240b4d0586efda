#pragma once

#include "platform/file_services.h"

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace korvel {

// The folders of a game as one refresh of the lists sees them: each folder is listed once and
// shortened once, however many mounted entries or unmounted archives ask about it. Lives for one
// load, one scan, or one refresh of both lists together, so it never serves a stale answer across
// user actions.
class FolderSnapshot {
public:
    FolderSnapshot(const FileServices& files, std::string shortGameFolder);

    // The listing of `folder` (a game path ending in "\", or empty for the current folder), read
    // on first use.
    const FolderListing& listing(std::string_view folder);

    // ShortPath(path, false): the folder part in short form, the file name as written.
    std::string shortPath(std::string_view path);
    // The same for many names of one folder ("FOLDER\" or ""): shortPath(folder + name) is
    // shortFolder(folder) + name when foldersAlone(), which holds for a game folder given with its "\".
    bool foldersAlone() const { return m_shortGameFolder.empty() || m_shortGameFolder.back() == '\\'; }
    const std::string& shortFolder(std::string_view folder);

    // The existence test of a POD.INI entry: game folder + "\" + entry, or the entry itself,
    // names an existing file or folder (ignoring case).
    bool entryExists(const std::string& gameFolder, const std::string& entry);

private:
    // `folder` lists a file or folder named `name`, ignoring case.
    bool listed(std::string_view folder, std::string_view name);

    struct TextHash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    template <typename Value> using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

    const FileServices& m_files;
    std::string m_shortGameFolder;
    TextMap<std::string> m_shortFolders; // folder part -> short form
    TextMap<FolderListing> m_listings;   // folder as written -> its entries
    std::string m_folder;                // scratch: the folder an entry names
};

} // namespace korvel
