#include "palette/palette.h"

#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::TempDrive;

namespace {

QByteArray counting(int size) {
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i % 256);
    return bytes;
}

} // namespace

TEST(Palette, stepsOneByteSoNeighbouringColoursOverlap) {
    Result<Palette> palette = decodePalette(counting(768));
    ASSERT_TRUE(palette.ok());
    for (int i : {0, 1, 100, 253, 255}) {
        const PaletteColor& color = palette->colors[static_cast<size_t>(i)];
        EXPECT_EQ(color.red, i % 256);
        EXPECT_EQ(color.green, (i + 1) % 256);
        EXPECT_EQ(color.blue, (i + 2) % 256);
    }
    EXPECT_EQ(paletteTooltip(0, palette->colors[0]), "C0: (0, 1, 2)");
    EXPECT_EQ(paletteTooltip(255, palette->colors[255]), "C255: (255, 0, 1)");
    EXPECT_EQ(paletteTooltip(0, PaletteColor{}), "C0: (0, 0, 0)");
}

TEST(Palette, refusesEveryOtherSize) {
    for (int size : {0, 767, 769, 1536}) {
        Result<Palette> palette = decodePalette(counting(size));
        ASSERT_FALSE(palette.ok()) << size;
        EXPECT_EQ(palette.failure().kind, FailureKind::ReadError);
        EXPECT_EQ(palette.failure().message, "Unrecognized palette format!");
    }
}

TEST(Palette, loadsAFileAndNamesTheWindowAfterIt) {
    TempDrive drive;
    drive.write("C:\\Pal\\GAME.ACT", counting(768).toStdString());
    drive.write("C:\\Pal\\BIG.ACT", counting(5000).toStdString());
    Result<Palette> palette = loadPalette(drive.files(), "C:\\Pal\\GAME.ACT");
    ASSERT_TRUE(palette.ok());
    EXPECT_EQ(palette->colors[7].blue, 9);
    EXPECT_EQ(loadPalette(drive.files(), "C:\\Pal\\BIG.ACT").failure().message, "Unrecognized palette format!");
    EXPECT_EQ(loadPalette(drive.files(), "C:\\Pal\\NONE.ACT").failure().kind, FailureKind::UnexpectedError);
    EXPECT_EQ(paletteWindowTitle("C:\\Pal\\GAME.ACT"), "Palette Viewer - GAME.ACT");
}
