#include "korvel_application.h"

#include "configurator/widgets/configurator_pane.h"
#include "mounter/widgets/mounter_pane.h"
#include "palette/widgets/palette_window.h"
#include "platform/file_services.h"
#include "platform/game_codec.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "platform/services.h"
#include "platform/widgets/desktop_shell.h"
#include "platform/widgets/qt_dialogs.h"
#include "pod/widgets/extractor_pane.h"
#include "startup/association.h"
#include "startup/settings_store.h"
#include "startup/startup.h"
#include "startup/store_warnings.h"
#include "startup/typed_settings.h"
#include "startup/version_text.h"
#include "startup/web_addresses.h"
#include "startup/widgets/games_dialog.h"
#include "tracklist/track_site.h"
#include "tracklist/widgets/tracks_menu.h"
#include "ui/kit/gold_button.h"
#include "ui/main_menus.h"
#include "ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstring>

namespace korvel::app {

// The window and its panes by name. The panes belong to the window; the Configurator pane and the
// Tracks menu exist for the Monster Truck Madness 2 profile only.
struct KorvelApplication::WindowParts {
    std::unique_ptr<ui::MainWindow> window;
    ConfiguratorPane* configurator = nullptr;
    TracksMenu* tracks = nullptr;
    ExtractorPane* extractor = nullptr;
    PaletteViewer* palette = nullptr;
    MounterPane* mounter = nullptr;
};

namespace {

// The profiles dialog, opened only once the store's trouble has been explained.
class ExplainingChooser : public ProfileChooser {
public:
    ExplainingChooser(ProfileChooser& chooser, StoreWarningDialogs& dialogs) : m_chooser(chooser), m_dialogs(dialogs) {}
    void choose(GameProfiles& logic) override {
        m_dialogs.explainPending();
        m_chooser.choose(logic);
    }

private:
    ProfileChooser& m_chooser;
    StoreWarningDialogs& m_dialogs;
};

} // namespace

KorvelApplication::KorvelApplication(Services& services, SettingsStore& store, FileAssociation& association,
                                     QObject* parent)
    : QObject(parent), m_warningDialogs(std::make_unique<StoreWarningDialogs>(services.dialogs, services.registry)),
      m_services{services.paths, services.files, services.registry, *m_warningDialogs, services.shell}, m_store(store),
      m_association(association), m_games(std::make_unique<GamesDialog>()) {
    m_chooser = std::make_unique<ExplainingChooser>(*m_games, *m_warningDialogs);
    m_startup = std::make_unique<Startup>(m_services, store, m_session, *m_chooser, association);
}

KorvelApplication::~KorvelApplication() {
    m_parts.reset();
}

ui::MainWindow* KorvelApplication::window() const {
    return m_parts ? m_parts->window.get() : nullptr;
}

bool KorvelApplication::start(const QStringList& arguments) {
    m_games->resetLastState();
    if (m_startup->Main(requestFromArguments(arguments, m_services.paths)) == StartupResult::Terminate) {
        m_warningDialogs->explainPending();
        m_exitCode = terminationCode();
        return false;
    }
    m_warningDialogs->explainPending();
    openWindow();
    m_warningDialogs->explainPending();
    return true;
}

void KorvelApplication::openWindow() {
    m_parts = std::make_unique<WindowParts>();
    m_parts->window = std::make_unique<ui::MainWindow>(m_session, m_store, m_services);
    createPanes();
    connectCommands();
    emit windowChanged(m_parts->window.get());
    Form_Load();
    m_parts->window->show();
}

void KorvelApplication::createPanes() {
    WindowParts& parts = *m_parts;
    ui::MainWindow& window = *parts.window;
    if (m_session.configurator) {
        const TrackSite site = TrackSite::configured(m_store);
        parts.configurator = new ConfiguratorPane(m_session, m_store, m_services);
        // The registry repair is the one change a running session takes; the application owns it.
        connect(parts.configurator, &ConfiguratorPane::gameFolderRepaired, this,
                [this](const std::string& folder) { m_session.location = folder; });
        window.installPane(ui::Mode::Configurator, parts.configurator);
        ui::MainMenus& menus = window.menus();
        parts.tracks = new TracksMenu(*menus.tracksMenu(), *menus.trackListEntry(), *menus.tracksSeparator(),
                                      *menus.update(), m_store, m_services.dialogs, m_services.shell, site, &window);
    }
    parts.extractor = new ExtractorPane(m_services, m_session, m_store);
    window.installPane(ui::Mode::Extractor, parts.extractor);
    parts.palette = new PaletteViewer(m_services, &window);
    parts.mounter = new MounterPane(m_session, m_store, m_services);
    window.installPane(ui::Mode::Mounter, parts.mounter);
    applyAddresses();
}

// The web addresses in force go to the controls that open them and to the error reports; again
// whenever the Options dialog may have changed them.
void KorvelApplication::applyAddresses() {
    const TrackSite site = TrackSite::configured(m_store);
    if (m_parts->configurator) {
        m_parts->configurator->setDownloadAddress(site.siteRoot, TrackSite::missingSiteHint());
        m_parts->tracks->setSite(site);
    }
    setSupportAddress(addressInForce(ProgramSettings(m_store), WebAddress::Support));
}

void KorvelApplication::connectCommands() {
    WindowParts& parts = *m_parts;
    ui::MainWindow& window = *parts.window;
    ui::MainMenus& menus = window.menus();
    connect(menus.switchGame(), &QAction::triggered, this, [this] {
        // Not from inside the menu's handler: the window is closed and destroyed on the way.
        QTimer::singleShot(0, this, &KorvelApplication::switchGame);
    });
    connect(&window, &ui::MainWindow::associationToggled, this, [this](bool associate) {
        if (associate)
            m_association.associate();
        else
            m_association.dissociate();
    });
    connect(menus.palette(), &QAction::triggered, parts.palette, &PaletteViewer::show);
    connect(menus.mass(), &QAction::triggered, parts.extractor, &ExtractorPane::massExtract);
    connect(menus.createPod(), &QAction::triggered, parts.extractor, [&window, extractor = parts.extractor] {
        window.ShowExtractor(QStringLiteral("0"));
        extractor->createPod();
    });
    connect(menus.checkPod(), &QAction::triggered, parts.extractor, &ExtractorPane::checkListedPod);
    window.addAction(menus.conflicts()); // its key works wherever the focus is in the window
    connect(menus.conflicts(), &QAction::triggered, parts.mounter, &MounterPane::showConflicts);
    connect(menus.checkPods(), &QAction::triggered, parts.mounter, &MounterPane::checkMountedPods);
    connect(parts.extractor, &ExtractorPane::showRequested, &window,
            [&window] { window.ShowExtractor(QStringLiteral("0")); });
    if (parts.configurator) {
        connect(menus.fixRegistry(), &QAction::triggered, parts.configurator, &ConfiguratorPane::fixRegistry);
        connect(menus.update(), &QAction::triggered, parts.tracks, &TracksMenu::mnuUpdate_Click);
    }
    connect(window.playButton(), &ui::GoldButton::clicked, this, [this] { saveBeforePlaying(true); });
    connect(window.continueButton(), &ui::GoldButton::clicked, this, [this] { saveBeforePlaying(false); });
    connect(&window, &ui::MainWindow::optionsSaved, this, &KorvelApplication::applyAddresses);
    window.setCloseSequence([this] { return Form_Unload(); });
    connect(&window, &ui::MainWindow::closed, this, [this] {
        if (!m_switching)
            end(0);
    });
}

// Opening the window: its frame, the Extractor's browsing and progress bar, the player profile,
// the mounted and the unmounted list, the information panel and the buttons' looks, monster.ini and
// the track list, the recent archives, the first mode (or the archive named on the command line),
// and last the Mounter's splitter.
void KorvelApplication::Form_Load() {
    WindowParts& parts = *m_parts;
    ui::MainWindow& window = *parts.window;
    window.prepareFrame();
    parts.extractor->startBrowsingAtGameFolder();
    parts.extractor->prepareExtractionProgress();
    if (parts.configurator)
        parts.configurator->LoadDrivers();
    parts.mounter->loadGameLists();
    window.showInformation();
    if (parts.configurator) {
        parts.configurator->LoadMonsterIni();
        parts.tracks->LoadTrackList();
    }
    parts.extractor->loadRecentArchives();
    if (m_session.hasOpenedArchive()) {
        window.ShowExtractor(QStringLiteral("0"));
        parts.extractor->ListPOD(m_session.openedFolder, m_session.openedFile);
    } else {
        window.showStartMode();
    }
    parts.mounter->restoreSplitter(window.profileSettings().slider());
}

// Closing the window: refused while the Extractor is busy or while the changes of the mounted
// list, monster.ini or player.pro are not settled; then the window's state and the recent archives are saved.
bool KorvelApplication::Form_Unload() {
    WindowParts& parts = *m_parts;
    if (parts.extractor->archiveBusy()) {
        parts.extractor->explainBusy();
        return false;
    }
    if (!parts.mounter->settleUnsavedList())
        return false;
    if (parts.configurator && !parts.configurator->settleUnsavedChanges())
        return false;
    parts.window->saveState();
    parts.extractor->saveRecentArchives();
    m_warningDialogs->explainPending();
    return true;
}

void KorvelApplication::saveBeforePlaying(bool launch) {
    if (m_parts->window->reportFailure(m_parts->mounter->saveMountedListIfChanged()) || !launch)
        return;
    // The game runs in its own folder, where it looks for its archives and settings, whatever folder
    // Korvel itself was started from.
    const bool started =
        m_services.shell.launchWith(fromGameText(ProfileSettings(m_store, m_session.currentGame).launchCommand()),
                                    m_session.locationExe, m_session.location);
    if (!started && !m_services.shell.launchFailure().isEmpty())
        m_services.dialogs.message(QStringLiteral("Play Game"), m_services.shell.launchFailure(),
                                   MessageIcon::Critical);
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
    const Session current = m_session;
    const StartupResult result = m_startup->switchGame();
    m_switching = false;
    if (result == StartupResult::Terminate) {
        // Esc or the frame of the profiles dialog: no other game was chosen, so the current one
        // opens again. Exit, or a message that ends start-up, ends the program.
        if (m_games->lastState() == GameProfiles::State::Open) {
            m_session = current;
            openWindow();
            return;
        }
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

int runKorvel(int argc, char** argv) {
    // Answered before any window system is needed.
    if (argc == 2 && (std::strcmp(argv[1], "--version") == 0 || std::strcmp(argv[1], "--help") == 0)) {
        std::printf("Korvel %s\n", VersionText(ProgramVersion::current()).c_str());
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
