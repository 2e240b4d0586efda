#include "mounter_fixture.h"

#include <QDir>

namespace {

using FolderSnapshotRefresh = korvel::testing::MounterTest;

std::string statuses(const korvel::EntryList& list) {
    std::string text;
    for (const korvel::MountedEntry& row : list.rows())
        text += (text.empty() ? "" : ",") + row.status;
    return text;
}

// One look at the folders serves both lists of a refresh, and only that refresh: archives added or
// removed afterwards show in the next load or scan, whichever runs alone.
TEST_F(FolderSnapshotRefresh, showsArchivesAddedOrRemovedAfterARefreshInTheNextLoadAndScan) {
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
TEST_F(FolderSnapshotRefresh, keepsFoldersWhoseNamesDifferOnlyInCaseApart) {
    archives({"ADDON\\TWO.POD"});
    const QString other = drive.host(kGame) + "/Addon";
    QDir().mkpath(other);
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

} // namespace
