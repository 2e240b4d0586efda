#pragma once

#include "platform/dialogs.h"
#include "platform/file_services.h"
#include "settings_store.h"

#include <optional>
#include <string>
#include <vector>

namespace korvel {

// Copies POD.INI, player.pro and system\monster.ini of the game folder `location` into its
// "backup" folder, replacing older copies, and tells the user where they went. A missing file is
// skipped without a word.
void MakeBackups(const FileServices& files, Dialogs& dialogs, const std::string& location);

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
