#pragma once

#include <string>

namespace korvel {

// The program-wide state that start-up fills and the rest of the program reads: the loaded game
// profile and the values start-up keeps. All texts are game-side text (bytes).
struct Session {
    std::string versionText;    // "1.5 Build 12"; empty until start-up has run once
    std::string currentGame;    // name of the loaded profile (its settings subkey)

    // The loaded profile.
    std::string location;       // game folder, no trailing "\"
    std::string locationIni;    // its POD.INI
    std::string locationExe;    // its executable
    std::string mmpa;           // the counter's maximum text ("99")
    bool configurator = false;  // the Monster Truck Madness 2 tools are on

    // The five autosave settings as read ("0"/"1", or "Error" on the very first start).
    std::string asPod, asPlayer, asMonster, asChange, asExit;

    std::string shortGameFolder; // short form of the game folder, with a trailing "\"

    // An archive named on the command line: folder (with trailing "\") and file name.
    std::string openedFolder;
    std::string openedFile;

    bool autosaveOnChange(const std::string& which) const { return which == "1" && asChange == "1"; }
    bool hasOpenedArchive() const { return !openedFolder.empty() && !openedFile.empty(); }
};

} // namespace korvel
