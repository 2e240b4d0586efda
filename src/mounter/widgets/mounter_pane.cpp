#include "mounter_pane.h"

#include "mounted_model.h"
#include "mounter/splitter_bounds.h"
#include "platform/services.h"
#include "splitter_bar.h"
#include "startup/session.h"
#include "ui/widgets/gold_button.h"
#include "ui/widgets/twips.h"

#include <QDrag>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QProgressBar>
#include <QTreeView>

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

// The small picture of every row: an archive drum.
QIcon archiveIcon() {
    QPixmap picture(16, 16);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0x5a, 0x3c, 0x08));
    painter.setBrush(QColor(0xd9, 0xb0, 0x48));
    painter.drawRoundedRect(QRectF(2.5, 2.5, 11, 11), 2, 2);
    painter.drawLine(QPointF(3, 6.5), QPointF(13, 6.5));
    painter.drawLine(QPointF(3, 9.5), QPointF(13, 9.5));
    return QIcon(picture);
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
    m_lstMounted = makeList("lstMounted", m_mountedModel);
    m_lstUnmounted = makeList("lstUnmounted", m_unmountedModel);

    m_lstMounted->setDragEnabled(true);
    m_lstMounted->setAcceptDrops(true);
    m_lstMounted->setDragDropMode(QAbstractItemView::DragDrop);
    m_lstMounted->setDragDropOverwriteMode(true); // the drop place is the row under the pointer
    m_lstMounted->setDefaultDropAction(Qt::MoveAction);
    m_lstMounted->setDropIndicatorShown(true);
    m_lstUnmounted->setDragEnabled(false);
    m_lstUnmounted->setAcceptDrops(false);
    connect(m_mountedModel, &MountedModel::filesDropped, this, &MounterPane::dropFiles);
    connect(m_mountedModel, &MountedModel::rowsDropped, this,
            [this](int row) { run(m_mounter.dropSelectedRows(row)); });
    connect(m_lstMounted, &QAbstractItemView::doubleClicked, this, &MounterPane::unmountSelected);
    connect(m_lstUnmounted, &QAbstractItemView::doubleClicked, this, &MounterPane::mountSelected);

    m_bar = new SplitterBar(this);
    connect(m_bar, &SplitterBar::pressed, this, &MounterPane::barPressed);
    connect(m_bar, &SplitterBar::dragged, this, &MounterPane::barDragged);
    connect(m_bar, &SplitterBar::released, this, &MounterPane::barReleased);

    connect(makeButton("cmdMount", QStringLiteral("&Mount"), 0), &QAbstractButton::clicked, this,
            &MounterPane::mountSelected);
    connect(makeButton("cmdUnmount", QStringLiteral("&Unmount"), 1), &QAbstractButton::clicked, this,
            &MounterPane::unmountSelected);
    connect(makeButton("cmdMountAll", QStringLiteral("Mount &All"), 2), &QAbstractButton::clicked, this,
            [this] { m_mounter.MountAll(); });
    connect(makeButton("cmdUnmountAll", QStringLiteral("Unmount A&ll"), 3), &QAbstractButton::clicked, this,
            [this] { m_mounter.UnmountAll(); });
    connect(makeButton("cmdClean", QStringLiteral("Clea&n Missing"), 4), &QAbstractButton::clicked, this,
            [this] { run(m_mounter.CleanMissing()); });
    connect(makeButton("cmdRefresh", QStringLiteral("&Refresh"), 5), &QAbstractButton::clicked, this,
            &MounterPane::refreshBoth);
    connect(makeButton("cmdBrowse", QStringLiteral("&Browse..."), 6), &QAbstractButton::clicked, this,
            [this] { run(m_mounter.MountBrowsed()); });
    auto* view = makeButton("cmdView", QStringLiteral("&View POD.INI"), 7);
    view->setToolTip(QStringLiteral("Open POD.INI in the program that edits text files"));
    connect(view, &QAbstractButton::clicked, this, [this] { m_services.shell.openDocument(m_session.locationIni); });

    m_lblPODs = new QLabel(this);
    m_lblPODs->setObjectName(QStringLiteral("lblPODs"));
    m_lblPODs->setAlignment(Qt::AlignCenter);
    m_lblPODs->setWordWrap(true);
    m_lblPODs->setGeometry(ui::twipsRect(kButtonLeft, 180 + 8 * kButtonPitch, kButtonWidth, 420, this));
    m_prgPODs = new QProgressBar(this);
    m_prgPODs->setObjectName(QStringLiteral("prgPODs"));
    m_prgPODs->setRange(0, 99);
    m_prgPODs->setTextVisible(false);
    m_prgPODs->setGeometry(ui::twipsRect(kButtonLeft, 180 + 8 * kButtonPitch + 450, kButtonWidth, 240, this));
    connect(&m_mounter, &Mounter::counterChanged, this, &MounterPane::showCounter);

    buildMenus();
    layoutLists();
}

MounterPane::~MounterPane() = default;

QTreeView* MounterPane::makeList(const char* name, MountedModel* model) {
    QTreeView* list = new MounterListView(this);
    list->setObjectName(QString::fromLatin1(name));
    list->setModel(model);
    model->bindSelection(list->selectionModel());
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
    m_mnuMounted = new QMenu(this);
    m_mnuMounted->setObjectName(QStringLiteral("mnuMounted"));
    QAction* unmount = makeAction(m_mnuMounted, "mnuUnmount", QStringLiteral("&Unmount"));
    m_mnuMounted->setDefaultAction(unmount);
    m_mnuMounted->addSeparator();
    QAction* top = makeAction(m_mnuMounted, "mnuTop", QStringLiteral("Move to &Top"));
    QAction* up = makeAction(m_mnuMounted, "mnuUp", QStringLiteral("Move &Up"));
    QAction* down = makeAction(m_mnuMounted, "mnuDown", QStringLiteral("Move &Down"));
    QAction* bottom = makeAction(m_mnuMounted, "mnuBottom", QStringLiteral("Move to &Bottom"));
    m_mnuMounted->addSeparator();
    QAction* refreshMounted = makeAction(m_mnuMounted, "mnuRefreshMounted", QStringLiteral("&Refresh"));
    connect(unmount, &QAction::triggered, this, &MounterPane::unmountSelected);
    connect(top, &QAction::triggered, this, [this] { run(m_mounter.MoveSelectedToTop()); });
    connect(up, &QAction::triggered, this, [this] { run(m_mounter.MoveSelectedUp()); });
    connect(down, &QAction::triggered, this, [this] { run(m_mounter.MoveSelectedDown()); });
    connect(bottom, &QAction::triggered, this, [this] { run(m_mounter.MoveSelectedToBottom()); });
    connect(refreshMounted, &QAction::triggered, this, &MounterPane::refreshBoth);

    m_mnuUnmounted = new QMenu(this);
    m_mnuUnmounted->setObjectName(QStringLiteral("mnuUnmounted"));
    QAction* mount = makeAction(m_mnuUnmounted, "mnuMount", QStringLiteral("&Mount"));
    m_mnuUnmounted->setDefaultAction(mount);
    QAction* remove = makeAction(m_mnuUnmounted, "mnuDelete", QStringLiteral("&Delete"));
    m_mnuUnmounted->addSeparator();
    QAction* refreshUnmounted = makeAction(m_mnuUnmounted, "mnuRefreshUnmounted", QStringLiteral("&Refresh"));
    connect(mount, &QAction::triggered, this, &MounterPane::mountSelected);
    connect(remove, &QAction::triggered, this, &MounterPane::deleteSelected);
    connect(refreshUnmounted, &QAction::triggered, this, &MounterPane::refreshUnmounted);
}

void MounterPane::setSplitterTop(int twips) {
    m_barTop = twips;
    layoutLists();
}

void MounterPane::layoutLists() {
    const MounterSplit split = mounterSplit(m_barTop, kBarHeight, kListsBottom);
    m_lstMounted->setGeometry(ui::twipsRect(kListLeft, kMountedTop, kListWidth, split.mountedHeight, this));
    m_bar->setGeometry(ui::twipsRect(kListLeft, m_barTop, kListWidth, kBarHeight, this));
    m_lstUnmounted->setGeometry(ui::twipsRect(kListLeft, split.unmountedTop, kListWidth, split.unmountedHeight, this));
}

void MounterPane::barPressed() {
    m_bar->setDragging(true);
}

void MounterPane::barDragged(int pointerY) {
    if (!m_bar->dragging())
        return;
    setSplitterTop(splitterDragTop(ui::pixelsToTwips(pointerY, this), kBarHeight, m_barTop));
}

void MounterPane::barReleased(bool rightButton) {
    setSplitterTop(splitterReleaseTop(m_barTop, rightButton));
    m_bar->setDragging(false);
    m_mounter.saveSplitterTop(m_barTop);
}

void MounterPane::run(const Status& status) {
    if (!status.ok())
        m_services.dialogs.message(status.failure().title(), status.failure().message, MessageIcon::Critical);
}

void MounterPane::refreshBoth() {
    run(m_mounter.refreshBoth());
}

void MounterPane::refreshUnmounted() {
    m_mounter.refreshUnmounted();
}

void MounterPane::mountSelected() {
    run(m_mounter.MountSelected());
}

void MounterPane::unmountSelected() {
    run(m_mounter.UnmountSelected());
}

void MounterPane::deleteSelected() {
    run(m_mounter.DeleteSelectedArchives());
}

void MounterPane::showCounter(const QString& text, int bar) {
    m_lblPODs->setText(text);
    m_prgPODs->setValue(bar);
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
    m_mounter.ScanUnmounted();
}

void MounterPane::restoreSplitter(double sliderTop) {
    setSplitterTop(static_cast<int>(std::lround(sliderTop)));
}

bool MounterPane::mountedListChanged() const {
    return m_mounter.isModified();
}

Status MounterPane::saveMountedList() {
    return m_mounter.SaveMountedList();
}

bool MounterPane::listKey(QTreeView* list, QKeyEvent* key) {
    const bool mounted = list == m_lstMounted;
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
        run(m_mounter.MoveSelectedToTop());
        return true;
    case Qt::Key_U:
        run(m_mounter.MoveSelectedUp());
        return true;
    case Qt::Key_D:
        run(m_mounter.MoveSelectedDown());
        return true;
    case Qt::Key_B:
        run(m_mounter.MoveSelectedToBottom());
        return true;
    default:
        return false;
    }
}

bool MounterPane::eventFilter(QObject* watched, QEvent* event) {
    for (QTreeView* list : {m_lstMounted, m_lstUnmounted}) {
        if (!list)
            continue;
        if (watched == list && event->type() == QEvent::KeyPress && listKey(list, static_cast<QKeyEvent*>(event)))
            return true;
        if (watched == list->viewport() && event->type() == QEvent::MouseButtonRelease) {
            auto* mouse = static_cast<QMouseEvent*>(event);
            if (mouse->button() == Qt::RightButton) {
                (list == m_lstMounted ? m_mnuMounted : m_mnuUnmounted)->popup(mouse->globalPosition().toPoint());
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
