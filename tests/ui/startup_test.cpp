#include "platform/file_registry.h"
#include "platform/path_map.h"
#include "startup/widgets/options_dialog.h"
#include "ui_rig.h"

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>

namespace korvel::testing {
namespace {

TEST(StartupFlow, firstStartWelcomesAddsAProfileLoadsItAndRemindsOnce) {
    AppRig rig;
    buildGameFolder(rig.drive, GameLayout());
    rig.drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"}).typeInput(QStringLiteral("MTM2"));
    bool listEmptyAtFirst = false;
    whenShown(QStringLiteral("frmGames"), [&](QWidget* form) {
        listEmptyAtFirst = child<QListWidget>(form, "lstGames")->count() == 0 && !child(form, "cmdLoad")->isEnabled();
        click(form, "cmdAdd");
        click(form, "cmdLoad");
    });
    ASSERT_TRUE(rig.start());
    EXPECT_TRUE(listEmptyAtFirst);
    const ScriptedDialogs& dialogs = rig.drive.dialogs();
    EXPECT_EQ(dialogs.messages().front().title, QStringLiteral("Information"));
    EXPECT_TRUE(dialogs.messages().front().text.startsWith(QStringLiteral("Welcome!")));
    EXPECT_EQ(dialogs.lastMessage().title, QStringLiteral("Reminder"));
    EXPECT_EQ(rig.window().windowTitle(), QStringLiteral("Korvel - MTM2 - [Mounter]"));
    EXPECT_EQ(rig.pane().mounter().mounted().size(), 3);
}

TEST(StartupFlow, commandLineNamesTheProfileOrEndsWithAnError) {
    AppRig rig;
    GameLayout other;
    other.folder = "C:\\Games\\4x4";
    rig.addGame("4x4", other);
    rig.addGame("MTM2");
    ASSERT_TRUE(rig.start({QStringLiteral("4x4")}));
    EXPECT_EQ(rig.window().windowTitle(), QStringLiteral("Korvel - 4x4 - [Mounter]"));
    // The Mounter's keys are shown in its menu captions.
    const std::pair<const char*, const char*> captions[] = {
        {"mnuTop", "Move to &Top\tCtrl+T"},       {"mnuUp", "Move &Up\tCtrl+U"}, {"mnuDown", "Move &Down\tCtrl+D"},
        {"mnuBottom", "Move to &Bottom\tCtrl+B"}, {"mnuDelete", "&Delete\tDel"}, {"mnuRefreshMounted", "&Refresh\tF5"},
        {"mnuRefreshUnmounted", "&Refresh\tF5"},
    };
    for (const auto& [name, caption] : captions) {
        ASSERT_TRUE(rig.find<QAction>(name)) << name;
        EXPECT_EQ(rig.find<QAction>(name)->text(), caption) << name;
    }
    rig.window().close();
    rig.drive.dialogs().clear();
    EXPECT_FALSE(rig.start({QStringLiteral("mtm2")}));
    EXPECT_EQ(rig.app->exitCode(), 1);
    EXPECT_EQ(rig.drive.dialogs().lastMessage().title, QStringLiteral("Unexpected Error"));
}

TEST(StartupFlow, aDamagedSettingsStoreIsExplainedBeforeTheProfilesDialog) {
    TempDrive drive;
    const QString path = drive.root() + QStringLiteral("/config/registry.json");
    QDir().mkpath(drive.root() + QStringLiteral("/config"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{ \"HKEY_CURRENT_USER\": [ broken");
    file.close();
    FileRegistry registry(path);
    Services services{drive.paths(), drive.files(), registry, drive.dialogs(), drive.shell()};
    SettingsStore store{registry, drive.dialogs()};
    FileAssociation association{store, drive.paths(), {drive.host("C:\\Tools\\Korvel.exe"), false, {}, false}};
    app::KorvelApplication korvel(services, store, association);
    qsizetype shownBeforeProfiles = -1;
    whenShown(QStringLiteral("frmGames"), [&](QWidget* form) {
        shownBeforeProfiles = drive.dialogs().messages().size();
        click(form, "cmdExit");
    });
    EXPECT_FALSE(korvel.start({}));
    const auto& shown = drive.dialogs().messages();
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[0].title, QStringLiteral("WARNING!"));
    EXPECT_TRUE(shown[0].text.contains("was damaged")) << shown[0].text.toStdString();
    EXPECT_EQ(shown[1].title, QStringLiteral("Information"));
    EXPECT_EQ(shownBeforeProfiles, 2);
}

TEST(StartupFlow, theProfilesDialogLeftByItsFrameEndsOnlyTheFirstStart) {
    // At the very first start, closing the dialog ends the program (by the user's choice).
    AppRig first;
    whenShown(QStringLiteral("frmGames"), [](QWidget* form) { form->close(); });
    EXPECT_FALSE(first.start());
    EXPECT_EQ(first.app->exitCode(), 0);

    // From File > Switch game, Esc or the frame keeps the current game; Exit ends the program.
    const struct {
        const char* name;
        std::function<void(QWidget*)> leave;
        bool ends;
    } cases[] = {
        {"Esc", [](QWidget* form) { QTest::keyClick(child(form, "lstGames"), Qt::Key_Escape); }, false},
        {"frame", [](QWidget* form) { form->close(); }, false},
        {"Exit", [](QWidget* form) { click(form, "cmdExit"); }, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AppRig rig;
        rig.addGame("MTM2");
        GameLayout other;
        other.folder = "C:\\Games\\4x4";
        rig.addGame("4x4", other);
        ASSERT_TRUE(rig.start({QStringLiteral("4x4")}));
        QSignalSpy finished(rig.app.get(), &app::KorvelApplication::finished);
        whenShown(QStringLiteral("frmGames"), c.leave);
        rig.app->switchGame();
        EXPECT_EQ(finished.count(), c.ends ? 1 : 0);
        EXPECT_EQ(rig.app->window() != nullptr, !c.ends);
        if (!c.ends) {
            EXPECT_TRUE(rig.window().isVisible());
            EXPECT_EQ(rig.app->session().currentGame, "4x4");
            EXPECT_EQ(rig.app->session().location, "C:\\Games\\4x4");
        }
    }
}

TEST(StartupFlow, aDamagedSoleProfileIsExplainedThenOfferedForRemovalAndReAdding) {
    AppRig rig;
    rig.addGame("MTM2");
    rig.store.writeProfile("MTM2", settings::kMmpa, "Error");
    rig.drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"}).typeInput(QStringLiteral("MTM2"));
    int listed = -1;
    whenShown(QStringLiteral("frmGames"), [&](QWidget* form) {
        listed = child<QListWidget>(form, "lstGames")->count();
        click(form, "cmdRemove");
        click(form, "cmdAdd");
        click(form, "cmdLoad");
    });
    ASSERT_TRUE(rig.start());
    EXPECT_EQ(listed, 1);
    const ScriptedDialogs& dialogs = rig.drive.dialogs();
    ASSERT_FALSE(dialogs.messages().empty());
    EXPECT_EQ(dialogs.messages().front().title, QStringLiteral("Unexpected Error"));
    EXPECT_EQ(rig.store.readProfile("MTM2", settings::kMmpa), "99");
    EXPECT_EQ(rig.window().windowTitle(), QStringLiteral("Korvel - MTM2 - [Mounter]"));
}

// File > Options.
// A registry that remembers the names of the values written, in order.
class RecordingRegistry : public RegistryTree {
public:
    bool writeValue(RegistryRoot root, const std::string& subkey, const std::string& name,
                    const std::string& data) override {
        written.push_back(name);
        return RegistryTree::writeValue(root, subkey, name, data);
    }
    std::vector<std::string> written;
};

// Every value OK writes, in the order it writes them.
const std::vector<std::string> kWritten{"AS-POD",    "AS-Player", "AS-Monster",   "AS-Change", "AS-Exit",
                                        "Flat",      "Slide",     "Configurator", "Autosort",  "Browse",
                                        "BrowseDir", "ExtraDirs", "Lock",         "CodePage",  "LaunchCommand"};

struct OptionsFixture {
    explicit OptionsFixture(bool configurator = true) : store(registry, dialogs) {
        session.currentGame = "MTM2";
        session.configurator = configurator;
        store.CreateKey(settings::profileKey("MTM2"));
        for (auto name : {settings::kAsPod, settings::kAsPlayer, settings::kAsMonster, settings::kAsChange,
                          settings::kAsExit, settings::kFlat, settings::kBrowse})
            set(name, "0");
        for (auto [name, text] : {std::pair{settings::kSlide, "1"},
                                  {settings::kAutosort, "1"},
                                  {settings::kConfigurator, "False"},
                                  {settings::kLock, "2"},
                                  {settings::kBrowseDir, "C:\\Games\\MTM2"},
                                  {settings::kExtraDirs, "C:\\Extra\\One|C:\\Extra\\Two|C:\\Extra\\Three"}})
            set(name, text);
        registry.written.clear();
    }
    void set(std::string_view name, const std::string& text) { store.writeProfile("MTM2", name, text); }
    std::string get(std::string_view name) { return store.readProfile("MTM2", name); }

    void open(int page = 0) {
        dialog = std::make_unique<OptionsDialog>(store, session, dialogs);
        dialog->show();
        if (paths)
            dialog->setPathMap(paths);
        find<QTabWidget>("tabOptions")->setCurrentIndex(page);
        QCoreApplication::processEvents();
    }
    template <typename T = QAbstractButton> T* find(const char* name) { return child<T>(dialog.get(), name); }
    QLineEdit* box(const char* name) { return find<QLineEdit>(name); }
    // Check and option boxes react on their box only.
    void click(const char* name) {
        auto* button = find(name);
        const bool box = qobject_cast<QCheckBox*>(button) || qobject_cast<QRadioButton*>(button);
        QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier,
                          box ? QPoint(6, button->height() / 2) : button->rect().center());
    }

    RecordingRegistry registry;
    ScriptedDialogs dialogs;
    SettingsStore store;
    Session session;
    const PathMap* paths = nullptr;
    std::unique_ptr<OptionsDialog> dialog;
};

TEST(OptionsDialog, opensWithTheStoredValuesAndDisablesGameOnlyChoicesWithoutConfigurator) {
    OptionsFixture f(false);
    f.open(3);
    EXPECT_TRUE(f.find("chkSlide")->isChecked());
    EXPECT_FALSE(f.find("chkFlat")->isChecked());
    EXPECT_EQ(f.find<QButtonGroup>("optLock")->checkedId(), 2);
    EXPECT_EQ(f.find<QListWidget>("lstExtraDirs")->count(), 3);
    for (const char* name : {"chkPlayer", "chkMonster", "optLock1", "txtBrowseDir", "cmdBrowseDir"})
        EXPECT_FALSE(f.find<QWidget>(name)->isEnabled()) << name;
    EXPECT_TRUE(f.find("chkPOD")->isEnabled() && f.find("optLock3")->isEnabled());
    f.click("chkBrowse");
    EXPECT_TRUE(f.box("txtBrowseDir")->isEnabled() && f.find("cmdBrowseDir")->isEnabled());
}

TEST(OptionsDialog, okWritesEveryValueInItsOrderAndCancelWritesNothingNorTheUnconfirmedConfigurator) {
    OptionsFixture f;
    for (const char* leave : {"cmdCancel", "cmdOK"}) {
        SCOPED_TRACE(leave);
        f.open(2);
        int saved = 0;
        QObject::connect(f.dialog.get(), &OptionsDialog::saved, [&saved] { ++saved; });
        f.click("optLock3");
        // Switching the Configurator on warns; No keeps it off, and switching it off asks nothing.
        f.dialogs.clear();
        f.dialogs.answer(MessageAnswer::No);
        f.click("chkConfigurator");
        EXPECT_FALSE(f.find("chkConfigurator")->isChecked());
        EXPECT_EQ(f.dialogs.lastMessage().title, "WARNING!");
        EXPECT_EQ(f.dialogs.lastMessage().buttons, MessageButtons::YesNo);
        f.dialogs.answer(MessageAnswer::Yes);
        f.find("chkConfigurator")->setFocus();
        QTest::keyClick(f.find("chkConfigurator"), Qt::Key_Space);
        EXPECT_TRUE(f.find("chkConfigurator")->isChecked());
        f.click("chkConfigurator");
        EXPECT_EQ(f.dialogs.messages().size(), 2u);
        f.click(leave);
        EXPECT_FALSE(f.dialog->isVisible());
        EXPECT_EQ(saved, std::string_view(leave) == "cmdOK" ? 1 : 0);
    }
    EXPECT_EQ(f.registry.written, kWritten);
    EXPECT_EQ(f.get(settings::kLock), "3");
    EXPECT_EQ(f.get(settings::kConfigurator), "False");
    EXPECT_EQ(f.get(settings::kExtraDirs), "C:\\Extra\\One|C:\\Extra\\Two|C:\\Extra\\Three");
}

TEST(OptionsDialog, pathsPageTakesTypedHostPathsACodePageAndALaunchCommand) {
    QTemporaryDir drive;
    PathMap paths;
    paths.mapDrive('C', drive.path());
    OptionsFixture f;
    f.paths = &paths;
    f.open(3);
    f.box("txtBrowseDir")->setText(drive.path() + "/Games/MTM2");
    f.box("txtLaunchCommand")->setText("lutris rungame mtm2");
    for (const auto& [codePage, accepted] : {std::pair{"cp9999", false}, {"1251", true}}) {
        SCOPED_TRACE(codePage);
        f.box("txtCodePage")->setText(codePage);
        f.registry.written.clear();
        f.click("cmdOK");
        EXPECT_EQ(f.dialog->isVisible(), !accepted);
        EXPECT_EQ(f.registry.written.empty(), !accepted);
    }
    EXPECT_TRUE(f.dialogs.messages().front().text.contains("\"cp9999\""));
    EXPECT_EQ(f.get(settings::kBrowseDir), "C:\\Games\\MTM2");
    EXPECT_EQ(f.get(settings::kCodePage), "1251");
    EXPECT_EQ(f.get(settings::kLaunchCommand), "lutris rungame mtm2");

    f.open(3);
    EXPECT_EQ(f.box("txtCodePage")->text(), "1251");
    f.box("txtBrowseDir")->setText("Q:\\Nowhere");
    f.click("cmdOK");
    EXPECT_TRUE(f.dialog->isVisible());
    EXPECT_TRUE(f.dialogs.lastMessage().text.contains("drive Q:"));
}

TEST(OptionsDialog, addRefusesAnExtraFolderTheStoredListCouldNotKeep) {
    OptionsFixture f;
    f.open(3);
    const std::string stored = f.get(settings::kExtraDirs); // three folders
    // Exactly as long as a stored value can be and still read back.
    const std::string longest = "C:\\" + std::string(2549 - stored.size() - 1 - 3, 'd');
    const struct {
        std::string folder;
        int count;
        const char* said; // the refusal's reason, or nullptr when the folder is added
    } adds[] = {{"C:\\A|B", 3, "holds \"|\""}, {longest, 4, nullptr}, {"C:\\E", 4, "more than 2549 characters"}};
    for (const auto& add : adds) {
        SCOPED_TRACE(add.folder.substr(0, 12));
        f.dialogs.clear();
        f.dialogs.chooseFolder(add.folder);
        f.click("cmdAdd");
        EXPECT_EQ(f.find<QListWidget>("lstExtraDirs")->count(), add.count);
        ASSERT_EQ(f.dialogs.messages().size(), add.said ? 1u : 0u);
        if (add.said) {
            EXPECT_TRUE(f.dialogs.lastMessage().text.contains(add.said));
            EXPECT_EQ(f.dialogs.lastMessage().icon, MessageIcon::Information);
        }
    }
    f.click("cmdOK");
    EXPECT_EQ(f.get(settings::kExtraDirs), stored + "|" + longest); // the whole list reads back
}

TEST(OptionsDialogWeb, showsTheAddressesWritesOnlyChangedOnesAndRefusesOnesThatCannotBeUsed) {
    OptionsFixture f;
    f.store.CreateKey(std::string(settings::kProgramKey));
    f.store.writeProgram(settings::kTrackSite, "https://tracks.test/");
    f.store.writeProgram(settings::kSupportAddress, "help@korvel.test");
    f.registry.written.clear();
    qunsetenv("KORVEL_TRACK_LIST_URL");
    qputenv("KORVEL_WEB_ADDRESS", "https://env.test/");
    f.open(4);
    qunsetenv("KORVEL_WEB_ADDRESS");
    EXPECT_EQ(f.box("txtTrackSite")->text(), "https://tracks.test/");
    EXPECT_EQ(f.box("txtSupportAddress")->text(), "help@korvel.test");
    EXPECT_EQ(f.box("txtWebAddress")->text(), "");
    ASSERT_NE(f.find<QLabel>("txtWebAddressOverride"), nullptr);
    EXPECT_TRUE(f.find<QLabel>("txtWebAddressOverride")->text().contains("https://env.test/"));
    EXPECT_EQ(f.find<QLabel>("txtTrackListOverride"), nullptr);

    f.box("txtTrackList")->setText("tracks.test/list.txt");
    f.find<QTabWidget>("tabOptions")->setCurrentIndex(0);
    f.click("cmdOK");
    EXPECT_TRUE(f.dialog->isVisible());
    EXPECT_TRUE(f.registry.written.empty());
    EXPECT_EQ(f.dialogs.lastMessage().title, "Input Required");
    EXPECT_EQ(f.find<QTabWidget>("tabOptions")->currentIndex(), 4);

    f.box("txtTrackList")->setText(" https://tracks.test/list.txt ");
    f.box("txtTrackSite")->clear();
    f.click("cmdOK");
    EXPECT_FALSE(f.dialog->isVisible());
    std::vector<std::string> written = kWritten;
    written.insert(written.end(), {"TrackSite", "TrackListAddress"});
    EXPECT_EQ(f.registry.written, written);
    EXPECT_EQ(f.store.readProgram(settings::kTrackSite), "");
    EXPECT_EQ(f.store.readProgram(settings::kTrackListAddress), "https://tracks.test/list.txt");
    EXPECT_EQ(f.store.readProgram(settings::kSupportAddress), "help@korvel.test");
}

} // namespace
} // namespace korvel::testing
