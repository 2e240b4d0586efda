#pragma once

#include "startup/typed_settings.h"
#include "window_mode.h"

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

    // Moves the window to "Left"/"Top" (twips).
    void restorePosition(QWidget& window) const;
    // Saves "Left"/"Top", but only while the window is neither minimised nor maximised.
    void savePosition(const QWidget& window);

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
