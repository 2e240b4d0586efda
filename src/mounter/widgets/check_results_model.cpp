#include "check_results_model.h"

#include "mounter/pod_ini.h"
#include "platform/game_text.h"

#include <algorithm>

namespace korvel {

CheckResultsModel::CheckResultsModel(QObject* parent)
    : ResultTableModel({QStringLiteral("#"), QStringLiteral("Mounted POD"), QStringLiteral("Result")}, parent) {}

void CheckResultsModel::setChecks(std::vector<MountedCheck> checks) {
    replaceResult([&] { m_checks = std::move(checks); });
}

int CheckResultsModel::problemCount() const {
    return static_cast<int>(
        std::count_if(m_checks.begin(), m_checks.end(), [](const MountedCheck& row) { return !row.check.fine(); }));
}

int CheckResultsModel::resultRows() const {
    return static_cast<int>(m_checks.size());
}

QVariant CheckResultsModel::cell(int rowNumber, int column, int role) const {
    const MountedCheck& row = m_checks[static_cast<size_t>(rowNumber)];
    switch (role) {
    case Qt::DisplayRole:
        switch (column) {
        case OrderColumn:
            return rowNumber + 1;
        case ArchiveColumn:
            return fromGameText(ArchiveDisplayName(row.storedPath));
        case ResultColumn:
            return row.check.summary();
        default:
            return {};
        }
    case Qt::ToolTipRole:
        if (column == ResultColumn)
            return row.check.summary();
        return fromGameText(row.check.path.empty() ? row.storedPath : row.check.path);
    case Qt::TextAlignmentRole:
        if (column == OrderColumn)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case ProblemRole:
        return row.check.fine() ? QStringLiteral("fine") : QStringLiteral("problem");
    default:
        return {};
    }
}

} // namespace korvel
