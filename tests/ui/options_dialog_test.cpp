#include "platform/path_map.h"
#include "startup/widgets/options_dialog.h"
#include "ui_rig.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace korvel::testing {
namespace {

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
