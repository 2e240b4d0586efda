#include "entry_path.h"

#include "platform/game_text.h"

namespace korvel {

namespace {

constexpr size_t kNameBuffer = 80; // the fixed-width name buffer of the old extraction loop

bool onlyDotsAndBlanks(std::string_view piece) {
    return piece.find_first_not_of(". ") == std::string_view::npos;
}

} // namespace

std::optional<std::string> entryRelativePath(std::string_view name) {
    const std::string trimmed = trimBlanks(name.substr(0, kNameBuffer));
    if (trimmed.empty() || trimmed.find(':') != std::string::npos)
        return std::nullopt;
    std::string relative;
    size_t from = 0;
    while (true) {
        const size_t at = trimmed.find_first_of("\\/", from);
        const std::string_view piece =
            std::string_view(trimmed).substr(from, at == std::string::npos ? std::string::npos : at - from);
        if (piece.empty() || onlyDotsAndBlanks(piece) || piece.find('\0') != std::string_view::npos)
            return std::nullopt;
        if (!relative.empty())
            relative += '\\';
        relative += piece;
        if (at == std::string::npos)
            break;
        from = at + 1;
    }
    return relative;
}

} // namespace korvel
