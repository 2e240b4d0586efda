#pragma once

#include "platform/loaded_file_stamp.h"
#include "platform/result.h"

#include <string>
#include <string_view>

namespace korvel {

class FileServices;

// The three game settings the Configurator edits in system\monster.ini, as its controls hold them.
struct MonsterSettings {
    bool hiddenTrack = false; // "showHiddenTrack": on is 666
    bool horn = false;        // "kookyHornFlag"
    int localization = 1;     // 1 standard, 2 fun, 3 pig, 4 the custom file in `custom`
    std::string custom;       // the language file's path as the game reads it

    bool operator==(const MonsterSettings&) const = default;
};

inline constexpr std::string_view kHiddenTrackKey = "showHiddenTrack";
inline constexpr std::string_view kHornKey = "kookyHornFlag";
inline constexpr std::string_view kLocalizationKey = "gLocalizationFile";

// Game folder + "\system\monster.ini".
std::string monsterIniPath(std::string_view gameFolder);

// The built-in language file of options 1 to 3 ("UI\MTM2.loc"...); empty for any other option.
std::string builtInLanguageFile(int localization);

// The settings that a monster.ini text holds. Each key's line runs from the key's first
// occurrence anywhere in the text to the next "\r\n"; a missing key or line end is a failure.
Result<MonsterSettings> parseMonsterIni(std::string_view text);

// The text with the three entry lines rewritten from `settings`; every other byte stays. Each
// line is replaced wherever its exact old text occurs.
Result<std::string> applyMonsterSettings(std::string_view text, const MonsterSettings& settings);

// Reads the settings from the game's monster.ini; `loaded`, when given, gets the file's stamp.
Result<MonsterSettings> LoadMonsterIni(const FileServices& files, std::string_view gameFolder,
                                       LoadedFileStamp* loaded = nullptr);
// Rewrites the game's monster.ini from `settings` (atomically). With `loaded`, refused
// (ChangedOnDisk) when the file no longer holds what that stamp describes, checked under the
// file's lock, held from the read to the rename; `written`, when given, gets the stamp of the new
// file. A failure leaves the file as it was.
Status SaveMonsterIni(const FileServices& files, std::string_view gameFolder, const MonsterSettings& settings,
                      const LoadedFileStamp* loaded = nullptr, LoadedFileStamp* written = nullptr);

// A chosen custom language file as the game should read it: every occurrence of the game folder
// + "\" removed, so a file inside the folder becomes relative to it.
std::string customLanguagePath(std::string_view chosenPath, std::string_view gameFolder);

} // namespace korvel
