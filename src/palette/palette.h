#pragma once

#include "platform/file_services.h"
#include "platform/result.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <string>

namespace korvel {

struct PaletteColor {
    quint8 red = 0;
    quint8 green = 0;
    quint8 blue = 0;
};

inline constexpr qint64 kPaletteFileSize = 768;
inline constexpr int kPaletteColors = 256;

// The 256 colours of a palette file. Box i shows bytes i, i + 1 and i + 2: the boxes step one byte,
// so neighbouring colours overlap and bytes past 257 are never shown. That is how the viewer has
// always drawn palettes, and it is kept.
struct Palette {
    std::array<PaletteColor, kPaletteColors> colors{};
};

QString unrecognizedPaletteText(); // "Unrecognized palette format!"

// Decodes the file's bytes; anything but exactly 768 bytes is refused with a ReadError.
Result<Palette> decodePalette(const QByteArray& bytes);

// Reads and decodes the palette file at a game path. A file that cannot be read fails with the
// general unexpected-error report.
Result<Palette> loadPalette(const FileServices& files, const std::string& path);

// "C0: (0, 0, 0)"
QString paletteTooltip(int index, const PaletteColor& color);

// "Palette Viewer - " + the last "\"-separated piece of the path.
QString paletteWindowTitle(const std::string& path);

} // namespace korvel
