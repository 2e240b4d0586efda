#include "window_settings.h"

#include "platform/game_text.h"
#include "widgets/twips.h"

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

QStringList WindowSettings::recent() const {
    QStringList entries;
    for (const std::string& entry : m_profile.recent())
        entries << fromGameText(entry);
    return entries;
}

void WindowSettings::saveRecent(const QStringList& entries) {
    std::vector<std::string> stored;
    for (const QString& entry : entries)
        stored.push_back(toGameText(entry));
    m_profile.setRecent(stored);
}

} // namespace korvel::ui
