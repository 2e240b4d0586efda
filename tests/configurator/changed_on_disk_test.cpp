#include "configurator/monster_ini.h"
#include "configurator/player_profile.h"
#include "platform/file_services.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::TempDrive;

namespace {

const std::string kFolder = "C:\\Games\\MTM2";
const std::string kIni = "C:\\Games\\MTM2\\system\\monster.ini";
const std::string kPro = "C:\\Games\\MTM2\\player.pro";

std::string ini(const std::string& horn, const std::string& tail = "") {
    return "[Game]\r\nshowHiddenTrack=0\r\nkookyHornFlag=" + horn + "\r\ngLocalizationFile=UI\\MTM2.loc\r\n" + tail;
}

std::string driver(const std::string& name) {
    std::string text = name + "\r\nrank=3\r\ntruck=RAM.TRK\r\n";
    for (int i = 1; i <= 5; ++i)
        text += name + " stat " + std::to_string(i) + "\r\n";
    return text;
}

std::string pro(const std::vector<std::string>& names) {
    std::string text = "103\r\n" + std::to_string(names.size()) + "\r\n1\r\n";
    for (const std::string& name : names)
        text += driver(name);
    return text;
}

} // namespace

TEST(PlayerProfileChange, aSaveRefusesToWriteOverDriversAnotherProgramChangedUntilTheStampIsDropped) {
    TempDrive drive;
    drive.write(kPro, pro({"Alice", "Bob", "Carol"}));
    DriverLoad load = LoadDrivers(drive.files(), kFolder);
    ASSERT_EQ(load.list.state, DriverRecords::State::Read);
    ASSERT_TRUE(load.list.loadedFrom.has_value());
    ASSERT_EQ(RemoveSelectedDriver(load.list, {false, true}), 1);

    // The game adds a driver meanwhile; the same size with other bytes counts too.
    for (const std::string& theirs : {pro({"Alice", "Bob", "Carol", "Dave"}), pro({"Alice", "Bob", "Carl!"})}) {
        drive.write(kPro, theirs);
        const Result<DriverLoad> refusedSave = SaveDrivers(drive.files(), kFolder, load.list);
        ASSERT_FALSE(refusedSave.ok());
        EXPECT_EQ(refusedSave.failure().kind, FailureKind::ChangedOnDisk);
        EXPECT_TRUE(refusedSave.failure().message.contains(QStringLiteral("player.pro")));
        EXPECT_EQ(drive.read(kPro), theirs);
    }

    DriverRecords over = load.list;
    over.loadedFrom.reset(); // the user chose to write over it
    Result<DriverLoad> saved = SaveDrivers(drive.files(), kFolder, over);
    ASSERT_TRUE(saved.ok());
    EXPECT_EQ(drive.read(kPro), pro({"Alice", "Carol"}));
    // What a save answers carries the stamp of what it wrote: the next save goes through.
    ASSERT_EQ(RemoveSelectedDriver(saved->list, {true}), 1);
    ASSERT_TRUE(SaveDrivers(drive.files(), kFolder, saved->list).ok());
    EXPECT_EQ(drive.read(kPro), pro({"Carol"}));
}

TEST(MonsterIniChange, aSaveWithTheLoadedStampRefusesAnUnseenChangeAndCarriesItsOwnStampOn) {
    TempDrive drive;
    drive.write(kIni, ini("0"));
    LoadedFileStamp stamp;
    Result<MonsterSettings> settings = LoadMonsterIni(drive.files(), kFolder, &stamp);
    ASSERT_TRUE(settings.ok());
    settings->hiddenTrack = true;
    ASSERT_TRUE(SaveMonsterIni(drive.files(), kFolder, *settings, &stamp, &stamp).ok());
    settings->horn = true;
    ASSERT_TRUE(SaveMonsterIni(drive.files(), kFolder, *settings, &stamp, &stamp).ok()); // its own change
    EXPECT_EQ(drive.read(kIni),
              "[Game]\r\nshowHiddenTrack=666\r\nkookyHornFlag=1\r\ngLocalizationFile=UI\\MTM2.loc\r\n");

    const std::string theirs = "[Game]\r\nshowHiddenTrack=666\r\nkookyHornFlag=0\r\ngLocalizationFile=UI\\MTM2.loc\r\n";
    drive.write(kIni, theirs);
    settings->localization = 2;
    const Status refusedSave = SaveMonsterIni(drive.files(), kFolder, *settings, &stamp, &stamp);
    ASSERT_FALSE(refusedSave.ok());
    EXPECT_EQ(refusedSave.failure().kind, FailureKind::ChangedOnDisk);
    EXPECT_TRUE(refusedSave.failure().message.contains(QStringLiteral("monster.ini")));
    EXPECT_EQ(drive.read(kIni), theirs);
    // Without a stamp (the user chose to overwrite) the three lines are written as before.
    ASSERT_TRUE(SaveMonsterIni(drive.files(), kFolder, *settings, nullptr, &stamp).ok());
    EXPECT_EQ(drive.read(kIni),
              "[Game]\r\nshowHiddenTrack=666\r\nkookyHornFlag=1\r\ngLocalizationFile=UI\\MTM2-fun.loc\r\n");
    EXPECT_TRUE(SaveMonsterIni(drive.files(), kFolder, *settings, &stamp, &stamp).ok());
}
