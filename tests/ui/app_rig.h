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
#include <QCoreApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace korvel::testing {

// Lets events through until `done` holds or the time is up.
inline bool waitFor(const std::function<bool()>& done, int milliseconds = 3000) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > milliseconds)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
    }
    return true;
}

// Runs `play` once a top-level widget of this name is on screen (a modal dialog that is about to
// block the caller, for example).
inline void whenShown(const QString& name, std::function<void(QWidget*)> play) {
    auto* timer = new QTimer;
    timer->setInterval(2);
    QObject::connect(timer, &QTimer::timeout, [timer, name, play] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == name && widget->isVisible()) {
                timer->stop();
                timer->deleteLater();
                QCoreApplication::processEvents(); // the views lay their items out
                play(widget);
                // A dialog the script left open is closed, so a failing test cannot hang.
                if (auto* dialog = qobject_cast<QDialog*>(widget); dialog && dialog->isVisible())
                    dialog->reject();
                return;
            }
        }
    });
    timer->start();
}

// A double click on a row as the mouse makes it: press, release, then the double click.
inline void doubleClick(QAbstractItemView* view, int row) {
    const QPoint centre = view->visualRect(view->model()->index(row, 0)).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, centre);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, centre);
}

// A game folder layout at another place.
inline GameLayout gameAt(const std::string& folder, const std::string& executable = "monster.exe") {
    GameLayout layout;
    layout.folder = folder;
    layout.executable = executable;
    return layout;
}

// The desktop application over a temporary drive, its association kept to the store.
struct AppRig {
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    FileAssociation association{store, drive.paths(), {drive.host("C:\\Tools\\Korvel.exe"), false, {}, false}};
    std::unique_ptr<app::KorvelApplication> app;

    ~AppRig() {
        if (app && app->window())
            app->window()->hide();
    }

    // A game folder with a complete profile whose first run is done; slides off.
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
    void set(const std::string& game, std::string_view name, const std::string& text) {
        store.writeProfile(game, name, text);
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
