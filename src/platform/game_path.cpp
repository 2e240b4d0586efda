#include "game_path.h"

namespace korvel {

std::string FileNameOf(std::string_view path) {
    size_t slash = path.rfind('\\');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string FolderOf(std::string_view path) {
    size_t slash = path.rfind('\\');
    return slash == std::string_view::npos ? std::string() : std::string(path.substr(0, slash + 1));
}

bool isAbsoluteGamePath(std::string_view path) {
    return path.size() >= 2 && path[1] == ':';
}

std::string withTrailingBackslash(std::string_view folder) {
    std::string out(folder);
    if (out.empty() || out.back() != '\\')
        out.push_back('\\');
    return out;
}

std::string withoutTrailingBackslash(std::string_view folder) {
    std::string out(folder);
    if (!out.empty() && out.back() == '\\')
        out.pop_back();
    return out;
}

std::string win32Name(std::string_view component) {
    const size_t end = component.find_last_not_of(" .");
    if (end == std::string_view::npos)
        return std::string(component);
    return std::string(component.substr(0, end + 1));
}

std::string joinGamePath(std::string_view folder, std::string_view name) {
    if (folder.empty())
        return std::string(name);
    return withTrailingBackslash(folder) + std::string(name);
}

} // namespace korvel
