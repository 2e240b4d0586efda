#pragma once

#include "platform/result.h"
#include "ui/window_hooks.h"

#include <QPointer>
#include <QWidget>

#include <optional>
#include <string>
#include <vector>

class QAction;
class QLabel;
class QLineEdit;
class QMenu;
class QProgressBar;
class QTableView;

namespace korvel {

struct Services;
struct Session;
class SettingsStore;
class FileBrowser;
class ListingModel;

namespace ui {
class GoldButton;
class MainWindow;
class RecentArchives;
} // namespace ui

// The Extractor pane (`fraExtract`'s contents): the drive, folder and file boxes, the file list
// `lstFiles` of the listed archive with its information boxes, the extraction buttons and progress
// bar, and the file list's context menu `mnuFileS` with the track tools. It answers the main
// window's Extractor hooks (listing an archive, the busy flag, mass extraction).
//
// Everything runs on the user-interface thread. While an archive is extracted the window keeps
// painting and the progress bar moves (pending non-input events are let through between entries);
// the busy flag keeps the main window from closing meanwhile.
//
// Faults that the extraction commands cannot recover from on their own: `cmdExtract` and
// `mnuExtractTo` end silently, leaving the busy flag set and the extraction controls disabled, as a
// corrupt archive does; `mnuExtract`, `mnuMass`, the list's double click and Enter, the export and
// the track tools show the fault in a message box and put the pane back in working order.
class ExtractorPane : public QWidget, public ui::WindowHooks {
    Q_OBJECT
public:
    ExtractorPane(Services& services, const Session& session, SettingsStore& store, QWidget* parent = nullptr);
    ~ExtractorPane() override;

    // Takes the main window's recent-archives combo and lets mass extraction bring this pane up.
    void attachTo(ui::MainWindow& window);
    void setRecentArchives(ui::RecentArchives* recent);

    // Main window hooks.
    void startBrowsingAtGameFolder() override;
    void prepareExtractionProgress() override;
    void listArchive(const std::string& folder, const std::string& file) override;
    std::string listedArchive() const override { return m_folder + m_file; }
    bool archiveBusy() const override { return m_busy; }
    // `mnuMass`: asks, then lists and extracts every archive of the game folder into it.
    void massExtract() override;

    // Lists an archive; false when the listing failed (the failure has been shown).
    bool ListPOD(const std::string& folder, const std::string& file);

    // The commands.
    void extractClicked();     // `cmdExtract`
    void extractHere();        // `mnuExtract`, into the folder box's folder
    void extractTo();          // `mnuExtractTo`
    void extractFromList();    // double click or Enter on `lstFiles`
    void exportClicked();      // `cmdExport`
    void convertTo(int index); // `mnuConvertTo` 1-5
    void compatiblize();       // `mnuCompatiblize`
    // `mnuFileS` at a global position, with the track tools shown as the selected entry allows.
    QMenu* showFileMenu(const QPoint& globalPos);

    ListingModel& model() const { return *m_model; }
    FileBrowser& browser() const { return *m_browser; }
    QTableView* fileList() const { return m_list; }
    QMenu* fileMenu() const { return m_menu; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class OnFault { Silent, Report };

    void buildControls();
    void buildFileMenu();
    void restoreFileMenu();
    bool autosort();
    std::vector<size_t> selectedEntries() const;
    std::optional<int> selectedRow() const;
    // The extraction of `entries` into `destination`; true when it finished.
    bool ExtractFiles(const std::vector<size_t>& entries, const std::string& destination, OnFault onFault);
    void runMassExtract();
    void setExtractControlsEnabled(bool enabled);
    void recover();
    void report(const Failure& failure);

    Services& m_services;
    const Session& m_session;
    SettingsStore& m_store;
    QPointer<ui::MainWindow> m_window;
    QPointer<ui::RecentArchives> m_recent;

    FileBrowser* m_browser = nullptr;
    ListingModel* m_model = nullptr;
    QTableView* m_list = nullptr;
    QLineEdit* m_name = nullptr;
    QLineEdit* m_size = nullptr;
    QLineEdit* m_type = nullptr;
    QLineEdit* m_editor = nullptr;
    QLineEdit* m_total = nullptr;
    QLabel* m_status = nullptr;
    QProgressBar* m_progress = nullptr;
    ui::GoldButton* m_export = nullptr;
    ui::GoldButton* m_extract = nullptr;

    QMenu* m_menu = nullptr;
    QAction* m_extractHere = nullptr;
    QAction* m_extractTo = nullptr;
    QAction* m_separator = nullptr;
    QMenu* m_convert = nullptr;
    QAction* m_compatiblize = nullptr;

    std::string m_folder; // the listed archive's folder, with its trailing "\"
    std::string m_file;
    bool m_busy = false;
    bool m_working = false;         // an extraction is running in this handler now
    bool m_archiveLeftOpen = false; // an extraction stopped midway and left its archive open
};

} // namespace korvel
