#include "game_profiles.h"

#include "platform/game_path.h"
#include "platform/game_text.h"
#include "setting_limits.h"
#include "settings_names.h"

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
    m_games.clear();
    const std::string list = m_store.readProgram(settings::kInstalledGames);
    // An empty text is a list without entries, not one entry without a name.
    for (std::string& name : list.empty() ? std::vector<std::string>() : splitText(list, settings::kListSeparator)) {
        if (name != settings::kError)
            m_games.push_back(std::move(name));
    }
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
        exePath = toGameText(*typed);
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
        const Status allowed = checkProfileName(m_games, toGameText(*name));
        if (allowed) {
            addProfile(exePath, toGameText(*name));
            return AddOutcome::Added;
        }
        m_dialogs.message(allowed.failure().title(), allowed.failure().message, MessageIcon::Information);
        proposal = *name;
    }
}

void GameProfiles::addProfile(const std::string& exePath, const std::string& name) {
    const std::string location = locationOf(exePath);
    m_store.CreateKey(settings::profileKey(name));
    m_games.push_back(name);
    if (m_selected < 0)
        m_selected = 0;
    m_store.writeProfile(name, settings::kLocation, location);
    m_store.writeProfile(name, settings::kLocationIni, location + "\\POD.INI");
    m_store.writeProfile(name, settings::kLocationExe, exePath);
    m_store.writeProfile(name, settings::kMmpa, std::string(settings::kDefaultMmpa));
    m_store.writeProfile(name, settings::kConfigurator, isMonsterTruckMadness2Name(name) ? "True" : "False");
    m_loadEnabled = true;
}

void GameProfiles::saveList() {
    m_store.writeProgram(settings::kInstalledGames,
                         m_games.empty() ? std::string(settings::kError) : joinText(m_games, settings::kListSeparator));
}

bool GameProfiles::Load() {
    if (m_selected < 0 || m_selected >= int(m_games.size()))
        return false;
    m_session.currentGame = m_games[size_t(m_selected)];
    saveList();
    m_state = State::Loaded;
    return true;
}

void GameProfiles::Remove() {
    if (m_selected < 0 || m_selected >= int(m_games.size()))
        return;
    m_store.DeleteKey(settings::profileKey(m_games[size_t(m_selected)]));
    m_games.erase(m_games.begin() + m_selected);
    m_selected = m_games.empty() ? -1 : 0;
    m_loadEnabled = !m_games.empty();
}

void GameProfiles::Exit() {
    saveList();
    m_state = State::Exited;
}

} // namespace korvel
