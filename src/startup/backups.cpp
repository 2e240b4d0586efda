#include "backups.h"

#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/wine.h"

#include <QDir>

#include <QStringList>

namespace korvel {

namespace {

constexpr const char* kGameKey = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0";
constexpr const char* kLobbyKey =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\DirectPlay\\Applications\\Monster Truck Madness 2";

// The key files: where each lies in the game folder and the name its copy takes.
struct KeyFile {
    const char* source;
    const char* stem;
    const char* suffix;
};
constexpr KeyFile kKeyFiles[] = {
    {"\\POD.INI", "POD", ".INI"},
    {"\\player.pro", "player", ".pro"},
    {"\\system\\monster.ini", "monster", ".ini"},
};

// Key files are small; a larger one is not what the game wrote.
constexpr qint64 kKeyFileLimit = qint64(64) << 20;
// Dated copies of one day before the backups give up on that file.
constexpr int kMaxCopiesPerDay = 99;

QString joinedNames(const std::vector<std::string>& names) {
    QStringList texts;
    for (const std::string& name : names)
        texts << fromGameText(name);
    if (texts.size() <= 1)
        return texts.join(QString());
    if (texts.size() == 2)
        return texts[0] + QStringLiteral(" and ") + texts[1];
    const QString last = texts.takeLast();
    return texts.join(QStringLiteral(", ")) + QStringLiteral(", and ") + last;
}

QString joinedMessages(const std::vector<Failure>& failures) {
    QStringList texts;
    for (const Failure& failure : failures)
        texts << failure.message;
    return texts.join(QLatin1Char('\n'));
}

// Copies one key file without writing over an earlier backup.
void backUp(const FileServices& files, const std::string& location, const std::string& backup, const KeyFile& key,
            const QDate& today, BackupReport& report) {
    const std::string source = location + key.source;
    if (!files.fileSize(source))
        return;
    const Result<std::string> bytes = files.readAll(source, kKeyFileLimit);
    if (!bytes) {
        report.failed.push_back(bytes.failure());
        return;
    }
    const std::string date = toGameText(today.toString(QStringLiteral("yyyy-MM-dd")));
    for (int n = 0; n <= kMaxCopiesPerDay; ++n) {
        std::string name = key.stem;
        if (n > 0)
            name += "-" + date + (n > 1 ? "-" + std::to_string(n) : std::string());
        name += key.suffix;
        const std::string target = backup + "\\" + name;
        if (files.fileSize(target)) {
            const Result<std::string> earlier = files.readAll(target, kKeyFileLimit);
            if (earlier && *earlier == *bytes) {
                report.unchanged.push_back(std::string(key.stem) + key.suffix);
                return;
            }
            report.keptEarlier = true;
            continue;
        }
        if (Status written = files.writeAll(target, *bytes); !written) {
            report.failed.push_back(written.failure());
            return;
        }
        report.copied.push_back(name);
        return;
    }
    report.failed.push_back(
        writeError(QStringLiteral("%1 already holds %2 earlier copies of %3 from today; no further copy was made.")
                       .arg(fromGameText(backup))
                       .arg(kMaxCopiesPerDay + 1)
                       .arg(fromGameText(std::string(key.stem) + key.suffix))));
}

} // namespace

QString backupsMessageText(const BackupReport& report, const std::string& backup) {
    const QString folder = QLatin1Char('"') + fromGameText(backup) + QLatin1Char('"');
    const QString opening = QStringLiteral("Bear in mind that, like any other piece of software, Korvel may not be "
                                           "perfect. To ensure that no harm comes to your game installation, ");
    QString text;
    if (!report.copied.empty()) {
        text = opening + QStringLiteral("backups of your key files (") + joinedNames(report.copied) +
               QStringLiteral(") have been copied to ") + folder + QStringLiteral(" just in case.");
        if (report.keptEarlier)
            text += QStringLiteral(" The earlier backups there were kept; the new copies carry today's date.");
        if (!report.unchanged.empty())
            text += QLatin1Char(' ') + joinedNames(report.unchanged) +
                    (report.unchanged.size() == 1 ? QStringLiteral(" was") : QStringLiteral(" were")) +
                    QStringLiteral(" already backed up there.");
    } else if (!report.unchanged.empty()) {
        text = opening + QStringLiteral("backups of your key files (") + joinedNames(report.unchanged) +
               QStringLiteral(") are already in ") + folder + QStringLiteral("; they were kept as they are.");
    }
    if (!report.failed.empty()) {
        const QString advice =
            QStringLiteral("please copy them somewhere safe yourself before you change anything:\n\n");
        if (text.isEmpty())
            text =
                QStringLiteral("Korvel could not back up your key files (POD.INI, player.pro and monster.ini) into ") +
                folder + QStringLiteral(", so ") + advice;
        else
            text += QStringLiteral("\n\nSome key files could not be copied, so ") + advice;
        text += joinedMessages(report.failed);
    }
    if (text.isEmpty())
        text = QStringLiteral("There were no key files (POD.INI, player.pro or monster.ini) to back up into ") +
               folder + QLatin1Char('.');
    return text;
}

BackupReport MakeBackups(const FileServices& files, Dialogs& dialogs, const std::string& location, QDate today) {
    const std::string backup = location + "\\backup";
    // A folder is never found as a file, so creation is tried every time; an existing folder
    // simply makes it fail and the copies go ahead.
    if (!files.FileExists(backup))
        files.makeDirectory(backup);
    BackupReport report;
    for (const KeyFile& key : kKeyFiles)
        backUp(files, location, backup, key, today, report);
    if (report.failed.empty())
        dialogs.message(QStringLiteral("Information"), backupsMessageText(report, backup), MessageIcon::Information);
    else
        dialogs.message(QStringLiteral("Warning"), backupsMessageText(report, backup), MessageIcon::Exclamation);
    return report;
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
