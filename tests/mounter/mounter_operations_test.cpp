#include "mounter_fixture.h"

using MountOperations = MounterTest;

TEST_F(MountOperations, mountsTheGivenRowsInListOrderAtTheEndAndSavesWithAutosaveUnlessAllMove) {
    mountedOf({"FIRST.POD"}, {"A.POD", "B.POD", "C.POD", "D.POD"});
    ASSERT_TRUE(mounter().MountSelected({}).ok()); // nothing given: only the counter
    EXPECT_FALSE(mounter().isModified());
    const Mounter::Outcome mounted = mounter().MountSelected({3, 0, 2, 3, 7, -1});
    ASSERT_TRUE(mounted.ok());
    EXPECT_EQ(joined(mounter().mounted()), "FIRST.POD,A.POD,C.POD,D.POD");
    EXPECT_EQ(joined(mounter().unmounted()), "B.POD");
    EXPECT_EQ(selection(mounted.mounted) + "|" + selection(mounted.unmounted), "keep|keep");
    EXPECT_EQ(mounter().counterText(), "4/99 PODs Mounted");
    EXPECT_TRUE(mounter().isModified());
    EXPECT_EQ(drive.read(kIni), "1\r\nFIRST.POD\r\n");
    autosaveOnChange();
    ASSERT_TRUE(mounter().MountSelected({0}).ok());
    const std::string saved = "5\r\nFIRST.POD\r\nA.POD\r\nC.POD\r\nD.POD\r\nB.POD\r\n";
    EXPECT_EQ(drive.read(kIni), saved);
    EXPECT_FALSE(mounter().isModified());
    // Unmount All and Mount All never save.
    EXPECT_EQ(selection(mounter().UnmountAll().unmounted), "0");
    EXPECT_EQ(mounter().counterText(), "0/99 PODs Mounted");
    EXPECT_TRUE(mounter().isModified());
    EXPECT_EQ(selection(mounter().MountAll().mounted), "keep");
    EXPECT_EQ(joined(mounter().mounted()), "A.POD,B.POD,C.POD,D.POD,FIRST.POD");
    EXPECT_EQ(mounter().counterText(), "5/99 PODs Mounted");
    EXPECT_EQ(drive.read(kIni), saved);
}

TEST_F(MountOperations, cleanRemovesOnlyRowsReadAsNotFoundAndUnmountRescansSelectingTheFirstRow) {
    mountedOf({"A.POD", "B.POD"}, {"NEW.POD"});
    writeIni({"A.POD", "B.POD", "GONE.POD", "ALSO GONE.POD"});
    EXPECT_EQ(selection(mounter().LoadMountedList().mounted), "0");
    mounter().mountFiles({game("NEW.POD")});
    drive.remove(game("NEW.POD")); // mounted since the list was read: kept although gone
    ASSERT_TRUE(mounter().CleanMissing().ok());
    EXPECT_EQ(joined(mounter().mounted()), "A.POD,B.POD,NEW.POD");
    // Unmounting rescans: existing archives reappear, missing ones vanish.
    const Mounter::Outcome unmounted = mounter().UnmountSelected({2, 1});
    ASSERT_TRUE(unmounted.ok());
    EXPECT_EQ(joined(mounter().mounted()), "A.POD");
    EXPECT_EQ(joined(mounter().unmounted()), "B.POD");
    EXPECT_EQ(selection(unmounted.unmounted), "0");
    EXPECT_EQ(mounter().counterText(), "1/99 PODs Mounted");
    ASSERT_TRUE(mounter().UnmountSelected({0}).ok());
    EXPECT_EQ(selection(mounter().refreshUnmounted().unmounted), "0");
    writeIni({});
    const Mounter::Outcome refreshed = mounter().refreshBoth();
    EXPECT_EQ(selection(refreshed.mounted) + "|" + selection(refreshed.unmounted), "|0");
}

TEST_F(MountOperations, movesAndDropsTheGivenBlockSelectingItWhereItWentAndStopsAtTheEnds) {
    autosaveOnChange();
    mountedOf({"1.POD", "2.POD", "3.POD", "4.POD", "5.POD"});
    using Move = std::function<Mounter::Outcome(Mounter&, Rows)>;
    const auto dropAt = [](int place) { return [place](Mounter& m, Rows rows) { return m.dropRows(rows, place); }; };
    const std::tuple<Rows, Move, std::string, std::string> steps[] = {
        {{3, 1, 3}, &Mounter::MoveSelectedToTop, "2.POD,4.POD,1.POD,3.POD,5.POD", "0,1"},
        {{0, 1}, &Mounter::MoveSelectedToBottom, "1.POD,3.POD,5.POD,2.POD,4.POD", "3,4"},
        {{2, 1}, &Mounter::MoveSelectedUp, "3.POD,5.POD,1.POD,2.POD,4.POD", "0,1"},
        {{1, 2, 9}, &Mounter::MoveSelectedDown, "3.POD,2.POD,5.POD,1.POD,4.POD", "2,3"},
        {{0, 2}, &Mounter::MoveSelectedDown, "2.POD,3.POD,1.POD,5.POD,4.POD", "1,3"},
        {{4, 3}, dropAt(0), "5.POD,4.POD,2.POD,3.POD,1.POD", "0,1"},
        // A row dropped onto itself stays where it is.
        {{2}, dropAt(2), "5.POD,4.POD,2.POD,3.POD,1.POD", "2"},
        // Dropping below: the place is corrected for the rows taken out above it.
        {{0, 1}, dropAt(4), "2.POD,3.POD,5.POD,4.POD,1.POD", "2,3"},
        {{0}, dropAt(-1), "3.POD,5.POD,4.POD,1.POD,2.POD", "4"},
        // The first row cannot go up nor the last down, and nothing is saved.
        {{4, 0}, &Mounter::MoveSelectedUp, "3.POD,5.POD,4.POD,1.POD,2.POD", "0,4"},
        {{0, 4}, &Mounter::MoveSelectedDown, "3.POD,5.POD,4.POD,1.POD,2.POD", "0,4"},
    };
    for (const auto& [rows, move, expectedOrder, expectedSelection] : steps) {
        SCOPED_TRACE(expectedOrder);
        const QDateTime longAgo(QDate(2000, 1, 1), QTime(0, 0));
        setIniTime(longAgo);
        const Mounter::Outcome outcome = move(mounter(), rows);
        ASSERT_TRUE(outcome.ok());
        EXPECT_EQ(joined(mounter().mounted()), expectedOrder);
        EXPECT_EQ(selection(outcome.mounted), expectedSelection);
        EXPECT_EQ(selection(outcome.unmounted), "keep");
        const bool stopped = rows == Rows{4, 0} || rows == Rows{0, 4};
        EXPECT_EQ(iniTime() == longAgo, stopped); // saved after each move
    }
}

TEST_F(MountOperations, unmountsExactlyTheGivenRowsAfterAReorder) {
    autosaveOnChange();
    mountedOf({"1.POD", "2.POD", "3.POD", "4.POD", "5.POD"}, {"U1.POD", "U2.POD", "U3.POD"});
    ASSERT_TRUE(mounter().MoveSelectedToTop({3}).ok());
    ASSERT_TRUE(mounter().MoveSelectedDown({1}).ok()); // 4, 2, 1, 3, 5
    ASSERT_TRUE(mounter().UnmountSelected({2, 4}).ok());
    EXPECT_EQ(joined(mounter().mounted()), "4.POD,2.POD,3.POD");
    EXPECT_EQ(drive.read(kIni), podIniText({"4.POD", "2.POD", "3.POD"}));
    EXPECT_EQ(joined(mounter().unmounted()), "1.POD,5.POD,U1.POD,U2.POD,U3.POD");
}

TEST_F(MountOperations, dropsAndBrowsesPodFilesInOrderRelativeToTheGameFolderOnce) {
    mountedOf({"A.POD", "b.pod"}, {"ADDON\\X.POD", "Y.POD", "ADDON\\New.pod", "NOTES.TXT"});
    // Archives already mounted, under whatever case, are not mounted twice.
    const Mounter::Outcome dropped =
        mounter().dropFiles({game("ADDON\\x.pod"), game("NOTES.TXT"), game("a.pod"), game("Y.POD"), game("B.POD")}, 1);
    ASSERT_TRUE(dropped.ok());
    EXPECT_EQ(joined(mounter().mounted()), "A.POD,ADDON\\X.POD,Y.POD,b.pod");
    EXPECT_EQ(selection(dropped.mounted), "+1,2"); // the new rows join the selection
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
    drive.dialogs().answer(MessageAnswer::No);
    ASSERT_TRUE(mounter().DeleteSelectedArchives({0, 2}).ok());
    EXPECT_EQ(mounter().unmounted().size(), 3);
    EXPECT_TRUE(drive.dialogs().lastMessage().title == "Confirm File Delete" &&
                drive.dialogs().lastMessage().text.contains("2"));
    EXPECT_TRUE(drive.exists(game("B.POD")));
    drive.dialogs().answer(MessageAnswer::Yes);
    ASSERT_TRUE(mounter().DeleteSelectedArchives({2, 0}).ok());
    EXPECT_EQ(joined(mounter().unmounted()), "C.POD");
    EXPECT_FALSE(drive.exists(game("B.POD")) || drive.exists(game("D.POD")));
    drive.remove(game("C.POD")); // gone since the scan: the trash request fails and the row stays
    drive.dialogs().answer(MessageAnswer::Yes);
    EXPECT_FALSE(mounter().DeleteSelectedArchives({0}).ok());
    EXPECT_EQ(mounter().unmounted().size(), 1);
}
