#include "palette/palette.h"

#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;

static QByteArray counting(int size) {
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i % 256);
    return bytes;
}

TEST(Palette, stepsOneByteSoNeighbouringColoursOverlap) {
    Result<Palette> palette = decodePalette(counting(768));
    ASSERT_TRUE(palette.ok());
    for (int i : {0, 1, 100, 253, 255}) {
        const PaletteColor& color = palette->colors[static_cast<size_t>(i)];
        EXPECT_EQ(std::tuple(color.red, color.green, color.blue), std::tuple(i, (i + 1) % 256, (i + 2) % 256)) << i;
    }
    EXPECT_EQ(paletteTooltip(255, palette->colors[255]), "C255: (255, 0, 1)");
    for (int size : {0, 767, 769, 1536}) {
        Result<Palette> wrong = decodePalette(counting(size));
        ASSERT_FALSE(wrong.ok()) << size;
        EXPECT_EQ(wrong.failure().kind, FailureKind::ReadError);
        EXPECT_EQ(wrong.failure().message, "Unrecognized palette format!");
    }
}

TEST(Palette, loadsAFileAndNamesTheWindowAfterIt) {
    korvel::testing::TempDrive drive;
    drive.write("C:\\Pal\\GAME.ACT", counting(768).toStdString());
    drive.write("C:\\Pal\\BIG.ACT", counting(5000).toStdString());
    Result<Palette> palette = loadPalette(drive.files(), "C:\\Pal\\GAME.ACT");
    ASSERT_TRUE(palette.ok());
    EXPECT_EQ(palette->colors[7].blue, 9);
    EXPECT_EQ(loadPalette(drive.files(), "C:\\Pal\\BIG.ACT").failure().message, "Unrecognized palette format!");
    EXPECT_EQ(loadPalette(drive.files(), "C:\\Pal\\NONE.ACT").failure().kind, FailureKind::UnexpectedError);
    EXPECT_EQ(paletteWindowTitle("C:\\Pal\\GAME.ACT"), "Palette Viewer - GAME.ACT");
}
