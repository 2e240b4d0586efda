#include "platform/path_map.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "startup/widgets/options_dialog.h"
#include "temp_game.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using korvel::MessageAnswer;
namespace settings = korvel::settings;

namespace {

// A registry that remembers the names of the values written, in order.
class RecordingRegistry : public korvel::RegistryTree {
public:
    bool writeValue(korvel::RegistryRoot root, const std::string& subkey, const std::string& name,
                    const std::string& data) override {
        written.push_back(name);
        return RegistryTree::writeValue(root, subkey, name, data);
    }
    std::vector<std::string> written;
};

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

    void open() {
        dialog = std::make_unique<korvel::OptionsDialog>(store, session, dialogs);
        dialog->show();
    }
    void page(int index) {
        find<QTabWidget>("tabOptions")->setCurrentIndex(index);
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    template <typename T> T* find(const char* name) { return dialog->findChild<T*>(QString::fromLatin1(name)); }
    // Check and option boxes react on their box only.
    void click(const char* name) {
        auto* button = find<QAbstractButton>(name);
        const bool box = qobject_cast<QCheckBox*>(button) || qobject_cast<QRadioButton*>(button);
        QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier,
                          box ? QPoint(6, button->height() / 2) : button->rect().center());
    }

    RecordingRegistry registry;
    korvel::testing::ScriptedDialogs dialogs;
    korvel::SettingsStore store;
    korvel::Session session;
    std::unique_ptr<korvel::OptionsDialog> dialog;
};

} // namespace

TEST(OptionsDialog, opensWithTheStoredValuesAndDisablesGameOnlyChoicesWithoutConfigurator) {
    OptionsFixture f(false);
    f.open();
    EXPECT_TRUE(f.find<QCheckBox>("chkSlide")->isChecked());
    EXPECT_FALSE(f.find<QCheckBox>("chkFlat")->isChecked());
    EXPECT_EQ(f.find<QButtonGroup>("optLock")->checkedId(), 2);
    EXPECT_EQ(f.find<QListWidget>("lstExtraDirs")->count(), 3);
    EXPECT_FALSE(f.find<QLineEdit>("txtBrowseDir")->isEnabled());
    EXPECT_FALSE(f.find<QPushButton>("cmdBrowseDir")->isEnabled());
    f.page(1);
    EXPECT_FALSE(f.find<QCheckBox>("chkPlayer")->isEnabled());
    EXPECT_FALSE(f.find<QCheckBox>("chkMonster")->isEnabled());
    EXPECT_TRUE(f.find<QCheckBox>("chkPOD")->isEnabled());
    f.page(2);
    EXPECT_FALSE(f.find<QRadioButton>("optLock1")->isEnabled());
    EXPECT_TRUE(f.find<QRadioButton>("optLock3")->isEnabled());
    f.page(3);
    f.click("chkBrowse");
    EXPECT_TRUE(f.find<QLineEdit>("txtBrowseDir")->isEnabled());
    EXPECT_TRUE(f.find<QPushButton>("cmdBrowseDir")->isEnabled());
}

TEST(OptionsDialog, okWritesEveryValueInItsOrderAndCancelWritesNothing) {
    OptionsFixture f;
    f.open();
    f.page(2);
    f.click("optLock3");
    f.page(0);
    f.click("chkFlat");
    f.click("cmdCancel");
    EXPECT_TRUE(f.registry.written.empty());
    EXPECT_EQ(f.get(settings::kLock), "2");
    f.open();
    int saved = 0;
    QObject::connect(f.dialog.get(), &korvel::OptionsDialog::saved, [&saved] { ++saved; });
    f.page(2);
    f.click("optLock3");
    f.page(0);
    f.click("chkFlat");
    f.click("cmdOK");
    EXPECT_EQ(f.registry.written,
              (std::vector<std::string>{"AS-POD", "AS-Player", "AS-Monster", "AS-Change", "AS-Exit", "Flat", "Slide",
                                        "Configurator", "Autosort", "Browse", "BrowseDir", "ExtraDirs", "Lock",
                                        "CodePage", "LaunchCommand"}));
    EXPECT_EQ(f.get(settings::kLock), "3");
    EXPECT_EQ(f.get(settings::kExtraDirs), "C:\\Extra\\One|C:\\Extra\\Two|C:\\Extra\\Three");
    EXPECT_EQ(saved, 1);
    EXPECT_FALSE(f.dialog->isVisible());
}

TEST(OptionsDialog, configuratorWarningOnlyWhenSwitchingOnAndNoKeepsItOff) {
    OptionsFixture f;
    f.open();
    f.dialogs.answer(MessageAnswer::No);
    f.click("chkConfigurator");
    EXPECT_FALSE(f.find<QCheckBox>("chkConfigurator")->isChecked());
    EXPECT_EQ(f.dialogs.lastMessage().title, "WARNING!");
    EXPECT_EQ(f.dialogs.lastMessage().buttons, korvel::MessageButtons::YesNo);
    f.dialogs.answer(MessageAnswer::Yes);
    f.find<QCheckBox>("chkConfigurator")->setFocus();
    QTest::keyClick(f.find<QCheckBox>("chkConfigurator"), Qt::Key_Space);
    EXPECT_TRUE(f.find<QCheckBox>("chkConfigurator")->isChecked());
    f.click("chkConfigurator"); // switching off asks nothing
    EXPECT_EQ(f.dialogs.messages().size(), 2u);
    f.click("cmdOK");
    EXPECT_EQ(f.get(settings::kConfigurator), "False");
}

TEST(OptionsDialog, pathsPageTakesTypedHostPathsACodePageAndALaunchCommand) {
    QTemporaryDir drive;
    korvel::PathMap paths;
    paths.mapDrive('C', drive.path());
    OptionsFixture f;
    f.open();
    f.dialog->setPathMap(&paths);
    f.page(3);
    f.find<QLineEdit>("txtBrowseDir")->setText(drive.path() + "/Games/MTM2");
    f.find<QLineEdit>("txtLaunchCommand")->setText("lutris rungame mtm2");
    const struct {
        QString codePage;
        bool accepted;
    } cases[] = {{"cp9999", false}, {"1251", true}};
    for (const auto& c : cases) {
        f.find<QLineEdit>("txtCodePage")->setText(c.codePage);
        f.registry.written.clear();
        f.click("cmdOK");
        EXPECT_EQ(f.dialog->isVisible(), !c.accepted) << c.codePage.toStdString();
        EXPECT_EQ(f.registry.written.empty(), !c.accepted) << c.codePage.toStdString();
    }
    EXPECT_TRUE(f.dialogs.messages().front().text.contains("\"cp9999\""));
    EXPECT_EQ(f.get(settings::kBrowseDir), "C:\\Games\\MTM2");
    EXPECT_EQ(f.get(settings::kCodePage), "1251");
    EXPECT_EQ(f.get(settings::kLaunchCommand), "lutris rungame mtm2");

    f.open();
    f.dialog->setPathMap(&paths);
    f.page(3);
    EXPECT_EQ(f.find<QLineEdit>("txtCodePage")->text(), "1251");
    f.find<QLineEdit>("txtBrowseDir")->setText("Q:\\Nowhere");
    f.click("cmdOK");
    EXPECT_TRUE(f.dialog->isVisible());
    EXPECT_TRUE(f.dialogs.lastMessage().text.contains("drive Q:"));
}

TEST(OptionsDialog, addRefusesAnExtraFolderTheStoredListCouldNotKeep) {
    OptionsFixture f;
    f.open();
    f.page(3);
    auto* list = f.find<QListWidget>("lstExtraDirs");
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
        EXPECT_EQ(list->count(), add.count);
        if (!add.said) {
            EXPECT_TRUE(f.dialogs.messages().empty());
            continue;
        }
        ASSERT_EQ(f.dialogs.messages().size(), 1u);
        EXPECT_TRUE(f.dialogs.lastMessage().text.contains(QString::fromLatin1(add.said)));
        EXPECT_EQ(f.dialogs.lastMessage().icon, korvel::MessageIcon::Information);
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
    f.open();
    qunsetenv("KORVEL_WEB_ADDRESS");
    f.page(4);
    EXPECT_EQ(f.find<QLineEdit>("txtTrackSite")->text(), "https://tracks.test/");
    EXPECT_EQ(f.find<QLineEdit>("txtSupportAddress")->text(), "help@korvel.test");
    EXPECT_EQ(f.find<QLineEdit>("txtWebAddress")->text(), "");
    ASSERT_NE(f.find<QLabel>("txtWebAddressOverride"), nullptr);
    EXPECT_TRUE(f.find<QLabel>("txtWebAddressOverride")->text().contains("https://env.test/"));
    EXPECT_EQ(f.find<QLabel>("txtTrackListOverride"), nullptr);

    f.find<QLineEdit>("txtTrackList")->setText(QStringLiteral("tracks.test/list.txt"));
    f.page(0);
    f.click("cmdOK");
    EXPECT_TRUE(f.dialog->isVisible());
    EXPECT_TRUE(f.registry.written.empty());
    EXPECT_EQ(f.dialogs.lastMessage().title, "Input Required");
    EXPECT_EQ(f.find<QTabWidget>("tabOptions")->currentIndex(), 4);

    f.find<QLineEdit>("txtTrackList")->setText(QStringLiteral(" https://tracks.test/list.txt "));
    f.find<QLineEdit>("txtTrackSite")->clear();
    f.click("cmdOK");
    EXPECT_FALSE(f.dialog->isVisible());
    EXPECT_EQ(f.registry.written,
              (std::vector<std::string>{"AS-POD", "AS-Player", "AS-Monster", "AS-Change", "AS-Exit", "Flat", "Slide",
                                        "Configurator", "Autosort", "Browse", "BrowseDir", "ExtraDirs", "Lock",
                                        "CodePage", "LaunchCommand", "TrackSite", "TrackListAddress"}));
    EXPECT_EQ(f.store.readProgram(settings::kTrackSite), "");
    EXPECT_EQ(f.store.readProgram(settings::kTrackListAddress), "https://tracks.test/list.txt");
    EXPECT_EQ(f.store.readProgram(settings::kSupportAddress), "help@korvel.test");
}
