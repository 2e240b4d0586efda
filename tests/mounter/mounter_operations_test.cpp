#include "mounter_fixture.h"

using namespace korvel;
using namespace korvel::testing;
using Entries = std::vector<std::string>;

using MountOperations = MounterTest;

TEST_F(MountOperations, mountsSelectedRowsInListOrderAtTheEndAndSavesOnlyWithAutosave) {
    mountedOf({"FIRST.POD"});
    for (const char* name : {"A.POD", "B.POD", "C.POD", "D.POD"})
        archive(name);
    mounter().ScanUnmounted();
    select(mounter().unmounted(), {});
    ASSERT_TRUE(mounter().MountSelected().ok()); // nothing selected: only the counter
    EXPECT_FALSE(mounter().isModified());
    select(mounter().unmounted(), {0, 2, 3});
    ASSERT_TRUE(mounter().MountSelected().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"FIRST.POD", "A.POD", "C.POD", "D.POD"}));
    EXPECT_EQ(paths(mounter().unmounted()), (Entries{"B.POD"}));
    EXPECT_EQ(mounter().mounted().at(3).status, "Mounted");
    EXPECT_EQ(mounter().counterText(), "4/99 PODs Mounted");
    EXPECT_TRUE(mounter().isModified());
    EXPECT_EQ(drive.read(kIni), "1\r\nFIRST.POD\r\n");

    autosaveOnChange();
    select(mounter().unmounted(), {0});
    ASSERT_TRUE(mounter().MountSelected().ok());
    EXPECT_EQ(drive.read(kIni), "5\r\nFIRST.POD\r\nA.POD\r\nC.POD\r\nD.POD\r\nB.POD\r\n");
    EXPECT_FALSE(mounter().isModified());
}

TEST_F(MountOperations, unmountRescansSoExistingArchivesReappearAndMissingOnesVanish) {
    mountedOf({"A.POD", "B.POD"});
    writeIni({"A.POD", "B.POD", "GONE.POD"});
    mounter().LoadMountedList();
    select(mounter().mounted(), {1, 2});
    ASSERT_TRUE(mounter().UnmountSelected().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"A.POD"}));
    EXPECT_EQ(paths(mounter().unmounted()), (Entries{"B.POD"}));
    EXPECT_EQ(mounter().counterText(), "1/99 PODs Mounted");
}

TEST_F(MountOperations, mountAllAndUnmountAllNeverAutosave) {
    autosaveOnChange();
    mountedOf({"A.POD"});
    archive("B.POD");
    archive("ADDON\\C.POD");
    mounter().ScanUnmounted();
    const std::string before = drive.read(kIni);
    mounter().MountAll();
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"A.POD", "ADDON\\C.POD", "B.POD"}));
    EXPECT_TRUE(mounter().unmounted().empty());
    EXPECT_EQ(mounter().counterText(), "3/99 PODs Mounted");
    EXPECT_EQ(drive.read(kIni), before);
    EXPECT_TRUE(mounter().isModified());

    mounter().UnmountAll();
    EXPECT_TRUE(mounter().mounted().empty());
    EXPECT_EQ(mounter().unmounted().size(), 3);
    EXPECT_EQ(mounter().counterText(), "0/99 PODs Mounted");
    EXPECT_EQ(drive.read(kIni), before);
}

TEST_F(MountOperations, cleanRemovesOnlyRowsReadAsNotFound) {
    mountedOf({"A.POD"});
    writeIni({"A.POD", "GONE.POD", "ALSO GONE.POD"});
    mounter().LoadMountedList();
    archive("NEW.POD");
    mounter().mountFiles({game("NEW.POD")});
    drive.remove(game("NEW.POD")); // mounted since the list was read: kept although gone
    ASSERT_TRUE(mounter().CleanMissing().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"A.POD", "NEW.POD"}));
}

TEST_F(MountOperations, browsingMountsChosenPodFilesRelativeToTheGameFolderOnce) {
    mountedOf({"A.POD"});
    archive("ADDON\\New.pod");
    archive("NOTES.TXT");
    mounter().ScanUnmounted();
    ASSERT_EQ(paths(mounter().unmounted()), (Entries{"ADDON\\NEW.POD"}));
    settings.writeProfile("MTM2", settings::kBrowse, "1");
    settings.writeProfile("MTM2", settings::kBrowseDir, "C:\\Downloads");
    drive.dialogs().chooseFiles({game("ADDON\\New.pod"), game("NOTES.TXT"), game("a.pod")});
    ASSERT_TRUE(mounter().MountBrowsed().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"A.POD", "ADDON\\NEW.POD"}));
    EXPECT_TRUE(mounter().unmounted().empty());
    const auto& asked = drive.dialogs().asked().back();
    EXPECT_EQ(asked.title, "Open File");
    EXPECT_EQ(asked.start, "C:\\Downloads");
    EXPECT_TRUE(asked.multiSelect);

    settings.writeProfile("MTM2", settings::kBrowse, "0");
    ASSERT_TRUE(mounter().MountBrowsed().ok()); // cancelled: nothing changes
    EXPECT_EQ(drive.dialogs().asked().back().start, kGame);
    EXPECT_EQ(mounter().mounted().size(), 2);
}

using Reorder = MounterTest;

TEST_F(Reorder, toTopAndToBottomKeepTheMovedBlockInOrderAndSelected) {
    mountedOf({"1.POD", "2.POD", "3.POD", "4.POD", "5.POD"});
    select(mounter().mounted(), {1, 3});
    ASSERT_TRUE(mounter().MoveSelectedToTop().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"2.POD", "4.POD", "1.POD", "3.POD", "5.POD"}));
    EXPECT_EQ(selected(mounter().mounted()), (std::vector<int>{0, 1}));

    ASSERT_TRUE(mounter().MoveSelectedToBottom().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"1.POD", "3.POD", "5.POD", "2.POD", "4.POD"}));
    EXPECT_EQ(selected(mounter().mounted()), (std::vector<int>{3, 4}));
}

TEST_F(Reorder, upAndDownMoveAdjacentRowsTogether) {
    mountedOf({"A.POD", "B.POD", "C.POD", "D.POD"});
    select(mounter().mounted(), {1, 2});
    ASSERT_TRUE(mounter().MoveSelectedUp().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"B.POD", "C.POD", "A.POD", "D.POD"}));
    EXPECT_EQ(selected(mounter().mounted()), (std::vector<int>{0, 1}));

    select(mounter().mounted(), {1, 2});
    ASSERT_TRUE(mounter().MoveSelectedDown().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"B.POD", "D.POD", "C.POD", "A.POD"}));
    EXPECT_EQ(selected(mounter().mounted()), (std::vector<int>{2, 3}));
}

TEST_F(Reorder, upOnTheFirstRowAndDownOnTheLastStopAtOnceWithoutSaving) {
    autosaveOnChange();
    mountedOf({"A.POD", "B.POD", "C.POD"});
    drive.write(kIni, "untouched");
    select(mounter().mounted(), {0, 2});
    ASSERT_TRUE(mounter().MoveSelectedUp().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"A.POD", "B.POD", "C.POD"}));
    ASSERT_TRUE(mounter().MoveSelectedDown().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"A.POD", "B.POD", "C.POD"}));
    EXPECT_EQ(selected(mounter().mounted()), (std::vector<int>{0, 2}));
    EXPECT_EQ(drive.read(kIni), "untouched");

    select(mounter().mounted(), {1});
    ASSERT_TRUE(mounter().MoveSelectedDown().ok());
    EXPECT_EQ(drive.read(kIni), "3\r\nA.POD\r\nC.POD\r\nB.POD\r\n");
}

using Drop = MounterTest;

TEST_F(Drop, rowsMovedWithinTheListLandInOrderOnceEach) {
    mountedOf({"1.POD", "2.POD", "3.POD", "4.POD", "5.POD"});
    select(mounter().mounted(), {3, 4});
    ASSERT_TRUE(mounter().dropSelectedRows(0).ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"4.POD", "5.POD", "1.POD", "2.POD", "3.POD"}));
    EXPECT_EQ(selected(mounter().mounted()), (std::vector<int>{0, 1}));

    // Moving down: the drop place is corrected for the rows taken out above it.
    select(mounter().mounted(), {0, 1});
    ASSERT_TRUE(mounter().dropSelectedRows(4));
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"1.POD", "2.POD", "4.POD", "5.POD", "3.POD"}));
    EXPECT_EQ(selected(mounter().mounted()), (std::vector<int>{2, 3}));

    select(mounter().mounted(), {0});
    ASSERT_TRUE(mounter().dropSelectedRows(-1));
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"2.POD", "4.POD", "5.POD", "3.POD", "1.POD"}));
}

TEST_F(Drop, filesFromOutsideAreInsertedInOrderWithoutDuplicatesOrOtherFiles) {
    mountedOf({"A.POD", "B.POD"});
    archive("ADDON\\X.POD");
    archive("Y.POD");
    mounter().ScanUnmounted();
    ASSERT_TRUE(mounter().dropFiles({game("ADDON\\x.pod"), game("readme.txt"), game("a.pod"), game("Y.POD")}, 1).ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"A.POD", "ADDON\\X.POD", "Y.POD", "B.POD"}));
    EXPECT_TRUE(mounter().unmounted().empty());
    EXPECT_EQ(mounter().counterText(), "4/99 PODs Mounted");

    ASSERT_TRUE(mounter().dropFiles({"C:\\Elsewhere\\Z.POD"}, 99).ok());
    EXPECT_EQ(paths(mounter().mounted()).back(), "C:\\ELSEWHERE\\Z.POD");
}

// Trashed files go to a trash folder of the test's own.
class DeleteArchives : public MounterTest {
protected:
    DeleteArchives() { qputenv("XDG_DATA_HOME", m_home.path().toLocal8Bit()); }
    ~DeleteArchives() override { qunsetenv("XDG_DATA_HOME"); }

private:
    QTemporaryDir m_home;
};

TEST_F(DeleteArchives, asksOnceAndRemovesNoRowWhenTheAnswerIsNoOrTheTrashFails) {
    mountedOf({"A.POD"});
    archive("B.POD");
    archive("C.POD");
    mounter().ScanUnmounted();
    select(mounter().unmounted(), {0, 1});
    drive.dialogs().answer(MessageAnswer::No);
    ASSERT_TRUE(mounter().DeleteSelectedArchives().ok());
    EXPECT_EQ(mounter().unmounted().size(), 2);
    EXPECT_EQ(drive.dialogs().lastMessage().title, "Confirm File Delete");
    EXPECT_TRUE(drive.dialogs().lastMessage().text.contains("2"));
    EXPECT_TRUE(drive.exists(game("B.POD")));

    drive.remove(game("C.POD")); // gone since the scan: the trash request fails
    drive.dialogs().answer(MessageAnswer::Yes);
    EXPECT_FALSE(mounter().DeleteSelectedArchives().ok());
    EXPECT_EQ(mounter().unmounted().size(), 2);
}

TEST_F(DeleteArchives, removesTheTrashedRowsWithoutTouchingTheMountedList) {
    mountedOf({"A.POD"});
    archive("B.POD");
    archive("C.POD");
    archive("D.POD");
    mounter().ScanUnmounted();
    select(mounter().unmounted(), {0, 2});
    drive.dialogs().answer(MessageAnswer::Yes);
    const Status status = mounter().DeleteSelectedArchives();
    ASSERT_TRUE(status.ok()) << status.failure().message.toStdString();
    EXPECT_EQ(paths(mounter().unmounted()), (Entries{"C.POD"}));
    EXPECT_FALSE(drive.exists(game("B.POD")));
    EXPECT_FALSE(drive.exists(game("D.POD")));
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"A.POD"}));
}
