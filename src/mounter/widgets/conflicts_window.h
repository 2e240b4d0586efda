#pragma once

#include <QDialog>

#include <string>

class QLabel;
class QLineEdit;
class QSortFilterProxyModel;
class QTreeView;

namespace korvel {

class ConflictArchivesModel;
class ConflictPathsModel;
class ConflictTracker;

// `frmConflicts`: which mounted archives hold the same paths. On the left every mounted archive in
// mount order with how many of its files others also hold; on the right the paths of the archive
// selected there, with the archives that also hold each one (loaded earlier or later) and whether
// their contents are identical, sorted by any column and narrowed by the filter box (any column's
// text). The window follows the tracker: a reorder or any other change of the mounted list shows up
// here, keeping the selected archive. Not modal; Esc or Close hides it.
class ConflictsWindow : public QDialog {
    Q_OBJECT
public:
    explicit ConflictsWindow(ConflictTracker& tracker, QWidget* parent = nullptr);
    ~ConflictsWindow() override;

    // Selects the mounted archive stored as `storedPath`; false when the report has none.
    bool selectArchive(const std::string& storedPath);

    QTreeView* archivesView() const { return m_archivesView; }
    QTreeView* pathsView() const { return m_pathsView; }
    QLineEdit* filterBox() const { return m_filter; }
    ConflictArchivesModel& archivesModel() const { return *m_archives; }
    ConflictPathsModel& pathsModel() const { return *m_paths; }

private:
    void showReport();
    void archiveChosen();
    void selectRow(int row);

    ConflictTracker& m_tracker;
    ConflictArchivesModel* m_archives = nullptr;
    ConflictPathsModel* m_paths = nullptr;
    QSortFilterProxyModel* m_sortedPaths = nullptr;
    QTreeView* m_archivesView = nullptr;
    QTreeView* m_pathsView = nullptr;
    QLineEdit* m_filter = nullptr;
    QLabel* m_summary = nullptr;
    QLabel* m_pathsCaption = nullptr;
    std::string m_selected; // the stored path of the selected archive, kept across refreshes
};

} // namespace korvel
