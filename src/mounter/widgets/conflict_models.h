#pragma once

#include "mounter/conflicts.h"
#include "result_table_model.h"

#include <memory>
#include <string>

namespace korvel {

// The Conflicts window's left side: one row per mounted archive, in mount order, with how many of
// its files other mounted archives also hold and which archives those are.
class ConflictArchivesModel : public ResultTableModel {
    Q_OBJECT
public:
    enum Column { OrderColumn, ArchiveColumn, SharedColumn, AlsoInColumn, ColumnCount };
    enum Role {
        StoredPathRole = Qt::UserRole + 1, // the stored path (QString)
        SharedCountRole,                   // int; -1 for an archive that was not listed
    };

    explicit ConflictArchivesModel(QObject* parent = nullptr);

    void setReport(std::shared_ptr<const ConflictReport> report);
    const ConflictReport* report() const { return m_report.get(); }
    // The row of the archive stored as `storedPath`; -1 when none.
    int rowOf(const std::string& storedPath) const;

private:
    int resultRows() const override;
    QVariant cell(int row, int column, int role) const override;
    std::shared_ptr<const ConflictReport> m_report;
};

// The Conflicts window's right side: the paths one mounted archive holds that other mounted
// archives also hold, with those archives, split into the ones loaded earlier and later, and
// whether every holder stores the same bytes.
class ConflictPathsModel : public ResultTableModel {
    Q_OBJECT
public:
    enum Column { PathColumn, SizeColumn, EarlierColumn, LaterColumn, ContentColumn, ColumnCount };
    enum Role {
        SortRole = Qt::UserRole + 1, // what the column sorts by: folded path, size in bytes, text
    };

    explicit ConflictPathsModel(QObject* parent = nullptr);

    // The paths of the archive in row `archive` of the report (none for -1).
    void setArchive(std::shared_ptr<const ConflictReport> report, int archive);
    int archive() const { return m_archive; }

private:
    int resultRows() const override;
    QVariant cell(int row, int column, int role) const override;
    const ConflictPath& pathAt(int row) const;
    const ConflictHolder* ownHolder(const ConflictPath& path) const;
    QString holdersText(const ConflictPath& path, bool earlier) const;
    QString holdersDetail(const ConflictPath& path, bool earlier) const;

    std::shared_ptr<const ConflictReport> m_report;
    int m_archive = -1;
};

// The display name of a mounted archive (as the mounted list shows it).
QString conflictArchiveName(const ConflictReport& report, int row);

} // namespace korvel
