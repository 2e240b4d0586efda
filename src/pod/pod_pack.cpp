#include "pod_pack.h"

#include "entry_path.h"
#include "listing_rows.h"
#include "pod_crc.h"
#include "pod_directory.h"

#include "platform/file_tree.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <optional>

namespace korvel {

namespace {

constexpr qint64 kCommentField = 80;
constexpr qint64 kLargestArchive = std::numeric_limits<qint32>::max();
constexpr qint64 kCopyChunk = qint64(1) << 20;
constexpr size_t kExtractedNameLimit = 80; // extraction reads names through an 80-character buffer

// The one place where host text is turned into the game's code page: nullopt when the code page
// has no byte for some character.
std::optional<std::string> inGameCodePage(const QString& text) {
    std::string bytes = toGameText(text);
    if (fromGameText(bytes) != text)
        return std::nullopt;
    return bytes;
}

// A host path held in the file system's bytes, for messages.
QString hostText(const std::string& path) {
    return QDir::toNativeSeparators(QFile::decodeName(QByteArray::fromStdString(path)));
}

void putInt32(std::string& bytes, qint64 offset, quint32 value) {
    for (int i = 0; i < 4; ++i)
        bytes[static_cast<size_t>(offset + i)] = static_cast<char>((value >> (8 * i)) & 0xFF);
}

quint32 int32At(const char* bytes) {
    quint32 value = 0;
    for (int i = 0; i < 4; ++i)
        value |= quint32(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return value;
}

// Names compared as the game compares them: any case, blanks at either end ignored, "/" as "\".
std::string foldedName(std::string_view name) {
    std::string folded = upperGame(trimBlanks(name));
    std::replace(folded.begin(), folded.end(), '/', '\\');
    return folded;
}

QString pod1LimitText(const QString& name, size_t bytes) {
    return QStringLiteral("%1: names in POD1 archives are limited to %2 bytes; this one has %3.")
        .arg(name)
        .arg(kPod1NameLimit)
        .arg(bytes);
}

// The checks on an entry name already in the game's code page; `relative` gives the host name for
// the refusals.
template <typename HostName>
Result<std::string> checkedEntryName(std::string name, const HostName& relative, PodFormat format) {
    if (name.size() > kExtractedNameLimit)
        return refused(QStringLiteral("%1: names are limited to %2 bytes; this one has %3.")
                           .arg(relative())
                           .arg(kExtractedNameLimit)
                           .arg(name.size()));
    const std::optional<std::string> extracted = entryRelativePath(name);
    if (!extracted || *extracted != name)
        return refused(QStringLiteral("%1: extraction would not write this name back as it is.").arg(relative()));
    if (format == PodFormat::Pod1 && name.size() > kPod1NameLimit)
        return refused(pod1LimitText(relative(), name.size()));
    return name;
}

// The entries of a listed archive as items that copy their data from it (POD2 keeps each record's
// timestamp). Refused when an entry lies outside the file.
Result<std::vector<PackItem>> archiveItems(const FileServices& files, const PodDirectory& listing) {
    const QString host = files.hostPath(listing.path());
    const std::string hostBytes = QFile::encodeName(host).toStdString();
    std::vector<PackItem> items;
    items.reserve(rowCount(listing));
    std::string records;
    if (listing.pod2 && rowCount(listing) > 0) {
        QFile file(host);
        const qint64 length = kPod2Record * static_cast<qint64>(rowCount(listing));
        if (!file.open(QIODevice::ReadOnly) || !file.seek(kPod2Header))
            return readError(
                QStringLiteral("Could not read %1: %2").arg(fromGameText(listing.path()), file.errorString()));
        const QByteArray bytes = file.read(length);
        if (bytes.size() != length)
            return readError(unreadablePodText());
        records.assign(bytes.constData(), static_cast<size_t>(bytes.size()));
    }
    for (size_t row = 0; row < rowCount(listing); ++row) {
        const qint64 start = rowStart(listing, row);
        const qint64 size = rowSize(listing, row);
        if (start < 0 || size < 0 || start + size > listing.archiveSize)
            return refused(QStringLiteral("The archive is damaged: %1 lies past the end of the file.")
                               .arg(fromGameText(rowName(listing, row))));
        PackItem item;
        item.name = std::string(rowName(listing, row));
        item.size = size;
        item.sourceHost = hostBytes;
        item.sourceOffset = start;
        if (listing.pod2)
            item.modified = int32At(records.data() + row * kPod2Record + 12);
        items.push_back(std::move(item));
    }
    return items;
}

std::optional<size_t> findItem(const std::vector<PackItem>& items, const std::string& name) {
    const std::string wanted = foldedName(name);
    for (size_t i = 0; i < items.size(); ++i)
        if (foldedName(items[i].name) == wanted)
            return i;
    return std::nullopt;
}

} // namespace

QString cancelledText() {
    return QStringLiteral("Cancelled.");
}

Result<std::string> packEntryName(const QString& relative, PodFormat format) {
    if (relative.contains(QLatin1Char('\\')))
        return refused(QStringLiteral("%1: a file name holding \"\\\" cannot be stored.").arg(relative));
    QString separated = relative;
    separated.replace(QLatin1Char('/'), QLatin1Char('\\'));
    std::optional<std::string> name = inGameCodePage(separated);
    if (!name)
        return refused(QStringLiteral("%1: the game's code page cannot represent this name.").arg(relative));
    return checkedEntryName(
        std::move(*name), [&relative] { return relative; }, format);
}

Result<std::string> typedEntryName(const QString& typed, PodFormat format) {
    const std::optional<std::string> name = inGameCodePage(typed);
    if (!name)
        return refused(QStringLiteral("%1: the game's code page cannot represent this name.").arg(typed));
    const std::optional<std::string> relative = entryRelativePath(*name);
    if (!relative || trimBlanks(*name).size() > kExtractedNameLimit)
        return refused(
            QStringLiteral("The entry name %1 would leave the extraction folder or names no file.").arg(typed));
    if (format == PodFormat::Pod1 && relative->size() > kPod1NameLimit)
        return refused(pod1LimitText(typed, relative->size()));
    return *relative;
}

Result<std::string> podComment(const QString& comment) {
    const std::optional<std::string> bytes = inGameCodePage(comment);
    if (!bytes || bytes->find('\0') != std::string::npos)
        return refused(QStringLiteral("The game's code page cannot represent the comment."));
    if (bytes->size() > kCommentLimit)
        return refused(QStringLiteral("The comment is limited to %1 bytes; this one has %2.")
                           .arg(kCommentLimit)
                           .arg(bytes->size()));
    return *bytes;
}

Result<std::vector<PackItem>> collectPackItems(const FileServices& files, const std::string& folder, PodFormat format,
                                               const std::string& skip) {
    const Result<std::vector<TreeFile>> tree = listFilesBeneath(files, folder);
    if (!tree)
        return tree.failure();
    const std::string base = QFile::encodeName(QDir::cleanPath(files.hostPath(folder))).toStdString() + '/';
    // The skipped file as a name beneath the folder, when it lies there.
    std::optional<std::string> skipped;
    if (!skip.empty()) {
        const std::string skipHost = QFile::encodeName(QDir::cleanPath(files.hostPath(skip))).toStdString();
        if (skipHost.size() > base.size() && skipHost.compare(0, base.size(), base) == 0)
            skipped = skipHost.substr(base.size());
    }
    const auto hostName = [](const TreeFile& file) {
        return QFile::decodeName(QByteArray::fromStdString(file.relative));
    };

    // Names, their sort keys (all in one buffer) and their files, sorted through an index.
    std::vector<std::string> names;
    std::vector<const TreeFile*> sources;
    std::vector<size_t> keyEnds;
    std::string keys;
    names.reserve(tree->size());
    sources.reserve(tree->size());
    keyEnds.reserve(tree->size());
    for (const TreeFile& file : *tree) {
        if (skipped && file.relative == *skipped)
            continue;
        Result<std::string> name = [&]() -> Result<std::string> {
            if (!isPlainAscii(file.relative))
                return packEntryName(hostName(file), format);
            // Plain ASCII is the same bytes on disk and in the game's code page.
            const auto relative = [&file] {
                return QString::fromLatin1(file.relative.data(), qsizetype(file.relative.size()));
            };
            if (file.relative.find('\\') != std::string::npos)
                return refused(QStringLiteral("%1: a file name holding \"\\\" cannot be stored.").arg(relative()));
            std::string separated = file.relative;
            std::replace(separated.begin(), separated.end(), '/', '\\');
            return checkedEntryName(std::move(separated), relative, format);
        }();
        if (!name)
            return name.failure();
        keys += upperGame(*name);
        keyEnds.push_back(keys.size());
        names.push_back(std::move(*name));
        sources.push_back(&file);
    }
    if (names.empty())
        return refused(QStringLiteral("%1 holds no files to pack.").arg(fromGameText(folder)));
    const auto key = [&](size_t i) {
        const size_t start = i == 0 ? 0 : keyEnds[i - 1];
        return std::string_view(keys).substr(start, keyEnds[i] - start);
    };
    std::vector<size_t> order(names.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        const std::string_view keyA = key(a);
        const std::string_view keyB = key(b);
        return keyA != keyB ? keyA < keyB : names[a] < names[b];
    });
    std::vector<PackItem> items;
    items.reserve(order.size());
    for (size_t i = 0; i < order.size(); ++i) {
        const size_t at = order[i];
        if (i > 0 && key(at) == key(order[i - 1]))
            return refused(QStringLiteral("%1 and %2 would be stored under the same name.")
                               .arg(hostName(*sources[order[i - 1]]), hostName(*sources[at])));
        const TreeFile& file = *sources[at];
        PackItem item;
        item.name = std::move(names[at]);
        item.size = file.size;
        item.modified = file.modified;
        item.sourceHost.reserve(base.size() + file.relative.size());
        item.sourceHost.append(base).append(file.relative);
        items.push_back(std::move(item));
    }
    return items;
}

Result<PackSummary> writePodArchive(const FileServices& files, const std::string& target,
                                    const std::vector<PackItem>& items, PodFormat format, const std::string& comment,
                                    const WorkProgress& progress) {
    const bool pod2 = format == PodFormat::Pod2;
    const qint64 count = static_cast<qint64>(items.size());
    if (count == 0)
        return refused(QStringLiteral("An archive must hold at least one file."));
    qint64 nameBytes = 0;
    qint64 dataBytes = 0;
    for (const PackItem& item : items) {
        nameBytes += static_cast<qint64>(item.name.size()) + 1;
        dataBytes += item.size;
        if (dataBytes > kLargestArchive)
            break;
    }
    const qint64 directoryBytes =
        pod2 ? kPod2Header + kPod2Record * count + nameBytes : kPod1Header + kPod1Record * count;
    if (dataBytes > kLargestArchive || directoryBytes + dataBytes > kLargestArchive)
        return refused(QStringLiteral("The files are too large for one POD archive (at most 2 GiB)."));

    AtomicFileWriter out;
    if (Status opened = out.open(files, target); !opened)
        return opened.failure();
    std::string directory(static_cast<size_t>(directoryBytes), '\0');
    if (Status written = out.write(directory.data(), directoryBytes); !written)
        return written.failure();

    std::vector<quint32> checksums(items.size(), 0);
    quint32 dataChecksum = 0; // register over all the data, started at 0
    std::vector<char> buffer;
    SequentialReader source;
    for (size_t i = 0; i < items.size(); ++i) {
        if (progress && !progress(static_cast<qint64>(i), count))
            return refused(cancelledText());
        const PackItem& item = items[i];
        if (!source.isOpen() || source.fileName() != item.sourceHost) {
            if (!source.open(item.sourceHost))
                return readError(
                    QStringLiteral("Could not read %1: %2").arg(hostText(item.sourceHost), source.errorString()));
        }
        if (item.sourceOffset != 0 && !source.seek(item.sourceOffset))
            return readError(
                QStringLiteral("Could not read %1: %2").arg(hostText(item.sourceHost), source.errorString()));
        quint32 checksum = kPodCrcInit;
        for (qint64 left = item.size; left > 0;) {
            const qint64 want = std::min(left, kCopyChunk);
            if (buffer.size() < static_cast<size_t>(want))
                buffer.resize(static_cast<size_t>(kCopyChunk));
            const qint64 got = source.read(buffer.data(), want);
            if (got <= 0)
                return readError(QStringLiteral("%1 changed or could not be read while it was being packed.")
                                     .arg(hostText(item.sourceHost)));
            if (Status written = out.write(buffer.data(), got); !written)
                return written.failure();
            if (pod2) {
                checksum = podCrcUpdate(checksum, buffer.data(), static_cast<size_t>(got));
                dataChecksum = podCrcUpdate(dataChecksum, buffer.data(), static_cast<size_t>(got));
            }
            left -= got;
        }
        checksums[i] = checksum;
    }
    source.close();

    qint64 start = directoryBytes;
    if (pod2) {
        directory.replace(0, 4, "POD2");
        directory.replace(8, std::min<size_t>(comment.size(), kCommentField), comment, 0, kCommentField);
        putInt32(directory, 88, static_cast<quint32>(count));
        putInt32(directory, 92, 0); // no audit records follow the data
        qint64 nameOffset = 0;
        qint64 namesAt = kPod2Header + kPod2Record * count;
        for (size_t i = 0; i < items.size(); ++i) {
            const PackItem& item = items[i];
            const qint64 record = kPod2Header + kPod2Record * static_cast<qint64>(i);
            putInt32(directory, record, static_cast<quint32>(nameOffset));
            putInt32(directory, record + 4, static_cast<quint32>(item.size));
            putInt32(directory, record + 8, static_cast<quint32>(start));
            putInt32(directory, record + 12, static_cast<quint32>(std::clamp<qint64>(item.modified, 0, 0xFFFFFFFFll)));
            putInt32(directory, record + 16, checksums[i]);
            directory.replace(static_cast<size_t>(namesAt + nameOffset), item.name.size(), item.name);
            nameOffset += static_cast<qint64>(item.name.size()) + 1;
            start += item.size;
        }
        const quint32 head = podCrcUpdate(kPodCrcInit, directory.data() + 8, directory.size() - 8);
        putInt32(directory, 4, podCrcShift(head, dataBytes) ^ dataChecksum);
    } else {
        putInt32(directory, 0, static_cast<quint32>(count));
        directory.replace(4, std::min<size_t>(comment.size(), kCommentField), comment, 0, kCommentField);
        for (size_t i = 0; i < items.size(); ++i) {
            const PackItem& item = items[i];
            const qint64 record = kPod1Header + kPod1Record * static_cast<qint64>(i);
            directory.replace(static_cast<size_t>(record), std::min<size_t>(item.name.size(), 32), item.name, 0, 32);
            putInt32(directory, record + 32, static_cast<quint32>(item.size));
            putInt32(directory, record + 36, static_cast<quint32>(start));
            start += item.size;
        }
    }
    if (Status moved = out.seek(0); !moved)
        return moved.failure();
    if (Status written = out.write(directory.data(), directoryBytes); !written)
        return written.failure();
    if (Status committed = out.commit(); !committed)
        return committed.failure();
    if (progress)
        progress(count, count);
    return PackSummary{count, directoryBytes + dataBytes};
}

Result<PackSummary> packFolder(const FileServices& files, const std::string& folder, const std::string& target,
                               const PackOptions& options, const WorkProgress& progress) {
    const Result<std::string> comment = podComment(options.comment);
    if (!comment)
        return comment.failure();
    const QString targetHost = files.hostPath(target);
    if (targetHost.isEmpty())
        return refused(QStringLiteral("No drive holds %1.").arg(fromGameText(target)));
    if (QFileInfo(targetHost).isDir())
        return refused(QStringLiteral("%1 is a folder.").arg(QDir::toNativeSeparators(targetHost)));
    if (!options.replaceExisting && QFileInfo::exists(targetHost))
        return refused(QStringLiteral("%1 already exists.").arg(QDir::toNativeSeparators(targetHost)));
    const Result<std::vector<PackItem>> items = collectPackItems(files, folder, options.format, target);
    if (!items)
        return items.failure();
    return writePodArchive(files, target, *items, options.format, *comment, progress);
}

Result<PackSummary> addToArchive(const FileServices& files, const std::string& archive, const std::string& file,
                                 const QString& entryName, const WorkProgress& progress) {
    const Result<PodDirectory> listing = ListPOD(files, archive);
    if (!listing)
        return listing.failure();
    const PodFormat format = listing->pod2 ? PodFormat::Pod2 : PodFormat::Pod1;
    const Result<std::string> name = typedEntryName(entryName, format);
    if (!name)
        return name.failure();
    const QFileInfo source(files.hostPath(file));
    if (!source.isFile())
        return refused(QStringLiteral("File not found: %1").arg(fromGameText(file)));
    Result<std::vector<PackItem>> items = archiveItems(files, *listing);
    if (!items)
        return items.failure();
    PackItem added;
    added.name = *name;
    added.size = source.size();
    added.modified = source.lastModified().toSecsSinceEpoch();
    added.sourceHost = QFile::encodeName(source.absoluteFilePath()).toStdString();
    if (const std::optional<size_t> at = findItem(*items, *name))
        (*items)[*at] = std::move(added);
    else
        items->push_back(std::move(added));
    return writePodArchive(files, archive, *items, format, listing->comment, progress);
}

Result<PackSummary> removeFromArchive(const FileServices& files, const std::string& archive, const QString& entryName,
                                      const WorkProgress& progress) {
    const Result<PodDirectory> listing = ListPOD(files, archive);
    if (!listing)
        return listing.failure();
    Result<std::vector<PackItem>> items = archiveItems(files, *listing);
    if (!items)
        return items.failure();
    const std::optional<std::string> wanted = inGameCodePage(entryName);
    const std::optional<size_t> at = wanted ? findItem(*items, *wanted) : std::nullopt;
    if (!at)
        return refused(QStringLiteral("The archive holds no file named %1.").arg(entryName));
    if (items->size() == 1)
        return refused(
            QStringLiteral("%1 is the archive's only file; an archive must hold at least one.").arg(entryName));
    items->erase(items->begin() + static_cast<std::ptrdiff_t>(*at));
    return writePodArchive(files, archive, *items, listing->pod2 ? PodFormat::Pod2 : PodFormat::Pod1, listing->comment,
                           progress);
}

} // namespace korvel
