#pragma once

#include "startup/association.h"
#include "startup/game_profiles.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "startup/startup.h"
#include "temp_game.h"

#include <functional>
#include <string>
#include <vector>

namespace korvel::testing {

// Plays the user in front of the profiles dialog.
class ScriptedChooser : public ProfileChooser {
public:
    std::function<void(GameProfiles&)> play = [](GameProfiles& logic) { logic.Load(); };
    int shown = 0;
    std::vector<std::string> listed; // what the dialog listed when it opened

    void choose(GameProfiles& logic) override {
        ++shown;
        listed = logic.games();
        play(logic);
    }
};

// A drive, a store, a session and start-up wired together; the association goes only to the store.
struct StartupRig {
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    Session session;
    ScriptedChooser chooser;
    FileAssociation association{store, drive.paths(), options()};
    Startup startup{drive.services(), store, session, chooser, association};

    AssociationOptions options() {
        AssociationOptions o;
        o.programPath = drive.host("C:\\Tools\\Korvel.exe");
        o.desktopEntries = false;
        return o;
    }

    // A complete profile whose game folder exists, already past its first run.
    void addProfile(const std::string& name, const std::string& folder, bool firstRunDone = true) {
        GameLayout layout;
        layout.folder = folder;
        buildGameFolder(drive, layout);
        store.CreateKey(settings::profileKey(name));
        store.writeProfile(name, settings::kLocation, folder);
        store.writeProfile(name, settings::kLocationIni, folder + "\\POD.INI");
        store.writeProfile(name, settings::kLocationExe, folder + "\\monster.exe");
        store.writeProfile(name, settings::kMmpa, "99");
        store.writeProfile(name, settings::kConfigurator, isMonsterTruckMadness2Name(name) ? "True" : "False");
        if (firstRunDone)
            store.writeProfile(name, settings::kFirstRun, "0");
    }
    void setList(const std::string& list) {
        store.CreateKey(std::string(settings::kProgramKey));
        store.writeProgram(settings::kInstalledGames, list);
    }
    std::string program(std::string_view name) { return store.readProgram(name); }
    std::string profile(const std::string& game, std::string_view name) { return store.readProfile(game, name); }
};

} // namespace korvel::testing
