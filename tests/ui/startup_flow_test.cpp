#include "platform/file_registry.h"
#include "ui_rig.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>

namespace korvel::testing {
namespace {

TEST(StartupFlow, firstStartWelcomesAddsAProfileLoadsItAndRemindsOnce) {
    AppRig rig;
    buildGameFolder(rig.drive, GameLayout());
    // Names the store could not keep are refused at the prompt, which asks again.
    rig.drive.dialogs()
        .chooseFiles({"C:\\Games\\MTM2\\monster.exe"})
        .typeInput(QStringLiteral("MTM|2"))
        .typeInput(QStringLiteral("MTM2\\"))
        .typeInput(QStringLiteral("MTM2"));
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
    EXPECT_TRUE(rig.drive.exists("C:\\Games\\MTM2\\backup\\POD.INI"));
    EXPECT_EQ(rig.store.readProgram(settings::kInstalledGames), "MTM2");
    const QStringList texts = dialogs.messageTexts();
    EXPECT_EQ(texts.filter(QStringLiteral("cannot hold \"|\"")).size(), 1);
    EXPECT_EQ(texts.filter(QStringLiteral("cannot end with \"\\\"")).size(), 1);
    EXPECT_EQ(dialogs.asked().back().proposal, QStringLiteral("MTM2\\")); // what was typed, to correct
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
    GameLayout other;
    other.folder = "C:\\Games\\4x4";
    rig.addGame("4x4", other);
    GameLayout mtm2;
    mtm2.archives = {{"Data\\x.pod", "POD"}};
    rig.addGame("MTM2", mtm2);
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

TEST(StartupFlow, aDamagedOrUnwritableSettingsStoreIsExplainedBeforeAnythingElse) {
    enum class Store { Damaged, Unwritable };
    const struct {
        const char* name;
        Store store;
        QStringList arguments;
        QString warning;    // what the explanation says
        QString nextTitle;  // the message that follows it
        bool profilesShown; // the profiles dialog opens (and is left by Exit)
    } cases[] = {
        {"damaged, first start", Store::Damaged, {}, "was damaged", "Information", true},
        {"damaged, a game named on the command line",
         Store::Damaged,
         {"MTM2"},
         "was damaged",
         "Unexpected Error",
         false},
        {"unwritable, first start", Store::Unwritable, {}, "cannot be written", "Information", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempDrive drive;
        QString path = drive.root() + QStringLiteral("/config/registry.json");
        if (c.store == Store::Damaged) {
            QDir().mkpath(drive.root() + QStringLiteral("/config"));
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write("{ \"HKEY_CURRENT_USER\": [ broken");
        } else {
            // Its folder cannot be made: a file stands where the folder should be.
            QFile blocker(drive.root() + QStringLiteral("/config"));
            ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
            path = drive.root() + QStringLiteral("/config/korvel/registry.json");
        }
        FileRegistry registry(path);
        Services services{drive.paths(), drive.files(), registry, drive.dialogs(), drive.shell()};
        SettingsStore store{registry, drive.dialogs()};
        FileAssociation association{store, drive.paths(), {drive.host("C:\\Tools\\Korvel.exe"), false, {}, false}};
        app::KorvelApplication korvel(services, store, association);
        qsizetype shownBeforeProfiles = -1;
        if (c.profilesShown) {
            whenShown(QStringLiteral("frmGames"), [&](QWidget* form) {
                shownBeforeProfiles = drive.dialogs().messages().size();
                click(form, "cmdExit");
            });
        }
        EXPECT_FALSE(korvel.start(c.arguments));
        const auto& shown = drive.dialogs().messages();
        ASSERT_EQ(shown.size(), 2u);
        EXPECT_EQ(shown[0].title, QStringLiteral("WARNING!"));
        EXPECT_TRUE(shown[0].text.contains(c.warning)) << shown[0].text.toStdString();
        EXPECT_EQ(shown[1].title, c.nextTitle);
        if (c.profilesShown) {
            EXPECT_EQ(shownBeforeProfiles, 2);
        }
    }
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
    EXPECT_TRUE(dialogs.messages().front().text.startsWith(
        QStringLiteral("Sorry, but your Korvel game configuration data has been corrupted.")));
    EXPECT_EQ(rig.store.readProfile("MTM2", settings::kMmpa), "99");
    EXPECT_EQ(rig.window().windowTitle(), QStringLiteral("Korvel - MTM2 - [Mounter]"));

    // Leaving the dialog instead ends the program after the message, as before.
    AppRig left;
    left.addGame("MTM2");
    left.store.writeProfile("MTM2", settings::kMmpa, "Error");
    whenShown(QStringLiteral("frmGames"), [](QWidget* form) { form->close(); });
    EXPECT_FALSE(left.start());
}

} // namespace
} // namespace korvel::testing
