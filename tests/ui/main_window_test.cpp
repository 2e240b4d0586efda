#include "ui/main_menus.h"
#include "ui/mode_status_bar.h"
#include "ui/pane_slider.h"
#include "ui/recent_archives.h"
#include "ui/widgets/gold_button.h"
#include "ui/widgets/twips.h"
#include "window_fixture.h"

#include <QAction>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using korvel::MessageAnswer;
using korvel::testing::WindowFixture;
using korvel::ui::Mode;
using korvel::ui::ModeStatusBar;
using korvel::ui::PaneSlider;
using korvel::ui::twipsToPixels;
namespace settings = korvel::settings;

namespace {

QPoint inZone(const ModeStatusBar& bar, int xTwips) {
    return QPoint(twipsToPixels(xTwips, &bar), twipsToPixels(150, &bar));
}

void clickAt(ModeStatusBar& bar, int xTwips) {
    QTest::mouseMove(&bar, inZone(bar, xTwips));
    QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, inZone(bar, xTwips));
}

} // namespace

TEST(StatusBarHotZones, haveExclusiveBoundsGapsAndAVerticalRange) {
    const struct {
        int x, y;
        std::optional<Mode> zone;
    } cases[] = {{4940, 150, std::nullopt},       {4941, 150, Mode::Configurator}, {5209, 150, Mode::Configurator},
                 {5210, 150, std::nullopt},       {5240, 150, std::nullopt},       {5241, 150, Mode::Extractor},
                 {5529, 150, Mode::Extractor},    {5545, 150, std::nullopt},       {5561, 150, Mode::Mounter},
                 {5849, 150, Mode::Mounter},      {5850, 150, std::nullopt},       {5000, 0, Mode::Configurator},
                 {5000, 285, Mode::Configurator}, {5000, 286, std::nullopt},       {5000, -1, std::nullopt}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.x) + "," + std::to_string(c.y));
        EXPECT_EQ(ModeStatusBar::zoneAt(c.x, c.y), c.zone);
    }
}

TEST(MainWindowModes, panelClicksSwitchPanesAndAReleaseElsewhereChoosesNothing) {
    WindowFixture f;
    auto& window = f.open();
    ModeStatusBar& bar = *window.modeStatusBar();
    clickAt(bar, 5385);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Extractor]");
    EXPECT_FALSE(window.pane(Mode::Mounter)->isEnabled());
    clickAt(bar, 5075);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Configurator]");
    clickAt(bar, 5705);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Mounter]");
    EXPECT_EQ(window.slider().top(Mode::Mounter), PaneSlider::kShownTop);
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
}

TEST(MainWindowModes, profileWithoutConfiguratorHidesItsPanelAndMode) {
    WindowFixture f("4x4 Evolution", false);
    f.set(settings::kScreen, "C");
    auto& window = f.open();
    clickAt(*window.modeStatusBar(), 5075);
    EXPECT_EQ(window.currentMode(), Mode::Mounter);
    EXPECT_TRUE(window.modeStatusBar()->panelRect(2).isEmpty());
    EXPECT_EQ(window.playButton()->text(), "&Play Game");
}

TEST(MainWindowSlide, takesSixtyStepsFromHiddenStopsFromAnyTopAndGuardsAgainstAModeChosenMidway) {
    WindowFixture f;
    auto& window = f.open();
    window.ShowMounter("0");
    window.ShowConfigurator("1");
    EXPECT_EQ(window.slider().lastSteps(), 60);
    EXPECT_EQ(window.slider().top(Mode::Mounter), PaneSlider::kHiddenTop);
    window.slider().setTop(Mode::Extractor, -6050);
    window.ShowExtractor("1.0");
    EXPECT_EQ(window.slider().lastSteps(), 60);
    window.ShowConfigurator("2"); // only the number one slides
    EXPECT_EQ(window.slider().lastSteps(), 0);
    window.ShowExtractor("0");
    EXPECT_EQ(window.slider().top(Mode::Extractor), PaneSlider::kShownTop);
    window.slider().setTop(Mode::Mounter, -40);
    window.ShowMounter("1");
    EXPECT_EQ(window.slider().lastSteps(), 0);
    EXPECT_EQ(window.slider().top(Mode::Mounter), PaneSlider::kShownTop);
    QTimer::singleShot(0, &window, [&window] { window.ShowExtractor("0"); });
    window.ShowConfigurator("1");
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Configurator]");
    int enabled = 0;
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter})
        enabled += window.pane(mode)->isEnabled() ? 1 : 0;
    EXPECT_EQ(enabled, 1);
}

TEST(MainWindowOpen, setsTheWindowUpFromTheStoreAndTheSession) {
    WindowFixture f;
    f.set(settings::kLock, "2");
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
    EXPECT_EQ(f.hooks.calls,
              (std::vector<std::string>{"loadGameLists", "loadConfiguratorSettings", "restoreSplitter"}));
    EXPECT_EQ(f.hooks.splitter, 2500);
    EXPECT_TRUE(f.hooks.listed.empty());
}

TEST(MainWindowClose, storesScreenPositionAndRecentButKeepsThePositionWhenMinimised) {
    WindowFixture f("Evo", false);
    f.set(settings::kRecent, "|C:\\A\\ONE.POD|C:\\B\\TWO.POD");
    auto& window = f.open();
    window.ShowExtractor("0");
    window.move(twipsToPixels(3000, &window), twipsToPixels(1500, &window));
    ASSERT_TRUE(window.close());
    EXPECT_EQ(f.get(settings::kScreen), "E"); // the profile's first letter, not the mode's
    EXPECT_EQ(f.get(settings::kLeft), "3000");
    EXPECT_EQ(f.get(settings::kTop), "1500");
    EXPECT_EQ(f.get(settings::kRecent), "|C:\\A\\ONE.POD|C:\\B\\TWO.POD");
    WindowFixture m;
    m.set(settings::kLeft, "915");
    auto& minimised = m.open();
    minimised.move(twipsToPixels(3000, &minimised), twipsToPixels(1500, &minimised));
    minimised.setWindowState(Qt::WindowMinimized);
    ASSERT_TRUE(minimised.close());
    EXPECT_EQ(m.get(settings::kLeft), "915");
    EXPECT_EQ(m.get(settings::kRecent), "|");
}

TEST(MainWindowClose, isRefusedWhileBusyAndUnsavedChangesFollowAutosaveOrTheAnswer) {
    {
        WindowFixture f;
        f.session.asPod = f.session.asExit = "1";
        auto& window = f.open();
        f.hooks.busy = true;
        EXPECT_FALSE(window.close());
        EXPECT_EQ(f.get(settings::kRecent), "Error");
        f.hooks.busy = false;
        f.hooks.changed = true;
        EXPECT_TRUE(window.close());
        EXPECT_EQ(f.hooks.saves, 1);
        EXPECT_TRUE(f.drive.dialogs().messages().empty());
    }
    {
        WindowFixture f;
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
        WindowFixture f;
        f.session.asExit = "1"; // saving at exit needs the POD.INI autosave too
        auto& window = f.open();
        f.hooks.changed = true;
        f.drive.dialogs().answer(MessageAnswer::No);
        EXPECT_TRUE(window.close());
        EXPECT_EQ(f.hooks.saves, 0);
        EXPECT_EQ(f.drive.dialogs().messages().size(), 1u);
    }
    {
        WindowFixture f;
        auto& window = f.open();
        f.hooks.changed = f.hooks.saveFails = true;
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
    WindowFixture f;
    auto& window = f.open();
    window.ShowMounter("0");
    f.hooks.changed = true;
    QTest::mouseClick(window.continueButton(), Qt::LeftButton);
    EXPECT_EQ(f.hooks.saves, 1);
    EXPECT_TRUE(f.drive.shell().launches.empty());
    QTest::mouseClick(window.playButton(), Qt::LeftButton);
    EXPECT_EQ(f.hooks.saves, 1);
    ASSERT_EQ(f.drive.shell().launches.size(), 1u);
    EXPECT_EQ(f.drive.shell().launches[0].first, "C:\\Games\\MTM2\\monster.exe");
    f.hooks.changed = f.hooks.saveFails = true;
    QTest::mouseClick(window.playButton(), Qt::LeftButton);
    EXPECT_EQ(f.drive.shell().launches.size(), 1u);
    EXPECT_EQ(f.drive.dialogs().lastMessage().icon, korvel::MessageIcon::Critical);
    QTest::mouseClick(window.quitButton(), Qt::LeftButton);
    EXPECT_TRUE(window.isVisible()); // still unsaved: the question was not answered
}
