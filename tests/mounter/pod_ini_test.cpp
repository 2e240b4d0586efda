#include "mounter_fixture.h"

#include "mounter/pod_ini.h"

#include <QDir>

using namespace korvel;
using namespace korvel::testing;
using Entries = std::vector<std::string>;

TEST(PodIniText, dropsTheCountLineAndBlankBlankOnlyAndEscapeLines) {
    EXPECT_EQ(podIniEntries("3\r\nA.POD\r\n\r\n   \r\n\x1b\r\n  \x1b  \r\nB.POD\r\n"), (Entries{"A.POD", "B.POD"}));
    EXPECT_EQ(podIniEntries("ADDON\\FIRST.POD\r\nB.POD"), (Entries{"B.POD"})); // the first line is never an entry
    EXPECT_TRUE(podIniEntries("0\r\n").empty());
    EXPECT_TRUE(podIniEntries("").empty());
}

TEST(PodIniText, endsLinesAtCrLfLfAndCrAlike) {
    EXPECT_EQ(podIniEntries("3\nA.POD\rB.POD\r\nC.POD"), (Entries{"A.POD", "B.POD", "C.POD"}));
    EXPECT_EQ(podIniEntries("2\r\rA.POD\n\nB.POD\r"), (Entries{"A.POD", "B.POD"}));
}

TEST(PodIniText, keepsLeadingAndTrailingBlanksOfAnEntry) {
    EXPECT_EQ(podIniEntries("1\r\n  SPACED.POD \r\n"), (Entries{"  SPACED.POD "}));
}

TEST(PodIniText, writesTheCountThenOnePathPerCrLfLine) {
    EXPECT_EQ(podIniText({}), "0\r\n");
    EXPECT_EQ(podIniText({"TRUCKS.POD", "D:\\X\\Y.POD"}), "2\r\nTRUCKS.POD\r\nD:\\X\\Y.POD\r\n");
}

TEST(ArchiveDisplayName, showsParentFolderAndNameWithALeadingBackslash) {
    EXPECT_EQ(ArchiveDisplayName("ADDON\\MYTRACK.POD"), "\\ADDON\\MYTRACK.POD");
    EXPECT_EQ(ArchiveDisplayName("D:\\GAMES\\TRACKS\\MYTRACK.POD"), "\\TRACKS\\MYTRACK.POD");
    EXPECT_EQ(ArchiveDisplayName("TRUCKS.POD"), "TRUCKS.POD");
    EXPECT_EQ(ArchiveDisplayName("\\X.POD"), "\\\\X.POD");
}

using LoadMountedList = MounterTest;

TEST_F(LoadMountedList, marksExistingAndMissingArchivesAndRewritesTheFileCanonically) {
    archive("TRUCKS.POD");
    archive("ADDON\\MYTRACK.POD");
    drive.write(kIni, "7\nTRUCKS.POD\n\n   \nADDON\\MYTRACK.POD\n\x1b\nMISSING.POD\n");
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    const EntryList& list = mounter().mounted();
    ASSERT_EQ(list.size(), 3);
    EXPECT_EQ(list.at(0).status, "Mounted");
    EXPECT_EQ(list.at(1).text, "\\ADDON\\MYTRACK.POD");
    EXPECT_EQ(list.at(1).status, "Mounted");
    EXPECT_EQ(list.at(2).status, "Not found");
    EXPECT_EQ(selected(list), (std::vector<int>{0}));
    EXPECT_EQ(drive.read(kIni), "3\r\nTRUCKS.POD\r\nADDON\\MYTRACK.POD\r\nMISSING.POD\r\n");
    EXPECT_FALSE(mounter().isModified());
    EXPECT_EQ(mounter().counterText(), "3/99 PODs Mounted");
}

TEST_F(LoadMountedList, findsArchivesIgnoringCaseButKeepsEachSpellingAsItsOwnStoredPath) {
    archive("ADDON\\MYTRACK.POD");
    writeIni({"addon\\mytrack.pod", "ADDON\\MYTRACK.POD"});
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"addon\\mytrack.pod", "ADDON\\MYTRACK.POD"}));
    EXPECT_EQ(mounter().mounted().at(0).status, "Mounted");
    EXPECT_EQ(mounter().mounted().at(1).status, "Mounted");
}

TEST_F(LoadMountedList, keepsAbsoluteEntriesAbsoluteAndFindsThemOnTheirOwnDrive) {
    QTemporaryDir other;
    drive.paths().mapDrive('D', other.path());
    drive.write("D:\\TRACKS\\FAR.POD", "POD");
    writeIni({"D:\\TRACKS\\FAR.POD", "D:\\TRACKS\\GONE.POD"});
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"D:\\TRACKS\\FAR.POD", "D:\\TRACKS\\GONE.POD"}));
    EXPECT_EQ(mounter().mounted().at(0).status, "Mounted");
    EXPECT_EQ(mounter().mounted().at(1).status, "Not found");
}

TEST_F(LoadMountedList, alsoFindsAnEntryRelativeToTheCurrentFolder) {
    QTemporaryDir cwd;
    const QString before = QDir::currentPath();
    QDir::setCurrent(cwd.path());
    QDir(cwd.path()).mkpath("ELSE");
    QFile file(cwd.path() + "/ELSE/HERE.POD");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    writeIni({"ELSE\\HERE.POD"});
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    QDir::setCurrent(before);
    EXPECT_EQ(mounter().mounted().at(0).status, "Mounted");
}

TEST_F(LoadMountedList, keepsLeadingBlanksInTheFileNamePart) {
    writeIni({"  SPACED.POD"});
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(paths(mounter().mounted()), (Entries{"  SPACED.POD"}));
    EXPECT_EQ(drive.read(kIni), "1\r\n  SPACED.POD\r\n");
}

TEST_F(LoadMountedList, leavesAMissingFileUncreatedUntilTheNextSave) {
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_TRUE(mounter().mounted().empty());
    EXPECT_FALSE(drive.exists(kIni));
    autosaveOnChange(); // even so, reading never writes a file that was not there
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_FALSE(drive.exists(kIni));
    ASSERT_TRUE(mounter().SaveMountedList().ok());
    EXPECT_EQ(drive.read(kIni), "0\r\n");
}

TEST_F(LoadMountedList, rewritesACountOnlyFileAsZero) {
    drive.write(kIni, "5");
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(mounter().counterText(), "0/99 PODs Mounted");
    EXPECT_EQ(mounter().counterBar(), 0);
    EXPECT_EQ(drive.read(kIni), "0\r\n");
}

TEST_F(LoadMountedList, readOnlyModeLeavesTheFileAsItWas) {
    drive.write(kIni, "9\nA.POD\n\n");
    ASSERT_TRUE(mounter().LoadMountedList(Mounter::LoadMode::ReadOnly).ok());
    EXPECT_EQ(mounter().mounted().size(), 1);
    EXPECT_EQ(drive.read(kIni), "9\nA.POD\n\n");
}

TEST_F(LoadMountedList, capsTheBarAt99WhateverTheMaximumSays) {
    session.mmpa = "100";
    Entries entries;
    for (int i = 0; i < 150; ++i)
        entries.push_back("P" + std::to_string(i) + ".POD");
    writeIni(entries);
    ASSERT_TRUE(mounter().LoadMountedList().ok());
    EXPECT_EQ(mounter().counterText(), "150/100 PODs Mounted");
    EXPECT_EQ(mounter().counterBar(), 99);
}

TEST_F(LoadMountedList, reportsAFailedSaveAndKeepsTheList) {
    session.locationIni = "Q:\\NOWHERE\\POD.INI";
    archive("TRUCKS.POD");
    mounter().mountFiles({game("TRUCKS.POD")});
    const Status status = mounter().SaveMountedList();
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.failure().kind, FailureKind::WriteError);
    EXPECT_TRUE(status.failure().message.contains("POD.INI"));
    EXPECT_TRUE(mounter().isModified());
    EXPECT_EQ(mounter().mounted().size(), 1);
}

TEST_F(LoadMountedList, reportsAnUnreadableFileWithoutWritingOverIt) {
    drive.write(kIni, std::string(size_t(kPodIniLimit) + 1, 'A'));
    const Status status = mounter().LoadMountedList();
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.failure().kind, FailureKind::ReadError);
    EXPECT_TRUE(mounter().mounted().empty());
    EXPECT_EQ(drive.read(kIni).size(), size_t(kPodIniLimit) + 1);
}
