#include "store_warnings.h"

#include <QStringList>

namespace korvel {

void StoreWarningDialogs::explainPendingBefore(const QString& comingText) {
    QStringList news;
    for (const QString& warning : m_registry.takeWarnings()) {
        // A store that cannot be written fails every change the same way: once is enough.
        if (m_explained.contains(warning) || news.contains(warning))
            continue;
        if (!comingText.isEmpty() && comingText.contains(warning))
            m_explained.insert(warning);
        else
            news << warning;
    }
    if (news.isEmpty())
        return;
    for (const QString& warning : news)
        m_explained.insert(warning);
    m_shown.message(title(), news.join(QStringLiteral("\n\n")), MessageIcon::Exclamation);
}

MessageAnswer StoreWarningDialogs::message(const QString& title, const QString& text, MessageIcon icon,
                                           MessageButtons buttons) {
    explainPendingBefore(text);
    return m_shown.message(title, text, icon, buttons);
}

std::optional<QString> StoreWarningDialogs::input(const QString& title, const QString& prompt,
                                                  const QString& proposal) {
    explainPending();
    return m_shown.input(title, prompt, proposal);
}

std::vector<std::string> StoreWarningDialogs::openFiles(const OpenFileRequest& request) {
    explainPending();
    return m_shown.openFiles(request);
}

std::optional<std::string> StoreWarningDialogs::browseFolder(const QString& caption, const std::string& startFolder) {
    explainPending();
    return m_shown.browseFolder(caption, startFolder);
}

} // namespace korvel
