#pragma once

#include "mounter/mounted_archives.h"

#include <QAbstractTableModel>

#include <vector>

namespace korvel {

// The findings of Check PODs: one row per mounted archive, in mount order, with "Fine" or what is
// wrong with it.
class CheckResultsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { OrderColumn, ArchiveColumn, ResultColumn, ColumnCount };
    enum Role {
        ProblemRole = Qt::UserRole + 1, // "problem" or "fine": what the window's filter looks for
    };

    explicit CheckResultsModel(QObject* parent = nullptr);

    void setChecks(std::vector<MountedCheck> checks);
    const std::vector<MountedCheck>& checks() const { return m_checks; }
    int problemCount() const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    std::vector<MountedCheck> m_checks;
};

} // namespace korvel
