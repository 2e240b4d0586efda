// `frmGames` driven by its controls: adding through the file dialog or a typed path, removing,
// loading and leaving, and what reaches the store.

#include "app_rig.h"
#include "startup/widgets/games_dialog.h"

#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace korvel::testing {
namespace {

class GamesDialogTest : public ::testing::Test {
protected:
    GamesDialogTest() { store.CreateKey(std::string(settings::kProgramKey)); }

    // Opens the dialog over the stored list and plays the user once it is up.
    void choose(const std::function<void()>& play) {
        GameProfiles logic(store, drive.files(), drive.dialogs(), session);
        logic.open();
        whenShown(QStringLiteral("frmGames"), [&](QWidget*) {
            list = dialog.findChild<QListWidget*>(QStringLiteral("lstGames"));
            play(); // a dialog left open is then closed as if by its frame
        });
        dialog.choose(logic);
    }
    void click(const char* name, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::mouseClick(dialog.findChild<QWidget*>(QLatin1String(name)), Qt::LeftButton, modifiers);
    }
    QStringList names() const {
        QStringList out;
        for (int i = 0; i < list->count(); ++i)
            out << list->item(i)->text();
        return out;
    }

    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    Session session;
    GamesDialog dialog;
    QListWidget* list = nullptr;
};

TEST_F(GamesDialogTest, addsThroughTheFileDialogOrATypedPathWithShift) {
    buildGameFolder(drive, gameAt("C:\\Games\\4x4", "4x4.exe"));
    drive.dialogs().chooseFiles({"C:\\Games\\4x4\\4x4.exe"}).typeInput(QStringLiteral("4x4"));
    drive.dialogs().typeInput(QStringLiteral("C:\\Games\\4x4\\4x4.exe")).typeInput(QStringLiteral("mtm 2"));
    drive.dialogs().typeInput(QStringLiteral("C:\\Games\\4x4\\nothing.exe"));
    choose([&] {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("My Game Profiles"));
        EXPECT_FALSE(dialog.findChild<QPushButton*>(QStringLiteral("cmdLoad"))->isEnabled());
        click("cmdAdd");
        click("cmdAdd", Qt::ShiftModifier);
        click("cmdAdd", Qt::ShiftModifier);
        EXPECT_EQ(names(), (QStringList{QStringLiteral("4x4"), QStringLiteral("mtm 2")}));
        click("cmdLoad");
    });
    const auto& asked = drive.dialogs().asked();
    ASSERT_GE(asked.size(), 3u);
    EXPECT_EQ(asked[0].kind, QStringLiteral("open"));
    EXPECT_EQ(asked[1].proposal, QStringLiteral("4x4"));
    EXPECT_EQ(asked[2].title, QStringLiteral("Input Required"));
    EXPECT_TRUE(asked[2].prompt.startsWith(QStringLiteral("Please enter the full path")));
    EXPECT_EQ(drive.dialogs().lastMessage().text, QStringLiteral("File not found!"));
    EXPECT_EQ(dialog.lastState(), GameProfiles::State::Loaded);
    EXPECT_EQ(session.currentGame, "4x4");
    EXPECT_EQ(store.readProgram(settings::kInstalledGames), "4x4|mtm 2");
    EXPECT_EQ(store.readProfile("mtm 2", settings::kConfigurator), "True");
    EXPECT_EQ(store.readProfile("4x4", settings::kLocationIni), "C:\\Games\\4x4\\POD.INI");
}

TEST_F(GamesDialogTest, deleteKeyRemovesAndExitStoresTheEmptyList) {
    store.writeProgram(settings::kInstalledGames, "One|Two");
    choose([&] {
        EXPECT_EQ(names(), (QStringList{QStringLiteral("One"), QStringLiteral("Two")}));
        EXPECT_EQ(list->currentRow(), 0);
        QTest::keyClick(list, Qt::Key_Delete);
        EXPECT_EQ(names(), QStringList{QStringLiteral("Two")});
        click("cmdRemove");
        EXPECT_FALSE(dialog.findChild<QPushButton*>(QStringLiteral("cmdLoad"))->isEnabled());
        click("cmdExit");
    });
    EXPECT_EQ(dialog.lastState(), GameProfiles::State::Exited);
    EXPECT_EQ(store.readProgram(settings::kInstalledGames), "Error");
}

TEST_F(GamesDialogTest, closingByTheFrameKeepsTheStoredListAndLoadsNothing) {
    store.writeProgram(settings::kInstalledGames, "One|Two");
    choose([&] {
        list->setCurrentRow(1);
        click("cmdRemove");
    });
    EXPECT_EQ(dialog.lastState(), GameProfiles::State::Open);
    EXPECT_EQ(store.readProgram(settings::kInstalledGames), "One|Two");
    EXPECT_TRUE(session.currentGame.empty());

    // The dialog can be shown again; a double click loads the entry under the pointer.
    choose([&] { doubleClick(list, 1); });
    EXPECT_EQ(session.currentGame, "Two");
}

} // namespace
} // namespace korvel::testing
