#include "backups.h"

#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/wine.h"

#include <QDir>

namespace korvel {

namespace {

constexpr const char* kGameKey = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0";
constexpr const char* kLobbyKey =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\DirectPlay\\Applications\\Monster Truck Madness 2";

} // namespace

void MakeBackups(const FileServices& files, Dialogs& dialogs, const std::string& location) {
    const std::string backup = location + "\\backup";
    // A folder is never found as a file, so creation is tried every time; an existing folder
    // simply makes it fail and the copies go ahead.
    if (!files.FileExists(backup))
        files.makeDirectory(backup);
    files.copyFile(location + "\\POD.INI", backup + "\\POD.INI");
    files.copyFile(location + "\\player.pro", backup + "\\player.pro");
    files.copyFile(location + "\\system\\monster.ini", backup + "\\monster.ini");
    dialogs.message(QStringLiteral("Information"),
                    QStringLiteral("Bear in mind that, like any other piece of software, Korvel may not be perfect. "
                                   "To ensure that no harm comes to your game installation, backups of your key files "
                                   "(POD.INI, player.pro, and monster.ini) have been copied to \"") +
                        fromGameText(backup) + QStringLiteral("\" just in case."),
                    MessageIcon::Information);
}

std::vector<GameRegistryEntry> gameRegistryEntries(const std::string& folder) {
    return {
        {kGameKey, "Version", "2.0"},
        {kGameKey, "Launched", "1"},
        {kGameKey, "InstalledPath", folder},
        {kGameKey, "VersionType", "RetailVersion"},
        {kGameKey, "InstalledGroup", "2"},
        {kLobbyKey, "Guid", "{6cd1c6e0-96fb-11d1-a268-00a02f29c995}"},
        {kLobbyKey, "File", "monster.exe"},
        {kLobbyKey, "CommandLine", ""},
        {kLobbyKey, "CurrentDirectory", folder},
        {kLobbyKey, "Path", folder},
    };
}

std::optional<std::string> RepairGameRegistry(SettingsStore& store, Dialogs& dialogs, const std::string& location) {
    OpenFileRequest request;
    request.title = QStringLiteral("Find your MTM2 directory");
    request.startFolder = location;
    request.filters = {{QStringLiteral("MTM2 Executable (monster.exe)"), QStringLiteral("monster.exe")},
                       {QStringLiteral("All Files (*.*)"), QStringLiteral("*.*")}};
    const std::vector<std::string> chosen = dialogs.openFiles(request);
    if (chosen.empty() || chosen.front().empty())
        return std::nullopt;
    const std::string folder = withoutTrailingBackslash(FolderOf(chosen.front()));
    store.CreateKey(kGameKey);
    store.CreateKey(kLobbyKey);
    for (const GameRegistryEntry& entry : gameRegistryEntries(folder))
        store.WriteValue(entry.key, entry.value, entry.text);
    return folder;
}

std::optional<std::string> RepairGameRegistry(SettingsStore& store, Dialogs& dialogs, const std::string& location,
                                              const PathMap& paths, const QString& regFolder) {
    const std::optional<std::string> folder = RepairGameRegistry(store, dialogs, location);
    if (!folder || paths.isIdentity())
        return folder;
    std::vector<RegFileValue> values;
    for (const GameRegistryEntry& entry : gameRegistryEntries(*folder))
        values.push_back({entry.key, entry.value, entry.text});
    QDir().mkpath(regFolder);
    const RegImportOutcome outcome = importIntoWinePrefix(
        values, QDir(regFolder).filePath(QStringLiteral("mtm2-registry.reg")), PathMap::hostWinePrefix());
    dialogs.message(QStringLiteral("Fix Game Registry Entries"), outcome.message,
                    outcome.imported ? MessageIcon::Information : MessageIcon::Exclamation);
    return folder;
}

} // namespace korvel
