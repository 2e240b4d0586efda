#include "extractor_pane.h"

#include "file_browser.h"
#include "listing_model.h"

#include "configurator/track_tools.h"
#include "platform/dialogs.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/services.h"
#include "pod/extraction.h"
#include "pod/listing_export.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "ui/main_window.h"
#include "ui/recent_archives.h"
#include "ui/widgets/gold_button.h"
#include "ui/widgets/twips.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMouseEvent>
#include <QProgressBar>
#include <QTableView>

#include <algorithm>

namespace korvel {

namespace {

// How often a running extraction lets the window repaint.
constexpr qint64 kRepaintMilliseconds = 40;

struct Caption {
    const char* name;
    const char* text;
};

// `mnuConvertTo` 1-5, in the order of the race-type digits they write.
constexpr Caption kConvertCaptions[] = {
    {"mnuConvertTo_1", "to &Drag"},   {"mnuConvertTo_2", "to &Circuit"},  {"mnuConvertTo_3", "to &Rally"},
    {"mnuConvertTo_4", "to R&umble"}, {"mnuConvertTo_5", "to &Bomb Tag"},
};

bool isCorruptFault(const Failure& failure) {
    return failure.kind == FailureKind::ReadError && failure.message == corruptPodText();
}

Failure archiveAlreadyOpen() {
    return unexpectedError(unexpectedErrorText(55, QStringLiteral("File already open")));
}

} // namespace

ExtractorPane::ExtractorPane(Services& services, Session& session, SettingsStore& store, QWidget* parent)
    : QWidget(parent), m_services(services), m_session(session), m_store(store) {
    setObjectName(QStringLiteral("extractorPane"));
    buildControls();
    buildFileMenu();
}

ExtractorPane::~ExtractorPane() = default;

void ExtractorPane::buildControls() {
    m_browser = new FileBrowser(m_services.files, m_services.dialogs, this);
    m_browser->driveBox()->setGeometry(ui::twipsRect(120, 180, 1815, 315, this));
    m_browser->dirBox()->setGeometry(ui::twipsRect(120, 555, 1815, 2085, this));
    m_browser->fileBox()->setGeometry(ui::twipsRect(120, 2700, 1815, 1935, this));
    connect(m_browser, &FileBrowser::archiveChosen, this,
            [this](const std::string& folder, const std::string& file) { ListPOD(folder, file); });

    m_model = new ListingModel(this);
    m_list = new QTableView(this);
    m_list->setObjectName(QStringLiteral("lstFiles"));
    m_list->setModel(m_model);
    m_list->setGeometry(ui::twipsRect(2055, 180, 4755, 2760, this));
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setShowGrid(false);
    m_list->setWordWrap(false);
    m_list->setTabKeyNavigation(false);
    m_list->verticalHeader()->hide();
    // Fixed row heights and column widths keep very long lists from being measured row by row.
    m_list->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_list->verticalHeader()->setDefaultSectionSize(m_list->fontMetrics().height() + 4);
    m_list->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    m_list->horizontalHeader()->setHighlightSections(false);
    // The number columns are as wide as their captions; the name takes what is left.
    const QFontMetrics header(m_list->horizontalHeader()->font());
    int numbers = 0;
    for (int column = ListingModel::SizeColumn; column < ListingModel::ColumnCount; ++column) {
        const int width = header.horizontalAdvance(m_model->headerData(column, Qt::Horizontal).toString()) + 18;
        m_list->setColumnWidth(column, width);
        numbers += width;
    }
    m_list->setColumnWidth(ListingModel::NameColumn,
                           std::max(ui::twipsToPixels(1200, this), m_list->width() - numbers - 22));
    m_list->installEventFilter(this);
    m_list->viewport()->installEventFilter(this);
    connect(m_list, &QTableView::doubleClicked, this, [this] { extractFromList(); });

    struct Box {
        QLineEdit** edit;
        const char* name;
        const char* label;
        const char* labelName;
    };
    const Box boxes[] = {
        {&m_name, "txtName", "POD Name:", "lblName"},       {&m_size, "txtSize", "POD Size:", "lblSize"},
        {&m_type, "txtType", "POD Type:", "lblType"},       {&m_editor, "txtEditor", "Editor Used:", "lblEditor"},
        {&m_total, "txtTotal", "Total Files:", "lblTotal"},
    };
    int top = 3030;
    for (const Box& box : boxes) {
        auto* label = new QLabel(QString::fromLatin1(box.label), this);
        label->setObjectName(QString::fromLatin1(box.labelName));
        label->setGeometry(ui::twipsRect(2055, top, 1200, 285, this));
        auto* edit = new QLineEdit(this);
        edit->setObjectName(QString::fromLatin1(box.name));
        edit->setReadOnly(true);
        edit->setGeometry(ui::twipsRect(3300, top, 3510, 285, this));
        *box.edit = edit;
        top += 330;
    }

    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("prgExtract"));
    m_progress->setTextVisible(false);
    m_progress->setRange(0, 100);
    m_progress->setValue(0);
    m_progress->setGeometry(ui::twipsRect(120, 4740, 6690, 210, this));

    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblExtract"));
    m_status->setGeometry(ui::twipsRect(120, 5040, 4320, 375, this));
    m_status->setTextFormat(Qt::PlainText);

    m_export = new ui::GoldButton(QStringLiteral("E&xport"), this);
    m_export->setObjectName(QStringLiteral("cmdExport"));
    m_export->setToolTip(QStringLiteral("Write the list of files to a text file beside the POD"));
    m_export->setGeometry(ui::twipsRect(4560, 5040, 1065, 375, this));
    m_extract = new ui::GoldButton(QStringLiteral("&Extract"), this);
    m_extract->setObjectName(QStringLiteral("cmdExtract"));
    m_extract->setToolTip(QStringLiteral("Extract the selected files into the folder shown on the left"));
    m_extract->setGeometry(ui::twipsRect(5745, 5040, 1065, 375, this));
    connect(m_export, &ui::GoldButton::clicked, this, &ExtractorPane::exportClicked);
    connect(m_extract, &ui::GoldButton::clicked, this, &ExtractorPane::extractClicked);
}

void ExtractorPane::buildFileMenu() {
    m_menu = new QMenu(this);
    m_menu->setObjectName(QStringLiteral("mnuFileS"));
    m_extractHere = m_menu->addAction(QStringLiteral("&Extract"));
    m_extractHere->setObjectName(QStringLiteral("mnuExtract"));
    m_menu->setDefaultAction(m_extractHere);
    m_extractTo = m_menu->addAction(QStringLiteral("Extract &To..."));
    m_extractTo->setObjectName(QStringLiteral("mnuExtractTo"));
    m_separator = m_menu->addSeparator();
    m_separator->setObjectName(QStringLiteral("mnuFilesSep1"));
    m_convert = m_menu->addMenu(QStringLiteral("&Convert"));
    m_convert->setObjectName(QStringLiteral("mnuConvert"));
    m_convert->menuAction()->setObjectName(QStringLiteral("mnuConvert"));
    int index = 1;
    for (const Caption& caption : kConvertCaptions) {
        QAction* action = m_convert->addAction(QString::fromLatin1(caption.text));
        action->setObjectName(QString::fromLatin1(caption.name));
        action->setProperty("index", index);
        connect(action, &QAction::triggered, this, [this, index] { convertTo(index); });
        ++index;
    }
    m_compatiblize = m_menu->addAction(QStringLiteral("C&ompatiblize"));
    m_compatiblize->setObjectName(QStringLiteral("mnuCompatiblize"));

    connect(m_extractHere, &QAction::triggered, this, &ExtractorPane::extractHere);
    connect(m_extractTo, &QAction::triggered, this, &ExtractorPane::extractTo);
    connect(m_compatiblize, &QAction::triggered, this, &ExtractorPane::compatiblize);
    connect(m_menu, &QMenu::aboutToHide, this, &ExtractorPane::restoreFileMenu);
}

void ExtractorPane::attachTo(ui::MainWindow& window) {
    m_window = &window;
    setRecentArchives(window.recentArchives());
}

void ExtractorPane::setRecentArchives(ui::RecentArchives* recent) {
    m_recent = recent;
}

void ExtractorPane::startBrowsingAtGameFolder() {
    m_browser->setGameFolder(m_session.location);
    if (!m_session.location.empty())
        m_browser->setDrive(m_session.location.front());
    m_browser->setPath(m_session.location);
}

void ExtractorPane::prepareExtractionProgress() {
    m_progress->setRange(0, 100);
}

bool ExtractorPane::autosort() {
    const QString value = fromGameText(m_store.readProfile(m_session.currentGame, settings::kAutosort)).trimmed();
    bool number = false;
    const double asNumber = value.toDouble(&number);
    return number ? asNumber != 0 : value.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0;
}

void ExtractorPane::listArchive(const std::string& folder, const std::string& file) {
    ListPOD(folder, file);
}

bool ExtractorPane::ListPOD(const std::string& folder, const std::string& file) {
    if (m_working)
        return false;
    m_folder = folder;
    m_file = file;
    m_browser->setGameFolder(m_session.location);
    if (!folder.empty())
        m_browser->setDrive(folder.front());
    m_browser->setPath(folder);

    m_busy = true;
    QElapsedTimer clock;
    clock.start();
    m_export->setEnabled(true);
    m_extract->setEnabled(true);
    m_list->setEnabled(true);
    m_model->clear();

    if (m_archiveLeftOpen) {
        // The extraction that stopped midway still held the archive; this listing closes it.
        m_archiveLeftOpen = false;
        m_busy = false;
        report(archiveAlreadyOpen());
        return false;
    }
    Result<PodDirectory> listing = korvel::ListPOD(m_services.files, folder + file);
    if (!listing) {
        m_busy = false;
        m_model->clear();
        report(listing.failure());
        return false;
    }

    m_name->setText(fromGameText(listing->nameText()));
    m_size->setText(fromGameText(listing->sizeText()));
    m_type->setText(fromGameText(listing->typeText));
    m_editor->setText(fromGameText(listing->editorText));
    m_total->setText(fromGameText(listing->totalText()));
    m_model->setListing(std::move(*listing), autosort());
    if (m_model->rowCount() > 0) {
        m_list->setCurrentIndex(m_model->index(0, 0));
        m_list->scrollToTop();
    }
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    m_status->setText(listedStatusText(m_model->listing(), seconds));
    if (m_recent)
        m_recent->remember(folder, file);
    m_busy = false;
    return true;
}

std::vector<size_t> ExtractorPane::selectedEntries() const {
    QModelIndexList rows = m_list->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    std::vector<size_t> entries;
    entries.reserve(static_cast<size_t>(rows.size()));
    for (const QModelIndex& index : rows)
        entries.push_back(m_model->entryIndex(index.row()));
    return entries;
}

std::optional<int> ExtractorPane::selectedRow() const {
    const QModelIndex current = m_list->currentIndex();
    if (current.isValid() && m_list->selectionModel()->isRowSelected(current.row()))
        return current.row();
    const QModelIndexList rows = m_list->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return std::nullopt;
    return rows.front().row();
}

void ExtractorPane::setExtractControlsEnabled(bool enabled) {
    if (m_recent)
        m_recent->combo()->setEnabled(enabled);
    m_extract->setEnabled(enabled);
    m_export->setEnabled(enabled);
    m_browser->fileBox()->setEnabled(enabled);
}

void ExtractorPane::recover() {
    m_archiveLeftOpen = false;
    setExtractControlsEnabled(true);
    m_busy = false;
}

void ExtractorPane::report(const Failure& failure) {
    m_services.dialogs.message(failure.title(), failure.message, MessageIcon::Critical);
}

bool ExtractorPane::ExtractFiles(const std::vector<size_t>& entries, const std::string& destination, OnFault onFault) {
    if (m_working)
        return false;
    m_busy = true;
    setExtractControlsEnabled(false);
    m_progress->setRange(0, static_cast<int>(entries.size()));
    m_progress->setValue(0);

    std::optional<Failure> fault;
    bool opened = false;
    if (m_archiveLeftOpen) {
        fault = archiveAlreadyOpen();
    } else {
        m_working = true;
        QElapsedTimer sincePaint;
        sincePaint.start();
        const auto progress = [&](int done, int, std::string_view name) {
            opened = true;
            m_progress->setValue(done);
            if (!name.empty())
                m_status->setText(extractingText(name));
            if (sincePaint.elapsed() >= kRepaintMilliseconds) {
                QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
                sincePaint.restart();
            }
        };
        Result<ExtractSummary> done =
            korvel::ExtractFiles(m_services.files, m_model->listing(), entries, destination, {}, progress);
        m_working = false;
        if (done) {
            m_progress->setValue(static_cast<int>(entries.size()));
            m_status->setText(extractedSummaryText(*done));
            setExtractControlsEnabled(true);
            m_busy = false;
            return true;
        }
        fault = done.failure();
    }

    // The run stopped midway: the busy flag stays set and the controls stay disabled.
    m_archiveLeftOpen = m_archiveLeftOpen || opened;
    if (isCorruptFault(*fault)) {
        report(*fault);
        return false;
    }
    if (onFault == OnFault::Report) {
        report(*fault);
        recover();
    }
    return false;
}

void ExtractorPane::extractClicked() {
    if (!selectedRow())
        return;
    ExtractFiles(selectedEntries(), m_browser->path(), OnFault::Silent);
}

void ExtractorPane::extractHere() {
    ExtractFiles(selectedEntries(), m_browser->path(), OnFault::Report);
}

void ExtractorPane::extractTo() {
    const std::optional<std::string> folder =
        m_services.dialogs.browseFolder(QStringLiteral("Extract to..."), m_session.location);
    if (!folder || folder->empty())
        return;
    ExtractFiles(selectedEntries(), *folder, OnFault::Silent);
}

void ExtractorPane::extractFromList() {
    ExtractFiles(selectedEntries(), m_browser->path(), OnFault::Report);
}

void ExtractorPane::massExtract() {
    const QString count = QString::number(m_browser->fileBox()->count());
    const QString text = QStringLiteral("All ") + count + QStringLiteral(" PODs in \"") +
                         fromGameText(m_session.location) +
                         QStringLiteral("\" will be extracted. Are you sure you wish to continue?");
    if (m_services.dialogs.message(QStringLiteral("Question"), text, MessageIcon::Question, MessageButtons::YesNo) ==
        MessageAnswer::Yes)
        runMassExtract();
}

void ExtractorPane::runMassExtract() {
    if (m_working)
        return;
    if (m_window)
        m_window->ShowExtractor(QStringLiteral("0"));
    if (!m_session.location.empty())
        m_browser->setDrive(m_session.location.front());
    m_browser->setPath(m_session.location);
    const std::vector<std::string> names = m_browser->fileNames();
    for (const std::string& name : names) {
        const std::string folder = withTrailingBackslash(m_browser->path());
        const std::vector<std::string> found = m_services.files.search(folder + name, SearchFilter::FilesAndFolders);
        if (found.size() != 1 || upperGame(found.front()) != upperGame(name)) {
            m_services.dialogs.message(QStringLiteral("Read Error"), fileNotFoundText(), MessageIcon::Critical);
            m_browser->refreshFiles();
            return;
        }
        if (!ListPOD(folder, name))
            continue; // the listing's fault has been shown; the next archive follows
        m_list->selectAll();
        std::vector<size_t> entries;
        entries.reserve(static_cast<size_t>(m_model->rowCount()));
        for (int row = 0; row < m_model->rowCount(); ++row)
            entries.push_back(m_model->entryIndex(row));
        // A run that stops midway stops the whole mass extraction.
        if (!ExtractFiles(entries, m_session.location, OnFault::Report))
            return;
    }
}

void ExtractorPane::exportClicked() {
    if (m_model->rowCount() == 0)
        return;
    const Result<std::string> written = exportListing(m_services.files, m_model->listing(), m_model->isSorted());
    if (!written) {
        report(written.failure());
        return;
    }
    if (written->empty())
        return;
    m_services.dialogs.message(QStringLiteral("Information"), exportCreatedText(fromGameText(*written)),
                               MessageIcon::Information);
}

void ExtractorPane::convertTo(int index) {
    const std::optional<int> row = selectedRow();
    if (!row || index < 1 || index > 5 || m_working)
        return;
    const Result<qint64> patched = convertRaceType(m_services.files, m_folder + m_file, m_model->entryAt(*row).start,
                                                   static_cast<RaceType>(index));
    if (!patched) {
        report(patched.failure());
        return;
    }
    ListPOD(m_folder, m_file);
}

void ExtractorPane::compatiblize() {
    const std::optional<int> row = selectedRow();
    if (!row || m_working)
        return;
    const Result<qint64> patched = compatiblizeTruck(m_services.files, m_folder + m_file, m_model->entryAt(*row).start);
    if (!patched) {
        report(patched.failure());
        return;
    }
    m_services.dialogs.message(QStringLiteral("Information"), compatiblizedText(), MessageIcon::Information);
}

QMenu* ExtractorPane::showFileMenu(const QPoint& globalPos) {
    std::string suffix;
    if (const std::optional<int> row = selectedRow()) {
        const std::string name = upperGame(trimTrailingBlanks(m_model->entryAt(*row).name));
        suffix = name.size() >= 4 ? name.substr(name.size() - 4) : name;
    }
    if (suffix == ".SIT") {
        m_compatiblize->setVisible(false);
    } else if (suffix != ".TRK") {
        m_separator->setVisible(false);
        m_convert->menuAction()->setVisible(false);
        m_compatiblize->setVisible(false);
    }
    m_menu->popup(globalPos);
    return m_menu;
}

void ExtractorPane::restoreFileMenu() {
    m_separator->setVisible(true);
    m_convert->menuAction()->setVisible(true);
    m_compatiblize->setVisible(true);
}

bool ExtractorPane::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            extractFromList();
            return true;
        }
    } else if (watched == m_list->viewport() && event->type() == QEvent::MouseButtonRelease) {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::RightButton) {
            showFileMenu(mouse->globalPosition().toPoint());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
