#pragma once

#include <QStringList>
#include <QWidget>

#include <functional>
#include <string>

class QComboBox;

namespace korvel {

class FileServices;

namespace ui {
class GoldButton;
}

// The recent-archives combo `cmbRecent` with its small remove button `cmdX`. Choosing an entry, or
// typing a path and pressing Enter, asks for that archive to be listed (archiveChosen) unless it is
// the one listed now.
class RecentArchivesBox : public QWidget {
    Q_OBJECT

public:
    // `listedArchive` answers the folder + file name listed now.
    RecentArchivesBox(const FileServices& files, std::function<std::string()> listedArchive, QWidget* parent = nullptr);

    QComboBox* combo() const { return m_combo; }
    ui::GoldButton* removeButton() const { return m_removeButton; }

    QStringList entries() const;
    void setEntries(const QStringList& entries);
    // Puts a just-listed archive first (updateRecentArchives) and selects it.
    void remember(const std::string& folder, const std::string& file);

    // `cmdX`: removes the selected entry and selects the first remaining one.
    void removeSelected();

signals:
    void archiveChosen(const std::string& folder, const std::string& file);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void chooseEntry(int index);
    void openTyped();
    void choose(const std::string& path);

    const FileServices& m_files;
    std::function<std::string()> m_listedArchive;
    QComboBox* m_combo;
    ui::GoldButton* m_removeButton;
};

} // namespace korvel
