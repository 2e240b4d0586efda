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

TEST(StartupFlow, theOpenedWindowShowsTheMounterKeysInItsMenuCaptions) {
    AppRig rig;
    rig.addGame("MTM2");
    ASSERT_TRUE(rig.start());
    const std::pair<const char*, const char*> captions[] = {
        {"mnuTop", "Move to &Top\tCtrl+T"},       {"mnuUp", "Move &Up\tCtrl+U"}, {"mnuDown", "Move &Down\tCtrl+D"},
        {"mnuBottom", "Move to &Bottom\tCtrl+B"}, {"mnuDelete", "&Delete\tDel"}, {"mnuRefreshMounted", "&Refresh\tF5"},
        {"mnuRefreshUnmounted", "&Refresh\tF5"},
    };
    for (const auto& [name, caption] : captions) {
        QAction* action = rig.find<QAction>(name);
        ASSERT_TRUE(action) << name;
        EXPECT_EQ(action->text(), QString::fromLatin1(caption)) << name;
    }
}

TEST(StartupFlow, commandLineNamesAProfileOrAnArchive) {
    AppRig rig;
    GameLayout other;
    other.folder = "C:\\Games\\4x4";
    rig.addGame("4x4", other);
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

} // namespace
} // namespace korvel::testing
