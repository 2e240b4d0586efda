#include "startup/backups.h"
#include "startup_fixture.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

TEST(MakeBackups, copiesWhatExistsOverOlderCopiesAndSaysWhere) {
    TempDrive drive;
    GameLayout layout;
    layout.monsterIni = false;
    buildGameFolder(drive, layout);
    MakeBackups(drive.files(), drive.dialogs(), "C:\\Games\\MTM2");
    EXPECT_EQ(drive.read("C:\\Games\\MTM2\\backup\\player.pro"), samplePlayerPro());
    EXPECT_FALSE(drive.exists("C:\\Games\\MTM2\\backup\\monster.ini"));
    EXPECT_EQ(drive.dialogs().lastMessage().text,
              "Bear in mind that, like any other piece of software, Korvel may not be perfect. To ensure that no harm "
              "comes to your game installation, backups of your key files (POD.INI, player.pro, and monster.ini) have "
              "been copied to \"C:\\Games\\MTM2\\backup\" just in case.");

    drive.write("C:\\Games\\MTM2\\POD.INI", "1\r\nNEW.POD\r\n");
    drive.write("C:\\Games\\MTM2\\system\\monster.ini", "x");
    MakeBackups(drive.files(), drive.dialogs(), "C:\\Games\\MTM2");
    EXPECT_EQ(drive.read("C:\\Games\\MTM2\\backup\\POD.INI"), "1\r\nNEW.POD\r\n");
    EXPECT_EQ(drive.read("C:\\Games\\MTM2\\backup\\monster.ini"), "x");
    EXPECT_EQ(drive.dialogs().messages().size(), 2u);
}

TEST(RepairGameRegistry, writesBothKeysForTheChosenFolder) {
    TempDrive drive;
    SettingsStore store(drive.registry(), drive.dialogs());
    Session session;
    session.location = "C:\\Games\\MTM2";
    EXPECT_FALSE(RepairGameRegistry(store, drive.dialogs(), session));
    EXPECT_EQ(drive.dialogs().asked().back().start, "C:\\Games\\MTM2");
    EXPECT_FALSE(drive.registry().keyExists(RegistryRoot::LocalMachine, "SOFTWARE\\Microsoft"));

    drive.dialogs().chooseFiles({"E:\\MTM2\\monster.exe"});
    ASSERT_TRUE(RepairGameRegistry(store, drive.dialogs(), session));
    EXPECT_EQ(session.location, "E:\\MTM2");
    const std::string game = "SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0";
    const std::string lobby = "SOFTWARE\\Microsoft\\DirectPlay\\Applications\\Monster Truck Madness 2";
    for (const auto& [key, name] : {std::pair{game, "InstalledPath"}, {lobby, "CurrentDirectory"}, {lobby, "Path"}})
        EXPECT_EQ(drive.registry().readValue(RegistryRoot::LocalMachine, key, name), "E:\\MTM2") << name;
    EXPECT_EQ(drive.registry().readValue(RegistryRoot::LocalMachine, lobby, "CommandLine"), "");
    EXPECT_TRUE(drive.dialogs().messages().empty());
}
