#pragma once

#include "configurator/monster_ini.h"
#include "configurator/player_profile.h"
#include "platform/dialogs.h"
#include "platform/result.h"

#include <QWidget>

#include <array>
#include <optional>
#include <string>

class QCheckBox;
class QGroupBox;
class QLineEdit;
class QPlainTextEdit;
class QRadioButton;
class QTreeWidget;

namespace korvel {

struct Services;
struct Session;
class SettingsStore;

namespace ui {
class GoldButton;
}

// The Configurator pane (`fraConfigure`'s contents) of the Monster Truck Madness 2 profile: the
// three game settings of system\monster.ini, the drivers of player.pro, and the button that opens
// the add-on tracks' web site.
//
// The pane only wires its controls to the configurator cores; every rule about the two files lives
// there. The application calls it at opening (the player profile, then monster.ini) and for the
// game registry repair of the pane's pop-up menu.
//
// Changes save themselves (monster.ini after a click on a setting, player.pro after a removal) only
// once the window has finished opening, and only when the profile's autosave settings ask for it.
// No caption of the pane carries a race-type suffix: the race type is shown by the Tracks menu.
class ConfiguratorPane : public QWidget {
    Q_OBJECT

public:
    ConfiguratorPane(const Session& session, SettingsStore& store, Services& services, QWidget* parent = nullptr);
    ~ConfiguratorPane() override;

    // The address `cmdDownload` opens in the browser; the button is disabled while there is none,
    // and its tooltip then is `missingHint` (how to set one).
    void setDownloadAddress(const QString& address, const QString& missingHint = QString());

    // The window has finished opening: from now on changes save as the autosave settings say.
    // Happens by itself when the pane is first shown in a visible window.
    bool hasFinishedOpening() const { return m_opened; }

    // monster.ini: loads the controls from the file, and writes the file from the controls. A
    // failure is shown to the user and leaves the file as it was.
    bool LoadMonsterIni();
    bool SaveMonsterIni();
    // The settings as the controls hold them now.
    MonsterSettings monsterSettings() const;

    // player.pro: reads the drivers into `lstDrivers`, removes the selected ones, writes the file.
    bool LoadDrivers();
    int RemoveSelectedDriver();
    bool SaveDrivers();
    const DriverRecords& drivers() const { return m_drivers; }

    // `cmdSave`: monster.ini, then player.pro; stops at the first failure.
    bool save();

    // Settings that differ from what monster.ini held when last read or written, and drivers
    // removed from the list since player.pro was last read or written.
    bool monsterIniChanged() const;
    bool driversChanged() const { return m_driversRemoved; }
    // At the window's close: what the profile saves at exit (AS-Exit with AS-Monster or AS-Player)
    // is saved, the user is asked about the rest (Yes saves, No drops them). False keeps the window
    // open: the user cancelled, or a save failed (its failure shown).
    bool settleUnsavedChanges();

    // `cmdCustom`: asks for a language file and selects it as the custom choice.
    void chooseCustomFile();

    // `mnuFixRegistry` of the pane's pop-up menu.
    void fixRegistry();

signals:
    // The registry repair chose this game folder; the session's owner makes it the game folder.
    void gameFolderRepaired(const std::string& folder);

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildControls();
    void optLocalization_Click(int index);
    void selectLocalization(int index);
    void settingChanged();
    void showSelectedDriver();
    void fillDriverList();
    bool report(const Failure& failure);
    // A save found `file` changed by another program: Yes reads it again, No saves over it.
    MessageAnswer askAboutChangedFile(const std::string& file);

    const Session& m_session;
    SettingsStore& m_store;
    Services& m_services;
    bool m_opened = false;
    DriverRecords m_drivers;
    // monster.ini as last read or written; while it is unknown (it could not be read), any change
    // made by the user counts as unsaved.
    std::optional<MonsterSettings> m_monsterOnDisk;
    bool m_monsterEdited = false;
    bool m_driversRemoved = false;
    // What monster.ini held when the controls were loaded from it or saved to it.
    std::optional<LoadedFileStamp> m_monsterStamp;
    QString m_downloadAddress;

    QGroupBox* m_settingsFrame = nullptr;
    QCheckBox* m_hiddenTrackBox = nullptr;
    QCheckBox* m_hornSoundsBox = nullptr;
    std::array<QRadioButton*, 4> m_localizationOptions{};
    QLineEdit* m_customFileBox = nullptr;
    ui::GoldButton* m_browseButton = nullptr;
    QGroupBox* m_driversFrame = nullptr;
    QTreeWidget* m_driverList = nullptr;
    QPlainTextEdit* m_informationBox = nullptr;
    ui::GoldButton* m_removeButton = nullptr;
    ui::GoldButton* m_undoButton = nullptr;
    ui::GoldButton* m_downloadButton = nullptr;
    ui::GoldButton* m_saveButton = nullptr;
};

} // namespace korvel
