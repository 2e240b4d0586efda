#include "configurator/track_tools.h"

#include "pod/pod_directory.h"
#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;

namespace {

const std::string kArchive = "C:\\MTM2\\TRACK.POD";

} // namespace

TEST(TrackTools, changesOnlyTheDigitAfterTheMarkerFollowingTheEntry) {
    korvel::testing::TempDrive drive;
    korvel::testing::PodWriter pod;
    pod.add("OTHER.TXT", "Track Race Type =9 version =4\r\n").add("T.DAT", "Track Race Type =2\r\nversion =4\r\n");
    const std::string before = pod.pod2();
    drive.write(kArchive, before);
    const Result<PodDirectory> listing = ListPOD(drive.files(), kArchive);
    ASSERT_TRUE(listing.ok());
    ASSERT_EQ(listing->entries.size(), 2u);
    const qint64 start = listing->entries[1].start;
    const size_t race = before.find("Track Race Type", static_cast<size_t>(start));
    const size_t version = before.find("version", static_cast<size_t>(start));
    ASSERT_EQ(*convertRaceType(drive.files(), kArchive, start, RaceType::BombTag), static_cast<qint64>(race + 17));
    ASSERT_EQ(*compatiblizeTruck(drive.files(), kArchive, start), static_cast<qint64>(version + 9));
    std::string expected = before;
    expected[race + 17] = '5';
    expected[version + 9] = '6';
    EXPECT_EQ(drive.read(kArchive), expected);
}

TEST(TrackTools, findsAMarkerWhereverItLiesInALargeArchive) {
    // Markers a little before, across and after each MiB counted from the entry: every one is found.
    korvel::testing::TempDrive drive;
    const qint64 entry = 1000;
    std::vector<qint64> places;
    for (qint64 mib : {1, 2})
        for (qint64 offset = -12; offset <= 12; offset += 2)
            places.push_back(entry - 1 + (mib << 20) + offset);
    places.push_back(entry - 1); // the search starts one byte before the entry's first byte
    for (qint64 marker : places) {
        SCOPED_TRACE(marker);
        std::string bytes(3 << 20, '.');
        bytes.replace(static_cast<size_t>(marker), 10, "version =1");
        drive.write(kArchive, bytes);
        ASSERT_EQ(*compatiblizeTruck(drive.files(), kArchive, entry), marker + 9);
        bytes[static_cast<size_t>(marker + 9)] = '6';
        ASSERT_EQ(drive.read(kArchive), bytes);
    }
}

TEST(TrackTools, writesTheFixedByteWhenTheMarkerIsAbsentAfterTheEntry) {
    korvel::testing::TempDrive drive;
    const std::string before = "version =1 comes before the entry" + std::string(200, '-');
    drive.write(kArchive, before);
    ASSERT_EQ(*compatiblizeTruck(drive.files(), kArchive, 50), 8);
    ASSERT_EQ(*convertRaceType(drive.files(), kArchive, 50, RaceType::Rally), 16);
    EXPECT_EQ(drive.read(kArchive), "version 61 comes3before the entry" + std::string(200, '-'));
}
