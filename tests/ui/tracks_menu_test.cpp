#include "../tracklist/loopback_http_server.h"
#include "startup/default_track_list.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "tracklist/widgets/tracks_menu.h"
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
        QObject::connect(menus.update(), &QAction::triggered, tracks.get(), [this] { tracks->mnuUpdate_Click(); });
    }

    void storeList(std::string_view list) { store.writeProgram(settings::kTrackList, std::string(list)); }

    std::string shown() const {
        QStringList texts;
        for (QAction* action : menus.tracksMenu()->actions())
            texts << (action->isSeparator() ? QStringLiteral("-") : action->text());
        return texts.join(QLatin1Char('|')).toStdString();
    }

    korvel::testing::TempDrive drive;
    korvel::SettingsStore store;
    QMainWindow window;
    korvel::ui::MainMenus menus;
    std::unique_ptr<TracksMenu> tracks;
};

} // namespace

TEST(TracksMenuEntries, followTheStoredListOpenTheirAddressesAndReportAShortRow) {
    TracksFixture f;
    f.tracks->LoadTrackList();
    EXPECT_EQ(f.shown(), "(no tracks available)|-|&Update Track List");
    f.storeList(korvel::kDefaultTrackList);
    EXPECT_TRUE(f.tracks->LoadTrackList());
    EXPECT_TRUE(f.shown().starts_with("Carnage!\t<Rumble>|Damage Inc.\t<Rumble>|"));
    ASSERT_GE(f.tracks->entries().size(), 2u);
    f.tracks->entries()[1]->trigger();
    f.tracks->entries()[0]->trigger();
    EXPECT_EQ(f.drive.shell().urls.join(QLatin1Char(' ')).toStdString(),
              "http://127.0.0.1:1/site/vault/tracks/damageX.zip http://127.0.0.1:1/site/vault/tracks/carn.zip");
    // Rebuilding replaces the entries; an "&" in a name stays as it is.
    f.storeList("Rock & Roll|Race|vault/r.zip*B|Rumble|vault/b.zip");
    f.tracks->LoadTrackList();
    EXPECT_EQ(f.shown(), "Rock & Roll\t<Race>|B\t<Rumble>|-|&Update Track List");
    f.storeList("A|Rumble|a.zip*B|Rumble*C|Rumble|c.zip");
    EXPECT_FALSE(f.tracks->LoadTrackList());
    EXPECT_EQ(f.shown(), "A\t<Rumble>|-|&Update Track List");
    ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(f.drive.dialogs().lastMessage().icon, MessageIcon::Critical);
}

TEST(TracksMenuUpdate, storesAMarkedDownloadAndLeavesTheListOnAnyFailure) {
    LoopbackHttpServer good("QXMTL$New One|Race|vault/new.zip*Two|Rumble|vault/two.zip");
    // The longest list the store reads back, and one character more, which would be lost at the next start.
    const std::string longest = "Long|Race|" + std::string(2549 - 10, 'x');
    LoopbackHttpServer fits(QByteArray::fromStdString("QXMTL$" + longest));
    LoopbackHttpServer tooLong(QByteArray::fromStdString("QXMTL$" + longest + "x"));
    const std::string old = "Old|Rumble|old.zip", oldShown = "Old\t<Rumble>|-|&Update Track List";
    const QString failed = "Update failed! Please try again later.", done = "Update completed successfully!";
    const struct {
        QUrl url;
        std::string stored, shown;
        QString message;
    } cases[] = {{good.url(), "New One|Race|vault/new.zip*Two|Rumble|vault/two.zip",
                  "New One\t<Race>|Two\t<Rumble>|-|&Update Track List", done},
                 {fits.url(), longest, "Long\t<Race>|-|&Update Track List", done},
                 {tooLong.url(), old, oldShown, failed}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url.toString().toStdString());
        TracksFixture f(c.url);
        f.storeList(old);
        f.tracks->LoadTrackList();
        QSignalSpy finished(f.tracks.get(), &TracksMenu::updateFinished);
        f.menus.update()->trigger();
        EXPECT_TRUE(QGuiApplication::overrideCursor() && QGuiApplication::overrideCursor()->shape() == Qt::WaitCursor &&
                    !f.menus.update()->isEnabled());
        ASSERT_TRUE(finished.wait(10000));
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
        EXPECT_TRUE(f.menus.update()->isEnabled());
        EXPECT_EQ(f.store.readProgram(settings::kTrackList), c.stored);
        EXPECT_EQ(f.shown(), c.shown);
        ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
        EXPECT_EQ(f.drive.dialogs().lastMessage().text, c.message);
    }
}
