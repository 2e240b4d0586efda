#pragma once

#include "platform/dialogs.h"
#include "platform/file_services.h"
#include "session.h"
#include "settings_store.h"

#include <QDate>

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

// Asks for the game's executable and writes the game's registry entries for its folder, which also
// becomes the session's game folder until the program ends. False when the user cancelled.
bool RepairGameRegistry(SettingsStore& store, Dialogs& dialogs, Session& session);

} // namespace korvel
