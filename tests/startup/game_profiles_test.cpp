#include "startup_fixture.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

struct ProfilesRig : StartupRig {
    GameProfiles logic{store, drive.files(), drive.dialogs(), session};

    // Adds through the open-file dialog, answering the name question with `name`.
    GameProfiles::AddOutcome add(const std::string& exe, const QString& name) {
        drive.dialogs().chooseFiles({exe}).typeInput(name);
        return logic.AddGame(false);
    }
};

} // namespace

TEST(GameProfiles, recognisesTheMonsterTruckMadness2NamesInAnyCase) {
    for (const char* name : {"mtm 2", "MTM2", "mtmii", "Mtm II", "monster truck madness 2", "MONSTER TRUCK MADNESS II"})
        EXPECT_TRUE(isMonsterTruckMadness2Name(name)) << name;
    for (const char* name : {"MTM-2", "Monster Truck Madness", "MTM 2 ", "MTM3", ""})
        EXPECT_FALSE(isMonsterTruckMadness2Name(name)) << name;
}

TEST(GameProfiles, opensWithTheStoredListAndTheFirstEntrySelected) {
    ProfilesRig rig;
    rig.logic.open();
    EXPECT_TRUE(rig.logic.games().empty());
    EXPECT_FALSE(rig.logic.loadEnabled());
    EXPECT_FALSE(rig.logic.Load());

    rig.setList("4x4|MTM2|4x4");
    rig.logic.open();
    EXPECT_EQ(rig.logic.games(), (std::vector<std::string>{"4x4", "MTM2", "4x4"}));
    EXPECT_EQ(rig.logic.selectedIndex(), 0);
    EXPECT_TRUE(rig.logic.loadEnabled());
}

TEST(GameProfiles, addProposesTheFolderNameAndWritesTheFiveValuesInOrder) {
    ProfilesRig rig;
    rig.drive.write("C:\\Games\\4x4\\4x4.exe", "MZ");
    rig.logic.open();
    ASSERT_EQ(rig.add("C:\\Games\\4x4\\4x4.exe", QStringLiteral("mtm 2")), GameProfiles::AddOutcome::Added);
    const auto& asked = rig.drive.dialogs().asked();
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].title, "Locate your game's executable file");
    EXPECT_EQ(asked[0].start, "C:\\");
    ASSERT_EQ(asked[0].filters.size(), 2u);
    EXPECT_EQ(asked[0].filters[0].pattern, "*.exe");
    EXPECT_EQ(asked[1].prompt, "Please enter a name for this game:");
    EXPECT_EQ(asked[1].proposal, "4x4");
    EXPECT_EQ(rig.profile("mtm 2", settings::kLocation), "C:\\Games\\4x4");
    EXPECT_EQ(rig.profile("mtm 2", settings::kLocationIni), "C:\\Games\\4x4\\POD.INI");
    EXPECT_EQ(rig.profile("mtm 2", settings::kLocationExe), "C:\\Games\\4x4\\4x4.exe");
    EXPECT_EQ(rig.profile("mtm 2", settings::kMmpa), "99");
    EXPECT_EQ(rig.profile("mtm 2", settings::kConfigurator), "True");
    EXPECT_TRUE(rig.logic.loadEnabled());
    // The list in the store waits for Load or Exit.
    EXPECT_EQ(rig.program(settings::kInstalledGames), "Error");

    ASSERT_EQ(rig.add("C:\\Games\\4x4\\4x4.exe", QStringLiteral("MTM-2")), GameProfiles::AddOutcome::Added);
    EXPECT_EQ(rig.profile("MTM-2", settings::kConfigurator), "False");
}

TEST(GameProfiles, cancelledOrEmptyAnswersStoreNothing) {
    ProfilesRig rig;
    rig.logic.open();
    EXPECT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Unchanged); // file dialog cancelled
    EXPECT_EQ(rig.add("C:\\Games\\4x4\\4x4.exe", QString()), GameProfiles::AddOutcome::Unchanged);
    EXPECT_TRUE(rig.logic.games().empty());
    EXPECT_FALSE(rig.drive.registry().keyExists(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\4x4"));
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
}

TEST(GameProfiles, shiftAddChecksTheTypedPath) {
    ProfilesRig rig;
    rig.drive.write("C:\\Games\\Evo\\4x4.exe", "MZ");
    rig.logic.open();
    rig.logic.setAddShiftState(1);
    rig.drive.dialogs().typeInput(QStringLiteral("C:\\Games\\Evo\\missing.exe"));
    EXPECT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Unchanged);
    EXPECT_EQ(rig.drive.dialogs().lastMessage().text, "File not found!");
    EXPECT_EQ(rig.drive.dialogs().lastMessage().title, "Read Error");
    EXPECT_TRUE(rig.logic.games().empty());

    // A differently cased path to an existing file is accepted and stored as typed.
    rig.drive.dialogs().typeInput(QStringLiteral("c:\\games\\evo\\4X4.EXE")).typeInput(QStringLiteral("Evo"));
    EXPECT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Added);
    EXPECT_EQ(rig.profile("Evo", settings::kLocationExe), "c:\\games\\evo\\4X4.EXE");
    EXPECT_EQ(rig.drive.dialogs().asked().front().prompt,
              "Please enter the full path to your game's executable file (ie. C:\\Program Files\\Terminal "
              "Reality\\4x4 Evolution\\4x4.exe):");
    EXPECT_EQ(rig.drive.dialogs().asked().front().kind, "input");
}

TEST(GameProfiles, sameNameTwiceIsListedAndSavedTwice) {
    ProfilesRig rig;
    rig.drive.write("C:\\Games\\MTM2\\monster.exe", "MZ");
    rig.logic.open();
    rig.add("C:\\Games\\MTM2\\monster.exe", QStringLiteral("MTM2"));
    rig.add("C:\\Games\\MTM2\\monster.exe", QStringLiteral("MTM2"));
    rig.logic.select(1);
    ASSERT_TRUE(rig.logic.Load());
    EXPECT_EQ(rig.program(settings::kInstalledGames), "MTM2|MTM2");
    EXPECT_EQ(rig.session.currentGame, "MTM2");
    EXPECT_EQ(rig.logic.state(), GameProfiles::State::Loaded);
}

TEST(GameProfiles, removingTheLastProfileAndExitingStoresError) {
    ProfilesRig rig;
    rig.addProfile("A", "C:\\Games\\A");
    rig.addProfile("B", "C:\\Games\\B");
    rig.setList("A|B");
    rig.logic.open();
    rig.logic.select(1);
    rig.logic.Remove();
    EXPECT_EQ(rig.logic.games(), std::vector<std::string>{"A"});
    EXPECT_EQ(rig.logic.selectedIndex(), 0);
    EXPECT_EQ(rig.program(settings::kInstalledGames), "A|B"); // not written by Remove
    // The removed profile's values stay in the store.
    EXPECT_EQ(rig.profile("B", settings::kLocation), "C:\\Games\\B");
    rig.logic.select(-1);
    rig.logic.Remove(); // nothing selected: nothing removed
    EXPECT_EQ(rig.logic.games().size(), 1u);
    rig.logic.select(0);
    rig.logic.Remove();
    EXPECT_FALSE(rig.logic.loadEnabled());
    rig.logic.Exit();
    EXPECT_EQ(rig.program(settings::kInstalledGames), "Error");
    EXPECT_EQ(rig.logic.state(), GameProfiles::State::Exited);

    // ...so the next start welcomes the user again.
    Session next;
    rig.chooser.play = [](GameProfiles&) {};
    EXPECT_EQ(Startup(rig.drive.services(), rig.store, next, rig.chooser, rig.association).Main(),
              StartupResult::Terminate);
    EXPECT_TRUE(rig.drive.dialogs().lastMessage().text.startsWith("Welcome!"));
}
