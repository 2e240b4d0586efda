// The archive-building commands: pack, add, remove; and check for one archive.

#include "cli_command.h"

#include "platform/file_services.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "pod/pod_check.h"
#include "pod/pod_pack.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

namespace korvel::cli {

namespace {

struct Host {
    PathMap paths = PathMap::forHost();
    FileServices files{paths};

    std::optional<std::string> game(const QString& hostPath) const {
        return paths.toGame(QFileInfo(hostPath).absoluteFilePath());
    }
};

int usage(const QString& command, const QString& text) {
    err() << "korvel-cli " << command << ": " << text << "\nRun 'korvel-cli " << command << " --help'.\n";
    return kExitUsage;
}

// Parses; returns the exit status when the command ends here (help or a usage error).
std::optional<int> parse(QCommandLineParser& parser, const QString& command, const QString& description,
                         const QStringList& args, qsizetype positional) {
    parser.setApplicationDescription(description);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    parser.addOption(help);
    if (!parser.parse(QStringList{QStringLiteral("korvel-cli ") + command} + args))
        return usage(command, parser.errorText());
    if (parser.isSet(help)) {
        out() << parser.helpText().replace(QCoreApplication::arguments().value(0),
                                           QStringLiteral("korvel-cli ") + command);
        return kExitOk;
    }
    if (parser.positionalArguments().size() != positional)
        return usage(command, QStringLiteral("wrong number of arguments."));
    return std::nullopt;
}

// The game path of a host path, or the refusal printed.
std::optional<std::string> gamePathOf(const Host& host, const QString& path, int& status) {
    std::optional<std::string> game = host.game(path);
    if (!game)
        status = refusedWith(refused(QStringLiteral("No drive holds %1.").arg(path)));
    return game;
}

int runPack(const QStringList& args) {
    QCommandLineParser parser;
    const QCommandLineOption to(QStringLiteral("to"), QStringLiteral("The archive to write."),
                                QStringLiteral("NEW.POD"));
    const QCommandLineOption format(QStringLiteral("format"), QStringLiteral("pod1 (default) or pod2."),
                                    QStringLiteral("FORMAT"), QStringLiteral("pod1"));
    const QCommandLineOption comment(QStringLiteral("comment"), QStringLiteral("The archive's comment (79 bytes)."),
                                     QStringLiteral("TEXT"));
    const QCommandLineOption force(QStringLiteral("force"), QStringLiteral("Replace an existing archive."));
    parser.addOptions({to, format, comment, force});
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("The folder whose files are packed."));
    if (auto status = parse(parser, QStringLiteral("pack"),
                            QStringLiteral("Packs every file beneath a folder into a new POD archive: names relative\n"
                                           "to the folder with \"\\\" separators, sorted without regard to case."),
                            args, 1))
        return *status;
    if (!parser.isSet(to) || parser.value(to).isEmpty())
        return usage(QStringLiteral("pack"), QStringLiteral("--to NEW.POD is required."));
    const QString formatName = parser.value(format).toLower();
    if (formatName != QLatin1String("pod1") && formatName != QLatin1String("pod2"))
        return usage(QStringLiteral("pack"), QStringLiteral("unknown format '%1'.").arg(parser.value(format)));

    Host host;
    int status = kExitOk;
    const std::optional<std::string> folder = gamePathOf(host, parser.positionalArguments().first(), status);
    if (!folder)
        return status;
    const std::optional<std::string> target = gamePathOf(host, parser.value(to), status);
    if (!target)
        return status;
    PackOptions options;
    options.format = formatName == QLatin1String("pod2") ? PodFormat::Pod2 : PodFormat::Pod1;
    options.comment = parser.value(comment);
    options.replaceExisting = parser.isSet(force);
    if (!options.replaceExisting && QFileInfo::exists(parser.value(to)))
        return refusedWith(
            refused(QStringLiteral("%1 already exists; use --force to replace it.").arg(parser.value(to))));
    const Result<PackSummary> packed = packFolder(host.files, *folder, *target, options);
    if (!packed)
        return refusedWith(packed.failure());
    out() << QStringLiteral("Packed %1 files into %2 (%3 bytes).")
                 .arg(packed->entries)
                 .arg(QDir::toNativeSeparators(parser.value(to)))
                 .arg(packed->bytes)
          << '\n';
    return kExitOk;
}

int runAdd(const QStringList& args) {
    QCommandLineParser parser;
    const QCommandLineOption as(QStringLiteral("as"), QStringLiteral("The entry name to store the file under."),
                                QStringLiteral("ENTRY"));
    parser.addOption(as);
    parser.addPositionalArgument(QStringLiteral("ARCHIVE"), QStringLiteral("The POD archive (rewritten)."));
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The file to store."));
    if (auto status =
            parse(parser, QStringLiteral("add"),
                  QStringLiteral("Stores a file in an archive, replacing an entry of the same name (any case)\n"
                                 "in its place or adding it last. The comment and the other entries are kept."),
                  args, 2))
        return *status;
    if (!parser.isSet(as) || parser.value(as).isEmpty())
        return usage(QStringLiteral("add"), QStringLiteral("--as ENTRY is required."));
    Host host;
    int status = kExitOk;
    const std::optional<std::string> archive = gamePathOf(host, parser.positionalArguments()[0], status);
    if (!archive)
        return status;
    const std::optional<std::string> file = gamePathOf(host, parser.positionalArguments()[1], status);
    if (!file)
        return status;
    const Result<PackSummary> written = addToArchive(host.files, *archive, *file, parser.value(as));
    if (!written)
        return refusedWith(written.failure());
    out() << QStringLiteral("Stored %1; the archive holds %2 files.").arg(parser.value(as)).arg(written->entries)
          << '\n';
    return kExitOk;
}

int runRemove(const QStringList& args) {
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("ARCHIVE"), QStringLiteral("The POD archive (rewritten)."));
    parser.addPositionalArgument(QStringLiteral("ENTRY"), QStringLiteral("The entry to remove (any case)."));
    if (auto status = parse(parser, QStringLiteral("remove"),
                            QStringLiteral("Removes an entry from an archive, keeping the comment and the other\n"
                                           "entries in their order."),
                            args, 2))
        return *status;
    Host host;
    int status = kExitOk;
    const std::optional<std::string> archive = gamePathOf(host, parser.positionalArguments()[0], status);
    if (!archive)
        return status;
    const QString entry = parser.positionalArguments()[1];
    const Result<PackSummary> written = removeFromArchive(host.files, *archive, entry);
    if (!written)
        return refusedWith(written.failure());
    out() << QStringLiteral("Removed %1; the archive holds %2 files.").arg(entry).arg(written->entries) << '\n';
    return kExitOk;
}

int runCheck(const QStringList& args) {
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print one JSON object."));
    parser.addOption(json);
    parser.addPositionalArgument(QStringLiteral("ARCHIVE"), QStringLiteral("The POD archive to check."));
    if (auto status = parse(parser, QStringLiteral("check"),
                            QStringLiteral("Checks an archive: its directory, every entry's extent and name, and for\n"
                                           "POD2 the checksums. Exit status 1 when it is not fine."),
                            args, 1))
        return *status;
    Host host;
    int status = kExitOk;
    const QString archive = parser.positionalArguments().first();
    const std::optional<std::string> path = gamePathOf(host, archive, status);
    if (!path)
        return status;
    const ArchiveCheck check = checkArchive(host.files, *path);
    if (parser.isSet(json)) {
        QJsonObject object = checkJson(check);
        object.insert(QStringLiteral("archive"), QDir::toNativeSeparators(archive));
        out() << QJsonDocument(object).toJson(QJsonDocument::Indented);
    } else {
        out() << QDir::toNativeSeparators(archive) << '\t' << check.summary() << '\n';
    }
    return check.fine() ? kExitOk : kExitRefused;
}

} // namespace

QJsonObject checkJson(const ArchiveCheck& check) {
    QJsonArray problems;
    for (const CheckFinding& finding : check.findings)
        problems.append(QJsonObject{{QStringLiteral("kind"), checkProblemKey(finding.problem)},
                                    {QStringLiteral("text"), finding.text}});
    return QJsonObject{{QStringLiteral("fine"), check.fine()},
                       {QStringLiteral("summary"), check.summary()},
                       {QStringLiteral("problems"), problems}};
}

std::vector<Command> packCommands() {
    return {
        {QStringLiteral("pack"), QStringLiteral("Pack a folder into a new POD1 or POD2 archive"), runPack},
        {QStringLiteral("add"), QStringLiteral("Store a file in an archive (adds or replaces an entry)"), runAdd},
        {QStringLiteral("remove"), QStringLiteral("Remove an entry from an archive"), runRemove},
        {QStringLiteral("check"), QStringLiteral("Check an archive for damage, unsafe names, wrong checksums"),
         runCheck},
    };
}

} // namespace korvel::cli
