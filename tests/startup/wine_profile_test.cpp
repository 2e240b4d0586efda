#include "fake_wine.h"
#include "platform/game_codec.h"
#include "platform/game_text.h"
#include "startup/backups.h"
#include "startup_fixture.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(GameProfiles, shiftAddTakesHostPathsAndRefusesNamesOutsideTheCodePage) {
    ScopedGameCodec western(GameCodec{});
    StartupRig rig;
    rig.drive.write("C:\\Games\\Evo\\4x4.exe", "MZ");
    GameProfiles logic(rig.store, rig.drive.files(), rig.drive.dialogs(), rig.session);
    logic.open();
    logic.setAddShiftState(1);
    rig.drive.dialogs().typeInput(rig.drive.root() + "/games/EVO/4x4.exe").typeInput(QStringLiteral("Evo"));
    ASSERT_EQ(logic.AddGame(false), GameProfiles::AddOutcome::Added);
    EXPECT_EQ(rig.profile("Evo", settings::kLocationExe), "C:\\games\\EVO\\4x4.exe");

    rig.drive.dialogs().typeInput(rig.drive.root() + "/Games/Evo/4x4.exe").typeInput(QStringLiteral("Гонки"));
    EXPECT_EQ(logic.AddGame(false), GameProfiles::AddOutcome::Unchanged);
    EXPECT_TRUE(rig.lastMessage().text.contains("\"Гонки\" cannot be written in the game's code page (windows-1252)"));
    EXPECT_EQ(logic.games().size(), 1u);
}

TEST(GameProfiles, shiftAddFindsACyrillicGameFolderInItsCodePage) {
    ScopedGameCodec cyrillic(*GameCodec::forCodePage(1251));
    StartupRig rig;
    const std::string folder = *encodeGameText(QStringLiteral("C:\\Игры\\Монстры"));
    rig.drive.write(folder + "\\MONSTER.EXE", "MZ");
    GameProfiles logic(rig.store, rig.drive.files(), rig.drive.dialogs(), rig.session);
    logic.open();
    logic.setAddShiftState(1);
    rig.drive.dialogs()
        .typeInput(QStringLiteral("c:\\игры\\монстры\\monster.exe"))
        .typeInput(QStringLiteral("Грузовики"));
    ASSERT_EQ(logic.AddGame(false), GameProfiles::AddOutcome::Added);
    const std::string name = *encodeGameText(QStringLiteral("Грузовики"));
    EXPECT_EQ(rig.profile(name, settings::kLocation), *encodeGameText(QStringLiteral("c:\\игры\\монстры")));
}

TEST(Startup, makesTheProfilesCodePageTheActiveOneAndReportsAnUnknownOne) {
    ScopedGameCodec restore(GameCodec{});
    ScopedEnvironment noOverride("KORVEL_CODEPAGE", QByteArray());
    StartupRig rig;
    rig.addProfile("MTM2", "C:\\Games\\MTM2");
    rig.store.writeProfile("MTM2", settings::kCodePage, "cp1250");
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    EXPECT_EQ(GameCodec::active().codePage(), 1250);

    rig.store.writeProfile("MTM2", settings::kCodePage, "1251");
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    EXPECT_EQ(GameCodec::active().codePage(), 1251);

    rig.store.writeProfile("MTM2", settings::kCodePage, "cp9999");
    const size_t before = rig.drive.dialogs().messages().size();
    ASSERT_EQ(rig.relaunch(), StartupResult::ShowMainWindow);
    ASSERT_GT(rig.drive.dialogs().messages().size(), before);
    EXPECT_TRUE(rig.drive.dialogs().messages()[before].text.contains("\"cp9999\""));
    EXPECT_NE(GameCodec::active().codePage(), 1251); // back to the system's
}

TEST(RepairGameRegistry, importsTheValuesIntoTheWinePrefixAndSaysWhere) {
    QTemporaryDir work;
    ScopedEnvironment wine("KORVEL_WINE", writeFakeWine(work).toUtf8());
    ScopedEnvironment prefix("WINEPREFIX", work.filePath("prefix").toUtf8());
    TempDrive drive;
    SettingsStore store(drive.registry(), drive.dialogs());
    Session session;
    drive.dialogs().chooseFiles({"C:\\Games\\MTM \"2\"\\monster.exe"});
    ASSERT_TRUE(RepairGameRegistry(store, drive.dialogs(), session.location, drive.paths(), work.filePath("reg")));

    const QString regFile = work.filePath("reg/mtm2-registry.reg");
    const QStringList args = QString::fromUtf8(readFile(work.filePath("wine-args"))).split('\n');
    EXPECT_EQ(args.mid(0, 3), (QStringList{work.filePath("prefix"), "regedit", "/S"}));
    const QString text = fromUtf16File(readFile(work.filePath("imported.reg")));
    EXPECT_TRUE(text.startsWith("Windows Registry Editor Version 5.00\r\n"));
    EXPECT_TRUE(
        text.contains("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0]\r\n"
                      "\"Version\"=\"2.0\"\r\n"));
    EXPECT_TRUE(text.contains("\"InstalledPath\"=\"C:\\\\Games\\\\MTM \\\"2\\\"\"\r\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("\"CurrentDirectory\"=\"C:\\\\Games\\\\MTM \\\"2\\\"\"\r\n\"Path\"=\"C:"));
    EXPECT_EQ(drive.dialogs().lastMessage().icon, MessageIcon::Information);
    EXPECT_TRUE(drive.dialogs().lastMessage().text.contains(work.filePath("prefix")));

    // Without Wine the values stay in the offered file.
    ScopedEnvironment noWine("KORVEL_WINE", work.filePath("missing-wine").toUtf8());
    drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"});
    ASSERT_TRUE(RepairGameRegistry(store, drive.dialogs(), session.location, drive.paths(), work.filePath("reg")));
    EXPECT_EQ(drive.dialogs().lastMessage().icon, MessageIcon::Exclamation);
    EXPECT_TRUE(drive.dialogs().lastMessage().text.contains("Wine was not found"));
    EXPECT_TRUE(drive.dialogs().lastMessage().text.contains(regFile));
    EXPECT_TRUE(fromUtf16File(readFile(regFile)).contains("\"InstalledPath\"=\"C:\\\\Games\\\\MTM2\""));
}

TEST(RepairGameRegistry, leavesTheWinePrefixAloneWhereTheStoreIsTheRegistry) {
    QTemporaryDir work;
    ScopedEnvironment wine("KORVEL_WINE", writeFakeWine(work).toUtf8());
    TempDrive drive;
    SettingsStore store(drive.registry(), drive.dialogs());
    Session session;
    const PathMap windows(true);
    drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"});
    ASSERT_TRUE(RepairGameRegistry(store, drive.dialogs(), session.location, windows, work.filePath("reg")));
    EXPECT_FALSE(QFile::exists(work.filePath("wine-args")));
    EXPECT_TRUE(drive.dialogs().messages().empty());
}
