#include "extraction.h"

#include "entry_path.h"

#include "platform/diagnostics.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "platform/output_folder.h"

#include <QDir>
#include <QElapsedTimer>

#include <functional>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace korvel {

namespace {

constexpr qint64 kWindow = qint64(1) << 20;      // archive bytes read at once for small entries
constexpr qint64 kSmallEntry = qint64(64) << 10; // larger entries are copied in the kernel

// Creating a file costs the file system far more waiting than work, so the command line keeps a
// few creations in flight at once.
constexpr int kWriterThreads = 4;

// A piece of the archive read once for the small entries lying in it.
struct Window {
    std::unique_ptr<char[]> data;
    qint64 start = 0;
    qint64 length = 0;
};

// Runs jobs on a few threads, a bounded number queued; keeps the first failure and runs nothing after it.
class WriterPool {
public:
    using Job = std::function<std::optional<Failure>()>;

    explicit WriterPool(int threads) {
        for (int i = 0; i < threads; ++i)
            m_threads.emplace_back([this] { run(); });
    }
    ~WriterPool() {
        {
            std::lock_guard lock(m_mutex);
            m_stop = true;
        }
        m_ready.notify_all();
        for (std::thread& thread : m_threads)
            thread.join();
    }

    std::optional<Failure> submit(Job job) {
        std::unique_lock lock(m_mutex);
        m_space.wait(lock, [this] { return m_jobs.size() < kQueued || m_failure; });
        if (m_failure)
            return m_failure;
        m_jobs.push_back(std::move(job));
        m_ready.notify_one();
        return std::nullopt;
    }

    // Waits until every job queued has run; the first failure.
    std::optional<Failure> drain() {
        std::unique_lock lock(m_mutex);
        m_idle.wait(lock, [this] { return m_jobs.empty() && m_busy == 0; });
        return m_failure;
    }

private:
    static constexpr size_t kQueued = 256;

    void run() {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_ready.wait(lock, [this] { return m_stop || !m_jobs.empty(); });
            if (m_jobs.empty())
                return;
            Job job = std::move(m_jobs.front());
            m_jobs.pop_front();
            m_space.notify_one();
            if (m_failure)
                continue; // nothing runs after a failure
            ++m_busy;
            lock.unlock();
            std::optional<Failure> failure = job();
            lock.lock();
            --m_busy;
            if (failure && !m_failure) {
                m_failure = std::move(failure);
                m_space.notify_all();
            }
            if (m_jobs.empty() && m_busy == 0)
                m_idle.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_ready, m_space, m_idle;
    std::deque<Job> m_jobs;
    int m_busy = 0;
    bool m_stop = false;
    std::optional<Failure> m_failure;
    std::vector<std::thread> m_threads;
};

// One folder beneath the destination, held open while the run lasts.
struct Folder {
    OutputFolder dir;
    bool madeThisRun = false; // then it holds only what this run wrote, and is never listed
    bool listed = false;
    bool tested = false; // the desktop's folder test has passed
    // Upper-cased game name -> the entry as it was on disk before the run.
    std::unordered_map<std::string, FolderEntry> existing;
    // Upper-cased game name -> the name on disk of a file this run wrote.
    std::unordered_map<std::string, QString> written;
};

class Extractor {
public:
    Extractor(const ExtractOptions& options, const ArchiveFile& archive) : m_options(options), m_archive(archive) {
        if (options.replaceWhole)
            m_pool = std::make_unique<WriterPool>(kWriterThreads);
    }

    // Opens the destination, making it as the rules say when it is missing.
    // The desktop makes it (one level) only for an entry lying directly in it.
    std::optional<Failure> openRoot(const QString& host, const std::string& gamePath, const FileServices& files,
                                    bool entryInRoot) {
        auto root = std::make_unique<Folder>();
        FolderError error;
        if (!host.isEmpty())
            root->dir = OutputFolder::open(host, error);
        if (host.isEmpty() || (error && error.fault != FolderFault::Missing))
            return m_options.createParents ? folderFailure(host.isEmpty() ? fromGameText(gamePath) : host)
                                           : podRuntimeFailure(host.isEmpty() ? 76 : 75);
        if (error) {
            const bool made =
                m_options.createParents ? QDir().mkpath(host) : entryInRoot && files.makeDirectory(gamePath);
            if (!made)
                return m_options.createParents ? folderFailure(host) : podRuntimeFailure(76);
            root->dir = OutputFolder::open(host, error);
            if (error)
                return m_options.createParents ? folderFailure(host) : podRuntimeFailure(75);
            root->madeThisRun = true;
            root->tested = true;
        }
        m_folders.emplace(std::string(), std::move(root));
        return std::nullopt;
    }

    std::optional<Failure> write(const PodEntry& entry, const std::string& relative, int& overwritten) {
        const size_t cut = relative.rfind('\\');
        const std::string folderPath = cut == std::string::npos ? std::string() : relative.substr(0, cut);
        const std::string_view fileName =
            cut == std::string::npos ? std::string_view(relative) : std::string_view(relative).substr(cut + 1);
        Folder* folder = nullptr;
        if (auto failure = resolveFolder(entry, upperGame(folderPath), folderPath, true, folder))
            return failure;

        std::string key = upperGame(fileName);
        QString diskName;
        const auto before = folder->written.find(key);
        if (before != folder->written.end()) {
            diskName = before->second;
            ++overwritten;
        } else if (const FolderEntry* found = existingEntry(*folder, key)) {
            if (found->kind == EntryKind::Link)
                return linkFailure(entry, *folder, found->name);
            if (found->kind != EntryKind::File)
                return writeFailure(folder->dir.hostPath() + QLatin1Char('/') + found->name,
                                    QStringLiteral("a folder of that name is in the way"));
            diskName = found->name;
        } else {
            diskName = fromGameText(fileName);
        }

        const bool collides = before != folder->written.end();
        if (before == folder->written.end())
            folder->written.emplace(std::move(key), diskName);
        folder->tested = true;
        if (!m_pool)
            return writeFile(entry, *folder, diskName, m_window);
        // An entry writing over one of this run waits until the earlier one is on disk.
        if (collides)
            if (auto failure = m_pool->drain())
                return failure;
        return m_pool->submit([this, entry, folder, diskName] {
            thread_local Window window;
            return writeFile(entry, *folder, diskName, window);
        });
    }

    // Waits for the files still being written; the first failure among them.
    std::optional<Failure> finish() { return m_pool ? m_pool->drain() : std::nullopt; }

private:
    // Opens, fills and (by the command line's rules) commits one file.
    std::optional<Failure> writeFile(const PodEntry& entry, const Folder& folder, const QString& diskName,
                                     Window& window) const {
        const QString hostPath = folder.dir.hostPath() + QLatin1Char('/') + diskName;
        FolderError error;
        OutputFile out = m_options.replaceWhole ? folder.dir.createTemporary(diskName, error)
                                                : folder.dir.openInPlace(diskName, error);
        if (error.fault == FolderFault::Link)
            return linkFailure(entry, folder, diskName);
        if (error)
            return writeFailure(hostPath, error.reason);
        if (auto failure = copy(entry, out, window, hostPath)) {
            folder.dir.discard(out);
            return failure;
        }
        if (m_options.replaceWhole) {
            error = folder.dir.commit(out, diskName, true);
            if (error.fault == FolderFault::Link)
                return linkFailure(entry, folder, diskName);
            if (error)
                return writeFailure(hostPath, error.reason);
        }
        return std::nullopt;
    }

    std::optional<Failure> copy(const PodEntry& entry, OutputFile& out, Window& window, const QString& hostPath) const {
        if (entry.size == 0)
            return std::nullopt;
        FolderError error;
        if (entry.size <= kSmallEntry) {
            if (!window.data)
                window.data.reset(new char[size_t(kWindow)]);
            if (entry.start < window.start || entry.end > window.start + window.length) {
                window.start = entry.start;
                window.length = m_archive.readAt(entry.start, window.data.get(), kWindow);
                if (window.length < entry.size) {
                    window.length = 0;
                    return podRuntimeFailure(75);
                }
            }
            error = out.writeAt(0, window.data.get() + (entry.start - window.start), entry.size);
        } else {
            error = out.copyFrom(m_archive, entry.start, 0, entry.size);
        }
        if (error)
            return writeFailure(hostPath, error.reason);
        return std::nullopt;
    }

    // The entry on disk named `key` (upper-cased) before the run, listing the folder the first time.
    const FolderEntry* existingEntry(Folder& folder, const std::string& key) {
        if (folder.madeThisRun)
            return nullptr;
        if (!folder.listed) {
            FolderError error;
            for (FolderEntry& item : folder.dir.list(error)) {
                std::string name = upperGame(toGameText(item.name));
                folder.existing.emplace(std::move(name), std::move(item));
            }
            folder.listed = true;
        }
        const auto found = folder.existing.find(key);
        return found == folder.existing.end() ? nullptr : &found->second;
    }

    // The folder `path` (relative to the destination; `key` upper-cased), opened or made as the rules
    // say. `entryFolder`: the folder an entry lies in directly (the desktop tests and makes only that one).
    std::optional<Failure> resolveFolder(const PodEntry& entry, const std::string& key, const std::string& path,
                                         bool entryFolder, Folder*& out) {
        auto cached = m_folders.find(key);
        if (cached == m_folders.end()) {
            const size_t cut = key.rfind('\\');
            const std::string parentKey = cut == std::string::npos ? std::string() : key.substr(0, cut);
            const std::string parentPath = cut == std::string::npos ? std::string() : path.substr(0, cut);
            const std::string name = cut == std::string::npos ? path : path.substr(cut + 1);
            Folder* parent = nullptr;
            if (auto failure = resolveFolder(entry, parentKey, parentPath, false, parent))
                return failure;
            auto folder = std::make_unique<Folder>();
            FolderError error;
            const FolderEntry* found = existingEntry(*parent, key.substr(cut == std::string::npos ? 0 : cut + 1));
            if (found && found->kind == EntryKind::Link)
                return linkFailure(entry, *parent, found->name);
            if (found && found->kind == EntryKind::Folder) {
                folder->dir = parent->dir.child(found->name, error);
            } else if (found) {
                return m_options.createParents ? folderFailure(parent->dir.hostPath() + QLatin1Char('/') + found->name)
                                               : podRuntimeFailure(75);
            } else if (!m_options.createParents && !entryFolder) {
                return podRuntimeFailure(76); // the desktop makes one level only
            } else {
                const QString hostName = fromGameText(name);
                folder->dir = parent->dir.makeChild(hostName, error);
                if (error.fault == FolderFault::Exists) // made by someone else meanwhile
                    folder->dir = parent->dir.child(hostName, error);
                else
                    folder->madeThisRun = folder->tested = !error;
            }
            if (error.fault == FolderFault::Link)
                return linkFailure(entry, *parent, found ? found->name : fromGameText(name));
            if (error)
                return m_options.createParents ? folderFailure(parent->dir.hostPath() + QLatin1Char('/') +
                                                               (found ? found->name : fromGameText(name)))
                                               : podRuntimeFailure(75);
            cached = m_folders.emplace(key, std::move(folder)).first;
        }
        Folder& folder = *cached->second;
        if (entryFolder && !folder.tested && !m_options.createParents) {
            // The desktop's folder test: a folder without an ordinary file is "made" again, which fails.
            existingEntry(folder, std::string());
            for (const auto& [name, item] : folder.existing)
                if (item.kind == EntryKind::File && !item.name.startsWith(QLatin1Char('.')))
                    folder.tested = true;
            if (!folder.tested)
                return podRuntimeFailure(75);
        }
        out = &folder;
        return std::nullopt;
    }

    Failure linkFailure(const PodEntry& entry, const Folder& folder, const QString& name) const {
        // Also called on the writer threads: the name is copied before the text is made.
        return writeError(linkRefusedText(entry.name, folder.dir.hostPath() + QLatin1Char('/') + name));
    }

    Failure folderFailure(const QString& host) const {
        return writeError(QStringLiteral("Could not create the folder %1.").arg(QDir::toNativeSeparators(host)));
    }

    Failure writeFailure(const QString& hostPath, const QString& reason) const {
        qCInfo(lcPod) << "extraction could not write" << hostPath << reason;
        if (!m_options.replaceWhole)
            return podRuntimeFailure(75);
        return writeError(QStringLiteral("Could not write %1: %2").arg(QDir::toNativeSeparators(hostPath), reason));
    }

    const ExtractOptions& m_options;
    const ArchiveFile& m_archive;
    std::unordered_map<std::string, std::unique_ptr<Folder>> m_folders; // by upper-cased relative path
    Window m_window;
    std::unique_ptr<WriterPool> m_pool; // the command line's files, written on several threads
};

} // namespace

QString corruptPodText() {
    return QStringLiteral("This POD appears to be corrupt!");
}

QString fileNotFoundText() {
    return QStringLiteral("File not found!");
}

QString extractingText(std::string_view name) {
    return QStringLiteral("Extracting ") + fromGameText(trimTrailingBlanks(name)) + QStringLiteral("..");
}

QString extractedSummaryText(const ExtractSummary& summary) {
    QString text = QString::number(summary.files) + QStringLiteral(" files (") +
                   QString::fromStdString(AddCommas(static_cast<double>(summary.bytes))) +
                   QStringLiteral(" bytes) extracted in ") + secondsText(summary.seconds) + QStringLiteral("s!");
    if (summary.overwritten > 0)
        text += QStringLiteral(" %1 %2 written over by a later entry.")
                    .arg(summary.overwritten)
                    .arg(summary.overwritten == 1 ? QStringLiteral("file") : QStringLiteral("files"));
    return text;
}

QString linkRefusedText(std::string_view entryName, const QString& hostPath) {
    return QStringLiteral("%1 was not extracted: %2 is a link, and Korvel never writes through links.")
        .arg(fromGameText(trimBlanks(entryName)), QDir::toNativeSeparators(hostPath));
}

std::vector<size_t> allRows(const PodDirectory& listing) {
    std::vector<size_t> rows(listing.entries.size());
    for (size_t i = 0; i < rows.size(); ++i)
        rows[i] = i;
    return rows;
}

Result<ExtractSummary> ExtractFiles(const FileServices& files, const PodDirectory& listing,
                                    const std::vector<size_t>& rows, const std::string& destination,
                                    const ExtractOptions& options, const ExtractProgress& progress) {
    QElapsedTimer clock;
    clock.start();
    const std::string folder = withTrailingBackslash(destination);
    ExtractSummary summary;
    for (size_t row : rows) {
        if (row >= listing.entries.size())
            return refused(QStringLiteral("No such row."));
        summary.bytes += listing.entries.sizeAt(row);
    }

    ArchiveFile archive;
    if (!archive.open(files.hostPath(listing.path())))
        return podRuntimeFailure(archive.exists() ? 70 : 53);
    const qint64 length = archive.size();

    Extractor extractor(options, archive);
    bool rootOpen = false;
    const int total = static_cast<int>(rows.size());
    for (int k = 0; k < total; ++k) {
        const PodEntry entry = listing.entries[rows[static_cast<size_t>(k)]];
        if (progress)
            progress(k, total, entry.name);
        const std::optional<std::string> relative = entryRelativePath(entry.name);
        if (entry.start > length || entry.end > length || entry.start < 0 || entry.size < 0 || !relative) {
            // Rows before this one are written, and a failure among them came first.
            if (auto failure = extractor.finish())
                return *failure;
            return readError(corruptPodText());
        }
        if (!rootOpen) {
            const std::string root = folder.substr(0, folder.size() - 1);
            if (auto failure =
                    extractor.openRoot(files.hostPath(root), root, files, relative->find('\\') == std::string::npos))
                return *failure;
            rootOpen = true;
        }
        if (auto failure = extractor.write(entry, *relative, summary.overwritten)) {
            extractor.finish();
            return *failure;
        }
    }
    if (auto failure = extractor.finish())
        return *failure;
    if (progress)
        progress(total, total, std::string_view());
    summary.files = total - summary.overwritten;
    summary.seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    return summary;
}

Status MassExtract(const FileServices& files, const std::string& gameFolder,
                   const std::vector<std::string>& archiveNames, const ExtractOptions& options,
                   const MassExtractHooks& hooks) {
    const std::string folder = withTrailingBackslash(gameFolder);
    for (const std::string& name : archiveNames) {
        if (!files.findsName(folder, name))
            return readError(fileNotFoundText());
        Result<PodDirectory> listing = ListPOD(files, folder + name);
        const bool wanted = !hooks.listed || hooks.listed(folder + name, listing);
        if (!listing || !wanted)
            continue;
        const std::vector<size_t> rows = hooks.rows ? hooks.rows(*listing) : allRows(*listing);
        Result<ExtractSummary> done = ExtractFiles(files, *listing, rows, folder, options, hooks.progress);
        if (!done)
            return done.failure();
        if (hooks.extracted)
            hooks.extracted(*done);
    }
    return Status();
}

} // namespace korvel
