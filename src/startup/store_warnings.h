#pragma once

#include "platform/dialogs.h"
#include "platform/registry_service.h"

#include <QSet>

namespace korvel {

// The dialogs of the desktop application, put in front of the real ones so that trouble with the
// settings store (a damaged file kept aside, a file that cannot be written, a change that was not
// saved) is explained before anything else is shown: before the Welcome message, any start-up
// question or a message that ends the program. The same text is explained once.
class StoreWarningDialogs : public Dialogs {
public:
    StoreWarningDialogs(Dialogs& shown, RegistryService& registry) : m_shown(shown), m_registry(registry) {}

    // Shows what the store has to say now, if anything; for the moments no other message follows
    // (before a form opens, after the window has opened, when the program ends).
    void explainPending() { explainPendingBefore(QString()); }

    MessageAnswer message(const QString& title, const QString& text, MessageIcon icon,
                          MessageButtons buttons = MessageButtons::Ok) override;
    std::optional<QString> input(const QString& title, const QString& prompt, const QString& proposal) override;
    std::vector<std::string> openFiles(const OpenFileRequest& request) override;
    std::optional<std::string> browseFolder(const QString& caption, const std::string& startFolder) override;

    // The title of the explanation.
    static QString title() { return QStringLiteral("WARNING!"); }

private:
    // A warning the coming message already holds (a failed save's own report) is not said twice.
    void explainPendingBefore(const QString& comingText);

    Dialogs& m_shown;
    RegistryService& m_registry;
    QSet<QString> m_explained;
};

} // namespace korvel
