#pragma once

#include "pod/pod_directory.h"

#include <QAbstractTableModel>

#include <vector>

namespace korvel {

// The Extractor's file list: one row per stored file of the listed archive, with the columns
// "Name", "Size (bytes)", "Start Position" and "End Position" (sizes grouped with ","). The listing
// itself is the only copy of the rows (16 bytes a row besides the names, plus 4 for the order);
// texts are made when a view asks for them, so very large archives list and scroll at once.
//
// Rows are shown in directory order, or by name when sorted (as Autosort asks), in exactly the order
// the listing export writes them.
class ListingModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { NameColumn, SizeColumn, StartColumn, EndColumn, ColumnCount };
    // The row's index in the listing's directory order (int).
    static constexpr int EntryRole = Qt::UserRole + 1;

    explicit ListingModel(QObject* parent = nullptr);

    // Replaces the rows by those of `listing`, sorted by name when `sorted`.
    void setListing(PodDirectory listing, bool sorted);
    void clear();
    const PodDirectory& listing() const { return m_listing; }
    bool isSorted() const { return m_sorted; }

    // The listing's entry shown in `row`, and the directory index behind it.
    PodEntry entryAt(int row) const;
    size_t entryIndex(int row) const { return m_order[static_cast<size_t>(row)]; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Only the name column sorts; ascending is the order Autosort gives.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

private:
    std::vector<quint32> orderFor(bool sorted, Qt::SortOrder order) const;

    PodDirectory m_listing;
    std::vector<quint32> m_order; // row -> index into m_listing.entries
    bool m_sorted = false;
};

} // namespace korvel
