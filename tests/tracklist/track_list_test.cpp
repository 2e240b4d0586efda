#include "fake_wine.h"
#include "startup/default_track_list.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "tracklist/track_list.h"
#include "tracklist/track_list_download.h"
#include "tracklist/track_site.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;
using Captions = std::vector<std::string>;

namespace {

struct ProgramStore {
    ProgramStore() { store.CreateKey(std::string(settings::kProgramKey)); }
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
};

Captions captions(const TrackMenu& menu) {
    Captions out;
    for (const TrackMenuEntry& entry : menu.entries)
        out.push_back(entry.caption);
    return out;
}

TrackListReply replyOf(const char* body) {
    return {true, QByteArray(body), {}};
}

} // namespace

TEST(TrackList, menuEntriesCarryNameRaceTypeAndPath) {
    const TrackMenu menu = LoadTrackList(kDefaultTrackList);
    ASSERT_EQ(menu.entries.size(), 6u);
    EXPECT_EQ(menu.entries[0].caption, "Carnage!\t<Rumble>");
    EXPECT_EQ(menu.entries[0].tag, "vault/tracks/carn.zip");
    EXPECT_EQ(menu.entries[5].tag, "vault/tracks/Suppository.zip");
    EXPECT_TRUE(LoadTrackList("").entries.empty());
    EXPECT_FALSE(LoadTrackList("").failure);
    // Fields stand as written: "&" stays, blanks stay, extra columns are ignored.
    const TrackMenu extra = LoadTrackList("Rock & Roll| Race |x/y.zip|more");
    ASSERT_EQ(extra.entries.size(), 1u);
    EXPECT_EQ(extra.entries[0].caption, "Rock & Roll\t< Race >");
    // A short row stops the rebuild, keeping the rows before it.
    const TrackMenu cut = LoadTrackList("A|Rumble|a.zip*B|Race*C|Rumble|c.zip");
    EXPECT_EQ(captions(cut), Captions{"A\t<Rumble>"});
    ASSERT_TRUE(cut.failure);
    EXPECT_TRUE(cut.failure->message.contains(QStringLiteral("row 2")));
    EXPECT_TRUE(LoadTrackList("A|Rumble|a.zip*").failure); // a trailing separator leaves an empty row
}

TEST(TrackListUpdate, onlyAMarkedReplyReplacesTheListWholeEvenWhenEmpty) {
    ProgramStore s;
    TempDrive& drive = s.drive;
    SettingsStore& store = s.store;
    store.writeProgram(settings::kTrackList, "Old|Race|o.zip");
    const auto update = [&](const TrackListReply& reply) {
        showTrackListUpdateOutcome(drive.dialogs(), storeTrackListReply(store, reply));
        return drive.dialogs().lastMessage();
    };
    for (const TrackListReply& reply : {replyOf("<html>Not found</html>"), replyOf(""), replyOf("QXMTL"),
                                        replyOf("qxmtl$L|Race|l.zip"), replyOf(" QXMTL$L|Race|l.zip"),
                                        TrackListReply{false, QByteArray("QXMTL$A|B|c"), QStringLiteral("timeout")}}) {
        const auto shown = update(reply);
        EXPECT_EQ(shown.title, "Unexpected Error");
        EXPECT_EQ(shown.text, "Update failed! Please try again later.");
        EXPECT_EQ(shown.icon, MessageIcon::Critical);
        EXPECT_EQ(readTrackList(store), "Old|Race|o.zip");
    }
    EXPECT_EQ(update(replyOf("QXMTL$New|Race|n.zip*Two|Rumble|t.zip")).text, "Update completed successfully!");
    EXPECT_EQ(captions(LoadTrackList(readTrackList(store))), (Captions{"New\t<Race>", "Two\t<Rumble>"}));
    EXPECT_EQ(update(replyOf("QXMTL$")).text, "Update completed successfully!");
    EXPECT_EQ(drive.registry().readValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel", "TrackList"), "");
    EXPECT_EQ(storedOrDefaultTrackList(store), kDefaultTrackList);
}

TEST(TrackListUpdate, lineBreaksOfTheReplyStayOutOfTheLastTracksAddress) {
    const struct {
        const char* reply;
        std::string stored;
    } cases[] = {{"QXMTL$A|Rumble|a.zip*B|Race|b.zip\r\n", "A|Rumble|a.zip*B|Race|b.zip"},
                 {"QXMTL$A|Rumble|a.zip*B|Race|b.zip\n\n", "A|Rumble|a.zip*B|Race|b.zip"},
                 {"QXMTL$\r\nA|Rumble|a.zip*B|Race|b.zip\r", "A|Rumble|a.zip*B|Race|b.zip"},
                 {"QXMTL$\r\n", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reply);
        EXPECT_EQ(trackListFromReply(c.reply), c.stored);
    }
    // A list stored before, with the line breaks still in it, reads the same.
    const TrackMenu menu = LoadTrackList("A|Rumble|a.zip\r\n*B|Race|b.zip\r\n");
    ASSERT_EQ(menu.entries.size(), 2u);
    EXPECT_FALSE(menu.failure);
    EXPECT_EQ(menu.entries[0].tag, "a.zip");
    EXPECT_EQ(menu.entries[1].tag, "b.zip");
}

// Which address is in force is the settings' rule; the site only gains its closing "/".
TEST(TrackSite, joinsTheTagToTheSiteInForceAndGivesNoAddressWithoutOne) {
    ProgramStore s;
    ScopedEnvironment site("KORVEL_TRACK_SITE", QByteArray());
    ScopedEnvironment list("KORVEL_TRACK_LIST_URL", QByteArray());
    EXPECT_EQ(TrackSite::configured(s.store).trackAddress("vault/tracks/carn.zip"), QString());
    s.store.writeProgram(settings::kTrackSite, "https://tracks.test/mtm2");
    s.store.writeProgram(settings::kTrackListAddress, "https://tracks.test/list.txt");
    const TrackSite stored = TrackSite::configured(s.store);
    EXPECT_EQ(stored.trackAddress("vault/carn.zip").toStdString(), "https://tracks.test/mtm2/vault/carn.zip");
    EXPECT_EQ(stored.listUrl, QUrl(QStringLiteral("https://tracks.test/list.txt")));
}
