// The Mounter pane in the running application: buttons, keys, context menus, drag and drop, the
// splitter and the close sequence, checked against the POD.INI on disk.

#include "app_rig.h"
#include "mounter/widgets/mounted_model.h"
#include "ui/widgets/twips.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

namespace korvel::testing {
namespace {

constexpr const char* kGame = "MTM2";

std::string iniText(const std::vector<std::string>& entries) {
    std::string text = std::to_string(entries.size()) + "\r\n";
    for (const std::string& entry : entries)
        text += entry + "\r\n";
    return text;
}

std::vector<std::string> texts(const EntryList& list) {
    std::vector<std::string> out;
    for (const MountedEntry& row : list.rows())
        out.push_back(row.text);
    return out;
}

class MounterPaneTest : public ::testing::Test {
protected:
    const std::vector<std::string> kMounted{"A.POD", "B.POD", "C.POD", "D.POD", "E.POD"};

    void startGame(bool autosave) {
        GameLayout layout;
        layout.podIni = kMounted;
        for (const char* name : {"A.POD", "B.POD", "C.POD", "D.POD", "E.POD", "Z.POD", "ADDON\\X.POD"})
            layout.archives.emplace_back(name, "POD");
        rig.addGame(kGame, layout);
        for (std::string_view name : {settings::kAsPod, settings::kAsChange})
            rig.set(kGame, name, autosave ? "1" : "0");
        rig.set(kGame, settings::kAsExit, "0");
        ASSERT_TRUE(rig.start());
        mounted = rig.list("lstMounted");
        unmounted = rig.list("lstUnmounted");
        ASSERT_TRUE(mounted && unmounted);
    }

    Mounter& core() { return rig.pane().mounter(); }
    QPoint rowCentre(QAbstractItemView* view, int row) {
        return view->visualRect(view->model()->index(row, 0)).center();
    }
    // Clicks the first row, Ctrl-clicks the others.
    void select(QAbstractItemView* view, const std::vector<int>& rows) {
        for (size_t i = 0; i < rows.size(); ++i)
            QTest::mouseClick(view->viewport(), Qt::LeftButton, i == 0 ? Qt::NoModifier : Qt::ControlModifier,
                              rowCentre(view, rows[i]));
    }
    int unmountedRow(const std::string& text) {
        const auto& rows = core().unmounted().rows();
        for (size_t i = 0; i < rows.size(); ++i)
            if (rows[i].text == text)
                return int(i);
        return -1;
    }
    // A drag that enters the mounted list, moves to `where` and is dropped there.
    void drop(QMimeData* data, QPoint where) {
        const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(where, actions, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(mounted->viewport(), &enter);
        QDragMoveEvent move(where, actions, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(mounted->viewport(), &move);
        QDropEvent event(QPointF(where), actions, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(mounted->viewport(), &event);
        delete data;
    }
    void clickButton(const char* name) { QTest::mouseClick(rig.find(name), Qt::LeftButton); }

    AppRig rig;
    QAbstractItemView* mounted = nullptr;
    QAbstractItemView* unmounted = nullptr;
};

TEST_F(MounterPaneTest, mountsAndReordersWithAutosaveWritingPodIniAtOnce) {
    startGame(true);
    EXPECT_EQ(rig.find<QLabel>("lblPODs")->text(), QStringLiteral("5/99 PODs Mounted"));

    select(unmounted, {unmountedRow("Z.POD")});
    clickButton("cmdMount");
    EXPECT_EQ(rig.podIni(), iniText({"A.POD", "B.POD", "C.POD", "D.POD", "E.POD", "Z.POD"}));
    EXPECT_EQ(rig.find<QLabel>("lblPODs")->text(), QStringLiteral("6/99 PODs Mounted"));
    EXPECT_EQ(unmountedRow("Z.POD"), -1);

    select(mounted, {5});
    QTest::keyClick(mounted, Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(rig.podIni(), iniText({"Z.POD", "A.POD", "B.POD", "C.POD", "D.POD", "E.POD"}));
    EXPECT_EQ(core().mounted().selectedRows(), std::vector<int>{0});

    // Enter in the unmounted list mounts, Delete in the mounted list unmounts (and the archive is back).
    select(unmounted, {0});
    const std::string entered = core().unmounted().at(0).path;
    QTest::keyClick(unmounted, Qt::Key_Return);
    EXPECT_EQ(core().mounted().rows().back().path, entered);
    select(mounted, {0});
    QTest::keyClick(mounted, Qt::Key_Delete);
    EXPECT_NE(unmountedRow("Z.POD"), -1);
    EXPECT_EQ(rig.podIni(), iniText({"A.POD", "B.POD", "C.POD", "D.POD", "E.POD", entered}));
}

TEST_F(MounterPaneTest, keysMoveRowsAndPodIniWaitsForContinueWithoutAutosave) {
    startGame(false);
    const std::string loaded = rig.podIni();

    select(mounted, {1, 3});
    QTest::keyClick(mounted, Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(texts(core().mounted()), (std::vector<std::string>{"B.POD", "D.POD", "A.POD", "C.POD", "E.POD"}));
    QTest::keyClick(mounted, Qt::Key_B, Qt::ControlModifier);
    EXPECT_EQ(texts(core().mounted()), (std::vector<std::string>{"A.POD", "C.POD", "E.POD", "B.POD", "D.POD"}));
    select(mounted, {1});
    QTest::keyClick(mounted, Qt::Key_U, Qt::ControlModifier);
    QTest::keyClick(mounted, Qt::Key_D, Qt::ControlModifier);
    QTest::keyClick(mounted, Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(texts(core().mounted()), (std::vector<std::string>{"A.POD", "E.POD", "C.POD", "B.POD", "D.POD"}));
    EXPECT_EQ(rig.podIni(), loaded);

    clickButton("cmdContinue");
    EXPECT_EQ(rig.podIni(), iniText({"A.POD", "E.POD", "C.POD", "B.POD", "D.POD"}));

    // F5 reads POD.INI again, dropping what was not saved.
    select(mounted, {0});
    QTest::keyClick(mounted, Qt::Key_B, Qt::ControlModifier);
    QTest::keyClick(mounted, Qt::Key_F5);
    EXPECT_EQ(texts(core().mounted()), (std::vector<std::string>{"A.POD", "E.POD", "C.POD", "B.POD", "D.POD"}));
    EXPECT_FALSE(rig.pane().mountedListChanged());
}

TEST_F(MounterPaneTest, contextMenusOpenOnRightReleaseWithTheirDefaultsAndKeys) {
    startGame(false);
    auto* menu = rig.pane().findChild<QMenu*>(QStringLiteral("mnuMounted"));
    QTest::mouseRelease(mounted->viewport(), Qt::RightButton, {}, rowCentre(mounted, 2));
    ASSERT_TRUE(waitFor([&] { return menu->isVisible(); }));
    EXPECT_EQ(menu->defaultAction()->objectName(), QStringLiteral("mnuUnmount"));
    menu->hide();

    const auto caption = [&](const char* name) {
        return rig.window().findChild<QAction*>(QLatin1String(name))->text();
    };
    EXPECT_TRUE(caption("mnuTop").endsWith(QStringLiteral("\tCtrl+T")));
    EXPECT_TRUE(caption("mnuBottom").endsWith(QStringLiteral("\tCtrl+B")));
    EXPECT_TRUE(caption("mnuDelete").endsWith(QStringLiteral("\tDel")));
    EXPECT_TRUE(caption("mnuRefreshUnmounted").endsWith(QStringLiteral("\tF5")));
    EXPECT_FALSE(caption("mnuUnmount").contains(QLatin1Char('\t')));

    auto* other = rig.pane().findChild<QMenu*>(QStringLiteral("mnuUnmounted"));
    QTest::mouseRelease(unmounted->viewport(), Qt::RightButton, {}, rowCentre(unmounted, 0));
    ASSERT_TRUE(waitFor([&] { return other->isVisible(); }));
    EXPECT_EQ(other->defaultAction()->objectName(), QStringLiteral("mnuMount"));
    other->hide();

    select(mounted, {0});
    rig.window().findChild<QAction*>(QStringLiteral("mnuBottom"))->trigger();
    EXPECT_EQ(texts(core().mounted()).back(), "A.POD");
}

TEST_F(MounterPaneTest, dropsPodFilesWhereThePointerIsAndMovesRowsWithinTheList) {
    startGame(false);
    rig.drive.write("C:\\Other\\NEW.POD", "POD");
    rig.drive.write("C:\\Other\\notes.txt", "text");

    auto* files = new QMimeData;
    files->setUrls({QUrl::fromLocalFile(rig.drive.host("C:\\Other\\notes.txt")),
                    QUrl::fromLocalFile(rig.drive.host("C:\\Other\\NEW.POD"))});
    drop(files, rowCentre(mounted, 1));
    EXPECT_EQ(texts(core().mounted()),
              (std::vector<std::string>{"A.POD", "\\OTHER\\NEW.POD", "B.POD", "C.POD", "D.POD", "E.POD"}));
    EXPECT_EQ(rig.find<QLabel>("lblPODs")->text(), QStringLiteral("6/99 PODs Mounted"));

    // The same file again is refused; below the last row appends.
    auto* again = new QMimeData;
    again->setUrls({QUrl::fromLocalFile(rig.drive.host("C:\\Other\\NEW.POD"))});
    drop(again, QPoint(5, mounted->viewport()->height() - 3));
    EXPECT_EQ(core().mounted().size(), 6);

    // Rows 4 and 5 dragged onto row 1 go to the top, in order, once each.
    select(mounted, {4, 5});
    QModelIndexList picked = mounted->selectionModel()->selectedIndexes();
    drop(mounted->model()->mimeData(picked), rowCentre(mounted, 0));
    EXPECT_EQ(texts(core().mounted()),
              (std::vector<std::string>{"D.POD", "E.POD", "A.POD", "\\OTHER\\NEW.POD", "B.POD", "C.POD"}));
    EXPECT_EQ(core().mounted().selectedRows(), (std::vector<int>{0, 1}));
}

TEST_F(MounterPaneTest, splitterStaysWithinItsBoundsAndRightReleaseResetsIt) {
    startGame(false);
    auto* bar = rig.find("sldMounter");
    auto* list = rig.find("lstMounted");
    const auto send = [&](QEvent::Type type, int y, Qt::MouseButton button) {
        QMouseEvent event(type, QPointF(10, y), bar->mapToGlobal(QPointF(10, y)), button,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(button), Qt::NoModifier);
        QCoreApplication::sendEvent(bar, &event);
    };
    const QColor face = bar->palette().color(QPalette::Window);

    send(QEvent::MouseButtonPress, 2, Qt::LeftButton);
    EXPECT_EQ(bar->palette().color(QPalette::Window), QColor(0x808080));
    send(QEvent::MouseMove, -2000, Qt::LeftButton);
    EXPECT_EQ(rig.pane().splitterTop(), 780);
    send(QEvent::MouseMove, 4000, Qt::LeftButton);
    EXPECT_EQ(rig.pane().splitterTop(), 5370);
    send(QEvent::MouseButtonRelease, 2, Qt::LeftButton);
    EXPECT_EQ(bar->palette().color(QPalette::Window), face);
    EXPECT_EQ(rig.store.readProfile(kGame, settings::kSlider), "5370");
    EXPECT_EQ(list->height(), ui::twipsToPixels(5370 - 180, list));

    send(QEvent::MouseButtonRelease, 2, Qt::RightButton);
    EXPECT_EQ(rig.pane().splitterTop(), 3070);
    EXPECT_EQ(rig.store.readProfile(kGame, settings::kSlider), "3070");
    EXPECT_EQ(list->height(), ui::twipsToPixels(3070 - 180, list));
    // Moving without a left press does not drag.
    send(QEvent::MouseMove, -2000, Qt::NoButton);
    EXPECT_EQ(rig.pane().splitterTop(), 3070);
}

TEST_F(MounterPaneTest, closingWithUnsavedChangesAsksAndSavesOnYes) {
    startGame(false);
    const std::string loaded = rig.podIni();
    QSignalSpy finished(rig.app.get(), &app::KorvelApplication::finished);

    clickButton("cmdMountAll");
    rig.drive.dialogs().answer(MessageAnswer::Cancel);
    EXPECT_FALSE(rig.window().close());
    EXPECT_EQ(rig.podIni(), loaded);
    EXPECT_EQ(finished.count(), 0);

    rig.drive.dialogs().answer(MessageAnswer::Yes);
    EXPECT_TRUE(rig.window().close());
    EXPECT_EQ(rig.podIni().substr(0, 3), "7\r\n");
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.front().front().toInt(), 0);
}

TEST_F(MounterPaneTest, aFailedSaveIsShownWithTheReason) {
    startGame(true);
    rig.drive.remove("C:\\Games\\MTM2\\POD.INI");
    rig.drive.makeFolder("C:\\Games\\MTM2\\POD.INI");
    const size_t shown = rig.drive.dialogs().messages().size();
    select(unmounted, {0});
    clickButton("cmdMount");
    ASSERT_EQ(rig.drive.dialogs().messages().size(), shown + 1);
    EXPECT_EQ(rig.drive.dialogs().lastMessage().icon, MessageIcon::Critical);
    EXPECT_FALSE(rig.drive.dialogs().lastMessage().text.isEmpty());
    EXPECT_EQ(core().mounted().size(), 6); // the list keeps the change; POD.INI could not take it

    clickButton("cmdView");
    EXPECT_EQ(rig.drive.shell().documents, std::vector<std::string>{"C:\\Games\\MTM2\\POD.INI"});
}

} // namespace
} // namespace korvel::testing
