#include "pod/listing_export.h"

#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::PodWriter;
using korvel::testing::TempDrive;

TEST(ListingExport, cutsTheArchiveNameAtItsFirstDot) {
    EXPECT_EQ(exportPathFor("C:\\GAME\\", "TRUCKS.POD"), "C:\\GAME\\TRUCKS.txt");
    EXPECT_EQ(exportPathFor("C:\\GAME\\", "A.B.POD"), "C:\\GAME\\A.txt");
    EXPECT_EQ(exportPathFor("C:\\GAME\\", "NODOT"), "C:\\GAME\\txt");
    EXPECT_EQ(exportCreatedText("C:\\GAME\\TRUCKS.txt"), "C:\\GAME\\TRUCKS.txt successfully created!");
}

TEST(ListingExport, writesTheSevenPartsWithCrLfInDisplayOrder) {
    TempDrive drive;
    PodWriter pod;
    pod.comment("My trucks").add("Z.TRK", std::string(1500, 'z')).add("A.TRK", "a");
    drive.write("C:\\G\\A.B.POD", pod.pod1());
    Result<PodDirectory> listing = ListPOD(drive.files(), "C:\\G\\A.B.POD");
    ASSERT_TRUE(listing.ok());
    Result<std::string> written = exportListing(drive.files(), *listing, true);
    ASSERT_TRUE(written.ok());
    EXPECT_EQ(*written, "C:\\G\\A.txt");
    const std::string text = drive.read("C:\\G\\A.txt");
    const std::string expected = "// My trucks\r\n"
                                 "A.TRK         // 1          1,664         1,665\r\n"
                                 "Z.TRK         // 1,500      164           1,664\r\n"
                                 "\r\n"
                                 "// Editor Used: TrackEd\r\n"
                                 "// POD Size: 1,665\r\n"
                                 "// POD Type: Truck\r\n"
                                 "// Total Files: 2\r\n";
    EXPECT_EQ(text, expected);
}

TEST(ListingExport, writesNothingForAnArchiveWithoutRows) {
    TempDrive drive;
    drive.write("C:\\G\\EMPTY.POD", PodWriter().pod1());
    Result<PodDirectory> listing = ListPOD(drive.files(), "C:\\G\\EMPTY.POD");
    ASSERT_TRUE(listing.ok());
    Result<std::string> written = exportListing(drive.files(), *listing, false);
    ASSERT_TRUE(written.ok());
    EXPECT_TRUE(written->empty());
    EXPECT_FALSE(drive.exists("C:\\G\\EMPTY.txt"));
}
