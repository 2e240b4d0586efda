#pragma once

#include <QDialog>

#include <array>
#include <optional>
#include <string>
#include <vector>

class QButtonGroup;
class QCheckBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace korvel {

class Dialogs;
class PathMap;
class SettingsStore;
class WebAddressesPage;
struct Session;

// `frmOptions`: the loaded profile's preferences on four pages (General, Autosave, Lock, Paths),
// and the program's web addresses on a fifth (Web). The dialog works on its controls only; OK
// writes everything to the profile's key (and the changed addresses to the program key) and
// announces it with saved(), Cancel writes nothing.
class OptionsDialog : public QDialog {
    Q_OBJECT

public:
    OptionsDialog(SettingsStore& store, const Session& session, Dialogs& dialogs, QWidget* parent = nullptr);

    // Typed folders are taken as host or game paths through this map (the services' own).
    void setPathMap(const PathMap* paths) { m_paths = paths; }

    // OK: writes the values in their fixed order, then closes. An address that cannot be used keeps
    // the dialog open on it, with nothing written.
    void save();
    // The extra-folder list's buttons.
    void addExtraDir();
    void removeExtraDir();
    void showExtraDir();
    void browseDir();

signals:
    // Everything was written; the main window re-applies the button looks.
    void saved();

private:
    QWidget* buildGeneral();
    QWidget* buildAutosave();
    QWidget* buildLock();
    QWidget* buildPaths();
    QCheckBox* check(const char* name, const QString& caption, QWidget* parent);
    void load();
    void confirmConfigurator(bool checked);
    void updateBrowseEnabled();
    // The folders of `lstExtraDirs`, in list order.
    std::vector<std::string> extraDirs() const;
    void focusPage(int index);
    // The game path of a typed folder; nullopt (after saying why) when it names none.
    std::optional<std::string> typedFolder(const QString& text);

    SettingsStore& m_store;
    std::string m_profile;
    bool m_configurator;
    Dialogs& m_dialogs;
    const PathMap* m_paths = nullptr;
    QLineEdit* m_codePage = nullptr;
    QLineEdit* m_launchCommand = nullptr;

    QTabWidget* m_tabs = nullptr;
    QCheckBox* m_configuratorBox = nullptr;
    QCheckBox* m_autosortBox = nullptr;
    QCheckBox* m_slideBox = nullptr;
    QCheckBox* m_flatBox = nullptr;
    QCheckBox* m_podAutosaveBox = nullptr;
    QCheckBox* m_playerAutosaveBox = nullptr;
    QCheckBox* m_monsterAutosaveBox = nullptr;
    QCheckBox* m_saveOnChangeBox = nullptr;
    QCheckBox* m_saveOnExitBox = nullptr;
    QButtonGroup* m_lock = nullptr;
    std::array<QRadioButton*, 4> m_lockOptions{};
    QCheckBox* m_browseBox = nullptr;
    QLineEdit* m_browseDir = nullptr;
    QPushButton* m_browseDirButton = nullptr;
    QListWidget* m_extraDirs = nullptr;
    WebAddressesPage* m_web = nullptr;
};

} // namespace korvel
