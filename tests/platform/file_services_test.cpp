#include "platform/file_services.h"
#include "temp_game.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::TempDrive;

TEST(Wildcard, matchesAsTheSystemSearchDoes) {
    EXPECT_TRUE(wildcardMatch("*.pod", "TRUCKS.POD"));
    EXPECT_TRUE(wildcardMatch("*.pod", "a.b.pod"));
    EXPECT_FALSE(wildcardMatch("*.pod", "x.podx"));
    EXPECT_TRUE(wildcardMatch("*.*", "README"));
    EXPECT_TRUE(wildcardMatch("T?UCKS.*", "trucks.pod"));
    EXPECT_FALSE(wildcardMatch("?", ""));
    EXPECT_TRUE(wildcardMatch("*a*a*a*a*b", std::string(40, 'a') + "b"));
    EXPECT_FALSE(wildcardMatch("*a*a*a*a*b", std::string(4000, 'a')));
}

TEST(FileServices, searchesWithAttributeFiltersSortedByName) {
    TempDrive drive;
    drive.write("C:\\Game\\b.pod", "b");
    drive.write("C:\\Game\\A.POD", "a");
    drive.write("C:\\Game\\.hidden.pod", "h");
    drive.write("C:\\Game\\x.podx", "x");
    drive.makeFolder("C:\\Game\\Sub.pod");
    drive.makeFolder("C:\\Game\\Addon");
    auto& files = drive.files();
    EXPECT_EQ(files.search("C:\\Game\\*.pod", SearchFilter::NormalFiles), (std::vector<std::string>{"A.POD", "b.pod"}));
    EXPECT_EQ(files.search("C:\\GAME\\*.pod", SearchFilter::FilesAndFolders),
              (std::vector<std::string>{"A.POD", "b.pod", "Sub.pod"}));
    EXPECT_EQ(files.search("C:\\Game\\*.*", SearchFilter::Folders),
              (std::vector<std::string>{".", "..", "Addon", "Sub.pod"}));
    // A plain name is looked up without regard to case and answers with the name on disk.
    EXPECT_EQ(files.search("C:\\game\\a.pod", SearchFilter::NormalFiles), (std::vector<std::string>{"A.POD"}));
    EXPECT_TRUE(files.search("C:\\Missing\\*.pod", SearchFilter::NormalFiles).empty());
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
    auto& files = drive.files();
    // A link counts as what it names (a dangling one as nothing); a name outside the code page is
    // left out, one inside it comes back in the game's bytes.
    EXPECT_EQ(files.search("C:\\Game\\*.pod", SearchFilter::NormalFiles),
              (std::vector<std::string>{"caf\xE9.pod", "linked.pod", "real.pod"}));
    EXPECT_EQ(files.search("C:\\Game\\*", SearchFilter::Folders),
              (std::vector<std::string>{".", "..", "Folder", "LinkedFolder"}));
}
#endif

TEST(FileServices, drivesRootsYieldNoDotEntries) {
    TempDrive drive;
    drive.makeFolder("C:\\Game");
    EXPECT_EQ(drive.files().search("C:\\*.*", SearchFilter::Folders), (std::vector<std::string>{"Game"}));
}

TEST(FileServices, fileExistsIgnoresFolders) {
    TempDrive drive;
    drive.write("C:\\Game\\POD.INI", "0\r\n");
    drive.makeFolder("C:\\Game\\backup");
    EXPECT_TRUE(drive.files().FileExists("C:\\game\\pod.ini"));
    EXPECT_FALSE(drive.files().FileExists("C:\\Game\\backup"));
    EXPECT_FALSE(drive.files().FileExists("C:\\Game\\none.ini"));
}

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

TEST(FileServices, failedWriteKeepsTheOldFileAndSaysWhy) {
    TempDrive drive;
    drive.write("C:\\Game\\POD.INI", "old");
    ASSERT_TRUE(drive.files().writeAll("C:\\Game\\POD.INI", "new").ok());
    EXPECT_EQ(drive.read("C:\\Game\\POD.INI"), "new");

    // A folder standing where the file's folder should be: the save cannot even start.
    drive.write("C:\\Blocked", "a file, not a folder");
    const Status status = drive.files().writeAll("C:\\Blocked\\POD.INI", "new");
    ASSERT_FALSE(status.ok());
    EXPECT_TRUE(status.failure().message.contains("POD.INI"));
    EXPECT_TRUE(status.failure().message.contains("old file was left unchanged"));
    EXPECT_EQ(drive.read("C:\\Blocked"), "a file, not a folder");
}

TEST(FileServices, copiesOverOlderCopiesAndMakesOneFolderLevel) {
    TempDrive drive;
    drive.write("C:\\Game\\player.pro", "v1");
    drive.write("C:\\Game\\backup\\player.pro", "old copy that is longer");
    EXPECT_TRUE(drive.files().copyFile("C:\\Game\\player.pro", "C:\\Game\\backup\\player.pro"));
    EXPECT_EQ(drive.read("C:\\Game\\backup\\player.pro"), "v1");
    EXPECT_TRUE(drive.files().makeDirectory("C:\\Game\\new"));
    EXPECT_TRUE(drive.exists("C:\\Game\\new"));
}

// Every failing operation says which file and why, in the text a user is shown.
TEST(FileServices, failuresNameTheFileAndTheReason) {
    TempDrive drive;
    drive.write("C:\\Game\\player.pro", "v1");
    drive.makeFolder("C:\\Game\\backup");
    const QString dataHome = drive.root() + "/data";
    qputenv("XDG_DATA_HOME", dataHome.toLocal8Bit());
    struct Row {
        const char* what;
        Status status;
        QStringList texts;
    };
    FileServices& files = drive.files();
    auto statusOf = [](const Result<FileLock>& lock) { return lock ? Status() : Status(lock.failure()); };
    const Row rows[] = {
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
    EXPECT_FALSE(drive.exists("C:\\Game\\player.pro")); // the one that could be moved was moved
    EXPECT_FALSE(drive.exists("C:\\Game\\a"));
}
