#include "cli_command.h"

#include "launcher/cli_module.h"

#include "platform/game_codec.h"
#include "platform/path_map.h"

#include <QCoreApplication>

#include <type_traits>

namespace korvel::cli {

QTextStream& out() {
    static QTextStream stream(stdout);
    return stream;
}

QTextStream& err() {
    static QTextStream stream(stderr);
    return stream;
}

int refusedWith(const Failure& failure) {
    err() << failure.message << '\n';
    return kExitRefused;
}

MessageAnswer CommandLineDialogs::message(const QString& title, const QString& text, MessageIcon,
                                          MessageButtons buttons) {
    if (buttons == MessageButtons::Ok) {
        err() << title << ": " << text << '\n';
        return MessageAnswer::Ok;
    }
    if (m_questions == Questions::Confirmed)
        return buttons == MessageButtons::OkCancel ? MessageAnswer::Ok : MessageAnswer::Yes;
    err() << title << ": " << text << '\n';
    return MessageAnswer::Cancel;
}

namespace {

std::vector<Command> allCommands() {
    std::vector<Command> commands;
    for (auto part : {archiveCommands, packCommands, mounterCommands, startupCommands, configuratorCommands}) {
        auto more = part();
        commands.insert(commands.end(), more.begin(), more.end());
    }
    return commands;
}

void printHelp(const std::vector<Command>& commands) {
    out() << "Usage: korvel-cli COMMAND [OPTIONS]\n\n"
          << "Korvel's command-line front end: lists, extracts and patches POD archives, manages a game's\n"
          << "POD.INI and edits the game's settings. Paths are host paths (/home/ann/MTM2, ~/MTM2) or\n"
          << "game paths (C:\\Games\\MTM2 through the Wine prefix's drives).\n\n"
          << "Global option:\n"
          << "  --codepage CP  the game's code page (1252, 1251, 1250, 932...); default $KORVEL_CODEPAGE,\n"
          << "                 else the Wine prefix's, else the locale's\n\nCommands:\n";
    for (const Command& command : commands)
        out() << "  " << command.name.leftJustified(14) << command.summary << '\n';
    out() << "\nRun 'korvel-cli COMMAND --help' for a command's options.\n"
          << "Exit status: 0 success, 1 refused input (message on stderr), 2 usage error.\n";
    out().flush();
}

// Takes "--codepage CP" (or "--codepage=CP") out of the arguments, wherever it stands before the
// command's own; nullopt when it is given without a value.
std::optional<QString> takeCodePageOption(QStringList& args) {
    QString chosen;
    for (qsizetype i = 0; i < args.size();) {
        if (args[i] == QLatin1String("--codepage")) {
            if (i + 1 >= args.size())
                return std::nullopt;
            chosen = args[i + 1];
            args.remove(i, 2);
        } else if (args[i].startsWith(QLatin1String("--codepage="))) {
            chosen = args[i].mid(11);
            args.remove(i);
        } else {
            ++i;
        }
    }
    return chosen;
}

} // namespace

} // namespace korvel::cli

// The whole command line, as main() would run it; the korvel-cli launcher calls it after answering
// what it can without Qt.
extern "C" Q_DECL_EXPORT int korvel_cli_main(int argc, char** argv) {
    static_assert(std::is_same_v<decltype(&korvel_cli_main), CliEntryFunction>);
    // Help texts name the program as users type it, whatever path started it.
    static char programName[] = "korvel-cli";
    if (argc > 0)
        argv[0] = programName;
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("korvel-cli"));
    QCoreApplication::setApplicationVersion(
        QStringLiteral("%1.%2.%3").arg(KORVEL_VERSION_MAJOR).arg(KORVEL_VERSION_MINOR).arg(KORVEL_VERSION_PATCH));
    using namespace korvel::cli;
    QStringList args = app.arguments().mid(1);
    const std::vector<Command> commands = allCommands();
    const std::optional<QString> codePage = takeCodePageOption(args);
    if (!codePage) {
        err() << "korvel-cli: --codepage needs a code page (1252, 1251, 932...).\n";
        return kExitUsage;
    }
    const korvel::Result<korvel::CodePageChoice> codec =
        korvel::chooseGameCodec(*codePage, QString(), korvel::PathMap::hostWinePrefix());
    if (!codec)
        return refusedWith(codec.failure());
    korvel::GameCodec::setActive(codec->codec);
    if (args.isEmpty() || args.first() == QLatin1String("--help") || args.first() == QLatin1String("-h") ||
        args.first() == QLatin1String("help")) {
        printHelp(commands);
        return args.isEmpty() ? kExitUsage : kExitOk;
    }
    if (args.first() == QLatin1String("--version")) {
        out() << "korvel-cli " << QCoreApplication::applicationVersion() << '\n';
        return kExitOk;
    }
    for (const Command& command : commands) {
        if (command.name == args.first()) {
            const int status = command.run(args.mid(1));
            out().flush();
            err().flush();
            return status;
        }
    }
    err() << "korvel-cli: unknown command '" << args.first() << "'. Run 'korvel-cli --help'.\n";
    return kExitUsage;
}
