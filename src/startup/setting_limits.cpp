#include "setting_limits.h"

#include "platform/game_text.h"
#include "settings_names.h"

namespace korvel {

bool fitsStoredValue(std::string_view value) {
    return value.size() <= kLongestStoredValue;
}

std::string extraDirsValue(const std::vector<std::string>& dirs) {
    return dirs.empty() ? settings::kDefaultExtraDirs : joinText(dirs, settings::kListSeparator);
}

Status checkExtraDirAddition(const std::vector<std::string>& dirs, const std::string& folder) {
    const QString shown = fromGameText(folder);
    if (folder.find(settings::kListSeparator) != std::string::npos)
        return refused(QStringLiteral("The folder \"%1\" was not added: its path holds \"|\", which Korvel uses to "
                                      "separate the extra search directories. Rename the folder or choose another.")
                           .arg(shown));
    std::vector<std::string> longer = dirs;
    longer.push_back(folder);
    if (!fitsStoredValue(extraDirsValue(longer)))
        return refused(QStringLiteral("The folder \"%1\" was not added: with it the extra search directories would "
                                      "take more than %2 characters, more than Korvel can keep. Remove a folder you "
                                      "no longer need, or choose a folder with a shorter path.")
                           .arg(shown)
                           .arg(kLongestStoredValue));
    return {};
}

Status checkProfileName(const std::vector<std::string>& games, std::string_view name) {
    if (name.find(settings::kListSeparator) != std::string_view::npos)
        return refused(QStringLiteral("A game's name cannot hold \"|\": Korvel uses it to separate the names in the "
                                      "list of game profiles. Please enter another name."));
    if (!name.empty() && name.back() == '\\')
        return refused(QStringLiteral("A game's name cannot end with \"\\\": Korvel could not keep its settings. "
                                      "Please enter another name."));
    std::vector<std::string> longer = games;
    longer.emplace_back(name);
    if (!fitsStoredValue(joinText(longer, settings::kListSeparator)))
        return refused(QStringLiteral("This name is too long: with it the list of game profiles would take more "
                                      "than %1 characters, more than Korvel can keep. Please enter a shorter name.")
                           .arg(kLongestStoredValue));
    return {};
}

} // namespace korvel
