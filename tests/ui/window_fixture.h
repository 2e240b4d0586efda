#pragma once

#include "platform/result.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "ui/main_window.h"
#include "ui/pane_slider.h"
#include "ui/window_hooks.h"

#include <memory>
#include <vector>

namespace korvel::testing {

class RecordingHooks : public ui::WindowHooks {
public:
    void listArchive(const std::string& folder, const std::string& file) override {
        listed.push_back(folder + file);
        current = folder + file;
    }
    std::string listedArchive() const override { return current; }
    bool archiveBusy() const override { return busy; }
    bool mountedListChanged() const override { return changed; }
    Status saveMountedList() override {
        ++saves;
        if (!saveFails)
            changed = false;
        return saveFails ? Status(writeError(QStringLiteral("POD.INI could not be written."))) : Status();
    }
    void loadGameLists() override { calls.push_back("loadGameLists"); }
    void loadConfiguratorSettings() override { calls.push_back("loadConfiguratorSettings"); }
    void restoreSplitter(double top) override {
        calls.push_back("restoreSplitter");
        splitter = top;
    }
    void applyAssociation(bool) override {}

    std::vector<std::string> listed;
    std::string current;
    bool busy = false, changed = false, saveFails = false;
    int saves = 0;
    std::vector<std::string> calls;
    double splitter = -1;
};

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

    ui::MainWindow& open() {
        window = std::make_unique<ui::MainWindow>(session, store, drive.services(), &hooks);
        window->slider().setStepPause(0);
        window->open();
        window->show();
        return *window;
    }

    TempDrive drive;
    SettingsStore store;
    Session session;
    RecordingHooks hooks;
    std::unique_ptr<ui::MainWindow> window;
};

} // namespace korvel::testing
