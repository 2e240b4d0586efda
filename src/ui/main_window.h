#pragma once

#include "platform/result.h"
#include "window_mode.h"

#include <QMainWindow>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

class QDialog;
class QFrame;

namespace korvel {
struct Services;
struct Session;
class SettingsStore;
class ProfileSettings;
} // namespace korvel

namespace korvel::ui {

class Anchors;
class GoldButton;
class MainMenus;
class ModeStatusBar;
class PaneSlider;
class WindowSettings;

// `frmMain`, the program's one main window: three panes in one place (`fraMount`, `fraExtract`,
// `fraConfigure`), one shown at a time, chosen from the mode panels of the status bar or the View
// menu (Ctrl+1/2/3). It opens at its classic size and may be resized or maximised; the panes fill
// the place they share, and the size is remembered with the position.
//
// The window knows none of its panes' subsystems. installPane() puts a widget into a pane's frame (it
// fills the frame; coordinates inside are the frame's, whose top 90 twips stay hidden). The
// application that puts the window together runs the open sequence, calling the window's own steps
// (prepareFrame(), showInformation(), showStartMode()) between its panes' steps; it sets the close
// sequence, connects the menu entries and the Play and Continue buttons to the panes that own them.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow(const Session& session, SettingsStore& store, Services& services, QWidget* parent = nullptr);
    ~MainWindow() override;

    void installPane(Mode mode, QWidget* content);

    // The window's own steps of opening, in the order they come. prepareFrame(): the profile's
    // captions, the panes' places, the position, the association check mark and the shortcut
    // captions. showInformation(): the information panel and the skinned buttons' looks.
    // showStartMode(): the first mode as "Lock" and "Screen" choose it.
    void prepareFrame();
    void showInformation();
    void showStartMode();

    // Asked when the window is about to close: false keeps it open. Without one, closing saves the
    // window's state (saveState()) and goes ahead.
    void setCloseSequence(std::function<bool()> sequence);
    // "Screen", then "Left" and "Top" while the window is neither minimised nor maximised.
    void saveState();

    void ShowMounter(const QString& slide);
    void ShowExtractor(const QString& slide);
    void ShowConfigurator(const QString& slide);
    void showMode(Mode mode, bool slide);
    // The mode whose pane is up, if any.
    std::optional<Mode> currentMode() const;

    // Reads "Flat" and gives every skinned button of the window the matching looks.
    void applyButtonLooks();
    // The profile's typed values, as the window read them ("Slider" for the splitter).
    const ProfileSettings& profileSettings() const;
    // Shows a failure in a message box; false when `status` is a success.
    bool reportFailure(const Status& status);

    // The options and about dialogs, opened window-modal; they delete themselves when closed.
    QDialog* showOptions();
    QDialog* showAbout();

    QFrame* pane(Mode mode) const;
    PaneSlider& slider() const { return *m_slider; }
    ModeStatusBar* modeStatusBar() const { return m_statusBar; }
    MainMenus& menus() const { return *m_menus; }
    GoldButton* playButton() const { return m_playButton; }
    GoldButton* continueButton() const { return m_continueButton; }
    GoldButton* quitButton() const { return m_quitButton; }
    const Session& session() const { return m_session; }
    Services& services() const { return m_services; }
    SettingsStore& store() const { return m_store; }

signals:
    // The window has finished its close sequence and closes.
    void closed();
    // `mnuAssociate` was toggled; the setting is already stored.
    void associationToggled(bool associate);
    // The Options dialog wrote its values (the button looks are already applied).
    void optionsSaved();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QFrame* makePane(const char* name);
    void placeOwnControls();
    void appendShortcutCaptions();
    void toggleAssociation();

    const Session& m_session;
    SettingsStore& m_store;
    Services& m_services;
    std::unique_ptr<WindowSettings> m_settings;
    std::function<bool()> m_closeSequence;

    QWidget* m_paneArea = nullptr;
    std::array<QFrame*, 3> m_panes{};
    PaneSlider* m_slider = nullptr;
    ModeStatusBar* m_statusBar = nullptr;
    MainMenus* m_menus = nullptr;
    GoldButton* m_playButton = nullptr;
    GoldButton* m_continueButton = nullptr;
    GoldButton* m_quitButton = nullptr;
    std::unique_ptr<Anchors> m_ownAnchors;
};

} // namespace korvel::ui
