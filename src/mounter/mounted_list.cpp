#include "mounted_list.h"

#include "platform/game_text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace korvel {

void EntryList::append(MountedEntry entry) {
    insert(size(), std::move(entry));
}

void EntryList::appendRows(std::vector<MountedEntry> entries) {
    if (entries.empty())
        return;
    const int first = size();
    emit aboutToInsert(first, first + static_cast<int>(entries.size()) - 1);
    m_rows.insert(m_rows.end(), std::make_move_iterator(entries.begin()), std::make_move_iterator(entries.end()));
    emit inserted(first, size() - 1);
    emit contentChanged();
}

void EntryList::insert(int row, MountedEntry entry) {
    if (row < 0 || row > size())
        row = size();
    emit aboutToInsert(row, row);
    m_rows.insert(m_rows.begin() + row, std::move(entry));
    emit inserted(row, row);
    emit contentChanged();
}

void EntryList::removeAt(int row) {
    if (row < 0 || row >= size())
        return;
    emit aboutToRemove(row, row);
    m_rows.erase(m_rows.begin() + row);
    emit removed(row, row);
    emit contentChanged();
}

void EntryList::clear() {
    assign({});
}

void EntryList::assign(std::vector<MountedEntry> rows) {
    if (rows.empty() && m_rows.empty())
        return;
    emit aboutToReset();
    m_rows = std::move(rows);
    emit resetDone();
    emit contentChanged();
}

void EntryList::swapRows(int a, int b) {
    if (a == b || a < 0 || b < 0 || a >= size() || b >= size())
        return;
    std::swap(m_rows[static_cast<size_t>(a)], m_rows[static_cast<size_t>(b)]);
    emit rowsChanged(std::min(a, b), std::max(a, b));
    emit contentChanged();
}

int EntryList::indexOfPath(const std::string& path) const {
    for (int i = 0; i < size(); ++i) {
        if (equalsIgnoreCase(m_rows[static_cast<size_t>(i)].path, path))
            return i;
    }
    return -1;
}

} // namespace korvel
