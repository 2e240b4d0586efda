#pragma once

#include "association.h"
#include "game_profiles.h"
#include "platform/services.h"
#include "session.h"
#include "settings_store.h"
#include "version_text.h"

#include <QStringList>

#include <optional>
#include <string>
#include <vector>

namespace korvel {

// How start-up ends: the application shows its main window, or it ends after the message that
// start-up has shown.
enum class StartupResult { ShowMainWindow, Terminate };

// Shows the game profiles dialog modally over `logic` (already opened) and returns when it closes:
// through Load or Exit (see `GameProfiles::state()`), or by its window frame (state still Open).
class ProfileChooser {
public:
    virtual ~ProfileChooser() = default;
    virtual void choose(GameProfiles& logic) = 0;
};

// The command-line request from the program's arguments: empty, a profile name (the arguments
// joined by blanks), or an archive's game path in double quotes when the one argument names an
// existing file (as the desktop passes an archive that is opened with the program).
std::string requestFromArguments(const QStringList& arguments, const PathMap& paths);

// The program's entry procedure `Main`: picks the game profile, repairs its settings in the
// store, applies the file association, makes the first-run backups and fills the session.
//
// It is entered again to switch games (`mnuSwitch`): the session is kept, so the command line is
// not read again and the profiles dialog is shown. It is also entered again after the message about
// a damaged profile when that profile is the only one, so its dialog offers to remove and re-add it.
class Startup {
public:
    Startup(Services& services, SettingsStore& store, Session& session, ProfileChooser& chooser,
            FileAssociation& association);

    // `commandLine` is the whole request text; it is used on the first entry only.
    StartupResult Main(const std::string& commandLine = std::string());
    // Game switching: forgets the opened archive and enters `Main` again.
    StartupResult switchGame();

private:
    bool chooseProfile(std::string request, const std::optional<std::vector<std::string>>& list);
    // The loaded profile's own values into the session; false when one of them cannot be read.
    bool readProfileValues();
    // Makes the profile's code page (its setting, else the system's) the active one.
    void applyCodePage(const std::string& game);
    void terminateWith(const QString& text);

    Services& m_services;
    SettingsStore& m_store;
    Session& m_session;
    ProfileChooser& m_chooser;
    FileAssociation& m_association;
    const ProgramVersion m_version = ProgramVersion::current();
    bool m_offeringRepair = false; // the profiles dialog follows a damaged sole profile's message
};

} // namespace korvel
