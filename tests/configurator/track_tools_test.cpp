#include "configurator/track_tools.h"

#include "pod/pod_directory.h"
#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::PodWriter;
using korvel::testing::TempDrive;

namespace {

const std::string kArchive = "C:\\MTM2\\TRACK.POD";

// Bytes that differ between two equally long texts.
std::vector<size_t> differences(const std::string& a, const std::string& b) {
    std::vector<size_t> at;
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        if (a[i] != b[i])
            at.push_back(i);
    return at;
}

} // namespace

TEST(TrackTools, convertsTheRaceTypeDigitAndNothingElse) {
    TempDrive drive;
    PodWriter pod;
    pod.add("OTHER.TXT", "Track Race Type =9 (an earlier entry is not searched)\r\n")
        .add("T.DAT", "name\r\nTrack Race Type =2\r\nmore\r\n");
    const std::string before = pod.pod1();
    drive.write(kArchive, before);
    Result<PodDirectory> listing = ListPOD(drive.files(), kArchive);
    ASSERT_TRUE(listing.ok());
    const PodEntry& sit = listing->entries[1];

    Result<qint64> written = convertRaceType(drive.files(), kArchive, sit.start, RaceType::BombTag);
    ASSERT_TRUE(written.ok()) << written.failure().message.toStdString();
    const std::string after = drive.read(kArchive);
    ASSERT_EQ(after.size(), before.size());
    const size_t marker = before.find("Track Race Type", static_cast<size_t>(sit.start));
    EXPECT_EQ(differences(before, after), std::vector<size_t>{marker + 17});
    EXPECT_EQ(after.substr(marker, 18), "Track Race Type =5");
    EXPECT_EQ(*written, static_cast<qint64>(marker + 17));
}

TEST(TrackTools, compatiblizeSetsTheThirdByteAfterVersionToSix) {
    TempDrive drive;
    PodWriter pod;
    pod.add("T.TRK", "truck\r\nversion =4\r\n");
    const std::string before = pod.pod2();
    drive.write(kArchive, before);
    Result<PodDirectory> listing = ListPOD(drive.files(), kArchive);
    ASSERT_TRUE(listing.ok());
    ASSERT_TRUE(compatiblizeTruck(drive.files(), kArchive, listing->entries[0].start).ok());
    const std::string after = drive.read(kArchive);
    const size_t marker = before.find("version");
    EXPECT_EQ(differences(before, after), std::vector<size_t>{marker + 9});
    EXPECT_EQ(after.substr(marker, 10), "version =6");
}

TEST(TrackTools, findsAMarkerSpanningTheSearchChunkEdge) {
    TempDrive drive;
    std::string bytes(3 << 20, '.');
    const size_t marker = (1 << 20) - 4; // "version" straddles the first 1 MiB chunk's end
    bytes.replace(marker, 10, "version =1");
    drive.write(kArchive, bytes);
    ASSERT_EQ(*compatiblizeTruck(drive.files(), kArchive, 100), static_cast<qint64>(marker + 9));
    EXPECT_EQ(drive.read(kArchive)[marker + 9], '6');
}

TEST(TrackTools, writesTheFixedByteWhenTheMarkerIsAbsentAfterTheEntry) {
    TempDrive drive;
    const std::string before = "version =1 comes before the entry" + std::string(200, '-');
    drive.write(kArchive, before);
    ASSERT_EQ(*compatiblizeTruck(drive.files(), kArchive, 50), 8);
    std::string after = drive.read(kArchive);
    EXPECT_EQ(differences(before, after), std::vector<size_t>{8});
    EXPECT_EQ(after[8], '6');

    ASSERT_EQ(*convertRaceType(drive.files(), kArchive, 50, RaceType::Rally), 16);
    EXPECT_EQ(drive.read(kArchive)[16], '3');
    EXPECT_EQ(drive.read(kArchive).size(), before.size());
}
