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
                                        "Configurator", "Autosort", "Browse", "BrowseDir", "ExtraDirs", "Lock"}));
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
                                        "TrackSite", "TrackListAddress"}));
    EXPECT_EQ(f.store.readProgram(settings::kTrackSite), "");
    EXPECT_EQ(f.store.readProgram(settings::kTrackListAddress), "https://tracks.test/list.txt");
    EXPECT_EQ(f.store.readProgram(settings::kSupportAddress), "help@korvel.test");
}
