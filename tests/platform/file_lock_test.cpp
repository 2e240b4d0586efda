#include "leftovers.h"
#include "platform/file_lock.h"
#include "platform/file_services.h"
#include "temp_game.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>
#include <thread>

using namespace korvel;
using namespace korvel::testing;

TEST(FileLock, isHeldByOneHolderAtATimeAndTellsTheSecondWhy) {
    QTemporaryDir dir;
    const QString file = dir.filePath("POD.INI");
    {
        Result<FileLock> first = FileLock::acquire(file);
        ASSERT_TRUE(first.ok()) << first.failure().message.toStdString();
        // The second holder is another thread: within one thread the lock is shared.
        std::optional<Failure> refusal;
        qint64 waited = 0;
        std::thread([&] {
            QElapsedTimer clock;
            clock.start();
            const Result<FileLock> second = FileLock::acquire(file, std::chrono::milliseconds(300));
            waited = clock.elapsed();
            if (!second)
                refusal = second.failure();
        }).join();
        ASSERT_TRUE(refusal.has_value());
        EXPECT_GE(waited, 290); // it waited for the holder before giving up
        EXPECT_TRUE(refusal->message.contains(QDir::toNativeSeparators(file)));
        EXPECT_TRUE(refusal->message.contains("another program"));
        EXPECT_TRUE(QFile::exists(file + ".lock"));
    }
    EXPECT_FALSE(QFile::exists(file + ".lock")); // released with its holder
    EXPECT_TRUE(FileLock::acquire(file, std::chrono::milliseconds(0)).ok());
}

TEST(FileLock, isSharedWithinAThreadAndReleasedWithItsLastHolder) {
    QTemporaryDir dir;
    const QString file = dir.filePath("monster.ini");
    std::optional<Result<FileLock>> outer = FileLock::acquire(file);
    ASSERT_TRUE(outer->ok());
    {
        const Result<FileLock> inner = FileLock::acquire(file, std::chrono::milliseconds(0));
        ASSERT_TRUE(inner.ok()); // a save inside a command that holds the lock
    }
    EXPECT_TRUE(QFile::exists(file + ".lock")); // the inner holder's end leaves the outer one's lock
    bool otherThreadGotIt = true;
    std::thread([&] { otherThreadGotIt = FileLock::acquire(file, std::chrono::milliseconds(50)).ok(); }).join();
    EXPECT_FALSE(otherThreadGotIt);
    outer.reset();
    EXPECT_FALSE(QFile::exists(file + ".lock"));
}

TEST(FileLock, takesOverTheLockOfAProcessThatWasKilled) {
    QTemporaryDir dir;
    const QString file = dir.filePath("player.pro");
    ASSERT_TRUE(plantLockOfEndedProcess(file + ".lock"));
    {
        QElapsedTimer clock;
        clock.start();
        const Result<FileLock> lock = FileLock::acquire(file);
        ASSERT_TRUE(lock.ok()) << lock.failure().message.toStdString();
        EXPECT_LT(clock.elapsed(), 2000); // at once, not after the wait for a live holder
    }
    EXPECT_FALSE(QFile::exists(file + ".lock"));
}

// A save killed between writing its temporary and the rename leaves "NAME.xxxxxx" beside the file;
// the next save of that file takes away the ones old enough to belong to no running save.
TEST(FileServices, aSaveRemovesTheTemporariesThatKilledSavesOfTheFileLeft) {
    TempDrive drive;
    drive.write("C:\\Game\\POD.INI", "0\r\n");
    const QString folder = drive.root() + "/Game/";
    const qint64 hour = 3600, fresh = 5;
    struct Row {
        const char* name;
        qint64 age;
        bool removed;
    };
    const Row rows[] = {
        {"POD.INI.qWeRtY", hour, true},
        {"POD.INI.AbcdeF", hour, true},
        {"POD.INI.xYzzyQ", 11 * 60, true},
        {"POD.INI.qWeRtY2", hour, false}, // seven characters
        {"POD.INI.qWeRt1", hour, false},  // a digit
        {"POD.INI.qWeRt", hour, false},   // five letters
        {"POD.INI.aBcDeF", fresh, false}, // perhaps another program's save, still running
        {"POD.INI.aBcDeG", 9 * 60, false},
        {"POD.INI.backup", hour, false}, // six letters that read as a word: a user's copy
        {"POD.INI.BACKUP", hour, false},
        {"POD.INI.Backup", hour, false},
        {"pod.ini.qWeRtY", hour, false}, // another file's name, on a system that tells case apart
        {"PODXINI.qWeRtY", hour, false},
        {"OTHER.INI.qWeRtY", hour, false},
    };
    for (const Row& row : rows)
        ASSERT_TRUE(writeAged(folder + row.name, "left over", row.age)) << row.name;

    ASSERT_TRUE(drive.files().writeAll("C:\\Game\\POD.INI", "1\r\nA.POD\r\n").ok());

    EXPECT_EQ(drive.read("C:\\Game\\POD.INI"), "1\r\nA.POD\r\n");
    for (const Row& row : rows)
        EXPECT_EQ(!QFile::exists(folder + row.name), row.removed) << row.name;
}

TEST(FileServices, leftOverTemporaryRemovalNeverFollowsALink) {
    TempDrive drive;
    drive.write("C:\\Game\\player.pro", "103\r\n0\r\n1\r\n");
    drive.write("C:\\Elsewhere\\KEEP.TXT", "precious");
    const QString folder = drive.root() + "/Game/";
    ASSERT_TRUE(QFile::link(drive.root() + "/Elsewhere/KEEP.TXT", folder + "player.pro.qWeRtY"));
    EXPECT_EQ(removeStaleTemporaries(folder + "player.pro"), 0);
    EXPECT_EQ(drive.read("C:\\Elsewhere\\KEEP.TXT"), "precious");
    EXPECT_TRUE(QFileInfo(folder + "player.pro.qWeRtY").isSymLink());
}
