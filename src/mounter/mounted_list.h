#pragma once

#include "mounted_entry.h"

#include <QObject>

#include <string>
#include <vector>

namespace korvel {

// The rows of one Mounter list, in order. This is the working data the list views show; every
// change is announced through the signals below (the "about to" signals come before the rows
// change, the others after), so an item model can follow it exactly. Which rows are selected is the
// views' business: operations are told the rows they act on.
class EntryList : public QObject {
    Q_OBJECT
public:
    explicit EntryList(QObject* parent = nullptr) : QObject(parent) {}

    int size() const { return static_cast<int>(m_rows.size()); }
    bool empty() const { return m_rows.empty(); }
    const MountedEntry& at(int row) const { return m_rows.at(static_cast<size_t>(row)); }
    const std::vector<MountedEntry>& rows() const { return m_rows; }

    void append(MountedEntry entry);
    // Appends every row of `entries` with one notification.
    void appendRows(std::vector<MountedEntry> entries);
    // Inserts before `row`; a row past the end appends.
    void insert(int row, MountedEntry entry);
    void removeAt(int row);
    void clear();
    // Replaces every row at once.
    void assign(std::vector<MountedEntry> rows);
    // Exchanges two rows.
    void swapRows(int a, int b);

    // Index of the first row whose stored path equals `path` ignoring case; -1 when none.
    int indexOfPath(const std::string& path) const;

signals:
    void aboutToReset();
    void resetDone();
    void aboutToInsert(int first, int last);
    void inserted(int first, int last);
    void aboutToRemove(int first, int last);
    void removed(int first, int last);
    // Texts, status or path of rows first..last changed (also after rows were exchanged).
    void rowsChanged(int first, int last);
    // Any change to the rows.
    void contentChanged();

private:
    std::vector<MountedEntry> m_rows;
};

// The rows of POD.INI, in mount order.
class MountedList final : public EntryList {
public:
    using EntryList::EntryList;
};

// The archives that lie where the game can reach them but are not mounted.
class UnmountedList final : public EntryList {
public:
    using EntryList::EntryList;
};

} // namespace korvel
