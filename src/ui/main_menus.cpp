#include "main_menus.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace korvel::ui {

namespace {

QAction* named(QAction* action, const char* name) {
    action->setObjectName(QString::fromLatin1(name));
    return action;
}

QMenu* namedMenu(QMenu* menu, const char* name) {
    menu->setObjectName(QString::fromLatin1(name));
    menu->menuAction()->setObjectName(QString::fromLatin1(name));
    return menu;
}

} // namespace

MainMenus::MainMenus(QMainWindow& window) : QObject(&window) {
    QMenuBar* bar = window.menuBar();
    bar->setObjectName(QStringLiteral("menuBar"));

    m_file = namedMenu(bar->addMenu(QStringLiteral("&File")), "mnuFile");
    m_switch = named(m_file->addAction(QStringLiteral("&Switch Game...")), "mnuSwitch");
    m_associate = named(m_file->addAction(QStringLiteral("&Associate .POD Files with Korvel")), "mnuAssociate");
    m_associate->setCheckable(true);
    m_options = named(m_file->addAction(QStringLiteral("&Options...")), "mnuOptions");
    m_file->addSeparator();
    m_palette = named(m_file->addAction(QStringLiteral("&Palette Viewer...")), "mnuPalette");
    m_mass = named(m_file->addAction(QStringLiteral("&Mass Extract...")), "mnuMass");
    m_createPod = named(m_file->addAction(QStringLiteral("&Create POD...")), "mnuCreatePod");
    m_checkPod = named(m_file->addAction(QStringLiteral("C&heck POD")), "mnuCheckPod");
    m_checkPod->setStatusTip(QStringLiteral("Check the POD listed in the Extractor"));
    m_file->addSeparator();
    m_exit = named(m_file->addAction(QStringLiteral("E&xit")), "mnuExit");

    m_view = namedMenu(bar->addMenu(QStringLiteral("&View")), "mnuView");
    const struct {
        Mode mode;
        const char* name;
        const char* caption;
        QKeyCombination keys;
    } views[] = {
        {Mode::Configurator, "mnuViewConfigurator", "&Configurator", Qt::CTRL | Qt::Key_1},
        {Mode::Extractor, "mnuViewExtractor", "&Extractor", Qt::CTRL | Qt::Key_2},
        {Mode::Mounter, "mnuViewMounter", "&Mounter", Qt::CTRL | Qt::Key_3},
    };
    for (const auto& view : views) {
        QAction* action = named(m_view->addAction(QString::fromLatin1(view.caption)), view.name);
        action->setShortcut(view.keys);
        action->setShortcutContext(Qt::WindowShortcut);
        action->setToolTip(modeToolTip(view.mode));
        action->setStatusTip(modeToolTip(view.mode));
        m_views[static_cast<size_t>(view.mode)] = action;
    }

    m_mounter = namedMenu(bar->addMenu(QStringLiteral("M&ounter")), "mnuMounter");
    m_conflicts = named(m_mounter->addAction(QStringLiteral("&Conflicts...")), "mnuConflicts");
    m_conflicts->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    m_conflicts->setShortcutContext(Qt::WindowShortcut);
    m_conflicts->setStatusTip(QStringLiteral("Show which mounted PODs hold the same files"));
    m_checkPods = named(m_mounter->addAction(QStringLiteral("Check &PODs")), "mnuCheckPods");
    m_checkPods->setStatusTip(QStringLiteral("Check every mounted POD for damage"));

    m_tracks = namedMenu(bar->addMenu(QStringLiteral("&Tracks")), "mnuTracks");
    m_trackList = named(m_tracks->addAction(QStringLiteral("(no tracks available)")), "mnuTrackList");
    m_trackList->setData(0);
    m_tracksSep = named(m_tracks->addSeparator(), "mnuTracksSep1");
    m_update = named(m_tracks->addAction(QStringLiteral("&Update Track List")), "mnuUpdate");

    QMenu* help = namedMenu(bar->addMenu(QStringLiteral("&Help")), "mnuHelp");
    m_about = named(help->addAction(QStringLiteral("&About Korvel...")), "mnuAbout");

    m_configurator = namedMenu(new QMenu(&window), "mnuConfigurator");
    m_fixRegistry = named(m_configurator->addAction(QStringLiteral("&Fix Game Registry Entries")), "mnuFixRegistry");
}

void MainMenus::setTracksAvailable(bool available) {
    m_tracks->menuAction()->setVisible(available);
    m_tracks->setEnabled(available);
    view(Mode::Configurator)->setVisible(available);
    view(Mode::Configurator)->setEnabled(available);
}

} // namespace korvel::ui
