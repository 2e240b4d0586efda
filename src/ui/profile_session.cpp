#include "profile_session.h"

#include "platform/game_text.h"
#include "platform/short_path.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"

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
    auto read = [&](std::string_view name) { return store.readProfile(profile, name); };
    session.location = read(settings::kLocation);
    session.locationIni = read(settings::kLocationIni);
    session.locationExe = read(settings::kLocationExe);
    session.mmpa = read(settings::kMmpa);
    for (const std::string* value : {&session.location, &session.locationIni, &session.locationExe}) {
        if (value->empty() || *value == settings::kError)
            return refused(QStringLiteral("The game profile \"%1\" is not set up: it has no game folder, POD.INI or "
                                          "executable in the settings store.")
                               .arg(fromGameText(profile)));
    }
    session.configurator = read(settings::kConfigurator) == "True";
    session.asPod = read(settings::kAsPod);
    session.asPlayer = read(settings::kAsPlayer);
    session.asMonster = read(settings::kAsMonster);
    session.asChange = read(settings::kAsChange);
    session.asExit = read(settings::kAsExit);
    session.shortGameFolder = ShortPath(files, std::string(), session.location, true) + "\\";
    return session;
}

} // namespace korvel::ui
