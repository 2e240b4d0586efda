#include "startup/version_text.h"
#include "startup_fixture.h"
#include "tracklist/default_track_list.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

TEST(VersionText, keepsTheLastTwoDigitsOfAThreeDigitMinorOnly) {
    EXPECT_EQ(VersionText(1, 5, 12), "1.5 Build 12");
    EXPECT_EQ(VersionText(1, 105, 12), "1.05 Build 12");
    EXPECT_EQ(VersionText(2, 1005, 3), "2.1005 Build 3");
}

TEST(Startup, loadsTheSoleProfileWithoutTheDialogAndRepairsOnlyTheStore) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    rig.startup.setVersion({1, 105, 7});
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.chooser.shown, 0);
    EXPECT_EQ(rig.session.versionText, "1.05 Build 7");
    EXPECT_EQ(rig.session.currentGame, "MTM2");
    EXPECT_EQ(rig.session.locationIni, "C:\\Games\\MTM2\\POD.INI");
    EXPECT_TRUE(rig.session.configurator);
    EXPECT_EQ(rig.session.shortGameFolder.back(), '\\');
    EXPECT_EQ(rig.session.asPod, "Error");                 // held as read on this start...
    EXPECT_EQ(rig.profile("MTM2", settings::kAsPod), "0"); // ...repaired in the store
    EXPECT_EQ(rig.profile("MTM2", settings::kBrowseDir), "C:\\Games\\MTM2");
    EXPECT_EQ(rig.drive.registry().readValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2", "ExtraDirs"),
              std::string(1, '\0'));
    EXPECT_EQ(rig.program(settings::kTrackList), std::string(kDefaultTrackList));
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());

    rig.store.writeProgram(settings::kTrackList, "Mine|Race|x.zip");
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.session.asPod, "0");
    EXPECT_EQ(rig.program(settings::kTrackList), "Mine|Race|x.zip");
}

TEST(Startup, firstUserIsWelcomedAndClosingTheDialogEndsTheProgram) {
    StartupRig rig;
    rig.chooser.play = [](GameProfiles&) {};
    EXPECT_EQ(rig.startup.Main(), StartupResult::Terminate);
    EXPECT_EQ(rig.chooser.shown, 1);
    EXPECT_EQ(rig.lastMessage().title, "Information");
    EXPECT_TRUE(rig.lastMessage().text.startsWith("Welcome! Since this is your first time using Korvel, you must add"));
}

TEST(Startup, firstStartOfAProfileMakesBackupsAndRemindsOnce) {
    StartupRig rig;
    buildGameFolder(rig.drive, GameLayout{});
    rig.drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"}).typeInput(QStringLiteral("MTM2"));
    rig.chooser.play = [](GameProfiles& logic) {
        logic.AddGame(false);
        logic.Load();
    };
    // An archive opened before any profile exists waits for the first one.
    ASSERT_EQ(rig.startup.Main("\"C:\\Downloads\\track.pod\""), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.session.openedFile, "track.pod");
    EXPECT_EQ(rig.program(settings::kInstalledGames), "MTM2");
    EXPECT_TRUE(rig.drive.exists("C:\\Games\\MTM2\\backup\\POD.INI"));
    const QStringList texts = rig.drive.dialogs().messageTexts();
    ASSERT_EQ(texts.size(), 3);
    EXPECT_TRUE(texts[1].startsWith("Bear in mind"));
    EXPECT_EQ(rig.lastMessage().title, "Reminder");
    EXPECT_EQ(rig.profile("MTM2", settings::kFirstRun), "0");

    rig.drive.dialogs().clear();
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
}

TEST(Startup, picksTheProfileFromTheCommandLine) {
    StartupRig rig;
    for (const char* name : {"4x4", "mtm2", "A"})
        rig.addProfile(name, std::string("C:\\Games\\") + name);
    rig.setList("4x4|mtm2");
    EXPECT_EQ(rig.startup.Main("MTM2"), StartupResult::Terminate); // case matters
    EXPECT_EQ(rig.lastMessage().title, "Unexpected Error");
    EXPECT_EQ(rig.lastMessage().text, "Sorry, but you have specified an invalid game on the command-line. Please run "
                                      "Korvel with no command-line parameters if you'd like to setup a new game.");
    ASSERT_EQ(rig.relaunch("mtm2"), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.session.currentGame, "mtm2");

    // A quoted archive path: the first profile named by one of its folders, else the first profile.
    ASSERT_EQ(rig.relaunch("\"C:\\Games\\MTM2\\Data\\x.pod\""), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.session.currentGame, "4x4");
    rig.setList("A|mtm2");
    ASSERT_EQ(rig.relaunch("\"C:\\Games\\mtm2\\Data\\x.pod\""), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.session.currentGame, "mtm2");
    EXPECT_EQ(rig.session.openedFolder, "C:\\Games\\mtm2\\Data\\");
    EXPECT_EQ(rig.session.openedFile, "x.pod");
    EXPECT_EQ(rig.chooser.shown, 0);

    // Switching games shows the dialog, forgets the archive and ignores any command line.
    ASSERT_EQ(rig.startup.switchGame(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.chooser.shown, 1);
    EXPECT_TRUE(rig.session.openedFile.empty());
    EXPECT_EQ(rig.session.currentGame, "A");
}

TEST(Startup, replacesInvalidSettingsWithTheirDefaults) {
    const std::vector<std::tuple<std::string_view, std::string, std::string>> cases = {
        {settings::kSlider, "739", "3060"},  {settings::kSlider, "5381", "3060"},  {settings::kSlider, "740", "740"},
        {settings::kSlider, "5380", "5380"}, {settings::kSlider, "12abc", "3060"}, {settings::kLeft, "-1", "915"},
        {settings::kLeft, "0", "0"},         {settings::kTop, "x", "1200"},        {settings::kScreen, "m", "M"},
        {settings::kLock, "3", "3"},         {settings::kLock, "4", "0"},          {settings::kSlide, "2", "1"},
    };
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    for (const auto& [name, stored, expected] : cases) {
        rig.store.writeProfile("MTM2", name, stored);
        ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
        EXPECT_EQ(rig.profile("MTM2", name), expected) << name << " = " << stored;
    }
}

TEST(Startup, endsOnADamagedProfileAndWhenRelocatingIsCancelled) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2", false);
    rig.setList("MTM2");
    rig.drive.registry().writeValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2", "MMPA", "Error");
    EXPECT_EQ(rig.startup.Main(), StartupResult::Terminate);
    EXPECT_EQ(rig.lastMessage().text, "Sorry, but your Korvel game configuration data has been corrupted. Fear not, "
                                      "though -- to recover, all you need to do is reload Korvel, remove MTM2 from "
                                      "the Game Profiles list, and re-add it.");
    EXPECT_FALSE(rig.drive.exists("C:\\Games\\MTM2\\backup"));

    rig.drive.remove("C:\\Games\\MTM2\\monster.exe");
    EXPECT_EQ(rig.relaunch(), StartupResult::Terminate);
    EXPECT_EQ(rig.lastMessage().title, "Fatal Error");
    EXPECT_EQ(rig.lastMessage().text, "Couldn't find MTM2! Terminating!");
}

TEST(Startup, relocatesAGameWhoseFilesAreGone) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    rig.drive.remove("C:\\Games\\MTM2\\POD.INI");
    GameLayout moved;
    moved.folder = "C:\\Moved\\MTM2";
    buildGameFolder(rig.drive, moved);
    rig.drive.dialogs().chooseFiles({"C:\\Moved\\MTM2\\monster.exe"}).typeInput(QStringLiteral("MTM2"));
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.session.location, "C:\\Moved\\MTM2");
    EXPECT_EQ(rig.session.locationExe, "C:\\Moved\\MTM2\\monster.exe");
    EXPECT_EQ(rig.program(settings::kInstalledGames), "MTM2");
}

TEST(Startup, appliesTheAssociationSetting) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.program(settings::kAssociate), "0");
    EXPECT_FALSE(rig.drive.registry().keyExists(RegistryRoot::ClassesRoot, ".pod"));

    rig.store.writeProgram(settings::kAssociate, "1");
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.store.ReadValue("HKEY_CLASSES_ROOT\\Korvel\\shell\\open\\command", ""),
              "\"C:\\Tools\\Korvel.exe\" \"%1\"");
    rig.store.writeProgram(settings::kAssociate, "0");
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.store.ReadValue("HKEY_CLASSES_ROOT\\.pod", ""), "Korvel"); // the keys stay
}

TEST(RequestFromArguments, quotesAnExistingFileAndJoinsAnythingElse) {
    TempDrive drive;
    drive.write("C:\\Games\\MTM2\\My Track.pod", "POD2");
    EXPECT_EQ(requestFromArguments({drive.host("C:\\Games\\MTM2\\My Track.pod")}, drive.paths()),
              "\"C:\\Games\\MTM2\\My Track.pod\"");
    EXPECT_EQ(requestFromArguments({"Monster", "Truck", "Madness", "2"}, drive.paths()), "Monster Truck Madness 2");
}
