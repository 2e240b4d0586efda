#include "platform/file_services.h"
#include "platform/path_map.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace korvel;

namespace {

void touch(const QString& path) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}

} // namespace

TEST(PathMap, resolvesEachComponentWithoutRegardToCase) {
    QTemporaryDir dir;
    touch(dir.path() + "/Games/MTM2/Pod.ini");
    PathMap map;
    map.mapDrive('c', dir.path());
    EXPECT_EQ(map.toHost("C:\\GAMES\\mtm2\\POD.INI"), dir.path() + "/Games/MTM2/Pod.ini");
    EXPECT_EQ(map.toHost("c:\\games\\MTM2\\"), dir.path() + "/Games/MTM2");
    // A component that does not exist is kept as written, so new files can be made.
    EXPECT_EQ(map.toHost("C:\\games\\mtm2\\NEW\\File.txt"), dir.path() + "/Games/MTM2/NEW/File.txt");
}

TEST(PathMap, notesNewFilesMadeAfterAFolderWasListed) {
    QTemporaryDir dir;
    touch(dir.path() + "/a/One.pod");
    PathMap map;
    map.mapDrive('C', dir.path());
    EXPECT_EQ(map.toHost("C:\\A\\ONE.POD"), dir.path() + "/a/One.pod");
    touch(dir.path() + "/a/Two.pod");
    EXPECT_EQ(map.toHost("C:\\A\\TWO.POD"), dir.path() + "/a/Two.pod");
}

TEST(PathMap, leavesUnmappedDrivesAndRootedPathsUnresolved) {
    PathMap map;
    map.mapDrive('C', QDir::tempPath());
    EXPECT_TRUE(map.toHost("D:\\X.POD").isEmpty());
    EXPECT_TRUE(map.toHost("\\X.POD").isEmpty());
}

TEST(PathMap, readsTheDrivesOfAWinePrefix) {
    QTemporaryDir prefix;
    QDir(prefix.path()).mkpath("drive_c/Games");
    QDir(prefix.path()).mkpath("dosdevices");
    ASSERT_TRUE(QFile::link("../drive_c", prefix.path() + "/dosdevices/c:"));
    ASSERT_TRUE(QFile::link("/", prefix.path() + "/dosdevices/z:"));
    touch(prefix.path() + "/dosdevices/com1"); // not a drive
    PathMap map;
    EXPECT_EQ(map.loadWinePrefix(prefix.path()), 2);
    EXPECT_EQ(map.toHost("C:\\games"), QDir::cleanPath(prefix.path() + "/drive_c") + "/Games");
    EXPECT_EQ(map.driveRoot('Z'), "/");
}

TEST(PathMap, mapsHostPathsBackThroughTheClosestDrive) {
    QTemporaryDir dir;
    PathMap map;
    map.mapDrive('Z', "/");
    map.mapDrive('C', dir.path());
    EXPECT_EQ(map.toGame(dir.path() + "/Games/MTM2/X.POD"), std::string("C:\\Games\\MTM2\\X.POD"));
    EXPECT_EQ(map.toGame("/usr/share/x.pod"), std::string("Z:\\usr\\share\\x.pod"));
    EXPECT_EQ(map.toGame(dir.path()), std::string("C:\\"));

    PathMap onlyC;
    onlyC.mapDrive('C', dir.path());
    EXPECT_FALSE(onlyC.toGame("/elsewhere/x.pod").has_value());
    // A sibling folder whose name merely begins with the drive's folder lies outside that drive.
    EXPECT_FALSE(onlyC.toGame(dir.path() + "drom/x.pod").has_value());
    EXPECT_EQ(map.toGame(dir.path() + "drom/x.pod").value_or("").substr(0, 3), "Z:\\");
}

TEST(PathMap, knowsDriveRoots) {
    EXPECT_TRUE(PathMap::isDriveRoot("C:"));
    EXPECT_TRUE(PathMap::isDriveRoot("c:\\"));
    EXPECT_FALSE(PathMap::isDriveRoot("C:\\Games"));
    EXPECT_FALSE(PathMap::isDriveRoot("Games"));
}

TEST(PathMap, dropsTrailingBlanksAndDotsOfEachComponentAsWindowsDoes) {
    QTemporaryDir dir;
    touch(dir.path() + "/Data/TRUCKS.POD");
    PathMap map;
    map.mapDrive('C', dir.path());
    FileServices files(map);
    for (const char* typed : {"C:\\Data\\TRUCKS.POD ", "C:\\Data\\trucks.pod. .", "C:\\Data \\TRUCKS.POD",
                              "C:\\Data.\\TRUCKS.POD  ", "C:\\.\\Data\\TRUCKS.POD"}) {
        EXPECT_EQ(map.toHost(typed), dir.path() + "/Data/TRUCKS.POD") << typed;
        EXPECT_TRUE(files.FileExists(typed)) << typed;
        EXPECT_TRUE(files.readAll(typed)) << typed;
    }
    EXPECT_FALSE(files.FileExists("C:\\Data\\ TRUCKS.POD")); // leading blanks are part of the name
    EXPECT_FALSE(files.FileExists("C:\\Data\\TRUCKS.PO"));
    EXPECT_EQ(PathMap::win32ComponentName(".."), "..");
    EXPECT_EQ(PathMap::win32ComponentName(" . "), " . ");
}

TEST(PathMap, takesTypedHostPathsAndGamePathsAlike) {
    QTemporaryDir dir;
    touch(dir.path() + "/Games/MTM2/MTM2.EXE");
    PathMap map;
    map.mapDrive('C', dir.path());
    map.mapDrive('Z', "/");
    const QString exe = dir.path() + "/Games/MTM2/MTM2.EXE";
    const struct {
        QString typed;
        QString host;
        std::string game;
    } cases[] = {
        {"C:\\games\\mtm2\\mtm2.exe", exe, "C:\\games\\mtm2\\mtm2.exe"},
        {"c:/Games/MTM2/MTM2.EXE", exe, "c:\\Games\\MTM2\\MTM2.EXE"},
        {" \"C:\\Games\\MTM2\\MTM2.EXE\"", exe, "C:\\Games\\MTM2\\MTM2.EXE"},
        {exe, exe, "C:\\Games\\MTM2\\MTM2.EXE"},
        {"  \"" + exe + "\"  ", exe, "C:\\Games\\MTM2\\MTM2.EXE"},
        {"Z:" + QString(exe).replace('/', '\\'), exe, "Z:" + QString(exe).replace('/', '\\').toStdString()},
        {"~/korvel-none/x.pod", QDir::homePath() + "/korvel-none/x.pod",
         *map.toGame(QDir::homePath() + "/korvel-none/x.pod")},
    };
    for (const auto& c : cases) {
        const Result<QString> host = map.typedHostPath(c.typed);
        ASSERT_TRUE(host) << c.typed.toStdString();
        EXPECT_EQ(*host, c.host) << c.typed.toStdString();
        const Result<std::string> game = map.typedGamePath(c.typed);
        ASSERT_TRUE(game) << c.typed.toStdString();
        EXPECT_EQ(*game, c.game) << c.typed.toStdString();
    }
    const Result<QString> unmapped = map.typedHostPath("Q:\\Games\\x.exe");
    ASSERT_FALSE(unmapped);
    EXPECT_TRUE(unmapped.failure().message.contains("drive Q:"));
    EXPECT_FALSE(map.typedHostPath("   "));
}
