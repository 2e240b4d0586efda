#include "../tracklist/loopback_http_server.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "tracklist/default_track_list.h"
#include "tracklist/widgets/tracks_menu.h"
#include "ui/composite_hooks.h"
#include "ui/main_menus.h"

#include <QAction>
#include <QGuiApplication>
#include <QMainWindow>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

using korvel::MessageIcon;
using korvel::TracksMenu;
using korvel::testing::LoopbackHttpServer;
namespace settings = korvel::settings;

namespace {

// The window's menus with a Tracks menu controller over them, on a temporary drive.
struct TracksFixture {
    explicit TracksFixture(const QUrl& listUrl = QUrl(QStringLiteral("http://127.0.0.1:1/tracklist.txt")))
        : store(drive.registry(), drive.dialogs()), menus(window) {
        store.CreateKey(std::string(settings::kProgramKey));
        korvel::TrackSite site;
        site.siteRoot = QStringLiteral("http://127.0.0.1:1/site/");
        site.listUrl = listUrl;
        site.timeout = std::chrono::milliseconds(5000);
        tracks = std::make_unique<TracksMenu>(*menus.tracksMenu(), *menus.trackListEntry(), *menus.tracksSeparator(),
                                              *menus.update(), store, drive.dialogs(), drive.shell(), site);
        // The window hands its update entry to the hooks; so does this stand-in.
        QObject::connect(menus.update(), &QAction::triggered, tracks.get(), [this] { tracks->updateTrackList(); });
    }

    void storeList(std::string_view list) { store.writeProgram(settings::kTrackList, std::string(list)); }

    // The Tracks menu's entries as shown, top to bottom, separator as "-".
    std::string shown() const {
        QStringList texts;
        for (QAction* action : menus.tracksMenu()->actions())
            texts << (action->isSeparator() ? QStringLiteral("-") : action->text());
        return texts.join(QLatin1Char('|')).toStdString();
    }

    // Runs the update from the menu and waits for its outcome; whether the busy cursor showed.
    bool update() {
        QSignalSpy finished(tracks.get(), &TracksMenu::updateFinished);
        menus.update()->trigger();
        const bool busy = QGuiApplication::overrideCursor() &&
                          QGuiApplication::overrideCursor()->shape() == Qt::WaitCursor && !menus.update()->isEnabled();
        EXPECT_TRUE(finished.wait(10000));
        return busy;
    }

    korvel::testing::TempDrive drive;
    korvel::SettingsStore store;
    QMainWindow window;
    korvel::ui::MainMenus menus;
    std::unique_ptr<TracksMenu> tracks;
};

} // namespace

TEST(TracksMenuEntries, followTheStoredListAndOpenTheirAddresses) {
    TracksFixture f;
    f.storeList(korvel::kDefaultTrackList);
    EXPECT_TRUE(f.tracks->LoadTrackList());
    const std::string shown = f.shown();
    EXPECT_TRUE(shown.starts_with("Carnage!\t<Rumble>|Damage Inc.\t<Rumble>|"));
    EXPECT_EQ(f.tracks->entries().size(), 6u);
    EXPECT_TRUE(shown.ends_with("Suppository\t<Rumble>|-|&Update Track List"));
    for (QAction* entry : f.tracks->entries())
        EXPECT_EQ(entry->objectName(), "mnuTrackList");
    EXPECT_EQ(f.tracks->entries()[1]->data().toInt(), 1);

    f.tracks->entries()[1]->trigger();
    f.tracks->entries()[0]->trigger();
    EXPECT_EQ(f.drive.shell().urls.join(QLatin1Char(' ')).toStdString(),
              "http://127.0.0.1:1/site/vault/tracks/damageX.zip http://127.0.0.1:1/site/vault/tracks/carn.zip");

    // Rebuilding replaces the entries; an "&" in a name stays as it is.
    f.storeList("Rock & Roll|Race|vault/r.zip*B|Rumble|vault/b.zip");
    f.tracks->LoadTrackList();
    EXPECT_EQ(f.shown(), "Rock & Roll\t<Race>|B\t<Rumble>|-|&Update Track List");
    EXPECT_EQ(TracksMenu::tagOf(*f.tracks->entries()[1]), "vault/b.zip");
}

TEST(TracksMenuEntries, anEmptyListKeepsTheFirstCaptionAndAShortRowIsReported) {
    TracksFixture f;
    f.tracks->LoadTrackList();
    EXPECT_EQ(f.shown(), "(no tracks available)|-|&Update Track List");
    EXPECT_TRUE(f.drive.dialogs().messages().empty());

    f.storeList("A|Rumble|a.zip*B|Rumble*C|Rumble|c.zip");
    EXPECT_FALSE(f.tracks->LoadTrackList());
    EXPECT_EQ(f.shown(), "A\t<Rumble>|-|&Update Track List");
    ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(f.drive.dialogs().lastMessage().icon, MessageIcon::Critical);
}

TEST(TracksMenuUpdate, storesTheDownloadedListAndRebuildsTheMenu) {
    LoopbackHttpServer server("QXMTL$New One|Race|vault/new.zip*Two|Rumble|vault/two.zip");
    ASSERT_TRUE(server.listening());
    TracksFixture f(server.url());
    f.storeList(korvel::kDefaultTrackList);
    f.tracks->LoadTrackList();

    EXPECT_TRUE(f.update());
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_TRUE(f.menus.update()->isEnabled());
    EXPECT_EQ(f.store.readProgram(settings::kTrackList), "New One|Race|vault/new.zip*Two|Rumble|vault/two.zip");
    EXPECT_EQ(f.shown(), "New One\t<Race>|Two\t<Rumble>|-|&Update Track List");
    ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Information");
    EXPECT_EQ(f.drive.dialogs().lastMessage().text, "Update completed successfully!");
    EXPECT_EQ(f.drive.dialogs().lastMessage().icon, MessageIcon::Information);
}

TEST(TracksMenuUpdate, failuresLeaveTheListAndSaySo) {
    LoopbackHttpServer unmarked("<html>Not here</html>");
    for (const QUrl& url : {unmarked.url(), LoopbackHttpServer::refusingUrl()}) {
        SCOPED_TRACE(url.toString().toStdString());
        TracksFixture f(url);
        f.storeList("Old|Rumble|old.zip");
        f.tracks->LoadTrackList();
        EXPECT_TRUE(f.update());
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
        EXPECT_EQ(f.store.readProgram(settings::kTrackList), "Old|Rumble|old.zip");
        EXPECT_EQ(f.shown(), "Old\t<Rumble>|-|&Update Track List");
        ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
        EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Unexpected Error");
        EXPECT_EQ(f.drive.dialogs().lastMessage().text, "Update failed! Please try again later.");
        EXPECT_EQ(f.drive.dialogs().lastMessage().icon, MessageIcon::Critical);
    }
}

TEST(TracksMenuUpdate, isReachedThroughTheWindowHooks) {
    LoopbackHttpServer server("QXMTL$Hooked|Rumble|h.zip");
    TracksFixture f(server.url());
    korvel::ui::CompositeHooks hooks;
    hooks.add(f.tracks.get());
    hooks.loadConfiguratorSettings();
    EXPECT_EQ(f.shown(), "(no tracks available)|-|&Update Track List");
    QSignalSpy finished(f.tracks.get(), &TracksMenu::updateFinished);
    hooks.updateTrackList();
    ASSERT_TRUE(finished.wait(10000));
    EXPECT_EQ(f.shown(), "Hooked\t<Rumble>|-|&Update Track List");
}
