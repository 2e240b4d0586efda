#include "profile_session.h"

#include "platform/game_text.h"
#include "platform/short_path.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "startup/typed_settings.h"

namespace korvel::ui {

std::string buildVersionText() {
    std::string minor = std::to_string(KORVEL_VERSION_MINOR);
    if (minor.size() == 3)
        minor = minor.substr(1);
    return std::to_string(KORVEL_VERSION_MAJOR) + "." + minor + " Build " + std::to_string(KORVEL_VERSION_PATCH);
}

Result<Session> sessionForProfile(SettingsStore& store, const FileServices& files, const std::string& profile) {
    Session session;
    session.versionText = buildVersionText();
    session.currentGame = profile;
    const ProfileSettings stored(store, profile);
    session.location = stored.location().value_or(std::string());
    session.locationIni = stored.locationIni().value_or(std::string());
    session.locationExe = stored.locationExe().value_or(std::string());
    session.mmpa = stored.mmpa().value_or(std::string(settings::kError));
    for (const std::string* value : {&session.location, &session.locationIni, &session.locationExe}) {
        if (value->empty())
            return refused(QStringLiteral("The game profile \"%1\" is not set up: it has no game folder, POD.INI or "
                                          "executable in the settings store.")
                               .arg(fromGameText(profile)));
    }
    session.configurator = stored.configurator();
    session.autosave = stored.autosave();
    session.shortGameFolder = ShortPath(files, std::string(), session.location, true) + "\\";
    return session;
}

} // namespace korvel::ui
