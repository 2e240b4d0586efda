#include "mounted_model.h"

#include "platform/game_text.h"

#include <QItemSelectionModel>
#include <QMimeData>
#include <QUrl>

namespace korvel {

MountedModel::MountedModel(EntryList& list, QObject* parent) : QAbstractTableModel(parent), m_list(list) {
    connect(&list, &EntryList::aboutToReset, this, [this] {
        beginChange();
        beginResetModel();
    });
    connect(&list, &EntryList::resetDone, this, [this] {
        endResetModel();
        endChange();
    });
    connect(&list, &EntryList::aboutToInsert, this, [this](int first, int last) {
        beginChange();
        beginInsertRows(QModelIndex(), first, last);
    });
    connect(&list, &EntryList::inserted, this, [this] {
        endInsertRows();
        endChange();
    });
    connect(&list, &EntryList::aboutToRemove, this, [this](int first, int last) {
        beginChange();
        beginRemoveRows(QModelIndex(), first, last);
    });
    connect(&list, &EntryList::removed, this, [this] {
        endRemoveRows();
        endChange();
    });
    connect(&list, &EntryList::rowsChanged, this, [this](int first, int last) {
        emit dataChanged(index(first, 0), index(last, ColumnCount - 1));
        pushSelection();
    });
    connect(&list, &EntryList::selectionChanged, this, [this](int first, int last) {
        emit dataChanged(index(first, 0), index(last, ColumnCount - 1), {SelectedRole});
        pushSelection();
    });
}

void MountedModel::setIcon(const QIcon& icon) {
    m_icon = icon;
    if (rowCount() > 0)
        emit dataChanged(index(0, NameColumn), index(rowCount() - 1, NameColumn), {Qt::DecorationRole});
}

void MountedModel::endChange() {
    if (--m_changing == 0)
        pushSelection();
}

void MountedModel::bindSelection(QItemSelectionModel* selection) {
    if (m_selection)
        disconnect(m_selection, nullptr, this, nullptr);
    m_selection = selection;
    if (!selection)
        return;
    connect(selection, &QItemSelectionModel::selectionChanged, this, [this] { pullSelection(); });
    pushSelection();
}

// Rows' flags -> the view's selection.
void MountedModel::pushSelection() {
    if (!m_selection || m_syncing || m_changing)
        return;
    QItemSelection wanted;
    const int rows = m_list.size();
    for (int row = 0; row < rows; ++row) {
        if (!m_list.isSelected(row))
            continue;
        int last = row;
        while (last + 1 < rows && m_list.isSelected(last + 1))
            ++last;
        wanted.select(index(row, 0), index(last, ColumnCount - 1));
        row = last;
    }
    m_syncing = true;
    m_selection->select(wanted, QItemSelectionModel::ClearAndSelect);
    m_syncing = false;
}

// The view's selection -> rows' flags.
void MountedModel::pullSelection() {
    if (!m_selection || m_syncing || m_changing)
        return;
    m_syncing = true;
    for (int row = 0; row < m_list.size(); ++row)
        m_list.setSelected(row, m_selection->isRowSelected(row, QModelIndex()));
    m_syncing = false;
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
        return fromGameText(row.path);
    case Qt::DecorationRole:
        if (index.column() == NameColumn && !m_icon.isNull())
            return m_icon;
        return {};
    case PathRole:
        return fromGameText(row.path);
    case SelectedRole:
        return row.selected;
    default:
        return {};
    }
}

bool MountedModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != SelectedRole || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return false;
    m_list.setSelected(index.row(), value.toBool());
    return true;
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
    QStringList paths;
    for (int row : m_list.selectedRows())
        paths << fromGameText(m_list.at(row).path);
    Q_UNUSED(indexes); // a drag always carries the selected rows, whichever cell it started on
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
