#pragma once

#include "mounter/mounted_archives.h"
#include "result_table_model.h"

#include <vector>

namespace korvel {

// The findings of Check PODs: one row per mounted archive, in mount order, with "Fine" or what is
// wrong with it.
class CheckResultsModel : public ResultTableModel {
    Q_OBJECT
public:
    enum Column { OrderColumn, ArchiveColumn, ResultColumn, ColumnCount };
    enum Role {
        ProblemRole = Qt::UserRole + 1, // "problem" or "fine": what the window's filter looks for
    };

    explicit CheckResultsModel(QObject* parent = nullptr);

    void setChecks(std::vector<MountedCheck> checks);
    const std::vector<MountedCheck>& checks() const { return m_checks; }
    int problemCount() const;

private:
    int resultRows() const override;
    QVariant cell(int row, int column, int role) const override;

    std::vector<MountedCheck> m_checks;
};

} // namespace korvel
