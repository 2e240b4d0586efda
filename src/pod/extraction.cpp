#include "extraction.h"

#include "entry_path.h"

#include "platform/diagnostics.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>

#include <filesystem>
#include <map>
#include <memory>

namespace korvel {

namespace {

constexpr qint64 kCopyChunk = qint64(1) << 20;

// A destination folder: its host path and, once asked for, the names it holds (so an existing file
// is found under another case without listing the folder again for every entry).
struct HostFolder {
    QString host;
    bool listed = false;
    bool holdsFile = false; // a listing for ordinary files would find at least one name
    QHash<QString, QString> byFoldedName;
};

class Extractor {
public:
    Extractor(const FileServices& files, const ExtractOptions& options) : m_files(files), m_options(options) {}

    std::optional<Failure> write(QFile& archive, const PodEntry& entry, const std::string& gamePath,
                                 std::vector<char>& buffer) {
        const std::string folderPath = FolderOf(gamePath);
        HostFolder* folder = nullptr;
        if (auto failure = prepareFolder(folderPath, folder))
            return failure;
        const QString name = fromGameText(FileNameOf(gamePath));
        const QString hostPath = folder->host + QLatin1Char('/') + existingName(*folder, name);

        QFile out(m_options.replaceWhole ? hostPath + QStringLiteral(".korvel-part") : hostPath);
        const QIODevice::OpenMode mode =
            m_options.replaceWhole ? QIODevice::WriteOnly | QIODevice::Truncate : QIODevice::ReadWrite;
        if (!out.open(mode))
            return writeFailure(hostPath, out.errorString());
        if (!archive.seek(entry.start))
            return podRuntimeFailure(75);
        qint64 left = entry.size;
        while (left > 0) {
            const qint64 got = archive.read(buffer.data(), std::min(left, kCopyChunk));
            if (got <= 0) {
                discard(out);
                return podRuntimeFailure(75);
            }
            if (out.write(buffer.data(), got) != got) {
                const QString reason = out.errorString();
                discard(out);
                return writeFailure(hostPath, reason);
            }
            left -= got;
        }
        if (!out.flush()) { // the last buffered bytes may not fit on the disk
            const QString reason = out.errorString();
            discard(out);
            return writeFailure(hostPath, reason);
        }
        out.close();
        if (m_options.replaceWhole) {
            std::error_code error;
            std::filesystem::rename(out.fileName().toStdU16String(), hostPath.toStdU16String(), error);
            if (error) {
                QFile::remove(out.fileName());
                return writeFailure(hostPath, QString::fromStdString(error.message()));
            }
        }
        folder->holdsFile = true;
        if (folder->listed)
            folder->byFoldedName.insert(name.toCaseFolded(), existingName(*folder, name));
        return std::nullopt;
    }

private:
    std::optional<Failure> writeFailure(const QString& hostPath, const QString& reason) const {
        qCInfo(lcPod) << "extraction could not write" << hostPath << reason;
        if (m_options.replaceWhole)
            return writeError(QStringLiteral("Could not write %1: %2").arg(QDir::toNativeSeparators(hostPath), reason));
        return podRuntimeFailure(75);
    }

    void discard(QFile& out) const {
        out.close();
        if (m_options.replaceWhole)
            out.remove();
    }

    std::optional<Failure> prepareFolder(const std::string& folderPath, HostFolder*& folder) {
        const std::string key = upperGame(folderPath);
        auto it = m_folders.find(key);
        if (it == m_folders.end()) {
            auto made = std::make_unique<HostFolder>();
            if (m_options.createParents) {
                made->host = m_files.hostPath(folderPath);
                if (made->host.isEmpty() || !QDir().mkpath(made->host))
                    return writeError(QStringLiteral("Could not create the folder %1.")
                                          .arg(QDir::toNativeSeparators(made->host.isEmpty() ? fromGameText(folderPath)
                                                                                             : made->host)));
            } else {
                made->holdsFile = !m_files.search(folderPath + "*", SearchFilter::NormalFiles).empty();
                if (!made->holdsFile && !m_files.makeDirectory(folderPath))
                    return podRuntimeFailure(m_files.folderExists(folderPath) ? 75 : 76);
                made->host = m_files.hostPath(folderPath);
                made->holdsFile = true;
            }
            it = m_folders.emplace(key, std::move(made)).first;
        }
        folder = it->second.get();
        return std::nullopt;
    }

    QString existingName(HostFolder& folder, const QString& name) {
        if (!folder.listed) {
            const QStringList names =
                QDir(folder.host).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
            for (const QString& entry : names)
                folder.byFoldedName.insert(entry.toCaseFolded(), entry);
            folder.listed = true;
        }
        return folder.byFoldedName.value(name.toCaseFolded(), name);
    }

    const FileServices& m_files;
    const ExtractOptions& m_options;
    std::map<std::string, std::unique_ptr<HostFolder>> m_folders;
};

} // namespace

QString corruptPodText() {
    return QStringLiteral("This POD appears to be corrupt!");
}

QString fileNotFoundText() {
    return QStringLiteral("File not found!");
}

QString extractingText(const std::string& name) {
    return QStringLiteral("Extracting ") + fromGameText(trimTrailingBlanks(name)) + QStringLiteral("..");
}

QString extractedSummaryText(const ExtractSummary& summary) {
    return QString::number(summary.files) + QStringLiteral(" files (") +
           QString::fromStdString(AddCommas(static_cast<double>(summary.bytes))) +
           QStringLiteral(" bytes) extracted in ") + secondsText(summary.seconds) + QStringLiteral("s!");
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
    summary.files = static_cast<int>(rows.size());
    for (size_t row : rows) {
        if (row >= listing.entries.size())
            return refused(QStringLiteral("No such row."));
        summary.bytes += listing.entries[row].size;
    }

    QFile archive(files.hostPath(listing.path()));
    if (!archive.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return podRuntimeFailure(archive.exists() ? 70 : 53);
    const qint64 length = archive.size();

    Extractor extractor(files, options);
    std::vector<char> buffer;
    const int total = static_cast<int>(rows.size());
    for (int k = 0; k < total; ++k) {
        const PodEntry& entry = listing.entries[rows[static_cast<size_t>(k)]];
        if (progress)
            progress(k, total, entry.name);
        if (entry.start > length || entry.end > length || entry.start < 0 || entry.size < 0)
            return readError(corruptPodText());
        const std::optional<std::string> relative = entryRelativePath(entry.name);
        if (!relative)
            return readError(corruptPodText());
        if (buffer.empty())
            buffer.resize(static_cast<size_t>(kCopyChunk));
        if (auto failure = extractor.write(archive, entry, folder + *relative, buffer))
            return *failure;
    }
    if (progress)
        progress(total, total, std::string());
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
