#include "startup/widgets/options_dialog.h"
#include "ui/widgets/gold_button.h"
#include "window_fixture.h"

#include <QButtonGroup>
#include <QCheckBox>
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
        set(settings::kSlide, "1");
        set(settings::kAutosort, "1");
        set(settings::kConfigurator, "False");
        set(settings::kLock, "2");
        set(settings::kBrowseDir, "C:\\Games\\MTM2");
        set(settings::kExtraDirs, "C:\\Extra\\One|C:\\Extra\\Two|C:\\Extra\\Three");
        registry.written.clear();
    }
    void set(std::string_view name, const std::string& text) { store.writeProfile("MTM2", name, text); }
    std::string get(std::string_view name) { return store.readProfile("MTM2", name); }

    korvel::OptionsDialog& open() {
        dialog = std::make_unique<korvel::OptionsDialog>(store, session, dialogs);
        dialog->show();
        return *dialog;
    }
    // Turns to a page and lets its layout settle, so clicks land on the controls.
    void page(int index) {
        find<QTabWidget>("tabOptions")->setCurrentIndex(index);
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    template <typename T> T* find(const char* name) { return dialog->findChild<T*>(QString::fromLatin1(name)); }
    // Clicks a button; check and option boxes on their box, since only the box and caption react.
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
    auto& dialog = f.open();
    EXPECT_EQ(dialog.windowTitle(), "Options");
    EXPECT_EQ(f.find<QTabWidget>("tabOptions")->count(), 4);
    EXPECT_TRUE(f.find<QCheckBox>("chkSlide")->isChecked());
    EXPECT_FALSE(f.find<QCheckBox>("chkFlat")->isChecked());
    EXPECT_FALSE(f.find<QCheckBox>("chkConfigurator")->isChecked());
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
    EXPECT_EQ(f.get(settings::kFlat), "1");
    EXPECT_EQ(f.get(settings::kConfigurator), "False");
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
    EXPECT_EQ(f.dialogs.lastMessage().icon, korvel::MessageIcon::Exclamation);

    f.dialogs.answer(MessageAnswer::Yes);
    f.find<QCheckBox>("chkConfigurator")->setFocus();
    QTest::keyClick(f.find<QCheckBox>("chkConfigurator"), Qt::Key_Space);
    EXPECT_TRUE(f.find<QCheckBox>("chkConfigurator")->isChecked());
    f.click("chkConfigurator"); // switching off asks nothing
    EXPECT_EQ(f.dialogs.messages().size(), 2u);
    f.click("cmdOK");
    EXPECT_EQ(f.get(settings::kConfigurator), "False");
}

TEST(OptionsDialog, extraFolderListAddsRemovesShowsAndStoresAnEmptyListAsOneNul) {
    OptionsFixture f;
    f.open();
    f.page(3);
    auto* list = f.find<QListWidget>("lstExtraDirs");

    f.dialogs.chooseFolder(std::string("C:\\Extra\\Four")).chooseFolder(std::nullopt);
    f.click("cmdAdd");
    f.click("cmdAdd");
    ASSERT_EQ(list->count(), 4);
    EXPECT_EQ(list->item(3)->text(), "C:\\Extra\\Four");
    EXPECT_EQ(f.dialogs.asked().front().title, "Choose the directory to start in:");

    list->setCurrentRow(1);
    f.click("cmdShow");
    EXPECT_EQ(f.dialogs.lastMessage().text, "C:\\Extra\\Two");
    EXPECT_EQ(f.dialogs.lastMessage().title, "Information");
    f.click("cmdRemove");
    EXPECT_EQ(list->currentItem()->text(), "C:\\Extra\\Three"); // the entry now at the removed place
    list->setCurrentRow(2);
    f.click("cmdRemove");
    EXPECT_EQ(list->currentRow(), 1); // the last entry when the last was removed
    const QPoint first = list->visualItemRect(list->item(0)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, first);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualItemRect(list->item(0)).center());
    EXPECT_EQ(list->count(), 1);
    f.click("cmdRemove");
    EXPECT_EQ(list->count(), 0);
    f.click("cmdRemove"); // nothing selected: nothing happens
    f.click("cmdOK");
    EXPECT_EQ(f.registry.readValue(korvel::RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2", "ExtraDirs"),
              std::string(1, '\0'));

    f.open();
    EXPECT_EQ(f.find<QListWidget>("lstExtraDirs")->count(), 0);
}

TEST(OptionsDialog, okFromTheMainWindowGivesEverySkinnedButtonTheNewLook) {
    korvel::testing::WindowFixture w;
    w.set(settings::kFlat, "0");
    auto& window = w.open();
    EXPECT_EQ(window.playButton()->onUp(), 4);
    QDialog* options = window.showOptions();
    auto* flat = options->findChild<QCheckBox*>("chkFlat");
    QTest::mouseClick(flat, Qt::LeftButton, Qt::NoModifier, QPoint(6, flat->height() / 2));
    QTest::mouseClick(options->findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
    for (auto* button : window.findChildren<korvel::ui::GoldButton*>())
        EXPECT_EQ(std::tuple(button->onUp(), button->onHover(), button->onDown()), std::tuple(0, 4, 2));
}
