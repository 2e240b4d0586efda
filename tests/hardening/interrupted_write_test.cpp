#include "child_run.h"

#include "pod_writer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cctype>
#include <chrono>
#include <functional>
#include <ostream>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

// Every file the program writes, written by korvel-cli while it is killed at random moments or runs
// out of space: afterwards the file holds its old content or its complete new content, never a part,
// and a failed write says which file it could not save.
//
// POD.INI's kill trials live with the mounter commands' tests; here it takes part in the full-disk cases.

namespace korvel::testing {
namespace {

using Clock = std::chrono::steady_clock;

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// One file the program writes: how to lay out its old state in a game folder, the command that
// rewrites it, and where it lies.
struct WrittenFile {
    const char* name;
    QString target; // relative to the game folder
    std::function<QStringList(const QString& game)> command;
    bool killTrials = true;  // POD.INI's are in the mounter command tests
    bool failureExit = true; // a failed save ends the command with status 1
};

QProcessEnvironment environmentFor(const QString& game) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("KORVEL_REGISTRY"), game + QStringLiteral("/registry.json"));
    return environment;
}

// The sample game plus the files the writers below need.
void layOutGame(const QString& game) {
    QProcess demo;
    demo.start(QStringLiteral(KORVEL_DEMO_GAME_PATH), {game});
    ASSERT_TRUE(demo.waitForFinished(30000));
    ASSERT_EQ(demo.exitCode(), 0) << demo.readAllStandardError().toStdString();

    // An archive with a 3 MB entry and many small ones, so that extraction and the export take a while.
    PodWriter big;
    big.comment("Hardening archive").add("DATA\\LARGE.BIN", std::string(3 << 20, 'L'));
    big.add("DATA\\SMALL.BIN", std::string(2000, 'S')); // small enough to sit in a write buffer
    for (int i = 0; i < 4000; ++i)
        big.add("ART\\TEXTURE" + std::to_string(i) + ".RAW", "x");
    const std::string bytes = big.pod2();
    ASSERT_TRUE(writeFile(game + QStringLiteral("/BIG.POD"), QByteArray(bytes.data(), qsizetype(bytes.size()))));
    ASSERT_TRUE(writeFile(game + QStringLiteral("/BIG.txt"), "an older listing\r\n"));
    ASSERT_TRUE(writeFile(game + QStringLiteral("/out/DATA/LARGE.BIN"), "an older extraction"));
    ASSERT_TRUE(writeFile(game + QStringLiteral("/out/DATA/SMALL.BIN"), "an older small extraction"));
    // The program's key exists already, so that setting a value is one write.
    QProcess settings;
    settings.setProcessEnvironment(environmentFor(game));
    settings.start(cliProgram(),
                   {QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("Mode"), QStringLiteral("M")});
    ASSERT_TRUE(settings.waitForFinished(30000));
    ASSERT_EQ(settings.exitCode(), 0) << settings.readAllStandardError().toStdString();
}

QStringList gameCommand(const QString& game, QStringList args) {
    args.insert(1, QStringLiteral("--game"));
    args.insert(2, game);
    return args;
}

const std::vector<WrittenFile>& writtenFiles() {
    static const std::vector<WrittenFile> files = {
        {"pod_ini", QStringLiteral("POD.INI"),
         [](const QString& game) {
             return gameCommand(game, {QStringLiteral("mounter"), QStringLiteral("unmount-all")});
         },
         false},
        {"monster_ini", QStringLiteral("system/monster.ini"),
         [](const QString& game) {
             return gameCommand(game, {QStringLiteral("monster"), QStringLiteral("--horn"), QStringLiteral("off"),
                                       QStringLiteral("--hidden-track"), QStringLiteral("on")});
         }},
        {"player_pro", QStringLiteral("player.pro"),
         [](const QString& game) {
             return gameCommand(game, {QStringLiteral("drivers"), QStringLiteral("remove"), QStringLiteral("Sally")});
         }},
        {"listing_export", QStringLiteral("BIG.txt"),
         [](const QString& game) {
             return QStringList{QStringLiteral("export"), game + QStringLiteral("/BIG.POD")};
         }},
        {"extraction", QStringLiteral("out/DATA/LARGE.BIN"),
         [](const QString& game) {
             return QStringList{QStringLiteral("extract"), game + QStringLiteral("/BIG.POD"), QStringLiteral("--to"),
                                game + QStringLiteral("/out"), QStringLiteral("DATA\\LARGE.BIN")};
         }},
        {"small_extraction", QStringLiteral("out/DATA/SMALL.BIN"),
         [](const QString& game) {
             return QStringList{QStringLiteral("extract"), game + QStringLiteral("/BIG.POD"), QStringLiteral("--to"),
                                game + QStringLiteral("/out"), QStringLiteral("DATA\\SMALL.BIN")};
         },
         false},
        // Settings writes never fail a command; the reason is still shown.
        {"settings_file", QStringLiteral("registry.json"),
         [](const QString&) {
             return QStringList{QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("Mode"),
                                QStringLiteral("E")};
         },
         true, false},
    };
    return files;
}

void PrintTo(const WrittenFile& file, std::ostream* out) {
    *out << file.name;
}

class InterruptedWrites : public ::testing::TestWithParam<WrittenFile> {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_temp.isValid());
        m_game = m_temp.path() + QStringLiteral("/game");
        layOutGame(m_game);
    }

    QString target() const { return m_game + QLatin1Char('/') + GetParam().target; }
    QStringList command() const { return GetParam().command(m_game); }

    // The content before and after one complete run; puts the old content back.
    void learnContents() {
        m_old = readFile(target());
        const auto started = Clock::now();
        const ChildResult run = runChild(cliProgram(), command(), limits());
        m_fullRun = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - started);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        m_new = readFile(target());
        ASSERT_NE(m_new, m_old) << "the command must change " << GetParam().name;
        ASSERT_TRUE(writeFile(target(), m_old));
    }

    ChildLimits limits() const {
        ChildLimits limits;
        limits.environment = environmentFor(m_game);
        return limits;
    }

    // Checks a run whose save could not be completed (a file-size limit or a full disk):
    // it failed, named the file, and left the old content in place.
    void expectFailedSaveKeepsOldContent(const ChildResult& run) {
        const WrittenFile& file = GetParam();
        ASSERT_FALSE(run.timedOut);
        ASSERT_FALSE(run.crashed) << run.err.toStdString();
        if (file.failureExit) {
            EXPECT_EQ(run.exitCode, 1);
        }
        const QString said = QString::fromUtf8(run.err);
        EXPECT_TRUE(said.contains(QFileInfo(target()).fileName(), Qt::CaseInsensitive))
            << "the message names the file: " << said.toStdString();
        EXPECT_EQ(readFile(target()), m_old) << file.name << " lost its old content";
    }

    QTemporaryDir m_temp;
    QString m_game;
    QByteArray m_old;
    QByteArray m_new;
    std::chrono::microseconds m_fullRun{0};
};

TEST_P(InterruptedWrites, killedAtRandomMomentsLeaveTheOldOrTheWholeNewContent) {
    if (!GetParam().killTrials)
        GTEST_SKIP() << "covered elsewhere (POD.INI: the mounter command tests; small extraction: the large one)";
    learnContents();
    if (HasFatalFailure())
        return;
    const auto deadline = Clock::now() + std::chrono::seconds(6);
    int killed = 0;
    int sawOld = 0;
    int sawNew = 0;
    for (int round = 0; round < 400 && Clock::now() < deadline; ++round) {
        const auto delay =
            std::chrono::microseconds(QRandomGenerator::global()->bounded(qint64(m_fullRun.count()) + 2000));
        if (runAndKill(cliProgram(), command(), delay, environmentFor(m_game)))
            ++killed;
        const QByteArray now = readFile(target());
        ASSERT_TRUE(now == m_old || now == m_new)
            << GetParam().name << ", round " << round << " (killed after " << delay.count() << " us): " << now.size()
            << " bytes, neither old (" << m_old.size() << ") nor new (" << m_new.size() << ")";
        (now == m_old ? sawOld : sawNew)++;
        ASSERT_TRUE(writeFile(target(), m_old));
    }
    EXPECT_GT(killed, 0);
    RecordProperty("kills", killed);
    RecordProperty("old", sawOld);
    RecordProperty("new", sawNew);
}

TEST_P(InterruptedWrites, aFileSizeLimitLeavesTheOldContentAndNamesTheFile) {
    learnContents();
    if (HasFatalFailure())
        return;
    ChildLimits limited = limits();
    limited.fileSize = std::max<qint64>(1, m_new.size() / 2);
    expectFailedSaveKeepsOldContent(runChild(cliProgram(), command(), limited));
}

// A 64 KB tmpfs, filled up, holds the game folder. Needs the right to mount (root outside a
// restricted container); skipped otherwise.
TEST_P(InterruptedWrites, aFullDiskLeavesTheOldContentAndNamesTheFile) {
#ifdef Q_OS_UNIX
    if (geteuid() != 0)
#endif
        GTEST_SKIP() << "mounting a tmpfs needs root";
    const QString disk = m_temp.path() + QStringLiteral("/disk");
    QDir().mkpath(disk);
    QProcess mount;
    mount.start(QStringLiteral("mount"), {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
                                          QStringLiteral("size=64k"), QStringLiteral("tmpfs"), disk});
    if (!mount.waitForFinished(10000) || mount.exitStatus() != QProcess::NormalExit || mount.exitCode() != 0)
        GTEST_SKIP() << "mounting a tmpfs is not permitted here";
    struct Unmount {
        QString path;
        ~Unmount() { QProcess::execute(QStringLiteral("umount"), {QStringLiteral("-l"), path}); }
    } unmount{disk};

    // The old file, and just what the command reads besides it, on the small disk.
    const WrittenFile& file = GetParam();
    const QString small = disk + QStringLiteral("/game");
    learnContents();
    if (HasFatalFailure())
        return;
    for (const QString& path : {file.target, QStringLiteral("monster.exe"), QStringLiteral("system/monster.ini"),
                                QStringLiteral("player.pro"), QStringLiteral("POD.INI")})
        if (QFile::exists(m_game + QLatin1Char('/') + path) && !QFile::exists(small + QLatin1Char('/') + path)) {
            ASSERT_TRUE(writeFile(small + QLatin1Char('/') + path, readFile(m_game + QLatin1Char('/') + path)));
        }
    QStringList args = file.command(small);
    if (file.target.startsWith(QLatin1String("out/"))) {
        // The archive itself stays on the big disk; only what is written lands on the small one.
        args[1] = m_game + QStringLiteral("/BIG.POD");
    } else if (file.target == QLatin1String("BIG.txt")) {
        ASSERT_TRUE(QFile::link(m_game + QStringLiteral("/BIG.POD"), small + QStringLiteral("/BIG.POD")));
    }
    // Fill what is left.
    {
        QFile filler(disk + QStringLiteral("/filler"));
        ASSERT_TRUE(filler.open(QIODevice::WriteOnly));
        const QByteArray block(1024, 'f');
        while (filler.write(block) == block.size() && filler.flush()) {
        }
    }
    m_game = small;
    ChildLimits limited = limits();
    expectFailedSaveKeepsOldContent(runChild(cliProgram(), args, limited));
}

std::string fileName(const ::testing::TestParamInfo<WrittenFile>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(EveryWrittenFile, InterruptedWrites, ::testing::ValuesIn(writtenFiles()), fileName);

} // namespace
} // namespace korvel::testing
