#include "platform/short_path.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::TempDrive;

TEST(ShortPath, keepsRelativePathsRelativeAndTheFileNameAsWritten) {
    TempDrive drive;
    drive.makeFolder("C:\\Games\\MTM2\\ADDON");
    const std::string game = "C:\\Games\\MTM2\\";
    EXPECT_EQ(ShortPath(drive.files(), game, "ADDON\\MyTrack.pod", false), "ADDON\\MyTrack.pod");
    EXPECT_EQ(ShortPath(drive.files(), game, "TRUCKS.POD", false), "TRUCKS.POD");
    EXPECT_EQ(ShortPath(drive.files(), game, "C:\\Games\\MTM2\\ADDON\\X.POD", false), "C:\\Games\\MTM2\\ADDON\\X.POD");
    EXPECT_EQ(ShortPath(drive.files(), game, "C:\\Games\\MTM2", true), "C:\\Games\\MTM2");
}

TEST(ShortPath, keepsTheLongFolderWhenNoShortFormExists) {
    TempDrive drive;
    EXPECT_EQ(ShortPath(drive.files(), "C:\\Games\\MTM2\\", "NOWHERE\\X.POD", false), "NOWHERE\\X.POD");
    EXPECT_EQ(ShortPath(drive.files(), "C:\\Games\\MTM2\\", "D:\\TRACKS\\X.POD", false), "D:\\TRACKS\\X.POD");
}
