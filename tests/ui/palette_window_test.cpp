#include "palette/widgets/palette_window.h"

#include "temp_game.h"

#include <QApplication>
#include <QDropEvent>
#include <QFrame>
#include <QLabel>
#include <QMimeData>
#include <QUrl>

#include <gtest/gtest.h>

using korvel::PaletteWindow;

namespace {

struct PaletteFixture {
    PaletteFixture() : window(drive.services()) {}

    QString file(const std::string& path, const std::string& bytes) {
        return drive.write(path, bytes), drive.host(path);
    }
    static bool drop(QWidget* target, const QStringList& hostPaths) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : hostPaths)
            urls << QUrl::fromLocalFile(path);
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(2, 2), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDropEvent dropped(QPointF(2, 2), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &dropped);
        return enter.isAccepted() && dropped.isAccepted();
    }
    QFrame* box(int index) const { return window.findChild<QFrame*>(QStringLiteral("picColor_%1").arg(index)); }

    korvel::testing::TempDrive drive;
    PaletteWindow window;
};

std::string ramp(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i % 256);
    return bytes;
}

} // namespace

TEST(PaletteWindow, droppedFileColoursTheBoxesFromTheFirstFileOnlyAndAWrongSizeIsRefused) {
    PaletteFixture f;
    const QString first = f.file("C:\\Art\\ramp.pal", ramp(768));
    const QString second = f.file("C:\\Art\\other.pal", std::string(768, '\x7f'));
    EXPECT_TRUE(f.drop(f.box(37), {first, second}));
    EXPECT_EQ(f.box(0)->toolTip(), "C0: (0, 1, 2)");
    EXPECT_EQ(f.box(255)->toolTip(), "C255: (255, 0, 1)");
    EXPECT_EQ(f.box(10)->palette().color(QPalette::Window), QColor(10, 11, 12));
    EXPECT_EQ(f.window.windowTitle(), "Palette Viewer - ramp.pal");
    EXPECT_TRUE(f.drive.dialogs().messages().empty());
    // Every drop target of the window takes files.
    EXPECT_TRUE(f.drop(f.window.findChild<QLabel*>("lblInstructions"), {second}));
    EXPECT_EQ(f.box(0)->toolTip(), "C0: (127, 127, 127)");
    EXPECT_TRUE(f.drop(&f.window, {second}));
    EXPECT_EQ(f.window.windowTitle(), "Palette Viewer - other.pal");
    // A file of the wrong size is refused and the shown palette stays.
    EXPECT_TRUE(f.drop(f.box(0), {first}));
    for (size_t size : {767u, 769u}) {
        f.drive.dialogs().clear();
        f.drop(f.box(3), {f.file("C:\\Art\\odd.pal", ramp(size))});
        ASSERT_EQ(f.drive.dialogs().messages().size(), 1u);
        EXPECT_EQ(f.drive.dialogs().lastMessage().text, "Unrecognized palette format!");
        EXPECT_EQ(f.box(1)->toolTip(), "C1: (1, 2, 3)");
        EXPECT_EQ(f.window.windowTitle(), "Palette Viewer - ramp.pal");
    }
}
