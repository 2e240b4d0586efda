#include "startup.h"

#include "backups.h"
#include "default_track_list.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/short_path.h"
#include "settings_names.h"

#include <QByteArray>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>

namespace korvel {

namespace {

using namespace settings;

// The whole text as a number; nullopt for anything else ("Error", "", "12abc").
std::optional<double> numberOf(const std::string& text) {
    const QByteArray trimmed = QByteArray::fromStdString(text).trimmed();
    bool ok = false;
    const double value = trimmed.toDouble(&ok);
    if (!ok || trimmed.isEmpty() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

bool isOneOf(const std::string& text, std::initializer_list<std::string_view> allowed) {
    for (std::string_view candidate : allowed) {
        if (text == candidate)
            return true;
    }
    return false;
}

// The profile values start-up reads, in the order it reads them.
constexpr std::string_view kProfileValues[] = {kLogo,     kScreen,      kSlider,      kAsPod, kAsPlayer,    kAsMonster,
                                               kAsChange, kAsExit,      kFlat,        kSlide, kAutosort,    kLock,
                                               kBrowse,   kBrowseDir,   kExtraDirs,   kLeft,  kTop,         kFirstRun,
                                               kLocation, kLocationIni, kLocationExe, kMmpa,  kConfigurator};

} // namespace

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

bool Startup::chooseProfile(std::string request, const std::string& list) {
    const bool noList = list == kError;
    const std::vector<std::string> names = noList ? std::vector<std::string>() : splitText(list, kListSeparator);

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

void Startup::readProfileValues() {
    const std::string& game = m_session.currentGame;
    m_session.location = m_store.readProfile(game, kLocation);
    m_session.locationIni = m_store.readProfile(game, kLocationIni);
    m_session.locationExe = m_store.readProfile(game, kLocationExe);
    m_session.mmpa = m_store.readProfile(game, kMmpa);
    m_session.configurator = m_store.readProfile(game, kConfigurator) == "True";
}

StartupResult Startup::Main(const std::string& commandLine) {
    // 1-2. The command line counts on the first entry only; the version text marks that entry.
    std::string request = m_session.versionText.empty() ? commandLine : std::string();
    m_session.versionText = VersionText(m_version);

    // 3-5. The profile.
    const std::string list = m_store.readProgram(kInstalledGames);
    if (request.empty() && m_session.currentGame.empty() && list != kError &&
        list.find(kListSeparator) == std::string::npos)
        request = list;
    if (!chooseProfile(request, list))
        return StartupResult::Terminate;
    const std::string game = m_session.currentGame;

    // 6. Keys.
    m_store.CreateKey(std::string(kProgramKey));
    m_store.CreateKey(profileKey(game));

    // 7. Reading.
    const std::string associate = m_store.readProgram(kAssociate);
    const std::string trackList = m_store.readProgram(kTrackList);
    std::map<std::string_view, std::string> values;
    for (std::string_view name : kProfileValues)
        values[name] = m_store.readProfile(game, name);
    readProfileValues();
    m_session.asPod = values[kAsPod];
    m_session.asPlayer = values[kAsPlayer];
    m_session.asMonster = values[kAsMonster];
    m_session.asChange = values[kAsChange];
    m_session.asExit = values[kAsExit];

    // 8. The game's files.
    if (!m_services.files.FileExists(m_session.locationIni) || !m_services.files.FileExists(m_session.locationExe)) {
        GameProfiles relocate(m_store, m_services.files, m_services.dialogs, m_session);
        if (relocate.AddGame(true) == GameProfiles::AddOutcome::Terminate)
            return StartupResult::Terminate;
        readProfileValues();
    }

    // 9.
    m_session.shortGameFolder = ShortPath(m_services.files, std::string(), m_session.location, true) + "\\";

    // 10. The association.
    if (associate == "0")
        m_association.Unregister();
    else if (associate == "1")
        m_association.Register();
    else
        m_store.writeProgram(kAssociate, std::string(kDefaultAssociate));

    // 11. The track list.
    if (trackList == kError)
        m_store.writeProgram(kTrackList, std::string(kDefaultTrackList));

    // 12. Validation: only the store is repaired; the values held stay as read.
    const auto check = [&](std::string_view name, bool passes, std::string_view fallback) {
        if (!passes)
            m_store.writeProfile(game, name, std::string(fallback));
    };
    const auto inRange = [](const std::string& text, double low, double high) {
        const std::optional<double> number = numberOf(text);
        return number && *number >= low && *number <= high;
    };
    check(kLogo, isOneOf(values[kLogo], {"1", "2", "3"}), kDefaultLogo);
    check(kScreen, isOneOf(values[kScreen], {"C", "E", "M"}), kDefaultScreen);
    check(kSlider, inRange(values[kSlider], kSliderMin, kSliderMax), kDefaultSlider);
    for (std::string_view name : {kAsPod, kAsPlayer, kAsMonster, kAsChange, kAsExit, kFlat, kBrowse})
        check(name, isOneOf(values[name], {"0", "1"}), kDefaultOff);
    check(kSlide, isOneOf(values[kSlide], {"0", "1"}), kDefaultSlide);
    check(kAutosort, isOneOf(values[kAutosort], {"0", "1"}), kDefaultAutosort);
    check(kLock, isOneOf(values[kLock], {"0", "1", "2", "3"}), kDefaultOff);
    check(kBrowseDir, values[kBrowseDir] != kError, m_session.location);
    check(kExtraDirs, values[kExtraDirs] != kError, kDefaultExtraDirs);
    check(kLeft, inRange(values[kLeft], 0, HUGE_VAL), kDefaultLeft);
    check(kTop, inRange(values[kTop], 0, HUGE_VAL), kDefaultTop);

    // 13. Profile integrity.
    for (const std::string* field :
         {&m_session.location, &m_session.locationIni, &m_session.locationExe, &m_session.mmpa}) {
        if (*field == kError) {
            terminateWith(QStringLiteral("Sorry, but your Korvel game configuration data has been corrupted. Fear not, "
                                         "though -- to recover, all you need to do is reload Korvel, remove ") +
                          fromGameText(game) + QStringLiteral(" from the Game Profiles list, and re-add it."));
            // The sole profile would load again at every start and stop here again: the profiles
            // dialog comes now instead, once, so the user can remove and re-add it at once.
            if (m_offeringRepair || list == kError || list.find(kListSeparator) != std::string::npos)
                return StartupResult::Terminate;
            m_offeringRepair = true;
            const StartupResult repaired = Main();
            m_offeringRepair = false;
            return repaired;
        }
    }

    // 14. First run of the profile.
    if (values[kFirstRun] != "0") {
        MakeBackups(m_services.files, m_services.dialogs, m_session.location);
        m_services.dialogs.message(
            QStringLiteral("Reminder"),
            QStringLiteral(
                "Korvel is now Donationware. This means that, while you are free to use it in any way you see "
                "fit for as long as you want, you are encouraged to donate to the cause. Please refer to the "
                "Help>About menu for information on how to donate!"),
            MessageIcon::Exclamation);
        m_store.writeProfile(game, kFirstRun, "0");
    }

    // 15.
    return StartupResult::ShowMainWindow;
}

} // namespace korvel
