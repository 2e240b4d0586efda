#pragma once

#include "mounter/conflicts.h"

#include <QObject>
#include <QString>

#include <memory>
#include <string>
#include <unordered_set>

class QWidget;

namespace korvel {

class EntryList;
class FileServices;

// The conflicts of the mounted list, kept up to date once asked for: start() computes them (a
// progress window appears when that takes a while), and every later change of the list (a reorder,
// a mount, a refresh) computes them again once the change is complete. The finder's cache keeps a
// recomputation to the archives that changed. A cancelled computation stops the following until
// start() is called again.
class ConflictTracker : public QObject {
    Q_OBJECT
public:
    // `gameFolder` is read at each computation (the session's game folder).
    ConflictTracker(const FileServices& files, const std::string& gameFolder, const EntryList& mounted,
                    QWidget* progressParent);
    ~ConflictTracker() override;

    void start();
    bool following() const { return m_following; }
    // Computes now.
    void refresh();

    // The last report; null before the first computation and after a failed one.
    std::shared_ptr<const ConflictReport> report() const { return m_report; }
    // Why the last computation failed ("Cancelled."); empty after a success.
    QString failure() const { return m_failure; }
    // The stored paths of the mounted archives that hold files other mounted archives also hold.
    const std::unordered_set<std::string>& conflictingPaths() const { return m_conflicting; }
    // Archives read from disk by the last computation (the others came from the cache).
    int listingsRead() const { return m_finder.listingsRead(); }

signals:
    void reportChanged();

private:
    void listChanged();

    const std::string& m_gameFolder;
    const EntryList& m_mounted;
    QWidget* m_progressParent;
    ConflictFinder m_finder;
    std::shared_ptr<const ConflictReport> m_report;
    QString m_failure;
    std::unordered_set<std::string> m_conflicting;
    bool m_following = false;
    bool m_pending = false; // a computation is scheduled
    bool m_running = false;
};

} // namespace korvel
