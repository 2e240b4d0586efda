#include "korvel_application.h"

#include "configurator/widgets/configurator_pane.h"
#include "mounter/widgets/mounter_pane.h"
#include "palette/widgets/palette_window.h"
#include "platform/file_services.h"
#include "platform/game_codec.h"
#include "platform/path_map.h"
#include "platform/services.h"
#include "platform/widgets/desktop_shell.h"
#include "platform/widgets/qt_dialogs.h"
#include "pod/widgets/extractor_pane.h"
#include "startup/association.h"
#include "startup/settings_store.h"
#include "startup/startup.h"
#include "startup/widgets/games_dialog.h"
#include "tracklist/track_site.h"
#include "tracklist/widgets/tracks_menu.h"
#include "ui/composite_hooks.h"
#include "ui/main_menus.h"
#include "ui/main_window.h"
#include "ui/profile_session.h"
#include "ui/widgets/gold_button.h"
#include "ui/window_hooks.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstring>

namespace korvel::app {

namespace {

// What the application itself answers for the window: game switching and the association.
class ApplicationHooks : public ui::WindowHooks {
public:
    ApplicationHooks(KorvelApplication& application, FileAssociation& association)
        : m_application(application), m_association(association) {}

    void switchGame() override {
        // Not from inside the menu's handler: the window is closed and destroyed on the way.
        QTimer::singleShot(0, &m_application, &KorvelApplication::switchGame);
    }
    void applyAssociation(bool associate) override {
        if (associate)
            m_association.Register();
        else
            m_association.Unregister();
    }

private:
    KorvelApplication& m_application;
    FileAssociation& m_association;
};

} // namespace

// The window and the hooks its panes answer through; the window goes first.
struct KorvelApplication::WindowParts {
    std::unique_ptr<ui::CompositeHooks> hooks = std::make_unique<ui::CompositeHooks>();
    std::unique_ptr<ui::MainWindow> window;
};

KorvelApplication::KorvelApplication(Services& services, SettingsStore& store, FileAssociation& association,
                                     QObject* parent)
    : QObject(parent), m_services(services), m_store(store), m_association(association),
      m_games(std::make_unique<GamesDialog>()),
      m_startup(std::make_unique<Startup>(services, store, m_session, *m_games, association)),
      m_ownHooks(std::make_unique<ApplicationHooks>(*this, association)) {}

KorvelApplication::~KorvelApplication() {
    m_parts.reset();
}

ui::MainWindow* KorvelApplication::window() const {
    return m_parts ? m_parts->window.get() : nullptr;
}

bool KorvelApplication::start(const QStringList& arguments) {
    m_games->resetLastState();
    if (m_startup->Main(requestFromArguments(arguments, m_services.paths)) == StartupResult::Terminate) {
        m_exitCode = terminationCode();
        return false;
    }
    openWindow();
    showStoreWarnings();
    return true;
}

void KorvelApplication::openWindow() {
    m_parts = std::make_unique<WindowParts>();
    ui::CompositeHooks& hooks = *m_parts->hooks;
    m_parts->window = std::make_unique<ui::MainWindow>(m_session, m_store, m_services, &hooks);
    ui::MainWindow& window = *m_parts->window;
    hooks.add(m_ownHooks.get());
    createPanes(window, hooks);
    connect(&window, &ui::MainWindow::closed, this, [this] {
        if (!m_switching)
            end(0);
    });
    emit windowChanged(&window);
    window.open();
    window.show();
}

// Each subsystem's pane goes into its place of the window, and answers the window's questions
// through `hooks`. The window loads the player profile, then the mounted list, then the unmounted
// list, so the Configurator's hooks come before the Mounter's.
void KorvelApplication::createPanes(ui::MainWindow& window, ui::CompositeHooks& hooks) {
    // Configurator pane and Tracks menu (the Monster Truck Madness 2 profile only).
    if (m_session.configurator) {
        const TrackSite site = TrackSite::fromEnvironment();
        auto* configurator =
            new ConfiguratorPane(m_session, m_store, m_services, nullptr, [](const QString& caption, QWidget* parent) {
                return new ui::GoldButton(caption, parent);
            });
        configurator->setDownloadAddress(site.siteRoot);
        window.installPane(ui::Mode::Configurator, configurator);
        hooks.add(configurator);
        ui::MainMenus& menus = window.menus();
        hooks.add(new TracksMenu(*menus.tracksMenu(), *menus.trackListEntry(), *menus.tracksSeparator(),
                                 *menus.update(), m_store, m_services.dialogs, m_services.shell, site, &window));
    }

    // Extractor pane, and the palette viewer behind the File menu.
    auto* extractor = new ExtractorPane(m_services, m_session, m_store);
    window.installPane(ui::Mode::Extractor, extractor);
    extractor->attachTo(window);
    hooks.add(extractor);
    hooks.add(new PaletteViewerHook(m_services, &window));

    // Mounter pane.
    auto* mounter = new MounterPane(m_session, m_store, m_services);
    window.installPane(ui::Mode::Mounter, mounter);
    hooks.add(mounter);
}

void KorvelApplication::closeWindow() {
    if (!m_parts)
        return;
    emit windowChanged(nullptr);
    m_parts.reset();
}

void KorvelApplication::switchGame() {
    if (m_switching || !m_parts)
        return;
    m_switching = true;
    QWidget* window = m_parts->window.get();
    for (QWidget* form : QApplication::topLevelWidgets()) {
        if (form != window && form->isVisible())
            form->close();
    }
    if (!window->close()) { // the close sequence kept the window open
        m_switching = false;
        return;
    }
    closeWindow();
    m_games->resetLastState();
    const StartupResult result = m_startup->switchGame();
    m_switching = false;
    if (result == StartupResult::Terminate) {
        end(terminationCode());
        return;
    }
    openWindow();
}

void KorvelApplication::end(int exitCode) {
    m_exitCode = exitCode;
    emit finished(exitCode);
}

int KorvelApplication::terminationCode() const {
    // Leaving the profiles dialog through Exit or its frame is the user's choice; anything else
    // ended after a message.
    const std::optional<GameProfiles::State> state = m_games->lastState();
    return state && (*state == GameProfiles::State::Exited || *state == GameProfiles::State::Open) ? 0 : 1;
}

void KorvelApplication::showStoreWarnings() {
    const QStringList warnings = m_services.registry.takeWarnings();
    if (!warnings.isEmpty())
        m_services.dialogs.message(QStringLiteral("WARNING!"), warnings.join(QStringLiteral("\n\n")),
                                   MessageIcon::Exclamation);
}

int runKorvel(int argc, char** argv) {
    // Answered before any window system is needed.
    if (argc == 2 && (std::strcmp(argv[1], "--version") == 0 || std::strcmp(argv[1], "--help") == 0)) {
        std::printf("Korvel %s\n", ui::buildVersionText().c_str());
        if (std::strcmp(argv[1], "--help") == 0)
            std::printf("Usage: korvel [PROFILE | ARCHIVE]\n"
                        "Starts with the game profile named PROFILE, or opens ARCHIVE (a .pod file) in the\n"
                        "Extractor; with no argument, the sole profile or the game profiles dialog.\n");
        return 0;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Korvel"));
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QApplication::arguments().mid(1);

    const PathMap paths = PathMap::forHost();
    // Until a profile is loaded (the profiles dialog), names are in the system's code page.
    const Result<CodePageChoice> codePage = chooseGameCodec(QString(), QString(), PathMap::hostWinePrefix());
    GameCodec::setActive(codePage ? codePage->codec : systemGameCodec(PathMap::hostWinePrefix()).codec);
    FileServices files(paths);
    const std::unique_ptr<RegistryService> registry = createRegistry();
    QtDialogs dialogs(paths);
    DesktopShell shell(paths);
    Services services{paths, files, *registry, dialogs, shell};
    SettingsStore store(*registry, dialogs);
    FileAssociation association(store, paths, AssociationOptions::forThisProgram());

    KorvelApplication korvel(services, store, association);
    QObject::connect(&korvel, &KorvelApplication::windowChanged, &korvel,
                     [&dialogs](QWidget* window) { dialogs.setParent(window); });
    QObject::connect(&korvel, &KorvelApplication::finished, &application,
                     [](int exitCode) { QCoreApplication::exit(exitCode); });
    if (!korvel.start(arguments))
        return korvel.exitCode();
    return QApplication::exec();
}

} // namespace korvel::app
