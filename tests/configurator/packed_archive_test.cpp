#include "configurator/track_tools.h"
#include "pod/pod_directory.h"
#include "pod/pod_pack.h"

#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::TempDrive;

namespace {

const std::string kFolder = "C:\\Mod";
const std::string kArchive = "C:\\Game\\NEW.POD";

} // namespace

TEST(PackedArchive, takesTheRaceTypeConversionAndTheTruckPatch) {
    for (PodFormat format : {PodFormat::Pod1, PodFormat::Pod2}) {
        SCOPED_TRACE(format == PodFormat::Pod1 ? "POD1" : "POD2");
        TempDrive drive;
        drive.makeFolder("C:\\Game");
        drive.write(kFolder + "\\TRACK.SIT", korvel::testing::trackInfoText(format == PodFormat::Pod1 ? 18 : 12, "2"));
        drive.write(kFolder + "\\TRUCK.TRK", "truck\r\nversion =4\r\n");
        ASSERT_TRUE(packFolder(drive.files(), kFolder, kArchive, {format, QString(), false}).ok());
        const Result<PodDirectory> listing = ListPOD(drive.files(), kArchive);
        ASSERT_TRUE(listing.ok());
        EXPECT_EQ(listing->typeText, format == PodFormat::Pod1 ? "Merged" : "Merged (POD2)");
        const std::string before = drive.read(kArchive);
        ASSERT_TRUE(convertRaceType(drive.files(), kArchive, listing->entries[0].start, RaceType::BombTag).ok());
        ASSERT_TRUE(compatiblizeTruck(drive.files(), kArchive, listing->entries[1].start).ok());
        const std::string after = drive.read(kArchive);
        EXPECT_EQ(after.size(), before.size());
        EXPECT_NE(after.find("Track Race Type\r\n5\r\n"), std::string::npos);
        EXPECT_NE(after.find("version =6"), std::string::npos);
    }
}
