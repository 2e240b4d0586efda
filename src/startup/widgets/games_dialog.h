#pragma once

#include "startup/game_profiles.h"
#include "startup/startup.h"

#include <QDialog>

#include <optional>

class QAbstractButton;
class QListWidget;
class QPushButton;

namespace korvel {

// `frmGames`, "My Game Profiles": the list of game profiles with Add, Remove, Load and Exit over
// the GameProfiles logic. Start-up shows it modally (ProfileChooser) until Load or Exit closes it.
class GamesDialog : public QDialog, public ProfileChooser {
    Q_OBJECT
public:
    explicit GamesDialog(QWidget* parent = nullptr);

    // Shows the dialog modally over `logic` (already opened) and returns when it closes.
    void choose(GameProfiles& logic) override;
    // How the latest choice ended (Open when the dialog was closed by its frame); nothing when the
    // dialog was not shown since resetLastState().
    std::optional<GameProfiles::State> lastState() const { return m_lastState; }
    void resetLastState() { m_lastState.reset(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showList();
    void add();
    void remove();
    void load();
    void exitProgram();

    GameProfiles* m_logic = nullptr;
    std::optional<GameProfiles::State> m_lastState;
    QListWidget* m_gameList = nullptr;
    QAbstractButton* m_addButton = nullptr;
    QAbstractButton* m_removeButton = nullptr;
    QPushButton* m_loadButton = nullptr;
    QPushButton* m_exitButton = nullptr;
    bool m_filling = false;
};

} // namespace korvel
