#pragma once

#include <QString>

#include <string>

namespace korvel {

// The desktop shell's "open" verb and the game launch. No result is checked by the callers that
// the program's behaviour leaves unchecked; the booleans are for the command line and the tests.
class Shell {
public:
    virtual ~Shell() = default;
    // Opens a document (game path) in the program associated with it.
    virtual bool openDocument(const std::string& gamePath) = 0;
    // Opens an address in the user's web browser.
    virtual bool openUrl(const QString& url) = 0;
    // Starts the game's executable with `workingFolder` (game path) as its current folder.
    virtual bool launch(const std::string& executable, const std::string& workingFolder) = 0;
    // The same through a launch command of the profile's ("proton run"; empty: as launch() does).
    virtual bool launchWith(const QString& launchCommand, const std::string& executable,
                            const std::string& workingFolder) {
        return launchCommand.trimmed().isEmpty() && launch(executable, workingFolder);
    }
    // Why the last launch failed, for the user; empty when there is nothing more to say.
    virtual QString launchFailure() const { return QString(); }
};

} // namespace korvel
