#include "twips.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <cmath>

namespace korvel::ui {

namespace {

double logicalDpi(const QWidget* reference) {
    if (reference)
        return reference->logicalDpiX();
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        return screen->logicalDotsPerInchX();
    return 96.0;
}

} // namespace

int twipsToPixels(int twips, const QWidget* reference) {
    return static_cast<int>(std::lround(twips * logicalDpi(reference) / 1440.0));
}

int pixelsToTwips(int pixels, const QWidget* reference) {
    return static_cast<int>(std::lround(pixels * 1440.0 / logicalDpi(reference)));
}

QRect twipsRect(int left, int top, int width, int height, const QWidget* reference) {
    return QRect(twipsToPixels(left, reference), twipsToPixels(top, reference), twipsToPixels(width, reference),
                 twipsToPixels(height, reference));
}

} // namespace korvel::ui
