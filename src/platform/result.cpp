#include "result.h"

namespace korvel {

QString Failure::title() const {
    switch (kind) {
    case FailureKind::ReadError:
        return QStringLiteral("Read Error");
    case FailureKind::UnexpectedError:
        return QStringLiteral("Unexpected Error");
    case FailureKind::FatalError:
        return QStringLiteral("Fatal Error");
    case FailureKind::WriteError:
        return QStringLiteral("Write Error");
    case FailureKind::Refused:
        return QStringLiteral("Information");
    case FailureKind::ChangedOnDisk:
        return QStringLiteral("File Changed");
    }
    return QStringLiteral("Unexpected Error");
}

} // namespace korvel
