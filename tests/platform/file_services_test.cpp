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

using Names = std::vector<std::string>;

TEST(Wildcard, matchesAsTheSystemSearchDoes) {
    const std::tuple<const char*, std::string, bool> rows[] = {{"*.pod", "TRUCKS.POD", true},
                                                               {"*.pod", "a.b.pod", true},
                                                               {"*.pod", "x.podx", false},
                                                               {"*.*", "README", true},
                                                               {"T?UCKS.*", "trucks.pod", true},
                                                               {"?", "", false},
                                                               {"*a*a*a*a*b", std::string(40, 'a') + "b", true},
                                                               {"*a*a*a*a*b", std::string(4000, 'a'), false}};
    for (const auto& [pattern, name, matches] : rows)
        EXPECT_EQ(wildcardMatch(pattern, name), matches) << pattern << " / " << name.substr(0, 20);
}

TEST(FileServices, searchesWithAttributeFiltersSortedByNameAndFindsOnlyFilesAsFiles) {
    TempDrive drive;
    for (const char* name : {"b.pod", "A.POD", ".hidden.pod", "x.podx"})
        drive.write(std::string("C:\\Game\\") + name, "x");
    drive.makeFolder("C:\\Game\\Sub.pod");
    drive.makeFolder("C:\\Game\\Addon");
    auto& files = drive.files();
    EXPECT_EQ(files.search("C:\\Game\\*.pod", SearchFilter::NormalFiles), (Names{"A.POD", "b.pod"}));
    EXPECT_EQ(files.search("C:\\GAME\\*.pod", SearchFilter::FilesAndFolders), (Names{"A.POD", "b.pod", "Sub.pod"}));
    EXPECT_EQ(files.search("C:\\Game\\*.*", SearchFilter::Folders), (Names{".", "..", "Addon", "Sub.pod"}));
    EXPECT_EQ(files.search("C:\\*.*", SearchFilter::Folders), (Names{"Game"})); // a drive's root has no dot entries
    // A plain name is looked up without regard to case and answers with the name on disk.
    EXPECT_EQ(files.search("C:\\game\\a.pod", SearchFilter::NormalFiles), (Names{"A.POD"}));
    EXPECT_TRUE(files.search("C:\\Missing\\*.pod", SearchFilter::NormalFiles).empty());
    EXPECT_TRUE(files.FileExists("C:\\game\\b.POD"));
    EXPECT_FALSE(files.FileExists("C:\\Game\\Addon"));
    EXPECT_FALSE(files.FileExists("C:\\Game\\none.ini"));
}

#ifndef Q_OS_WIN
TEST(FileServices, searchesFollowLinksAndSkipNamesTheCodePageCannotHold) {
    TempDrive drive;
    drive.write("C:\\Game\\real.pod", "r");
    drive.write("C:\\Game\\caf\xE9.pod", "c");
    drive.makeFolder("C:\\Game\\Folder");
    const QString game = drive.host("C:\\Game");
    ASSERT_TRUE(QFile::link(game + "/real.pod", game + "/linked.pod"));
    ASSERT_TRUE(QFile::link(game + "/Folder", game + "/LinkedFolder"));
    ASSERT_TRUE(QFile::link(game + "/nothing.pod", game + "/dangling.pod"));
    QFile foreign(game + QStringLiteral("/\u65E5\u672C.pod"));
    ASSERT_TRUE(foreign.open(QIODevice::WriteOnly));
    foreign.close();
    // A link counts as what it names (a dangling one as nothing); a name outside the code page is
    // left out, one inside it comes back in the game's bytes.
    EXPECT_EQ(drive.files().search("C:\\Game\\*.pod", SearchFilter::NormalFiles),
              (Names{"caf\xE9.pod", "linked.pod", "real.pod"}));
    EXPECT_EQ(drive.files().search("C:\\Game\\*", SearchFilter::Folders), (Names{".", "..", "Folder", "LinkedFolder"}));
}
#endif

TEST(FileServices, findsANameOnlyWhenTheSearchYieldsThatOneName) {
    TempDrive drive;
    drive.write("C:\\Game\\TRUCKS.POD", "t");
    drive.write("C:\\Game\\TRAXX.POD", "x");
    drive.makeFolder("C:\\Game\\ADDON");
    const std::pair<const char*, bool> rows[] = {
        {"TRUCKS.POD", true},  {"trucks.pod", true}, {"Addon", true},
        {"GONE.POD", false},   {"TR*.POD", false}, // two names answer
        {"TRUCK?.POD", false},                     // one name answers, but another one
        {"TRUCKS.PO", false},
    };
    for (const auto& [name, found] : rows)
        EXPECT_EQ(drive.files().findsName("C:\\Game", name), found) << name;
    EXPECT_TRUE(drive.files().findsName("C:\\Game\\", "TRAXX.POD"));
}

// Every operation replaces, copies or makes what it should; every failing one says which file and
// why, in the text a user is shown, and leaves the old file.
TEST(FileServices, writesAndCopiesOverOldFilesAndFailuresNameTheFileAndTheReason) {
    TempDrive drive;
    drive.write("C:\\Game\\POD.INI", "old");
    ASSERT_TRUE(drive.files().writeAll("C:\\Game\\POD.INI", "new").ok());
    EXPECT_EQ(drive.read("C:\\Game\\POD.INI"), "new");
    drive.write("C:\\Game\\player.pro", "v1");
    drive.write("C:\\Game\\backup\\player.pro", "old copy that is longer");
    EXPECT_TRUE(drive.files().copyFile("C:\\Game\\player.pro", "C:\\Game\\backup\\player.pro"));
    EXPECT_EQ(drive.read("C:\\Game\\backup\\player.pro"), "v1");
    EXPECT_TRUE(drive.files().makeDirectory("C:\\Game\\new"));
    EXPECT_TRUE(drive.exists("C:\\Game\\new"));

    drive.write("C:\\Blocked", "a file, not a folder");
    qputenv("XDG_DATA_HOME", (drive.root() + "/data").toLocal8Bit());
    struct Row {
        const char* what;
        Status status;
        QStringList texts;
    };
    FileServices& files = drive.files();
    auto statusOf = [](const Result<FileLock>& lock) { return lock ? Status() : Status(lock.failure()); };
    const Row rows[] = {
        {"a file standing where the folder should be",
         files.writeAll("C:\\Blocked\\POD.INI", "new"),
         {"POD.INI", "old file was left unchanged"}},
        {"folder exists", files.makeDirectory("C:\\Game\\backup"), {"backup", "exists already"}},
        {"parent missing", files.makeDirectory("C:\\Game\\a\\b"), {"b", "does not exist"}},
        {"unmapped drive", files.makeDirectory("Q:\\Game"), {"Q:\\Game", "no drive is mapped"}},
        {"copy of a missing file",
         files.copyFile("C:\\Game\\none", "C:\\Game\\backup\\none"),
         {"C:\\Game\\none", "does not exist"}},
        {"copy into a missing folder",
         files.copyFile("C:\\Game\\player.pro", "C:\\Game\\gone\\player.pro"),
         {"player.pro", "old copy was left unchanged"}},
        {"trash of a missing file",
         files.moveToTrash({"C:\\Game\\player.pro", "C:\\Game\\GONE.POD"}),
         {"C:\\Game\\GONE.POD"}},
        {"lock in a missing folder",
         statusOf(files.lockForChange("C:\\Gone\\POD.INI")),
         {"POD.INI", "cannot be created"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ASSERT_FALSE(row.status.ok());
        for (const QString& text : row.texts)
            EXPECT_TRUE(row.status.failure().message.contains(text)) << row.status.failure().message.toStdString();
    }
    EXPECT_EQ(drive.read("C:\\Blocked"), "a file, not a folder");
    EXPECT_FALSE(drive.exists("C:\\Game\\player.pro")); // the one that could be moved was moved
    EXPECT_FALSE(drive.exists("C:\\Game\\a"));
}

TEST(FileLock, isHeldByOneThreadAtATimeSharedWithinItAndTellsTheSecondWhy) {
    QTemporaryDir dir;
    const QString file = dir.filePath("POD.INI");
    {
        Result<FileLock> first = FileLock::acquire(file);
        ASSERT_TRUE(first.ok()) << first.failure().message.toStdString();
        {
            const Result<FileLock> inner = FileLock::acquire(file, std::chrono::milliseconds(0));
            ASSERT_TRUE(inner.ok()); // a save inside a command that holds the lock
        }
        EXPECT_TRUE(QFile::exists(file + ".lock")); // the inner holder's end leaves the outer one's lock
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
    }
    EXPECT_FALSE(QFile::exists(file + ".lock")); // released with its last holder
    EXPECT_TRUE(FileLock::acquire(file, std::chrono::milliseconds(0)).ok());
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
// the next save of that file takes away the ones old enough to belong to no running save, and never
// follows a link.
TEST(FileServices, aSaveRemovesTheTemporariesThatKilledSavesOfTheFileLeft) {
    TempDrive drive;
    drive.write("C:\\Game\\POD.INI", "0\r\n");
    const QString folder = drive.root() + "/Game/";
    const qint64 hour = 3600, fresh = 5;
    const std::tuple<const char*, qint64, bool> rows[] = {
        // name, age, removed
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
    for (const auto& [name, age, removed] : rows)
        ASSERT_TRUE(writeAged(folder + name, "left over", age)) << name;
    ASSERT_TRUE(writeAged(drive.root() + "/Elsewhere/KEEP.TXT", "precious", hour));
    ASSERT_TRUE(QFile::link(drive.root() + "/Elsewhere/KEEP.TXT", folder + "POD.INI.lInKeD"));

    ASSERT_TRUE(drive.files().writeAll("C:\\Game\\POD.INI", "1\r\nA.POD\r\n").ok());

    EXPECT_EQ(drive.read("C:\\Game\\POD.INI"), "1\r\nA.POD\r\n");
    for (const auto& [name, age, removed] : rows)
        EXPECT_EQ(!QFile::exists(folder + name), removed) << name;
    EXPECT_EQ(drive.read("C:\\Elsewhere\\KEEP.TXT"), "precious");
    EXPECT_TRUE(QFileInfo(folder + "POD.INI.lInKeD").isSymLink());
}
