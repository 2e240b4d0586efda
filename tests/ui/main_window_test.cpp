#include "ui/kit/gold_button.h"
#include "ui/kit/twips.h"
#include "ui/main_menus.h"
#include "ui/mode_panel.h"
#include "ui/mode_status_bar.h"
#include "ui/pane_slider.h"
#include "window_fixture.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

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
    f.set(settings::kFlat, "1");
    f.set(settings::kLeft, "1500");
    f.set(settings::kTop, "0");
    f.store.writeProgram(settings::kAssociate, "1");
    auto& window = f.open();
    EXPECT_EQ(window.currentMode(), Mode::Extractor);
    EXPECT_EQ(window.modeStatusBar()->panelText(1), QString::fromUtf8("Korvel 1.5 Build 12 \u00a9 2026 Gravlen Forge"));
    EXPECT_TRUE(window.menus().associate()->isChecked());
    EXPECT_EQ(window.playButton()->onUp(), 0); // the flat looks
    EXPECT_EQ(window.pos(), QPoint(twipsToPixels(1500, &window), 0));
}

TEST(MainWindowClose, storesScreenAndPositionButKeepsThePositionWhenMinimised) {
    WindowFixture f("Evo", false);
    auto& window = f.open();
    window.ShowExtractor("0");
    window.move(twipsToPixels(3000, &window), twipsToPixels(1500, &window));
    ASSERT_TRUE(window.close());
    EXPECT_EQ(f.get(settings::kScreen), "E"); // the profile's first letter, not the mode's
    EXPECT_EQ(f.get(settings::kLeft), "3000");
    EXPECT_EQ(f.get(settings::kTop), "1500");
    WindowFixture m;
    m.set(settings::kLeft, "915");
    auto& minimised = m.open();
    minimised.move(twipsToPixels(3000, &minimised), twipsToPixels(1500, &minimised));
    minimised.setWindowState(Qt::WindowMinimized);
    ASSERT_TRUE(minimised.close());
    EXPECT_EQ(m.get(settings::kLeft), "915");
    // A close sequence that refuses keeps the window and saves nothing.
    WindowFixture r;
    auto& refusing = r.open();
    refusing.setCloseSequence([] { return false; });
    EXPECT_FALSE(refusing.close());
    EXPECT_EQ(r.get(settings::kScreen), "Error");
}

TEST(MainWindowMenus, associationIsStoredAndAnnounced) {
    WindowFixture f;
    auto& window = f.open();
    QSignalSpy toggled(&window, &korvel::ui::MainWindow::associationToggled);
    window.menus().associate()->trigger();
    EXPECT_EQ(f.store.readProgram(settings::kAssociate), "1");
    window.menus().associate()->trigger();
    EXPECT_EQ(f.store.readProgram(settings::kAssociate), "0");
    ASSERT_EQ(toggled.count(), 2);
    EXPECT_TRUE(toggled.at(0).at(0).toBool());
    EXPECT_FALSE(toggled.at(1).at(0).toBool());
}

namespace {

QAccessibleInterface* accessible(QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget);
}

} // namespace

TEST(MainWindowModePanels, areNamedButtonsThatSayWhichModeIsOnView) {
    WindowFixture f;
    auto& window = f.open();
    ModeStatusBar& bar = *window.modeStatusBar();
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter}) {
        SCOPED_TRACE(korvel::ui::modeName(mode).toStdString());
        QWidget* panel = bar.modePanel(mode);
        ASSERT_NE(panel, nullptr);
        QAccessibleInterface* face = accessible(panel);
        ASSERT_NE(face, nullptr);
        EXPECT_EQ(face->role(), QAccessible::Button);
        EXPECT_EQ(face->text(QAccessible::Name), korvel::ui::modeName(mode));
        EXPECT_TRUE(panel->isVisible());
        EXPECT_EQ(panel->geometry(), bar.panelRect(mode == Mode::Configurator ? 2 : mode == Mode::Extractor ? 3 : 4));
    }
    window.ShowMounter("0");
    window.ShowExtractor("0");
    EXPECT_TRUE(accessible(bar.modePanel(Mode::Extractor))->state().checked);
    EXPECT_FALSE(accessible(bar.modePanel(Mode::Mounter))->state().checked);
    EXPECT_FALSE(accessible(bar.modePanel(Mode::Configurator))->state().checked);
    EXPECT_FALSE(accessible(bar.modePanel(Mode::Extractor))->text(QAccessible::Description).isEmpty());
    EXPECT_TRUE(accessible(bar.modePanel(Mode::Mounter))->text(QAccessible::Description).isEmpty());
    // A screen reader's "press" chooses the mode as a click on the panel does.
    accessible(bar.modePanel(Mode::Configurator))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(window.currentMode(), Mode::Configurator);
    // The mouse still meets the hot zones, not the buttons lying over them.
    clickAt(bar, 5705);
    EXPECT_EQ(window.currentMode(), Mode::Mounter);
    EXPECT_TRUE(accessible(bar.modePanel(Mode::Mounter))->state().checked);
}

TEST(MainWindowModePanels, areReachedWithTabAndChooseTheirModeWithSpaceOrEnter) {
    WindowFixture f;
    auto& window = f.open();
    window.ShowMounter("0");
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    window.playButton()->setFocus();
    std::vector<QWidget*> reached;
    for (int i = 0; i < 40 && reached.size() < 3; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        if (auto* panel = qobject_cast<korvel::ui::ModePanel*>(QApplication::focusWidget()))
            if (std::find(reached.begin(), reached.end(), panel) == reached.end())
                reached.push_back(panel);
    }
    ModeStatusBar& bar = *window.modeStatusBar();
    EXPECT_EQ(reached, (std::vector<QWidget*>{bar.modePanel(Mode::Configurator), bar.modePanel(Mode::Extractor),
                                              bar.modePanel(Mode::Mounter)}));
    QTest::keyClick(bar.modePanel(Mode::Extractor), Qt::Key_Space);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Extractor]");
    QTest::keyClick(bar.modePanel(Mode::Configurator), Qt::Key_Return);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Configurator]");
    EXPECT_TRUE(bar.modePanel(Mode::Configurator)->isChecked());

    // Without the Configurator its panel is neither shown nor reached.
    WindowFixture evo("4x4 Evolution", false);
    auto& other = evo.open();
    QWidget* hidden = other.modeStatusBar()->modePanel(Mode::Configurator);
    EXPECT_FALSE(hidden->isVisible());
    EXPECT_FALSE(hidden->isVisibleTo(&other));
    QTest::keyClick(hidden, Qt::Key_Space);
    EXPECT_NE(other.currentMode(), Mode::Configurator);
}
