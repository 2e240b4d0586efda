#include "app_info.h"

namespace korvel::ui {

QString webAddress() {
    const QString overridden = qEnvironmentVariable("KORVEL_WEB_ADDRESS");
    return overridden.isEmpty() ? QStringLiteral("https://korvel.example/") : overridden;
}

QString informationText(const QString& versionText) {
    QString notice = legalNotice();
    notice.remove(QStringLiteral("Copyright"), Qt::CaseSensitive);
    return applicationTitle() + QLatin1Char(' ') + versionText + notice;
}

} // namespace korvel::ui
