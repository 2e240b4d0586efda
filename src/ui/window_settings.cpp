#include "window_settings.h"

#include "kit/twips.h"
#include "platform/game_text.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"

#include <QWidget>

namespace korvel::ui {

void WindowSettings::restorePosition(QWidget& window) const {
    window.move(twipsToPixels(m_profile.left(), &window), twipsToPixels(m_profile.top(), &window));
}

void WindowSettings::savePosition(const QWidget& window) {
    if (window.isMinimized() || window.isMaximized())
        return;
    m_profile.setPosition(pixelsToTwips(window.x(), &window), pixelsToTwips(window.y(), &window));
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
