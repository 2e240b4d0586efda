#pragma once

#include "platform/dialogs.h"
#include "platform/file_services.h"
#include "settings_store.h"

#include <QDate>

#include <optional>
#include <string>
#include <vector>

namespace korvel {

// What the backups did with each key file.
struct BackupReport {
    std::vector<std::string> copied;    // names written in the backup folder, in file order
    std::vector<std::string> unchanged; // key files whose identical copy was already there
    std::vector<Failure> failed;        // key files that exist but could not be copied
    bool keptEarlier = false;           // an earlier, different copy was kept and a dated one written
};

// Copies POD.INI, player.pro and system\monster.ini of the game folder `location` into its
// "backup" folder and tells the user what was copied where. A missing file is skipped without a
// word. Earlier backups are never written over: a folder already holding a different copy gets a
// new one named with `today`'s date ("POD-2026-11-23.INI"), and an identical copy is left alone.
BackupReport MakeBackups(const FileServices& files, Dialogs& dialogs, const std::string& location,
                         QDate today = QDate::currentDate());

// The message that reports `report` for the backup folder `backup`.
QString backupsMessageText(const BackupReport& report, const std::string& backup);

// The registry entries Monster Truck Madness 2 and its multiplayer lobby read, for `folder`, the
// game folder without a trailing "\".
struct GameRegistryEntry {
    std::string key;
    std::string value;
    std::string text;
};
std::vector<GameRegistryEntry> gameRegistryEntries(const std::string& folder);

// Asks for the game's executable (starting in `location`, the game folder) and writes the game's
// registry entries for its folder. Returns that folder, which the session's owner makes the game
// folder until the program ends; nullopt when the user cancelled.
std::optional<std::string> RepairGameRegistry(SettingsStore& store, Dialogs& dialogs, const std::string& location);
// The same, and where the game runs under Wine (a drive-mapped `paths`), into the registry of the
// Wine prefix too, through a registry file kept in `regFolder` (host folder); then tells the user
// where the values went.
std::optional<std::string> RepairGameRegistry(SettingsStore& store, Dialogs& dialogs, const std::string& location,
                                              const PathMap& paths, const QString& regFolder);

} // namespace korvel
