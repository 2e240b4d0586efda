#pragma once

#include <QString>

namespace korvel::ui {

// The application's own texts: title and legal notice.
inline QString applicationTitle() {
    return QStringLiteral("Korvel");
}
inline QString legalNotice() {
    return QStringLiteral("Copyright \u00a9 2026 Gravlen Forge");
}
// The status bar's information text: title, a blank, the version text and the legal notice
// without the word "Copyright".
QString informationText(const QString& versionText);

} // namespace korvel::ui
