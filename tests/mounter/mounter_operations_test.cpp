#include "mounter_fixture.h"

using MountOperations = MounterTest;

TEST_F(MountOperations, mountsSelectedRowsInListOrderAtTheEndAndSavesWithAutosaveUnlessAllMove) {
    mountedOf({"FIRST.POD"}, {"A.POD", "B.POD", "C.POD", "D.POD"});
    select(mounter().unmounted(), {});
    ASSERT_TRUE(mounter().MountSelected().ok()); // nothing selected: only the counter
    EXPECT_FALSE(mounter().isModified());
    select(mounter().unmounted(), {0, 2, 3});
    ASSERT_TRUE(mounter().MountSelected().ok());
    EXPECT_EQ(joined(mounter().mounted()), "FIRST.POD,A.POD,C.POD,D.POD");
    EXPECT_EQ(joined(mounter().unmounted()), "B.POD");
    EXPECT_EQ(mounter().counterText(), "4/99 PODs Mounted");
    EXPECT_TRUE(mounter().isModified());
    EXPECT_EQ(drive.read(kIni), "1\r\nFIRST.POD\r\n");
    autosaveOnChange();
    select(mounter().unmounted(), {0});
    ASSERT_TRUE(mounter().MountSelected().ok());
    const std::string saved = "5\r\nFIRST.POD\r\nA.POD\r\nC.POD\r\nD.POD\r\nB.POD\r\n";
    EXPECT_EQ(drive.read(kIni), saved);
    EXPECT_FALSE(mounter().isModified());
    mounter().UnmountAll(); // Unmount All and Mount All never save
    EXPECT_EQ(mounter().counterText(), "0/99 PODs Mounted");
    EXPECT_TRUE(mounter().isModified());
    mounter().MountAll();
    EXPECT_EQ(joined(mounter().mounted()), "A.POD,B.POD,C.POD,D.POD,FIRST.POD");
    EXPECT_EQ(mounter().counterText(), "5/99 PODs Mounted");
    EXPECT_EQ(drive.read(kIni), saved);
}

TEST_F(MountOperations, cleanRemovesOnlyRowsReadAsNotFoundAndUnmountRescans) {
    mountedOf({"A.POD", "B.POD"}, {"NEW.POD"});
    writeIni({"A.POD", "B.POD", "GONE.POD", "ALSO GONE.POD"});
    mounter().LoadMountedList();
    mounter().mountFiles({game("NEW.POD")});
    drive.remove(game("NEW.POD")); // mounted since the list was read: kept although gone
    ASSERT_TRUE(mounter().CleanMissing().ok());
    EXPECT_EQ(joined(mounter().mounted()), "A.POD,B.POD,NEW.POD");
    // Unmounting rescans: existing archives reappear, missing ones vanish.
    select(mounter().mounted(), {1, 2});
    ASSERT_TRUE(mounter().UnmountSelected().ok());
    EXPECT_EQ(joined(mounter().mounted()), "A.POD");
    EXPECT_EQ(joined(mounter().unmounted()), "B.POD");
    EXPECT_EQ(mounter().counterText(), "1/99 PODs Mounted");
}

TEST_F(MountOperations, movesAndDropsTheSelectedBlockKeepingItSelectedAndStopsAtTheEnds) {
    autosaveOnChange();
    mountedOf({"1.POD", "2.POD", "3.POD", "4.POD", "5.POD"});
    const std::tuple<Rows, std::function<Status(Mounter&)>, std::string, Rows> steps[] = {
        {{1, 3}, &Mounter::MoveSelectedToTop, "2.POD,4.POD,1.POD,3.POD,5.POD", {0, 1}},
        {{0, 1}, &Mounter::MoveSelectedToBottom, "1.POD,3.POD,5.POD,2.POD,4.POD", {3, 4}},
        {{1, 2}, &Mounter::MoveSelectedUp, "3.POD,5.POD,1.POD,2.POD,4.POD", {0, 1}},
        {{1, 2}, &Mounter::MoveSelectedDown, "3.POD,2.POD,5.POD,1.POD,4.POD", {2, 3}},
        {{3, 4}, [](Mounter& m) { return m.dropSelectedRows(0); }, "1.POD,4.POD,3.POD,2.POD,5.POD", {0, 1}},
        // A row dropped onto itself stays where it is.
        {{2}, [](Mounter& m) { return m.dropSelectedRows(2); }, "1.POD,4.POD,3.POD,2.POD,5.POD", {2}},
        // Dropping below: the place is corrected for the rows taken out above it.
        {{0, 1}, [](Mounter& m) { return m.dropSelectedRows(4); }, "3.POD,2.POD,1.POD,4.POD,5.POD", {2, 3}},
        {{0}, [](Mounter& m) { return m.dropSelectedRows(-1); }, "2.POD,1.POD,4.POD,5.POD,3.POD", {4}},
        // The first row cannot go up nor the last down, and nothing is saved.
        {{0, 4}, &Mounter::MoveSelectedUp, "2.POD,1.POD,4.POD,5.POD,3.POD", {0, 4}},
        {{0, 4}, &Mounter::MoveSelectedDown, "2.POD,1.POD,4.POD,5.POD,3.POD", {0, 4}},
    };
    for (const auto& [rows, move, expectedOrder, expectedSelection] : steps) {
        SCOPED_TRACE(expectedOrder);
        drive.write(kIni, "untouched");
        select(mounter().mounted(), rows);
        ASSERT_TRUE(move(mounter()).ok());
        EXPECT_EQ(joined(mounter().mounted()), expectedOrder);
        EXPECT_EQ(mounter().mounted().selectedRows(), expectedSelection);
        EXPECT_EQ(drive.read(kIni) == "untouched", (rows == Rows{0, 4})); // saved after each move
    }
}

TEST_F(MountOperations, dropsAndBrowsesPodFilesInOrderRelativeToTheGameFolderOnce) {
    mountedOf({"A.POD", "b.pod"}, {"ADDON\\X.POD", "Y.POD", "ADDON\\New.pod", "NOTES.TXT"});
    // Archives already mounted, under whatever case, are not mounted twice.
    ASSERT_TRUE(
        mounter()
            .dropFiles({game("ADDON\\x.pod"), game("NOTES.TXT"), game("a.pod"), game("Y.POD"), game("B.POD")}, 1)
            .ok());
    EXPECT_EQ(joined(mounter().mounted()), "A.POD,ADDON\\X.POD,Y.POD,b.pod");
    EXPECT_EQ(mounter().counterText(), "4/99 PODs Mounted");
    ASSERT_TRUE(mounter().dropFiles({"C:\\Elsewhere\\Z.POD"}, 99).ok());
    settings.writeProfile("MTM2", settings::kBrowse, "1");
    settings.writeProfile("MTM2", settings::kBrowseDir, "C:\\Downloads");
    drive.dialogs().chooseFiles({game("ADDON\\New.pod"), game("NOTES.TXT"), game("a.pod"), game("B.pod")});
    ASSERT_TRUE(mounter().MountBrowsed().ok());
    EXPECT_EQ(joined(mounter().mounted()), "A.POD,ADDON\\X.POD,Y.POD,b.pod,C:\\ELSEWHERE\\Z.POD,ADDON\\NEW.POD");
    EXPECT_TRUE(mounter().unmounted().empty());
    const auto& asked = drive.dialogs().asked().back();
    EXPECT_TRUE(asked.title == "Open File" && asked.start == "C:\\Downloads" && asked.multiSelect);
    settings.writeProfile("MTM2", settings::kBrowse, "0");
    ASSERT_TRUE(mounter().MountBrowsed().ok()); // cancelled: nothing changes
    EXPECT_EQ(drive.dialogs().asked().back().start, kGame);
    EXPECT_EQ(mounter().mounted().size(), 6);
}

using DeleteArchives = MounterTest;

TEST_F(DeleteArchives, asksOnceAndRemovesOnlyTrashedUnmountedRows) {
    mountedOf({"A.POD"}, {"B.POD", "C.POD", "D.POD"});
    select(mounter().unmounted(), {0, 2});
    drive.dialogs().answer(MessageAnswer::No);
    ASSERT_TRUE(mounter().DeleteSelectedArchives().ok());
    EXPECT_EQ(mounter().unmounted().size(), 3);
    EXPECT_TRUE(drive.dialogs().lastMessage().title == "Confirm File Delete" &&
                drive.dialogs().lastMessage().text.contains("2"));
    EXPECT_TRUE(drive.exists(game("B.POD")));
    drive.dialogs().answer(MessageAnswer::Yes);
    ASSERT_TRUE(mounter().DeleteSelectedArchives().ok());
    EXPECT_EQ(joined(mounter().unmounted()), "C.POD");
    EXPECT_FALSE(drive.exists(game("B.POD")) || drive.exists(game("D.POD")));
    drive.remove(game("C.POD")); // gone since the scan: the trash request fails and the row stays
    select(mounter().unmounted(), {0});
    drive.dialogs().answer(MessageAnswer::Yes);
    EXPECT_FALSE(mounter().DeleteSelectedArchives().ok());
    EXPECT_EQ(mounter().unmounted().size(), 1);
}
