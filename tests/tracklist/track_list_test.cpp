#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "tracklist/default_track_list.h"
#include "tracklist/track_list.h"
#include "tracklist/track_list_download.h"
#include "tracklist/track_site.h"

#include <gtest/gtest.h>

using namespace korvel;

namespace {

std::vector<std::string> captions(const TrackMenu& menu) {
    std::vector<std::string> out;
    for (const TrackMenuEntry& entry : menu.entries)
        out.push_back(entry.caption);
    return out;
}

struct Store {
    korvel::testing::TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    Store() {
        store.CreateKey(std::string(settings::kProgramKey));
        store.writeProgram(settings::kTrackList, "Old|Race|o.zip");
    }
    const korvel::testing::ScriptedDialogs::Shown& outcome(const TrackListReply& reply) {
        showTrackListUpdateOutcome(drive.dialogs(), storeTrackListReply(store, reply));
        return drive.dialogs().lastMessage();
    }
};

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
    EXPECT_TRUE(LoadTrackList("").entries.empty()); // the menu keeps its first caption
    EXPECT_FALSE(LoadTrackList("").failure);
    // Fields stand as written: "&" stays, blanks stay, extra columns are ignored.
    EXPECT_EQ(LoadTrackList("Rock & Roll| Race |x/y.zip|more").entries[0].caption, "Rock & Roll\t< Race >");
}

TEST(TrackList, shortRowStopsTheRebuildKeepingTheRowsBeforeIt) {
    const TrackMenu menu = LoadTrackList("A|Rumble|a.zip*B|Race*C|Rumble|c.zip");
    EXPECT_EQ(captions(menu), (std::vector<std::string>{"A\t<Rumble>"}));
    ASSERT_TRUE(menu.failure);
    EXPECT_TRUE(menu.failure->message.contains(QStringLiteral("row 2")));
    EXPECT_TRUE(LoadTrackList("A|Rumble|a.zip*").failure); // a trailing separator leaves an empty row
}

TEST(TrackListUpdate, markedReplyReplacesTheListWholeEvenWhenEmpty) {
    Store s;
    EXPECT_EQ(s.outcome(replyOf("QXMTL$New|Race|n.zip*Two|Rumble|t.zip")).text, "Update completed successfully!");
    EXPECT_EQ(s.drive.dialogs().lastMessage().title, "Information");
    EXPECT_EQ(captions(LoadTrackList(readTrackList(s.store))),
              (std::vector<std::string>{"New\t<Race>", "Two\t<Rumble>"}));
    s.outcome(replyOf("QXMTL$"));
    EXPECT_EQ(s.drive.registry().readValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel", "TrackList"), "");
    EXPECT_EQ(storedOrDefaultTrackList(s.store), kDefaultTrackList);
}

TEST(TrackListUpdate, unmarkedEmptyOrFailedRepliesLeaveTheList) {
    Store s;
    for (const TrackListReply& reply : {replyOf("<html>Not found</html>"), replyOf(""), replyOf("QXMTL"),
                                        replyOf("qxmtl$L|Race|l.zip"), replyOf(" QXMTL$L|Race|l.zip"),
                                        TrackListReply{false, QByteArray("QXMTL$A|B|c"), QStringLiteral("timeout")}}) {
        const auto& shown = s.outcome(reply);
        EXPECT_EQ(shown.title, "Unexpected Error");
        EXPECT_EQ(shown.text, "Update failed! Please try again later.");
        EXPECT_EQ(shown.icon, MessageIcon::Critical);
        EXPECT_EQ(readTrackList(s.store), "Old|Race|o.zip");
    }
}

TEST(TrackSite, addressIsTheRootFollowedByTheTagAndTheEnvironmentOverridesTheDefaults) {
    qputenv("KORVEL_TRACK_SITE", "http://127.0.0.1:1/root/");
    qputenv("KORVEL_TRACK_LIST_URL", "http://127.0.0.1:1/list.txt");
    const TrackSite site = TrackSite::fromEnvironment();
    qunsetenv("KORVEL_TRACK_SITE");
    qunsetenv("KORVEL_TRACK_LIST_URL");
    EXPECT_EQ(site.trackAddress("vault/tracks/carn.zip"), "http://127.0.0.1:1/root/vault/tracks/carn.zip");
    EXPECT_EQ(site.listUrl, QUrl("http://127.0.0.1:1/list.txt"));
    EXPECT_EQ(TrackSite::fromEnvironment().listUrl, TrackSite::defaults().listUrl);
}
