#include "startup/backups.h"
#include "startup_fixture.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

TEST(MakeBackups, copiesTheThreeFilesAndSaysWhere) {
    TempDrive drive;
    buildGameFolder(drive, GameLayout{});
    MakeBackups(drive.files(), drive.dialogs(), "C:\\Games\\MTM2");
    EXPECT_EQ(drive.read("C:\\Games\\MTM2\\backup\\POD.INI"), drive.read("C:\\Games\\MTM2\\POD.INI"));
    EXPECT_EQ(drive.read("C:\\Games\\MTM2\\backup\\player.pro"), samplePlayerPro());
    EXPECT_EQ(drive.read("C:\\Games\\MTM2\\backup\\monster.ini"), sampleMonsterIni());
    ASSERT_EQ(drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(drive.dialogs().lastMessage().title, "Information");
    EXPECT_EQ(drive.dialogs().lastMessage().text,
              "Bear in mind that, like any other piece of software, Korvel may not be perfect. To ensure that no harm "
              "comes to your game installation, backups of your key files (POD.INI, player.pro, and monster.ini) have "
              "been copied to \"C:\\Games\\MTM2\\backup\" just in case.");

    // A second run overwrites the older copies, although the folder already exists.
    drive.write("C:\\Games\\MTM2\\POD.INI", "1\r\nNEW.POD\r\n");
    MakeBackups(drive.files(), drive.dialogs(), "C:\\Games\\MTM2");
    EXPECT_EQ(drive.read("C:\\Games\\MTM2\\backup\\POD.INI"), "1\r\nNEW.POD\r\n");
}

TEST(MakeBackups, skipsAMissingSettingsFileAndStillReports) {
    TempDrive drive;
    GameLayout layout;
    layout.monsterIni = false;
    buildGameFolder(drive, layout);
    MakeBackups(drive.files(), drive.dialogs(), "C:\\Games\\MTM2");
    EXPECT_TRUE(drive.exists("C:\\Games\\MTM2\\backup\\POD.INI"));
    EXPECT_TRUE(drive.exists("C:\\Games\\MTM2\\backup\\player.pro"));
    EXPECT_FALSE(drive.exists("C:\\Games\\MTM2\\backup\\monster.ini"));
    EXPECT_EQ(drive.dialogs().messages().size(), 1u);
}

TEST(RepairGameRegistry, writesBothKeysForTheChosenFolder) {
    TempDrive drive;
    RegistryTree& registry = drive.registry();
    SettingsStore store(registry, drive.dialogs());
    Session session;
    session.location = "C:\\Games\\MTM2";

    EXPECT_FALSE(RepairGameRegistry(store, drive.dialogs(), session));
    EXPECT_EQ(drive.dialogs().asked().back().title, "Find your MTM2 directory");
    EXPECT_EQ(drive.dialogs().asked().back().start, "C:\\Games\\MTM2");
    EXPECT_FALSE(registry.keyExists(RegistryRoot::LocalMachine, "SOFTWARE\\Microsoft\\DirectPlay"));

    drive.dialogs().chooseFiles({"E:\\MTM2\\monster.exe"});
    ASSERT_TRUE(RepairGameRegistry(store, drive.dialogs(), session));
    EXPECT_EQ(session.location, "E:\\MTM2");
    const std::string game = "SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0";
    const std::string lobby = "SOFTWARE\\Microsoft\\DirectPlay\\Applications\\Monster Truck Madness 2";
    EXPECT_EQ(registry.readValue(RegistryRoot::LocalMachine, game, "InstalledPath"), "E:\\MTM2");
    EXPECT_EQ(registry.readValue(RegistryRoot::LocalMachine, game, "VersionType"), "RetailVersion");
    EXPECT_EQ(registry.readValue(RegistryRoot::LocalMachine, lobby, "CurrentDirectory"), "E:\\MTM2");
    EXPECT_EQ(registry.readValue(RegistryRoot::LocalMachine, lobby, "Path"), "E:\\MTM2");
    EXPECT_EQ(registry.readValue(RegistryRoot::LocalMachine, lobby, "CommandLine"), "");
    EXPECT_EQ(registry.readValue(RegistryRoot::LocalMachine, lobby, "Guid"), "{6cd1c6e0-96fb-11d1-a268-00a02f29c995}");
    EXPECT_TRUE(drive.dialogs().messages().empty()); // no confirmation
}
