#include "conflict_tracker.h"

#include "mounter/mounted_list.h"
#include "ui/kit/progress_window.h"

#include <QTimer>
#include <QWidget>

namespace korvel {

ConflictTracker::ConflictTracker(const FileServices& files, const std::string& gameFolder, const EntryList& mounted,
                                 QWidget* progressParent)
    : m_gameFolder(gameFolder), m_mounted(mounted), m_progressParent(progressParent), m_finder(files) {
    connect(&mounted, &EntryList::contentChanged, this, &ConflictTracker::listChanged);
}

ConflictTracker::~ConflictTracker() = default;

void ConflictTracker::start() {
    m_following = true;
    refresh();
}

void ConflictTracker::listChanged() {
    // One operation may announce several changes (rows removed, then inserted): compute once, after
    // the last of them.
    if (!m_following || m_pending)
        return;
    m_pending = true;
    QTimer::singleShot(0, this, [this] {
        // While a computation runs, it looks at m_pending when it ends.
        if (m_pending && !m_running)
            refresh();
    });
}

void ConflictTracker::refresh() {
    if (m_running) {
        m_pending = true;
        return;
    }
    m_pending = false;
    m_running = true;
    std::vector<std::string> stored;
    stored.reserve(static_cast<size_t>(m_mounted.size()));
    for (const MountedEntry& row : m_mounted.rows())
        stored.push_back(row.path);
    Result<ConflictReport> found = [&] {
        ui::ProgressWindow progress(m_progressParent->window(), QStringLiteral("Conflicts"),
                                    QStringLiteral("Reading the directories of the mounted PODs..."));
        return m_finder.find(m_gameFolder, stored, progress.callback());
    }();
    m_running = false;
    m_conflicting.clear();
    if (!found) {
        m_report.reset();
        m_failure = found.failure().message;
        m_following = false;
    } else {
        m_failure.clear();
        for (const ConflictArchive& archive : found->archives) {
            if (archive.sharedCount > 0)
                m_conflicting.insert(archive.storedPath);
        }
        m_report = std::make_shared<const ConflictReport>(std::move(*found));
    }
    emit reportChanged();
    if (m_pending) {
        m_pending = false;
        listChanged();
    }
}

} // namespace korvel
