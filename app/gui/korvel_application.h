#pragma once

#include "platform/services.h"
#include "startup/session.h"

#include <QObject>
#include <QStringList>

#include <memory>

class QWidget;

namespace korvel {
class FileAssociation;
class GamesDialog;
class ProfileChooser;
class SettingsStore;
class Startup;
class StoreWarningDialogs;
} // namespace korvel

namespace korvel::ui {
class MainWindow;
}

namespace korvel::app {

// The desktop application put together: start-up with the profiles dialog, then the main window
// with its panes, game switching, and the end of the program. The services come from outside (the
// machine's for the program, fakes for tests).
//
// The window knows none of its panes: this object makes each pane, puts it into the window, and
// runs the window's open and close sequences, calling the window's own steps and each pane's in
// their order (openWindow(), Form_Unload()). The menu entries and the Play and Continue buttons
// are connected here to the pane that owns what they do.
class KorvelApplication : public QObject {
    Q_OBJECT
public:
    KorvelApplication(Services& services, SettingsStore& store, FileAssociation& association,
                      QObject* parent = nullptr);
    ~KorvelApplication() override;

    // Runs start-up with the program's arguments (without the program's own name). True when the
    // main window is shown; otherwise the program ends with exitCode().
    bool start(const QStringList& arguments);

    // `mnuSwitch`: closes every form (the window's close sequence runs and may refuse), then
    // start-up chooses a game again and a new window opens. Leaving the profiles dialog by Esc or
    // its frame opens the current game again; its Exit ends the program.
    void switchGame();

    ui::MainWindow* window() const;
    const Session& session() const { return m_session; }
    int exitCode() const { return m_exitCode; }

signals:
    // The main window was made (or is gone: nullptr); dialogs should use it as their parent.
    void windowChanged(QWidget* window);
    // The program should end now with this exit code.
    void finished(int exitCode);

private:
    struct WindowParts;
    void openWindow();
    void createPanes();
    void connectCommands();
    void applyAddresses();
    // `frmMain`'s open sequence, and its close sequence (false: the close is cancelled).
    void Form_Load();
    bool Form_Unload();
    // `cmdPlay` (launch) and `cmdContinue`: the mounted list is written first when it has changed.
    void saveBeforePlaying(bool launch);
    void closeWindow();
    void end(int exitCode);
    int terminationCode() const;

    // Every message of the application goes through these dialogs, which explain the settings
    // store's trouble first.
    std::unique_ptr<StoreWarningDialogs> m_warningDialogs;
    Services m_services;
    std::unique_ptr<ProfileChooser> m_chooser;
    SettingsStore& m_store;
    FileAssociation& m_association;
    Session m_session;
    std::unique_ptr<GamesDialog> m_games;
    std::unique_ptr<Startup> m_startup;
    std::unique_ptr<WindowParts> m_parts;
    bool m_switching = false;
    int m_exitCode = 0;
};

// The program's main: the machine's services, the application, the event loop.
int runKorvel(int argc, char** argv);

} // namespace korvel::app
