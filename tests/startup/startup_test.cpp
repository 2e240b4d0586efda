#include "fake_wine.h"
#include "platform/game_codec.h"
#include "startup/default_track_list.h"
#include "startup/version_text.h"
#include "startup_fixture.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

TEST(VersionText, keepsTheLastTwoDigitsOfAThreeDigitMinorOnly) {
    EXPECT_EQ(VersionText(1, 5, 12), "1.5 Build 12");
    EXPECT_EQ(VersionText(1, 105, 12), "1.05 Build 12");
    EXPECT_EQ(VersionText(2, 15, 0), "2.15 Build 0");
}

TEST(Startup, loadsTheSoleProfileWithoutTheDialogAndRepairsOnlyTheStore) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.chooser.shown, 0);
    EXPECT_FALSE(rig.session.autosave.pod);                // missing reads as off...
    EXPECT_EQ(rig.profile("MTM2", settings::kAsPod), "0"); // ...and is repaired in the store
    EXPECT_EQ(rig.program(settings::kTrackList), std::string(kDefaultTrackList));
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
    for (auto name : {settings::kAsPod, settings::kAsExit})
        rig.store.writeProfile("MTM2", name, "1");
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    EXPECT_TRUE(rig.session.autosave.podOnExit());
    EXPECT_FALSE(rig.session.autosave.onChange);
}

TEST(Startup, firstUserIsWelcomedAndFirstStartOfAProfileMakesBackupsAndRemindsOnce) {
    StartupRig rig;
    rig.chooser.play = [](GameProfiles&) {};
    EXPECT_EQ(rig.startup.Main(), StartupResult::Terminate); // the dialog was closed
    GameLayout layout;
    layout.monsterIni = false;
    buildGameFolder(rig.drive, layout);
    rig.drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"}).typeInput(QStringLiteral("MTM2"));
    rig.chooser.play = [](GameProfiles& logic) { logic.AddGame(false), logic.load(); };
    ASSERT_EQ(rig.relaunch("\"C:\\Downloads\\track.pod\""), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.session.openedFile, "track.pod"); // opened once the first profile exists
    EXPECT_EQ(rig.drive.read("C:\\Games\\MTM2\\backup\\player.pro"), samplePlayerPro());
    EXPECT_FALSE(rig.drive.exists("C:\\Games\\MTM2\\backup\\monster.ini"));
    const QStringList texts = rig.drive.dialogs().messageTexts();
    ASSERT_EQ(texts.size(), 4);
    EXPECT_TRUE(texts[0].startsWith("Welcome! Since this is your first time using Korvel, you must add"));
    EXPECT_TRUE(texts[2].endsWith("have been copied to \"C:\\Games\\MTM2\\backup\" just in case."));
    EXPECT_EQ(rig.lastMessage().title, "Reminder");
    rig.drive.dialogs().clear();
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
}

TEST(Startup, picksTheProfileFromTheCommandLine) {
    StartupRig rig;
    for (const char* name : {"4x4", "mtm2", "A"})
        rig.addProfile(name, std::string("C:\\Games\\") + name);
    rig.setList("4x4|mtm2");
    // Without a command line, two profiles are offered in the dialog; the list is no profile's name.
    ASSERT_EQ(rig.startup.Main(), StartupResult::ShowMainWindow);
    EXPECT_EQ(rig.chooser.shown, 1);
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
    EXPECT_EQ(rig.relaunch("MTM2"), StartupResult::Terminate); // case matters
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
}

TEST(Startup, replacesInvalidSettingsWithTheirDefaults) {
    using namespace settings;
    const std::tuple<std::string_view, std::string, std::string> cases[] = {
        {kSlider, "739", "3060"},   {kSlider, "5381", "3060"}, {kSlider, "740", "740"}, {kSlider, "5380", "5380"},
        {kSlider, "12abc", "3060"}, {kLeft, "-1", "915"},      {kLeft, "0", "0"},       {kTop, "x", "1200"},
        {kScreen, "m", "M"},        {kLock, "3", "3"},         {kLock, "4", "0"},       {kSlide, "2", "1"}};
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    for (const auto& [name, stored, expected] : cases) {
        rig.store.writeProfile("MTM2", name, stored);
        ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
        EXPECT_EQ(rig.profile("MTM2", name), expected) << name << " = " << stored;
    }
}

TEST(Startup, makesTheProfilesCodePageTheActiveOneAndReportsAnUnknownOne) {
    ScopedGameCodec restore(GameCodec{});
    ScopedEnvironment noOverride("KORVEL_CODEPAGE", QByteArray());
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    for (const auto& [stored, active] : {std::pair{"cp1250", 1250}, {"1251", 1251}}) {
        rig.store.writeProfile("MTM2", settings::kCodePage, stored);
        ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
        EXPECT_EQ(GameCodec::active().codePage(), active);
    }
    rig.store.writeProfile("MTM2", settings::kCodePage, "cp9999");
    const size_t before = rig.drive.dialogs().messages().size();
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    ASSERT_GT(rig.drive.dialogs().messages().size(), before);
    EXPECT_TRUE(rig.drive.dialogs().messages()[before].text.contains("\"cp9999\""));
    EXPECT_NE(GameCodec::active().codePage(), 1251); // back to the system's
}

TEST(Startup, endsWhenRelocatingAGameWhoseFilesAreGoneIsCancelled) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.drive.remove("C:\\Games\\MTM2\\POD.INI");
    EXPECT_EQ(rig.startup.Main(), StartupResult::Terminate); // nothing chosen
    EXPECT_EQ(rig.lastMessage().text, "Couldn't find MTM2! Terminating!");
}

TEST(Startup, endsOnADamagedProfileBeforeMakingBackups) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2", false);
    rig.drive.registry().writeValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2", "MMPA", "Error");
    // The sole profile: the message, then the profiles dialog once; loading the same damaged
    // profile from it again ends start-up after the message.
    EXPECT_EQ(rig.startup.Main(), StartupResult::Terminate);
    EXPECT_EQ(rig.chooser.shown, 1);
    EXPECT_EQ(rig.drive.dialogs().messages().size(), 2u);
    EXPECT_EQ(rig.lastMessage().text, "Sorry, but your Korvel game configuration data has been corrupted. Fear not, "
                                      "though -- to recover, all you need to do is reload Korvel, remove MTM2 from "
                                      "the Game Profiles list, and re-add it.");
    EXPECT_FALSE(rig.drive.exists("C:\\Games\\MTM2\\backup"));
    // With another profile listed, the message ends start-up at once (the next start asks).
    rig.addProfile("4x4", "C:\\Games\\4x4", false);
    rig.setList("MTM2|4x4");
    rig.drive.dialogs().clear();
    EXPECT_EQ(rig.relaunch("MTM2"), StartupResult::Terminate);
    EXPECT_EQ(rig.chooser.shown, 1);
    EXPECT_EQ(rig.drive.dialogs().messages().size(), 1u);
}

TEST(FileAssociation, registersAtStartupAndUnregisteringLeavesTheKeys) {
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    for (const char* associate : {"1", "0"}) {
        rig.store.writeProgram(settings::kAssociate, associate);
        ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
        EXPECT_EQ(rig.store.ReadValue("HKEY_CLASSES_ROOT\\Korvel\\shell\\open\\command", ""),
                  "\"C:\\Tools\\Korvel.exe\" \"%1\"");
        EXPECT_EQ(rig.store.ReadValue("HKEY_CLASSES_ROOT\\.pod", ""), "Korvel");
    }
}

TEST(FileAssociation, claimsGameArchivesByTheirSignatureLeavesPerlDocumentationAloneAndUnregistersWholly) {
    StartupRig rig;
    QTemporaryDir home;
    FileAssociation association(rig.store, rig.drive.paths(), {"/opt/My \"Tools\"/korvel", true, home.path(), true});
    association.associate();
    const QByteArray entry = fileBytes(association.desktopEntryPath());
    EXPECT_TRUE(entry.contains("Exec=\"/opt/My \\\\\"Tools\\\\\"/korvel\" %f\n"));
    EXPECT_TRUE(entry.contains("MimeType=application/x-pod-archive;"));
    const QByteArray xml = fileBytes(association.mimePackagePath());
    EXPECT_TRUE(xml.contains("<match type=\"string\" value=\"POD2\" offset=\"0\"/>"));
    const QRegularExpressionMatch glob = QRegularExpression("glob pattern=\"\\*\\.pod\" weight=\"(\\d+)\"").match(xml);
    ASSERT_TRUE(glob.hasMatch());
    EXPECT_LT(glob.captured(1).toInt(), 50); // the default weight of Perl's "*.pod"

    const bool tools = !QStandardPaths::findExecutable("update-mime-database").isEmpty();
    if (tools) {
        EXPECT_TRUE(fileBytes(home.filePath("mime/globs2")).contains(":application/x-pod-archive:*.pod"));
    }
    const QString gio = QStandardPaths::findExecutable("gio");
    if (tools && !gio.isEmpty()) {
        const auto contentType = [&](const QString& name, const QByteArray& bytes) {
            QFile file(home.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
            file.close();
            QProcess process;
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert("XDG_DATA_HOME", home.path());
            process.setProcessEnvironment(environment);
            process.start(gio, {"info", "-a", "standard::content-type", file.fileName()});
            process.waitForFinished(20000);
            return QString::fromUtf8(process.readAllStandardOutput()).section("content-type: ", 1).trimmed();
        };
        EXPECT_EQ(contentType("TRUCKS.POD", QByteArray("POD2\0\0\0\0", 8) + QByteArray(80, 'x')),
                  "application/x-pod-archive");
        EXPECT_NE(contentType("perlfunc.pod", "=head1 NAME\n\nperlfunc - Perl builtin functions\n\n=cut\n"),
                  "application/x-pod-archive");
    }
    association.dissociate();
    EXPECT_FALSE(QFile::exists(association.mimePackagePath()));
    EXPECT_FALSE(QFile::exists(association.desktopEntryPath()));
    EXPECT_FALSE(fileBytes(home.filePath("mime/globs2")).contains("application/x-pod-archive"));
}
