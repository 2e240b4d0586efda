#include "mounter.h"

#include "platform/diagnostics.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/short_path.h"
#include "pod_ini.h"
#include "startup/settings_names.h"
#include "unmounted_scan.h"

#include <algorithm>

namespace korvel {

Mounter::Mounter(const Session& session, SettingsStore& settings, Services& services, QObject* parent)
    : QObject(parent), m_session(session), m_settings(settings), m_services(services) {
    connect(&m_mounted, &EntryList::contentChanged, this, [this] { m_modified = true; });
    showCounter();
}

Status Mounter::LoadMountedList(LoadMode mode) {
    const std::string& ini = m_session.locationIni;
    const bool present = m_services.files.fileSize(ini).has_value();
    Result<std::string> text =
        present ? m_services.files.readAll(ini, kPodIniLimit) : Result<std::string>(std::string());
    std::vector<MountedEntry> rows;
    if (text.ok()) {
        rows = mountedEntriesFor(m_services.files, m_session.location, m_session.shortGameFolder, podIniEntries(*text));
    }
    m_mounted.assign(std::move(rows));

    Status status;
    if (!text.ok()) {
        status = text.failure(); // never write over a file that could not be read
        qCInfo(lcMounter) << "POD.INI not read:" << status.failure().message;
    } else if (present && mode == LoadMode::Rewrite)
        status = SaveMountedList();
    m_modified = false;

    if (!m_mounted.empty())
        m_mounted.selectOnly(0);
    // The canonical rewrite above already saved whatever autosave would save.
    showCounter();
    return status;
}

Status Mounter::SaveMountedList() {
    std::vector<std::string> paths;
    paths.reserve(m_mounted.rows().size());
    for (const MountedEntry& row : m_mounted.rows())
        paths.push_back(row.path);
    Status status = m_services.files.writeAll(m_session.locationIni, podIniText(paths));
    if (status.ok())
        m_modified = false;
    else
        qCInfo(lcMounter) << "POD.INI not saved:" << status.failure().message;
    return status;
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

std::string Mounter::extraDirs() {
    if (m_extraDirsOverride)
        return *m_extraDirsOverride;
    return m_settings.readProfile(m_session.currentGame, settings::kExtraDirs);
}

void Mounter::ScanUnmounted() {
    const ScanInputs inputs{m_session.location, m_session.shortGameFolder, extraDirs()};
    m_unmounted.assign(korvel::ScanUnmounted(m_services.files, inputs, pathKeys(m_mounted.rows())));
    if (!m_unmounted.empty())
        m_unmounted.selectOnly(0);
}

MountedEntry Mounter::mountedRow(const std::string& storedPath) const {
    return MountedEntry{ArchiveDisplayName(storedPath), std::string(kStatusMounted), storedPath, false};
}

void Mounter::removeRows(EntryList& list, std::vector<int> rows) {
    std::sort(rows.begin(), rows.end());
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        list.removeAt(*it);
}

Status Mounter::MountSelected() {
    const std::vector<int> rows = m_unmounted.selectedRows();
    for (int row : rows)
        m_mounted.append(mountedRow(m_unmounted.at(row).path));
    removeRows(m_unmounted, rows);
    return UpdateMountCounter();
}

Status Mounter::UnmountSelected() {
    removeRows(m_mounted, m_mounted.selectedRows());
    ScanUnmounted();
    return UpdateMountCounter();
}

std::string Mounter::storedPathOf(const std::string& path) const {
    const std::string relative = replaceAll(path, m_session.location + "\\", "");
    return ShortPath(m_services.files, m_session.shortGameFolder, upperGame(relative), false);
}

Status Mounter::MountBrowsed() {
    OpenFileRequest request;
    request.title = QStringLiteral("Open File");
    request.multiSelect = true;
    request.filters = {{QStringLiteral("POD Files (*.pod)"), QStringLiteral("*.pod")},
                       {QStringLiteral("All Files (*.*)"), QStringLiteral("*.*")}};
    if (m_settings.readProfile(m_session.currentGame, settings::kBrowse) != "0")
        request.startFolder = m_settings.readProfile(m_session.currentGame, settings::kBrowseDir);
    else
        request.startFolder = m_session.location;
    const std::vector<std::string> chosen = m_services.dialogs.openFiles(request);
    if (chosen.empty())
        return {};
    return mountFiles(chosen);
}

Status Mounter::mountFiles(const std::vector<std::string>& paths) {
    for (const std::string& file : paths) {
        if (!hasPodSuffix(file))
            continue;
        const std::string stored = storedPathOf(file);
        if (m_mounted.indexOfPath(stored) < 0)
            m_mounted.append(mountedRow(stored));
        for (int row = m_unmounted.indexOfPath(stored); row >= 0; row = m_unmounted.indexOfPath(stored))
            m_unmounted.removeAt(row);
    }
    return UpdateMountCounter();
}

void Mounter::MountAll() {
    std::vector<MountedEntry> rows = m_mounted.rows();
    rows.reserve(rows.size() + m_unmounted.rows().size());
    for (const MountedEntry& row : m_unmounted.rows())
        rows.push_back(mountedRow(row.path));
    m_mounted.assign(std::move(rows));
    m_unmounted.clear();
    showCounter();
}

void Mounter::UnmountAll() {
    m_mounted.clear();
    ScanUnmounted();
    showCounter();
}

Status Mounter::CleanMissing() {
    std::vector<int> rows;
    for (int i = 0; i < m_mounted.size(); ++i) {
        if (m_mounted.at(i).status == kStatusNotFound)
            rows.push_back(i);
    }
    removeRows(m_mounted, rows);
    return UpdateMountCounter();
}

Status Mounter::MoveSelectedToTop() {
    std::vector<MountedEntry> rows = m_mounted.rows();
    std::stable_partition(rows.begin(), rows.end(), [](const MountedEntry& row) { return row.selected; });
    if (rows != m_mounted.rows())
        m_mounted.assign(std::move(rows));
    return saveIfAutosave();
}

Status Mounter::MoveSelectedToBottom() {
    std::vector<MountedEntry> rows = m_mounted.rows();
    std::stable_partition(rows.begin(), rows.end(), [](const MountedEntry& row) { return !row.selected; });
    if (rows != m_mounted.rows())
        m_mounted.assign(std::move(rows));
    return saveIfAutosave();
}

Status Mounter::MoveSelectedUp() {
    const int count = m_mounted.size();
    for (int i = 0; i < count; ++i) {
        if (!m_mounted.isSelected(i))
            continue;
        if (i == 0)
            return {}; // no place above the first row: the move ends here
        m_mounted.swapRows(i - 1, i);
    }
    return saveIfAutosave();
}

Status Mounter::MoveSelectedDown() {
    const int count = m_mounted.size();
    for (int i = count - 1; i >= 0; --i) {
        if (!m_mounted.isSelected(i))
            continue;
        if (i == count - 1)
            return {}; // no place below the last row: the move ends here
        m_mounted.swapRows(i, i + 1);
    }
    return saveIfAutosave();
}

Status Mounter::DeleteSelectedArchives() {
    const std::vector<int> rows = m_unmounted.selectedRows();
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
        return unexpectedError(QStringLiteral("Not every selected archive could be moved to the Recycle Bin. "
                                              "The list was left unchanged; press Refresh to see what remains."));
    removeRows(m_unmounted, rows);
    return {};
}

Status Mounter::refreshBoth() {
    Status status = LoadMountedList();
    ScanUnmounted();
    return status;
}

void Mounter::refreshUnmounted() {
    ScanUnmounted();
}

Status Mounter::dropFiles(const std::vector<std::string>& paths, int dropRow) {
    int place = dropRow < 0 || dropRow > m_mounted.size() ? m_mounted.size() : dropRow;
    for (const std::string& file : paths) {
        if (!hasPodSuffix(file))
            continue;
        const std::string stored = storedPathOf(file);
        if (m_mounted.indexOfPath(stored) >= 0)
            continue; // already mounted: never twice
        MountedEntry row = mountedRow(stored);
        row.selected = true;
        m_mounted.insert(place++, std::move(row));
        for (int old = m_unmounted.indexOfPath(stored); old >= 0; old = m_unmounted.indexOfPath(stored))
            m_unmounted.removeAt(old);
    }
    return UpdateMountCounter();
}

Status Mounter::dropSelectedRows(int dropRow) {
    int place = dropRow < 0 || dropRow > m_mounted.size() ? m_mounted.size() : dropRow;
    const std::vector<int> selected = m_mounted.selectedRows();
    m_mounted.clearSelection();
    std::vector<int> moved;
    std::vector<std::string> stored;
    for (int row : selected) {
        if (!hasPodSuffix(m_mounted.at(row).path))
            continue;
        moved.push_back(row);
        stored.push_back(storedPathOf(m_mounted.at(row).path));
        if (row < place)
            --place; // removing this row shifts the drop place up by one
    }
    removeRows(m_mounted, moved);
    for (const std::string& path : stored) {
        MountedEntry row = mountedRow(path);
        row.selected = true;
        m_mounted.insert(place++, std::move(row));
    }
    return UpdateMountCounter();
}

void Mounter::saveSplitterTop(int top) {
    m_settings.writeProfile(m_session.currentGame, settings::kSlider, std::to_string(top));
}

} // namespace korvel
