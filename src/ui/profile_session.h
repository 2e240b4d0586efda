#pragma once

#include "platform/result.h"
#include "startup/session.h"

#include <string>

namespace korvel {
class FileServices;
class SettingsStore;
} // namespace korvel

namespace korvel::ui {

// The version text of this build: major, ".", minor (its last two digits when it has three),
// " Build ", revision.
std::string buildVersionText();

// A session for a stored profile, without the start-up dialogs: the profile's values and autosave
// settings as stored. Refused when the profile has no location, POD.INI or executable.
Result<Session> sessionForProfile(SettingsStore& store, const FileServices& files, const std::string& profile);

} // namespace korvel::ui
