#include "conflict_models.h"

#include "mounter/pod_ini.h"
#include "platform/game_text.h"
#include "pod/pod_directory.h"

#include <QStringList>

#include <algorithm>

namespace korvel {

namespace {

QString bytesText(qint64 size) {
    return fromGameText(AddCommas(static_cast<double>(size)));
}

QString stateText(const ConflictArchive& archive) {
    switch (archive.state) {
    case MountedArchiveState::Listed:
        return QString::number(archive.sharedCount);
    case MountedArchiveState::NotFound:
        return QStringLiteral("Not found");
    case MountedArchiveState::Damaged:
        return QStringLiteral("Damaged");
    }
    return QString();
}

} // namespace

QString conflictArchiveName(const ConflictReport& report, int row) {
    return fromGameText(ArchiveDisplayName(report.archives.at(static_cast<size_t>(row)).storedPath));
}

ConflictArchivesModel::ConflictArchivesModel(QObject* parent) : QAbstractTableModel(parent) {}

void ConflictArchivesModel::setReport(std::shared_ptr<const ConflictReport> report) {
    beginResetModel();
    m_report = std::move(report);
    endResetModel();
}

int ConflictArchivesModel::rowOf(const std::string& storedPath) const {
    if (!m_report)
        return -1;
    const auto& archives = m_report->archives;
    const auto at = std::find_if(archives.begin(), archives.end(),
                                 [&](const ConflictArchive& archive) { return archive.storedPath == storedPath; });
    return at == archives.end() ? -1 : static_cast<int>(at - archives.begin());
}

int ConflictArchivesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_report ? 0 : static_cast<int>(m_report->archives.size());
}

int ConflictArchivesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ConflictArchivesModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const int row = index.row();
    const ConflictArchive& archive = m_report->archives[static_cast<size_t>(row)];
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case OrderColumn:
            return row + 1;
        case ArchiveColumn:
            return conflictArchiveName(*m_report, row);
        case SharedColumn:
            return stateText(archive);
        case AlsoInColumn: {
            QStringList others;
            for (const auto& [other, count] : archive.sharedWith)
                others << QStringLiteral("%1 (%2)").arg(conflictArchiveName(*m_report, other)).arg(count);
            return others.join(QStringLiteral(", "));
        }
        default:
            return {};
        }
    case Qt::ToolTipRole:
        if (archive.state == MountedArchiveState::Damaged)
            return fromGameText(archive.storedPath) + QStringLiteral("\nDamaged: ") + archive.error;
        if (archive.state == MountedArchiveState::NotFound)
            return fromGameText(archive.storedPath) + QStringLiteral("\nNot found");
        return fromGameText(archive.storedPath) + QStringLiteral("\n%1 of its %2 files are also in other mounted PODs")
                                                      .arg(archive.sharedCount)
                                                      .arg(archive.entryCount);
    case Qt::TextAlignmentRole:
        if (index.column() == OrderColumn ||
            (index.column() == SharedColumn && archive.state == MountedArchiveState::Listed))
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case StoredPathRole:
        return fromGameText(archive.storedPath);
    case SharedCountRole:
        return archive.state == MountedArchiveState::Listed ? archive.sharedCount : -1;
    default:
        return {};
    }
}

QVariant ConflictArchivesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case OrderColumn:
        return QStringLiteral("#");
    case ArchiveColumn:
        return QStringLiteral("Mounted POD");
    case SharedColumn:
        return QStringLiteral("Shared files");
    case AlsoInColumn:
        return QStringLiteral("Also in");
    default:
        return {};
    }
}

Qt::ItemFlags ConflictArchivesModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

ConflictPathsModel::ConflictPathsModel(QObject* parent) : QAbstractTableModel(parent) {}

void ConflictPathsModel::setArchive(std::shared_ptr<const ConflictReport> report, int archive) {
    beginResetModel();
    m_report = std::move(report);
    m_archive = m_report && archive >= 0 && archive < static_cast<int>(m_report->archives.size()) ? archive : -1;
    endResetModel();
}

int ConflictPathsModel::rowCount(const QModelIndex& parent) const {
    if (parent.isValid() || m_archive < 0)
        return 0;
    return static_cast<int>(m_report->archives[static_cast<size_t>(m_archive)].paths.size());
}

int ConflictPathsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

const ConflictPath& ConflictPathsModel::pathAt(int row) const {
    const int path = m_report->archives[static_cast<size_t>(m_archive)].paths[static_cast<size_t>(row)];
    return m_report->paths[static_cast<size_t>(path)];
}

const ConflictHolder* ConflictPathsModel::ownHolder(const ConflictPath& path) const {
    const auto at = std::find_if(path.holders.begin(), path.holders.end(),
                                 [this](const ConflictHolder& holder) { return holder.archive == m_archive; });
    return at == path.holders.end() ? nullptr : &*at;
}

QString ConflictPathsModel::holdersText(const ConflictPath& path, bool earlier) const {
    QStringList names;
    for (const ConflictHolder& holder : path.holders) {
        if (holder.archive != m_archive && (holder.archive < m_archive) == earlier)
            names << conflictArchiveName(*m_report, holder.archive);
    }
    return names.join(QStringLiteral(", "));
}

QString ConflictPathsModel::holdersDetail(const ConflictPath& path, bool earlier) const {
    const ConflictHolder* own = ownHolder(path);
    QStringList lines;
    for (const ConflictHolder& holder : path.holders) {
        if (holder.archive == m_archive || (holder.archive < m_archive) != earlier)
            continue;
        const bool same = own && sameContent(*own, holder);
        lines << QStringLiteral("%1: %2 bytes, %3")
                     .arg(fromGameText(m_report->archives[static_cast<size_t>(holder.archive)].storedPath),
                          bytesText(holder.size), same ? QStringLiteral("identical") : QStringLiteral("differs"));
    }
    return lines.join(QLatin1Char('\n'));
}

QVariant ConflictPathsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const ConflictPath& path = pathAt(index.row());
    const ConflictHolder* own = ownHolder(path);
    const qint64 size = own ? own->size : 0;
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case PathColumn:
            return fromGameText(path.name);
        case SizeColumn:
            return bytesText(size);
        case EarlierColumn:
            return holdersText(path, true);
        case LaterColumn:
            return holdersText(path, false);
        case ContentColumn:
            return path.identical ? QStringLiteral("identical") : QStringLiteral("differs");
        default:
            return {};
        }
    case SortRole:
        switch (index.column()) {
        case PathColumn:
            return fromGameText(conflictKey(path.name));
        case SizeColumn:
            return size;
        default:
            return data(index, Qt::DisplayRole).toString().toUpper();
        }
    case Qt::ToolTipRole:
        if (index.column() == EarlierColumn || index.column() == LaterColumn)
            return holdersDetail(path, index.column() == EarlierColumn);
        if (index.column() == PathColumn)
            return fromGameText(path.name);
        return {};
    case Qt::TextAlignmentRole:
        if (index.column() == SizeColumn)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    default:
        return {};
    }
}

QVariant ConflictPathsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case PathColumn:
        return QStringLiteral("Path");
    case SizeColumn:
        return QStringLiteral("Size");
    case EarlierColumn:
        return QStringLiteral("Also in, loaded earlier");
    case LaterColumn:
        return QStringLiteral("Also in, loaded later");
    case ContentColumn:
        return QStringLiteral("Content");
    default:
        return {};
    }
}

Qt::ItemFlags ConflictPathsModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

} // namespace korvel
