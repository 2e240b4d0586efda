#include "window_settings.h"

#include "kit/twips.h"
#include "platform/game_text.h"
#include "startup/settings_store.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvel::ui {

namespace {

// Far beyond any screen, yet far from overflowing once made pixels.
constexpr double kTwipsLimit = 10'000'000;

// A stored position or size in twips, made an int whatever the text holds.
int twipsOf(double value) {
    return static_cast<int>(std::lround(std::clamp(value, -kTwipsLimit, kTwipsLimit)));
}

// The height of the strip at a window's top that must stay on a screen: the title bar.
constexpr int kTitleBarPixels = 24;

} // namespace

QPoint WindowSettings::visiblePosition(QPoint wanted, QSize size, const QList<QRect>& screens) {
    if (screens.isEmpty())
        return wanted;
    const QRect titleBar(wanted, QSize(size.width(), kTitleBarPixels));
    const QPoint grip(wanted.x() + std::min(size.width() / 2, 60), wanted.y() + kTitleBarPixels / 2);
    const QRect* nearest = &screens.front();
    qint64 nearestDistance = std::numeric_limits<qint64>::max();
    for (const QRect& screen : screens) {
        if (screen.contains(grip) && screen.contains(titleBar.topLeft()))
            return wanted;
        const qint64 dx = grip.x() < screen.left()    ? screen.left() - grip.x()
                          : grip.x() > screen.right() ? grip.x() - screen.right()
                                                      : 0;
        const qint64 dy = grip.y() < screen.top()      ? screen.top() - grip.y()
                          : grip.y() > screen.bottom() ? grip.y() - screen.bottom()
                                                       : 0;
        if (dx * dx + dy * dy < nearestDistance) {
            nearestDistance = dx * dx + dy * dy;
            nearest = &screen;
        }
    }
    const int x =
        std::clamp(wanted.x(), nearest->left(), std::max(nearest->left(), nearest->right() + 1 - size.width()));
    const int y =
        std::clamp(wanted.y(), nearest->top(), std::max(nearest->top(), nearest->bottom() + 1 - size.height()));
    return {x, y};
}

void WindowSettings::restorePosition(QWidget& window) const {
    QList<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens.append(screen->availableGeometry());
    QSize size = window.minimumSize();
    if (const std::optional<std::pair<int, int>> stored = m_profile.windowSize()) {
        const int width = twipsToPixels(twipsOf(stored->first), &window);
        const int height = twipsToPixels(twipsOf(stored->second), &window);
        size = size.expandedTo(QSize(width, height));
    }
    if (!screens.isEmpty()) {
        QSize largest;
        for (const QRect& screen : screens)
            largest = largest.expandedTo(screen.size());
        size = size.boundedTo(largest).expandedTo(window.minimumSize());
    }
    window.resize(size);
    const QPoint wanted(twipsToPixels(twipsOf(m_profile.left()), &window),
                        twipsToPixels(twipsOf(m_profile.top()), &window));
    window.move(visiblePosition(wanted, window.frameGeometry().size().expandedTo(size), screens));
    if (m_profile.maximized())
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
}

void WindowSettings::savePosition(const QWidget& window) {
    if (!window.isMinimized())
        m_profile.setMaximized(window.isMaximized());
    if (window.isMinimized() || window.isMaximized())
        return;
    m_profile.setPosition(pixelsToTwips(window.x(), &window), pixelsToTwips(window.y(), &window));
    m_profile.setWindowSize(pixelsToTwips(window.width(), &window), pixelsToTwips(window.height(), &window));
}

std::optional<Mode> WindowSettings::startMode(bool configurator) const {
    return startMode(m_profile.lock(), m_profile.screen(), configurator);
}

std::optional<Mode> WindowSettings::startMode(std::optional<ScreenLock> lock, std::optional<StartScreen> screen,
                                              bool configurator) {
    const Mode configuratorOrMounter = configurator ? Mode::Configurator : Mode::Mounter;
    if (!lock)
        return std::nullopt;
    switch (*lock) {
    case ScreenLock::None:
        if (!screen)
            return std::nullopt;
        return *screen == StartScreen::Extractor ? Mode::Extractor
               : *screen == StartScreen::Mounter ? Mode::Mounter
                                                 : configuratorOrMounter;
    case ScreenLock::Configurator:
        return configuratorOrMounter;
    case ScreenLock::Extractor:
        return Mode::Extractor;
    case ScreenLock::Mounter:
        break;
    }
    return Mode::Mounter;
}

void WindowSettings::saveScreen(const QString& title) {
    m_profile.setScreenLetter(toGameText(title.mid(9, 1)));
}

} // namespace korvel::ui
