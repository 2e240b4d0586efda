// The desktop application: the main window for a game profile named on the command line.

#include "platform/dialogs.h"
#include "platform/file_services.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "platform/services.h"
#include "platform/widgets/desktop_shell.h"
#include "platform/widgets/qt_dialogs.h"
#include "startup/settings_store.h"
#include "ui/main_window.h"
#include "ui/profile_session.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Korvel"));

    const korvel::PathMap paths = korvel::PathMap::forHost();
    korvel::FileServices files(paths);
    const std::unique_ptr<korvel::RegistryService> registry = korvel::createRegistry();
    korvel::QtDialogs dialogs(paths);
    korvel::DesktopShell shell(paths);
    korvel::Services services{paths, files, *registry, dialogs, shell};
    korvel::SettingsStore store(*registry, dialogs);

    const QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.size() != 1) {
        dialogs.message(korvel::programTitle(),
                        QStringLiteral("Usage: korvel PROFILE\n\nPROFILE names a game profile "
                                       "of the settings store, for example MTM2."),
                        korvel::MessageIcon::Information);
        return 2;
    }
    auto session = korvel::ui::sessionForProfile(store, files, korvel::toGameText(arguments.front()));
    if (!session) {
        dialogs.message(session.failure().title(), session.failure().message, korvel::MessageIcon::Critical);
        return 1;
    }

    korvel::ui::MainWindow window(*session, store, services);
    dialogs.setParent(&window);
    window.open();
    window.show();
    return app.exec();
}
