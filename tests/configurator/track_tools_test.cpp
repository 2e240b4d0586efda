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
    const qint64 start = ListPOD(drive.files(), kArchive).value().entries[1].start;
    const size_t race = before.find("Track Race Type", static_cast<size_t>(start));
    const size_t version = before.find("version", static_cast<size_t>(start));
    ASSERT_EQ(*convertRaceType(drive.files(), kArchive, start, RaceType::BombTag), static_cast<qint64>(race + 17));
    ASSERT_EQ(*compatiblizeTruck(drive.files(), kArchive, start), static_cast<qint64>(version + 9));
    std::string expected = before;
    expected[race + 17] = '5';
    expected[version + 9] = '6';
    EXPECT_EQ(drive.read(kArchive), expected);
}

TEST(TrackTools, findsAMarkerSpanningTheSearchChunkEdge) {
    korvel::testing::TempDrive drive;
    std::string bytes(3 << 20, '.');
    const size_t marker = (1 << 20) - 4; // "version" straddles the first 1 MiB chunk's end
    bytes.replace(marker, 10, "version =1");
    drive.write(kArchive, bytes);
    ASSERT_EQ(*compatiblizeTruck(drive.files(), kArchive, 100), static_cast<qint64>(marker + 9));
    bytes[marker + 9] = '6';
    EXPECT_EQ(drive.read(kArchive), bytes);
}

TEST(TrackTools, writesTheFixedByteWhenTheMarkerIsAbsentAfterTheEntry) {
    korvel::testing::TempDrive drive;
    const std::string before = "version =1 comes before the entry" + std::string(200, '-');
    drive.write(kArchive, before);
    ASSERT_EQ(*compatiblizeTruck(drive.files(), kArchive, 50), 8);
    ASSERT_EQ(*convertRaceType(drive.files(), kArchive, 50, RaceType::Rally), 16);
    EXPECT_EQ(drive.read(kArchive), "version 61 comes3before the entry" + std::string(200, '-'));
}
