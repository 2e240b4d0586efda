#pragma once

#include "result.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace korvel {

enum class MessageIcon { None, Critical, Question, Exclamation, Information };
enum class MessageButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MessageAnswer { Ok, Cancel, Yes, No };

struct FileFilter {
    QString description; // "POD Files (*.pod)"
    QString pattern;     // "*.pod"
};

struct OpenFileRequest {
    QString title;
    std::string startFolder; // game path; empty for the dialog's own choice
    std::vector<FileFilter> filters;
    bool multiSelect = false;
};

// Every question the program asks and every message it shows goes through this service: the
// desktop application answers with Qt dialogs, the command line with its flags, and tests with a
// scripted fake that records what was shown.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    virtual MessageAnswer message(const QString& title, const QString& text, MessageIcon icon,
                                  MessageButtons buttons = MessageButtons::Ok) = 0;
    // nullopt when cancelled.
    virtual std::optional<QString> input(const QString& title, const QString& prompt,
                                         const QString& proposal = QString()) = 0;
    // The chosen files as game paths, in the order given; empty when cancelled.
    virtual std::vector<std::string> openFiles(const OpenFileRequest& request) = 0;
    // The chosen folder as a game path; nullopt when cancelled.
    virtual std::optional<std::string> browseFolder(const QString& caption, const std::string& startFolder) = 0;
};

// The icon that goes with a failure's title: information for a refusal, critical for an error.
MessageIcon failureIcon(const Failure& failure);

// The program's own title for messages that have none of their own.
inline QString programTitle() {
    return QStringLiteral("Korvel");
}

// The general report of an unexpected error.
QString unexpectedErrorText(int number, const QString& description);
// Where users report errors: the address the program was given with setSupportAddress(), else
// KORVEL_SUPPORT_ADDRESS; empty when neither names one.
QString supportAddress();
void setSupportAddress(const QString& address);

} // namespace korvel
