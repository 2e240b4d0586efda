#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

class QWidget;

namespace korvel::ui {

// Window geometry is kept in twips (1440 per logical inch), so the window scales with the screen's
// DPI. These are the one place where twips become pixels and back.
int twipsToPixels(int twips, const QWidget* reference = nullptr);
int pixelsToTwips(int pixels, const QWidget* reference = nullptr);
QRect twipsRect(int left, int top, int width, int height, const QWidget* reference = nullptr);

} // namespace korvel::ui
