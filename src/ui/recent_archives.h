#pragma once

#include <QStringList>
#include <QWidget>

#include <string>

class QComboBox;

namespace korvel {
class FileServices;
}

namespace korvel::ui {

class GoldButton;
class WindowHooks;

// The recent-archives combo `cmbRecent` with its small remove button `cmdX`. Choosing an entry, or
// typing a path and pressing Enter, lists that archive unless it is the one listed now.
class RecentArchives : public QWidget {
    Q_OBJECT

public:
    static constexpr int kMaxEntries = 8;

    RecentArchives(const FileServices& files, WindowHooks& hooks, QWidget* parent = nullptr);

    void setHooks(WindowHooks& hooks) { m_hooks = &hooks; }
    QComboBox* combo() const { return m_combo; }
    GoldButton* removeButton() const { return m_remove; }

    QStringList entries() const;
    void setEntries(const QStringList& entries);
    // Puts a just-listed archive first: drops its old entry (folder + file, exact text), inserts it
    // with the folder's first character upper-cased, selects it and keeps at most eight entries.
    void remember(const std::string& folder, const std::string& file);

    // `cmdX`: removes the selected entry and selects the first remaining one.
    void removeSelected();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void chooseEntry(int index);
    void openTyped();
    void list(const std::string& path);

    const FileServices& m_files;
    WindowHooks* m_hooks;
    QComboBox* m_combo;
    GoldButton* m_remove;
};

} // namespace korvel::ui
