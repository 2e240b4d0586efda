#include "full_disk.h"
#include "mounter/widgets/mounted_model.h"
#include "platform/game_codec.h"
#include "ui_rig.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QLabel>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <algorithm>
#include <functional>

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
            rig.store.writeProfile(kGame, name, autosave ? "1" : "0");
        rig.store.writeProfile(kGame, settings::kAsExit, "0");
        ASSERT_TRUE(rig.start());
        mounted = rig.list("lstMounted");
        unmounted = rig.list("lstUnmounted");
        ASSERT_TRUE(mounted && unmounted);
    }

    Mounter& core() { return rig.pane().mounter(); }
    QPoint rowCentre(QAbstractItemView* view, int row) {
        return view->visualRect(view->model()->index(row, 0)).center();
    }
    void select(QAbstractItemView* view, const std::vector<int>& rows) {
        for (size_t i = 0; i < rows.size(); ++i)
            QTest::mouseClick(view->viewport(), Qt::LeftButton, i == 0 ? Qt::NoModifier : Qt::ControlModifier,
                              rowCentre(view, rows[i]));
    }
    int unmountedRow(const std::string& text) {
        const std::vector<std::string> rows = texts(core().unmounted());
        const auto at = std::find(rows.begin(), rows.end(), text);
        return at == rows.end() ? -1 : int(at - rows.begin());
    }
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
    static std::vector<int> selectedRows(QAbstractItemView* view) {
        std::vector<int> rows;
        for (const QModelIndex& index : view->selectionModel()->selectedRows())
            rows.push_back(index.row());
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    void clickButton(const char* name) { QTest::mouseClick(rig.find(name), Qt::LeftButton); }

    AppRig rig;
    QAbstractItemView* mounted = nullptr;
    QAbstractItemView* unmounted = nullptr;
};

TEST_F(MounterPaneTest, buttonsAndKeysMountMoveAndUnmountAndPodIniWaitsForContinueWithoutAutosave) {
    startGame(false);
    const std::string loaded = rig.podIni();
    EXPECT_EQ(rig.find<QLabel>("lblPODs")->text(), QStringLiteral("5/99 PODs Mounted"));
    select(unmounted, {unmountedRow("Z.POD")});
    clickButton("cmdMount");
    EXPECT_EQ(texts(core().mounted()),
              (std::vector<std::string>{"A.POD", "B.POD", "C.POD", "D.POD", "E.POD", "Z.POD"}));
    EXPECT_TRUE(selectedRows(unmounted).empty()); // the selected rows went; no other row takes their place
    select(mounted, {1, 3});
    QTest::keyClick(mounted, Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(texts(core().mounted()),
              (std::vector<std::string>{"B.POD", "D.POD", "A.POD", "C.POD", "E.POD", "Z.POD"}));
    QTest::keyClick(mounted, Qt::Key_B, Qt::ControlModifier);
    EXPECT_EQ(texts(core().mounted()),
              (std::vector<std::string>{"A.POD", "C.POD", "E.POD", "Z.POD", "B.POD", "D.POD"}));
    select(mounted, {1});
    QTest::keyClick(mounted, Qt::Key_U, Qt::ControlModifier);
    QTest::keyClick(mounted, Qt::Key_D, Qt::ControlModifier);
    QTest::keyClick(mounted, Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(selectedRows(mounted), std::vector<int>{2});
    select(unmounted, {0}); // Enter mounts, Delete unmounts
    const std::string entered = core().unmounted().at(0).path;
    QTest::keyClick(unmounted, Qt::Key_Return);
    EXPECT_EQ(core().mounted().rows().back().path, entered);
    select(mounted, {3});
    QTest::keyClick(mounted, Qt::Key_Delete);
    EXPECT_NE(unmountedRow("Z.POD"), -1);
    EXPECT_EQ(rig.podIni(), loaded);
    clickButton("cmdContinue");
    EXPECT_EQ(rig.podIni(), iniText({"A.POD", "E.POD", "C.POD", "B.POD", "D.POD", entered}));
    select(mounted, {0}); // F5 reads POD.INI again, dropping what was not saved
    QTest::keyClick(mounted, Qt::Key_B, Qt::ControlModifier);
    QTest::keyClick(mounted, Qt::Key_F5);
    EXPECT_EQ(texts(core().mounted()).front(), "A.POD");
    EXPECT_FALSE(rig.pane().mountedListChanged());
}

TEST_F(MounterPaneTest, aPodIniThatCannotBeWrittenLoadsAndRefreshesQuietlyButContinueReportsIt) {
    startGame(false);
    const std::string untidy = "5\nA.POD\nB.POD\nC.POD\nD.POD\nE.POD\n"; // a rewrite would be tried
    rig.drive.write("C:\\Games\\MTM2\\POD.INI", untidy);
    FullDisk full; // a locked or read-only POD.INI, or a full disk
    if (!full.active())
        GTEST_SKIP() << "no file-size limit on this platform";
    select(mounted, {0});
    QTest::keyClick(mounted, Qt::Key_F5);
    clickButton("cmdRefresh");
    EXPECT_TRUE(rig.drive.dialogs().messages().empty());
    EXPECT_EQ(core().mounted().size(), 5);
    select(mounted, {0});
    QTest::keyClick(mounted, Qt::Key_B, Qt::ControlModifier);
    clickButton("cmdContinue");
    ASSERT_EQ(rig.drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(rig.drive.dialogs().lastMessage().title, "Write Error");
    EXPECT_EQ(rig.podIni(), untidy);
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
    EXPECT_EQ(selectedRows(mounted), (std::vector<int>{0, 1}));
    // The rows the view selected after the move are the ones the Delete key unmounts, and the rescanned
    // unmounted list comes with its first row selected.
    QTest::keyClick(mounted, Qt::Key_Delete);
    EXPECT_EQ(texts(core().mounted()), (std::vector<std::string>{"A.POD", "\\OTHER\\NEW.POD", "B.POD", "C.POD"}));
    EXPECT_TRUE(unmountedRow("D.POD") >= 0 && unmountedRow("E.POD") >= 0);
    EXPECT_EQ(selectedRows(unmounted), std::vector<int>{0});
    // A name the game's code page cannot hold is refused by name, not mounted with "?" for its letters.
    korvel::ScopedGameCodec western(korvel::GameCodec{});
    const QString cyrillic = rig.drive.root() + QStringLiteral("/Other/Трасса.POD");
    QFile(cyrillic).open(QIODevice::WriteOnly);
    auto* foreign = new QMimeData;
    foreign->setUrls({QUrl::fromLocalFile(cyrillic)});
    drop(foreign, rowCentre(mounted, 0));
    EXPECT_EQ(core().mounted().size(), 4);
    EXPECT_TRUE(rig.drive.dialogs().lastMessage().text.contains(QStringLiteral("Трасса.POD")));
}

TEST_F(MounterPaneTest, listModelsPassTheModelTesterThroughEveryOperation) {
    startGame(false);
    MountedModel mountedModel(core().mounted()), unmountedModel(core().unmounted());
    QAbstractItemModelTester mountedTester(&mountedModel, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QAbstractItemModelTester unmountedTester(&unmountedModel, QAbstractItemModelTester::FailureReportingMode::Fatal);
    rig.drive.remove("C:\\Games\\MTM2\\C.POD");
    ASSERT_TRUE(core().refreshBoth().ok());
    EXPECT_EQ(mountedModel.index(2, MountedModel::StatusColumn).data().toString(), "Not found");
    core().MountSelected({1});
    core().MoveSelectedToTop({1, 3});
    core().MoveSelectedDown({0, 1});
    core().MoveSelectedUp({1, 2});
    core().MoveSelectedToBottom({1, 2});
    core().dropRows({3, 4}, 0);
    core().dropFiles({"C:\\Games\\MTM2\\Z.POD"}, 2);
    core().CleanMissing();
    core().UnmountSelected({0, 1});
    core().MountAll();
    core().UnmountAll();
    EXPECT_EQ(mountedModel.rowCount(), 0);
    EXPECT_EQ(unmountedModel.rowCount(), 6);
}

// Another program (korvel-cli, a second window) rewrites POD.INI while the window is open.
TEST_F(MounterPaneTest, podIniChangedBehindTheWindowsBackIsReadAgainOrAskedAboutAndNeverSavedOverUnseen) {
    startGame(false);
    ScriptedDialogs& dialogs = rig.drive.dialogs();
    const std::string ini = "C:\\Games\\MTM2\\POD.INI";
    const auto changedBehindTheBack = [&](const std::vector<std::string>& entries) {
        rig.drive.write(ini, iniText(entries));
    };
    const auto waitFor = [](const std::function<bool()>& done) { return QTest::qWaitFor(done, 5000); };

    // No unsaved change: read again without a word.
    changedBehindTheBack({"A.POD", "Z.POD"});
    ASSERT_TRUE(waitFor([&] { return core().mounted().size() == 2; }));
    EXPECT_EQ(texts(core().mounted()), (std::vector<std::string>{"A.POD", "Z.POD"}));
    EXPECT_EQ(unmountedRow("Z.POD"), -1);
    EXPECT_TRUE(dialogs.messages().empty());
    EXPECT_EQ(rig.podIni(), iniText({"A.POD", "Z.POD"}));

    // An unsaved change: the question names the file; Yes reads it again, dropping the change.
    select(mounted, {0});
    QTest::keyClick(mounted, Qt::Key_B, Qt::ControlModifier);
    ASSERT_TRUE(rig.pane().mountedListChanged());
    dialogs.answer(MessageAnswer::Yes);
    changedBehindTheBack({"B.POD", "A.POD", "Z.POD"});
    ASSERT_TRUE(waitFor([&] { return dialogs.messages().size() == 1; }));
    EXPECT_EQ(dialogs.lastMessage().title, "POD.INI Changed");
    EXPECT_EQ(dialogs.lastMessage().buttons, MessageButtons::YesNoCancel);
    EXPECT_TRUE(dialogs.lastMessage().text.contains(QStringLiteral("C:\\Games\\MTM2\\POD.INI")));
    EXPECT_EQ(texts(core().mounted()), (std::vector<std::string>{"B.POD", "A.POD", "Z.POD"}));
    EXPECT_FALSE(rig.pane().mountedListChanged());
    EXPECT_EQ(rig.podIni(), iniText({"B.POD", "A.POD", "Z.POD"}));

    // No writes this window's list over the other program's.
    select(mounted, {0});
    QTest::keyClick(mounted, Qt::Key_B, Qt::ControlModifier);
    dialogs.answer(MessageAnswer::No);
    changedBehindTheBack({"C.POD"});
    ASSERT_TRUE(waitFor([&] { return dialogs.messages().size() == 2; }));
    ASSERT_TRUE(waitFor([&] { return rig.podIni() == iniText({"A.POD", "Z.POD", "B.POD"}); }));
    EXPECT_FALSE(rig.pane().mountedListChanged());

    // Cancel leaves both; the next save asks again instead of writing over the change unseen.
    select(mounted, {0});
    QTest::keyClick(mounted, Qt::Key_B, Qt::ControlModifier);
    dialogs.answer(MessageAnswer::Cancel);
    changedBehindTheBack({"D.POD"});
    ASSERT_TRUE(waitFor([&] { return dialogs.messages().size() == 3; }));
    QTest::qWait(300); // no second question for the same change
    EXPECT_EQ(dialogs.messages().size(), 3u);
    dialogs.answer(MessageAnswer::Cancel);
    clickButton("cmdContinue");
    ASSERT_EQ(dialogs.messages().size(), 5u); // the question, then why nothing was saved
    EXPECT_EQ(dialogs.messages()[3].title, "POD.INI Changed");
    EXPECT_EQ(dialogs.lastMessage().title, "File Changed");
    EXPECT_EQ(rig.podIni(), iniText({"D.POD"}));
    EXPECT_TRUE(rig.pane().mountedListChanged());
    // Closing: Yes to saving, then Cancel to the question keeps the window open.
    dialogs.answer(MessageAnswer::Yes).answer(MessageAnswer::Cancel);
    EXPECT_FALSE(rig.pane().settleUnsavedList());
    EXPECT_EQ(dialogs.lastMessage().title, "POD.INI Changed");
    EXPECT_EQ(rig.podIni(), iniText({"D.POD"}));
    EXPECT_EQ(dialogs.unscripted(), 0);
}

} // namespace
} // namespace korvel::testing
