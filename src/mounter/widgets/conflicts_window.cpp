#include "conflicts_window.h"

#include "conflict_models.h"
#include "conflict_tracker.h"
#include "platform/game_text.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace korvel {

namespace {

QTreeView* makeView(const char* name, const QString& accessibleName, QWidget* parent) {
    auto* view = new QTreeView(parent);
    view->setObjectName(QString::fromLatin1(name));
    view->setAccessibleName(accessibleName);
    view->setRootIsDecorated(false);
    view->setItemsExpandable(false);
    view->setUniformRowHeights(true);
    view->setAllColumnsShowFocus(true);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    return view;
}

QLabel* makeCaption(const QString& text, const char* name, QWidget* buddy, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setBuddy(buddy);
    return label;
}

} // namespace

ConflictsWindow::ConflictsWindow(ConflictTracker& tracker, QWidget* parent) : QDialog(parent), m_tracker(tracker) {
    setObjectName(QStringLiteral("frmConflicts"));
    setWindowTitle(QStringLiteral("Conflicts of the Mounted PODs"));
    setAccessibleName(windowTitle());
    setModal(false);
    setSizeGripEnabled(true);

    m_archives = new ConflictArchivesModel(this);
    m_paths = new ConflictPathsModel(this);
    m_sortedPaths = new QSortFilterProxyModel(this);
    m_sortedPaths->setSourceModel(m_paths);
    m_sortedPaths->setSortRole(ConflictPathsModel::SortRole);
    m_sortedPaths->setFilterKeyColumn(-1);
    m_sortedPaths->setFilterCaseSensitivity(Qt::CaseInsensitive);

    m_summary = new QLabel(this);
    m_summary->setObjectName(QStringLiteral("lblConflicts"));
    m_summary->setWordWrap(true);
    m_summary->setTextFormat(Qt::PlainText);

    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(QStringLiteral("splConflicts"));
    splitter->setChildrenCollapsible(false);

    auto* left = new QWidget(splitter);
    left->setObjectName(QStringLiteral("fraConflictArchives"));
    m_archivesView = makeView("lstConflictArchives", QStringLiteral("Mounted PODs in mount order"), left);
    m_archivesView->setModel(m_archives);
    m_archivesView->header()->setStretchLastSection(true);
    m_archivesView->header()->setSectionResizeMode(ConflictArchivesModel::OrderColumn, QHeaderView::ResizeToContents);
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->addWidget(makeCaption(QStringLiteral("Mounted &PODs, loaded from the top down:"), "lblConflictArchives",
                                      m_archivesView, left));
    leftLayout->addWidget(m_archivesView);

    auto* right = new QWidget(splitter);
    right->setObjectName(QStringLiteral("fraConflictPaths"));
    m_pathsView = makeView("lstConflictPaths", QStringLiteral("Files also in other mounted PODs"), right);
    m_pathsView->setModel(m_sortedPaths);
    m_pathsView->setSortingEnabled(true);
    m_pathsView->sortByColumn(ConflictPathsModel::PathColumn, Qt::AscendingOrder);
    m_pathsView->header()->setStretchLastSection(true);
    m_filter = new QLineEdit(right);
    m_filter->setObjectName(QStringLiteral("txtConflictFilter"));
    m_filter->setAccessibleName(QStringLiteral("Filter the files"));
    m_filter->setPlaceholderText(QStringLiteral("Text in any column"));
    m_filter->setClearButtonEnabled(true);
    connect(m_filter, &QLineEdit::textChanged, m_sortedPaths, &QSortFilterProxyModel::setFilterFixedString);
    m_pathsCaption =
        makeCaption(QStringLiteral("Files also in other mounted PODs:"), "lblConflictPaths", m_pathsView, right);
    auto* filterRow = new QHBoxLayout;
    filterRow->addWidget(makeCaption(QStringLiteral("&Filter:"), "lblConflictFilter", m_filter, right));
    filterRow->addWidget(m_filter, 1);
    auto* rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->addWidget(m_pathsCaption);
    rightLayout->addLayout(filterRow);
    rightLayout->addWidget(m_pathsView);
    splitter->addWidget(left);
    splitter->addWidget(right);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 3);

    auto* refresh = new QPushButton(QStringLiteral("&Refresh"), this);
    refresh->setObjectName(QStringLiteral("cmdConflictsRefresh"));
    refresh->setAccessibleName(QStringLiteral("Refresh"));
    refresh->setAutoDefault(false);
    refresh->setToolTip(QStringLiteral("Read the mounted PODs again"));
    auto* close = new QPushButton(QStringLiteral("&Close"), this);
    close->setObjectName(QStringLiteral("cmdConflictsClose"));
    close->setAccessibleName(QStringLiteral("Close"));
    close->setAutoDefault(false);
    connect(refresh, &QPushButton::clicked, &m_tracker, &ConflictTracker::start);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(refresh);
    buttons->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(splitter, 1);
    layout->addLayout(buttons);
    resize(860, 480);

    connect(m_archivesView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &ConflictsWindow::archiveChosen);
    connect(&m_tracker, &ConflictTracker::reportChanged, this, &ConflictsWindow::showReport);
    showReport();
}

ConflictsWindow::~ConflictsWindow() = default;

void ConflictsWindow::showReport() {
    const std::shared_ptr<const ConflictReport> report = m_tracker.report();
    m_archives->setReport(report);
    if (!report) {
        m_summary->setText(m_tracker.failure().isEmpty()
                               ? QString()
                               : m_tracker.failure() +
                                     QStringLiteral(" Press Refresh to read the mounted PODs again."));
        m_paths->setArchive(nullptr, -1);
        m_pathsCaption->setText(QStringLiteral("Files also in other mounted PODs:"));
        return;
    }
    const auto identical = std::count_if(report->paths.begin(), report->paths.end(),
                                         [](const ConflictPath& path) { return path.identical; });
    m_summary->setText(report->paths.empty()
                           ? QStringLiteral("No file is in more than one mounted POD.")
                           : QStringLiteral("%1 files are in more than one mounted POD; %2 of them are identical in "
                                            "every POD that holds them.")
                                 .arg(report->paths.size())
                                 .arg(identical));
    int row = m_archives->rowOf(m_selected);
    if (row < 0) {
        const auto& archives = report->archives;
        const auto first = std::find_if(archives.begin(), archives.end(),
                                        [](const ConflictArchive& archive) { return archive.sharedCount > 0; });
        row = first != archives.end() ? static_cast<int>(first - archives.begin()) : (archives.empty() ? -1 : 0);
    }
    selectRow(row);
}

bool ConflictsWindow::selectArchive(const std::string& storedPath) {
    const int row = m_archives->rowOf(storedPath);
    if (row < 0)
        return false;
    selectRow(row);
    return true;
}

void ConflictsWindow::selectRow(int row) {
    if (row < 0) {
        m_archivesView->selectionModel()->clear();
    } else {
        const QModelIndex index = m_archives->index(row, 0);
        m_archivesView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                                     QItemSelectionModel::Rows);
        m_archivesView->scrollTo(index);
    }
    archiveChosen();
}

void ConflictsWindow::archiveChosen() {
    const QModelIndex current = m_archivesView->selectionModel()->currentIndex();
    const int row = current.isValid() ? current.row() : -1;
    const std::shared_ptr<const ConflictReport> report = m_tracker.report();
    m_paths->setArchive(report, row);
    if (row < 0 || !report) {
        m_pathsCaption->setText(QStringLiteral("Files also in other mounted PODs:"));
        return;
    }
    m_selected = report->archives[static_cast<size_t>(row)].storedPath;
    m_pathsCaption->setText(QStringLiteral("Files of %1 also in other mounted PODs (%2):")
                                .arg(conflictArchiveName(*report, row))
                                .arg(m_paths->rowCount()));
}

} // namespace korvel
