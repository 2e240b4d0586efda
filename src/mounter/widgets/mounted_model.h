#pragma once

#include "mounter/mounted_list.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <QPointer>
#include <QStringList>

class QItemSelectionModel;

namespace korvel {

// A table model over one of the Mounter's lists: column 0 the display text (with the list's
// icon), column 1 the status. The rows and their selection stay in the list; the model follows
// its change notifications, and bindSelection() keeps a view's selection and the rows' selected
// flags the same in both directions.
//
// Drops: files from outside and rows dragged within the list are not applied here; they are handed
// on through filesDropped() and rowsDropped() with the row under the pointer (-1 below the last row).
class MountedModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { NameColumn, StatusColumn, ColumnCount };
    enum Role {
        PathRole = Qt::UserRole + 1, // the stored path (QString)
        SelectedRole,                // the row's selected flag (bool); settable
    };
    static constexpr const char* kRowsMimeType = "application/x-korvel-mounter-rows";

    explicit MountedModel(EntryList& list, QObject* parent = nullptr);

    EntryList& list() { return m_list; }
    void setIcon(const QIcon& icon);
    void bindSelection(QItemSelectionModel* selection);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

signals:
    void filesDropped(const QStringList& hostPaths, int row);
    void rowsDropped(int row);

private:
    void beginChange() { ++m_changing; }
    void endChange();
    void pushSelection();
    void pullSelection();

    EntryList& m_list;
    QIcon m_icon;
    QPointer<QItemSelectionModel> m_selection;
    int m_changing = 0;
    bool m_syncing = false;
};

} // namespace korvel
