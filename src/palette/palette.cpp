#include "palette.h"

#include "platform/dialogs.h"
#include "platform/game_text.h"

namespace korvel {

QString unrecognizedPaletteText() {
    return QStringLiteral("Unrecognized palette format!");
}

Result<Palette> decodePalette(const QByteArray& bytes) {
    if (bytes.size() != kPaletteFileSize)
        return readError(unrecognizedPaletteText());
    Palette palette;
    for (int i = 0; i < kPaletteColors; ++i) {
        palette.colors[static_cast<size_t>(i)] = PaletteColor{
            static_cast<quint8>(bytes[i]), static_cast<quint8>(bytes[i + 1]), static_cast<quint8>(bytes[i + 2])};
    }
    return palette;
}

Result<Palette> loadPalette(const FileServices& files, const std::string& path) {
    const std::optional<qint64> size = files.fileSize(path);
    if (!size)
        return unexpectedError(unexpectedErrorText(53, QStringLiteral("File not found")));
    if (*size != kPaletteFileSize)
        return readError(unrecognizedPaletteText());
    Result<std::string> bytes = files.readAll(path, kPaletteFileSize + 1);
    if (!bytes)
        return unexpectedError(unexpectedErrorText(75, QStringLiteral("Path/File access error")));
    return decodePalette(QByteArray::fromStdString(*bytes));
}

QString paletteTooltip(int index, const PaletteColor& color) {
    return QStringLiteral("C%1: (%2, %3, %4)").arg(index).arg(color.red).arg(color.green).arg(color.blue);
}

QString paletteWindowTitle(const std::string& path) {
    const std::vector<std::string> pieces = splitText(path, '\\');
    return QStringLiteral("Palette Viewer - ") + fromGameText(pieces.back());
}

} // namespace korvel
