#include "window_settings.h"

#include "platform/game_text.h"
#include "startup/settings_names.h"
#include "widgets/twips.h"

#include <QWidget>

#include <cmath>

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
    return recentEntries(m_profile.text(settings::kRecent));
}

void WindowSettings::saveRecent(const QStringList& entries) {
    m_profile.setText(settings::kRecent, recentText(entries));
}

std::string WindowSettings::recentText(const QStringList& entries) {
    if (entries.isEmpty())
        return std::string(1, settings::kListSeparator);
    std::string text;
    for (const QString& entry : entries) {
        text += settings::kListSeparator;
        text += toGameText(entry);
    }
    return text;
}

QStringList WindowSettings::recentEntries(const std::string& text) {
    QStringList entries;
    for (const std::string& piece : splitText(text, settings::kListSeparator)) {
        if (!piece.empty() && piece != settings::kError)
            entries << fromGameText(piece);
    }
    return entries;
}

} // namespace korvel::ui
