#include "configurator/widgets/configurator_pane.h"
#include "full_disk.h"
#include "ui_rig.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <tuple>

using korvel::ConfiguratorPane;

namespace {

const std::string kGame = "C:\\Games\\MTM2";
const std::string kMonsterIni = "C:\\Games\\MTM2\\system\\monster.ini";
const std::string kPlayerPro = "C:\\Games\\MTM2\\player.pro";

struct PaneFixture : korvel::testing::WindowFixture {
    explicit PaneFixture(bool asMonster = false, bool asPlayer = false, bool asChange = true) {
        korvel::testing::buildGameFolder(drive, {});
        std::tie(session.autosave.monster, session.autosave.player, session.autosave.onChange) =
            std::tuple(asMonster, asPlayer, asChange);
        pane = std::make_unique<ConfiguratorPane>(session, store, drive.services());
    }
    void open() {
        pane->LoadDrivers();
        pane->LoadMonsterIni();
        pane->show();
    }
    template <typename W> W* find(const char* name) { return pane->findChild<W*>(QString::fromLatin1(name)); }
    QRadioButton* option(int i) { return find<QRadioButton>(qPrintable(QStringLiteral("optLocalization_%1").arg(i))); }
    QTreeWidget* drivers() { return find<QTreeWidget>("lstDrivers"); }
    void click(const char* name) { QTest::mouseClick(find<QAbstractButton>(name), Qt::LeftButton); }
    QStringList driverNames() {
        QStringList names;
        for (int i = 0; i < drivers()->topLevelItemCount(); ++i)
            names << drivers()->topLevelItem(i)->text(0);
        return names;
    }
    void selectDrivers(std::initializer_list<int> rows) {
        drivers()->clearSelection();
        for (int row : rows)
            drivers()->topLevelItem(row)->setSelected(true);
    }

    std::unique_ptr<ConfiguratorPane> pane;
};

std::string monsterIni(const std::string& track, const std::string& horn, const std::string& language) {
    return "; Monster Truck Madness 2 settings\r\n[Game]\r\nshowHiddenTrack=" + track + "\r\nkookyHornFlag=" + horn +
           "\r\ngLocalizationFile=" + language + "\r\ngDetail=3\r\n";
}

} // namespace

TEST(ConfiguratorPaneSettings, changesSaveAtOnceOnlyWithBothAutosaveSettingsOn) {
    PaneFixture on(true, false, true);
    on.open();
    on.click("chkTrack");
    EXPECT_EQ(on.drive.read(kMonsterIni), monsterIni("666", "1", "UI\\MTM2.loc"));
    QTest::mouseClick(on.option(3), Qt::LeftButton);
    EXPECT_EQ(on.drive.read(kMonsterIni), monsterIni("666", "1", "UI\\MTM2-pig.loc"));
    EXPECT_EQ(on.find<QLineEdit>("txtCustom")->text(), "UI\\MTM2-pig.loc");
    EXPECT_FALSE(on.find<QLineEdit>("txtCustom")->isEnabled());
    QTest::mouseClick(on.option(4), Qt::LeftButton);
    EXPECT_TRUE(on.find<QLineEdit>("txtCustom")->isEnabled());
    on.click("chkSounds");
    EXPECT_EQ(on.drive.read(kMonsterIni), monsterIni("666", "0", "UI\\MTM2-pig.loc"));
    for (const auto& [asMonster, asChange] : {std::pair{false, true}, std::pair{true, false}}) {
        PaneFixture off(asMonster, true, asChange);
        off.open();
        const std::string before = off.drive.read(kMonsterIni);
        off.click("chkTrack");
        QTest::mouseClick(off.option(2), Qt::LeftButton);
        EXPECT_EQ(off.drive.read(kMonsterIni), before);
        off.click("cmdSave");
        EXPECT_EQ(off.drive.read(kMonsterIni), monsterIni("666", "1", "UI\\MTM2-fun.loc"));
    }
}

TEST(ConfiguratorPaneSettings, aMissingKeyIsReportedAndTheFilesStayUntouched) {
    PaneFixture f(true, false, true);
    const std::string damaged = "showHiddenTrack=0\r\ngLocalizationFile=UI\\MTM2.loc\r\n";
    f.drive.write(kMonsterIni, damaged);
    f.open();
    ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
    EXPECT_TRUE(f.drive.dialogs().lastMessage().text.contains("kookyHornFlag"));
    f.click("chkTrack");
    f.click("cmdSave");
    EXPECT_EQ(f.drive.read(kMonsterIni), damaged);
    EXPECT_EQ(f.drive.dialogs().messages().size(), 3u);
    EXPECT_TRUE(f.drive.dialogs().lastMessage().text.contains("kookyHornFlag"));
    // The save stops at monster.ini: player.pro is not written either.
    EXPECT_EQ(f.drive.read(kPlayerPro), korvel::testing::samplePlayerPro());
}

TEST(ConfiguratorPaneDrivers, listShowRemoveUndoSaveAndReload) {
    PaneFixture f;
    f.open();
    QTreeWidget* list = f.drivers();
    EXPECT_EQ(f.driverNames(), QStringList({"Alice", "Bob", "Carol"}));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list->visualItemRect(list->topLevelItem(1)).center());
    EXPECT_EQ(f.find<QPlainTextEdit>("txtInformation")->toPlainText(),
              "Bob\ntruck=RAM.TRK\nBob stat 1\nBob stat 2\nBob stat 3\nBob stat 4\nBob stat 5\n");
    f.selectDrivers({0, 1, 2});
    f.click("cmdRemoveDrivers");
    EXPECT_TRUE(f.driverNames().isEmpty());
    EXPECT_EQ(f.drive.read(kPlayerPro), korvel::testing::samplePlayerPro());
    f.click("cmdUndoDrivers");
    EXPECT_EQ(f.driverNames(), QStringList({"Alice", "Bob", "Carol"}));
    f.selectDrivers({0, 2});
    f.click("cmdRemoveDrivers");
    EXPECT_EQ(f.driverNames(), QStringList({"Bob"}));
    f.click("cmdSave");
    EXPECT_EQ(f.drive.read(kPlayerPro),
              "103\r\n1\r\n1\r\nBob\r\ntruck=RAM.TRK\r\nBob stat 1\r\nBob stat 2\r\nBob stat 3\r\nBob stat 4\r\n"
              "Bob stat 5\r\n");
    EXPECT_TRUE(f.drive.dialogs().messages().empty());
    f.drivers()->setFocus(); // Delete removes, F5 reads the profile again
    f.selectDrivers({0});
    QTest::keyClick(f.drivers(), Qt::Key_Delete);
    EXPECT_TRUE(f.driverNames().isEmpty());
    QTest::keyClick(f.drivers(), Qt::Key_F5);
    EXPECT_EQ(f.driverNames(), QStringList({"Bob"}));
}

TEST(ConfiguratorPaneDrivers, aPlayerProThatCannotBeSavedSaysWhyAndWhatToDoUnderAMatchingTitleAndIcon) {
    const struct {
        const char* name;
        std::string file;
        bool fullDisk;
        const char* title;
        korvel::MessageIcon icon;
        const char* why;
        const char* whatToDo;
    } cases[] = {
        {"notADriverFile", "100\r\n" + korvel::testing::samplePlayerPro().substr(5), false, "Information",
         korvel::MessageIcon::Information, "not read as a driver file", "Start the game once"},
        // A full disk fails the save, or already the lock file the save takes first.
        {"unwritable", korvel::testing::samplePlayerPro(), true, "Write Error", korvel::MessageIcon::Critical,
         "Could not", "not read-only"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        PaneFixture f(false, true, true); // a removal saves player.pro at once
        f.drive.write(kPlayerPro, c.file);
        f.open();
        f.drive.dialogs().clear();
        std::optional<korvel::testing::FullDisk> full;
        if (c.fullDisk && !full.emplace().active())
            continue; // no file-size limit on this platform
        if (f.drivers()->topLevelItemCount() > 0) {
            f.selectDrivers({0});
            f.click("cmdRemoveDrivers");
        } else {
            f.click("cmdSave"); // nothing to remove: Save tries the file as it was read
        }
        ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
        const auto& shown = f.drive.dialogs().lastMessage();
        EXPECT_EQ(shown.title, c.title);
        EXPECT_EQ(shown.icon, c.icon);
        EXPECT_TRUE(shown.text.contains(QString::fromLatin1(c.why))) << shown.text.toStdString();
        EXPECT_TRUE(shown.text.contains(QString::fromLatin1(c.whatToDo))) << shown.text.toStdString();
        full.reset();
        EXPECT_EQ(f.drive.read(kPlayerPro), c.file);
    }
}

TEST(ConfiguratorPaneInWindow, savesOnlyOnceTheWindowHasOpenedAndRepairsTheRegistry) {
    korvel::testing::WindowFixture f;
    korvel::testing::buildGameFolder(f.drive, {});
    f.session.autosave.monster = f.session.autosave.onChange = true;
    auto* pane = new ConfiguratorPane(f.session, f.store, f.drive.services());
    korvel::ui::MainWindow window(f.session, f.store, f.drive.services());
    window.installPane(korvel::ui::Mode::Configurator, pane);
    ASSERT_TRUE(pane->LoadDrivers());
    ASSERT_TRUE(pane->LoadMonsterIni());
    EXPECT_EQ(pane->drivers().count(), 3);
    window.ShowConfigurator("0");                         // the pane up while the window opens, its controls enabled
    const std::string before = f.drive.read(kMonsterIni); // changes before the window shows wait for a save
    auto* track = pane->findChild<QCheckBox*>("chkTrack");
    ASSERT_TRUE(track->isEnabled());
    track->click();
    ASSERT_TRUE(track->isChecked());
    EXPECT_EQ(f.drive.read(kMonsterIni), before);
    window.show();
    EXPECT_TRUE(pane->hasFinishedOpening());
    std::string repaired;
    QObject::connect(pane, &ConfiguratorPane::gameFolderRepaired,
                     [&](const std::string& folder) { repaired = folder; });
    track->click();
    EXPECT_EQ(f.drive.read(kMonsterIni), before); // back to what it was, saved at once
    track->click();
    EXPECT_NE(f.drive.read(kMonsterIni), before);
    f.drive.dialogs().chooseFiles({"E:\\MTM2\\monster.exe"});
    pane->fixRegistry();
    EXPECT_EQ(f.store.ReadValue("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0",
                                "InstalledPath"),
              "E:\\MTM2");
    EXPECT_EQ(repaired, "E:\\MTM2"); // for the session's owner to apply
}
