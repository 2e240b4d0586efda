#include "child_run.h"
#include "leftovers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// The game files that more than one program changes: two korvel-cli commands started together
// over and over never undo each other's change, and what killed saves left behind is cleared by the
// next save.

namespace korvel::testing {
namespace {

// Two commands (%g: the game folder) racing over one file, which starts each round as `start`;
// afterwards it must hold every text of `kept` and none of `gone`.
struct RacingEdit {
    const char* name;
    const char* target;
    QByteArray start;
    const char* first;
    const char* second;
    QList<QByteArray> kept;
    QList<QByteArray> gone;
};

void PrintTo(const RacingEdit& edit, std::ostream* out) {
    *out << edit.name;
}

const QByteArray kPlayer = "103\r\n3\r\n1\r\nAlice\r\nRAM.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n"
                           "Bob\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n"
                           "Carol\r\nVAN.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n";

const RacingEdit kEdits[] = {
    {"pod_ini",
     "POD.INI",
     "1\r\nTRUCKS.POD\r\n",
     "mounter --game %g mount %g/ADDON/ARENA.POD",
     "mounter --game %g mount %g/ADDON/BOMBTAG.POD",
     {"ADDON\\ARENA.POD\r\n", "ADDON\\BOMBTAG.POD\r\n", "3\r\n"},
     {}},
    {"monster_ini",
     "system/monster.ini",
     "showHiddenTrack=0\r\nkookyHornFlag=0\r\ngLocalizationFile=UI\\MTM2.loc\r\n",
     "monster --game %g --horn on",
     "monster --game %g --hidden-track on",
     {"showHiddenTrack=666\r\n", "kookyHornFlag=1\r\n"},
     {}},
    {"player_pro",
     "player.pro",
     kPlayer,
     "drivers --game %g remove Alice",
     "drivers --game %g remove Carol",
     {"Bob\r\n", "103\r\n1\r\n"},
     {"Alice\r\n", "Carol\r\n"}},
};

template <typename Param> class GameFolder : public ::testing::TestWithParam<Param> {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_temp.isValid());
        m_game = m_temp.path() + QStringLiteral("/game");
        for (const char* name : {"TRUCKS.POD", "ADDON/ARENA.POD", "ADDON/BOMBTAG.POD"})
            ASSERT_TRUE(writeFile(m_game + QLatin1Char('/') + QLatin1String(name), "POD"));
        m_environment.insert(QStringLiteral("KORVEL_REGISTRY"), m_temp.path() + QStringLiteral("/registry.json"));
        m_environment.insert(QStringLiteral("KORVEL_DRIVES"), QStringLiteral("C=") + m_temp.path());
        m_environment.insert(QStringLiteral("WINEPREFIX"), m_temp.path() + QStringLiteral("/no-wine"));
    }

    QString target() const { return m_game + QLatin1Char('/') + QLatin1String(this->GetParam().target); }
    QStringList command(const char* text) const {
        return QString::fromLatin1(text).split(QLatin1Char(' ')).replaceInStrings("%g", m_game);
    }

    QTemporaryDir m_temp;
    QString m_game;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
};

using RacingEdits = GameFolder<RacingEdit>;

TEST_P(RacingEdits, twoCommandsStartedTogetherKeepBothChanges) {
    const RacingEdit& edit = GetParam();
    int lost = 0;
    QByteArray example;
    for (int round = 0; round < 50; ++round) {
        ASSERT_TRUE(writeFile(target(), edit.start));
        QProcess first, second;
        for (QProcess* process : {&first, &second})
            process->setProcessEnvironment(m_environment);
        first.start(cliProgram(), command(edit.first));
        second.start(cliProgram(), command(edit.second));
        for (QProcess* process : {&first, &second}) {
            ASSERT_TRUE(process->waitForFinished(30000));
            ASSERT_EQ(process->exitStatus(), QProcess::NormalExit);
            ASSERT_EQ(process->exitCode(), 0) << process->readAllStandardError().toStdString();
        }
        const QByteArray now = readFile(target());
        bool whole = true;
        for (const QByteArray& text : edit.kept)
            whole = whole && now.contains(text);
        for (const QByteArray& text : edit.gone)
            whole = whole && !now.contains(text);
        if (!whole) {
            ++lost;
            example = now;
        }
    }
    EXPECT_EQ(lost, 0) << "one command's change was lost in " << lost << " of 50 rounds, e.g.:\n"
                       << example.toStdString();
}

std::string editName(const ::testing::TestParamInfo<RacingEdit>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(EveryEditedFile, RacingEdits, ::testing::ValuesIn(kEdits), editName);

// A file a command saves whole (%g: the game folder), as it starts.
struct SavedFile {
    const char* name;
    const char* target;
    QByteArray start;
    const char* command;
};

void PrintTo(const SavedFile& file, std::ostream* out) {
    *out << file.name;
}

const SavedFile kSavedFiles[] = {
    {"pod_ini", "POD.INI", "1\r\nTRUCKS.POD\r\n", "mounter --game %g unmount-all"},
    {"monster_ini", "system/monster.ini", "showHiddenTrack=0\r\nkookyHornFlag=0\r\ngLocalizationFile=UI\\MTM2.loc\r\n",
     "monster --game %g --horn on"},
    {"player_pro", "player.pro", kPlayer, "drivers --game %g remove Bob"},
    {"settings_file", "../registry.json", "", "settings set Mode E"},
};

using Leftovers = GameFolder<SavedFile>;

TEST_P(Leftovers, theNextSaveClearsOldTemporariesAndTheLockOfAKilledSave) {
    if (!GetParam().start.isEmpty()) {
        ASSERT_TRUE(writeFile(target(), GetParam().start));
    }
    const qint64 hour = 3600;
    ASSERT_TRUE(writeAged(target() + ".qWeRtY", "killed at the rename", hour));
    ASSERT_TRUE(writeAged(target() + ".aSdFgH", "another save, still running", 5));
    ASSERT_TRUE(plantLockOfEndedProcess(target() + ".lock"));

    ChildLimits limits;
    limits.environment = m_environment;
    limits.timeout = std::chrono::milliseconds(5000); // far less than the wait for a live holder
    const ChildResult run = runChild(cliProgram(), command(GetParam().command), limits);
    ASSERT_FALSE(run.timedOut);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_NE(readFile(target()), GetParam().start);
    EXPECT_FALSE(QFile::exists(target() + ".qWeRtY"));
    EXPECT_TRUE(QFile::exists(target() + ".aSdFgH"));
    EXPECT_FALSE(QFile::exists(target() + ".lock"));
}

std::string savedName(const ::testing::TestParamInfo<SavedFile>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(EverySavedFile, Leftovers, ::testing::ValuesIn(kSavedFiles), savedName);

} // namespace
} // namespace korvel::testing
