#pragma once

#include "mounter/mounter.h"
#include "platform/result.h"

#include <QWidget>

#include <memory>

class QAction;
class QFileSystemWatcher;
class QLabel;
class QMenu;
class QProgressBar;
class QResizeEvent;
class QTimer;
class QTreeView;

namespace korvel {

struct Services;
struct Session;
class CheckPodsWindow;
class ConflictTracker;
class ConflictsWindow;
class MountedModel;
class SettingsStore;
class SplitterBar;

namespace ui {
class Anchors;
class GoldButton;
} // namespace ui

// The Mounter pane (`fraMount`'s content): the mounted and the unmounted list with their buttons,
// keys, context menus, drag and drop, the counter and the splitter bar between the lists. Every
// event is handed to the Mounter core with the rows selected in the list views, which alone keep
// the selection; the views then select what the core answers. A failed save is shown in a message
// box.
//
// The lists grow with the pane when the window is resized; the buttons keep to its right edge.
//
// The application calls it at opening (the lists, then the splitter), for the Play and Continue
// buttons and at closing (unsaved changes of the mounted list).
class MounterPane : public QWidget {
    Q_OBJECT
public:
    MounterPane(const Session& session, SettingsStore& store, Services& services, QWidget* parent = nullptr);
    ~MounterPane() override;

    Mounter& mounter() { return m_mounter; }
    // The splitter bar's top, in twips of the pane.
    int splitterTop() const { return m_splitterTop; }
    void setSplitterTop(int twips);

    // Opening: POD.INI, then the scan for unmounted archives; the splitter at a stored top.
    void loadGameLists();
    void restoreSplitter(double sliderTop);
    // Whether the mounted list differs from POD.INI, and writing it (always, or only when changed).
    bool mountedListChanged() const;
    Status saveMountedList();
    Status saveMountedListIfChanged();
    // Closing: unsaved changes are saved or dropped as the autosave settings say, or as the user
    // answers; false (the window stays open) on Cancel or a failed save, which has been shown.
    bool settleUnsavedList();

    // "Conflicts...": the window of the paths two or more mounted archives hold, showing the archive
    // selected in the mounted list. From then on the conflicts follow every change of the list, and
    // the rows of archives that share files carry a mark (an icon and a note in the tooltip).
    void showConflicts();
    // "Check PODs": checks every mounted archive (with a progress window) and shows the findings.
    void checkMountedPods();
    ConflictTracker& conflicts() const { return *m_conflicts; }
    ConflictsWindow* conflictsWindow() const { return m_conflictsWindow; }
    CheckPodsWindow* checkPodsWindow() const { return m_checkWindow; }
    // POD.INI changed on disk (the pane watches it from loadGameLists on): without unsaved changes
    // the lists are read again; with some, the user chooses between reading it again and saving the
    // list over it. Nothing happens when the file still holds what the list was loaded from.
    void checkPodIniOnDisk();

    // The pane's inner height for the lists: the unmounted list ends 225 twips above it (above the
    // row of the window's own buttons).
    static constexpr int kListsBottom = 5520;
    static constexpr int kBarHeight = 75;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QTreeView* makeList(const char* name, MountedModel* model);
    ui::GoldButton* makeButton(const char* name, const QString& caption, int top);
    QAction* makeAction(QMenu* menu, const char* name, const QString& caption);
    void buildMenus();
    void layoutLists();
    bool listKey(QTreeView* list, QKeyEvent* key);

    // Selects what an operation answered and shows its failure, if any.
    void run(const Mounter::Outcome& outcome);
    void run(const Status& status) { run(Mounter::Outcome{status, {}, {}}); }
    static Mounter::Rows selectedRows(const QTreeView* list);
    static void select(QTreeView* list, const Mounter::Selection& selection);
    void moveSelected(Mounter::Outcome (Mounter::*move)(Mounter::Rows));
    void refreshBoth();
    void refreshUnmounted();
    void mountSelected();
    void unmountSelected();
    void deleteSelected();
    void showCounter(const QString& text, int bar);
    void dropFiles(const QStringList& hostPaths, int row);
    void markConflicts();

    // POD.INI holds a change the list has not seen, and the list has changes of its own: the user
    // reads the file again (Yes) or saves the list over it (No). Cancel answers `unresolved`.
    Status resolveChangedPodIni(const Status& unresolved);
    // Shows a failure, except the refusal to write over a change (the user has just answered it).
    void showFailure(const Status& status);
    void watchPodIni();

    void barPressed();
    void barDragged(int pointerY);
    void barReleased(bool rightButton);

    const Session& m_session;
    Services& m_services;
    Mounter m_mounter;
    MountedModel* m_mountedModel = nullptr;
    MountedModel* m_unmountedModel = nullptr;
    QTreeView* m_mountedList = nullptr;
    QTreeView* m_unmountedList = nullptr;
    SplitterBar* m_splitterBar = nullptr;
    QLabel* m_counterLabel = nullptr;
    QProgressBar* m_counterBar = nullptr;
    QMenu* m_mountedMenu = nullptr;
    QMenu* m_unmountedMenu = nullptr;
    int m_splitterTop = 3070;
    std::unique_ptr<ui::Anchors> m_anchors;
    ConflictTracker* m_conflicts = nullptr;
    ConflictsWindow* m_conflictsWindow = nullptr;
    CheckPodsWindow* m_checkWindow = nullptr;
    QFileSystemWatcher* m_podIniWatcher = nullptr;
    QTimer* m_podIniSettle = nullptr;
    bool m_askingAboutPodIni = false;
};

} // namespace korvel
