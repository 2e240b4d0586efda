#include "ui/kit/gold_button.h"
#include "ui/kit/twips.h"
#include "ui/main_menus.h"
#include "ui/mode_panel.h"
#include "ui/mode_status_bar.h"
#include "ui/pane_slider.h"
#include "ui/window_settings.h"
#include "ui_rig.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolTip>

#include <gtest/gtest.h>

#include <array>
#include <optional>

using korvel::testing::child;
using korvel::testing::click;
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

// Tooltips fade out; the next check starts with none on screen.
void hideToolTip() {
    QToolTip::hideText();
    for (int wait = 0; wait < 200 && QToolTip::isVisible(); ++wait)
        QTest::qWait(10);
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
    // The association entry stores its state and announces it.
    QSignalSpy toggled(&window, &korvel::ui::MainWindow::associationToggled);
    window.menus().associate()->trigger();
    EXPECT_EQ(f.store.readProgram(settings::kAssociate), "0");
    ASSERT_EQ(toggled.count(), 1);
    EXPECT_FALSE(toggled.at(0).at(0).toBool());
    // The about box shows the version and closes with OK.
    window.menus().about()->trigger();
    auto* about = child<QDialog>(&window, "frmAbout");
    ASSERT_TRUE(about && about->isVisible());
    EXPECT_TRUE(child<QLabel>(about, "lblVersion")->text().contains("1.5 Build 12"));
    click(about, "cmdOK");
    EXPECT_FALSE(about->isVisible());
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

TEST(MainWindowPlace, aPositionWhoseTitleBarIsOnNoScreenIsPulledOntoTheNearest) {
    const QList<QRect> screens{QRect(0, 0, 1000, 800), QRect(1000, 0, 800, 600)};
    const QSize size(470, 460);
    const struct {
        const char* name;
        QPoint wanted, placed;
    } cases[] = {
        {"on the first screen", {100, 200}, {100, 200}},
        {"on the second screen", {1200, 100}, {1200, 100}},
        {"at the corner", {0, 0}, {0, 0}},
        {"far below", {100, 6'000'000}, {100, 800 - 460}},
        {"far right", {9000, 50}, {1800 - 470, 50}},
        {"above the top", {300, -40}, {300, 0}},
        {"left of every screen", {-600, 100}, {0, 100}},
        {"below the smaller second screen", {1300, 700}, {1300, 600 - 460}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(korvel::ui::WindowSettings::visiblePosition(c.wanted, size, screens), c.placed);
    }
    // A stale stored position opens the window where it can be seen.
    WindowFixture f;
    f.set(settings::kLeft, "99999999");
    f.set(settings::kTop, "1e30");
    auto& window = f.open();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_TRUE(screen.contains(window.frameGeometry().topLeft()));
    EXPECT_TRUE(screen.contains(window.frameGeometry().topLeft() + QPoint(window.width() / 2, 10)));
}

TEST(MainWindowSize, startsClassicGrowsWithThePanesAndIsRememberedUnlessMaximised) {
    WindowFixture f;
    auto& window = f.open();
    const QSize classic = window.size();
    EXPECT_EQ(window.minimumSize(), classic);
    EXPECT_EQ(window.pane(Mode::Mounter)->width(), twipsToPixels(PaneSlider::kPaneWidth, &window));
    window.ShowMounter("0");
    const QPoint quit = window.quitButton()->pos();
    window.resize(classic + QSize(300, 200));
    QApplication::processEvents();
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter})
        EXPECT_EQ(window.pane(mode)->width(), classic.width() + 300);
    EXPECT_EQ(window.quitButton()->pos(), quit + QPoint(300, 200)); // the window's own buttons follow
    ASSERT_TRUE(window.close());
    const std::string size = f.get(settings::kSize);
    EXPECT_EQ(f.get(settings::kMaximized), "0");

    // The next opening has that size; a maximised close keeps the size and remembers the state.
    auto& again = f.open();
    EXPECT_EQ(again.size(), classic + QSize(300, 200));
    again.setWindowState(Qt::WindowMaximized);
    ASSERT_TRUE(again.close());
    EXPECT_EQ(f.get(settings::kSize), size);
    EXPECT_EQ(f.get(settings::kMaximized), "1");
    EXPECT_TRUE(f.open().windowState().testFlag(Qt::WindowMaximized));

    // A size below the classic one, or no number at all, opens at the classic size.
    for (const char* stored : {"10,10", "Error", "wide,tall"}) {
        SCOPED_TRACE(stored);
        f.set(settings::kMaximized, "0");
        f.set(settings::kSize, stored);
        EXPECT_EQ(f.open().size(), classic);
    }
}

TEST(MainWindowModes, viewMenuKeysChooseModesThePanelsExplainThemselvesAndAMissingConfiguratorIsNotReached) {
    for (const bool configurator : {true, false}) {
        SCOPED_TRACE(configurator ? "MTM2" : "4x4");
        WindowFixture f(configurator ? "MTM2" : "4x4", configurator);
        f.set(settings::kLock, "3");
        auto& window = f.open();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        const struct {
            Qt::Key key;
            Mode chosen;
        } keys[] = {
            {Qt::Key_2, Mode::Extractor},
            {Qt::Key_1, configurator ? Mode::Configurator : Mode::Extractor},
            {Qt::Key_3, Mode::Mounter},
        };
        for (const auto& k : keys) {
            QTest::keyClick(&window, k.key, Qt::ControlModifier);
            EXPECT_EQ(window.currentMode(), k.chosen);
        }
        EXPECT_EQ(window.menus().view(Mode::Configurator)->isVisible(), configurator);
        EXPECT_TRUE(window.menus().viewMenu()->menuAction()->isVisible());

        ModeStatusBar& bar = *window.modeStatusBar();
        if (!configurator) { // neither its zone, its panel nor its key reach the missing mode
            clickAt(bar, 5075);
            EXPECT_EQ(window.currentMode(), Mode::Mounter);
            EXPECT_TRUE(bar.panelRect(2).isEmpty());
            EXPECT_EQ(window.playButton()->text(), "&Play Game");
            QWidget* hidden = bar.modePanel(Mode::Configurator);
            EXPECT_FALSE(hidden->isVisibleTo(&window));
            QTest::keyClick(hidden, Qt::Key_Space);
            EXPECT_EQ(window.currentMode(), Mode::Mounter);
        }
        const struct {
            int x;
            QString tip;
        } panels[] = {
            {5000, configurator ? QStringLiteral("Configurator: the game's settings, drivers and tracks (Ctrl+1)")
                                : QString()},
            {5400, QStringLiteral("Extractor: look inside a POD and extract its files (Ctrl+2)")},
            {5700, QStringLiteral("Mounter: choose the PODs the game loads (Ctrl+3)")},
            {2000, ""},
        };
        for (const auto& p : panels) {
            SCOPED_TRACE(p.x);
            hideToolTip();
            QHelpEvent help(QEvent::ToolTip, inZone(bar, p.x), bar.mapToGlobal(inZone(bar, p.x)));
            QApplication::sendEvent(&bar, &help);
            EXPECT_EQ(QToolTip::isVisible() ? QToolTip::text() : QString(), p.tip);
        }
        hideToolTip();
    }
}

TEST(MainWindowLooks, flatChoosesEveryGoldButtonsLooksAndOtherValuesKeepThem) {
    WindowFixture f;
    auto& window = f.open();
    const auto buttons = window.findChildren<korvel::ui::GoldButton*>();
    ASSERT_EQ(buttons.size(), 3);
    const struct {
        const char* flat;
        std::array<int, 3> looks; // up, hover, down
    } cases[] = {{"0", {4, 5, 10}}, {"1", {0, 4, 2}}, {"2", {1, 1, 1}}, {"Error", {1, 1, 1}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flat);
        for (korvel::ui::GoldButton* button : buttons) {
            button->setOnUp(1);
            button->setOnHover(1);
            button->setOnDown(1);
        }
        f.set(settings::kFlat, c.flat);
        window.applyButtonLooks(); // what saving the options does
        for (korvel::ui::GoldButton* button : buttons)
            EXPECT_EQ((std::array{button->onUp(), button->onHover(), button->onDown()}), c.looks);
    }
}

TEST(MainWindowMenus, rightButtonReleasedOverTheConfiguratorOpensItsMenuOnly) {
    WindowFixture f;
    auto& window = f.open();
    QMenu* menu = window.menus().configuratorMenu();
    const struct {
        Mode pane;
        Qt::MouseButton button;
        bool opens;
    } cases[] = {{Mode::Mounter, Qt::RightButton, false},
                 {Mode::Configurator, Qt::LeftButton, false},
                 {Mode::Configurator, Qt::RightButton, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(korvel::ui::modeName(c.pane).toStdString() + (c.button == Qt::RightButton ? " right" : " left"));
        window.showMode(c.pane, "0");
        QTest::mouseRelease(window.pane(c.pane), c.button, Qt::NoModifier, QPoint(50, 50));
        EXPECT_EQ(menu->isVisible(), c.opens);
        menu->hide();
    }
    EXPECT_EQ(menu->actions().value(0)->objectName(), "mnuFixRegistry");
}

TEST(MainWindowModePanels, areNamedButtonsReachedWithTabThatChooseTheirModeAndSayWhichIsOnView) {
    WindowFixture f;
    auto& window = f.open();
    ModeStatusBar& bar = *window.modeStatusBar();
    const auto accessible = [&bar](Mode mode) { return QAccessible::queryAccessibleInterface(bar.modePanel(mode)); };
    const Mode modes[] = {Mode::Configurator, Mode::Extractor, Mode::Mounter};
    for (int i = 0; i < 3; ++i) {
        const Mode mode = modes[i];
        SCOPED_TRACE(korvel::ui::modeName(mode).toStdString());
        ASSERT_NE(accessible(mode), nullptr);
        EXPECT_EQ(accessible(mode)->role(), QAccessible::Button);
        EXPECT_EQ(accessible(mode)->text(QAccessible::Name), korvel::ui::modeName(mode));
        EXPECT_TRUE(bar.modePanel(mode)->isVisible());
        EXPECT_EQ(bar.modePanel(mode)->geometry(), bar.panelRect(2 + i));
    }
    window.ShowMounter("0");
    window.ShowExtractor("0");
    for (Mode mode : modes)
        EXPECT_EQ(bool(accessible(mode)->state().checked), mode == Mode::Extractor);
    EXPECT_FALSE(accessible(Mode::Extractor)->text(QAccessible::Description).isEmpty());
    EXPECT_TRUE(accessible(Mode::Mounter)->text(QAccessible::Description).isEmpty());
    // A screen reader's "press" chooses the mode as a click on the panel does.
    accessible(Mode::Configurator)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(window.currentMode(), Mode::Configurator);
    // The mouse still meets the hot zones, not the buttons lying over them.
    clickAt(bar, 5705);
    EXPECT_EQ(window.currentMode(), Mode::Mounter);
    EXPECT_TRUE(accessible(Mode::Mounter)->state().checked);

    // Tab reaches the three panels in order; Space and Enter choose.
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    window.playButton()->setFocus();
    std::vector<QWidget*> reached;
    for (int i = 0; i < 40 && reached.size() < 3; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        auto* panel = qobject_cast<korvel::ui::ModePanel*>(QApplication::focusWidget());
        if (panel && std::find(reached.begin(), reached.end(), panel) == reached.end())
            reached.push_back(panel);
    }
    EXPECT_EQ(reached, (std::vector<QWidget*>{bar.modePanel(Mode::Configurator), bar.modePanel(Mode::Extractor),
                                              bar.modePanel(Mode::Mounter)}));
    QTest::keyClick(bar.modePanel(Mode::Extractor), Qt::Key_Space);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Extractor]");
    QTest::keyClick(bar.modePanel(Mode::Configurator), Qt::Key_Return);
    EXPECT_EQ(window.windowTitle(), "Korvel - MTM2 - [Configurator]");
    EXPECT_TRUE(bar.modePanel(Mode::Configurator)->isChecked());
}

TEST(MainWindowStartMode, followsTheLockThenTheRememberedScreenAndNeverChoosesAMissingConfigurator) {
    using korvel::ScreenLock;
    using korvel::StartScreen;
    const struct {
        std::optional<ScreenLock> lock;
        std::optional<StartScreen> screen;
        bool configurator;
        std::optional<Mode> expected;
    } cases[] = {
        {ScreenLock::None, StartScreen::Extractor, true, Mode::Extractor},
        {ScreenLock::None, StartScreen::Mounter, true, Mode::Mounter},
        {ScreenLock::None, StartScreen::Configurator, true, Mode::Configurator},
        {ScreenLock::None, StartScreen::Configurator, false, Mode::Mounter},
        {ScreenLock::None, std::nullopt, true, std::nullopt},
        {ScreenLock::Configurator, StartScreen::Extractor, true, Mode::Configurator},
        {ScreenLock::Configurator, StartScreen::Extractor, false, Mode::Mounter},
        {ScreenLock::Extractor, StartScreen::Mounter, true, Mode::Extractor},
        {ScreenLock::Extractor, StartScreen::Configurator, false, Mode::Extractor},
        {ScreenLock::Mounter, StartScreen::Configurator, true, Mode::Mounter},
        {std::nullopt, StartScreen::Extractor, true, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "lock " << (c.lock ? int(*c.lock) : -1) << ", screen "
                                          << (c.screen ? int(*c.screen) : -1) << ", configurator " << c.configurator);
        EXPECT_EQ(korvel::ui::WindowSettings::startMode(c.lock, c.screen, c.configurator), c.expected);
    }
}
