#include "pod/pod_directory.h"
#include "pod/recent_archives.h"

#include "platform/dialogs.h"
#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::PodWriter;
using korvel::testing::putInt32;
using korvel::testing::TempDrive;
using korvel::testing::trackInfoText;

namespace {

const std::string kArchive = "C:\\Games\\MTM2\\TEST.POD";

Result<PodDirectory> listBytes(TempDrive& drive, const std::string& bytes) {
    drive.write(kArchive, bytes);
    return ListPOD(drive.files(), kArchive);
}

void expectUnreadable(const Result<PodDirectory>& result) {
    ASSERT_FALSE(result.ok());
    EXPECT_EQ(result.failure().kind, FailureKind::ReadError);
    EXPECT_EQ(result.failure().message, unreadablePodText());
}

} // namespace

TEST(AddCommas, groupsThousandsWithCommasAndShowsZeroAsZero) {
    EXPECT_EQ(AddCommas(0), "0");
    EXPECT_EQ(AddCommas(0.4), "0");
    EXPECT_EQ(AddCommas(12), "12");
    EXPECT_EQ(AddCommas(999), "999");
    EXPECT_EQ(AddCommas(1000), "1,000");
    EXPECT_EQ(AddCommas(1234567), "1,234,567");
    EXPECT_EQ(AddCommas(-1234), "-1,234");
    EXPECT_EQ(AddCommas(2147483647.0), "2,147,483,647");
}

TEST(PodDirectory, readsPod1RowsWithNamesUpToTheirFirstNul) {
    TempDrive drive;
    PodWriter pod;
    pod.comment("Stock trucks").add("TRUCK\\A.TRK", "abc").add("ART\\B.RAW", std::string(1000, 'x'));
    auto listing = listBytes(drive, pod.pod1());
    ASSERT_TRUE(listing.ok()) << listing.failure().message.toStdString();
    EXPECT_FALSE(listing->pod2);
    EXPECT_EQ(listing->folder, "C:\\Games\\MTM2\\");
    EXPECT_EQ(listing->fileName, "TEST.POD");
    EXPECT_EQ(listing->comment, "Stock trucks");
    ASSERT_EQ(listing->entries.size(), 2u);
    EXPECT_EQ(listing->entries[0].name, "TRUCK\\A.TRK");
    EXPECT_EQ(listing->entries[0].start, 84 + 80);
    EXPECT_EQ(listing->entries[0].size, 3);
    EXPECT_EQ(listing->entries[1].start, 84 + 80 + 3);
    EXPECT_EQ(listing->entries[1].end, 84 + 80 + 3 + 1000);
    EXPECT_EQ(listing->typeText, "Truck");
    EXPECT_EQ(listing->editorText, "TrackEd");
    EXPECT_EQ(listing->sizeText(), "1,167");
    EXPECT_EQ(listing->totalText(), "2");
}

TEST(PodDirectory, pairsPod2NamesWithEntriesByOrderAndIgnoresNameOffsets) {
    TempDrive drive;
    PodWriter pod;
    pod.comment("two").add("FIRST.BIN", "1111").add("SECOND\\LONGER.NAME", "22");
    std::string bytes = pod.pod2();
    putInt32(bytes, 96, 999);     // name offset of record 0: never used
    putInt32(bytes, 96 + 20, -5); // nor that of record 1
    auto listing = listBytes(drive, bytes);
    ASSERT_TRUE(listing.ok()) << listing.failure().message.toStdString();
    EXPECT_TRUE(listing->pod2);
    EXPECT_EQ(listing->comment, "two");
    ASSERT_EQ(listing->entries.size(), 2u);
    EXPECT_EQ(listing->entries[0].name, "FIRST.BIN");
    EXPECT_EQ(listing->entries[1].name, "SECOND\\LONGER.NAME");
    EXPECT_EQ(listing->entries[1].size, 2);
    EXPECT_EQ(listing->typeText, "Other (POD2)");
}

TEST(PodDirectory, readsTheNameTableUpToTheDataOfEntryZero) {
    TempDrive drive;
    PodWriter pod;
    pod.add("A.BIN", "aa").add("B.BIN", "bb");
    const std::int32_t dataStart = 96 + 40 + 12;
    std::string bytes = pod.pod2();
    // Entry 0's data said to start two bytes earlier: the table is cut inside the last name.
    putInt32(bytes, 96 + 8, dataStart - 2);
    auto listing = listBytes(drive, bytes);
    ASSERT_TRUE(listing.ok()) << listing.failure().message.toStdString();
    EXPECT_EQ(listing->entries[0].name, "A.BIN");
    EXPECT_EQ(listing->entries[1].name, "B.B");
    // Six bytes earlier: the table yields one name for two entries.
    putInt32(bytes, 96 + 8, dataStart - 6);
    listing = listBytes(drive, bytes);
    ASSERT_FALSE(listing.ok());
    EXPECT_EQ(listing.failure().kind, FailureKind::UnexpectedError);
    EXPECT_EQ(listing.failure().message, unexpectedErrorText(9, "Subscript out of range"));
}

TEST(PodDirectory, reportsANegativeNameTableLengthAsAnUnexpectedError) {
    TempDrive drive;
    PodWriter pod;
    pod.add("A.BIN", "aa");
    std::string bytes = pod.pod2();
    putInt32(bytes, 96 + 8, 50);
    auto listing = listBytes(drive, bytes);
    ASSERT_FALSE(listing.ok());
    EXPECT_EQ(listing.failure().message, unexpectedErrorText(5, "Invalid procedure call or argument"));
}

TEST(PodDirectory, readsLowerCasePod2MagicAsPod1) {
    TempDrive drive;
    PodWriter pod;
    pod.magic("pod2").add("A.TRK", "x");
    auto listing = listBytes(drive, pod.pod2());
    // Read as POD1, "pod2" is a count of 0x32646f70 records: far more than the file holds.
    expectUnreadable(listing);

    PodWriter pod1;
    pod1.add("A.TRK", "x");
    auto sound = listBytes(drive, pod1.pod1());
    ASSERT_TRUE(sound.ok());
    EXPECT_EQ(sound->magic.size(), 4u);
    EXPECT_FALSE(sound->pod2);
}

TEST(PodDirectory, refusesOverflowingAndImpossibleDirectoriesWithThePod3Message) {
    TempDrive drive;
    {
        PodWriter pod;
        pod.add(PodWriter::Entry{"BIG.BIN", "x", 0x7FFFFFF0, std::nullopt});
        expectUnreadable(listBytes(drive, pod.pod1()));
        expectUnreadable(listBytes(drive, pod.pod2()));
    }
    {
        PodWriter pod;
        pod.magic("POD3").add("A.BIN", "abc");
        expectUnreadable(listBytes(drive, pod.pod2()));
    }
    {
        // Counts that cannot fit in the file stop at once instead of reading billions of rows.
        PodWriter pod;
        pod.add("A.BIN", "abc").count(0x7FFFFFFF);
        expectUnreadable(listBytes(drive, pod.pod1()));
        expectUnreadable(listBytes(drive, pod.pod2()));
        PodWriter some;
        some.add("A.BIN", "abc").count(3);
        expectUnreadable(listBytes(drive, some.pod1()));
    }
    {
        // A name table running past the end of the file.
        PodWriter pod;
        pod.add("A.BIN", "abc");
        std::string bytes = pod.pod2();
        putInt32(bytes, 96 + 8, 0x7FFFFF00);
        expectUnreadable(listBytes(drive, bytes));
    }
}

TEST(PodDirectory, listsAnEmptyArchiveAsOther) {
    TempDrive drive;
    auto listing = listBytes(drive, PodWriter().pod1());
    ASSERT_TRUE(listing.ok());
    EXPECT_TRUE(listing->entries.empty());
    EXPECT_EQ(listing->typeText, "Other");
    EXPECT_EQ(listing->editorText, "Unknown");
    EXPECT_EQ(listing->totalText(), "0");
    EXPECT_EQ(listedStatusText(*listing, 0.054), "Contents of TEST.POD listed in 0.05s");
}

TEST(PodDirectory, reportsAMissingArchiveAsAnUnexpectedError) {
    TempDrive drive;
    auto listing = ListPOD(drive.files(), "C:\\Games\\NONE.POD");
    ASSERT_FALSE(listing.ok());
    EXPECT_EQ(listing.failure().kind, FailureKind::UnexpectedError);
    EXPECT_EQ(listing.failure().message, unexpectedErrorText(53, "File not found"));
}

TEST(PodClassification, followsTheTypeAndEditorTable) {
    TempDrive drive;
    const std::string rally1 = trackInfoText(18, "3", "Traxxville USA");
    struct Case {
        std::vector<std::pair<std::string, std::string>> entries;
        bool pod2;
        std::string type;
        std::string editor;
    };
    const std::vector<Case> cases = {
        {{{"A.TRK", ""}, {"B.TRK", ""}}, false, "Truck", "TrackEd"},
        {{{"A.TXT", "x"}}, false, "Other", "Unknown"},
        {{{"A.SIT", trackInfoText(12, "1")}, {"B.TRK", ""}}, true, "Merged (POD2)", "PODMate"},
        {{{"A.SIT", rally1}, {"B.SIT", rally1}}, false, "Merged", "PODMate"},
        {{{"map.sit  ", trackInfoText(18, "1")}, {"truck.trk ", ""}}, false, "Merged", "PODMate"},
        {{{"T.SIT", rally1}, {"X.RAW", ""}}, false, "Rally", "Traxx"},
        {{{"T.SIT", trackInfoText(18, "5", "traxxville usa")}}, false, "Bomb Tag", "TrackEd"},
        {{{"T.SIT", trackInfoText(12, "7", "Traxxville USA")}}, true, "Unknown (POD2)", "TrackEd"},
        {{{"T.SIT", trackInfoText(12, "2")}}, true, "Circuit (POD2)", "TrackEd"},
        {{{"T.SIT", trackInfoText(18, "2") + "\r\n"}}, true, "Unknown (POD2)", "TrackEd"},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        PodWriter pod;
        for (const auto& [name, data] : cases[i].entries)
            pod.add(name, data);
        auto listing = listBytes(drive, cases[i].pod2 ? pod.pod2() : pod.pod1());
        ASSERT_TRUE(listing.ok()) << "case " << i << ": " << listing.failure().message.toStdString();
        EXPECT_EQ(listing->typeText, cases[i].type) << "case " << i;
        EXPECT_EQ(listing->editorText, cases[i].editor) << "case " << i;
    }
}

TEST(PodClassification, leavesBothBoxesEmptyWhenTheTrackInformationHasNoSizeOrStart) {
    TempDrive drive;
    PodWriter pod;
    pod.add(PodWriter::Entry{"T.SIT", "", 0, std::nullopt});
    auto listing = listBytes(drive, pod.pod1());
    ASSERT_TRUE(listing.ok());
    EXPECT_EQ(listing->typeText, "");
    EXPECT_EQ(listing->editorText, "");
    listing = listBytes(drive, pod.pod2());
    ASSERT_TRUE(listing.ok());
    EXPECT_EQ(listing->typeText, " (POD2)");
}

TEST(PodClassification, failsWhenTheTrackInformationHasTooFewLines) {
    TempDrive drive;
    PodWriter pod;
    pod.add("T.SIT", "one\r\ntwo\r\n");
    auto listing = listBytes(drive, pod.pod1());
    ASSERT_FALSE(listing.ok());
    EXPECT_EQ(listing.failure().message, unexpectedErrorText(9, "Subscript out of range"));
}

TEST(PodListing, sortsByNameWithoutRegardToCaseWhenAsked) {
    TempDrive drive;
    PodWriter pod;
    pod.add("b.bin", "1").add("C.BIN", "2").add("A.BIN", "3");
    auto listing = listBytes(drive, pod.pod1());
    ASSERT_TRUE(listing.ok());
    auto sorted = displayOrder(*listing, true);
    EXPECT_EQ(sorted[0]->name, "A.BIN");
    EXPECT_EQ(sorted[1]->name, "b.bin");
    EXPECT_EQ(sorted[2]->name, "C.BIN");
    EXPECT_EQ(displayOrder(*listing, false)[0]->name, "b.bin");
}

TEST(PodListing, formatsElapsedSecondsAsOrdinaryNumbers) {
    EXPECT_EQ(secondsText(0.5), "0.5");
    EXPECT_EQ(secondsText(2.0), "2");
    EXPECT_EQ(secondsText(0.274), "0.27");
    EXPECT_EQ(secondsText(0.001), "0");
}

TEST(RecentArchives, keepsEightNewestFirstWithoutDuplicates) {
    std::vector<std::string> recent;
    recent = updateRecentArchives(recent, "C:\\A\\", "ONE.POD");
    recent = updateRecentArchives(recent, "C:\\A\\", "TWO.POD");
    recent = updateRecentArchives(recent, "C:\\A\\", "ONE.POD");
    ASSERT_EQ(recent.size(), 2u);
    EXPECT_EQ(recent[0], "C:\\A\\ONE.POD");
    EXPECT_EQ(recent[1], "C:\\A\\TWO.POD");
    for (int i = 0; i < 8; ++i)
        recent = updateRecentArchives(recent, "C:\\B\\", "P" + std::to_string(i) + ".POD");
    ASSERT_EQ(recent.size(), 8u);
    EXPECT_EQ(recent.front(), "C:\\B\\P7.POD");
    EXPECT_EQ(recent.back(), "C:\\B\\P0.POD");
    EXPECT_EQ(updateRecentArchives({}, "c:\\low\\", "X.POD").front(), "C:\\low\\X.POD");
}
