#include "check_results_model.h"

#include "mounter/pod_ini.h"
#include "platform/game_text.h"

#include <algorithm>

namespace korvel {

CheckResultsModel::CheckResultsModel(QObject* parent) : QAbstractTableModel(parent) {}

void CheckResultsModel::setChecks(std::vector<MountedCheck> checks) {
    beginResetModel();
    m_checks = std::move(checks);
    endResetModel();
}

int CheckResultsModel::problemCount() const {
    return static_cast<int>(
        std::count_if(m_checks.begin(), m_checks.end(), [](const MountedCheck& row) { return !row.check.fine(); }));
}

int CheckResultsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_checks.size());
}

int CheckResultsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant CheckResultsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const MountedCheck& row = m_checks[static_cast<size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case OrderColumn:
            return index.row() + 1;
        case ArchiveColumn:
            return fromGameText(ArchiveDisplayName(row.storedPath));
        case ResultColumn:
            return row.check.summary();
        default:
            return {};
        }
    case Qt::ToolTipRole:
        if (index.column() == ResultColumn)
            return row.check.summary();
        return fromGameText(row.check.path.empty() ? row.storedPath : row.check.path);
    case Qt::TextAlignmentRole:
        if (index.column() == OrderColumn)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case ProblemRole:
        return row.check.fine() ? QStringLiteral("fine") : QStringLiteral("problem");
    default:
        return {};
    }
}

QVariant CheckResultsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case OrderColumn:
        return QStringLiteral("#");
    case ArchiveColumn:
        return QStringLiteral("Mounted POD");
    case ResultColumn:
        return QStringLiteral("Result");
    default:
        return {};
    }
}

Qt::ItemFlags CheckResultsModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

} // namespace korvel
