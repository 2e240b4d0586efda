#pragma once

#include "mounter/mounted_archives.h"

#include <QDialog>

#include <vector>

class QCheckBox;
class QLabel;
class QSortFilterProxyModel;
class QTreeView;

namespace korvel {

class CheckResultsModel;

// `frmCheckPods`: what Check PODs found, one row per mounted archive in mount order ("Fine", "Not
// found", or the findings), with a count of the archives that are not fine and a switch that
// leaves only those in the list. Not modal; Esc or Close hides it.
class CheckPodsWindow : public QDialog {
    Q_OBJECT
public:
    explicit CheckPodsWindow(QWidget* parent = nullptr);
    ~CheckPodsWindow() override;

    void setChecks(std::vector<MountedCheck> checks);

    CheckResultsModel& model() const { return *m_model; }
    QTreeView* view() const { return m_view; }
    QCheckBox* problemsOnly() const { return m_problemsOnly; }
    QLabel* summary() const { return m_summary; }

private:
    CheckResultsModel* m_model = nullptr;
    QSortFilterProxyModel* m_filtered = nullptr;
    QTreeView* m_view = nullptr;
    QCheckBox* m_problemsOnly = nullptr;
    QLabel* m_summary = nullptr;
};

} // namespace korvel
