#include "cli_command.h"

#include "platform/dialogs.h"
#include "platform/file_services.h"
#include "platform/game_codec.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "platform/services.h"
#include "startup/association.h"
#include "startup/game_profiles.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "startup/typed_settings.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <memory>
#include <optional>

namespace korvel::cli {

namespace {

// The settings store of this user, with the dialogs it reports through.
struct Settings {
    std::unique_ptr<RegistryService> registry = createRegistry();
    CommandLineDialogs dialogs;
    SettingsStore store{*registry, dialogs};
    QString reported;

    // The exit status of a command that wrote settings: refused, with the reason, when a write
    // could not be saved.
    int saved() {
        const std::optional<QString> failure = store.takeSaveFailure();
        if (!failure)
            return kExitOk;
        reported = *failure;
        err() << reported << '\n';
        return kExitRefused;
    }

    ~Settings() {
        for (const QString& warning : registry->takeWarnings()) {
            if (warning != reported)
                err() << warning << '\n';
        }
    }
};

int usage(const QString& text) {
    err() << text << '\n';
    return kExitUsage;
}

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

// ---- profiles ----

int runProfiles(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Lists, adds and removes game profiles.\n"
                       "  list            prints the profile names, one per line, in list order\n"
                       "  add EXE         adds a profile for the game whose executable is EXE\n"
                       "  remove NAME     removes the first profile named NAME from the list (its settings stay)"));
    parser.addPositionalArgument(QStringLiteral("action"), QStringLiteral("list, add or remove."),
                                 QStringLiteral("list|add EXE|remove NAME"));
    parser.addOption({QStringLiteral("name"),
                      QStringLiteral("The new profile's name (add; default: the game folder's name)."),
                      QStringLiteral("NAME")});
    if (std::optional<int> status = parse(parser, QStringLiteral("profiles"), args))
        return *status;
    const QStringList positional = parser.positionalArguments();
    const QString action = positional.value(0);
    const bool takesOne = action == QLatin1String("add") || action == QLatin1String("remove");
    if (!(action == QLatin1String("list") && positional.size() == 1) && !(takesOne && positional.size() == 2))
        return usage(QStringLiteral("profiles: expected 'list', 'add EXE' or 'remove NAME'."));
    if (parser.isSet(QStringLiteral("name")) && action != QLatin1String("add"))
        return usage(QStringLiteral("profiles: --name goes with 'add'."));

    Settings settings;
    const PathMap paths = PathMap::forHost();
    FileServices files(paths);
    Session session;
    // Adding and removing read the list and write it back under one lock, in one save: a profile
    // is added whole or not at all, and another program's change in between is not lost.
    std::optional<SettingsStore::OneSave> together;
    if (action != QLatin1String("list"))
        together.emplace(settings.store);
    GameProfiles profiles(settings.store, files, settings.dialogs, session);
    profiles.open();

    if (action == QLatin1String("list")) {
        for (const std::string& name : profiles.games())
            out() << fromGameText(name) << '\n';
        return kExitOk;
    }
    if (action == QLatin1String("add")) {
        const Result<QString> exe = paths.typedHostPath(positional[1]);
        if (!exe || !QFileInfo(*exe).isFile())
            return refusedWith(QStringLiteral("File not found!"));
        const Result<std::string> typedPath = paths.typedGamePath(positional[1]);
        if (!typedPath)
            return refusedWith(typedPath.failure().message);
        const std::string& exePath = *typedPath;
        std::string name = GameProfiles::proposedName(exePath);
        if (parser.isSet(QStringLiteral("name"))) {
            const std::optional<std::string> typedName = encodeGameText(parser.value(QStringLiteral("name")));
            if (!typedName)
                return refusedWith(unrepresentableMessage(parser.value(QStringLiteral("name"))));
            name = *typedName;
        }
        if (name.empty())
            return usage(QStringLiteral("profiles: the profile needs a name (--name)."));
        profiles.addProfile(exePath, name);
        profiles.saveList();
        together.reset();
        if (const int status = settings.saved(); status != kExitOk)
            return status;
        out() << "Added " << fromGameText(name) << ": " << fromGameText(exePath)
              << (isMonsterTruckMadness2Name(name) ? " (Configurator on)" : "") << '\n';
        return kExitOk;
    }
    const std::string name = toGameText(positional[1]);
    const auto& games = profiles.games();
    const auto found = std::find(games.begin(), games.end(), name);
    if (found == games.end())
        return refusedWith(QStringLiteral("There is no game profile named %1.").arg(positional[1]));
    profiles.select(int(found - games.begin()));
    profiles.remove();
    profiles.saveList();
    together.reset();
    return settings.saved();
}

// ---- settings ----

// Names shown by `settings show`: the program key's, or a profile's.
std::vector<std::string_view> knownNames(bool profile) {
    using namespace settings;
    if (!profile)
        return {kInstalledGames, kAssociate, kTrackList, kTrackSite, kTrackListAddress, kWebAddress, kSupportAddress};
    return {kLocation, kLocationIni, kLocationExe, kMmpa,      kConfigurator, kLogo, kScreen, kSlider,
            kAsPod,    kAsPlayer,    kAsMonster,   kAsChange,  kAsExit,       kFlat, kSlide,  kAutosort,
            kLock,     kBrowse,      kBrowseDir,   kExtraDirs, kLeft,         kTop,  kRecent, kFirstRun};
}

int runSettings(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Reads and writes values in Korvel's settings store (the program key, or a profile's with --profile).\n"
        "  get NAME        prints the value; refused when it is not set\n"
        "  set NAME TEXT   writes the value (creating the key when needed)\n"
        "  show            prints every value Korvel knows of as NAME=TEXT"));
    parser.addPositionalArgument(QStringLiteral("action"), QStringLiteral("get, set or show."),
                                 QStringLiteral("get NAME|set NAME TEXT|show"));
    parser.addOption(
        {QStringLiteral("profile"), QStringLiteral("The game profile whose values to use."), QStringLiteral("NAME")});
    if (std::optional<int> status = parse(parser, QStringLiteral("settings"), args))
        return *status;
    const QStringList positional = parser.positionalArguments();
    const QString action = positional.value(0);
    const qsizetype expected = action == QLatin1String("get")    ? 2
                               : action == QLatin1String("set")  ? 3
                               : action == QLatin1String("show") ? 1
                                                                 : -1;
    if (expected < 0 || positional.size() != expected)
        return usage(QStringLiteral("settings: expected 'get NAME', 'set NAME TEXT' or 'show'."));
    const bool forProfile = parser.isSet(QStringLiteral("profile"));
    const QString profile = parser.value(QStringLiteral("profile"));
    if (forProfile && (profile.isEmpty() || profile.contains(QLatin1Char('\\'))))
        return usage(QStringLiteral("settings: --profile needs a profile name."));

    Settings settings;
    const std::string key = forProfile ? settings::profileKey(toGameText(profile)) : std::string(settings::kProgramKey);
    if (action == QLatin1String("set")) {
        const std::optional<std::string> name = encodeGameText(positional[1]);
        const std::optional<std::string> text = encodeGameText(positional[2]);
        if (!name || !text)
            return refusedWith(unrepresentableMessage(name ? positional[2] : positional[1]));
        {
            SettingsStore::OneSave together(settings.store);
            settings.store.CreateKey(key);
            settings.store.WriteValue(key, *name, *text);
        }
        return settings.saved();
    }
    const SettingsStore::KeyPath path = settings.store.ParseKeyPath(key);
    if (!settings.registry->keyExists(path.root, path.subkey))
        return refusedWith(forProfile ? QStringLiteral("There are no settings for the game profile %1.").arg(profile)
                                      : QStringLiteral("There are no settings yet."));
    if (action == QLatin1String("get")) {
        const std::string value = settings.store.ReadValue(key, toGameText(positional[1]));
        if (value == settings::kError)
            return refusedWith(QStringLiteral("%1 is not set.").arg(positional[1]));
        out() << fromGameText(value) << '\n';
        return kExitOk;
    }
    for (std::string_view name : knownNames(forProfile)) {
        const std::string value = settings.store.ReadValue(key, std::string(name));
        if (value != settings::kError)
            out() << fromGameText(name) << '=' << fromGameText(value) << '\n';
    }
    return kExitOk;
}

// ---- associate ----

int runAssociate(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Makes the desktop open .pod archives with Korvel (on), or stops it (off). The choice is kept and applied "
        "again at every start of Korvel."));
    parser.addPositionalArgument(QStringLiteral("state"), QStringLiteral("on or off."), QStringLiteral("on|off"));
    parser.addOption({QStringLiteral("program"),
                      QStringLiteral("The program to open archives with (default: korvel next to korvel-cli)."),
                      QStringLiteral("PATH")});
    if (std::optional<int> status = parse(parser, QStringLiteral("associate"), args))
        return *status;
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1 || (positional[0] != QLatin1String("on") && positional[0] != QLatin1String("off")))
        return usage(QStringLiteral("associate: expected 'on' or 'off'."));
    const bool on = positional[0] == QLatin1String("on");

    AssociationOptions options = AssociationOptions::forThisProgram();
    const PathMap paths = PathMap::forHost();
    if (parser.isSet(QStringLiteral("program"))) {
        const Result<QString> program = paths.typedHostPath(parser.value(QStringLiteral("program")));
        if (!program)
            return refusedWith(program.failure().message);
        options.programPath = *program;
    } else {
        // The desktop application lies next to this program, with the same extension (".exe" or none).
        const QFileInfo self(QCoreApplication::applicationFilePath());
        options.programPath = self.absolutePath() + QStringLiteral("/korvel") +
                              (self.suffix().isEmpty() ? QString() : QLatin1Char('.') + self.suffix());
    }
    Settings settings;
    FileAssociation association(settings.store, paths, options);
    {
        SettingsStore::OneSave together(settings.store);
        ProgramSettings program(settings.store);
        program.createKey();
        program.setAssociate(on);
        if (on)
            association.associate();
        else
            association.dissociate();
    }
    if (const int status = settings.saved(); status != kExitOk)
        return status;
    if (on)
        out() << "Opening .pod archives with " << QDir::toNativeSeparators(options.programPath) << '\n';
    else
        out() << "Korvel no longer opens .pod archives\n";
    return kExitOk;
}

} // namespace

std::vector<Command> startupCommands() {
    return {
        {QStringLiteral("profiles"), QStringLiteral("List, add or remove game profiles"), runProfiles},
        {QStringLiteral("settings"), QStringLiteral("Read or write Korvel's settings"), runSettings},
        {QStringLiteral("associate"), QStringLiteral("Open .pod archives with Korvel, or stop"), runAssociate},
    };
}

} // namespace korvel::cli
