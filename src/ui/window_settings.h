#pragma once

#include "startup/typed_settings.h"
#include "window_mode.h"

#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>

#include <optional>
#include <string>

class QWidget;

namespace korvel::ui {

// The main window's values in the profile's settings key: position, remembered mode, start-up
// lock, sliding and button looks.
class WindowSettings {
public:
    WindowSettings(SettingsStore& store, std::string profile) : m_profile(store, std::move(profile)) {}

    const ProfileSettings& profile() const { return m_profile; }

    // Gives the window its remembered "Size" (never below its minimum size, never beyond the
    // screen), moves it to "Left"/"Top" (twips) and maximises it again when it was. A position
    // whose title bar would land on no screen is pulled onto the nearest screen.
    void restorePosition(QWidget& window) const;
    // Saves "Maximized", and "Left"/"Top" and "Size" only while the window is neither minimised
    // nor maximised.
    void savePosition(const QWidget& window);
    // The top-left corner for a window of `size` (pixels) wanted at `wanted`: unchanged when its
    // title bar is on one of `screens` (their available areas), else moved into the screen nearest
    // to it.
    static QPoint visiblePosition(QPoint wanted, QSize size, const QList<QRect>& screens);

    // The first mode from "Lock" and "Screen"; nullopt when neither chooses one.
    std::optional<Mode> startMode(bool configurator) const;
    static std::optional<Mode> startMode(std::optional<ScreenLock> lock, std::optional<StartScreen> screen,
                                         bool configurator);

    // "Screen" is the character at position 10 of the window title (the one after "Korvel - ").
    void saveScreen(const QString& title);

private:
    ProfileSettings m_profile;
};

} // namespace korvel::ui
