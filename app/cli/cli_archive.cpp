// The archive commands: list, extract, export, convert, compatiblize and palette.

#include "cli_command.h"

#include "configurator/track_tools.h"
#include "palette/palette.h"
#include "platform/file_services.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "pod/extraction.h"
#include "pod/listing_export.h"
#include "pod/pod_directory.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

#ifdef Q_OS_WIN
#include <io.h>
#define korvel_isatty _isatty
#define korvel_fileno _fileno
#else
#include <unistd.h>
#define korvel_isatty isatty
#define korvel_fileno fileno
#endif

namespace korvel::cli {

namespace {

// The host's drives and the file services over them, for one command.
struct HostFiles {
    PathMap paths = PathMap::forHost();
    FileServices files{paths};

    // The game path of a path typed on the command line (a host path or a game path).
    Result<std::string> game(const QString& typed) const { return paths.typedGamePath(typed); }
};

int usage(const QString& command, const QString& text) {
    err() << "korvel-cli " << command << ": " << text << "\nRun 'korvel-cli " << command << " --help'.\n";
    return kExitUsage;
}

// Parses the arguments; returns an exit status when the command should stop here (help or usage).
std::optional<int> parse(QCommandLineParser& parser, const QString& command, const QString& description,
                         const QStringList& args, int minPositional, int maxPositional) {
    parser.setApplicationDescription(description);
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    parser.addOption(help);
    if (!parser.parse(QStringList{QStringLiteral("korvel-cli ") + command} + args))
        return usage(command, parser.errorText());
    if (parser.isSet(help)) {
        QString help = parser.helpText();
        const QString program = QCoreApplication::arguments().value(0);
        if (help.startsWith(QStringLiteral("Usage: ") + program))
            help.replace(7, program.size(), QStringLiteral("korvel-cli ") + command);
        out() << help;
        return kExitOk;
    }
    const qsizetype count = parser.positionalArguments().size();
    if (count < minPositional || (maxPositional >= 0 && count > maxPositional))
        return usage(command, QStringLiteral("wrong number of arguments."));
    return std::nullopt;
}

Result<PodDirectory> listArchive(const HostFiles& host, const QString& archive) {
    const Result<std::string> path = host.game(archive);
    if (!path)
        return path.failure();
    return ListPOD(host.files, *path);
}

QString text(std::string_view gameText) {
    return fromGameText(gameText);
}

// Appends game text as UTF-8; plain ASCII is copied as it stands.
void appendUtf8(std::string& out, std::string_view gameText) {
    for (char c : gameText) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            out += fromGameText(gameText).toStdString();
            return;
        }
    }
    out.append(gameText);
}

// The name as the commands match it: blanks at both ends do not count.
std::string_view trimmedName(std::string_view name) {
    while (!name.empty() && name.front() == ' ')
        name.remove_prefix(1);
    while (!name.empty() && name.back() == ' ')
        name.remove_suffix(1);
    return name;
}

std::optional<PodEntry> findEntry(const PodDirectory& listing, const QString& name) {
    const std::string wanted = trimBlanks(toGameText(name));
    for (const PodEntry entry : listing.entries)
        if (equalsIgnoreCase(trimmedName(entry.name), wanted))
            return entry;
    return std::nullopt;
}

// A JSON string of game text.
void appendJsonString(std::string& out, std::string_view gameText) {
    const size_t from = out.size();
    out += '"';
    for (char c : gameText) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) {
            const QByteArray escaped = QJsonDocument(QJsonArray{fromGameText(gameText)}).toJson(QJsonDocument::Compact);
            out.resize(from);
            out.append(escaped.constData() + 1, size_t(escaped.size() - 2));
            return;
        }
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", byte);
            out += escape;
        } else {
            out += c;
        }
    }
    out += '"';
}

int runList(const QStringList& args) {
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print one JSON object."));
    const QCommandLineOption sort(QStringLiteral("sort"), QStringLiteral("Sort the rows by name."));
    parser.addOptions({json, sort});
    parser.addPositionalArgument(QStringLiteral("ARCHIVE"), QStringLiteral("The POD archive to list."));
    if (auto status = parse(parser, QStringLiteral("list"), QStringLiteral("Lists the files stored in a POD archive."),
                            args, 1, 1))
        return *status;

    HostFiles host;
    QElapsedTimer clock;
    clock.start();
    const Result<PodDirectory> listing = listArchive(host, parser.positionalArguments().first());
    if (!listing)
        return refusedWith(listing.failure());
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    const std::vector<quint32> rows = displayOrder(*listing, parser.isSet(sort));
    const PodEntries& entries = listing->entries;

    if (parser.isSet(json)) {
        // The rows are written by hand into one buffer: a hundred thousand of them as JSON objects
        // would take longer to build than to read.
        const QJsonObject head{{QStringLiteral("archive"), text(listing->fileName)},
                               {QStringLiteral("format"), text(listing->formatName())},
                               {QStringLiteral("comment"), text(listing->comment)},
                               {QStringLiteral("size"), static_cast<double>(listing->archiveSize)},
                               {QStringLiteral("type"), text(listing->typeText)},
                               {QStringLiteral("editor"), text(listing->editorText)},
                               {QStringLiteral("total"), listing->headerCount},
                               {QStringLiteral("status"), listedStatusText(*listing, seconds)}};
        QByteArray document = QJsonDocument(head).toJson(QJsonDocument::Indented);
        document.chop(3); // "\n}\n"
        out().flush();
        PodOutput buffer(stdout);
        buffer.append(std::string_view(document.constData(), size_t(document.size())));
        buffer.append(",\n    \"entries\": [");
        std::string line;
        for (size_t i = 0; i < rows.size(); ++i) {
            const PodEntry entry = entries[rows[i]];
            line = i == 0 ? "\n        {\"name\": " : ",\n        {\"name\": ";
            appendJsonString(line, entry.name);
            line += ", \"size\": " + std::to_string(entry.size) + ", \"start\": " + std::to_string(entry.start) +
                    ", \"end\": " + std::to_string(entry.end) + "}";
            buffer.append(line);
        }
        buffer.append(rows.empty() ? "]\n}\n" : "\n    ]\n}\n");
        if (!buffer.flush())
            return refusedWith(QString::fromStdString(listingWriteFailureText(buffer.errorNumber())));
        return kExitOk;
    }

    out().flush();
    // One buffer for the whole text: listings run to a hundred thousand rows.
    PodOutput buffer(stdout);
    if (!writePodTextListing(*listing, rows, buffer, appendUtf8))
        return refusedWith(QString::fromStdString(listingWriteFailureText(buffer.errorNumber())));
    return kExitOk;
}

// A progress line on stderr for extractions that take a while, when stderr is a terminal.
class ProgressLine {
public:
    ProgressLine() : m_enabled(korvel_isatty(korvel_fileno(stderr)) != 0) { m_clock.start(); }

    void update(int done, int total, std::string_view name) {
        if (!m_enabled || m_clock.elapsed() < 500 || (done < total && m_last.isValid() && m_last.elapsed() < 100))
            return;
        m_last.start();
        QString line = QStringLiteral("%1/%2 %3").arg(done).arg(total).arg(text(name)).left(78);
        err() << '\r' << line.leftJustified(79) << (done == total ? "\r" : "");
        if (done == total)
            err() << QString(79, QLatin1Char(' ')) << '\r';
        err().flush();
    }

private:
    bool m_enabled;
    QElapsedTimer m_clock;
    QElapsedTimer m_last;
};

int runExtract(const QStringList& args) {
    QCommandLineParser parser;
    const QCommandLineOption to(QStringLiteral("to"), QStringLiteral("The folder to extract into (made if missing)."),
                                QStringLiteral("DIR"));
    parser.addOption(to);
    parser.addPositionalArgument(QStringLiteral("ARCHIVE"), QStringLiteral("The POD archive."));
    parser.addPositionalArgument(QStringLiteral("NAME"),
                                 QStringLiteral("Entries to extract (any case); all when none is given."),
                                 QStringLiteral("[NAME...]"));
    if (auto status = parse(parser, QStringLiteral("extract"),
                            QStringLiteral("Extracts files from a POD archive. Missing folders are made and existing "
                                           "files are replaced whole."),
                            args, 1, -1))
        return *status;
    if (!parser.isSet(to) || parser.value(to).isEmpty())
        return usage(QStringLiteral("extract"), QStringLiteral("--to DIR is required."));

    HostFiles host;
    const QStringList positional = parser.positionalArguments();
    const Result<PodDirectory> listing = listArchive(host, positional.first());
    if (!listing)
        return refusedWith(listing.failure());

    std::vector<size_t> rows;
    if (positional.size() == 1) {
        rows = allRows(*listing);
    } else {
        for (const QString& name : positional.mid(1)) {
            const std::string wanted = trimBlanks(toGameText(name));
            const size_t before = rows.size();
            for (size_t i = 0; i < listing->entries.size(); ++i)
                if (equalsIgnoreCase(trimmedName(listing->entries.nameAt(i)), wanted))
                    rows.push_back(i);
            if (rows.size() == before)
                return refusedWith(refused(QStringLiteral("The archive holds no file named %1.").arg(name)));
        }
    }

    const Result<QString> destination = host.paths.typedHostPath(parser.value(to));
    if (!destination)
        return refusedWith(destination.failure());
    const Result<std::string> gameDestination = host.paths.gamePathOf(*destination);
    if (!gameDestination)
        return refusedWith(gameDestination.failure());
    if (!QDir().mkpath(*destination))
        return refusedWith(writeError(QStringLiteral("Could not create the folder %1.").arg(*destination)));

    ProgressLine progress;
    const Result<ExtractSummary> summary =
        ExtractFiles(host.files, *listing, rows, *gameDestination, ExtractOptions{true, true},
                     [&progress](int done, int total, std::string_view name) { progress.update(done, total, name); });
    if (!summary)
        return refusedWith(summary.failure());
    out() << extractedSummaryText(*summary) << '\n';
    return kExitOk;
}

int runExport(const QStringList& args) {
    QCommandLineParser parser;
    const QCommandLineOption sort(QStringLiteral("sort"), QStringLiteral("Sort the rows by name."));
    parser.addOption(sort);
    parser.addPositionalArgument(QStringLiteral("ARCHIVE"), QStringLiteral("The POD archive."));
    if (auto status =
            parse(parser, QStringLiteral("export"),
                  QStringLiteral("Writes the archive's listing to a text file beside it (NAME.txt)."), args, 1, 1))
        return *status;
    HostFiles host;
    const Result<PodDirectory> listing = listArchive(host, parser.positionalArguments().first());
    if (!listing)
        return refusedWith(listing.failure());
    const Result<std::string> written = exportListing(host.files, *listing, parser.isSet(sort));
    if (!written)
        return refusedWith(written.failure());
    if (written->empty())
        return kExitOk; // nothing to export, as the desktop does it
    out() << exportCreatedText(QDir::toNativeSeparators(host.files.hostPath(*written))) << '\n';
    return kExitOk;
}

int runPatch(const QStringList& args, bool convert) {
    const QString command = convert ? QStringLiteral("convert") : QStringLiteral("compatiblize");
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("ARCHIVE"), QStringLiteral("The POD archive (patched in place)."));
    parser.addPositionalArgument(QStringLiteral("ENTRY"), QStringLiteral("The entry to patch."));
    if (convert)
        parser.addPositionalArgument(QStringLiteral("TYPE"),
                                     QStringLiteral("drag, circuit, rally, rumble or bomb-tag."));
    const QString description = convert ? QStringLiteral("Changes a track's race type inside its archive.")
                                        : QStringLiteral("Makes a truck compatible with the original 4x4 Evolution.");
    if (auto status = parse(parser, command, description, args, convert ? 3 : 2, convert ? 3 : 2))
        return *status;
    const QStringList positional = parser.positionalArguments();
    std::optional<RaceType> type;
    if (convert) {
        type = raceTypeFromName(positional[2].toStdString());
        if (!type)
            return usage(command, QStringLiteral("unknown race type '%1'.").arg(positional[2]));
    }

    HostFiles host;
    const Result<PodDirectory> listing = listArchive(host, positional[0]);
    if (!listing)
        return refusedWith(listing.failure());
    const std::optional<PodEntry> entry = findEntry(*listing, positional[1]);
    if (!entry)
        return refusedWith(refused(QStringLiteral("The archive holds no file named %1.").arg(positional[1])));

    const std::string path = listing->path();
    if (!convert) {
        const Result<qint64> patched = compatiblizeTruck(host.files, path, entry->start);
        if (!patched)
            return refusedWith(patched.failure());
        out() << compatiblizedText() << '\n';
        return kExitOk;
    }
    const Result<qint64> patched = convertRaceType(host.files, path, entry->start, *type);
    if (!patched)
        return refusedWith(patched.failure());
    const Result<PodDirectory> relisted = ListPOD(host.files, path);
    if (!relisted)
        return refusedWith(relisted.failure());
    out() << "POD Type: " << text(relisted->typeText) << '\n';
    return kExitOk;
}

int runPalette(const QStringList& args) {
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print an array of [r, g, b]."));
    parser.addOption(json);
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("A 768-byte palette file."));
    if (auto status =
            parse(parser, QStringLiteral("palette"), QStringLiteral("Shows the 256 colours of a palette."), args, 1, 1))
        return *status;
    HostFiles host;
    const QString file = parser.positionalArguments().first();
    const Result<std::string> path = host.game(file);
    if (!path)
        return refusedWith(path.failure());
    const Result<Palette> palette = loadPalette(host.files, *path);
    if (!palette)
        return refusedWith(palette.failure());
    if (parser.isSet(json)) {
        QJsonArray colors;
        for (const PaletteColor& color : palette->colors)
            colors.append(QJsonArray{color.red, color.green, color.blue});
        out() << QJsonDocument(colors).toJson(QJsonDocument::Compact) << '\n';
        return kExitOk;
    }
    for (int i = 0; i < kPaletteColors; ++i)
        out() << paletteTooltip(i, palette->colors[static_cast<size_t>(i)]) << '\n';
    return kExitOk;
}

} // namespace

std::vector<Command> archiveCommands() {
    return {
        {QStringLiteral("list"), QStringLiteral("List the files of a POD archive"), runList},
        {QStringLiteral("extract"), QStringLiteral("Extract files from a POD archive"), runExtract},
        {QStringLiteral("export"), QStringLiteral("Write an archive's listing to a text file"), runExport},
        {QStringLiteral("convert"), QStringLiteral("Change a track's race type in its archive"),
         [](const QStringList& args) { return runPatch(args, true); }},
        {QStringLiteral("compatiblize"), QStringLiteral("Make a truck work with the original 4x4 Evolution"),
         [](const QStringList& args) { return runPatch(args, false); }},
        {QStringLiteral("palette"), QStringLiteral("Show the colours of a palette file"), runPalette},
    };
}

} // namespace korvel::cli
