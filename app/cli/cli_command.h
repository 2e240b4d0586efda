#pragma once

#include "platform/dialogs.h"
#include "platform/result.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <functional>
#include <string>
#include <vector>

namespace korvel {
class FileServices;
struct ArchiveCheck;
} // namespace korvel

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
inline int refusedWith(const QString& message) {
    return refusedWith(refused(message));
}

// The dialogs of a command line: messages go to stderr and nothing is ever chosen in a dialog.
// Questions are declined (Cancel), unless the command line itself is the user's confirmation.
class CommandLineDialogs : public Dialogs {
public:
    enum class Questions { Declined, Confirmed };
    explicit CommandLineDialogs(Questions questions = Questions::Declined) : m_questions(questions) {}

    MessageAnswer message(const QString& title, const QString& text, MessageIcon icon, MessageButtons buttons) override;
    std::optional<QString> input(const QString&, const QString&, const QString&) override { return std::nullopt; }
    std::vector<std::string> openFiles(const OpenFileRequest&) override { return {}; }
    std::optional<std::string> browseFolder(const QString&, const std::string&) override { return std::nullopt; }

private:
    Questions m_questions;
};

// Commands of each part of the program, listed by `korvel-cli --help`.
std::vector<Command> archiveCommands();
std::vector<Command> mounterCommands();
std::vector<Command> startupCommands();
std::vector<Command> configuratorCommands();
std::vector<Command> packCommands();

// The mounter's reports on the mounted archives (stored paths in mount order): conflicts exits 0;
// check exits 1 when any archive is not fine.
int runMountedConflicts(const FileServices& files, const std::string& gameFolder,
                        const std::vector<std::string>& storedPaths, bool json);
int runMountedCheck(const FileServices& files, const std::string& gameFolder,
                    const std::vector<std::string>& storedPaths, bool json);
// One archive's check as JSON: fine, summary, problems [{kind, text}].
QJsonObject checkJson(const ArchiveCheck& check);

} // namespace korvel::cli
