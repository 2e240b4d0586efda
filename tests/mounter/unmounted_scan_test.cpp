#include "mounter_fixture.h"

using namespace korvel;
using namespace korvel::testing;
using Entries = std::vector<std::string>;

using ScanUnmounted = MounterTest;

TEST_F(ScanUnmounted, listsTheGameFolderAndFirstLevelSubfoldersOnlySortedByDisplayText) {
    archive("zeta.pod");
    archive("ADDON\\alpha.pod");
    archive("Trucks\\Big.Pod");
    archive("ADDON\\DEEP\\HIDDEN.POD");
    archive("ADDON\\X.PODX");
    archive("ADDON\\X.POD.BAK");
    archive("README.TXT");
    writeIni({});
    mounter().LoadMountedList();
    mounter().ScanUnmounted();
    EXPECT_EQ(paths(mounter().unmounted()), (Entries{"ADDON\\ALPHA.POD", "TRUCKS\\BIG.POD", "ZETA.POD"}));
    EXPECT_EQ(texts(mounter().unmounted()), (Entries{"\\ADDON\\ALPHA.POD", "\\TRUCKS\\BIG.POD", "ZETA.POD"}));
    EXPECT_EQ(mounter().unmounted().at(0).status, "Unmounted");
    EXPECT_EQ(selected(mounter().unmounted()), (std::vector<int>{0}));
}

TEST_F(ScanUnmounted, hidesWhatIsMountedIgnoringCaseWhetherItExistsOrNot) {
    archive("ADDON\\MYTRACK.POD");
    archive("OTHER.POD");
    writeIni({"addon\\MyTrack.pod", "GHOST.POD"});
    mounter().LoadMountedList();
    mounter().ScanUnmounted();
    EXPECT_EQ(paths(mounter().unmounted()), (Entries{"OTHER.POD"}));
}

TEST_F(ScanUnmounted, addsExtraFoldersInsideTheGameFolderAsRelativeAndOthersAsAbsolute) {
    QTemporaryDir other;
    drive.paths().mapDrive('E', other.path());
    drive.write("E:\\PODS\\far.pod", "POD");
    archive("ADDON\\NEAR.POD");
    settings.writeProfile("MTM2", settings::kExtraDirs, "E:\\PODS\\|C:\\Games\\MTM2\\ADDON|C:\\MISSING");
    writeIni({});
    mounter().LoadMountedList();
    mounter().ScanUnmounted();
    // ADDON is both a first-level subfolder and an extra folder: listed twice.
    EXPECT_EQ(paths(mounter().unmounted()), (Entries{"ADDON\\NEAR.POD", "ADDON\\NEAR.POD", "E:\\PODS\\FAR.POD"}));
}

TEST_F(ScanUnmounted, treatsTheEmptyAndMissingExtraFoldersValuesAsNoFolders) {
    archive("ONE.POD");
    writeIni({});
    mounter().LoadMountedList();
    for (const std::string& value : {settings::kDefaultExtraDirs, std::string(), std::string("|")}) {
        settings.writeProfile("MTM2", settings::kExtraDirs, value);
        mounter().ScanUnmounted();
        EXPECT_EQ(paths(mounter().unmounted()), (Entries{"ONE.POD"}));
    }
    drive.registry().clear(); // the value reads as "Error"
    mounter().ScanUnmounted();
    EXPECT_EQ(paths(mounter().unmounted()), (Entries{"ONE.POD"}));
}

TEST_F(ScanUnmounted, findsNothingDirectlyInAGameFolderAtADriveRoot) {
    drive.write("C:\\ROOT.POD", "POD");
    drive.write("C:\\ADDON\\SUB.POD", "POD");
    session.location = "C:";
    session.locationIni = "C:\\POD.INI";
    session.shortGameFolder = "C:\\";
    mounter().ScanUnmounted();
    EXPECT_EQ(paths(mounter().unmounted()), (Entries{"ADDON\\SUB.POD"}));
}

TEST(SplitterBounds, keepsTheBarBetween780And5370AndResetsOnRightRelease) {
    EXPECT_EQ(splitterDragTop(100, 60, 600), 780);    // 670: below 770
    EXPECT_EQ(splitterDragTop(205, 60, 600), 775);    // 775 is not below 770
    EXPECT_EQ(splitterDragTop(3000, 60, 3000), 5370); // 5970: above 5380
    EXPECT_EQ(splitterDragTop(30, 60, 3000), 3000);
    EXPECT_EQ(splitterReleaseTop(4000, true), 3070);
    EXPECT_EQ(splitterReleaseTop(4000, false), 4000);
    const MounterSplit split = mounterSplit(3070, 60, 7000);
    EXPECT_EQ(split.mountedHeight, 2890);
    EXPECT_EQ(split.unmountedTop, 3120);
    EXPECT_EQ(split.unmountedHeight, 7000 - 225 - 3120);
}
