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
    const auto& asked = rig.drive.dialogs().asked();
    EXPECT_EQ(asked[0].title, "Locate your game's executable file");
    EXPECT_EQ(asked[0].start, "C:\\");
    EXPECT_EQ(asked[1].proposal, "4x4");
    EXPECT_EQ(rig.profile("mtm 2", settings::kLocation), "D:\\Games\\4x4");
    EXPECT_EQ(rig.profile("mtm 2", settings::kLocationIni), "D:\\Games\\4x4\\POD.INI");
    EXPECT_EQ(rig.profile("mtm 2", settings::kLocationExe), "D:\\Games\\4x4\\4x4.exe");
    EXPECT_EQ(rig.profile("mtm 2", settings::kMmpa), "99");
    EXPECT_EQ(rig.profile("mtm 2", settings::kConfigurator), "True");
    EXPECT_TRUE(rig.logic.loadEnabled());
    EXPECT_EQ(rig.program(settings::kInstalledGames), "Error"); // written by Load or Exit only

    for (const char* other : {"MTM-2", "Monster Truck Madness"}) {
        rig.add("D:\\Games\\4x4\\4x4.exe", QString::fromLatin1(other));
        EXPECT_EQ(rig.profile(other, settings::kConfigurator), "False");
    }
    // Cancelling either question stores nothing.
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
    EXPECT_TRUE(rig.logic.games().empty());

    rig.drive.dialogs().typeInput(QStringLiteral("c:\\games\\evo\\4X4.EXE")).typeInput(QStringLiteral("Evo"));
    EXPECT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Added);
    EXPECT_EQ(rig.profile("Evo", settings::kLocationExe), "c:\\games\\evo\\4X4.EXE");
}

TEST(GameProfiles, loadAndExitSaveTheWorkingListRemoveDoesNot) {
    ProfilesRig rig;
    rig.logic.open();
    rig.add("C:\\Games\\MTM2\\monster.exe", QStringLiteral("MTM2"));
    rig.add("C:\\Games\\MTM2\\monster.exe", QStringLiteral("MTM2"));
    rig.logic.select(1);
    ASSERT_TRUE(rig.logic.Load());
    EXPECT_EQ(rig.program(settings::kInstalledGames), "MTM2|MTM2");
    EXPECT_EQ(rig.session.currentGame, "MTM2");

    rig.setList("A|B");
    rig.logic.open();
    rig.logic.select(1);
    rig.logic.Remove();
    EXPECT_EQ(rig.logic.games(), std::vector<std::string>{"A"});
    EXPECT_EQ(rig.logic.selectedIndex(), 0);
    EXPECT_EQ(rig.program(settings::kInstalledGames), "A|B");
    rig.logic.select(-1);
    rig.logic.Remove(); // nothing selected
    rig.logic.select(0);
    rig.logic.Remove();
    EXPECT_FALSE(rig.logic.loadEnabled());
    rig.logic.Exit();
    EXPECT_EQ(rig.logic.state(), GameProfiles::State::Exited);
    EXPECT_EQ(rig.program(settings::kInstalledGames), "Error");
    // A removed profile keeps its values in the store.
    EXPECT_EQ(rig.profile("MTM2", settings::kLocation), "C:\\Games\\MTM2");
}
