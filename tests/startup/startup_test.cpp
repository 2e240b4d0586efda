#include "startup/version_text.h"
#include "startup_fixture.h"
#include "tracklist/default_track_list.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

const QString kInvalidGame = QStringLiteral("Sorry, but you have specified an invalid game on the command-line. Please "
                                            "run Korvel with no command-line parameters if you'd like to setup a new "
                                            "game.");

} // namespace

TEST(VersionText, keepsTheLastTwoDigitsOfAThreeDigitMinorOnly) {
    EXPECT_EQ(VersionText(1, 5, 12), "1.5 Build 12");
    EXPECT_EQ(VersionText(1, 105, 12), "1.05 Build 12");
    EXPECT_EQ(VersionText(2, 10, 0), "2.10 Build 0");
    EXPECT_EQ(VersionText(2, 1005, 3), "2.1005 Build 3");
}

TEST(Startup, loadsTheSoleProfileWithoutTheDialogAndFillsTheSession) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    rig.startup.setVersion({1, 105, 7});
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.chooser.shown, 0);
    EXPECT_EQ(rig.session.versionText, "1.05 Build 7");
    EXPECT_EQ(rig.session.currentGame, "MTM2");
    EXPECT_EQ(rig.session.location, "C:\\Games\\MTM2");
    EXPECT_EQ(rig.session.locationIni, "C:\\Games\\MTM2\\POD.INI");
    EXPECT_EQ(rig.session.mmpa, "99");
    EXPECT_TRUE(rig.session.configurator);
    EXPECT_EQ(rig.session.shortGameFolder.back(), '\\');
    // Autosave values stay as read on this start even though the store was repaired.
    EXPECT_EQ(rig.session.asPod, "Error");
    EXPECT_EQ(rig.profile("MTM2", settings::kAsPod), "0");
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
}

TEST(Startup, welcomesAFirstUserAndEndsWhenTheDialogIsClosedWithoutLoading) {
    StartupRig rig;
    rig.chooser.play = [](GameProfiles&) {};
    EXPECT_EQ(rig.startup.Main(), StartupResult::Terminate);
    ASSERT_EQ(rig.drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(rig.drive.dialogs().lastMessage().title, "Information");
    EXPECT_TRUE(rig.drive.dialogs().lastMessage().text.startsWith("Welcome! Since this is your first time"));
    EXPECT_EQ(rig.chooser.shown, 1);
}

TEST(Startup, firstUserAddsAndLoadsAProfileThenGetsBackupsAndTheReminderOnce) {
    StartupRig rig;
    buildGameFolder(rig.drive, GameLayout{});
    rig.drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"}).typeInput(QStringLiteral("MTM2"));
    rig.chooser.play = [](GameProfiles& logic) {
        ASSERT_EQ(logic.AddGame(false), GameProfiles::AddOutcome::Added);
        logic.Load();
    };
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.program(settings::kInstalledGames), "MTM2");
    EXPECT_EQ(rig.drive.read("C:\\Games\\MTM2\\backup\\POD.INI"), rig.drive.read("C:\\Games\\MTM2\\POD.INI"));
    const QStringList texts = rig.drive.dialogs().messageTexts();
    ASSERT_EQ(texts.size(), 3); // welcome, backups, reminder
    EXPECT_TRUE(texts[1].startsWith("Bear in mind"));
    EXPECT_EQ(rig.drive.dialogs().lastMessage().title, "Reminder");
    EXPECT_EQ(rig.drive.dialogs().lastMessage().icon, MessageIcon::Exclamation);
    EXPECT_EQ(rig.profile("MTM2", settings::kFirstRun), "0");
}

TEST(Startup, secondStartShowsNeitherBackupsNorReminder) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2", false);
    rig.setList("MTM2");
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.drive.dialogs().messages().size(), 2u);
    rig.drive.dialogs().clear();
    Session fresh;
    Startup again(rig.drive.services(), rig.store, fresh, rig.chooser, rig.association);
    ASSERT_EQ(again.Main(), StartupResult::ShowMainWindow);
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
    // The autosave values read on this start are the defaults written on the first.
    EXPECT_EQ(fresh.asPod, "0");
}

TEST(Startup, profileNameOnTheCommandLineMustMatchExactly) {
    StartupRig rig;
    rig.addProfile("mtm2", "C:\\Games\\MTM2");
    rig.addProfile("4x4", "C:\\Games\\4x4");
    rig.setList("4x4|mtm2");
    EXPECT_EQ(rig.startup.Main("MTM2"), StartupResult::Terminate);
    EXPECT_EQ(rig.drive.dialogs().lastMessage().text, kInvalidGame);
    EXPECT_EQ(rig.drive.dialogs().lastMessage().title, "Unexpected Error");
    EXPECT_EQ(rig.drive.dialogs().lastMessage().icon, MessageIcon::Critical);

    Session session;
    Startup exact(rig.drive.services(), rig.store, session, rig.chooser, rig.association);
    ASSERT_EQ(exact.Main("mtm2"), StartupResult::ShowMainWindow);
    EXPECT_EQ(session.currentGame, "mtm2");
    EXPECT_TRUE(session.configurator); // the Monster Truck Madness 2 names ignore case
    EXPECT_EQ(rig.chooser.shown, 0);
}

TEST(Startup, quotedArchivePathPicksTheProfileNamedByAFolderElseTheFirst) {
    for (const auto& [list, expected] : {std::pair{"4x4|MTM2", "MTM2"}, std::pair{"A|B", "A"}}) {
        StartupRig rig;
        rig.addProfile("4x4", "C:\\Games\\4x4");
        rig.addProfile("MTM2", "C:\\Games\\MTM2");
        rig.addProfile("A", "C:\\Games\\A");
        rig.addProfile("B", "C:\\Games\\B");
        rig.setList(list);
        ASSERT_EQ(rig.startup.Main("\"C:\\Games\\MTM2\\Data\\x.pod\""), StartupResult::ShowMainWindow);
        EXPECT_EQ(rig.session.currentGame, expected);
        EXPECT_EQ(rig.session.openedFolder, "C:\\Games\\MTM2\\Data\\");
        EXPECT_EQ(rig.session.openedFile, "x.pod");
        EXPECT_EQ(rig.chooser.shown, 0);
    }
}

TEST(Startup, switchingGamesShowsTheDialogAndIgnoresTheCommandLine) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    ASSERT_EQ(rig.startup.Main("\"C:\\Games\\MTM2\\x.pod\""), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.session.openedFile, "x.pod");
    ASSERT_EQ(rig.startup.switchGame(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.chooser.shown, 1); // the sole-profile rule no longer applies
    EXPECT_TRUE(rig.session.openedFolder.empty());
    EXPECT_TRUE(rig.session.openedFile.empty());
    EXPECT_EQ(rig.session.currentGame, "MTM2");
    rig.chooser.play = [](GameProfiles& logic) { logic.Exit(); };
    EXPECT_EQ(rig.startup.Main("Other"), StartupResult::Terminate);
    EXPECT_EQ(rig.chooser.shown, 2);
}

TEST(Startup, repairsInvalidSettingsInTheStoreAndKeepsValidOnes) {
    struct Case {
        std::string_view name;
        std::string stored;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {settings::kSlider, "739", "3060"},  {settings::kSlider, "5381", "3060"},  {settings::kSlider, "740", "740"},
        {settings::kSlider, "5380", "5380"}, {settings::kSlider, "Error", "3060"}, {settings::kSlider, "12abc", "3060"},
        {settings::kLeft, "-1", "915"},      {settings::kLeft, "0", "0"},          {settings::kTop, "x", "1200"},
        {settings::kLogo, "4", "1"},         {settings::kScreen, "m", "M"},        {settings::kScreen, "E", "E"},
        {settings::kLock, "3", "3"},         {settings::kLock, "4", "0"},          {settings::kSlide, "2", "1"},
        {settings::kAutosort, "0", "0"},     {settings::kAsExit, "1", "1"},        {settings::kFlat, "yes", "0"},
    };
    for (const Case& c : cases) {
        StartupRig rig;
        rig.addProfile("MTM2", "C:\\Games\\MTM2");
        rig.setList("MTM2");
        rig.store.writeProfile("MTM2", c.name, c.stored);
        ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
        EXPECT_EQ(rig.profile("MTM2", c.name), c.expected) << c.name << " = " << c.stored;
    }
}

TEST(Startup, writesTheDefaultsOfAFreshProfile) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.profile("MTM2", settings::kBrowseDir), "C:\\Games\\MTM2");
    EXPECT_EQ(rig.drive.registry().readValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2", "ExtraDirs"),
              std::string(1, '\0'));
    EXPECT_EQ(rig.profile("MTM2", settings::kScreen), "M");
    EXPECT_EQ(rig.profile("MTM2", settings::kSlide), "1");
    EXPECT_EQ(rig.profile("MTM2", settings::kLeft), "915");
    EXPECT_EQ(rig.profile("MTM2", settings::kTop), "1200");
    EXPECT_EQ(rig.program(settings::kTrackList), std::string(kDefaultTrackList));

    rig.store.writeProgram(settings::kTrackList, "Mine|Race|x.zip");
    rig.store.writeProfile("MTM2", settings::kBrowseDir, "D:\\Elsewhere");
    Session again;
    ASSERT_EQ(Startup(rig.drive.services(), rig.store, again, rig.chooser, rig.association).Main(),
              StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.program(settings::kTrackList), "Mine|Race|x.zip");
    EXPECT_EQ(rig.profile("MTM2", settings::kBrowseDir), "D:\\Elsewhere");
}

TEST(Startup, damagedProfileEndsTheProgramButAMissingConfiguratorDoesNot) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    rig.drive.registry().writeValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2", "Configurator", "");
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);

    StartupRig broken;
    broken.addProfile("MTM2", "C:\\Games\\MTM2");
    broken.setList("MTM2");
    // A profile key without MMPA: its files exist, so no re-locate takes place.
    broken.drive.registry().createKey(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\Bare");
    broken.store.writeProfile("Bare", settings::kLocation, "C:\\Games\\MTM2");
    broken.store.writeProfile("Bare", settings::kLocationIni, "C:\\Games\\MTM2\\POD.INI");
    broken.store.writeProfile("Bare", settings::kLocationExe, "C:\\Games\\MTM2\\monster.exe");
    broken.setList("Bare");
    EXPECT_EQ(broken.startup.Main(), StartupResult::Terminate);
    EXPECT_EQ(broken.drive.dialogs().lastMessage().text,
              "Sorry, but your Korvel game configuration data has been corrupted. Fear not, though -- to recover, all "
              "you need to do is reload Korvel, remove Bare from the Game Profiles list, and re-add it.");
    EXPECT_EQ(broken.drive.dialogs().lastMessage().title, "Unexpected Error");
    // Nothing was backed up for a profile that never started.
    EXPECT_FALSE(broken.drive.exists("C:\\Games\\MTM2\\backup"));
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
    // The re-locate form never writes the profiles list.
    EXPECT_EQ(rig.program(settings::kInstalledGames), "MTM2");

    StartupRig cancel;
    cancel.addProfile("MTM2", "C:\\Games\\MTM2");
    cancel.setList("MTM2");
    cancel.drive.remove("C:\\Games\\MTM2\\monster.exe");
    EXPECT_EQ(cancel.startup.Main(), StartupResult::Terminate);
    EXPECT_EQ(cancel.drive.dialogs().lastMessage().text, "Couldn't find MTM2! Terminating!");
    EXPECT_EQ(cancel.drive.dialogs().lastMessage().title, "Fatal Error");
}

TEST(Startup, appliesTheAssociationSetting) {
    const std::string classes = "HKEY_CLASSES_ROOT";
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.setList("MTM2");
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.program(settings::kAssociate), "0");
    EXPECT_FALSE(rig.drive.registry().keyExists(RegistryRoot::ClassesRoot, ".pod"));

    rig.store.writeProgram(settings::kAssociate, "1");
    Session second;
    ASSERT_EQ(Startup(rig.drive.services(), rig.store, second, rig.chooser, rig.association).Main(),
              StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.store.ReadValue(classes + "\\.pod", ""), "Korvel");
    EXPECT_EQ(rig.store.ReadValue(classes + "\\Korvel\\shell\\open\\command", ""), "\"C:\\Tools\\Korvel.exe\" \"%1\"");

    rig.store.writeProgram(settings::kAssociate, "0");
    Session third;
    ASSERT_EQ(Startup(rig.drive.services(), rig.store, third, rig.chooser, rig.association).Main(),
              StartupResult::ShowMainWindow);
    // Unregistering leaves the keys behind.
    EXPECT_EQ(rig.store.ReadValue(classes + "\\.pod", ""), "Korvel");
    EXPECT_EQ(rig.store.ReadValue(classes + "\\Korvel", ""), "Gravlen Forge POD File");
}

TEST(RequestFromArguments, quotesAnExistingFileAndJoinsAnythingElse) {
    TempDrive drive;
    drive.write("C:\\Games\\MTM2\\My Track.pod", "POD2");
    EXPECT_EQ(requestFromArguments({drive.host("C:\\Games\\MTM2\\My Track.pod")}, drive.paths()),
              "\"C:\\Games\\MTM2\\My Track.pod\"");
    EXPECT_EQ(requestFromArguments({"Monster", "Truck", "Madness", "2"}, drive.paths()), "Monster Truck Madness 2");
    EXPECT_EQ(requestFromArguments({}, drive.paths()), "");
}

TEST(Startup, archiveOpenedBeforeAnyProfileExistsWaitsForTheFirstProfile) {
    StartupRig rig;
    buildGameFolder(rig.drive, GameLayout{});
    rig.drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"}).typeInput(QStringLiteral("MTM2"));
    rig.chooser.play = [](GameProfiles& logic) {
        logic.AddGame(false);
        logic.Load();
    };
    ASSERT_EQ(rig.startup.Main("\"C:\\Downloads\\track.pod\""), StartupResult::ShowMainWindow);
    EXPECT_TRUE(rig.drive.dialogs().messageTexts().front().startsWith("Welcome!"));
    EXPECT_EQ(rig.session.currentGame, "MTM2");
    EXPECT_EQ(rig.session.openedFolder, "C:\\Downloads\\");
    EXPECT_EQ(rig.session.openedFile, "track.pod");
}
