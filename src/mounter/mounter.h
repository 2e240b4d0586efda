#pragma once

#include "mounted_list.h"
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

// The Mounter: the mounted list (POD.INI) and the unmounted list, and every operation the user
// runs on them. Each operation ends as the Mounter's table of operations says (counter, save,
// rescan); the front end only wires events to these calls and shows the lists and the counter.
//
// Every failure to save is returned; the old POD.INI then stays as it was.
class Mounter : public QObject {
    Q_OBJECT
public:
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

    // Folders joined by "|" used instead of the "ExtraDirs" setting (the command line's option).
    void setExtraDirsOverride(std::optional<std::string> extraDirs) { m_extraDirsOverride = std::move(extraDirs); }

    enum class LoadMode {
        Rewrite,  // as the window loads it: POD.INI is written back in its canonical form
        ReadOnly, // the file is left untouched
    };
    // Fills the mounted list from POD.INI. A missing POD.INI gives an empty list and is not created
    // (the next save creates it); one that exists but cannot be read gives an empty list, is left
    // alone, and is reported.
    Status LoadMountedList(LoadMode mode = LoadMode::Rewrite);
    // Writes POD.INI from the mounted list (count line, then one stored path per line).
    Status SaveMountedList();
    // Counter text and bar; saves when autosave on change is on.
    Status UpdateMountCounter();
    void ScanUnmounted();

    Status MountSelected();
    Status UnmountSelected();
    // Asks for files with the file-open dialog, then mounts them as mountFiles does.
    Status MountBrowsed();
    // Mounts the chosen files (game paths), skipping non-".POD" names and paths already mounted.
    Status mountFiles(const std::vector<std::string>& paths);
    // Neither "all" operation saves: saving is left to the user.
    void MountAll();
    void UnmountAll();
    Status CleanMissing();

    // The moves keep the moved rows selected. Up with the first row selected and Down with the last
    // row selected stop at once and change nothing (no save).
    Status MoveSelectedToTop();
    Status MoveSelectedUp();
    Status MoveSelectedDown();
    Status MoveSelectedToBottom();

    // Sends the selected unmounted archives to the recycle bin after one confirmation. No row is
    // removed when the user says No or when any file could not be moved (then reported).
    Status DeleteSelectedArchives();

    Status refreshBoth();
    void refreshUnmounted();

    // Drops onto the mounted list at `dropRow` (the row under the pointer; -1 or past the last row
    // appends). Files (game paths) from outside: non-".POD" names are ignored and a stored path
    // already mounted is refused. Rows of the list itself: the selected rows move there in order.
    Status dropFiles(const std::vector<std::string>& paths, int dropRow);
    Status dropSelectedRows(int dropRow);

    // Stores the splitter's position in the "Slider" setting.
    void saveSplitterTop(int top);

    // The stored path a chosen or dropped file gets: the game folder taken off, upper-cased, short.
    std::string storedPathOf(const std::string& path) const;

signals:
    void counterChanged(const QString& text, int bar);

private:
    bool autosaveOnChange() const { return m_session.autosave.podOnChange(); }
    void showCounter();
    Status saveIfAutosave();
    std::string extraDirs();
    MountedEntry mountedRow(const std::string& storedPath) const;
    void removeRows(EntryList& list, std::vector<int> rows);

    const Session& m_session;
    SettingsStore& m_settings;
    Services& m_services;
    MountedList m_mounted;
    UnmountedList m_unmounted;
    QString m_counterText;
    int m_counterBar = 0;
    bool m_modified = false;
    std::optional<std::string> m_extraDirsOverride;
};

} // namespace korvel
