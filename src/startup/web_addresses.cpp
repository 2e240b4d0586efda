#include "web_addresses.h"

#include <QRegularExpression>
#include <QUrl>

namespace korvel {

namespace {

QString whatIsMissing(WebAddress which) {
    switch (which) {
    case WebAddress::TrackSite:
        return QStringLiteral("No address is set for the add-on tracks' web site.");
    case WebAddress::TrackList:
        return QStringLiteral("No address is set for the track list.");
    case WebAddress::Home:
        return QStringLiteral("No address is set for Korvel's web site.");
    case WebAddress::Support:
        break;
    }
    return QStringLiteral("No support mail address is set.");
}

} // namespace

const char* addressVariable(WebAddress which) {
    switch (which) {
    case WebAddress::TrackSite:
        return "KORVEL_TRACK_SITE";
    case WebAddress::TrackList:
        return "KORVEL_TRACK_LIST_URL";
    case WebAddress::Home:
        return "KORVEL_WEB_ADDRESS";
    case WebAddress::Support:
        break;
    }
    return "KORVEL_SUPPORT_ADDRESS";
}

QString addressOverride(WebAddress which) {
    return qEnvironmentVariable(addressVariable(which)).trimmed();
}

QString addressInForce(const ProgramSettings& settings, WebAddress which) {
    const QString overridden = addressOverride(which);
    return overridden.isEmpty() ? settings.address(which) : overridden;
}

QString missingAddressHint(WebAddress which) {
    return whatIsMissing(which) +
           QStringLiteral(" Enter one in File > Options > Web, or set the environment variable ") +
           QString::fromLatin1(addressVariable(which)) + QLatin1Char('.');
}

QString addressCaption(WebAddress which) {
    switch (which) {
    case WebAddress::TrackSite:
        return QStringLiteral("Add-on track site:");
    case WebAddress::TrackList:
        return QStringLiteral("Track list document:");
    case WebAddress::Home:
        return QStringLiteral("Korvel's web site:");
    case WebAddress::Support:
        break;
    }
    return QStringLiteral("Support mail address:");
}

std::optional<QString> addressProblem(WebAddress which, const QString& text) {
    const QString address = text.trimmed();
    if (address.isEmpty())
        return std::nullopt;
    if (which == WebAddress::Support) {
        static const QRegularExpression mail(QStringLiteral("^[^@\\s]+@[^@\\s]+$"));
        if (mail.match(address).hasMatch())
            return std::nullopt;
        return QStringLiteral("\"%1\" is not a mail address. Enter one of the form name@host, or leave the box "
                              "empty.")
            .arg(address);
    }
    const QUrl url(address, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (url.isValid() && (scheme == QLatin1String("http") || scheme == QLatin1String("https")) && !url.host().isEmpty())
        return std::nullopt;
    return QStringLiteral("\"%1\" is not a web address. Enter one that starts with http:// or https://, or leave "
                          "the box empty.")
        .arg(address);
}

} // namespace korvel
