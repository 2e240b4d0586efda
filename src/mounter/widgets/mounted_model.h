#pragma once

#include "mounter/mounted_list.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <QStringList>

#include <string>
#include <unordered_set>

namespace korvel {

// A table model over one of the Mounter's lists: column 0 the display text (with the list's
// icon), column 1 the status. The rows stay in the list and the model follows its change
// notifications; which rows are selected is kept by the view alone.
//
// Drops: files from outside and rows dragged within the list are not applied here; they are handed
// on through filesDropped() and rowsDropped() with the row under the pointer (-1 below the last row).
class MountedModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { NameColumn, StatusColumn, ColumnCount };
    enum Role {
        PathRole = Qt::UserRole + 1, // the stored path (QString)
        MarkedRole,                  // bool: the row carries the mark of setMarks()
    };
    static constexpr const char* kRowsMimeType = "application/x-korvel-mounter-rows";

    explicit MountedModel(EntryList& list, QObject* parent = nullptr);

    EntryList& list() { return m_list; }
    void setIcon(const QIcon& icon);
    // Rows whose stored path is in `paths` show `icon` instead of the list's own, and `note` below
    // the path in their tooltip and as their description. Nothing else of the row changes.
    void setMarks(std::unordered_set<std::string> paths, const QIcon& icon, const QString& note);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
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
    bool marked(int row) const;

    EntryList& m_list;
    QIcon m_icon;
    std::unordered_set<std::string> m_marked;
    QIcon m_markIcon;
    QString m_markNote;
};

} // namespace korvel
