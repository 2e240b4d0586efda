#include "output_folder.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <utility>

#ifdef Q_OS_UNIX
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <memory>
#endif

namespace korvel {

namespace {

// ".NAME.korvel-0123456789abcdef": hidden, beside its target, and not guessable.
QString temporaryName(const QString& forName) {
    return QLatin1Char('.') + forName + QStringLiteral(".korvel-") +
           QString::number(QRandomGenerator::system()->generate64(), 16);
}

QString beneath(const QString& folder, const QString& name) {
    return folder + QLatin1Char('/') + name;
}

struct Temporary {
    QString name; // empty when none could be made
    int error = 0;
};

// Makes something under a fresh temporary name for `forName`: `make` tries one name and answers 0 or
// the system's error. A name that is taken (EEXIST) is followed by another, up to sixteen in all.
template <typename Make> Temporary makeUnderTemporaryName(const QString& forName, Make&& make) {
    int error = EEXIST;
    for (int attempt = 0; attempt < 16 && error == EEXIST; ++attempt) {
        QString name = temporaryName(forName);
        error = make(name);
        if (error == 0)
            return {std::move(name), 0};
    }
    return {QString(), error};
}

// Why reading the archive gave `got` bytes where more were wanted; each system words it.
FolderError archiveReadFailure(qint64 got);

// Copies `length` bytes at `from` of the archive to `offset` of `out` through a buffer in memory.
FolderError copyThroughBuffer(OutputFile& out, const ArchiveFile& archive, qint64 from, qint64 offset, qint64 length) {
    if (length <= 0)
        return {};
    std::vector<char> buffer(size_t(std::min<qint64>(length, qint64(1) << 20)));
    while (length > 0) {
        const qint64 got = archive.readAt(from, buffer.data(), std::min<qint64>(length, qint64(buffer.size())));
        if (got <= 0)
            return archiveReadFailure(got);
        if (FolderError error = out.writeAt(offset, buffer.data(), got))
            return error;
        from += got;
        offset += got;
        length -= got;
    }
    return {};
}

} // namespace

OutputFile::OutputFile(OutputFile&& other) noexcept {
    *this = std::move(other);
}

OutputFile::~OutputFile() {
    reset();
}

OutputFolder::OutputFolder(OutputFolder&& other) noexcept {
    *this = std::move(other);
}

OutputFolder::~OutputFolder() {
    reset();
}

#ifdef Q_OS_UNIX

namespace {

FolderError errorFrom(int code) {
    FolderFault fault = FolderFault::Other;
    switch (code) {
    case ENOENT:
        fault = FolderFault::Missing;
        break;
    case EEXIST:
        fault = FolderFault::Exists;
        break;
    case ELOOP:
        fault = FolderFault::Link;
        break;
    case ENOTDIR:
    case EISDIR:
        fault = FolderFault::NotFolder;
        break;
    default:
        break;
    }
    return FolderError{fault, QString::fromLocal8Bit(std::strerror(code))};
}

QByteArray encoded(const QString& name) {
    return QFile::encodeName(name);
}

// An open that retries when a signal interrupts it.
int openRelative(int folder, const QByteArray& name, int flags, mode_t mode = 0) {
    int fd;
    do
        fd = ::openat(folder, name.constData(), flags | O_CLOEXEC, mode);
    while (fd < 0 && errno == EINTR);
    return fd;
}

// Tells a link that O_NOFOLLOW refused from other faults: some systems say ENOTDIR or EMLINK for it.
FolderError linkAwareError(int folder, const QByteArray& name, int code) {
    struct stat info;
    if (code != ELOOP && ::fstatat(folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(info.st_mode))
        return FolderError{FolderFault::Link, QString::fromLocal8Bit(std::strerror(ELOOP))};
    return errorFrom(code);
}

void closeDescriptor(int& fd) {
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

FolderError archiveReadFailure(qint64 got) {
    return got < 0 ? errorFrom(errno) : FolderError{FolderFault::Other, QStringLiteral("the archive ended")};
}

} // namespace

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    if (this != &other) {
        reset();
        m_fd = std::exchange(other.m_fd, -1);
        m_temporary = std::move(other.m_temporary);
        m_anonymous = std::exchange(other.m_anonymous, false);
    }
    return *this;
}

void OutputFile::reset() {
    closeDescriptor(m_fd);
    m_temporary.clear();
    m_anonymous = false;
}

bool OutputFile::isOpen() const {
    return m_fd >= 0;
}

FolderError OutputFile::writeAt(qint64 offset, const char* bytes, qint64 length) {
    while (length > 0) {
        const ssize_t done = ::pwrite(m_fd, bytes, size_t(length), off_t(offset));
        if (done < 0) {
            if (errno == EINTR)
                continue;
            return errorFrom(errno);
        }
        if (done == 0)
            return errorFrom(ENOSPC);
        bytes += done;
        offset += done;
        length -= done;
    }
    return {};
}

FolderError OutputFile::copyFrom(const ArchiveFile& archive, qint64 from, qint64 offset, qint64 length) {
#ifdef Q_OS_LINUX
    loff_t in = from;
    loff_t out = offset;
    while (length > 0) {
        const ssize_t done = ::copy_file_range(archive.m_fd, &in, m_fd, &out, size_t(length), 0);
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0) {
            if (done < 0 && errno != EXDEV && errno != ENOSYS && errno != EINVAL && errno != EOPNOTSUPP)
                return errorFrom(errno);
            break; // not for these files (or the archive ended): copy through a buffer
        }
        length -= done;
    }
    from = in;
    offset = out;
#endif
    return copyThroughBuffer(*this, archive, from, offset, length);
}

OutputFolder& OutputFolder::operator=(OutputFolder&& other) noexcept {
    if (this != &other) {
        reset();
        m_path = std::move(other.m_path);
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

void OutputFolder::reset() {
    closeDescriptor(m_fd);
}

bool OutputFolder::isOpen() const {
    return m_fd >= 0;
}

OutputFolder OutputFolder::open(const QString& hostPath, FolderError& error) {
    OutputFolder folder;
    folder.m_path = hostPath;
    folder.m_fd = openRelative(AT_FDCWD, encoded(hostPath), O_RDONLY | O_DIRECTORY);
    error = folder.m_fd < 0 ? errorFrom(errno) : FolderError{};
    return folder;
}

std::vector<FolderEntry> OutputFolder::list(FolderError& error) const {
    std::vector<FolderEntry> entries;
    error = {};
    const int copy = ::dup(m_fd);
    DIR* dir = copy < 0 ? nullptr : ::fdopendir(copy);
    if (!dir) {
        error = errorFrom(errno);
        if (copy >= 0)
            ::close(copy);
        return entries;
    }
    ::rewinddir(dir);
    while (const dirent* item = ::readdir(dir)) {
        const char* name = item->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        unsigned char type = item->d_type;
        if (type == DT_UNKNOWN) {
            struct stat info;
            if (::fstatat(m_fd, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            type = S_ISLNK(info.st_mode) ? DT_LNK : S_ISDIR(info.st_mode) ? DT_DIR : S_ISREG(info.st_mode) ? DT_REG : 0;
        }
        const EntryKind kind = type == DT_LNK   ? EntryKind::Link
                               : type == DT_DIR ? EntryKind::Folder
                               : type == DT_REG ? EntryKind::File
                                                : EntryKind::Other;
        entries.push_back(FolderEntry{QFile::decodeName(name), kind});
    }
    ::closedir(dir);
    return entries;
}

OutputFolder OutputFolder::child(const QString& name, FolderError& error) const {
    OutputFolder folder;
    folder.m_path = beneath(m_path, name);
    const QByteArray bytes = encoded(name);
    folder.m_fd = openRelative(m_fd, bytes, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    error = folder.m_fd < 0 ? linkAwareError(m_fd, bytes, errno) : FolderError{};
    return folder;
}

OutputFolder OutputFolder::makeChild(const QString& name, FolderError& error) const {
    const QByteArray bytes = encoded(name);
    if (::mkdirat(m_fd, bytes.constData(), 0777) != 0) {
        error = errorFrom(errno);
        return OutputFolder();
    }
    return child(name, error);
}

OutputFile OutputFolder::openInPlace(const QString& name, FolderError& error) const {
    OutputFile file;
    const QByteArray bytes = encoded(name);
    file.m_fd = openRelative(m_fd, bytes, O_RDWR | O_CREAT | O_NOFOLLOW, 0666);
    error = file.m_fd < 0 ? linkAwareError(m_fd, bytes, errno) : FolderError{};
    return file;
}

OutputFile OutputFolder::createTemporary(const QString& forName, FolderError& error) const {
    OutputFile file;
    error = {};
#ifdef O_TMPFILE
    file.m_fd = openRelative(m_fd, QByteArrayLiteral("."), O_TMPFILE | O_WRONLY, 0666);
    if (file.m_fd >= 0) {
        file.m_anonymous = true;
        return file;
    }
#endif
    const Temporary made = makeUnderTemporaryName(forName, [&](const QString& name) {
        file.m_fd = openRelative(m_fd, encoded(name), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
        return file.m_fd >= 0 ? 0 : errno;
    });
    file.m_temporary = made.name;
    if (made.error != 0)
        error = errorFrom(made.error);
    return file;
}

FolderError OutputFolder::commit(OutputFile& file, const QString& name, bool replace) const {
    const QByteArray target = encoded(name);
    // The file is closed whatever the outcome.
    const auto closing = [&file](FolderError error) {
        file.reset();
        return error;
    };
    if (file.m_anonymous) {
        char self[64];
        std::snprintf(self, sizeof self, "/proc/self/fd/%d", file.m_fd);
        const auto linkAs = [&](const QByteArray& as) {
            return ::linkat(AT_FDCWD, self, m_fd, as.constData(), AT_SYMLINK_FOLLOW) == 0 ? 0 : errno;
        };
        const int linked = linkAs(target);
        if (linked != EEXIST || !replace)
            return closing(linked == 0 ? FolderError{} : errorFrom(linked));
        // The name is taken: link the file in under a temporary name, then rename that over it.
        const Temporary made =
            makeUnderTemporaryName(name, [&](const QString& temporary) { return linkAs(encoded(temporary)); });
        if (made.error != 0)
            return closing(errorFrom(made.error));
        file.m_temporary = made.name;
    }
    FolderError error;
    const QByteArray from = encoded(file.m_temporary);
    int status;
    if (replace) {
        status = ::renameat(m_fd, from.constData(), m_fd, target.constData());
    } else {
        status = ::linkat(m_fd, from.constData(), m_fd, target.constData(), 0);
        if (status == 0)
            ::unlinkat(m_fd, from.constData(), 0);
    }
    if (status != 0) {
        error = errorFrom(errno);
        ::unlinkat(m_fd, from.constData(), 0);
    }
    file.reset();
    return error;
}

void OutputFolder::discard(OutputFile& file) const {
    if (!file.m_temporary.isEmpty())
        ::unlinkat(m_fd, encoded(file.m_temporary).constData(), 0);
    file.reset();
}

ArchiveFile::~ArchiveFile() {
    closeDescriptor(m_fd);
}

bool ArchiveFile::open(const QString& hostPath) {
    m_path = hostPath;
    m_fd = openRelative(AT_FDCWD, encoded(hostPath), O_RDONLY);
    struct stat info;
    if (m_fd < 0 || ::fstat(m_fd, &info) != 0)
        return false;
    m_size = info.st_size;
    return true;
}

bool ArchiveFile::exists() const {
    struct stat info;
    return ::stat(encoded(m_path).constData(), &info) == 0;
}

qint64 ArchiveFile::readAt(qint64 offset, char* bytes, qint64 length) const {
    qint64 done = 0;
    while (done < length) {
        const ssize_t got = ::pread(m_fd, bytes + done, size_t(length - done), off_t(offset + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

#else // Windows and other systems: the same rules on paths, with links and junctions checked first.

namespace {

QFile* fileOf(void* handle) {
    return static_cast<QFile*>(handle);
}

bool isLink(const QFileInfo& info) {
    return info.isSymLink() || info.isJunction() || info.isShortcut();
}

FolderError failure(FolderFault fault, const QString& reason) {
    return FolderError{fault, reason};
}

FolderError archiveReadFailure(qint64) {
    return failure(FolderFault::Other, QStringLiteral("the archive ended"));
}

} // namespace

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    if (this != &other) {
        reset();
        m_file = std::exchange(other.m_file, nullptr);
        m_temporary = std::move(other.m_temporary);
    }
    return *this;
}

void OutputFile::reset() {
    delete fileOf(m_file);
    m_file = nullptr;
    m_temporary.clear();
}

bool OutputFile::isOpen() const {
    return m_file != nullptr;
}

FolderError OutputFile::writeAt(qint64 offset, const char* bytes, qint64 length) {
    QFile* file = fileOf(m_file);
    if (!file->seek(offset) || file->write(bytes, length) != length || !file->flush())
        return failure(FolderFault::Other, file->errorString());
    return {};
}

FolderError OutputFile::copyFrom(const ArchiveFile& archive, qint64 from, qint64 offset, qint64 length) {
    return copyThroughBuffer(*this, archive, from, offset, length);
}

OutputFolder& OutputFolder::operator=(OutputFolder&& other) noexcept {
    m_path = std::move(other.m_path);
    return *this;
}

void OutputFolder::reset() {
    m_path.clear();
}

bool OutputFolder::isOpen() const {
    return !m_path.isEmpty();
}

OutputFolder OutputFolder::open(const QString& hostPath, FolderError& error) {
    OutputFolder folder;
    const QFileInfo info(hostPath);
    error = !info.exists()  ? failure(FolderFault::Missing, QStringLiteral("not found"))
            : !info.isDir() ? failure(FolderFault::NotFolder, QStringLiteral("not a folder"))
                            : FolderError{};
    if (!error)
        folder.m_path = info.absoluteFilePath();
    return folder;
}

std::vector<FolderEntry> OutputFolder::list(FolderError& error) const {
    error = {};
    std::vector<FolderEntry> entries;
    const QFileInfoList infos =
        QDir(m_path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& info : infos) {
        const EntryKind kind = isLink(info)    ? EntryKind::Link
                               : info.isDir()  ? EntryKind::Folder
                               : info.isFile() ? EntryKind::File
                                               : EntryKind::Other;
        entries.push_back(FolderEntry{info.fileName(), kind});
    }
    return entries;
}

OutputFolder OutputFolder::child(const QString& name, FolderError& error) const {
    OutputFolder folder;
    const QFileInfo info(beneath(m_path, name));
    error = isLink(info)     ? failure(FolderFault::Link, QStringLiteral("a link"))
            : !info.exists() ? failure(FolderFault::Missing, QStringLiteral("not found"))
            : !info.isDir()  ? failure(FolderFault::NotFolder, QStringLiteral("not a folder"))
                             : FolderError{};
    if (!error)
        folder.m_path = info.absoluteFilePath();
    return folder;
}

OutputFolder OutputFolder::makeChild(const QString& name, FolderError& error) const {
    const QFileInfo info(beneath(m_path, name));
    if (info.exists() || isLink(info)) {
        error = failure(FolderFault::Exists, QStringLiteral("exists"));
        return OutputFolder();
    }
    if (!QDir(m_path).mkdir(name)) {
        error = failure(FolderFault::Other, QStringLiteral("could not be made"));
        return OutputFolder();
    }
    return child(name, error);
}

OutputFile OutputFolder::openInPlace(const QString& name, FolderError& error) const {
    OutputFile out;
    const QString path = beneath(m_path, name);
    if (isLink(QFileInfo(path))) {
        error = failure(FolderFault::Link, QStringLiteral("a link"));
        return out;
    }
    auto* file = new QFile(path);
    if (!file->open(QIODevice::ReadWrite)) {
        error = failure(FolderFault::Other, file->errorString());
        delete file;
        return out;
    }
    error = {};
    out.m_file = file;
    return out;
}

OutputFile OutputFolder::createTemporary(const QString& forName, FolderError& error) const {
    OutputFile out;
    const Temporary made = makeUnderTemporaryName(forName, [&](const QString& name) {
        auto file = std::make_unique<QFile>(beneath(m_path, name));
        if (!file->open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return EEXIST; // tried again under another name, as the cause is unknown
        out.m_file = file.release();
        return 0;
    });
    out.m_temporary = made.name;
    error = made.error == 0 ? FolderError{}
                            : failure(FolderFault::Other, QStringLiteral("no temporary file could be made"));
    return out;
}

FolderError OutputFolder::commit(OutputFile& file, const QString& name, bool replace) const {
    const QString from = beneath(m_path, file.m_temporary);
    const QString to = beneath(m_path, name);
    fileOf(file.m_file)->close();
    FolderError error;
    if (isLink(QFileInfo(to))) {
        error = failure(FolderFault::Link, QStringLiteral("a link"));
    } else if (!replace && QFileInfo::exists(to)) {
        error = failure(FolderFault::Exists, QStringLiteral("exists"));
    } else {
        std::error_code code;
        std::filesystem::rename(from.toStdU16String(), to.toStdU16String(), code);
        if (code)
            error = failure(FolderFault::Other, QString::fromStdString(code.message()));
    }
    if (error)
        QFile::remove(from);
    file.reset();
    return error;
}

void OutputFolder::discard(OutputFile& file) const {
    if (file.m_file)
        fileOf(file.m_file)->close();
    if (!file.m_temporary.isEmpty())
        QFile::remove(beneath(m_path, file.m_temporary));
    file.reset();
}

ArchiveFile::~ArchiveFile() {
    delete fileOf(m_file);
}

bool ArchiveFile::open(const QString& hostPath) {
    m_path = hostPath;
    auto* file = new QFile(hostPath);
    m_file = file;
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    m_size = file->size();
    return true;
}

bool ArchiveFile::exists() const {
    return QFileInfo::exists(m_path);
}

qint64 ArchiveFile::readAt(qint64 offset, char* bytes, qint64 length) const {
    QFile* file = fileOf(m_file);
    if (!file->seek(offset))
        return -1;
    return file->read(bytes, length);
}

#endif

} // namespace korvel
