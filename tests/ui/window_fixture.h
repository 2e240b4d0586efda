#pragma once

#include "platform/result.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "ui/main_window.h"
#include "ui/pane_slider.h"

#include <memory>

namespace korvel::testing {

class WindowFixture {
public:
    explicit WindowFixture(const std::string& profile = "MTM2", bool configurator = true)
        : store(drive.registry(), drive.dialogs()) {
        session.versionText = "1.5 Build 12";
        session.currentGame = profile;
        session.location = "C:\\Games\\MTM2";
        session.locationIni = "C:\\Games\\MTM2\\POD.INI";
        session.locationExe = "C:\\Games\\MTM2\\monster.exe";
        session.mmpa = "99";
        session.configurator = configurator;
        session.autosave = AutosaveSwitches();
        store.CreateKey(settings::profileKey(profile));
        set(settings::kSlide, "0");
    }

    void set(std::string_view name, const std::string& text) { store.writeProfile(session.currentGame, name, text); }
    std::string get(std::string_view name) { return store.readProfile(session.currentGame, name); }

    // The window alone, through its own steps of opening.
    ui::MainWindow& open() {
        window = std::make_unique<ui::MainWindow>(session, store, drive.services());
        window->slider().setStepPause(0);
        window->prepareFrame();
        window->showInformation();
        window->showStartMode();
        window->show();
        return *window;
    }

    TempDrive drive;
    SettingsStore store;
    Session session;
    std::unique_ptr<ui::MainWindow> window;
};

} // namespace korvel::testing
