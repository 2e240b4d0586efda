#pragma once

#include <QString>
#include <QStringList>
#include <QTextStream>

#include <functional>
#include <vector>

namespace korvel::cli {

// Exit statuses of every command.
inline constexpr int kExitOk = 0;
inline constexpr int kExitRefused = 1; // the input was refused; the message is on stderr
inline constexpr int kExitUsage = 2;   // the command line itself is wrong

struct Command {
    QString name;
    QString summary;
    // Receives the arguments after the command's name; returns the exit status.
    std::function<int(const QStringList& args)> run;
};

QTextStream& out();
QTextStream& err();

// Commands of each part of the program, listed by `korvel-cli --help`.
std::vector<Command> archiveCommands();
std::vector<Command> mounterCommands();
std::vector<Command> startupCommands();
std::vector<Command> configuratorCommands();

} // namespace korvel::cli
