#pragma once

#include "result.h"

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace korvel {

// Wine as the games run under it off Windows: the program, its registry and the game's start.

// $KORVEL_WINE when set, else "wine" found on the PATH; empty when there is none.
QString findWineProgram();

// One string value for the game's registry; key, name and data are game text.
struct RegFileValue {
    std::string key; // "HKEY_LOCAL_MACHINE\SOFTWARE\..."
    std::string name;
    std::string data;
};

// A registry file as regedit imports it: UTF-16LE with a byte-order mark, "Windows Registry Editor
// Version 5.00", CR LF line ends, backslashes and quotes of names and data escaped.
QByteArray regFileText(const std::vector<RegFileValue>& values);

// Writes the registry file to `regFile` (host path) and imports it into the prefix with
// "wine regedit /S", waiting for it to end. Returns the message for the user: where the values went,
// or why they did not and how to import the file by hand.
struct RegImportOutcome {
    bool imported = false;
    QString message;
};
RegImportOutcome importIntoWinePrefix(const std::vector<RegFileValue>& values, const QString& regFile,
                                      const QString& winePrefix);

// How the game's executable is started: through the launch command when one is given (its words,
// then the executable), else through Wine (off Windows) or directly; in the game's folder, with the
// prefix in WINEPREFIX. Refused, with the reason, when the executable or Wine is missing.
struct GameLaunchPlan {
    QString program;
    QStringList arguments;
    QString workingFolder;
    QProcessEnvironment environment;
};
Result<GameLaunchPlan> planGameLaunch(const QString& executable, const QString& workingFolder,
                                      const QString& launchCommand, const QString& winePrefix);

} // namespace korvel
