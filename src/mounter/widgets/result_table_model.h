#pragma once

#include <QAbstractTableModel>
#include <QStringList>

namespace korvel {

// A read-only, flat table over a result of the core: the rows are the result's, the columns fixed
// with their headers. A subclass says how many rows the result has and what each cell shows; the
// index checks, headers and flags are the same for all.
class ResultTableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    int rowCount(const QModelIndex& parent = QModelIndex()) const final;
    int columnCount(const QModelIndex& parent = QModelIndex()) const final;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const final;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const final;
    Qt::ItemFlags flags(const QModelIndex& index) const final;

protected:
    ResultTableModel(QStringList headers, QObject* parent);

    virtual int resultRows() const = 0;
    // What `role` shows in a cell; row and column are in range.
    virtual QVariant cell(int row, int column, int role) const = 0;

    // Takes a new result: `change` swaps it in between the model's reset signals.
    template <typename Change> void replaceResult(Change&& change) {
        beginResetModel();
        change();
        endResetModel();
    }

private:
    QStringList m_headers;
};

} // namespace korvel
