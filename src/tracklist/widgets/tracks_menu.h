#pragma once

#include "tracklist/track_list.h"
#include "tracklist/track_site.h"

#include <QObject>
#include <QPointer>

#include <vector>

class QAction;
class QMenu;

namespace korvel {

class Dialogs;
class SettingsStore;
class Shell;
class TrackListDownload;

// The Tracks menu of the Monster Truck Madness 2 profile: one entry per add-on track of the stored
// "TrackList" value, opening the track's download address in the browser, and the entry that
// downloads a fresh list from the track site.
//
// It drives the menu the main window built (the menu, its first track entry, the separator under
// the tracks and the update entry). The application builds it at opening, after monster.ini, and
// updates it from the menu.
class TracksMenu : public QObject {
    Q_OBJECT

public:
    TracksMenu(QMenu& menu, QAction& firstEntry, QAction& separator, QAction& update, SettingsStore& store,
               Dialogs& dialogs, Shell& shell, TrackSite site, QObject* parent = nullptr);
    ~TracksMenu() override;

    // Rebuilds the track entries from the stored list. A row that is too short stops the rebuild
    // there and is reported; the entries before it stay.
    bool LoadTrackList();
    // Opens the download address of track entry `index`.
    void mnuTrackList_Click(int index);
    // Downloads the list and stores it, without blocking the window: returns at once, shows the
    // busy cursor until the download ends, then the outcome; updateFinished() follows.
    void mnuUpdate_Click();
    bool isUpdating() const;

    // The track entries, entry 0 first.
    const std::vector<QAction*>& entries() const { return m_entries; }
    // The download path an entry holds.
    static QString tagOf(const QAction& entry);

    const TrackSite& site() const { return m_site; }
    // New addresses (the Options dialog changed them). While the site is missing the track entries
    // are disabled, while the list's address is missing the update entry; either way the entry's
    // tooltip says how to set one.
    void setSite(TrackSite site);

signals:
    void updateFinished(bool succeeded);

private:
    void onDownloadFinished();
    void removeAddedEntries();
    void applyAddresses();

    QMenu& m_menu;
    QAction& m_separator;
    QAction& m_update;
    SettingsStore& m_store;
    Dialogs& m_dialogs;
    Shell& m_shell;
    TrackSite m_site;
    std::vector<QAction*> m_entries;
    TrackListDownload* m_download;
    bool m_busyCursor = false;
};

} // namespace korvel
