#include "window_settings.h"

#include "kit/twips.h"
#include "platform/game_text.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"

#include <QWidget>

#include <cmath>

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

void WindowSettings::restorePosition(QWidget& window) const {
    const int left = static_cast<int>(std::lround(number(settings::kLeft)));
    const int top = static_cast<int>(std::lround(number(settings::kTop)));
    window.move(twipsToPixels(left, &window), twipsToPixels(top, &window));
}

void WindowSettings::savePosition(const QWidget& window) {
    if (window.isMinimized() || window.isMaximized())
        return;
    write(settings::kLeft, QString::number(pixelsToTwips(window.x(), &window)));
    write(settings::kTop, QString::number(pixelsToTwips(window.y(), &window)));
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
