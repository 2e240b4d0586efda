#include "pod_ini.h"

#include "folder_snapshot.h"

#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/short_path.h"

namespace korvel {

std::string ArchiveDisplayName(std::string_view path) {
    const size_t last = path.rfind('\\');
    if (last == std::string_view::npos)
        return std::string(path);
    const size_t before = last == 0 ? std::string_view::npos : path.rfind('\\', last - 1);
    const size_t start = before == std::string_view::npos ? 0 : before + 1;
    std::string text = "\\";
    text += path.substr(start, last - start);
    text += '\\';
    text += path.substr(last + 1);
    return text;
}

std::vector<std::string> podIniEntries(std::string_view text) {
    std::vector<std::string> entries;
    bool first = true;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t end = pos;
        while (end < text.size() && text[end] != '\r' && text[end] != '\n')
            ++end;
        const std::string_view line = text.substr(pos, end - pos);
        if (end == text.size())
            pos = end;
        else
            pos = end + ((text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n') ? 2 : 1);
        if (first) {
            first = false;
            continue;
        }
        // Blanks only, or a single ESC between blanks.
        const size_t start = line.find_first_not_of(' ');
        if (start == std::string_view::npos || (line[start] == '\x1b' && line.find_last_not_of(' ') == start))
            continue;
        entries.emplace_back(line);
    }
    return entries;
}

std::string podIniText(const std::vector<std::string>& paths) {
    size_t size = 16;
    for (const std::string& path : paths)
        size += path.size() + 2;
    std::string text;
    text.reserve(size);
    text += std::to_string(paths.size());
    text += "\r\n";
    for (const std::string& path : paths) {
        text += path;
        text += "\r\n";
    }
    return text;
}

bool hasPodSuffix(std::string_view path) {
    return path.size() >= 4 && upperGame(path.substr(path.size() - 4)) == ".POD";
}

namespace {

bool firstFoundIs(const FileServices& files, const std::string& pattern, const std::string& name) {
    const std::vector<std::string> found = files.search(pattern, SearchFilter::FilesAndFolders);
    return !found.empty() && equalsIgnoreCase(found.front(), name);
}

} // namespace

bool archiveEntryExists(const FileServices& files, const std::string& gameFolder, const std::string& entry) {
    const std::string name = FileNameOf(entry);
    return firstFoundIs(files, gameFolder + "\\" + entry, name) || firstFoundIs(files, entry, name);
}

std::vector<MountedEntry> mountedEntriesFor(FolderSnapshot& folders, const std::string& gameFolder,
                                            const std::vector<std::string>& entries) {
    std::vector<MountedEntry> rows;
    rows.reserve(entries.size());
    for (const std::string& line : entries) {
        MountedEntry& row = rows.emplace_back();
        row.path = folders.shortPath(line);
        row.text = ArchiveDisplayName(row.path);
        row.status = folders.entryExists(gameFolder, line) ? kStatusMounted : kStatusNotFound;
    }
    return rows;
}

std::vector<MountedEntry> mountedEntriesFor(const FileServices& files, const std::string& gameFolder,
                                            const std::string& shortGameFolder,
                                            const std::vector<std::string>& entries) {
    FolderSnapshot folders(files, shortGameFolder);
    return mountedEntriesFor(folders, gameFolder, entries);
}

} // namespace korvel
