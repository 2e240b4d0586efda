#include "pod_directory.h"

#include "platform/diagnostics.h"
#include "platform/dialogs.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

#include <QFile>

#include <cmath>
#include <optional>

namespace korvel {

namespace {

// The archive's bytes through an open device. A seek past the end of the file reads as nothing.
class DeviceSource final : public PodSource {
public:
    explicit DeviceSource(QIODevice& device) : m_device(device) {}
    long long size() const override { return m_device.size(); }
    long long readAt(long long offset, char* out, long long length) override {
        if (!m_device.seek(offset))
            return offset < m_device.size() ? -1 : 0;
        long long done = 0;
        while (done < length) {
            const qint64 got = m_device.read(out + done, length - done);
            if (got < 0)
                return -1;
            if (got == 0)
                break;
            done += got;
        }
        return done;
    }

private:
    QIODevice& m_device;
};

Failure failureOf(const PodParseError& error) {
    switch (error.kind) {
    case PodParseError::Unreadable:
        return readError(unreadablePodText());
    case PodParseError::TooManyEntries:
        return readError(tooManyEntriesText(error.count));
    case PodParseError::Runtime:
        break;
    }
    return podRuntimeFailure(error.number);
}

} // namespace

Failure podRuntimeFailure(int number) {
    QString description;
    switch (number) {
    case 5:
        description = QStringLiteral("Invalid procedure call or argument");
        break;
    case 9:
        description = QStringLiteral("Subscript out of range");
        break;
    case 53:
        description = QStringLiteral("File not found");
        break;
    case 61:
        description = QStringLiteral("Disk full");
        break;
    case 63:
        description = QStringLiteral("Bad record number");
        break;
    case 70:
        description = QStringLiteral("Permission denied");
        break;
    case 76:
        description = QStringLiteral("Path not found");
        break;
    default:
        number = 75;
        description = QStringLiteral("Path/File access error");
        break;
    }
    return unexpectedError(unexpectedErrorText(number, description));
}

QString tooManyEntriesText(qint64 count) {
    std::string number;
    appendWithCommas(number, count);
    return QStringLiteral("This POD lists %1 files, more than Korvel can show.").arg(QString::fromLatin1(number));
}

QString unreadablePodText() {
    return QStringLiteral(
        "Sorry, but Korvel was unable to read this POD. Please note that POD3 files are not yet supported.");
}

Result<PodDirectory> ListPOD(const FileServices& files, const std::string& path) {
    const QString host = files.hostPath(path);
    QFile file(host);
    if (host.isEmpty() || !file.exists())
        return podRuntimeFailure(53);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return podRuntimeFailure(70);
    Result<PodDirectory> listing = listPodFrom(file, path);
    if (!listing)
        qCInfo(lcPod) << "archive refused:" << host << listing.failure().message;
    return listing;
}

Result<PodDirectory> listPodFrom(QIODevice& archive, const std::string& path) {
    PodDirectory listing;
    listing.folder = FolderOf(path);
    listing.fileName = FileNameOf(path);
    DeviceSource source(archive);
    if (std::optional<PodParseError> error = parsePodDirectory(source, listing))
        return failureOf(*error);
    return listing;
}

std::string AddCommas(double value) {
    if (!std::isfinite(value))
        return "0";
    const double rounded = std::round(value);
    if (rounded == 0)
        return "0";
    std::string out;
    if (std::fabs(rounded) < 9.0e18) {
        appendWithCommas(out, static_cast<qint64>(rounded));
        return out;
    }
    const std::string digits = QString::number(std::fabs(rounded), 'f', 0).toStdString();
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i != 0 && (digits.size() - i) % 3 == 0)
            out += ',';
        out += digits[i];
    }
    return rounded < 0 ? "-" + out : out;
}

QString secondsText(double seconds) {
    const double rounded = std::round(seconds * 100.0) / 100.0;
    QString text = QString::number(rounded, 'f', 2);
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text;
}

QString listedStatusText(const PodDirectory& listing, double seconds) {
    return QStringLiteral("Contents of ") + fromGameText(listing.fileName) + QStringLiteral(" listed in ") +
           secondsText(seconds) + QStringLiteral("s");
}

std::vector<quint32> displayOrder(const PodDirectory& listing, bool sorted) {
    return podDisplayOrder(listing.entries, sorted, upperGameChar);
}

} // namespace korvel
