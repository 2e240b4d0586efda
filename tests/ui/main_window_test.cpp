#include "ui/main_menus.h"
#include "ui/mode_status_bar.h"
#include "ui/pane_slider.h"
#include "ui/recent_archives.h"
#include "ui/widgets/gold_button.h"
#include "ui/widgets/twips.h"
#include "ui/window_settings.h"
#include "window_fixture.h"

#include <QAction>
#include <QComboBox>
#include <QFrame>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using korvel::MessageAnswer;
using korvel::ui::Mode;
using korvel::ui::ModeStatusBar;
using korvel::ui::PaneSlider;
using korvel::ui::twipsToPixels;
namespace settings = korvel::settings;

namespace {

QPoint inZone(const ModeStatusBar& bar, int xTwips, int yTwips = 150) {
    return QPoint(twipsToPixels(xTwips, &bar), twipsToPixels(yTwips, &bar));
}

void clickAt(ModeStatusBar& bar, const QPoint& at) {
    QTest::mouseMove(&bar, at);
    QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, at);
}

} // namespace

TEST(StatusBarHotZones, haveExclusiveBoundsGapsAndAVerticalRange) {
    EXPECT_EQ(ModeStatusBar::zoneAt(4940), std::nullopt);
    EXPECT_EQ(ModeStatusBar::zoneAt(4941), Mode::Configurator);
    EXPECT_EQ(ModeStatusBar::zoneAt(5209), Mode::Configurator);
    EXPECT_EQ(ModeStatusBar::zoneAt(5210), std::nullopt);
    EXPECT_EQ(ModeStatusBar::zoneAt(5225), std::nullopt);
    EXPECT_EQ(ModeStatusBar::zoneAt(5240), std::nullopt);
    EXPECT_EQ(ModeStatusBar::zoneAt(5241), Mode::Extractor);
    EXPECT_EQ(ModeStatusBar::zoneAt(5529), Mode::Extractor);
    EXPECT_EQ(ModeStatusBar::zoneAt(5545), std::nullopt);
    EXPECT_EQ(ModeStatusBar::zoneAt(5561), Mode::Mounter);
    EXPECT_EQ(ModeStatusBar::zoneAt(5849), Mode::Mounter);
    EXPECT_EQ(ModeStatusBar::zoneAt(5850), std::nullopt);
    EXPECT_EQ(ModeStatusBar::zoneAt(5000, 0), Mode::Configurator);
    EXPECT_EQ(ModeStatusBar::zoneAt(5000, 285), Mode::Configurator);
    EXPECT_EQ(ModeStatusBar::zoneAt(5000, 286), std::nullopt);
    EXPECT_EQ(ModeStatusBar::zoneAt(5000, -1), std::nullopt);
}

TEST(MainWindowModes, panelClicksSwitchPanesAndTitles) {
    korvel::testing::WindowFixture f;
    auto& window = f.open();
    ModeStatusBar& bar = *window.modeStatusBar();
    ASSERT_EQ(bar.objectName(), "StatusBar");

    clickAt(bar, inZone(bar, 5385));
    EXPECT_EQ(window.currentMode(), Mode::Extractor);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Extractor]");
    EXPECT_TRUE(window.pane(Mode::Extractor)->isEnabled());
    EXPECT_FALSE(window.pane(Mode::Mounter)->isEnabled());
    EXPECT_EQ(window.slider().top(Mode::Mounter), PaneSlider::kHiddenTop);

    clickAt(bar, inZone(bar, 5075));
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Configurator]");
    clickAt(bar, inZone(bar, 5705));
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Mounter]");
    EXPECT_EQ(window.slider().top(Mode::Mounter), PaneSlider::kShownTop);
    EXPECT_EQ(bar.bevel(Mode::Mounter), ModeStatusBar::Bevel::Flat);
}

TEST(MainWindowModes, pointerRaisesPanelsAndAReleaseElsewhereChoosesNothing) {
    korvel::testing::WindowFixture f;
    auto& window = f.open();
    window.ShowMounter("0");
    ModeStatusBar& bar = *window.modeStatusBar();

    QTest::mouseMove(&bar, inZone(bar, 5385));
    EXPECT_EQ(bar.bevel(Mode::Extractor), ModeStatusBar::Bevel::Raised);
    EXPECT_EQ(bar.panelText(1), "Extractor");
    QTest::mouseMove(&bar, inZone(bar, 1000));
    EXPECT_EQ(bar.bevel(Mode::Extractor), ModeStatusBar::Bevel::Flat);
    EXPECT_EQ(bar.panelText(1), "");

    QTest::mousePress(&bar, Qt::LeftButton, Qt::NoModifier, inZone(bar, 5385));
    EXPECT_EQ(bar.bevel(Mode::Extractor), ModeStatusBar::Bevel::Inset);
    QTest::mouseRelease(&bar, Qt::LeftButton, Qt::NoModifier, inZone(bar, 5705));
    EXPECT_EQ(window.currentMode(), Mode::Mounter);
    EXPECT_EQ(bar.bevel(Mode::Extractor), ModeStatusBar::Bevel::Flat);

    QTest::mousePress(&bar, Qt::RightButton, Qt::NoModifier, inZone(bar, 5385));
    EXPECT_EQ(bar.bevel(Mode::Extractor), ModeStatusBar::Bevel::Flat);
    QTest::mouseRelease(&bar, Qt::RightButton, Qt::NoModifier, inZone(bar, 5385));
    EXPECT_EQ(window.currentMode(), Mode::Mounter);

    // A highlight does not stick once the pointer moves over a pane.
    QTest::mouseMove(&bar, inZone(bar, 5385));
    QMouseEvent move(QEvent::MouseMove, QPointF(20, 20), QPointF(20, 20), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(window.pane(Mode::Mounter), &move);
    EXPECT_EQ(bar.bevel(Mode::Extractor), ModeStatusBar::Bevel::Flat);
}

TEST(MainWindowModes, profileWithoutConfiguratorHidesItsPanelMenuAndMode) {
    korvel::testing::WindowFixture f("4x4 Evolution", false);
    f.set(settings::kScreen, "C");
    auto& window = f.open();
    ModeStatusBar& bar = *window.modeStatusBar();

    EXPECT_EQ(window.currentMode(), Mode::Mounter);
    EXPECT_TRUE(bar.panelRect(2).isEmpty());
    EXPECT_EQ(bar.panelRect(1).right() + 1, bar.panelRect(3).left());
    EXPECT_EQ(window.playButton()->text(), "&Play Game");
    EXPECT_FALSE(window.menus().tracksMenu()->menuAction()->isVisible());

    clickAt(bar, inZone(bar, 5075));
    EXPECT_EQ(window.currentMode(), Mode::Mounter);
    QTest::mouseMove(&bar, inZone(bar, 5075));
    EXPECT_EQ(bar.panelText(1), "");
}

TEST(MainWindowSlide, takesSixtyStepsFromHiddenAndStopsFromAnyTop) {
    korvel::testing::WindowFixture f;
    auto& window = f.open();
    window.ShowMounter("0");

    window.ShowConfigurator("1");
    EXPECT_EQ(window.slider().lastSteps(), 60);
    EXPECT_EQ(window.slider().top(Mode::Configurator), PaneSlider::kShownTop);
    EXPECT_EQ(window.slider().top(Mode::Mounter), PaneSlider::kHiddenTop);
    EXPECT_FALSE(window.pane(Mode::Mounter)->isEnabled());

    window.slider().setTop(Mode::Extractor, -6050);
    window.ShowExtractor("1.0");
    EXPECT_EQ(window.slider().lastSteps(), 60);
    EXPECT_EQ(window.slider().top(Mode::Extractor), PaneSlider::kShownTop);

    window.slider().setTop(Mode::Mounter, -40);
    window.ShowMounter("1");
    EXPECT_EQ(window.slider().lastSteps(), 0);
    EXPECT_EQ(window.slider().top(Mode::Mounter), PaneSlider::kShownTop);

    window.ShowConfigurator("yes");
    EXPECT_EQ(window.slider().lastSteps(), 0);
    EXPECT_EQ(window.currentMode(), Mode::Configurator);
}

TEST(MainWindowSlide, aModeChosenDuringASlideLeavesOnePaneUpAndAMatchingTitle) {
    korvel::testing::WindowFixture f;
    auto& window = f.open();
    window.ShowMounter("0");
    QTimer::singleShot(0, &window, [&window] { window.ShowExtractor("0"); });
    window.ShowConfigurator("1");

    EXPECT_EQ(window.currentMode(), Mode::Configurator);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Configurator]");
    int enabled = 0;
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter})
        enabled += window.pane(mode)->isEnabled() ? 1 : 0;
    EXPECT_EQ(enabled, 1);
}

TEST(MainWindowOpen, startModeFollowsLockThenScreen) {
    using korvel::ui::WindowSettings;
    EXPECT_EQ(WindowSettings::startMode(0, "E", true), Mode::Extractor);
    EXPECT_EQ(WindowSettings::startMode(0, "C", true), Mode::Configurator);
    EXPECT_EQ(WindowSettings::startMode(0, "C", false), Mode::Mounter);
    EXPECT_EQ(WindowSettings::startMode(0, "M", false), Mode::Mounter);
    EXPECT_EQ(WindowSettings::startMode(0, "m", true), std::nullopt);
    EXPECT_EQ(WindowSettings::startMode(0, "Error", true), std::nullopt);
    EXPECT_EQ(WindowSettings::startMode(1, "E", false), Mode::Mounter);
    EXPECT_EQ(WindowSettings::startMode(1, "E", true), Mode::Configurator);
    EXPECT_EQ(WindowSettings::startMode(2, "M", true), Mode::Extractor);
    EXPECT_EQ(WindowSettings::startMode(3, "E", true), Mode::Mounter);
    EXPECT_EQ(WindowSettings::startMode(4, "E", true), std::nullopt);
}

TEST(MainWindowOpen, setsTheWindowUpFromTheStoreAndTheSession) {
    korvel::testing::WindowFixture f;
    f.set(settings::kLock, "2");
    f.set(settings::kScreen, "M");
    f.set(settings::kRecent, "|C:\\A\\ONE.POD||Error|C:\\B\\TWO.POD");
    f.set(settings::kFlat, "1");
    f.set(settings::kSlider, "2500");
    f.set(settings::kLeft, "1500");
    f.set(settings::kTop, "0");
    f.store.writeProgram(settings::kAssociate, "1");
    auto& window = f.open();

    EXPECT_EQ(window.currentMode(), Mode::Extractor);
    EXPECT_EQ(window.recentArchives()->entries(), QStringList({"C:\\A\\ONE.POD", "C:\\B\\TWO.POD"}));
    EXPECT_EQ(window.modeStatusBar()->panelText(1), QString::fromUtf8("Korvel 1.5 Build 12 \u00a9 2026 Gravlen Forge"));
    EXPECT_TRUE(window.menus().associate()->isChecked());
    EXPECT_EQ(window.pos(), QPoint(twipsToPixels(1500, &window), 0));
    EXPECT_EQ(window.playButton()->onUp(), 0);
    EXPECT_EQ(window.quitButton()->onDown(), 2);
    EXPECT_EQ(window.recentArchives()->removeButton()->onHover(), 4);
    EXPECT_EQ(f.hooks.calls,
              (std::vector<std::string>{"loadGameLists", "loadConfiguratorSettings", "restoreSplitter"}));
    EXPECT_EQ(f.hooks.splitter, 2500);
    EXPECT_TRUE(f.hooks.listed.empty());
}

TEST(MainWindowOpen, anArchiveFromTheCommandLineOpensTheExtractorWhateverTheLock) {
    korvel::testing::WindowFixture f;
    f.set(settings::kLock, "3");
    f.session.openedFolder = "C:\\Games\\MTM2\\";
    f.session.openedFile = "TRUCKS.POD";
    auto& window = f.open();
    EXPECT_EQ(window.currentMode(), Mode::Extractor);
    EXPECT_EQ(f.hooks.listed, std::vector<std::string>{"C:\\Games\\MTM2\\TRUCKS.POD"});
}

TEST(MainWindowOpen, panesMenuEntriesShowTheirKeys) {
    korvel::testing::WindowFixture f;
    f.window = std::make_unique<korvel::ui::MainWindow>(f.session, f.store, f.drive.services(), &f.hooks);
    auto* pane = new QWidget;
    auto* top = new QAction(QStringLiteral("Move to &Top"), pane);
    top->setObjectName(QStringLiteral("mnuTop"));
    auto* remove = new QAction(QStringLiteral("&Delete"), pane);
    remove->setObjectName(QStringLiteral("mnuDelete"));
    f.window->installPane(Mode::Mounter, pane);
    f.window->open();
    EXPECT_EQ(top->text(), "Move to &Top\tCtrl+T");
    EXPECT_EQ(remove->text(), "&Delete\tDel");
}

TEST(MainWindowClose, storesScreenFromTheTitlePositionAndRecent) {
    korvel::testing::WindowFixture f("Evo", false);
    f.set(settings::kRecent, "|C:\\A\\ONE.POD|C:\\B\\TWO.POD");
    auto& window = f.open();
    window.ShowExtractor("0");
    window.move(twipsToPixels(3000, &window), twipsToPixels(1500, &window));
    ASSERT_TRUE(window.close());
    EXPECT_EQ(f.get(settings::kScreen), "E"); // the profile's first letter, not the mode's
    EXPECT_EQ(f.get(settings::kLeft), "3000");
    EXPECT_EQ(f.get(settings::kTop), "1500");
    EXPECT_EQ(f.get(settings::kRecent), "|C:\\A\\ONE.POD|C:\\B\\TWO.POD");
}

TEST(MainWindowClose, minimisedKeepsPositionAndAnEmptyRecentListIsABar) {
    korvel::testing::WindowFixture f;
    f.set(settings::kLeft, "915");
    f.set(settings::kTop, "1200");
    f.set(settings::kScreen, "M");
    auto& window = f.open();
    window.move(twipsToPixels(3000, &window), twipsToPixels(1500, &window));
    window.setWindowState(Qt::WindowMinimized);
    ASSERT_TRUE(window.close());
    EXPECT_EQ(f.get(settings::kLeft), "915");
    EXPECT_EQ(f.get(settings::kTop), "1200");
    EXPECT_EQ(f.get(settings::kRecent), "|");
    EXPECT_EQ(f.get(settings::kScreen), "M");
    EXPECT_TRUE(korvel::ui::WindowSettings::recentEntries("|").isEmpty());
}

TEST(MainWindowClose, isRefusedWhileAnArchiveIsBusy) {
    korvel::testing::WindowFixture f;
    auto& window = f.open();
    f.hooks.busy = true;
    EXPECT_FALSE(window.close());
    EXPECT_EQ(f.get(settings::kRecent), "Error");
    f.hooks.busy = false;
    EXPECT_TRUE(window.close());
}

TEST(MainWindowClose, unsavedMountedListFollowsAutosaveOrTheUsersAnswer) {
    {
        korvel::testing::WindowFixture f;
        f.session.asPod = f.session.asExit = "1";
        auto& window = f.open();
        f.hooks.changed = true;
        EXPECT_TRUE(window.close());
        EXPECT_EQ(f.hooks.saves, 1);
        EXPECT_TRUE(f.drive.dialogs().messages().empty());
    }
    {
        korvel::testing::WindowFixture f;
        f.session.asPod = "1"; // saving at exit is not on
        auto& window = f.open();
        f.hooks.changed = true;
        f.drive.dialogs().answer(MessageAnswer::Cancel).answer(MessageAnswer::No);
        EXPECT_FALSE(window.close());
        EXPECT_EQ(f.get(settings::kScreen), "Error");
        EXPECT_EQ(f.drive.dialogs().lastMessage().buttons, korvel::MessageButtons::YesNoCancel);
        EXPECT_TRUE(window.close());
        EXPECT_EQ(f.hooks.saves, 0);
    }
    {
        korvel::testing::WindowFixture f;
        auto& window = f.open();
        f.hooks.changed = true;
        f.hooks.saveFails = true;
        f.drive.dialogs().answer(MessageAnswer::Yes);
        EXPECT_FALSE(window.close()); // a failed save keeps the window and the changes
        EXPECT_EQ(f.drive.dialogs().lastMessage().text, "POD.INI could not be written.");
        f.hooks.saveFails = false;
        f.drive.dialogs().answer(MessageAnswer::Yes);
        EXPECT_TRUE(window.close());
        EXPECT_EQ(f.hooks.saves, 2);
    }
}

TEST(MainWindowButtons, playSavesAChangedListThenLaunchesAndContinueOnlySaves) {
    korvel::testing::WindowFixture f;
    auto& window = f.open();
    window.ShowMounter("0");
    f.hooks.changed = true;
    QTest::mouseClick(window.continueButton(), Qt::LeftButton);
    EXPECT_EQ(f.hooks.saves, 1);
    EXPECT_TRUE(f.drive.shell().launches.empty());

    QTest::mouseClick(window.playButton(), Qt::LeftButton);
    EXPECT_EQ(f.hooks.saves, 1); // unchanged since
    ASSERT_EQ(f.drive.shell().launches.size(), 1u);
    EXPECT_EQ(f.drive.shell().launches[0].first, "C:\\Games\\MTM2\\monster.exe");

    f.hooks.changed = true;
    f.hooks.saveFails = true;
    QTest::mouseClick(window.playButton(), Qt::LeftButton);
    EXPECT_EQ(f.drive.shell().launches.size(), 1u);
    EXPECT_EQ(f.drive.dialogs().lastMessage().icon, korvel::MessageIcon::Critical);

    QTest::mouseClick(window.quitButton(), Qt::LeftButton);
    EXPECT_TRUE(window.isVisible()); // still unsaved: the question was not answered
}

TEST(MainWindowMenus, associationEntryTogglesTheStoredChoice) {
    korvel::testing::WindowFixture f;
    auto& window = f.open();
    window.menus().associate()->trigger();
    EXPECT_EQ(f.store.readProgram(settings::kAssociate), "1");
    window.menus().associate()->trigger();
    EXPECT_EQ(f.store.readProgram(settings::kAssociate), "0");
    EXPECT_EQ(f.hooks.association, (std::vector<bool>{true, false}));
}

TEST(MainWindowMenus, rightClickOnTheConfiguratorPaneOpensItsMenuAndExitCloses) {
    korvel::testing::WindowFixture f;
    auto& window = f.open();
    window.ShowConfigurator("0");
    QFrame* pane = window.pane(Mode::Configurator);
    QTest::mouseClick(pane, Qt::RightButton, Qt::NoModifier, QPoint(30, 30));
    QMenu* menu = window.menus().configuratorMenu();
    EXPECT_EQ(menu->objectName(), "mnuConfigurator");
    EXPECT_TRUE(menu->isVisible());
    menu->hide();

    window.menus().exit()->trigger();
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(f.get(settings::kScreen), "M");
}
