#include "mounter_pane.h"

#include "check_pods_window.h"
#include "conflict_tracker.h"
#include "conflicts_window.h"
#include "mounted_model.h"
#include "mounter/mounted_archives.h"
#include "mounter/splitter_bounds.h"
#include "platform/game_text.h"
#include "platform/services.h"
#include "splitter_bar.h"
#include "startup/session.h"
#include "ui/kit/anchors.h"
#include "ui/kit/gold_button.h"
#include "ui/kit/progress_window.h"
#include "ui/kit/twips.h"

#include <QDrag>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QProgressBar>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <cmath>

namespace korvel {

namespace {

// Pane geometry in twips: the lists on the left, the buttons in a column on the right.
constexpr int kListLeft = 120;
constexpr int kListWidth = 4920;
constexpr int kMountedTop = 180;
constexpr int kButtonLeft = 5160;
constexpr int kButtonWidth = 1650;
constexpr int kButtonHeight = 375;
constexpr int kButtonPitch = 450;
// The pane's designed size; it grows with the window.
constexpr int kPaneWidth = 6930;
constexpr int kPaneHeight = 6000;

// The report view of one Mounter list. A drag carries the selected rows and leaves the list
// itself alone: the drop moves them.
class MounterListView : public QTreeView {
public:
    using QTreeView::QTreeView;

protected:
    void startDrag(Qt::DropActions) override {
        QMimeData* data = model()->mimeData(selectionModel()->selectedIndexes());
        if (!data)
            return;
        auto* drag = new QDrag(this);
        drag->setMimeData(data);
        drag->exec(Qt::MoveAction);
    }
};

// A 16 x 16 picture drawn by `draw` with the drums' outline pen.
template <typename Draw> QIcon drumPicture(Draw&& draw) {
    QPixmap picture(16, 16);
    picture.fill(Qt::transparent);
    {
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QColor(0x5a, 0x3c, 0x08));
        draw(painter);
    }
    return QIcon(picture);
}

// The small picture of every row: an archive drum.
QIcon archiveIcon() {
    return drumPicture([](QPainter& painter) {
        painter.setBrush(QColor(0xd9, 0xb0, 0x48));
        painter.drawRoundedRect(QRectF(2.5, 2.5, 11, 11), 2, 2);
        painter.drawLine(QPointF(3, 6.5), QPointF(13, 6.5));
        painter.drawLine(QPointF(3, 9.5), QPointF(13, 9.5));
    });
}

// The picture of a mounted archive that shares files with others: the drum with a second one
// behind it.
QIcon sharedArchiveIcon() {
    return drumPicture([](QPainter& painter) {
        painter.setBrush(QColor(0xc0, 0x40, 0x20));
        painter.drawRoundedRect(QRectF(5.5, 0.5, 10, 10), 2, 2);
        painter.setBrush(QColor(0xd9, 0xb0, 0x48));
        painter.drawRoundedRect(QRectF(0.5, 5.5, 10, 10), 2, 2);
        painter.drawLine(QPointF(1, 9), QPointF(10, 9));
        painter.drawLine(QPointF(1, 12), QPointF(10, 12));
    });
}

} // namespace

MounterPane::MounterPane(const Session& session, SettingsStore& store, Services& services, QWidget* parent)
    : QWidget(parent), m_session(session), m_services(services), m_mounter(session, store, services) {
    setObjectName(QStringLiteral("mounterPane"));
    const QIcon icon = archiveIcon();

    m_mountedModel = new MountedModel(m_mounter.mounted(), this);
    m_unmountedModel = new MountedModel(m_mounter.unmounted(), this);
    m_mountedModel->setIcon(icon);
    m_unmountedModel->setIcon(icon);
    m_mountedList = makeList("lstMounted", m_mountedModel);
    m_unmountedList = makeList("lstUnmounted", m_unmountedModel);
    m_mountedList->setAccessibleName(QStringLiteral("Mounted PODs"));
    m_unmountedList->setAccessibleName(QStringLiteral("Unmounted PODs"));

    m_mountedList->setDragEnabled(true);
    m_mountedList->setAcceptDrops(true);
    m_mountedList->setDragDropMode(QAbstractItemView::DragDrop);
    m_mountedList->setDragDropOverwriteMode(true); // the drop place is the row under the pointer
    m_mountedList->setDefaultDropAction(Qt::MoveAction);
    m_mountedList->setDropIndicatorShown(true);
    m_unmountedList->setDragEnabled(false);
    m_unmountedList->setAcceptDrops(false);
    connect(m_mountedModel, &MountedModel::filesDropped, this, &MounterPane::dropFiles);
    connect(m_mountedModel, &MountedModel::rowsDropped, this,
            [this](int row) { run(m_mounter.dropRows(selectedRows(m_mountedList), row)); });
    connect(m_mountedList, &QAbstractItemView::doubleClicked, this, &MounterPane::unmountSelected);
    connect(m_unmountedList, &QAbstractItemView::doubleClicked, this, &MounterPane::mountSelected);

    m_splitterBar = new SplitterBar(this);
    connect(m_splitterBar, &SplitterBar::pressed, this, &MounterPane::barPressed);
    connect(m_splitterBar, &SplitterBar::dragged, this, &MounterPane::barDragged);
    connect(m_splitterBar, &SplitterBar::released, this, &MounterPane::barReleased);

    connect(makeButton("cmdMount", QStringLiteral("&Mount"), 0), &QAbstractButton::clicked, this,
            &MounterPane::mountSelected);
    connect(makeButton("cmdUnmount", QStringLiteral("&Unmount"), 1), &QAbstractButton::clicked, this,
            &MounterPane::unmountSelected);
    connect(makeButton("cmdMountAll", QStringLiteral("Mount &All"), 2), &QAbstractButton::clicked, this,
            [this] { run(m_mounter.MountAll()); });
    connect(makeButton("cmdUnmountAll", QStringLiteral("Unmount A&ll"), 3), &QAbstractButton::clicked, this,
            [this] { run(m_mounter.UnmountAll()); });
    connect(makeButton("cmdClean", QStringLiteral("Clea&n Missing"), 4), &QAbstractButton::clicked, this,
            [this] { run(m_mounter.CleanMissing()); });
    connect(makeButton("cmdRefresh", QStringLiteral("&Refresh"), 5), &QAbstractButton::clicked, this,
            &MounterPane::refreshBoth);
    connect(makeButton("cmdBrowse", QStringLiteral("&Browse..."), 6), &QAbstractButton::clicked, this,
            [this] { run(m_mounter.MountBrowsed()); });
    auto* view = makeButton("cmdView", QStringLiteral("&View POD.INI"), 7);
    view->setToolTip(QStringLiteral("Open POD.INI in the program that edits text files"));
    connect(view, &QAbstractButton::clicked, this, [this] { m_services.shell.openDocument(m_session.locationIni); });

    m_counterLabel = new QLabel(this);
    m_counterLabel->setObjectName(QStringLiteral("lblPODs"));
    m_counterLabel->setAlignment(Qt::AlignCenter);
    m_counterLabel->setWordWrap(true);
    m_counterLabel->setGeometry(ui::twipsRect(kButtonLeft, 180 + 8 * kButtonPitch, kButtonWidth, 420, this));
    m_counterBar = new QProgressBar(this);
    m_counterBar->setObjectName(QStringLiteral("prgPODs"));
    m_counterBar->setRange(0, 99);
    m_counterBar->setTextVisible(false);
    m_counterBar->setGeometry(ui::twipsRect(kButtonLeft, 180 + 8 * kButtonPitch + 450, kButtonWidth, 240, this));
    connect(&m_mounter, &Mounter::counterChanged, this, &MounterPane::showCounter);

    m_conflicts = new ConflictTracker(m_services.files, m_session.location, m_mounter.mounted(), this);
    m_conflicts->setParent(this);
    connect(m_conflicts, &ConflictTracker::reportChanged, this, &MounterPane::markConflicts);
    m_podIniWatcher = new QFileSystemWatcher(this);
    m_podIniSettle = new QTimer(this);
    m_podIniSettle->setSingleShot(true);
    m_podIniSettle->setInterval(100); // one check for the burst of events a save makes
    connect(m_podIniWatcher, &QFileSystemWatcher::fileChanged, m_podIniSettle, qOverload<>(&QTimer::start));
    connect(m_podIniWatcher, &QFileSystemWatcher::directoryChanged, m_podIniSettle, qOverload<>(&QTimer::start));
    connect(m_podIniSettle, &QTimer::timeout, this, &MounterPane::checkPodIniOnDisk);

    buildMenus();
    m_anchors = std::make_unique<ui::Anchors>(*this, QSize(kPaneWidth, kPaneHeight));
    for (QWidget* control : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (!control->isWindow() && control->x() >= ui::twipsToPixels(kButtonLeft, this) - 1)
            m_anchors->add(control, ui::Anchors::FollowRight);
    }
    layoutLists();
}

MounterPane::~MounterPane() = default;

QTreeView* MounterPane::makeList(const char* name, MountedModel* model) {
    QTreeView* list = new MounterListView(this);
    list->setObjectName(QString::fromLatin1(name));
    list->setModel(model);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setAllColumnsShowFocus(true);
    list->setItemsExpandable(false);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(MountedModel::NameColumn, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(MountedModel::StatusColumn, QHeaderView::Fixed);
    list->header()->resizeSection(MountedModel::StatusColumn, ui::twipsToPixels(1400, this));
    list->installEventFilter(this);
    list->viewport()->installEventFilter(this);
    return list;
}

ui::GoldButton* MounterPane::makeButton(const char* name, const QString& caption, int place) {
    auto* button = new ui::GoldButton(caption, this);
    button->setObjectName(QString::fromLatin1(name));
    button->setGeometry(
        ui::twipsRect(kButtonLeft, kMountedTop + place * kButtonPitch, kButtonWidth, kButtonHeight, this));
    return button;
}

QAction* MounterPane::makeAction(QMenu* menu, const char* name, const QString& caption) {
    QAction* action = menu->addAction(caption);
    action->setObjectName(QString::fromLatin1(name));
    return action;
}

void MounterPane::buildMenus() {
    // The main window appends the keys to these captions when it opens.
    m_mountedMenu = new QMenu(this);
    m_mountedMenu->setObjectName(QStringLiteral("mnuMounted"));
    QAction* unmount = makeAction(m_mountedMenu, "mnuUnmount", QStringLiteral("&Unmount"));
    m_mountedMenu->setDefaultAction(unmount);
    m_mountedMenu->addSeparator();
    QAction* top = makeAction(m_mountedMenu, "mnuTop", QStringLiteral("Move to &Top"));
    QAction* up = makeAction(m_mountedMenu, "mnuUp", QStringLiteral("Move &Up"));
    QAction* down = makeAction(m_mountedMenu, "mnuDown", QStringLiteral("Move &Down"));
    QAction* bottom = makeAction(m_mountedMenu, "mnuBottom", QStringLiteral("Move to &Bottom"));
    m_mountedMenu->addSeparator();
    QAction* refreshMounted = makeAction(m_mountedMenu, "mnuRefreshMounted", QStringLiteral("&Refresh"));
    m_mountedMenu->addSeparator();
    QAction* conflicts = makeAction(m_mountedMenu, "mnuConflictsMounted", QStringLiteral("&Conflicts..."));
    connect(conflicts, &QAction::triggered, this, &MounterPane::showConflicts);
    connect(unmount, &QAction::triggered, this, &MounterPane::unmountSelected);
    connect(top, &QAction::triggered, this, [this] { moveSelected(&Mounter::MoveSelectedToTop); });
    connect(up, &QAction::triggered, this, [this] { moveSelected(&Mounter::MoveSelectedUp); });
    connect(down, &QAction::triggered, this, [this] { moveSelected(&Mounter::MoveSelectedDown); });
    connect(bottom, &QAction::triggered, this, [this] { moveSelected(&Mounter::MoveSelectedToBottom); });
    connect(refreshMounted, &QAction::triggered, this, &MounterPane::refreshBoth);

    m_unmountedMenu = new QMenu(this);
    m_unmountedMenu->setObjectName(QStringLiteral("mnuUnmounted"));
    QAction* mount = makeAction(m_unmountedMenu, "mnuMount", QStringLiteral("&Mount"));
    m_unmountedMenu->setDefaultAction(mount);
    QAction* remove = makeAction(m_unmountedMenu, "mnuDelete", QStringLiteral("&Delete"));
    m_unmountedMenu->addSeparator();
    QAction* refreshUnmounted = makeAction(m_unmountedMenu, "mnuRefreshUnmounted", QStringLiteral("&Refresh"));
    connect(mount, &QAction::triggered, this, &MounterPane::mountSelected);
    connect(remove, &QAction::triggered, this, &MounterPane::deleteSelected);
    connect(refreshUnmounted, &QAction::triggered, this, &MounterPane::refreshUnmounted);
}

void MounterPane::setSplitterTop(int twips) {
    m_splitterTop = twips;
    layoutLists();
}

void MounterPane::layoutLists() {
    // What the pane has beyond its designed size widens both lists and lengthens the unmounted one.
    const QSize extra = m_anchors->extra();
    const auto grown = [&extra](QRect rect, bool taller) {
        rect.setWidth(rect.width() + extra.width());
        if (taller)
            rect.setHeight(rect.height() + extra.height());
        return rect;
    };
    const MounterSplit split = mounterSplit(m_splitterTop, kBarHeight, kListsBottom);
    m_mountedList->setGeometry(
        grown(ui::twipsRect(kListLeft, kMountedTop, kListWidth, split.mountedHeight, this), false));
    m_splitterBar->setGeometry(grown(ui::twipsRect(kListLeft, m_splitterTop, kListWidth, kBarHeight, this), false));
    m_unmountedList->setGeometry(
        grown(ui::twipsRect(kListLeft, split.unmountedTop, kListWidth, split.unmountedHeight, this), true));
}

void MounterPane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_anchors->place();
    layoutLists();
}

void MounterPane::barPressed() {
    m_splitterBar->setDragging(true);
}

void MounterPane::barDragged(int pointerY) {
    if (!m_splitterBar->dragging())
        return;
    setSplitterTop(splitterDragTop(ui::pixelsToTwips(pointerY, this), kBarHeight, m_splitterTop));
}

void MounterPane::barReleased(bool rightButton) {
    setSplitterTop(splitterReleaseTop(m_splitterTop, rightButton));
    m_splitterBar->setDragging(false);
    m_mounter.saveSplitterTop(m_splitterTop);
}

void MounterPane::run(const Mounter::Outcome& outcome) {
    select(m_mountedList, outcome.mounted);
    select(m_unmountedList, outcome.unmounted);
    if (!outcome.ok() && outcome.status.failure().kind == FailureKind::ChangedOnDisk)
        showFailure(resolveChangedPodIni(outcome.status));
    else
        showFailure(outcome.status);
}

void MounterPane::showFailure(const Status& status) {
    if (!status.ok() && status.failure().kind != FailureKind::ChangedOnDisk)
        m_services.dialogs.message(status.failure().title(), status.failure().message, MessageIcon::Critical);
}

Status MounterPane::resolveChangedPodIni(const Status& unresolved) {
    m_askingAboutPodIni = true;
    const MessageAnswer answer = m_services.dialogs.message(
        QStringLiteral("POD.INI Changed"),
        QStringLiteral("%1 was changed by another program after Korvel read it, and the list of mounted PODs has "
                       "changes that are not saved yet.\n\nRead POD.INI again and discard the changes made here?"
                       "\n\nYes: read POD.INI again.\nNo: save this list over the other program's change."
                       "\nCancel: leave both as they are for now.")
            .arg(fromGameText(m_session.locationIni)),
        MessageIcon::Question, MessageButtons::YesNoCancel);
    m_askingAboutPodIni = false;
    if (answer == MessageAnswer::Yes) {
        const Mounter::Outcome reloaded = m_mounter.refreshBoth();
        select(m_mountedList, reloaded.mounted);
        select(m_unmountedList, reloaded.unmounted);
        return reloaded.status;
    }
    if (answer == MessageAnswer::No)
        return m_mounter.SaveMountedList(Mounter::SaveMode::Overwrite);
    return unresolved;
}

void MounterPane::watchPodIni() {
    const QString host = m_services.files.hostPath(m_session.locationIni);
    if (host.isEmpty())
        return;
    if (!m_podIniWatcher->files().isEmpty())
        m_podIniWatcher->removePaths(m_podIniWatcher->files());
    if (!m_podIniWatcher->directories().isEmpty())
        m_podIniWatcher->removePaths(m_podIniWatcher->directories());
    // A missing POD.INI is waited for in its folder, until it is created.
    m_podIniWatcher->addPath(QFileInfo::exists(host) ? host : QFileInfo(host).absolutePath());
}

void MounterPane::checkPodIniOnDisk() {
    const QString host = m_services.files.hostPath(m_session.locationIni);
    if (!host.isEmpty() && QFileInfo::exists(host) && !m_podIniWatcher->files().contains(host)) {
        // An atomic replace ends the watch of the old file; a created one needs no folder watch.
        if (!m_podIniWatcher->directories().isEmpty())
            m_podIniWatcher->removePaths(m_podIniWatcher->directories());
        m_podIniWatcher->addPath(host);
    }
    if (m_askingAboutPodIni || !m_mounter.changedOnDisk())
        return;
    if (!m_mounter.isModified())
        refreshBoth();
    else
        showFailure(resolveChangedPodIni(Status()));
}

Mounter::Rows MounterPane::selectedRows(const QTreeView* list) {
    Mounter::Rows rows;
    for (const QModelIndex& index : list->selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void MounterPane::select(QTreeView* list, const Mounter::Selection& selection) {
    if (!selection.rows)
        return;
    QAbstractItemModel* model = list->model();
    const int lastColumn = model->columnCount() - 1;
    QItemSelection wanted;
    for (int row : *selection.rows) {
        if (row >= 0 && row < model->rowCount())
            wanted.select(model->index(row, 0), model->index(row, lastColumn));
    }
    list->selectionModel()->select(wanted,
                                   selection.add ? QItemSelectionModel::Select : QItemSelectionModel::ClearAndSelect);
}

void MounterPane::moveSelected(Mounter::Outcome (Mounter::*move)(Mounter::Rows)) {
    run((m_mounter.*move)(selectedRows(m_mountedList)));
}

void MounterPane::refreshBoth() {
    run(m_mounter.refreshBoth());
}

void MounterPane::refreshUnmounted() {
    run(m_mounter.refreshUnmounted());
}

void MounterPane::mountSelected() {
    run(m_mounter.MountSelected(selectedRows(m_unmountedList)));
}

void MounterPane::unmountSelected() {
    run(m_mounter.UnmountSelected(selectedRows(m_mountedList)));
}

void MounterPane::deleteSelected() {
    run(m_mounter.DeleteSelectedArchives(selectedRows(m_unmountedList)));
}

void MounterPane::showCounter(const QString& text, int bar) {
    m_counterLabel->setText(text);
    m_counterBar->setValue(bar);
}

void MounterPane::dropFiles(const QStringList& hostPaths, int row) {
    std::vector<std::string> paths;
    for (const QString& host : hostPaths) {
        Result<std::string> game = m_services.paths.gamePathOf(host);
        if (!game) {
            // A name the game could not read is refused, never written with "?" for its letters.
            run(game.failure());
            return;
        }
        paths.push_back(std::move(*game));
    }
    run(m_mounter.dropFiles(paths, row));
}

void MounterPane::loadGameLists() {
    run(m_mounter.LoadMountedList());
    run(m_mounter.ScanUnmounted());
    watchPodIni();
}

void MounterPane::restoreSplitter(double sliderTop) {
    setSplitterTop(static_cast<int>(std::lround(sliderTop)));
}

bool MounterPane::mountedListChanged() const {
    return m_mounter.isModified();
}

Status MounterPane::saveMountedList() {
    const Status saved = m_mounter.SaveMountedList();
    if (!saved.ok() && saved.failure().kind == FailureKind::ChangedOnDisk)
        return resolveChangedPodIni(saved);
    return saved;
}

Status MounterPane::saveMountedListIfChanged() {
    return mountedListChanged() ? saveMountedList() : Status();
}

bool MounterPane::settleUnsavedList() {
    if (!mountedListChanged())
        return true;
    if (!m_session.autosave.podOnExit()) {
        const MessageAnswer answer = m_services.dialogs.message(
            QStringLiteral("Question"),
            QStringLiteral("The list of mounted PODs has changed since it was last saved. Save it to POD.INI before "
                           "Korvel exits?"),
            MessageIcon::Question, MessageButtons::YesNoCancel);
        if (answer != MessageAnswer::Yes)
            return answer == MessageAnswer::No;
    }
    const Status saved = saveMountedList();
    showFailure(saved);
    return saved.ok();
}

void MounterPane::showConflicts() {
    if (!m_conflictsWindow)
        m_conflictsWindow = new ConflictsWindow(*m_conflicts, window());
    if (!m_conflicts->following())
        m_conflicts->start();
    const Mounter::Rows rows = selectedRows(m_mountedList);
    if (!rows.empty())
        m_conflictsWindow->selectArchive(m_mounter.mounted().at(rows.front()).path);
    m_conflictsWindow->show();
    m_conflictsWindow->raise();
    m_conflictsWindow->activateWindow();
}

void MounterPane::markConflicts() {
    static const QIcon shared = sharedArchiveIcon();
    m_mountedModel->setMarks(m_conflicts->conflictingPaths(), shared,
                             QStringLiteral("Holds files that other mounted PODs also hold"));
}

void MounterPane::checkMountedPods() {
    std::vector<std::string> stored;
    for (const MountedEntry& row : m_mounter.mounted().rows())
        stored.push_back(row.path);
    Result<std::vector<MountedCheck>> checks = [&] {
        ui::ProgressWindow progress(window(), QStringLiteral("Check PODs"),
                                    QStringLiteral("Checking the mounted PODs..."));
        return checkMountedArchives(m_services.files, m_session.location, stored, progress.callback());
    }();
    if (!checks) {
        if (checks.failure().message != cancelledText())
            run(Status(checks.failure()));
        return;
    }
    if (!m_checkWindow)
        m_checkWindow = new CheckPodsWindow(window());
    m_checkWindow->setChecks(std::move(*checks));
    m_checkWindow->show();
    m_checkWindow->raise();
    m_checkWindow->activateWindow();
}

bool MounterPane::listKey(QTreeView* list, QKeyEvent* key) {
    const bool mounted = list == m_mountedList;
    const Qt::KeyboardModifiers modifiers = key->modifiers() & ~Qt::KeypadModifier;
    const bool control = modifiers.testFlag(Qt::ControlModifier) && !modifiers.testFlag(Qt::AltModifier);
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (control)
            return false;
        mounted ? unmountSelected() : mountSelected();
        return true;
    case Qt::Key_Delete:
        mounted ? unmountSelected() : deleteSelected();
        return true;
    case Qt::Key_F5:
        mounted ? refreshBoth() : refreshUnmounted();
        return true;
    default:
        break;
    }
    if (!mounted || !control)
        return false;
    switch (key->key()) {
    case Qt::Key_T:
        moveSelected(&Mounter::MoveSelectedToTop);
        return true;
    case Qt::Key_U:
        moveSelected(&Mounter::MoveSelectedUp);
        return true;
    case Qt::Key_D:
        moveSelected(&Mounter::MoveSelectedDown);
        return true;
    case Qt::Key_B:
        moveSelected(&Mounter::MoveSelectedToBottom);
        return true;
    default:
        return false;
    }
}

bool MounterPane::eventFilter(QObject* watched, QEvent* event) {
    for (QTreeView* list : {m_mountedList, m_unmountedList}) {
        if (!list)
            continue;
        if (watched == list && event->type() == QEvent::KeyPress && listKey(list, static_cast<QKeyEvent*>(event)))
            return true;
        if (watched == list->viewport() && event->type() == QEvent::MouseButtonRelease) {
            auto* mouse = static_cast<QMouseEvent*>(event);
            if (mouse->button() == Qt::RightButton) {
                (list == m_mountedList ? m_mountedMenu : m_unmountedMenu)->popup(mouse->globalPosition().toPoint());
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
