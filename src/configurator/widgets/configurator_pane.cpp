#include "configurator_pane.h"

#include "platform/dialogs.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "startup/backups.h"
#include "startup/session.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShowEvent>
#include <QTreeWidget>

namespace korvel {

namespace {

// Geometry is laid out in twips, 1440 to the logical inch, like the rest of the main window.
QRect twips(int left, int top, int width, int height, const QWidget* reference) {
    const qreal dpi = reference->logicalDpiX() > 0 ? reference->logicalDpiX() : 96.0;
    auto px = [dpi](int value) { return qRound(value * dpi / 1440.0); };
    return {px(left), px(top), px(width), px(height)};
}

template <typename W> W* named(W* widget, const char* name) {
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

QString displayText(std::string_view gameText) {
    return fromGameText(gameText).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

} // namespace

ConfiguratorPane::ConfiguratorPane(Session& session, SettingsStore& store, Services& services, QWidget* parent,
                                   ButtonMaker makeButton)
    : QWidget(parent), m_session(session), m_store(store), m_services(services) {
    setObjectName(QStringLiteral("configuratorPane"));
    if (!makeButton)
        makeButton = [](const QString& caption, QWidget* owner) { return new QPushButton(caption, owner); };
    buildControls(makeButton);
}

ConfiguratorPane::~ConfiguratorPane() = default;

void ConfiguratorPane::buildControls(const ButtonMaker& makeButton) {
    m_settingsFrame = named(new QGroupBox(QStringLiteral("Game Settings"), this), "fraSettings");
    m_settingsFrame->setGeometry(twips(120, 150, 6690, 1560, this));
    m_track = named(new QCheckBox(QStringLiteral("Show the &hidden track"), m_settingsFrame), "chkTrack");
    m_track->setGeometry(twips(180, 360, 2400, 285, this));
    m_sounds = named(new QCheckBox(QStringLiteral("&Kooky horn sounds"), m_settingsFrame), "chkSounds");
    m_sounds->setGeometry(twips(180, 720, 2400, 285, this));
    connect(m_track, &QCheckBox::clicked, this, &ConfiguratorPane::settingChanged);
    connect(m_sounds, &QCheckBox::clicked, this, &ConfiguratorPane::settingChanged);

    auto* language = named(new QGroupBox(QStringLiteral("Language File"), m_settingsFrame), "fraLocalization");
    language->setGeometry(twips(2700, 180, 3870, 1260, this));
    const std::array<const char*, 4> captions = {"&Standard", "&Fun", "&Pig Latin", "C&ustom:"};
    const std::array<QRect, 4> places = {twips(120, 270, 1200, 285, this), twips(1320, 270, 1100, 285, this),
                                         twips(2460, 270, 1300, 285, this), twips(120, 600, 1200, 285, this)};
    for (int i = 0; i < 4; ++i) {
        const int index = i + 1;
        auto* option = new QRadioButton(QString::fromLatin1(captions[i]), language);
        option->setObjectName(QStringLiteral("optLocalization_%1").arg(index));
        option->setProperty("index", index);
        option->setGeometry(places[i]);
        connect(option, &QRadioButton::clicked, this, [this, index] { localizationClicked(index); });
        m_localization[i] = option;
    }
    // As designed, the standard file is chosen until monster.ini says otherwise.
    m_localization[0]->setChecked(true);
    m_custom = named(new QLineEdit(language), "txtCustom");
    m_custom->setGeometry(twips(120, 900, 3180, 285, this));
    m_custom->setEnabled(false);
    m_browse = named(makeButton(QStringLiteral("..."), language), "cmdCustom");
    m_browse->setGeometry(twips(3360, 885, 375, 315, this));
    m_browse->setToolTip(QStringLiteral("Choose a language file"));
    connect(m_browse, &QAbstractButton::clicked, this, &ConfiguratorPane::chooseCustomFile);

    m_driversFrame = named(new QGroupBox(QStringLiteral("Drivers"), this), "fraDrivers");
    m_driversFrame->setGeometry(twips(120, 1800, 6690, 3540, this));
    m_driverList = named(new QTreeWidget(m_driversFrame), "lstDrivers");
    m_driverList->setGeometry(twips(180, 300, 2400, 2640, this));
    m_driverList->setColumnCount(1);
    m_driverList->setHeaderLabels({QStringLiteral("Driver")});
    m_driverList->setRootIsDecorated(false);
    m_driverList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_driverList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_driverList->installEventFilter(this);
    connect(m_driverList, &QTreeWidget::currentItemChanged, this, &ConfiguratorPane::showSelectedDriver);
    m_information = named(new QPlainTextEdit(m_driversFrame), "txtInformation");
    m_information->setGeometry(twips(2700, 300, 3810, 2640, this));
    m_information->setReadOnly(true);
    m_information->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_remove = named(makeButton(QStringLiteral("&Remove"), m_driversFrame), "cmdRemoveDrivers");
    m_remove->setGeometry(twips(180, 3060, 1155, 375, this));
    m_remove->setToolTip(QStringLiteral("Remove the selected drivers (Del)"));
    connect(m_remove, &QAbstractButton::clicked, this, [this] { RemoveSelectedDriver(); });
    m_undo = named(makeButton(QStringLiteral("U&ndo"), m_driversFrame), "cmdUndoDrivers");
    m_undo->setGeometry(twips(1425, 3060, 1155, 375, this));
    m_undo->setToolTip(QStringLiteral("Forget the removals and read player.pro again (F5)"));
    connect(m_undo, &QAbstractButton::clicked, this, [this] { LoadDrivers(); });

    m_download = named(makeButton(QStringLiteral("&Download Tracks..."), this), "cmdDownload");
    m_download->setGeometry(twips(120, 5520, 2400, 375, this));
    m_download->setToolTip(QStringLiteral("Open the add-on tracks' web site in the browser"));
    m_download->setEnabled(false);
    connect(m_download, &QAbstractButton::clicked, this, [this] {
        if (!m_downloadAddress.isEmpty())
            m_services.shell.openUrl(m_downloadAddress);
    });
    m_save = named(makeButton(QStringLiteral("&Save"), this), "cmdSave");
    m_save->setGeometry(twips(5520, 5520, 1290, 375, this));
    m_save->setToolTip(QStringLiteral("Save monster.ini and player.pro"));
    connect(m_save, &QAbstractButton::clicked, this, [this] { save(); });
}

void ConfiguratorPane::setDownloadAddress(const QString& address) {
    m_downloadAddress = address;
    m_download->setEnabled(!address.isEmpty());
}

bool ConfiguratorPane::report(const Failure& failure) {
    m_services.dialogs.message(failure.title(), failure.message, failureIcon(failure));
    return false;
}

// monster.ini

bool ConfiguratorPane::LoadMonsterIni() {
    const Result<MonsterSettings> loaded = korvel::LoadMonsterIni(m_services.files, m_session.location);
    if (!loaded)
        return report(loaded.failure());
    m_track->setChecked(loaded->hiddenTrack);
    m_sounds->setChecked(loaded->horn);
    selectLocalization(loaded->localization);
    m_custom->setText(fromGameText(loaded->custom));
    return true;
}

MonsterSettings ConfiguratorPane::monsterSettings() const {
    MonsterSettings settings;
    settings.hiddenTrack = m_track->isChecked();
    settings.horn = m_sounds->isChecked();
    settings.localization = 1;
    for (int i = 0; i < 4; ++i) {
        if (m_localization[i]->isChecked()) {
            settings.localization = i + 1;
            break;
        }
    }
    settings.custom = toGameText(m_custom->text());
    return settings;
}

bool ConfiguratorPane::SaveMonsterIni() {
    const Status saved = korvel::SaveMonsterIni(m_services.files, m_session.location, monsterSettings());
    return saved ? true : report(saved.failure());
}

void ConfiguratorPane::selectLocalization(int index) {
    if (index >= 1 && index <= 4)
        m_localization[index - 1]->setChecked(true);
    m_custom->setEnabled(index == 4);
}

void ConfiguratorPane::localizationClicked(int index) {
    if (index < 4)
        m_custom->setText(fromGameText(builtInLanguageFile(index)));
    selectLocalization(index);
    settingChanged();
}

void ConfiguratorPane::settingChanged() {
    if (m_opened && m_session.autosaveOnChange(m_session.asMonster))
        SaveMonsterIni();
}

void ConfiguratorPane::chooseCustomFile() {
    OpenFileRequest request;
    request.title = QStringLiteral("Open File");
    request.startFolder = m_session.location + "\\UI";
    request.filters = {{QStringLiteral("Localization Files (*.loc)"), QStringLiteral("*.loc")},
                       {QStringLiteral("All Files (*.*)"), QStringLiteral("*.*")}};
    const std::vector<std::string> chosen = m_services.dialogs.openFiles(request);
    if (chosen.empty())
        return;
    m_custom->setText(fromGameText(customLanguagePath(chosen.front(), m_session.location)));
    selectLocalization(4);
    settingChanged();
}

// player.pro

void ConfiguratorPane::fillDriverList() {
    m_driverList->clear();
    m_information->clear();
    for (const DriverEntry& entry : m_drivers.entries) {
        auto* item = new QTreeWidgetItem(m_driverList, {fromGameText(entry.name)});
        if (entry.bold) {
            QFont font = item->font(0);
            font.setBold(true);
            item->setFont(0, font);
        }
    }
}

bool ConfiguratorPane::LoadDrivers() {
    DriverLoad load = korvel::LoadDrivers(m_services.files, m_session.location);
    m_drivers = std::move(load.list);
    fillDriverList();
    return load.failure ? report(*load.failure) : true;
}

int ConfiguratorPane::RemoveSelectedDriver() {
    std::vector<bool> selected;
    for (int i = 0; i < m_driverList->topLevelItemCount(); ++i)
        selected.push_back(m_driverList->topLevelItem(i)->isSelected());
    const int removed = korvel::RemoveSelectedDriver(m_drivers, std::move(selected));
    if (removed == 0)
        return 0;
    fillDriverList();
    if (m_opened && m_session.autosaveOnChange(m_session.asPlayer))
        SaveDrivers();
    return removed;
}

bool ConfiguratorPane::SaveDrivers() {
    Result<DriverLoad> saved = korvel::SaveDrivers(m_services.files, m_session.location, m_drivers);
    if (!saved)
        return report(saved.failure());
    // The list shows what the file holds now.
    m_drivers = std::move(saved->list);
    fillDriverList();
    return saved->failure ? report(*saved->failure) : true;
}

bool ConfiguratorPane::save() {
    return SaveMonsterIni() && SaveDrivers();
}

void ConfiguratorPane::showSelectedDriver() {
    const int row = m_driverList->indexOfTopLevelItem(m_driverList->currentItem());
    if (row < 0 || row >= m_drivers.count()) {
        m_information->clear();
        return;
    }
    m_information->setPlainText(displayText(m_drivers.entries[static_cast<size_t>(row)].record));
}

void ConfiguratorPane::fixRegistry() {
    RepairGameRegistry(m_store, m_services.dialogs, m_session);
}

void ConfiguratorPane::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (window()->isVisible())
        m_opened = true;
}

bool ConfiguratorPane::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_driverList && event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_F5:
            LoadDrivers();
            return true;
        case Qt::Key_Delete:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            RemoveSelectedDriver();
            return true;
        default:
            break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
