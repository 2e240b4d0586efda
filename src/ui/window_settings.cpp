#include "window_settings.h"

#include "kit/twips.h"
#include "platform/game_text.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvel::ui {

QString WindowSettings::read(std::string_view name) const {
    return fromGameText(m_store.readProfile(m_profile, name));
}

void WindowSettings::write(std::string_view name, const QString& text) {
    m_store.writeProfile(m_profile, name, toGameText(text));
}

double WindowSettings::number(std::string_view name) const {
    return leadingNumber(m_store.readProfile(m_profile, name)).value_or(0.0);
}

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
        const qint64 dx = grip.x() < screen.left() ? screen.left() - grip.x()
                          : grip.x() > screen.right() ? grip.x() - screen.right()
                                                      : 0;
        const qint64 dy = grip.y() < screen.top() ? screen.top() - grip.y()
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
    const QStringList stored = read(settings::kSize).split(QLatin1Char(','));
    if (stored.size() == 2) {
        const int width = twipsToPixels(twipsOf(stored[0].trimmed().toDouble()), &window);
        const int height = twipsToPixels(twipsOf(stored[1].trimmed().toDouble()), &window);
        size = size.expandedTo(QSize(width, height));
    }
    if (!screens.isEmpty()) {
        QSize largest;
        for (const QRect& screen : screens)
            largest = largest.expandedTo(screen.size());
        size = size.boundedTo(largest).expandedTo(window.minimumSize());
    }
    window.resize(size);
    const QPoint wanted(twipsToPixels(twipsOf(number(settings::kLeft)), &window),
                        twipsToPixels(twipsOf(number(settings::kTop)), &window));
    window.move(visiblePosition(wanted, window.frameGeometry().size().expandedTo(size), screens));
    if (read(settings::kMaximized) == QLatin1String("1"))
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
}

void WindowSettings::savePosition(const QWidget& window) {
    if (!window.isMinimized())
        write(settings::kMaximized, window.isMaximized() ? QStringLiteral("1") : QStringLiteral("0"));
    if (window.isMinimized() || window.isMaximized())
        return;
    write(settings::kLeft, QString::number(pixelsToTwips(window.x(), &window)));
    write(settings::kTop, QString::number(pixelsToTwips(window.y(), &window)));
    write(settings::kSize, QString::number(pixelsToTwips(window.width(), &window)) + QLatin1Char(',') +
                               QString::number(pixelsToTwips(window.height(), &window)));
}

std::optional<Mode> WindowSettings::startMode(bool configurator) const {
    return startMode(number(settings::kLock), read(settings::kScreen), configurator);
}

std::optional<Mode> WindowSettings::startMode(double lock, const QString& screen, bool configurator) {
    const Mode configuratorOrMounter = configurator ? Mode::Configurator : Mode::Mounter;
    if (lock == 0) {
        const auto remembered = modeFromLetter(screen);
        if (remembered == Mode::Configurator)
            return configuratorOrMounter;
        return remembered;
    }
    if (lock == 1)
        return configuratorOrMounter;
    if (lock == 2)
        return Mode::Extractor;
    if (lock == 3)
        return Mode::Mounter;
    return std::nullopt;
}

void WindowSettings::saveScreen(const QString& title) {
    write(settings::kScreen, title.mid(9, 1));
}

} // namespace korvel::ui
