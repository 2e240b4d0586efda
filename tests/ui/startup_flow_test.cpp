// Start-up of the desktop application as a user meets it: the first start with the profiles
// dialog, the command line, game switching and the end of the program.

#include "app_rig.h"

#include <QAction>
#include <QListWidget>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace korvel::testing {
namespace {

template <typename T = QWidget> T* child(QWidget* form, const char* name) {
    return form->findChild<T*>(QLatin1String(name));
}

bool shownText(const ScriptedDialogs& dialogs, const QString& title, const QString& start) {
    for (const auto& shown : dialogs.messages()) {
        if (shown.title == title && shown.text.startsWith(start))
            return true;
    }
    return false;
}

TEST(StartupFlow, firstStartWelcomesAddsAProfileLoadsItAndRemindsOnce) {
    AppRig rig;
    buildGameFolder(rig.drive, GameLayout());
    rig.drive.dialogs().chooseFiles({"C:\\Games\\MTM2\\monster.exe"}).typeInput(QStringLiteral("MTM2"));
    bool listEmptyAtFirst = false;
    whenShown(QStringLiteral("frmGames"), [&](QWidget* form) {
        listEmptyAtFirst = child<QListWidget>(form, "lstGames")->count() == 0 && !child(form, "cmdLoad")->isEnabled();
        QTest::mouseClick(child(form, "cmdAdd"), Qt::LeftButton);
        QTest::mouseClick(child(form, "cmdLoad"), Qt::LeftButton);
    });

    ASSERT_TRUE(rig.start());
    EXPECT_TRUE(listEmptyAtFirst);
    const ScriptedDialogs& dialogs = rig.drive.dialogs();
    EXPECT_EQ(dialogs.messages().front().title, QStringLiteral("Information"));
    EXPECT_TRUE(dialogs.messages().front().text.startsWith(QStringLiteral("Welcome!")));
    EXPECT_TRUE(shownText(dialogs, QStringLiteral("Information"), QStringLiteral("Bear in mind")));
    EXPECT_EQ(dialogs.lastMessage().title, QStringLiteral("Reminder"));
    EXPECT_TRUE(rig.drive.exists("C:\\Games\\MTM2\\backup\\POD.INI"));
    EXPECT_EQ(rig.store.readProgram(settings::kInstalledGames), "MTM2");
    EXPECT_EQ(rig.window().windowTitle(), QStringLiteral("Korvel - MTM2 - [Mounter]"));
    EXPECT_EQ(rig.pane().mounter().mounted().size(), 3);

    // The next start goes straight to the sole profile, without dialog or reminder.
    rig.window().close();
    rig.drive.dialogs().clear();
    ASSERT_TRUE(rig.start());
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
}

TEST(StartupFlow, commandLineNamesAProfileOrAnArchive) {
    AppRig rig;
    rig.addGame("4x4", gameAt("C:\\Games\\4x4", "4x4.exe"));
    GameLayout mtm2;
    mtm2.archives = {{"Data\\x.pod", "POD"}};
    rig.addGame("MTM2", mtm2);

    ASSERT_TRUE(rig.start({QStringLiteral("4x4")}));
    EXPECT_EQ(rig.window().windowTitle(), QStringLiteral("Korvel - 4x4 - [Mounter]"));
    rig.window().close();

    // An archive passed by the desktop opens with the profile named by one of its folders.
    ASSERT_TRUE(rig.start({rig.drive.host("C:\\Games\\MTM2\\Data\\x.pod")}));
    EXPECT_EQ(rig.window().windowTitle(), QStringLiteral("Korvel - MTM2 - [Extractor]"));
    EXPECT_EQ(rig.app->session().openedFile, "x.pod");
    rig.window().close();

    rig.drive.dialogs().clear();
    EXPECT_FALSE(rig.start({QStringLiteral("mtm2")}));
    EXPECT_EQ(rig.app->exitCode(), 1);
    EXPECT_EQ(rig.drive.dialogs().lastMessage().title, QStringLiteral("Unexpected Error"));
}

TEST(StartupFlow, switchingGamesClosesTheWindowAndOpensTheChosenProfile) {
    AppRig rig;
    rig.addGame("A", gameAt("C:\\Games\\A"));
    GameLayout b = gameAt("C:\\Games\\B");
    b.podIni = {"ONE.POD"};
    rig.addGame("B", b);
    ASSERT_TRUE(rig.start({QStringLiteral("A")}));
    QSignalSpy windows(rig.app.get(), &app::KorvelApplication::windowChanged);

    whenShown(QStringLiteral("frmGames"), [](QWidget* form) {
        auto* list = child<QListWidget>(form, "lstGames");
        doubleClick(list, 1);
    });
    rig.window().findChild<QAction*>(QStringLiteral("mnuSwitch"))->trigger();
    ASSERT_TRUE(waitFor([&] { return rig.app->window() && rig.app->session().currentGame == "B"; }));
    EXPECT_EQ(rig.window().windowTitle(), QStringLiteral("Korvel - B - [Mounter]"));
    EXPECT_EQ(rig.pane().mounter().mounted().size(), 1);
    EXPECT_EQ(windows.count(), 2);                                 // the old window gone, the new one made
    EXPECT_EQ(rig.store.readProfile("A", settings::kScreen), "A"); // the old window's close sequence ran

    // Exit in the dialog ends the program without an error.
    QSignalSpy finished(rig.app.get(), &app::KorvelApplication::finished);
    whenShown(QStringLiteral("frmGames"),
              [](QWidget* form) { QTest::mouseClick(child(form, "cmdExit"), Qt::LeftButton); });
    rig.window().findChild<QAction*>(QStringLiteral("mnuSwitch"))->trigger();
    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    EXPECT_EQ(finished.front().front().toInt(), 0);
    EXPECT_EQ(rig.app->window(), nullptr);
}

TEST(StartupFlow, switchingIsCancelledWhenTheWindowRefusesToClose) {
    AppRig rig;
    rig.addGame("MTM2");
    ASSERT_TRUE(rig.start());
    ui::MainWindow* before = rig.app->window();
    QTest::keyClick(rig.list("lstMounted"), Qt::Key_Delete); // an unsaved change
    rig.drive.dialogs().answer(MessageAnswer::Cancel);
    rig.app->switchGame();
    EXPECT_EQ(rig.app->window(), before);
    EXPECT_TRUE(before->isVisible());
}

} // namespace
} // namespace korvel::testing
