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

TEST_F(ConfiguratorCli, monsterPrintsAndChangesTheThreeSettings) {
    CliRun shown = run({"monster", "--game", game()});
    ASSERT_EQ(shown.status, 0) << shown.err.toStdString();
    EXPECT_EQ(shown.out, "hidden-track: off\nhorn: on\nlanguage: standard (UI\\MTM2.loc)\n");

    CliRun changed =
        run({"monster", "--game", game(), "--hidden-track", "on", "--horn", "off", "--language", "pig", "--json"});
    ASSERT_EQ(changed.status, 0) << changed.err.toStdString();
    const QJsonObject json = QJsonDocument::fromJson(changed.out.toUtf8()).object();
    EXPECT_EQ(json.value("hiddenTrack").toBool(), true);
    EXPECT_EQ(json.value("horn").toBool(), false);
    EXPECT_EQ(json.value("language").toInt(), 3);
    EXPECT_EQ(json.value("custom").toString(), "UI\\MTM2-pig.loc");
    EXPECT_EQ(read("Game/system/monster.ini"), "; settings\r\nshowHiddenTrack=666\r\nkookyHornFlag=0\r\n"
                                               "gLocalizationFile=UI\\MTM2-pig.loc\r\ngDetail=3");

    // A language file inside the game folder is stored relative to it; other text as given.
    write("Game/UI/french.loc", "x");
    ASSERT_EQ(run({"monster", "--game", game(), "--language", game() + "/UI/french.loc"}).status, 0);
    EXPECT_TRUE(read("Game/system/monster.ini").contains("\r\ngLocalizationFile=UI\\french.loc\r\n"));
    CliRun custom = run({"monster", "--game", game(), "--language", "D:\\Lang\\x.loc", "--json"});
    EXPECT_EQ(QJsonDocument::fromJson(custom.out.toUtf8()).object().value("language").toInt(), 4);
}

TEST_F(ConfiguratorCli, monsterRefusesBadInputAndLeavesTheFile) {
    EXPECT_EQ(run({"monster", "--game", game(), "--horn", "yes"}).status, 2);
    EXPECT_EQ(run({"monster", "--game", m_dir.filePath("nowhere")}).status, 2);
    write("Game/system/monster.ini", "showHiddenTrack=0\r\n");
    CliRun missing = run({"monster", "--game", game(), "--hidden-track", "on"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains("kookyHornFlag"));
    EXPECT_EQ(read("Game/system/monster.ini"), "showHiddenTrack=0\r\n");
}

TEST_F(ConfiguratorCli, driversListShowAndRemove) {
    CliRun list = run({"drivers", "--game", game(), "list"});
    ASSERT_EQ(list.status, 0) << list.err.toStdString();
    EXPECT_EQ(list.out, "Alice\nBob\nAlice\n");
    CliRun json = run({"drivers", "--game", game(), "list", "--json"});
    const QJsonArray array = QJsonDocument::fromJson(json.out.toUtf8()).array();
    ASSERT_EQ(array.size(), 3);
    EXPECT_EQ(array[1].toObject().value("record").toString(), "Bob\r\nx\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");
    EXPECT_EQ(run({"drivers", "--game", game(), "show", "3"}).out, "Alice\r\nvan.trk\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");
    EXPECT_EQ(run({"drivers", "--game", game(), "show", "4"}).status, 1);

    // A name that matches no driver refuses the whole removal.
    CliRun unknown = run({"drivers", "--game", game(), "remove", "Alice", "Zed"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(read("Game/player.pro"), kPlayer);

    ASSERT_EQ(run({"drivers", "--game", game(), "remove", "Alice"}).status, 0);
    EXPECT_EQ(read("Game/player.pro"), "103\r\n1\r\n1\r\nBob\r\nx\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n");
    EXPECT_EQ(run({"drivers", "--game", game()}).status, 2);
}

TEST_F(ConfiguratorCli, driversRefusesAFileWithoutTheMark) {
    write("Game/player.pro", "104\r\n0\r\n1\r\n");
    CliRun list = run({"drivers", "--game", game(), "list"});
    EXPECT_EQ(list.status, 1);
    EXPECT_TRUE(list.err.contains("103"));
}

TEST_F(ConfiguratorCli, tracksListShowsTheDefaultUntilAnUpdateReplacesIt) {
    CliRun first = run({"tracks", "list"});
    ASSERT_EQ(first.status, 0) << first.err.toStdString();
    const QStringList rows = first.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(rows.size(), 6);
    EXPECT_EQ(rows[0], "Carnage!\tRumble\thttp://127.0.0.1:1/site/vault/tracks/carn.zip");

    LoopbackHttpServer unmarked("<html>gone</html>");
    CliRun rejected = run({"tracks", "update", "--url", unmarked.url().toString()});
    EXPECT_EQ(rejected.status, 1);
    EXPECT_EQ(rejected.err, "Update failed! Please try again later.\n");
    EXPECT_EQ(run({"tracks", "list"}).out, first.out);

    // The list address comes from the environment when --url is not given.
    LoopbackHttpServer good("QXMTL$Rock & Roll|Race|r.zip*Two|Rumble|t.zip");
    CliRun updated = run({"tracks", "update"}, {"KORVEL_TRACK_LIST_URL=" + good.url().toString()});
    ASSERT_EQ(updated.status, 0) << updated.err.toStdString();
    EXPECT_EQ(updated.out, "Update completed successfully!\n");
    EXPECT_EQ(good.requests(), 1);
    EXPECT_EQ(run({"tracks", "list"}).out, "Rock & Roll\tRace\thttp://127.0.0.1:1/site/r.zip\n"
                                           "Two\tRumble\thttp://127.0.0.1:1/site/t.zip\n");

    EXPECT_EQ(run({"tracks", "update"}).status, 1); // nothing listens at the configured address
    EXPECT_EQ(run({"tracks", "update", "--url", "file:///etc/passwd"}).status, 2);
}
