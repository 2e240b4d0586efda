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

TEST(FileServices, makesOneFolderLevelOnly) {
    TempDrive drive;
    drive.makeFolder("C:\\Game");
    EXPECT_TRUE(drive.files().makeDirectory("C:\\Game\\backup"));
    EXPECT_FALSE(drive.files().makeDirectory("C:\\Game\\backup")); // exists
    EXPECT_FALSE(drive.files().makeDirectory("C:\\Game\\a\\b"));   // parent missing
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

TEST(FileServices, copiesOverOlderCopiesAndSkipsMissingSources) {
    TempDrive drive;
    drive.write("C:\\Game\\player.pro", "v1");
    drive.write("C:\\Game\\backup\\player.pro", "old copy that is longer");
    EXPECT_TRUE(drive.files().copyFile("C:\\Game\\player.pro", "C:\\Game\\backup\\player.pro"));
    EXPECT_EQ(drive.read("C:\\Game\\backup\\player.pro"), "v1");
    EXPECT_FALSE(drive.files().copyFile("C:\\Game\\none", "C:\\Game\\backup\\none"));
}
