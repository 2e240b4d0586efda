#include "mounter_fixture.h"

using PodIniChange = MounterTest;

TEST_F(PodIniChange, aSaveNeverWritesOverAChangeItHasNotSeenUnlessToldTo) {
    // Another program's doings to POD.INI between the Mounter's load and its save.
    const struct {
        const char* what;
        Entries theirs; // written, unless the file is removed or only touched
        bool removed, touched;
        bool refused; // whether the save must refuse to write over it
    } rows[] = {
        {"another mount", {"A.POD", "B.POD", "C.POD"}, false, false, true},
        // Same size, written within the same instant: only the bytes tell.
        {"same size, other bytes", {"A.POD", "C.POD"}, false, false, true},
        {"removed", {}, true, false, true},
        {"rewritten with the same bytes", {"A.POD", "B.POD"}, false, false, false},
        {"only its time changed", {}, false, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        archives({"C.POD"});
        mountedOf({"A.POD", "B.POD"});
        mounter().MoveSelectedToBottom({0}); // no autosave: an unsaved change of its own
        ASSERT_TRUE(mounter().isModified());
        if (row.removed)
            drive.remove(kIni);
        else if (row.touched)
            setIniTime(QDateTime::currentDateTime().addSecs(60));
        else
            writeIni(row.theirs);
        const std::string theirs = drive.exists(kIni) ? drive.read(kIni) : std::string("(none)");
        EXPECT_EQ(mounter().changedOnDisk(), row.refused);

        const Status saved = mounter().SaveMountedList();
        if (!row.refused) {
            EXPECT_TRUE(saved.ok());
            EXPECT_EQ(drive.read(kIni), podIniText({"B.POD", "A.POD"}));
            continue;
        }
        ASSERT_FALSE(saved.ok());
        EXPECT_EQ(saved.failure().kind, FailureKind::ChangedOnDisk);
        EXPECT_TRUE(saved.failure().message.contains(QStringLiteral("POD.INI")));
        EXPECT_EQ(drive.exists(kIni) ? drive.read(kIni) : std::string("(none)"), theirs);
        EXPECT_TRUE(mounter().isModified());
        EXPECT_FALSE(mounter().SaveMountedList().ok()); // asked again, still refused

        ASSERT_TRUE(mounter().SaveMountedList(Mounter::SaveMode::Overwrite).ok());
        EXPECT_EQ(drive.read(kIni), podIniText({"B.POD", "A.POD"}));
        EXPECT_FALSE(mounter().changedOnDisk());
    }
}

TEST_F(PodIniChange, itsOwnSavesAndTheLoadsTidyingRewriteAreNoChangeOfAnotherProgram) {
    archives({"A.POD", "B.POD", "C.POD"});
    drive.write(kIni, "2\nA.POD\nB.POD\n"); // rewritten canonically by the load
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(drive.read(kIni), podIniText({"A.POD", "B.POD"}));
    EXPECT_FALSE(mounter().changedOnDisk());
    mounter().MoveSelectedToBottom({0});
    ASSERT_TRUE(mounter().SaveMountedList().ok());
    mounter().MoveSelectedToBottom({0});
    ASSERT_TRUE(mounter().SaveMountedList().ok()); // the first save's file is its own
    EXPECT_EQ(drive.read(kIni), podIniText({"A.POD", "B.POD"}));

    // A POD.INI missing at the load is made by the first save, unless another program made one.
    drive.remove(kIni);
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    writeIni({"C.POD"});
    EXPECT_TRUE(mounter().changedOnDisk());
    EXPECT_EQ(mounter().SaveMountedList().failure().kind, FailureKind::ChangedOnDisk);
    EXPECT_EQ(drive.read(kIni), podIniText({"C.POD"}));
    // Reading it again takes the other program's list as the one seen.
    ASSERT_TRUE(mounter().refreshBoth().ok());
    mounter().mountFiles({game("A.POD")});
    ASSERT_TRUE(mounter().SaveMountedList().ok());
    EXPECT_EQ(drive.read(kIni), podIniText({"C.POD", "A.POD"}));
}
