#pragma once

#include <string>
#include <string_view>

// Every value name the program keeps in its settings store, in one place.
namespace korvel::settings {

inline constexpr std::string_view kProgramKey = "HKEY_CURRENT_USER\\Software\\Dunmere\\Korvel";
inline std::string profileKey(std::string_view profile) {
    return std::string(kProgramKey) + "\\" + std::string(profile);
}

inline constexpr std::string_view kError = "Error"; // what a failed read yields
inline constexpr char kListSeparator = '|';
inline constexpr char kTrackRowSeparator = '*';

// Program key.
inline constexpr std::string_view kInstalledGames = "InstalledGames";
inline constexpr std::string_view kAssociate = "Associate";
inline constexpr std::string_view kTrackList = "TrackList";
// The web addresses: the add-on tracks' site (a track's address is this followed by its path), the
// track-list document, the program's own site and the support mail address. Empty: not set.
inline constexpr std::string_view kTrackSite = "TrackSite";
inline constexpr std::string_view kTrackListAddress = "TrackListAddress";
inline constexpr std::string_view kWebAddress = "WebAddress";
inline constexpr std::string_view kSupportAddress = "SupportAddress";

// Profile subkey: the profile itself.
inline constexpr std::string_view kLocation = "Location";
inline constexpr std::string_view kLocationIni = "Location-INI";
inline constexpr std::string_view kLocationExe = "Location-EXE";
inline constexpr std::string_view kMmpa = "MMPA";
inline constexpr std::string_view kConfigurator = "Configurator";
// The game's code page ("1251", "932"); missing or empty: the system's.
inline constexpr std::string_view kCodePage = "CodePage";
// A command that starts the game instead of Wine ("proton run", "lutris rungame ..."); the
// executable's host path is added at its end.
inline constexpr std::string_view kLaunchCommand = "LaunchCommand";

// Profile subkey: preferences.
inline constexpr std::string_view kLogo = "Logo";
inline constexpr std::string_view kScreen = "Screen";
inline constexpr std::string_view kSlider = "Slider";
inline constexpr std::string_view kAsPod = "AS-POD";
inline constexpr std::string_view kAsPlayer = "AS-Player";
inline constexpr std::string_view kAsMonster = "AS-Monster";
inline constexpr std::string_view kAsChange = "AS-Change";
inline constexpr std::string_view kAsExit = "AS-Exit";
inline constexpr std::string_view kFlat = "Flat";
inline constexpr std::string_view kSlide = "Slide";
inline constexpr std::string_view kAutosort = "Autosort";
inline constexpr std::string_view kLock = "Lock";
inline constexpr std::string_view kBrowse = "Browse";
inline constexpr std::string_view kBrowseDir = "BrowseDir";
inline constexpr std::string_view kExtraDirs = "ExtraDirs";
inline constexpr std::string_view kLeft = "Left";
inline constexpr std::string_view kTop = "Top";
// The window's size as width "," height, twips, while neither minimised nor maximised; missing or
// smaller than the classic size means the classic size.
inline constexpr std::string_view kSize = "Size";
// "1" when the window was closed maximised.
inline constexpr std::string_view kMaximized = "Maximized";
inline constexpr std::string_view kRecent = "Recent";
inline constexpr std::string_view kFirstRun = "FirstRun";

// The stored form of an empty folder list ("ExtraDirs"): one NUL character.
inline const std::string kDefaultExtraDirs(1, '\0');

// The defaults, the tests start-up keeps these values valid with, and how the program reads them
// are in typed_settings.h.

} // namespace korvel::settings
