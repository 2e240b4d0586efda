#include "listing_model.h"

#include "platform/game_text.h"

#include <algorithm>

namespace korvel {

namespace {

QString groupedText(qint32 value) {
    std::string text;
    appendWithCommas(text, value);
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

ListingModel::ListingModel(QObject* parent) : QAbstractTableModel(parent) {}

void ListingModel::setListing(PodDirectory listing, bool sorted) {
    beginResetModel();
    m_listing = std::move(listing);
    m_sorted = sorted;
    m_order = orderFor(sorted, Qt::AscendingOrder);
    endResetModel();
}

void ListingModel::clear() {
    beginResetModel();
    m_listing = PodDirectory();
    m_order.clear();
    endResetModel();
}

std::vector<quint32> ListingModel::orderFor(bool sorted, Qt::SortOrder order) const {
    // The export's own order, so the list and the export never disagree.
    std::vector<quint32> rows = displayOrder(m_listing, sorted);
    if (sorted && order == Qt::DescendingOrder)
        std::reverse(rows.begin(), rows.end());
    return rows;
}

PodEntry ListingModel::entryAt(int row) const {
    return m_listing.entries[entryIndex(row)];
}

int ListingModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_order.size());
}

int ListingModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ListingModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.parent().isValid() || index.row() >= rowCount() || index.column() >= ColumnCount)
        return {};
    const PodEntry entry = entryAt(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        switch (index.column()) {
        case NameColumn:
            return fromGameText(entry.name);
        case SizeColumn:
            return groupedText(entry.size);
        case StartColumn:
            return groupedText(entry.start);
        case EndColumn:
            return groupedText(entry.end);
        default:
            return {};
        }
    case Qt::TextAlignmentRole:
        if (index.column() == NameColumn)
            return int(Qt::AlignLeft | Qt::AlignVCenter);
        return int(Qt::AlignRight | Qt::AlignVCenter);
    case EntryRole:
        return static_cast<int>(entryIndex(index.row()));
    default:
        return {};
    }
}

QVariant ListingModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NameColumn:
        return QStringLiteral("Name");
    case SizeColumn:
        return QStringLiteral("Size (bytes)");
    case StartColumn:
        return QStringLiteral("Start Position");
    case EndColumn:
        return QStringLiteral("End Position");
    default:
        return {};
    }
}

Qt::ItemFlags ListingModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

void ListingModel::sort(int column, Qt::SortOrder order) {
    if (column != NameColumn)
        return;
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<size_t> entries;
    entries.reserve(static_cast<size_t>(before.size()));
    for (const QModelIndex& index : before)
        entries.push_back(entryIndex(index.row()));

    m_order = orderFor(true, order);
    m_sorted = true;

    std::vector<int> rowOfEntry(m_order.size());
    for (size_t row = 0; row < m_order.size(); ++row)
        rowOfEntry[m_order[row]] = static_cast<int>(row);
    QModelIndexList after;
    after.reserve(before.size());
    for (qsizetype i = 0; i < before.size(); ++i)
        after.push_back(index(rowOfEntry[entries[static_cast<size_t>(i)]], before[i].column()));
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

} // namespace korvel
