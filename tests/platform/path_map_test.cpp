#include "platform/file_services.h"
#include "platform/game_codec.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "platform/short_path.h"
#include "temp_game.h"

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

// A drive C: on a fresh temporary folder.
struct MappedDrive {
    MappedDrive() { map.mapDrive('C', dir.path()); }
    QString host(const QString& relative) const { return dir.path() + "/" + relative; }
    QTemporaryDir dir;
    PathMap map;
};

} // namespace

TEST(PathMap, resolvesEachComponentWithoutRegardToCaseAndNotesFilesMadeLater) {
    MappedDrive c;
    touch(c.host("Games/MTM2/Pod.ini"));
    EXPECT_EQ(c.map.toHost("C:\\GAMES\\mtm2\\POD.INI"), c.host("Games/MTM2/Pod.ini"));
    EXPECT_EQ(c.map.toHost("c:\\games\\MTM2\\"), c.host("Games/MTM2"));
    // A component that does not exist is kept as written, so new files can be made.
    EXPECT_EQ(c.map.toHost("C:\\games\\mtm2\\NEW\\File.txt"), c.host("Games/MTM2/NEW/File.txt"));
    touch(c.host("Games/MTM2/Two.pod")); // after the folder was listed
    EXPECT_EQ(c.map.toHost("C:\\GAMES\\MTM2\\TWO.POD"), c.host("Games/MTM2/Two.pod"));
    EXPECT_EQ(c.map.toHost("C:\\Games\\MTM2\\..\\MTM2\\POD.INI"), c.host("Games/MTM2/Pod.ini"));
    EXPECT_TRUE(c.map.toHost("D:\\X.POD").isEmpty()); // unmapped drive
    EXPECT_TRUE(c.map.toHost("\\X.POD").isEmpty());   // rooted without a drive
    for (const auto& [path, root] : {std::pair{"C:", true}, {"c:\\", true}, {"C:\\Games", false}, {"Games", false}})
        EXPECT_EQ(PathMap::isDriveRoot(path), root) << path;
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
    MappedDrive onlyC;
    EXPECT_FALSE(onlyC.map.toGame("/elsewhere/x.pod").has_value());
    // A sibling folder whose name merely begins with the drive's folder lies outside that drive.
    EXPECT_FALSE(onlyC.map.toGame(onlyC.dir.path() + "drom/x.pod").has_value());
    PathMap map;
    map.mapDrive('Z', "/");
    map.mapDrive('C', onlyC.dir.path());
    EXPECT_EQ(map.toGame(onlyC.host("Games/MTM2/X.POD")), std::string("C:\\Games\\MTM2\\X.POD"));
    EXPECT_EQ(map.toGame("/usr/share/x.pod"), std::string("Z:\\usr\\share\\x.pod"));
    EXPECT_EQ(map.toGame(onlyC.dir.path()), std::string("C:\\"));
    EXPECT_EQ(map.toGame(onlyC.dir.path() + "drom/x.pod").value_or("").substr(0, 3), "Z:\\");
}

TEST(PathMap, dropsTrailingBlanksAndDotsOfEachComponentAsWindowsDoes) {
    MappedDrive c;
    touch(c.host("Data/TRUCKS.POD"));
    FileServices files(c.map);
    for (const char* typed : {"C:\\Data\\TRUCKS.POD ", "C:\\Data\\trucks.pod. .", "C:\\Data \\TRUCKS.POD",
                              "C:\\Data.\\TRUCKS.POD  ", "C:\\.\\Data\\TRUCKS.POD"}) {
        EXPECT_EQ(c.map.toHost(typed), c.host("Data/TRUCKS.POD")) << typed;
        EXPECT_TRUE(files.FileExists(typed)) << typed;
        EXPECT_TRUE(files.readAll(typed)) << typed;
    }
    EXPECT_FALSE(files.FileExists("C:\\Data\\ TRUCKS.POD")); // leading blanks are part of the name
    EXPECT_FALSE(files.FileExists("C:\\Data\\TRUCKS.PO"));
    EXPECT_EQ(PathMap::win32ComponentName(".."), "..");
    EXPECT_EQ(PathMap::win32ComponentName(" . "), " . ");
}

TEST(PathMap, takesTypedHostPathsAndGamePathsAlike) {
    MappedDrive c;
    touch(c.host("Games/MTM2/MTM2.EXE"));
    PathMap& map = c.map;
    map.mapDrive('Z', "/");
    const QString exe = c.host("Games/MTM2/MTM2.EXE");
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
        SCOPED_TRACE(c.typed.toStdString());
        const Result<QString> host = map.typedHostPath(c.typed);
        ASSERT_TRUE(host);
        EXPECT_EQ(*host, c.host);
        const Result<std::string> game = map.typedGamePath(c.typed);
        ASSERT_TRUE(game);
        EXPECT_EQ(*game, c.game);
    }
    const Result<QString> unmapped = map.typedHostPath("Q:\\Games\\x.exe");
    ASSERT_FALSE(unmapped);
    EXPECT_TRUE(unmapped.failure().message.contains("drive Q:"));
    EXPECT_FALSE(map.typedHostPath("   "));
}

TEST(PathMap, mapsCyrillicAndJapaneseFolderAndArchiveNamesBothWaysInTheirCodePage) {
    QTemporaryDir dir;
    const struct {
        int codePage;
        QString folder;
        QString archive;
    } cases[] = {
        {1251, QStringLiteral("Игры/Гонки"), QStringLiteral("Трасса.POD")},
        {1250, QStringLiteral("Gry/Wyścigi"), QStringLiteral("Łódź.POD")},
        {932, QStringLiteral("ゲーム/モンスター"), QStringLiteral("トラック.POD")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.codePage);
        ScopedGameCodec scoped(*GameCodec::forCodePage(c.codePage));
        const QString host = dir.filePath(c.folder + "/" + c.archive);
        touch(host);
        PathMap map;
        map.mapDrive('C', dir.path());
        const std::optional<std::string> game = map.toGame(host);
        ASSERT_TRUE(game);
        EXPECT_EQ(*game, "C:\\" + *encodeGameText(QString(c.folder).replace('/', '\\') + "\\" + c.archive));
        EXPECT_EQ(map.toHost(upperGame(*game)), host);
        const std::string folder = *map.toGame(QFileInfo(host).absolutePath());
        EXPECT_EQ(FileServices(map).search(folder + "\\*.pod", SearchFilter::NormalFiles),
                  std::vector<std::string>{*encodeGameText(c.archive)});
    }
    ScopedGameCodec western(GameCodec{});
    PathMap map;
    map.mapDrive('C', dir.path());
    const Result<std::string> refusedPath = map.gamePathOf(dir.filePath("Игры/Гонки/Трасса.POD"));
    ASSERT_FALSE(refusedPath);
    EXPECT_TRUE(refusedPath.failure().message.contains("Трасса.POD"));
    EXPECT_TRUE(refusedPath.failure().message.contains("windows-1252"));
    // The game could not open such a name, so a search does not offer it.
    EXPECT_TRUE(FileServices(map).search("C:\\Игры\\Гонки\\*.*", SearchFilter::NormalFiles).empty());
}

TEST(ShortPath, keepsRelativePathsRelativeAndTheFileNameAsWritten) {
    korvel::testing::TempDrive drive;
    drive.makeFolder("C:\\Games\\MTM2\\ADDON");
    const std::pair<const char*, const char*> rows[] = {
        {"ADDON\\MyTrack.pod", "ADDON\\MyTrack.pod"},
        {"TRUCKS.POD", "TRUCKS.POD"},
        {"C:\\Games\\MTM2\\ADDON\\X.POD", "C:\\Games\\MTM2\\ADDON\\X.POD"},
        {"NOWHERE\\X.POD", "NOWHERE\\X.POD"}, // no short form: the long folder stays
        {"D:\\TRACKS\\X.POD", "D:\\TRACKS\\X.POD"},
    };
    for (const auto& [path, expected] : rows)
        EXPECT_EQ(ShortPath(drive.files(), "C:\\Games\\MTM2\\", path, false), expected) << path;
    EXPECT_EQ(ShortPath(drive.files(), "C:\\Games\\MTM2\\", "C:\\Games\\MTM2", true), "C:\\Games\\MTM2");
}
