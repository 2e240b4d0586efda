#pragma once

#include "startup/association.h"
#include "startup/game_profiles.h"
#include "startup/settings_names.h"
#include "startup/startup.h"
#include "temp_game.h"

#include <functional>

namespace korvel::testing {

// By default presses Load in the profiles dialog.
class ScriptedChooser : public ProfileChooser {
public:
    std::function<void(GameProfiles&)> play = [](GameProfiles& logic) { logic.load(); };
    int shown = 0;
    void choose(GameProfiles& logic) override { ++shown, play(logic); }
};

struct StartupRig {
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    Session session;
    ScriptedChooser chooser;
    FileAssociation association{store, drive.paths(), {drive.host("C:\\Tools\\Korvel.exe"), false, {}, false}};
    Startup startup{drive.services(), store, session, chooser, association};

    StartupResult relaunch(const std::string& commandLine = {}) {
        session = Session();
        return startup.Main(commandLine);
    }
    // A complete profile whose game folder exists, listed alone.
    void addProfile(const std::string& name, const std::string& folder, bool firstRunDone = true) {
        GameLayout layout;
        layout.folder = folder;
        buildGameFolder(drive, layout);
        GameProfiles(store, drive.files(), drive.dialogs(), session).addProfile(folder + "\\monster.exe", name);
        if (firstRunDone)
            store.writeProfile(name, settings::kFirstRun, "0");
        setList(name);
    }
    void setList(const std::string& list) {
        store.CreateKey(std::string(settings::kProgramKey));
        store.writeProgram(settings::kInstalledGames, list);
    }
    std::string program(std::string_view name) { return store.readProgram(name); }
    std::string profile(const std::string& game, std::string_view name) { return store.readProfile(game, name); }
    const ScriptedDialogs::Shown& lastMessage() { return drive.dialogs().lastMessage(); }
};

// The profiles dialog's logic, open on the rig's store.
struct ProfilesRig : StartupRig {
    ProfilesRig() { logic.open(); }
    // Adds through the file dialog (or, after setAddShiftState(1), the typed path) and the name prompt.
    GameProfiles::AddOutcome add(const std::string& exe, std::optional<QString> name) {
        drive.dialogs().chooseFiles({exe}).typeInput(std::move(name));
        return logic.AddGame(false);
    }
    GameProfiles::AddOutcome addTyped(const QString& exe, const QString& name) {
        drive.dialogs().typeInput(exe).typeInput(name);
        return logic.AddGame(false);
    }
    GameProfiles logic{store, drive.files(), drive.dialogs(), session};
};

} // namespace korvel::testing
