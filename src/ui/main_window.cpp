#include "main_window.h"

#include "about_dialog.h"
#include "app_info.h"
#include "kit/anchors.h"
#include "kit/gold_button.h"
#include "kit/twips.h"
#include "main_menus.h"
#include "mode_status_bar.h"
#include "pane_slider.h"
#include "platform/game_text.h"
#include "platform/services.h"
#include "startup/session.h"
#include "startup/settings_store.h"
#include "startup/typed_settings.h"
#include "startup/web_addresses.h"
#include "startup/widgets/options_dialog.h"
#include "window_settings.h"

#include <QAction>
#include <QCloseEvent>
#include <QFrame>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QVBoxLayout>

namespace korvel::ui {

namespace {

constexpr int kPaneAreaHeight = PaneSlider::kPaneHeight + PaneSlider::kShownTop; // the part of a pane on view

// Menu entries of the panes whose captions show their keys.
constexpr std::array<std::pair<const char*, const char*>, 7> kShortcutCaptions{{
    {"mnuBottom", "Ctrl+B"},
    {"mnuDelete", "Del"},
    {"mnuDown", "Ctrl+D"},
    {"mnuRefreshMounted", "F5"},
    {"mnuRefreshUnmounted", "F5"},
    {"mnuTop", "Ctrl+T"},
    {"mnuUp", "Ctrl+U"},
}};

bool isOne(const QString& text) {
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    return ok && value == 1.0;
}

} // namespace

MainWindow::MainWindow(const Session& session, SettingsStore& store, Services& services, QWidget* parent)
    : QMainWindow(parent), m_session(session), m_store(store), m_services(services),
      m_settings(std::make_unique<WindowSettings>(store, session.currentGame)) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(applicationTitle());

    m_menus = new MainMenus(*this);
    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("clientArea"));
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_paneArea = new QWidget(central);
    m_paneArea->setObjectName(QStringLiteral("paneArea"));
    m_paneArea->setMinimumSize(twipsToPixels(PaneSlider::kPaneWidth, this), twipsToPixels(kPaneAreaHeight, this));
    m_paneArea->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_paneArea->installEventFilter(this);
    m_statusBar = new ModeStatusBar(central);
    layout->addWidget(m_paneArea, 1);
    layout->addWidget(m_statusBar);
    setCentralWidget(central);

    m_panes = {makePane("fraConfigure"), makePane("fraExtract"), makePane("fraMount")};
    m_slider = new PaneSlider(m_panes[0], m_panes[1], m_panes[2], this);
    for (QFrame* frame : m_panes)
        frame->setEnabled(false);
    placeOwnControls();
    // The classic window is 7050 x 6960 twips with its frame and caption; the client area is what
    // the panes need inside that frame: their width, the part of a pane on view and the status bar.
    // That is also the smallest the window gets; it may grow, and the panes grow with it.
    const QSize classic(twipsToPixels(PaneSlider::kPaneWidth, this),
                        menuBar()->sizeHint().height() + m_paneArea->minimumHeight() + m_statusBar->height());
    setMinimumSize(classic);
    resize(classic);

    connect(m_statusBar, &ModeStatusBar::modeChosen, this,
            [this](Mode mode) { showMode(mode, m_settings->profile().slide()); });
    connect(m_menus->associate(), &QAction::triggered, this, &MainWindow::toggleAssociation);
    connect(m_menus->options(), &QAction::triggered, this, &MainWindow::showOptions);
    connect(m_menus->exit(), &QAction::triggered, this, &QWidget::close);
    connect(m_menus->about(), &QAction::triggered, this, &MainWindow::showAbout);
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter}) {
        QAction* view = m_menus->view(mode);
        addAction(view); // its key works wherever the focus is in the window
        connect(view, &QAction::triggered, this, [this, mode] {
            if (mode != Mode::Configurator || m_session.configurator)
                showMode(mode, m_settings->profile().slide());
        });
    }
}

MainWindow::~MainWindow() = default;

QFrame* MainWindow::makePane(const char* name) {
    auto* frame = new QFrame(m_paneArea);
    frame->setObjectName(QString::fromLatin1(name));
    frame->setFrameShape(QFrame::NoFrame);
    frame->setAutoFillBackground(true);
    frame->setMouseTracking(true);
    frame->installEventFilter(this);
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(0, 0, 0, 0);
    return frame;
}

void MainWindow::placeOwnControls() {
    QFrame* mount = pane(Mode::Mounter);
    m_playButton = new GoldButton(QStringLiteral("&Play MTM2"), mount);
    m_playButton->setObjectName(QStringLiteral("cmdPlay"));
    m_continueButton = new GoldButton(QStringLiteral("&Continue"), mount);
    m_continueButton->setObjectName(QStringLiteral("cmdContinue"));
    m_continueButton->setToolTip(QStringLiteral("Save the mounted PODs list without starting the game"));
    m_quitButton = new GoldButton(QStringLiteral("&Quit"), mount);
    m_quitButton->setObjectName(QStringLiteral("cmdQuit"));
    m_playButton->setGeometry(twipsRect(2460, 5520, 1440, 375, this));
    m_continueButton->setGeometry(twipsRect(3990, 5520, 1440, 375, this));
    m_quitButton->setGeometry(twipsRect(5520, 5520, 1290, 375, this));
    m_ownAnchors = std::make_unique<Anchors>(*mount, QSize(PaneSlider::kPaneWidth, PaneSlider::kPaneHeight));
    for (GoldButton* button : {m_playButton, m_continueButton, m_quitButton})
        m_ownAnchors->add(button, Anchors::FollowRight | Anchors::FollowBottom);
    connect(m_quitButton, &GoldButton::clicked, this, &QWidget::close);
}

void MainWindow::installPane(Mode mode, QWidget* content) {
    QFrame* frame = pane(mode);
    frame->layout()->addWidget(content);
    // The window's own controls in the pane stay above the content until the pane places them.
    for (QWidget* own : {static_cast<QWidget*>(m_playButton), static_cast<QWidget*>(m_continueButton),
                         static_cast<QWidget*>(m_quitButton)}) {
        if (own->parentWidget() == frame)
            own->raise();
    }
}

QFrame* MainWindow::pane(Mode mode) const {
    return m_panes[static_cast<size_t>(mode)];
}

void MainWindow::prepareFrame() {
    const bool configurator = m_session.configurator;
    if (!configurator) {
        m_playButton->setText(QStringLiteral("&Play Game"));
        m_statusBar->setConfiguratorAvailable(false);
    }
    m_menus->setTracksAvailable(configurator);
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter})
        m_slider->setTop(mode, m_slider->top(mode)); // every pane at left 0
    m_settings->restorePosition(*this);
    m_menus->associate()->setChecked(ProgramSettings(m_store).associate());
    appendShortcutCaptions();
}

void MainWindow::showInformation() {
    m_statusBar->setPanelText(1, informationText(fromGameText(m_session.versionText)));
    applyButtonLooks();
}

void MainWindow::showStartMode() {
    if (const auto mode = m_settings->startMode(m_session.configurator))
        showMode(*mode, false);
}

const ProfileSettings& MainWindow::profileSettings() const {
    return m_settings->profile();
}

void MainWindow::appendShortcutCaptions() {
    const auto actions = findChildren<QAction*>();
    for (const auto& [name, keys] : kShortcutCaptions) {
        for (QAction* action : actions) {
            if (action->objectName() == QLatin1String(name))
                action->setText(action->text() + QLatin1Char('\t') + QLatin1String(keys));
        }
    }
}

void MainWindow::ShowMounter(const QString& slide) {
    showMode(Mode::Mounter, isOne(slide));
}

void MainWindow::ShowExtractor(const QString& slide) {
    showMode(Mode::Extractor, isOne(slide));
}

void MainWindow::ShowConfigurator(const QString& slide) {
    showMode(Mode::Configurator, isOne(slide));
}

void MainWindow::showMode(Mode mode, bool slide) {
    m_slider->bringUp(mode, slide);
    m_statusBar->setCurrentMode(mode);
    setWindowTitle(applicationTitle() + QStringLiteral(" - ") + fromGameText(m_session.currentGame) +
                   QStringLiteral(" - [") + modeName(mode) + QLatin1Char(']'));
}

std::optional<Mode> MainWindow::currentMode() const {
    return m_slider->shownMode();
}

void MainWindow::applyButtonLooks() {
    const std::optional<bool> flat = m_settings->profile().flatButtons();
    for (GoldButton* button : findChildren<GoldButton*>())
        button->setFlatLook(flat);
}

bool MainWindow::reportFailure(const Status& status) {
    if (status.ok())
        return false;
    m_services.dialogs.message(status.failure().title(), status.failure().message, MessageIcon::Critical);
    return true;
}

void MainWindow::toggleAssociation() {
    // The action has already flipped its check mark.
    const bool associate = m_menus->associate()->isChecked();
    ProgramSettings(m_store).setAssociate(associate);
    emit associationToggled(associate);
}

QDialog* MainWindow::showOptions() {
    auto* dialog = new OptionsDialog(m_store, m_session, m_services.dialogs, this);
    dialog->setPathMap(&m_services.paths);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &OptionsDialog::saved, this, [this] {
        applyButtonLooks();
        emit optionsSaved();
    });
    dialog->open();
    return dialog;
}

QDialog* MainWindow::showAbout() {
    const ProgramSettings settings(m_store);
    const AboutDialog::Links links{addressInForce(settings, WebAddress::Home),
                                   addressInForce(settings, WebAddress::Support)};
    auto* dialog = new AboutDialog(fromGameText(m_session.versionText), links, m_services.shell, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
    return dialog;
}

void MainWindow::setCloseSequence(std::function<bool()> sequence) {
    m_closeSequence = std::move(sequence);
}

void MainWindow::saveState() {
    m_settings->saveScreen(windowTitle());
    m_settings->savePosition(*this);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (m_closeSequence) {
        if (!m_closeSequence()) {
            event->ignore();
            return;
        }
    } else {
        saveState();
    }
    event->accept();
    emit closed();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_paneArea && event->type() == QEvent::Resize) {
        m_slider->setArea(m_paneArea->size());
    } else if (watched == pane(Mode::Mounter) && event->type() == QEvent::Resize) {
        m_ownAnchors->place();
    }
    const bool onPane = std::find(m_panes.begin(), m_panes.end(), watched) != m_panes.end();
    if (onPane && event->type() == QEvent::MouseMove) {
        m_statusBar->resetHighlight();
    } else if (watched == pane(Mode::Configurator) && event->type() == QEvent::MouseButtonRelease) {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::RightButton) {
            m_menus->configuratorMenu()->popup(mouse->globalPosition().toPoint());
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace korvel::ui
