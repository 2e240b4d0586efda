#pragma once

#include <string>

namespace korvel {

// The five autosave switches of a profile: which files save themselves, and when.
struct AutosaveSwitches {
    bool pod = false;     // the mounted list (POD.INI)
    bool player = false;  // the driver profiles (player.pro)
    bool monster = false; // the game settings (monster.ini)
    bool onChange = false;
    bool onExit = false;

    bool podOnChange() const { return pod && onChange; }
    bool playerOnChange() const { return player && onChange; }
    bool monsterOnChange() const { return monster && onChange; }
    bool podOnExit() const { return pod && onExit; }
};

// The program-wide state that start-up fills and the rest of the program reads: the loaded game
// profile and the values start-up keeps. Texts are game-side text (bytes).
//
// Who may change it:
//   - its owner (the desktop application, or a command-line command that builds its own) creates it;
//   - `Startup` fills it, with the profile that the games dialog's logic (`GameProfiles::load`)
//     names, and clears the opened archive on a game switch;
//   - while the program runs, the one change is the game folder that the registry repair chose
//     (`RepairGameRegistry` returns it, the owner applies it).
// Everything else (the window, the panes, the dialogs) holds a `const Session&`.
struct Session {
    std::string versionText; // "1.5 Build 12"; empty until start-up has run once
    std::string currentGame; // name of the loaded profile (its settings subkey)

    // The loaded profile.
    std::string location;      // game folder, no trailing "\"
    std::string locationIni;   // its POD.INI
    std::string locationExe;   // its executable
    std::string mmpa;          // the counter's maximum text ("99")
    bool configurator = false; // the Monster Truck Madness 2 tools are on

    // As read at start-up: the very first start of a profile reads them before start-up has
    // written their defaults, so they are all off until the next start.
    AutosaveSwitches autosave;

    std::string shortGameFolder; // short form of the game folder, with a trailing "\"

    // An archive named on the command line: folder (with trailing "\") and file name.
    std::string openedFolder;
    std::string openedFile;

    bool hasOpenedArchive() const { return !openedFolder.empty() && !openedFile.empty(); }
};

} // namespace korvel
