#include "full_disk.h"
#include "mounter_fixture.h"

#include <QDir>
#include <QFile>

TEST(PodIniText, readsEntriesAfterTheCountLineWhateverTheLineEnds) {
    EXPECT_EQ(podIniEntries("9\r\nA.POD\r\n\r\n   \r\n\x1b\r\n  \x1b  \r\n  SPACED.POD \r\n"),
              (Entries{"A.POD", "  SPACED.POD "}));
    EXPECT_EQ(podIniEntries("3\nA.POD\rB.POD\r\n\r\rC.POD"), (Entries{"A.POD", "B.POD", "C.POD"}));
    EXPECT_EQ(podIniEntries("ADDON\\FIRST.POD\r\nB.POD"), (Entries{"B.POD"})); // the first line is never an entry
    EXPECT_TRUE(podIniEntries("").empty());
    EXPECT_EQ(podIniText({"TRUCKS.POD", "D:\\X\\Y.POD"}), "2\r\nTRUCKS.POD\r\nD:\\X\\Y.POD\r\n");
    EXPECT_EQ(ArchiveDisplayName("\\X.POD"), "\\\\X.POD");
}

using LoadMountedList = MounterTest;

TEST_F(LoadMountedList, capsTheBarAt99WhateverTheMaximumSays) {
    session.mmpa = "100";
    writeIni(Entries(150, "P.POD"));
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(mounter().counterText(), "150/100 PODs Mounted");
    EXPECT_EQ(mounter().counterBar(), 99);
}

TEST_F(LoadMountedList, marksExistingAndMissingArchivesAndRewritesTheFileCanonically) {
    archives({"TRUCKS.POD", "ADDON\\MYTRACK.POD"});
    drive.write(kIni, "7\nTRUCKS.POD\n\n   \naddon\\mytrack.pod\rADDON\\MYTRACK.POD\n\x1b\n  MISSING.POD\n");
    const Mounter::Outcome loaded = mounter().LoadMountedList();
    ASSERT_TRUE(loaded.ok());
    EXPECT_EQ(selection(loaded.mounted), "0");
    const EntryList& list = mounter().mounted();
    // Both spellings are found on disk but stay separate stored paths; leading blanks are kept.
    EXPECT_EQ(joined(list), "TRUCKS.POD,addon\\mytrack.pod,ADDON\\MYTRACK.POD,  MISSING.POD");
    EXPECT_EQ(list.at(2).text, "\\ADDON\\MYTRACK.POD");
    EXPECT_EQ(list.at(1).status + list.at(2).status + list.at(3).status, "MountedMountedNot found");
    EXPECT_EQ(drive.read(kIni), "4\r\nTRUCKS.POD\r\naddon\\mytrack.pod\r\nADDON\\MYTRACK.POD\r\n  MISSING.POD\r\n");
    EXPECT_FALSE(mounter().isModified());
    EXPECT_EQ(mounter().counterText(), "4/99 PODs Mounted");
}

// As the game does: dot folders, any case on disk, and trailing blanks and dots of each name dropped.
TEST_F(LoadMountedList, findsEntriesThroughDotFoldersWhateverTheCaseOfTheFileOnDisk) {
    archives({"trucks.pod", "ADDON\\Track.pod"});
    writeIni({".\\TRUCKS.POD", "ADDON\\..\\ADDON\\TRACK.POD", ".\\GONE.POD", "TRUCKS.POD ", "ADDON.\\TRACK.POD.."});
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(statuses(mounter().mounted()), "Mounted,Mounted,Not found,Mounted,Mounted");
}

TEST_F(LoadMountedList, findsAbsoluteEntriesOnTheirDriveAndRelativeOnesAlsoInTheCurrentFolder) {
    QTemporaryDir other, cwd;
    drive.paths().mapDrive('D', other.path());
    drive.write("D:\\TRACKS\\FAR.POD", "POD");
    ASSERT_TRUE(QDir(cwd.path()).mkpath("ELSE") && QFile(cwd.path() + "/ELSE/HERE.POD").open(QIODevice::WriteOnly));
    writeIni({"D:\\TRACKS\\FAR.POD", "D:\\TRACKS\\GONE.POD", "ELSE\\HERE.POD"});
    const QString before = QDir::currentPath();
    QDir::setCurrent(cwd.path());
    const Status status = mounter().LoadMountedList().status;
    QDir::setCurrent(before);
    ASSERT_TRUE(status.ok());
    const EntryList& list = mounter().mounted();
    EXPECT_EQ(joined(list), "D:\\TRACKS\\FAR.POD,D:\\TRACKS\\GONE.POD,ELSE\\HERE.POD");
    EXPECT_EQ(statuses(list), "Mounted,Not found,Mounted");
    EXPECT_EQ(list.at(0).text, "\\TRACKS\\FAR.POD");
}

TEST_F(LoadMountedList, leavesAMissingFileToTheNextSaveRewritesACountOnlyOneUnlessReadOnlyAndLosesNothingOnFailure) {
    autosaveOnChange();
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_FALSE(drive.exists(kIni));
    ASSERT_TRUE(mounter().SaveMountedList().ok()); // the next save makes it
    EXPECT_EQ(drive.read(kIni), "0\r\n");
    drive.write(kIni, "5");
    ASSERT_TRUE(mounter().LoadMountedList(Mounter::LoadMode::ReadOnly).ok());
    EXPECT_EQ(drive.read(kIni), "5");
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(drive.read(kIni), "0\r\n");
    // Failed reads and saves lose nothing.
    drive.write(kIni, std::string(size_t(kPodIniLimit) + 1, 'A'));
    Status status = mounter().LoadMountedList().status;
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.failure().kind, FailureKind::ReadError);
    EXPECT_EQ(drive.read(kIni).size(), size_t(kPodIniLimit) + 1); // not written over
    session.locationIni = "Q:\\NOWHERE\\POD.INI";
    archives({"TRUCKS.POD"});
    mounter().mountFiles({game("TRUCKS.POD")});
    status = mounter().SaveMountedList();
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.failure().kind, FailureKind::WriteError);
    EXPECT_TRUE(status.failure().message.contains("POD.INI"));
    EXPECT_TRUE(mounter().isModified());
}

TEST_F(LoadMountedList, leavesACanonicalFileAloneAndLoadsAnUnwritableOneQuietly) {
    archives({"TRUCKS.POD", "ADDON\\MYTRACK.POD"});
    writeIni({"TRUCKS.POD", "ADDON\\MYTRACK.POD"});
    const QDateTime old(QDate(2001, 2, 3), QTime(4, 5, 6));
    setIniTime(old);
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(iniTime(), old); // nothing to tidy: the file was not written
    const std::string untidy = "2\nTRUCKS.POD\naddon\\mytrack.pod\n";
    drive.write(kIni, untidy);
    FullDisk full; // the tidy-up fails, and is not reported
    if (!full.active())
        GTEST_SKIP() << "no file-size limit on this platform";
    const Mounter::Outcome loaded = mounter().LoadMountedList();
    EXPECT_TRUE(loaded.ok()) << loaded.status.failure().message.toStdString();
    EXPECT_EQ(joined(mounter().mounted()), "TRUCKS.POD,addon\\mytrack.pod");
    EXPECT_EQ(drive.read(kIni), untidy);
    EXPECT_FALSE(mounter().isModified());
}
