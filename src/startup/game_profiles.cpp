#include "game_profiles.h"

#include "platform/game_codec.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "setting_limits.h"
#include "settings_names.h"
#include "typed_settings.h"

namespace korvel {

namespace {

std::string locationOf(const std::string& exePath) {
    return withoutTrailingBackslash(FolderOf(exePath));
}

} // namespace

bool isMonsterTruckMadness2Name(std::string_view name) {
    static constexpr std::string_view kNames[] = {
        "MONSTER TRUCK MADNESS 2", "MONSTER TRUCK MADNESS II", "MTM2", "MTMII", "MTM 2", "MTM II"};
    const std::string upper = upperGame(name);
    for (std::string_view known : kNames) {
        if (upper == known)
            return true;
    }
    return false;
}

GameProfiles::GameProfiles(SettingsStore& store, const FileServices& files, Dialogs& dialogs, Session& session)
    : m_store(store), m_files(files), m_dialogs(dialogs), m_session(session) {}

void GameProfiles::open() {
    m_games = ProgramSettings(m_store).installedGames().value_or(std::vector<std::string>());
    m_selected = m_games.empty() ? -1 : 0;
    m_loadEnabled = !m_games.empty();
    m_state = State::Open;
}

void GameProfiles::select(int index) {
    m_selected = index >= 0 && index < int(m_games.size()) ? index : -1;
}

std::string GameProfiles::proposedName(const std::string& exePath) {
    return FileNameOf(locationOf(exePath));
}

GameProfiles::AddOutcome GameProfiles::AddGame(bool fatal) {
    std::string exePath;
    if (m_shift != 1) {
        OpenFileRequest request;
        request.title = QStringLiteral("Locate your game's executable file");
        request.startFolder = "C:\\";
        request.filters = {{QStringLiteral("Executable Files (*.exe)"), QStringLiteral("*.exe")},
                           {QStringLiteral("All Files (*.*)"), QStringLiteral("*.*")}};
        const std::vector<std::string> chosen = m_dialogs.openFiles(request);
        if (chosen.empty() || chosen.front().empty()) {
            if (!fatal)
                return AddOutcome::Unchanged;
            m_dialogs.message(QStringLiteral("Fatal Error"),
                              QStringLiteral("Couldn't find ") + fromGameText(m_session.currentGame) +
                                  QStringLiteral("! Terminating!"),
                              MessageIcon::Critical);
            m_state = State::Terminated;
            return AddOutcome::Terminate;
        }
        exePath = chosen.front();
    } else {
        const std::optional<QString> typed =
            m_dialogs.input(QStringLiteral("Input Required"),
                            QStringLiteral("Please enter the full path to your game's executable file (ie. C:\\Program "
                                           "Files\\Terminal Reality\\4x4 Evolution\\4x4.exe):"));
        if (!typed || typed->isEmpty())
            return AddOutcome::Unchanged;
        // A host path ("/home/ann/Games/MTM2/MTM2.EXE", "~/...") or a game path ("C:\...").
        const Result<std::string> typedPath = m_files.paths().typedGamePath(*typed);
        if (!typedPath) {
            m_dialogs.message(QStringLiteral("Read Error"), typedPath.failure().message, MessageIcon::Critical);
            return AddOutcome::Unchanged;
        }
        exePath = *typedPath;
        const std::vector<std::string> found = m_files.search(exePath, SearchFilter::NormalFiles);
        const std::string foundName = found.empty() ? std::string() : upperGame(found.front());
        if (foundName != upperGame(FileNameOf(exePath))) {
            m_dialogs.message(QStringLiteral("Read Error"), QStringLiteral("File not found!"), MessageIcon::Critical);
            return AddOutcome::Unchanged;
        }
    }
    // A name the store could not keep is refused here, and asked for again, rather than lost later.
    QString proposal = fromGameText(proposedName(exePath));
    while (true) {
        const std::optional<QString> name = m_dialogs.input(
            QStringLiteral("Input Required"), QStringLiteral("Please enter a name for this game:"), proposal);
        if (!name || name->isEmpty())
            return AddOutcome::Unchanged;
        proposal = *name;
        const std::optional<std::string> gameName = encodeGameText(*name);
        if (!gameName) {
            m_dialogs.message(QStringLiteral("Input Required"), unrepresentableMessage(*name), MessageIcon::Critical);
            continue;
        }
        const Status allowed = checkProfileName(m_games, *gameName);
        if (allowed) {
            addProfile(exePath, *gameName);
            return AddOutcome::Added;
        }
        m_dialogs.message(allowed.failure().title(), allowed.failure().message, MessageIcon::Information);
    }
}

void GameProfiles::addProfile(const std::string& exePath, const std::string& name) {
    SettingsStore::OneSave together(m_store);
    m_store.CreateKey(settings::profileKey(name));
    m_games.push_back(name);
    if (m_selected < 0)
        m_selected = 0;
    ProfileSettings(m_store, name).addProfile(locationOf(exePath), exePath, isMonsterTruckMadness2Name(name));
    m_loadEnabled = true;
}

void GameProfiles::saveList() {
    ProgramSettings(m_store).setInstalledGames(m_games);
}

bool GameProfiles::load() {
    if (m_selected < 0 || m_selected >= int(m_games.size()))
        return false;
    m_session.currentGame = m_games[size_t(m_selected)];
    saveList();
    m_state = State::Loaded;
    return true;
}

void GameProfiles::remove() {
    if (m_selected < 0 || m_selected >= int(m_games.size()))
        return;
    m_store.DeleteKey(settings::profileKey(m_games[size_t(m_selected)]));
    m_games.erase(m_games.begin() + m_selected);
    m_selected = m_games.empty() ? -1 : 0;
    m_loadEnabled = !m_games.empty();
}

void GameProfiles::exit() {
    saveList();
    m_state = State::Exited;
}

} // namespace korvel
