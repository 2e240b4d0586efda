#pragma once

#include "platform/dialogs.h"
#include "platform/file_services.h"
#include "session.h"
#include "settings_store.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// True when the name, in upper case, is one of the names Monster Truck Madness 2 goes by; such a
// profile gets the Configurator.
bool isMonsterTruckMadness2Name(std::string_view name);

// The logic of the game profiles dialog (`frmGames`): the working list of profile names, adding,
// removing and loading profiles. The form shows `games()` and forwards its buttons here; start-up
// also uses `AddGame(true)` on its own to re-locate a game whose files are gone.
//
// The list in the store ("InstalledGames") is written only by Load and Exit; Add writes the new
// profile's subkey at once.
class GameProfiles {
public:
    enum class State {
        Open,       // the dialog is (still) showing
        Loaded,     // Load chose `Session::currentGame`; the dialog closes
        Exited,     // Exit: the list was saved and the program ends
        Terminated, // the re-locate form was cancelled: the message was shown and the program ends
    };
    enum class AddOutcome { Added, Unchanged, Terminate };

    GameProfiles(SettingsStore& store, const FileServices& files, Dialogs& dialogs, Session& session);

    // Opening the dialog: the list from "InstalledGames", the first entry selected.
    void open();

    const std::vector<std::string>& games() const { return m_games; }
    int selectedIndex() const { return m_selected; }
    void select(int index); // -1 clears the selection
    bool loadEnabled() const { return m_loadEnabled; }
    State state() const { return m_state; }

    // The Shift state of the latest mouse press on the Add button (1: Shift alone), which makes
    // Add ask for a typed path instead of showing the file dialog.
    void setAddShiftState(int shift) { m_shift = shift; }

    // Adds a profile: asks for the executable (or a typed path) and a name, then writes the
    // profile. A name the store could not keep is refused with a message and asked for again.
    // `fatal` is the re-locate form: cancelling the executable ends the program.
    AddOutcome AddGame(bool fatal);
    // The part of Add after the questions: creates the subkey, lists the name and writes the
    // profile's five values. `exePath` is the executable's game path.
    void addProfile(const std::string& exePath, const std::string& name);

    // Load (button or double click): the selected profile becomes the current one and the list is
    // saved. False when nothing is selected.
    bool load();
    // Remove (button or Delete key): drops the selected profile from the working list. Its subkey
    // stays in the store. Nothing happens when no entry is selected.
    void remove();
    // Exit: saves the list; the program then ends.
    void exit();
    // Writes the working list to "InstalledGames" ("Error" when it is empty).
    void saveList();

    // The name Add proposes for an executable: the game folder's own name.
    static std::string proposedName(const std::string& exePath);

private:
    SettingsStore& m_store;
    const FileServices& m_files;
    Dialogs& m_dialogs;
    Session& m_session;
    std::vector<std::string> m_games;
    int m_selected = -1;
    bool m_loadEnabled = false;
    int m_shift = 0;
    State m_state = State::Open;
};

} // namespace korvel
