#pragma once

#include "gui/korvel_application.h"
#include "mounter/widgets/mounter_pane.h"
#include "pod/widgets/extractor_pane.h"
#include "startup/association.h"
#include "startup/game_profiles.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "ui/main_window.h"
#include "ui/pane_slider.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

namespace korvel::testing {

// The control of this objectName inside `parent`, as the user meets it.
template <typename T = QWidget> T* child(const QObject* parent, const char* name) {
    return parent->findChild<T*>(QLatin1String(name));
}
inline void click(QWidget* widget) {
    QTest::mouseClick(widget, Qt::LeftButton);
}
inline void click(const QObject* parent, const char* name) {
    click(child(parent, name));
}

// A folder standing where the file is: every later save of it fails.
inline void blockFile(TempDrive& drive, const std::string& path) {
    drive.remove(path);
    drive.makeFolder(path);
}

// Runs `play` once a top-level widget of this name is shown; a dialog it leaves open is rejected.
inline void whenShown(const QString& name, std::function<void(QWidget*)> play) {
    auto* timer = new QTimer;
    timer->setInterval(2);
    QObject::connect(timer, &QTimer::timeout, [timer, name, play] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == name && widget->isVisible()) {
                timer->stop();
                timer->deleteLater();
                QCoreApplication::processEvents();
                play(widget);
                if (auto* dialog = qobject_cast<QDialog*>(widget); dialog && dialog->isVisible())
                    dialog->reject();
                return;
            }
        }
    });
    timer->start();
}

// The main window alone, over a profile in the store, opened through its own steps.
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
    ScriptedDialogs& dialogs() { return drive.dialogs(); }

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

// The whole application over a drive holding the games added.
struct AppRig {
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    FileAssociation association{store, drive.paths(), {drive.host("C:\\Tools\\Korvel.exe"), false, {}, false}};
    std::unique_ptr<app::KorvelApplication> app;

    ~AppRig() {
        if (app && app->window())
            app->window()->hide();
    }

    void addGame(const std::string& name, const GameLayout& layout = GameLayout()) {
        store.CreateKey(std::string(settings::kProgramKey));
        buildGameFolder(drive, layout);
        Session scratch;
        GameProfiles(store, drive.files(), drive.dialogs(), scratch)
            .addProfile(layout.folder + "\\" + layout.executable, name);
        const std::string list = store.readProgram(settings::kInstalledGames);
        store.writeProgram(settings::kInstalledGames, list == "Error" ? name : list + "|" + name);
        store.writeProfile(name, settings::kFirstRun, "0");
        store.writeProfile(name, settings::kSlide, "0");
    }

    bool start(const QStringList& arguments = {}) {
        store.CreateKey(std::string(settings::kProgramKey));
        app = std::make_unique<app::KorvelApplication>(drive.services(), store, association);
        return app->start(arguments);
    }
    ui::MainWindow& window() { return *app->window(); }
    MounterPane& pane() { return *window().findChild<MounterPane*>(); }
    ExtractorPane& extractor() { return *window().findChild<ExtractorPane*>(); }
    template <typename T = QWidget> T* find(const char* name) { return child<T>(&window(), name); }
    QAbstractItemView* list(const char* name) { return find<QAbstractItemView>(name); }
    void click(const char* name) { testing::click(find(name)); }
    ScriptedDialogs& dialogs() { return drive.dialogs(); }
    const ScriptedDialogs::Shown& last() { return drive.dialogs().lastMessage(); }
    std::string podIni(const std::string& folder = "C:\\Games\\MTM2") { return drive.read(folder + "\\POD.INI"); }
};

} // namespace korvel::testing
