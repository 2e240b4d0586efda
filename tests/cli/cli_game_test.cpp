#include "../tracklist/loopback_http_server.h"
#include "cli_run.h"
#include "platform/file_registry.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

// A game folder with monster.ini, player.pro and a few archives listed in POD.INI.
class GameCli : public CliFolder {
protected:
    void SetUp() override {
        serveEvents();
        write("game/system/monster.ini", kMonster);
        write("game/player.pro", kPlayer);
        for (const char* name : {"TRUCKS.POD", "TRAXX.POD", "ADDON/ARENA.POD", "ADDON/BOMBTAG.POD", "ADDON/NOTES.TXT"})
            write(QStringLiteral("game/") + name, "POD");
        write("game/POD.INI", "9\nTRUCKS.POD\n\nADDON\\ARENA.POD\nGONE.POD\n");
    }

    QString game() const { return path("game"); }
    QByteArray ini() const { return read("game/POD.INI"); }
    // korvel-cli mounter on the game folder, expected to end with `status`.
    CliRun mounter(const QStringList& args, int status = 0, const QString& folder = {}) {
        CliRun run = cli(QStringList{"mounter", "--game", game()} + args, {}, folder);
        EXPECT_EQ(run.status, status) << args.join(' ').toStdString() << ": " << run.err.toStdString();
        return run;
    }
    // A value the program stored below its key of the current user.
    std::optional<std::string> stored(const std::string& key, const std::string& name) const {
        return korvel::FileRegistry(path("registry.json"))
            .readValue(korvel::RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel" + key, name);
    }

    static inline const QByteArray kMonster = "; settings\r\nshowHiddenTrack=0\r\nkookyHornFlag=1\r\n"
                                              "gLocalizationFile=UI\\MTM2.loc\r\ngDetail=3";
    static inline const QByteArray kPlayer = "103\r\n3\r\n1\r\nAlice\r\nRAM.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n"
                                             "Bob\r\nx\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n"
                                             "Alice\r\nvan.trk\r\n1\r\n2\r\n3\r\n4\r\n5\r\n";
};

TEST_F(GameCli, monsterPrintsChangesAndRefuses) {
    EXPECT_EQ(cli({"monster", "--game", game()}).out,
              "hidden-track: off\nhorn: on\nlanguage: standard (UI\\MTM2.loc)\n");
    write("game/UI/french.loc", "x"); // a file inside the game folder is stored relative to it
    const CliRun changed = succeeds({"monster", "--game", game(), "--hidden-track", "on", "--horn", "off", "--language",
                                     game() + "/UI/french.loc", "--json"});
    EXPECT_EQ(QJsonDocument::fromJson(changed.out.toUtf8()).object(),
              (QJsonObject{{"hiddenTrack", true}, {"horn", false}, {"language", 4}, {"custom", "UI\\french.loc"}}));
    EXPECT_EQ(read("game/system/monster.ini"), "; settings\r\nshowHiddenTrack=666\r\nkookyHornFlag=0\r\n"
                                               "gLocalizationFile=UI\\french.loc\r\ngDetail=3");
    ASSERT_EQ(cli({"monster", "--game", game(), "--language", "fun"}).status, 0);
    EXPECT_TRUE(read("game/system/monster.ini").contains("gLocalizationFile=UI\\MTM2-fun.loc\r\n"));

    write("game/system/monster.ini", "showHiddenTrack=0\r\n");
    EXPECT_EQ(cli({"monster", "--game", game(), "--language", "fun"}).status, 1);
    EXPECT_EQ(read("game/system/monster.ini"), "showHiddenTrack=0\r\n");
}

TEST_F(GameCli, driversListShowAndRemove) {
    EXPECT_EQ(cli({"drivers", "--game", game(), "list"}).out, "Alice\nBob\nAlice\n");
    const QJsonArray array =
        QJsonDocument::fromJson(cli({"drivers", "--game", game(), "list", "--json"}).out.toUtf8()).array();
    ASSERT_EQ(array.size(), 3);
    EXPECT_EQ(array[1].toObject().value("record").toString(), "Bob\r\nx\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");
    EXPECT_EQ(cli({"drivers", "--game", game(), "show", "3"}).out, "Alice\r\nvan.trk\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");
    EXPECT_EQ(cli({"drivers", "--game", game(), "show", "4"}).status, 1);
    EXPECT_EQ(cli({"drivers", "--game", game(), "remove", "Alice", "Zed"}).status, 1); // Zed refuses it all
    EXPECT_EQ(read("game/player.pro"), kPlayer);
    ASSERT_EQ(cli({"drivers", "--game", game(), "remove", "Alice"}).status, 0);
    EXPECT_EQ(read("game/player.pro"), "103\r\n1\r\n1\r\nBob\r\nx\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");
}

// Which reply replaces the list, and the texts shown, are the track list's own rules.
TEST_F(GameCli, tracksUpdateTakesTheAddressFromTheOptionTheEnvironmentOrTheSettings) {
    const CliRun first = cli({"tracks", "list"});
    ASSERT_EQ(first.out.count('\n'), 6) << first.err.toStdString();
    EXPECT_TRUE(first.out.startsWith("Carnage!\tRumble\thttp://127.0.0.1:1/site/vault/tracks/carn.zip\n"));
    korvel::testing::LoopbackHttpServer unmarked("<html>gone</html>");
    const CliRun failed = cli({"tracks", "update", "--url", unmarked.url().toString()});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err, "Update failed! Please try again later.\n");
    const QStringList unset{"KORVEL_TRACK_SITE=", "KORVEL_TRACK_LIST_URL="};
    const CliRun refused = cli({"tracks", "update"}, unset);
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.contains("File > Options > Web")) << refused.err.toStdString();

    korvel::testing::LoopbackHttpServer good("QXMTL$Rock & Roll|Race|r.zip*Two|Rumble|t.zip");
    EXPECT_EQ(cli({"tracks", "update"}, {"KORVEL_TRACK_LIST_URL=" + good.url().toString()}).out,
              "Update completed successfully!\n");
    EXPECT_EQ(cli({"tracks", "list"}).out, "Rock & Roll\tRace\thttp://127.0.0.1:1/site/r.zip\n"
                                           "Two\tRumble\thttp://127.0.0.1:1/site/t.zip\n");
    korvel::testing::LoopbackHttpServer stored("QXMTL$One|Rumble|vault/one.zip");
    ASSERT_EQ(cli({"settings", "set", "TrackListAddress", stored.url().toString()}).status, 0);
    ASSERT_EQ(cli({"settings", "set", "TrackSite", "https://tracks.test/mtm2/"}).status, 0);
    EXPECT_EQ(cli({"tracks", "update"}, unset).status, 0);
    EXPECT_EQ(cli({"tracks", "list"}, unset).out, "One\tRumble\thttps://tracks.test/mtm2/vault/one.zip\n");
}

TEST_F(GameCli, profilesAddListAndRemoveProfiles) {
    write("Games/MTM2/monster.exe", "MZ");
    write("Games/4x4 Evolution/4x4.exe", "MZ");
    const CliRun added = succeeds({"profiles", "add", path("Games/MTM2/monster.exe")});
    EXPECT_EQ(stored("\\MTM2", "Location"), "C:\\Games\\MTM2");
    EXPECT_EQ(stored("\\MTM2", "Configurator"), "True");
    ASSERT_EQ(cli({"profiles", "add", path("Games/4x4 Evolution/4x4.exe"), "--name", "Evo"}).status, 0);
    EXPECT_EQ(stored("\\Evo", "Configurator"), "False");
    EXPECT_EQ(cli({"profiles", "list"}).out, "MTM2\nEvo\n");

    const CliRun missing = cli({"profiles", "add", path("Games/none.exe")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "File not found!\n");
    EXPECT_EQ(cli({"profiles", "remove", "mtm2"}).status, 1); // names match exactly
    ASSERT_EQ(cli({"profiles", "remove", "MTM2"}).status, 0);
    ASSERT_EQ(cli({"profiles", "remove", "Evo"}).status, 0);
    EXPECT_EQ(stored("", "InstalledGames"), "Error");
}

TEST_F(GameCli, settingsGetSetAndShowValues) {
    EXPECT_EQ(cli({"settings", "get", "Associate"}).status, 1); // nothing stored yet
    ASSERT_EQ(cli({"settings", "--profile", "MTM2", "set", "Slider", "4000"}).status, 0);
    ASSERT_EQ(cli({"settings", "set", "Associate", "1"}).status, 0);
    EXPECT_EQ(cli({"settings", "get", "Associate"}).out, "1\n");
    const CliRun unset = cli({"settings", "--profile", "MTM2", "get", "Screen"});
    EXPECT_EQ(unset.status, 1);
    EXPECT_EQ(unset.err, "Screen is not set.\n");
    EXPECT_EQ(cli({"settings", "--profile", "MTM2", "show"}).out, "Slider=4000\n");
    EXPECT_EQ(cli({"settings", "--profile", "Other", "show"}).status, 1);
}

TEST_F(GameCli, associateRegistersAndUnregistersTheArchiveType) {
    ASSERT_EQ(cli({"associate", "on", "--program", path("Tools/korvel")}).status, 0);
    EXPECT_EQ(stored("", "Associate"), "1");
    EXPECT_TRUE(read("data/applications/korvel.desktop").contains("MimeType=application/x-pod-archive;"));

    ASSERT_EQ(cli({"associate", "off"}).status, 0);
    EXPECT_EQ(stored("", "Associate"), "0");
    // What "on" installed for the desktop goes again.
    EXPECT_FALSE(QFile::exists(path("data/applications/korvel.desktop")));
    EXPECT_FALSE(QFile::exists(path("data/mime/packages/korvel-pod.xml")));
}

// Rows are written in blocks, plain ASCII ones as they are: a name outside ASCII between them still
// reaches the terminal as UTF-8.
TEST_F(GameCli, mounterShowPrintsCounterAndBothListsWithoutRewritingPodIni) {
    write(QStringLiteral("game/Caf\u00e9.pod"), "POD");
    const QByteArray before = ini();
    EXPECT_EQ(mounter({"show"}).out, QStringLiteral("3/99 PODs Mounted\nTRUCKS.POD\tMounted\tTRUCKS.POD\n"
                                                    "\\ADDON\\ARENA.POD\tMounted\tADDON\\ARENA.POD\n"
                                                    "GONE.POD\tNot found\tGONE.POD\n"
                                                    "\\ADDON\\BOMBTAG.POD\tUnmounted\tADDON\\BOMBTAG.POD\n"
                                                    "CAF\u00c9.POD\tUnmounted\tCAF\u00c9.POD\n"
                                                    "TRAXX.POD\tUnmounted\tTRAXX.POD\n"));
    EXPECT_EQ(ini(), before);
    const QJsonObject state =
        QJsonDocument::fromJson(mounter({"show", "--json", "--mmpa", "120"}).out.toUtf8()).object();
    EXPECT_EQ(state.value("counter").toString(), "3/120 PODs Mounted");
    EXPECT_EQ(state.value("mounted").toArray().at(1).toObject(),
              (QJsonObject{{"display", "\\ADDON\\ARENA.POD"}, {"status", "Mounted"}, {"path", "ADDON\\ARENA.POD"}}));
    EXPECT_EQ(state.value("unmounted").toArray().size(), 3);
    EXPECT_EQ(cli({"mounter", "--game", path("nowhere"), "show"}).status, 1);
    // Another POD.INI and extra folders, a missing one among them, when given.
    write("extra/far.pod", "");
    write("game/OTHER.INI", "1\r\nTRAXX.POD\r\n");
    const CliRun other =
        mounter({"show", "--ini", path("game/OTHER.INI"), "--extra-dirs", path("extra") + "|/no/such"});
    EXPECT_TRUE(other.out.startsWith("1/99 PODs Mounted\nTRAXX.POD\tMounted\tTRAXX.POD\n"));
    EXPECT_TRUE(other.out.contains("\n\\EXTRA\\FAR.POD\tUnmounted\tC:\\EXTRA\\FAR.POD\n"));
}

TEST_F(GameCli, mounterMountTakesHostPathsRelativeToTheCurrentFolderAndSaves) {
    const CliRun run = mounter({"mount", "ADDON/BOMBTAG.POD", "ADDON/NOTES.TXT", "TRUCKS.POD"}, 0, path("game"));
    EXPECT_EQ(ini(), "4\r\nTRUCKS.POD\r\nADDON\\ARENA.POD\r\nGONE.POD\r\nADDON\\BOMBTAG.POD\r\n");
    EXPECT_TRUE(run.out.startsWith("4/99 PODs Mounted\n"));
    EXPECT_TRUE(mounter({"mount", path("game/NOPE.POD")}, 1).err.startsWith("File not found!"));
}

TEST_F(GameCli, mounterRowCommandsNameEntriesByStoredPathIgnoringCase) {
    const std::pair<QStringList, QByteArray> steps[] = {
        {{"bottom", "trucks.pod"}, "3\r\nADDON\\ARENA.POD\r\nGONE.POD\r\nTRUCKS.POD\r\n"},
        {{"up", "TRUCKS.POD"}, "3\r\nADDON\\ARENA.POD\r\nTRUCKS.POD\r\nGONE.POD\r\n"},
        {{"top", "GONE.POD"}, "3\r\nGONE.POD\r\nADDON\\ARENA.POD\r\nTRUCKS.POD\r\n"},
        {{"down", "GONE.POD"}, "3\r\nADDON\\ARENA.POD\r\nGONE.POD\r\nTRUCKS.POD\r\n"},
        {{"unmount", "addon\\arena.pod"}, "2\r\nGONE.POD\r\nTRUCKS.POD\r\n"},
        {{"clean"}, "1\r\nTRUCKS.POD\r\n"},
        {{"mount-all"}, "4\r\nTRUCKS.POD\r\nADDON\\ARENA.POD\r\nADDON\\BOMBTAG.POD\r\nTRAXX.POD\r\n"},
        {{"unmount-all"}, "0\r\n"},
    };
    for (const auto& [args, expected] : steps) {
        mounter(args);
        EXPECT_EQ(ini(), expected) << args.join(' ').toStdString();
    }
    EXPECT_TRUE(mounter({"unmount", "ELSE.POD"}, 1).err.contains("ELSE.POD"));
    EXPECT_EQ(ini(), "0\r\n");
}

TEST_F(GameCli, mounterDeleteSendsUnmountedArchivesToTheTrashOnly) {
    EXPECT_FALSE(mounter({"delete", "traxx.pod"}).out.contains("TRAXX"));
    EXPECT_FALSE(QFile::exists(path("game/TRAXX.POD")));
    mounter({"delete", "TRUCKS.POD"}, 1);
    EXPECT_TRUE(QFile::exists(path("game/TRUCKS.POD")));
}

TEST_F(GameCli, everyCommandRefusesABadCommandLineWithStatusTwo) {
    const QString lines =
        "list|extract %g/A.POD|export|export %g/A.POD EXTRA|convert %g/A.POD T.SIT sprint|compatiblize "
        "%g/A.POD|palette|"
        "monster --game %g --horn yes|drivers --game %g show|tracks update --url file:///etc/passwd|"
        "mounter --game %g|mounter --game %g dance|mounter --game %g unmount|"
        "mounter --game %g clean EXTRA|profiles|settings set Associate|associate maybe|frobnicate|"
        "pack %g|pack %g --to %g/X.POD --format pod3|add %g/X.POD %g/TRUCKS.POD|remove %g/X.POD|check";
    for (const QString& line : lines.split('|')) {
        SCOPED_TRACE(line.toStdString());
        const CliRun run = cli(line.split(' ').replaceInStrings("%g", game()));
        EXPECT_EQ(run.status, 2);
        EXPECT_FALSE(run.err.isEmpty());
    }
    EXPECT_EQ(read("game/system/monster.ini"), kMonster);
    EXPECT_FALSE(QFile::exists(path("registry.json")) || QFile::exists(path("game/X.POD")));
    EXPECT_EQ(ini(), "9\nTRUCKS.POD\n\nADDON\\ARENA.POD\nGONE.POD\n");
}

} // namespace
