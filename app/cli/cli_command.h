#pragma once

#include "platform/dialogs.h"
#include "platform/result.h"

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

// Prints the failure's message on stderr; returns the refused-input exit status.
int refusedWith(const Failure& failure);

// Dialogs for commands that ask nothing: messages go to stderr, questions get no answer.
class StderrDialogs : public Dialogs {
public:
    MessageAnswer message(const QString& title, const QString& text, MessageIcon icon, MessageButtons buttons) override;
    std::optional<QString> input(const QString&, const QString&, const QString&) override { return std::nullopt; }
    std::vector<std::string> openFiles(const OpenFileRequest&) override { return {}; }
    std::optional<std::string> browseFolder(const QString&, const std::string&) override { return std::nullopt; }
};

// Commands of each part of the program, listed by `korvel-cli --help`.
std::vector<Command> archiveCommands();
std::vector<Command> mounterCommands();
std::vector<Command> startupCommands();
std::vector<Command> configuratorCommands();

} // namespace korvel::cli
