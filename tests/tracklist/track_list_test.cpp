#include "platform/game_text.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "tracklist/default_track_list.h"
#include "tracklist/track_list.h"
#include "tracklist/track_list_download.h"
#include "tracklist/track_site.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::TempDrive;

namespace {

std::vector<std::string> captions(const TrackMenu& menu) {
    std::vector<std::string> out;
    for (const TrackMenuEntry& entry : menu.entries)
        out.push_back(entry.caption);
    return out;
}

struct Store {
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    Store() { store.CreateKey(std::string(settings::kProgramKey)); }
};

TrackListReply replyOf(const char* body) {
    return {true, QByteArray(body), {}};
}

} // namespace

TEST(TrackList, defaultListGivesSixRumbleEntriesTaggedWithTheirPaths) {
    const TrackMenu menu = LoadTrackList(kDefaultTrackList);
    ASSERT_FALSE(menu.failure);
    ASSERT_EQ(menu.entries.size(), 6u);
    EXPECT_EQ(menu.entries[0].caption, "Carnage!\t<Rumble>");
    EXPECT_EQ(menu.entries[0].tag, "vault/tracks/carn.zip");
    EXPECT_EQ(menu.entries[1].tag, "vault/tracks/damageX.zip");
    EXPECT_EQ(menu.entries[5].caption, "The Suppository\t<Rumble>");
    EXPECT_EQ(menu.entries[5].tag, "vault/tracks/Suppository.zip");
}

TEST(TrackList, emptyValueGivesNoEntriesAndNoFailure) {
    const TrackMenu menu = LoadTrackList("");
    EXPECT_TRUE(menu.entries.empty());
    EXPECT_FALSE(menu.failure);
}

TEST(TrackList, shortRowStopsTheRebuildKeepingTheRowsBeforeIt) {
    const TrackMenu menu = LoadTrackList("A|Rumble|a.zip*B|Race*C|Rumble|c.zip");
    EXPECT_EQ(captions(menu), (std::vector<std::string>{"A\t<Rumble>"}));
    ASSERT_TRUE(menu.failure);
    EXPECT_TRUE(menu.failure->message.contains(QStringLiteral("row 2")));
    // A trailing row separator leaves an empty last row, which is short too.
    EXPECT_TRUE(LoadTrackList("A|Rumble|a.zip*").failure);
    EXPECT_EQ(LoadTrackList("A|Rumble|a.zip*").entries.size(), 1u);
    // Extra columns are ignored; fields are kept as they stand ("&" stays an access key).
    const TrackMenu extra = LoadTrackList("Rock & Roll| Race |x/y.zip|more");
    ASSERT_FALSE(extra.failure);
    EXPECT_EQ(extra.entries[0].caption, "Rock & Roll\t< Race >");
    EXPECT_EQ(extra.entries[0].tag, "x/y.zip");
}

TEST(TrackList, storedValueIsReadOrTheDefaultTakesItsPlace) {
    Store s;
    EXPECT_EQ(readTrackList(s.store), "");
    EXPECT_EQ(storedOrDefaultTrackList(s.store), kDefaultTrackList);
    s.store.writeProgram(settings::kTrackList, "X|Race|x.zip");
    EXPECT_EQ(readTrackList(s.store), "X|Race|x.zip");
    EXPECT_EQ(storedOrDefaultTrackList(s.store), "X|Race|x.zip");
}

TEST(TrackListUpdate, markedReplyReplacesTheStoredListWhole) {
    Store s;
    s.store.writeProgram(settings::kTrackList, std::string(kDefaultTrackList));
    const Result<std::string> stored = storeTrackListReply(s.store, replyOf("QXMTL$New|Race|n.zip*Two|Rumble|t.zip"));
    ASSERT_TRUE(stored.ok());
    EXPECT_EQ(readTrackList(s.store), "New|Race|n.zip*Two|Rumble|t.zip");
    // The menu then shows exactly the downloaded rows, in order.
    EXPECT_EQ(captions(LoadTrackList(*stored)), (std::vector<std::string>{"New\t<Race>", "Two\t<Rumble>"}));
    showTrackListUpdateOutcome(s.drive.dialogs(), stored);
    EXPECT_EQ(s.drive.dialogs().lastMessage().title, "Information");
    EXPECT_EQ(s.drive.dialogs().lastMessage().text, "Update completed successfully!");
    EXPECT_EQ(s.drive.dialogs().lastMessage().icon, MessageIcon::Information);
}

TEST(TrackListUpdate, replyOfOnlyTheMarkStoresAnEmptyList) {
    Store s;
    s.store.writeProgram(settings::kTrackList, std::string(kDefaultTrackList));
    ASSERT_TRUE(storeTrackListReply(s.store, replyOf("QXMTL$")).ok());
    EXPECT_EQ(s.drive.registry().readValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel", "TrackList"), "");
    EXPECT_TRUE(LoadTrackList(readTrackList(s.store)).entries.empty());
}

TEST(TrackListUpdate, unmarkedEmptyOrFailedRepliesLeaveTheListAndReportFailure) {
    Store s;
    s.store.writeProgram(settings::kTrackList, "Old|Race|o.zip");
    for (const TrackListReply& reply : {replyOf("<html>Not found</html>"), replyOf(""), replyOf("QXMTL"),
                                        replyOf("qxmtl$Lower|Race|l.zip"), replyOf(" QXMTL$Late|Race|l.zip"),
                                        TrackListReply{false, QByteArray("QXMTL$A|B|c"), QStringLiteral("timeout")}}) {
        const Result<std::string> stored = storeTrackListReply(s.store, reply);
        ASSERT_FALSE(stored.ok()) << reply.body.constData();
        EXPECT_EQ(readTrackList(s.store), "Old|Race|o.zip");
        showTrackListUpdateOutcome(s.drive.dialogs(), stored);
        EXPECT_EQ(s.drive.dialogs().lastMessage().title, "Unexpected Error");
        EXPECT_EQ(s.drive.dialogs().lastMessage().text, "Update failed! Please try again later.");
        EXPECT_EQ(s.drive.dialogs().lastMessage().icon, MessageIcon::Critical);
    }
}

TEST(TrackSite, addressIsTheSiteRootFollowedByTheTagAndTheEnvironmentOverridesTheDefaults) {
    TrackSite site = TrackSite::defaults();
    site.siteRoot = QStringLiteral("http://127.0.0.1:8080/");
    EXPECT_EQ(site.trackAddress("vault/tracks/carn.zip"), "http://127.0.0.1:8080/vault/tracks/carn.zip");
    EXPECT_EQ(site.timeout, std::chrono::seconds(15));

    qputenv("KORVEL_TRACK_SITE", "http://127.0.0.1:1/root/");
    qputenv("KORVEL_TRACK_LIST_URL", "http://127.0.0.1:1/list.txt");
    const TrackSite overridden = TrackSite::fromEnvironment();
    qunsetenv("KORVEL_TRACK_SITE");
    qunsetenv("KORVEL_TRACK_LIST_URL");
    EXPECT_EQ(overridden.siteRoot, "http://127.0.0.1:1/root/");
    EXPECT_EQ(overridden.listUrl, QUrl("http://127.0.0.1:1/list.txt"));
    EXPECT_EQ(TrackSite::fromEnvironment().listUrl, TrackSite::defaults().listUrl);
}
