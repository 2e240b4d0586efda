#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <chrono>

namespace {

struct CliRun {
    int exitCode = -1;
    QString out;
    QString err;
};

// A game folder on the host with a few archives, and korvel-cli's mounter command over it.
class CliMounter : public ::testing::Test {
protected:
    CliMounter() {

        for (const char* name : {"TRUCKS.POD", "TRAXX.POD", "ADDON/ARENA.POD", "ADDON/BOMBTAG.POD", "ADDON/NOTES.TXT"})
            file(name, "POD");
        file("POD.INI", "9\nTRUCKS.POD\n\nADDON\\ARENA.POD\nGONE.POD\n");
    }

    QString game() const { return m_game.path(); }

    void file(const QString& relative, const QByteArray& bytes) {
        const QString path = game() + QLatin1Char('/') + relative;
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(bytes);
    }

    QByteArray ini() const {
        QFile in(game() + "/POD.INI");
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray("<missing>");
    }

    CliRun mounter(const QStringList& args, const QString& workingFolder = QString()) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_DATA_HOME", m_home.path());
        environment.insert("WINEPREFIX", m_home.path() + "/no-wine");
        process.setProcessEnvironment(environment);
        if (!workingFolder.isEmpty())
            process.setWorkingDirectory(workingFolder);
        process.start(QStringLiteral(KORVEL_CLI_PATH), QStringList{"mounter", "--game", game()} + args);
        process.waitForFinished(30000);
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    QTemporaryDir m_game;
    QTemporaryDir m_home; // the trash of 'delete' lives here, not in the user's home
};

TEST_F(CliMounter, showPrintsCounterAndBothListsWithoutRewritingPodIni) {
    const QByteArray before = ini();
    const CliRun run = mounter({"show"});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out.toStdString(), "3/99 PODs Mounted\n"
                                     "TRUCKS.POD\tMounted\tTRUCKS.POD\n"
                                     "\\ADDON\\ARENA.POD\tMounted\tADDON\\ARENA.POD\n"
                                     "GONE.POD\tNot found\tGONE.POD\n"
                                     "\\ADDON\\BOMBTAG.POD\tUnmounted\tADDON\\BOMBTAG.POD\n"
                                     "TRAXX.POD\tUnmounted\tTRAXX.POD\n");
    EXPECT_EQ(ini(), before);

    const CliRun json = mounter({"show", "--json", "--mmpa", "120"});
    const QJsonObject state = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(state.value("counter").toString(), "3/120 PODs Mounted");
    EXPECT_EQ(state.value("mounted").toArray().at(1).toObject(),
              (QJsonObject{{"display", "\\ADDON\\ARENA.POD"}, {"status", "Mounted"}, {"path", "ADDON\\ARENA.POD"}}));
    EXPECT_EQ(state.value("unmounted").toArray().size(), 2);
}

TEST_F(CliMounter, mountTakesHostPathsRelativeToTheCurrentFolderAndSaves) {
    const CliRun run = mounter({"mount", "ADDON/BOMBTAG.POD", "ADDON/NOTES.TXT", "TRUCKS.POD"}, game());
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(ini(), "4\r\nTRUCKS.POD\r\nADDON\\ARENA.POD\r\nGONE.POD\r\nADDON\\BOMBTAG.POD\r\n");
    EXPECT_TRUE(run.out.startsWith("4/99 PODs Mounted\n"));

    const CliRun missing = mounter({"mount", game() + "/NOPE.POD"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.err.startsWith("File not found!"));
}

TEST_F(CliMounter, rowCommandsNameEntriesByStoredPathIgnoringCase) {
    ASSERT_EQ(mounter({"bottom", "trucks.pod"}).exitCode, 0);
    EXPECT_EQ(ini(), "3\r\nADDON\\ARENA.POD\r\nGONE.POD\r\nTRUCKS.POD\r\n");
    ASSERT_EQ(mounter({"up", "TRUCKS.POD"}).exitCode, 0);
    ASSERT_EQ(mounter({"top", "GONE.POD"}).exitCode, 0);
    EXPECT_EQ(ini(), "3\r\nGONE.POD\r\nADDON\\ARENA.POD\r\nTRUCKS.POD\r\n");
    ASSERT_EQ(mounter({"down", "GONE.POD"}).exitCode, 0);
    ASSERT_EQ(mounter({"unmount", "addon\\arena.pod"}).exitCode, 0);
    EXPECT_EQ(ini(), "2\r\nGONE.POD\r\nTRUCKS.POD\r\n");

    const QByteArray before = ini();
    const CliRun unknown = mounter({"unmount", "ELSE.POD"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_TRUE(unknown.err.contains("ELSE.POD"));
    EXPECT_EQ(ini(), before);
}

TEST_F(CliMounter, allAndCleanCommandsSaveTheirResult) {
    ASSERT_EQ(mounter({"clean"}).exitCode, 0);
    EXPECT_EQ(ini(), "2\r\nTRUCKS.POD\r\nADDON\\ARENA.POD\r\n");
    ASSERT_EQ(mounter({"mount-all"}).exitCode, 0);
    EXPECT_EQ(ini(), "4\r\nTRUCKS.POD\r\nADDON\\ARENA.POD\r\nADDON\\BOMBTAG.POD\r\nTRAXX.POD\r\n");
    const CliRun none = mounter({"unmount-all"});
    ASSERT_EQ(none.exitCode, 0);
    EXPECT_EQ(ini(), "0\r\n");
    EXPECT_TRUE(none.out.startsWith("0/99 PODs Mounted\n"));
}

TEST_F(CliMounter, extraFoldersAndAnotherIniAreUsedWhenGiven) {
    QTemporaryDir extra;
    QFile far(extra.path() + "/far.pod");
    ASSERT_TRUE(far.open(QIODevice::WriteOnly));
    far.close();
    file("OTHER.INI", "1\r\nTRAXX.POD\r\n");
    const CliRun run =
        mounter({"show", "--ini", game() + "/OTHER.INI", "--extra-dirs", extra.path() + "|/no/such/folder"});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.startsWith("1/99 PODs Mounted\nTRAXX.POD\tMounted\tTRAXX.POD\n"));
    EXPECT_TRUE(run.out.contains("\\FAR.POD\tUnmounted\tZ:"));
}

TEST_F(CliMounter, deleteSendsUnmountedArchivesToTheTrashOnly) {
    const CliRun run = mounter({"delete", "traxx.pod"});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_FALSE(QFile::exists(game() + "/TRAXX.POD"));
    EXPECT_FALSE(run.out.contains("TRAXX"));

    const CliRun mounted = mounter({"delete", "TRUCKS.POD"});
    EXPECT_EQ(mounted.exitCode, 1);
    EXPECT_TRUE(QFile::exists(game() + "/TRUCKS.POD"));
}

TEST_F(CliMounter, refusesBadCommandLines) {
    EXPECT_EQ(mounter({"dance"}).exitCode, 2);
    EXPECT_EQ(mounter({}).exitCode, 2);
    EXPECT_EQ(mounter({"unmount"}).exitCode, 2);
    EXPECT_EQ(mounter({"clean", "EXTRA"}).exitCode, 2);
    QProcess process;
    process.start(QStringLiteral(KORVEL_CLI_PATH), {"mounter", "--game", game() + "/nowhere", "show"});
    process.waitForFinished();
    EXPECT_EQ(process.exitCode(), 1);
}

// Saving goes through a temporary file and an atomic replace: a process killed at any moment leaves
// POD.INI with either its old or its new content.
TEST_F(CliMounter, podIniSurvivesKillsAtRandomMomentsWhileSaving) {
    for (int i = 0; i < 300; ++i)
        file(QStringLiteral("PACK/ARCHIVE%1.POD").arg(i), "POD");
    file("POD.INI", "0\r\n");
    ASSERT_EQ(mounter({"mount-all"}).exitCode, 0);
    const QByteArray all = ini();
    ASSERT_EQ(mounter({"unmount-all"}).exitCode, 0);
    const QByteArray none = ini();
    ASSERT_EQ(none, "0\r\n");

    const auto started = std::chrono::steady_clock::now();
    QProcess timing;
    timing.start(QStringLiteral(KORVEL_CLI_PATH), {"mounter", "--game", game(), "mount-all"});
    timing.waitForFinished();
    const int fullRun =
        int(std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started).count());
    int killed = 0;
    const auto deadline = started + std::chrono::seconds(12);
    for (int round = 0; round < 200 && std::chrono::steady_clock::now() < deadline; ++round) {
        QProcess process;
        process.start(QStringLiteral(KORVEL_CLI_PATH),
                      {"mounter", "--game", game(), round % 2 ? "mount-all" : "unmount-all"});
        ASSERT_TRUE(process.waitForStarted());
        const int delay = int(QRandomGenerator::global()->bounded(fullRun + 5));
        if (!process.waitForFinished(delay)) {
            process.kill(); // SIGKILL
            process.waitForFinished();
            ++killed;
        }
        const QByteArray now = ini();
        ASSERT_TRUE(now == all || now == none) << "round " << round << ": " << now.left(80).toStdString();
    }
    EXPECT_GT(killed, 0);
}

} // namespace
