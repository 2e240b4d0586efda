#include "mounter.h"

#include "folder_snapshot.h"
#include "platform/diagnostics.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/short_path.h"
#include "pod_ini.h"
#include "startup/typed_settings.h"
#include "unmounted_scan.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace korvel {

Mounter::Mounter(const Session& session, SettingsStore& settings, Services& services, QObject* parent)
    : QObject(parent), m_session(session), m_settings(settings), m_services(services) {
    connect(&m_mounted, &EntryList::contentChanged, this, [this] { m_modified = true; });
    showCounter();
}

Mounter::Rows Mounter::validRows(const EntryList& list, Rows rows) {
    std::erase_if(rows, [&list](int row) { return row < 0 || row >= list.size(); });
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

Mounter::Rows Mounter::rowSpan(int first, int end) {
    Rows rows;
    for (int row = first; row < end; ++row)
        rows.push_back(row);
    return rows;
}

Mounter::Selection Mounter::firstRow(const EntryList& list) {
    return {list.empty() ? Rows{} : Rows{0}};
}

Mounter::Outcome Mounter::LoadMountedList(LoadMode mode) {
    const std::string& ini = m_session.locationIni;
    const bool present = m_services.files.fileSize(ini).has_value();
    Result<std::string> text =
        present ? m_services.files.readAll(ini, kPodIniLimit) : Result<std::string>(std::string());
    std::vector<MountedEntry> rows;
    if (text.ok()) {
        m_loadedStamp = present ? m_services.files.stampFor(ini, *text) : LoadedFileStamp::missing();
        std::optional<FolderSnapshot> own;
        FolderSnapshot& folders = m_refresh ? *m_refresh : own.emplace(m_services.files, m_session.shortGameFolder);
        rows = mountedEntriesFor(folders, m_session.location, podIniEntries(*text));
    }
    m_mounted.assign(std::move(rows));

    Status status;
    if (!text.ok()) {
        status = text.failure(); // never write over a file that could not be read
        qCInfo(lcMounter) << "POD.INI not read:" << status.failure().message;
    } else if (present && mode == LoadMode::Rewrite && canonicalText() != *text) {
        SaveMountedList(); // tidying up only: a read-only or locked POD.INI loads without a word
    }
    m_modified = false;

    // The canonical rewrite above already saved whatever autosave would save.
    showCounter();
    return {status, firstRow(m_mounted), {}};
}

std::string Mounter::canonicalText() const {
    std::vector<std::string> paths;
    paths.reserve(m_mounted.rows().size());
    for (const MountedEntry& row : m_mounted.rows())
        paths.push_back(row.path);
    return podIniText(paths);
}

Status Mounter::SaveMountedList(SaveMode mode) {
    Result<LoadedFileStamp> written = m_services.files.writeChecked(
        m_session.locationIni, canonicalText(), mode == SaveMode::Overwrite ? nullptr : &m_loadedStamp);
    if (!written) {
        qCInfo(lcMounter) << "POD.INI not saved:" << written.failure().message;
        return written.failure();
    }
    m_loadedStamp = *written;
    m_modified = false;
    return {};
}

bool Mounter::changedOnDisk() const {
    const Result<LoadedFileStamp> now = m_services.files.currentStamp(m_session.locationIni, kPodIniLimit);
    return !now || !now->sameContent(m_loadedStamp);
}

void Mounter::showCounter() {
    const int count = m_mounted.size();
    m_counterText =
        QString::number(count) + QLatin1Char('/') + fromGameText(m_session.mmpa) + QStringLiteral(" PODs Mounted");
    m_counterBar = std::min(count, 99);
    emit counterChanged(m_counterText, m_counterBar);
}

Status Mounter::saveIfAutosave() {
    return autosaveOnChange() ? SaveMountedList() : Status();
}

Status Mounter::UpdateMountCounter() {
    showCounter();
    return saveIfAutosave();
}

Mounter::Outcome Mounter::withCounter() {
    return {UpdateMountCounter(), {}, {}};
}

std::vector<std::string> Mounter::extraDirs() {
    if (m_extraDirsOverride)
        return *m_extraDirsOverride;
    return ProfileSettings(m_settings, m_session.currentGame).extraDirs();
}

Mounter::Outcome Mounter::ScanUnmounted() {
    const ScanInputs inputs{m_session.location, m_session.shortGameFolder, extraDirs()};
    std::optional<FolderSnapshot> own;
    FolderSnapshot& folders = m_refresh ? *m_refresh : own.emplace(m_services.files, m_session.shortGameFolder);
    m_unmounted.assign(korvel::ScanUnmounted(folders, inputs, m_mounted.rows()));
    return {{}, {}, firstRow(m_unmounted)};
}

MountedEntry Mounter::mountedRow(const std::string& storedPath) const {
    return MountedEntry{ArchiveDisplayName(storedPath), std::string(kStatusMounted), storedPath};
}

void Mounter::removeRows(EntryList& list, const Rows& rows) {
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        list.removeAt(*it);
}

Mounter::Outcome Mounter::MountSelected(Rows unmountedRows) {
    const Rows rows = validRows(m_unmounted, std::move(unmountedRows));
    std::vector<MountedEntry> added;
    added.reserve(rows.size());
    for (int row : rows)
        added.push_back(mountedRow(m_unmounted.at(row).path));
    m_mounted.appendRows(std::move(added));
    removeRows(m_unmounted, rows);
    return withCounter();
}

Mounter::Outcome Mounter::UnmountSelected(Rows mountedRows) {
    removeRows(m_mounted, validRows(m_mounted, std::move(mountedRows)));
    const Outcome scanned = ScanUnmounted();
    return {UpdateMountCounter(), {}, scanned.unmounted};
}

std::string Mounter::storedPathOf(const std::string& path) const {
    const std::string relative = replaceAll(path, m_session.location + "\\", "");
    return ShortPath(m_services.files, m_session.shortGameFolder, upperGame(relative), false);
}

Mounter::Outcome Mounter::MountBrowsed() {
    OpenFileRequest request;
    request.title = QStringLiteral("Open File");
    request.multiSelect = true;
    request.filters = {{QStringLiteral("POD Files (*.pod)"), QStringLiteral("*.pod")},
                       {QStringLiteral("All Files (*.*)"), QStringLiteral("*.*")}};
    const ProfileSettings profile(m_settings, m_session.currentGame);
    if (profile.browse())
        request.startFolder = profile.browseDir();
    else
        request.startFolder = m_session.location;
    const std::vector<std::string> chosen = m_services.dialogs.openFiles(request);
    if (chosen.empty())
        return {};
    return mountFiles(chosen);
}

Mounter::Outcome Mounter::mountFiles(const std::vector<std::string>& paths) {
    for (const std::string& file : paths) {
        if (!hasPodSuffix(file))
            continue;
        const std::string stored = storedPathOf(file);
        if (m_mounted.indexOfPath(stored) < 0)
            m_mounted.append(mountedRow(stored));
        for (int row = m_unmounted.indexOfPath(stored); row >= 0; row = m_unmounted.indexOfPath(stored))
            m_unmounted.removeAt(row);
    }
    return withCounter();
}

Mounter::Outcome Mounter::MountAll() {
    std::vector<MountedEntry> rows;
    rows.reserve(m_unmounted.rows().size());
    for (const MountedEntry& row : m_unmounted.rows())
        rows.push_back(mountedRow(row.path));
    m_mounted.appendRows(std::move(rows));
    m_unmounted.clear();
    showCounter();
    return {};
}

Mounter::Outcome Mounter::UnmountAll() {
    m_mounted.clear();
    Outcome scanned = ScanUnmounted();
    showCounter();
    return scanned;
}

Mounter::Outcome Mounter::CleanMissing() {
    Rows rows;
    for (int i = 0; i < m_mounted.size(); ++i) {
        if (m_mounted.at(i).status == kStatusNotFound)
            rows.push_back(i);
    }
    removeRows(m_mounted, rows);
    return withCounter();
}

Mounter::Outcome Mounter::moveToEnd(Rows mountedRows, bool toTop) {
    const Rows rows = validRows(m_mounted, std::move(mountedRows));
    std::vector<bool> moving(static_cast<size_t>(m_mounted.size()), false);
    for (int row : rows)
        moving[static_cast<size_t>(row)] = true;
    std::vector<MountedEntry> moved, stayed;
    for (int i = 0; i < m_mounted.size(); ++i)
        (moving[static_cast<size_t>(i)] ? moved : stayed).push_back(m_mounted.at(i));
    std::vector<MountedEntry>& first = toTop ? moved : stayed;
    std::vector<MountedEntry>& second = toTop ? stayed : moved;
    first.insert(first.end(), std::make_move_iterator(second.begin()), std::make_move_iterator(second.end()));
    if (first != m_mounted.rows())
        m_mounted.assign(std::move(first));
    // The moved block, in its former order, at the top or at the bottom.
    const int count = static_cast<int>(rows.size());
    const int start = toTop ? 0 : m_mounted.size() - count;
    return {saveIfAutosave(), {rowSpan(start, start + count)}, {}};
}

Mounter::Outcome Mounter::MoveSelectedToTop(Rows mountedRows) {
    return moveToEnd(std::move(mountedRows), true);
}

Mounter::Outcome Mounter::MoveSelectedToBottom(Rows mountedRows) {
    return moveToEnd(std::move(mountedRows), false);
}

Mounter::Outcome Mounter::moveByOne(Rows mountedRows, int step) {
    Rows rows = validRows(m_mounted, std::move(mountedRows));
    // Up walks from the first row and Down from the last, so that a block moves as one; the row at the
    // far end in the walk's direction has no place to go, and the move ends there before any change.
    const int edge = step < 0 ? 0 : m_mounted.size() - 1;
    if (!rows.empty() && (rows.front() == edge || rows.back() == edge))
        return {{}, {std::move(rows)}, {}};
    if (step > 0)
        std::reverse(rows.begin(), rows.end());
    for (int& row : rows) {
        m_mounted.swapRows(row, row + step);
        row += step;
    }
    std::sort(rows.begin(), rows.end());
    return {saveIfAutosave(), {std::move(rows)}, {}};
}

Mounter::Outcome Mounter::MoveSelectedUp(Rows mountedRows) {
    return moveByOne(std::move(mountedRows), -1);
}

Mounter::Outcome Mounter::MoveSelectedDown(Rows mountedRows) {
    return moveByOne(std::move(mountedRows), +1);
}

Mounter::Outcome Mounter::DeleteSelectedArchives(Rows unmountedRows) {
    const Rows rows = validRows(m_unmounted, std::move(unmountedRows));
    if (rows.empty())
        return {};
    std::vector<std::string> paths;
    for (int row : rows) {
        const std::string& stored = m_unmounted.at(row).path;
        paths.push_back(isAbsoluteGamePath(stored) ? stored : m_session.location + "\\" + stored);
    }
    const QString question =
        rows.size() == 1
            ? QStringLiteral("Are you sure you want to send '%1' to the Recycle Bin?").arg(fromGameText(paths.front()))
            : QStringLiteral("Are you sure you want to send these %1 items to the Recycle Bin?").arg(rows.size());
    if (m_services.dialogs.message(QStringLiteral("Confirm File Delete"), question, MessageIcon::Question,
                                   MessageButtons::YesNo) != MessageAnswer::Yes)
        return {};
    if (!m_services.files.moveToTrash(paths))
        return {unexpectedError(QStringLiteral("Not every selected archive could be moved to the Recycle Bin. "
                                               "The list was left unchanged; press Refresh to see what remains.")),
                {},
                {}};
    removeRows(m_unmounted, rows);
    return {};
}

Mounter::Outcome Mounter::refreshBoth(LoadMode mode) {
    // Both lists from one look at the folders: each folder is listed once for the existence of the
    // mounted entries and the search for unmounted archives alike.
    FolderSnapshot folders(m_services.files, m_session.shortGameFolder);
    FolderSnapshot* const outer = std::exchange(m_refresh, &folders);
    Outcome loaded = LoadMountedList(mode);
    loaded.unmounted = ScanUnmounted().unmounted;
    m_refresh = outer;
    return loaded;
}

Mounter::Outcome Mounter::refreshUnmounted() {
    return ScanUnmounted();
}

Mounter::Outcome Mounter::dropFiles(const std::vector<std::string>& paths, int dropRow) {
    const int start = dropRow < 0 || dropRow > m_mounted.size() ? m_mounted.size() : dropRow;
    int place = start;
    for (const std::string& file : paths) {
        if (!hasPodSuffix(file))
            continue;
        const std::string stored = storedPathOf(file);
        if (m_mounted.indexOfPath(stored) >= 0)
            continue; // already mounted: never twice
        m_mounted.insert(place++, mountedRow(stored));
        for (int old = m_unmounted.indexOfPath(stored); old >= 0; old = m_unmounted.indexOfPath(stored))
            m_unmounted.removeAt(old);
    }
    return {UpdateMountCounter(), {rowSpan(start, place), true}, {}};
}

Mounter::Outcome Mounter::dropRows(Rows mountedRows, int dropRow) {
    int place = dropRow < 0 || dropRow > m_mounted.size() ? m_mounted.size() : dropRow;
    Rows moved;
    std::vector<std::string> stored;
    for (int row : validRows(m_mounted, std::move(mountedRows))) {
        if (!hasPodSuffix(m_mounted.at(row).path))
            continue;
        moved.push_back(row);
        stored.push_back(storedPathOf(m_mounted.at(row).path));
        if (row < place)
            --place; // removing this row shifts the drop place up by one
    }
    removeRows(m_mounted, moved);
    const int start = place;
    for (const std::string& path : stored)
        m_mounted.insert(place++, mountedRow(path));
    // The moved rows, where they landed, are the whole selection now.
    return {UpdateMountCounter(), {rowSpan(start, place)}, {}};
}

void Mounter::saveSplitterTop(int top) {
    ProfileSettings(m_settings, m_session.currentGame).setSlider(top);
}

} // namespace korvel
