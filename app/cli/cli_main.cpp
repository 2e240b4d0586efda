#include "cli_command.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstring>

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

MessageAnswer StderrDialogs::message(const QString& title, const QString& text, MessageIcon, MessageButtons buttons) {
    err() << title << ": " << text << '\n';
    return buttons == MessageButtons::Ok ? MessageAnswer::Ok : MessageAnswer::Cancel;
}

namespace {

std::vector<Command> allCommands() {
    std::vector<Command> commands;
    for (auto part : {archiveCommands, mounterCommands, startupCommands, configuratorCommands}) {
        auto more = part();
        commands.insert(commands.end(), more.begin(), more.end());
    }
    return commands;
}

void printHelp(const std::vector<Command>& commands) {
    out() << "Usage: korvel-cli COMMAND [OPTIONS]\n\n"
          << "Korvel's command-line front end: lists, extracts and patches POD archives, manages a game's\n"
          << "POD.INI and edits the game's settings. Paths are host paths.\n\nCommands:\n";
    for (const Command& command : commands)
        out() << "  " << command.name.leftJustified(14) << command.summary << '\n';
    out() << "\nRun 'korvel-cli COMMAND --help' for a command's options.\n"
          << "Exit status: 0 success, 1 refused input (message on stderr), 2 usage error.\n";
    out().flush();
}

} // namespace

} // namespace korvel::cli

int main(int argc, char** argv) {
    // Answered before the application object exists: a version check costs no more than the loader.
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("korvel-cli %d.%d.%d\n", KORVEL_VERSION_MAJOR, KORVEL_VERSION_MINOR, KORVEL_VERSION_PATCH);
        return 0;
    }
    // Help texts name the program as users type it, whatever path started it.
    static char programName[] = "korvel-cli";
    if (argc > 0)
        argv[0] = programName;
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("korvel-cli"));
    QCoreApplication::setApplicationVersion(
        QStringLiteral("%1.%2.%3").arg(KORVEL_VERSION_MAJOR).arg(KORVEL_VERSION_MINOR).arg(KORVEL_VERSION_PATCH));
    using namespace korvel::cli;
    const QStringList args = app.arguments().mid(1);
    const std::vector<Command> commands = allCommands();
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
