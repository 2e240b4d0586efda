#pragma once

#include "window_mode.h"

#include <QObject>

#include <array>

class QAction;
class QMainWindow;
class QMenu;

namespace korvel::ui {

// The main window's menu bar: File (switch game, association, options, palette viewer, mass
// extraction, creating and checking an archive, exit), View (the three modes, Ctrl+1/2/3), Mounter
// (the mounted archives' conflicts, Ctrl+Shift+C, and their check), Tracks (the Configurator
// profile's downloadable tracks) and Help, plus the Configurator pane's pop-up menu. Actions carry their
// control names as object names.
class MainMenus : public QObject {
    Q_OBJECT

public:
    explicit MainMenus(QMainWindow& window);

    QMenu* fileMenu() const { return m_file; }
    QMenu* viewMenu() const { return m_view; }
    QMenu* mounterMenu() const { return m_mounter; }
    QMenu* tracksMenu() const { return m_tracks; }
    QMenu* configuratorMenu() const { return m_configurator; }

    QAction* switchGame() const { return m_switch; }
    QAction* associate() const { return m_associate; }
    QAction* options() const { return m_options; }
    QAction* palette() const { return m_palette; }
    QAction* mass() const { return m_mass; }
    QAction* createPod() const { return m_createPod; }
    QAction* checkPod() const { return m_checkPod; }
    QAction* conflicts() const { return m_conflicts; }
    QAction* checkPods() const { return m_checkPods; }
    QAction* exit() const { return m_exit; }
    QAction* about() const { return m_about; }
    // The View entry that brings up a mode's pane.
    QAction* view(Mode mode) const { return m_views[static_cast<size_t>(mode)]; }
    // Entry 0 of the track list, the separator below the list and the update entry.
    QAction* trackListEntry() const { return m_trackList; }
    QAction* tracksSeparator() const { return m_tracksSep; }
    QAction* update() const { return m_update; }
    QAction* fixRegistry() const { return m_fixRegistry; }

    // The Tracks menu and the Configurator's View entry exist only for the Configurator profile.
    void setTracksAvailable(bool available);

private:
    QMenu* m_file;
    QMenu* m_view;
    QMenu* m_mounter;
    QMenu* m_tracks;
    QMenu* m_configurator;
    QAction* m_switch;
    QAction* m_associate;
    QAction* m_options;
    QAction* m_palette;
    QAction* m_mass;
    QAction* m_createPod;
    QAction* m_checkPod;
    QAction* m_conflicts;
    QAction* m_checkPods;
    QAction* m_exit;
    QAction* m_about;
    std::array<QAction*, 3> m_views{};
    QAction* m_trackList;
    QAction* m_tracksSep;
    QAction* m_update;
    QAction* m_fixRegistry;
};

} // namespace korvel::ui
