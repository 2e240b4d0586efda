#include "mounter_fixture.h"

#include <QDir>

using ScanUnmounted = MounterTest;

TEST_F(ScanUnmounted, listsFirstLevelPodFilesSortedByTextHidingMountedOnesWhateverTheirCase) {
    archives({"zeta.pod", "ADDON\\alpha.pod", "Trucks\\Big.Pod", "ADDON\\DEEP\\HIDDEN.POD", "ADDON\\X.PODX",
              "ADDON\\X.POD.BAK", "README.TXT", "ADDON\\MYTRACK.POD"});
    writeIni({"addon\\MyTrack.pod", "GHOST.POD"});
    drive.write("C:\\Games\\PARENT.POD", "POD"); // beside the game folder, not in it
    mounter().LoadMountedList();
    EXPECT_EQ(selection(mounter().ScanUnmounted().unmounted), "0");
    const EntryList& list = mounter().unmounted();
    EXPECT_EQ(joined(list), "ADDON\\ALPHA.POD,TRUCKS\\BIG.POD,ZETA.POD");
    EXPECT_EQ(list.at(0).text + "|" + list.at(2).text, "\\ADDON\\ALPHA.POD|ZETA.POD");
    EXPECT_EQ(list.at(0).status, "Unmounted");
}

TEST_F(ScanUnmounted, addsExtraFoldersInsideTheGameFolderAsRelativeOthersAsAbsoluteAndEmptyValuesAsNone) {
    QTemporaryDir other;
    drive.paths().mapDrive('E', other.path());
    drive.write("E:\\PODS\\far.pod", "POD");
    archives({"ADDON\\NEAR.POD"});
    settings.writeProfile("MTM2", settings::kExtraDirs, "E:\\PODS\\|C:\\Games\\MTM2\\ADDON|C:\\MISSING");
    mountedOf({});
    // ADDON is both a first-level subfolder and an extra folder: listed twice.
    EXPECT_EQ(joined(mounter().unmounted()), "ADDON\\NEAR.POD,ADDON\\NEAR.POD,E:\\PODS\\FAR.POD");
    // Empty and missing values mean no extra folders.
    for (const std::string& value : {settings::kDefaultExtraDirs, std::string(), std::string("|"), std::string("-")}) {
        if (value == "-")
            drive.registry().clear(); // the value reads as "Error"
        else
            settings.writeProfile("MTM2", settings::kExtraDirs, value);
        mounter().ScanUnmounted();
        EXPECT_EQ(joined(mounter().unmounted()), "ADDON\\NEAR.POD") << value;
    }
}

TEST_F(ScanUnmounted, findsNothingDirectlyInAGameFolderAtADriveRoot) {
    drive.write("C:\\ROOT.POD", "POD");
    drive.write("C:\\ADDON\\SUB.POD", "POD");
    session.location = "C:";
    session.locationIni = "C:\\POD.INI";
    session.shortGameFolder = "C:\\";
    mounter().ScanUnmounted();
    EXPECT_EQ(joined(mounter().unmounted()), "ADDON\\SUB.POD");
}

// One look at the folders serves both lists of a refresh, and only that refresh: archives added or
// removed afterwards show in the next load or scan, whichever runs alone.
TEST_F(ScanUnmounted, showsArchivesAddedOrRemovedAfterARefreshInTheNextLoadAndScan) {
    archives({"ADDON\\GONE.POD", "ADDON\\OLD.POD"});
    writeIni({"ADDON\\LATE.POD", "ADDON\\GONE.POD"});
    ASSERT_TRUE(mounter().refreshBoth().ok());
    EXPECT_EQ(statuses(mounter().mounted()), "Not found,Mounted");
    EXPECT_EQ(joined(mounter().unmounted()), "ADDON\\OLD.POD");

    archives({"ADDON\\LATE.POD", "ADDON\\NEW.POD"});
    drive.remove(game("ADDON\\GONE.POD"));
    mounter().refreshUnmounted();
    EXPECT_EQ(joined(mounter().unmounted()), "ADDON\\NEW.POD,ADDON\\OLD.POD");
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(statuses(mounter().mounted()), "Mounted,Not found");

    drive.remove(game("ADDON\\NEW.POD"));
    ASSERT_TRUE(mounter().refreshBoth().ok());
    EXPECT_EQ(joined(mounter().unmounted()), "ADDON\\OLD.POD");
    EXPECT_EQ(statuses(mounter().mounted()), "Mounted,Not found");
}

// Where names are case-sensitive, "Addon" and "ADDON" are two folders; their listings must not be
// taken for one another although their stored paths read alike.
TEST_F(ScanUnmounted, keepsFoldersWhoseNamesDifferOnlyInCaseApart) {
    archives({"ADDON\\TWO.POD"});
    const QString other = drive.host(kGame) + "/Addon";
    ASSERT_TRUE(QDir().mkpath(other));
    if (QFileInfo(other + "/TWO.POD").exists())
        GTEST_SKIP() << "names ignore case on this file system";
    QFile file(other + "/ONE.POD");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    writeIni({"ADDON\\TWO.POD"});
    ASSERT_TRUE(mounter().refreshBoth().ok());
    EXPECT_EQ(statuses(mounter().mounted()), "Mounted");
    EXPECT_EQ(joined(mounter().unmounted()), "ADDON\\ONE.POD");
}

TEST(SplitterBounds, keepsTheBarBetween780And5370AndResetsOnRightRelease) {
    // 670 is below 770, 775 is not, 5970 is above 5380, 5375 is not.
    EXPECT_EQ((Rows{splitterDragTop(100, 60, 600), splitterDragTop(205, 60, 600), splitterDragTop(3000, 60, 3000),
                    splitterDragTop(2405, 60, 3000), splitterDragTop(30, 60, 3000)}),
              (Rows{780, 775, 5370, 5375, 3000}));
    EXPECT_EQ(std::pair(splitterReleaseTop(4000, true), splitterReleaseTop(4000, false)), std::pair(3070, 4000));
    const MounterSplit split = mounterSplit(3070, 60, 7000);
    EXPECT_EQ(std::tuple(split.mountedHeight, split.unmountedTop, split.unmountedHeight),
              std::tuple(2890, 3120, 7000 - 225 - 3120));
}
