#include "options_dialog.h"

#include "platform/dialogs.h"
#include "platform/game_codec.h"
#include "platform/game_text.h"
#include "platform/path_map.h"
#include "startup/session.h"
#include "startup/setting_limits.h"
#include "startup/settings_store.h"
#include "startup/typed_settings.h"
#include "web_addresses_page.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace korvel {

namespace {

const QString kFolderPrompt = QStringLiteral("Choose the directory to start in:");

QGroupBox* frame(const char* name, const QString& caption) {
    auto* box = new QGroupBox(caption);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

QLabel* heading(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

QPushButton* button(const char* name, const QString& caption, QWidget* parent) {
    auto* push = new QPushButton(caption, parent);
    push->setObjectName(QString::fromLatin1(name));
    push->setAutoDefault(false);
    return push;
}

} // namespace

OptionsDialog::OptionsDialog(SettingsStore& store, const Session& session, Dialogs& dialogs, QWidget* parent)
    : QDialog(parent), m_store(store), m_profile(session.currentGame), m_configurator(session.configurator),
      m_dialogs(dialogs) {
    setObjectName(QStringLiteral("frmOptions"));
    setWindowTitle(QStringLiteral("Options"));

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tabOptions"));
    m_tabs->setAccessibleName(QStringLiteral("Options"));
    m_tabs->addTab(buildGeneral(), QStringLiteral("General"));
    m_tabs->addTab(buildAutosave(), QStringLiteral("Autosave"));
    m_tabs->addTab(buildLock(), QStringLiteral("Lock"));
    m_tabs->addTab(buildPaths(), QStringLiteral("Paths"));
    m_web = new WebAddressesPage(m_store);
    m_tabs->addTab(m_web, QStringLiteral("Web"));
    connect(m_tabs, &QTabWidget::currentChanged, this, &OptionsDialog::focusPage);

    auto* ok = button("cmdOK", QStringLiteral("OK"), this);
    ok->setDefault(true);
    auto* cancel = button("cmdCancel", QStringLiteral("Cancel"), this);
    connect(ok, &QPushButton::clicked, this, &OptionsDialog::save);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addLayout(buttons);

    load();
}

QCheckBox* OptionsDialog::check(const char* name, const QString& caption, QWidget* parent) {
    auto* box = new QCheckBox(caption, parent);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

QWidget* OptionsDialog::buildGeneral() {
    QGroupBox* page = frame("fraGeneral", QStringLiteral("General Settings"));
    m_configuratorBox = check(
        "chkConfigurator",
        QStringLiteral("Enable the Configurator and all associated \"Monster Truck Madness 2\"-only options"), page);
    m_autosortBox = check("chkAutosort", QStringLiteral("Sort the Extractor listing by name"), page);
    m_slideBox = check("chkSlide", QStringLiteral("Enable sliding screens"), page);
    m_flatBox = check("chkFlat", QStringLiteral("Enable flat buttons"), page);
    connect(m_configuratorBox, &QCheckBox::clicked, this, &OptionsDialog::confirmConfigurator);
    auto* layout = new QVBoxLayout(page);
    for (QCheckBox* box : {m_configuratorBox, m_autosortBox, m_slideBox, m_flatBox})
        layout->addWidget(box);
    layout->addStretch(1);
    return page;
}

QWidget* OptionsDialog::buildAutosave() {
    QGroupBox* page = frame("fraAutosave", QStringLiteral("Autosave Settings"));
    m_podAutosaveBox = check("chkPOD", QStringLiteral("Mounted PODs list (POD.INI)"), page);
    m_playerAutosaveBox = check("chkPlayer", QStringLiteral("Driver profiles (PLAYER.PRO)"), page);
    m_monsterAutosaveBox = check("chkMonster", QStringLiteral("Game settings (MONSTER.INI)"), page);
    m_saveOnChangeBox = check("chkChange", QStringLiteral("The file is changed"), page);
    m_saveOnExitBox = check("chkExit", QStringLiteral("Korvel exits"), page);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(heading(QStringLiteral("Save automatically"), page));
    for (QCheckBox* box : {m_podAutosaveBox, m_playerAutosaveBox, m_monsterAutosaveBox})
        layout->addWidget(box);
    layout->addSpacing(8);
    layout->addWidget(heading(QStringLiteral("Autosave when..."), page));
    layout->addWidget(m_saveOnChangeBox);
    layout->addWidget(m_saveOnExitBox);
    layout->addStretch(1);
    return page;
}

QWidget* OptionsDialog::buildLock() {
    QGroupBox* page = frame("fraLock", QStringLiteral("Lock your startup screen to.."));
    m_lock = new QButtonGroup(page);
    m_lock->setObjectName(QStringLiteral("optLock"));
    const std::array<QString, 4> captions{QStringLiteral("Don't Lock"), QStringLiteral("Configurator"),
                                          QStringLiteral("Extractor"), QStringLiteral("Mounter")};
    auto* layout = new QVBoxLayout(page);
    for (int i = 0; i < 4; ++i) {
        auto* option = new QRadioButton(captions[static_cast<size_t>(i)], page);
        option->setObjectName(QStringLiteral("optLock%1").arg(i));
        m_lock->addButton(option, i);
        m_lockOptions[static_cast<size_t>(i)] = option;
        layout->addWidget(option);
    }
    layout->addStretch(1);
    return page;
}

QWidget* OptionsDialog::buildPaths() {
    QGroupBox* page = frame("fraPaths", QStringLiteral("Path Settings"));
    m_browseBox = check("chkBrowse", QStringLiteral("\"Browse\" starts in this directory:"), page);
    m_browseDir = new QLineEdit(page);
    m_browseDir->setObjectName(QStringLiteral("txtBrowseDir"));
    m_browseDir->setAccessibleName(QStringLiteral("\"Browse\" starts in this directory"));
    m_browseDirButton = button("cmdBrowseDir", QStringLiteral("..."), page);
    m_browseDirButton->setToolTip(kFolderPrompt);
    m_browseDirButton->setAccessibleName(QStringLiteral("Choose the directory"));
    m_extraDirs = new QListWidget(page);
    m_extraDirs->setObjectName(QStringLiteral("lstExtraDirs"));
    m_extraDirs->setAccessibleName(QStringLiteral("Extra Search Directories"));
    auto* add = button("cmdAdd", QStringLiteral("&Add..."), page);
    auto* remove = button("cmdRemove", QStringLiteral("&Remove"), page);
    auto* show = button("cmdShow", QStringLiteral("Show"), page);

    connect(m_browseBox, &QCheckBox::toggled, this, &OptionsDialog::updateBrowseEnabled);
    connect(m_browseDirButton, &QPushButton::clicked, this, &OptionsDialog::browseDir);
    connect(add, &QPushButton::clicked, this, &OptionsDialog::addExtraDir);
    connect(remove, &QPushButton::clicked, this, &OptionsDialog::removeExtraDir);
    connect(show, &QPushButton::clicked, this, &OptionsDialog::showExtraDir);
    connect(m_extraDirs, &QListWidget::itemDoubleClicked, this, &OptionsDialog::removeExtraDir);

    auto* browseRow = new QHBoxLayout;
    browseRow->addWidget(m_browseDir, 1);
    browseRow->addWidget(m_browseDirButton);
    auto* listButtons = new QVBoxLayout;
    listButtons->addWidget(add);
    listButtons->addWidget(remove);
    listButtons->addWidget(show);
    listButtons->addStretch(1);
    auto* listRow = new QHBoxLayout;
    listRow->addWidget(m_extraDirs, 1);
    listRow->addLayout(listButtons);

    // Where the game runs under Wine or with a code page of its own.
    m_codePage = new QLineEdit(page);
    m_codePage->setObjectName(QStringLiteral("txtCodePage"));
    m_codePage->setAccessibleName(QStringLiteral("Game code page"));
    m_codePage->setPlaceholderText(QStringLiteral("automatic"));
    m_codePage->setToolTip(QStringLiteral("The code page the game writes its file names in (1252, 1251, 1250, 932...). "
                                          "Empty: the system's, or the Wine prefix's. Used from the next start."));
    m_launchCommand = new QLineEdit(page);
    m_launchCommand->setObjectName(QStringLiteral("txtLaunchCommand"));
    m_launchCommand->setAccessibleName(QStringLiteral("Launch command"));
    m_launchCommand->setPlaceholderText(QStringLiteral("wine"));
    m_launchCommand->setToolTip(QStringLiteral("The command Play Game starts the game's executable with (for example a "
                                               "Proton or Lutris wrapper); the executable is added at its end."));
    auto* codePageLabel = new QLabel(QStringLiteral("Game &code page:"), page);
    codePageLabel->setBuddy(m_codePage);
    auto* launchLabel = new QLabel(QStringLiteral("&Launch command:"), page);
    launchLabel->setBuddy(m_launchCommand);
    auto* gameRows = new QHBoxLayout;
    gameRows->addWidget(codePageLabel);
    gameRows->addWidget(m_codePage);
    gameRows->addWidget(launchLabel);
    gameRows->addWidget(m_launchCommand, 1);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(m_browseBox);
    layout->addLayout(browseRow);
    layout->addSpacing(8);
    layout->addWidget(heading(QStringLiteral("Extra Search Directories"), page));
    layout->addLayout(listRow, 1);
    layout->addLayout(gameRows);
    return page;
}

void OptionsDialog::load() {
    if (!m_configurator) {
        m_playerAutosaveBox->setEnabled(false);
        m_monsterAutosaveBox->setEnabled(false);
        m_lockOptions[1]->setEnabled(false);
    }
    const ProfileSettings profile(m_store, m_profile);
    const AutosaveSwitches autosave = profile.autosave();
    m_podAutosaveBox->setChecked(autosave.pod);
    m_playerAutosaveBox->setChecked(autosave.player);
    m_monsterAutosaveBox->setChecked(autosave.monster);
    m_saveOnChangeBox->setChecked(autosave.onChange);
    m_saveOnExitBox->setChecked(autosave.onExit);
    // A check box shows "1" as checked and anything else as not.
    m_flatBox->setChecked(profile.flatButtons().value_or(false));
    m_slideBox->setChecked(profile.slide());
    m_autosortBox->setChecked(profile.autosort());
    m_browseBox->setChecked(profile.browse());
    m_configuratorBox->setChecked(profile.configurator());
    if (const std::optional<ScreenLock> lock = profile.lock())
        m_lockOptions[static_cast<size_t>(*lock)]->setChecked(true);
    m_browseDir->setText(fromGameText(profile.browseDir()));
    for (const std::string& dir : profile.extraDirs())
        m_extraDirs->addItem(fromGameText(dir));
    m_codePage->setText(fromGameText(profile.codePage()));
    m_launchCommand->setText(fromGameText(profile.launchCommand()));
    updateBrowseEnabled();
}

void OptionsDialog::updateBrowseEnabled() {
    const bool on = m_browseBox->isChecked();
    m_browseDir->setEnabled(on);
    m_browseDirButton->setEnabled(on);
}

void OptionsDialog::confirmConfigurator(bool checked) {
    if (!checked)
        return;
    const MessageAnswer answer = m_dialogs.message(
        QStringLiteral("WARNING!"),
        QStringLiteral("Enabling this option *will* cause Korvel to fail if the currently loaded game profile is not "
                       "Monster Truck Madness 2! Are you sure you wish to enable it?"),
        MessageIcon::Exclamation, MessageButtons::YesNo);
    if (answer != MessageAnswer::Yes)
        m_configuratorBox->setChecked(false);
}

void OptionsDialog::addExtraDir() {
    const auto folder = m_dialogs.browseFolder(kFolderPrompt, toGameText(m_browseDir->text()));
    if (!folder)
        return;
    if (const Status allowed = checkExtraDirAddition(extraDirs(), *folder); !allowed) {
        m_dialogs.message(allowed.failure().title(), allowed.failure().message, MessageIcon::Information);
        return;
    }
    m_extraDirs->addItem(fromGameText(*folder));
}

std::vector<std::string> OptionsDialog::extraDirs() const {
    std::vector<std::string> dirs;
    for (int i = 0; i < m_extraDirs->count(); ++i)
        dirs.push_back(toGameText(m_extraDirs->item(i)->text()));
    return dirs;
}

void OptionsDialog::removeExtraDir() {
    const int row = m_extraDirs->currentRow();
    QListWidgetItem* item = m_extraDirs->currentItem();
    if (row < 0 || !item || !item->isSelected())
        return;
    delete m_extraDirs->takeItem(row);
    m_extraDirs->setFocus();
    if (m_extraDirs->count() > 0)
        m_extraDirs->setCurrentRow(std::min(row, m_extraDirs->count() - 1));
}

void OptionsDialog::showExtraDir() {
    QListWidgetItem* item = m_extraDirs->currentItem();
    if (!item || !item->isSelected())
        return;
    m_dialogs.message(QStringLiteral("Information"), item->text(), MessageIcon::Information);
}

void OptionsDialog::browseDir() {
    if (const auto folder = m_dialogs.browseFolder(kFolderPrompt, toGameText(m_browseDir->text())))
        m_browseDir->setText(fromGameText(*folder));
}

void OptionsDialog::focusPage(int index) {
    QWidget* target = nullptr;
    switch (index) {
    case 0:
        target = m_configuratorBox;
        break;
    case 1:
        target = m_podAutosaveBox;
        break;
    case 2:
        target = m_lock->checkedButton() && m_lock->checkedButton()->isEnabled() ? m_lock->checkedButton()
                                                                                 : m_lockOptions[0];
        break;
    case 3:
        target = m_browseBox;
        break;
    case 4:
        target = m_web->firstBox();
        break;
    default:
        return;
    }
    target->setFocus(Qt::TabFocusReason);
}

std::optional<std::string> OptionsDialog::typedFolder(const QString& text) {
    if (!m_paths || text.trimmed().isEmpty())
        return toGameText(text);
    const Result<std::string> game = m_paths->typedGamePath(text);
    if (!game) {
        m_dialogs.message(QStringLiteral("Options"), game.failure().message, MessageIcon::Exclamation);
        return std::nullopt;
    }
    return *game;
}

void OptionsDialog::save() {
    const QString codePage = m_codePage->text().trimmed();
    if (!codePage.isEmpty() && !GameCodec::fromText(codePage)) {
        m_dialogs.message(QStringLiteral("Options"),
                          QStringLiteral("\"%1\" is not a code page Korvel can convert. Name a Windows ANSI code page "
                                         "such as 1252, 1251, 1250 or 932, or leave the box empty.")
                              .arg(codePage),
                          MessageIcon::Exclamation);
        m_tabs->setCurrentIndex(3);
        return;
    }
    const std::optional<std::string> browseDir = typedFolder(m_browseDir->text());
    const std::optional<std::string> launchCommand = encodeGameText(m_launchCommand->text().trimmed());
    if (!browseDir || !launchCommand) {
        if (!launchCommand)
            m_dialogs.message(QStringLiteral("Options"), unrepresentableMessage(m_launchCommand->text()),
                              MessageIcon::Exclamation);
        m_tabs->setCurrentIndex(3);
        return;
    }
    if (QLineEdit* unusable = m_web->refuseUnusable(m_dialogs)) {
        m_tabs->setCurrentWidget(m_web);
        unusable->setFocus();
        return;
    }
    ProfileSettings profile(m_store, m_profile);
    profile.createKey();
    AutosaveSwitches autosave;
    autosave.pod = m_podAutosaveBox->isChecked();
    autosave.player = m_playerAutosaveBox->isChecked();
    autosave.monster = m_monsterAutosaveBox->isChecked();
    autosave.onChange = m_saveOnChangeBox->isChecked();
    autosave.onExit = m_saveOnExitBox->isChecked();
    profile.setAutosave(autosave);
    profile.setFlatButtons(m_flatBox->isChecked());
    profile.setSlide(m_slideBox->isChecked());
    profile.setConfigurator(m_configuratorBox->isChecked());
    profile.setAutosort(m_autosortBox->isChecked());
    profile.setBrowse(m_browseBox->isChecked());
    profile.setBrowseDir(*browseDir);
    profile.setExtraDirs(extraDirs());
    const int lock = m_lock->checkedId();
    profile.setLock(lock > 0 && lock <= 3 ? static_cast<ScreenLock>(lock) : ScreenLock::None);
    profile.setCodePage(codePage.toStdString());
    profile.setLaunchCommand(*launchCommand);
    m_web->save();
    emit saved();
    accept();
}

} // namespace korvel
