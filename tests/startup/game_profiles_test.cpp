#include "fake_wine.h"
#include "full_disk.h"
#include "platform/game_codec.h"
#include "platform/game_text.h"
#include "startup/backups.h"
#include "startup_fixture.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

TEST(GameProfiles, addProposesTheFolderNameAndWritesTheProfile) {
    ProfilesRig rig;
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

TEST(GameProfiles, namesTheStoreCouldNotKeepAreRefusedAtThePromptWhichAsksAgain) {
    ProfilesRig rig;
    const struct {
        QString typed;
        const char* said; // the refusal's reason; nullptr: accepted
    } names[] = {{QStringLiteral("4x4|Evo"), "cannot hold \"|\""},
                 {QStringLiteral("Games\\"), "cannot end with \"\\\""},
                 // Alone in the list this name would just fit; beside "first" the list would not read back.
                 {QString(2549, QLatin1Char('n')), "too long"},
                 {QStringLiteral("4x4\\Evo"), nullptr}};
    rig.add("D:\\Games\\4x4\\4x4.exe", QStringLiteral("first"));
    rig.drive.dialogs().clear();
    rig.drive.dialogs().chooseFiles({"D:\\Games\\4x4\\4x4.exe"});
    for (const auto& name : names)
        rig.drive.dialogs().typeInput(name.typed);
    ASSERT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Added);
    const auto& asked = rig.drive.dialogs().asked();
    ASSERT_EQ(asked.size(), 5u); // the file, then the name four times
    const auto& shown = rig.drive.dialogs().messages();
    ASSERT_EQ(shown.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(shown[i].text.contains(QString::fromLatin1(names[i].said))) << shown[i].text.toStdString();
        EXPECT_EQ(asked[i + 2].proposal, names[i].typed); // the refused name is offered for correction
    }
    EXPECT_EQ(rig.logic.games(), (std::vector<std::string>{"first", "4x4\\Evo"}));
    EXPECT_FALSE(rig.drive.registry().keyExists(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\4x4|Evo"));
    // Cancelling the prompt after a refusal adds nothing.
    EXPECT_EQ(rig.add("D:\\Games\\4x4\\4x4.exe", QStringLiteral("a|b")), GameProfiles::AddOutcome::Unchanged);
    EXPECT_EQ(rig.logic.games().size(), 2u);
}

TEST(GameProfiles, shiftAddChecksTheTypedPathTakesHostPathsAndRefusesNamesOutsideTheCodePage) {
    ScopedGameCodec western(GameCodec{});
    ProfilesRig rig;
    rig.drive.write("C:\\Games\\Evo\\4x4.exe", "MZ");
    rig.logic.setAddShiftState(1);
    rig.drive.dialogs().typeInput(QStringLiteral("C:\\Games\\Evo\\missing.exe"));
    EXPECT_EQ(rig.logic.AddGame(false), GameProfiles::AddOutcome::Unchanged);
    EXPECT_EQ(rig.lastMessage().title, "Read Error");
    EXPECT_EQ(rig.lastMessage().text, "File not found!");
    EXPECT_EQ(rig.addTyped("c:\\games\\evo\\4X4.EXE", "Evo"), GameProfiles::AddOutcome::Added);
    EXPECT_EQ(rig.addTyped(rig.drive.root() + "/games/EVO/4x4.exe", "Host"), GameProfiles::AddOutcome::Added);
    EXPECT_EQ(rig.profile("Host", settings::kLocationExe), "C:\\games\\EVO\\4x4.exe");
    EXPECT_EQ(rig.addTyped(rig.drive.root() + "/Games/Evo/4x4.exe", "Гонки"), GameProfiles::AddOutcome::Unchanged);
    EXPECT_TRUE(rig.lastMessage().text.contains("\"Гонки\" cannot be written in the game's code page (windows-1252)"));
    EXPECT_EQ(rig.logic.games().size(), 2u);
}

TEST(GameProfiles, loadAndExitSaveTheWorkingListRemoveDoesNot) {
    ProfilesRig rig;
    rig.add("C:\\Games\\MTM2\\monster.exe", QStringLiteral("MTM2"));
    rig.add("C:\\Games\\MTM2\\monster.exe", QStringLiteral("MTM2"));
    rig.logic.select(1);
    ASSERT_TRUE(rig.logic.load());
    EXPECT_EQ(rig.program(settings::kInstalledGames), "MTM2|MTM2");

    rig.setList("A|B");
    rig.logic.open();
    rig.logic.select(1);
    rig.logic.remove();
    EXPECT_EQ(rig.logic.games(), std::vector<std::string>{"A"});
    EXPECT_EQ(rig.program(settings::kInstalledGames), "A|B");
    rig.logic.select(0);
    rig.logic.remove();
    EXPECT_FALSE(rig.logic.loadEnabled());
    rig.logic.exit();
    EXPECT_EQ(rig.program(settings::kInstalledGames), "Error");
    EXPECT_EQ(rig.profile("MTM2", settings::kLocation), "C:\\Games\\MTM2"); // removed profiles keep their values
}

// Where the store is the registry, the values are written there; under Wine they are imported into
// the prefix, or left in the offered file when Wine is missing.
TEST(RepairGameRegistry, writesBothKeysForTheChosenFolderOrImportsThemIntoTheWinePrefix) {
    QTemporaryDir work;
    ScopedEnvironment wine("KORVEL_WINE", writeFakeWine(work).toUtf8());
    ScopedEnvironment prefix("WINEPREFIX", work.filePath("prefix").toUtf8());
    TempDrive drive;
    SettingsStore store(drive.registry(), drive.dialogs());
    std::string location = "C:\\Games\\MTM2";
    const PathMap windows(true);
    EXPECT_FALSE(RepairGameRegistry(store, drive.dialogs(), location, windows, work.filePath("reg"))); // cancelled
    EXPECT_FALSE(drive.registry().keyExists(RegistryRoot::LocalMachine, "SOFTWARE\\Microsoft"));
    drive.dialogs().chooseFiles({"E:\\MTM2\\monster.exe"});
    EXPECT_EQ(RepairGameRegistry(store, drive.dialogs(), location, windows, work.filePath("reg")), "E:\\MTM2");
    const std::string game = "SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0";
    const std::string lobby = "SOFTWARE\\Microsoft\\DirectPlay\\Applications\\Monster Truck Madness 2";
    for (const auto& [key, name] : {std::pair{game, "InstalledPath"}, {lobby, "CurrentDirectory"}, {lobby, "Path"}})
        EXPECT_EQ(drive.registry().readValue(RegistryRoot::LocalMachine, key, name), "E:\\MTM2") << name;
    EXPECT_EQ(drive.registry().readValue(RegistryRoot::LocalMachine, lobby, "CommandLine"), "");
    EXPECT_FALSE(QFile::exists(work.filePath("wine-args"))); // the prefix is left alone
    EXPECT_TRUE(drive.dialogs().messages().empty());

    drive.dialogs().chooseFiles({"C:\\Games\\MTM \"2\"\\monster.exe"});
    ASSERT_TRUE(RepairGameRegistry(store, drive.dialogs(), location, drive.paths(), work.filePath("reg")));
    const QStringList args = QString::fromUtf8(fileBytes(work.filePath("wine-args"))).split('\n');
    EXPECT_EQ(args.mid(0, 3), (QStringList{work.filePath("prefix"), "regedit", "/S"}));
    const QString text = fromUtf16File(fileBytes(work.filePath("imported.reg")));
    EXPECT_TRUE(text.startsWith("Windows Registry Editor Version 5.00\r\n"));
    EXPECT_TRUE(text.contains("[HKEY_LOCAL_MACHINE\\" + QString::fromStdString(game) + "]\r\n\"Version\"=\"2.0\"\r\n"));
    EXPECT_TRUE(text.contains("\"InstalledPath\"=\"C:\\\\Games\\\\MTM \\\"2\\\"\"\r\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("\"CurrentDirectory\"=\"C:\\\\Games\\\\MTM \\\"2\\\"\"\r\n\"Path\"=\"C:"));
    EXPECT_EQ(drive.dialogs().lastMessage().icon, MessageIcon::Information);
    EXPECT_TRUE(drive.dialogs().lastMessage().text.contains(work.filePath("prefix")));

    ScopedEnvironment noWine("KORVEL_WINE", work.filePath("missing-wine").toUtf8());
    drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"});
    ASSERT_TRUE(RepairGameRegistry(store, drive.dialogs(), location, drive.paths(), work.filePath("reg")));
    const QString regFile = work.filePath("reg/mtm2-registry.reg");
    EXPECT_EQ(drive.dialogs().lastMessage().icon, MessageIcon::Exclamation);
    EXPECT_TRUE(drive.dialogs().lastMessage().text.contains("Wine was not found"));
    EXPECT_TRUE(drive.dialogs().lastMessage().text.contains(regFile));
    EXPECT_TRUE(fromUtf16File(fileBytes(regFile)).contains("\"InstalledPath\"=\"C:\\\\Games\\\\MTM2\""));
}

namespace {

// One start that backs up the game folder C:\Games\MTM2: what the backup folder held before and
// should hold after, and what the message says.
struct BackupCase {
    const char* name;
    std::vector<std::pair<std::string, std::string>> before; // backup folder: name, content
    std::vector<std::pair<std::string, std::string>> after;
    std::vector<std::string> absent;
    std::vector<QString> said;
    std::vector<QString> notSaid;
};

const std::string kOldIni = "1\r\nOLD.POD\r\n";
const std::string kGameIni = "3\r\nTRUCKS.POD\r\nADDON\\MYTRACK.POD\r\nMISSING.POD\r\n"; // buildGameFolder's
const QString kInFolder = QStringLiteral(" have been copied to \"C:\\Games\\MTM2\\backup\" just in case.");

} // namespace

TEST(MakeBackups, keepsEveryEarlierBackupAndReportsWhatWasCopied) {
    const std::string pro = samplePlayerPro(), ini = sampleMonsterIni();
    const BackupCase cases[] = {
        {"first backups",
         {},
         {{"POD.INI", kGameIni}, {"player.pro", pro}, {"monster.ini", ini}},
         {"POD-2026-11-23.INI"},
         {QStringLiteral("Bear in mind that, like any other piece of software, Korvel may not be perfect. To "
                         "ensure that no harm comes to your game installation, backups of your key files "
                         "(POD.INI, player.pro, and monster.ini)") +
          kInFolder},
         {QStringLiteral("kept"), QStringLiteral("already")}},
        {"earlier different copies are kept and dated ones written",
         {{"POD.INI", kOldIni}, {"player.pro", pro}},
         {{"POD.INI", kOldIni}, {"POD-2026-11-23.INI", kGameIni}, {"player.pro", pro}, {"monster.ini", ini}},
         {"player-2026-11-23.pro"},
         {QStringLiteral("(POD-2026-11-23.INI and monster.ini)") + kInFolder,
          QStringLiteral("The earlier backups there were kept"),
          QStringLiteral("player.pro was already backed up there.")},
         {}},
        {"a second dated copy on the same day",
         {{"POD.INI", kOldIni}, {"POD-2026-11-23.INI", "0\r\n"}},
         {{"POD.INI", kOldIni}, {"POD-2026-11-23.INI", "0\r\n"}, {"POD-2026-11-23-2.INI", kGameIni}},
         {},
         {QStringLiteral("(POD-2026-11-23-2.INI, player.pro, and monster.ini)") + kInFolder},
         {}},
        {"identical copies are left alone",
         {{"POD.INI", kGameIni}, {"player.pro", pro}, {"monster.ini", ini}},
         {},
         {"POD-2026-11-23.INI", "player-2026-11-23.pro", "monster-2026-11-23.ini"},
         {QStringLiteral("(POD.INI, player.pro, and monster.ini) are already in")},
         {QStringLiteral("have been copied")}},
    };
    for (const BackupCase& row : cases) {
        SCOPED_TRACE(row.name);
        TempDrive drive;
        buildGameFolder(drive, {});
        const std::string backup = "C:\\Games\\MTM2\\backup\\";
        for (const auto& [name, content] : row.before)
            drive.write(backup + name, content);
        const BackupReport report = MakeBackups(drive.files(), drive.dialogs(), "C:\\Games\\MTM2", QDate(2026, 11, 23));
        for (const auto& [name, content] : row.after)
            EXPECT_EQ(drive.read(backup + name), content) << name;
        for (const std::string& name : row.absent)
            EXPECT_FALSE(drive.exists(backup + name)) << name;
        ASSERT_EQ(drive.dialogs().messages().size(), 1u);
        EXPECT_EQ(drive.dialogs().lastMessage().title, "Information");
        const QString text = drive.dialogs().lastMessage().text;
        for (const QString& part : row.said)
            EXPECT_TRUE(text.contains(part)) << text.toStdString() << "\n lacks: " << part.toStdString();
        for (const QString& part : row.notSaid)
            EXPECT_FALSE(text.contains(part)) << text.toStdString() << "\n has: " << part.toStdString();
        EXPECT_TRUE(report.failed.empty());
    }
}

TEST(MakeBackups, saysSoWhenNothingCouldBeCopied) {
    TempDrive drive;
    GameLayout layout;
    layout.monsterIni = false;
    buildGameFolder(drive, layout);
    // A file where the backup folder belongs: no folder, no copies.
    drive.write("C:\\Games\\MTM2\\backup", "not a folder");
    BackupReport report = MakeBackups(drive.files(), drive.dialogs(), "C:\\Games\\MTM2");
    EXPECT_TRUE(report.copied.empty());
    EXPECT_EQ(report.failed.size(), 2u); // the missing monster.ini is no failure
    EXPECT_EQ(drive.dialogs().lastMessage().title, "Warning");
    EXPECT_EQ(drive.dialogs().lastMessage().icon, MessageIcon::Exclamation);
    EXPECT_TRUE(drive.dialogs().lastMessage().text.startsWith("Korvel could not back up your key files"));
    EXPECT_FALSE(drive.dialogs().lastMessage().text.contains("have been copied"));
    // A full disk: the folder is made, the copies fail, and no empty copy is left behind.
    drive.remove("C:\\Games\\MTM2\\backup");
    FullDisk full;
    if (!full.active())
        GTEST_SKIP() << "no file-size limit on this platform";
    report = MakeBackups(drive.files(), drive.dialogs(), "C:\\Games\\MTM2");
    EXPECT_EQ(report.failed.size(), 2u);
    EXPECT_FALSE(drive.exists("C:\\Games\\MTM2\\backup\\POD.INI"));
    EXPECT_EQ(drive.dialogs().lastMessage().title, "Warning");
}
