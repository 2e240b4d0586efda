#include "pod_check.h"

#include "entry_path.h"
#include "listing_rows.h"
#include "pod_crc.h"
#include "pod_directory.h"

#include "platform/game_text.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace korvel {

namespace {

constexpr qint64 kReadChunk = qint64(1) << 20;
constexpr int kNamesShown = 5;

quint32 int32At(const char* bytes) {
    quint32 value = 0;
    for (int i = 0; i < 4; ++i)
        value |= quint32(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return value;
}

// "A, B, C" and " and 4 more" past the first few.
QString namesText(const std::vector<std::string>& names) {
    QStringList shown;
    for (size_t i = 0; i < names.size() && i < kNamesShown; ++i)
        shown << fromGameText(names[i]);
    QString text = shown.join(QStringLiteral(", "));
    if (names.size() > kNamesShown)
        text += QStringLiteral(" and %1 more").arg(names.size() - kNamesShown);
    return text;
}

// The register over `length` bytes at `offset`; nullopt when they cannot all be read.
std::optional<quint32> checksumOf(QFile& file, qint64 offset, qint64 length, std::vector<char>& buffer) {
    if (!file.seek(offset))
        return std::nullopt;
    quint32 crc = kPodCrcInit;
    while (length > 0) {
        const qint64 want = std::min(length, kReadChunk);
        buffer.resize(static_cast<size_t>(want));
        const qint64 got = file.read(buffer.data(), want);
        if (got <= 0)
            return std::nullopt;
        crc = podCrcUpdate(crc, buffer.data(), static_cast<size_t>(got));
        length -= got;
    }
    return crc;
}

void checkChecksums(const FileServices& files, const PodDirectory& listing, ArchiveCheck& check) {
    QFile file(files.hostPath(listing.path()));
    std::vector<char> buffer;
    std::string head(8, '\0');
    if (!file.open(QIODevice::ReadOnly) || file.read(head.data(), 8) != 8) {
        check.findings.push_back({CheckProblem::Damaged, QStringLiteral("Could not read the archive.")});
        return;
    }
    bool headerWrong = false;
    const std::optional<quint32> whole = checksumOf(file, 8, listing.archiveSize - 8, buffer);
    headerWrong = !whole || *whole != int32At(head.data() + 4);

    std::vector<std::string> wrong;
    const qint64 recordBytes = kPod2Record * static_cast<qint64>(rowCount(listing));
    std::string records(static_cast<size_t>(recordBytes), '\0');
    if (!file.seek(kPod2Header) || file.read(records.data(), recordBytes) != recordBytes)
        records.clear();
    for (size_t row = 0; row < rowCount(listing); ++row) {
        const qint64 start = rowStart(listing, row);
        const qint64 size = rowSize(listing, row);
        if (records.empty() || start < 0 || size < 0 || start + size > listing.archiveSize)
            continue; // reported as truncated or damaged already
        const std::optional<quint32> crc = checksumOf(file, start, size, buffer);
        if (!crc || *crc != int32At(records.data() + row * kPod2Record + 16))
            wrong.emplace_back(rowName(listing, row));
    }
    if (!headerWrong && wrong.empty())
        return;
    QString text = QStringLiteral("Wrong checksum:");
    if (headerWrong)
        text += QStringLiteral(" header");
    if (!wrong.empty())
        text += (headerWrong ? QStringLiteral(";") : QString()) + QStringLiteral(" entries ") + namesText(wrong);
    check.findings.push_back({CheckProblem::WrongChecksum, text});
}

} // namespace

QString ArchiveCheck::summary() const {
    if (findings.empty())
        return QStringLiteral("Fine");
    QStringList texts;
    for (const CheckFinding& finding : findings)
        texts << finding.text;
    return texts.join(QStringLiteral("; "));
}

QString checkProblemKey(CheckProblem problem) {
    switch (problem) {
    case CheckProblem::NotFound:
        return QStringLiteral("not-found");
    case CheckProblem::Damaged:
        return QStringLiteral("damaged");
    case CheckProblem::Truncated:
        return QStringLiteral("truncated");
    case CheckProblem::Pod3:
        return QStringLiteral("pod3");
    case CheckProblem::UnsafeNames:
        return QStringLiteral("unsafe-names");
    case CheckProblem::WrongChecksum:
        return QStringLiteral("wrong-checksum");
    }
    return QStringLiteral("damaged");
}

QString notFoundText() {
    return QStringLiteral("Not found");
}

ArchiveCheck checkArchive(const FileServices& files, const std::string& path) {
    ArchiveCheck check;
    check.path = path;
    const QString host = files.hostPath(path);
    QFile file(host);
    if (host.isEmpty() || !QFileInfo(host).isFile()) {
        check.findings.push_back({CheckProblem::NotFound, notFoundText()});
        return check;
    }
    if (file.open(QIODevice::ReadOnly) && file.read(4) == "POD3") {
        check.findings.push_back({CheckProblem::Pod3, QStringLiteral("POD3 archive (Korvel reads POD1 and POD2)")});
        return check;
    }
    file.close();
    const Result<PodDirectory> listing = ListPOD(files, path);
    if (!listing) {
        check.findings.push_back({CheckProblem::Damaged, listing.failure().message});
        return check;
    }
    std::vector<std::string> outside;
    std::vector<std::string> unsafe;
    QString firstOutside;
    for (size_t row = 0; row < rowCount(*listing); ++row) {
        const qint64 start = rowStart(*listing, row);
        const qint64 size = rowSize(*listing, row);
        const qint64 end = start + size;
        if (start < 0 || size < 0 || end > listing->archiveSize) {
            if (outside.empty())
                firstOutside = QStringLiteral("%1 ends at byte %2 of a %3-byte file")
                                   .arg(fromGameText(rowName(*listing, row)))
                                   .arg(end)
                                   .arg(listing->archiveSize);
            outside.emplace_back(rowName(*listing, row));
        }
        if (!entryRelativePath(rowName(*listing, row)))
            unsafe.emplace_back(rowName(*listing, row));
    }
    if (!outside.empty()) {
        QString text = QStringLiteral("Truncated: ") + firstOutside;
        if (outside.size() > 1)
            text += QStringLiteral(" (%1 entries end past the end)").arg(outside.size());
        check.findings.push_back({CheckProblem::Truncated, text});
    }
    if (!unsafe.empty())
        check.findings.push_back(
            {CheckProblem::UnsafeNames, QStringLiteral("Unsafe entry names: ") + namesText(unsafe)});
    if (listing->pod2)
        checkChecksums(files, *listing, check);
    return check;
}

} // namespace korvel
