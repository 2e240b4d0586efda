#pragma once

#include "platform/result.h"
#include "window_mode.h"

#include <QMainWindow>

#include <array>
#include <memory>
#include <optional>

class QDialog;
class QFrame;

namespace korvel {
struct Services;
struct Session;
class SettingsStore;
} // namespace korvel

namespace korvel::ui {

class GoldButton;
class MainMenus;
class ModeStatusBar;
class PaneSlider;
class RecentArchives;
class WindowHooks;
class WindowSettings;

// `frmMain`, the program's one main window: three panes in one place (`fraMount`, `fraExtract`,
// `fraConfigure`), one shown at a time, chosen from the mode panels of the status bar.
//
// The panes' contents come from their subsystems: installPane() puts a widget into a pane's frame
// (it fills the frame; coordinates inside are the frame's, whose top 90 twips stay hidden), and a
// WindowHooks implementation answers what the window needs from them.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow(const Session& session, SettingsStore& store, Services& services, WindowHooks* hooks = nullptr,
               QWidget* parent = nullptr);
    ~MainWindow() override;

    void setHooks(WindowHooks* hooks);
    WindowHooks& hooks() const { return *m_hooks; }
    void installPane(Mode mode, QWidget* content);

    // The open sequence: sets the window up from the session and the store and shows the first mode.
    // Call it once, before show().
    void open();

    void ShowMounter(const QString& slide);
    void ShowExtractor(const QString& slide);
    void ShowConfigurator(const QString& slide);
    void showMode(Mode mode, bool slide);
    // The mode whose pane is up, if any.
    std::optional<Mode> currentMode() const;

    // Reads "Flat" and gives every skinned button of the window the matching looks.
    void applyButtonLooks();
    // `cmdPlay` and `cmdContinue`: write the mounted list if it changed (and launch the game).
    void playGame();
    void continueWithoutPlaying();

    // The options and about dialogs, opened window-modal; they delete themselves when closed.
    QDialog* showOptions();
    QDialog* showAbout();

    QFrame* pane(Mode mode) const;
    PaneSlider& slider() const { return *m_slider; }
    ModeStatusBar* modeStatusBar() const { return m_statusBar; }
    MainMenus& menus() const { return *m_menus; }
    RecentArchives* recentArchives() const { return m_recent; }
    GoldButton* playButton() const { return m_play; }
    GoldButton* continueButton() const { return m_continue; }
    GoldButton* quitButton() const { return m_quit; }
    const Session& session() const { return m_session; }
    Services& services() const { return m_services; }
    SettingsStore& store() const { return m_store; }

signals:
    // The window has finished its close sequence and closes.
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QFrame* makePane(const char* name);
    void placeOwnControls();
    void appendShortcutCaptions();
    bool settleUnsavedMountedList();
    bool reportFailure(const Status& status);
    void toggleAssociation();

    const Session& m_session;
    SettingsStore& m_store;
    Services& m_services;
    std::unique_ptr<WindowHooks> m_defaultHooks;
    WindowHooks* m_hooks;
    std::unique_ptr<WindowSettings> m_settings;

    QWidget* m_paneArea = nullptr;
    std::array<QFrame*, 3> m_panes{};
    PaneSlider* m_slider = nullptr;
    ModeStatusBar* m_statusBar = nullptr;
    MainMenus* m_menus = nullptr;
    RecentArchives* m_recent = nullptr;
    GoldButton* m_play = nullptr;
    GoldButton* m_continue = nullptr;
    GoldButton* m_quit = nullptr;
};

} // namespace korvel::ui
