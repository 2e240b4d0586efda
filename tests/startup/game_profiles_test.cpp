#include "startup/backups.h"
#include "startup_fixture.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

struct ProfilesRig : StartupRig {
    GameProfiles logic{store, drive.files(), drive.dialogs(), session};

    GameProfiles::AddOutcome add(const std::string& exe, std::optional<QString> name) {
        drive.dialogs().chooseFiles({exe}).typeInput(std::move(name));
        return logic.AddGame(false);
    }
};

} // namespace

TEST(GameProfiles, addProposesTheFolderNameAndWritesTheProfile) {
    ProfilesRig rig;
    rig.logic.open();
    EXPECT_FALSE(rig.logic.loadEnabled());
    ASSERT_EQ(rig.add("D:\\Games\\4x4\\4x4.exe", QStringLiteral("mtm 2")), GameProfiles::AddOutcome::Added);
    ASSERT_EQ(rig.drive.dialogs().asked().size(), 2u);
    EXPECT_EQ(rig.drive.dialogs().asked()[1].proposal, "4x4");
    EXPECT_EQ(rig.profile("mtm 2", settings::kLocationIni), "D:\\Games\\4x4\\POD.INI");
    EXPECT_EQ(rig.profile("mtm 2", settings::kConfigurator), "True");
    EXPECT_EQ(rig.program(settings::kInstalledGames), "Error"); // written by Load or Exit only
    // Only the exact names of the one game get the configurator.
    for (const char* other : {"MTM-2", "Monster Truck Madness"}) {
        rig.add("D:\\Games\\4x4\\4x4.exe", QString::fromLatin1(other));
        EXPECT_EQ(rig.profile(other, settings::kConfigurator), "False");
    }
    EXPECT_EQ(rig.add("D:\\Games\\Evo\\4x4.exe", QString()), GameProfiles::AddOutcome::Unchanged);
    EXPECT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Unchanged);
    EXPECT_EQ(rig.logic.games().size(), 3u);
}

TEST(GameProfiles, shiftAddChecksTheTypedPath) {
    ProfilesRig rig;
    rig.drive.write("C:\\Games\\Evo\\4x4.exe", "MZ");
    rig.logic.open();
    rig.logic.setAddShiftState(1);
    rig.drive.dialogs().typeInput(QStringLiteral("C:\\Games\\Evo\\missing.exe"));
    EXPECT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Unchanged);
    EXPECT_EQ(rig.lastMessage().title, "Read Error");
    EXPECT_EQ(rig.lastMessage().text, "File not found!");

    rig.drive.dialogs().typeInput(QStringLiteral("c:\\games\\evo\\4X4.EXE")).typeInput(QStringLiteral("Evo"));
    EXPECT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Added);
}

TEST(GameProfiles, loadAndExitSaveTheWorkingListRemoveDoesNot) {
    ProfilesRig rig;
    rig.logic.open();
    rig.add("C:\\Games\\MTM2\\monster.exe", QStringLiteral("MTM2"));
    rig.add("C:\\Games\\MTM2\\monster.exe", QStringLiteral("MTM2"));
    rig.logic.select(1);
    ASSERT_TRUE(rig.logic.Load());
    EXPECT_EQ(rig.program(settings::kInstalledGames), "MTM2|MTM2");

    rig.setList("A|B");
    rig.logic.open();
    rig.logic.select(1);
    rig.logic.Remove();
    EXPECT_EQ(rig.logic.games(), std::vector<std::string>{"A"});
    EXPECT_EQ(rig.program(settings::kInstalledGames), "A|B");
    rig.logic.select(0);
    rig.logic.Remove();
    EXPECT_FALSE(rig.logic.loadEnabled());
    rig.logic.Exit();
    EXPECT_EQ(rig.program(settings::kInstalledGames), "Error");
    EXPECT_EQ(rig.profile("MTM2", settings::kLocation), "C:\\Games\\MTM2"); // removed profiles keep their values
}

TEST(RepairGameRegistry, writesBothKeysForTheChosenFolder) {
    TempDrive drive;
    SettingsStore store(drive.registry(), drive.dialogs());
    Session session;
    session.location = "C:\\Games\\MTM2";
    EXPECT_FALSE(RepairGameRegistry(store, drive.dialogs(), session)); // cancelled: nothing written
    EXPECT_FALSE(drive.registry().keyExists(RegistryRoot::LocalMachine, "SOFTWARE\\Microsoft"));

    drive.dialogs().chooseFiles({"E:\\MTM2\\monster.exe"});
    ASSERT_TRUE(RepairGameRegistry(store, drive.dialogs(), session));
    const std::string game = "SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0";
    const std::string lobby = "SOFTWARE\\Microsoft\\DirectPlay\\Applications\\Monster Truck Madness 2";
    for (const auto& [key, name] : {std::pair{game, "InstalledPath"}, {lobby, "CurrentDirectory"}, {lobby, "Path"}})
        EXPECT_EQ(drive.registry().readValue(RegistryRoot::LocalMachine, key, name), "E:\\MTM2") << name;
    EXPECT_EQ(drive.registry().readValue(RegistryRoot::LocalMachine, lobby, "CommandLine"), "");
}
