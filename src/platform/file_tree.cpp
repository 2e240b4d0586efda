#include "file_tree.h"

#include "game_text.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace korvel {

namespace {

#ifdef Q_OS_UNIX
// Walks the folder open as `dirFd` (which it closes), each name looked up relative to its folder.
// `prefix` is the folder's path beneath the root with a trailing "/"; it is grown and restored on
// the way down.
bool walk(int dirFd, std::string& prefix, std::vector<TreeFile>& found) {
    DIR* dir = fdopendir(dirFd);
    if (!dir) {
        ::close(dirFd);
        return false;
    }
    bool ok = true;
    while (dirent* entry = readdir(dir)) {
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        struct stat info;
        bool isLink = entry->d_type == DT_LNK;
        if (!isLink) {
            if (fstatat(dirfd(dir), name, &info, AT_SYMLINK_NOFOLLOW) != 0)
                continue;                   // gone meanwhile
            isLink = S_ISLNK(info.st_mode); // file systems that leave the type unknown
        }
        if (isLink && fstatat(dirfd(dir), name, &info, 0) != 0)
            continue; // a dangling link
        if (S_ISDIR(info.st_mode)) {
            if (isLink)
                continue;
            const size_t restore = prefix.size();
            prefix.append(name).push_back('/');
            const int child = openat(dirfd(dir), name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            const bool walked = child >= 0 && walk(child, prefix, found);
            prefix.resize(restore);
            if (!walked) {
                ok = false;
                break;
            }
        } else if (S_ISREG(info.st_mode)) {
            std::string relative;
            relative.reserve(prefix.size() + std::strlen(name));
            relative.append(prefix).append(name);
            found.push_back(TreeFile{std::move(relative), qint64(info.st_size), qint64(info.st_mtime)});
        }
    }
    closedir(dir);
    return ok;
}
#endif

} // namespace

Result<std::vector<TreeFile>> listFilesBeneath(const FileServices& files, const std::string& folder) {
    const QString host = files.hostPath(folder);
    if (host.isEmpty() || !QFileInfo(host).isDir())
        return refused(QStringLiteral("Folder not found: %1").arg(fromGameText(folder)));
    std::vector<TreeFile> found;
#ifdef Q_OS_UNIX
    const int root = ::open(QFile::encodeName(host).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::string prefix;
    if (root < 0 || !walk(root, prefix, found))
        return readError(QStringLiteral("Could not read the folder %1.").arg(QDir::toNativeSeparators(host)));
#else
    const QDir base(host);
    QDirIterator it(host, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        if (info.isFile())
            found.push_back(TreeFile{QFile::encodeName(base.relativeFilePath(info.filePath())).toStdString(),
                                     info.size(), info.lastModified().toSecsSinceEpoch()});
    }
#endif
    return found;
}

struct SequentialReader::Impl {
    std::string name;
#ifdef Q_OS_UNIX
    int fd = -1;
    int error = 0;
    std::string folder; // the folder of the last file opened, open as folderFd (-1 when it could not be)
    int folderFd = -1;
#else
    QFile file;
#endif
};

SequentialReader::SequentialReader() : m_impl(std::make_unique<Impl>()) {}

SequentialReader::~SequentialReader() {
    close();
#ifdef Q_OS_UNIX
    if (m_impl->folderFd >= 0)
        ::close(m_impl->folderFd);
#endif
}

bool SequentialReader::open(const std::string& hostPath) {
    close();
    m_impl->name = hostPath;
#ifdef Q_OS_UNIX
    // Looking the name up in its open folder spares the kernel walking the whole path again.
    if (const size_t slash = hostPath.rfind('/'); slash != std::string::npos && slash > 0) {
        const std::string_view folder(hostPath.data(), slash);
        if (folder != m_impl->folder) {
            if (m_impl->folderFd >= 0)
                ::close(m_impl->folderFd);
            m_impl->folder.assign(folder);
            m_impl->folderFd = ::open(m_impl->folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        }
        if (m_impl->folderFd >= 0) {
            m_impl->fd = ::openat(m_impl->folderFd, hostPath.c_str() + slash + 1, O_RDONLY | O_CLOEXEC);
            if (m_impl->fd >= 0) {
                m_impl->error = 0;
                return true;
            }
        }
    }
    m_impl->fd = ::open(hostPath.c_str(), O_RDONLY | O_CLOEXEC);
    m_impl->error = m_impl->fd < 0 ? errno : 0;
    return m_impl->fd >= 0;
#else
    m_impl->file.setFileName(QFile::decodeName(QByteArray::fromStdString(hostPath)));
    return m_impl->file.open(QIODevice::ReadOnly);
#endif
}

const std::string& SequentialReader::fileName() const {
    return m_impl->name;
}

bool SequentialReader::isOpen() const {
#ifdef Q_OS_UNIX
    return m_impl->fd >= 0;
#else
    return m_impl->file.isOpen();
#endif
}

bool SequentialReader::seek(qint64 offset) {
#ifdef Q_OS_UNIX
    if (::lseek(m_impl->fd, off_t(offset), SEEK_SET) == off_t(-1)) {
        m_impl->error = errno;
        return false;
    }
    return true;
#else
    return m_impl->file.seek(offset);
#endif
}

qint64 SequentialReader::read(char* data, qint64 length) {
#ifdef Q_OS_UNIX
    while (true) {
        const ssize_t got = ::read(m_impl->fd, data, size_t(length));
        if (got >= 0)
            return qint64(got);
        if (errno != EINTR) {
            m_impl->error = errno;
            return -1;
        }
    }
#else
    return m_impl->file.read(data, length);
#endif
}

void SequentialReader::close() {
#ifdef Q_OS_UNIX
    if (m_impl->fd >= 0)
        ::close(m_impl->fd);
    m_impl->fd = -1;
#else
    m_impl->file.close();
#endif
}

QString SequentialReader::errorString() const {
#ifdef Q_OS_UNIX
    return QString::fromLocal8Bit(std::strerror(m_impl->error));
#else
    return m_impl->file.errorString();
#endif
}

struct AtomicFileWriter::Impl {
    QString host;
    QSaveFile file;
};

AtomicFileWriter::AtomicFileWriter() : m_impl(std::make_unique<Impl>()) {}

AtomicFileWriter::~AtomicFileWriter() {
    cancel();
}

Status AtomicFileWriter::failed(const QString& reason) {
    const QString host = m_impl->host;
    cancel();
    return writeError(QStringLiteral("Could not save %1: %2. The old file was left unchanged.")
                          .arg(QDir::toNativeSeparators(host), reason));
}

Status AtomicFileWriter::open(const FileServices& files, const std::string& gamePath) {
    m_impl->host = files.hostPath(gamePath);
    if (m_impl->host.isEmpty())
        return writeError(QStringLiteral("Could not save %1: no drive is mapped for it.").arg(fromGameText(gamePath)));
    m_impl->file.setFileName(m_impl->host);
    if (!m_impl->file.open(QIODevice::WriteOnly))
        return failed(m_impl->file.errorString());
    return {};
}

Status AtomicFileWriter::write(const char* data, qint64 length) {
    if (!m_impl->file.isOpen())
        return failed(QStringLiteral("the file is not open"));
    if (m_impl->file.write(data, length) != length)
        return failed(m_impl->file.errorString());
    return {};
}

Status AtomicFileWriter::seek(qint64 offset) {
    // Flushed first: a buffered write that fails must fail here, not vanish in the seek.
    if (!m_impl->file.isOpen() || !m_impl->file.flush() || !m_impl->file.seek(offset))
        return failed(m_impl->file.errorString());
    return {};
}

Status AtomicFileWriter::commit() {
    if (!m_impl->file.isOpen())
        return failed(QStringLiteral("the file is not open"));
    // commit() alone ignores a failed flush of the buffer (a full disk) and commits anyway.
    if (!m_impl->file.flush())
        return failed(m_impl->file.errorString());
    if (!m_impl->file.commit())
        return failed(m_impl->file.errorString());
    return {};
}

void AtomicFileWriter::cancel() {
    if (m_impl->file.isOpen()) {
        m_impl->file.cancelWriting();
        m_impl->file.commit(); // a cancelled QSaveFile discards its temporary file on commit
    }
}

} // namespace korvel
