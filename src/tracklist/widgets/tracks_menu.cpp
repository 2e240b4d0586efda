#include "tracks_menu.h"

#include "platform/dialogs.h"
#include "platform/game_text.h"
#include "platform/shell.h"
#include "tracklist/track_list_download.h"

#include <QAction>
#include <QGuiApplication>
#include <QMenu>

namespace korvel {

namespace {

constexpr const char* kTagProperty = "tag";

} // namespace

TracksMenu::TracksMenu(QMenu& menu, QAction& firstEntry, QAction& separator, QAction& update, SettingsStore& store,
                       Dialogs& dialogs, Shell& shell, TrackSite site, QObject* parent)
    : QObject(parent), m_menu(menu), m_separator(separator), m_update(update), m_store(store), m_dialogs(dialogs),
      m_shell(shell), m_site(std::move(site)), m_entries{&firstEntry}, m_download(new TrackListDownload(this)) {
    firstEntry.setData(0);
    connect(&firstEntry, &QAction::triggered, this, [this] { mnuTrackList_Click(0); });
    connect(m_download, &TrackListDownload::finished, this, &TracksMenu::onDownloadFinished);
    m_menu.setToolTipsVisible(true);
    applyAddresses();
}

void TracksMenu::setSite(TrackSite site) {
    m_site = std::move(site);
    applyAddresses();
}

void TracksMenu::applyAddresses() {
    const QString noSite = m_site.hasSite() ? QString() : TrackSite::missingSiteHint();
    for (QAction* entry : m_entries) {
        entry->setEnabled(m_site.hasSite());
        entry->setToolTip(noSite);
    }
    m_update.setEnabled(m_site.hasList() && !isUpdating());
    m_update.setToolTip(m_site.hasList() ? QString() : TrackSite::missingListHint());
}

TracksMenu::~TracksMenu() {
    if (m_busyCursor)
        QGuiApplication::restoreOverrideCursor();
}

QString TracksMenu::tagOf(const QAction& entry) {
    return entry.property(kTagProperty).toString();
}

void TracksMenu::removeAddedEntries() {
    for (size_t i = 1; i < m_entries.size(); ++i) {
        m_menu.removeAction(m_entries[i]);
        delete m_entries[i];
    }
    m_entries.resize(1);
}

bool TracksMenu::LoadTrackList() {
    removeAddedEntries();
    const TrackMenu built = korvel::LoadTrackList(readTrackList(m_store));
    for (size_t i = 0; i < built.entries.size(); ++i) {
        if (i > 0) {
            auto* entry = new QAction(&m_menu);
            entry->setObjectName(m_entries.front()->objectName());
            entry->setData(static_cast<int>(i));
            const int index = static_cast<int>(i);
            connect(entry, &QAction::triggered, this, [this, index] { mnuTrackList_Click(index); });
            m_menu.insertAction(&m_separator, entry);
            m_entries.push_back(entry);
        }
        // Captions are used as they stand: an "&" in a track's name marks its access key.
        m_entries[i]->setText(fromGameText(built.entries[i].caption));
        m_entries[i]->setProperty(kTagProperty, fromGameText(built.entries[i].tag));
    }
    applyAddresses();
    if (built.failure) {
        m_dialogs.message(built.failure->title(), built.failure->message, MessageIcon::Critical);
        return false;
    }
    return true;
}

void TracksMenu::mnuTrackList_Click(int index) {
    if (index < 0 || static_cast<size_t>(index) >= m_entries.size() || !m_site.hasSite())
        return;
    // The shell's answer is not checked: a browser that cannot open the address says so itself.
    m_shell.openUrl(m_site.trackAddress(toGameText(tagOf(*m_entries[static_cast<size_t>(index)]))));
}

bool TracksMenu::isUpdating() const {
    return m_download->isRunning();
}

void TracksMenu::mnuUpdate_Click() {
    if (isUpdating() || !m_site.hasList())
        return;
    // The window keeps painting while the list downloads; only a second update is kept out.
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    m_busyCursor = true;
    m_update.setEnabled(false);
    m_download->start(m_site.listUrl, m_site.timeout);
}

void TracksMenu::onDownloadFinished() {
    const Result<std::string> stored = storeTrackListReply(m_store, m_download->reply());
    if (stored)
        LoadTrackList();
    if (m_busyCursor) {
        QGuiApplication::restoreOverrideCursor();
        m_busyCursor = false;
    }
    applyAddresses();
    showTrackListUpdateOutcome(m_dialogs, stored);
    emit updateFinished(stored.ok());
}

} // namespace korvel
