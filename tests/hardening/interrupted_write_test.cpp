#include "child_run.h"
#include "pod_writer.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <algorithm>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

// Every file the program writes, written by korvel-cli while it is killed at random moments or runs
// out of space: afterwards the file holds its old content or its complete new content, never a part,
// and a failed write says which file it could not save.

namespace korvel::testing {
namespace {

using Clock = std::chrono::steady_clock;

// One file the program writes: where it lies in the game folder and the command (%g: the game
// folder) that rewrites it.
struct WrittenFile {
    const char* name;
    const char* target;
    const char* command;
};

void PrintTo(const WrittenFile& file, std::ostream* out) {
    *out << file.name;
}

const WrittenFile kWrittenFiles[] = {
    {"pod_ini", "POD.INI", "mounter --game %g unmount-all"},
    {"monster_ini", "system/monster.ini", "monster --game %g --horn off --hidden-track on"},
    {"player_pro", "player.pro", "drivers --game %g remove Sally"},
    {"listing_export", "BIG.txt", "export %g/BIG.POD"},
    {"extraction", "out/DATA/LARGE.BIN", "extract %g/BIG.POD --to %g/out DATA\\LARGE.BIN"},
    {"small_extraction", "out/DATA/SMALL.BIN", "extract %g/BIG.POD --to %g/out DATA\\SMALL.BIN"},
    {"settings_file", "registry.json", "settings set Mode E"},
    {"new_profile", "registry.json", "profiles add %g/monster.exe --name Evo"}, // six values, one save
    {"packed_archive", "PACKED.POD", "pack %g/out --to %g/PACKED.POD --format pod2 --force"},
    {"archive_add", "SMALL.POD", "add %g/SMALL.POD %g/out/DATA/SMALL.BIN --as DATA\\NEW.BIN"},
};

class InterruptedWrites : public CliGameFolder, public ::testing::TestWithParam<WrittenFile> {
protected:
    // Lays out the sample game and learns the target's content before and after one complete run.
    void SetUp() override {
        ASSERT_TRUE(m_temp.isValid());
        const ChildResult demo = runChild(QStringLiteral(KORVEL_DEMO_GAME_PATH), {m_game});
        ASSERT_EQ(demo.exitCode, 0) << demo.err.toStdString();
        // A 3 MB entry and many small ones, so that extraction and the export take a while; the
        // small entry fits in a write buffer.
        PodWriter big;
        big.comment("Hardening archive").add("DATA\\LARGE.BIN", std::string(3 << 20, 'L'));
        big.add("DATA\\SMALL.BIN", std::string(2000, 'S'));
        for (int i = 0; i < 4000; ++i)
            big.add("ART\\TEXTURE" + std::to_string(i) + ".RAW", "x");
        ASSERT_TRUE(writeFile(inGame("BIG.POD"), big.pod2()));
        ASSERT_TRUE(writeFile(inGame("BIG.txt"), QByteArray("an older listing\r\n")));
        ASSERT_TRUE(writeFile(inGame("SMALL.POD"), PodWriter().comment("Small").add("DATA\\OLD.BIN", "old").pod2()));
        ASSERT_TRUE(writeFile(inGame("out/DATA/LARGE.BIN"), QByteArray("an older extraction")));
        ASSERT_TRUE(writeFile(inGame("out/DATA/SMALL.BIN"), QByteArray("an older small extraction")));
        // The program's key exists already, so that setting a value is one write.
        const ChildResult key = runCli("settings set Mode M");
        ASSERT_EQ(key.exitCode, 0) << key.err.toStdString();

        m_old = readFile(target());
        const auto started = Clock::now();
        const ChildResult run = runCli(GetParam().command);
        m_fullRun = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - started);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        m_new = readFile(target());
        ASSERT_NE(m_new, m_old) << "the command must change " << GetParam().name;
        ASSERT_TRUE(writeFile(target(), m_old));
    }

    QString target() const { return inGame(GetParam().target); }

    // A run whose save could not be completed failed, named the file and left the old content.
    void expectFailedSaveKeepsOldContent(const ChildResult& run) {
        ASSERT_FALSE(run.timedOut);
        ASSERT_FALSE(run.crashed) << run.err.toStdString();
        EXPECT_EQ(run.exitCode, 1) << "a failed save is a failed command";
        EXPECT_TRUE(QString::fromUtf8(run.err).contains(QFileInfo(target()).fileName(), Qt::CaseInsensitive))
            << "the message names the file: " << run.err.toStdString();
        EXPECT_EQ(readFile(target()), m_old) << GetParam().name << " lost its old content";
    }

    QByteArray m_old;
    QByteArray m_new;
    std::chrono::microseconds m_fullRun{0};
};

TEST_P(InterruptedWrites, killedAtRandomMomentsLeaveTheOldOrTheWholeNewContent) {
    const auto deadline = Clock::now() + std::chrono::seconds(6);
    int killed = 0;
    for (int round = 0; round < 400 && Clock::now() < deadline; ++round) {
        const std::chrono::microseconds delay(QRandomGenerator::global()->bounded(qint64(m_fullRun.count()) + 2000));
        killed += runAndKill(cliProgram(), command(GetParam().command), delay, environment());
        const QByteArray now = readFile(target());
        ASSERT_TRUE(now == m_old || now == m_new)
            << "round " << round << " (killed after " << delay.count() << " us): " << now.size()
            << " bytes, neither old (" << m_old.size() << ") nor new (" << m_new.size() << ")";
        ASSERT_TRUE(writeFile(target(), m_old));
    }
    EXPECT_GT(killed, 0);
}

TEST_P(InterruptedWrites, aFileSizeLimitLeavesTheOldContentAndNamesTheFile) {
    ChildLimits limited = limits();
    limited.fileSize = std::max<qint64>(1, m_new.size() / 2);
    expectFailedSaveKeepsOldContent(runChild(cliProgram(), command(GetParam().command), limited));
}

// A 64 KB tmpfs, filled up, holds the game folder. Needs the right to mount; skipped otherwise.
TEST_P(InterruptedWrites, aFullDiskLeavesTheOldContentAndNamesTheFile) {
#ifdef Q_OS_UNIX
    if (geteuid() != 0)
#endif
        GTEST_SKIP() << "mounting a tmpfs needs root";
    const QString disk = m_temp.path() + QStringLiteral("/disk");
    QDir().mkpath(disk);
    if (QProcess::execute(QStringLiteral("mount"), {"-t", "tmpfs", "-o", "size=64k", "tmpfs", disk}) != 0)
        GTEST_SKIP() << "mounting a tmpfs is not permitted here";
    struct Unmount {
        QString path;
        ~Unmount() { QProcess::execute(QStringLiteral("umount"), {QStringLiteral("-l"), path}); }
    } unmount{disk};

    // The old file and what the command reads besides it on the small disk; the archive stays on the
    // big one, linked.
    const QString small = disk + QStringLiteral("/game");
    for (const QString& path :
         {QString::fromLatin1(GetParam().target), QStringLiteral("monster.exe"), QStringLiteral("system/monster.ini"),
          QStringLiteral("player.pro"), QStringLiteral("POD.INI"), QStringLiteral("out/DATA/SMALL.BIN")})
        if (QFile::exists(m_game + QLatin1Char('/') + path) && !QFile::exists(small + QLatin1Char('/') + path)) {
            ASSERT_TRUE(writeFile(small + QLatin1Char('/') + path, readFile(m_game + QLatin1Char('/') + path)));
        }
    ASSERT_TRUE(QFile::link(m_game + QStringLiteral("/BIG.POD"), small + QStringLiteral("/BIG.POD")));
    QFile filler(disk + QStringLiteral("/filler"));
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly));
    const QByteArray block(1024, 'f');
    while (filler.write(block) == block.size() && filler.flush()) {
    }
    m_game = small;
    expectFailedSaveKeepsOldContent(runCli(GetParam().command));
}

INSTANTIATE_TEST_SUITE_P(EveryWrittenFile, InterruptedWrites, ::testing::ValuesIn(kWrittenFiles),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace korvel::testing
