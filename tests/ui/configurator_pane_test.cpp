#include "configurator/widgets/configurator_pane.h"
#include "startup/session.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "ui/composite_hooks.h"
#include "ui/main_menus.h"
#include "ui/main_window.h"
#include "ui/pane_slider.h"
#include "window_fixture.h"

#include <QAction>
#include <QCheckBox>
#include <QFrame>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <memory>

using korvel::ConfiguratorPane;
using korvel::MessageIcon;
using korvel::testing::TempDrive;

namespace {

const std::string kGame = "C:\\Games\\MTM2";
const std::string kMonsterIni = "C:\\Games\\MTM2\\system\\monster.ini";
const std::string kPlayerPro = "C:\\Games\\MTM2\\player.pro";

// A pane over a generated game folder, with the autosave settings the test gives.
struct PaneFixture {
    explicit PaneFixture(const std::string& asMonster = "0", const std::string& asPlayer = "0",
                         const std::string& asChange = "1")
        : store(drive.registry(), drive.dialogs()) {
        korvel::testing::buildGameFolder(drive, {});
        session.currentGame = "MTM2";
        session.location = kGame;
        session.configurator = true;
        session.asMonster = asMonster;
        session.asPlayer = asPlayer;
        session.asChange = asChange;
        pane = std::make_unique<ConfiguratorPane>(session, store, drive.services());
    }

    // Loads both files as the window's opening does, then shows the pane, which ends the opening.
    void open() {
        pane->loadGameLists();
        pane->loadConfiguratorSettings();
        pane->show();
    }

    template <typename W> W* find(const char* name) { return pane->findChild<W*>(QString::fromLatin1(name)); }
    QRadioButton* option(int index) {
        return find<QRadioButton>(qPrintable(QStringLiteral("optLocalization_%1").arg(index)));
    }
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

    TempDrive drive;
    korvel::SettingsStore store;
    korvel::Session session;
    std::unique_ptr<ConfiguratorPane> pane;
};

std::string monsterIni(const std::string& track, const std::string& horn, const std::string& language) {
    return "; Monster Truck Madness 2 settings\r\n[Game]\r\nshowHiddenTrack=" + track + "\r\nkookyHornFlag=" + horn +
           "\r\ngLocalizationFile=" + language + "\r\ngDetail=3\r\n";
}

} // namespace

TEST(ConfiguratorPaneSettings, loadMonsterIniIntoTheControls) {
    struct Case {
        std::string track, horn, language;
        bool trackOn, hornOn;
        int option;
    };
    const std::vector<Case> cases = {
        {"0", "1", "UI\\MTM2.loc", false, true, 1},
        {"1666", "0", "ui\\mtm2-fun.loc", true, false, 2},
        {"1", "1", "UI\\MTM2-pig.loc", false, true, 3},
        {"666", "0", "UI\\Mine.loc", true, false, 4},
    };
    for (const Case& c : cases) {
        PaneFixture f;
        f.drive.write(kMonsterIni, monsterIni(c.track, c.horn, c.language));
        f.open();
        SCOPED_TRACE(c.language);
        EXPECT_EQ(f.find<QCheckBox>("chkTrack")->isChecked(), c.trackOn);
        EXPECT_EQ(f.find<QCheckBox>("chkSounds")->isChecked(), c.hornOn);
        EXPECT_TRUE(f.option(c.option)->isChecked());
        EXPECT_EQ(f.option(c.option)->property("index").toInt(), c.option);
        EXPECT_EQ(f.find<QLineEdit>("txtCustom")->text(), QString::fromStdString(c.language));
        EXPECT_EQ(f.find<QLineEdit>("txtCustom")->isEnabled(), c.option == 4);
        EXPECT_TRUE(f.drive.dialogs().messages().empty());
    }
}

TEST(ConfiguratorPaneSettings, changesSaveAtOnceOnlyWithBothAutosaveSettingsOn) {
    PaneFixture on("1", "0", "1");
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

    for (const auto& [asMonster, asChange] : {std::pair{"0", "1"}, std::pair{"1", "0"}}) {
        PaneFixture off(asMonster, "1", asChange);
        off.open();
        const std::string before = off.drive.read(kMonsterIni);
        off.click("chkTrack");
        QTest::mouseClick(off.option(2), Qt::LeftButton);
        EXPECT_EQ(off.drive.read(kMonsterIni), before);
        off.click("cmdSave");
        EXPECT_EQ(off.drive.read(kMonsterIni), monsterIni("666", "1", "UI\\MTM2-fun.loc"));
    }
}

TEST(ConfiguratorPaneSettings, changesBeforeTheWindowHasOpenedWaitForASave) {
    PaneFixture f("1", "1", "1");
    f.pane->loadGameLists();
    f.pane->loadConfiguratorSettings();
    ASSERT_FALSE(f.pane->hasFinishedOpening());
    const std::string before = f.drive.read(kMonsterIni);
    f.find<QCheckBox>("chkTrack")->click();
    f.selectDrivers({0});
    f.pane->RemoveSelectedDriver();
    EXPECT_EQ(f.drive.read(kMonsterIni), before);
    EXPECT_EQ(f.drive.read(kPlayerPro), korvel::testing::samplePlayerPro());

    f.pane->show();
    EXPECT_TRUE(f.pane->hasFinishedOpening());
}

TEST(ConfiguratorPaneSettings, customLanguageFileComesFromTheOpenFileDialog) {
    PaneFixture f("1", "0", "1");
    f.open();
    f.click("cmdCustom"); // cancelled
    EXPECT_TRUE(f.option(1)->isChecked());
    EXPECT_EQ(f.drive.read(kMonsterIni), korvel::testing::sampleMonsterIni());

    f.drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\UI\\Mine.loc"});
    f.click("cmdCustom");
    const auto& asked = f.drive.dialogs().asked().back();
    EXPECT_EQ(asked.kind, "open");
    EXPECT_EQ(asked.title, "Open File");
    EXPECT_EQ(asked.start, "C:\\Games\\MTM2\\UI");
    ASSERT_EQ(asked.filters.size(), 2u);
    EXPECT_EQ(asked.filters[0].description, "Localization Files (*.loc)");
    EXPECT_EQ(asked.filters[0].pattern, "*.loc");
    EXPECT_EQ(asked.filters[1].description, "All Files (*.*)");
    EXPECT_EQ(asked.filters[1].pattern, "*.*");
    EXPECT_TRUE(f.option(4)->isChecked());
    EXPECT_TRUE(f.find<QLineEdit>("txtCustom")->isEnabled());
    EXPECT_EQ(f.find<QLineEdit>("txtCustom")->text(), "UI\\Mine.loc");
    EXPECT_EQ(f.drive.read(kMonsterIni), monsterIni("0", "1", "UI\\Mine.loc"));
}

TEST(ConfiguratorPaneSettings, aMissingKeyOrFileIsReportedAndTheFileStaysUntouched) {
    PaneFixture f("1", "0", "1");
    const std::string damaged = "showHiddenTrack=0\r\ngLocalizationFile=UI\\MTM2.loc\r\n";
    f.drive.write(kMonsterIni, damaged);
    f.open();
    ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(f.drive.dialogs().lastMessage().icon, MessageIcon::Critical);
    EXPECT_TRUE(f.drive.dialogs().lastMessage().text.contains("kookyHornFlag"));

    f.click("chkTrack");
    f.click("cmdSave");
    EXPECT_EQ(f.drive.read(kMonsterIni), damaged);
    EXPECT_EQ(f.drive.dialogs().messages().size(), 3u);
    EXPECT_TRUE(f.drive.dialogs().lastMessage().text.contains("kookyHornFlag"));
    // The save stops at monster.ini: player.pro is not written either.
    EXPECT_EQ(f.drive.read(kPlayerPro), korvel::testing::samplePlayerPro());

    f.drive.remove(kMonsterIni);
    f.drive.dialogs().clear();
    EXPECT_FALSE(f.pane->LoadMonsterIni());
    EXPECT_EQ(f.drive.dialogs().messages().size(), 1u);
    EXPECT_FALSE(f.drive.exists(kMonsterIni));
}

TEST(ConfiguratorPaneDrivers, listShowRemoveUndoAndSave) {
    PaneFixture f;
    f.open();
    QTreeWidget* list = f.drivers();
    EXPECT_EQ(list->headerItem()->text(0), "Driver");
    EXPECT_EQ(list->columnCount(), 1);
    EXPECT_EQ(f.driverNames(), QStringList({"Alice", "Bob", "Carol"}));

    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list->visualItemRect(list->topLevelItem(1)).center());
    EXPECT_EQ(f.find<QPlainTextEdit>("txtInformation")->toPlainText(),
              "Bob\ntruck=RAM.TRK\nBob stat 1\nBob stat 2\nBob stat 3\nBob stat 4\nBob stat 5\n");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      list->visualItemRect(list->topLevelItem(2)).center());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      list->visualItemRect(list->topLevelItem(0)).center());
    EXPECT_EQ(list->selectedItems().size(), 3);
    f.click("cmdRemoveDrivers");
    EXPECT_TRUE(f.driverNames().isEmpty());
    EXPECT_EQ(f.pane->drivers().count(), 0);
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
    EXPECT_EQ(f.driverNames(), QStringList({"Bob"}));
    EXPECT_TRUE(f.drive.dialogs().messages().empty());
}

TEST(ConfiguratorPaneDrivers, removalsSaveAtOnceWithDriverAutosave) {
    PaneFixture f("0", "1", "1");
    f.open();
    f.selectDrivers({1});
    f.click("cmdRemoveDrivers");
    EXPECT_EQ(f.drive.read(kPlayerPro).substr(0, 16), "103\r\n2\r\n1\r\nAlice");
    EXPECT_EQ(f.driverNames(), QStringList({"Alice", "Carol"}));
    // Nothing selected: nothing removed, nothing written.
    f.drivers()->clearSelection();
    f.drive.write(kPlayerPro, korvel::testing::samplePlayerPro());
    f.click("cmdRemoveDrivers");
    EXPECT_EQ(f.drive.read(kPlayerPro), korvel::testing::samplePlayerPro());
}

TEST(ConfiguratorPaneDrivers, keysReloadAndRemove) {
    PaneFixture f;
    f.open();
    QTreeWidget* list = f.drivers();
    list->setFocus();
    f.selectDrivers({0});
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(f.driverNames(), QStringList({"Bob", "Carol"}));
    f.selectDrivers({1});
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(f.driverNames(), QStringList({"Bob"}));
    f.selectDrivers({0});
    QTest::keyClick(list, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_TRUE(f.driverNames().isEmpty());
    QTest::keyClick(list, Qt::Key_F5);
    EXPECT_EQ(f.driverNames(), QStringList({"Alice", "Bob", "Carol"}));
}

TEST(ConfiguratorPaneDrivers, aDamagedProfileKeepsItsReadableDriversAndRefusesToSave) {
    PaneFixture f;
    const std::string cut = korvel::testing::samplePlayerPro().substr(0, 115);
    f.drive.write(kPlayerPro, cut);
    f.open();
    ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(f.driverNames(), QStringList({"Alice"}));
    f.click("cmdSave");
    EXPECT_EQ(f.drive.dialogs().messages().size(), 2u);
    EXPECT_EQ(f.drive.read(kPlayerPro), cut);
}

TEST(ConfiguratorPaneInWindow, opensWithTheWindowAndRepairsTheRegistryFromItsPopUp) {
    korvel::testing::WindowFixture f;
    korvel::testing::buildGameFolder(f.drive, {});
    f.session.asMonster = f.session.asChange = "1";
    korvel::ui::CompositeHooks hooks;
    auto* pane = new ConfiguratorPane(f.session, f.store, f.drive.services());
    hooks.add(pane);
    korvel::ui::MainWindow window(f.session, f.store, f.drive.services(), &hooks);
    window.slider().setStepPause(0);
    window.installPane(korvel::ui::Mode::Configurator, pane);
    window.open();
    EXPECT_EQ(pane->drivers().count(), 3);
    EXPECT_TRUE(pane->findChild<QRadioButton*>("optLocalization_1")->isChecked());
    EXPECT_FALSE(pane->hasFinishedOpening());
    window.show();
    EXPECT_TRUE(pane->hasFinishedOpening());

    window.ShowConfigurator("0");
    QMenu* popUp = window.menus().configuratorMenu();
    QTest::mouseRelease(pane, Qt::RightButton, Qt::NoModifier, QPoint(5, 5));
    EXPECT_TRUE(popUp->isVisible());
    popUp->hide();

    EXPECT_FALSE(pane->findChild<QAbstractButton*>("cmdDownload")->isEnabled());
    pane->setDownloadAddress("http://127.0.0.1:1/site/");
    QTest::mouseClick(pane->findChild<QAbstractButton*>("cmdDownload"), Qt::LeftButton);
    EXPECT_EQ(f.drive.shell().urls, QStringList{"http://127.0.0.1:1/site/"});

    f.drive.dialogs().chooseFiles({"E:\\MTM2\\monster.exe"});
    window.menus().fixRegistry()->trigger();
    EXPECT_EQ(f.store.ReadValue("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Microsoft Games\\Monster Truck Madness\\2.0",
                                "InstalledPath"),
              "E:\\MTM2");
    EXPECT_EQ(f.session.location, "E:\\MTM2");
}
