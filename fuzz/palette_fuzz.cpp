// Feeds arbitrary bytes to the palette decoder and its tooltip texts.

#include "palette/palette.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    korvel::Result<korvel::Palette> palette = korvel::decodePalette(bytes);
    if (palette.ok() != (size == 768))
        __builtin_trap();
    if (palette.ok()) {
        for (int i = 0; i < korvel::kPaletteColors; ++i)
            (void)korvel::paletteTooltip(i, palette->colors[static_cast<size_t>(i)]);
    }
    return 0;
}
