#include "configurator/widgets/configurator_pane.h"
#include "palette/widgets/palette_window.h"
#include "pod/widgets/extractor_pane.h"
#include "pod/widgets/listing_model.h"
#include "pod/widgets/recent_archives_box.h"
#include "pod_writer.h"
#include "tracklist/widgets/tracks_menu.h"
#include "ui/kit/gold_button.h"
#include "ui/main_menus.h"
#include "ui_rig.h"

#include <QAction>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace korvel::testing {
namespace {

constexpr const char* kGame = "MTM2";
const std::string kFolder = "C:\\Games\\MTM2";
const std::string kMonsterIni = kFolder + "\\system\\monster.ini";
const std::string kPlayerPro = kFolder + "\\player.pro";

// One MTM2 profile whose mounted list is saved only when asked, with one archive left to mount.
void addGame(AppRig& rig, const std::string& asPod = "0", const std::string& asExit = "0") {
    GameLayout layout;
    layout.archives = {{"TRUCKS.POD", "POD"}, {"ADDON\\MYTRACK.POD", "POD"}, {"EXTRA.POD", "POD"}};
    rig.addGame(kGame, layout);
    rig.store.writeProfile(kGame, settings::kAsPod, asPod);
    rig.store.writeProfile(kGame, settings::kAsExit, asExit);
    rig.store.writeProfile(kGame, settings::kAsChange, "0");
}

TEST(KorvelApplicationOpen, loadsEveryPaneListsTheArchiveNamedOnTheCommandLineAndGrowsItsListsWithTheWindow) {
    AppRig rig;
    addGame(rig);
    rig.drive.write(kFolder + "\\Data\\x.pod", PodWriter().add("A.BIN", "a").pod1());
    rig.store.writeProfile(kGame, settings::kRecent, "|C:\\A\\ONE.POD||Error|C:\\B\\TWO.POD");
    rig.store.writeProfile(kGame, settings::kSlider, "2500");
    rig.store.writeProfile(kGame, settings::kLock, "3");
    ASSERT_TRUE(rig.start({rig.drive.host(kFolder + "\\Data\\x.pod")}));
    EXPECT_EQ(rig.window().windowTitle(), "Korvel - MTM2 - [Extractor]");
    const QStringList recent = rig.extractor().recentArchives().entries();
    ASSERT_EQ(recent.size(), 3);
    EXPECT_TRUE(recent[0].endsWith("x.pod", Qt::CaseInsensitive));
    EXPECT_EQ(recent.mid(1), QStringList({"C:\\A\\ONE.POD", "C:\\B\\TWO.POD"}));
    EXPECT_EQ(rig.extractor().model().rowCount(), 1);
    EXPECT_EQ(rig.pane().mounter().mounted().size(), 3);
    EXPECT_EQ(rig.pane().splitterTop(), 2500);
    EXPECT_EQ(rig.window().findChild<ConfiguratorPane*>()->drivers().count(), 3);
    EXPECT_EQ(rig.window().findChild<TracksMenu*>()->entries().size(), 6u);
    // The lists grow with the window, a hidden pane's when it comes up.
    QApplication::processEvents();
    const struct {
        const char* name;
        ui::Mode pane;
        bool wider, taller;
    } controls[] = {
        {"lstMounted", ui::Mode::Mounter, true, false},  {"lstUnmounted", ui::Mode::Mounter, true, true},
        {"lstFiles", ui::Mode::Extractor, true, true},   {"fileBox", ui::Mode::Extractor, false, true},
        {"cmbRecent", ui::Mode::Extractor, true, false}, {"txtName", ui::Mode::Extractor, true, false},
    };
    std::vector<QSize> before;
    for (const auto& c : controls)
        before.push_back(rig.find(c.name)->size());
    const QPoint mount = rig.find("cmdMount")->pos();
    rig.window().ShowMounter("0");
    rig.window().resize(rig.window().size() + QSize(250, 120));
    QApplication::processEvents();
    EXPECT_EQ(rig.find("cmdMount")->pos(), mount + QPoint(250, 0));
    for (ui::Mode mode : {ui::Mode::Mounter, ui::Mode::Extractor}) {
        rig.window().showMode(mode, "0");
        QApplication::processEvents();
        for (size_t i = 0; i < std::size(controls); ++i) {
            SCOPED_TRACE(controls[i].name);
            if (controls[i].pane == mode) {
                EXPECT_EQ(rig.find(controls[i].name)->size(),
                          before[i] + QSize(controls[i].wider ? 250 : 0, controls[i].taller ? 120 : 0));
            }
        }
    }
}

TEST(KorvelApplicationClose, waitsForTheExtractorAndSettlesTheMountedListAsAutosaveOrTheAnswerSays) {
    const struct {
        const char* name;
        std::string asPod, asExit;
        std::optional<MessageAnswer> answer;
        bool brokenPodIni, closes, saved, asked;
    } cases[] = {
        {"autosave at exit", "1", "1", {}, false, true, true, false},
        {"autosave off at exit, cancel", "1", "0", MessageAnswer::Cancel, false, false, false, true},
        {"asked, no", "0", "0", MessageAnswer::No, false, true, false, true},
        {"saving at exit needs the POD.INI autosave too", "0", "1", MessageAnswer::No, false, true, false, true},
        {"asked, yes", "0", "0", MessageAnswer::Yes, false, true, true, true},
        {"a failed save keeps the window", "0", "0", MessageAnswer::Yes, true, false, false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AppRig rig;
        addGame(rig, c.asPod, c.asExit);
        ASSERT_TRUE(rig.start());
        const std::string loaded = rig.podIni();
        rig.click("cmdMountAll");
        if (c.brokenPodIni)
            blockFile(rig.drive, kFolder + "\\POD.INI");
        rig.dialogs().clear();
        if (c.answer)
            rig.dialogs().answer(*c.answer);
        QSignalSpy finished(rig.app.get(), &app::KorvelApplication::finished);
        EXPECT_EQ(rig.window().close(), c.closes);
        EXPECT_EQ(finished.count(), c.closes ? 1 : 0);
        if (c.brokenPodIni) {
            EXPECT_EQ(rig.last().icon, MessageIcon::Critical);
        } else {
            EXPECT_EQ(rig.podIni() != loaded, c.saved);
        }
        const auto& shown = rig.dialogs().messages();
        EXPECT_EQ(!shown.empty() && shown.front().buttons == MessageButtons::YesNoCancel, c.asked);
        // The recent list is saved only when the window closes.
        EXPECT_EQ(rig.store.readProfile(kGame, settings::kRecent), c.closes ? "|" : "Error");
    }
}

TEST(KorvelApplicationClose, settlesTheConfiguratorsChangesAsTheExitSwitchesOrTheAnswerSay) {
    // Undone: a setting clicked twice and a removal undone, back as the files hold them.
    // Failing: monster.ini cannot be written.
    enum Change { Monster = 1, Drivers = 2, Undone = 4, Failing = 8 };
    const struct {
        const char* name;
        int changes;
        const char *asMonster, *asPlayer, *asExit;
        std::optional<MessageAnswer> answer; // none: no question may come
        bool closes, monsterSaved, driversSaved;
    } cases[] = {
        {"settings, saved at exit", Monster, "1", "0", "1", std::nullopt, true, true, false},
        {"removal, saved at exit", Drivers, "0", "1", "1", std::nullopt, true, false, true},
        {"both, saved at exit", Monster | Drivers, "1", "1", "1", std::nullopt, true, true, true},
        {"settings, exit switch off, yes", Monster, "1", "1", "0", MessageAnswer::Yes, true, true, false},
        {"settings, no", Monster, "0", "1", "1", MessageAnswer::No, true, false, false},
        {"removal, yes", Drivers, "1", "0", "1", MessageAnswer::Yes, true, false, true},
        {"removal, cancel", Drivers, "0", "0", "0", MessageAnswer::Cancel, false, false, false},
        {"both, monster saved at exit, removal dropped", Monster | Drivers, "1", "0", "1", MessageAnswer::No, true,
         true, false},
        {"both, cancel saves neither", Monster | Drivers, "0", "0", "0", MessageAnswer::Cancel, false, false, false},
        {"undone changes ask nothing", Undone, "0", "0", "0", std::nullopt, true, false, false},
        {"a failed save keeps the window", Monster | Failing, "1", "0", "1", std::nullopt, false, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AppRig rig;
        addGame(rig, "1", c.asExit);
        rig.store.writeProfile(kGame, settings::kAsMonster, c.asMonster);
        rig.store.writeProfile(kGame, settings::kAsPlayer, c.asPlayer);
        ASSERT_TRUE(rig.start());
        rig.window().ShowConfigurator("0");
        const std::string monsterIni = rig.drive.read(kMonsterIni);
        const std::string playerPro = rig.drive.read(kPlayerPro);
        for (int times = c.changes & Undone ? 2 : (c.changes & Monster ? 1 : 0); times > 0; --times)
            rig.click("chkSounds");
        if (c.changes & (Drivers | Undone)) {
            rig.find<QTreeWidget>("lstDrivers")->topLevelItem(0)->setSelected(true);
            rig.click("cmdRemoveDrivers");
        }
        if (c.changes & Undone)
            rig.click("cmdUndoDrivers");
        // Nothing was saved on the change itself.
        ASSERT_EQ(rig.drive.read(kMonsterIni), monsterIni);
        ASSERT_EQ(rig.drive.read(kPlayerPro), playerPro);
        if (c.changes & Failing)
            blockFile(rig.drive, kMonsterIni);
        rig.dialogs().clear();
        if (c.answer)
            rig.dialogs().answer(*c.answer);
        EXPECT_EQ(rig.window().close(), c.closes);
        const auto& shown = rig.dialogs().messages();
        if (c.changes & Failing) {
            ASSERT_FALSE(shown.empty());
            EXPECT_EQ(rig.last().icon, MessageIcon::Critical);
            continue;
        }
        EXPECT_EQ(shown.size(), c.answer ? 1u : 0u);
        if (c.answer && !shown.empty()) {
            EXPECT_EQ(shown[0].buttons, MessageButtons::YesNoCancel);
        }
        EXPECT_EQ(rig.drive.read(kMonsterIni) != monsterIni, c.monsterSaved);
        EXPECT_EQ(rig.drive.read(kPlayerPro) != playerPro, c.driversSaved);
    }
}

TEST(KorvelApplicationClose, isRefusedWithAWordWhileAnExtractionRunsAndAllowedAfterAFailedOne) {
    AppRig rig;
    addGame(rig, "1", "1");
    PodWriter many;
    for (int i = 0; i < 600; ++i)
        many.add("F" + std::to_string(i) + ".BIN", std::string(64, 'x'));
    rig.drive.write(kFolder + "\\MANY.POD", many.pod1());
    rig.drive.write(kFolder + "\\BAD.POD", PodWriter().add({"BAD.BIN", "bad", std::nullopt, 1 << 20}).pod1());
    rig.drive.write("C:\\Out\\keep.txt", "x");
    ASSERT_TRUE(rig.start());
    ASSERT_TRUE(rig.extractor().ListPOD(kFolder + "\\", "MANY.POD"));
    rig.extractor().fileList()->selectAll();
    // A close asked for halfway through the run, however fast the entries are written.
    std::optional<bool> closed, busyWhenAsked;
    QString said;
    const auto halfway =
        QObject::connect(rig.find<QProgressBar>("prgExtract"), &QProgressBar::valueChanged, [&](int value) {
            if (value < 300 || closed)
                return;
            busyWhenAsked = rig.extractor().archiveBusy();
            closed = rig.window().close();
            said = rig.find<QLabel>("lblExtract")->text();
        });
    rig.dialogs().chooseFolder("C:\\Out");
    rig.extractor().extractTo();
    QObject::disconnect(halfway);
    ASSERT_TRUE(closed.has_value());
    EXPECT_TRUE(*busyWhenAsked);
    EXPECT_FALSE(*closed);
    EXPECT_TRUE(rig.window().isVisible());
    EXPECT_EQ(said, "Please wait: Korvel can close once the extraction has finished.");
    EXPECT_TRUE(rig.drive.exists("C:\\Out\\F599.BIN"));

    // After a corrupt archive's message the window closes as usual.
    ASSERT_TRUE(rig.extractor().ListPOD(kFolder + "\\", "BAD.POD"));
    rig.extractor().fileList()->selectAll();
    rig.extractor().extractClicked();
    EXPECT_EQ(rig.last().text, "This POD appears to be corrupt!");
    EXPECT_FALSE(rig.extractor().archiveBusy());
    EXPECT_TRUE(rig.window().close());
}

TEST(KorvelApplicationButtons, playSavesAChangedListThenLaunchesThroughTheLaunchCommandAndContinueOnlySaves) {
    AppRig rig;
    addGame(rig);
    rig.store.writeProfile(kGame, settings::kLaunchCommand, "proton run");
    ASSERT_TRUE(rig.start());
    const std::string loaded = rig.podIni();
    rig.click("cmdMountAll");
    rig.click("cmdContinue");
    EXPECT_NE(rig.podIni(), loaded);
    EXPECT_FALSE(rig.pane().mountedListChanged());
    EXPECT_TRUE(rig.drive.shell().launches.empty());
    // Korvel started from some other folder of the same drive.
    rig.drive.makeFolder("C:\\Tools");
    const QString started = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(rig.drive.host("C:\\Tools")));
    rig.click("cmdPlay");
    QDir::setCurrent(started);
    ASSERT_EQ(rig.drive.shell().launches.size(), 1u);
    EXPECT_EQ(rig.drive.shell().launches[0].first, kFolder + "\\monster.exe");
    EXPECT_EQ(rig.drive.shell().launches[0].second, kFolder); // in the game folder, not Korvel's
    EXPECT_EQ(rig.drive.shell().launchCommands, QStringList{"proton run"});
    // A launcher that fails gives its own reason.
    rig.drive.shell().succeed = false;
    rig.drive.shell().failure = QStringLiteral("The game's executable was not found: monster.exe");
    rig.dialogs().clear();
    rig.click("cmdPlay");
    ASSERT_EQ(rig.dialogs().messages().size(), 1u);
    EXPECT_EQ(rig.last().title, "Play Game");
    EXPECT_EQ(rig.last().text, rig.drive.shell().failure);
    EXPECT_EQ(rig.last().icon, MessageIcon::Critical);
    rig.drive.shell().succeed = true;
    // A failed save is shown and the game does not start.
    rig.click("cmdUnmountAll");
    blockFile(rig.drive, kFolder + "\\POD.INI");
    rig.click("cmdPlay");
    EXPECT_EQ(rig.drive.shell().launches.size(), 2u);
    EXPECT_EQ(rig.last().icon, MessageIcon::Critical);
    rig.dialogs().answer(MessageAnswer::No);
    rig.click("cmdQuit");
    EXPECT_FALSE(rig.window().isVisible());
}

TEST(KorvelApplicationMenus, eachEntryReachesItsPaneAndCommandsWaitForTheAddressesTheOptionsDialogSets) {
    for (const char* variable :
         {"KORVEL_TRACK_SITE", "KORVEL_TRACK_LIST_URL", "KORVEL_WEB_ADDRESS", "KORVEL_SUPPORT_ADDRESS"})
        qunsetenv(variable);
    AppRig rig;
    addGame(rig);
    rig.drive.write(kFolder + "\\ONE.POD", PodWriter().add("ONE.TXT", "one").pod1());
    ASSERT_TRUE(rig.start());
    ui::MainMenus& menus = rig.window().menus();

    // Mass extraction asks about the archives the file box shows, then extracts them all.
    rig.dialogs().answer(MessageAnswer::Yes);
    menus.mass()->trigger();
    EXPECT_EQ(rig.dialogs().messages().front().icon, MessageIcon::Question);
    EXPECT_EQ(rig.dialogs().messages().front().buttons, MessageButtons::YesNo);
    EXPECT_EQ(rig.window().windowTitle(), "Korvel - MTM2 - [Extractor]");
    EXPECT_EQ(rig.drive.read(kFolder + "\\ONE.TXT"), "one");

    menus.palette()->trigger();
    const QWidgetList tops = QApplication::topLevelWidgets();
    EXPECT_TRUE(std::any_of(tops.begin(), tops.end(),
                            [](QWidget* top) { return qobject_cast<PaletteWindow*>(top) && top->isVisible(); }));

    rig.dialogs().chooseFiles({"E:\\MTM2\\monster.exe"});
    menus.fixRegistry()->trigger();
    EXPECT_EQ(rig.app->session().location, "E:\\MTM2");
    rig.window().ShowConfigurator("0");
    auto* download = rig.find<ui::GoldButton>("cmdDownload");
    auto* tracks = rig.window().findChild<TracksMenu*>();
    EXPECT_FALSE(download->isEnabled());
    EXPECT_TRUE(download->toolTip().contains("File > Options > Web"));
    EXPECT_FALSE(menus.update()->isEnabled());
    EXPECT_TRUE(menus.update()->toolTip().contains("File > Options > Web"));
    EXPECT_FALSE(tracks->entries()[0]->isEnabled());
    EXPECT_TRUE(tracks->entries()[0]->toolTip().contains("KORVEL_TRACK_SITE"));
    EXPECT_TRUE(menus.tracksMenu()->toolTipsVisible());
    tracks->mnuTrackList_Click(1); // the keyboard's way past a disabled entry
    tracks->mnuUpdate_Click();
    EXPECT_FALSE(tracks->isUpdating());
    EXPECT_TRUE(rig.drive.shell().urls.isEmpty());
    const auto aboutLink = [&rig](const char* name) {
        QDialog* about = rig.window().showAbout();
        const QString text = child<QLabel>(about, name)->text();
        about->close();
        return text;
    };
    EXPECT_FALSE(aboutLink("lblWeb").contains("<a "));
    EXPECT_TRUE(aboutLink("lblWeb").contains("KORVEL_WEB_ADDRESS"));
    EXPECT_TRUE(unexpectedErrorText(5, "x").contains("Korvel's maintainers"));

    QDialog* options = rig.window().showOptions();
    const std::pair<const char*, const char*> typed[] = {{"txtTrackSite", "https://tracks.test/mtm2"},
                                                         {"txtTrackList", "https://tracks.test/list.txt"},
                                                         {"txtWebAddress", "https://korvel.test/"},
                                                         {"txtSupportAddress", "help@korvel.test"}};
    for (const auto& [box, address] : typed)
        child<QLineEdit>(options, box)->setText(address);
    click(options, "cmdOK");
    EXPECT_TRUE(download->isEnabled());
    EXPECT_TRUE(menus.update()->isEnabled());
    tracks->LoadTrackList(); // the tracks rebuilt later keep the addresses
    EXPECT_TRUE(tracks->entries()[0]->isEnabled());
    EXPECT_TRUE(tracks->entries()[1]->toolTip().isEmpty() ||
                tracks->entries()[1]->toolTip() == tracks->entries()[1]->text());
    click(download);
    tracks->entries()[0]->trigger();
    EXPECT_EQ(rig.drive.shell().urls.join(QLatin1Char(' ')).toStdString(),
              "https://tracks.test/mtm2/ https://tracks.test/mtm2/vault/tracks/carn.zip");
    EXPECT_TRUE(aboutLink("lblWeb").contains("href=\"https://korvel.test/\""));
    EXPECT_TRUE(aboutLink("lblMail").contains("href=\"mailto:help@korvel.test\""));
    EXPECT_TRUE(unexpectedErrorText(5, "x").contains("help@korvel.test"));
    setSupportAddress(QString());
}

} // namespace
} // namespace korvel::testing
