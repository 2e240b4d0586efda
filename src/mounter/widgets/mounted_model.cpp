#include "mounted_model.h"

#include "platform/game_text.h"

#include <QMimeData>
#include <QUrl>

#include <set>

namespace korvel {

MountedModel::MountedModel(EntryList& list, QObject* parent) : QAbstractTableModel(parent), m_list(list) {
    connect(&list, &EntryList::aboutToReset, this, [this] { beginResetModel(); });
    connect(&list, &EntryList::resetDone, this, [this] { endResetModel(); });
    connect(&list, &EntryList::aboutToInsert, this,
            [this](int first, int last) { beginInsertRows(QModelIndex(), first, last); });
    connect(&list, &EntryList::inserted, this, [this] { endInsertRows(); });
    connect(&list, &EntryList::aboutToRemove, this,
            [this](int first, int last) { beginRemoveRows(QModelIndex(), first, last); });
    connect(&list, &EntryList::removed, this, [this] { endRemoveRows(); });
    connect(&list, &EntryList::rowsChanged, this,
            [this](int first, int last) { emit dataChanged(index(first, 0), index(last, ColumnCount - 1)); });
}

void MountedModel::setIcon(const QIcon& icon) {
    m_icon = icon;
    if (rowCount() > 0)
        emit dataChanged(index(0, NameColumn), index(rowCount() - 1, NameColumn), {Qt::DecorationRole});
}

void MountedModel::setMarks(std::unordered_set<std::string> paths, const QIcon& icon, const QString& note) {
    m_marked = std::move(paths);
    m_markIcon = icon;
    m_markNote = note;
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1),
                         {Qt::DecorationRole, Qt::ToolTipRole, Qt::AccessibleDescriptionRole, MarkedRole});
}

bool MountedModel::marked(int row) const {
    return !m_marked.empty() && m_marked.count(m_list.at(row).path) > 0;
}

int MountedModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_list.size();
}

int MountedModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant MountedModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const MountedEntry& row = m_list.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return fromGameText(index.column() == NameColumn ? row.text : row.status);
    case Qt::ToolTipRole:
        return marked(index.row()) ? fromGameText(row.path) + QLatin1Char('\n') + m_markNote : fromGameText(row.path);
    case Qt::AccessibleDescriptionRole:
        return marked(index.row()) ? QVariant(m_markNote) : QVariant();
    case Qt::DecorationRole:
        if (index.column() != NameColumn)
            return {};
        if (marked(index.row()) && !m_markIcon.isNull())
            return m_markIcon;
        if (!m_icon.isNull())
            return m_icon;
        return {};
    case MarkedRole:
        return marked(index.row());
    case PathRole:
        return fromGameText(row.path);
    default:
        return {};
    }
}

QVariant MountedModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NameColumn:
        return QStringLiteral("Archive");
    case StatusColumn:
        return QStringLiteral("Status");
    default:
        return {};
    }
}

Qt::ItemFlags MountedModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled |
           Qt::ItemNeverHasChildren;
}

QStringList MountedModel::mimeTypes() const {
    return {QString::fromLatin1(kRowsMimeType), QStringLiteral("text/uri-list")};
}

QMimeData* MountedModel::mimeData(const QModelIndexList& indexes) const {
    // One entry per row, whichever cells of it were picked, top to bottom.
    std::set<int> rows;
    for (const QModelIndex& index : indexes) {
        if (index.isValid() && index.model() == this)
            rows.insert(index.row());
    }
    QStringList paths;
    for (int row : rows)
        paths << fromGameText(m_list.at(row).path);
    auto* data = new QMimeData;
    data->setData(QString::fromLatin1(kRowsMimeType), paths.join(QLatin1Char('\n')).toUtf8());
    return data;
}

Qt::DropActions MountedModel::supportedDropActions() const {
    return Qt::CopyAction | Qt::MoveAction;
}

Qt::DropActions MountedModel::supportedDragActions() const {
    return Qt::MoveAction;
}

bool MountedModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int, const QModelIndex&) const {
    return data && (data->hasUrls() || data->hasFormat(QString::fromLatin1(kRowsMimeType)));
}

bool MountedModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    // Dropped on a row: that row's place; between rows: the place given; below the last row: append.
    const int place = parent.isValid() ? parent.row() : row;
    if (data->hasFormat(QString::fromLatin1(kRowsMimeType))) {
        emit rowsDropped(place);
        return true;
    }
    QStringList files;
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile())
            files << url.toLocalFile();
    }
    emit filesDropped(files, place);
    return !files.isEmpty();
}

} // namespace korvel
