#pragma once

#include "platform/result.h"
#include "pod/pod_directory.h"

#include <QWidget>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class QAction;
class QElapsedTimer;
class QLabel;
class QLineEdit;
class QMenu;
class QProgressBar;
class QModelIndex;
class QResizeEvent;
class QTableView;

namespace korvel {

struct Services;
struct Session;
class SettingsStore;
class FileBrowser;
class ListingModel;
class RecentArchivesBox;
struct ExtractSummary;

namespace ui {
class Anchors;
class GoldButton;
} // namespace ui

// The Extractor pane (`fraExtract`'s contents): the drive, folder and file boxes, the file list
// `lstFiles` of the listed archive with its information boxes, the extraction buttons and progress
// bar, the recent-archives combo `cmbRecent`, and the file list's context menu `mnuFileS` with the
// track tools. The application calls it at opening (browsing, the progress bar, the recent list),
// at closing (the busy flag, the recent list) and from the File menu (mass extraction).
//
// Everything runs on the user-interface thread. While an archive is extracted the window keeps
// painting and the progress bar moves (pending non-input events are let through between entries);
// the busy flag keeps the main window from closing meanwhile.
//
// Every command shows its fault in a message box and puts the pane back in working order: an
// extraction that stops midway (a corrupt directory, a folder that cannot be made, a read-only or
// full destination) enables its controls again and clears the busy flag. The window can be
// resized: the lists and the boxes below them grow with the pane, the file list's Name column
// takes the width, and a name too long for it shows whole as the row's tooltip.
class ExtractorPane : public QWidget {
    Q_OBJECT
public:
    ExtractorPane(Services& services, const Session& session, SettingsStore& store, QWidget* parent = nullptr);
    ~ExtractorPane() override;

    // Opening: the drive and folder lists at the game folder, the progress bar's range, and the
    // recent list from "Recent".
    void startBrowsingAtGameFolder();
    void prepareExtractionProgress();
    void loadRecentArchives();
    // Closing: "Recent" from the recent list.
    void saveRecentArchives();

    // The folder (ending in "\") + file name listed now.
    std::string listedArchive() const { return m_folder + m_file; }
    // True while an archive is being listed or extracted; the window must not close meanwhile.
    bool archiveBusy() const { return m_busy; }
    // Says in the status line that the window waits for the extraction to finish before closing.
    void explainBusy();
    // The tooltip of a file-list cell: the whole name when the Name column cuts it short.
    QString nameToolTip(const QModelIndex& index) const;
    // `mnuMass`: asks, then lists and extracts every archive of the game folder into it.
    void massExtract();

    // File > Create POD...: packs a folder into a new archive with a progress window (asking first
    // before an existing file is replaced), then lists the new archive.
    void createPod();
    // File > Check POD: checks the listed archive and shows what was found.
    void checkListedPod();

    // Lists an archive; false when the listing failed (the failure has been shown).
    bool ListPOD(const std::string& folder, const std::string& file);

    // The commands.
    void extractClicked();  // `cmdExtract`
    void extractHere();     // `mnuExtract`, into the folder box's folder
    void extractTo();       // `mnuExtractTo`
    void extractFromList(); // double click or Enter on `lstFiles`
    void exportClicked();   // `cmdExport`
    // The track tools: a race-type conversion (index 1-5) and the truck version patch.
    void mnuConvertTo_Click(int index);
    void mnuCompatiblize_Click();
    // `mnuFileS` at a global position, with the track tools shown as the selected entry allows.
    QMenu* showFileMenu(const QPoint& globalPos);

    ListingModel& model() const { return *m_model; }
    FileBrowser& browser() const { return *m_browser; }
    RecentArchivesBox& recentArchives() const { return *m_recentBox; }
    QTableView* fileList() const { return m_fileList; }
    QMenu* fileMenu() const { return m_fileMenu; }

signals:
    // Mass extraction wants the Extractor's pane up.
    void showRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildControls();
    void anchorControls();
    // The Name column takes the list's width less the number columns.
    void fitNameColumn();
    void buildFileMenu();
    void restoreFileMenu();
    bool autosort();
    std::vector<size_t> selectedEntries() const;
    std::optional<int> selectedRow() const;
    // The extraction of `entries` into `destination`; true when it finished.
    bool ExtractFiles(const std::vector<size_t>& entries, const std::string& destination);
    void runMassExtract();
    // Listing: the folder and file become the listed archive.
    void beginListing(const std::string& folder, const std::string& file);
    // Shows a listing (or its failure) and remembers the archive; false when it failed.
    bool showListing(Result<PodDirectory> listing, const QElapsedTimer& clock);
    // An extraction run: its start, each entry, its end, and a stop midway (reported, then the pane
    // recovers).
    void beginRun(size_t entries);
    void showProgress(int done, std::string_view name, QElapsedTimer& sincePaint);
    void endRun(const ExtractSummary& summary, size_t entries);
    void stopRun(const Failure& fault);
    void setExtractControlsEnabled(bool enabled);
    void recover();
    void report(const Failure& failure);

    Services& m_services;
    const Session& m_session;
    SettingsStore& m_store;

    FileBrowser* m_browser = nullptr;
    RecentArchivesBox* m_recentBox = nullptr;
    ListingModel* m_model = nullptr;
    QTableView* m_fileList = nullptr;
    QLineEdit* m_nameBox = nullptr;
    QLineEdit* m_sizeBox = nullptr;
    QLineEdit* m_typeBox = nullptr;
    QLineEdit* m_editorBox = nullptr;
    QLineEdit* m_totalBox = nullptr;
    QLabel* m_statusLabel = nullptr;
    QProgressBar* m_progressBar = nullptr;
    ui::GoldButton* m_exportButton = nullptr;
    ui::GoldButton* m_extractButton = nullptr;
    std::unique_ptr<ui::Anchors> m_anchors;
    int m_numbersWidth = 0;

    QMenu* m_fileMenu = nullptr;
    QAction* m_extractHereAction = nullptr;
    QAction* m_extractToAction = nullptr;
    QAction* m_trackToolsSeparator = nullptr;
    QMenu* m_convertMenu = nullptr;
    QAction* m_compatiblizeAction = nullptr;

    std::string m_folder; // the listed archive's folder, with its trailing "\"
    std::string m_file;
    bool m_busy = false;
    bool m_working = false; // an extraction is running in this handler now
};

} // namespace korvel
