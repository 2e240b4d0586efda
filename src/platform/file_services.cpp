#include "file_services.h"

#include "diagnostics.h"
#include "game_codec.h"
#include "game_path.h"
#include "game_text.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <cstdint>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <dirent.h>
#endif

namespace korvel {

namespace {

bool hasWildcard(std::string_view text) {
    return text.find_first_of("*?") != std::string_view::npos;
}

bool isHiddenName(const QFileInfo& info) {
#ifdef Q_OS_WIN
    return info.isHidden();
#else
    return info.fileName().startsWith(QLatin1Char('.'));
#endif
}

// The six letters QSaveFile appends to a temporary's name, unless they read as a word in one case.
bool isTemporarySuffix(QStringView suffix) {
    if (suffix.size() != 6)
        return false;
    int upper = 0;
    for (QChar c : suffix) {
        if (!((c >= QLatin1Char('a') && c <= QLatin1Char('z')) || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))))
            return false;
        if (c.isUpper())
            ++upper;
    }
    const bool capitalized = upper == 1 && suffix.front().isUpper();
    return upper != 0 && upper != 6 && !capitalized;
}

QString nativeFolderOf(const QString& hostPath) {
    return QDir::toNativeSeparators(QFileInfo(hostPath).absolutePath());
}

} // namespace

bool wildcardMatch(std::string_view pattern, std::string_view name) {
    if (pattern == "*.*" || pattern == "*")
        return true; // every name, the common case of a folder listing
    // Iterative match with one back-track point: linear in practice, no recursion.
    size_t p = 0, n = 0, starP = std::string_view::npos, starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || upperGameChar(pattern[p]) == upperGameChar(name[n]))) {
            ++p;
            ++n;
        } else if (p < pattern.size() && pattern[p] == '*') {
            starP = p++;
            starN = n;
        } else if (starP != std::string_view::npos) {
            p = starP + 1;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

FileServices::FileServices(const PathMap& paths) : m_paths(paths) {}

namespace {

bool acceptsEntry(bool file, bool dir, SearchFilter filter) {
    switch (filter) {
    case SearchFilter::NormalFiles:
        return file;
    case SearchFilter::FilesAndFolders:
        return file || dir;
    case SearchFilter::Folders:
        return dir;
    }
    return false;
}

} // namespace

const FolderListing::Entry* FolderListing::find(std::string_view key) const {
    auto it = std::lower_bound(entries.begin(), entries.end(), key,
                               [](const Entry& entry, std::string_view wanted) { return entry.key < wanted; });
    return it != entries.end() && it->key == key ? &*it : nullptr;
}

std::vector<std::string> FolderListing::search(std::string_view pattern, SearchFilter filter) const {
    std::vector<std::string> names;
    if (!exists || pattern.empty())
        return names;
    for (const Entry& entry : entries) {
        if (acceptsEntry(entry.file, entry.dir, filter) && wildcardMatch(pattern, entry.name))
            names.push_back(entry.name);
    }
    if (filter == SearchFilter::Folders && !root && wildcardMatch(pattern, "."))
        names.insert(names.begin(), {".", ".."});
    return names;
}

FolderListing FileServices::readFolder(const std::string& folder) const {
    FolderListing listing;
    const QString hostFolder = folder.empty() ? m_paths.toHost(".") : m_paths.toHost(folder);
    if (hostFolder.isEmpty())
        return listing;
    QDir dir(hostFolder);
    if (!dir.exists())
        return listing;
    listing.exists = true;
    listing.root = PathMap::isDriveRoot(withoutTrailingBackslash(folder)) || dir.absolutePath() == QLatin1String("/");

    // Unsorted from the system, sorted once below on keys made once per name (a folder of thousands
    // of archives is searched often).
    std::vector<FolderListing::Entry> found;
    found.reserve(64);
    auto add = [&found](std::string name, bool isFile, bool isDir) {
        std::string key = upperGame(name);
        found.push_back({std::move(key), std::move(name), isFile, isDir});
    };
#ifdef Q_OS_WIN
    QDirIterator it(hostFolder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QFileInfo info = it.nextFileInfo();
        // A name the game's code page cannot hold is one the game cannot open either.
        std::optional<std::string> name = encodeGameText(info.fileName());
        if (name && !isHiddenName(info))
            add(std::move(*name), info.isFile(), info.isDir());
    }
#else
    // The directory's own entry types spare a status call per name; links and file systems that
    // do not give a type are asked the full question. Plain ASCII names are the same bytes in the
    // file system and in Windows-1252, so they skip both conversions.
    const bool asciiAsIs = GameCodec::active().codePage() == 1252;
    const QByteArray nativeFolder = QFile::encodeName(hostFolder);
    if (DIR* stream = ::opendir(nativeFolder.constData())) {
        while (const dirent* entry = ::readdir(stream)) {
            const std::string_view raw(entry->d_name);
            if (raw.front() == '.')
                continue; // hidden here, "." and ".." included
            const bool ascii = asciiAsIs && std::all_of(raw.begin(), raw.end(),
                                                        [](char c) { return static_cast<unsigned char>(c) < 0x80; });
            std::optional<std::string> name =
                ascii ? std::optional<std::string>(raw) : encodeGameText(QFile::decodeName(entry->d_name));
            if (!name)
                continue; // a name the game's code page cannot hold is one the game cannot open either
            if (entry->d_type == DT_REG || entry->d_type == DT_DIR) {
                add(std::move(*name), entry->d_type == DT_REG, entry->d_type == DT_DIR);
            } else {
                const QFileInfo info(hostFolder + QLatin1Char('/') + QFile::decodeName(entry->d_name));
                add(std::move(*name), info.isFile(), info.isDir());
            }
        }
        ::closedir(stream);
    }
#endif
    // The order is sorted as indices, and the entries moved once into it.
    std::vector<uint32_t> order(found.size());
    for (uint32_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&found](uint32_t a, uint32_t b) {
        const FolderListing::Entry& x = found[a];
        const FolderListing::Entry& y = found[b];
        return x.key != y.key ? x.key < y.key : x.name < y.name;
    });
    listing.entries.reserve(found.size());
    for (uint32_t i : order)
        listing.entries.push_back(std::move(found[i]));
    return listing;
}

std::vector<std::string> FileServices::search(const std::string& pattern, SearchFilter filter) const {
    const std::string folder = FolderOf(pattern);
    const std::string last = FileNameOf(pattern);
    if (last.empty())
        return {};
    if (!hasWildcard(last)) {
        std::vector<std::string> names;
        const QString hostFolder = folder.empty() ? m_paths.toHost(".") : m_paths.toHost(folder);
        if (hostFolder.isEmpty() || !QDir(hostFolder).exists())
            return names;
        // A plain name: look it up directly (without regard to case), as the system's search does.
        const QFileInfo info(m_paths.toHost(joinGamePath(folder, last)));
        if (info.exists() && !isHiddenName(info) && acceptsEntry(info.isFile(), info.isDir(), filter))
            names.push_back(toGameText(info.fileName()));
        return names;
    }
    return readFolder(folder).search(last, filter);
}

bool FileServices::FileExists(const std::string& path) const {
    return !search(path, SearchFilter::NormalFiles).empty();
}

bool FileServices::findsName(const std::string& folder, const std::string& name) const {
    const std::vector<std::string> found = search(withTrailingBackslash(folder) + name, SearchFilter::FilesAndFolders);
    return found.size() == 1 && upperGame(found.front()) == upperGame(name);
}

bool FileServices::folderExists(const std::string& path) const {
    const QString host = m_paths.toHost(path);
    return !host.isEmpty() && QFileInfo(host).isDir();
}

std::optional<qint64> FileServices::fileSize(const std::string& path) const {
    QFileInfo info(m_paths.toHost(path));
    if (!info.isFile())
        return std::nullopt;
    return info.size();
}

std::optional<std::string> FileServices::shortPathName(const std::string& path) const {
#ifdef Q_OS_WIN
    char buffer[MAX_PATH];
    DWORD n = GetShortPathNameA(path.c_str(), buffer, MAX_PATH);
    if (n == 0 || n >= MAX_PATH)
        return std::nullopt;
    return std::string(buffer, n);
#else
    const QString host = m_paths.toHost(path);
    if (host.isEmpty() || !QFileInfo::exists(host))
        return std::nullopt;
    return path;
#endif
}

Result<std::string> FileServices::readAll(const std::string& path, qint64 limit) const {
    const QString host = m_paths.toHost(path);
    QFile file(host);
    if (host.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        return readError(QStringLiteral("Could not open %1: %2")
                             .arg(fromGameText(path),
                                  host.isEmpty() ? QStringLiteral("no drive is mapped for it") : file.errorString()));
    }
    if (file.size() > limit)
        return readError(QStringLiteral("%1 is too large to read.").arg(fromGameText(path)));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return readError(QStringLiteral("Could not read %1: %2").arg(fromGameText(path), file.errorString()));
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

Status FileServices::writeAll(const std::string& path, const std::string& bytes) const {
    const QString host = m_paths.toHost(path);
    if (host.isEmpty())
        return writeError(QStringLiteral("Could not save %1: no drive is mapped for it.").arg(fromGameText(path)));
    return writeFileAtomically(host, QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
}

Result<FileLock> FileServices::lockForChange(const std::string& path) const {
    const QString host = m_paths.toHost(path);
    if (host.isEmpty())
        return writeError(QStringLiteral("Could not change %1: no drive is mapped for it.").arg(fromGameText(path)));
    return FileLock::acquire(host);
}

LoadedFileStamp FileServices::stampFor(const std::string& path, std::string_view bytes) const {
    return LoadedFileStamp::of(bytes, QFileInfo(m_paths.toHost(path)).lastModified());
}

Result<LoadedFileStamp> FileServices::currentStamp(const std::string& path, qint64 limit) const {
    const QString host = m_paths.toHost(path);
    if (!host.isEmpty() && !QFileInfo::exists(host) && !QFileInfo(host).isSymLink())
        return LoadedFileStamp::missing();
    Result<std::string> bytes = readAll(path, limit);
    if (!bytes)
        return bytes.failure();
    return stampFor(path, *bytes);
}

Result<LoadedFileStamp> FileServices::writeChecked(const std::string& path, const std::string& bytes,
                                                   const LoadedFileStamp* loaded) const {
    std::optional<FileLock> lock;
    if (loaded) {
        Result<FileLock> locked = lockForChange(path);
        if (!locked)
            return locked.failure();
        lock = std::move(*locked);
        Result<LoadedFileStamp> now = currentStamp(path);
        if (!now)
            return now.failure();
        if (!now->sameContent(*loaded)) {
            qCInfo(lcPlatform) << "save refused, changed on disk:" << m_paths.toHost(path);
            return changedOnDisk(QStringLiteral("%1 was changed by another program after Korvel read it. Nothing was "
                                                "saved, so that change is not lost.")
                                     .arg(fromGameText(path)));
        }
    }
    if (Status written = writeAll(path, bytes); !written)
        return written.failure();
    return stampFor(path, bytes);
}

int removeStaleTemporaries(const QString& hostPath) {
    const QFileInfo target(hostPath);
    const QString prefix = target.fileName() + QLatin1Char('.');
    QDir folder = target.absoluteDir();
    folder.setNameFilters({prefix + QStringLiteral("??????")});
    folder.setFilter(QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks);
    const QDateTime oldest = QDateTime::currentDateTimeUtc().addSecs(-60 * kStaleTemporaryMinutes);
    int removed = 0;
    for (const QFileInfo& info : folder.entryInfoList()) {
        const QString name = info.fileName();
        if (!name.startsWith(prefix) || !isTemporarySuffix(QStringView(name).mid(prefix.size())) ||
            info.lastModified().toUTC() > oldest)
            continue;
        if (QFile::remove(info.absoluteFilePath())) {
            ++removed;
            qCInfo(lcPlatform) << "removed the left-over temporary" << info.absoluteFilePath();
        } else {
            qCInfo(lcPlatform) << "could not remove the left-over temporary" << info.absoluteFilePath();
        }
    }
    return removed;
}

Status writeFileAtomically(const QString& hostPath, const QByteArray& bytes) {
    removeStaleTemporaries(hostPath);
    QSaveFile file(hostPath);
    auto failed = [&](const QString& reason) {
        qCInfo(lcPlatform) << "save failed:" << hostPath << reason;
        return writeError(QStringLiteral("Could not save %1: %2. The old file was left unchanged.")
                              .arg(QDir::toNativeSeparators(hostPath), reason));
    };
    if (!file.open(QIODevice::WriteOnly))
        return failed(file.errorString());
    // flush() here: QSaveFile::commit() ignores a failed flush of its buffer (a full disk) and commits.
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return failed(reason);
    }
    if (!file.commit())
        return failed(file.errorString());
    return {};
}

Status FileServices::makeDirectory(const std::string& path) const {
    const QString host = m_paths.toHost(withoutTrailingBackslash(path));
    if (host.isEmpty())
        return writeError(
            QStringLiteral("Could not create the folder %1: no drive is mapped for it.").arg(fromGameText(path)));
    const QString shown = QDir::toNativeSeparators(host);
    if (QFileInfo::exists(host))
        return writeError(QStringLiteral("Could not create the folder %1: it exists already.").arg(shown));
    if (!QFileInfo(QFileInfo(host).absolutePath()).isDir())
        return writeError(QStringLiteral("Could not create the folder %1: the folder %2 does not exist.")
                              .arg(shown, nativeFolderOf(host)));
    if (!QDir().mkdir(host)) {
        qCInfo(lcPlatform) << "make-directory failed:" << host;
        return writeError(QStringLiteral("Could not create the folder %1.").arg(shown));
    }
    return {};
}

Status FileServices::copyFile(const std::string& from, const std::string& to) const {
    const QString source = m_paths.toHost(from);
    const QString target = m_paths.toHost(to);
    if (source.isEmpty() || !QFileInfo(source).isFile())
        return readError(QStringLiteral("Could not copy %1: the file does not exist.").arg(fromGameText(from)));
    if (target.isEmpty())
        return writeError(QStringLiteral("Could not copy to %1: no drive is mapped for it.").arg(fromGameText(to)));
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly))
        return readError(
            QStringLiteral("Could not copy %1: %2").arg(QDir::toNativeSeparators(source), in.errorString()));
    removeStaleTemporaries(target);
    QSaveFile out(target);
    auto failed = [&](const QString& reason) {
        qCInfo(lcPlatform) << "copy failed:" << source << "to" << target << reason;
        return writeError(QStringLiteral("Could not copy %1 to %2: %3. The old copy was left unchanged.")
                              .arg(QDir::toNativeSeparators(source), QDir::toNativeSeparators(target), reason));
    };
    if (!out.open(QIODevice::WriteOnly))
        return failed(out.errorString());
    QByteArray chunk;
    while (!(chunk = in.read(1 << 20)).isEmpty()) {
        if (out.write(chunk) != chunk.size() || !out.flush()) {
            const QString reason = out.errorString();
            out.cancelWriting();
            return failed(reason);
        }
    }
    if (in.error() != QFileDevice::NoError) {
        const QString reason = in.errorString();
        out.cancelWriting();
        return failed(reason);
    }
    if (!out.commit())
        return failed(out.errorString());
    return {};
}

Status FileServices::moveToTrash(const std::vector<std::string>& paths) const {
#ifndef Q_OS_WIN
    // The desktop's trash lives in the user's data folder; where that folder does not exist yet
    // the trash cannot be set up and files would land in the current folder, so make it first.
    const QString dataHome = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (dataHome.isEmpty() || !QDir().mkpath(dataHome))
        return writeError(QStringLiteral("Could not move files to the trash: the folder %1 cannot be created.")
                              .arg(QDir::toNativeSeparators(dataHome)));
#endif
    QStringList left;
    for (const std::string& path : paths) {
        const QString host = m_paths.toHost(path);
        if (host.isEmpty() || !QFile::moveToTrash(host)) {
            qCInfo(lcPlatform) << "could not move to the trash:" << (host.isEmpty() ? fromGameText(path) : host);
            left << fromGameText(path);
        }
    }
    if (!left.isEmpty())
        return writeError(QStringLiteral("Could not move to the trash: %1").arg(left.join(QStringLiteral(", "))));
    return {};
}

} // namespace korvel
