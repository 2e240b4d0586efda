#include "cli_command.h"

#include "configurator/monster_ini.h"
#include "configurator/player_profile.h"
#include "platform/dialogs.h"
#include "platform/file_services.h"
#include "platform/game_codec.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "platform/services.h"
#include "startup/settings_store.h"
#include "startup/web_addresses.h"
#include "tracklist/track_fetch_module.h"
#include "tracklist/track_list.h"
#include "tracklist/track_list_download.h"
#include "tracklist/track_site.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibrary>

namespace korvel::cli {

namespace {

int usage(const QString& text) {
    err() << text << '\n';
    return kExitUsage;
}

void printJson(const QJsonDocument& document) {
    out() << document.toJson(QJsonDocument::Indented);
}

// Parses the arguments; nullopt carries the exit status when parsing ends the command (help or error).
std::optional<int> parse(QCommandLineParser& parser, const QString& command, const QStringList& args) {
    parser.addHelpOption();
    if (!parser.parse(QStringList{QStringLiteral("korvel-cli ") + command} + args))
        return usage(parser.errorText());
    if (parser.isSet(QStringLiteral("help"))) {
        out() << parser.helpText();
        return kExitOk;
    }
    return std::nullopt;
}

// The game folder named by --game, as a game path.
std::optional<std::string> gameFolder(const PathMap& paths, const QCommandLineParser& parser) {
    const QString folder = parser.value(QStringLiteral("game"));
    const Result<QString> host = paths.typedHostPath(folder);
    if (folder.isEmpty() || !host || !QFileInfo(*host).isDir())
        return std::nullopt;
    const Result<std::string> game = paths.typedGamePath(folder);
    return game ? std::optional<std::string>(*game) : std::nullopt;
}

// ---- monster ----

const QStringList kLanguageNames = {QStringLiteral("standard"), QStringLiteral("fun"), QStringLiteral("pig")};

std::optional<bool> onOff(const QString& text) {
    if (text == QLatin1String("on"))
        return true;
    if (text == QLatin1String("off"))
        return false;
    return std::nullopt;
}

void printMonster(const MonsterSettings& settings, bool json) {
    if (json) {
        printJson(QJsonDocument(QJsonObject{{QStringLiteral("hiddenTrack"), settings.hiddenTrack},
                                            {QStringLiteral("horn"), settings.horn},
                                            {QStringLiteral("language"), settings.localization},
                                            {QStringLiteral("custom"), fromGameText(settings.custom)}}));
        return;
    }
    const QString language = settings.localization >= 1 && settings.localization <= 3
                                 ? kLanguageNames[settings.localization - 1]
                                 : QStringLiteral("custom");
    out() << "hidden-track: " << (settings.hiddenTrack ? "on" : "off") << '\n'
          << "horn: " << (settings.horn ? "on" : "off") << '\n'
          << "language: " << language << " (" << fromGameText(settings.custom) << ")\n";
}

int runMonster(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows or changes the hidden track, the kooky horns and the language file in the game's "
                       "system\\monster.ini. Without changes it prints the settings."));
    parser.addOption({QStringLiteral("game"), QStringLiteral("The game folder."), QStringLiteral("DIR")});
    parser.addOption(
        {QStringLiteral("hidden-track"), QStringLiteral("Offer the hidden track."), QStringLiteral("on|off")});
    parser.addOption({QStringLiteral("horn"), QStringLiteral("Use the kooky horn sounds."), QStringLiteral("on|off")});
    parser.addOption({QStringLiteral("language"),
                      QStringLiteral("The language file: a built-in one, or a path (a file inside the game folder "
                                     "is stored relative to it)."),
                      QStringLiteral("standard|fun|pig|PATH")});
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print the settings as JSON.")});
    if (std::optional<int> status = parse(parser, QStringLiteral("monster"), args))
        return *status;
    if (!parser.positionalArguments().isEmpty())
        return usage(QStringLiteral("monster: unexpected argument '%1'.").arg(parser.positionalArguments().first()));

    const PathMap paths = PathMap::forHost();
    const std::optional<std::string> folder = gameFolder(paths, parser);
    if (!folder)
        return usage(QStringLiteral("monster: --game must name an existing game folder."));
    FileServices files(paths);

    // A change holds the file's lock from the read to the save, so a second command run at the
    // same time waits for this one instead of saving over its change.
    std::optional<FileLock> lock;
    if (parser.isSet(QStringLiteral("hidden-track")) || parser.isSet(QStringLiteral("horn")) ||
        parser.isSet(QStringLiteral("language"))) {
        Result<FileLock> locked = files.lockForChange(monsterIniPath(*folder));
        if (!locked)
            return refusedWith(locked.failure());
        lock = std::move(*locked);
    }

    Result<MonsterSettings> settings = LoadMonsterIni(files, *folder);
    if (!settings)
        return refusedWith(settings.failure());

    bool change = false;
    for (const auto& [option, field] : {std::pair{QStringLiteral("hidden-track"), &MonsterSettings::hiddenTrack},
                                        std::pair{QStringLiteral("horn"), &MonsterSettings::horn}}) {
        if (!parser.isSet(option))
            continue;
        const std::optional<bool> value = onOff(parser.value(option));
        if (!value)
            return usage(QStringLiteral("monster: --%1 takes on or off.").arg(option));
        (*settings).*field = *value;
        change = true;
    }
    if (parser.isSet(QStringLiteral("language"))) {
        const QString language = parser.value(QStringLiteral("language"));
        const qsizetype builtIn = kLanguageNames.indexOf(language);
        if (builtIn >= 0) {
            settings->localization = static_cast<int>(builtIn) + 1;
            settings->custom = builtInLanguageFile(settings->localization);
        } else if (language.isEmpty()) {
            return usage(QStringLiteral("monster: --language needs a value."));
        } else {
            // An existing file is taken as the host file it names; any other text as the game reads it.
            const Result<QString> file = paths.typedHostPath(language);
            std::optional<std::string> gamePath;
            if (file && QFileInfo(*file).isFile()) {
                const Result<std::string> game = paths.gamePathOf(*file);
                if (!game)
                    return refusedWith(game.failure());
                gamePath = customLanguagePath(*game, *folder);
            } else {
                gamePath = encodeGameText(language);
                if (!gamePath)
                    return refusedWith(refused(unrepresentableMessage(language)));
            }
            settings->localization = 4;
            settings->custom = *gamePath;
        }
        change = true;
    }
    if (change) {
        if (Status saved = SaveMonsterIni(files, *folder, *settings); !saved)
            return refusedWith(saved.failure());
        settings = LoadMonsterIni(files, *folder);
        if (!settings)
            return refusedWith(settings.failure());
    }
    printMonster(*settings, parser.isSet(QStringLiteral("json")));
    return kExitOk;
}

// ---- drivers ----

QJsonObject driverJson(const DriverEntry& entry) {
    return {{QStringLiteral("name"), fromGameText(entry.name)}, {QStringLiteral("record"), fromGameText(entry.record)}};
}

int runDrivers(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Lists, shows or removes the drivers in the game's player.pro.\n"
                       "  list           one driver name per line\n"
                       "  show N         driver N (from 1), its record as stored\n"
                       "  remove NAME... removes every driver of these names and saves the file"));
    parser.addOption({QStringLiteral("game"), QStringLiteral("The game folder."), QStringLiteral("DIR")});
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print JSON.")});
    parser.addPositionalArgument(QStringLiteral("action"), QStringLiteral("list, show or remove."),
                                 QStringLiteral("list|show N|remove NAME..."));
    if (std::optional<int> status = parse(parser, QStringLiteral("drivers"), args))
        return *status;
    const QStringList positional = parser.positionalArguments();
    const QString action = positional.value(0);
    const bool json = parser.isSet(QStringLiteral("json"));
    if (!(action == QLatin1String("list") && positional.size() == 1) &&
        !(action == QLatin1String("show") && positional.size() == 2) &&
        !(action == QLatin1String("remove") && positional.size() >= 2))
        return usage(QStringLiteral("drivers: use list, show N or remove NAME... (see --help)."));

    const PathMap paths = PathMap::forHost();
    const std::optional<std::string> folder = gameFolder(paths, parser);
    if (!folder)
        return usage(QStringLiteral("drivers: --game must name an existing game folder."));
    FileServices files(paths);

    std::optional<FileLock> lock; // held from the read to the save, as for monster.ini
    if (action == QLatin1String("remove")) {
        Result<FileLock> locked = files.lockForChange(playerProfilePath(*folder));
        if (!locked)
            return refusedWith(locked.failure());
        lock = std::move(*locked);
    }

    DriverLoad load = LoadDrivers(files, *folder);
    if (load.failure)
        return refusedWith(*load.failure);
    if (load.list.state == DriverRecords::State::Unread)
        return refusedWith(refused(QStringLiteral("%1\n\nThis is not a driver file: its first line is not \"103\".")
                                       .arg(fromGameText(playerProfilePath(*folder)))));
    DriverRecords& list = load.list;

    if (action == QLatin1String("list")) {
        if (json) {
            QJsonArray array;
            for (const DriverEntry& entry : list.entries)
                array.append(driverJson(entry));
            printJson(QJsonDocument(array));
        } else {
            for (const DriverEntry& entry : list.entries)
                out() << fromGameText(entry.name) << '\n';
        }
        return kExitOk;
    }

    if (action == QLatin1String("show")) {
        bool number = false;
        const int n = positional.at(1).toInt(&number);
        if (!number || n < 1 || n > list.count())
            return refusedWith(refused(
                QStringLiteral("There is no driver %1; the file holds %2.").arg(positional.at(1)).arg(list.count())));
        const DriverEntry& entry = list.entries[static_cast<size_t>(n - 1)];
        if (json)
            printJson(QJsonDocument(driverJson(entry)));
        else
            out() << fromGameText(entry.record);
        return kExitOk;
    }

    // remove: every driver of any of the names; a name that matches none refuses the whole command.
    std::vector<bool> selected(list.entries.size(), false);
    for (const QString& name : positional.mid(1)) {
        const std::string wanted = toGameText(name);
        bool found = false;
        for (size_t i = 0; i < list.entries.size(); ++i) {
            if (list.entries[i].name == wanted) {
                selected[i] = true;
                found = true;
            }
        }
        if (!found)
            return refusedWith(
                refused(QStringLiteral("There is no driver named \"%1\". Nothing was removed.").arg(name)));
    }
    const int removed = RemoveSelectedDriver(list, selected);
    Result<DriverLoad> saved = SaveDrivers(files, *folder, list);
    if (!saved)
        return refusedWith(saved.failure());
    if (saved->failure)
        return refusedWith(*saved->failure);
    if (json)
        printJson(QJsonDocument(
            QJsonObject{{QStringLiteral("removed"), removed}, {QStringLiteral("left"), saved->list.count()}}));
    else
        out() << "Removed " << removed << " driver(s); " << saved->list.count() << " left.\n";
    return kExitOk;
}

// ---- tracks ----

// Downloads the track list through the download module, found beside the program (the build tree) or
// in the library folder it is installed to. Only this command loads it, and Qt Network with it.
TrackListReply fetchTrackListThroughModule(const QUrl& url, std::chrono::milliseconds timeout) {
    const QString programDir = QCoreApplication::applicationDirPath();
    QString error;
    for (const QString& dir : {programDir, programDir + QStringLiteral("/../" KORVEL_LIBDIR "/korvel")}) {
        QLibrary module(dir + QLatin1Char('/') + QLatin1String(kTrackFetchModule));
        if (auto fetch = reinterpret_cast<TrackFetchFunction>(module.resolve(kTrackFetchFunction))) {
            TrackListReply reply;
            fetch(url, qint64(timeout.count()), reply);
            return reply;
        }
        error = module.errorString();
    }
    TrackListReply failed;
    failed.error = QStringLiteral("the download module could not be loaded: ") + error;
    return failed;
}

int runTracks(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows or updates the list of add-on tracks kept in the settings store.\n"
                       "  list    one track per line: name, race type and download address, separated by tabs\n"
                       "  update  downloads a fresh list and stores it"));
    parser.addOption(
        {QStringLiteral("url"), QStringLiteral("Download the list from this address."), QStringLiteral("URL")});
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print the list as JSON.")});
    parser.addPositionalArgument(QStringLiteral("action"), QStringLiteral("list or update."),
                                 QStringLiteral("list|update"));
    if (std::optional<int> status = parse(parser, QStringLiteral("tracks"), args))
        return *status;
    const QStringList positional = parser.positionalArguments();
    const QString action = positional.value(0);
    if (positional.size() != 1 || (action != QLatin1String("list") && action != QLatin1String("update")))
        return usage(QStringLiteral("tracks: use list or update (see --help)."));

    CommandLineDialogs dialogs;
    std::unique_ptr<RegistryService> registry = createRegistry();
    SettingsStore store(*registry, dialogs);
    for (const QString& warning : registry->takeWarnings())
        err() << warning << '\n';
    TrackSite site = TrackSite::configured(store);

    if (action == QLatin1String("list")) {
        if (parser.isSet(QStringLiteral("url")))
            return usage(QStringLiteral("tracks: --url goes with update."));
        const TrackListParse parsed = parseTrackList(storedOrDefaultTrackList(store));
        if (parser.isSet(QStringLiteral("json"))) {
            QJsonArray array;
            for (const TrackRow& row : parsed.rows)
                array.append(QJsonObject{{QStringLiteral("name"), fromGameText(row.name)},
                                         {QStringLiteral("raceType"), fromGameText(row.raceType)},
                                         {QStringLiteral("path"), fromGameText(row.path)},
                                         {QStringLiteral("address"), site.trackAddress(row.path)}});
            printJson(QJsonDocument(array));
        } else {
            for (const TrackRow& row : parsed.rows)
                out() << fromGameText(row.name) << '\t' << fromGameText(row.raceType) << '\t'
                      << site.trackAddress(row.path) << '\n';
        }
        return parsed.failure ? refusedWith(*parsed.failure) : kExitOk;
    }

    if (parser.isSet(QStringLiteral("url"))) {
        site.listUrl = QUrl(parser.value(QStringLiteral("url")), QUrl::StrictMode);
        const QString scheme = site.listUrl.scheme();
        if (!site.listUrl.isValid() || (scheme != QLatin1String("http") && scheme != QLatin1String("https")))
            return usage(QStringLiteral("tracks: --url must be an http or https address."));
    }
    if (!site.hasList()) {
        err() << missingAddressHint(WebAddress::TrackList)
              << " Or name it with --url, or store it with: korvel-cli settings set TrackListAddress URL\n";
        return kExitRefused;
    }
    const TrackListReply reply = fetchTrackListThroughModule(site.listUrl, site.timeout);
    // The store only takes values in a key that exists; a fresh store has none yet.
    if (reply.ok)
        ProgramSettings(store).createKey();
    const Result<std::string> stored = storeTrackListReply(store, reply);
    if (!stored)
        return refusedWith(stored.failure());
    if (const std::optional<QString> failure = store.takeSaveFailure()) {
        err() << *failure << '\n';
        return kExitRefused;
    }
    out() << kUpdateSucceededText << '\n';
    return kExitOk;
}

} // namespace

std::vector<Command> configuratorCommands() {
    return {
        {QStringLiteral("monster"), QStringLiteral("Show or change the game settings in monster.ini"), runMonster},
        {QStringLiteral("drivers"), QStringLiteral("List, show or remove the drivers in player.pro"), runDrivers},
        {QStringLiteral("tracks"), QStringLiteral("List or update the add-on track list"), runTracks},
    };
}

} // namespace korvel::cli
