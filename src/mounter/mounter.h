#pragma once

#include "mounted_list.h"
#include "platform/loaded_file_stamp.h"
#include "platform/result.h"
#include "platform/services.h"
#include "startup/session.h"
#include "startup/settings_store.h"

#include <QObject>
#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace korvel {

class FolderSnapshot;

// The Mounter: the mounted list (POD.INI) and the unmounted list, and every operation the user
// runs on them. Each operation ends as the Mounter's table of operations says (counter, save,
// rescan); the front end only wires events to these calls and shows the lists and the counter.
//
// The core keeps no selection. An operation on chosen rows is given them (indices into the list it
// names, in any order; duplicates and indices out of range are ignored) and answers with the rows
// the views should select next.
//
// Every failure to save is returned; the old POD.INI then stays as it was.
class Mounter : public QObject {
    Q_OBJECT
public:
    using Rows = std::vector<int>;

    // The rows a list's view selects after an operation. Without a value, the view keeps the
    // selection it carried through the change (rows inserted or removed around it move it along).
    struct Selection {
        std::optional<Rows> rows;
        // The rows are added to the view's selection instead of replacing it.
        bool add = false;
    };
    // What an operation leaves: its status (a failed save still leaves the lists changed) and the
    // selection of each list.
    struct Outcome {
        Status status;
        Selection mounted;
        Selection unmounted;

        bool ok() const { return status.ok(); }
        explicit operator bool() const { return ok(); }
    };

    Mounter(const Session& session, SettingsStore& settings, Services& services, QObject* parent = nullptr);

    MountedList& mounted() { return m_mounted; }
    UnmountedList& unmounted() { return m_unmounted; }
    const MountedList& mounted() const { return m_mounted; }
    const UnmountedList& unmounted() const { return m_unmounted; }

    // lblPODs's caption and prgPODs's value, as the last counter update left them.
    const QString& counterText() const { return m_counterText; }
    int counterBar() const { return m_counterBar; }

    // True when the mounted list changed since it was last loaded or saved.
    bool isModified() const { return m_modified; }

    // Folders scanned instead of the "ExtraDirs" setting (the command line's option).
    void setExtraDirsOverride(std::optional<std::vector<std::string>> extraDirs) {
        m_extraDirsOverride = std::move(extraDirs);
    }

    enum class LoadMode {
        Rewrite,  // as the window loads it: POD.INI is written back in its canonical form
        ReadOnly, // the file is left untouched
    };
    // Fills the mounted list from POD.INI. A missing POD.INI gives an empty list and is not created
    // (the next save creates it); one that exists but cannot be read gives an empty list, is left
    // alone, and is reported. Rewrite writes the file back only when its bytes differ from the
    // canonical text, and a failure to do so is not reported (a read-only POD.INI still loads
    // quietly); SaveMountedList reports its failures. The first row is to be selected.
    Outcome LoadMountedList(LoadMode mode = LoadMode::Rewrite);
    // How a save treats a POD.INI that another program changed after the list was loaded.
    enum class SaveMode {
        KeepUnseenChanges, // refused (FailureKind::ChangedOnDisk); nothing is written
        Overwrite,         // the user chose to write the list over that change
    };
    // Writes POD.INI from the mounted list (count line, then one stored path per line), holding
    // the file's lock from the check of what it holds to the rename.
    Status SaveMountedList(SaveMode mode = SaveMode::KeepUnseenChanges);
    // Whether POD.INI now holds something else than what the list was last loaded from or saved
    // to; a file that cannot be read counts as changed.
    bool changedOnDisk() const;
    // Counter text and bar; saves when autosave on change is on.
    Status UpdateMountCounter();
    // Fills the unmounted list afresh; its first row is to be selected.
    Outcome ScanUnmounted();

    // Mounts the given unmounted rows, in list order, at the end of the mounted list.
    Outcome MountSelected(Rows unmountedRows);
    // Unmounts the given mounted rows, then rescans the unmounted list.
    Outcome UnmountSelected(Rows mountedRows);
    // Asks for files with the file-open dialog, then mounts them as mountFiles does.
    Outcome MountBrowsed();
    // Mounts the chosen files (game paths), skipping non-".POD" names and paths already mounted.
    Outcome mountFiles(const std::vector<std::string>& paths);
    // Neither "all" operation saves: saving is left to the user.
    Outcome MountAll();
    Outcome UnmountAll();
    Outcome CleanMissing();

    // The moves select the moved rows where they went. Up with the first row among the given ones
    // and Down with the last stop at once and change nothing (no save).
    Outcome MoveSelectedToTop(Rows mountedRows);
    Outcome MoveSelectedUp(Rows mountedRows);
    Outcome MoveSelectedDown(Rows mountedRows);
    Outcome MoveSelectedToBottom(Rows mountedRows);

    // Sends the archives of the given unmounted rows to the recycle bin after one confirmation. No
    // row is removed when the user says No or when any file could not be moved (then reported).
    Outcome DeleteSelectedArchives(Rows unmountedRows);

    // Reloads the mounted list and rescans the unmounted list from one listing of each folder.
    Outcome refreshBoth(LoadMode mode = LoadMode::Rewrite);
    Outcome refreshUnmounted();

    // Drops onto the mounted list at `dropRow` (the row under the pointer; -1 or past the last row
    // appends). Files (game paths) from outside: non-".POD" names are ignored and a stored path
    // already mounted is refused; the new rows join the selection. Rows of the list itself: the
    // given rows move there in order and become the selection.
    Outcome dropFiles(const std::vector<std::string>& paths, int dropRow);
    Outcome dropRows(Rows mountedRows, int dropRow);

    // Stores the splitter's position in the "Slider" setting.
    void saveSplitterTop(int top);

    // The stored path a chosen or dropped file gets: the game folder taken off, upper-cased, short.
    std::string storedPathOf(const std::string& path) const;

signals:
    void counterChanged(const QString& text, int bar);

private:
    // POD.INI's text for the mounted list as it stands.
    std::string canonicalText() const;
    bool autosaveOnChange() const { return m_session.autosave.podOnChange(); }
    void showCounter();
    Status saveIfAutosave();
    std::vector<std::string> extraDirs();
    MountedEntry mountedRow(const std::string& storedPath) const;
    static void removeRows(EntryList& list, const Rows& rows);
    // The given rows of `list`, sorted, each once, those out of range left out.
    static Rows validRows(const EntryList& list, Rows rows);
    // Selects the first row of `list`, or nothing when it is empty.
    static Selection firstRow(const EntryList& list);
    // first, first + 1, ..., end - 1.
    static Rows rowSpan(int first, int end);
    Outcome withCounter();
    Outcome moveToEnd(Rows mountedRows, bool toTop);
    // Moves every given row one place up (step -1) or down (+1).
    Outcome moveByOne(Rows mountedRows, int step);

    const Session& m_session;
    SettingsStore& m_settings;
    Services& m_services;
    MountedList m_mounted;
    UnmountedList m_unmounted;
    QString m_counterText;
    int m_counterBar = 0;
    bool m_modified = false;
    // What POD.INI held when the list was last loaded or saved.
    LoadedFileStamp m_loadedStamp;
    std::optional<std::vector<std::string>> m_extraDirsOverride;
    // The folders as refreshBoth sees them, while it runs.
    FolderSnapshot* m_refresh = nullptr;
};

} // namespace korvel
