#include "check_pods_window.h"

#include "check_results_model.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <QVBoxLayout>

namespace korvel {

CheckPodsWindow::CheckPodsWindow(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmCheckPods"));
    setWindowTitle(QStringLiteral("Check PODs"));
    setAccessibleName(windowTitle());
    setModal(false);
    setSizeGripEnabled(true);

    m_model = new CheckResultsModel(this);
    m_filtered = new QSortFilterProxyModel(this);
    m_filtered->setSourceModel(m_model);
    m_filtered->setFilterRole(CheckResultsModel::ProblemRole);
    m_filtered->setFilterKeyColumn(CheckResultsModel::ResultColumn);

    m_summary = new QLabel(this);
    m_summary->setObjectName(QStringLiteral("lblCheckPods"));
    m_summary->setWordWrap(true);
    m_summary->setTextFormat(Qt::PlainText);

    m_view = new QTreeView(this);
    m_view->setObjectName(QStringLiteral("lstCheckPods"));
    m_view->setAccessibleName(QStringLiteral("Mounted PODs and what the check found"));
    m_view->setModel(m_filtered);
    m_view->setRootIsDecorated(false);
    m_view->setItemsExpandable(false);
    m_view->setUniformRowHeights(true);
    m_view->setAllColumnsShowFocus(true);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->header()->setStretchLastSection(true);
    m_view->header()->setSectionResizeMode(CheckResultsModel::OrderColumn, QHeaderView::ResizeToContents);
    m_view->header()->resizeSection(CheckResultsModel::ArchiveColumn, 220);
    auto* caption = new QLabel(QStringLiteral("&Mounted PODs:"), this);
    caption->setObjectName(QStringLiteral("lblCheckPodsList"));
    caption->setBuddy(m_view);

    m_problemsOnly = new QCheckBox(QStringLiteral("&Only PODs with problems"), this);
    m_problemsOnly->setObjectName(QStringLiteral("chkCheckProblemsOnly"));
    m_problemsOnly->setAccessibleName(QStringLiteral("Only PODs with problems"));
    connect(m_problemsOnly, &QCheckBox::toggled, this,
            [this](bool only) { m_filtered->setFilterFixedString(only ? QStringLiteral("problem") : QString()); });

    auto* close = new QPushButton(QStringLiteral("&Close"), this);
    close->setObjectName(QStringLiteral("cmdCheckPodsClose"));
    close->setAccessibleName(QStringLiteral("Close"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_problemsOnly);
    bottom->addStretch(1);
    bottom->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(caption);
    layout->addWidget(m_view, 1);
    layout->addLayout(bottom);
    resize(640, 400);
}

CheckPodsWindow::~CheckPodsWindow() = default;

void CheckPodsWindow::setChecks(std::vector<MountedCheck> checks) {
    m_model->setChecks(std::move(checks));
    const int total = m_model->rowCount();
    const int problems = m_model->problemCount();
    if (total == 0)
        m_summary->setText(QStringLiteral("No POD is mounted."));
    else if (problems == 0)
        m_summary->setText(QStringLiteral("All %1 mounted PODs are fine.").arg(total));
    else
        m_summary->setText(QStringLiteral("%1 of the %2 mounted PODs are not fine.").arg(problems).arg(total));
}

} // namespace korvel
