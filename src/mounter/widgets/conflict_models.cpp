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

ConflictArchivesModel::ConflictArchivesModel(QObject* parent)
    : ResultTableModel({QStringLiteral("#"), QStringLiteral("Mounted POD"), QStringLiteral("Shared files"),
                        QStringLiteral("Also in")},
                       parent) {}

void ConflictArchivesModel::setReport(std::shared_ptr<const ConflictReport> report) {
    replaceResult([&] { m_report = std::move(report); });
}

int ConflictArchivesModel::rowOf(const std::string& storedPath) const {
    if (!m_report)
        return -1;
    const auto& archives = m_report->archives;
    const auto at = std::find_if(archives.begin(), archives.end(),
                                 [&](const ConflictArchive& archive) { return archive.storedPath == storedPath; });
    return at == archives.end() ? -1 : static_cast<int>(at - archives.begin());
}

int ConflictArchivesModel::resultRows() const {
    return m_report ? static_cast<int>(m_report->archives.size()) : 0;
}

QVariant ConflictArchivesModel::cell(int row, int column, int role) const {
    const ConflictArchive& archive = m_report->archives[static_cast<size_t>(row)];
    switch (role) {
    case Qt::DisplayRole:
        switch (column) {
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
        if (column == OrderColumn || (column == SharedColumn && archive.state == MountedArchiveState::Listed))
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

ConflictPathsModel::ConflictPathsModel(QObject* parent)
    : ResultTableModel({QStringLiteral("Path"), QStringLiteral("Size"), QStringLiteral("Also in, loaded earlier"),
                        QStringLiteral("Also in, loaded later"), QStringLiteral("Content")},
                       parent) {}

void ConflictPathsModel::setArchive(std::shared_ptr<const ConflictReport> report, int archive) {
    replaceResult([&] {
        m_report = std::move(report);
        m_archive = m_report && archive >= 0 && archive < static_cast<int>(m_report->archives.size()) ? archive : -1;
    });
}

int ConflictPathsModel::resultRows() const {
    return m_archive < 0 ? 0 : static_cast<int>(m_report->archives[static_cast<size_t>(m_archive)].paths.size());
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

QVariant ConflictPathsModel::cell(int row, int column, int role) const {
    const ConflictPath& path = pathAt(row);
    const ConflictHolder* own = ownHolder(path);
    const qint64 size = own ? own->size : 0;
    switch (role) {
    case Qt::DisplayRole:
        switch (column) {
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
        switch (column) {
        case PathColumn:
            return fromGameText(conflictKey(path.name));
        case SizeColumn:
            return size;
        default:
            return cell(row, column, Qt::DisplayRole).toString().toUpper();
        }
    case Qt::ToolTipRole:
        if (column == EarlierColumn || column == LaterColumn)
            return holdersDetail(path, column == EarlierColumn);
        if (column == PathColumn)
            return fromGameText(path.name);
        return {};
    case Qt::TextAlignmentRole:
        if (column == SizeColumn)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    default:
        return {};
    }
}

} // namespace korvel
