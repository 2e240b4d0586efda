#include "../tracklist/loopback_http_server.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using korvel::testing::LoopbackHttpServer;

namespace {

struct CliRun {
    int status = -1;
    QString out;
    QString err;
};

// A game folder with monster.ini and player.pro, and a settings file of its own.
class ConfiguratorCli : public ::testing::Test {
protected:
    void SetUp() override {
        static int argc = 1;
        static char name[] = "cli_tests";
        static char* argv[] = {name, nullptr};
        if (!QCoreApplication::instance())
            new QCoreApplication(argc, argv);
        ASSERT_TRUE(m_dir.isValid());
        QDir(m_dir.path()).mkpath(QStringLiteral("Game/system"));
        QDir(m_dir.path()).mkpath(QStringLiteral("Game/UI"));
        write("Game/system/monster.ini", kMonster);
        write("Game/player.pro", kPlayer);
    }

    QString game() const { return m_dir.filePath(QStringLiteral("Game")); }

    void write(const QString& relative, const QByteArray& bytes) {
        QFile file(m_dir.filePath(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }
    QByteArray read(const QString& relative) const {
        QFile file(m_dir.filePath(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // Runs korvel-cli while this process's event loop keeps serving (for the loopback server).
    CliRun run(const QStringList& args, const QStringList& environment = {}) {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("KORVEL_REGISTRY"), m_dir.filePath(QStringLiteral("registry.json")));
        env.insert(QStringLiteral("KORVEL_TRACK_SITE"), QStringLiteral("http://127.0.0.1:1/site/"));
        env.insert(QStringLiteral("KORVEL_TRACK_LIST_URL"), LoopbackHttpServer::refusingUrl().toString());
        for (const QString& pair : environment)
            env.insert(pair.section(QLatin1Char('='), 0, 0), pair.section(QLatin1Char('='), 1));
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(KORVEL_CLI_PATH), args);
        EXPECT_TRUE(process.waitForStarted(10000));
        QElapsedTimer clock;
        clock.start();
        while (process.state() != QProcess::NotRunning && clock.elapsed() < 30000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        process.waitForFinished(1000);
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    static inline const QByteArray kMonster = "; settings\r\nshowHiddenTrack=0\r\nkookyHornFlag=1\r\n"
                                              "gLocalizationFile=UI\\MTM2.loc\r\ngDetail=3";
    static inline const QByteArray kPlayer = "103\r\n3\r\n1\r\n"
                                             "Alice\r\nRAM.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n"
                                             "Bob\r\nx\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n"
                                             "Alice\r\nvan.trk\r\n1\r\n2\r\n3\r\n4\r\n5\r\n";

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(ConfiguratorCli, monsterPrintsChangesAndRefuses) {
    EXPECT_EQ(run({"monster", "--game", game()}).out,
              "hidden-track: off\nhorn: on\nlanguage: standard (UI\\MTM2.loc)\n");
    write("Game/UI/french.loc", "x"); // a file inside the game folder is stored relative to it
    CliRun changed = run({"monster", "--game", game(), "--hidden-track", "on", "--horn", "off", "--language",
                          game() + "/UI/french.loc", "--json"});
    ASSERT_EQ(changed.status, 0) << changed.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(changed.out.toUtf8()).object(),
              (QJsonObject{{"hiddenTrack", true}, {"horn", false}, {"language", 4}, {"custom", "UI\\french.loc"}}));
    EXPECT_EQ(read("Game/system/monster.ini"), "; settings\r\nshowHiddenTrack=666\r\nkookyHornFlag=0\r\n"
                                               "gLocalizationFile=UI\\french.loc\r\ngDetail=3");

    EXPECT_EQ(run({"monster", "--game", game(), "--horn", "yes"}).status, 2);
    write("Game/system/monster.ini", "showHiddenTrack=0\r\n");
    CliRun missing = run({"monster", "--game", game(), "--language", "fun"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains("kookyHornFlag"));
    EXPECT_EQ(read("Game/system/monster.ini"), "showHiddenTrack=0\r\n");
}

TEST_F(ConfiguratorCli, driversListShowAndRemove) {
    EXPECT_EQ(run({"drivers", "--game", game(), "list"}).out, "Alice\nBob\nAlice\n");
    const QJsonArray array =
        QJsonDocument::fromJson(run({"drivers", "--game", game(), "list", "--json"}).out.toUtf8()).array();
    ASSERT_EQ(array.size(), 3);
    EXPECT_EQ(array[1].toObject().value("record").toString(), "Bob\r\nx\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");
    EXPECT_EQ(run({"drivers", "--game", game(), "show", "3"}).out, "Alice\r\nvan.trk\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");
    EXPECT_EQ(run({"drivers", "--game", game(), "show", "4"}).status, 1);
    EXPECT_EQ(run({"drivers", "--game", game(), "remove", "Alice", "Zed"}).status, 1); // Zed refuses it all
    EXPECT_EQ(read("Game/player.pro"), kPlayer);
    ASSERT_EQ(run({"drivers", "--game", game(), "remove", "Alice"}).status, 0);
    EXPECT_EQ(read("Game/player.pro"), "103\r\n1\r\n1\r\nBob\r\nx\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");

    write("Game/player.pro", "104\r\n0\r\n1\r\n");
    EXPECT_TRUE(run({"drivers", "--game", game(), "list"}).err.contains("103"));
}

TEST_F(ConfiguratorCli, tracksListShowsTheDefaultUntilAnUpdateReplacesIt) {
    const CliRun first = run({"tracks", "list"});
    ASSERT_EQ(first.out.count('\n'), 6) << first.err.toStdString();
    EXPECT_TRUE(first.out.startsWith("Carnage!\tRumble\thttp://127.0.0.1:1/site/vault/tracks/carn.zip\n"));

    LoopbackHttpServer unmarked("<html>gone</html>");
    const CliRun rejected = run({"tracks", "update", "--url", unmarked.url().toString()});
    EXPECT_EQ(rejected.status, 1);
    EXPECT_EQ(rejected.err, "Update failed! Please try again later.\n");
    EXPECT_EQ(run({"tracks", "list"}).out, first.out);

    // Without --url the list address comes from the environment.
    LoopbackHttpServer good("QXMTL$Rock & Roll|Race|r.zip*Two|Rumble|t.zip");
    const CliRun updated = run({"tracks", "update"}, {"KORVEL_TRACK_LIST_URL=" + good.url().toString()});
    EXPECT_EQ(updated.out, "Update completed successfully!\n");
    EXPECT_EQ(run({"tracks", "list"}).out, "Rock & Roll\tRace\thttp://127.0.0.1:1/site/r.zip\n"
                                           "Two\tRumble\thttp://127.0.0.1:1/site/t.zip\n");
    EXPECT_EQ(run({"tracks", "update"}).status, 1); // nothing listens at the configured address
    EXPECT_EQ(run({"tracks", "update", "--url", "file:///etc/passwd"}).status, 2);
}
