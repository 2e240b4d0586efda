#include "app_info.h"

namespace korvel::ui {

QString informationText(const QString& versionText) {
    QString notice = legalNotice();
    notice.remove(QStringLiteral("Copyright"), Qt::CaseSensitive);
    return applicationTitle() + QLatin1Char(' ') + versionText + notice;
}

} // namespace korvel::ui
