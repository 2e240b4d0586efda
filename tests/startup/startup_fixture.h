#pragma once

#include "startup/association.h"
#include "startup/game_profiles.h"
#include "startup/settings_names.h"
#include "startup/startup.h"
#include "temp_game.h"

#include <functional>

namespace korvel::testing {

// Plays the user in front of the profiles dialog; by default presses Load.
class ScriptedChooser : public ProfileChooser {
public:
    std::function<void(GameProfiles&)> play = [](GameProfiles& logic) { logic.Load(); };
    int shown = 0;

    void choose(GameProfiles& logic) override {
        ++shown;
        play(logic);
    }
};

// A drive, a store, a session and start-up wired together; the association goes to the store only.
struct StartupRig {
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    Session session;
    ScriptedChooser chooser;
    FileAssociation association{store, drive.paths(), {drive.host("C:\\Tools\\Korvel.exe"), false, {}, false}};
    Startup startup{drive.services(), store, session, chooser, association};

    // Start-up as the next launch of the program: a fresh session over the same store.
    StartupResult relaunch(const std::string& commandLine = {}) {
        session = Session();
        return startup.Main(commandLine);
    }

    // A complete profile whose game folder exists.
    void addProfile(const std::string& name, const std::string& folder, bool firstRunDone = true) {
        GameLayout layout;
        layout.folder = folder;
        buildGameFolder(drive, layout);
        GameProfiles(store, drive.files(), drive.dialogs(), session).addProfile(folder + "\\monster.exe", name);
        if (firstRunDone)
            store.writeProfile(name, settings::kFirstRun, "0");
    }
    void setList(const std::string& list) {
        store.CreateKey(std::string(settings::kProgramKey));
        store.writeProgram(settings::kInstalledGames, list);
    }
    std::string program(std::string_view name) { return store.readProgram(name); }
    std::string profile(const std::string& game, std::string_view name) { return store.readProfile(game, name); }
    const ScriptedDialogs::Shown& lastMessage() { return drive.dialogs().lastMessage(); }
};

} // namespace korvel::testing
