#include "extractor_pane.h"

#include "create_pod_dialog.h"
#include "file_browser.h"
#include "listing_model.h"
#include "recent_archives_box.h"

#include "configurator/track_tools.h"
#include "platform/dialogs.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/services.h"
#include "pod/extraction.h"
#include "pod/listing_export.h"
#include "pod/pod_check.h"
#include "pod/pod_pack.h"
#include "startup/session.h"
#include "startup/settings_store.h"
#include "startup/typed_settings.h"
#include "ui/kit/anchors.h"
#include "ui/kit/gold_button.h"
#include "ui/kit/progress_window.h"
#include "ui/kit/twips.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMouseEvent>
#include <QProgressBar>
#include <QStyle>
#include <QTableView>
#include <QToolTip>

#include <algorithm>

namespace korvel {

namespace {

// The pane's designed size in twips; it grows with the window.
constexpr int kPaneWidth = 6930;
constexpr int kPaneHeight = 6000;

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

} // namespace

ExtractorPane::ExtractorPane(Services& services, const Session& session, SettingsStore& store, QWidget* parent)
    : QWidget(parent), m_services(services), m_session(session), m_store(store) {
    setObjectName(QStringLiteral("extractorPane"));
    buildControls();
    buildFileMenu();
}

ExtractorPane::~ExtractorPane() = default;

void ExtractorPane::buildControls() {
    // First in the tab order: the recent list is the quickest way back to an archive.
    m_recentBox = new RecentArchivesBox(
        m_services.files, [this] { return listedArchive(); }, this);
    m_recentBox->setGeometry(ui::twipsRect(120, 5520, 6690, 375, this));
    connect(m_recentBox, &RecentArchivesBox::archiveChosen, this,
            [this](const std::string& folder, const std::string& file) { ListPOD(folder, file); });

    m_browser = new FileBrowser(m_services.files, m_services.dialogs, this);
    m_browser->driveBox()->setGeometry(ui::twipsRect(120, 180, 1815, 315, this));
    m_browser->dirBox()->setGeometry(ui::twipsRect(120, 555, 1815, 2085, this));
    m_browser->fileBox()->setGeometry(ui::twipsRect(120, 2700, 1815, 1935, this));
    connect(m_browser, &FileBrowser::archiveChosen, this,
            [this](const std::string& folder, const std::string& file) { ListPOD(folder, file); });

    m_model = new ListingModel(this);
    m_fileList = new QTableView(this);
    m_fileList->setObjectName(QStringLiteral("lstFiles"));
    m_fileList->setAccessibleName(QStringLiteral("Files in the POD"));
    m_fileList->setModel(m_model);
    m_fileList->setGeometry(ui::twipsRect(2055, 180, 4755, 2760, this));
    m_fileList->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_fileList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_fileList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_fileList->setShowGrid(false);
    m_fileList->setWordWrap(false);
    m_fileList->setTabKeyNavigation(false);
    m_fileList->verticalHeader()->hide();
    // Fixed row heights and column widths keep very long lists from being measured row by row.
    m_fileList->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_fileList->verticalHeader()->setDefaultSectionSize(m_fileList->fontMetrics().height() + 4);
    m_fileList->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    m_fileList->horizontalHeader()->setHighlightSections(false);
    // The number columns are as wide as their captions; the name takes what is left.
    const QFontMetrics header(m_fileList->horizontalHeader()->font());
    for (int column = ListingModel::SizeColumn; column < ListingModel::ColumnCount; ++column) {
        const int width = header.horizontalAdvance(m_model->headerData(column, Qt::Horizontal).toString()) + 18;
        m_fileList->setColumnWidth(column, width);
        m_numbersWidth += width;
    }
    fitNameColumn();
    m_fileList->installEventFilter(this);
    m_fileList->viewport()->installEventFilter(this);
    connect(m_fileList, &QTableView::doubleClicked, this, [this] { extractFromList(); });

    struct Box {
        QLineEdit** edit;
        const char* name;
        const char* label;
        const char* labelName;
    };
    const Box boxes[] = {
        {&m_nameBox, "txtName", "POD Name:", "lblName"},       {&m_sizeBox, "txtSize", "POD Size:", "lblSize"},
        {&m_typeBox, "txtType", "POD Type:", "lblType"},       {&m_editorBox, "txtEditor", "Editor Used:", "lblEditor"},
        {&m_totalBox, "txtTotal", "Total Files:", "lblTotal"},
    };
    int top = 3030;
    for (const Box& box : boxes) {
        auto* label = new QLabel(QString::fromLatin1(box.label), this);
        label->setObjectName(QString::fromLatin1(box.labelName));
        label->setGeometry(ui::twipsRect(2055, top, 1200, 285, this));
        auto* edit = new QLineEdit(this);
        edit->setObjectName(QString::fromLatin1(box.name));
        // Announced by its caption, without the colon.
        edit->setAccessibleName(label->text().chopped(1));
        label->setBuddy(edit);
        edit->setReadOnly(true);
        edit->setGeometry(ui::twipsRect(3300, top, 3510, 285, this));
        *box.edit = edit;
        top += 330;
    }

    m_progressBar = new QProgressBar(this);
    m_progressBar->setObjectName(QStringLiteral("prgExtract"));
    m_progressBar->setTextVisible(false);
    m_progressBar->setRange(0, 100);
    m_progressBar->setValue(0);
    m_progressBar->setGeometry(ui::twipsRect(120, 4740, 6690, 210, this));

    m_statusLabel = new QLabel(this);
    m_statusLabel->setObjectName(QStringLiteral("lblExtract"));
    m_statusLabel->setGeometry(ui::twipsRect(120, 5040, 4320, 375, this));
    m_statusLabel->setTextFormat(Qt::PlainText);

    m_exportButton = new ui::GoldButton(QStringLiteral("E&xport"), this);
    m_exportButton->setObjectName(QStringLiteral("cmdExport"));
    m_exportButton->setToolTip(QStringLiteral("Write the list of files to a text file beside the POD"));
    m_exportButton->setGeometry(ui::twipsRect(4560, 5040, 1065, 375, this));
    m_extractButton = new ui::GoldButton(QStringLiteral("&Extract"), this);
    m_extractButton->setObjectName(QStringLiteral("cmdExtract"));
    m_extractButton->setToolTip(QStringLiteral("Extract the selected files into the folder shown on the left"));
    m_extractButton->setGeometry(ui::twipsRect(5745, 5040, 1065, 375, this));
    connect(m_exportButton, &ui::GoldButton::clicked, this, &ExtractorPane::exportClicked);
    connect(m_extractButton, &ui::GoldButton::clicked, this, &ExtractorPane::extractClicked);
    anchorControls();
}

void ExtractorPane::anchorControls() {
    using ui::Anchors;
    m_anchors = std::make_unique<Anchors>(*this, QSize(kPaneWidth, kPaneHeight));
    m_anchors->add(m_browser->fileBox(), Anchors::GrowHeight);
    m_anchors->add(m_fileList, Anchors::GrowWidth | Anchors::GrowHeight);
    for (QLineEdit* box : {m_nameBox, m_sizeBox, m_typeBox, m_editorBox, m_totalBox}) {
        m_anchors->add(box, Anchors::GrowWidth | Anchors::FollowBottom);
        if (QWidget* label = findChild<QLabel*>(box->objectName().replace(0, 3, QStringLiteral("lbl"))))
            m_anchors->add(label, Anchors::FollowBottom);
    }
    m_anchors->add(m_progressBar, Anchors::GrowWidth | Anchors::FollowBottom);
    m_anchors->add(m_statusLabel, Anchors::GrowWidth | Anchors::FollowBottom);
    m_anchors->add(m_exportButton, Anchors::FollowRight | Anchors::FollowBottom);
    m_anchors->add(m_extractButton, Anchors::FollowRight | Anchors::FollowBottom);
    m_anchors->add(m_recentBox, Anchors::GrowWidth | Anchors::FollowBottom);
}

void ExtractorPane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_anchors->place();
    fitNameColumn();
}

void ExtractorPane::fitNameColumn() {
    m_fileList->setColumnWidth(ListingModel::NameColumn,
                               std::max(ui::twipsToPixels(1200, this), m_fileList->width() - m_numbersWidth - 22));
}

void ExtractorPane::buildFileMenu() {
    m_fileMenu = new QMenu(this);
    m_fileMenu->setObjectName(QStringLiteral("mnuFileS"));
    m_extractHereAction = m_fileMenu->addAction(QStringLiteral("&Extract"));
    m_extractHereAction->setObjectName(QStringLiteral("mnuExtract"));
    m_fileMenu->setDefaultAction(m_extractHereAction);
    m_extractToAction = m_fileMenu->addAction(QStringLiteral("Extract &To..."));
    m_extractToAction->setObjectName(QStringLiteral("mnuExtractTo"));
    m_trackToolsSeparator = m_fileMenu->addSeparator();
    m_trackToolsSeparator->setObjectName(QStringLiteral("mnuFilesSep1"));
    m_convertMenu = m_fileMenu->addMenu(QStringLiteral("&Convert"));
    m_convertMenu->setObjectName(QStringLiteral("mnuConvert"));
    m_convertMenu->menuAction()->setObjectName(QStringLiteral("mnuConvert"));
    int index = 1;
    for (const Caption& caption : kConvertCaptions) {
        QAction* action = m_convertMenu->addAction(QString::fromLatin1(caption.text));
        action->setObjectName(QString::fromLatin1(caption.name));
        action->setProperty("index", index);
        connect(action, &QAction::triggered, this, [this, index] { mnuConvertTo_Click(index); });
        ++index;
    }
    m_compatiblizeAction = m_fileMenu->addAction(QStringLiteral("C&ompatiblize"));
    m_compatiblizeAction->setObjectName(QStringLiteral("mnuCompatiblize"));

    connect(m_extractHereAction, &QAction::triggered, this, &ExtractorPane::extractHere);
    connect(m_extractToAction, &QAction::triggered, this, &ExtractorPane::extractTo);
    connect(m_compatiblizeAction, &QAction::triggered, this, &ExtractorPane::mnuCompatiblize_Click);
    connect(m_fileMenu, &QMenu::aboutToHide, this, &ExtractorPane::restoreFileMenu);
}

void ExtractorPane::startBrowsingAtGameFolder() {
    m_browser->setGameFolder(m_session.location);
    if (!m_session.location.empty())
        m_browser->setDrive(m_session.location.front());
    m_browser->setPath(m_session.location);
}

void ExtractorPane::prepareExtractionProgress() {
    m_progressBar->setRange(0, 100);
}

void ExtractorPane::loadRecentArchives() {
    QStringList entries;
    for (const std::string& entry : ProfileSettings(m_store, m_session.currentGame).recent())
        entries << fromGameText(entry);
    m_recentBox->setEntries(entries);
}

void ExtractorPane::saveRecentArchives() {
    std::vector<std::string> entries;
    for (const QString& entry : m_recentBox->entries())
        entries.push_back(toGameText(entry));
    ProfileSettings(m_store, m_session.currentGame).setRecent(entries);
}

bool ExtractorPane::autosort() {
    return ProfileSettings(m_store, m_session.currentGame).autosort();
}

bool ExtractorPane::ListPOD(const std::string& folder, const std::string& file) {
    if (m_working)
        return false;
    beginListing(folder, file);
    QElapsedTimer clock;
    clock.start();
    return showListing(korvel::ListPOD(m_services.files, folder + file), clock);
}

void ExtractorPane::beginListing(const std::string& folder, const std::string& file) {
    m_folder = folder;
    m_file = file;
    m_browser->setGameFolder(m_session.location);
    if (!folder.empty())
        m_browser->setDrive(folder.front());
    m_browser->setPath(folder);

    m_busy = true;
    m_exportButton->setEnabled(true);
    m_extractButton->setEnabled(true);
    m_fileList->setEnabled(true);
    m_model->clear();
}

bool ExtractorPane::showListing(Result<PodDirectory> listing, const QElapsedTimer& clock) {
    if (!listing) {
        m_busy = false;
        m_model->clear();
        report(listing.failure());
        return false;
    }
    m_nameBox->setText(fromGameText(listing->nameText()));
    m_sizeBox->setText(fromGameText(listing->sizeText()));
    m_typeBox->setText(fromGameText(listing->typeText));
    m_editorBox->setText(fromGameText(listing->editorText));
    m_totalBox->setText(fromGameText(listing->totalText()));
    m_model->setListing(std::move(*listing), autosort());
    if (m_model->rowCount() > 0) {
        m_fileList->setCurrentIndex(m_model->index(0, 0));
        m_fileList->scrollToTop();
    }
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    m_statusLabel->setText(listedStatusText(m_model->listing(), seconds));
    m_recentBox->remember(m_folder, m_file);
    m_busy = false;
    return true;
}

std::vector<size_t> ExtractorPane::selectedEntries() const {
    QModelIndexList rows = m_fileList->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    std::vector<size_t> entries;
    entries.reserve(static_cast<size_t>(rows.size()));
    for (const QModelIndex& index : rows)
        entries.push_back(m_model->entryIndex(index.row()));
    return entries;
}

std::optional<int> ExtractorPane::selectedRow() const {
    const QModelIndex current = m_fileList->currentIndex();
    if (current.isValid() && m_fileList->selectionModel()->isRowSelected(current.row()))
        return current.row();
    const QModelIndexList rows = m_fileList->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return std::nullopt;
    return rows.front().row();
}

void ExtractorPane::setExtractControlsEnabled(bool enabled) {
    m_recentBox->combo()->setEnabled(enabled);
    m_extractButton->setEnabled(enabled);
    m_exportButton->setEnabled(enabled);
    m_browser->fileBox()->setEnabled(enabled);
}

void ExtractorPane::recover() {
    setExtractControlsEnabled(true);
    m_busy = false;
}

void ExtractorPane::explainBusy() {
    m_statusLabel->setText(QStringLiteral("Please wait: Korvel can close once the extraction has finished."));
}

QString ExtractorPane::nameToolTip(const QModelIndex& index) const {
    if (!index.isValid() || index.column() != ListingModel::NameColumn)
        return QString();
    const QString name = index.data().toString();
    // The cell's text area: the column less the view's margins on both sides.
    const int room = m_fileList->columnWidth(ListingModel::NameColumn) -
                     2 * (m_fileList->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, m_fileList) + 1);
    return m_fileList->fontMetrics().horizontalAdvance(name) > room ? name : QString();
}

void ExtractorPane::report(const Failure& failure) {
    m_services.dialogs.message(failure.title(), failure.message, MessageIcon::Critical);
}

bool ExtractorPane::ExtractFiles(const std::vector<size_t>& entries, const std::string& destination) {
    if (m_working)
        return false;
    beginRun(entries.size());
    QElapsedTimer sincePaint;
    sincePaint.start();
    Result<ExtractSummary> done =
        korvel::ExtractFiles(m_services.files, m_model->listing(), entries, destination, {},
                             [&](int count, int, std::string_view name) { showProgress(count, name, sincePaint); });
    m_working = false;
    if (!done) {
        stopRun(done.failure());
        return false;
    }
    endRun(*done, entries.size());
    return true;
}

void ExtractorPane::beginRun(size_t entries) {
    m_busy = true;
    setExtractControlsEnabled(false);
    // A range of 0 to 0 is Qt's endless busy animation; with nothing to extract the bar stays idle.
    m_progressBar->setRange(0, std::max(1, static_cast<int>(entries)));
    m_progressBar->setValue(0);
    m_working = true;
}

void ExtractorPane::showProgress(int done, std::string_view name, QElapsedTimer& sincePaint) {
    m_progressBar->setValue(done);
    if (!name.empty())
        m_statusLabel->setText(extractingText(name));
    if (sincePaint.elapsed() >= kRepaintMilliseconds) {
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        sincePaint.restart();
    }
}

void ExtractorPane::endRun(const ExtractSummary& summary, size_t entries) {
    m_progressBar->setValue(static_cast<int>(entries));
    m_statusLabel->setText(extractedSummaryText(summary));
    setExtractControlsEnabled(true);
    m_busy = false;
}

void ExtractorPane::stopRun(const Failure& fault) {
    // Whatever stopped the run (a corrupt directory, a folder that cannot be made, a read-only or
    // full destination), the user reads why and the pane is back in working order.
    report(fault);
    recover();
}

void ExtractorPane::extractClicked() {
    if (!selectedRow())
        return;
    ExtractFiles(selectedEntries(), m_browser->path());
}

void ExtractorPane::extractHere() {
    ExtractFiles(selectedEntries(), m_browser->path());
}

void ExtractorPane::extractTo() {
    const std::optional<std::string> folder =
        m_services.dialogs.browseFolder(QStringLiteral("Extract to..."), m_session.location);
    if (!folder || folder->empty())
        return;
    ExtractFiles(selectedEntries(), *folder);
}

void ExtractorPane::extractFromList() {
    ExtractFiles(selectedEntries(), m_browser->path());
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
    emit showRequested();
    if (!m_session.location.empty())
        m_browser->setDrive(m_session.location.front());
    m_browser->setPath(m_session.location);

    bool extracting = false; // between an archive's first and last entry
    size_t rowCount = 0;
    QElapsedTimer sincePaint;
    MassExtractHooks hooks;
    hooks.listed = [&](const std::string& path, const Result<PodDirectory>& listing) {
        QElapsedTimer clock;
        clock.start();
        // A listing's fault is shown and the next archive follows.
        beginListing(FolderOf(path), FileNameOf(path));
        return showListing(listing, clock);
    };
    hooks.rows = [&](const PodDirectory&) {
        m_fileList->selectAll();
        std::vector<size_t> entries;
        entries.reserve(static_cast<size_t>(m_model->rowCount()));
        for (int row = 0; row < m_model->rowCount(); ++row)
            entries.push_back(m_model->entryIndex(row));
        extracting = true;
        rowCount = entries.size();
        sincePaint.start();
        beginRun(rowCount);
        return entries;
    };
    hooks.progress = [&](int done, int, std::string_view name) { showProgress(done, name, sincePaint); };
    hooks.extracted = [&](const ExtractSummary& summary) {
        extracting = false;
        m_working = false;
        endRun(summary, rowCount);
    };
    const Status status = MassExtract(m_services.files, m_browser->path(), m_browser->fileNames(), {}, hooks);
    m_working = false;
    if (status)
        return;
    if (extracting) {
        // A run that stops midway stops the whole mass extraction.
        stopRun(status.failure());
        return;
    }
    report(status.failure()); // an archive of the list is gone
    m_browser->refreshFiles();
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

void ExtractorPane::createPod() {
    if (m_working || m_busy)
        return;
    CreatePodDialog dialog(m_services.dialogs, m_browser->path(), window());
    if (dialog.exec() != QDialog::Accepted)
        return;
    CreatePodRequest request = dialog.request();
    if (m_services.files.fileSize(request.target)) {
        const QString question = QStringLiteral("%1 already exists. Replace it with a new POD of the files in %2?")
                                     .arg(fromGameText(request.target), fromGameText(request.folder));
        if (m_services.dialogs.message(QStringLiteral("Create POD"), question, MessageIcon::Question,
                                       MessageButtons::YesNo) != MessageAnswer::Yes)
            return;
        request.options.replaceExisting = true;
    }
    m_busy = true;
    const Result<PackSummary> packed = [&] {
        ui::ProgressWindow progress(window(), QStringLiteral("Create POD"),
                                    QStringLiteral("Packing %1...").arg(fromGameText(request.folder)));
        return packFolder(m_services.files, request.folder, request.target, request.options, progress.callback());
    }();
    m_busy = false;
    if (!packed) {
        if (packed.failure().message != cancelledText())
            report(packed.failure());
        return;
    }
    m_services.dialogs.message(QStringLiteral("Create POD"),
                               QStringLiteral("%1 was created: %2 files, %3 bytes.")
                                   .arg(fromGameText(request.target))
                                   .arg(packed->entries)
                                   .arg(fromGameText(AddCommas(static_cast<double>(packed->bytes)))),
                               MessageIcon::Information);
    ListPOD(FolderOf(request.target), FileNameOf(request.target));
}

void ExtractorPane::checkListedPod() {
    if (m_working)
        return;
    if (m_file.empty()) {
        m_services.dialogs.message(QStringLiteral("Check POD"),
                                   QStringLiteral("List a POD first: double-click it in the file box."),
                                   MessageIcon::Information);
        return;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const ArchiveCheck check = checkArchive(m_services.files, listedArchive());
    QApplication::restoreOverrideCursor();
    m_services.dialogs.message(QStringLiteral("Check POD"),
                               fromGameText(listedArchive()) + QStringLiteral(": ") + check.summary(),
                               check.fine() ? MessageIcon::Information : MessageIcon::Exclamation);
}

void ExtractorPane::mnuConvertTo_Click(int index) {
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

void ExtractorPane::mnuCompatiblize_Click() {
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
        m_compatiblizeAction->setVisible(false);
    } else if (suffix != ".TRK") {
        m_trackToolsSeparator->setVisible(false);
        m_convertMenu->menuAction()->setVisible(false);
        m_compatiblizeAction->setVisible(false);
    }
    m_fileMenu->popup(globalPos);
    return m_fileMenu;
}

void ExtractorPane::restoreFileMenu() {
    m_trackToolsSeparator->setVisible(true);
    m_convertMenu->menuAction()->setVisible(true);
    m_compatiblizeAction->setVisible(true);
}

bool ExtractorPane::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_fileList && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            extractFromList();
            return true;
        }
    } else if (watched == m_fileList->viewport() && event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const QString tip = nameToolTip(m_fileList->indexAt(help->pos()));
        if (tip.isEmpty())
            QToolTip::hideText();
        else
            QToolTip::showText(help->globalPos(), tip, m_fileList->viewport());
        return true;
    } else if (watched == m_fileList->viewport() && event->type() == QEvent::MouseButtonRelease) {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::RightButton) {
            showFileMenu(mouse->globalPosition().toPoint());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
