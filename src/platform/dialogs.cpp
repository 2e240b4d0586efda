#include "dialogs.h"

namespace korvel {

MessageIcon failureIcon(const Failure& failure) {
    return failure.kind == FailureKind::Refused ? MessageIcon::Information : MessageIcon::Critical;
}

QString supportAddress() {
    const QString overridden = qEnvironmentVariable("KORVEL_SUPPORT_ADDRESS");
    return overridden.isEmpty() ? QStringLiteral("support@gravlenforge.example") : overridden;
}

QString unexpectedErrorText(int number, const QString& description) {
    return QStringLiteral("Sorry, but an error of type ") + QString::number(number) +
           QStringLiteral(" has occurred: ") + description + QLatin1Char('\n') + QStringLiteral("Please report this to ") +
           supportAddress() + QStringLiteral(" as soon as possible.");
}

} // namespace korvel
