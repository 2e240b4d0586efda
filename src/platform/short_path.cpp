#include "short_path.h"

#include "game_path.h"
#include "game_text.h"

namespace korvel {

std::string ShortPath(const FileServices& files, const std::string& shortGameFolder, const std::string& path,
                      bool wholePath) {
    std::string s = wholePath ? path : FolderOf(path);
    const bool relative = !isAbsoluteGamePath(s);
    if (relative)
        s = shortGameFolder + s;
#ifdef Q_OS_WIN
    constexpr size_t kBuffer = 67; // characters, the terminating NUL included
    if (std::optional<std::string> shortForm = files.shortPathName(s); shortForm && shortForm->size() < kBuffer)
        s = *shortForm;
#else
    // Elsewhere the short form of an existing path is the path itself, so the answer is `s` whether
    // or not it exists: the file system need not be asked (a folder of archives is shortened often).
    (void)files;
#endif
    if (!wholePath)
        s += FileNameOf(path);
    if (relative)
        s = replaceAll(s, shortGameFolder, "");
    return s;
}

} // namespace korvel
