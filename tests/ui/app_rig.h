#pragma once

#include "gui/korvel_application.h"
#include "mounter/widgets/mounter_pane.h"
#include "startup/association.h"
#include "startup/game_profiles.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "ui/main_window.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDialog>
#include <QTimer>

#include <functional>
#include <memory>

namespace korvel::testing {

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
    template <typename T = QWidget> T* find(const char* name) { return window().findChild<T*>(QLatin1String(name)); }
    QAbstractItemView* list(const char* name) { return find<QAbstractItemView>(name); }
    std::string podIni(const std::string& folder = "C:\\Games\\MTM2") { return drive.read(folder + "\\POD.INI"); }
};

} // namespace korvel::testing
