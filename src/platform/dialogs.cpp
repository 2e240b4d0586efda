#include "dialogs.h"

#include <QMutex>
#include <QMutexLocker>

namespace korvel {

namespace {

// Errors are reported from worker threads too.
QMutex& supportMutex() {
    static QMutex mutex;
    return mutex;
}

QString& givenSupportAddress() {
    static QString address;
    return address;
}

} // namespace

MessageIcon failureIcon(const Failure& failure) {
    return failure.kind == FailureKind::Refused ? MessageIcon::Information : MessageIcon::Critical;
}

QString supportAddress() {
    {
        const QMutexLocker lock(&supportMutex());
        if (!givenSupportAddress().isEmpty())
            return givenSupportAddress();
    }
    return qEnvironmentVariable("KORVEL_SUPPORT_ADDRESS").trimmed();
}

void setSupportAddress(const QString& address) {
    const QMutexLocker lock(&supportMutex());
    givenSupportAddress() = address.trimmed();
}

QString unexpectedErrorText(int number, const QString& description) {
    const QString address = supportAddress();
    return QStringLiteral("Sorry, but an error of type ") + QString::number(number) +
           QStringLiteral(" has occurred: ") + description + QLatin1Char('\n') +
           QStringLiteral("Please report this to ") +
           (address.isEmpty() ? programTitle() + QStringLiteral("'s maintainers") : address) +
           QStringLiteral(" as soon as possible.");
}

} // namespace korvel
