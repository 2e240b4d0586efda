#include "startup.h"

#include "backups.h"
#include "default_track_list.h"
#include "platform/game_codec.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/short_path.h"
#include "settings_names.h"
#include "typed_settings.h"

#include <QByteArray>
#include <QFileInfo>

#include <algorithm>
#include <optional>

namespace korvel {

using namespace settings;

std::string requestFromArguments(const QStringList& arguments, const PathMap& paths) {
    if (arguments.isEmpty())
        return std::string();
    if (arguments.size() == 1 && !arguments.front().contains(QLatin1Char('"'))) {
        const QFileInfo file(arguments.front());
        if (file.isFile()) {
            const QString host = file.absoluteFilePath();
            std::optional<std::string> game = paths.isIdentity() ? std::nullopt : paths.toGame(host);
            if (!game) {
                game = toGameText(host);
                std::replace(game->begin(), game->end(), '/', '\\');
            }
            return "\"" + *game + "\"";
        }
    }
    return toGameText(arguments.join(QLatin1Char(' ')));
}

Startup::Startup(Services& services, SettingsStore& store, Session& session, ProfileChooser& chooser,
                 FileAssociation& association)
    : m_services(services), m_store(store), m_session(session), m_chooser(chooser), m_association(association) {}

StartupResult Startup::switchGame() {
    m_session.openedFolder.clear();
    m_session.openedFile.clear();
    return Main();
}

void Startup::terminateWith(const QString& text) {
    m_services.dialogs.message(QStringLiteral("Unexpected Error"), text, MessageIcon::Critical);
}

bool Startup::chooseProfile(std::string request, const std::optional<std::vector<std::string>>& list) {
    const bool noList = !list;
    const std::vector<std::string> names = list.value_or(std::vector<std::string>());

    if (request.find('"') != std::string::npos) {
        request.erase(std::remove(request.begin(), request.end(), '"'), request.end());
        m_session.openedFolder = FolderOf(request);
        m_session.openedFile = FileNameOf(request);
        const std::vector<std::string> components = splitText(m_session.openedFolder, '\\');
        for (const std::string& name : names) {
            if (std::find(components.begin(), components.end(), name) != components.end()) {
                m_session.currentGame = name;
                return true;
            }
        }
        if (!names.empty()) {
            m_session.currentGame = names.front();
            return true;
        }
        // No profile at all yet: the archive waits while the user sets one up.
        request.clear();
    }

    if (!request.empty()) {
        const auto match = std::find(names.begin(), names.end(), request);
        if (match == names.end()) {
            terminateWith(
                QStringLiteral("Sorry, but you have specified an invalid game on the command-line. Please run "
                               "Korvel with no command-line parameters if you'd like to setup a new game."));
            return false;
        }
        m_session.currentGame = *match;
        return true;
    }

    if (noList) {
        m_services.dialogs.message(
            QStringLiteral("Information"),
            QStringLiteral("Welcome! Since this is your first time using Korvel, you must add one "
                           "or more TRI games to your Game Profiles list. Please do so now."),
            MessageIcon::Information);
    }
    GameProfiles logic(m_store, m_services.files, m_services.dialogs, m_session);
    logic.open();
    m_chooser.choose(logic);
    // Exit, a cancelled re-locate, or the dialog closed by its frame: the program ends.
    return logic.state() == GameProfiles::State::Loaded;
}

bool Startup::readProfileValues() {
    const ProfileSettings profile(m_store, m_session.currentGame);
    const std::optional<std::string> location = profile.location();
    const std::optional<std::string> ini = profile.locationIni();
    const std::optional<std::string> exe = profile.locationExe();
    const std::optional<std::string> mmpa = profile.mmpa();
    m_session.location = location.value_or(std::string());
    m_session.locationIni = ini.value_or(std::string());
    m_session.locationExe = exe.value_or(std::string());
    m_session.mmpa = mmpa.value_or(std::string());
    m_session.configurator = profile.configurator();
    return location && ini && exe && mmpa;
}

void Startup::applyCodePage(const std::string& game) {
    const std::string setting = ProfileSettings(m_store, game).codePage();
    Result<CodePageChoice> choice =
        chooseGameCodec(QString(), QString::fromStdString(setting), PathMap::hostWinePrefix());
    if (!choice) {
        m_services.dialogs.message(QStringLiteral("Game Code Page"), choice.failure().message,
                                   MessageIcon::Exclamation);
        choice = systemGameCodec(PathMap::hostWinePrefix());
    }
    GameCodec::setActive(choice->codec);
}

StartupResult Startup::Main(const std::string& commandLine) {
    // The command line counts on the first entry only; the version text marks that entry.
    std::string request = m_session.versionText.empty() ? commandLine : std::string();
    m_session.versionText = VersionText(m_version);

    // The profile: named on the command line, the only one there is, or chosen in the dialog.
    ProgramSettings program(m_store);
    const std::optional<std::vector<std::string>> list = program.installedGames();
    if (request.empty() && m_session.currentGame.empty() && list && list->size() == 1)
        request = list->front();
    if (!chooseProfile(request, list))
        return StartupResult::Terminate;
    const std::string game = m_session.currentGame;

    // Values are written only into existing keys.
    m_store.CreateKey(std::string(kProgramKey));
    m_store.CreateKey(profileKey(game));

    ProfileSettings profile(m_store, game);
    const std::optional<bool> associate = program.associateChoice();
    const bool hasTrackList = program.trackList().has_value();
    const std::vector<std::string> stored = profile.readValidated();
    const bool firstRun = profile.firstRun();
    bool complete = readProfileValues();
    applyCodePage(game);
    m_session.autosave = profile.autosave();

    // The game moved or was removed: ask for its executable again.
    if (!m_services.files.FileExists(m_session.locationIni) || !m_services.files.FileExists(m_session.locationExe)) {
        GameProfiles relocate(m_store, m_services.files, m_services.dialogs, m_session);
        if (relocate.AddGame(true) == GameProfiles::AddOutcome::Terminate)
            return StartupResult::Terminate;
        complete = readProfileValues();
    }

    // Archive paths are stored short and relative to this folder.
    m_session.shortGameFolder = ShortPath(m_services.files, std::string(), m_session.location, true) + "\\";

    // The association follows the stored choice at every start; an unreadable choice becomes "off"
    // and takes effect from the next start.
    if (!associate)
        program.setAssociate(false);
    else if (*associate)
        m_association.associate();
    else
        m_association.dissociate();

    if (!hasTrackList)
        program.setTrackList(std::string(kDefaultTrackList));

    // Only the store is repaired: the values held stay as read, so the autosave switches of a very
    // first start are off until the next start.
    profile.repair(stored, m_session.location);

    // A profile without its folder, files or counter cannot be used; the user re-adds it.
    if (!complete) {
        terminateWith(QStringLiteral("Sorry, but your Korvel game configuration data has been corrupted. Fear not, "
                                     "though -- to recover, all you need to do is reload Korvel, remove ") +
                      fromGameText(game) + QStringLiteral(" from the Game Profiles list, and re-add it."));
        // The sole profile would load again at every start and stop here again: the profiles
        // dialog comes now instead, once, so the user can remove and re-add it at once.
        if (m_offeringRepair || !list || list->size() != 1)
            return StartupResult::Terminate;
        m_offeringRepair = true;
        const StartupResult repaired = Main();
        m_offeringRepair = false;
        return repaired;
    }

    // The first start of a profile backs up the game's files before anything can change them.
    if (firstRun) {
        MakeBackups(m_services.files, m_services.dialogs, m_session.location);
        m_services.dialogs.message(
            QStringLiteral("Reminder"),
            QStringLiteral(
                "Korvel is now Donationware. This means that, while you are free to use it in any way you see "
                "fit for as long as you want, you are encouraged to donate to the cause. Please refer to the "
                "Help>About menu for information on how to donate!"),
            MessageIcon::Exclamation);
        profile.setFirstRunDone();
    }

    return StartupResult::ShowMainWindow;
}

} // namespace korvel
