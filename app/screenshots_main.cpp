// Renders the main window in each mode and each dialog to PNG files, for the documentation.
// Usage: korvel-screenshots OUTPUT_FOLDER PROFILE (run on the offscreen platform).

#include "gui/korvel_application.h"
#include "palette/widgets/palette_window.h"
#include "platform/file_services.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "platform/services.h"
#include "platform/widgets/desktop_shell.h"
#include "platform/widgets/qt_dialogs.h"
#include "pod/widgets/extractor_pane.h"
#include "startup/association.h"
#include "startup/settings_store.h"
#include "ui/kit/twips.h"
#include "ui/main_menus.h"
#include "ui/main_window.h"
#include "ui/mode_status_bar.h"
#include "ui/pane_slider.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QMouseEvent>
#include <QPixmap>
#include <QTabWidget>
#include <QTextStream>

#include <cstdio>

namespace {

bool save(QWidget& widget, const QDir& folder, const QString& name) {
    QApplication::processEvents();
    const QString path = folder.filePath(name + QStringLiteral(".png"));
    if (!widget.grab().save(path)) {
        std::fprintf(stderr, "korvel-screenshots: cannot write %s\n", qPrintable(path));
        return false;
    }
    std::printf("%s\n", qPrintable(path));
    return true;
}

// Puts the pointer over a mode panel, so the picture shows its raised bevel and name.
void hover(korvel::ui::ModeStatusBar& bar, korvel::ui::Mode mode) {
    const int twips = mode == korvel::ui::Mode::Configurator ? 5075 : mode == korvel::ui::Mode::Extractor ? 5385 : 5705;
    const QPointF point(korvel::ui::twipsToPixels(twips, &bar), bar.height() / 2.0);
    QMouseEvent move(QEvent::MouseMove, point, bar.mapToGlobal(point), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&bar, &move);
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.size() != 2) {
        std::fprintf(stderr, "usage: korvel-screenshots OUTPUT_FOLDER PROFILE\n");
        return 2;
    }
    const QDir folder(arguments[0]);
    if (!folder.exists() && !QDir().mkpath(folder.path())) {
        std::fprintf(stderr, "korvel-screenshots: cannot create %s\n", qPrintable(folder.path()));
        return 1;
    }

    const korvel::PathMap paths = korvel::PathMap::forHost();
    korvel::FileServices files(paths);
    const std::unique_ptr<korvel::RegistryService> registry = korvel::createRegistry();
    korvel::QtDialogs dialogs(paths);
    korvel::DesktopShell shell(paths);
    korvel::Services services{paths, files, *registry, dialogs, shell};
    korvel::SettingsStore store(*registry, dialogs);
    korvel::AssociationOptions associationOptions;
    korvel::FileAssociation association(store, paths, associationOptions);

    // The whole application, as `korvel PROFILE` starts it.
    korvel::app::KorvelApplication korvel(services, store, association);
    if (!korvel.start({arguments[1]}) || !korvel.window()) {
        std::fprintf(stderr, "korvel-screenshots: the profile %s did not start\n", qPrintable(arguments[1]));
        return 1;
    }
    korvel::ui::MainWindow& window = *korvel.window();
    const korvel::Session& session = korvel.session();
    QApplication::processEvents();

    bool ok = true;
    using korvel::ui::Mode;
    const std::array<std::pair<Mode, const char*>, 3> modes{
        {{Mode::Mounter, "mounter"}, {Mode::Extractor, "extractor"}, {Mode::Configurator, "configurator"}}};
    for (const auto& [mode, name] : modes) {
        if (mode == Mode::Configurator && !session.configurator)
            continue;
        window.showMode(mode, false);
        if (mode == Mode::Extractor) // a listed track archive
            window.findChild<korvel::ExtractorPane*>()->ListPOD(session.location + "\\", "TRAXX.POD");
        if (mode != Mode::Mounter) // the Mounter's picture keeps the information text
            hover(*window.modeStatusBar(), mode);
        ok = save(window, folder, QStringLiteral("main-") + QLatin1String(name)) && ok;
    }

    // The palette viewer with the sample game's palette.
    window.menus().palette()->trigger();
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (auto* palette = qobject_cast<korvel::PaletteWindow*>(top)) {
            palette->ShowPalette(paths.toHost(session.location + "\\ART\\DEMO.ACT"));
            ok = save(*palette, folder, QStringLiteral("palette")) && ok;
            palette->close();
        }
    }

    QDialog* options = window.showOptions();
    auto* tabs = options->findChild<QTabWidget*>(QStringLiteral("tabOptions"));
    const std::array<const char*, 4> pages{"general", "autosave", "lock", "paths"};
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        ok = save(*options, folder, QStringLiteral("options-") + QLatin1String(pages[static_cast<size_t>(i)])) && ok;
    }
    options->reject();

    QDialog* about = window.showAbout();
    ok = save(*about, folder, QStringLiteral("about")) && ok;
    about->reject();
    window.hide();
    return ok ? 0 : 1;
}
