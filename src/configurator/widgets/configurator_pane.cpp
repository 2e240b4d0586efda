#include "configurator_pane.h"

#include "platform/dialogs.h"
#include "platform/file_registry.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "startup/backups.h"
#include "startup/session.h"
#include "ui/kit/gold_button.h"
#include "ui/kit/twips.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QShowEvent>
#include <QTreeWidget>

namespace korvel {

namespace {

const QString kDownloadTip = QStringLiteral("Open the add-on tracks' web site in the browser");

template <typename W> W* named(W* widget, const char* name) {
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

QString displayText(std::string_view gameText) {
    return fromGameText(gameText).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

} // namespace

ConfiguratorPane::ConfiguratorPane(const Session& session, SettingsStore& store, Services& services, QWidget* parent)
    : QWidget(parent), m_session(session), m_store(store), m_services(services) {
    setObjectName(QStringLiteral("configuratorPane"));
    buildControls();
}

ConfiguratorPane::~ConfiguratorPane() = default;

void ConfiguratorPane::buildControls() {
    m_settingsFrame = named(new QGroupBox(QStringLiteral("Game Settings"), this), "fraSettings");
    m_settingsFrame->setGeometry(ui::twipsRect(120, 150, 6690, 1560, this));
    m_hiddenTrackBox = named(new QCheckBox(QStringLiteral("Show the &hidden track"), m_settingsFrame), "chkTrack");
    m_hiddenTrackBox->setGeometry(ui::twipsRect(180, 360, 2400, 285, this));
    m_hornSoundsBox = named(new QCheckBox(QStringLiteral("&Kooky horn sounds"), m_settingsFrame), "chkSounds");
    m_hornSoundsBox->setGeometry(ui::twipsRect(180, 720, 2400, 285, this));
    connect(m_hiddenTrackBox, &QCheckBox::clicked, this, &ConfiguratorPane::settingChanged);
    connect(m_hornSoundsBox, &QCheckBox::clicked, this, &ConfiguratorPane::settingChanged);

    auto* language = named(new QGroupBox(QStringLiteral("Language File"), m_settingsFrame), "fraLocalization");
    language->setGeometry(ui::twipsRect(2700, 180, 3870, 1260, this));
    const std::array<const char*, 4> captions = {"&Standard", "&Fun", "&Pig Latin", "C&ustom:"};
    const std::array<QRect, 4> places = {
        ui::twipsRect(120, 270, 1200, 285, this), ui::twipsRect(1320, 270, 1100, 285, this),
        ui::twipsRect(2460, 270, 1300, 285, this), ui::twipsRect(120, 600, 1200, 285, this)};
    for (int i = 0; i < 4; ++i) {
        const int index = i + 1;
        auto* option = new QRadioButton(QString::fromLatin1(captions[i]), language);
        option->setObjectName(QStringLiteral("optLocalization_%1").arg(index));
        option->setProperty("index", index);
        option->setGeometry(places[i]);
        connect(option, &QRadioButton::clicked, this, [this, index] { optLocalization_Click(index); });
        m_localizationOptions[i] = option;
    }
    // As designed, the standard file is chosen until monster.ini says otherwise.
    m_localizationOptions[0]->setChecked(true);
    m_customFileBox = named(new QLineEdit(language), "txtCustom");
    m_customFileBox->setAccessibleName(QStringLiteral("Custom language file"));
    m_customFileBox->setGeometry(ui::twipsRect(120, 900, 3180, 285, this));
    m_customFileBox->setEnabled(false);
    m_browseButton = named(new ui::GoldButton(QStringLiteral("..."), language), "cmdCustom");
    m_browseButton->setGeometry(ui::twipsRect(3360, 885, 375, 315, this));
    m_browseButton->setToolTip(QStringLiteral("Choose a language file"));
    m_browseButton->setAccessibleName(m_browseButton->toolTip());
    connect(m_browseButton, &ui::GoldButton::clicked, this, &ConfiguratorPane::chooseCustomFile);

    m_driversFrame = named(new QGroupBox(QStringLiteral("Drivers"), this), "fraDrivers");
    m_driversFrame->setGeometry(ui::twipsRect(120, 1800, 6690, 3540, this));
    m_driverList = named(new QTreeWidget(m_driversFrame), "lstDrivers");
    m_driverList->setAccessibleName(QStringLiteral("Drivers"));
    m_driverList->setGeometry(ui::twipsRect(180, 300, 2400, 2640, this));
    m_driverList->setColumnCount(1);
    m_driverList->setHeaderLabels({QStringLiteral("Driver")});
    m_driverList->setRootIsDecorated(false);
    m_driverList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_driverList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_driverList->installEventFilter(this);
    connect(m_driverList, &QTreeWidget::currentItemChanged, this, &ConfiguratorPane::showSelectedDriver);
    m_informationBox = named(new QPlainTextEdit(m_driversFrame), "txtInformation");
    m_informationBox->setAccessibleName(QStringLiteral("Driver record"));
    m_informationBox->setGeometry(ui::twipsRect(2700, 300, 3810, 2640, this));
    m_informationBox->setReadOnly(true);
    m_informationBox->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_removeButton = named(new ui::GoldButton(QStringLiteral("&Remove"), m_driversFrame), "cmdRemoveDrivers");
    m_removeButton->setGeometry(ui::twipsRect(180, 3060, 1155, 375, this));
    m_removeButton->setToolTip(QStringLiteral("Remove the selected drivers (Del)"));
    connect(m_removeButton, &ui::GoldButton::clicked, this, [this] { RemoveSelectedDriver(); });
    m_undoButton = named(new ui::GoldButton(QStringLiteral("U&ndo"), m_driversFrame), "cmdUndoDrivers");
    m_undoButton->setGeometry(ui::twipsRect(1425, 3060, 1155, 375, this));
    m_undoButton->setToolTip(QStringLiteral("Forget the removals and read player.pro again (F5)"));
    connect(m_undoButton, &ui::GoldButton::clicked, this, [this] { LoadDrivers(); });

    m_downloadButton = named(new ui::GoldButton(QStringLiteral("&Download Tracks..."), this), "cmdDownload");
    m_downloadButton->setGeometry(ui::twipsRect(120, 5520, 2400, 375, this));
    m_downloadButton->setToolTip(kDownloadTip);
    m_downloadButton->setEnabled(false);
    connect(m_downloadButton, &ui::GoldButton::clicked, this, [this] {
        if (!m_downloadAddress.isEmpty())
            m_services.shell.openUrl(m_downloadAddress);
    });
    m_saveButton = named(new ui::GoldButton(QStringLiteral("&Save"), this), "cmdSave");
    m_saveButton->setGeometry(ui::twipsRect(5520, 5520, 1290, 375, this));
    m_saveButton->setToolTip(QStringLiteral("Save monster.ini and player.pro"));
    connect(m_saveButton, &ui::GoldButton::clicked, this, [this] { save(); });
}

void ConfiguratorPane::setDownloadAddress(const QString& address, const QString& missingHint) {
    m_downloadAddress = address;
    m_downloadButton->setEnabled(!address.isEmpty());
    m_downloadButton->setToolTip(address.isEmpty() ? missingHint : kDownloadTip);
}

bool ConfiguratorPane::report(const Failure& failure) {
    m_services.dialogs.message(failure.title(), failure.message, failureIcon(failure));
    return false;
}

// monster.ini

bool ConfiguratorPane::LoadMonsterIni() {
    LoadedFileStamp stamp;
    const Result<MonsterSettings> loaded = korvel::LoadMonsterIni(m_services.files, m_session.location, &stamp);
    m_monsterEdited = false;
    m_monsterOnDisk.reset();
    if (!loaded)
        return report(loaded.failure());
    m_monsterStamp = stamp;
    m_monsterOnDisk = *loaded;
    m_hiddenTrackBox->setChecked(loaded->hiddenTrack);
    m_hornSoundsBox->setChecked(loaded->horn);
    selectLocalization(loaded->localization);
    m_customFileBox->setText(fromGameText(loaded->custom));
    return true;
}

MonsterSettings ConfiguratorPane::monsterSettings() const {
    MonsterSettings settings;
    settings.hiddenTrack = m_hiddenTrackBox->isChecked();
    settings.horn = m_hornSoundsBox->isChecked();
    settings.localization = 1;
    for (int i = 0; i < 4; ++i) {
        if (m_localizationOptions[i]->isChecked()) {
            settings.localization = i + 1;
            break;
        }
    }
    settings.custom = toGameText(m_customFileBox->text());
    return settings;
}

bool ConfiguratorPane::SaveMonsterIni() {
    const MonsterSettings settings = monsterSettings();
    LoadedFileStamp written;
    const LoadedFileStamp* loaded = m_monsterStamp ? &*m_monsterStamp : nullptr;
    Status saved = korvel::SaveMonsterIni(m_services.files, m_session.location, settings, loaded, &written);
    if (!saved && saved.failure().kind == FailureKind::ChangedOnDisk) {
        const MessageAnswer answer = askAboutChangedFile(monsterIniPath(m_session.location));
        if (answer == MessageAnswer::Yes)
            return LoadMonsterIni();
        if (answer != MessageAnswer::No)
            return false;
        saved = korvel::SaveMonsterIni(m_services.files, m_session.location, settings, nullptr, &written);
    }
    if (!saved)
        return report(saved.failure());
    m_monsterStamp = written;
    m_monsterOnDisk = settings;
    m_monsterEdited = false;
    return true;
}

bool ConfiguratorPane::monsterIniChanged() const {
    return m_monsterOnDisk ? monsterSettings() != *m_monsterOnDisk : m_monsterEdited;
}

MessageAnswer ConfiguratorPane::askAboutChangedFile(const std::string& file) {
    return m_services.dialogs.message(
        QStringLiteral("File Changed"),
        QStringLiteral("%1 was changed by another program after Korvel read it, so saving now would write over that "
                       "change.\n\nRead the file again and discard the changes made here?\n\nYes: read it again."
                       "\nNo: save over the other program's change.\nCancel: save nothing now.")
            .arg(fromGameText(file)),
        MessageIcon::Question, MessageButtons::YesNoCancel);
}

void ConfiguratorPane::selectLocalization(int index) {
    if (index >= 1 && index <= 4)
        m_localizationOptions[index - 1]->setChecked(true);
    m_customFileBox->setEnabled(index == 4);
}

void ConfiguratorPane::optLocalization_Click(int index) {
    if (index < 4)
        m_customFileBox->setText(fromGameText(builtInLanguageFile(index)));
    selectLocalization(index);
    settingChanged();
}

void ConfiguratorPane::settingChanged() {
    m_monsterEdited = true;
    if (m_opened && m_session.autosave.monsterOnChange())
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
    m_customFileBox->setText(fromGameText(customLanguagePath(chosen.front(), m_session.location)));
    selectLocalization(4);
    settingChanged();
}

// player.pro

void ConfiguratorPane::fillDriverList() {
    m_driverList->clear();
    m_informationBox->clear();
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
    m_driversRemoved = false;
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
    m_driversRemoved = true;
    fillDriverList();
    if (m_opened && m_session.autosave.playerOnChange())
        SaveDrivers();
    return removed;
}

bool ConfiguratorPane::SaveDrivers() {
    Result<DriverLoad> saved = korvel::SaveDrivers(m_services.files, m_session.location, m_drivers);
    if (!saved && saved.failure().kind == FailureKind::ChangedOnDisk) {
        const MessageAnswer answer = askAboutChangedFile(playerProfilePath(m_session.location));
        if (answer == MessageAnswer::Yes)
            return LoadDrivers();
        if (answer != MessageAnswer::No)
            return false;
        DriverRecords over = m_drivers;
        over.loadedFrom.reset();
        saved = korvel::SaveDrivers(m_services.files, m_session.location, over);
    }
    if (!saved)
        return report(saved.failure());
    // The list shows what the file holds now.
    m_drivers = std::move(saved->list);
    m_driversRemoved = false;
    fillDriverList();
    return saved->failure ? report(*saved->failure) : true;
}

bool ConfiguratorPane::save() {
    return SaveMonsterIni() && SaveDrivers();
}

bool ConfiguratorPane::settleUnsavedChanges() {
    const AutosaveSwitches& autosave = m_session.autosave;
    bool saveMonster = monsterIniChanged() && autosave.onExit && autosave.monster;
    bool saveDrivers = driversChanged() && autosave.onExit && autosave.player;
    const bool askMonster = monsterIniChanged() && !saveMonster;
    const bool askDrivers = driversChanged() && !saveDrivers;
    if (askMonster || askDrivers) {
        QString text;
        if (askMonster && askDrivers)
            text = QStringLiteral("The game settings (monster.ini) have changed and drivers were removed from the "
                                  "player profile (player.pro) since they were last saved. Save both before Korvel "
                                  "exits?");
        else if (askMonster)
            text = QStringLiteral("The game settings have changed since they were last saved. Save them to "
                                  "monster.ini before Korvel exits?");
        else
            text = QStringLiteral("Drivers were removed from the list since it was last saved. Save the list to "
                                  "player.pro before Korvel exits?");
        const MessageAnswer answer = m_services.dialogs.message(QStringLiteral("Question"), text, MessageIcon::Question,
                                                                MessageButtons::YesNoCancel);
        if (answer == MessageAnswer::Cancel)
            return false;
        if (answer == MessageAnswer::Yes) {
            saveMonster = saveMonster || askMonster;
            saveDrivers = saveDrivers || askDrivers;
        }
    }
    if (saveMonster && !SaveMonsterIni())
        return false;
    return !saveDrivers || SaveDrivers();
}

void ConfiguratorPane::showSelectedDriver() {
    const int row = m_driverList->indexOfTopLevelItem(m_driverList->currentItem());
    if (row < 0 || row >= m_drivers.count()) {
        m_informationBox->clear();
        return;
    }
    m_informationBox->setPlainText(displayText(m_drivers.entries[static_cast<size_t>(row)].record));
}

void ConfiguratorPane::fixRegistry() {
    if (const std::optional<std::string> folder =
            RepairGameRegistry(m_store, m_services.dialogs, m_session.location, m_services.paths,
                               QFileInfo(FileRegistry::defaultPath()).absolutePath()))
        emit gameFolderRepaired(*folder);
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
