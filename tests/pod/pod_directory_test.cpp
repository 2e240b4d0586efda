#include "pod/listing_export.h"
#include "pod/pod_directory.h"

#include "platform/dialogs.h"
#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

#include <limits>

using namespace korvel;
using korvel::testing::PodWriter;
using korvel::testing::putInt32;
using korvel::testing::TempDrive;
using korvel::testing::trackInfoText;

namespace {

const std::string kArchive = "C:\\Games\\MTM2\\TEST.POD";
const QString kUnreadable =
    "Sorry, but Korvel was unable to read this POD. Please note that POD3 files are not yet supported.";

// The general error report: "Sorry, but an error of type <number and description>", then where to report it.
QString unexpected(const char* what) {
    const QString address = supportAddress().isEmpty() ? QStringLiteral("Korvel's maintainers") : supportAddress();
    return QStringLiteral("Sorry, but an error of type ") + what + "\nPlease report this to " + address +
           " as soon as possible.";
}

Result<PodDirectory> listBytes(TempDrive& drive, const std::string& bytes) {
    drive.write(kArchive, bytes);
    return ListPOD(drive.files(), kArchive);
}

void expectFailure(const Result<PodDirectory>& result, FailureKind kind, const QString& message) {
    ASSERT_FALSE(result.ok());
    EXPECT_EQ(result.failure().kind, kind);
    EXPECT_EQ(result.failure().message, message);
}

} // namespace

TEST(AddCommas, groupsThousandsWithCommasAndShowsZeroAsZero) {
    std::string all;
    for (double value : {0.0, 0.4, 999.0, 1000.0, 1234567.0, -1234.0, 2147483647.0})
        all += AddCommas(value) + " ";
    EXPECT_EQ(all, "0 0 999 1,000 1,234,567 -1,234 2,147,483,647 ");
    std::string grouped;
    for (qint64 value : {qint64(0), qint64(7), qint64(100), qint64(1000), qint64(-999), qint64(-1000),
                         qint64(-2147483647) - 1, std::numeric_limits<qint64>::min()}) {
        appendWithCommas(grouped, value);
        grouped += ' ';
    }
    EXPECT_EQ(grouped, "0 7 100 1,000 -999 -1,000 -2,147,483,648 -9,223,372,036,854,775,808 ");
}

TEST(PodDirectory, readsBothLayoutsPairingPod2NamesByOrderAndIgnoringNameOffsets) {
    TempDrive drive;
    PodWriter pod;
    pod.comment("Stock trucks").add("TRUCK\\A.TRK", "abc").add("ART\\B.RAW", std::string(1000, 'x'));
    std::string pod2 = pod.pod2();
    putInt32(pod2, 96, 999);     // name offset of record 0: never used
    putInt32(pod2, 96 + 20, -5); // nor that of record 1
    for (bool two : {false, true}) {
        SCOPED_TRACE(two);
        auto listing = listBytes(drive, two ? pod2 : pod.pod1());
        ASSERT_TRUE(listing.ok()) << listing.failure().message.toStdString();
        EXPECT_EQ(listing->pod2, two);
        EXPECT_EQ(listing->comment, "Stock trucks");
        ASSERT_EQ(listing->entries.size(), 2u);
        EXPECT_EQ(std::string(listing->entries[0].name) + "|" + std::string(listing->entries[1].name),
                  "TRUCK\\A.TRK|ART\\B.RAW");
        EXPECT_EQ(listing->entries[0].size, 3);
        EXPECT_EQ(listing->entries[1].end - listing->entries[0].start, 1003);
        EXPECT_EQ(listing->typeText, two ? "Truck (POD2)" : "Truck");
        EXPECT_EQ(listing->entries[0].start, two ? 96 + 40 + 22 : 84 + 80);
        EXPECT_EQ(listing->sizeText(), two ? "1,161" : "1,167");
    }
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
    ASSERT_EQ(listing->entries.size(), 2u);
    EXPECT_EQ(std::string(listing->entries[0].name) + "|" + std::string(listing->entries[1].name), "A.BIN|B.B");
    // Six bytes earlier: one name for two entries; before the table: a negative length.
    putInt32(bytes, 96 + 8, dataStart - 6);
    expectFailure(listBytes(drive, bytes), FailureKind::UnexpectedError,
                  unexpected("9 has occurred: Subscript out of range"));
    putInt32(bytes, 96 + 8, 50);
    expectFailure(listBytes(drive, bytes), FailureKind::UnexpectedError,
                  unexpected("5 has occurred: Invalid procedure call or argument"));
}

TEST(PodDirectory, splitsTheNameTableOnlyUpToTheCountAndRefusesOverlongNames) {
    TempDrive drive;
    PodWriter pod;
    pod.add("A.BIN", "aa").add("B.BIN", "bb");
    std::string bytes = pod.pod2();
    // Entry 0's data said to start far later: the table then holds the data bytes and more names.
    std::string padded = bytes.substr(0, 96 + 40) + "A.BIN" + std::string(1, '\0') + "B.BIN" + std::string(5000, '\0') +
                         std::string(100000, 'N');
    putInt32(padded, 96 + 8, std::int32_t(padded.size()));
    padded += "aabb";
    auto listing = listBytes(drive, padded);
    ASSERT_TRUE(listing.ok()) << listing.failure().message.toStdString();
    ASSERT_EQ(listing->entries.size(), 2u);
    EXPECT_EQ(listing->entries[1].name, "B.BIN");
    EXPECT_LT(listing->entries.memoryBytes(), 1000u) << "nothing of the table beyond the names wanted is kept";
    // A first name longer than any path: unreadable, not held.
    std::string overlong =
        bytes.substr(0, 96 + 40) + std::string(size_t(kMaxPodNameLength) + 1, 'L') + std::string(1, '\0') + "B.BIN";
    putInt32(overlong, 96 + 8, std::int32_t(overlong.size() + 1));
    expectFailure(listBytes(drive, overlong + std::string(1, '\0') + "aabb"), FailureKind::ReadError,
                  unreadablePodText());
    overlong.erase(96 + 40, 1); // exactly the longest name kept
    putInt32(overlong, 96 + 8, std::int32_t(overlong.size() + 1));
    listing = listBytes(drive, overlong + std::string(1, '\0') + "aabb");
    ASSERT_TRUE(listing.ok()) << listing.failure().message.toStdString();
    EXPECT_EQ(listing->entries[0].name.size(), size_t(kMaxPodNameLength));
}

TEST(PodDirectory, sortsRowsByNameIgnoringCaseWithTiesInDirectoryOrder) {
    TempDrive drive;
    PodWriter pod;
    for (const char* name : {"b.bin", "A.BIN", "\xe9.BIN", "a.bin", "B.BIN", "\xc9.bin", "_.BIN"})
        pod.add(name, "x");
    auto listing = listBytes(drive, pod.pod2());
    ASSERT_TRUE(listing.ok());
    EXPECT_EQ(displayOrder(*listing, true), (std::vector<quint32>{1, 3, 0, 4, 6, 2, 5}));
    EXPECT_EQ(displayOrder(*listing, false), (std::vector<quint32>{0, 1, 2, 3, 4, 5, 6}));
}

TEST(PodDirectory, refusesOverflowingAndImpossibleDirectoriesWithThePod3Message) {
    TempDrive drive;
    PodWriter lower, big, pod3, huge, some;
    lower.magic("pod2").add("A.TRK", "x"); // read as POD1: a count of 0x32646f70 records
    big.add(PodWriter::Entry{"BIG.BIN", "x", 0x7FFFFFF0, std::nullopt});
    pod3.magic("POD3").add("A.BIN", "abc");
    huge.add("A.BIN", "abc").count(0x7FFFFFFF); // stops at once instead of reading billions of rows
    some.add("A.BIN", "abc").count(3);
    std::string longNames = some.count(1).pod2(); // a name table running past the end of the file
    putInt32(longNames, 96 + 8, 0x7FFFFF00);
    for (const std::string& bytes :
         {lower.pod2(), big.pod1(), big.pod2(), pod3.pod2(), huge.pod1(), huge.pod2(), some.count(3).pod1(), longNames})
        expectFailure(listBytes(drive, bytes), FailureKind::ReadError, kUnreadable);
}

TEST(PodDirectory, listsAnEmptyArchiveWithItsTimeAndAMissingOneAsAnUnexpectedError) {
    TempDrive drive;
    auto listing = listBytes(drive, PodWriter().pod1());
    ASSERT_TRUE(listing.ok());
    EXPECT_EQ(listing->totalText(), "0");
    EXPECT_EQ(listedStatusText(*listing, 0.054), "Contents of TEST.POD listed in 0.05s");
    for (const auto& [seconds, text] : {std::pair{0.5, "0.5"}, {2.0, "2"}, {0.001, "0"}})
        EXPECT_EQ(secondsText(seconds), text) << seconds;
    expectFailure(ListPOD(drive.files(), "C:\\Games\\NONE.POD"), FailureKind::UnexpectedError,
                  unexpected("53 has occurred: File not found"));
}

TEST(PodClassification, followsTheTypeAndEditorTable) {
    TempDrive drive;
    const std::string rally1 = trackInfoText(18, "3", "Traxxville USA");
    struct Case {
        std::vector<std::pair<std::string, std::string>> entries;
        bool pod2;
        std::string type, editor;
    };
    const std::vector<Case> cases = {
        {{}, false, "Other", "Unknown"},
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
        {{{"T.SIT", ""}}, false, "", ""}, // track information without size: both boxes empty
        {{{"T.SIT", ""}}, true, " (POD2)", ""},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        PodWriter pod;
        for (const auto& [name, data] : cases[i].entries)
            pod.add(name, data);
        auto listing = listBytes(drive, cases[i].pod2 ? pod.pod2() : pod.pod1());
        ASSERT_TRUE(listing.ok()) << listing.failure().message.toStdString();
        EXPECT_EQ(listing->typeText, cases[i].type);
        EXPECT_EQ(listing->editorText, cases[i].editor);
    }
    PodWriter shortInfo;
    shortInfo.add("T.SIT", "one\r\ntwo\r\n");
    expectFailure(listBytes(drive, shortInfo.pod1()), FailureKind::UnexpectedError,
                  unexpected("9 has occurred: Subscript out of range"));
}

TEST(ListingExport, writesTheSevenPartsWithCrLfInDisplayOrderBesideTheArchiveAndNothingWithoutRows) {
    EXPECT_EQ(exportPathFor("C:\\GAME\\", "NODOT"), "C:\\GAME\\txt");
    TempDrive drive;
    PodWriter pod;
    pod.comment("My trucks").add("Z.TRK", std::string(1500, 'z')).add("a.trk", "a"); // sorted ignoring case
    drive.write("C:\\G\\A.B.POD", pod.pod1());
    drive.write("C:\\G\\EMPTY.POD", PodWriter().pod1());
    Result<PodDirectory> listing = ListPOD(drive.files(), "C:\\G\\A.B.POD");
    ASSERT_TRUE(listing.ok());
    Result<std::string> written = exportListing(drive.files(), *listing, true);
    ASSERT_TRUE(written.ok());
    EXPECT_EQ(*written, "C:\\G\\A.txt"); // cut at the first dot
    EXPECT_EQ(drive.read("C:\\G\\A.txt"), "// My trucks\r\n"
                                          "a.trk         // 1          1,664         1,665\r\n"
                                          "Z.TRK         // 1,500      164           1,664\r\n"
                                          "\r\n"
                                          "// Editor Used: TrackEd\r\n"
                                          "// POD Size: 1,665\r\n"
                                          "// POD Type: Truck\r\n"
                                          "// Total Files: 2\r\n");
    listing = ListPOD(drive.files(), "C:\\G\\EMPTY.POD");
    ASSERT_TRUE(listing.ok());
    written = exportListing(drive.files(), *listing, false);
    ASSERT_TRUE(written.ok());
    EXPECT_TRUE(written->empty());
    EXPECT_FALSE(drive.exists("C:\\G\\EMPTY.txt"));
}
