#include "cli_command.h"

#include "mounter/mounter.h"
#include "platform/file_services.h"
#include "platform/game_codec.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "platform/process_shell.h"
#include "platform/registry_tree.h"
#include "platform/services.h"
#include "platform/short_path.h"
#include "startup/session.h"
#include "startup/settings_store.h"
#include "startup/typed_settings.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>

namespace korvel::cli {

namespace {

constexpr const char* kProfile = "korvel-cli";

const QStringList kCommands = {QStringLiteral("show"),        QStringLiteral("mount"),  QStringLiteral("unmount"),
                               QStringLiteral("top"),         QStringLiteral("up"),     QStringLiteral("down"),
                               QStringLiteral("bottom"),      QStringLiteral("delete"), QStringLiteral("mount-all"),
                               QStringLiteral("unmount-all"), QStringLiteral("clean"),  QStringLiteral("conflicts"),
                               QStringLiteral("check")};

int usage(const QString& text) {
    err() << "mounter: " << text << "\nRun 'korvel-cli mounter --help' for the options.\n";
    return kExitUsage;
}

QJsonArray rowsJson(const EntryList& list) {
    QJsonArray rows;
    for (const MountedEntry& row : list.rows()) {
        rows.append(QJsonObject{{QStringLiteral("display"), fromGameText(row.text)},
                                {QStringLiteral("status"), fromGameText(row.status)},
                                {QStringLiteral("path"), fromGameText(row.path)}});
    }
    return rows;
}

bool isPlainAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Writes game text to standard output. Plain ASCII in Windows-1252 is the same bytes in the
// terminal's UTF-8, so it goes out as it is, after what the text stream still holds.
void printGameText(std::string_view text) {
    const bool ascii = GameCodec::active().codePage() == 1252 && isPlainAscii(text);
    if (!ascii) {
        out() << fromGameText(text);
        return;
    }
    out().flush();
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void printState(const Mounter& mounter, bool json) {
    if (json) {
        const QJsonObject state{{QStringLiteral("counter"), mounter.counterText()},
                                {QStringLiteral("mounted"), rowsJson(mounter.mounted())},
                                {QStringLiteral("unmounted"), rowsJson(mounter.unmounted())}};
        out() << QJsonDocument(state).toJson(QJsonDocument::Indented);
        return;
    }
    out() << mounter.counterText() << '\n';
    // Rows are joined as game text and converted a block at a time: one conversion per block of
    // rows rather than three per row, with memory bounded by the block.
    constexpr size_t kBlock = 64 * 1024;
    std::string lines;
    lines.reserve(kBlock + 1024);
    for (const EntryList* list :
         {static_cast<const EntryList*>(&mounter.mounted()), static_cast<const EntryList*>(&mounter.unmounted())}) {
        for (const MountedEntry& row : list->rows()) {
            lines += row.text;
            lines += '\t';
            lines += row.status;
            lines += '\t';
            lines += row.path;
            lines += '\n';
            if (lines.size() >= kBlock) {
                printGameText(lines);
                lines.clear();
            }
        }
    }
    printGameText(lines);
}

// The rows named by their stored paths (ignoring case), every row that carries a name; the names
// that no row carries go to `missing`.
Mounter::Rows namedRows(const EntryList& list, const QStringList& names, QStringList& missing) {
    Mounter::Rows rows;
    for (const QString& name : names) {
        const std::string path = toGameText(name);
        bool found = false;
        for (int row = 0; row < list.size(); ++row) {
            if (equalsIgnoreCase(list.at(row).path, path)) {
                rows.push_back(row);
                found = true;
            }
        }
        if (!found)
            missing << name;
    }
    return rows;
}

int runMounter(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Shows and changes a game's POD.INI, the list of mounted archives.\n\n"
        "Commands:\n"
        "  show                 the counter, the mounted rows, then the unmounted rows (tab-separated:\n"
        "                       display text, status, stored path); never rewrites POD.INI\n"
        "  mount FILE...        mount archive files (host paths)\n"
        "  unmount ENTRY...     unmount mounted rows, named by their stored path as 'show' prints it\n"
        "  top|up|down|bottom ENTRY...  move mounted rows\n"
        "  delete ENTRY...      send unmounted archives to the recycle bin\n"
        "  mount-all, unmount-all, clean (drop the rows whose archive was not found)\n"
        "  conflicts            the paths two or more mounted archives hold, with their holders in mount order\n"
        "  check                checks every mounted archive; exit status 1 when any is not fine\n\n"
        "Every command but 'show', 'delete', 'conflicts' and 'check' saves POD.INI; each but the last two then\n"
        "prints the lists as 'show' does."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("game"), QStringLiteral("The game folder."), QStringLiteral("DIR")});
    parser.addOption({QStringLiteral("ini"), QStringLiteral("The POD.INI to use (default: the game folder's)."),
                      QStringLiteral("FILE")});
    parser.addOption({QStringLiteral("extra-dirs"),
                      QStringLiteral("More folders to look for unmounted archives in, joined by '|'."),
                      QStringLiteral("A|B")});
    parser.addOption(
        {QStringLiteral("mmpa"), QStringLiteral("The counter's maximum (default 99)."), QStringLiteral("N"), "99"});
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print the lists as JSON.")});
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("What to do (see above)."));
    if (!parser.parse(QStringList{QStringLiteral("korvel-cli mounter")} + args))
        return usage(parser.errorText());
    if (parser.isSet(QStringLiteral("help"))) {
        out() << parser.helpText();
        return kExitOk;
    }
    QStringList positional = parser.positionalArguments();
    if (positional.isEmpty())
        return usage(QStringLiteral("no command given."));
    const QString command = positional.takeFirst();
    if (!kCommands.contains(command))
        return usage(QStringLiteral("unknown command '%1'.").arg(command));
    const bool report = command == QLatin1String("conflicts") || command == QLatin1String("check");
    const bool takesNames = !report && command != QLatin1String("show") && command != QLatin1String("mount-all") &&
                            command != QLatin1String("unmount-all") && command != QLatin1String("clean");
    if (takesNames && positional.isEmpty())
        return usage(QStringLiteral("'%1' needs at least one name.").arg(command));
    if (!takesNames && !positional.isEmpty())
        return usage(QStringLiteral("unexpected argument '%1'.").arg(positional.first()));
    const bool json = parser.isSet(QStringLiteral("json"));

    const PathMap paths = PathMap::forHost();
    FileServices files(paths);
    if (parser.value(QStringLiteral("game")).isEmpty())
        return usage(QStringLiteral("--game DIR is required."));
    const Result<QString> gameHost = paths.typedHostPath(parser.value(QStringLiteral("game")));
    if (!gameHost)
        return refusedWith(gameHost.failure().message);
    if (!QFileInfo(*gameHost).isDir())
        return refusedWith(QStringLiteral("Game folder not found: %1").arg(parser.value(QStringLiteral("game"))));
    const Result<std::string> location = paths.typedGamePath(parser.value(QStringLiteral("game")));
    if (!location)
        return refusedWith(location.failure().message);

    Session session;
    session.currentGame = kProfile;
    session.location = withoutTrailingBackslash(*location);
    if (PathMap::isDriveRoot(session.location))
        session.location = session.location.substr(0, 2);
    session.mmpa = toGameText(parser.value(QStringLiteral("mmpa")));
    session.autosave = AutosaveSwitches(); // saved explicitly below
    session.shortGameFolder = ShortPath(files, std::string(), session.location, true) + "\\";
    if (parser.isSet(QStringLiteral("ini"))) {
        const Result<std::string> ini = paths.typedGamePath(parser.value(QStringLiteral("ini")));
        if (!ini)
            return refusedWith(ini.failure().message);
        session.locationIni = *ini;
    } else {
        session.locationIni = session.location + "\\POD.INI";
    }

    // A command that saves POD.INI holds its lock from the read to the save, so a second command
    // run at the same time waits for this one instead of saving over its change.
    std::optional<FileLock> lock;
    if (command != QLatin1String("show") && command != QLatin1String("delete")) {
        Result<FileLock> locked = files.lockForChange(session.locationIni);
        if (!locked)
            return refusedWith(locked.failure());
        lock = std::move(*locked);
    }

    RegistryTree registry;
    // The command line itself is the user's confirmation: questions are answered Yes.
    CommandLineDialogs dialogs(CommandLineDialogs::Questions::Confirmed);
    ProcessShell shell(paths);
    Services services{paths, files, registry, dialogs, shell};
    SettingsStore settings(registry, dialogs);
    ProfileSettings profile(settings, kProfile);
    profile.createKey();
    profile.setExtraDirs({});
    Mounter mounter(session, settings, services);
    if (parser.isSet(QStringLiteral("extra-dirs"))) {
        std::vector<std::string> folders;
        for (const QString& folder : parser.value(QStringLiteral("extra-dirs")).split(QLatin1Char('|'))) {
            if (folder.isEmpty())
                continue;
            const Result<std::string> game = paths.typedGamePath(folder);
            if (!game)
                return refusedWith(game.failure().message);
            folders.push_back(*game);
        }
        mounter.setExtraDirsOverride(std::move(folders));
    }

    if (report) {
        if (Mounter::Outcome loaded = mounter.LoadMountedList(Mounter::LoadMode::ReadOnly); !loaded)
            return refusedWith(loaded.status.failure().message);
        std::vector<std::string> stored;
        for (const MountedEntry& row : mounter.mounted().rows())
            stored.push_back(row.path);
        return command == QLatin1String("conflicts") ? runMountedConflicts(files, session.location, stored, json)
                                                     : runMountedCheck(files, session.location, stored, json);
    }
    if (Mounter::Outcome loaded = mounter.refreshBoth(Mounter::LoadMode::ReadOnly); !loaded)
        return refusedWith(loaded.status.failure().message);

    Status status;
    if (command == QLatin1String("show")) {
        printState(mounter, json);
        return kExitOk;
    } else if (command == QLatin1String("mount")) {
        std::vector<std::string> chosen;
        for (const QString& file : positional) {
            const Result<QString> host = paths.typedHostPath(file);
            if (!host || !QFileInfo(*host).isFile())
                return refusedWith(QStringLiteral("File not found!\n%1").arg(file));
            const Result<std::string> game = paths.gamePathOf(*host);
            if (!game)
                return refusedWith(game.failure().message);
            chosen.push_back(*game);
        }
        status = mounter.mountFiles(chosen).status;
    } else if (command == QLatin1String("delete")) {
        QStringList missing;
        const Mounter::Rows rows = namedRows(mounter.unmounted(), positional, missing);
        if (!missing.isEmpty())
            return refusedWith(QStringLiteral("Not among the unmounted archives: %1").arg(missing.join(", ")));
        if (Mounter::Outcome deleted = mounter.DeleteSelectedArchives(rows); !deleted)
            return refusedWith(deleted.status.failure().message);
        printState(mounter, json);
        return kExitOk;
    } else if (command == QLatin1String("mount-all")) {
        mounter.MountAll();
    } else if (command == QLatin1String("unmount-all")) {
        mounter.UnmountAll();
    } else if (command == QLatin1String("clean")) {
        status = mounter.CleanMissing().status;
    } else {
        QStringList missing;
        const Mounter::Rows rows = namedRows(mounter.mounted(), positional, missing);
        if (!missing.isEmpty())
            return refusedWith(QStringLiteral("Not in the mounted list: %1").arg(missing.join(", ")));
        if (command == QLatin1String("unmount"))
            status = mounter.UnmountSelected(rows).status;
        else if (command == QLatin1String("top"))
            status = mounter.MoveSelectedToTop(rows).status;
        else if (command == QLatin1String("up"))
            status = mounter.MoveSelectedUp(rows).status;
        else if (command == QLatin1String("down"))
            status = mounter.MoveSelectedDown(rows).status;
        else
            status = mounter.MoveSelectedToBottom(rows).status;
    }
    if (status.ok())
        status = mounter.SaveMountedList();
    if (!status)
        return refusedWith(status.failure().message);
    printState(mounter, json);
    return kExitOk;
}

} // namespace

std::vector<Command> mounterCommands() {
    return {{QStringLiteral("mounter"), QStringLiteral("Show and change a game's POD.INI (mount, unmount, reorder)"),
             runMounter}};
}

} // namespace korvel::cli
